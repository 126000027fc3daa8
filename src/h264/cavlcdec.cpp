// H.264 CAVLC block decoding and Exp-Golomb values on the word cursor.
//
// Order of this file: the library's constant tables, the bit-level helpers,
// the block decoder (one template for all forms), then the exported bodies
// with their checks.  Parsing has no vector kernel: this scalar code is the
// implementation on both paths (see cavlcdec.h).
#include "h264/cavlcdec.h"

#include <cstdint>
#include <cstring>

#include "common/path.h"
#include "common/wordcursor.h"
#include "mpeg12/mpeg12.h"

namespace zan::ZAN_PATH {
namespace {

// ================================================================ tables

// Level decoding by suffix length s (0..6) and level prefix p (0..15): the
// number of suffix bits to read and the offset to add to their value >> 1.
//   s = 0: p 0..13 read nothing and add 1 (the prefix itself is the code);
//          p 14 reads 4 bits and adds 8; p 15 reads 12 bits and adds 16.
//   s > 0: p 0..14 read s bits and add (p << (s - 1)) + 1; p 15 reads 12
//          bits and adds (15 << (s - 1)) + 1.
struct LevelTables {
    Zan32u bits[7][16];
    Zan32u add[7][16];
};

constexpr LevelTables make_level_tables() {
    LevelTables t{};
    for (int p = 0; p < 16; ++p) {
        t.bits[0][p] = p < 14 ? 0u : (p == 14 ? 4u : 12u);
        t.add[0][p] = p < 14 ? 1u : (p == 14 ? 8u : 16u);
    }
    for (int s = 1; s < 7; ++s)
        for (int p = 0; p < 16; ++p) {
            t.bits[s][p] = p < 15 ? static_cast<Zan32u>(s) : 12u;
            t.add[s][p] = (static_cast<Zan32u>(p) << (s - 1)) + 1u;
        }
    return t;
}
constexpr LevelTables kLevel = make_level_tables();
static_assert(kLevel.add[1][15] == 16 && kLevel.add[1][1] == 2 && kLevel.bits[0][15] == 12);

// Suffix length thresholds: the length rises when a magnitude exceeds them.
constexpr Zan32u kVlcInc[6] = {0, 3, 6, 12, 24, 48};
// Long escape addend by suffix length.
constexpr Zan32u kSadd[7] = {15, 0, 0, 0, 0, 0, 0};

// 4:2:0 chroma DC fast path: (position, bits used) by the three bits after
// the sign, for the token 1 (T 1, total 1) followed by total zeros 1/01/001/000.
constexpr Zan8s kChromaDcRun[8][2] = {{3, 5}, {2, 5}, {1, 4}, {1, 4}, {0, 3}, {0, 3}, {0, 3}, {0, 3}};

// Coefficient token codes of the three table classes (0 <= nC < 2,
// 2 <= nC < 4, 4 <= nC < 8), by total coefficients and trailing ones; null
// where no token exists.  Only the order of the codes matters here: it ranks
// the tokens for the index form's remap.
using TokenCodes = const char* [17][4];
constexpr TokenCodes kTokenCodes[3] = {
    {{"1", nullptr, nullptr, nullptr},
     {"000101", "01", nullptr, nullptr},
     {"00000111", "000100", "001", nullptr},
     {"000000111", "00000110", "0000101", "00011"},
     {"0000000111", "000000110", "00000101", "000011"},
     {"00000000111", "0000000110", "000000101", "0000100"},
     {"0000000001111", "00000000110", "0000000101", "00000100"},
     {"0000000001011", "0000000001110", "00000000101", "000000100"},
     {"0000000001000", "0000000001010", "0000000001101", "0000000100"},
     {"00000000001111", "00000000001110", "0000000001001", "00000000100"},
     {"00000000001011", "00000000001010", "00000000001101", "0000000001100"},
     {"000000000001111", "000000000001110", "00000000001001", "00000000001100"},
     {"000000000001011", "000000000001010", "000000000001101", "00000000001000"},
     {"0000000000001111", "000000000000001", "000000000001001", "000000000001100"},
     {"0000000000001011", "0000000000001110", "0000000000001101", "000000000001000"},
     {"0000000000000111", "0000000000001010", "0000000000001001", "0000000000001100"},
     {"0000000000000100", "0000000000000110", "0000000000000101", "0000000000001000"}},
    {{"11", nullptr, nullptr, nullptr},
     {"001011", "10", nullptr, nullptr},
     {"000111", "00111", "011", nullptr},
     {"0000111", "001010", "001001", "0101"},
     {"00000111", "000110", "000101", "0100"},
     {"00000100", "0000110", "0000101", "00110"},
     {"000000111", "00000110", "00000101", "001000"},
     {"00000001111", "000000110", "000000101", "000100"},
     {"00000001011", "00000001110", "00000001101", "0000100"},
     {"000000001111", "00000001010", "00000001001", "000000100"},
     {"000000001011", "000000001110", "000000001101", "00000001100"},
     {"000000001000", "000000001010", "000000001001", "00000001000"},
     {"0000000001111", "0000000001110", "0000000001101", "000000001100"},
     {"0000000001011", "0000000001010", "0000000001001", "0000000001100"},
     {"0000000000111", "00000000001011", "0000000000110", "0000000001000"},
     {"00000000001001", "00000000001000", "00000000001010", "0000000000001"},
     {"00000000000111", "00000000000110", "00000000000101", "00000000000100"}},
    {{"1111", nullptr, nullptr, nullptr},
     {"001111", "1110", nullptr, nullptr},
     {"001011", "01111", "1101", nullptr},
     {"001000", "01100", "01110", "1100"},
     {"0001111", "01010", "01011", "1011"},
     {"0001011", "01000", "01001", "1010"},
     {"0001001", "001110", "001101", "1001"},
     {"0001000", "001010", "001001", "1000"},
     {"00001111", "0001110", "0001101", "01101"},
     {"00001011", "00001110", "0001010", "001100"},
     {"000001111", "00001010", "00001101", "0001100"},
     {"000001011", "000001110", "00001001", "00001100"},
     {"000001000", "000001010", "000001101", "00001000"},
     {"0000001101", "000000111", "000001001", "000001100"},
     {"0000001001", "0000001100", "0000001011", "0000001010"},
     {"0000000101", "0000001000", "0000000111", "0000000110"},
     {"0000000001", "0000000100", "0000000011", "0000000010"}},
};

// The tokens of one class in code order (the codes compared as bit strings,
// left-aligned, largest first: 1, 01, 001, ...), each as (total << 2) | T,
// and the rank of each token, indexed by T + 4 * total.
struct TokenOrder {
    Zan32u tokens[62];
    Zan32s rank[68];
};

constexpr Zan32u left_aligned(const char* code) {
    Zan32u v = 0;
    int n = 0;
    for (; code[n]; ++n) v = (v << 1) | static_cast<Zan32u>(code[n] - '0');
    return v << (16 - n);
}

constexpr TokenOrder make_order(const TokenCodes& codes) {
    TokenOrder o{};
    Zan32u keys[62] = {};
    int count = 0;
    for (int total = 0; total <= 16; ++total)
        for (int t = 0; t < 4; ++t)
            if (codes[total][t]) {
                o.tokens[count] = static_cast<Zan32u>((total << 2) | t);
                keys[count] = left_aligned(codes[total][t]);
                ++count;
            }
    for (int i = 1; i < count; ++i)  // insertion sort, largest key first
        for (int j = i; j > 0 && keys[j] > keys[j - 1]; --j) {
            Zan32u k = keys[j];
            keys[j] = keys[j - 1];
            keys[j - 1] = k;
            Zan32u v = o.tokens[j];
            o.tokens[j] = o.tokens[j - 1];
            o.tokens[j - 1] = v;
        }
    for (int i = 0; i < 68; ++i) o.rank[i] = 0;
    for (int i = 0; i < count; ++i) o.rank[(o.tokens[i] & 3u) + 4 * (o.tokens[i] >> 2)] = i;
    return o;
}

constexpr TokenOrder kOrder0 = make_order(kTokenCodes[0]);
constexpr TokenOrder kOrder1 = make_order(kTokenCodes[1]);
constexpr TokenOrder kOrder2 = make_order(kTokenCodes[2]);
static_assert(kOrder0.tokens[0] == 0 && kOrder0.tokens[1] == ((1 << 2) | 1) && kOrder0.tokens[2] == ((2 << 2) | 2));
// By table select 0..7 (7 also stands for the fixed code).
constexpr const TokenOrder* kTokenOrder[8] = {&kOrder0, &kOrder0, &kOrder1, &kOrder1,
                                              &kOrder2, &kOrder2, &kOrder2, &kOrder2};

// ================================================================ bits

// Moves the cursor n bits on without reading (whole words, then the rest).
inline void skip(WordCursor& c, Zan32u n) {
    c.p += n >> 5;
    c.offset -= static_cast<Zan32s>(n & 31u);
    if (c.offset < 0) {
        c.offset += 32;
        ++c.p;
    }
}

// A block-local reader with the word cursor's results: the bits from the
// cursor on are held left-aligned in a 64-bit window, so that reads, look-
// aheads, give-backs and zero counts cost shifts instead of loads.  A word is
// loaded only when a read needs bits from it, so no word is touched that a
// read on the word cursor would not touch.  Bits beyond the valid count are
// zero.  The cursor is written back from the count of bits consumed.
struct BitWindow {
    const Zan32u* start;  // cursor at entry
    Zan32s startOffset;
    const Zan32u* next;  // next word to load
    std::uint64_t v;     // loaded bits, left-aligned
    Zan32s k;            // bits of v loaded
    Zan32s u;            // bits of v consumed (u <= k)

