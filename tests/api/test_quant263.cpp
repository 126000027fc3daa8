// H.263 and MPEG-4 quantisation through the exported functions: statuses in
// their order, outputs untouched on failure, the records' layout and
// identifiers, limits at every sample depth, the DC scaler, mismatch control,
// exact division where the quantisers promise it, and forward/inverse pairs
// that land within one quantiser step.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <random>

#include "zanvc.h"

namespace {

using Coeffs = std::array<Zan16s, 64>;

Coeffs filled(Zan16s v) {
    Coeffs c;
    c.fill(v);
    return c;
}

// Caller memory for a record, with the record's start deliberately off a
// 16-byte boundary by `offset` bytes.
template <class Record, int Size>
struct SpecBuffer {
    alignas(16) std::array<Zan8u, Size + 32> bytes;
    Zan32s offset;
    explicit SpecBuffer(Zan32s off = 3) : offset(off) { bytes.fill(0xCC); }
    Record* start() { return reinterpret_cast<Record*>(bytes.data() + offset); }
    // The record as placed: the first 16-byte boundary at or after start().
    Record* placed() {
        auto a = (reinterpret_cast<std::uintptr_t>(start()) + 15) & ~std::uintptr_t{15};
        return reinterpret_cast<Record*>(a);
    }
};
using FwdBuffer = SpecBuffer<ZanQuantSpec_MPEG4, 412>;
using InvBuffer = SpecBuffer<ZanQuantInvSpec_MPEG4, 156>;

std::array<Zan8u, 64> flat_weights(Zan8u w) {
    std::array<Zan8u, 64> a;
    a.fill(w);
    return a;
}

// ------------------------------------------------------------- statuses

TEST(Quant263, H263StatusesInOrderAndNothingWrittenOnFailure) {
    Coeffs c = filled(100);
    const Coeffs before = c;
    Zan32s n = -5;
    EXPECT_EQ(zaniQuantIntra_H263_16s_C1I(nullptr, 0, &n, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniQuantInter_H263_16s_C1I(nullptr, 99, &n, 0), zanStsNullPtr);
    EXPECT_EQ(zaniQuantInvIntra_H263_16s_C1I(nullptr, -1, 0, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniQuantInvInter_H263_16s_C1I(nullptr, -1, 0, 0), zanStsNullPtr);
    for (Zan32s qp : {0, 32, -1}) {
        EXPECT_EQ(zaniQuantIntra_H263_16s_C1I(c.data(), qp, &n, 1, 0), zanStsQpBad) << qp;
        EXPECT_EQ(zaniQuantInter_H263_16s_C1I(c.data(), qp, &n, 1), zanStsQpBad) << qp;
        // QP is tested before the last index.
        EXPECT_EQ(zaniQuantInvIntra_H263_16s_C1I(c.data(), -1, qp, 0, 0), zanStsQpBad) << qp;
        EXPECT_EQ(zaniQuantInvInter_H263_16s_C1I(c.data(), -1, qp, 0), zanStsQpBad) << qp;
    }
    EXPECT_EQ(zaniQuantInvIntra_H263_16s_C1I(c.data(), -1, 5, 1, 1), zanStsOutOfRange);
    EXPECT_EQ(zaniQuantInvInter_H263_16s_C1I(c.data(), -1, 5, 0), zanStsOutOfRange);
    EXPECT_EQ(c, before);
    EXPECT_EQ(n, -5);
    // The count pointer is not required.
    EXPECT_EQ(zaniQuantInter_H263_16s_C1I(c.data(), 31, nullptr, 0), zanStsOk);
    EXPECT_EQ(zaniQuantIntra_H263_16s_C1I(c.data(), 1, nullptr, 0, 0), zanStsOk);
}

TEST(Quant263, GetSizeReportsRoomForPlacement) {
    Zan32s s = 0;
    EXPECT_EQ(zaniQuantIntraGetSize_MPEG4(nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniQuantInterGetSize_MPEG4(nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniQuantInvIntraGetSize_MPEG4(nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniQuantInvInterGetSize_MPEG4(nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniQuantIntraGetSize_MPEG4(&s), zanStsOk);
    EXPECT_EQ(s, 412);
    EXPECT_EQ(zaniQuantInterGetSize_MPEG4(&s), zanStsOk);
    EXPECT_EQ(s, 412);
    EXPECT_EQ(zaniQuantInvIntraGetSize_MPEG4(&s), zanStsOk);
    EXPECT_EQ(s, 156);
    EXPECT_EQ(zaniQuantInvInterGetSize_MPEG4(&s), zanStsOk);
    EXPECT_EQ(s, 156);
    EXPECT_EQ(sizeof(ZanQuantSpec_MPEG4) + 16, 412u);
    EXPECT_EQ(sizeof(ZanQuantInvSpec_MPEG4) + 16, 156u);
}

TEST(Quant263, InitChecksAreAsymmetric) {
    auto w = flat_weights(16);
    InvBuffer inv;
    FwdBuffer fwd;
    const auto invBefore = inv.bytes;
    EXPECT_EQ(zaniQuantInvIntraInit_MPEG4(w.data(), nullptr, 3), zanStsNullPtr);
    EXPECT_EQ(zaniQuantIntraInit_MPEG4(w.data(), nullptr, 8), zanStsNullPtr);
    for (Zan32s depth : {3, 13, 0, -8}) {
        EXPECT_EQ(zaniQuantInvIntraInit_MPEG4(w.data(), inv.start(), depth), zanStsOutOfRange) << depth;
        EXPECT_EQ(zaniQuantInvInterInit_MPEG4(nullptr, inv.start(), depth), zanStsOutOfRange) << depth;
    }
    EXPECT_EQ(inv.bytes, invBefore);
    // The forward records take any depth and store it.
    EXPECT_EQ(zaniQuantIntraInit_MPEG4(w.data(), fwd.start(), 3), zanStsOk);
    EXPECT_EQ(fwd.placed()->sampleDepth, 3);
    EXPECT_EQ(zaniQuantInterInit_MPEG4(nullptr, fwd.start(), 13), zanStsOk);
    EXPECT_EQ(fwd.placed()->sampleDepth, 13);
    // ... and a quantiser then refuses every QP rather than read past its table.
    Coeffs c = filled(50);
    Zan32s n = -1;
    EXPECT_EQ(zaniQuantInter_MPEG4_16s_C1I(c.data(), fwd.start(), 1, &n), zanStsQpBad);
    EXPECT_EQ(c, filled(50));
}

TEST(Quant263, InitPlacesTheRecordAndWritesItsIdentifier) {
    auto w = flat_weights(16);
    for (Zan32s off = 0; off < 16; ++off) {
        InvBuffer inv(off);
        FwdBuffer fwd(off);
        ASSERT_EQ(zaniQuantInvIntraInit_MPEG4(w.data(), inv.start(), 8), zanStsOk);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(inv.placed()) % 16, 0u);
        EXPECT_EQ(inv.placed()->identifier, 0x434D4152u);
        EXPECT_EQ(std::memcmp(&inv.placed()->identifier, "RAMC", 4), 0);
        // Bytes before the placed record stay as they were.
        for (Zan8u* b = inv.bytes.data() + off; b < reinterpret_cast<Zan8u*>(inv.placed()); ++b) EXPECT_EQ(*b, 0xCC);
        ASSERT_EQ(zaniQuantInvInterInit_MPEG4(w.data(), inv.start(), 8), zanStsOk);
        EXPECT_EQ(std::memcmp(&inv.placed()->identifier, "SAMC", 4), 0);
        ASSERT_EQ(zaniQuantIntraInit_MPEG4(w.data(), fwd.start(), 8), zanStsOk);
        EXPECT_EQ(std::memcmp(&fwd.placed()->identifier, "TAMC", 4), 0);
        ASSERT_EQ(zaniQuantInterInit_MPEG4(w.data(), fwd.start(), 8), zanStsOk);
        EXPECT_EQ(std::memcmp(&fwd.placed()->identifier, "UAMC", 4), 0);
    }
}

TEST(Quant263, InitFillsTheWeightFields) {
    std::array<Zan8u, 64> w;
    for (int i = 0; i < 64; ++i) w[i] = static_cast<Zan8u>(i == 0 ? 1 : i == 1 ? 2 : i == 2 ? 255 : 3 * i + 1);
    FwdBuffer fwd;
    ASSERT_EQ(zaniQuantIntraInit_MPEG4(w.data(), fwd.start(), 8), zanStsOk);
    const ZanQuantSpec_MPEG4* s = fwd.placed();
    EXPECT_EQ(s->useWeights, 1);
    EXPECT_EQ(s->reciprocals.integer.reciprocal[0], 65535);  // not 65537
    EXPECT_EQ(s->reciprocals.integer.reciprocal[1], 32769);
    EXPECT_EQ(s->reciprocals.integer.reciprocal[2], 258);
    for (int i = 0; i < 64; ++i) {
        EXPECT_EQ(s->halfWeights[i], w[i] / 2);
        if (w[i] > 1) {
            EXPECT_EQ(s->reciprocals.integer.reciprocal[i], 65536 / w[i] + 1);
        }
        EXPECT_EQ(s->reciprocals.integer.weight[i], w[i]);
    }
    ASSERT_EQ(zaniQuantInterInit_MPEG4(w.data(), fwd.start(), 10), zanStsOk);
    for (int i = 0; i < 64; ++i) {
        EXPECT_EQ(s->halfWeights[i], w[i]);
        EXPECT_EQ(s->reciprocals.real[i], 1.0f / static_cast<float>(w[i]));
    }
    InvBuffer inv;
    ASSERT_EQ(zaniQuantInvInterInit_MPEG4(w.data(), inv.start(), 12), zanStsOk);
    EXPECT_EQ(inv.placed()->sampleDepth, 12);
    EXPECT_EQ(inv.placed()->useWeights, 1);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(inv.placed()->weights[i], w[i]);
    // Without weights: the flag drops and the old weights stay.
    ASSERT_EQ(zaniQuantInvInterInit_MPEG4(nullptr, inv.start(), 9), zanStsOk);
    EXPECT_EQ(inv.placed()->useWeights, 0);
    EXPECT_EQ(inv.placed()->sampleDepth, 9);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(inv.placed()->weights[i], w[i]);
}

TEST(Quant263, ZeroWeightStopsTheCopyAfterTheIdentifier) {
    auto w = flat_weights(20);
    w[10] = 0;
    InvBuffer inv;
    inv.placed()->useWeights = 77;
    EXPECT_EQ(zaniQuantInvIntraInit_MPEG4(w.data(), inv.start(), 8), zanStsQpBad);
    EXPECT_EQ(inv.placed()->identifier, 0x434D4152u);
    EXPECT_EQ(inv.placed()->useWeights, 77);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(inv.placed()->weights[i], 20);
    EXPECT_EQ(inv.placed()->weights[10], 0xCCCC);
    FwdBuffer fwd;
    fwd.placed()->useWeights = 77;
    EXPECT_EQ(zaniQuantInterInit_MPEG4(w.data(), fwd.start(), 8), zanStsQpBad);
    EXPECT_EQ(fwd.placed()->identifier, 0x434D4155u);
    EXPECT_EQ(fwd.placed()->useWeights, 77);
    EXPECT_EQ(fwd.placed()->halfWeights[9], 10);
    EXPECT_EQ(fwd.placed()->halfWeights[10], 0xCCCC);
}

TEST(Quant263, Mpeg4StatusesInOrder) {
    FwdBuffer intra, inter;
    InvBuffer invIntra, invInter;
    ASSERT_EQ(zaniQuantIntraInit_MPEG4(nullptr, intra.start(), 8), zanStsOk);
    ASSERT_EQ(zaniQuantInterInit_MPEG4(nullptr, inter.start(), 8), zanStsOk);
    ASSERT_EQ(zaniQuantInvIntraInit_MPEG4(nullptr, invIntra.start(), 8), zanStsOk);
    ASSERT_EQ(zaniQuantInvInterInit_MPEG4(nullptr, invInter.start(), 8), zanStsOk);
    Coeffs c = filled(300);
    Zan32s n = -5;
    // Null pointers first, whatever else is wrong.
    EXPECT_EQ(zaniQuantIntra_MPEG4_16s_C1I(nullptr, inter.start(), 0, &n, 0), zanStsNullPtr);
    EXPECT_EQ(zaniQuantIntra_MPEG4_16s_C1I(c.data(), nullptr, 0, &n, 0), zanStsNullPtr);
    EXPECT_EQ(zaniQuantIntra_MPEG4_16s_C1I(c.data(), inter.start(), 0, nullptr, 0), zanStsNullPtr);
    EXPECT_EQ(zaniQuantInter_MPEG4_16s_C1I(c.data(), intra.start(), 0, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniQuantInvIntra_MPEG4_16s_C1I(nullptr, 63, invInter.start(), 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniQuantInvInter_MPEG4_16s_C1I(c.data(), 63, nullptr, 0), zanStsNullPtr);
    // Then the identifier, before QP: each record belongs to one function.
    EXPECT_EQ(zaniQuantIntra_MPEG4_16s_C1I(c.data(), inter.start(), 0, &n, 0), zanStsContextMismatch);
    EXPECT_EQ(zaniQuantInter_MPEG4_16s_C1I(c.data(), intra.start(), 0, &n), zanStsContextMismatch);
    EXPECT_EQ(zaniQuantInvIntra_MPEG4_16s_C1I(c.data(), 63, reinterpret_cast<const ZanQuantInvSpec_MPEG4*>(intra.start()), 5, 0),
              zanStsContextMismatch);
    EXPECT_EQ(zaniQuantInvIntra_MPEG4_16s_C1I(c.data(), 63, invInter.start(), 0, 0), zanStsContextMismatch);
    EXPECT_EQ(zaniQuantInvInter_MPEG4_16s_C1I(c.data(), 63, invIntra.start(), 5), zanStsContextMismatch);
    // Then QP against the depth's maximum.
    EXPECT_EQ(zaniQuantIntra_MPEG4_16s_C1I(c.data(), intra.start(), 0, &n, 0), zanStsQpBad);
    EXPECT_EQ(zaniQuantInter_MPEG4_16s_C1I(c.data(), inter.start(), 32, &n), zanStsQpBad);
    EXPECT_EQ(zaniQuantInvIntra_MPEG4_16s_C1I(c.data(), 63, invIntra.start(), 32, 1), zanStsQpBad);
    EXPECT_EQ(zaniQuantInvInter_MPEG4_16s_C1I(c.data(), 63, invInter.start(), -3), zanStsQpBad);
    EXPECT_EQ(c, filled(300));
    EXPECT_EQ(n, -5);
    // The last index is not checked by the MPEG-4 inverse forms.
    EXPECT_EQ(zaniQuantInvInter_MPEG4_16s_C1I(c.data(), -1, invInter.start(), 5), zanStsOk);
    EXPECT_EQ(c, filled(300));
}

TEST(Quant263, Mpeg4QpRangeFollowsTheDepth) {
    const Zan32s maxQp[9] = {1, 3, 7, 15, 31, 63, 127, 255, 511};
    for (Zan32s depth = 4; depth <= 12; ++depth) {
        FwdBuffer fwd;
        InvBuffer inv;
        ASSERT_EQ(zaniQuantInterInit_MPEG4(nullptr, fwd.start(), depth), zanStsOk);
        ASSERT_EQ(zaniQuantInvInterInit_MPEG4(nullptr, inv.start(), depth), zanStsOk);
        Coeffs c = filled(7);
        Zan32s n;
        const Zan32s top = maxQp[depth - 4];
        EXPECT_EQ(zaniQuantInter_MPEG4_16s_C1I(c.data(), fwd.start(), top, &n), zanStsOk) << depth;
        EXPECT_EQ(zaniQuantInter_MPEG4_16s_C1I(c.data(), fwd.start(), top + 1, &n), zanStsQpBad) << depth;
        EXPECT_EQ(zaniQuantInvInter_MPEG4_16s_C1I(c.data(), 63, inv.start(), top), zanStsOk) << depth;
        EXPECT_EQ(zaniQuantInvInter_MPEG4_16s_C1I(c.data(), 63, inv.start(), top + 1), zanStsQpBad) << depth;
    }
}

// ------------------------------------------------------------ H.263 answers

TEST(Quant263, H263IntraDcAvoidsTheMissingCodes) {
    Coeffs c = filled(0);
    Zan32s n = 0;
    c[0] = 2036;  // (2040 >> 3) = 255, stored as 254
    ASSERT_EQ(zaniQuantIntra_H263_16s_C1I(c.data(), 10, &n, 0, 0), zanStsOk);
    EXPECT_EQ(c[0], 254);
    EXPECT_EQ(n, 1);
    c = filled(0);
    ASSERT_EQ(zaniQuantIntra_H263_16s_C1I(c.data(), 10, &n, 0, 0), zanStsOk);
    EXPECT_EQ(c[0], 1);  // a DC of 0 gives 1
    c[0] = 1000;
    c[1] = -45;  // intra AC: 45 / 20 toward zero, no dead zone
    c[2] = 39;
    ASSERT_EQ(zaniQuantIntra_H263_16s_C1I(c.data(), 10, &n, 0, 0), zanStsOk);
    EXPECT_EQ(c[0], 125);
    EXPECT_EQ(c[1], -2);
    EXPECT_EQ(c[2], 1);
    EXPECT_EQ(n, 3);
    // Advanced intra: the DC takes the AC rule and may become 0.
    c = filled(0);
    c[0] = 15;
    c[1] = 16;
    ASSERT_EQ(zaniQuantIntra_H263_16s_C1I(c.data(), 4, &n, 7, 0), zanStsOk);
    EXPECT_EQ(c[0], 1);  // 15 * 4097 >> 16: the reciprocal rounds up at 15/8
    EXPECT_EQ(c[1], 2);
    c[0] = 7;
    ASSERT_EQ(zaniQuantIntra_H263_16s_C1I(c.data(), 4, &n, 1, 0), zanStsOk);
    EXPECT_EQ(c[0], 0);
}

TEST(Quant263, H263ForwardLimitsAndDeadZone) {
    Coeffs c = filled(0);
    Zan32s n = 0;
    c[0] = 100;   // (100 - 5) / 20
    c[1] = -104;  // dead zone 5: 99 / 20
    c[2] = 24;    // 19 / 20: 0
    c[3] = 25;
    ASSERT_EQ(zaniQuantInter_H263_16s_C1I(c.data(), 10, &n, 0), zanStsOk);
    EXPECT_EQ(c[0], 4);
    EXPECT_EQ(c[1], -4);
    EXPECT_EQ(c[2], 0);
    EXPECT_EQ(c[3], 1);
    EXPECT_EQ(n, 3);
    // QP 1 halves toward zero, limited to 127 unless modified quantisation.
    for (Zan32s mq : {0, 1}) {
        c = filled(0);
        c[0] = -3;
        c[1] = 3;
        c[2] = 1000;
        c[3] = -32768;
        ASSERT_EQ(zaniQuantInter_H263_16s_C1I(c.data(), 1, &n, mq), zanStsOk);
        EXPECT_EQ(c[0], -1);
        EXPECT_EQ(c[1], 1);
        EXPECT_EQ(c[2], mq ? 500 : 127);
        EXPECT_EQ(c[3], mq ? -16384 : -127);
    }
    // From QP 8 the levels are not limited.
    c = filled(0);
    c[5] = -4000;
    ASSERT_EQ(zaniQuantInter_H263_16s_C1I(c.data(), 8, &n, 0), zanStsOk);
    EXPECT_EQ(c[5], -((4000 - 4) * 4097 >> 16));
    c[5] = 4000;
    ASSERT_EQ(zaniQuantInter_H263_16s_C1I(c.data(), 7, &n, 0), zanStsOk);
    EXPECT_EQ(c[5], 127);
    // Advanced intra keeps the limit of 127 at every QP unless modQuantFlag.
    c = filled(0);
    c[9] = 4000;
    ASSERT_EQ(zaniQuantIntra_H263_16s_C1I(c.data(), 8, &n, 1, 0), zanStsOk);
    EXPECT_EQ(c[9], 127);
    c[9] = 4000;
    ASSERT_EQ(zaniQuantIntra_H263_16s_C1I(c.data(), 8, &n, 1, 2), zanStsOk);
    EXPECT_EQ(c[9], 4000 * 4097 >> 16);
}

TEST(Quant263, H263InverseKnownAnswers) {
    Coeffs c = filled(0);
    c[1] = 3;
    c[2] = -3;
    ASSERT_EQ(zaniQuantInvInter_H263_16s_C1I(c.data(), 2, 4, 0), zanStsOk);
    EXPECT_EQ(c[1], 27);  // 3 * 8 + 3
    EXPECT_EQ(c[2], -27);
    c = filled(0);
    c[1] = -3;
    c[7] = 127;
    c[6] = -127;
    ASSERT_EQ(zaniQuantInvInter_H263_16s_C1I(c.data(), 1, 5, 0), zanStsOk);
    EXPECT_EQ(c[1], -35);  // -30 - 5
    EXPECT_EQ(c[7], 127 * 10 + 5);
    EXPECT_EQ(c[6], -(127 * 10 + 5));
    c = filled(0);
    c[0] = 127;
    c[1] = -127;
    c[2] = 32767;
    c[3] = -32768;
    ASSERT_EQ(zaniQuantInvInter_H263_16s_C1I(c.data(), 3, 31, 1), zanStsOk);
    EXPECT_EQ(c[0], 2047);
    EXPECT_EQ(c[1], -2048);
    EXPECT_EQ(c[2], 2047);
    EXPECT_EQ(c[3], -2048);
}

TEST(Quant263, H263InverseTouchesWholeGroupsUpToTheLastIndex) {
    Coeffs c = filled(1);
    ASSERT_EQ(zaniQuantInvInter_H263_16s_C1I(c.data(), 3, 2, 0), zanStsOk);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(c[i], i < 8 ? 5 : 1) << i;  // 1 * 4 + 1
    c = filled(1);
    ASSERT_EQ(zaniQuantInvInter_H263_16s_C1I(c.data(), 200, 1, 0), zanStsOk);  // counts as 63
    for (int i = 0; i < 64; ++i) EXPECT_EQ(c[i], 3) << i;
    // Intra: the DC becomes DC * 8; with a last index of 0 the AC stays.
    c = filled(2);
    c[0] = 100;
    ASSERT_EQ(zaniQuantInvIntra_H263_16s_C1I(c.data(), 0, 7, 0, 0), zanStsOk);
    EXPECT_EQ(c[0], 800);
    for (int i = 1; i < 64; ++i) EXPECT_EQ(c[i], 2) << i;
    c[0] = 100;
    ASSERT_EQ(zaniQuantInvIntra_H263_16s_C1I(c.data(), 9, 7, 0, 0), zanStsOk);
    EXPECT_EQ(c[0], 800);
    for (int i = 1; i < 64; ++i) EXPECT_EQ(c[i], i < 16 ? 2 * 14 + 7 : 2) << i;
}

TEST(Quant263, H263AdvancedIntraInverseWraps) {
    Coeffs c = filled(0);
    c[0] = 1000;
    c[1] = -3;
    c[8] = 5;
    ASSERT_EQ(zaniQuantInvIntra_H263_16s_C1I(c.data(), 1, 31, 1, 0), zanStsOk);
    EXPECT_EQ(c[0], static_cast<Zan16s>(62000 - 65536));  // no limit, 16-bit wrap
    EXPECT_EQ(c[1], -186);                                 // no offset
    EXPECT_EQ(c[8], 5);                                    // beyond the group of index 1
}

// ------------------------------------------------------------ MPEG-4 answers

// The luma and chroma DC scalers for QP 1..31, from the MPEG-4 table.
constexpr Zan32s kLumaScaler[31] = {8,  8,  8,  8,  10, 12, 14, 16, 17, 18, 19, 20, 21, 22, 23, 24,
                                    25, 26, 27, 28, 29, 30, 31, 32, 34, 36, 38, 40, 42, 44, 46};
constexpr Zan32s kChromaScaler[31] = {8,  8,  8,  8,  9,  9,  10, 10, 11, 11, 12, 12, 13, 13, 14, 14,
                                      15, 15, 16, 16, 17, 17, 18, 18, 19, 20, 21, 22, 23, 24, 25};

TEST(Quant263, Mpeg4DcScaler) {
    InvBuffer inv;
    ASSERT_EQ(zaniQuantInvIntraInit_MPEG4(nullptr, inv.start(), 8), zanStsOk);
    for (Zan32s qp = 1; qp <= 31; ++qp)
        for (Zan32s chroma : {0, 1, 0x100}) {
            Coeffs c = filled(0);
            c[0] = 1;
            ASSERT_EQ(zaniQuantInvIntra_MPEG4_16s_C1I(c.data(), 0, inv.start(), qp, chroma), zanStsOk);
            EXPECT_EQ(c[0], (chroma ? kChromaScaler : kLumaScaler)[qp - 1]) << qp << " " << chroma;
        }
    // Above 31 (depths above 8) the last formulas go on.
    ASSERT_EQ(zaniQuantInvIntraInit_MPEG4(nullptr, inv.start(), 12), zanStsOk);
    Coeffs c = filled(0);
    c[0] = 1;
    ASSERT_EQ(zaniQuantInvIntra_MPEG4_16s_C1I(c.data(), 0, inv.start(), 511, 0), zanStsOk);
    EXPECT_EQ(c[0], 2 * 511 - 16);
    c[0] = 1;
    ASSERT_EQ(zaniQuantInvIntra_MPEG4_16s_C1I(c.data(), 0, inv.start(), 511, 1), zanStsOk);
    EXPECT_EQ(c[0], 511 - 6);
    // The DC value is limited to the depth's range.
    ASSERT_EQ(zaniQuantInvIntraInit_MPEG4(nullptr, inv.start(), 5), zanStsOk);
    c[0] = 100;
    ASSERT_EQ(zaniQuantInvIntra_MPEG4_16s_C1I(c.data(), 0, inv.start(), 3, 0), zanStsOk);
    EXPECT_EQ(c[0], 255);
    c[0] = -100;
    ASSERT_EQ(zaniQuantInvIntra_MPEG4_16s_C1I(c.data(), 0, inv.start(), 3, 0), zanStsOk);
    EXPECT_EQ(c[0], -256);
}

TEST(Quant263, Mpeg4ForwardDc) {
    FwdBuffer fwd;
    ASSERT_EQ(zaniQuantIntraInit_MPEG4(nullptr, fwd.start(), 8), zanStsOk);
    auto dc = [&](Zan32s value, Zan32s qp, Zan32s chroma) {
        Coeffs c = filled(0);
        c[0] = static_cast<Zan16s>(value);
        Zan32s n = -1;
        EXPECT_EQ(zaniQuantIntra_MPEG4_16s_C1I(c.data(), fwd.start(), qp, &n, chroma), zanStsOk);
        EXPECT_EQ(n, c[0] != 0);
        return c[0];
    };
    // Scaler 8 (QP below 5).
    EXPECT_EQ(dc(4, 2, 0), 1);
    EXPECT_EQ(dc(3, 2, 0), 0);
    EXPECT_EQ(dc(-3, 2, 0), 0);
    EXPECT_EQ(dc(-4, 2, 0), -1);
    EXPECT_EQ(dc(-12, 2, 0), -2);
    EXPECT_EQ(dc(-11, 2, 0), -1);
    EXPECT_EQ(dc(1020, 4, 1), 128);
    // Scaler 18 (luma QP 10): rounding to nearest, halves away from zero.
    EXPECT_EQ(dc(9, 10, 0), 1);
    EXPECT_EQ(dc(8, 10, 0), 0);
    EXPECT_EQ(dc(-9, 10, 0), -1);
    EXPECT_EQ(dc(-8, 10, 0), 0);
    EXPECT_EQ(dc(26, 10, 0), 1);
    EXPECT_EQ(dc(27, 10, 0), 2);
    EXPECT_EQ(dc(-27, 10, 0), -2);
    // Chroma QP 10: scaler 11, half 6.
    EXPECT_EQ(dc(6, 10, 1), 1);
    EXPECT_EQ(dc(5, 10, 1), 0);
    EXPECT_EQ(dc(-6, 10, 1), -1);
    // Limited to -2047..2047.
    EXPECT_EQ(dc(32767, 1, 0), 2047);
    EXPECT_EQ(dc(-32768, 1, 0), -2047);
}

TEST(Quant263, Mpeg4LimitsAtEveryDepth) {
    for (Zan32s depth = 4; depth <= 12; ++depth) {
        const Zan32s lo = -(1 << (depth + 3)), hi = (1 << (depth + 3)) - 1;
        FwdBuffer fwd;
        InvBuffer inv, invW;
        auto w = flat_weights(255);
        ASSERT_EQ(zaniQuantInterInit_MPEG4(nullptr, fwd.start(), depth), zanStsOk);
        ASSERT_EQ(zaniQuantInvInterInit_MPEG4(nullptr, inv.start(), depth), zanStsOk);
        ASSERT_EQ(zaniQuantInvInterInit_MPEG4(w.data(), invW.start(), depth), zanStsOk);
        Coeffs c = filled(0);
        c[0] = 32767;
        c[1] = -32768;
        c[2] = 20;
        Zan32s n;
        ASSERT_EQ(zaniQuantInter_MPEG4_16s_C1I(c.data(), fwd.start(), 1, &n), zanStsOk);
        EXPECT_EQ(c[0], hi < 16383 ? hi : 16383) << depth;
        EXPECT_EQ(c[1], lo > -16384 ? lo : -16384) << depth;
        EXPECT_EQ(c[2], 10);
        EXPECT_EQ(n, 3);
        c = filled(0);
        c[0] = 32767;
        c[1] = -32768;
        c[2] = 1;
        ASSERT_EQ(zaniQuantInvInter_MPEG4_16s_C1I(c.data(), 2, inv.start(), 1), zanStsOk);
        EXPECT_EQ(c[0], hi) << depth;
        EXPECT_EQ(c[1], lo) << depth;
        EXPECT_EQ(c[2], 3);
        c = filled(0);
        c[0] = 32767;
        c[1] = -32768;
        ASSERT_EQ(zaniQuantInvInter_MPEG4_16s_C1I(c.data(), 1, invW.start(), 1), zanStsOk);
        EXPECT_EQ(c[0], hi) << depth;
        EXPECT_EQ(c[1], lo) << depth;
    }
}

TEST(Quant263, Mpeg4MismatchControlTogglesCoefficient63) {
    auto w = flat_weights(16);
    InvBuffer inter, intra;
    ASSERT_EQ(zaniQuantInvInterInit_MPEG4(w.data(), inter.start(), 8), zanStsOk);
    ASSERT_EQ(zaniQuantInvIntraInit_MPEG4(w.data(), intra.start(), 8), zanStsOk);
    Coeffs c = filled(0);
    c[3] = 1;  // (2 + 1) * 16 * 1 / 16 = 3: odd sum, nothing toggled
    ASSERT_EQ(zaniQuantInvInter_MPEG4_16s_C1I(c.data(), 3, inter.start(), 1), zanStsOk);
    EXPECT_EQ(c[3], 3);
    EXPECT_EQ(c[63], 0);
    c = filled(0);
    c[3] = 1;
    c[4] = -1;  // 3 - 3 = 0: even, 0 becomes 1
    ASSERT_EQ(zaniQuantInvInter_MPEG4_16s_C1I(c.data(), 4, inter.start(), 1), zanStsOk);
    EXPECT_EQ(c[4], -3);
    EXPECT_EQ(c[63], 1);
    c = filled(0);
    c[0] = 1;
    c[63] = 1;  // 3 + 3 = 6: even, the odd 3 is lowered to 2
    ASSERT_EQ(zaniQuantInvInter_MPEG4_16s_C1I(c.data(), 63, inter.start(), 1), zanStsOk);
    EXPECT_EQ(c[0], 3);
    EXPECT_EQ(c[63], 2);
    c = filled(0);
    c[62] = -1;
    c[63] = -2;  // -3 + -(5 * 16 / 16 = 5) = -8: even, -5 becomes -6
    ASSERT_EQ(zaniQuantInvInter_MPEG4_16s_C1I(c.data(), 63, inter.start(), 1), zanStsOk);
    EXPECT_EQ(c[62], -3);
    EXPECT_EQ(c[63], -6);
    // Without weights nothing is toggled.
    InvBuffer plain;
    ASSERT_EQ(zaniQuantInvInterInit_MPEG4(nullptr, plain.start(), 8), zanStsOk);
    c = filled(0);
    c[3] = 1;
    c[4] = 1;
    ASSERT_EQ(zaniQuantInvInter_MPEG4_16s_C1I(c.data(), 4, plain.start(), 1), zanStsOk);
    EXPECT_EQ(c[63], 0);
    // Intra: the DC joins the sum.  QP 9, scaler 17: DC 17 plus AC 2*1*16*9/16 = 18.
    c = filled(0);
    c[0] = 1;
    c[1] = 1;
    ASSERT_EQ(zaniQuantInvIntra_MPEG4_16s_C1I(c.data(), 1, intra.start(), 9, 0), zanStsOk);
    EXPECT_EQ(c[0], 17);
    EXPECT_EQ(c[1], 18);
    EXPECT_EQ(c[63], 0);  // 35 is odd
    c = filled(0);
    c[0] = 2;
    c[1] = 1;
    ASSERT_EQ(zaniQuantInvIntra_MPEG4_16s_C1I(c.data(), 1, intra.start(), 9, 0), zanStsOk);
    EXPECT_EQ(c[63], 1);  // 34 + 18 is even
    // Intra with only the DC: an even DC sets coefficient 63 to 1.
    c = filled(0);
    c[0] = 2;
    c[63] = 6;
    ASSERT_EQ(zaniQuantInvIntra_MPEG4_16s_C1I(c.data(), 0, intra.start(), 9, 0), zanStsOk);
    EXPECT_EQ(c[0], 34);
    EXPECT_EQ(c[63], 1);
    c[0] = 1;
    c[63] = 6;
    ASSERT_EQ(zaniQuantInvIntra_MPEG4_16s_C1I(c.data(), 0, intra.start(), 9, 0), zanStsOk);
    EXPECT_EQ(c[0], 17);
    EXPECT_EQ(c[63], 6);
}

TEST(Quant263, Mpeg4WeightedInverseKnownAnswers) {
    std::array<Zan8u, 64> w;
    for (int i = 0; i < 64; ++i) w[i] = static_cast<Zan8u>(8 + i);
    InvBuffer inter, intra;
    ASSERT_EQ(zaniQuantInvInterInit_MPEG4(w.data(), inter.start(), 8), zanStsOk);
    ASSERT_EQ(zaniQuantInvIntraInit_MPEG4(w.data(), intra.start(), 8), zanStsOk);
    Coeffs c = filled(0);
    c[1] = 2;   // (4 + 1) * 9 * 3 / 16 = 135 / 16 = 8
    c[2] = -2;  // -8, toward zero
    c[9] = 7;   // beyond the group of index 2
    ASSERT_EQ(zaniQuantInvInter_MPEG4_16s_C1I(c.data(), 2, inter.start(), 3), zanStsOk);
    EXPECT_EQ(c[1], 8);
    EXPECT_EQ(c[2], -(5 * 10 * 3 / 16));
    EXPECT_EQ(c[9], 7);
    c = filled(0);
    c[1] = 3;  // intra: 6 * 9 * 5 / 16 = 270 / 16 = 16
    c[2] = -3;
    ASSERT_EQ(zaniQuantInvIntra_MPEG4_16s_C1I(c.data(), 2, intra.start(), 5, 0), zanStsOk);
    EXPECT_EQ(c[1], 16);
    EXPECT_EQ(c[2], -(6 * 10 * 5 / 16));
}

// ----------------------------------------------- exact division, exhaustively

// The weighted forward quantisers divide exactly: with the matrix scale
// t = (16 a + w / 2) / w, intra levels are (t + (3 QP + 2) / 4) / (2 QP) and
// inter levels t / (2 QP), for every magnitude, weight and QP tried.
TEST(Quant263, WeightedForwardIsExactDivision) {
    struct Case {
        Zan32s depth;
        std::initializer_list<Zan32s> qps;
    };
    for (const Case& k : {Case{8, {1, 2, 3, 5, 7, 16, 29, 31}}, Case{12, {1, 33, 255, 511}}}) {
        const Zan32s hi = (1 << (k.depth + 3)) - 1;
        for (Zan32s w = 1; w <= 255; ++w) {
            auto weights = flat_weights(static_cast<Zan8u>(w));
            FwdBuffer intra, inter;
            ASSERT_EQ(zaniQuantIntraInit_MPEG4(weights.data(), intra.start(), k.depth), zanStsOk);
            ASSERT_EQ(zaniQuantInterInit_MPEG4(weights.data(), inter.start(), k.depth), zanStsOk);
            for (Zan32s qp : k.qps)
                for (Zan32s base = 0; base < 4096; base += 64) {
                    Coeffs a, b;
                    for (int i = 0; i < 64; ++i) a[i] = b[i] = static_cast<Zan16s>(-(base + i));
                    Zan32s n;
                    ASSERT_EQ(zaniQuantIntra_MPEG4_16s_C1I(a.data(), intra.start(), qp, &n, 0), zanStsOk);
                    ASSERT_EQ(zaniQuantInter_MPEG4_16s_C1I(b.data(), inter.start(), qp, &n), zanStsOk);
                    for (int i = 0; i < 64; ++i) {
                        Zan32s mag = base + i, t = (16 * mag + w / 2) / w;
                        // Negative levels stop at the lower limit, -(hi + 1).
                        Zan32s wantIntra = std::min((t + (3 * qp + 2) / 4) / (2 * qp), hi + 1);
                        Zan32s wantInter = std::min(t / (2 * qp), hi + 1);
                        if (i > 0) {
                            ASSERT_EQ(a[i], -wantIntra) << "w " << w << " QP " << qp << " a " << mag;
                        }
                        ASSERT_EQ(b[i], -wantInter) << "w " << w << " QP " << qp << " a " << mag;
                    }
                }
        }
    }
}

// Without weights the integer levels are (t * (32768 / QP + 1)) >> 16, which
// is exact division by 2 QP for every t below 1115 at all QP (and at every t
// for QP 1, 3, 9 and 11), and never more than one above it.  Above depth 8
// the single-precision product with 0.5000001 / QP is exact for every
// magnitude and QP.
TEST(Quant263, UnweightedForwardAgainstExactDivision) {
    for (Zan32s depth : {8, 12}) {
        FwdBuffer fwd;
        ASSERT_EQ(zaniQuantIntraInit_MPEG4(nullptr, fwd.start(), depth), zanStsOk);
        const Zan32s top = depth == 8 ? 31 : 511;
        for (Zan32s qp = 1; qp <= top; ++qp)
            for (Zan32s base = 0; base <= 32768; base += 64) {
                Coeffs c;
                for (int i = 0; i < 64; ++i) c[i] = static_cast<Zan16s>(base + i > 32767 ? 32767 : base + i);
                Zan32s n;
                ASSERT_EQ(zaniQuantIntra_MPEG4_16s_C1I(c.data(), fwd.start(), qp, &n, 0), zanStsOk);
                for (int i = 1; i < 64; ++i) {
                    Zan32s t = base + i > 32767 ? 32767 : base + i;
                    Zan32s exact = t / (2 * qp), hi = (1 << (depth + 3)) - 1;
                    Zan32s got = c[i];
                    if (exact >= hi) {
                        ASSERT_EQ(got, hi);
                    } else if (depth > 8 || t < 1115 || qp == 1 || qp == 3 || qp == 9 || qp == 11) {
                        ASSERT_EQ(got, exact) << "depth " << depth << " QP " << qp << " t " << t;
                    } else {
                        ASSERT_TRUE(got == exact || got == exact + 1) << "QP " << qp << " t " << t;
                    }
                }
            }
    }
}

// -------------------------------------------- forward then inverse, in pairs

TEST(Quant263, PairsLandWithinOneStep) {
    std::mt19937 gen(2026);
    // Weights from 8 (the smallest of the default matrices) keep every level
    // of a transform-range coefficient inside the depth-8 limits.
    std::uniform_int_distribution<int> coef(-2040, 2040), weight(8, 255);
    for (int draw = 0; draw < 400; ++draw) {
        const Zan32s qp = 1 + draw % 31;
        Coeffs orig;
        for (auto& v : orig) v = static_cast<Zan16s>(coef(gen));
        // H.263 inter, without the level limit.
        Coeffs c = orig;
        Zan32s n;
        ASSERT_EQ(zaniQuantInter_H263_16s_C1I(c.data(), qp, &n, 1), zanStsOk);
        ASSERT_EQ(zaniQuantInvInter_H263_16s_C1I(c.data(), 63, qp, 1), zanStsOk);
        for (int i = 0; i < 64; ++i) {
            Zan32s err = std::abs(c[i] - orig[i]);
            // Within a step of 2 QP; a zero level also covers the dead zone.
            EXPECT_LE(err, c[i] ? 2 * qp : 2 * qp + qp / 2) << "H.263 QP " << qp << " c " << orig[i];
        }
        // H.263 intra: AC within a step, DC within 4 of its multiple of 8.
        c = orig;
        c[0] = static_cast<Zan16s>(std::abs(orig[0]) % 2000 + 8);
        const Zan32s dc = c[0];
        ASSERT_EQ(zaniQuantIntra_H263_16s_C1I(c.data(), qp, &n, 0, 1), zanStsOk);
        ASSERT_EQ(zaniQuantInvIntra_H263_16s_C1I(c.data(), 63, qp, 0, 1), zanStsOk);
        EXPECT_LE(std::abs(c[0] - dc), 4);
        for (int i = 1; i < 64; ++i) EXPECT_LE(std::abs(c[i] - orig[i]), 2 * qp) << "H.263 intra QP " << qp;
        // MPEG-4 with a weight matrix: one step is 2 QP w / 16 in the
        // coefficient domain; mismatch control may move coefficient 63 by 1.
        std::array<Zan8u, 64> w;
        for (auto& x : w) x = static_cast<Zan8u>(weight(gen));
        FwdBuffer fwd;
        InvBuffer inv;
        ASSERT_EQ(zaniQuantInterInit_MPEG4(w.data(), fwd.start(), 8), zanStsOk);
        ASSERT_EQ(zaniQuantInvInterInit_MPEG4(w.data(), inv.start(), 8), zanStsOk);
        c = orig;
        ASSERT_EQ(zaniQuantInter_MPEG4_16s_C1I(c.data(), fwd.start(), qp, &n), zanStsOk);
        ASSERT_EQ(zaniQuantInvInter_MPEG4_16s_C1I(c.data(), 63, inv.start(), qp), zanStsOk);
        for (int i = 0; i < 64; ++i) {
            Zan32s step = (2 * qp * w[i] + 15) / 16;
            EXPECT_LE(std::abs(c[i] - orig[i]), step + 1) << "MPEG-4 QP " << qp << " w " << int(w[i]) << " c " << orig[i];
        }
    }
}

}  // namespace
