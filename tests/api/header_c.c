/* The public header in a C99 program: types, statuses and a call through an
 * export stub. */
#include <stdio.h>
#include <string.h>

#include "zancore.h"
#include "zanvc.h"

int main(void) {
    Zan8u cur[16 * 16], ref[17 * 17];
    Zan32s sad = -1;
    ZanStatus st;
    const ZanLibraryVersion* v = zanvcGetLibVersion();
    ZaniSize size = {16, 16};
    ZaniRect rect = {0, 0, 16, 16};
    ZaniPoint point = {1, 2};

    memset(cur, 3, sizeof cur);
    memset(ref, 1, sizeof ref);
    st = zaniSAD16x16_8u32s(cur, 16, ref, 17, &sad, 0);
    printf("%s %s %d.%d.%d sad=%d\n", v->targetCode, v->name, (int)v->major, (int)v->minor, (int)v->update,
           (int)sad);
    if (st != zanStsOk || sad != 512) return 1;
    if (zaniSAD16x16_8u32s(cur, 16, NULL, 17, &sad, 0) != zanStsNullPtr) return 2;
    if (v->build != 37466 || size.width + rect.height + point.y != 34) return 3;
    if (zanStsCoefRange != zanStsRangeCheckFailed || zanStsEdgeSubstituted != 11) return 4;
    return 0;
}
