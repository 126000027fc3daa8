// Coefficient encoders through the exported functions, and round trips:
// random blocks of levels (every scan, every flag, levels up to the escape
// limits) are coded by the encoders and read back by the decoders, which must
// give the same levels and stop on exactly the bit where the encoder stopped.
// Also the byte-merging write rule, the escape forms, and the statuses.
#include <random>

#include "coef_test_util.h"

namespace {

using namespace coeftest;

const Zan8u* scan_of(Zan32s scan);

// Scan tables of the standards, written out here from their definitions so
// that the round trips do not share the library's copies: zigzag, then the
// alternate vertical and horizontal scans of ISO/IEC 14496-2.
constexpr Zan8u kZigzag[64] = {0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,
                               12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13, 6,  7,  14, 21, 28,
                               35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51,
                               58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};
constexpr Zan8u kAltV[64] = {0,  8,  16, 24, 1,  9,  2,  10, 17, 25, 32, 40, 48, 56, 57, 49,
                             41, 33, 26, 18, 3,  11, 4,  12, 19, 27, 34, 42, 50, 58, 35, 43,
                             51, 59, 20, 28, 5,  13, 6,  14, 21, 29, 36, 44, 52, 60, 37, 45,
                             53, 61, 22, 30, 7,  15, 23, 31, 38, 46, 54, 62, 39, 47, 55, 63};
constexpr Zan8u kAltH[64] = {0,  1,  2,  3,  8,  9,  16, 17, 10, 11, 4,  5,  6,  7,  15, 14,
                             13, 12, 19, 18, 24, 25, 32, 33, 26, 27, 20, 21, 22, 23, 28, 29,
                             30, 31, 34, 35, 40, 41, 48, 49, 42, 43, 36, 37, 38, 39, 44, 45,
                             46, 47, 50, 51, 56, 57, 58, 59, 52, 53, 54, 55, 60, 61, 62, 63};
constexpr Zan8u kNone[64] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
                             16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31,
                             32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43, 44, 45, 46, 47,
                             48, 49, 50, 51, 52, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63};
const Zan8u* scan_of(Zan32s scan) {
    return scan == 0 ? kZigzag : scan == 1 ? kAltV : scan == 2 ? kAltH : kNone;
}

enum class Codec { H263Intra, H263Inter, H261Intra, H261Inter, Mp4Intra, Mp4Inter };

struct Config {
    Codec codec;
    Zan32s adv = 0, modQ = 0, rvlc = 0, sepDC = 0, scan = 0;
};

// A random block: `n` nonzero levels at random scan indices from `first`,
// magnitudes mostly small, some at `maxMag`.  Returns the levels in raster
// order.
Block random_block(std::mt19937& rng, Zan32s first, Zan32s n, Zan32s maxMag, const Zan8u* scan, bool at63) {
    Block b{};
    std::vector<Zan32s> idx;
    for (Zan32s i = first; i < 64; ++i) idx.push_back(i);
    std::shuffle(idx.begin(), idx.end(), rng);
    if (at63) {
        auto it = std::find(idx.begin(), idx.end(), 63);
        std::iter_swap(idx.begin(), it);
    }
    for (Zan32s k = 0; k < n; ++k) {
        Zan32s m;
        switch (rng() % 6) {
            case 0: m = maxMag; break;
            case 1: m = 1 + static_cast<Zan32s>(rng() % static_cast<Zan32u>(maxMag)); break;
            case 2: m = 1 + static_cast<Zan32s>(rng() % 30); break;
            default: m = 1 + static_cast<Zan32s>(rng() % 3); break;
        }
        if (m > maxMag) m = maxMag;
        b[scan[idx[k]]] = static_cast<Zan16s>((rng() & 1) ? -m : m);
    }
    return b;
}

ZanStatus encode(const Config& c, const Block& b, Zan8u** pp, Zan32s* po, Zan32s count) {
    switch (c.codec) {
        case Codec::H263Intra: return zaniEncodeCoeffsIntra_H263_16s1u(b.data(), pp, po, count, c.adv, c.modQ, c.scan);
        case Codec::H263Inter: return zaniEncodeCoeffsInter_H263_16s1u(b.data(), pp, po, count, c.modQ, c.scan);
        case Codec::H261Intra: return zaniEncodeCoeffsIntra_H261_16s1u(b.data(), pp, po, count, c.scan);
        case Codec::H261Inter: return zaniEncodeCoeffsInter_H261_16s1u(b.data(), pp, po, count, c.scan);
        case Codec::Mp4Intra:
            return zaniEncodeCoeffsIntra_MPEG4_16s1u(b.data(), pp, po, count, c.rvlc, c.sepDC, c.scan);
        case Codec::Mp4Inter: return zaniEncodeCoeffsInter_MPEG4_16s1u(b.data(), pp, po, count, c.rvlc, c.scan);
    }
    return zanStsErr;
}

