// H.261, H.263 and MPEG-4 coefficient decoding: one 8x8 block of run-level
// codes from the byte cursor into 64 Zan16s values in raster order, either
// as levels ("Decode") or dequantised in the same pass ("Reconstruct").
//
// Bit-stream parsing has no vector kernel worth writing: the scalar code
// below is the implementation.  Each code costs one peek and a table row
// (coeftables.h).  Every peek loads the four bytes starting at the byte that
// holds the next bit, never beyond, which is what the four bytes of slack
// after the coded data allow; the backward reversible decoder reads the four
// bytes ending at the byte of its next bit instead.
//
// A kernel works on a local cursor and writes it back only on success, so a
// failed call leaves the caller's cursor as it stood, except where the
// wrappers advance it over a DC byte first.
#include <cstring>

#include "common/scan_tables.h"
#include "h26x_mpeg4/bytecursor.h"
#include "h26x_mpeg4/coeftables.h"
#include "h26x_mpeg4/quant263.h"

namespace zan::ZAN_PATH {
namespace coef {
namespace {

// The table for a `scan` that stores through 0 zigzag, 1 vertical,
// 2 horizontal, and in scan order for anything else (nullptr).
inline const Zan8u* scan_or_none(Zan32s scan) {
    return scan == 0 ? ownvc_Zigzag : scan == 1 ? ownvc_AltScanV : scan == 2 ? ownvc_AltScanH : nullptr;
}

inline void clear_block(Zan16s* pCoeffs) { std::memset(pCoeffs, 0, 64 * sizeof(Zan16s)); }

// ---------------------------------------------------------------- H.263
//
// Level stores: the plain decoder stores levels; the reconstructors store
// dequantised values.
struct StoreLevel {
    Zan16s operator()(Zan32s level) const { return static_cast<Zan16s>(level); }
};
// sign(L) * (2 QP |L| + qadd), qadd = QP for odd QP, QP - 1 for even QP,
// clamped to -2048..2047 when Clamp.
template <bool Clamp>
struct StoreDequant263 {
    Zan32s qp2, qadd;
    StoreDequant263(Zan32s QP) : qp2(2 * QP), qadd((QP & 1) ? QP : QP - 1) {}
    Zan16s operator()(Zan32s level) const {
        Zan32s v = level > 0 ? qp2 * level + qadd : level < 0 ? qp2 * level - qadd : 0;
        if (Clamp) v = v < -2048 ? -2048 : v > 2047 ? 2047 : v;
        return static_cast<Zan16s>(v);
    }
};
// level * 2 QP, no clamp: the advanced intra reconstruction.
struct StoreTimes2QP {
    Zan32s qp2;
    Zan16s operator()(Zan32s level) const { return static_cast<Zan16s>(level * qp2); }
};

// The H.263 block decoder.  ModQ: the escape of the modified quantisation
// mode (level 0 invalid, -128 starts the extended form).  First index s;
// `scan` nullptr stores at the index.
template <bool ModQ, class Store>
ZanStatus decode263(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs, Zan32s* pLastCoeffIndex,
                    const Tables263& tab, Zan32s s, const Zan8u* scan, Store store) {
    clear_block(pCoeffs);
    ByteReader c(*ppBitStream, *pBitOffset);
    Zan32s i = s - 1;
    for (;;) {
        const Zan32u win = c.window();
        const Zan32u w = win >> 19;  // 13-bit peek
        Zan32s step, level, last;
        if ((w >> 6) == 3) {
            // Escape: 0000011, last (1), run (6), level (8, signed).
            last = static_cast<Zan32s>((win >> 24) & 1);
            step = static_cast<Zan32s>((win >> 18) & 63) + 1;
            level = static_cast<Zan8s>(static_cast<Zan8u>(win >> 10));
            if (ModQ ? level == 0 : (level & 127) == 0) break;
            c.skip(22);
            if (ModQ && level == -128) {
                // Extended level: 5 low bits, then 6 sign-extended high bits,
                // formed from a fresh load at the byte of the next bit.  The
                // low part is deliberately not masked to 5 bits: for a bit
                // offset k above 0 the k bits of that byte already consumed
                // land in bits 5 and up.
                const Zan32u W = load_be32(c.byte());
                const Zan32s k = c.bit();
                const Zan32s high = static_cast<Zan32s>(W << (k + 5)) >> 26;
                level = static_cast<Zan32s>(static_cast<Zan32u>(high * 32) | (W >> (27 - k)));
                c.skip(11);
            }
        } else {
            if (w < 16) break;
            const Row263& r = lookup263(tab, w);
            if (r.len == 0) break;
            step = r.runp1;
            last = r.last;
            level = ((w >> (13 - r.len)) & 1) ? -static_cast<Zan32s>(r.level) : r.level;
            c.skip(r.len);
        }
        if (i + step > 63) break;
        i += step;
        pCoeffs[scan ? scan[i] : i] = store(level);
        if (last) {
            *pLastCoeffIndex = i;
            c.store(ppBitStream, pBitOffset);
            return zanStsOk;
        }
    }
    *pLastCoeffIndex = i;
    return zanStsCoefDecodeBad;
}

template <class Store, class StoreModQ>
ZanStatus run263(bool modQ, Zan8u** pp, Zan32s* po, Zan16s* pCoeffs, Zan32s* pLast, const Tables263& tab,
                 Zan32s s, const Zan8u* scan, Store store, StoreModQ storeModQ) {
    return modQ ? decode263<true>(pp, po, pCoeffs, pLast, tab, s, scan, storeModQ)
                : decode263<false>(pp, po, pCoeffs, pLast, tab, s, scan, store);
}

// ---------------------------------------------------------------- H.261

// The H.261 block decoder.  Inter blocks may begin with the short first
// code 1s (coefficient 0 = +1 or -1); intra blocks start at index 0.
template <class Store>
ZanStatus decode261(ByteReader& c, Zan16s* pCoeffs, Zan32s* pLastCoeffIndex, bool inter, const Zan8u* scan,
                    Store store) {
    clear_block(pCoeffs);
    Zan32s i = 0;
    if (inter) {
        const Zan32u first = c.peek(2);
        if (first > 1) {
            pCoeffs[0] = store(first == 2 ? 1 : -1);
            c.skip(2);
        } else {
            i = -1;
        }
    }
    for (;;) {
        const Zan32u win = c.window();
        const Zan32u w = win >> 18;  // 14-bit peek
        Zan32s step, level;
        if ((w >> 8) == 1) {
            // Escape: 000001, run (6), level (8, signed).
            step = static_cast<Zan32s>((win >> 20) & 63) + 1;
            level = static_cast<Zan8s>(static_cast<Zan8u>(win >> 12));
            if ((level & 127) == 0) break;
            c.skip(20);
        } else {
            if (w < 32) break;
            const Row261& r = lookup261(w);
            if (r.len == 0) break;
            step = r.runp1;
            level = (r.level && ((w >> (14 - r.len)) & 1)) ? -static_cast<Zan32s>(r.level) : r.level;
            c.skip(r.len);
        }
        const Zan32s sum = i + step;
        if (sum > 63) {
            // End of block (step 127) from index 0 or above ends the block;
            // anything else past 63, end of block at index -1 included, is an
            // overflow.
            *pLastCoeffIndex = i;
            return sum < 127 ? zanStsCoefDecodeBad : zanStsOk;
        }
        i = sum;
        pCoeffs[scan ? scan[i] : i] = store(level);
    }
    *pLastCoeffIndex = i;
    return zanStsCoefDecodeBad;
}

// ---------------------------------------------------------------- MPEG-4

// The plain or escaped code at the cursor, from a class's peek tables.
struct Event {
    Zan32s last, run, level;  // level signed
};

// One second-stage code of escape types 1 and 2: row and sign; false for no
// code.  allowEscape: type 1 takes the escape row as level 255.
inline bool second_code(ByteReader& c, const TablesMp4& tab, bool allowEscape, Event& e) {
    const Zan32u w = c.peek(12);
    if (w < 8) return false;
    const RowMp4& r = lookupMp4(tab, w);
    if (r.len == 0) return false;
    if (!allowEscape && r.level == kEscapeLevel) return false;
    c.skip(r.len);
    e.last = r.last;
    e.run = r.run;
    e.level = r.level;
    return true;
}

// Reads one event of the VLC block syntax; false for an invalid code (the
// reader is then in an undefined place; the caller drops it).  Intra: the
// fixed-length level must not have its low 11 bits zero; inter: it must
// not be -2048.
inline bool read_event(ByteReader& c, const TablesMp4& tab, const Maxima& mx, bool intra, Event& e) {
    const Zan32u w = c.peek(12);
    if (w < 8) return false;
    const RowMp4& r = lookupMp4(tab, w);
    if (r.len == 0) return false;
    c.skip(r.len);
    if (r.level != kEscapeLevel) {
        e.last = r.last;
        e.run = r.run;
        e.level = c.read(1) ? -static_cast<Zan32s>(r.level) : r.level;
        return true;
    }
    if (c.read(1) == 0) {
        // Type 1: level raised by LMAX[last][run].
        if (!second_code(c, tab, true, e)) return false;
        const Zan32s m = e.level + mx.lmax[e.last][e.run];
        e.level = c.read(1) ? -m : m;
        return true;
    }
    if (c.read(1) == 0) {
        // Type 2: run raised by RMAX[last][level] (stored plus 1).
        if (!second_code(c, tab, false, e)) return false;
        e.run += mx.rmax[e.last][e.level];
        e.level = c.read(1) ? -e.level : e.level;
        return true;
    }
    // Type 3: last (1), run (6), marker, level (12, signed), marker.
    const Zan32u v = c.read(21);
    if (((v >> 13) & 1) == 0 || (v & 1) == 0) return false;
    e.last = static_cast<Zan32s>(v >> 20);
    e.run = static_cast<Zan32s>((v >> 14) & 63);
    const Zan32s lv = static_cast<Zan32s>(((v >> 1) & 0xFFF) << 20) >> 20;
    if (intra ? (lv & 2047) == 0 : lv == -2048) return false;
    e.level = lv;
    return true;
}

// The MPEG-4 VLC block decoder.  The start index is in i on entry.
template <class Store>
ZanStatus decodeMp4(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs, Zan32s* pLastCoeffIndex,
                    Zan32s i, bool intra, const Zan8u* scan, Store& store) {
    const TablesMp4& tab = intra ? tableB16 : tableB17;
    const Maxima& mx = intra ? kMaxIntra : kMaxInter;
    ByteReader c(*ppBitStream, *pBitOffset);
    for (;;) {
        Event e;
        if (!read_event(c, tab, mx, intra, e)) {
            *pLastCoeffIndex = i;
            return zanStsCoefDecodeBad;
        }
        i += e.run + 1;
        if (i > 63) {
            *pLastCoeffIndex = i;
            return zanStsCoefDecodeBad;
        }
        const Zan32s pos = scan ? scan[i] : i;
        pCoeffs[pos] = store(e.level, pos);
        if (e.last) {
            *pLastCoeffIndex = i;
            c.store(ppBitStream, pBitOffset);
            return store.finish(pCoeffs);
        }
    }
}

struct StoreLevelMp4 {
    Zan16s operator()(Zan32s level, Zan32s) const { return static_cast<Zan16s>(level); }
    ZanStatus finish(Zan16s*) const { return zanStsOk; }
};

// Forward reversible decoder.  The block is clear; the start index is in
// *pLastCoeffIndex.
ZanStatus decodeRvlcF(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs, Zan32s* pLastCoeffIndex,
                      const RvlcRows& rows, const Zan8u* scan) {
    ByteReader c(*ppBitStream, *pBitOffset);
    Zan32s i = *pLastCoeffIndex;
    for (;;) {
        const Zan32u w8 = c.peek(8);
        Zan32s last, run, level;
        if (w8 < 8) break;
        if (w8 < 16) {
            // Escape: 00001, last, run (6), marker, level (11), marker,
            // 0000, sign.
            const Zan32u a = c.read(13);
            if ((a & 1) == 0) break;
            last = static_cast<Zan32s>((a >> 7) & 1);
            run = static_cast<Zan32s>((a >> 1) & 63);
            const Zan32u b = c.read(12);
            if ((b & 1) == 0 || (b >> 1) == 0) break;
            const Zan32u t = c.read(5);
            if (t > 1) break;
            level = t ? -static_cast<Zan32s>(b >> 1) : static_cast<Zan32s>(b >> 1);
        } else {
            const Zan8u k = kRvlcIndex.fwd[c.peek(15)];
            if (k == 255) break;
            const RowRvlc& r = rows.row[k];
            c.skip(r.len);
            last = r.last;
            run = r.run;
            level = c.read(1) ? -static_cast<Zan32s>(r.level) : r.level;
        }
        i += run + 1;
        if (i > 63) {
            *pLastCoeffIndex = i;
            return zanStsCoefDecodeBad;
        }
        pCoeffs[scan ? scan[i] : i] = static_cast<Zan16s>(level);
        if (last) {
            *pLastCoeffIndex = i;
            c.store(ppBitStream, pBitOffset);
            return zanStsOk;
        }
    }
    *pLastCoeffIndex = i;
    return zanStsCoefDecodeBad;
}

// Backward reversible decoder.  The cursor names the last bit of the data,
// which is read first; bits are then read toward lower addresses.  The block
// is clear and the floor f is in *pLastCoeffIndex.
ZanStatus decodeRvlcB(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs, Zan32s* pLastCoeffIndex,
                      const RvlcRows& rows) {
    ByteReader c(*ppBitStream, *pBitOffset);  // c.pos: the next bit to read
    const Zan32s f = *pLastCoeffIndex;
    Zan32s p = 63;
    bool first = true;
    // The n bits that end at the next bit to read, in stream order.
    auto before = [&c](Zan32s n) { return ByteReader(c.base, c.pos + 1).peek_before(n); };
    for (;;) {
        const Zan32s start = c.pos;
        const Zan32u sign = c.bit_at();
        c.pos -= 1;
        Zan32s last, run, level;
        // The 8 bits before the sign, nearest the sign in bit 0.
        const Zan32u before8 = before(8);
        if ((before8 & 15) == 0) {
            // Escape, read from its end: 0000, marker; marker and level (11);
            // 00001, last, run (6).
            if (((before8 >> 4) & 1) == 0) break;
            c.pos -= 5;
            const Zan32u lv = before(12);
            c.pos -= 12;
            if ((lv >> 11) == 0 || (lv & 2047) == 0) break;
            const Zan32u head = before(12);
            c.pos -= 12;
            if ((head >> 7) != 1) break;
            last = static_cast<Zan32s>((head >> 6) & 1);
            run = static_cast<Zan32s>(head & 63);
            level = static_cast<Zan32s>(lv & 2047);
        } else {
            // The 15 bits before the sign, nearest first.
            const Zan32u b15 = before(15);
            const Zan8u k = kRvlcIndex.bwd[reverse_bits(b15, 15)];
            if (k == 255) break;
            const RowRvlc& r = rows.row[k];
            c.pos -= r.len;
            last = r.last;
            run = r.run;
            level = r.level;
        }
        if (first) {
            if (!last) break;
            first = false;
        } else if (last) {
            // The closing code of the preceding block: stop before it.  A
            // run of the first coefficient that reached below the floor
            // (p under f) leaves no block to move down: that is an overflow.
            if (p < f) break;
            const Zan32s n = 63 - p;
            for (Zan32s k = 1; k <= n; ++k) pCoeffs[f + k] = pCoeffs[p + k];
            for (Zan32s k = f + n + 1; k < 64; ++k) pCoeffs[k] = 0;
            *pLastCoeffIndex = f + n;
            ByteReader(c.base, start).store(ppBitStream, pBitOffset);
            return zanStsOk;
        }
        if (p <= f) break;
        pCoeffs[p] = static_cast<Zan16s>(sign ? -level : level);
        p -= run + 1;
    }
    *pLastCoeffIndex = p;
    return zanStsCoefDecodeBad;
}

// Fused inter reconstruction: levels dequantised at once.
struct StoreMp4Plain {
    Zan32s qp2, qadd, lo, hi;
    Zan16s operator()(Zan32s level, Zan32s) const {
        Zan32s v = level * qp2 + (level > 0 ? qadd : level < 0 ? -qadd : 0);
        v = v < -32768 ? -32768 : v > 32767 ? 32767 : v;
        v = v < lo ? lo : v > hi ? hi : v;
        return static_cast<Zan16s>(v);
    }
    ZanStatus finish(Zan16s*) const { return zanStsOk; }
};
struct StoreMp4Weighted {
    const Zan16u* W;
    Zan32s QP, lo, hi, sum;
    Zan16s operator()(Zan32s level, Zan32s pos) {
        const Zan32s sgn = level > 0 ? 1 : level < 0 ? -1 : 0;
        Zan32s v = (2 * level + sgn) * static_cast<Zan32s>(W[pos]) * QP;
        v = (v < 0 ? v + 15 : v) >> 4;
        v = v < -32768 ? -32768 : v > 32767 ? 32767 : v;
        v = v < lo ? lo : v > hi ? hi : v;
        sum += v;
        return static_cast<Zan16s>(v);
    }
    // Mismatch control: an even sum toggles the lowest bit of coefficient 63.
    ZanStatus finish(Zan16s* pCoeffs) const {
        if ((sum & 1) == 0) pCoeffs[63] = static_cast<Zan16s>((pCoeffs[63] & 1) ? pCoeffs[63] - 1 : pCoeffs[63] + 1);
        return zanStsOk;
    }
};

// The 8-bit DC at the cursor (it may straddle two bytes).
inline Zan32u dc_byte(Zan8u** pp, Zan32s* po) { return ByteReader(*pp, *po).peek(8); }

}  // namespace
}  // namespace coef

using namespace coef;

// ---------------------------------------------------------------- exports

ZanStatus zaniDecodeDCIntra_H263_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pDC) {
    if (!ppBitStream || !pBitOffset || !*ppBitStream || !pDC) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    const Zan32u v = dc_byte(ppBitStream, pBitOffset);
    if (v == 0 || v == 128) return zanStsCoefDecodeBad;
    *pDC = static_cast<Zan16s>(v == 255 ? 128 : v);
    ++*ppBitStream;
    return zanStsOk;
}

