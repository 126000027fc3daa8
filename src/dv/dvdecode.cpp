// DV segment decoding (three passes, with unfinished and spare block lists)
// and the dequantisation of DV and DV100 blocks.
//
// The decoder reads codes from a window built from up to 8 bytes of a
// block's bits.  While nothing is held over and at least 16 bits (the
// longest code) are left, one look-up in a 10-bit pair table gives up to
// two codes, and one 64-bit window serves two such look-ups; near a block's
// end and when joining held bits it takes one code per look-up and tests
// its fit.  A block's bits sit in a zero-padded copy, so no read goes past
// its end and a code that does not fit is told by its length against the
// bits left.
#include <cstdint>
#include <cstring>

#include "common/scan_tables.h"
#include "common/simd.h"
#include "dv/dvdecode.h"
#include "dv/dvdecode_tables.h"
#include "frame/bodies.h"
#include "support/support.h"

namespace zan::ZAN_PATH::dvdecode {
namespace {

using namespace zan::dvdecode;
using dv::kCodeTable;

constexpr bool table_complete() {
    for (int i = 0; i < 1024; ++i) {
        if ((i >= 480 && i < 512) || i >= 960) continue;  // second-level index or long code
        if (kCodeTable.row[i].len > 13 || kCodeTable.row[i].len < 2) return false;
    }
    return true;
}
static_assert(table_complete(), "every reachable row of the code table holds a code");

// ============================================================ segment decoder

// Working record of one DCT block during a call.
struct Block {
    Zan8u buf[24];        // the block's bytes, zero-padded
    Zan32s pos;           // next bit to read in buf
    Zan32s end;           // bit count of the block
    Zan32s counter;       // scan position - 64: -64 at the DC, the block is full at 0
    Zan32s last;          // scan position of the last coefficient stored
    Zan32u held;          // bits carried over for joining, at the top
    Zan32s nheld;         // their count (below 16)
    Zan32u eob;           // 1 when an end-of-block code closed the block
    Zan16s* coef;         // the block's 64 coefficients
    const Zan8u* scan;    // raster position of each scan position
    Block* next;          // link in an unfinished or spare list
};

// Top 32 bits from bit p of a block's buffer (zeros past its end): one
// 8-byte big-endian load (p <= 112, so bytes up to 22 of the 24 are read).
inline Zan32u peek32(const Block& b, Zan32s p) {
    std::uint64_t v;
    std::memcpy(&v, b.buf + (p >> 3), 8);
    v = __builtin_bswap64(v);
    return Zan32u((v << (p & 7)) >> 32);
}

// Top 64 bits from bit p (p <= 96, so bytes up to 19 of the 24 are read).
inline std::uint64_t peek64(const Block& b, Zan32s p) {
    std::uint64_t v;
    std::memcpy(&v, b.buf + (p >> 3), 8);
    return __builtin_bswap64(v) << (p & 7);
}

struct Code {
    Zan32s len;
    Zan32s step;
    Zan32s level;
};

// The code at the top of a 32-bit window.
inline Code decode_code(Zan32u win) {
    const Zan32u w = win >> 23;
    if (w < 480) {
        const dv::CodeRow& r = kCodeTable.row[w];
        return {r.len, r.step, r.level};
    }
    if (w < 508) {
        const dv::CodeRow& r = kCodeTable.row[(win >> 19) & 1023u];
        return {r.len, r.step, r.level};
    }
    // Long code: 7 prefix bits, 8 magnitude bits, sign bit s.
    const Zan32s v = Zan32s((win >> 16) & 511u), s = v & 1;
    const Zan32s level = ((v & 510) * 32 - s) ^ (s ? -1 : 0);
    return {16, 1, level};
}

// Decodes codes of block u from its held bits followed by the bits of
// block s (which may be u itself).  Returns true when u ended; false when
// a code did not fit, in which case every bit left (held and of s) is now
// held by u and s is used up.
bool decode_from(Block& u, Block& s) {
    // The state lives in locals during the loop: the coefficient stores
    // could otherwise alias the records and force reloads.
    Zan32u held = u.held;
    Zan32s nheld = u.nheld, pos = s.pos, counter = u.counter, last = u.last;
    const Zan32s end = s.end;
    Zan16s* const coef = u.coef;
    const Zan8u* const scan = u.scan;
    bool ended;
    for (;;) {
        if (nheld == 0 && end - pos >= 16) {
            // Common case: nothing held and room for any code, so no code
            // can fall short of bits.  One 64-bit window serves two
            // look-ups of up to two codes each (at most 32 bits).
            std::uint64_t win = peek64(s, pos);
            bool done = false;
            for (int round = 0; round < 2 && end - pos >= 16; ++round) {
                const Zan32u top = Zan32u(win >> 32);
                const dv::PairRow& p = dv::kPairTable.row[top >> 22];
                if (p.len1 == 0) {  // a code of more than 9 bits, alone
                    const Code c = decode_code(top);
                    pos += c.len;
                    win <<= c.len;
                    counter += c.step;
                    if (counter >= 0) {
                        u.eob = ((top >> 23) & 480u) == 192u ? 1u : 0u;
                        done = true;
                        break;
                    }
                    last = counter + 64;
                    coef[scan[last]] = Zan16s(c.level);
                    continue;
                }
                counter += p.step1;
                if (counter >= 0) {
                    pos += p.len1;
                    u.eob = p.step1 == 64 ? 1u : 0u;
                    done = true;
                    break;
                }
                last = counter + 64;
                coef[scan[last]] = p.level1;
                const Zan32s n = p.len1 + p.len2;
                pos += n;
                win <<= n;
                counter += p.step2;
                if (counter >= 0) {
                    u.eob = p.step2 == 64 ? 1u : 0u;
                    done = true;
                    break;
                }
                last = counter + 64;
                coef[scan[last]] = p.level2;
            }
            if (done) {
                ended = true;
                break;
            }
            continue;
        }
        const Zan32s avail = nheld + (end - pos);
        const Zan32u sbits = peek32(s, pos);
        const Zan32u win = nheld ? (held | (sbits >> nheld)) : sbits;
        const Code c = decode_code(win);
        if (c.len > avail) {
            held = avail ? (win & ~(0xFFFFFFFFu >> avail)) : 0u;
            nheld = avail;
            pos = end;
            ended = false;
            break;
        }
        if (c.len <= nheld) {
            held <<= c.len;
            nheld -= c.len;
        } else {
            pos += c.len - nheld;
            held = 0;
            nheld = 0;
        }
        counter += c.step;
        if (counter >= 0) {
            u.eob = ((win >> 23) & 480u) == 192u ? 1u : 0u;
            ended = true;
            break;
        }
        last = counter + 64;
        coef[scan[last]] = Zan16s(c.level);
    }
    u.held = held;
    u.nheld = nheld;
    u.counter = counter;
    u.last = last;
    s.pos = pos;
    return ended;
}

// Sets up block b from its bytes and decodes it on its own bits.
// Returns 1 (ended with spare bits), 0 (ended with none left) or -1
// (unfinished; its leftover bits are held).
int decode_first(Block& b, const Zan8u* src, Zan32s bytes, Zan16s* coef) {
    std::memset(b.buf, 0, sizeof b.buf);
    std::memcpy(b.buf, src, static_cast<std::size_t>(bytes));
    b.pos = 12;
    b.end = bytes * 8;
    b.counter = -64;
    b.last = 0;
    b.held = 0;
    b.nheld = 0;
    b.eob = 0;
    b.coef = coef;
    b.scan = (src[1] & 0x40) ? dv::kScan248 : ownvc_Zigzag;
    b.next = nullptr;
    coef[0] = Zan16s(((src[0] << 8) | src[1]) & 0xFF80);
    if (!decode_from(b, b)) return -1;
    return b.pos < b.end ? 1 : 0;
}

// Continues the unfinished list at u with bits of the spare list at s.
// Returns 1 when all unfinished blocks ended and s still has bits; 0 when
// they all ended and s is used up (s then points at the next spare block);
// -1 when the spare bits ran out first (u at the first block not ended).
int decode_sequence(Block*& u, Block*& s) {
    for (;;) {
        if (decode_from(*u, *s)) {
            u = u->next;
            if (s->pos == s->end) {
                s = s->next;
                if (!u) return 0;
                if (!s) return -1;
            } else if (!u) {
                return 1;
            }
        } else {
            s = s->next;
            if (!s) return -1;
        }
    }
}

// A singly linked list that keeps insertion order.
struct List {
    Block* head = nullptr;
    Block* tail = nullptr;
    void push(Block* b) {
        b->next = nullptr;
        if (tail) tail->next = b; else head = b;
        tail = b;
    }
    // Appends the chain from first to the end of its list (whose last is
    // known to be last).
    void append(Block* first, Block* last) {
        if (!first) return;
        if (tail) tail->next = first; else head = first;
        tail = last;
    }
};

template <int BPM, bool Full>
void decode_segment(const Zan8u* pStream, Zan16s* pBlock, Zan32u* pBlockParam) {
    constexpr Zan32s kBytes6[6] = {14, 14, 14, 14, 10, 10};
    constexpr Zan32s kBytes8[8] = {10, 10, 10, 10, 10, 10, 8, 8};
    const Zan32s* bytes = BPM == 6 ? kBytes6 : kBytes8;
    Block blk[5 * BPM];
    List globalSpare, globalUnfinished;
    for (int m = 0; m < 5; ++m) {
        const Zan8u* dif = pStream + 80 * m;
        const Zan8u* src = dif + 4;
        List spare, unfinished;
        for (int j = 0; j < BPM; ++j) {
            const int i = m * BPM + j;
            const int r = decode_first(blk[i], src, bytes[j], pBlock + 64 * i);
            src += bytes[j];
            if (r > 0) spare.push(&blk[i]);
            else if (r < 0) unfinished.push(&blk[i]);
        }
        if constexpr (Full) {
            if (!unfinished.head) {
                globalSpare.append(spare.head, spare.tail);
            } else if (!spare.head) {
                globalUnfinished.append(unfinished.head, unfinished.tail);
            } else {
                Block* u = unfinished.head;
                Block* s = spare.head;
                const int r = decode_sequence(u, s);
                if (r >= 0) globalSpare.append(s, spare.tail);
                else globalUnfinished.append(u, unfinished.tail);
            }
        }
    }
    if constexpr (Full) {
        if (globalUnfinished.head && globalSpare.head) {
            Block* u = globalUnfinished.head;
            Block* s = globalSpare.head;
            decode_sequence(u, s);
        }
    }
    for (int m = 0; m < 5; ++m) {
        const Zan8u* dif = pStream + 80 * m;
        const Zan32u qno = Zan32u(dif[3] & 15) << 16;
        const Zan8u* src = dif + 4;
        for (int j = 0; j < BPM; ++j) {
            const Block& b = blk[m * BPM + j];
            pBlockParam[m * BPM + j] = qno | (Zan32u(b.last) << 8) | (src[1] & 0x70u) | b.eob;
            src += bytes[j];
        }
    }
}

// ============================================================ dequantisation rules

void quant_inv_rule(Zan16s* p, const Zan16s* t, const Zan16s*, Zan32s) {
    for (int i = 0; i < 64; ++i) {
        const Zan32s prod = Zan32s(p[i]) * t[i];
        p[i] = Zan16s(Zan16u(Zan32u(Zan16s(prod >> 16)) << 2));
    }
}

void quant_weight_rule(Zan16s* p, const Zan16s* a, const Zan16s* b, Zan32s) {
    for (int i = 0; i < 64; ++i) {
        const Zan16s z = Zan16s(Zan16u(Zan32u((p[i] >> 3) * Zan32s(a[i]))));
        p[i] = Zan16s((Zan32s(z) * b[i]) >> 16);
    }
}

inline Zan16s sat16(Zan32s v) { return Zan16s(v < -32768 ? -32768 : v > 32767 ? 32767 : v); }

void quant_dv100_rule(Zan16s* p, const Zan16s*, const Zan16s* w, Zan32s qp) {
    const Zan16s dc = Zan16s(p[0] >> 5);
    for (int i = 1; i < 64; ++i) {
        const Zan16s z = Zan16s(Zan16u(Zan32u((p[i] >> 6) * qp)));
        p[i] = sat16((Zan32s(z) * w[i]) >> 5);
    }
    p[0] = dc;
}

// ============================================================ dequantisation kernels

void quant_inv_simd(Zan16s* p, const Zan16s* t, const Zan16s*, Zan32s) {
    for (int i = 0; i < 64; i += 8) {
        const __m128i x = simd::load16(p + i), m = simd::load16(t + i);
        simd::store16(p + i, _mm_slli_epi16(_mm_mulhi_epi16(x, m), 2));
    }
}

void quant_weight_simd(Zan16s* p, const Zan16s* a, const Zan16s* b, Zan32s) {
    for (int i = 0; i < 64; i += 8) {
        const __m128i x = _mm_srai_epi16(simd::load16(p + i), 3);
        const __m128i z = _mm_mullo_epi16(x, simd::load16(a + i));
        simd::store16(p + i, _mm_mulhi_epi16(z, simd::load16(b + i)));
    }
}

void quant_dv100_simd(Zan16s* p, const Zan16s*, const Zan16s* w, Zan32s qp) {
    const Zan16s dc = Zan16s(p[0] >> 5);
    const __m128i q = _mm_set1_epi16(Zan16s(qp));
    for (int i = 0; i < 64; i += 8) {
        const __m128i z = _mm_mullo_epi16(_mm_srai_epi16(simd::load16(p + i), 6), q);
        const __m128i ww = simd::load16(w + i);
        const __m128i lo = _mm_mullo_epi16(z, ww), hi = _mm_mulhi_epi16(z, ww);
        const __m128i p0 = _mm_srai_epi32(_mm_unpacklo_epi16(lo, hi), 5);
        const __m128i p1 = _mm_srai_epi32(_mm_unpackhi_epi16(lo, hi), 5);
        simd::store16(p + i, _mm_packs_epi32(p0, p1));
    }
    p[0] = dc;
}

constexpr KernelPair<DequantFn> kDequant[] = {
    {"quant_inv_dv", quant_inv_rule, quant_inv_simd, 8, 8, 0},
    {"quant_weight_inv_dv", quant_weight_rule, quant_weight_simd, 8, 8, 0},
    {"quant_weight_inv_dv100", quant_dv100_rule, quant_dv100_simd, 8, 8, 0},
};

}  // namespace

const Kernels kernels = {kDequant};

}  // namespace zan::ZAN_PATH::dvdecode

