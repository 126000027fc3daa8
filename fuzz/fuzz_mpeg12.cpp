// Fuzz target: the word-cursor decoders of the MPEG-1/2 family.
//
// Input: byte 0 picks the decoder and its tables, byte 1 the starting bit
// offset and the scan, byte 2 the quantiser; the rest is the stream, read as
// native 32-bit words.  Blocks are decoded one after another until a decoder
// fails or the cursor leaves the data.
//
// The stream is followed by three zero words and then an unreadable page.
// Zero bits form no valid code in any of these tables but end-of-code
// searches within 16 bits, so a decoder that reaches the padding stops inside
// it; reading beyond it is an over-read and faults.
//
// Invariants checked: the status is Ok or VlcCodeBad; a block decoder that
// fails leaves the cursor and *pDstSize as they were; a pair decoder that
// fails leaves the cursor as it was; the reported size is a scan index.
#include <cstdint>
#include <cstring>
#include <vector>

#include "guarded.h"
#include "src/common/scan_tables.h"
#include "tests/api/mpeg12_tables.h"
#include "zanvc.h"

namespace {

using namespace zan::mpeg12test;

struct Tables {
    Zan32u *first = nullptr, *next0 = nullptr, *next1 = nullptr, *dcLuma = nullptr, *dcChroma = nullptr;
    Tables() {
        const RLTable zero = table_zero(), one = table_one();
        build_rl(zero.list(true).array({5, 4, 4, 4}), &first);
        build_rl(zero.list().array({8, 4, 5}), &next0);
        build_rl(one.list().array({4, 4, 4, 5}), &next1);
        build(dc_list(kDcLuma).array({4, 6}), &dcLuma);
        build(dc_list(kDcChroma).array({10}), &dcChroma);
    }
    static void build_rl(const std::vector<Zan32s>& codes, Zan32u** t) {
        ZAN_FUZZ_CHECK(zaniHuffmanRunLevelTableInitAlloc_32s(codes.data(), t) == zanStsOk);
    }
    static void build(const std::vector<Zan32s>& codes, Zan32u** t) {
        ZAN_FUZZ_CHECK(zaniHuffmanTableInitAlloc_32s(codes.data(), t) == zanStsOk);
    }
};

const Tables& tables() {
    static const Tables t;
    return t;
}

constexpr Zan16s kFlat[64] = {16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16,
                              16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16,
                              16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16,
                              16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16, 16};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 4) return 0;
    const Tables& T = tables();
    const int which = data[0] % 6;
    const bool chroma = data[0] & 0x40, vlcOne = data[0] & 0x80;
    const Zan32s startOffset = data[1] & 31;
    const Zan32s scanSel = (data[1] >> 5) & 1;
    const Zan32s QP = 1 + data[2] % 112;
    data += 3;
    size -= 3;

    const std::size_t words = (size + 3) / 4;
    zan::fuzz::Guarded g(data, size, words * 4 - size + 12);
    Zan32u* const base = reinterpret_cast<Zan32u*>(g.begin());
    Zan32u* const end = base + words;  // first padding word

    Zan32s scan[64];
    for (int i = 0; i < 64; ++i) scan[i] = (scanSel ? zan::ownvc_AltScanV : zan::ownvc_Zigzag)[i];
    const Zan32u* dc = chroma ? T.dcChroma : T.dcLuma;
    const Zan32u* ac = vlcOne ? T.next1 : T.next0;

    Zan32u* p = base;
    Zan32s off = startOffset;
    Zan16s pred = 1024;
    Zan16s block[64];
    for (int call = 0; call < 64 && p < end; ++call) {
        Zan32u* const p0 = p;
        const Zan32s off0 = off;
        Zan32s dstSize = -7;
        ZanStatus st;
        switch (which) {
            case 0: {
                Zan32s v = 0;
                st = zaniDecodeHuffmanOne_1u32s(&p, &off, &v, dc);
                break;
            }
            case 1: {
                Zan8u run = 0;
                Zan16s level = 0;
                st = zaniDecodeHuffmanPair_1u16s(&p, &off, ac, &run, &level);
                if (st != zanStsOk) ZAN_FUZZ_CHECK(p == p0 && off == off0);
                break;
            }
            case 2:
                st = zaniReconstructDCTBlock_MPEG1_32s(&p, &off, T.first, T.next0, scan, QP, kFlat, block, &dstSize);
                break;
            case 3:
                st = zaniReconstructDCTBlock_MPEG2_32s(&p, &off, T.first, T.next0, scan, QP,
                                                       (data[0] & 0x20) ? nullptr : kFlat, block, &dstSize);
                break;
            case 4:
                st = zaniReconstructDCTBlockIntra_MPEG1_32s(&p, &off, dc, T.next0, scan, QP, kFlat, &pred, block,
                                                            &dstSize);
                break;
            default:
                st = zaniReconstructDCTBlockIntra_MPEG2_32s(&p, &off, dc, ac, scan, QP, kFlat, &pred, data[0] & 3,
                                                            block, &dstSize);
                break;
        }
        ZAN_FUZZ_CHECK(st == zanStsOk || st == zanStsVlcCodeBad);
        ZAN_FUZZ_CHECK(p >= base && p <= end + 3);
        if (which >= 2) {
            if (st != zanStsOk) {
                ZAN_FUZZ_CHECK(p == p0 && off == off0 && dstSize == -7);
            } else if (which != 2) {
                ZAN_FUZZ_CHECK(dstSize >= 0 && dstSize <= 63);
            }
        }
        if (st != zanStsOk) break;
    }
    return 0;
}