ZanStatus zaniDecodeCoeffsIntra_H263_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                           Zan32s* pLastCoeffIndex, Zan32s advIntraFlag, Zan32s modQuantFlag,
                                           Zan32s scan) {
    if (!ppBitStream || !pBitOffset || !*ppBitStream || !pCoeffs || !pLastCoeffIndex) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    const Zan8u* sc = scan_or_none(scan);
    if (advIntraFlag)
        return run263(modQuantFlag != 0, ppBitStream, pBitOffset, pCoeffs, pLastCoeffIndex, h263_advCoefTab, 0, sc,
                      StoreLevel{}, StoreLevel{});
    const Zan16s dc = pCoeffs[0];
    const ZanStatus st = run263(modQuantFlag != 0, ppBitStream, pBitOffset, pCoeffs, pLastCoeffIndex, h263_coefTab,
                                1, sc, StoreLevel{}, StoreLevel{});
    pCoeffs[0] = dc;
    return st;
}

ZanStatus zaniDecodeCoeffsInter_H263_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                           Zan32s* pLastCoeffIndex, Zan32s modQuantFlag, Zan32s scan) {
    if (!ppBitStream || !pBitOffset || !*ppBitStream || !pCoeffs || !pLastCoeffIndex) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    return run263(modQuantFlag != 0, ppBitStream, pBitOffset, pCoeffs, pLastCoeffIndex, h263_coefTab, 0,
                  scan_or_none(scan), StoreLevel{}, StoreLevel{});
}

