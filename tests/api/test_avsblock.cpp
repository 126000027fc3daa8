// AVS block decoding and macroblock reconstruction through the exported
// functions.
//
// An independent block writer codes random coefficient blocks with the
// standard's 2-D VLC tables (table switching, escapes with their base
// levels, the end-of-block code); each decoder must give the block back,
// report the scan positions used, and leave the cursor where the writer
// ended.  Plain models of the standard's inverse transform and intra
// predictors check the reconstruction on random input.  Known answers and
// statuses follow.  On the encoder side, a plain model of the forward
// transform and quantisation and of the mode decision checks the exports,
// and every macroblock the encoder-side pass codes goes through the block
// writer, the decoder and the reconstruction, which must rebuild the
// encoder's reconstruction exactly.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "avs/avs_tables.h"
#include "zanvc.h"

namespace {

using zan::avs::AvsVlc;

// ------------------------------------------------------------- the writer

class BitWriter {
public:
    // Starts after `skip` random bits.
    BitWriter(std::mt19937& rng, int skip) {
        for (int i = 0; i < skip; ++i) put(rng() & 1, 1);
    }
    void put(std::uint64_t v, int n) {
        for (int i = n - 1; i >= 0; --i) {
            if (bits_ % 32 == 0) words_.push_back(0);
            if ((v >> i) & 1) words_.back() |= 1u << (31 - bits_ % 32);
            ++bits_;
        }
    }
    // Exp-Golomb of order k.
    void golomb(std::uint64_t value, int k) {
        const std::uint64_t v = value + (std::uint64_t{1} << k);
        int len = 0;
        while ((v >> len) > 1) ++len;  // v has len + 1 bits
        put(0, len - k);
        put(v, len + 1);
    }
    std::size_t bits() const { return bits_; }
    // The words with `pad` random words after them.
    std::vector<Zan32u> words(std::mt19937& rng, int pad) const {
        std::vector<Zan32u> w = words_;
        if (bits_ % 32) w.back() |= static_cast<Zan32u>(rng()) & ((1u << (32 - bits_ % 32)) - 1);
        for (int i = 0; i < pad; ++i) w.push_back(static_cast<Zan32u>(rng()));
        return w;
    }

private:
    std::vector<Zan32u> words_;
    std::size_t bits_ = 0;
};

// A kind of block as the writer sees it: its tables, the Golomb orders of
// the codes, the escape order, the level limit of each table and the
// largest-run figures by level limit that decide the escape base.
struct WriterKind {
    const AvsVlc* vlc;
    int tables;
    std::vector<int> golomb;
    int escOrder;
    std::vector<int> limits;
    std::vector<int> maxRunByLimit;
    int cap;
};

const WriterKind kIntraW{zan::avs::kVlcIntra, 7, {2, 2, 2, 2, 2, 2, 2}, 1, {0, 1, 2, 4, 7, 10, 65535},
                         {22, 14, 9, 6, 6, 4, 4, 4, 2, 2, 2, 1}, 11};
const WriterKind kInterW{zan::avs::kVlcInter, 7, {3, 2, 2, 2, 2, 2, 2}, 1, {0, 1, 2, 3, 6, 9, 65535},
                         {25, 18, 13, 9, 6, 6, 6, 4, 4, 4, 3, 1}, 11};
const WriterKind kChromaW{zan::avs::kVlcChroma, 5, {2, 0, 1, 1, 0}, 0, {0, 1, 2, 4, 65535}, {24, 19, 10, 7, 7, 4}, 5};

// Base level of an escape: one more than the largest magnitude the table
// holds for the run, and 1 past the largest run of the current limit.
int escape_base(const WriterKind& k, const AvsVlc& t, int limit, int run) {
    if (run > k.maxRunByLimit[static_cast<size_t>(std::min(limit, k.cap))]) return 1;
    int m = 0;
    for (const auto& p : t.rl)
        if (p[0] == run) m = std::max(m, std::abs(static_cast<int>(p[1])));
    return m + 1;
}

// Writes a block given as levels in scan order (64 entries): the nonzero
// levels from the last to the first, each with the zeros before it as run,
// then the end of block.
void write_block(BitWriter& w, const WriterKind& k, const int* scanLevels) {
    std::vector<std::pair<int, int>> pairs;  // (run, level) in scan order
    int run = 0;
    for (int i = 0; i < 64; ++i) {
        if (scanLevels[i] == 0) {
            ++run;
        } else {
            pairs.push_back({run, scanLevels[i]});
            run = 0;
        }
    }
    int table = 0, limit = 0;
    for (auto it = pairs.rbegin(); it != pairs.rend(); ++it) {
        const AvsVlc& t = k.vlc[table];
        const int r = it->first, level = it->second, mag = std::abs(level);
        int code = -1;
        for (int c = 0; c < 59; ++c)
            if (t.rl[c][0] == r && t.rl[c][1] == level) code = c;
        if (code >= 0) {
            w.golomb(static_cast<std::uint64_t>(code), k.golomb[static_cast<size_t>(table)]);
        } else {
            // Escape code: 59 + 2 run, plus 1 for a positive level (59 is odd, and
            // an odd code number means a negative level).
            w.golomb(static_cast<std::uint64_t>(59 + 2 * r + (level > 0 ? 1 : 0)), k.golomb[static_cast<size_t>(table)]);
            const int base = escape_base(k, t, limit, r);
            EXPECT_GE(mag, base) << "writer: a level below its escape base";
            w.golomb(static_cast<std::uint64_t>(mag - base), k.escOrder);
        }
        if (mag > limit) {
            int n = 0;
            while (k.limits[static_cast<size_t>(n)] < mag) ++n;  // first table whose limit holds mag
            table = n;
            limit = k.limits[static_cast<size_t>(n)];
        }
    }
    const AvsVlc& t = k.vlc[table];
    int eob = -1;
    for (int c = 0; c < 59; ++c)
        if (t.rl[c][0] == 64) eob = c;
    ASSERT_GE(eob, 0);
    w.golomb(static_cast<std::uint64_t>(eob), k.golomb[static_cast<size_t>(table)]);
}

// The standard's scans (frame zig-zag and field scan).
const int kFrameScan[64] = {0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  12, 19, 26, 33, 40, 48,
                            41, 34, 27, 20, 13, 6,  7,  14, 21, 28, 35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23,
                            30, 37, 44, 51, 58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};
const int kFieldScan[64] = {0,  8,  16, 1,  24, 32, 9,  17, 40, 48, 25, 2,  10, 56, 33, 18, 3,  41, 49, 26, 11, 19,
                            4,  57, 34, 12, 42, 27, 20, 50, 35, 28, 5,  13, 58, 43, 36, 21, 6,  29, 51, 44, 14, 22,
                            37, 59, 52, 30, 45, 60, 38, 53, 46, 61, 54, 7,  62, 15, 23, 31, 39, 47, 55, 63};

int random_level(std::mt19937& rng) {
    int mag;
    switch (rng() % 10) {
        case 0: mag = 1 + static_cast<int>(rng() % 32767u); break;
        case 1: mag = 1 + static_cast<int>(rng() % 100u); break;
        case 2: mag = 5 + static_cast<int>(rng() % 25u); break;
        case 3: mag = 32768; break;
        default: mag = 1 + static_cast<int>(rng() % 3u); break;
    }
    return rng() % 2 ? mag : -mag;
}

using DecodeFn = ZanStatus (*)(Zan32u**, Zan32s*, Zan32s*, Zan16s*, Zan32s);

void round_trip(const WriterKind& k, DecodeFn decode, unsigned salt) {
    std::mt19937 rng(1234 + salt);
    for (int draw = 0; draw < 3000; ++draw) {
        int levels[64] = {};
        const int density = static_cast<int>(rng() % 5);
        for (int i = 0; i < 64; ++i) {
            const bool on = density == 0 ? rng() % 16 == 0 : density == 1 ? rng() % 3 == 0 : density == 2 ? true
                                                                                              : rng() % 6 == 0;
            if (on && !(density == 3 && i > 12)) levels[i] = random_level(rng);
        }
        if (draw % 50 == 0) std::fill(levels, levels + 64, 0);
        const int skip = static_cast<int>(rng() % 64);
        BitWriter w(rng, skip);
        write_block(w, k, levels);
        if (::testing::Test::HasFailure()) return;
        std::vector<Zan32u> words = w.words(rng, 2);
        const Zan32s scanType = draw % 4 == 0 ? 1 : 0;
        Zan32u* p = words.data() + skip / 32;
        Zan32s off = 31 - skip % 32;
        Zan16s out[64];
        std::fill(out, out + 64, static_cast<Zan16s>(0x5A5A));
        Zan32s num = -7;
        ASSERT_EQ(decode(&p, &off, &num, out, scanType), zanStsOk);
        const int* scan = scanType ? kFieldScan : kFrameScan;
        int last = -1;
        for (int i = 0; i < 64; ++i) {
            ASSERT_EQ(out[scan[i]], static_cast<Zan16s>(levels[i])) << "draw " << draw << " scan index " << i;
            if (levels[i]) last = i;
        }
        EXPECT_EQ(num, scanType ? 63 : last + 1) << "draw " << draw;
        const std::size_t end = w.bits();
        EXPECT_EQ(p, words.data() + end / 32) << "draw " << draw;
        EXPECT_EQ(off, static_cast<Zan32s>(31 - end % 32)) << "draw " << draw;
        if (::testing::Test::HasFailure()) return;
    }
}

TEST(AvsBlock, IntraLumaRoundTripsTheWriter) { round_trip(kIntraW, zaniDecodeLumaBlockIntra_AVS_1u16s, 1); }
TEST(AvsBlock, InterLumaRoundTripsTheWriter) { round_trip(kInterW, zaniDecodeLumaBlockInter_AVS_1u16s, 2); }
TEST(AvsBlock, ChromaRoundTripsTheWriter) { round_trip(kChromaW, zaniDecodeChromaBlock_AVS_1u16s, 3); }

// Hand-coded streams.
TEST(AvsBlock, DecodeKnownCodes) {
    // Intra, order 2: code number 58 (EOB of VLC0_Intra): 58 + 4 = 62 =
    // 0b111110, so a prefix of 3 zeros and the 6 bits 111110.
    Zan32u words[3] = {0x1F000000u, 0, 0};  // 0001 1111 0...
    Zan32u* p = words;
    Zan32s off = 31, num = -1;
    Zan16s out[64];
    std::fill(out, out + 64, static_cast<Zan16s>(7));
    ASSERT_EQ(zaniDecodeLumaBlockIntra_AVS_1u16s(&p, &off, &num, out, 0), zanStsOk);
    EXPECT_EQ(num, 0);
    for (Zan16s v : out) EXPECT_EQ(v, 0);
    EXPECT_EQ(p, words);
    EXPECT_EQ(off, 31 - 9);
    // The same with the field scan asked for: 63.
    p = words;
    off = 31;
    ASSERT_EQ(zaniDecodeLumaBlockIntra_AVS_1u16s(&p, &off, &num, out, 1), zanStsOk);
    EXPECT_EQ(num, 63);

    // Intra: code 0 = (run 0, level 1) in VLC0: "100" (order 2: 1 then 2
    // bits 00).  Then VLC1 (limit 1): EOB is code 8 = 8 + 4 = 12 = 0b1100:
    // prefix 0, then 1100 -> "01100".  Stream: 100 01100 -> 1000 1100 ...
    Zan32u w2[2] = {0x8C000000u, 0};
    p = w2;
    off = 31;
    ASSERT_EQ(zaniDecodeLumaBlockIntra_AVS_1u16s(&p, &off, &num, out, 0), zanStsOk);
    EXPECT_EQ(num, 1);
    EXPECT_EQ(out[0], 1);
    EXPECT_EQ(off, 31 - 8);
}

TEST(AvsBlock, DecodeZeroPrefixEndsTheBlockAndStopsAtTheData) {
    // 32 zero bits form no code: the block ends empty, the 32 bits consumed.
    Zan32u words[3] = {0, 0, 0};
    Zan32u* p = words;
    Zan32s off = 31, num = -1;
    Zan16s out[64];
    ASSERT_EQ(zaniDecodeChromaBlock_AVS_1u16s(&p, &off, &num, out, 0), zanStsOk);
    EXPECT_EQ(num, 0);
    EXPECT_EQ(p, words + 1);
    EXPECT_EQ(off, 31);
}

TEST(AvsBlock, DecodeStatuses) {
    Zan32u words[2] = {0xFFFFFFFFu, 0xFFFFFFFFu};
    Zan32u* p = words;
    Zan32u* nullStream = nullptr;
    Zan32s off = 31, num = 5;
    Zan16s out[64] = {};
    EXPECT_EQ(zaniDecodeLumaBlockIntra_AVS_1u16s(nullptr, &off, &num, out, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeLumaBlockInter_AVS_1u16s(&p, nullptr, &num, out, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeChromaBlock_AVS_1u16s(&p, &off, nullptr, out, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeChromaBlock_AVS_1u16s(&p, &off, &num, nullptr, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDecodeLumaBlockIntra_AVS_1u16s(&nullStream, &off, &num, out, 0), zanStsNullPtr);
    EXPECT_EQ(p, words);
    EXPECT_EQ(off, 31);
    EXPECT_EQ(num, 5);
}

// ------------------------------------------------------ reconstruction

// The standard's transform matrix, basis functions by row.
const int kT[8][8] = {{8, 8, 8, 8, 8, 8, 8, 8},         {10, 9, 6, 2, -2, -6, -9, -10}, {10, 4, -4, -10, -10, -4, 4, 10},
                      {9, -2, -10, -6, 6, 10, 2, -9},   {8, -8, -8, 8, 8, -8, -8, 8},   {6, -10, 2, 9, -9, -2, 10, -6},
                      {4, -10, 10, -4, -4, 10, -10, 4}, {2, -6, 9, -10, 10, -9, 6, -2}};
const int kScale[64] = {32768, 36061, 38968, 42495, 46341, 50535, 55437, 60424, 32932, 35734, 38968, 42495, 46177,
                        50535, 55109, 59933, 65535, 35734, 38968, 42577, 46341, 50617, 55027, 60097, 32809, 35734,
                        38968, 42454, 46382, 50576, 55109, 60056, 65535, 35734, 38968, 42495, 46320, 50515, 55109,
                        60076, 65535, 35744, 38968, 42495, 46341, 50535, 55099, 60087, 65535, 35734, 38973, 42500,
                        46341, 50535, 55109, 60097, 32771, 35734, 38965, 42497, 46341, 50535, 55109, 60099};
const int kShift[64] = {14, 14, 14, 14, 14, 14, 14, 14, 13, 13, 13, 13, 13, 13, 13, 13, 13, 12, 12, 12, 12, 12,
                        12, 12, 11, 11, 11, 11, 11, 11, 11, 11, 11, 10, 10, 10, 10, 10, 10, 10, 10, 9,  9,  9,
                        9,  9,  9,  9,  9,  8,  8,  8,  8,  8,  8,  8,  7,  7,  7,  7,  7,  7,  7,  7};
int shift_of(int qp) { return kShift[qp]; }

// Model: residual = T^T (D T) with the two roundings; `n` limits the
// coefficients used (8 all, 4 the top-left quarter, 1 the DC).
void model_block(const Zan16s* c, int qp, int n, Zan8u* dst, int step) {
    long long d[8][8] = {};
    const int sh = shift_of(qp);
    for (int v = 0; v < n; ++v)
        for (int u = 0; u < n; ++u) {
            long long x = (static_cast<long long>(c[v * 8 + u]) * kScale[qp] + (1LL << (sh - 1))) >> sh;
            d[v][u] = std::clamp<long long>(x, -32768, 32767);
        }
    long long h[8][8];
    for (int v = 0; v < 8; ++v)
        for (int j = 0; j < 8; ++j) {
            long long s = 0;
            for (int u = 0; u < 8; ++u) s += d[v][u] * kT[u][j];
            h[v][j] = std::clamp<long long>((s + 4) >> 3, -32768, 32767);
        }
    for (int i = 0; i < 8; ++i)
        for (int j = 0; j < 8; ++j) {
            long long s = 0;
            for (int v = 0; v < 8; ++v) s += kT[v][i] * h[v][j];
            Zan8u& o = dst[i * step + j];
            o = static_cast<Zan8u>(std::clamp<long long>(o + ((s + 64) >> 7), 0, 255));
        }
}

TEST(AvsBlock, ReconstructInterAgreesWithTheTransformModel) {
    std::mt19937 rng(77);
    for (int draw = 0; draw < 400; ++draw) {
        Zan16s coeffs[4 * 64];
        const int range = draw % 3 == 0 ? 40 : draw % 3 == 1 ? 600 : 32768;
        for (auto& c : coeffs)
            c = static_cast<Zan16s>(rng() % 3 == 0 ? static_cast<int>(rng() % (2u * range)) - range : 0);
        Zan8u pic[16 * 24], want[16 * 24];
        for (auto& s : pic) s = static_cast<Zan8u>(rng());
        std::memcpy(want, pic, sizeof pic);
        const Zan32u cbp = rng() % 16;
        const int qp = static_cast<int>(rng() % 64);
        Zan32s num[4];
        int k = 0;
        for (int b = 0; b < 4; ++b) {
            num[b] = static_cast<Zan32s>(rng() % 70);
            if (!(cbp & (1u << b))) continue;
            const int n = num[b] == 1 ? 1 : (num[b] >= 2 && num[b] <= 10 ? 4 : 8);
            model_block(coeffs + 64 * k, qp, n, want + (b >> 1) * 8 * 24 + (b & 1) * 8, 24);
            ++k;
        }
        Zan16s* cursor = coeffs;
        ASSERT_EQ(zaniReconstructLumaInter_AVS_16s8u_C1R(&cursor, pic, 24, num, cbp, qp), zanStsOk);
        EXPECT_EQ(cursor, coeffs + 64 * k);
        ASSERT_EQ(std::memcmp(pic, want, sizeof pic), 0) << "draw " << draw << " qp " << qp << " cbp " << cbp;
    }
}

TEST(AvsBlock, ReconstructKnownAnswers) {
    // DC 64 at QP 0: d = (64 * 32768 + 8192) >> 14 = 128, residual
    // (8 * 128 + 64) >> 7 = 8 on every sample.
    Zan16s c[64] = {};
    c[0] = 64;
    Zan8u pic[8 * 8];
    std::fill(pic, pic + 64, static_cast<Zan8u>(100));
    Zan16s* cur = c;
    Zan32s num[2] = {1, 0};
    ASSERT_EQ(zaniReconstructChromaInter_AVS_16s8u_C1R(&cur, pic, pic, 8, num, 1, 0), zanStsOk);
    for (Zan8u v : pic) EXPECT_EQ(v, 108);
    EXPECT_EQ(cur, c + 64);
    // numCoeff 0 runs the whole transform: the same answer for the DC block.
    std::fill(pic, pic + 64, static_cast<Zan8u>(100));
    cur = c;
    num[0] = 0;
    ASSERT_EQ(zaniReconstructChromaInter_AVS_16s8u_C1R(&cur, pic, pic, 8, num, 1, 0), zanStsOk);
    for (Zan8u v : pic) EXPECT_EQ(v, 108);
    // Saturation: the largest DC drives every sample to 255, the smallest
    // to 0.
    c[0] = 32767;
    cur = c;
    num[0] = 1;
    ASSERT_EQ(zaniReconstructChromaInter_AVS_16s8u_C1R(&cur, pic, pic, 8, num, 1, 63 - 12), zanStsOk);
    for (Zan8u v : pic) EXPECT_EQ(v, 255);
    c[0] = -32768;
    cur = c;
    ASSERT_EQ(zaniReconstructChromaInter_AVS_16s8u_C1R(&cur, pic, pic, 8, num, 1, 0), zanStsOk);
    for (Zan8u v : pic) EXPECT_EQ(v, 0);
}

TEST(AvsBlock, ReconstructStatusesInOrder) {
    Zan16s c[64] = {};
    Zan16s* cur = c;
    Zan16s* nullCur = nullptr;
    Zan8u pic[16 * 16];
    std::fill(pic, pic + sizeof pic, static_cast<Zan8u>(9));
    const Zan32s num[4] = {0, 0, 0, 0}, modes[4] = {2, 2, 2, 2};
    EXPECT_EQ(zaniReconstructLumaInter_AVS_16s8u_C1R(nullptr, pic, 16, num, 1, 64), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructLumaInter_AVS_16s8u_C1R(&nullCur, pic, 16, num, 1, 0), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructLumaInter_AVS_16s8u_C1R(&cur, pic, 16, num, 1, 64), zanStsOutOfRange);
    EXPECT_EQ(zaniReconstructLumaInter_AVS_16s8u_C1R(&cur, pic, 16, num, 1, -1), zanStsOutOfRange);
    EXPECT_EQ(zaniReconstructLumaIntra_AVS_16s8u_C1R(&cur, pic, 16, nullptr, num, 1, 64, 0), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructLumaIntra_AVS_16s8u_C1R(&cur, pic, 16, modes, num, 1, 64, 0), zanStsOutOfRange);
    EXPECT_EQ(zaniReconstructChromaInter_AVS_16s8u_C1R(&cur, pic, nullptr, 16, num, 1, 52), zanStsNullPtr);
    EXPECT_EQ(zaniReconstructChromaInter_AVS_16s8u_C1R(&cur, pic, pic, 16, num, 1, 52), zanStsOutOfRange);
    EXPECT_EQ(zaniReconstructChromaIntra_AVS_16s8u_C1R(&cur, pic, pic, 16, 0, num, 1, 52, 0), zanStsOutOfRange);
    EXPECT_EQ(zaniReconstructChromaInter_AVS_16s8u_C1R(&cur, pic, pic, 16, num, 1, 51), zanStsOk);
    EXPECT_EQ(cur, c + 64);
    cur = c;
    EXPECT_EQ(zaniReconstructLumaInter_AVS_16s8u_C1R(&cur, pic, 16, num, 0, 63), zanStsOk);
    EXPECT_EQ(cur, c);  // no coded block: the cursor stays
    for (Zan8u v : pic) EXPECT_EQ(v, 9);
}

// ------------------------------------------------------ intra prediction

// Plain model of the standard's 8x8 intra predictors on a block at (8, 8)
// of a 32x32 picture.  Returns false when the mode may not run.
struct Pic {
    Zan8u s[32 * 32];
    Zan8u& at(int y, int x) { return s[y * 32 + x]; }
};

bool model_predict(Pic& p, int by, int bx, int mode, Zan32u edge, bool chroma) {
    const bool L = !(edge & 1), A = !(edge & 4), AR = !(edge & 32), BL = !(edge & 64);
    int top[18], left[18];
    for (int i = 1; i <= 8; ++i) {
        top[i] = A ? p.at(by - 1, bx + i - 1) : 0;
        left[i] = L ? p.at(by + i - 1, bx - 1) : 0;
    }
    for (int i = 9; i <= 16; ++i) {
        top[i] = A ? (AR ? p.at(by - 1, bx + i - 1) : top[8]) : 0;
        left[i] = L ? (BL ? p.at(by + i - 1, bx - 1) : left[8]) : 0;
    }
    top[17] = top[16];
    left[17] = left[16];
    top[0] = left[0] = L ? p.at(by - 1, bx - 1) : top[1];
    auto f = [](const int* a, int i) { return (a[i - 1] + 2 * a[i] + a[i + 1] + 2) / 4; };
    int pred[8][8];
    enum { V, H, DC, DL, DR, PLANE, FILL };
    int m;
    if (chroma) {
        const int cm[4] = {DC, H, V, PLANE};
        m = cm[mode & 3];
    } else {
        const int lm[8] = {V, H, DC, DL, DR, FILL, FILL, FILL};
        m = lm[mode & 7];
    }
    if ((m == V && !A) || (m == H && !L) || ((m == DL || m == DR || m == PLANE) && !(A && L))) return false;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            int v = 128;
            switch (m) {
                case V: v = top[x + 1]; break;
                case H: v = left[y + 1]; break;
                case DC:
                    v = A && L ? (f(top, x + 1) + f(left, y + 1)) / 2 : A ? f(top, x + 1) : L ? f(left, y + 1) : 128;
                    break;
                case DL: v = (f(top, x + y + 2) + f(left, x + y + 2)) / 2; break;
                case DR:
                    v = x > y ? f(top, x - y) : x < y ? f(left, y - x) : (top[1] + 2 * top[0] + left[1] + 2) / 4;
                    break;
                case PLANE: {
                    int ih = 0, iv = 0;
                    for (int i = 0; i < 4; ++i) {
                        ih += (i + 1) * (top[5 + i] - top[3 - i]);
                        iv += (i + 1) * (left[5 + i] - left[3 - i]);
                    }
                    const int a = 16 * (top[8] + left[8]), b = (17 * ih + 16) >> 5, c = (17 * iv + 16) >> 5;
                    v = std::clamp((a + (x - 3) * b + (y - 3) * c + 16) >> 5, 0, 255);
                    break;
                }
                default: break;
            }
            pred[y][x] = v;
        }
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) p.at(by + y, bx + x) = static_cast<Zan8u>(pred[y][x]);
    return true;
}

TEST(AvsBlock, IntraLumaPredictionAgreesWithTheModel) {
    std::mt19937 rng(5);
    for (int draw = 0; draw < 2000; ++draw) {
        Pic got, want;
        for (auto& s : got.s) s = static_cast<Zan8u>(draw % 9 == 0 ? (rng() % 2) * 255 : rng());
        want = got;
        const Zan32u edge = (rng() % 2) | ((rng() % 2) << 2) | ((rng() % 2) << 5);
        Zan32s modes[4];
        for (auto& m : modes) m = static_cast<Zan32s>(rng() % 16);
        const Zan32u be[4] = {edge & ~32u, (edge & ~1u) | 64u, (edge & 1u) + 64u, 96u};
        for (int b = 0; b < 4; ++b) model_predict(want, 8 + (b >> 1) * 8, 8 + (b & 1) * 8, modes[b], be[b], false);
        Zan16s c[64] = {};
        Zan16s* cur = c;
        const Zan32s num[4] = {0, 0, 0, 0};
        ASSERT_EQ(zaniReconstructLumaIntra_AVS_16s8u_C1R(&cur, &got.at(8, 8), 32, modes, num, 0, 10, edge), zanStsOk);
        ASSERT_EQ(std::memcmp(got.s, want.s, sizeof got.s), 0)
            << "draw " << draw << " edge " << edge << " modes " << modes[0] << modes[1] << modes[2] << modes[3];
    }
}

TEST(AvsBlock, IntraChromaPredictionAgreesWithTheModel) {
    std::mt19937 rng(6);
    for (int draw = 0; draw < 2000; ++draw) {
        Pic gu, gv, wu, wv;
        for (auto& s : gu.s) s = static_cast<Zan8u>(rng());
        for (auto& s : gv.s) s = static_cast<Zan8u>(rng());
        wu = gu;
        wv = gv;
        const Zan32u edge = (rng() % 2) | ((rng() % 2) << 2) | ((rng() % 2) << 5);
        const Zan32s mode = static_cast<Zan32s>(rng() % 8);
        model_predict(wu, 8, 8, mode, edge | 64, true);
        model_predict(wv, 8, 8, mode, edge | 64, true);
        Zan16s c[64] = {};
        Zan16s* cur = c;
        const Zan32s num[2] = {0, 0};
        // One step for both planes: they lie in separate pictures of the same width.
        ASSERT_EQ(zaniReconstructChromaIntra_AVS_16s8u_C1R(&cur, &gu.at(8, 8), &gv.at(8, 8), 32, mode, num, 0, 10, edge),
                  zanStsOk);
        ASSERT_EQ(std::memcmp(gu.s, wu.s, sizeof gu.s), 0) << "draw " << draw << " mode " << mode << " edge " << edge;
        ASSERT_EQ(std::memcmp(gv.s, wv.s, sizeof gv.s), 0) << "draw " << draw;
    }
}

TEST(AvsBlock, IntraModeQuirks) {
    Pic p;
    for (int i = 0; i < 32 * 32; ++i) p.s[i] = static_cast<Zan8u>(i * 7);
    Pic keep = p;
    Zan16s c[64] = {};
    Zan16s* cur = c;
    const Zan32s num[4] = {0, 0, 0, 0};
    // Down-left with the top missing writes nothing (block 0; blocks 1..3
    // use mode 5: 128).
    const Zan32s modes[4] = {3, 5, 6, 7};
    ASSERT_EQ(zaniReconstructLumaIntra_AVS_16s8u_C1R(&cur, &p.at(8, 8), 32, modes, num, 0, 0, 4), zanStsOk);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(p.at(8 + y, 8 + x), keep.at(8 + y, 8 + x));
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x)
            if (y >= 8 || x >= 8) {
                EXPECT_EQ(p.at(8 + y, 8 + x), 128);
            }
    // Mode 9 acts as mode 1 (horizontal).
    p = keep;
    const Zan32s m9[4] = {9, 9, 9, 9};
    ASSERT_EQ(zaniReconstructLumaIntra_AVS_16s8u_C1R(&cur, &p.at(8, 8), 32, m9, num, 0, 0, 0), zanStsOk);
    for (int x = 0; x < 16; ++x) EXPECT_EQ(p.at(8, 8 + x), keep.at(8, 7));
    // DC with both sides absent: 128.
    p = keep;
    const Zan32s dc[4] = {2, 0, 0, 0};
    ASSERT_EQ(zaniReconstructLumaIntra_AVS_16s8u_C1R(&cur, &p.at(8, 8), 32, dc, num, 0, 0, 1 | 4 | 32), zanStsOk);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(p.at(8 + y, 8 + x), 128);
}

// ------------------------------------------------------ encoder side

// Plain model of the forward transform and quantisation, written from the
// standard's formulas: F = (T X T^T + 16) >> 5 in 64-bit arithmetic, the
// norm factors derived from the basis norms, the reference encoder's
// quantisation table and roundings.
const int kQ[64] = {32768, 29775, 27554, 25268, 23170, 21247, 19369, 17770, 16302, 15024, 13777, 12634, 11626,
                    10624, 9742,  8958,  8192,  7512,  6889,  6305,  5793,  5303,  4878,  4467,  4091,  3756,
                    3444,  3161,  2894,  2654,  2435,  2235,  2048,  1878,  1722,  1579,  1449,  1329,  1218,
                    1117,  1024,  939,   861,   790,   724,   664,   609,   558,   512,   470,   430,   395,
                    362,   332,   304,   279,   256,   235,   215,   197,   181,   166,   152,   140};

long long basis_norm(int k) {
    long long s = 0;
    for (int n = 0; n < 8; ++n) s += kT[k][n] * kT[k][n];
    return s;
}

// 32768 * 512^2 / (norm_v * norm_u), rounded to the nearest integer.
long long norm_factor(int v, int u) {
    const long long den = basis_norm(v) * basis_norm(u);
    return (32768LL * 512 * 512 + den / 2) / den;
}

// Returns the zig-zag count; `levels` receives the block in raster order.
int model_transform_quant(const int* x, int qp, bool intra, int* levels) {
    long long h[8][8];
    for (int y = 0; y < 8; ++y)
        for (int k = 0; k < 8; ++k) {
            h[y][k] = 0;
            for (int n = 0; n < 8; ++n) h[y][k] += static_cast<long long>(kT[k][n]) * x[y * 8 + n];
        }
    const long long round = intra ? 32768 * 10 / 31 : 32768 * 10 / 62;
    int count = 0;
    for (int v = 0; v < 8; ++v)
        for (int u = 0; u < 8; ++u) {
            long long f = 0;
            for (int y = 0; y < 8; ++y) f += kT[v][y] * h[y][u];
            f = (f + 16) >> 5;
            const long long m = f < 0 ? -f : f;
            const long long n = (m * norm_factor(v, u) + (1 << 18)) >> 19;
            const long long level = (n * kQ[qp] + round) >> 15;
            levels[v * 8 + u] = static_cast<int>(f < 0 ? -level : level);
        }
    for (int i = 0; i < 64; ++i)
        if (levels[kFrameScan[i]] != 0) count = i + 1;
    return count;
}

TEST(AvsBlock, NormFactorsAreTheReferenceEncoders) {
    // The model derives the factors; the reference encoder lists them.
    const long long listed[4][4] = {{32768, 37958, 36158, 37958},
                                    {37958, 43969, 41884, 43969},
                                    {36158, 41884, 39898, 41884},
                                    {37958, 43969, 41884, 43969}};
    for (int v = 0; v < 8; ++v)
        for (int u = 0; u < 8; ++u) EXPECT_EQ(norm_factor(v, u), listed[v & 3][u & 3]) << v << "," << u;
}

TEST(AvsBlock, TransformQuantAgreesWithThePlainModel) {
    std::mt19937 rng(91);
    for (int draw = 0; draw < 3000; ++draw) {
        int x[64], want[64];
        Zan16s src[64], dst[64];
        const int kind = draw % 4;
        const int amp = 1 + static_cast<int>(rng() % 255);
        for (int i = 0; i < 64; ++i) {
            int v = static_cast<int>(rng() % (2u * amp + 1)) - amp;
            if (kind == 1) v = (i % 8) * amp / 8 - (i / 8) * amp / 16;  // a ramp
            if (kind == 2) v = rng() % 5 == 0 ? v : 0;
            if (kind == 3) v = rng() % 2 ? 255 : -255;
            x[i] = v;
            src[i] = static_cast<Zan16s>(v);
        }
        const int qp = draw % 64;
        const bool intra = (draw / 64) % 2 == 0;
        const int count = model_transform_quant(x, qp, intra, want);
        Zan32s num = -1;
        ASSERT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(src, dst, &num, qp, intra ? 1 : 0), zanStsOk);
        for (int i = 0; i < 64; ++i) ASSERT_EQ(dst[i], want[i]) << "draw " << draw << " qp " << qp << " at " << i;
        ASSERT_EQ(num, count) << "draw " << draw;
        // In place: the same.
        Zan32s num2 = -1;
        ASSERT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(src, src, &num2, qp, intra ? 1 : 0), zanStsOk);
        ASSERT_EQ(std::memcmp(src, dst, sizeof dst), 0) << "draw " << draw;
        ASSERT_EQ(num2, count);
    }
}

