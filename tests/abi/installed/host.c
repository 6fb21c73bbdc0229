/* The smallest host of an installed engine, in C and in C++: a process without epochs ends with
 * status 10. */
#include <VornelBlCore.h>
#include <stdio.h>

int main(void) {
    int status = -1;
    int done = CreateBLProcess() && StartProcess(&status) && DiposeProcess();
    printf("status %d\n", status);
    return done && status == 10 ? 0 : 1;
}
