// Fuzz target: the H.264 CAVLC and Exp-Golomb decoders.
//
// Input: byte 0 picks the decoder (low 4 bits, nine forms) and the level-width
// layout of the tables (bits 4..5); byte 1 the starting bit offset (low 5
// bits) and uVLCSelect (top 3 bits: 0..5, 6 = 8, 7 = 200 for the fixed code);
// byte 2 coeffLimit (bit 0: 16 or 15) or, for the index form, coeffLimit m
// (0..16) and byte 3 the range firstIdx..lastIdx.  The rest is the stream,
// read as native 32-bit words.  Blocks are decoded one after another until a
// decoder fails or the cursor leaves the data.
//
// Level prefixes and Exp-Golomb prefixes are counted with no upper bound, and
// a long level escape reads p - 3 bits for a prefix of p zeros, so a stream
// that ends in zeros sends a decoder as far as the zeros it has seen.  The
// data is therefore followed by a terminator of one bits as long as the data
// plus 64 bytes (room for any code that starts in the data), then one zero
// word (the readable word a word-cursor read may touch), then an unreadable
// page.  Any read beyond that faults.
//
// Invariants: the status is Ok or VlcCodeBad; on VlcCodeBad the output
// pointer has not moved and the cursor is as at entry, except in the index
// form after the token (then it may only have moved forward); on Ok the
// cursor moved forward, the count lies within the block, the output pointer
// moved one block exactly when the count is not 0, and the block holds no more
// nonzero values than the count.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "guarded.h"
#include "tests/api/cavlc_tables.h"
#include "zanvc.h"

namespace {

using namespace zan::cavlctest;

const Tables& tables(int layout) {
    static const Tables t0(0), t1(1), t2(2);
    const Tables& t = layout == 0 ? t0 : layout == 1 ? t1 : t2;
    ZAN_FUZZ_CHECK(t.ok);
    return t;
}

// Scan tables long enough for every index a damaged stream can produce with
// these tables, all entries inside the 16-element block.
struct Scans {
    Zan32s zigzag[64];
    Scans() {
        const Zan32s z[16] = {0, 1, 4, 8, 5, 2, 3, 6, 9, 12, 13, 10, 7, 11, 14, 15};
        for (int i = 0; i < 64; ++i) zigzag[i] = z[i & 15];
    }
};
const Scans kScans;

long bitpos(const Zan32u* base, const Zan32u* p, Zan32s off) { return (p - base) * 32L + 31 - off; }

template <class OutT>
int nonzero(const OutT* b, int n) {
    int c = 0;
    for (int i = 0; i < n; ++i) c += b[i] != 0;
    return c;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 5) return 0;
    const int form = data[0] % 9;
    const Tables& T = tables(((data[0] >> 4) & 3) % 3);
    const Zan32s startOffset = data[1] & 31;
    const Zan32u selCode = data[1] >> 5;
    const Zan32u sel = selCode < 6 ? selCode : selCode == 6 ? 8u : 200u;
    const Zan16s limit = (data[2] & 1) ? 15 : 16;
    const Zan16s m = static_cast<Zan16s>(data[2] % 17);
    const Zan32s firstIdx = data[3] & 15;
    const Zan32s lastIdx = std::min<Zan32s>(15, firstIdx + (data[3] >> 4));
    data += 4;
    size -= 4;

    const std::size_t words = (size + 3) / 4;
    const std::size_t termWords = words + 16;
    std::vector<std::uint8_t> stream(words * 4 + termWords * 4, 0xFF);
    std::memcpy(stream.data(), data, size);
    std::memset(stream.data() + size, 0, words * 4 - size);  // pad the last data word with zeros
    zan::fuzz::Guarded g(stream.data(), stream.size(), 4, 0);
    Zan32u* const base = reinterpret_cast<Zan32u*>(g.begin());
    Zan32u* const end = base + words;  // first terminator word

    // Total-zeros rows for the index form: the null test looks at row total,
    // the walk at the adapted row of the table family that m selects.
    const Zan32u* idxRows[17] = {};
    for (int i = 1; i < 16; ++i) idxRows[i] = T.tz4x4[i];
    if (m < 5)
        for (int i = 1; i < 4; ++i) idxRows[i] = T.tz420[i];
    else if (m <= 8)
        for (int i = 1; i < 8; ++i) idxRows[i] = T.tz422[i];