TEST(AvsBlock, TransformQuantKnownAnswers) {
    Zan16s x[64], out[64];
    Zan32s num = -1;
    // A flat residual of 10: the transform's DC is 64 * 64 * 10 / 32 = 1280,
    // (1280 * 32768 + 2^18) >> 19 = 80; at QP 0 the level is 80, nothing else.
    std::fill(x, x + 64, static_cast<Zan16s>(10));
    ASSERT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, out, &num, 0, 1), zanStsOk);
    EXPECT_EQ(out[0], 80);
    for (int i = 1; i < 64; ++i) EXPECT_EQ(out[i], 0) << i;
    EXPECT_EQ(num, 1);
    // QP 8: 80 * 16302 = 1304160; intra (+ 10570) >> 15 = 40, inter (+ 5285)
    // >> 15 = 39: the roundings differ.
    ASSERT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, out, &num, 8, 1), zanStsOk);
    EXPECT_EQ(out[0], 40);
    ASSERT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, out, &num, 8, 0), zanStsOk);
    EXPECT_EQ(out[0], 39);
    std::fill(x, x + 64, static_cast<Zan16s>(-10));
    ASSERT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, out, &num, 8, 0), zanStsOk);
    EXPECT_EQ(out[0], -39);
    EXPECT_EQ(num, 1);
    // The last basis function in both directions: only F[7][7] = (442 * 442 +
    // 16) >> 5 = 6105 remains; (6105 * 43969 + 2^18) >> 19 = 512, and the
    // count is 64 (raster 63 is the last zig-zag position).
    for (int y = 0; y < 8; ++y)
        for (int n = 0; n < 8; ++n) x[y * 8 + n] = static_cast<Zan16s>(kT[7][y] * kT[7][n]);
    ASSERT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, out, &num, 0, 1), zanStsOk);
    for (int i = 0; i < 63; ++i) EXPECT_EQ(out[i], 0) << i;
    EXPECT_EQ(out[63], 512);
    EXPECT_EQ(num, 64);
    // Saturation: 32767 everywhere saturates the row pass (64 * 32767) and
    // the column pass; the DC is 32767, (32767 * 32768 + 2^18) >> 19 = 2048.
    std::fill(x, x + 64, static_cast<Zan16s>(32767));
    ASSERT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, out, &num, 0, 0), zanStsOk);
    EXPECT_EQ(out[0], 2048);
    for (int i = 1; i < 64; ++i) EXPECT_EQ(out[i], 0) << i;
    // -32768: the magnitude 32768 is kept, not wrapped.
    std::fill(x, x + 64, static_cast<Zan16s>(-32768));
    ASSERT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, out, &num, 0, 0), zanStsOk);
    EXPECT_EQ(out[0], -2048);
    // A zero block: count 0.  A small residual at the largest QP: nothing survives.
    std::fill(x, x + 64, static_cast<Zan16s>(0));
    ASSERT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, out, &num, 0, 1), zanStsOk);
    EXPECT_EQ(num, 0);
    for (int i = 0; i < 64; ++i) x[i] = static_cast<Zan16s>(i % 7 - 3);
    ASSERT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, out, &num, 63, 1), zanStsOk);
    EXPECT_EQ(num, 0);
    for (Zan16s v : out) EXPECT_EQ(v, 0);
}