    BitWindow(const Zan32u* p, Zan32s offset)
        : start(p),
          startOffset(offset),
          next(p + 1),
          v(static_cast<std::uint64_t>(p[0] << (31 - offset)) << 32),
          k(offset + 1),
          u(0) {}

    // Drops the consumed bits and loads the next word behind the rest.
    void refill() {
        v <<= u;
        k -= u;
        u = 0;
        v |= static_cast<std::uint64_t>(*next++) << (32 - k);
        k += 32;
    }
    // Reads n bits, 0 <= n <= 32.
    Zan32u read(Zan32s n) {
        if (k - u < n) refill();
        const Zan32u r = static_cast<Zan32u>(((v << u) >> (63 - n)) >> 1);
        u += n;
        return r;
    }
    // Gives back n bits of the last read.
    void give_back(Zan32s n) { u -= n; }
    // Counts the zero bits up to the next 1 bit and consumes them and the 1:
    // the count and the cursor of a bit-by-bit count.
    Zan32s count_prefix() {
        Zan32s p = 0;
        for (;;) {
            const std::uint64_t w = v << u;
            if (w) {
                const Zan32s lz = __builtin_clzll(w);
                u += lz + 1;
                return p + lz;
            }
            p += k - u;
            u = k;
            refill();
        }
    }
    // Moves n bits on; whole words are passed without loading them.
    void skip(Zan32u n) {
        if (n <= static_cast<Zan32u>(k - u)) {
            u += static_cast<Zan32s>(n);
            return;
        }
        n -= static_cast<Zan32u>(k - u);
        next += n >> 5;
        v = 0;
        k = 0;
        u = 0;
        if (n & 31u) {
            refill();
            u = static_cast<Zan32s>(n & 31u);
        }
    }
    // Reads n bits for any n: beyond 32, the last 32 bits are the value.
    Zan32u read_any(Zan32u n) {
        if (n > 32) {
            skip(n - 32);
            n = 32;
        }
        return read(static_cast<Zan32s>(n));
    }
    // Writes the cursor back.
    void store(Zan32u** ppBitStream, Zan32s* pBitOffset) const {
        const std::int64_t loaded = startOffset + 1 + 32 * static_cast<std::int64_t>(next - start - 1);
        const std::int64_t at = 31 - startOffset + loaded - (k - u);  // bits from the top of *start
        *ppBitStream = const_cast<Zan32u*>(start + at / 32);
        *pBitOffset = static_cast<Zan32s>(31 - at % 32);
    }
};

// ================================================================ blocks

enum class Form {
    Block,   // 4x4 block, coeffLimit 16 or 15, through pScan
    Idxs,    // 4x4 block limited to a scan range, through pScan
    Dc420,   // chroma DC 4:2:0, plain order
    Dc422,   // chroma DC 4:2:2, raster order of the 2x4 block
};

template <class OutT>
struct BlockArgs {
    BitWindow c;
    Zan16s* pNumCoeff;
    OutT* blk;
    const Zan32u* tokenTable;  // null for the fixed 6-bit code
    Zan32s select;             // table select for the remap (Idxs)
    const Zan32u* const* ppTblTotalZeros;
    const Zan32u* const* ppTblRunBefore;
    const Zan32s* pScan;
    Zan32s limit;     // total zeros read when total is below it
    Zan32s base;      // scan index of the first slot (16 - coeffLimit, or firstIdx)
    Zan32s rangeLen;  // Idxs: lastIdx - firstIdx + 1 as a 16-bit value
};

// Outcome of a block decode: the status and whether the cursor is to be
// written back (success, and the index form's failures past the token).
struct Outcome {
    ZanStatus status;
    bool storeCursor;
};

template <Form F>
constexpr int block_len() {
    return F == Form::Dc420 ? cavlc::kBlockDc420 : (F == Form::Dc422 ? cavlc::kBlockDc422 : cavlc::kBlock4x4);
}

// Remaps a token of a block limited to rangeLen scan positions: the token's
// rank among all tokens of its table, in code order, selects the token of
// that rank among those that fit the range.  False when none has that rank.
inline bool remap_token(Zan32s select, Zan32s rangeLen, Zan32s& total, Zan32s& t) {
    const TokenOrder& o = *kTokenOrder[select & 7];
    const Zan32s key = t + 4 * total;
    if (key < 0 || key >= 68) return false;
    const Zan32s rank = o.rank[key];
    const Zan32s maxTotal = rangeLen + 1 < 17 ? rangeLen + 1 : 17;
    const Zan32s maxT = rangeLen + 1 < 4 ? rangeLen + 1 : 4;
    Zan32s count = 0;
    for (Zan32u e : o.tokens) {
        const Zan32s et = static_cast<Zan32s>(e & 3u), etotal = static_cast<Zan32s>(e >> 2);
        if (etotal < maxTotal && et < maxT) {
            if (count == rank) {
                total = etotal;
                t = et;
                return true;
            }
            ++count;
        }
    }
    return false;
}

template <Form F, bool Wide, class OutT>
Outcome decode_block(BlockArgs<OutT>& a) {
    constexpr bool kLeaveOnBadCode = F == Form::Idxs;  // failures past the token keep the cursor
    BitWindow& c = a.c;

    // 1. Coefficient token.
    Zan32s total, t;
    if (a.tokenTable) {
        const Zan32u e = vlc::walk(c, a.tokenTable);
        if (vlc::is_invalid(e)) return {zanStsVlcCodeBad, false};
        t = vlc::leaf_run(e);
        total = vlc::leaf_level(e);
    } else {
        const Zan32u v = c.read(6);
        t = static_cast<Zan32s>(v & 3u);
        const Zan32s x = static_cast<Zan32s>(v >> 2);
        if (x == 0 && t == 3) {
            total = 0;
            t = 0;
        } else {
            total = x + 1;
        }
    }
    if constexpr (F == Form::Idxs) {
        if (a.rangeLen < 16 && !remap_token(a.select, a.rangeLen, total, t)) return {zanStsVlcCodeBad, false};
    }

    // 2. The count, also when it is 0.
    *a.pNumCoeff = static_cast<Zan16s>(total);

    // 3. Trailing ones, read at once: first bit first, 1 is -1.
    Zan32s levels[16];
    if (t > 0) {
        const Zan32u signs = c.read(t);
        for (Zan32s i = 0; i < t; ++i) levels[i & 15] = ((signs >> (t - 1 - i)) & 1u) ? -1 : 1;
    }

    // 4. Empty block: nothing more is written.
    if (total == 0) return {zanStsOk, true};
    std::memset(a.blk, 0, sizeof(OutT) * block_len<F>());

    // 5. The other levels.
    if (total > t) {
        Zan32s s = (total > 10 && t < 3) ? 1 : 0;
        Zan32u first = t < 3 ? 1u : 0u;  // +1 on the first level when T < 3
        Zan32u m = 0;                    // previous magnitude
        for (Zan32s i = 0; i < total - t; ++i) {
            if (i == 1 && m >= 4)
                s = 2;
            else if (s < 6 && m > kVlcInc[s])
                ++s;
            const Zan32s p = c.count_prefix();
            Zan32s level;
            if (p < 16) {
                const Zan32u b = kLevel.bits[s][p];
                const Zan32u code = b ? c.read(static_cast<Zan32s>(b)) : static_cast<Zan32u>(p);
                m = (code >> 1) + kLevel.add[s][p] + first;
                level = (code & 1u) ? -static_cast<Zan32s>(m) : static_cast<Zan32s>(m);
            } else {
                const Zan32u k = static_cast<Zan32u>(p - 3);
                const Zan32u r = c.read_any(k);
                const Zan32u pow = k < 32 ? (1u << k) : 0u;
                const Zan32u L = 2u * first + kSadd[s] + pow + (15u << s) + r - 4096u;
                const Zan32s Ls = static_cast<Zan32s>(L);
                level = (L & 1u) ? (~Ls >> 1) : static_cast<Zan32s>(L + 2u) >> 1;
                if constexpr (!Wide) level = static_cast<Zan16s>(level);
                m = level < 0 ? 0u - static_cast<Zan32u>(level) : static_cast<Zan32u>(level);
            }
            first = 0;
            levels[(t + i) & 15] = level;
        }
    }

    // 6. Total zeros.
    Zan32s z = 0;
    if (total < a.limit) {
        const Zan32u* row = a.ppTblTotalZeros[total];
        if (!row) return {zanStsNullPtr, false};
        if constexpr (F == Form::Idxs) {
            const Zan32s m = a.limit;
            Zan32s idx = total;
            if (m < 15) {
                if (m < 5)
                    idx = total - m + 4 < 3 ? total - m + 4 : 3;
                else if (m > 8)
                    idx = total - m + 16 < 15 ? total - m + 16 : 15;
                else
                    idx = total - m + 8 < 7 ? total - m + 8 : 7;
            }
            row = a.ppTblTotalZeros[idx];
            if (!row) return {zanStsNullPtr, false};
        }
        const Zan32u e = kLeaveOnBadCode ? vlc::walk_raw(c, row) : vlc::walk(c, row);
        if (vlc::is_invalid(e)) return {zanStsVlcCodeBad, kLeaveOnBadCode};
        if constexpr (kLeaveOnBadCode) c.give_back(static_cast<Zan32s>(e & 0xFFu));
        z = vlc::leaf_value(e);
    }

    // 7. Placement, from the highest scan position down.
    for (Zan32s n = total; n >= 1; --n) {
        Zan32s r = z;
        if (n > 1 && z > 0) {
            const Zan32u* row = a.ppTblRunBefore[z];
            if (!row) return {zanStsNullPtr, false};
            const Zan32u e = kLeaveOnBadCode ? vlc::walk_raw(c, row) : vlc::walk(c, row);
            if (vlc::is_invalid(e)) return {zanStsVlcCodeBad, kLeaveOnBadCode};
            if constexpr (kLeaveOnBadCode) c.give_back(static_cast<Zan32s>(e & 0xFFu));
            r = vlc::leaf_value(e);
        }
        const Zan32s level = levels[(total - n) & 15];
        const Zan32s index = n + z + a.base - 1;
        if constexpr (F == Form::Dc420)
            a.blk[index] = static_cast<OutT>(level);
        else if constexpr (F == Form::Dc422)
            a.blk[cavlc::kChromaDc422Raster[index & 7]] = static_cast<OutT>(level);
        else
            a.blk[a.pScan[index]] = static_cast<OutT>(level);
        z -= r < z ? r : z;
    }
    return {zanStsOk, true};
}

// Runs a block decode and writes back what its outcome says.
template <Form F, bool Wide, class OutT>
ZanStatus finish(BlockArgs<OutT>& a, Zan32u** ppBitStream, Zan32s* pBitOffset, OutT** ppPosCoefbuf) {
    const Outcome o = decode_block<F, Wide>(a);
    if (o.storeCursor) a.c.store(ppBitStream, pBitOffset);
    if (o.status == zanStsOk && *a.pNumCoeff != 0) *ppPosCoefbuf += block_len<F>();
    return o.status;
}

// 0 and 1 use table 0, 2 and 3 table 1, 4 to 7 table 2, 8 and above the
// fixed code (null).
inline const Zan32u* token_table(const Zan32u* const* ppTblCoeffToken, Zan32u uVLCSelect) {
    if (uVLCSelect >= 8) return nullptr;
    return ppTblCoeffToken[uVLCSelect < 2 ? 0 : (uVLCSelect < 4 ? 1 : 2)];
}

template <bool Wide, class OutT>
ZanStatus coeffs_4x4(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan16s* pNumCoeff, OutT** ppPosCoefbuf,
                     Zan32u uVLCSelect, Zan16s coeffLimit, const Zan32u* const* ppTblCoeffToken,
                     const Zan32u* const* ppTblTotalZeros, const Zan32u* const* ppTblRunBefore,
                     const Zan32s* pScan) {
    if (!ppBitStream || !pBitOffset || !pNumCoeff || !ppPosCoefbuf || !ppTblCoeffToken || !ppTblTotalZeros ||
        !ppTblRunBefore || !pScan)
        return zanStsNullPtr;
    if (!*ppBitStream || !*ppPosCoefbuf) return zanStsNullPtr;
    if (static_cast<Zan32s>(uVLCSelect) < 0) return zanStsOutOfRange;
    if (coeffLimit != 16 && coeffLimit != 15) return zanStsOutOfRange;
    const Zan32u* token = token_table(ppTblCoeffToken, uVLCSelect);
    if (uVLCSelect < 8 && !token) return zanStsNullPtr;
    BlockArgs<OutT> a{BitWindow(*ppBitStream, *pBitOffset), pNumCoeff, *ppPosCoefbuf, token, 0,
                      ppTblTotalZeros, ppTblRunBefore, pScan, coeffLimit, 16 - coeffLimit, 16};
    return finish<Form::Block, Wide>(a, ppBitStream, pBitOffset, ppPosCoefbuf);
}

template <bool Wide, class OutT>
ZanStatus chroma_dc_420(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan16s* pNumCoeff, OutT** ppPosCoefbuf,
                        const Zan32u* pTblCoeffToken, const Zan32u* const* ppTblTotalZeros,
                        const Zan32u* const* ppTblRunBefore) {
    if (!ppBitStream || !pBitOffset || !pNumCoeff) return zanStsNullPtr;
    if (!*ppBitStream) return zanStsNullPtr;
    WordCursor c(*ppBitStream, *pBitOffset);
    const Zan32u v = c.peek(5);
    if (v & 16u) {  // token 1: one trailing one, then its sign and total zeros
        if (!ppPosCoefbuf || !*ppPosCoefbuf) return zanStsNullPtr;
        OutT* blk = *ppPosCoefbuf;
        const Zan8s* e = kChromaDcRun[v & 7u];
        blk[0] = blk[1] = blk[2] = blk[3] = 0;
        blk[e[0]] = static_cast<OutT>((v & 8u) ? -1 : 1);
        skip(c, static_cast<Zan32u>(e[1]));
        c.store(ppBitStream, pBitOffset);
        *pNumCoeff = 1;
        *ppPosCoefbuf += cavlc::kBlockDc420;
        return zanStsOk;
    }
    if (v & 8u) {  // token 01: the empty block
        *pNumCoeff = 0;
        skip(c, 2);
        c.store(ppBitStream, pBitOffset);
        return zanStsOk;
    }
    if (!ppPosCoefbuf || !pTblCoeffToken || !ppTblTotalZeros || !ppTblRunBefore) return zanStsNullPtr;
    if (!*ppPosCoefbuf) return zanStsNullPtr;
    BlockArgs<OutT> a{BitWindow(*ppBitStream, *pBitOffset), pNumCoeff, *ppPosCoefbuf, pTblCoeffToken, 0, ppTblTotalZeros, ppTblRunBefore, nullptr,
                      cavlc::kBlockDc420, 0, 16};
    return finish<Form::Dc420, Wide>(a, ppBitStream, pBitOffset, ppPosCoefbuf);
}

template <bool Wide, class OutT>
ZanStatus chroma_dc_422(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan16s* pNumCoeff, OutT** ppPosCoefbuf,
                        const Zan32u* pTblCoeffToken, const Zan32u* const* ppTblTotalZeros,
                        const Zan32u* const* ppTblRunBefore) {
    if (!ppBitStream || !pBitOffset || !pNumCoeff || !ppPosCoefbuf || !pTblCoeffToken || !ppTblTotalZeros ||
        !ppTblRunBefore)
        return zanStsNullPtr;
    if (!*ppBitStream || !*ppPosCoefbuf) return zanStsNullPtr;
    BlockArgs<OutT> a{BitWindow(*ppBitStream, *pBitOffset), pNumCoeff, *ppPosCoefbuf, pTblCoeffToken, 0,
                      ppTblTotalZeros, ppTblRunBefore, nullptr, cavlc::kBlockDc422, 0, 16};
    return finish<Form::Dc422, Wide>(a, ppBitStream, pBitOffset, ppPosCoefbuf);
}

// Exp-Golomb: Limit is the prefix length from which a code counts as too
// long (17 for 16-bit results, 32 for 32-bit ones).
template <Zan32s Limit>
ZanStatus exp_golomb(Zan32u** ppBitStream, Zan32s* pBitOffset, bool isSigned, Zan32s& value) {
    WordCursor c(*ppBitStream, *pBitOffset);
    if (c.read(1)) {
        value = 0;
        c.store(ppBitStream, pBitOffset);
        return zanStsOk;
    }
    // Eight bits at a time until a group is not zero; the bits behind its
    // first 1 are given back.
    Zan32s n = 1;
    for (;;) {
        const Zan32u g = c.read(8);
        if (g) {
            const Zan32s lz = __builtin_clz(g) - 24;
            n += lz;
            c.give_back(7 - lz);
            break;
        }
        n += 8;
    }
    if (n < Limit) {
        const Zan32u code = (1u << n) + c.read(n);
        if (!isSigned)
            value = static_cast<Zan32s>(code - 1u);
        else
            value = (code & 1u) ? -static_cast<Zan32s>(code >> 1) : static_cast<Zan32s>(code >> 1);
    } else {
        skip(c, static_cast<Zan32u>(n));  // too long: skipped, the value is 0
        value = 0;
    }
    c.store(ppBitStream, pBitOffset);
    return zanStsOk;
}

}  // namespace

// =============================================================== exports

ZanStatus zaniDecodeCAVLCCoeffs_H264_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan16s* pNumCoeff,
                                           Zan16s** ppPosCoefbuf, Zan32u uVLCSelect, Zan16s coeffLimit,
                                           const Zan32u* const* ppTblCoeffToken,
                                           const Zan32u* const* ppTblTotalZeros,
                                           const Zan32u* const* ppTblRunBefore, const Zan32s* pScan) {
    return coeffs_4x4<false>(ppBitStream, pBitOffset, pNumCoeff, ppPosCoefbuf, uVLCSelect, coeffLimit,
                             ppTblCoeffToken, ppTblTotalZeros, ppTblRunBefore, pScan);
}

