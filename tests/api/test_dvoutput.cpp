// DV output conversions through the exported functions: statuses, null
// entries, and known answers worked out by hand from the layout rules.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "zanvc.h"

namespace {

// Five macroblocks of 6 blocks (or ten DV100 halves of 4) and a picture.
struct Mbs {
    std::vector<Zan16s> s = std::vector<Zan16s>(10 * 6 * 64, 0);
    const Zan16s* src[10];
    Mbs() {
        for (int i = 0; i < 10; ++i) src[i] = s.data() + 6 * 64 * i;
    }
    Zan16s& at(int mb, int blk, int x, int y, int stride = 8) { return s[size_t(6 * 64 * mb + 64 * blk + y * stride + x)]; }
};
struct Pic {
    static constexpr Zan32s kStep = 72;
    std::vector<Zan8u> px = std::vector<Zan8u>(size_t(kStep * 16 * 10), 0xEE);
    Zan8u* dst[10];
    Pic() {
        for (int i = 0; i < 10; ++i) dst[i] = px.data() + kStep * 16 * i;
    }
    Zan8u at(int mb, int x, int y) const { return px[size_t(kStep * 16 * mb + kStep * y + x)]; }
};

TEST(DvOutput, SampleConversionSaturates) {
    Mbs m;
    Pic p;
    m.at(0, 0, 0, 0) = 127;
    m.at(0, 0, 1, 0) = 128;
    m.at(0, 0, 2, 0) = -128;
    m.at(0, 0, 3, 0) = -129;
    m.at(0, 0, 4, 0) = 32767;
    m.at(0, 0, 5, 0) = 5;
    ASSERT_EQ(zanStsOk, zaniYCrCb422ToYCbCr422_5MBDV_16s8u_P3C2R(m.src, p.dst, Pic::kStep));
    EXPECT_EQ(255, p.at(0, 0, 0));
    EXPECT_EQ(255, p.at(0, 2, 0));
    EXPECT_EQ(0, p.at(0, 4, 0));
    EXPECT_EQ(0, p.at(0, 6, 0));
    EXPECT_EQ(255, p.at(0, 8, 0));
    EXPECT_EQ(133, p.at(0, 10, 0));
    EXPECT_EQ(128, p.at(0, 1, 0));  // chroma 0
}

TEST(DvOutput, Layout411WithChromaDoubling) {
    Mbs m;
    Pic p;
    for (int b = 0; b < 4; ++b) m.at(0, b, 7, 2) = Zan16s(10 * b);  // last sample of row 2 of each Y block
    for (int i = 0; i < 8; ++i) m.at(0, 5, i, 2) = Zan16s(10 * i), m.at(0, 4, i, 2) = Zan16s(-10 * i - 1);
    ASSERT_EQ(zanStsOk, zaniYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R(m.src, p.dst, Pic::kStep));
    for (int b = 0; b < 4; ++b) EXPECT_EQ(128 + 10 * b, p.at(0, 2 * (8 * b + 7), 2));
    // Pair k: Cb at byte 4k + 1, Cr at 4k + 3.  Cb: 0, 5, 10, 15, ... 70, 70.
    for (int k = 0; k < 16; ++k) {
        const int i = k / 2;
        const int cb = (k % 2 == 0) ? 10 * i : (10 * i + 10 * (i < 7 ? i + 1 : 7)) >> 1;
        const int cri = -10 * i - 1, crn = -10 * (i < 7 ? i + 1 : 7) - 1;
        const int cr = (k % 2 == 0) ? cri : (cri + crn) >> 1;
        EXPECT_EQ(128 + cb, p.at(0, 4 * k + 1, 2)) << k;
        EXPECT_EQ(128 + cr, p.at(0, 4 * k + 3, 2)) << k;
    }
    EXPECT_EQ(0xEE, p.at(0, 64, 2));  // nothing past 64 bytes
    EXPECT_EQ(0xEE, p.at(0, 0, 8));   // nor below 8 rows
}

TEST(DvOutput, NullEntryStops411And420) {
    for (int form = 0; form < 2; ++form) {
        Mbs m;
        Pic p;
        const Zan16s* src[5] = {m.src[0], m.src[1], m.src[2], nullptr, m.src[4]};
        const ZanStatus st = form ? zaniYCrCb420ToYCbCr422_5MBDV_16s8u_P3C2R(src, p.dst, Pic::kStep)
                                  : zaniYCrCb411ToYCbCr422_5MBDV_16s8u_P3C2R(src, p.dst, Pic::kStep);
        EXPECT_EQ(zanStsOk, st);
        EXPECT_EQ(128, p.at(2, 0, 0));
        EXPECT_EQ(0xEE, p.at(3, 0, 0));
        EXPECT_EQ(0xEE, p.at(4, 0, 0));
    }
    Mbs m;
    Pic p;
    EXPECT_EQ(zanStsNullPtr, zaniYCrCb411ToYCbCr422_ZoomOut2_5MBDV_16s8u_P3C2R(nullptr, p.dst, Pic::kStep));
    EXPECT_EQ(zanStsNullPtr, zaniYCrCb420ToYCbCr422_ZoomOut4_5MBDV_16s8u_P3C2R(m.src, nullptr, Pic::kStep));
    EXPECT_EQ(zanStsNullPtr, zaniYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R(nullptr, p.dst[0], Pic::kStep));
    EXPECT_EQ(zanStsNullPtr, zaniYCrCb411ToYCbCr422_8x8MB_DV_16s8u_P3C2R(m.src[0], nullptr, Pic::kStep));
    EXPECT_EQ(zanStsNullPtr, zaniYCrCb422ToYCbCr422_10HalvesMB16x8_DV100_16s8u_P3C2R(nullptr, p.dst, 16));
    for (auto v : p.px) ASSERT_EQ(0xEE, v);
}

TEST(DvOutput, ZoomOut8Of422ChecksEntriesAsItGoes) {
    Mbs m;
    Pic p;
    for (int mb = 0; mb < 5; ++mb) {
        m.at(mb, 0, 0, 0) = Zan16s(mb);
        m.at(mb, 5, 0, 0) = Zan16s(10 + mb);
        m.at(mb, 2, 0, 0) = Zan16s(20 + mb);
        m.at(mb, 4, 0, 0) = Zan16s(30 + mb);
        m.at(mb, 1, 0, 0) = 99;  // not read
    }
    Zan8u* dst[5] = {p.dst[0], p.dst[1], nullptr, p.dst[3], p.dst[4]};
    EXPECT_EQ(zanStsNullPtr, zaniYCrCb422ToYCbCr422_ZoomOut8_5MBDV_16s8u_P3C2R(m.src, dst));
    for (int mb = 0; mb < 2; ++mb) {
        EXPECT_EQ(128 + mb, p.at(mb, 0, 0));
        EXPECT_EQ(138 + mb, p.at(mb, 1, 0));
        EXPECT_EQ(148 + mb, p.at(mb, 2, 0));
        EXPECT_EQ(158 + mb, p.at(mb, 3, 0));
        EXPECT_EQ(0xEE, p.at(mb, 4, 0));
    }
    EXPECT_EQ(0xEE, p.at(3, 0, 0));
}

TEST(DvOutput, Reductions422TruncateTowardZero) {
    Mbs m;
    Pic p;
    // Top-left 2x2 of block 0 sums to -5: -5 / 4 truncates to -1 (floor would be -2).
    m.at(0, 0, 0, 0) = -5;
    // Top-left 4x4 of block 2 sums to -17: / 16 gives -1.
    m.at(0, 2, 0, 0) = -17;
    ASSERT_EQ(zanStsOk, zaniYCrCb422ToYCbCr422_ZoomOut2_5MBDV_16s8u_P3C2R(m.src, p.dst, Pic::kStep));
    EXPECT_EQ(127, p.at(0, 0, 0));
    EXPECT_EQ(128 - 4, p.at(0, 8, 0));  // block 2's first 2x2 mean: -17 / 4 = -4
    ASSERT_EQ(zanStsOk, zaniYCrCb422ToYCbCr422_ZoomOut4_5MBDV_16s8u_P3C2R(m.src, p.dst, Pic::kStep));
    EXPECT_EQ(128, p.at(0, 0, 0));  // -5 / 16 = 0
    EXPECT_EQ(127, p.at(0, 4, 0));  // block 2: -17 / 16 = -1
}

TEST(DvOutput, Reductions411SaturateAndKeepSign) {
    Mbs m;
    Pic p;
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 2; ++x) m.at(0, 0, x, y) = 32767;  // sums saturate at 32767, >> 2 = 8191
    m.at(0, 1, 0, 0) = -7;  // (-7) >> 2 = -2
    ASSERT_EQ(zanStsOk, zaniYCrCb411ToYCbCr422_ZoomOut2_5MBDV_16s8u_P3C2R(m.src, p.dst, Pic::kStep));
    EXPECT_EQ(255, p.at(0, 0, 0));
    EXPECT_EQ(126, p.at(0, 8, 0));  // first luma of block 1 is output pixel 4
    EXPECT_EQ(0xEE, p.at(0, 32, 0));
    EXPECT_EQ(0xEE, p.at(0, 0, 4));
}

