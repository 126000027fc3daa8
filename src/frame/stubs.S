// Export stubs: every exported name is the same three steps.  Read the path
// index, load that entry of the export's two-entry path table, jump.  A jump,
// not a call: no frame is built, every register and stack argument reaches
// the body untouched and the body returns straight to the caller.  r10 and
// r11 carry no arguments in the calling convention, so one stub fits every
// signature.

        .text

.macro ZAN_STUB name
        .globl  \name
        .type   \name, @function
        .p2align 4
\name:
        movl    zanJumpIndexForMergedDLL(%rip), %r11d
        leaq    \name\()_arraddr(%rip), %r10
        jmp     *(%r10,%r11,8)
        .size   \name, .-\name
.endm

#define ZAN_EXPORT(family, name) ZAN_STUB name
#include "exports.inc"

        .section .note.GNU-stack,"",@progbits
