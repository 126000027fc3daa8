// Fuzz target: the DV segment decoders.
//
// Input: byte 0 picks the decoder (0 three-pass DV, 1 one-pass DV, 2 DV100);
// the next 400 bytes are the segment (shorter inputs are padded with the
// input repeated).  The segment ends at an unreadable page, so a read past
// its 400 bytes faults.  Outputs sit between guard words.
//
// Invariants: the status is Ok; only the 30 (40) blocks and parameters are
// written; a block's parameter names a last position within 0..63, the DC
// is a multiple of 128 and every AC value is a multiple of 64.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "guarded.h"
#include "zanvc.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const int form = data[0] % 3;
    std::vector<std::uint8_t> seg(400);
    for (std::size_t i = 0; i < 400; ++i) seg[i] = data[1 + i % (size - 1)];
    zan::fuzz::Guarded g(seg.data(), seg.size(), 0);
    const int n = form == 2 ? 40 : 30;
    constexpr Zan16s kGuard = 0x5A5A;
    std::vector<Zan16s> coef(static_cast<std::size_t>(64 * (n + 2)), 0);
    std::vector<Zan32u> param(static_cast<std::size_t>(n + 2), 0xA5A5A5A5u);
    for (int k = 0; k < 64; ++k) coef[static_cast<std::size_t>(k)] = coef[static_cast<std::size_t>(64 * (n + 1) + k)] = kGuard;
    ZanStatus st;
    if (form == 0) st = zaniHuffmanDecodeSegment_DV_8u16s(g.begin(), nullptr, nullptr, coef.data() + 64, param.data() + 1);
    else if (form == 1) st = zaniHuffmanDecodeSegmentOnePass_DV_8u16s(g.begin(), nullptr, nullptr, coef.data() + 64, param.data() + 1);
    else st = zaniHuffmanDecodeSegment_DV100_8u16s(g.begin(), nullptr, nullptr, coef.data() + 64, param.data() + 1);
    ZAN_FUZZ_CHECK(st == zanStsOk);
    if (param[0] != 0xA5A5A5A5u || param[static_cast<std::size_t>(n + 1)] != 0xA5A5A5A5u) ZAN_FUZZ_CHECK(false);
    for (int k = 0; k < 64; ++k)
        if (coef[static_cast<std::size_t>(k)] != kGuard || coef[static_cast<std::size_t>(64 * (n + 1) + k)] != kGuard) ZAN_FUZZ_CHECK(false);
    for (int b = 0; b < n; ++b) {
        const Zan32u p = param[static_cast<std::size_t>(b + 1)];
        if (((p >> 8) & 255u) > 63u || (p & 0xFFF0008Eu) != 0) ZAN_FUZZ_CHECK(false);
        const Zan16s* c = coef.data() + 64 * (b + 1);
        if (c[0] % 128 != 0) ZAN_FUZZ_CHECK(false);
        for (int k = 1; k < 64; ++k)
            if (c[k] % 64 != 0) ZAN_FUZZ_CHECK(false);
    }
    return 0;
}