TEST(AvsBlock, TransformQuantIntraFlagIsAnyNonZeroValue) {
    Zan16s x[64];
    for (int i = 0; i < 64; ++i) x[i] = static_cast<Zan16s>((i * 37) % 101 - 50);
    Zan16s one[64], inter[64], other[64];
    Zan32s n1 = 0, n0 = 0, n = 0;
    ASSERT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, one, &n1, 20, 1), zanStsOk);
    ASSERT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, inter, &n0, 20, 0), zanStsOk);
    EXPECT_NE(std::memcmp(one, inter, sizeof one), 0) << "the two roundings must differ on this block";
    for (Zan32s flag : {2, -1, 0x100, static_cast<Zan32s>(0x80000000u)}) {
        ASSERT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, other, &n, 20, flag), zanStsOk);
        EXPECT_EQ(std::memcmp(one, other, sizeof one), 0) << "intra " << flag;
        EXPECT_EQ(n, n1);
    }
}

TEST(AvsBlock, TransformQuantStatusesInOrder) {
    Zan16s x[64], out[64];
    std::fill(x, x + 64, static_cast<Zan16s>(9));
    std::fill(out, out + 64, static_cast<Zan16s>(0x5A5A));
    Zan32s num = 77;
    EXPECT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(nullptr, out, &num, 0, 1), zanStsNullPtr);
    EXPECT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, nullptr, &num, 0, 1), zanStsNullPtr);
    EXPECT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, out, nullptr, 0, 1), zanStsNullPtr);
    EXPECT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, out, nullptr, 64, 1), zanStsNullPtr);  // null beats QP
    EXPECT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, out, &num, 64, 1), zanStsBadArg);
    EXPECT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, out, &num, -1, 0), zanStsBadArg);
    EXPECT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, x, &num, 1000, 0), zanStsBadArg);
    for (Zan16s v : out) EXPECT_EQ(v, 0x5A5A);
    for (Zan16s v : x) EXPECT_EQ(v, 9);
    EXPECT_EQ(num, 77);
    // QP 63 passes: the DC 1152 quantises to (72 * 140 + 5285) >> 15 = 0.
    EXPECT_EQ(zaniTransformQuant8x8Fwd_AVS_16s_C1(x, out, &num, 63, 0), zanStsOk);
    EXPECT_EQ(num, 0);
    for (Zan16s v : out) EXPECT_EQ(v, 0);
}