TEST(DvOutput, EdgeMacroblockHalves) {
    Mbs m;
    Pic p;
    m.at(0, 2, 0, 0) = 40;                            // Y2 starts row 8
    for (int i = 0; i < 8; ++i) m.at(0, 5, i, 0) = Zan16s(i);  // Cb row 0: 0..3 top, 4..7 bottom
    ASSERT_EQ(zanStsOk, zaniYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R(m.src[0], p.dst[0], Pic::kStep));
    EXPECT_EQ(168, p.at(0, 0, 8));
    const int top[8] = {0, 0, 1, 1, 2, 2, 3, 3};  // c0, (c0+c1)>>1, c1, ...
    const int bot[8] = {4, 4, 5, 5, 6, 6, 7, 7};
    for (int k = 0; k < 8; ++k) {
        EXPECT_EQ(128 + top[k], p.at(0, 4 * k + 1, 0)) << k;
        EXPECT_EQ(128 + bot[k], p.at(0, 4 * k + 1, 8)) << k;
    }
    EXPECT_EQ(0xEE, p.at(0, 32, 0));
    EXPECT_EQ(0xEE, p.at(0, 0, 16));
}

// The right-edge forms place the two halves of a 4:1:1 macroblock on top of
// each other; each half's chroma (columns 0-3 above, 4-7 below) is doubled
// on its own, so the last pixel of the top half repeats c[3] and does not
// mix in c[4], which lies 8 picture rows lower.
TEST(DvOutput, EdgeHalvesDoubleChromaApart) {
    Mbs m;
    Pic p;
    m.at(0, 5, 3, 0) = 10;
    m.at(0, 5, 4, 0) = 30;
    m.at(0, 4, 2, 1) = -40;
    m.at(0, 4, 3, 1) = 31;
    m.at(0, 4, 4, 1) = 100;
    ASSERT_EQ(zanStsOk, zaniYCrCb411ToYCbCr422_EdgeDV_16s8u_P3C2R(m.src[0], p.dst[0], Pic::kStep));
    EXPECT_EQ(128 + 10, p.at(0, 4 * 6 + 1, 0));
    EXPECT_EQ(128 + 10, p.at(0, 4 * 7 + 1, 0));  // c[3] repeated, not (10 + 30) >> 1
    EXPECT_EQ(128 + 30, p.at(0, 1, 8));
    EXPECT_EQ(128 + 15, p.at(0, 4 * 1 + 1, 8));  // (30 + 0) >> 1
    EXPECT_EQ(128 - 5, p.at(0, 4 * 5 + 3, 1));   // (-40 + 31) >> 1 = -5 (arithmetic)
    EXPECT_EQ(128 + 31, p.at(0, 4 * 7 + 3, 1));
    // Pre-reduced: columns 0-1 above, 2-3 below, each pair doubled apart.
    Mbs r;
    Pic q;
    r.at(0, 5, 0, 2, 4) = 8;
    r.at(0, 5, 1, 2, 4) = 21;
    r.at(0, 5, 2, 2, 4) = 99;
    ASSERT_EQ(zanStsOk, zaniYCrCb411ToYCbCr422_8x8MB_DV_16s8u_P3C2R(r.src[0], q.dst[0], Pic::kStep));
    EXPECT_EQ(128 + 14, q.at(0, 4 * 1 + 1, 2));  // (8 + 21) >> 1
    EXPECT_EQ(128 + 21, q.at(0, 4 * 3 + 1, 2));  // c[1] repeated
    EXPECT_EQ(128 + 99, q.at(0, 1, 6));
    EXPECT_EQ(0xEE, q.at(0, 16, 2));
    EXPECT_EQ(0xEE, q.at(0, 0, 8));

    // Random and extreme samples: the reduced edge forms equal the halves of
    // the matching reduced 4:1:1 forms (their chroma means never cross the cut).
    Zan32u seed = 12345u;
    for (auto& v : m.s) {
        seed = seed * 1664525u + 1013904223u;
        const Zan32u k = seed >> 24;
        v = k < 16 ? Zan16s(32767) : k < 32 ? Zan16s(-32768) : Zan16s(Zan32s(seed >> 16) % 600 - 300);
    }
    struct Pair {
        ZanStatus (*mb5)(const Zan16s* const*, Zan8u* const*, Zan32s);
        ZanStatus (*edge)(const Zan16s*, Zan8u*, Zan32s);
        int halfBytes, rows;
    };
    const Pair pairs[] = {
        {zaniYCrCb411ToYCbCr422_ZoomOut2_5MBDV_16s8u_P3C2R, zaniYCrCb411ToYCbCr422_ZoomOut2_EdgeDV_16s8u_P3C2R, 16, 4},
        {zaniYCrCb411ToYCbCr422_ZoomOut4_5MBDV_16s8u_P3C2R, zaniYCrCb411ToYCbCr422_ZoomOut4_EdgeDV_16s8u_P3C2R, 8, 2},
    };
    for (const Pair& f : pairs) {
        Pic a, e;
        ASSERT_EQ(zanStsOk, f.mb5(m.src, a.dst, Pic::kStep));
        ASSERT_EQ(zanStsOk, f.edge(m.src[0], e.dst[0], Pic::kStep));
        for (int y = 0; y < f.rows; ++y)
            for (int x = 0; x < f.halfBytes; ++x) {
                EXPECT_EQ(a.at(0, x, y), e.at(0, x, y)) << f.halfBytes << " " << x << " " << y;
                EXPECT_EQ(a.at(0, f.halfBytes + x, y), e.at(0, x, f.rows + y)) << f.halfBytes << " " << x << " " << y;
            }
        EXPECT_EQ(0xEE, e.at(0, f.halfBytes, 0));
        EXPECT_EQ(0xEE, e.at(0, 0, 2 * f.rows));
    }
    // ZoomOut8: the 4x1 pixels of the 5-macroblock form become 2x2.
    Pic a, e;
    ASSERT_EQ(zanStsOk, zaniYCrCb411ToYCbCr422_ZoomOut8_5MBDV_16s8u_P3C2R(m.src, a.dst));
    ASSERT_EQ(zanStsOk, zaniYCrCb411ToYCbCr422_ZoomOut8_EdgeDV_16s8u_P3C2R(m.src[0], e.dst[0], Pic::kStep));
    for (int x = 0; x < 4; ++x) {
        EXPECT_EQ(a.at(0, x, 0), e.at(0, x, 0));
        EXPECT_EQ(a.at(0, 4 + x, 0), e.at(0, x, 1));
    }
    EXPECT_EQ(0xEE, e.at(0, 8, 0));
    EXPECT_EQ(0xEE, e.at(0, 0, 2));
}

