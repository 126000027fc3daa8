// H.261, H.263 and MPEG-4 coefficient encoding: one 8x8 block of levels in
// raster order, read through a scan, written to the byte cursor as
// run-level codes (ByteWriter, bytecursor.h: the first touched byte keeps
// its bits above the offset, later bytes are assigned).
//
// Like the decoders these are bit-stream writers with no vector kernel worth
// writing; the scalar code is the implementation.  The caller gives the
// number of nonzero levels, and the coefficient that reaches that count is
// coded as the last; a block that holds fewer ends at index 64 with no last
// flag written.
#include "common/scan_tables.h"
#include "h26x_mpeg4/bytecursor.h"
#include "h26x_mpeg4/coeftables.h"

namespace zan::ZAN_PATH {
namespace coef {
namespace {

inline Zan32u magnitude(Zan32s v) { return static_cast<Zan32u>(v < 0 ? -v : v); }

// A table code with its sign bit behind it.
inline void put_row(ByteWriter& w, const Code& row, Zan32s v) {
    w.put((static_cast<Zan32u>(row.code) << 1) | (v < 0 ? 1u : 0u), row.len + 1);
}

// ---------------------------------------------------------------- H.263

// Plain: the 22-bit escape carries the low 8 bits of any level.  ModQ:
// levels of magnitude 128 and above take the extended escape, level
// 1000 0000 and then bits 0..4 and 5..10 of the level.
template <bool ModQ>
void encode263(const Zan16s* pCoeffs, ByteWriter& w, Zan32s count, const Code* rows, const EncIndex& idx, Zan32s s,
               const Zan8u* scan) {
    Zan32s run = 0, seen = 0;
    for (Zan32s i = s; i < 64; ++i) {
        const Zan32s v = pCoeffs[scan ? scan[i] : i];
        if (v == 0) {
            ++run;
            continue;
        }
        const Zan32s last = ++seen == count ? 1 : 0;
        const Zan32u m = magnitude(v);
        const int row = (ModQ && m >= 128) ? -1 : enc_row(idx, last, run, m);
        if (row >= 0) {
            put_row(w, rows[row], v);
        } else if (ModQ && m >= 128) {
            w.put((3u << 15) | (static_cast<Zan32u>(last) << 14) | (static_cast<Zan32u>(run) << 8) | 0x80u, 22);
            const Zan32u u = static_cast<Zan32u>(v);
            w.put(((u & 31u) << 6) | ((u >> 5) & 63u), 11);
        } else {
            w.put((3u << 15) | (static_cast<Zan32u>(last) << 14) | (static_cast<Zan32u>(run) << 8) |
                      (static_cast<Zan32u>(v) & 255u),
                  22);
        }
        if (last) return;
        run = 0;
    }
}

// ---------------------------------------------------------------- H.261

void encode261(const Zan16s* pCoeffs, ByteWriter& w, Zan32s count, bool inter, const Zan8u* scan) {
    Zan32s run = 0, seen = inter ? 0 : 1, i = inter ? 0 : 1;
    if (inter) {
        const Zan32s v = pCoeffs[0];
        if (v == 1 || v == -1) {
            w.put(v < 0 ? 3u : 2u, 2);  // the short first code 1s
            ++seen;
            i = 1;
        }
    }
    for (; i < 64 && seen < count; ++i) {
        const Zan32s v = pCoeffs[scan ? scan[i] : i];
        if (v == 0) {
            ++run;
            continue;
        }
        ++seen;
        const int row = enc_row(h261_VLCParams, 0, run, magnitude(v));
        if (row >= 0) {
            put_row(w, kH261Tcoef[row], v);
        } else {
            w.put((1u << 14) | (static_cast<Zan32u>(run) << 8) | (static_cast<Zan32u>(v) & 255u), 20);
        }
        run = 0;
    }
    w.put(2u, 2);  // end of block: 10
}

// ---------------------------------------------------------------- MPEG-4

// The escape of the VLC tables, 0000011.
inline constexpr Zan32u kEsc = 3;

void encodeMp4Vlc(const Zan16s* pCoeffs, ByteWriter& w, Zan32s count, bool intra, Zan32s s, const Zan8u* scan) {
    const Code* rows = intra ? kMpeg4Intra : kH263Tcoef;
    const EncIndex& idx = intra ? mVLC_TB16 : h263_VLCParams;
    const Maxima& mx = intra ? kMaxIntra : kMaxInter;
    Zan32s run = 0, seen = 0;
    for (Zan32s i = s; i < 64; ++i) {
        const Zan32s v = pCoeffs[scan ? scan[i] : i];
        if (v == 0) {
            ++run;
            continue;
        }
        const Zan32s last = ++seen == count ? 1 : 0;
        const Zan32u m = magnitude(v);
        int row = enc_row(idx, last, run, m);
        if (row >= 0) {
            put_row(w, rows[row], v);
        } else {
            const Zan32u lmax = run <= idx.maxRun[last] ? mx.lmax[last][run] : 0;
            if (lmax && m > lmax && m <= 2 * lmax && (row = enc_row(idx, last, run, m - lmax)) >= 0) {
                w.put(kEsc << 1, 8);  // type 1: escape, 0
                put_row(w, rows[row], v);
            } else if (m <= mx.maxLevel[last] && run >= mx.rmax[last][m] &&
                       (row = enc_row(idx, last, run - mx.rmax[last][m], m)) >= 0) {
                w.put((kEsc << 2) | 2u, 9);  // type 2: escape, 10
                put_row(w, rows[row], v);
            } else {
                // Type 3: escape, 11, last, run (6), 1, level (12), 1.
                w.put((kEsc << 2) | 3u, 9);
                w.put((static_cast<Zan32u>(last) << 20) | (static_cast<Zan32u>(run) << 14) | (1u << 13) |
                          ((static_cast<Zan32u>(v) & 0xFFFu) << 1) | 1u,
                      21);
            }
        }
        if (last) return;
        run = 0;
    }
}

void encodeMp4Rvlc(const Zan16s* pCoeffs, ByteWriter& w, Zan32s count, bool intra, Zan32s s, const Zan8u* scan) {
    const Code* rows = intra ? kRvlcIntra : kRvlcInter;
    const EncIndex& idx = intra ? mVLC_TB23a : mVLC_TB23b;
    Zan32s run = 0, seen = 0;
    for (Zan32s i = s; i < 64; ++i) {
        const Zan32s v = pCoeffs[scan ? scan[i] : i];
        if (v == 0) {
            ++run;
            continue;
        }
        const Zan32s last = ++seen == count ? 1 : 0;
        const Zan32u m = magnitude(v);
        const int row = enc_row(idx, last, run, m);
        if (row >= 0) {
            put_row(w, rows[row], v);
        } else {
            // 00001, last, run (6), 1, |level| (11), 1, 0000, sign.
            w.put((1u << 25) | (static_cast<Zan32u>(last) << 24) | (static_cast<Zan32u>(run) << 18) | (1u << 17) |
                      ((m & 2047u) << 6) | (1u << 5) | (v < 0 ? 1u : 0u),
                  30);
        }
        if (last) return;
        run = 0;
    }
}

inline bool bad_cursor(Zan8u** pp, Zan32s* po) { return !pp || !po || !*pp; }

}  // namespace
}  // namespace coef

using namespace coef;

ZanStatus zaniEncodeDCIntra_H263_16s1u(Zan16s dc, Zan8u** ppBitStream, Zan32s* pBitOffset) {
    if (bad_cursor(ppBitStream, pBitOffset)) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    ByteWriter w(*ppBitStream, *pBitOffset);
    w.put(dc == 128 ? 255u : static_cast<Zan32u>(dc) & 255u, 8);
    w.store(ppBitStream, pBitOffset);
    return zanStsOk;
}

ZanStatus zaniEncodeCoeffsIntra_H263_16s1u(const Zan16s* pCoeffs, Zan8u** ppBitStream, Zan32s* pBitOffset,
                                           Zan32s countNonZero, Zan32s advIntraFlag, Zan32s modQuantFlag,
                                           Zan32s scan) {
    if (!pCoeffs || bad_cursor(ppBitStream, pBitOffset)) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    if (countNonZero < 1 || countNonZero > 64) return zanStsOutOfRange;
    const Zan8u* sc = scan == 0 ? ownvc_Zigzag : scan == 1 ? ownvc_AltScanV : scan == 2 ? ownvc_AltScanH : nullptr;
    const Code* rows = advIntraFlag ? kH263AdvIntra : kH263Tcoef;
    const EncIndex& idx = advIntraFlag ? h263_advVLCParams : h263_VLCParams;
    const Zan32s s = advIntraFlag ? 0 : 1;
    ByteWriter w(*ppBitStream, *pBitOffset);
    if (modQuantFlag)
        encode263<true>(pCoeffs, w, countNonZero, rows, idx, s, sc);
    else
        encode263<false>(pCoeffs, w, countNonZero, rows, idx, s, sc);
    w.store(ppBitStream, pBitOffset);
    return zanStsOk;
}

ZanStatus zaniEncodeCoeffsInter_H263_16s1u(const Zan16s* pCoeffs, Zan8u** ppBitStream, Zan32s* pBitOffset,
                                           Zan32s countNonZero, Zan32s modQuantFlag, Zan32s scan) {
    if (!pCoeffs || bad_cursor(ppBitStream, pBitOffset)) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    if (countNonZero < 1 || countNonZero > 64) return zanStsOutOfRange;
    const Zan8u* sc = scan == 0 ? ownvc_Zigzag : scan == 1 ? ownvc_AltScanV : scan == 2 ? ownvc_AltScanH : nullptr;
    ByteWriter w(*ppBitStream, *pBitOffset);
    if (modQuantFlag)
        encode263<true>(pCoeffs, w, countNonZero, kH263Tcoef, h263_VLCParams, 0, sc);
    else
        encode263<false>(pCoeffs, w, countNonZero, kH263Tcoef, h263_VLCParams, 0, sc);
    w.store(ppBitStream, pBitOffset);
    return zanStsOk;
}

ZanStatus zaniEncodeCoeffsIntra_H261_16s1u(const Zan16s* pCoeffs, Zan8u** ppBitStream, Zan32s* pBitOffset,
                                           Zan32s countNonZero, Zan32s scan) {
    if (!pCoeffs || bad_cursor(ppBitStream, pBitOffset)) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    if (countNonZero < 1 || countNonZero > 64) return zanStsOutOfRange;
    ByteWriter w(*ppBitStream, *pBitOffset);
    const Zan32s dc = pCoeffs[0];
    w.put(dc == 128 ? 255u : static_cast<Zan32u>(dc) & 255u, 8);
    if (countNonZero == 1)
        w.put(2u, 2);
    else
        encode261(pCoeffs, w, countNonZero, false, scan == -1 ? nullptr : ownvc_Zigzag);
    w.store(ppBitStream, pBitOffset);
    return zanStsOk;
}

ZanStatus zaniEncodeCoeffsInter_H261_16s1u(const Zan16s* pCoeffs, Zan8u** ppBitStream, Zan32s* pBitOffset,
                                           Zan32s countNonZero, Zan32s scan) {
    if (!pCoeffs || bad_cursor(ppBitStream, pBitOffset)) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    if (countNonZero < 1 || countNonZero > 64) return zanStsOutOfRange;
    ByteWriter w(*ppBitStream, *pBitOffset);
    encode261(pCoeffs, w, countNonZero, true, scan == -1 ? nullptr : ownvc_Zigzag);
    w.store(ppBitStream, pBitOffset);
    return zanStsOk;
}

ZanStatus zaniEncodeDCIntra_MPEG4_16s1u(Zan16s dc, Zan8u** ppBitStream, Zan32s* pBitOffset, Zan32s chromaFlag) {
    if (bad_cursor(ppBitStream, pBitOffset)) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    const Zan32u m = magnitude(dc);
    Zan32s size = 0;
    while (size < 16 && (m >> size) != 0) ++size;
    // Sizes above 12 have no code: the largest size is written with the
    // low 12 bits of the value.
    if (size > 12) size = 12;
    const DcCode& code = (chromaFlag ? kDcSizeChroma : kDcSizeLuma)[size];
    ByteWriter w(*ppBitStream, *pBitOffset);
    w.put(code.code, code.len);
    if (size > 0) {
        const Zan32s bits = dc > 0 ? dc : dc + (1 << size) - 1;
        w.put(static_cast<Zan32u>(bits), size);
        if (size >= 9) w.put(1u, 1);
    }
    w.store(ppBitStream, pBitOffset);
    return zanStsOk;
}

ZanStatus zaniEncodeCoeffsIntra_MPEG4_16s1u(const Zan16s* pCoeffs, Zan8u** ppBitStream, Zan32s* pBitOffset,
                                            Zan32s countNonZero, Zan32s rvlcFlag, Zan32s separateDCFlag,
                                            Zan32s scan) {
    if (!pCoeffs || bad_cursor(ppBitStream, pBitOffset)) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    if (countNonZero < 1 || countNonZero > (separateDCFlag ? 63 : 64)) return zanStsOutOfRange;
    const Zan8u* sc = scan == 0 ? ownvc_Zigzag : scan == 1 ? ownvc_AltScanV : scan == 2 ? ownvc_AltScanH : nullptr;
    const Zan32s s = separateDCFlag ? 1 : 0;
    ByteWriter w(*ppBitStream, *pBitOffset);
    if (rvlcFlag)
        encodeMp4Rvlc(pCoeffs, w, countNonZero, true, s, sc);
    else
        encodeMp4Vlc(pCoeffs, w, countNonZero, true, s, sc);
    w.store(ppBitStream, pBitOffset);
    return zanStsOk;
}

ZanStatus zaniEncodeCoeffsInter_MPEG4_16s1u(const Zan16s* pCoeffs, Zan8u** ppBitStream, Zan32s* pBitOffset,
                                            Zan32s countNonZero, Zan32s rvlcFlag, Zan32s scan) {
    if (!pCoeffs || bad_cursor(ppBitStream, pBitOffset)) return zanStsNullPtr;
    if (static_cast<Zan32u>(*pBitOffset) > 7) return zanStsBitOffsetBad;
    if (countNonZero < 1 || countNonZero > 64) return zanStsOutOfRange;
    const Zan8u* sc = scan == -1 ? nullptr : scan == 1 ? ownvc_AltScanV : ownvc_Zigzag;
    ByteWriter w(*ppBitStream, *pBitOffset);
    if (rvlcFlag)
        encodeMp4Rvlc(pCoeffs, w, countNonZero, false, 0, sc);
    else
        encodeMp4Vlc(pCoeffs, w, countNonZero, false, 0, sc);
    w.store(ppBitStream, pBitOffset);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