ZanStatus decode(const Config& c, Zan16s* out, Zan8u** pp, Zan32s* po, Zan32s* last) {
    switch (c.codec) {
        case Codec::H263Intra: return zaniDecodeCoeffsIntra_H263_1u16s(pp, po, out, last, c.adv, c.modQ, c.scan);
        case Codec::H263Inter: return zaniDecodeCoeffsInter_H263_1u16s(pp, po, out, last, c.modQ, c.scan);
        case Codec::H261Intra: return zaniDecodeCoeffsIntra_H261_1u16s(pp, po, out, last, c.scan);
        case Codec::H261Inter: return zaniDecodeCoeffsInter_H261_1u16s(pp, po, out, last, c.scan);
        case Codec::Mp4Intra: return zaniDecodeCoeffsIntra_MPEG4_1u16s(pp, po, out, last, c.rvlc, c.sepDC, c.scan);
        case Codec::Mp4Inter: return zaniDecodeCoeffsInter_MPEG4_1u16s(pp, po, out, last, c.rvlc, c.scan);
    }
    return zanStsErr;
}

struct Limits {
    Zan32s first;   // first coded scan index
    Zan32s maxMag;  // largest magnitude that codes exactly
};
Limits limits_of(const Config& c) {
    switch (c.codec) {
        case Codec::H263Intra: return {c.adv ? 0 : 1, c.modQ ? 1023 : 127};
        case Codec::H263Inter: return {0, c.modQ ? 1023 : 127};
        case Codec::H261Intra: return {1, 127};
        case Codec::H261Inter: return {0, 127};
        case Codec::Mp4Intra: return {c.sepDC ? 1 : 0, 2047};
        case Codec::Mp4Inter: return {0, 2047};
    }
    return {0, 0};
}

// The decoded value of an extended modified-quantisation level whose 11-bit
// field starts at bit position `at` of the stream: the six high bits sign
// extended times 32, ORed with the field's low 5 bits and the bits of that
// byte before the field (the documented unmasked low part).
Zan16s extended_level(const Zan8u* origin, Zan32s at, Zan32s v) {
    const Zan32s k = at & 7;
    const Zan32u consumed = static_cast<Zan32u>(origin[at >> 3]) >> (8 - k);
    const Zan32s high = (v >> 5);  // v in -1024..1023: bits 5..10 sign-extended
    return static_cast<Zan16s>((high * 32) | static_cast<Zan32s>((consumed << 5) | (static_cast<Zan32u>(v) & 31u)));
}