ZanStatus zaniReconstructCoeffsIntra_H263_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                                Zan32s* pLastCoeffIndex, Zan32s cbp, Zan32s QP, Zan32s advIntraFlag,
                                                Zan32s scan, Zan32s modQuantFlag) {
    if (!ppBitStream || !pBitOffset || !*ppBitStream || !pCoeffs || !pLastCoeffIndex) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    if (QP < 1 || QP > 31) return zanStsQpBad;
    if (advIntraFlag) {
        const Zan8u* sc = scan == 2 ? ownvc_AltScanH : scan == 1 ? ownvc_AltScanV : ownvc_Zigzag;
        return run263(modQuantFlag != 0, ppBitStream, pBitOffset, pCoeffs, pLastCoeffIndex, h263_advCoefTab, 0, sc,
                      StoreTimes2QP{2 * QP}, StoreTimes2QP{2 * QP});
    }
    const Zan32u dc = dc_byte(ppBitStream, pBitOffset);
    if (dc == 0 || dc == 128) {
        *pLastCoeffIndex = -1;
        return zanStsCoefDecodeBad;
    }
    ++*ppBitStream;
    ZanStatus st = zanStsOk;
    if (cbp == 0) {
        *pLastCoeffIndex = 0;
    } else {
        st = run263(modQuantFlag != 0, ppBitStream, pBitOffset, pCoeffs, pLastCoeffIndex, h263_coefTab, 1,
                    ownvc_Zigzag, StoreDequant263<true>(QP), StoreDequant263<false>(QP));
    }
    pCoeffs[0] = static_cast<Zan16s>(dc == 255 ? 1024 : 8 * dc);
    return st;
}

