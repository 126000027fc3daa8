// Fuzz target: the AVS block decoders (intra luma, inter luma, chroma).
//
// Input: byte 0 picks the decoder (value % 3) and the scan type (bit 2 and
// bit 3: scanType 0, 1, 2 or 3); byte 1 the bit offset of the first word
// (value % 32); the rest, grouped in fours most significant first, is the
// stream of native words.  The stream is followed by 16 words of one bits
// (every table codes short pairs or the end of the block with them, so each
// block that starts in the data ends in them) and then by exactly the one
// word of slack the decoders may read; the page after it is unreadable, so
// an over-read faults at once.  Blocks are decoded one after another until
// the cursor leaves the data.
//
// Invariants: the status is Ok; the offset stays in 0..31; the cursor moves
// forward; *pNumCoeff is 63 when scanType is set, otherwise 0..64 with
// every frame-scan position at or past it zero.
#include <cstdint>
#include <cstring>
#include <vector>

#include "guarded.h"
#include "zanvc.h"

namespace {

constexpr int kFrameScan[64] = {0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  12, 19, 26, 33, 40, 48,
                                41, 34, 27, 20, 13, 6,  7,  14, 21, 28, 35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23,
                                30, 37, 44, 51, 58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};
constexpr std::size_t kOnes = 16, kSlack = 1;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3) return 0;
    const int which = data[0] % 3;
    const Zan32s scanType = (data[0] >> 2) & 3;
    const Zan32s startOff = 31 - data[1] % 32;
    data += 2;
    size -= 2;
    const std::size_t nData = (size + 3) / 4;
    std::vector<Zan32u> words(nData + kOnes + kSlack, 0xFFFFFFFFu);
    for (std::size_t i = 0; i < nData; ++i) {
        Zan32u w = 0;
        for (std::size_t b = 0; b < 4; ++b) w = (w << 8) | (4 * i + b < size ? data[4 * i + b] : 0u);
        words[i] = w;
    }
    words.back() = 0x12345678u;  // slack: any value
    zan::fuzz::Guarded g(reinterpret_cast<const std::uint8_t*>(words.data()), words.size() * 4, 0);
    Zan32u* const base = reinterpret_cast<Zan32u*>(g.begin());
    Zan32u* p = base;
    Zan32s off = startOff;
    for (int call = 0; call < 256 && p < base + nData; ++call) {
        const std::int64_t before = (p - base) * 32 + (31 - off);
        Zan16s blk[64];
        std::memset(blk, 0x5A, sizeof blk);
        Zan32s num = -77;
        ZanStatus st;
        switch (which) {
            case 0: st = zaniDecodeLumaBlockIntra_AVS_1u16s(&p, &off, &num, blk, scanType); break;
            case 1: st = zaniDecodeLumaBlockInter_AVS_1u16s(&p, &off, &num, blk, scanType); break;
            default: st = zaniDecodeChromaBlock_AVS_1u16s(&p, &off, &num, blk, scanType); break;
        }
        ZAN_FUZZ_CHECK(st == zanStsOk);
        ZAN_FUZZ_CHECK(off >= 0 && off <= 31);
        const std::int64_t after = (p - base) * 32 + (31 - off);
        ZAN_FUZZ_CHECK(after > before);
        if (scanType != 0) {
            ZAN_FUZZ_CHECK(num == 63);
        } else {
            ZAN_FUZZ_CHECK(num >= 0 && num <= 64);
            for (Zan32s k = num; k < 64; ++k) ZAN_FUZZ_CHECK(blk[kFrameScan[k]] == 0);
        }
    }
    return 0;
}
