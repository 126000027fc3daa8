// The CABAC encoder through the exported functions.  Streams are checked by
// an arithmetic DECODER written here from the standard's decoding engine
// (DecodeDecision, DecodeBypass, DecodeTerminate, with its own copy of the
// LPS range and state transition tables), and residual blocks by a model of
// the residual syntax on top of it.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "zanvc.h"

namespace {

// rangeTabLPS[pStateIdx][qCodIRangeIdx].
const int kLPS[64][4] = {
    {128, 176, 208, 240}, {128, 167, 197, 227}, {128, 158, 187, 216}, {123, 150, 178, 205}, {116, 142, 169, 195},
    {111, 135, 160, 185}, {105, 128, 152, 175}, {100, 122, 144, 166}, {95, 116, 137, 158},  {90, 110, 130, 150},
    {85, 104, 123, 142},  {81, 99, 117, 135},   {77, 94, 111, 128},   {73, 89, 105, 122},   {69, 85, 100, 116},
    {66, 80, 95, 110},    {62, 76, 90, 104},    {59, 72, 86, 99},     {56, 69, 81, 94},     {53, 65, 77, 89},
    {51, 62, 73, 85},     {48, 59, 69, 80},     {46, 56, 66, 76},     {43, 53, 63, 72},     {41, 50, 59, 69},
    {39, 48, 56, 65},     {37, 45, 54, 62},     {35, 43, 51, 59},     {33, 41, 48, 56},     {32, 39, 46, 53},
    {30, 37, 43, 50},     {29, 35, 41, 48},     {27, 33, 39, 45},     {26, 31, 37, 43},     {24, 30, 35, 41},
    {23, 28, 33, 39},     {22, 27, 32, 37},     {21, 26, 30, 35},     {20, 24, 29, 33},     {19, 23, 27, 31},
    {18, 22, 26, 30},     {17, 21, 25, 28},     {16, 20, 23, 27},     {15, 19, 22, 25},     {14, 18, 21, 24},
    {14, 17, 20, 23},     {13, 16, 19, 22},     {12, 15, 18, 21},     {12, 14, 17, 20},     {11, 14, 16, 19},
    {11, 13, 15, 18},     {10, 12, 15, 17},     {10, 12, 14, 16},     {9, 11, 13, 15},      {9, 11, 12, 14},
    {8, 10, 12, 14},      {8, 9, 11, 13},       {7, 9, 11, 12},       {7, 9, 10, 12},       {7, 8, 10, 11},
    {6, 8, 9, 11},        {6, 7, 9, 10},        {6, 7, 8, 9},         {2, 2, 2, 2}};
const int kNextLPS[64] = {0,  0,  1,  2,  2,  4,  4,  5,  6,  7,  8,  9,  9,  11, 11, 12, 13, 13, 15, 15, 16, 16,
                          18, 18, 19, 19, 21, 21, 22, 22, 23, 24, 24, 25, 26, 26, 27, 27, 28, 29, 29, 30, 30, 30,
                          31, 32, 32, 33, 33, 33, 34, 34, 35, 35, 35, 36, 36, 36, 37, 37, 37, 38, 38, 63};
int next_mps(int p) { return p < 62 ? p + 1 : p; }

// The decoding engine over a byte string, starting at bit 0 of `bytes`.
struct Decoder {
    const Zan8u* bytes;
    size_t pos = 0;  // bits read
    int range = 510, offset = 0;
    int state[460], mps[460];
    int bit() {
        const int b = (bytes[pos >> 3] >> (7 - (pos & 7))) & 1;
        ++pos;
        return b;
    }
    Decoder(const Zan8u* b, const Zan8u* ctxBytes) : bytes(b) {
        for (int i = 0; i < 460; ++i) state[i] = ctxBytes[i] & 63, mps[i] = (ctxBytes[i] >> 6) & 1;
        for (int i = 0; i < 9; ++i) offset = (offset << 1) | bit();
    }
    void renorm() {
        while (range < 256) range <<= 1, offset = (offset << 1) | bit();
    }
    int decision(int ctx) {
        const int r = kLPS[state[ctx]][(range >> 6) & 3];
        range -= r;
        int bin;
        if (offset >= range) {
            bin = 1 - mps[ctx];
            offset -= range;
            range = r;
            if (state[ctx] == 0) mps[ctx] = 1 - mps[ctx];
            state[ctx] = kNextLPS[state[ctx]];
        } else {
            bin = mps[ctx];
            state[ctx] = next_mps(state[ctx]);
        }
        renorm();
        return bin;
    }
    int bypass() {
        offset = (offset << 1) | bit();
        if (offset >= range) {
            offset -= range;
            return 1;
        }
        return 0;
    }
    int terminate() {
        range -= 2;
        if (offset >= range) return 1;
        renorm();
        return 0;
    }
};

// A stream buffer with guard bytes before it (the coder reads and stores
// back the word before the buffer when it starts at bit 0).
struct Stream {
    std::vector<Zan8u> mem;
    Zan8u* base;
    explicit Stream(size_t size, Zan8u fill = 0) : mem(size + 64, fill) {
        base = mem.data() + 16;
        while (reinterpret_cast<uintptr_t>(base) & 15) ++base;
    }
};

// Index of the last 1 bit in bytes [0, n), or -1.
long last_one_bit(const Zan8u* b, size_t n) {
    for (size_t i = n; i-- > 0;)
        if (b[i])
            for (int k = 0; k < 8; ++k)
                if (b[i] & (1 << k)) return long(i * 8 + 7 - k);
    return -1;
}

int expected_ctx_byte(int m, int n, int qp) {
    const int q = qp < 0 ? 0 : (qp > 51 ? 51 : qp);
    int pre = ((m * q) >> 4) + n;
    pre = pre < 1 ? 1 : (pre > 126 ? 126 : pre);
    return pre <= 63 ? 63 - pre : 64 + (pre - 64);
}

Zan8u ctx_of(const ZanCABACState* st, int i) {
    Zan8u c = 0;
    EXPECT_EQ(zaniCABACGetContexts_H264(st, Zan32u(i), &c, 1), zanStsOk);
    return c;
}

TEST(Cabac, SizeAndContextInitKnownAnswers) {
    Zan32u size = 0;
    ASSERT_EQ(zaniCABACGetSize_H264(&size), zanStsOk);
    EXPECT_EQ(size, 504u);
    EXPECT_EQ(sizeof(ZanCABACState), 504u);
    Stream s(64);
    ZanCABACState st;
    // Worked by hand: ctxIdx 0 (m 20, n -15): QP 26 -> pre 17 -> state 46, MPS 0;
    // QP 0 -> pre clamps to 1 -> 62; QP 51 -> pre 48 -> 15.  ctxIdx 402
    // (m -17, n 120) at QP 51: (-867 >> 4) = -55, pre 65 -> state 1, MPS 1.
    ASSERT_EQ(zaniCABACInit_H264(&st, s.base, 0, 64, 26, -1), zanStsOk);
    EXPECT_EQ(ctx_of(&st, 0), 46);
    ASSERT_EQ(zaniCABACInit_H264(&st, s.base, 0, 64, -7, -1), zanStsOk);  // clamped to 0
    EXPECT_EQ(ctx_of(&st, 0), 62);
    ASSERT_EQ(zaniCABACInit_H264(&st, s.base, 0, 64, 99, -1), zanStsOk);  // clamped to 51
    EXPECT_EQ(ctx_of(&st, 0), 15);
    EXPECT_EQ(ctx_of(&st, 402), 65);
    struct Case {
        int idc, ctx, m, n;
    };
    const Case cases[] = {
        {-1, 0, 20, -15},  {-1, 60, 0, 41},   {-1, 105, -7, 93},  {-1, 227, -3, 71},  {-1, 338, 15, 6},
        {-1, 399, 31, 21}, {-1, 402, -17, 120}, {-1, 459, 14, 67}, {0, 11, 23, 33},    {0, 166, 11, 28},
        {0, 338, 14, 11},  {0, 399, 12, 40},  {0, 459, 42, 62},   {1, 24, 26, 34},    {1, 277, -21, 126},
        {1, 459, 47, 57},  {1, 227, -23, 112}, {2, 73, -36, 127}, {2, 277, -22, 127}, {2, 401, 17, 61},
        {2, 459, 20, 64},  {2, 402, -3, 78},  {0, 69, 3, 62},     {1, 54, -1, 66},
    };
    for (const Case& c : cases)
        for (int qp : {0, 26, 51}) {
            ASSERT_EQ(zaniCABACInit_H264(&st, s.base, 0, 64, qp, c.idc), zanStsOk);
            EXPECT_EQ(ctx_of(&st, c.ctx), expected_ctx_byte(c.m, c.n, qp)) << c.idc << " " << c.ctx << " " << qp;
            EXPECT_EQ(ctx_of(&st, 276), 63);
        }
    // Contexts an init leaves out stay as they were.
    std::memset(st.contexts, 0x5A, sizeof st.contexts);
    ASSERT_EQ(zaniCABACInit_H264(&st, s.base, 0, 64, 30, 1), zanStsOk);
    for (int i = 0; i < 11; ++i) EXPECT_EQ(st.contexts[i], 0x5A);
    std::memset(st.contexts, 0x5A, sizeof st.contexts);
    ASSERT_EQ(zaniCABACInit_H264(&st, s.base, 0, 64, 30, -1), zanStsOk);
    for (int i = 11; i < 60; ++i) EXPECT_EQ(st.contexts[i], 0x5A);
    for (int i = 0; i < 460; ++i) EXPECT_LT(st.contexts[i] & 0x80, 1) << i;
}

TEST(Cabac, InitAtBitOffsetsAndStreamSize) {
    for (Zan32u off = 0; off < 40; ++off) {
        Stream s(64, 0);
        ZanCABACState st;
        ASSERT_EQ(zaniCABACInit_H264(&st, s.base, off, 64, 26, 0), zanStsOk);
        if (off & 7) {
            EXPECT_EQ(s.base[off >> 3], 255 >> (off & 7)) << off;  // alignment ones
        }
        const Zan32u kBitCount[4] = {1, 25, 17, 9};
        EXPECT_EQ(st.bitCount, kBitCount[((off + 7) / 8) & 3]);
        EXPECT_EQ(st.range, 510u);
        EXPECT_EQ(st.low, 0u);
        Zan32u bits = 99;
        ASSERT_EQ(zaniCABACGetStreamSize_H264(&bits, &st), zanStsOk);
        EXPECT_EQ(bits, (off + 7) / 8 * 8) << off;
    }
}

// Random context-coded, bypass and end_of_slice bins through the encoder,
// and back through the decoder.
TEST(Cabac, RandomBinsDecodeBack) {
    std::mt19937 rng(1234);
    for (int round = 0; round < 200; ++round) {
        const Zan32u off = rng() % 24;
        const int idc = int(rng() % 4) - 1;
        const int qp = int(rng() % 60) - 4;
        Stream s(8192, 0);
        ZanCABACState st;
        ASSERT_EQ(zaniCABACInit_H264(&st, s.base, off, 8192, qp, idc), zanStsOk);
        Zan8u ctx0[460];
        ASSERT_EQ(zaniCABACGetContexts_H264(&st, 0, ctx0, 460), zanStsOk);
        if (idc != -1) std::memset(ctx0, 0, 11), std::memcpy(st.contexts, ctx0, 11);  // left-out contexts
        struct Op {
            int kind, ctx, bin;
        };
        std::vector<Op> ops;
        const int n = 1 + int(rng() % 3000);
        std::vector<int> bias(460);
        for (int& b : bias) b = int(rng() % 100);
        Decoder* none = nullptr;
        (void)none;
        size_t renormsBefore = 0;
        (void)renormsBefore;
        for (int i = 0; i < n; ++i) {
            Op op{};
            op.kind = rng() % 4 == 0 ? 1 : 0;
            if (op.kind == 0) {
                do op.ctx = int(rng() % 460);
                while (op.ctx == 276);
                op.bin = int(rng() % 100) < bias[op.ctx];
                ASSERT_EQ(zaniCABACEncodeBin_H264(Zan32u(op.ctx), Zan32u(op.bin), &st), zanStsOk);
            } else {
                op.bin = int(rng() % 2);
                ASSERT_EQ(zaniCABACEncodeBinBypass_H264(Zan32u(op.bin), &st), zanStsOk);
            }
            ops.push_back(op);
            if (rng() % 50 == 0) {  // a 0 end_of_slice_flag in the middle
                ASSERT_EQ(zaniCABACEncodeBin_H264(276, 0, &st), zanStsOk);
                ops.push_back({2, 276, 0});
            }
        }
        Zan32u bitsBefore = 0;
        ASSERT_EQ(zaniCABACGetStreamSize_H264(&bitsBefore, &st), zanStsOk);
        ASSERT_EQ(zaniCABACEncodeBin_H264(276, 1, &st), zanStsOk);
        EXPECT_EQ(ctx_of(&st, 276), 63);
        Zan32u bytes = 0;
        ASSERT_EQ(zaniCABACTerminateSlice_H264(&bytes, &st), zanStsOk);
        EXPECT_EQ(st.pStreamWord, nullptr);

        const Zan32u start = (off + 7) / 8;
        Decoder d(s.base + start, ctx0);
        size_t readBeforeEnd = 0;
        for (const Op& op : ops) {
            const int got = op.kind == 0 ? d.decision(op.ctx) : op.kind == 1 ? d.bypass() : d.terminate();
            ASSERT_EQ(got, op.bin) << "round " << round;
        }
        readBeforeEnd = d.pos;
        ASSERT_EQ(d.terminate(), 1);
        // Bits written before the end: the start, plus one bit for every
        // renormalisation shift (the decoder's reads after its first 9), less
        // the first shifted bit, which the coder drops; -1 reads as 0.
        const long v = long(start) * 8 + long(readBeforeEnd) - 9 - 1;
        const Zan32u expectBits = v == -1 ? 0u : std::max(Zan32u(v), start * 8);
        EXPECT_EQ(bitsBefore, expectBits) << round;
        // The stop bit is the last bit the decoder read, and the byte count
        // ends at its byte.
        const long stop = last_one_bit(s.base, 8192);
        EXPECT_EQ(size_t(stop), start * 8 + d.pos - 1) << round;
        EXPECT_EQ(bytes, Zan32u(stop / 8 + 1)) << round;
    }
}

// Residual syntax model: decodes one block of ctxBlockCat `cat`.
const int kSigOff[6] = {0, 15, 29, 44, 47, 0};
const int kLevOff[6] = {0, 10, 20, 30, 39, 0};
const int kMaxCoeff[6] = {16, 15, 16, 4, 15, 64};
const int kSigFrame8x8[63] = {0,  1,  2,  3,  4,  5,  5,  4,  4,  3,  3,  4,  4,  4,  5,  5,  4,  4,  4,  4,  3,
                              3,  6,  7,  7,  7,  8,  9,  10, 9,  8,  7,  7,  6,  11, 12, 13, 11, 6,  7,  8,  9,
                              14, 10, 9,  8,  6,  11, 12, 13, 11, 6,  9,  14, 10, 9,  11, 12, 13, 11, 14, 10, 12};
const int kSigField8x8[63] = {0,  1,  1,  2,  2,  3,  3,  4,  5,  6,  7,  7,  7,  8,  4,  5,  6,  9,  10, 10, 8,
                              11, 12, 11, 9,  9,  10, 10, 8,  11, 12, 11, 9,  9,  10, 10, 8,  11, 12, 11, 9,  9,
                              10, 10, 8,  13, 13, 9,  9,  10, 10, 8,  13, 13, 9,  9,  10, 10, 14, 14, 14, 14, 14};
const int kLast8x8[63] = {0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2,
                          3, 3, 3, 3, 3, 3, 3, 3, 4, 4, 4, 4, 4, 4, 4, 4, 5, 5, 5, 5, 6, 6, 6, 6, 7, 7, 7, 7, 8, 8, 8};

std::vector<long> decode_block(Decoder& d, int cat, int log2c, bool frame) {
    const int n = kMaxCoeff[cat] << log2c;
    std::vector<long> c(size_t(n), 0);
    std::vector<int> sig(size_t(n), 0);
    int numCoeff = n;
    int i = 0;
    for (; i < n - 1; ++i) {
        int sctx, lctx;
        if (cat == 5) {
            sctx = (frame ? 402 : 436) + (frame ? kSigFrame8x8[i] : kSigField8x8[i]);
            lctx = (frame ? 417 : 451) + kLast8x8[i];
        } else {
            const int inc = cat == 3 ? std::min(i / (1 << log2c), 2) : i;
            sctx = (frame ? 105 : 277) + kSigOff[cat] + inc;
            lctx = (frame ? 166 : 338) + kSigOff[cat] + inc;
        }
        sig[size_t(i)] = d.decision(sctx);
        if (sig[size_t(i)] && d.decision(lctx)) {
            numCoeff = i + 1;
            break;
        }
    }
    if (i == n - 1) sig[size_t(n - 1)] = 1;
    const int base = (cat == 5 ? 426 : 227) + kLevOff[cat];
    int eq1 = 0, gt1 = 0;
    for (int k = numCoeff - 1; k >= 0; --k) {
        if (!sig[size_t(k)]) continue;
        long prefix = 0;
        if (d.decision(base + (gt1 ? 0 : std::min(4, 1 + eq1)))) {
            prefix = 1;
            const int ctx2 = base + 5 + std::min(4 - (cat == 3), gt1);
            while (prefix < 14 && d.decision(ctx2)) ++prefix;
        }
        long value = prefix;
        if (prefix == 14) {  // UEG0 suffix, k = 0
            int kk = 0;
            long suffix = 0;
            while (d.bypass()) suffix += 1L << kk, ++kk;
            while (kk-- > 0) suffix += long(d.bypass()) << kk;
            value += suffix;
        }
        const long a = value + 1;
        if (a == 1) ++eq1;
        else ++gt1;
        c[size_t(k)] = d.bypass() ? -a : a;
    }
    return c;
}

struct Block {
    int cat, log2c, frame;
    std::vector<long> c;
    int last;
};

Block random_block(std::mt19937& rng, bool wide) {
    Block b;
    b.cat = int(rng() % 6);
    b.log2c = b.cat == 3 ? int(rng() % 2) : 0;
    b.frame = int(rng() % 2);
    const int n = kMaxCoeff[b.cat] << b.log2c;
    b.c.assign(size_t(n), 0);
    const int density = int(rng() % 100);
    b.last = -1;
    for (int i = 0; i < n; ++i)
        if (int(rng() % 100) < density) {
            long v;
            switch (rng() % 6) {
                case 0: v = 1 + long(rng() % 2); break;
                case 1: v = 1; break;
                case 2: v = 3 + long(rng() % 13); break;  // 3..15
                case 3: v = 14 + long(rng() % 4); break;
                case 4: v = long(rng() % (wide ? 1u << 22 : 32767u)) + 1; break;
                default: v = 1 + long(rng() % 200); break;
            }
            b.c[size_t(i)] = rng() % 2 ? -v : v;
            b.last = i;
        }
    if (!wide && rng() % 20 == 0) b.c[0] = -32768, b.last = std::max(b.last, 0);
    if (b.last < 0) b.c[0] = 5, b.last = 0;
    return b;
}

ZanStatus encode(const Block& b, bool wide, ZanCABACState* st) {
    if (wide) {
        std::vector<Zan32s> v(b.c.begin(), b.c.end());
        return zaniCABACEncodeResidualBlock_H264_32s(v.data(), b.last, Zan32u(b.cat), Zan32u(b.log2c),
                                                     Zan32u(b.frame), st);
    }
    std::vector<Zan16s> v(b.c.begin(), b.c.end());
    return zaniCABACEncodeResidualBlock_H264_16s(v.data(), b.last, Zan32u(b.cat), Zan32u(b.log2c),
                                                 Zan32u(b.frame), st);
}

TEST(Cabac, ResidualBlocksOfEveryCategoryDecodeBack) {
    std::mt19937 rng(77);
    for (int wide = 0; wide < 2; ++wide)
        for (int round = 0; round < 60; ++round) {
            Stream s(1 << 16);
            ZanCABACState st;
            const int idc = int(rng() % 4) - 1;
            ASSERT_EQ(zaniCABACInit_H264(&st, s.base, 0, 1 << 16, int(rng() % 52), idc), zanStsOk);
            Zan8u ctx0[460];
            if (idc != -1) std::memset(st.contexts, 0, 11);
            ASSERT_EQ(zaniCABACGetContexts_H264(&st, 0, ctx0, 460), zanStsOk);
            std::vector<Block> blocks;
            for (int k = 0; k < 40; ++k) {
                blocks.push_back(random_block(rng, wide));
                ASSERT_EQ(encode(blocks.back(), wide, &st), zanStsOk);
            }
            ASSERT_EQ(zaniCABACEncodeBin_H264(276, 1, &st), zanStsOk);
            Zan32u bytes;
            ASSERT_EQ(zaniCABACTerminateSlice_H264(&bytes, &st), zanStsOk);
            Decoder d(s.base, ctx0);
            for (const Block& b : blocks) ASSERT_EQ(decode_block(d, b.cat, b.log2c, b.frame), b.c) << b.cat;
            ASSERT_EQ(d.terminate(), 1);
        }
}

TEST(Cabac, ResidualKnownShapes) {
    // Magnitude 15: the first bin, 13 ones and the bypass suffix 0; 4:2:2
    // chroma DC has 8 coefficients.
    Stream s(4096);
    ZanCABACState st;
    ASSERT_EQ(zaniCABACInit_H264(&st, s.base, 0, 4096, 20, -1), zanStsOk);
    Zan8u ctx0[460];
    ASSERT_EQ(zaniCABACGetContexts_H264(&st, 0, ctx0, 460), zanStsOk);
    const Zan16s dc422[8] = {0, 0, 0, 0, 0, 0, 0, -15};
    ASSERT_EQ(zaniCABACEncodeResidualBlock_H264_16s(dc422, 7, 3, 1, 1, &st), zanStsOk);
    // All zero with no last index: N significance bins of 0 and nothing else.
    const Zan32s zeros[16] = {};
    ASSERT_EQ(zaniCABACEncodeResidualBlock_H264_32s(zeros, -1, 2, 0, 0, &st), zanStsOk);
    ASSERT_EQ(zaniCABACEncodeBin_H264(276, 1, &st), zanStsOk);
    Zan32u bytes;
    ASSERT_EQ(zaniCABACTerminateSlice_H264(&bytes, &st), zanStsOk);
    Decoder d(s.base, ctx0);
    // 7 significance bins of 0 (increments 0,0,1,1,2,2,2), the 8th inferred.
    for (int i = 0; i < 7; ++i) ASSERT_EQ(d.decision(105 + 44 + std::min(i >> 1, 2)), 0);
    ASSERT_EQ(d.decision(227 + 30 + 1), 1);
    for (int i = 0; i < 13; ++i) ASSERT_EQ(d.decision(227 + 30 + 5), 1);
    ASSERT_EQ(d.bypass(), 0);  // suffix 0
    ASSERT_EQ(d.bypass(), 1);  // negative
    for (int i = 0; i < 16; ++i) ASSERT_EQ(d.decision(277 + 29 + i), 0);
    ASSERT_EQ(d.terminate(), 1);
}

TEST(Cabac, CarryRunsBackIntoEarlierWord) {
    // Built by hand: word base+4 full of ones, bitCount 0, low 1023; a
    // bypass 1 gives L = 2046 + 510 = 2556, e = 2, whose top bit lands on
    // bit 32: the word wraps to 0 and the carry runs through FF FF into 0x12.
    Stream s(64);
    ZanCABACState st;
    ASSERT_EQ(zaniCABACInit_H264(&st, s.base, 0, 64, 26, -1), zanStsOk);
    const Zan8u head[8] = {0x00, 0x12, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    std::memcpy(s.base, head, 8);
    st.pStreamWord = reinterpret_cast<Zan32u*>(s.base + 4);
    st.currentWord = 0xFFFFFFFFu;
    st.bitCount = 0;
    st.low = 1023;
    st.range = 510;
    ASSERT_EQ(zaniCABACEncodeBinBypass_H264(1, &st), zanStsOk);
    const Zan8u want[8] = {0x00, 0x13, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
    EXPECT_EQ(std::memcmp(s.base, want, 8), 0);
    EXPECT_EQ(st.pStreamWord, reinterpret_cast<Zan32u*>(s.base + 8));
    EXPECT_EQ(st.currentWord, 0u);
    EXPECT_EQ(st.bitCount, 31u);
    EXPECT_EQ(st.low, 2556u & 1023u);
}

TEST(Cabac, EndOfBufferLeavesRecordAndResumesInLargerBuffer) {
    Stream small(12), big(256);
    ZanCABACState st;
    ASSERT_EQ(zaniCABACInit_H264(&st, small.base, 0, 12, 26, -1), zanStsOk);
    std::mt19937 rng(5);
    std::vector<int> bins;
    int ok = 0;
    ZanStatus sts;
    ZanCABACState before;
    for (;;) {
        const int b = int(rng() % 2);
        before = st;
        sts = zaniCABACEncodeBinBypass_H264(Zan32u(b), &st);
        if (sts != zanStsOk) {
            bins.push_back(b);
            break;
        }
        bins.push_back(b);
        ++ok;
    }
    EXPECT_EQ(sts, zanStsCabacBad);
    EXPECT_EQ(ok, 65);  // 1 bit in the word before, 32 + 32 in the two permitted words
    EXPECT_EQ(std::memcmp(&before, &st, sizeof st), 0);
    EXPECT_EQ(zaniCABACEncodeBin_H264(3, 1, &st), zanStsCabacBad);  // a context bin fails alike
    EXPECT_EQ(std::memcmp(&before, &st, sizeof st), 0);
    // Not larger: refused, nothing changed.
    EXPECT_EQ(zaniCABACSetStream_H264(big.base, 12, &st), zanStsSizeBad);
    EXPECT_EQ(std::memcmp(&before, &st, sizeof st), 0);
    std::memcpy(big.base, small.base, 12);
    ASSERT_EQ(zaniCABACSetStream_H264(big.base, 256, &st), zanStsOk);
    ASSERT_EQ(zaniCABACEncodeBinBypass_H264(Zan32u(bins.back()), &st), zanStsOk);
    for (int i = 0; i < 100; ++i) {
        bins.push_back(int(rng() % 2));
        ASSERT_EQ(zaniCABACEncodeBinBypass_H264(Zan32u(bins.back()), &st), zanStsOk);
    }
    ASSERT_EQ(zaniCABACEncodeBin_H264(276, 1, &st), zanStsOk);
    Zan32u bytes;
    ASSERT_EQ(zaniCABACTerminateSlice_H264(&bytes, &st), zanStsOk);
    Zan8u ctx0[460] = {};
    ctx0[276] = 63;
    Decoder d(big.base, ctx0);
    for (int b : bins) ASSERT_EQ(d.bypass(), b);
    ASSERT_EQ(d.terminate(), 1);
}

TEST(Cabac, FailedResidualBlockIsUndone) {
    std::mt19937 rng(9);
    for (int round = 0; round < 30; ++round) {
        const Zan32u smallSize = 40 + rng() % 40;
        Stream small(smallSize), big(1 << 14);
        ZanCABACState st;
        const int idc = int(rng() % 4) - 1;
        ASSERT_EQ(zaniCABACInit_H264(&st, small.base, 0, smallSize, 30, idc), zanStsOk);
        if (idc != -1) std::memset(st.contexts, 0, 11);
        Zan8u ctx0[460];
        ASSERT_EQ(zaniCABACGetContexts_H264(&st, 0, ctx0, 460), zanStsOk);
        std::vector<Block> blocks;
        bool moved = false;
        for (int k = 0; k < 60; ++k) {
            Block b = random_block(rng, false);
            ZanCABACState before = st;
            std::vector<Zan8u> bytesBefore(small.mem);
            ZanStatus sts = encode(b, false, &st);
            if (sts != zanStsOk) {
                ASSERT_FALSE(moved);
                ASSERT_EQ(sts, zanStsCabacBad);
                ASSERT_EQ(std::memcmp(&before, &st, sizeof st), 0) << round;
                // The bytes before the record's word are as they were.
                const size_t upto = size_t(reinterpret_cast<Zan8u*>(st.pStreamWord) - small.mem.data());
                ASSERT_EQ(std::memcmp(bytesBefore.data(), small.mem.data(), upto), 0) << round;
                std::memcpy(big.base, small.base, smallSize);
                ASSERT_EQ(zaniCABACSetStream_H264(big.base, 1 << 14, &st), zanStsOk);
                moved = true;
                sts = encode(b, false, &st);
            }
            ASSERT_EQ(sts, zanStsOk);
            blocks.push_back(b);
        }
        ASSERT_TRUE(moved);
        ASSERT_EQ(zaniCABACEncodeBin_H264(276, 1, &st), zanStsOk);
        Zan32u bytes;
        ASSERT_EQ(zaniCABACTerminateSlice_H264(&bytes, &st), zanStsOk);
        Decoder d(big.base, ctx0);
        for (const Block& b : blocks) ASSERT_EQ(decode_block(d, b.cat, b.log2c, b.frame), b.c) << round;
        ASSERT_EQ(d.terminate(), 1);
    }
}

TEST(Cabac, TerminateNeedsRoomForTheNextWord) {
    // 16 bytes: words base-4 .. base+8 may be entered (end at base+12).
    Stream s(16);
    ZanCABACState st;
    ASSERT_EQ(zaniCABACInit_H264(&st, s.base, 0, 16, 26, -1), zanStsOk);
    // 33 bypass bins: into word base+0 with bitCount 0 after 32 more.
    for (int i = 0; i < 33; ++i) ASSERT_EQ(zaniCABACEncodeBinBypass_H264(0, &st), zanStsOk);
    ASSERT_EQ(st.bitCount, 0u);
    ASSERT_EQ(reinterpret_cast<Zan8u*>(st.pStreamWord), s.base);
    ZanCABACState saved = st;
    Zan32u bytes = 7;
    // t = 29 < 32, next word base+4, +4 = base+8 below end: fits.
    ASSERT_EQ(zaniCABACTerminateSlice_H264(&bytes, &st), zanStsOk);
    EXPECT_EQ(bytes, 5u);
    // The same state one word further: next word base+8, +4 reaches the end.
    st = saved;
    st.pStreamWord = reinterpret_cast<Zan32u*>(s.base + 4);
    bytes = 7;
    EXPECT_EQ(zaniCABACTerminateSlice_H264(&bytes, &st), zanStsNoMem);
    EXPECT_EQ(bytes, 7u);
}

TEST(Cabac, StatusesInOrder) {
    Stream s(64);
    ZanCABACState st;
    Zan8u* mis = s.base + 2;
    // Init: null before idc before size before alignment (positive 2).
    EXPECT_EQ(zaniCABACInit_H264(nullptr, nullptr, 0, 0, 0, 9), zanStsNullPtr);
    EXPECT_EQ(zaniCABACInit_H264(&st, nullptr, 0, 64, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniCABACInit_H264(&st, mis, 0, 0, 0, 3), zanStsOutOfRange);
    EXPECT_EQ(zaniCABACInit_H264(&st, mis, 0, 0, 0, -2), zanStsOutOfRange);
    EXPECT_EQ(zaniCABACInit_H264(&st, mis, 0, 0, 0, 2), zanStsSizeBad);
    std::memset(&st, 0xA5, sizeof st);
    ZanCABACState copy = st;
    s.base[2] = 0;
    EXPECT_EQ(zaniCABACInit_H264(&st, mis, 3, 60, 0, 2), zanStsMisalignedBuf);
    EXPECT_EQ(std::memcmp(&copy, &st, sizeof st), 0);
    EXPECT_EQ(s.base[2], 0);  // alignment bits not written
    ZanCABACState* pst = nullptr;
    EXPECT_EQ(zaniCABACInitAlloc_H264(nullptr, s.base, 0, 64, 0, 0), zanStsNullPtr);
    EXPECT_EQ(zaniCABACInitAlloc_H264(&pst, s.base, 0, 64, 0, 7), zanStsOutOfRange);
    EXPECT_EQ(zaniCABACInitAlloc_H264(&pst, s.base, 0, 0, 0, 0), zanStsSizeBad);
    EXPECT_EQ(zaniCABACInitAlloc_H264(&pst, mis, 0, 64, 0, 0), zanStsMisalignedBuf);
    EXPECT_EQ(pst, nullptr);
    ASSERT_EQ(zaniCABACInitAlloc_H264(&pst, s.base, 8, 64, 30, 1), zanStsOk);
    ASSERT_NE(pst, nullptr);
    EXPECT_EQ(pst->range, 510u);
    EXPECT_EQ(zaniCABACFree_H264(pst), zanStsOk);
    EXPECT_EQ(zaniCABACFree_H264(nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniCABACGetSize_H264(nullptr), zanStsNullPtr);

    ASSERT_EQ(zaniCABACInit_H264(&st, s.base, 0, 64, 26, -1), zanStsOk);
    copy = st;
    EXPECT_EQ(zaniCABACEncodeBin_H264(0, 2, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniCABACEncodeBin_H264(460, 0, &st), zanStsOutOfRange);
    EXPECT_EQ(zaniCABACEncodeBin_H264(0, 2, &st), zanStsOutOfRange);
    EXPECT_EQ(zaniCABACEncodeBinBypass_H264(2, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniCABACEncodeBinBypass_H264(2, &st), zanStsOutOfRange);
    Zan8u out[8];
    EXPECT_EQ(zaniCABACGetContexts_H264(nullptr, 0, out, 1), zanStsNullPtr);
    EXPECT_EQ(zaniCABACGetContexts_H264(&st, 0, nullptr, 500), zanStsNullPtr);
    EXPECT_EQ(zaniCABACGetContexts_H264(&st, 455, out, 6), zanStsOutOfRange);
    EXPECT_EQ(zaniCABACGetContexts_H264(&st, 0xFFFFFFFFu, out, 2), zanStsOutOfRange);
    EXPECT_EQ(zaniCABACGetContexts_H264(&st, 455, out, 5), zanStsOk);
    Zan32u v;
    EXPECT_EQ(zaniCABACGetStreamSize_H264(nullptr, &st), zanStsNullPtr);
    EXPECT_EQ(zaniCABACGetStreamSize_H264(&v, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniCABACGetStreamSize_H264(&v, &st), zanStsOk);
    EXPECT_EQ(v, 0u);
    EXPECT_EQ(zaniCABACTerminateSlice_H264(nullptr, &st), zanStsNullPtr);
    EXPECT_EQ(zaniCABACTerminateSlice_H264(&v, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniCABACSetStream_H264(nullptr, 0, &st), zanStsNullPtr);
    EXPECT_EQ(zaniCABACSetStream_H264(mis, 0, &st), zanStsSizeBad);
    EXPECT_EQ(zaniCABACSetStream_H264(mis, 128, &st), zanStsMisalignedBuf);
    const Zan16s c16[16] = {1};
    const Zan32s c32[16] = {1};
    EXPECT_EQ(zaniCABACEncodeResidualBlock_H264_16s(nullptr, 0, 9, 1, 2, &st), zanStsNullPtr);
    EXPECT_EQ(zaniCABACEncodeResidualBlock_H264_32s(c32, 0, 0, 0, 0, nullptr), zanStsNullPtr);
    EXPECT_EQ(zaniCABACEncodeResidualBlock_H264_16s(c16, 0, 6, 1, 0, &st), zanStsOutOfRange);
    EXPECT_EQ(zaniCABACEncodeResidualBlock_H264_16s(c16, 0, 0, 1, 2, &st), zanStsOutOfRange);
    EXPECT_EQ(zaniCABACEncodeResidualBlock_H264_32s(c32, 0, 0, 1, 1, &st), zanStsBadArg);
    EXPECT_EQ(zaniCABACEncodeResidualBlock_H264_32s(c32, 0, 5, 2, 1, &st), zanStsBadArg);
    EXPECT_EQ(std::memcmp(&copy, &st, sizeof st), 0);
    // The terminate context never adapts.
    for (int i = 0; i < 20; ++i) ASSERT_EQ(zaniCABACEncodeBin_H264(276, 0, &st), zanStsOk);
    EXPECT_EQ(ctx_of(&st, 276), 63);
}

}  // namespace
