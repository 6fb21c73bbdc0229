/* A host that loads the engine at run time by its plain name, finds every export by name, and goes
 * once through the shortest life of a process: a run without epochs, which ends with status 10. */
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static const char* const kNames[] = {
#define EXPORT(name) #name,
#include "exports.inc"
#undef EXPORT
};

enum { kNoEpochs = 10 };

static void* engine;

/* Copies the address of the function `name` into the function pointer at `function`; an object
 * pointer can't be converted to a function pointer in C, so its bytes are copied. */
static void Find(const char* name, void* function) {
    void* address = dlsym(engine, name);
    if (address == NULL) {
        printf("%s\n", dlerror());
        exit(EXIT_FAILURE);
    }
    memcpy(function, &address, sizeof address);
}

static void Expect(const char* what, int found, int expected) {
    if (found != expected) {
        printf("%s: %d instead of %d\n", what, found, expected);
        exit(EXIT_FAILURE);
    }
}

int main(void) {
    int (*createBLProcess)(void);
    int (*startProcess)(int*);
    int (*getFloatSolNum)(void);
    int (*diposeProcess)(void);
    void (*any)(void);
    int status = -1;
    size_t i;

    engine = dlopen("VornelBlCore.so", RTLD_NOW | RTLD_LOCAL);
    if (engine == NULL) {
        printf("%s\n", dlerror());
        return EXIT_FAILURE;
    }
    for (i = 0; i < sizeof kNames / sizeof kNames[0]; ++i) {
        Find(kNames[i], &any);
    }

    Find("CreateBLProcess", &createBLProcess);
    Find("StartProcess", &startProcess);
    Find("GetFloatSolNum", &getFloatSolNum);
    Find("DiposeProcess", &diposeProcess);
    Expect("CreateBLProcess", createBLProcess(), 1);
    Expect("StartProcess", startProcess(&status), 1);
    Expect("status of a run without epochs", status, kNoEpochs);
    Expect("GetFloatSolNum", getFloatSolNum(), 0);
    Expect("DiposeProcess", diposeProcess(), 1);
    Expect("dlclose", dlclose(engine), 0);
    return EXIT_SUCCESS;
}