ZanStatus zaniDecodeCAVLCCoeffs_H264_1u32s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan16s* pNumCoeff,
                                           Zan32s** ppPosCoefbuf, Zan32u uVLCSelect, Zan16s coeffLimit,
                                           const Zan32u* const* ppTblCoeffToken,
                                           const Zan32u* const* ppTblTotalZeros,
                                           const Zan32u* const* ppTblRunBefore, const Zan32s* pScan) {
    return coeffs_4x4<true>(ppBitStream, pBitOffset, pNumCoeff, ppPosCoefbuf, uVLCSelect, coeffLimit,
                            ppTblCoeffToken, ppTblTotalZeros, ppTblRunBefore, pScan);
}

ZanStatus zaniDecodeCAVLCCoeffsIdxs_H264_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan16s* pNumCoeff,
                                               Zan16s** ppPosCoefbuf, Zan32u uVLCSelect, Zan16s coeffLimit,
                                               const Zan32u* const* ppTblCoeffToken,
                                               const Zan32u* const* ppTblTotalZeros,
                                               const Zan32u* const* ppTblRunBefore, const Zan32s* pScan,
                                               Zan32s firstIdx, Zan32s lastIdx) {
    if (!ppBitStream || !pBitOffset || !pNumCoeff || !ppPosCoefbuf || !ppTblCoeffToken || !ppTblTotalZeros ||
        !ppTblRunBefore || !pScan)
        return zanStsNullPtr;
    if (!*ppBitStream || !*ppPosCoefbuf) return zanStsNullPtr;
    if (static_cast<Zan32s>(uVLCSelect) < 0) return zanStsOutOfRange;
    const Zan32u* token = token_table(ppTblCoeffToken, uVLCSelect);
    if (uVLCSelect < 8 && !token) return zanStsNullPtr;
    const Zan32s select = uVLCSelect < 8 ? static_cast<Zan32s>(uVLCSelect) : 7;
    const Zan32s rangeLen = static_cast<Zan16s>(lastIdx - firstIdx + 1);
    BlockArgs<Zan16s> a{BitWindow(*ppBitStream, *pBitOffset), pNumCoeff, *ppPosCoefbuf, token, select,
                        ppTblTotalZeros, ppTblRunBefore, pScan, coeffLimit, firstIdx, rangeLen};
    return finish<Form::Idxs, false>(a, ppBitStream, pBitOffset, ppPosCoefbuf);
}