void round_trip(const Config& c, Zan32s draws, std::mt19937& rng) {
    const Limits lim = limits_of(c);
    const Zan8u* scan;
    if (c.codec == Codec::H261Intra || c.codec == Codec::H261Inter)
        scan = c.scan == -1 ? kNone : kZigzag;
    else
        scan = scan_of(c.scan);
    for (Zan32s d = 0; d < draws; ++d) {
        const Zan32s room = 64 - lim.first;
        const Zan32s n = (d % 4 == 0) ? 1 + static_cast<Zan32s>(rng() % static_cast<Zan32u>(room))
                                      : 1 + static_cast<Zan32s>(rng() % 12);
        Block b = random_block(rng, lim.first, n, lim.maxMag, scan, d % 7 == 0);
        Zan32s count = n;
        if (c.codec == Codec::H261Intra) {
            b[0] = static_cast<Zan16s>(1 + rng() % 254);
            count = n + 1;
        }
        if (c.codec == Codec::H263Intra && !c.adv) b[0] = static_cast<Zan16s>(rng());
        if (c.codec == Codec::Mp4Intra && c.sepDC) b[0] = static_cast<Zan16s>(rng());

        Stream s(1024, static_cast<Zan8u>(rng()));
        const Zan32s off0 = static_cast<Zan32s>(rng() % 8);
        Zan8u* p = s.origin();
        Zan32s off = off0;
        ASSERT_EQ(encode(c, b, &p, &off, count), zanStsOk);
        const Zan32s endPos = s.pos(p, off);
        ASSERT_LT(endPos, 1000 * 8);

        Block out = filled(0x5A5A);
        if ((c.codec == Codec::H263Intra && !c.adv) || (c.codec == Codec::Mp4Intra && c.sepDC)) out[0] = b[0];
        Zan8u* q = s.origin();
        Zan32s qo = off0, last = -7;
        ASSERT_EQ(decode(c, out.data(), &q, &qo, &last), zanStsOk) << "draw " << d;
        EXPECT_EQ(s.pos(q, qo), endPos) << "draw " << d;
        EXPECT_LE(qo, 7);

        Block want = b;
        if (c.modQ) {
            // Extended levels read back through the unmasked low part: find
            // each one's field by encoding the block up to it.
            Zan32s seen = 0;
            for (Zan32s i = lim.first; i < 64; ++i) {
                const Zan32s v = b[scan[i]];
                if (v == 0) continue;
                ++seen;
                if (v >= 128 || v <= -128) {
                    Stream t(1024, 0);
                    std::memcpy(t.bytes.data(), s.bytes.data(), s.bytes.size());
                    Zan8u* tp = t.origin();
                    Zan32s to = off0;
                    encode(c, b, &tp, &to, seen);
                    want[scan[i]] = extended_level(s.origin(), s.pos(tp, to) - 11, v);
                }
                if (seen == count) break;
            }
        }
        // Which index is last: the scan index of the count-th nonzero.
        Zan32s lastIdx = -1, seen = 0;
        for (Zan32s i = lim.first; i < 64; ++i)
            if (b[scan[i]] != 0 && ++seen == n) lastIdx = i;
        if (c.codec == Codec::H261Intra && lastIdx < 0) lastIdx = 0;
        EXPECT_EQ(last, lastIdx) << "draw " << d;
        for (Zan32s k = 0; k < 64; ++k) ASSERT_EQ(out[k], want[k]) << "draw " << d << " raster " << k;
    }
}

TEST(CoefRoundTrip, H263PlainAdvancedAndModifiedQuantisation) {
    std::mt19937 rng(11);
    for (Zan32s scan : {-1, 0, 1, 2, 5})
        for (Zan32s modQ : {0, 1}) {
            round_trip({Codec::H263Inter, 0, modQ, 0, 0, scan}, 150, rng);
            for (Zan32s adv : {0, 1}) round_trip({Codec::H263Intra, adv, modQ, 0, 0, scan}, 150, rng);
        }
}

TEST(CoefRoundTrip, H261IntraAndInter) {
    std::mt19937 rng(12);
    for (Zan32s scan : {-1, 0, 3}) {
        round_trip({Codec::H261Inter, 0, 0, 0, 0, scan}, 300, rng);
        round_trip({Codec::H261Intra, 0, 0, 0, 0, scan}, 300, rng);
    }
}

TEST(CoefRoundTrip, Mpeg4VlcAndForwardReversible) {
    std::mt19937 rng(13);
    for (Zan32s rvlc : {0, 1}) {
        for (Zan32s scan : {-1, 0, 1, 2})
            for (Zan32s sep : {0, 1}) round_trip({Codec::Mp4Intra, 0, 0, rvlc, sep, scan}, 200, rng);
        for (Zan32s scan : {-1, 0, 1}) round_trip({Codec::Mp4Inter, 0, 0, rvlc, 0, scan}, 200, rng);
    }
}