ZanStatus zaniReconstructCoeffsInter_H263_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                                Zan32s* pLastCoeffIndex, Zan32s QP, Zan32s modQuantFlag) {
    if (!ppBitStream || !pBitOffset || !*ppBitStream || !pCoeffs || !pLastCoeffIndex) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    if (QP < 1 || QP > 31) return zanStsQpBad;
    return run263(modQuantFlag != 0, ppBitStream, pBitOffset, pCoeffs, pLastCoeffIndex, h263_coefTab, 0,
                  ownvc_Zigzag, StoreDequant263<true>(QP), StoreDequant263<false>(QP));
}

ZanStatus zaniDecodeCoeffsIntra_H261_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                           Zan32s* pLastCoeffIndex, Zan32s scan) {
    if (!ppBitStream || !pBitOffset || !*ppBitStream || !pCoeffs || !pLastCoeffIndex) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    const Zan32u dc = dc_byte(ppBitStream, pBitOffset);
    if ((dc & 127) == 0) {
        *pLastCoeffIndex = -1;
        return zanStsCoefDecodeBad;
    }
    ++*ppBitStream;
    ByteReader c(*ppBitStream, *pBitOffset);
    const ZanStatus st = decode261(c, pCoeffs, pLastCoeffIndex, false, scan == -1 ? nullptr : ownvc_Zigzag,
                                   StoreLevel{});
    if (st == zanStsOk) c.store(ppBitStream, pBitOffset);
    pCoeffs[0] = static_cast<Zan16s>(dc == 255 ? 128 : dc);
    return st;
}