ZanStatus zaniDecodeCAVLCChromaDcCoeffs_H264_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan16s* pNumCoeff,
                                                   Zan16s** ppPosCoefbuf, const Zan32u* pTblCoeffToken,
                                                   const Zan32u* const* ppTblTotalZeros,
                                                   const Zan32u* const* ppTblRunBefore) {
    return chroma_dc_420<false>(ppBitStream, pBitOffset, pNumCoeff, ppPosCoefbuf, pTblCoeffToken, ppTblTotalZeros,
                                ppTblRunBefore);
}

ZanStatus zaniDecodeCAVLCChromaDcCoeffs_H264_1u32s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan16s* pNumCoeff,
                                                   Zan32s** ppPosCoefbuf, const Zan32u* pTblCoeffToken,
                                                   const Zan32u* const* ppTblTotalZeros,
                                                   const Zan32u* const* ppTblRunBefore) {
    return chroma_dc_420<true>(ppBitStream, pBitOffset, pNumCoeff, ppPosCoefbuf, pTblCoeffToken, ppTblTotalZeros,
                               ppTblRunBefore);
}

ZanStatus zaniDecodeCAVLCChroma422DcCoeffs_H264_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset,
                                                      Zan16s* pNumCoeff, Zan16s** ppPosCoefbuf,
                                                      const Zan32u* pTblCoeffToken,
                                                      const Zan32u* const* ppTblTotalZeros,
                                                      const Zan32u* const* ppTblRunBefore) {
    return chroma_dc_422<false>(ppBitStream, pBitOffset, pNumCoeff, ppPosCoefbuf, pTblCoeffToken, ppTblTotalZeros,
                                ppTblRunBefore);
}

