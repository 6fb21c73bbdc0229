/* Takes the address of every export through the public header and links with the library, so that a
 * missing declaration, a missing definition and a name that is not C are all errors. Compiled as
 * C99 and as C++. Exits with 0 when all addresses are there and no two are the same. */
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>

#include "VornelBlCore.h"

typedef void (*AnyFunction)(void);

struct Export {
    const char* name;
    AnyFunction address;
};

static const struct Export kExports[] = {
#define EXPORT(name) {#name, (AnyFunction)name},
#include "exports.inc"
#undef EXPORT
};

int main(void) {
    const size_t count = sizeof kExports / sizeof kExports[0];
    size_t i, j;
    for (i = 0; i < count; ++i) {
        if (kExports[i].address == NULL) {
            printf("%s has no address\n", kExports[i].name);
            return EXIT_FAILURE;
        }
        for (j = 0; j < i; ++j) {
            if (kExports[i].address == kExports[j].address) {
                printf("%s and %s are one\n", kExports[i].name, kExports[j].name);
                return EXIT_FAILURE;
            }
        }
    }
    printf("%lu exports\n", (unsigned long)count);
    return count == 47 ? EXIT_SUCCESS : EXIT_FAILURE;
}
