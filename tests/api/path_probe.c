/* Loads libzanvcu8 at run time and prints the target code of the path it
 * chose.  "path_probe LIB" loads it as the environment leaves the mask;
 * "path_probe LIB MASK" calls zanSetCpuFeatures(MASK) first.  Then it sets
 * the mask to 0 and asks again: the path must not move. */
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>

#include "zancore.h"

typedef const ZanLibraryVersion* (*VersionFn)(void);

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    if (argc > 2) zanSetCpuFeatures(strtoull(argv[2], NULL, 16));
    void* lib = dlopen(argv[1], RTLD_NOW);
    if (!lib) {
        fprintf(stderr, "%s\n", dlerror());
        return 3;
    }
    VersionFn version;
    *(void**)&version = dlsym(lib, "zanvcGetLibVersion");
    if (!version) return 4;
    const char* first = version()->targetCode;
    zanSetCpuFeatures(0);
    const char* later = version()->targetCode;
    printf("%s %s\n", first, later);
    return 0;
}