// Blocks coded one after another with reversible codes are read back from
// the end: each backward call returns one block in scan order and leaves the
// cursor on the last bit of the block before it.
TEST(CoefRoundTrip, Mpeg4ReversibleBackwardFromTheEnd) {
    std::mt19937 rng(14);
    for (Zan32s intra : {0, 1})
        for (Zan32s sep : {0, 1}) {
            if (!intra && sep) continue;
            for (Zan32s trial = 0; trial < 40; ++trial) {
                const Zan32s first = sep ? 1 : 0;
                constexpr Zan32s kBlocks = 6;
                std::vector<Block> blocks;
                std::vector<Zan32s> ends;  // bit position after each block
                Stream s(4096, static_cast<Zan8u>(rng()));
                Zan8u* p = s.origin();
                Zan32s off = static_cast<Zan32s>(rng() % 8);
                for (Zan32s k = 0; k < kBlocks; ++k) {
                    const Zan32s n = 1 + static_cast<Zan32s>(rng() % (k % 2 ? 63 - first : 10));
                    Block b = random_block(rng, first, n, 2047, kNone, rng() % 5 == 0);
                    if (sep) b[0] = static_cast<Zan16s>(rng());
                    const ZanStatus st = intra ? zaniEncodeCoeffsIntra_MPEG4_16s1u(b.data(), &p, &off, n, 1, sep, -1)
                                               : zaniEncodeCoeffsInter_MPEG4_16s1u(b.data(), &p, &off, n, 1, -1);
                    ASSERT_EQ(st, zanStsOk);
                    blocks.push_back(b);
                    ends.push_back(s.pos(p, off));
                }
                // Start on the last bit of the data.
                Zan32s at = ends.back() - 1;
                for (Zan32s k = kBlocks - 1; k >= 1; --k) {
                    Zan8u* q = s.origin() + (at >> 3);
                    Zan32s qo = at & 7, last = -7;
                    Block out = filled(0x1234);
                    out[0] = blocks[k][0];
                    const ZanStatus st =
                        intra ? zaniDecodeCoeffsIntraRVLCBack_MPEG4_1u16s(&q, &qo, out.data(), &last, sep)
                              : zaniDecodeCoeffsInterRVLCBack_MPEG4_1u16s(&q, &qo, out.data(), &last);
                    ASSERT_EQ(st, zanStsOk) << "block " << k;
                    EXPECT_EQ(s.pos(q, qo), ends[k - 1] - 1) << "block " << k;
                    Zan32s lastIdx = -1;
                    for (Zan32s i = first; i < 64; ++i)
                        if (blocks[k][i]) lastIdx = i;
                    EXPECT_EQ(last, lastIdx);
                    for (Zan32s i = 0; i < 64; ++i) ASSERT_EQ(out[i], blocks[k][i]) << "block " << k << " at " << i;
                    at = ends[k - 1] - 1;
                }
            }
        }
}

// The fused inter reconstruction gives what decoding followed by the inverse
// inter quantiser gives, with and without weights, at several depths.
TEST(CoefRoundTrip, Mpeg4FusedReconstructionMatchesDecodeThenDequantise) {
    std::mt19937 rng(15);
    alignas(16) Zan8u recBuf[156 + 16];
    for (Zan32s depth : {8, 5, 12})
        for (bool weights : {false, true}) {
            std::array<Zan8u, 64> w;
            for (auto& x : w) x = static_cast<Zan8u>(1 + rng() % 255);
            ASSERT_EQ(zaniQuantInvInterInit_MPEG4(weights ? w.data() : nullptr,
                                                  reinterpret_cast<ZanQuantInvSpec_MPEG4*>(recBuf + 3), depth),
                      zanStsOk);
            const auto* rec = reinterpret_cast<const ZanQuantInvSpec_MPEG4*>(recBuf + 3);
            const Zan32s qmax = (1 << (depth - 3)) - 1;
            for (Zan32s d = 0; d < 200; ++d) {
                const Zan32s scan = d % 3 == 0 ? 1 : 0;
                const Zan32s n = 1 + static_cast<Zan32s>(rng() % 20);
                Block b = random_block(rng, 0, n, 2047, scan_of(scan), false);
                Stream s(1024, static_cast<Zan8u>(rng()));
                Zan8u* p = s.origin();
                Zan32s off = static_cast<Zan32s>(rng() % 8);
                const Zan32s off0 = off;
                ASSERT_EQ(zaniEncodeCoeffsInter_MPEG4_16s1u(b.data(), &p, &off, n, 0, scan), zanStsOk);
                const Zan32s QP = 1 + static_cast<Zan32s>(rng() % static_cast<Zan32u>(qmax));
                Block a{}, r{};
                Zan8u* q1 = s.origin();
                Zan8u* q2 = s.origin();
                Zan32s o1 = off0, o2 = off0, l1 = 0, l2 = 0;
                ASSERT_EQ(zaniDecodeCoeffsInter_MPEG4_1u16s(&q1, &o1, a.data(), &l1, 0, scan), zanStsOk);
                ASSERT_EQ(zaniQuantInvInter_MPEG4_16s_C1I(a.data(), 63, rec, QP), zanStsOk);
                ASSERT_EQ(zaniReconstructCoeffsInter_MPEG4_1u16s(&q2, &o2, r.data(), &l2, 0, scan, rec, QP), zanStsOk);
                EXPECT_EQ(q1, q2);
                EXPECT_EQ(o1, o2);
                EXPECT_EQ(l1, l2);
                for (Zan32s k = 0; k < 64; ++k) ASSERT_EQ(r[k], a[k]) << "depth " << depth << " draw " << d << " at " << k;
            }
        }
}

