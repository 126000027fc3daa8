// Coefficient decoders through the exported functions: statuses in their
// order with nothing written on failure, every row of the failure table
// (what *pLastCoeffIndex, the cursor and the block hold), and known answers
// worked out by hand from the code tables of the standards.
#include "coef_test_util.h"

namespace {

using namespace coeftest;

// A hand-made stream: bit string s written at bit offset `off` of the
// origin, everything else `fill`.
struct Bits {
    Stream s;
    Zan8u* p;
    Zan32s off;
    Zan32s end;
    Bits(const std::string& bits, Zan32s offset = 0, Zan8u fill = 0) : s(64, fill), p(s.origin()), off(offset) {
        end = put_bits(s.origin(), offset, bits);
    }
    Zan32s pos() { return s.pos(p, off); }
};

constexpr Zan8u kZigzag[64] = {0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,
                               12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13, 6,  7,  14, 21, 28,
                               35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51,
                               58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

// ------------------------------------------------------------- statuses

TEST(CoefDec, NullPointersThenBitOffsetThenQp) {
    Bits b("10" "0" "0111" "1");
    Block blk = filled(7);
    Zan32s last = -9, bad = 8, neg = -1;
    Zan8u* nul = nullptr;
    Zan16s dc = 5;
    // Null beats a bad offset; *ppBitStream counts.
    EXPECT_EQ(zaniDecodeCoeffsInter_H263_1u16s(nullptr, &bad, blk.data(), &last, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeCoeffsInter_H263_1u16s(&nul, &b.off, blk.data(), &last, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeCoeffsInter_H263_1u16s(&b.p, nullptr, blk.data(), &last, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeCoeffsInter_H263_1u16s(&b.p, &bad, nullptr, &last, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeCoeffsInter_H263_1u16s(&b.p, &bad, blk.data(), nullptr, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeDCIntra_H263_1u16s(&b.p, &bad, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeDCIntra_MPEG4_1u16s(&b.p, &bad, nullptr, 0), zanStsNullPtr);
    // Offsets outside 0..7, negative ones included.
    EXPECT_EQ(zaniDecodeCoeffsInter_H263_1u16s(&b.p, &bad, blk.data(), &last, 0, 0), zanStsBitOffsetBad);
    EXPECT_EQ(zaniDecodeCoeffsInter_H263_1u16s(&b.p, &neg, blk.data(), &last, 0, 0), zanStsBitOffsetBad);
    EXPECT_EQ(zaniDecodeDCIntra_H263_1u16s(&b.p, &neg, &dc), zanStsBitOffsetBad);
    EXPECT_EQ(zaniDecodeCoeffsIntraRVLCBack_MPEG4_1u16s(&b.p, &bad, blk.data(), &last, 0), zanStsBitOffsetBad);
    // The offset beats QP; QP outside 1..31.
    EXPECT_EQ(zaniReconstructCoeffsInter_H263_1u16s(&b.p, &bad, blk.data(), &last, 0, 0), zanStsBitOffsetBad);
    for (Zan32s qp : {0, 32, -5}) {
        EXPECT_EQ(zaniReconstructCoeffsInter_H263_1u16s(&b.p, &b.off, blk.data(), &last, qp, 0), zanStsQpBad);
        EXPECT_EQ(zaniReconstructCoeffsIntra_H263_1u16s(&b.p, &b.off, blk.data(), &last, 1, qp, 0, 0, 0), zanStsQpBad);
        EXPECT_EQ(zaniReconstructCoeffsIntra_H261_1u16s(&b.p, &b.off, blk.data(), &last, qp), zanStsQpBad);
        EXPECT_EQ(zaniReconstructCoeffsInter_H261_1u16s(&b.p, &b.off, blk.data(), &last, qp), zanStsQpBad);
    }
    EXPECT_EQ(blk, filled(7));
    EXPECT_EQ(last, -9);
    EXPECT_EQ(dc, 5);
    EXPECT_EQ(b.p, b.s.origin());
    EXPECT_EQ(b.off, 0);
}

TEST(CoefDec, FusedMpeg4RecordChecks) {
    alignas(16) Zan8u rec[156 + 16] = {};
    auto* r = reinterpret_cast<ZanQuantInvSpec_MPEG4*>(rec + 5);
    ASSERT_EQ(zaniQuantInvInterInit_MPEG4(nullptr, r, 8), zanStsOk);
    alignas(16) Zan8u intraRec[156 + 16] = {};
    auto* ri = reinterpret_cast<ZanQuantInvSpec_MPEG4*>(intraRec + 5);
    ASSERT_EQ(zaniQuantInvIntraInit_MPEG4(nullptr, ri, 8), zanStsOk);
    Bits b("10" "0" "0111" "1");
    Block blk = filled(7);
    Zan32s last = -9, bad = 9;
    EXPECT_EQ(zaniReconstructCoeffsInter_MPEG4_1u16s(&b.p, &bad, blk.data(), &last, 0, 0, nullptr, 0),
              zanStsBitOffsetBad);
    EXPECT_EQ(zaniReconstructCoeffsInter_MPEG4_1u16s(&b.p, &b.off, blk.data(), &last, 0, 0, nullptr, 1),
              zanStsNullPtr);
    EXPECT_EQ(zaniReconstructCoeffsInter_MPEG4_1u16s(&b.p, &b.off, blk.data(), &last, 0, 0, ri, 1),
              zanStsContextMismatch);
    EXPECT_EQ(zaniReconstructCoeffsInter_MPEG4_1u16s(&b.p, &b.off, blk.data(), &last, 0, 0, r, 0), zanStsQpBad);
    EXPECT_EQ(zaniReconstructCoeffsInter_MPEG4_1u16s(&b.p, &b.off, blk.data(), &last, 0, 0, r, 32), zanStsQpBad);
    EXPECT_EQ(blk, filled(7));
    EXPECT_EQ(last, -9);
    EXPECT_EQ(b.p, b.s.origin());
    // Depth 12 allows QP up to 511.
    ASSERT_EQ(zaniQuantInvInterInit_MPEG4(nullptr, r, 12), zanStsOk);
    EXPECT_EQ(zaniReconstructCoeffsInter_MPEG4_1u16s(&b.p, &b.off, blk.data(), &last, 0, 0, r, 511), zanStsOk);
    EXPECT_EQ(last, 1);
    // Plain dequantisation: 2 QP L + qadd; 511 is odd so qadd = 511.
    EXPECT_EQ(blk[0], 2 * 511 + 511);
    EXPECT_EQ(blk[1], -(2 * 511 + 511));
}

// ------------------------------------------------------------ H.263

TEST(CoefDec, H263KnownCodesAndScans) {
    // 10 0: run 0 level +1; 110 1: run 1 level -1; 0111 0: last, run 0, +1.
    for (Zan32s off = 0; off < 8; ++off) {
        Bits b("100" "1101" "01110", off, 0xFF);
        Block blk = filled(9);
        Zan32s last = -9;
        ASSERT_EQ(zaniDecodeCoeffsInter_H263_1u16s(&b.p, &b.off, blk.data(), &last, 0, 1), zanStsOk);
        EXPECT_EQ(b.pos(), off + 12);
        EXPECT_EQ(last, 3);
        Block want{};
        want[0] = 1;    // alternate vertical index 0
        want[16] = -1;  // alternate vertical index 2
        want[24] = 1;   // alternate vertical index 3
        EXPECT_EQ(blk, want);
    }
    // Another scan value stores at the index itself.
    Bits b("100" "1101" "01110");
    Block blk{};
    Zan32s last = 0;
    ASSERT_EQ(zaniDecodeCoeffsInter_H263_1u16s(&b.p, &b.off, blk.data(), &last, 0, 7), zanStsOk);
    EXPECT_EQ(blk[0], 1);
    EXPECT_EQ(blk[2], -1);
    EXPECT_EQ(blk[3], 1);
}

TEST(CoefDec, H263IndexSixtyThree) {
    // Escape, last, run 63, level 5: succeeds at index 63.
    {
        Bits b("0000011" "1" "111111" "00000101");
        Block blk{};
        Zan32s last = 0;
        ASSERT_EQ(zaniDecodeCoeffsInter_H263_1u16s(&b.p, &b.off, blk.data(), &last, 0, 0), zanStsOk);
        EXPECT_EQ(last, 63);
        EXPECT_EQ(blk[63], 5);
        EXPECT_EQ(b.pos(), 22);
    }
    // Without the last flag the next code overflows: index before it,
    // cursor unmoved, the stored value kept.
    {
        Bits b("0000011" "0" "111111" "11111011" "100");
        Block blk{};
        Zan32s last = 0;
        EXPECT_EQ(zaniDecodeCoeffsInter_H263_1u16s(&b.p, &b.off, blk.data(), &last, 0, 0), zanStsCoefDecodeBad);
        EXPECT_EQ(last, 63);
        EXPECT_EQ(blk[63], -5);
        EXPECT_EQ(b.p, b.s.origin());
        EXPECT_EQ(b.off, 0);
    }
}

TEST(CoefDec, H263EscapeLevelsZeroAndMinus128) {
    for (Zan32u lv : {0x00u, 0x80u}) {
        Bits b("100" "0000011" "1" "000000" + bin(lv, 8), 3);
        Block blk = filled(4);
        Zan32s last = -9;
        EXPECT_EQ(zaniDecodeCoeffsInter_H263_1u16s(&b.p, &b.off, blk.data(), &last, 0, 0), zanStsCoefDecodeBad);
        EXPECT_EQ(last, 0);  // the last stored index
        EXPECT_EQ(blk[0], 1);
        EXPECT_EQ(blk[1], 0);  // cleared
        EXPECT_EQ(b.pos(), 3);
    }
    // Modified quantisation: 0 still fails, -128 starts the extended level:
    // 5 low bits, then 6 high bits sign extended.
    {
        Bits b("0000011" "1" "000000" "00000000");
        Block blk{};
        Zan32s last = -9;
        EXPECT_EQ(zaniDecodeCoeffsInter_H263_1u16s(&b.p, &b.off, blk.data(), &last, 1, 0), zanStsCoefDecodeBad);
        EXPECT_EQ(last, -1);
    }
    struct Case {
        const char* field;
        Zan16s level;
    } cases[] = {{"00001" "100000", -1023}, {"11111" "111111", -1}, {"00000" "000100", 128}, {"11111" "011111", 1023}};
    for (const Case& c : cases)
        for (Zan32s off = 0; off < 8; ++off) {
            Bits b("0000011" "1" "000011" "10000000" + std::string(c.field), off, 0xFF);
            Block blk{};
            Zan32s last = -9;
            ASSERT_EQ(zaniDecodeCoeffsInter_H263_1u16s(&b.p, &b.off, blk.data(), &last, 1, -1), zanStsOk);
            EXPECT_EQ(last, 3);
            EXPECT_EQ(blk[3], c.level) << c.field;
            EXPECT_EQ(b.pos(), off + 33);
        }
    // Reconstruction with modified quantisation does not clamp.
    {
        Bits b("0000011" "1" "000000" "10000000" "11111" "011111");
        Block blk{};
        Zan32s last = -9;
        ASSERT_EQ(zaniReconstructCoeffsInter_H263_1u16s(&b.p, &b.off, blk.data(), &last, 2, 1), zanStsOk);
        EXPECT_EQ(blk[0], 2 * 2 * 1023 + 1);
        // Without modified quantisation the same size of value is clamped.
        Bits c("0000011" "1" "000000" "01111111");
        ASSERT_EQ(zaniReconstructCoeffsInter_H263_1u16s(&c.p, &c.off, blk.data(), &last, 31, 0), zanStsOk);
        EXPECT_EQ(blk[0], 2047);
    }
}

TEST(CoefDec, H263BadCodeKeepsWhatWasStored) {
    // 10 1 (run 0, -1), then 13 zero bits: no code.
    Bits b("101" "0000000000000", 5, 0);
    Block blk = filled(3);
    Zan32s last = -9;
    EXPECT_EQ(zaniDecodeCoeffsInter_H263_1u16s(&b.p, &b.off, blk.data(), &last, 0, 0), zanStsCoefDecodeBad);
    EXPECT_EQ(last, 0);
    Block want{};
    want[0] = -1;
    EXPECT_EQ(blk, want);
    EXPECT_EQ(b.p, b.s.origin());
    EXPECT_EQ(b.off, 5);
}

TEST(CoefDec, H263IntraForms) {
    // Without advanced intra the DC entry is kept and decoding starts at 1:
    // 0111 1 is last, run 0, -1 at index 1.
    {
        Bits b("01111");
        Block blk = filled(6);
        Zan32s last = -9;
        ASSERT_EQ(zaniDecodeCoeffsIntra_H263_1u16s(&b.p, &b.off, blk.data(), &last, 0, 0, 0), zanStsOk);
        EXPECT_EQ(last, 1);
        EXPECT_EQ(blk[0], 6);
        EXPECT_EQ(blk[1], -1);
        EXPECT_EQ(blk[2], 0);
        // The DC is restored also after a failure.
        Bits c("0000000000000");
        blk = filled(6);
        EXPECT_EQ(zaniDecodeCoeffsIntra_H263_1u16s(&c.p, &c.off, blk.data(), &last, 0, 0, 0), zanStsCoefDecodeBad);
        EXPECT_EQ(last, 0);
        EXPECT_EQ(blk[0], 6);
        EXPECT_EQ(blk[1], 0);
    }
    // Advanced intra: the Annex I table from index 0 (0111 s is last, run 0,
    // level 1 there too; 110 s is run 0, level 2).
    {
        Bits b("1100" "01111");
        Block blk = filled(6);
        Zan32s last = -9;
        ASSERT_EQ(zaniDecodeCoeffsIntra_H263_1u16s(&b.p, &b.off, blk.data(), &last, 1, 0, 2), zanStsOk);
        EXPECT_EQ(last, 1);
        EXPECT_EQ(blk[0], 2);
        EXPECT_EQ(blk[1], -1);  // horizontal scan index 1
        // Reconstruction: level * 2 QP, horizontal scan.
        Bits c("1100" "01111");
        ASSERT_EQ(zaniReconstructCoeffsIntra_H263_1u16s(&c.p, &c.off, blk.data(), &last, 0, 5, 1, 2, 0), zanStsOk);
        EXPECT_EQ(blk[0], 20);
        EXPECT_EQ(blk[1], -10);
        EXPECT_EQ(c.pos(), 9);
    }
}

TEST(CoefDec, H263IntraDc) {
    Zan16s dc = 0;
    for (Zan32u v : {0u, 128u}) {
        Bits b(bin(v, 8), 2);
        EXPECT_EQ(zaniDecodeDCIntra_H263_1u16s(&b.p, &b.off, &dc), zanStsCoefDecodeBad);
        EXPECT_EQ(b.p, b.s.origin());
    }
    Bits b("11111111", 2);
    ASSERT_EQ(zaniDecodeDCIntra_H263_1u16s(&b.p, &b.off, &dc), zanStsOk);
    EXPECT_EQ(dc, 128);
    EXPECT_EQ(b.p, b.s.origin() + 1);
    EXPECT_EQ(b.off, 2);
    Bits c("00000011");
    ASSERT_EQ(zaniDecodeDCIntra_H263_1u16s(&c.p, &c.off, &dc), zanStsOk);
    EXPECT_EQ(dc, 3);
}

TEST(CoefDec, H263IntraReconstructDcRows) {
    // Bad INTRADC: index -1, nothing written, cursor unmoved.
    {
        Bits b("10000000" "01111");
        Block blk = filled(2);
        Zan32s last = 5;
        EXPECT_EQ(zaniReconstructCoeffsIntra_H263_1u16s(&b.p, &b.off, blk.data(), &last, 1, 3, 0, 0, 0),
                  zanStsCoefDecodeBad);
        EXPECT_EQ(last, -1);
        EXPECT_EQ(blk, filled(2));
        EXPECT_EQ(b.p, b.s.origin());
    }
    // cbp 0: index 0, the AC entries as they were, DC 8 * byte (255: 1024).
    {
        Bits b("11111111" "01111");
        Block blk = filled(2);
        Zan32s last = 5;
        ASSERT_EQ(zaniReconstructCoeffsIntra_H263_1u16s(&b.p, &b.off, blk.data(), &last, 0, 3, 0, 1, 0), zanStsOk);
        EXPECT_EQ(last, 0);
        EXPECT_EQ(blk[0], 1024);
        for (Zan32s k = 1; k < 64; ++k) EXPECT_EQ(blk[k], 2);
        EXPECT_EQ(b.p, b.s.origin() + 1);
    }
    // cbp set: zigzag whatever the scan; QP 4 (even): 2*4*1 + 3.
    {
        Bits b("00000010" "01111");
        Block blk = filled(2);
        Zan32s last = 5;
        ASSERT_EQ(zaniReconstructCoeffsIntra_H263_1u16s(&b.p, &b.off, blk.data(), &last, 1, 4, 0, 2, 0), zanStsOk);
        EXPECT_EQ(last, 1);
        EXPECT_EQ(blk[0], 16);
        EXPECT_EQ(blk[1], -11);
        EXPECT_EQ(blk[8], 0);
        EXPECT_EQ(b.pos(), 13);
    }
    // AC failure after a good DC: cursor one byte on, DC stored.
    {
        Bits b("00000010" "0000000000000");
        Block blk = filled(2);
        Zan32s last = 5;
        EXPECT_EQ(zaniReconstructCoeffsIntra_H263_1u16s(&b.p, &b.off, blk.data(), &last, 1, 4, 0, 0, 0),
                  zanStsCoefDecodeBad);
        EXPECT_EQ(last, 0);
        EXPECT_EQ(blk[0], 16);
        EXPECT_EQ(blk[1], 0);
        EXPECT_EQ(b.p, b.s.origin() + 1);
    }
}

// ------------------------------------------------------------ H.261

TEST(CoefDec, H261Forms) {
    // Intra: end of block as the first code after the DC succeeds with 0.
    {
        Bits b("00010000" "10");
        Block blk = filled(2);
        Zan32s last = -9;
        ASSERT_EQ(zaniDecodeCoeffsIntra_H261_1u16s(&b.p, &b.off, blk.data(), &last, 0), zanStsOk);
        EXPECT_EQ(last, 0);
        EXPECT_EQ(blk[0], 16);
        for (Zan32s k = 1; k < 64; ++k) EXPECT_EQ(blk[k], 0);
        EXPECT_EQ(b.pos(), 10);
    }
    // Intra DC 255 gives 128; bad DC bytes give -1 and leave the block.
    {
        Bits b("11111111" "110" "10");
        Block blk = filled(2);
        Zan32s last = -9;
        ASSERT_EQ(zaniDecodeCoeffsIntra_H261_1u16s(&b.p, &b.off, blk.data(), &last, -1), zanStsOk);
        EXPECT_EQ(blk[0], 128);
        EXPECT_EQ(blk[1], 1);  // 11 0: run 0, +1 at index 1
        EXPECT_EQ(last, 1);
        for (Zan32u v : {0u, 128u}) {
            Bits c(bin(v, 8) + "10");
            blk = filled(2);
            EXPECT_EQ(zaniDecodeCoeffsIntra_H261_1u16s(&c.p, &c.off, blk.data(), &last, 0), zanStsCoefDecodeBad);
            EXPECT_EQ(last, -1);
            EXPECT_EQ(blk, filled(2));
            EXPECT_EQ(c.p, c.s.origin());
        }
    }
    // Intra AC failure: cursor one byte past the DC, DC stored.
    {
        Bits b("00000011" "0000000000000000");
        Block blk = filled(2);
        Zan32s last = -9;
        EXPECT_EQ(zaniDecodeCoeffsIntra_H261_1u16s(&b.p, &b.off, blk.data(), &last, 0), zanStsCoefDecodeBad);
        EXPECT_EQ(last, 0);
        EXPECT_EQ(blk[0], 3);
        EXPECT_EQ(b.p, b.s.origin() + 1);
    }
    // Inter: 11 is the short first code -1, then 011 0 (run 1, +1),
    // escape run 2 level -100, end of block.
    {
        Bits b("11" "0110" "000001" "000010" "10011100" "10", 6);
        Block blk = filled(2);
        Zan32s last = -9;
        ASSERT_EQ(zaniDecodeCoeffsInter_H261_1u16s(&b.p, &b.off, blk.data(), &last, 0), zanStsOk);
        EXPECT_EQ(last, 5);
        EXPECT_EQ(blk[0], -1);
        EXPECT_EQ(blk[kZigzag[2]], 1);
        EXPECT_EQ(blk[kZigzag[5]], -100);
        EXPECT_EQ(b.pos(), 6 + 28);
        // Reconstruction: the first code gives -(3 QP) for odd QP and
        // -(3 QP - 1) for even QP.
        for (Zan32s qp : {7, 8}) {
            Bits c("11" "0110" "000001" "000010" "10011100" "10", 6);
            ASSERT_EQ(zaniReconstructCoeffsInter_H261_1u16s(&c.p, &c.off, blk.data(), &last, qp), zanStsOk);
            EXPECT_EQ(blk[0], (qp & 1) ? -3 * qp : -(3 * qp - 1));
            EXPECT_EQ(blk[kZigzag[5]], -(200 * qp + ((qp & 1) ? qp : qp - 1)));
        }
    }
    // Inter escape level 0 and -128 are invalid; a run past 63 fails with
    // the index before it.
    for (const char* bad : {"000001" "000000" "00000000", "000001" "000000" "10000000"}) {
        Bits b("0110" + std::string(bad));
        Block blk = filled(2);
        Zan32s last = -9;
        EXPECT_EQ(zaniDecodeCoeffsInter_H261_1u16s(&b.p, &b.off, blk.data(), &last, 0), zanStsCoefDecodeBad);
        EXPECT_EQ(last, 1);
        EXPECT_EQ(blk[1], 1);
        EXPECT_EQ(b.p, b.s.origin());
    }
    {
        Bits b("000001" "111110" "00000001" "0110" "10");  // index 62, then run 1 → 64
        Block blk = filled(2);
        Zan32s last = -9;
        EXPECT_EQ(zaniDecodeCoeffsInter_H261_1u16s(&b.p, &b.off, blk.data(), &last, -1), zanStsCoefDecodeBad);
        EXPECT_EQ(last, 62);
        EXPECT_EQ(blk[62], 1);
        EXPECT_EQ(b.p, b.s.origin());
    }
    // Reconstruct intra: clears the block before testing the DC byte, and an
    // AC failure leaves the cursor at entry.
    {
        Bits b("10000000" "10");
        Block blk = filled(2);
        Zan32s last = -9;
        EXPECT_EQ(zaniReconstructCoeffsIntra_H261_1u16s(&b.p, &b.off, blk.data(), &last, 5), zanStsCoefDecodeBad);
        EXPECT_EQ(last, -1);
        EXPECT_EQ(blk, Block{});
        Bits c("11111111" "0000000000000000");
        blk = filled(2);
        EXPECT_EQ(zaniReconstructCoeffsIntra_H261_1u16s(&c.p, &c.off, blk.data(), &last, 5), zanStsCoefDecodeBad);
        EXPECT_EQ(c.p, c.s.origin());
        Bits d("11111111" "110" "10");
        ASSERT_EQ(zaniReconstructCoeffsIntra_H261_1u16s(&d.p, &d.off, blk.data(), &last, 5), zanStsOk);
        EXPECT_EQ(blk[0], 1024);
        EXPECT_EQ(blk[1], 15);
        EXPECT_EQ(d.pos(), 13);
    }
}

// ------------------------------------------------------------ MPEG-4

TEST(CoefDec, Mpeg4IntraDc) {
    Zan16s dc = 7;
    // Luma 011: size 0.
    {
        Bits b("011", 4);
        ASSERT_EQ(zaniDecodeDCIntra_MPEG4_1u16s(&b.p, &b.off, &dc, 0), zanStsOk);
        EXPECT_EQ(dc, 0);
        EXPECT_EQ(b.pos(), 7);
    }
    // Chroma 01: size 2, then 01: value 1 - 4 + 1 = -2.
    {
        Bits b("01" "01");
        ASSERT_EQ(zaniDecodeDCIntra_MPEG4_1u16s(&b.p, &b.off, &dc, 1), zanStsOk);
        EXPECT_EQ(dc, -2);
    }
    // Luma size 9 with a clear marker: *pDC written, cursor unmoved.
    {
        Bits b("00000001" "100000000" "0");
        dc = 0;
        EXPECT_EQ(zaniDecodeDCIntra_MPEG4_1u16s(&b.p, &b.off, &dc, 0), zanStsCoefDecodeBad);
        EXPECT_EQ(dc, 256);
        EXPECT_EQ(b.p, b.s.origin());
    }
    // Sizes above 12 fail with nothing written.
    {
        Bits b("000000000000" "1111111111111", 7, 0);
        dc = 99;
        EXPECT_EQ(zaniDecodeDCIntra_MPEG4_1u16s(&b.p, &b.off, &dc, 0), zanStsCoefDecodeBad);
        EXPECT_EQ(zaniDecodeDCIntra_MPEG4_1u16s(&b.p, &b.off, &dc, 1), zanStsCoefDecodeBad);
        EXPECT_EQ(dc, 99);
        EXPECT_EQ(b.off, 7);
    }
}

TEST(CoefDec, Mpeg4ScansOfIntraAndInter) {
    // Intra table: 0111 s is last, run 0, level 1 in Table B-16 as well.
    // Escape type 3 run 1 level 3, last: the block index 1.
    const std::string code = "0000011" "11" "1" "000001" "1" + bin(3, 12) + "1";
    Bits a(code), b(code);
    Block ia{}, ib{};
    Zan32s la = 0, lb = 0;
    ASSERT_EQ(zaniDecodeCoeffsIntra_MPEG4_1u16s(&a.p, &a.off, ia.data(), &la, 0, 0, 2), zanStsOk);
    ASSERT_EQ(zaniDecodeCoeffsInter_MPEG4_1u16s(&b.p, &b.off, ib.data(), &lb, 0, 2), zanStsOk);
    EXPECT_EQ(la, 1);
    EXPECT_EQ(lb, 1);
    EXPECT_EQ(ia[1], 3);  // horizontal scan index 1 is raster 1
    EXPECT_EQ(ib[1], 3);  // stored at the index
    Bits c(code);
    ASSERT_EQ(zaniDecodeCoeffsInter_MPEG4_1u16s(&c.p, &c.off, ib.data(), &lb, 0, 1), zanStsOk);
    EXPECT_EQ(ib[8], 3);  // vertical
    EXPECT_EQ(a.pos(), 30);
}

TEST(CoefDec, Mpeg4FixedLengthLevelZeroAndMinus2048) {
    const std::string zero = "0000011" "11" "1" "000000" "1" + bin(0, 12) + "1";
    const std::string min = "0000011" "11" "1" "000000" "1" + bin(0x800, 12) + "1";
    Block blk = filled(3);
    Zan32s last = -9;
    {
        Bits b(zero);
        ASSERT_EQ(zaniDecodeCoeffsInter_MPEG4_1u16s(&b.p, &b.off, blk.data(), &last, 0, 0), zanStsOk);
        EXPECT_EQ(last, 0);
        EXPECT_EQ(blk, Block{});
    }
    {
        Bits b(zero);
        EXPECT_EQ(zaniDecodeCoeffsIntra_MPEG4_1u16s(&b.p, &b.off, blk.data(), &last, 0, 0, 0), zanStsCoefDecodeBad);
        EXPECT_EQ(last, -1);
        EXPECT_EQ(b.p, b.s.origin());
    }
    for (Zan32s intra : {0, 1}) {
        Bits b(min);
        const ZanStatus st = intra ? zaniDecodeCoeffsIntra_MPEG4_1u16s(&b.p, &b.off, blk.data(), &last, 0, 0, 0)
                                   : zaniDecodeCoeffsInter_MPEG4_1u16s(&b.p, &b.off, blk.data(), &last, 0, 0);
        EXPECT_EQ(st, zanStsCoefDecodeBad);
    }
    // A clear marker fails.
    Bits m("0000011" "11" "1" "000000" "0" + bin(5, 12) + "1");
    EXPECT_EQ(zaniDecodeCoeffsInter_MPEG4_1u16s(&m.p, &m.off, blk.data(), &last, 0, 0), zanStsCoefDecodeBad);
}

TEST(CoefDec, Mpeg4ForwardFailureRows) {
    // Overflow: type 3 run 63 (index 63, not last), then 10 0 → index 64.
    {
        Bits b("0000011" "11" "0" "111111" "1" + bin(9, 12) + "1" "100");
        Block blk{};
        Zan32s last = -9;
        EXPECT_EQ(zaniDecodeCoeffsInter_MPEG4_1u16s(&b.p, &b.off, blk.data(), &last, 0, -1), zanStsCoefDecodeBad);
        EXPECT_EQ(last, 64);
        EXPECT_EQ(blk[63], 9);
        EXPECT_EQ(b.p, b.s.origin());
    }
    // Bad code after one stored coefficient: the last stored index.
    {
        Bits b("101" "000000000000", 1);
        Block blk{};
        Zan32s last = -9;
        EXPECT_EQ(zaniDecodeCoeffsInter_MPEG4_1u16s(&b.p, &b.off, blk.data(), &last, 0, 0), zanStsCoefDecodeBad);
        EXPECT_EQ(last, 0);
        EXPECT_EQ(blk[0], -1);
        EXPECT_EQ(b.off, 1);
    }
    // Reversible: codes below 0000 1 fail; an escape with level 0 fails.
    {
        Bits b("110" "0" "00000001");
        Block blk{};
        Zan32s last = -9;
        EXPECT_EQ(zaniDecodeCoeffsInter_MPEG4_1u16s(&b.p, &b.off, blk.data(), &last, 1, 0), zanStsCoefDecodeBad);
        EXPECT_EQ(last, 0);
        EXPECT_EQ(blk[0], 1);
        Bits c("00001" "1" "000000" "1" "00000000000" "1" "0000" "0");
        EXPECT_EQ(zaniDecodeCoeffsInter_MPEG4_1u16s(&c.p, &c.off, blk.data(), &last, 1, 0), zanStsCoefDecodeBad);
        EXPECT_EQ(last, -1);
        Bits d("00001" "1" "000000" "1" "00000000011" "1" "0000" "1");
        ASSERT_EQ(zaniDecodeCoeffsInter_MPEG4_1u16s(&d.p, &d.off, blk.data(), &last, 1, 0), zanStsOk);
        EXPECT_EQ(blk[0], -3);
        EXPECT_EQ(d.pos(), 30);
        Bits e("00001" "1" "000000" "1" "00000000011" "1" "0001" "0");  // closing bits above 1
        EXPECT_EQ(zaniDecodeCoeffsInter_MPEG4_1u16s(&e.p, &e.off, blk.data(), &last, 1, 0), zanStsCoefDecodeBad);
    }
}

TEST(CoefDec, Mpeg4BackwardFailures) {
    // The first code read backward must carry the last flag: 110 0 (last 0,
    // run 0, +1, forward) read from its end fails at once with position 63.
    {
        Bits b("1100", 2);
        Zan8u* p = b.s.origin();
        Zan32s off = 5;  // the sign bit
        Block blk = filled(4);
        Zan32s last = -9;
        EXPECT_EQ(zaniDecodeCoeffsInterRVLCBack_MPEG4_1u16s(&p, &off, blk.data(), &last), zanStsCoefDecodeBad);
        EXPECT_EQ(last, 63);
        EXPECT_EQ(p, b.s.origin());
        EXPECT_EQ(off, 5);
        EXPECT_EQ(blk, Block{});
    }
    // A first coefficient whose run reaches below the floor: run 63 from
    // position 63 ends at -1, under the floor 0 of the separate-DC form.
    {
        Stream s(64, 0);
        Zan8u* p = s.origin();
        Zan32s off = 6;
        Block one{};
        one[0] = 3;
        ASSERT_EQ(zaniEncodeCoeffsIntra_MPEG4_16s1u(one.data(), &p, &off, 1, 1, 0, -1), zanStsOk);
        const Zan32s firstEnd = s.pos(p, off);
        Block top{};
        top[63] = -2;
        ASSERT_EQ(zaniEncodeCoeffsIntra_MPEG4_16s1u(top.data(), &p, &off, 1, 1, 0, -1), zanStsOk);
        const Zan32s end = s.pos(p, off) - 1;
        for (Zan32s sep : {0, 1}) {
            Zan8u* q = s.origin() + (end >> 3);
            Zan32s qo = end & 7, last = -9;
            Block blk = filled(4);
            const ZanStatus st = zaniDecodeCoeffsIntraRVLCBack_MPEG4_1u16s(&q, &qo, blk.data(), &last, sep);
            EXPECT_EQ(s.pos(q, qo), sep ? end : firstEnd - 1);
            if (sep) {
                EXPECT_EQ(st, zanStsCoefDecodeBad);
                EXPECT_EQ(last, -1);
                EXPECT_EQ(blk[0], 4);
                EXPECT_EQ(blk[63], -2);  // not moved down
            } else {
                ASSERT_EQ(st, zanStsOk);
                EXPECT_EQ(last, 63);
                EXPECT_EQ(blk, top);
            }
        }
    }
    // More codes than room: 64 coefficients fill positions 63 down to 0,
    // and one more code without the last flag finds p at the floor (-1, or
    // 0 for the intra form with a separate DC, which keeps pCoeffs[0]).
    for (Zan32s intra : {0, 1}) {
        Stream s(256, 0);
        Zan8u* p = s.origin();
        Zan32s off = 3;
        auto enc = [&](const Block& b, Zan32s count) {
            return intra ? zaniEncodeCoeffsIntra_MPEG4_16s1u(b.data(), &p, &off, count, 1, 0, -1)
                         : zaniEncodeCoeffsInter_MPEG4_16s1u(b.data(), &p, &off, count, 1, -1);
        };
        Block first{};
        first[0] = 1;
        ASSERT_EQ(enc(first, 1), zanStsOk);
        Block extra{};
        extra[0] = 2;  // coded without the last flag: count 2 with one level
        ASSERT_EQ(enc(extra, 2), zanStsOk);
        Block full;
        for (Zan32s k = 0; k < 64; ++k) full[k] = static_cast<Zan16s>((k % 5) + 1);
        ASSERT_EQ(enc(full, 64), zanStsOk);
        const Zan32s end = s.pos(p, off) - 1;
        Zan8u* q = s.origin() + (end >> 3);
        Zan32s qo = end & 7, last = -9;
        Block blk = filled(4);
        blk[0] = 77;
        const ZanStatus st = intra ? zaniDecodeCoeffsIntraRVLCBack_MPEG4_1u16s(&q, &qo, blk.data(), &last, 1)
                                   : zaniDecodeCoeffsInterRVLCBack_MPEG4_1u16s(&q, &qo, blk.data(), &last);
        EXPECT_EQ(st, zanStsCoefDecodeBad);
        EXPECT_EQ(s.pos(q, qo), end);
        if (intra) {
            // Positions 63..1 hold the last 63 levels; the 64th code failed.
            EXPECT_EQ(last, 0);
            EXPECT_EQ(blk[0], 77);
            for (Zan32s k = 1; k < 64; ++k) EXPECT_EQ(blk[k], full[k]);
        } else {
            EXPECT_EQ(last, -1);
            EXPECT_EQ(blk, full);
        }
    }
}

}  // namespace