ZanStatus zaniDecodeCoeffsInter_H261_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                           Zan32s* pLastCoeffIndex, Zan32s scan) {
    if (!ppBitStream || !pBitOffset || !*ppBitStream || !pCoeffs || !pLastCoeffIndex) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    ByteReader c(*ppBitStream, *pBitOffset);
    const ZanStatus st = decode261(c, pCoeffs, pLastCoeffIndex, true, scan == -1 ? nullptr : ownvc_Zigzag,
                                   StoreLevel{});
    if (st == zanStsOk) c.store(ppBitStream, pBitOffset);
    return st;
}

ZanStatus zaniReconstructCoeffsIntra_H261_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                                Zan32s* pLastCoeffIndex, Zan32s QP) {
    if (!ppBitStream || !pBitOffset || !*ppBitStream || !pCoeffs || !pLastCoeffIndex) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    if (QP < 1 || QP > 31) return zanStsQpBad;
    clear_block(pCoeffs);
    const Zan32u dc = dc_byte(ppBitStream, pBitOffset);
    if ((dc & 127) == 0) {
        *pLastCoeffIndex = -1;
        return zanStsCoefDecodeBad;
    }
    // The DC advance stays local: a failed AC code leaves the cursor as it
    // was at entry.
    ByteReader c(*ppBitStream + 1, *pBitOffset);
    const ZanStatus st = decode261(c, pCoeffs, pLastCoeffIndex, false, ownvc_Zigzag, StoreDequant263<true>(QP));
    if (st == zanStsOk) c.store(ppBitStream, pBitOffset);
    pCoeffs[0] = static_cast<Zan16s>(dc == 255 ? 1024 : 8 * dc);
    return st;
}