// =============================================================== exports

namespace zan::ZAN_PATH {

ZanStatus zaniHuffmanDecodeSegment_DV_8u16s(const Zan8u* pStream, const Zan32u*, const Zan32u*, Zan16s* pBlock,
                                            Zan32u* pBlockParam) {
    if (!pStream || !pBlock || !pBlockParam) return zanStsNullPtr;
    dvdecode::decode_segment<6, true>(pStream, pBlock, pBlockParam);
    return zanStsOk;
}

ZanStatus zaniHuffmanDecodeSegmentOnePass_DV_8u16s(const Zan8u* pStream, const Zan32u*, const Zan32u*,
                                                   Zan16s* pBlock, Zan32u* pBlockParam) {
    if (!pStream || !pBlock || !pBlockParam) return zanStsNullPtr;
    dvdecode::decode_segment<6, false>(pStream, pBlock, pBlockParam);
    return zanStsOk;
}

ZanStatus zaniHuffmanDecodeSegment_DV100_8u16s(const Zan8u* pStream, const Zan32u*, const Zan32u*,
                                               Zan16s* pBlock, Zan32u* pBlockParam) {
    if (!pStream || !pBlock || !pBlockParam) return zanStsNullPtr;
    dvdecode::decode_segment<8, true>(pStream, pBlock, pBlockParam);
    return zanStsOk;
}

namespace {
// Fills one level of a caller-built table from its description.
void fill_level(Zan32u* table, const Zan32s* desc, Zan32s lenBias) {
    const Zan32s b = desc[0];
    const Zan32s* p = desc + 3;
    for (Zan32s L = 1; L <= b; ++L) {
        const Zan32s n = *p++;
        for (Zan32s k = 0; k < n; ++k, p += 3) {
            const Zan32u code = Zan32u(p[0]) & ((1u << L) - 1u);
            const Zan32u entry = Zan32u(L + lenBias) | ((Zan32u(p[1]) & 255u) << 8) |
                                 (Zan32u(Zan16u(Zan32u(p[2]) * 64u)) << 16);
            const Zan32u first = code << (b - L), count = 1u << (b - L);
            for (Zan32u i = 0; i < count; ++i) table[first + i] = entry;
        }
    }
}
}  // namespace

ZanStatus zaniInitAllocHuffmanTable_DV_32u(const Zan32s* pSpec1, const Zan32s* pSpec2, Zan32u** ppTable) {
    if (!pSpec1 || !pSpec2 || !ppTable) return zanStsNullPtr;
    const Zan32s b1 = pSpec1[0], b2 = pSpec2[0];
    if (b1 < 0 || b1 > 24 || b2 < 0 || b2 > 24) return zanStsNoMem;
    const Zan32s entries = (1 << b1) + (1 << b2);
    Zan8s* mem = zansMalloc_8s(entries * 4);
    if (!mem) return zanStsNoMem;
    Zan32u* table = reinterpret_cast<Zan32u*>(mem);
    for (Zan32s i = 0; i < entries; ++i) table[i] = 255u;
    fill_level(table, pSpec1, 0);
    fill_level(table + (1 << b1), pSpec2, 4);
    *ppTable = table;
    return zanStsOk;
}

ZanStatus zaniFreeHuffmanTable_DV_32u(Zan32u* pTable) {
    if (!pTable) return zanStsNullPtr;
    zansFree(pTable);
    return zanStsOk;
}

ZanStatus zaniQuantInv_DV_16s_C1I(Zan16s* pSrcDst, const Zan16s* pDequantTable) {
    if (!pSrcDst || !pDequantTable) return zanStsNullPtr;
    dvdecode::quant_inv_simd(pSrcDst, pDequantTable, nullptr, 0);
    return zanStsOk;
}

ZanStatus zaniQuantWeightBlockInv_DV_16s_C1I(Zan16s* pSrcDst, const Zan16s* pDequantTable,
                                             const Zan16s* pWeightTable) {
    if (!pSrcDst || !pDequantTable || !pWeightTable) return zanStsNullPtr;
    dvdecode::quant_weight_simd(pSrcDst, pDequantTable, pWeightTable, 0);
    return zanStsOk;
}

ZanStatus zaniQuantWeightBlockInv_DV100_16s_C1I(Zan16s* pSrcDst, const Zan16s* pWeightTable, Zan32s qp) {
    if (!pSrcDst || !pWeightTable) return zanStsNullPtr;
    dvdecode::quant_dv100_simd(pSrcDst, nullptr, pWeightTable, qp);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