// Source pictures for the encoder side: noise, or natural-looking content
// (a smooth gradient with a soft texture and a sharp edge at a random place).
void fill_source(std::mt19937& rng, Zan8u* p, int w, int h, int kind) {
    const int gx = static_cast<int>(rng() % 9) - 4, gy = static_cast<int>(rng() % 9) - 4;
    const int base = static_cast<int>(rng() % 200) + 20, ex = static_cast<int>(rng() % w);
    const int step = static_cast<int>(rng() % 120) - 60, tex = 1 + static_cast<int>(rng() % 12);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            int v;
            if (kind == 0)
                v = static_cast<int>(rng() % 256);
            else if (kind == 1)
                v = base + gx * x + gy * y + static_cast<int>(rng() % static_cast<unsigned>(tex)) +
                    (x + y / 2 > ex ? step : 0);
            else
                v = rng() % 2 ? 0 : 255;  // extremes
            p[y * w + x] = static_cast<Zan8u>(std::clamp(v, 0, 255));
        }
}

// The coded blocks of one call through the bit stream: written with the
// independent block writer, read back with the decoder export, which also
// gives each block's count.
void through_stream(const WriterKind& k, DecodeFn decode, const Zan16s* coeffs, int blocks, Zan16s* back,
                    Zan32s* counts) {
    std::mt19937 rng(7);
    BitWriter w(rng, 5);
    for (int b = 0; b < blocks; ++b) {
        int levels[64];
        for (int i = 0; i < 64; ++i) levels[i] = coeffs[64 * b + kFrameScan[i]];
        write_block(w, k, levels);
    }
    std::vector<Zan32u> words = w.words(rng, 2);
    Zan32u* p = words.data();
    Zan32s off = 31 - 5;
    for (int b = 0; b < blocks; ++b) ASSERT_EQ(decode(&p, &off, &counts[b], back + 64 * b, 0), zanStsOk);
}