ZanStatus zaniReconstructCoeffsInter_H261_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                                Zan32s* pLastCoeffIndex, Zan32s QP) {
    if (!ppBitStream || !pBitOffset || !*ppBitStream || !pCoeffs || !pLastCoeffIndex) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    if (QP < 1 || QP > 31) return zanStsQpBad;
    ByteReader c(*ppBitStream, *pBitOffset);
    const ZanStatus st = decode261(c, pCoeffs, pLastCoeffIndex, true, ownvc_Zigzag, StoreDequant263<true>(QP));
    if (st == zanStsOk) c.store(ppBitStream, pBitOffset);
    return st;
}

ZanStatus zaniDecodeDCIntra_MPEG4_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pDC, Zan32s chromaFlag) {
    if (!ppBitStream || !pBitOffset || !*ppBitStream || !pDC) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    ByteReader c(*ppBitStream, *pBitOffset);
    const Zan32u w = c.peek(25);
    Zan32s size;
    if (chromaFlag) {
        // 11: 0, 10: 1, 01: 2, then 001: 3, 0001: 4, ... by counting zeros.
        const Zan32u top2 = w >> 23;
        if (top2) {
            size = 3 - static_cast<Zan32s>(top2);
            c.skip(2);
        } else {
            Zan32s z = 2;
            while (z < 13 && ((w >> (24 - z)) & 1) == 0) ++z;
            size = z + 1;
            if (size > 12) return zanStsCoefDecodeBad;
            c.skip(z + 1);
        }
    } else {
        // 11: 1, 10: 2, 011: 0, 010: 3, 001: 4, then 0001: 5, ... by
        // counting zeros.
        const Zan32u top2 = w >> 23, top3 = w >> 22;
        if (top2 >= 2) {
            size = top2 == 3 ? 1 : 2;
            c.skip(2);
        } else if (top3 >= 2) {
            size = top3 == 3 ? 0 : 3;
            c.skip(3);
        } else if (top3 == 1) {
            size = 4;
            c.skip(3);
        } else {
            Zan32s z = 3;
            while (z < 12 && ((w >> (24 - z)) & 1) == 0) ++z;
            size = z + 2;
            if (size > 12) return zanStsCoefDecodeBad;
            c.skip(z + 1);
        }
    }
    Zan32s dc = 0;
    if (size > 0) {
        const Zan32s v = static_cast<Zan32s>(c.read(size));
        dc = (v >> (size - 1)) ? v : v - (1 << size) + 1;
    }
    *pDC = static_cast<Zan16s>(dc);
    if (size > 8 && c.read(1) == 0) return zanStsCoefDecodeBad;
    c.store(ppBitStream, pBitOffset);
    return zanStsOk;
}

