// Sum of absolute differences: kernel signatures and the catalogues of
// kernels that each path offers to the checker and the benchmarks.
//
// Signatures are declared once here and used by the scalar rules, the
// vector kernels of both builds, the wrappers' tables and the tests.
#pragma once

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::sad {

// Kernels that write their results through pointers return zanStsOk, so that
// an exported body can end in a jump to its kernel.

// One block of w x h samples at one reference position; returns the SAD.
using Sad8Fn = Zan32s (*)(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep);
using Sad16Fn = Zan32s (*)(const Zan16u* pCur, Zan32s curStep, const Zan16u* pRef, Zan32s refStep);
// The same kernels in the form the exported bodies jump to: the SAD goes to
// *pResult and the kernel returns zanStsOk.  Each is built from the same code
// as the catalogue kernel of its block and position.
using Sad8OutFn = ZanStatus (*)(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                Zan32s* pResult);
using Sad16OutFn = ZanStatus (*)(const Zan16u* pCur, Zan32s curStep, const Zan16u* pRef, Zan32s refStep,
                                 Zan32s* pResult);
// 8x8 block of two interleaved channels.
using SadC2Fn = ZanStatus (*)(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                              Zan32s* pResultU, Zan32s* pResultV);
// One SAD per sub-block of a 16x16 block.
using Blocks8Fn = ZanStatus (*)(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                                Zan16u* pResult);
using Blocks16Fn = ZanStatus (*)(const Zan16u* pCur, Zan32s curStep, const Zan16u* pRef, Zan32s refStep,
                                 Zan32u* pResult);
// count (a positive multiple of 8) candidates along a row.
using CandFn = ZanStatus (*)(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                             Zan16u* pResult, Zan32s count);
// Index of the first smallest of count (a positive multiple of 8) results.
using MinIndexFn = Zan32s (*)(const Zan16u* pResult, Zan32s count);
// 8x8 difference block and its SAD.
using SubFn = Zan32s (*)(const Zan8u* pCur, Zan32s curStep, const Zan8u* pRef, Zan32s refStep,
                         Zan16s* pDiff, Zan32s diffStep);
// Frame and field activity of a 16x16 block.
using Field8Fn = ZanStatus (*)(const Zan8u* pSrc, Zan32s srcStep, Zan32s* pFrame, Zan32s* pField);
using Field16Fn = ZanStatus (*)(const Zan16s* pSrc, Zan32s srcStep, Zan32s* pFrame, Zan32s* pField);

// Catalogue of the single-block forms (sad.cpp).  param: the reference
// position (mcType >> 2) for sad8, sad16 and pair; 0 elsewhere.
struct BlockKernels {
    KernelList<Sad8Fn> sad8;
    KernelList<Sad16Fn> sad16;
    KernelList<SadC2Fn> pair;
    KernelList<Blocks8Fn> blocks8;
    KernelList<Blocks16Fn> blocks16;
};

// Catalogue of the candidate-row forms (sadn.cpp).  param of cand: -1 for a
// kernel that takes any alignment, else the low four bits of pRef that the
// aligned kernel is built for (it also needs refStep and pResult multiples of
// 16).  param of minIndex: the largest result value the kernel accepts.
struct CandidateKernels {
    KernelList<CandFn> cand;
    KernelList<MinIndexFn> minIndex;
};

// Catalogue of the difference and frame/field forms (sadsub.cpp).  param of
// sub: 16 for a kernel with aligned stores, which needs pDiff and diffStep
// multiples of 16; 0 for any alignment.  param elsewhere: 0.
struct SubKernels {
    KernelList<SubFn> sub;
    KernelList<Field8Fn> field8;
    KernelList<Field16Fn> field16;
};

}  // namespace zan::sad

// In an exported body: returns zanStsNullPtr when the pointer p is null.  A
// body lists its pointers one after another; whichever is null, the status
// is the same, and nothing else has been looked at.  The empty asm keeps each
// test a branch of its own (test, je): without it the compiler merges the
// tests into flag arithmetic (sete, or) ahead of one branch, four more
// instructions on every call.
#define ZAN_SAD_NULL(p)       \
    if (!(p)) [[unlikely]]    \
        return zanStsNullPtr; \
    asm volatile("")

#define ZAN_SAD_CATALOGUES(P)                                    \
    namespace zan::P::sad {                                      \
    extern const zan::sad::BlockKernels block_kernels;           \
    extern const zan::sad::CandidateKernels candidate_kernels;   \
    extern const zan::sad::SubKernels sub_kernels;               \
    }
ZAN_SAD_CATALOGUES(u8)
ZAN_SAD_CATALOGUES(n8)
#undef ZAN_SAD_CATALOGUES