int sum_abs_error(const Pic& a, const Zan8u* src, int by, int bx, int n, int w) {
    int s = 0;
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) s += std::abs(a.s[(by + y) * 32 + bx + x] - src[y * w + x]);
    return s;
}

// The encoder-side pass followed by the decoder side rebuilds the block its
// reconstruction promised: luma.  The macroblock sits at (8, 8) of a 32x32
// picture whose other samples stand for already reconstructed neighbours.
TEST(AvsBlock, DisassembleLumaThenDecoderRebuildsTheReconstruction) {
    std::mt19937 rng(2024);
    long long err[2] = {0, 0}, mbs[2] = {0, 0};  // QP 0..7 and 56..63, natural sources
    for (int draw = 0; draw < 1200; ++draw) {
        const int kind = draw % 5 == 0 ? 0 : (draw % 5 == 1 ? 2 : 1);
        Zan8u src[16 * 16];
        fill_source(rng, src, 16, 16, kind);
        Pic enc;
        fill_source(rng, enc.s, 32, 32, kind == 2 ? 1 : kind);
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x) enc.at(8 + y, 8 + x) = static_cast<Zan8u>(rng());  // stale samples
        Pic dec = enc;
        const Zan32s qp = draw % 64;
        Zan32u edge = (rng() % 2) | ((rng() % 2) << 2) | ((rng() % 2) << 5);
        if (draw % 7 == 0) edge |= 64;
        Zan16s coeffs[4 * 64 + 8];
        std::fill(coeffs, coeffs + 4 * 64 + 8, static_cast<Zan16s>(0x7777));
        Zan16s* cur = coeffs;
        Zan32s modes[4] = {-1, -1, -1, -1};
        Zan32u cbp = 0xDEAD;
        ASSERT_EQ(zaniDisassembleLumaIntra_AVS_16s8u_C1R(src, 16, &enc.at(8, 8), 32, &cur, modes, &cbp, qp, edge),
                  zanStsOk);
        ASSERT_LT(cbp, 16u);
        const int coded = __builtin_popcount(cbp);
        ASSERT_EQ(cur, coeffs + 64 * coded) << "draw " << draw;
        for (int i = 4 * 64; i < 4 * 64 + 8; ++i) ASSERT_EQ(coeffs[i], 0x7777) << "wrote past 256 entries";
        for (Zan32s m : modes) ASSERT_TRUE(m >= 0 && m <= 4) << m;
        // Decoder: the same neighbours, stale samples in the macroblock.
        Zan16s back[4 * 64];
        Zan32s counts[4] = {0, 0, 0, 0};
        through_stream(kIntraW, zaniDecodeLumaBlockIntra_AVS_1u16s, coeffs, coded, back, counts);
        if (::testing::Test::HasFailure()) return;
        ASSERT_EQ(std::memcmp(back, coeffs, sizeof(Zan16s) * 64 * static_cast<size_t>(coded)), 0);
        Zan32s num[4] = {0, 0, 0, 0};
        for (int b = 0, k = 0; b < 4; ++b)
            if (cbp & (1u << b)) num[b] = draw % 2 ? counts[k++] : 0;  // the counts, or the full transform
        Zan16s* dcur = back;
        ASSERT_EQ(zaniReconstructLumaIntra_AVS_16s8u_C1R(&dcur, &dec.at(8, 8), 32, modes, num, cbp, qp, edge),
                  zanStsOk);
        EXPECT_EQ(dcur, back + 64 * coded);
        ASSERT_EQ(std::memcmp(enc.s, dec.s, sizeof enc.s), 0)
            << "draw " << draw << " qp " << qp << " edge " << edge << " cbp " << cbp;
        if (kind == 1 && (qp < 8 || qp >= 56)) {
            err[qp >= 56] += sum_abs_error(enc, src, 8, 8, 16, 16);
            ++mbs[qp >= 56];
        }
    }
    // The reconstruction follows the source closely at fine QPs and loosely at
    // coarse ones.
    ASSERT_GT(mbs[0], 50);
    ASSERT_GT(mbs[1], 50);
    const double fine = static_cast<double>(err[0]) / (256.0 * static_cast<double>(mbs[0]));
    const double coarse = static_cast<double>(err[1]) / (256.0 * static_cast<double>(mbs[1]));
    EXPECT_LT(fine, 1.5) << "mean absolute error at QP 0..7";
    EXPECT_GT(coarse, fine) << "mean absolute error at QP 56..63";
    std::printf("[ info ] natural luma, mean |reconstruction - source|: QP 0..7 %.3f, QP 56..63 %.3f\n", fine, coarse);
}