ZanStatus zaniDecodeCoeffsIntra_MPEG4_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                            Zan32s* pLastCoeffIndex, Zan32s rvlcFlag, Zan32s separateDCFlag,
                                            Zan32s scan) {
    if (!ppBitStream || !pBitOffset || !*ppBitStream || !pCoeffs || !pLastCoeffIndex) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    const Zan8u* sc = scan_or_none(scan);
    const Zan16s dc = pCoeffs[0];
    clear_block(pCoeffs);
    const Zan32s start = separateDCFlag ? 0 : -1;
    if (separateDCFlag) pCoeffs[0] = dc;
    if (rvlcFlag) {
        *pLastCoeffIndex = start;
        return decodeRvlcF(ppBitStream, pBitOffset, pCoeffs, pLastCoeffIndex, tableB23_Intra, sc);
    }
    StoreLevelMp4 store;
    return decodeMp4(ppBitStream, pBitOffset, pCoeffs, pLastCoeffIndex, start, true, sc, store);
}

ZanStatus zaniDecodeCoeffsInter_MPEG4_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                            Zan32s* pLastCoeffIndex, Zan32s rvlcFlag, Zan32s scan) {
    if (!ppBitStream || !pBitOffset || !*ppBitStream || !pCoeffs || !pLastCoeffIndex) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    const Zan8u* sc = scan == 0 ? ownvc_Zigzag : scan == 1 ? ownvc_AltScanV : nullptr;
    clear_block(pCoeffs);
    if (rvlcFlag) {
        *pLastCoeffIndex = -1;
        return decodeRvlcF(ppBitStream, pBitOffset, pCoeffs, pLastCoeffIndex, tableB23_Inter, sc);
    }
    StoreLevelMp4 store;
    return decodeMp4(ppBitStream, pBitOffset, pCoeffs, pLastCoeffIndex, -1, false, sc, store);
}