TEST(DvOutput, Layout420ChromaRowsByField) {
    Mbs m;
    Pic p;
    for (int r = 0; r < 8; ++r) m.at(0, 5, 0, r) = Zan16s(r);
    ASSERT_EQ(zanStsOk, zaniYCrCb420ToYCbCr422_5MBDV_16s8u_P3C2R(m.src, p.dst, Pic::kStep));
    const int rows[16] = {0, 1, 0, 1, 2, 3, 2, 3, 4, 5, 4, 5, 6, 7, 6, 7};
    for (int y = 0; y < 16; ++y) EXPECT_EQ(128 + rows[y], p.at(0, 1, y)) << y;
}

TEST(DvOutput, Dv100HalvesAndPreReduced) {
    Mbs m;
    Pic p;
    const Zan16s* halves[10];
    Zan8u* dst[10];
    for (int i = 0; i < 10; ++i) halves[i] = m.s.data() + 4 * 64 * i, dst[i] = p.dst[i];
    m.s[64 + 7] = 50;           // half 0, right luma block, last sample of row 0 -> pixel 15
    m.s[128 + 3] = -20;         // half 0, Cr sample 3 -> pair 3
    m.s[192 + 2] = 30;          // half 0, Cb sample 2 -> pair 2
    halves[6] = nullptr;
    ASSERT_EQ(zanStsOk, zaniYCrCb422ToYCbCr422_10HalvesMB16x8_DV100_16s8u_P3C2R(halves, dst, Pic::kStep));
    EXPECT_EQ(178, p.at(0, 30, 0));
    EXPECT_EQ(108, p.at(0, 15, 0));
    EXPECT_EQ(158, p.at(0, 9, 0));
    EXPECT_EQ(128, p.at(5, 0, 0));
    EXPECT_EQ(0xEE, p.at(6, 0, 0));
    // Pre-reduced 4:2:2: luma blocks 0 and 2 as 4x4 at the start of each block.
    Mbs r;
    Pic q;
    r.at(0, 2, 3, 1, 4) = 9;  // block 2, (3, 1) -> pixel 7 of row 1
    r.at(0, 1, 0, 0, 4) = 99;  // block 1 is not read
    ASSERT_EQ(zanStsOk, zaniYCrCb422ToYCbCr422_8x4x5MB_DV_16s8u_P3C2R(r.src, q.dst, Pic::kStep));
    EXPECT_EQ(137, q.at(0, 14, 1));
    EXPECT_EQ(128, q.at(0, 0, 0));
    EXPECT_EQ(0xEE, q.at(0, 16, 0));
    EXPECT_EQ(0xEE, q.at(0, 0, 4));
}

}  // namespace