TEST(AvsBlock, DisassembleChromaThenDecoderRebuildsTheReconstruction) {
    std::mt19937 rng(2025);
    for (int draw = 0; draw < 1200; ++draw) {
        const int kind = draw % 5 == 0 ? 0 : (draw % 5 == 1 ? 2 : 1);
        Zan8u su[64], sv[64];
        fill_source(rng, su, 8, 8, kind);
        fill_source(rng, sv, 8, 8, kind);
        Pic eu, ev;
        fill_source(rng, eu.s, 32, 32, kind == 2 ? 1 : kind);
        fill_source(rng, ev.s, 32, 32, kind == 2 ? 1 : kind);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                eu.at(8 + y, 8 + x) = static_cast<Zan8u>(rng());
                ev.at(8 + y, 8 + x) = static_cast<Zan8u>(rng());
            }
        Pic du = eu, dv = ev;
        const Zan32s qp = draw % 52;
        const Zan32u edge = (rng() % 2) | ((rng() % 2) << 2) | ((rng() % 2) << 5);
        Zan16s coeffs[2 * 64 + 8];
        std::fill(coeffs, coeffs + 2 * 64 + 8, static_cast<Zan16s>(0x7777));
        Zan16s* cur = coeffs;
        Zan32s mode = -1;
        Zan32u cbp = 0xDEAD;
        const Zan8u* srcs[2] = {su, sv};
        Zan8u* dsts[2] = {&eu.at(8, 8), &ev.at(8, 8)};
        ASSERT_EQ(zaniDisassembleChroma420Intra_AVS_16s8u_C1R(srcs, 8, dsts, 32, &cur, &mode, &cbp, qp, edge),
                  zanStsOk);
        ASSERT_LT(cbp, 4u);
        ASSERT_TRUE(mode >= 0 && mode <= 3);
        const int coded = __builtin_popcount(cbp);
        ASSERT_EQ(cur, coeffs + 64 * coded);
        for (int i = 2 * 64; i < 2 * 64 + 8; ++i) ASSERT_EQ(coeffs[i], 0x7777) << "wrote past 128 entries";
        Zan16s back[2 * 64];
        Zan32s counts[2] = {0, 0};
        through_stream(kChromaW, zaniDecodeChromaBlock_AVS_1u16s, coeffs, coded, back, counts);
        if (::testing::Test::HasFailure()) return;
        Zan32s num[2] = {0, 0};
        for (int b = 0, k = 0; b < 2; ++b)
            if (cbp & (1u << b)) num[b] = draw % 2 ? counts[k++] : 0;
        Zan16s* dcur = back;
        ASSERT_EQ(zaniReconstructChromaIntra_AVS_16s8u_C1R(&dcur, &du.at(8, 8), &dv.at(8, 8), 32, mode, num, cbp, qp,
                                                           edge),
                  zanStsOk);
        ASSERT_EQ(std::memcmp(eu.s, du.s, sizeof eu.s), 0) << "U, draw " << draw << " qp " << qp << " mode " << mode;
        ASSERT_EQ(std::memcmp(ev.s, dv.s, sizeof ev.s), 0) << "V, draw " << draw << " qp " << qp << " mode " << mode;
    }
}