// ------------------------------------------------------------ encoders

TEST(CoefEnc, StatusesInOrder) {
    Block b = filled(1);
    Stream s(64, 0xEE);
    Zan8u* p = s.origin();
    Zan8u* nul = nullptr;
    Zan32s off = 0, bad = 8, neg = -1;
    const std::vector<Zan8u> before = s.bytes;
    EXPECT_EQ(zaniEncodeCoeffsInter_H263_16s1u(nullptr, &p, &bad, 0, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniEncodeCoeffsInter_H263_16s1u(b.data(), &nul, &off, 1, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniEncodeCoeffsInter_H263_16s1u(b.data(), nullptr, &off, 1, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniEncodeCoeffsInter_H263_16s1u(b.data(), &p, nullptr, 1, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniEncodeCoeffsInter_H263_16s1u(b.data(), &p, &bad, 0, 0, 0), zanStsBitOffsetBad);
    EXPECT_EQ(zaniEncodeCoeffsInter_H263_16s1u(b.data(), &p, &neg, 0, 0, 0), zanStsBitOffsetBad);
    EXPECT_EQ(zaniEncodeDCIntra_H263_16s1u(5, &p, &bad), zanStsBitOffsetBad);
    EXPECT_EQ(zaniEncodeDCIntra_MPEG4_16s1u(5, &nul, &off, 0), zanStsNullPtr);
    for (Zan32s n : {0, 65, -3}) {
        EXPECT_EQ(zaniEncodeCoeffsInter_H263_16s1u(b.data(), &p, &off, n, 0, 0), zanStsOutOfRange);
        EXPECT_EQ(zaniEncodeCoeffsIntra_H263_16s1u(b.data(), &p, &off, n, 0, 0, 0), zanStsOutOfRange);
        EXPECT_EQ(zaniEncodeCoeffsIntra_H261_16s1u(b.data(), &p, &off, n, 0), zanStsOutOfRange);
        EXPECT_EQ(zaniEncodeCoeffsInter_H261_16s1u(b.data(), &p, &off, n, 0), zanStsOutOfRange);
        EXPECT_EQ(zaniEncodeCoeffsInter_MPEG4_16s1u(b.data(), &p, &off, n, 0, 0), zanStsOutOfRange);
        EXPECT_EQ(zaniEncodeCoeffsIntra_MPEG4_16s1u(b.data(), &p, &off, n, 0, 0, 0), zanStsOutOfRange);
    }
    EXPECT_EQ(zaniEncodeCoeffsIntra_MPEG4_16s1u(b.data(), &p, &off, 64, 0, 1, 0), zanStsOutOfRange);
    EXPECT_EQ(s.bytes, before);
    EXPECT_EQ(p, s.origin());
    EXPECT_EQ(off, 0);
    EXPECT_EQ(zaniEncodeCoeffsIntra_MPEG4_16s1u(b.data(), &p, &off, 63, 0, 1, 0), zanStsOk);
}

// The first byte keeps its bits above the offset; the rest are assigned and
// the last byte's low bits are zero.  A 22-bit escape at offset 7 touches
// four bytes.
TEST(CoefEnc, ByteMergingWriteRuleAndEscapeAtOffsetSeven) {
    Block b{};
    b[0] = 200;  // no table row: escape with the low 8 bits 11001000
    Stream s(16, 0xFF);
    Zan8u* p = s.origin();
    Zan32s off = 7;
    ASSERT_EQ(zaniEncodeCoeffsInter_H263_16s1u(b.data(), &p, &off, 1, 0, -1), zanStsOk);
    // 1111111 | 0000011 1 000000 11001000 (22 bits) → 29 bits.
    Zan8u want[4] = {};
    put_bits(want, 0, "1111111" "0000011" "1" "000000" "11001000");
    EXPECT_EQ(s.origin()[0], want[0]);
    EXPECT_EQ(s.origin()[1], want[1]);
    EXPECT_EQ(s.origin()[2], want[2]);
    EXPECT_EQ(s.origin()[3], want[3]);
    EXPECT_EQ(s.origin()[4], 0xFF);  // untouched
    EXPECT_EQ(p, s.origin() + 3);
    EXPECT_EQ(off, 5);
}

TEST(CoefEnc, H263LastAt63IsAnEscapeWithRun63) {
    Block b{};
    b[63] = -3;
    Stream s(16, 0xAA);
    Zan8u* p = s.origin();
    Zan32s off = 0;
    ASSERT_EQ(zaniEncodeCoeffsInter_H263_16s1u(b.data(), &p, &off, 1, 0, 0), zanStsOk);
    Zan8u want[3] = {};
    put_bits(want, 0, "0000011" "1" "111111" "11111101");
    EXPECT_EQ(std::memcmp(s.origin(), want, 3), 0);
    EXPECT_EQ(s.pos(p, off), 22);
}

TEST(CoefEnc, ModifiedQuantisationLevel128Takes33Bits) {
    Block b{};
    b[0] = 128;
    Stream s(16, 0);
    Zan8u* p = s.origin();
    Zan32s off = 0;
    ASSERT_EQ(zaniEncodeCoeffsInter_H263_16s1u(b.data(), &p, &off, 1, 1, 0), zanStsOk);
    EXPECT_EQ(s.pos(p, off), 33);
    Zan8u want[5] = {};
    put_bits(want, 0, "0000011" "1" "000000" "10000000" "00000" "000100");
    EXPECT_EQ(std::memcmp(s.origin(), want, 5), 0);
    // Without modified quantisation 128 is written as its low 8 bits.
    p = s.origin();
    off = 0;
    ASSERT_EQ(zaniEncodeCoeffsInter_H263_16s1u(b.data(), &p, &off, 1, 0, 0), zanStsOk);
    EXPECT_EQ(s.pos(p, off), 22);
}

TEST(CoefEnc, CountBeyondTheBlockEndsAt64WithoutLastFlag) {
    Block b{};
    b[0] = 1;  // zigzag index 0: run 0, level 1 without last flag: 10s
    Stream s(16, 0xFF);
    Zan8u* p = s.origin();
    Zan32s off = 0;
    ASSERT_EQ(zaniEncodeCoeffsInter_H263_16s1u(b.data(), &p, &off, 5, 0, 0), zanStsOk);
    EXPECT_EQ(s.pos(p, off), 3);
    EXPECT_EQ(s.origin()[0], 0x80);  // 100 then zeros
}

TEST(CoefEnc, DcForms) {
    Stream s(16, 0xFF);
    Zan8u* p = s.origin();
    Zan32s off = 3;
    ASSERT_EQ(zaniEncodeDCIntra_H263_16s1u(128, &p, &off), zanStsOk);
    EXPECT_EQ(s.origin()[0], 0xFF);
    EXPECT_EQ(s.origin()[1], 0xE0);
    EXPECT_EQ(p, s.origin() + 1);
    EXPECT_EQ(off, 3);
    // MPEG-4: luma size 9 (|dc| 256..511) is 0000 0001, then 9 bits, marker.
    p = s.origin();
    off = 0;
    ASSERT_EQ(zaniEncodeDCIntra_MPEG4_16s1u(-300, &p, &off, 0), zanStsOk);
    Zan8u want[3] = {};
    put_bits(want, 0, "00000001" + bin(static_cast<Zan32u>(-300 + 511), 9) + "1");
    EXPECT_EQ(std::memcmp(s.origin(), want, 3), 0);
    EXPECT_EQ(s.pos(p, off), 18);
    // Chroma zero: 11.
    p = s.origin();
    off = 0;
    ASSERT_EQ(zaniEncodeDCIntra_MPEG4_16s1u(0, &p, &off, 1), zanStsOk);
    EXPECT_EQ(s.pos(p, off), 2);
    EXPECT_EQ(s.origin()[0] & 0xC0, 0xC0);
    // Every DC value reads back.
    for (Zan32s chroma : {0, 1})
        for (Zan32s dc = -2047; dc <= 2047; ++dc) {
            Stream t(16, 0x55);
            Zan8u* q = t.origin();
            Zan32s qo = dc & 7;
            ASSERT_EQ(zaniEncodeDCIntra_MPEG4_16s1u(static_cast<Zan16s>(dc), &q, &qo, chroma), zanStsOk);
            Zan8u* r = t.origin();
            Zan32s ro = dc & 7;
            Zan16s got = 0;
            ASSERT_EQ(zaniDecodeDCIntra_MPEG4_1u16s(&r, &ro, &got, chroma), zanStsOk) << dc;
            EXPECT_EQ(got, dc);
            EXPECT_EQ(r, q);
            EXPECT_EQ(ro, qo);
        }
}

TEST(CoefEnc, Mpeg4EscapeTypesAtTheirLimits) {
    // Inter, last 0, run 0: LMAX is 12.  12 is a table code, 13..24 type 1,
    // 25 and up type 3; run 27 level 1 (RMAX 26 for level 1) is type 2 with
    // run 0.  A second coefficient at index 63 keeps the first one non-last.
    auto starts = [](Zan32s run, Zan32s level, Zan32s count, const std::string& bits) {
        Block b{};
        b[kZigzag[run]] = static_cast<Zan16s>(level);
        if (count == 2) b[63] = 1;
        Stream s(32, 0xFF);
        Zan8u* p = s.origin();
        Zan32s off = 0;
        EXPECT_EQ(zaniEncodeCoeffsInter_MPEG4_16s1u(b.data(), &p, &off, count, 0, 0), zanStsOk);
        std::string got;
        for (size_t k = 0; k < bits.size(); ++k) got += ((s.origin()[k >> 3] >> (7 - (k & 7))) & 1) ? '1' : '0';
        return got == bits;
    };
    EXPECT_TRUE(starts(0, 12, 2, "00000100000" "0"));
    EXPECT_TRUE(starts(0, -12, 2, "00000100000" "1"));
    EXPECT_TRUE(starts(0, 13, 2, "0000011" "0" "10" "0"));
    EXPECT_TRUE(starts(0, -24, 2, "0000011" "0" "00000100000" "1"));
    EXPECT_TRUE(starts(0, 25, 2, "0000011" "11" "0" "000000" "1" + bin(25, 12) + "1"));
    EXPECT_TRUE(starts(27, 1, 2, "0000011" "10" "10" "0"));
    EXPECT_TRUE(starts(0, -2047, 1, "0000011" "11" "1" "000000" "1" + bin(static_cast<Zan32u>(-2047) & 0xFFF, 12) + "1"));
    // Reversible escape: 00001, last, run, 1, |level| (11), 1, 0000, sign.
    Block b{};
    b[kZigzag[5]] = -2047;
    Stream s(32, 0xFF);
    Zan8u* p = s.origin();
    Zan32s off = 0;
    ASSERT_EQ(zaniEncodeCoeffsInter_MPEG4_16s1u(b.data(), &p, &off, 1, 1, 0), zanStsOk);
    Zan8u want[4] = {};
    put_bits(want, 0, "00001" "1" "000101" "1" "11111111111" "1" "0000" "1");
    EXPECT_EQ(std::memcmp(s.origin(), want, 4), 0);
    EXPECT_EQ(s.pos(p, off), 30);
}

TEST(CoefEnc, H261FirstCodeEscapeAndEndOfBlock) {
    Block b{};
    b[0] = -1;
    b[1] = 100;  // run 0 level 100: escape
    Stream s(16, 0xFF);
    Zan8u* p = s.origin();
    Zan32s off = 0;
    ASSERT_EQ(zaniEncodeCoeffsInter_H261_16s1u(b.data(), &p, &off, 2, 0), zanStsOk);
    Zan8u want[4] = {};
    const Zan32s n = put_bits(want, 0, "11" "000001" "000000" "01100100" "10");
    EXPECT_EQ(s.pos(p, off), n);
    EXPECT_EQ(std::memcmp(s.origin(), want, 3), 0);
    // Intra with only the DC: the DC byte then end of block.
    p = s.origin();
    off = 0;
    b[0] = 128;
    ASSERT_EQ(zaniEncodeCoeffsIntra_H261_16s1u(b.data(), &p, &off, 1, 0), zanStsOk);
    EXPECT_EQ(s.origin()[0], 0xFF);
    EXPECT_EQ(s.origin()[1], 0x80);
    EXPECT_EQ(s.pos(p, off), 10);
}

}  // namespace