    Zan32u* p = base;
    Zan32s off = startOffset;
    for (int call = 0; call < 256 && p < end; ++call) {
        Zan32u* const p0 = p;
        const Zan32s off0 = off;
        Zan16s num = -7;
        ZanStatus st;
        bool moved = false;
        int len = 16;
        if (form <= 2) {
            Zan16s blk[16];
            Zan16s* o = blk;
            if (form == 0)
                st = zaniDecodeCAVLCCoeffs_H264_1u16s(&p, &off, &num, &o, sel, limit, T.token, T.tz4x4, T.rb, kScans.zigzag);
            else if (form == 1)
                st = zaniDecodeCAVLCCoeffsIdxs_H264_1u16s(&p, &off, &num, &o, sel, m, T.token, idxRows, T.rb, kScans.zigzag,
                                                          firstIdx, lastIdx);
            else
                st = zaniDecodeCAVLCCoeffs_H264_1u16s(&p, &off, &num, &o, sel, 16, T.token, T.tz4x4, T.rb, kScans.zigzag);
            moved = o != blk;
            if (st == zanStsOk && num > 0) ZAN_FUZZ_CHECK(nonzero(blk, 16) <= num);
        } else if (form == 3) {
            Zan32s blk[16];
            Zan32s* o = blk;
            st = zaniDecodeCAVLCCoeffs_H264_1u32s(&p, &off, &num, &o, sel, limit, T.token, T.tz4x4, T.rb, kScans.zigzag);
            moved = o != blk;
            if (st == zanStsOk && num > 0) ZAN_FUZZ_CHECK(nonzero(blk, 16) <= num);
        } else if (form == 4 || form == 5) {
            len = 4;
            Zan16s b16[4];
            Zan32s b32[4];
            Zan16s* o16 = b16;
            Zan32s* o32 = b32;
            if (form == 4)
                st = zaniDecodeCAVLCChromaDcCoeffs_H264_1u16s(&p, &off, &num, &o16, T.tokenDc420, T.tz420, T.rb);
            else
                st = zaniDecodeCAVLCChromaDcCoeffs_H264_1u32s(&p, &off, &num, &o32, T.tokenDc420, T.tz420, T.rb);
            moved = o16 != b16 || o32 != b32;
            if (st == zanStsOk && num > 0) ZAN_FUZZ_CHECK(form == 4 ? nonzero(b16, 4) <= num : nonzero(b32, 4) <= num);
        } else if (form == 6 || form == 7) {
            len = 8;
            Zan16s b16[8];
            Zan32s b32[8];
            Zan16s* o16 = b16;
            Zan32s* o32 = b32;
            if (form == 6)
                st = zaniDecodeCAVLCChroma422DcCoeffs_H264_1u16s(&p, &off, &num, &o16, T.tokenDc422, T.tz422, T.rb);
            else
                st = zaniDecodeCAVLCChroma422DcCoeffs_H264_1u32s(&p, &off, &num, &o32, T.tokenDc422, T.tz422, T.rb);
            moved = o16 != b16 || o32 != b32;
            if (st == zanStsOk && num > 0) ZAN_FUZZ_CHECK(form == 6 ? nonzero(b16, 8) <= num : nonzero(b32, 8) <= num);
        } else {
            Zan16s v16 = 0;
            Zan32s v32 = 0;
            st = (call & 1) ? zaniDecodeExpGolombOne_H264_1u16s(&p, &off, &v16, data[0] >> 7)
                            : zaniDecodeExpGolombOne_H264_1u32s(&p, &off, &v32, data[0] >> 7);
            ZAN_FUZZ_CHECK(st == zanStsOk);
            ZAN_FUZZ_CHECK(bitpos(base, p, off) > bitpos(base, p0, off0));
            continue;
        }
        ZAN_FUZZ_CHECK(st == zanStsOk || st == zanStsVlcCodeBad);
        ZAN_FUZZ_CHECK(off >= 0 && off <= 31);
        if (st != zanStsOk) {
            ZAN_FUZZ_CHECK(!moved);
            if (form == 1 && num != -7)
                ZAN_FUZZ_CHECK(bitpos(base, p, off) > bitpos(base, p0, off0));
            else
                ZAN_FUZZ_CHECK(p == p0 && off == off0);
            break;
        }
        ZAN_FUZZ_CHECK(bitpos(base, p, off) > bitpos(base, p0, off0));
        ZAN_FUZZ_CHECK(num >= 0 && num <= len);
        ZAN_FUZZ_CHECK(moved == (num != 0));
    }
    return 0;
}