// The decisions and coefficients of the encoder-side pass against models:
// for each block in order, the SAD of every mode the model predictor allows
// (on the neighbours as the pass left them), the first smallest wins, and
// the coefficients are the model transform and quantisation of the
// winner's residual.
TEST(AvsBlock, DisassembleLumaAgreesWithTheModels) {
    std::mt19937 rng(31);
    for (int draw = 0; draw < 600; ++draw) {
        const int kind = draw % 3 == 0 ? 0 : 1;
        Zan8u src[16 * 16];
        fill_source(rng, src, 16, 16, kind);
        Pic enc;
        fill_source(rng, enc.s, 32, 32, kind);
        Pic before = enc;
        const Zan32s qp = static_cast<Zan32s>(rng() % 64);
        const Zan32u edge = (rng() % 2) | ((rng() % 2) << 2) | ((rng() % 2) << 5);
        Zan16s coeffs[4 * 64];
        Zan16s* cur = coeffs;
        Zan32s modes[4];
        Zan32u cbp = 0;
        ASSERT_EQ(zaniDisassembleLumaIntra_AVS_16s8u_C1R(src, 16, &enc.at(8, 8), 32, &cur, modes, &cbp, qp, edge),
                  zanStsOk);
        const Zan32u be[4] = {edge & ~32u, (edge & ~1u) | 64u, (edge & 1u) + 64u, 96u};
        // The picture as block b saw it: blocks before b final, b and later as before.
        int k = 0;
        for (int b = 0; b < 4; ++b) {
            const int by = 8 + (b >> 1) * 8, bx = 8 + (b & 1) * 8;
            Pic seen = enc;
            for (int c = b; c < 4; ++c)
                for (int y = 0; y < 8; ++y)
                    for (int x = 0; x < 8; ++x) {
                        const int cy = 8 + (c >> 1) * 8 + y, cx = 8 + (c & 1) * 8 + x;
                        seen.at(cy, cx) = before.at(cy, cx);
                    }
            int best = 2;
            unsigned bestSad = 0xFFFFFFFFu;
            Pic bestPic = seen;
            for (int m = 0; m < 5; ++m) {
                Pic p = seen;
                if (!model_predict(p, by, bx, m, be[b], false)) continue;
                unsigned sad = 0;
                for (int y = 0; y < 8; ++y)
                    for (int x = 0; x < 8; ++x)
                        sad += static_cast<unsigned>(
                            std::abs(src[((b >> 1) * 8 + y) * 16 + (b & 1) * 8 + x] - p.at(by + y, bx + x)));
                if (sad < bestSad) {
                    bestSad = sad;
                    best = m;
                    bestPic = p;
                }
            }
            ASSERT_EQ(modes[b], best) << "draw " << draw << " block " << b;
            int x[64], levels[64];
            for (int y = 0; y < 8; ++y)
                for (int i = 0; i < 8; ++i)
                    x[y * 8 + i] = src[((b >> 1) * 8 + y) * 16 + (b & 1) * 8 + i] - bestPic.at(by + y, bx + i);
            const int count = model_transform_quant(x, qp, true, levels);
            ASSERT_EQ((cbp >> b) & 1u, count != 0 ? 1u : 0u) << "draw " << draw << " block " << b;
            if (count != 0) {
                for (int i = 0; i < 64; ++i) ASSERT_EQ(coeffs[64 * k + i], levels[i]) << "block " << b << " at " << i;
                ++k;
            } else {
                // Uncoded: the prediction stays.
                for (int y = 0; y < 8; ++y)
                    for (int i = 0; i < 8; ++i) ASSERT_EQ(enc.at(by + y, bx + i), bestPic.at(by + y, bx + i));
            }
        }
        ASSERT_EQ(cur, coeffs + 64 * k);
    }
}

// The chroma pass against the models: the mode with the smallest sum of
// the U and V SADs (first among equals), then each component's levels are
// the model transform and quantisation of its residual.
TEST(AvsBlock, DisassembleChromaAgreesWithTheModels) {
    std::mt19937 rng(32);
    for (int draw = 0; draw < 600; ++draw) {
        const int kind = draw % 3 == 0 ? 0 : 1;
        Zan8u s[2][64];
        fill_source(rng, s[0], 8, 8, kind);
        fill_source(rng, s[1], 8, 8, kind);
        Pic e[2];
        fill_source(rng, e[0].s, 32, 32, kind);
        fill_source(rng, e[1].s, 32, 32, kind);
        const Pic before[2] = {e[0], e[1]};
        const Zan32s qp = static_cast<Zan32s>(rng() % 52);
        const Zan32u edge = (rng() % 2) | ((rng() % 2) << 2) | ((rng() % 2) << 5);
        Zan16s coeffs[128];
        Zan16s* cur = coeffs;
        Zan32s mode = -1;
        Zan32u cbp = 0;
        const Zan8u* srcs[2] = {s[0], s[1]};
        Zan8u* dsts[2] = {&e[0].at(8, 8), &e[1].at(8, 8)};
        ASSERT_EQ(zaniDisassembleChroma420Intra_AVS_16s8u_C1R(srcs, 8, dsts, 32, &cur, &mode, &cbp, qp, edge),
                  zanStsOk);
        int best = 0;
        unsigned bestSad = 0xFFFFFFFFu;
        Pic bestPic[2] = {before[0], before[1]};
        for (int m = 0; m < 4; ++m) {
            Pic p[2] = {before[0], before[1]};
            if (!model_predict(p[0], 8, 8, m, edge | 64, true)) continue;
            model_predict(p[1], 8, 8, m, edge | 64, true);
            unsigned sad = 0;
            for (int k = 0; k < 2; ++k)
                for (int y = 0; y < 8; ++y)
                    for (int x = 0; x < 8; ++x) sad += static_cast<unsigned>(std::abs(s[k][y * 8 + x] - p[k].at(8 + y, 8 + x)));
            if (sad < bestSad) {
                bestSad = sad;
                best = m;
                bestPic[0] = p[0];
                bestPic[1] = p[1];
            }
        }
        ASSERT_EQ(mode, best) << "draw " << draw;
        int j = 0;
        for (int k = 0; k < 2; ++k) {
            int x[64], levels[64];
            for (int y = 0; y < 8; ++y)
                for (int i = 0; i < 8; ++i) x[y * 8 + i] = s[k][y * 8 + i] - bestPic[k].at(8 + y, 8 + i);
            const int count = model_transform_quant(x, qp, true, levels);
            ASSERT_EQ((cbp >> k) & 1u, count != 0 ? 1u : 0u) << "draw " << draw << " component " << k;
            if (count != 0) {
                for (int i = 0; i < 64; ++i) ASSERT_EQ(coeffs[64 * j + i], levels[i]) << "component " << k << " at " << i;
                ++j;
            } else {
                ASSERT_EQ(std::memcmp(e[k].s, bestPic[k].s, sizeof e[k].s), 0) << "draw " << draw;
            }
        }
        ASSERT_EQ(cur, coeffs + 64 * j);
    }
}

TEST(AvsBlock, DisassembleKnownAnswers) {
    // All four edge bits: block 0 can only use DC, which predicts 128.  A flat
    // source of 128 then codes nothing: block 1 takes horizontal (its left is
    // block 0; horizontal ties with DC and comes first), blocks 2 and 3
    // vertical.
    Pic p;
    std::fill(p.s, p.s + sizeof p.s, static_cast<Zan8u>(3));
    Zan8u src[16 * 16];
    std::fill(src, src + 256, static_cast<Zan8u>(128));
    Zan16s coeffs[256];
    Zan16s* cur = coeffs;
    Zan32s modes[4];
    Zan32u cbp = 99;
    ASSERT_EQ(zaniDisassembleLumaIntra_AVS_16s8u_C1R(src, 16, &p.at(8, 8), 32, &cur, modes, &cbp, 0, 1 | 4 | 32 | 64),
              zanStsOk);
    EXPECT_EQ(cbp, 0u);
    EXPECT_EQ(cur, coeffs);
    EXPECT_EQ(modes[0], 2);
    EXPECT_EQ(modes[1], 1);
    EXPECT_EQ(modes[2], 0);
    EXPECT_EQ(modes[3], 0);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) EXPECT_EQ(p.at(8 + y, 8 + x), 128);
    EXPECT_EQ(p.at(7, 8), 3);  // neighbours untouched
    EXPECT_EQ(p.at(8, 24), 3);

    // A flat source of 200: block 0 codes the residual 72 as one DC level
    // (128 * 72 = 9216, (9216 * 32768 + 2^18) >> 19 = 576 at QP 0), which
    // rebuilds 200 exactly ((((576 * 32768 + 8192) >> 14) * 8 + 64) >> 7 =
    // 72); the others copy it.
    std::fill(p.s, p.s + sizeof p.s, static_cast<Zan8u>(3));
    std::fill(src, src + 256, static_cast<Zan8u>(200));
    cur = coeffs;
    ASSERT_EQ(zaniDisassembleLumaIntra_AVS_16s8u_C1R(src, 16, &p.at(8, 8), 32, &cur, modes, &cbp, 0, 1 | 4 | 32),
              zanStsOk);
    EXPECT_EQ(cbp, 1u);
    EXPECT_EQ(cur, coeffs + 64);
    EXPECT_EQ(coeffs[0], 576);
    for (int i = 1; i < 64; ++i) EXPECT_EQ(coeffs[i], 0) << i;
    EXPECT_EQ(modes[0], 2);
    EXPECT_EQ(modes[1], 1);
    EXPECT_EQ(modes[2], 0);
    EXPECT_EQ(modes[3], 0);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) EXPECT_EQ(p.at(8 + y, 8 + x), 200);

    // Stray bits of the edge word (2, 8, 16, 128 and up) change nothing.
    std::mt19937 rng(4);
    for (int t = 0; t < 50; ++t) {
        Pic a;
        fill_source(rng, a.s, 32, 32, 1);
        Pic b = a;
        fill_source(rng, src, 16, 16, t % 2);
        const Zan32u edge = (rng() % 2) | ((rng() % 2) << 2) | ((rng() % 2) << 5) | ((rng() % 2) << 6);
        const Zan32u stray = 2u | 8u | 16u | 128u | (static_cast<Zan32u>(rng()) & 0xFFFFFF00u);
        Zan16s ca[256], cb[256];
        Zan16s *pa = ca, *pb = cb;
        Zan32s ma[4], mb[4];
        Zan32u ka = 0, kb = 0;
        ASSERT_EQ(zaniDisassembleLumaIntra_AVS_16s8u_C1R(src, 16, &a.at(8, 8), 32, &pa, ma, &ka, 30, edge), zanStsOk);
        ASSERT_EQ(zaniDisassembleLumaIntra_AVS_16s8u_C1R(src, 16, &b.at(8, 8), 32, &pb, mb, &kb, 30, edge | stray),
                  zanStsOk);
        EXPECT_EQ(std::memcmp(a.s, b.s, sizeof a.s), 0);
        EXPECT_EQ(std::memcmp(ma, mb, sizeof ma), 0);
        EXPECT_EQ(ka, kb);
        EXPECT_EQ(pa - ca, pb - cb);
        EXPECT_EQ(std::memcmp(ca, cb, sizeof(Zan16s) * static_cast<size_t>(pa - ca)), 0);
    }

    // Chroma with left and above absent: only DC runs (128); a flat source of
    // 128 codes nothing in either component.
    Pic u, v;
    std::fill(u.s, u.s + sizeof u.s, static_cast<Zan8u>(40));
    std::fill(v.s, v.s + sizeof v.s, static_cast<Zan8u>(40));
    Zan8u su[64], sv[64];
    std::fill(su, su + 64, static_cast<Zan8u>(128));
    std::fill(sv, sv + 64, static_cast<Zan8u>(128));
    const Zan8u* srcs[2] = {su, sv};
    Zan8u* dsts[2] = {&u.at(8, 8), &v.at(8, 8)};
    Zan32s mode = -1;
    cur = coeffs;
    ASSERT_EQ(zaniDisassembleChroma420Intra_AVS_16s8u_C1R(srcs, 8, dsts, 32, &cur, &mode, &cbp, 0, 1 | 4), zanStsOk);
    EXPECT_EQ(mode, 0);
    EXPECT_EQ(cbp, 0u);
    EXPECT_EQ(cur, coeffs);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            EXPECT_EQ(u.at(8 + y, 8 + x), 128);
            EXPECT_EQ(v.at(8 + y, 8 + x), 128);
        }
    // V alone differs: only bit 1 is coded, and its block is the first in the array.
    std::fill(sv, sv + 64, static_cast<Zan8u>(200));
    cur = coeffs;
    ASSERT_EQ(zaniDisassembleChroma420Intra_AVS_16s8u_C1R(srcs, 8, dsts, 32, &cur, &mode, &cbp, 0, 1 | 4), zanStsOk);
    EXPECT_EQ(cbp, 2u);
    EXPECT_EQ(cur, coeffs + 64);
    EXPECT_EQ(coeffs[0], 576);
    EXPECT_EQ(v.at(8, 8), 200);
    EXPECT_EQ(u.at(8, 8), 128);
}

