/* A program outside the project that uses the installed library: it finds
 * the header and the libraries the way a user would (CMake package or
 * pkg-config) and checks a known answer. */
#include <stdio.h>
#include <string.h>

#include <zanvc.h>

int main(void) {
    const ZanLibraryVersion* v = zanvcGetLibVersion();
    if (!v || v->major != 7 || v->minor != 1 ||
        (strcmp(v->targetCode, "u8") != 0 && strcmp(v->targetCode, "n8") != 0)) {
        fprintf(stderr, "unexpected version record\n");
        return 1;
    }

    /* Current block 0..63 in raster order, reference its mirror 63..0: the
     * differences are |2k - 63| for k = 0..63, which add up to 2048. */
    Zan8u cur[8 * 8], ref[8 * 9 + 1];
    memset(ref, 0, sizeof ref);
    for (int k = 0; k < 64; ++k) {
        cur[k] = (Zan8u)k;
        ref[k] = (Zan8u)(63 - k);
    }
    Zan32s sad = -1;
    ZanStatus st = zaniSAD8x8_8u32s_C1R(cur, 8, ref, 8, &sad, 0);
    if (st != zanStsOk || sad != 2048) {
        fprintf(stderr, "zaniSAD8x8_8u32s_C1R: status %d, SAD %d, expected 0 and 2048\n", (int)st, (int)sad);
        return 1;
    }
    printf("zanvc %s, path %s: SAD 8x8 = %d\n", v->versionText, v->targetCode, (int)sad);
    return 0;
}
