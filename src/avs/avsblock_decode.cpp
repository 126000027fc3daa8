// AVS block decoding: the 2-D VLC coefficient decoders of intra luma, inter
// luma and chroma blocks.
//
// Bit-stream parsing has no vector kernel worth writing; the scalar code
// below is the implementation on both paths.
#include <cstdint>

#include "avs/avs_tables.h"
#include "common/path.h"
#include "common/wordcursor.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::avsblock {
namespace {

using zan::avs::AvsVlc;

// The three kinds of block, each with its tables.
struct Kind {
    const AvsVlc* vlc;         // VLC0_* .. VLCn_*
    const Zan32s* golomb;      // Golomb order of the code, by table
    const Zan32s* maxRun;      // by level limit, capped at cap
    const Zan32s* next;        // table chosen by a magnitude, capped at cap
    const Zan32s* limit;       // level limit of each table
    Zan32s cap;                // 11 for luma, 5 for chroma
    Zan32s escOrder;           // Golomb order of the escape level
};

constexpr Kind kIntra{zan::avs::kVlcIntra,    zan::avs::kGolombIntra, zan::avs::kIntraMaxRun, zan::avs::kIntraNext,
                      zan::avs::kIntraLimit,  11,                     1};
constexpr Kind kInter{zan::avs::kVlcInter,    zan::avs::kGolombInter, zan::avs::kInterMaxRun, zan::avs::kInterNext,
                      zan::avs::kInterLimit,  11,                     1};
constexpr Kind kChroma{zan::avs::kVlcChroma,  zan::avs::kGolombChroma, zan::avs::kChromaMaxRun,
                       zan::avs::kChromaNext, zan::avs::kChromaLimit,  5, 0};

// Reads one Exp-Golomb code of order k: a prefix of z zero bits ended by a
// one, then z + k suffix bits; the value is 2^(z+k) - 2^k + suffix.  A
// prefix of 32 zero bits is no code: the 32 bits are consumed and false
// returned.
bool read_golomb(WordCursor& c, Zan32s k, std::uint64_t& value) {
    const Zan32u look = c.peek(32);
    if (look == 0) {
        c.read(32);
        return false;
    }
    const Zan32s z = __builtin_clz(look);
    c.read(z + 1);
    const Zan32s n = z + k;  // 0..34
    std::uint64_t suffix;
    if (n > 32) {
        suffix = static_cast<std::uint64_t>(c.read(n - 32)) << 32;
        suffix |= c.read(32);
    } else {
        suffix = c.read(n);
    }
    value = (std::uint64_t{1} << n) - (std::uint64_t{1} << k) + suffix;
    return true;
}

// Decodes one block.  See the header for the rules.
void decode_block(const Kind& kind, WordCursor& c, Zan32s* pNumCoeff, Zan16s* pDst, Zan32s scanIndex,
                  bool forceFull) {
    Zan16s levels[65];
    Zan8u runs[65];
    Zan32s count = 0;    // kept pairs
    Zan32s counter = 0;  // scan positions used
    Zan32s table = 0;
    Zan32s limit = 0;
    for (Zan32s i = 0; i < 65; ++i) {
        const AvsVlc& t = kind.vlc[table];
        std::uint64_t code;
        if (!read_golomb(c, kind.golomb[table], code)) break;
        std::uint64_t run;
        std::int64_t level;
        std::uint64_t magnitude;
        if (code < 59) {
            run = static_cast<std::uint8_t>(t.rl[code][0]);
            level = t.rl[code][1];
            magnitude = static_cast<std::uint64_t>(level < 0 ? -level : level);
        } else {
            run = (code - 59) >> 1;
            std::uint64_t esc;
            if (!read_golomb(c, kind.escOrder, esc)) break;
            const Zan32s maxRun = kind.maxRun[limit < kind.cap ? limit : kind.cap];
            const std::uint64_t base = run > static_cast<std::uint64_t>(maxRun) ? 1 : static_cast<std::uint64_t>(t.escBase[run]);
            magnitude = esc + base;
            level = (code & 1) ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
        }
        if (static_cast<std::uint64_t>(counter) + run > 63) break;
        runs[count] = static_cast<Zan8u>(run);
        levels[count] = static_cast<Zan16s>(static_cast<std::uint16_t>(static_cast<std::uint64_t>(level)));
        ++count;
        counter += static_cast<Zan32s>(run) + 1;
        if (magnitude > static_cast<std::uint64_t>(limit)) {
            const std::uint64_t m = magnitude < static_cast<std::uint64_t>(kind.cap) ? magnitude : kind.cap;
            table = kind.next[m];
            limit = kind.limit[table];
        }
    }
    for (Zan32s k = 0; k < 64; ++k) pDst[k] = 0;
    const Zan32s* scan = zan::avs::kAvsScan[scanIndex];
    Zan32s pos = -1;
    for (Zan32s j = count - 1; j >= 0; --j) {
        pos += runs[j] + 1;
        pDst[scan[pos]] = levels[j];
    }
    *pNumCoeff = forceFull ? 63 : pos + 1;
}

ZanStatus decode(const Kind& kind, Zan32u** ppBitStream, Zan32s* pBitOffset, Zan32s* pNumCoeff, Zan16s* pDstCoeffs,
                 Zan32s scanIndex, bool forceFull) {
    if (!ppBitStream || !pBitOffset || !pNumCoeff || !pDstCoeffs || !*ppBitStream) return zanStsNullPtr;
    WordCursor c(*ppBitStream, *pBitOffset);
    decode_block(kind, c, pNumCoeff, pDstCoeffs, scanIndex, forceFull);
    c.store(ppBitStream, pBitOffset);
    return zanStsOk;
}

}  // namespace
}  // namespace zan::ZAN_PATH::avsblock

namespace zan::ZAN_PATH {

ZanStatus zaniDecodeLumaBlockIntra_AVS_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan32s* pNumCoeff,
                                             Zan16s* pDstCoeffs, Zan32s scanType) {
    return avsblock::decode(avsblock::kIntra, ppBitStream, pBitOffset, pNumCoeff, pDstCoeffs,
                            static_cast<Zan32s>(scanType & 1), scanType != 0);
}

ZanStatus zaniDecodeLumaBlockInter_AVS_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan32s* pNumCoeff,
                                             Zan16s* pDstCoeffs, Zan32s scanType) {
    return avsblock::decode(avsblock::kInter, ppBitStream, pBitOffset, pNumCoeff, pDstCoeffs,
                            static_cast<Zan32s>(scanType & 1), scanType != 0);
}

ZanStatus zaniDecodeChromaBlock_AVS_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan32s* pNumCoeff,
                                          Zan16s* pDstCoeffs, Zan32s scanType) {
    return avsblock::decode(avsblock::kChroma, ppBitStream, pBitOffset, pNumCoeff, pDstCoeffs,
                            static_cast<Zan32s>(scanType & 1), scanType != 0);
}

}  // namespace zan::ZAN_PATH