TEST(AvsBlock, DisassembleStatusesInOrder) {
    Pic p;
    std::fill(p.s, p.s + sizeof p.s, static_cast<Zan8u>(17));
    const Pic keep = p;
    Zan8u src[256];
    std::fill(src, src + 256, static_cast<Zan8u>(90));
    Zan16s coeffs[256];
    std::fill(coeffs, coeffs + 256, static_cast<Zan16s>(0x5A5A));
    Zan16s* cur = coeffs;
    Zan16s* nullCur = nullptr;
    Zan32s modes[4] = {-3, -3, -3, -3};
    Zan32u cbp = 0xAB;
    Zan8u* d = &p.at(8, 8);
    EXPECT_EQ(zaniDisassembleLumaIntra_AVS_16s8u_C1R(nullptr, 16, d, 32, &cur, modes, &cbp, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDisassembleLumaIntra_AVS_16s8u_C1R(src, 16, nullptr, 32, &cur, modes, &cbp, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDisassembleLumaIntra_AVS_16s8u_C1R(src, 16, d, 32, nullptr, modes, &cbp, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDisassembleLumaIntra_AVS_16s8u_C1R(src, 16, d, 32, &cur, nullptr, &cbp, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDisassembleLumaIntra_AVS_16s8u_C1R(src, 16, d, 32, &cur, modes, nullptr, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDisassembleLumaIntra_AVS_16s8u_C1R(src, 16, d, 32, &nullCur, modes, &cbp, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDisassembleLumaIntra_AVS_16s8u_C1R(src, 16, d, 32, &nullCur, modes, &cbp, 64, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDisassembleLumaIntra_AVS_16s8u_C1R(src, 16, d, 32, &cur, modes, &cbp, 64, 0), zanStsOutOfRange);
    EXPECT_EQ(zaniDisassembleLumaIntra_AVS_16s8u_C1R(src, 16, d, 32, &cur, modes, &cbp, -1, 0), zanStsOutOfRange);
    EXPECT_EQ(std::memcmp(p.s, keep.s, sizeof p.s), 0);
    EXPECT_EQ(cur, coeffs);
    for (Zan16s c : coeffs) EXPECT_EQ(c, 0x5A5A);
    for (Zan32s m : modes) EXPECT_EQ(m, -3);
    EXPECT_EQ(cbp, 0xABu);

    Zan8u su[64], sv[64];
    std::fill(su, su + 64, static_cast<Zan8u>(90));
    std::fill(sv, sv + 64, static_cast<Zan8u>(91));
    Pic pv = p;
    const Zan8u* srcs[2] = {su, sv};
    Zan8u* dsts[2] = {&p.at(8, 8), &pv.at(8, 8)};
    const Zan8u* srcsNull[2] = {su, nullptr};
    Zan8u* dstsNull[2] = {nullptr, &pv.at(8, 8)};
    Zan32s mode = -3;
    EXPECT_EQ(zaniDisassembleChroma420Intra_AVS_16s8u_C1R(nullptr, 8, dsts, 32, &cur, &mode, &cbp, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDisassembleChroma420Intra_AVS_16s8u_C1R(srcs, 8, nullptr, 32, &cur, &mode, &cbp, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDisassembleChroma420Intra_AVS_16s8u_C1R(srcs, 8, dsts, 32, nullptr, &mode, &cbp, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDisassembleChroma420Intra_AVS_16s8u_C1R(srcs, 8, dsts, 32, &cur, nullptr, &cbp, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDisassembleChroma420Intra_AVS_16s8u_C1R(srcs, 8, dsts, 32, &cur, &mode, nullptr, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniDisassembleChroma420Intra_AVS_16s8u_C1R(srcsNull, 8, dsts, 32, &cur, &mode, &cbp, 0, 0),
              zanStsNullPtr);
    EXPECT_EQ(zaniDisassembleChroma420Intra_AVS_16s8u_C1R(srcs, 8, dstsNull, 32, &cur, &mode, &cbp, 0, 0),
              zanStsNullPtr);
    EXPECT_EQ(zaniDisassembleChroma420Intra_AVS_16s8u_C1R(srcs, 8, dsts, 32, &nullCur, &mode, &cbp, 52, 0),
              zanStsNullPtr);
    EXPECT_EQ(zaniDisassembleChroma420Intra_AVS_16s8u_C1R(srcs, 8, dsts, 32, &cur, &mode, &cbp, 52, 0),
              zanStsOutOfRange);
    EXPECT_EQ(zaniDisassembleChroma420Intra_AVS_16s8u_C1R(srcs, 8, dsts, 32, &cur, &mode, &cbp, -1, 0),
              zanStsOutOfRange);
    EXPECT_EQ(std::memcmp(p.s, keep.s, sizeof p.s), 0);
    EXPECT_EQ(std::memcmp(pv.s, keep.s, sizeof pv.s), 0);
    EXPECT_EQ(cur, coeffs);
    for (Zan16s c : coeffs) EXPECT_EQ(c, 0x5A5A);
    EXPECT_EQ(mode, -3);
    EXPECT_EQ(cbp, 0xABu);
    // The largest QPs pass.
    EXPECT_EQ(zaniDisassembleChroma420Intra_AVS_16s8u_C1R(srcs, 8, dsts, 32, &cur, &mode, &cbp, 51, 0), zanStsOk);
    cur = coeffs;
    EXPECT_EQ(zaniDisassembleLumaIntra_AVS_16s8u_C1R(src, 16, d, 32, &cur, modes, &cbp, 63, 0), zanStsOk);
}

}  // namespace