ZanStatus zaniDecodeCAVLCChroma422DcCoeffs_H264_1u32s(Zan32u** ppBitStream, Zan32s* pBitOffset,
                                                      Zan16s* pNumCoeff, Zan32s** ppPosCoefbuf,
                                                      const Zan32u* pTblCoeffToken,
                                                      const Zan32u* const* ppTblTotalZeros,
                                                      const Zan32u* const* ppTblRunBefore) {
    return chroma_dc_422<true>(ppBitStream, pBitOffset, pNumCoeff, ppPosCoefbuf, pTblCoeffToken, ppTblTotalZeros,
                               ppTblRunBefore);
}

ZanStatus zaniDecodeExpGolombOne_H264_1u16s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan16s* pDst,
                                            Zan32s isSigned) {
    if (!ppBitStream || !pBitOffset || !pDst) return zanStsNullPtr;
    if (!*ppBitStream) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 31u) return zanStsBadArg;
    Zan32s v = 0;
    const ZanStatus st = exp_golomb<17>(ppBitStream, pBitOffset, (isSigned & 0xFF) != 0, v);
    *pDst = static_cast<Zan16s>(v);
    return st;
}

ZanStatus zaniDecodeExpGolombOne_H264_1u32s(Zan32u** ppBitStream, Zan32s* pBitOffset, Zan32s* pDst,
                                            Zan32s isSigned) {
    if (!ppBitStream || !pBitOffset || !pDst) return zanStsNullPtr;
    if (!*ppBitStream) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 31u) return zanStsBadArg;
    Zan32s v = 0;
    const ZanStatus st = exp_golomb<32>(ppBitStream, pBitOffset, isSigned != 0, v);
    *pDst = v;
    return st;
}

}  // namespace zan::ZAN_PATH