ZanStatus zaniDecodeCoeffsIntraRVLCBack_MPEG4_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                                    Zan32s* pLastCoeffIndex, Zan32s separateDCFlag) {
    if (!ppBitStream || !pBitOffset || !*ppBitStream || !pCoeffs || !pLastCoeffIndex) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    const Zan16s dc = pCoeffs[0];
    clear_block(pCoeffs);
    *pLastCoeffIndex = separateDCFlag ? 0 : -1;
    const ZanStatus st = decodeRvlcB(ppBitStream, pBitOffset, pCoeffs, pLastCoeffIndex, tableB23_Intra);
    if (separateDCFlag) pCoeffs[0] = dc;
    return st;
}

ZanStatus zaniDecodeCoeffsInterRVLCBack_MPEG4_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                                    Zan32s* pLastCoeffIndex) {
    if (!ppBitStream || !pBitOffset || !*ppBitStream || !pCoeffs || !pLastCoeffIndex) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    clear_block(pCoeffs);
    *pLastCoeffIndex = -1;
    return decodeRvlcB(ppBitStream, pBitOffset, pCoeffs, pLastCoeffIndex, tableB23_Inter);
}

ZanStatus zaniReconstructCoeffsInter_MPEG4_1u16s(Zan8u** ppBitStream, Zan32s* pBitOffset, Zan16s* pCoeffs,
                                                 Zan32s* pLastCoeffIndex, Zan32s rvlcFlag, Zan32s scan,
                                                 const ZanQuantInvSpec_MPEG4* pQuantInvInterSpec, Zan32s QP) {
    if (!ppBitStream || !pBitOffset || !*ppBitStream || !pCoeffs || !pLastCoeffIndex) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    const Zan8u* sc = scan == 1 ? ownvc_AltScanV : ownvc_Zigzag;
    if (rvlcFlag) {
        *pLastCoeffIndex = -1;
        clear_block(pCoeffs);
        const ZanStatus st = decodeRvlcF(ppBitStream, pBitOffset, pCoeffs, pLastCoeffIndex, tableB23_Inter, sc);
        if (st != zanStsOk) return st;
        return quant263::inv_inter_mpeg4(pCoeffs, 63, pQuantInvInterSpec, QP);
    }
    if (!pQuantInvInterSpec) return zanStsNullPtr;
    const ZanQuantInvSpec_MPEG4* rec = zan::quant263::placed(pQuantInvInterSpec);
    if (rec->identifier != ZAN_QUANT_INV_INTER_SPEC_ID) return zanStsContextMismatch;
    const Zan32s depth = rec->sampleDepth;
    // A record whose depth lies outside 4..12 (not one Init made) has no
    // quantiser range: every QP is out of it.
    if (depth < 4 || depth > 12 || QP < 1 || QP > zan::quant263::kQuantMax[depth - 4]) return zanStsQpBad;
    const zan::quant263::Limits lim = zan::quant263::depth_limits(depth);
    clear_block(pCoeffs);
    if (rec->useWeights) {
        StoreMp4Weighted store{rec->weights, QP, lim.lo, lim.hi, 0};
        return decodeMp4(ppBitStream, pBitOffset, pCoeffs, pLastCoeffIndex, -1, false, sc, store);
    }
    StoreMp4Plain store{2 * QP, (QP & 1) ? QP : QP - 1, lim.lo, lim.hi};
    return decodeMp4(ppBitStream, pBitOffset, pCoeffs, pLastCoeffIndex, -1, false, sc, store);
}

}  // namespace zan::ZAN_PATH
