// H.264 macroblock reconstruction: prediction and residual, block by block,
// for luma and chroma macroblocks of the three generations of interface.
//
// The work per block is that of the predictors (h264intra.h, and the 16-bit
// ones of h264recon.h) and of the block transforms (h264inv.h), which carry
// the vector kernels; what this file adds is the walk over the macroblock,
// the coefficient cursor, the pattern bits, the neighbour availability of
// each block and the argument checks.  The walk is plain code: it is a
// handful of branches per 4x4 block around kernels of tens of instructions.
#include <algorithm>
#include <cstring>

#include <emmintrin.h>

#include "common/path.h"
#include "h264/h264intra.h"
#include "h264/h264inv.h"
#include "h264/h264recon.h"

namespace zan::ZAN_PATH::h264recon {
namespace {

// ---------------------------------------------------------------- edges
//
// Edge-type word: bits set when the neighbouring macroblock is absent.
enum : Zan32u { kEdgeLeft = 1, kEdgeAbove = 4, kEdgeCorner = 16, kEdgeAboveRight = 32 };
// Availability word of the predictors: bits set when present.
enum : Zan32s { kAvAbove = 1, kAvLeft = 2, kAvCorner = 32, kAvAboveRight = 64 };

// The availability of a whole 16x16 or chroma block.
Zan32s avail_mb(Zan32u e) {
    return (e & kEdgeAbove ? 0 : kAvAbove) | (e & kEdgeLeft ? 0 : kAvLeft) | (e & kEdgeCorner ? 0 : kAvCorner);
}

// The availability of 4x4 block n (coding order).
Zan32s avail4x4(int n, Zan32u e) {
    const bool noA = e & kEdgeAbove, noL = e & kEdgeLeft;
    switch (n) {
        case 0: return (noA ? 0 : 65) + (noL ? 0 : 2) + (e & kEdgeCorner ? 0 : 32);
        case 1: case 4: return noA ? 2 : 99;
        case 2: case 8: case 10: return noL ? 65 : 99;
        case 5: return (noA ? 0 : 33) + 2 + (e & kEdgeAboveRight ? 0 : 64);
        case 3: case 7: case 11: case 13: case 15: return 35;
        default: return 99;
    }
}

// The availability of 8x8 block b (raster order).
Zan32s avail8x8(int b, Zan32u e) {
    const bool noA = (b < 2) && (e & kEdgeAbove), noL = !(b & 1) && (e & kEdgeLeft);
    bool corner = b == 0 ? !(e & kEdgeCorner) : !(noA || noL);
    bool aboveRight = b == 3 ? false : b == 1 ? !(e & kEdgeAboveRight) : !noA;
    return (noA ? 0 : kAvAbove) | (noL ? 0 : kAvLeft) | (corner ? kAvCorner : 0) | (aboveRight ? kAvAboveRight : 0);
}

// Whether the 16x16 mode (0 vertical, 1 horizontal, 2 DC, 3 plane) has its edges.
bool edges_ok_16x16(Zan32u mode, Zan32u e) {
    switch (mode) {
        case 0: return !(e & kEdgeAbove);
        case 1: return !(e & kEdgeLeft);
        case 3: return !(e & (kEdgeLeft | kEdgeAbove | kEdgeCorner));
        default: return true;
    }
}
// Whether the chroma mode (0 DC, 1 horizontal, 2 vertical, 3 plane) has its edges.
bool edges_ok_chroma(Zan32u mode, Zan32u e) {
    switch (mode) {
        case 1: return !(e & kEdgeLeft);
        case 2: return !(e & kEdgeAbove);
        case 3: return !(e & (kEdgeLeft | kEdgeAbove | kEdgeCorner));
        default: return true;
    }
}

// Raster position of 4x4 block n of the coding order, in samples.
inline int blk_x(int n) { return (::zan::h264intra::kBlockSubblockMapping[n] & 3) * 4; }
inline int blk_y(int n) { return (::zan::h264intra::kBlockSubblockMapping[n] >> 2) * 4; }

bool qp_bad(Zan32s qp, Zan32s hi) { return static_cast<Zan32u>(qp) > static_cast<Zan32u>(hi); }

// ---------------------------------------------------------------- depths
//
// Two sample depths share the walks below.  S is the sample, C the
// coefficient; steps are in samples of S (bytes for 8-bit).

struct Depth8 {
    using S = Zan8u;
    using C = Zan16s;
    bool flat = false;  // the built-in flat scaling of the first generation
    Zan32s maxv() const { return 255; }
    Zan32s pred4x4(Zan32u mode, S* p, Zan32s s, Zan32s av) const {
        return mode <= 8 ? ::zan::ZAN_PATH::h264intra::pred4x4[mode](p, s, av) : 0;
    }
    void pred8x8(Zan32u mode, S* p, Zan32s s, Zan32s av) const {
        ::zan::h264intra::Edge8x8 e;
        ::zan::ZAN_PATH::h264intra::filter_edges_8x8(&e, p, s, av);
        ::zan::ZAN_PATH::h264intra::pred8x8[mode](&e, p, s);
    }
    void pred16x16(Zan32u mode, S* p, Zan32s s, Zan32s av) const {
        ::zan::ZAN_PATH::h264intra::pred16x16[mode](p, s, av);
    }
    // 4x4 residual added in place; dc null for a block with its own DC.
    void add4x4(S* p, Zan32s s, C* c, const C* dc, Zan32s qp, bool ac, const Zan16s* q) const {
        if (flat) h264inv::add4x4_flat(p, s, c, dc, p, s, qp, ac ? 1 : 0);
        else h264inv::add4x4_16s(p, s, c, dc, p, s, qp, ac ? 1 : 0, q);
    }
    void add8x8(S* p, Zan32s s, C* c, Zan32s qp, const Zan16s* q) const {
        h264inv::dequant8x8_16s(c, ::zan::h264inv::kQp.div[qp], q);
        h264inv::add8x8_16s(p, s, c, p, s);
    }
    void luma_dc(C* c, Zan32s qp, const Zan16s* q) const {
        if (flat) h264inv::luma_dc_flat(c, qp, q);
        else h264inv::luma_dc_16s(c, qp, q);
    }
    void chroma_dc(C* c, Zan32s qp, const Zan16s* q) const {
        if (flat) h264inv::chroma_dc_flat(c, qp, q);
        else h264inv::chroma_dc2x2_16s(c, qp, q);
    }
    void chroma_dc422(C* c, Zan32s qp, const Zan16s* q) const { h264inv::chroma_dc2x4_16s(c, qp, q); }
};

struct Depth16 {
    using S = Zan16u;
    using C = Zan32s;
    Zan32s bitDepth = 10;
    Zan32s maxv() const { return static_cast<Zan32s>((1u << (bitDepth & 31)) - 1u); }
    Zan32s pred4x4(Zan32u mode, S* p, Zan32s s, Zan32s av) const {
        return mode <= 8 ? pred4x4_16[mode](p, s, av, bitDepth) : 0;
    }
    void pred8x8(Zan32u mode, S* p, Zan32s s, Zan32s av) const {
        ::zan::ZAN_PATH::h264recon::pred8x8_16(p, s, av, static_cast<Zan32s>(mode), bitDepth);
    }
    void pred16x16(Zan32u mode, S* p, Zan32s s, Zan32s av) const {
        ::zan::ZAN_PATH::h264recon::pred16x16_16(p, s, static_cast<Zan32s>(mode), av, bitDepth);
    }
    void add4x4(S* p, Zan32s s, C* c, const C* dc, Zan32s qp, bool ac, const Zan16s* q) const {
        h264inv::add4x4_32s(p, 2 * s, c, dc, p, 2 * s, qp, ac ? 1 : 0, bitDepth, q);
    }
    void add8x8(S* p, Zan32s s, C* c, Zan32s qp, const Zan16s* q) const {
        h264inv::dequant8x8_32s(c, ::zan::h264inv::kQp.div[qp], q);
        h264inv::add8x8_32s(p, 2 * s, c, p, 2 * s, bitDepth);
    }
    void luma_dc(C* c, Zan32s qp, const Zan16s* q) const { h264inv::luma_dc_32s(c, qp, q); }
    void chroma_dc(C* c, Zan32s qp, const Zan16s* q) const { h264inv::chroma_dc2x2_32s(c, qp, q); }
    void chroma_dc422(C* c, Zan32s qp, const Zan16s* q) const { h264inv::chroma_dc2x4_32s(c, qp, q); }
};

// Untransformed residual (transform bypass): n x n values added to the
// prediction, clamped to the sample range.
template <class D>
void add_bypass(const D& d, typename D::S* p, Zan32s s, const typename D::C* c, int n) {
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x)
            p[y * s + x] = static_cast<typename D::S>(
                std::clamp<Zan64s>(Zan64s{p[y * s + x]} + c[y * n + x], 0, d.maxv()));
}

// A 4x4 block with a separate DC, in bypass: with AC the 16 values with the
// DC at position 0; without, the DC is added to the first sample only.
template <class D>
void add_bypass_dc(const D& d, typename D::S* p, Zan32s s, typename D::C* c, typename D::C dc, bool ac) {
    if (ac) {
        c[0] = dc;
        add_bypass(d, p, s, c, 4);
    } else {
        p[0] = static_cast<typename D::S>(std::clamp<Zan64s>(Zan64s{p[0]} + dc, 0, d.maxv()));
    }
}

// ---------------------------------------------------------------- luma walks

struct LumaArgs {
    Zan32s step;
    Zan32u cbp;
    Zan32s qp;
    const Zan16s* q;
    bool bypass;
};

// 4x4 blocks 0..count-1 in coding order, cbp bit n + 1 for block n.  With
// modes, each block is predicted first; checkModes stops at a mode above 8
// (-11, the cursor not stored).  Returns 11 when a prediction substituted.
template <class D>
ZanStatus luma4x4(const D& d, typename D::C** cursor, typename D::S* base, const LumaArgs& a,
                  const Zan32u* modes, Zan32u edge, int count, bool checkModes) {
    typename D::C* c = *cursor;
    bool subst = false;
    for (int n = 0; n < count; ++n) {
        // Without prediction, blocks go by pairs (n, n + 1): an empty pair is skipped whole.
        if (!modes && !(n & 1) && !(a.cbp & (6u << n))) {
            ++n;
            continue;
        }
        typename D::S* p = base + blk_y(n) * a.step + blk_x(n);
        if (modes) {
            if (checkModes && modes[n] > 8) return zanStsOutOfRange;
            if (d.pred4x4(modes[n], p, a.step, avail4x4(n, edge))) subst = true;
        }
        if (a.cbp & (2u << n)) {
            if (a.bypass) add_bypass(d, p, a.step, c, 4);
            else d.add4x4(p, a.step, c, nullptr, a.qp, true, a.q);
            c += 16;
        }
    }
    *cursor = c;
    return subst ? zanStsEdgeSubstituted : zanStsOk;
}

// 8x8 blocks 0..count-1 (raster order), cbp bit b.
template <class D>
ZanStatus luma8x8(const D& d, typename D::C** cursor, typename D::S* base, const LumaArgs& a, const Zan32u* modes,
                  Zan32u edge, int count) {
    typename D::C* c = *cursor;
    for (int b = 0; b < count; ++b) {
        typename D::S* p = base + (b >> 1) * 8 * a.step + (b & 1) * 8;
        if (modes) {
            if (modes[b] > 8) return zanStsOutOfRange;
            d.pred8x8(modes[b], p, a.step, avail8x8(b, edge));
        }
        if (a.cbp & (1u << b)) {
            if (a.bypass) add_bypass(d, p, a.step, c, 8);
            else d.add8x8(p, a.step, c, a.qp, a.q);
            c += 64;
        }
    }
    *cursor = c;
    return zanStsOk;
}

// The residual of an Intra 16x16 macroblock over its prediction.
template <class D>
void luma16x16_residual(const D& d, typename D::C** cursor, typename D::S* base, const LumaArgs& a) {
    if (!(a.cbp & 0x1ffff)) return;
    typename D::C* c = *cursor;
    typename D::C zero[16] = {};
    typename D::C* dc = zero;
    if (a.cbp & 1) {
        dc = c;
        if (!a.bypass) d.luma_dc(dc, a.qp, a.q);
        c += 16;
    }
    for (int n = 0; n < 16; ++n) {
        typename D::S* p = base + blk_y(n) * a.step + blk_x(n);
        const typename D::C v = dc[::zan::h264intra::kBlockSubblockMapping[n]];
        const bool ac = a.cbp & (2u << n);
        if (a.bypass) add_bypass_dc(d, p, a.step, c, v, ac);
        else d.add4x4(p, a.step, ac ? c : zero, &v, a.qp, ac, a.q);
        if (ac) c += 16;
    }
    *cursor = c;
}

// ---------------------------------------------------------------- chroma

// One chroma plane of a call: samples (planar, or one component of an
// interleaved row with its samples 2 apart), pattern, QP, scale row, bypass.
template <class D>
struct ChromaPlane {
    D d;
    typename D::S* p;
    Zan32s step;
    Zan32s pitch;  // 1 planar, 2 interleaved
    bool dc;       // the DC block is coded
    Zan32u ac;     // AC bits, block k at bit k
    Zan32s qp;
    const Zan16s* q;
    bool bypass;
    Zan16s dcScale;  // 4:2:2: the DC stage's scale
};

// The residual of both chroma planes: U DC, V DC, U AC blocks, V AC blocks
// in the stream.  blocks: 4 (4:2:0) or 8 (4:2:2).
template <class D>
void chroma_residual(typename D::C** cursor, ChromaPlane<D>* pl, int blocks) {
    using C = typename D::C;
    C* c = *cursor;
    C dcs[2][8] = {};
    for (int k = 0; k < 2; ++k) {
        ChromaPlane<D>& P = pl[k];
        const D& d = P.d;
        if (!P.dc) continue;
        if (blocks == 4) {
            if (!P.bypass) d.chroma_dc(c, P.qp, P.q);
            for (int i = 0; i < 4; ++i) dcs[k][i] = c[i];
        } else {
            // The 4:2:2 DC values come in raster order of four rows by two
            // columns, as the CAVLC decoder lays them.
            C r[8];
            for (int i = 0; i < 8; ++i) r[i] = c[i];
            if (!P.bypass) d.chroma_dc422(r, P.qp, &P.dcScale);
            for (int i = 0; i < 8; ++i) c[i] = dcs[k][i] = r[i];
        }
        c += blocks;
    }
    // The AC blocks' places in the stream: all of U's, then all of V's.
    C* acp[2][8] = {};
    for (int k = 0; k < 2; ++k)
        for (int b = 0; b < blocks; ++b)
            if (pl[k].ac & (1u << b)) {
                acp[k][b] = c;
                c += 16;
            }
    auto run = [&](int k, int b, typename D::S* q, Zan32s s) {
        ChromaPlane<D>& P = pl[k];
        C zero[16] = {};
        C* coef = acp[k][b] ? acp[k][b] : zero;
        if (P.bypass) add_bypass_dc(P.d, q, s, coef, dcs[k][b], acp[k][b] != nullptr);
        else P.d.add4x4(q, s, coef, &dcs[k][b], P.qp, acp[k][b] != nullptr, P.q);
    };
    if constexpr (sizeof(typename D::S) == 1) {
        if (pl[0].pitch == 2) {
            // Interleaved: both components of a block are split into two
            // 4x4 blocks at once, reconstructed, and woven back.
            const __m128i lowBytes = _mm_set1_epi16(0x00ff);
            for (int b = 0; b < blocks; ++b) {
                Zan8u* p = pl[0].p + (b >> 1) * 4 * pl[0].step + (b & 1) * 8;
                const Zan32s step = pl[0].step;
                alignas(16) Zan8u t[2][16];
                __m128i rows = _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)),
                                          _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + step)));
                __m128i rows2 = _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + 2 * step)),
                                                   _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + 3 * step)));
                __m128i u = _mm_packus_epi16(_mm_and_si128(rows, lowBytes), _mm_and_si128(rows2, lowBytes));
                __m128i v = _mm_packus_epi16(_mm_srli_epi16(rows, 8), _mm_srli_epi16(rows2, 8));
                _mm_store_si128(reinterpret_cast<__m128i*>(t[0]), u);
                _mm_store_si128(reinterpret_cast<__m128i*>(t[1]), v);
                run(0, b, t[0], 4);
                run(1, b, t[1], 4);
                u = _mm_load_si128(reinterpret_cast<const __m128i*>(t[0]));
                v = _mm_load_si128(reinterpret_cast<const __m128i*>(t[1]));
                __m128i lo = _mm_unpacklo_epi8(u, v), hi = _mm_unpackhi_epi8(u, v);
                _mm_storel_epi64(reinterpret_cast<__m128i*>(p), lo);
                _mm_storel_epi64(reinterpret_cast<__m128i*>(p + step), _mm_unpackhi_epi64(lo, lo));
                _mm_storel_epi64(reinterpret_cast<__m128i*>(p + 2 * step), hi);
                _mm_storel_epi64(reinterpret_cast<__m128i*>(p + 3 * step), _mm_unpackhi_epi64(hi, hi));
            }
            *cursor = c;
            return;
        }
    }
    for (int k = 0; k < 2; ++k)
        for (int b = 0; b < blocks; ++b) {
            ChromaPlane<D>& P = pl[k];
            run(k, b, P.p + (b >> 1) * 4 * P.step + (b & 1) * 4, P.step);
        }
    *cursor = c;
}

// The planes of a Baseline or High call from its cbp word.
template <class D>
void planes_from_cbp(ChromaPlane<D>* pl, Zan32u cbp) {
    pl[0].dc = cbp & (1u << 17);
    pl[1].dc = cbp & (1u << 18);
    pl[0].ac = (cbp >> 19) & 15;
    pl[1].ac = (cbp >> 23) & 15;
}

// ---------------------------------------------------------------- 8-bit chroma prediction

// Planar (pitch 1) or interleaved 8x8 prediction of both planes; the mode's
// edges have been checked.  A mode above 3 predicts nothing.
void predict_chroma8(Zan8u* u, Zan8u* v, Zan32s step, Zan32u mode, Zan32u edge, bool interleaved) {
    if (mode > 3) return;
    const Zan32s av = avail_mb(edge);
    if (interleaved) {
        ::zan::ZAN_PATH::h264intra::chroma_nv12[mode](u, step, av);
    } else {
        ::zan::ZAN_PATH::h264intra::chroma[mode](u, step, av);
        ::zan::ZAN_PATH::h264intra::chroma[mode](v, step, av);
    }
}

// The Half modes: 0 (DC, left edge per half) or 2 (vertical).  Returns
// false, writing nothing, for any other mode or for vertical without the
// row above.  kind: 0 planar 8x8, 1 interleaved 8x8, 2 planar 8x16.
bool half_mode_ok(Zan32u mode, Zan32u top, bool only_dc) {
    if (mode == 0) return true;
    return !only_dc && mode == 2 && !(top & kEdgeAbove);
}
void predict_chroma8_half(Zan8u* u, Zan8u* v, Zan32s step, Zan32u mode, Zan32u top, Zan32u bottom, int kind) {
    const Zan32s avTop = avail_mb(top), avBottom = avail_mb(bottom);
    if (mode == 0) {
        ::zan::ZAN_PATH::h264intra::chroma_dc_split[kind](u, step, avTop, avBottom);
        if (kind != 1) ::zan::ZAN_PATH::h264intra::chroma_dc_split[kind](v, step, avTop, avBottom);
    } else {
        predict_chroma8(u, v, step, 2, top, kind == 1);
    }
}

}  // namespace
}  // namespace zan::ZAN_PATH::h264recon

// =============================================================== exports

namespace zan::ZAN_PATH {

using namespace h264recon;

namespace {

h264recon::Depth8 flat8() {
    Depth8 d;
    d.flat = true;
    return d;
}

LumaArgs luma_args(Zan32s step, Zan32u cbp, Zan32s qp, const Zan16s* q, Zan8u bypass) {
    return LumaArgs{step, cbp, qp, q, bypass != 0 && qp == 0};
}

// ---- Baseline and High chroma flows

ZanStatus chroma_inter8(Zan16s** pp, Zan8u* u, Zan8u* v, Zan32s step, bool interleaved, Zan32u cbp, Zan32s qpu,
                        Zan32s qpv, const Zan16s* qu, const Zan16s* qv, Zan8u bypass, bool flat) {
    if (qp_bad(qpu, 39) || qp_bad(qpv, 39)) return zanStsOutOfRange;
    if (!(cbp & 0x7fe0000)) return zanStsOk;
    Depth8 d;
    d.flat = flat;
    ChromaPlane<Depth8> pl[2] = {{d, u, step, interleaved ? 2 : 1, false, 0, qpu, qu, bypass && qpu == 0, 0},
                                 {d, v, step, interleaved ? 2 : 1, false, 0, qpv, qv, bypass && qpv == 0, 0}};
    planes_from_cbp(pl, cbp);
    chroma_residual(pp, pl, 4);
    return zanStsOk;
}

}  // namespace

// ------------------------------------------------------------ Baseline luma

ZanStatus zaniReconstructLumaIntraMB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY, Zan32s srcDstStep,
                                                    const Zan32u* pMBIntraTypes, Zan32u cbp, Zan32s QP,
                                                    Zan8u edgeType) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstY || !pMBIntraTypes) return zanStsNullPtr;
    if (qp_bad(QP, 51)) return zanStsOutOfRange;
    return luma4x4(flat8(), ppSrcDstCoeff, pSrcDstY, luma_args(srcDstStep, cbp, QP, nullptr, 0), pMBIntraTypes,
                   edgeType, 16, false);
}

ZanStatus zaniReconstructLumaIntraHalfMB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY, Zan32s srcDstStep,
                                                        const Zan32u* pMBIntraTypes, Zan32u cbp, Zan32s QP,
                                                        Zan8u edgeType) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstY || !pMBIntraTypes) return zanStsNullPtr;
    if (qp_bad(QP, 51)) return zanStsOutOfRange;
    if (srcDstStep < 1) return zanStsStepBad;
    return luma4x4(flat8(), ppSrcDstCoeff, pSrcDstY, luma_args(srcDstStep, cbp, QP, nullptr, 0), pMBIntraTypes,
                   edgeType, 8, true);
}

namespace {
template <class D>
ZanStatus intra16x16(const D& d, typename D::C** pp, typename D::S* p, const LumaArgs& a, Zan32u mode, Zan32u edge) {
    if (mode > 3) return zanStsOutOfRange;
    if (!edges_ok_16x16(mode, edge)) return zanStsEdgeUnavailable;
    d.pred16x16(mode, p, a.step, avail_mb(edge));
    luma16x16_residual(d, pp, p, a);
    return zanStsOk;
}
}  // namespace

ZanStatus zaniReconstructLumaIntra16x16MB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY, Zan32s srcDstStep,
                                                         Zan32u mode, Zan32u cbp, Zan32s QP, Zan8u edgeType) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstY) return zanStsNullPtr;
    if (qp_bad(QP, 51)) return zanStsOutOfRange;
    return intra16x16(flat8(), ppSrcDstCoeff, pSrcDstY, luma_args(srcDstStep, cbp, QP, nullptr, 0), mode, edgeType);
}

ZanStatus zaniReconstructLumaInterMB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY, Zan32s srcDstStep,
                                                    Zan32u cbp, Zan32s QP) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstY) return zanStsNullPtr;
    if (qp_bad(QP, 51)) return zanStsOutOfRange;
    if (!(cbp & 0x1fffe)) return zanStsOk;
    return luma4x4(flat8(), ppSrcDstCoeff, pSrcDstY, luma_args(srcDstStep, cbp, QP, nullptr, 0), nullptr, 0, 16,
                   false);
}

// ------------------------------------------------------------ Baseline chroma

ZanStatus zaniReconstructChromaIntraMB_H264_16s8u_P2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUPlane,
                                                      Zan8u* pSrcDstVPlane, Zan32u srcDstStep, Zan32u mode,
                                                      Zan32u cbp, Zan32s QP, Zan8u edgeType) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstUPlane || !pSrcDstVPlane) return zanStsNullPtr;
    if (qp_bad(QP, 39)) return zanStsOutOfRange;
    if (mode > 3) return zanStsOutOfRange;
    if (!edges_ok_chroma(mode, edgeType)) return zanStsEdgeUnavailable;
    const Zan32s step = static_cast<Zan32s>(srcDstStep);
    predict_chroma8(pSrcDstUPlane, pSrcDstVPlane, step, mode, edgeType, false);
    return chroma_inter8(ppSrcDstCoeff, pSrcDstUPlane, pSrcDstVPlane, step, false, cbp, QP, QP, nullptr, nullptr, 0,
                         true);
}

ZanStatus zaniReconstructChromaIntraMB_H264_16s8u_C2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUV, Zan32u srcDstStep,
                                                      Zan32u mode, Zan32u cbp, Zan32s QP, Zan8u edgeType) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstUV) return zanStsNullPtr;
    if (qp_bad(QP, 39)) return zanStsOutOfRange;
    const Zan32s step = static_cast<Zan32s>(srcDstStep);
    if (step < 1) return zanStsStepBad;
    if (!edges_ok_chroma(mode, edgeType)) return zanStsEdgeUnavailable;
    predict_chroma8(pSrcDstUV, nullptr, step, mode, edgeType, true);
    return chroma_inter8(ppSrcDstCoeff, pSrcDstUV, pSrcDstUV + 1, step, true, cbp, QP, QP, nullptr, nullptr, 0, true);
}

ZanStatus zaniReconstructChromaIntraHalfsMB_H264_16s8u_P2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUPlane,
                                                           Zan8u* pSrcDstVPlane, Zan32u srcDstStep, Zan32u mode,
                                                           Zan32u cbp, Zan32s QP, Zan8u edgeTypeTop,
                                                           Zan8u edgeTypeBottom) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstUPlane || !pSrcDstVPlane) return zanStsNullPtr;
    if (qp_bad(QP, 51)) return zanStsOutOfRange;
    if (!half_mode_ok(mode, edgeTypeTop, false)) return zanStsEdgeUnavailable;
    const Zan32s step = static_cast<Zan32s>(srcDstStep);
    predict_chroma8_half(pSrcDstUPlane, pSrcDstVPlane, step, mode, edgeTypeTop, edgeTypeBottom, 0);
    return zaniReconstructChromaInterMB_H264_16s8u_P2R(ppSrcDstCoeff, pSrcDstUPlane, pSrcDstVPlane, srcDstStep, cbp,
                                                       QP);
}

ZanStatus zaniReconstructChromaIntraHalvesMB_H264_16s8u_P2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUPlane,
                                                            Zan8u* pSrcDstVPlane, Zan32u srcDstStep, Zan32u mode,
                                                            Zan32u cbp, Zan32s QP, Zan8u edgeTypeTop,
                                                            Zan8u edgeTypeBottom) {
    return zaniReconstructChromaIntraHalfsMB_H264_16s8u_P2R(ppSrcDstCoeff, pSrcDstUPlane, pSrcDstVPlane, srcDstStep,
                                                            mode, cbp, QP, edgeTypeTop, edgeTypeBottom);
}

ZanStatus zaniReconstructChromaIntraHalvesMB_H264_16s8u_C2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUV,
                                                            Zan32u srcDstStep, Zan32u mode, Zan32u cbp, Zan32s QP,
                                                            Zan8u edgeTypeTop, Zan8u edgeTypeBottom) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstUV) return zanStsNullPtr;
    if (qp_bad(QP, 39)) return zanStsOutOfRange;
    const Zan32s step = static_cast<Zan32s>(srcDstStep);
    if (step < 1) return zanStsStepBad;
    if (!half_mode_ok(mode, edgeTypeTop, false)) return zanStsEdgeUnavailable;
    predict_chroma8_half(pSrcDstUV, nullptr, step, mode, edgeTypeTop, edgeTypeBottom, 1);
    return chroma_inter8(ppSrcDstCoeff, pSrcDstUV, pSrcDstUV + 1, step, true, cbp, QP, QP, nullptr, nullptr, 0, true);
}

ZanStatus zaniReconstructChromaInterMB_H264_16s8u_P2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUPlane,
                                                      Zan8u* pSrcDstVPlane, Zan32u srcDstStep, Zan32u cbp,
                                                      Zan32s QP) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstUPlane || !pSrcDstVPlane) return zanStsNullPtr;
    return chroma_inter8(ppSrcDstCoeff, pSrcDstUPlane, pSrcDstVPlane, static_cast<Zan32s>(srcDstStep), false, cbp,
                         QP, QP, nullptr, nullptr, 0, true);
}

ZanStatus zaniReconstructChromaInterMB_H264_16s8u_C2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUV, Zan32u srcDstStep,
                                                      Zan32u cbp, Zan32s QP) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstUV) return zanStsNullPtr;
    if (qp_bad(QP, 39)) return zanStsOutOfRange;
    const Zan32s step = static_cast<Zan32s>(srcDstStep);
    if (step < 1) return zanStsStepBad;
    return chroma_inter8(ppSrcDstCoeff, pSrcDstUV, pSrcDstUV + 1, step, true, cbp, QP, QP, nullptr, nullptr, 0, true);
}

// ------------------------------------------------------------ High luma

ZanStatus zaniReconstructLumaIntra4x4MB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY, Zan32s srcDstStep,
                                                       const Zan32u* pMBIntraTypes, Zan32u cbp, Zan32s QP,
                                                       Zan8u edgeType, const Zan16s* pQuantTable, Zan8u bypass) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstY || !pMBIntraTypes || !pQuantTable) return zanStsNullPtr;
    if (qp_bad(QP, 51)) return zanStsOutOfRange;
    return luma4x4(Depth8{}, ppSrcDstCoeff, pSrcDstY, luma_args(srcDstStep, cbp, QP, pQuantTable, bypass),
                   pMBIntraTypes, edgeType, 16, false);
}

ZanStatus zaniReconstructLumaIntraHalf4x4MB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY,
                                                           Zan32s srcDstStep, const Zan32u* pMBIntraTypes, Zan32u cbp,
                                                           Zan32s QP, Zan8u edgeType, const Zan16s* pQuantTable,
                                                           Zan8u bypass) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstY || !pMBIntraTypes || !pQuantTable) return zanStsNullPtr;
    if (qp_bad(QP, 51)) return zanStsOutOfRange;
    return luma4x4(Depth8{}, ppSrcDstCoeff, pSrcDstY, luma_args(srcDstStep, cbp, QP, pQuantTable, bypass),
                   pMBIntraTypes, edgeType, 8, true);
}

ZanStatus zaniReconstructLumaIntra8x8MB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY, Zan32s srcDstStep,
                                                       const Zan32u* pMBIntraTypes, Zan32u cbp, Zan32s QP,
                                                       Zan8u edgeType, const Zan16s* pQuantTable, Zan8u bypass) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstY || !pMBIntraTypes || !pQuantTable) return zanStsNullPtr;
    if (qp_bad(QP, 51)) return zanStsOutOfRange;
    return luma8x8(Depth8{}, ppSrcDstCoeff, pSrcDstY, luma_args(srcDstStep, cbp, QP, pQuantTable, bypass),
                   pMBIntraTypes, edgeType, 4);
}

ZanStatus zaniReconstructLumaIntraHalf8x8MB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY,
                                                           Zan32s srcDstStep, const Zan32u* pMBIntraTypes, Zan32u cbp,
                                                           Zan32s QP, Zan8u edgeType, const Zan16s* pQuantTable,
                                                           Zan8u bypass) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstY || !pMBIntraTypes || !pQuantTable) return zanStsNullPtr;
    if (qp_bad(QP, 51)) return zanStsOutOfRange;
    return luma8x8(Depth8{}, ppSrcDstCoeff, pSrcDstY, luma_args(srcDstStep, cbp, QP, pQuantTable, bypass),
                   pMBIntraTypes, edgeType, 2);
}

ZanStatus zaniReconstructLumaIntra_16x16MB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY,
                                                          Zan32s srcDstStep, Zan32u mode, Zan32u cbp, Zan32s QP,
                                                          Zan8u edgeType, const Zan16s* pQuantTable, Zan8u bypass) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstY || !pQuantTable) return zanStsNullPtr;
    if (qp_bad(QP, 51)) return zanStsOutOfRange;
    return intra16x16(Depth8{}, ppSrcDstCoeff, pSrcDstY, luma_args(srcDstStep, cbp, QP, pQuantTable, bypass), mode,
                      edgeType);
}

ZanStatus zaniReconstructLumaInter4x4MB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY, Zan32u srcDstStep,
                                                       Zan32u cbp, Zan32s QP, const Zan16s* pQuantTable,
                                                       Zan8u bypass) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstY || !pQuantTable) return zanStsNullPtr;
    if (qp_bad(QP, 51)) return zanStsOutOfRange;
    if (!(cbp & 0x1fffe)) return zanStsOk;
    return luma4x4(Depth8{}, ppSrcDstCoeff, pSrcDstY,
                   luma_args(static_cast<Zan32s>(srcDstStep), cbp, QP, pQuantTable, bypass), nullptr, 0, 16, false);
}

ZanStatus zaniReconstructLumaInter8x8MB_H264_16s8u_C1R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstY, Zan32u srcDstStep,
                                                       Zan32u cbp, Zan32s QP, const Zan16s* pQuantTable,
                                                       Zan8u bypass) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstY || !pQuantTable) return zanStsNullPtr;
    if (qp_bad(QP, 51)) return zanStsOutOfRange;
    if (!((cbp << 1) & 0x1fffe)) return zanStsOk;
    return luma8x8(Depth8{}, ppSrcDstCoeff, pSrcDstY,
                   luma_args(static_cast<Zan32s>(srcDstStep), cbp, QP, pQuantTable, bypass), nullptr, 0, 4);
}

// ------------------------------------------------------------ High chroma

ZanStatus zaniReconstructChromaIntra4x4MB_H264_16s8u_P2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUPlane,
                                                         Zan8u* pSrcDstVPlane, Zan32u srcDstStep, Zan32u mode,
                                                         Zan32u cbp, Zan32s QPU, Zan32s QPV, Zan8u edgeType,
                                                         const Zan16s* pQuantTableU, const Zan16s* pQuantTableV,
                                                         Zan8u bypass) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstUPlane || !pSrcDstVPlane || !pQuantTableU || !pQuantTableV)
        return zanStsNullPtr;
    if (qp_bad(QPU, 39) || qp_bad(QPV, 39)) return zanStsOutOfRange;
    if (!edges_ok_chroma(mode, edgeType)) return zanStsEdgeUnavailable;
    const Zan32s step = static_cast<Zan32s>(srcDstStep);
    predict_chroma8(pSrcDstUPlane, pSrcDstVPlane, step, mode, edgeType, false);
    return chroma_inter8(ppSrcDstCoeff, pSrcDstUPlane, pSrcDstVPlane, step, false, cbp, QPU, QPV, pQuantTableU,
                         pQuantTableV, bypass, false);
}

ZanStatus zaniReconstructChromaIntra4x4MB_H264_16s8u_C2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUV, Zan32u srcDstStep,
                                                         Zan32u mode, Zan32u cbp, Zan32s QPU, Zan32s QPV,
                                                         Zan8u edgeType, const Zan16s* pQuantTableU,
                                                         const Zan16s* pQuantTableV, Zan8u bypass) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstUV || !pQuantTableU || !pQuantTableV) return zanStsNullPtr;
    if (qp_bad(QPU, 39) || qp_bad(QPV, 39)) return zanStsOutOfRange;
    const Zan32s step = static_cast<Zan32s>(srcDstStep);
    if (step < 1) return zanStsStepBad;
    if (!edges_ok_chroma(mode, edgeType)) return zanStsEdgeUnavailable;
    predict_chroma8(pSrcDstUV, nullptr, step, mode, edgeType, true);
    return chroma_inter8(ppSrcDstCoeff, pSrcDstUV, pSrcDstUV + 1, step, true, cbp, QPU, QPV, pQuantTableU,
                         pQuantTableV, bypass, false);
}

ZanStatus zaniReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUPlane,
                                                              Zan8u* pSrcDstVPlane, Zan32u srcDstStep, Zan32u mode,
                                                              Zan32u cbp, Zan32s QPU, Zan32s QPV, Zan8u edgeTypeTop,
                                                              Zan8u edgeTypeBottom, const Zan16s* pQuantTableU,
                                                              const Zan16s* pQuantTableV, Zan8u bypass) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstUPlane || !pSrcDstVPlane || !pQuantTableU || !pQuantTableV)
        return zanStsNullPtr;
    if (qp_bad(QPU, 51) || qp_bad(QPV, 51)) return zanStsOutOfRange;
    if (!half_mode_ok(mode, edgeTypeTop, false)) return zanStsEdgeUnavailable;
    const Zan32s step = static_cast<Zan32s>(srcDstStep);
    predict_chroma8_half(pSrcDstUPlane, pSrcDstVPlane, step, mode, edgeTypeTop, edgeTypeBottom, 0);
    return chroma_inter8(ppSrcDstCoeff, pSrcDstUPlane, pSrcDstVPlane, step, false, cbp, QPU, QPV, pQuantTableU,
                         pQuantTableV, bypass, false);
}

ZanStatus zaniReconstructChromaIntraHalves4x4MB_H264_16s8u_P2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUPlane,
                                                               Zan8u* pSrcDstVPlane, Zan32u srcDstStep, Zan32u mode,
                                                               Zan32u cbp, Zan32s QPU, Zan32s QPV, Zan8u edgeTypeTop,
                                                               Zan8u edgeTypeBottom, const Zan16s* pQuantTableU,
                                                               const Zan16s* pQuantTableV, Zan8u bypass) {
    return zaniReconstructChromaIntraHalfs4x4MB_H264_16s8u_P2R(ppSrcDstCoeff, pSrcDstUPlane, pSrcDstVPlane,
                                                               srcDstStep, mode, cbp, QPU, QPV, edgeTypeTop,
                                                               edgeTypeBottom, pQuantTableU, pQuantTableV, bypass);
}

ZanStatus zaniReconstructChromaInter4x4MB_H264_16s8u_P2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUPlane,
                                                         Zan8u* pSrcDstVPlane, Zan32u srcDstStep, Zan32u cbp,
                                                         Zan32s QPU, Zan32s QPV, const Zan16s* pQuantTableU,
                                                         const Zan16s* pQuantTableV, Zan8u bypass) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstUPlane || !pSrcDstVPlane || !pQuantTableU || !pQuantTableV)
        return zanStsNullPtr;
    return chroma_inter8(ppSrcDstCoeff, pSrcDstUPlane, pSrcDstVPlane, static_cast<Zan32s>(srcDstStep), false, cbp,
                         QPU, QPV, pQuantTableU, pQuantTableV, bypass, false);
}

ZanStatus zaniReconstructChromaInter4x4MB_H264_16s8u_C2R(Zan16s** ppSrcDstCoeff, Zan8u* pSrcDstUV, Zan32u srcDstStep,
                                                         Zan32u cbp, Zan32s QPU, Zan32s QPV,
                                                         const Zan16s* pQuantTableU, const Zan16s* pQuantTableV,
                                                         Zan8u bypass) {
    if (!ppSrcDstCoeff || !*ppSrcDstCoeff || !pSrcDstUV || !pQuantTableU || !pQuantTableV) return zanStsNullPtr;
    if (qp_bad(QPU, 39) || qp_bad(QPV, 39)) return zanStsOutOfRange;
    const Zan32s step = static_cast<Zan32s>(srcDstStep);
    if (step < 1) return zanStsStepBad;
    return chroma_inter8(ppSrcDstCoeff, pSrcDstUV, pSrcDstUV + 1, step, true, cbp, QPU, QPV, pQuantTableU,
                         pQuantTableV, bypass, false);
}


// ------------------------------------------------------------ Record generation

namespace {

// QP limit of a 32s16u plane: 6 * bitDepth + base, never above cap (the
// transforms' tables end there, at bit depth 14).
bool qp_bad_depth(Zan32s qp, Zan32s bitDepth, Zan32s base, Zan32s cap) {
    Zan64s hi = std::min<Zan64s>(Zan64s{6} * bitDepth + base, cap);
    return qp < 0 || qp > hi;
}

bool record_null(const ZanReconstructRecord* r) {
    return !r || !r->ppSrcDstCoeff || !*r->ppSrcDstCoeff || !r->pSrcDstPlane || !r->pQuantTable;
}

Depth16 depth16(const ZanReconstructRecord* r) {
    Depth16 d;
    d.bitDepth = r->bitDepth;
    return d;
}

LumaArgs record_args(const ZanReconstructRecord* r) {
    return luma_args(r->srcDstStep, r->cbp, r->QP, r->pQuantTable, r->bypass);
}

// The checks of a 32s16u luma record: nulls, QP, step.
ZanStatus check_luma_record(const ZanReconstructRecord* r) {
    if (record_null(r)) return zanStsNullPtr;
    if (qp_bad_depth(r->QP, r->bitDepth, 3, 87)) return zanStsOutOfRange;
    if (r->srcDstStep < 1) return zanStsStepBad;
    return zanStsOk;
}

ZanStatus luma_record_4x4(const ZanReconstructRecord* r, const Zan32u* modes, Zan8u edge, int count) {
    if (!r || !modes) return zanStsNullPtr;
    if (ZanStatus st = check_luma_record(r); st != zanStsOk) return st;
    return luma4x4(depth16(r), reinterpret_cast<Zan32s**>(r->ppSrcDstCoeff), static_cast<Zan16u*>(r->pSrcDstPlane),
                   record_args(r), modes, edge, count, true);
}

ZanStatus luma_record_8x8(const ZanReconstructRecord* r, const Zan32u* modes, Zan8u edge, int count) {
    if (!r || !modes) return zanStsNullPtr;
    if (ZanStatus st = check_luma_record(r); st != zanStsOk) return st;
    return luma8x8(depth16(r), reinterpret_cast<Zan32s**>(r->ppSrcDstCoeff), static_cast<Zan16u*>(r->pSrcDstPlane),
                   record_args(r), modes, edge, count);
}

// Chroma records: which members, and the parts of their flow.
enum class Intra { None, Full, Half };

template <class D>
ChromaPlane<D> record_plane(const D& d, const ZanReconstructRecord* r, int blocks, Zan16s dcScale) {
    ChromaPlane<D> P{d,
                     static_cast<typename D::S*>(r->pSrcDstPlane),
                     r->srcDstStep,
                     1,
                     (r->cbp & 1) != 0,
                     (r->cbp >> 1) & (blocks == 4 ? 15u : 255u),
                     r->QP,
                     r->pQuantTable,
                     r->bypass != 0 && r->QP == 0,
                     dcScale};
    return P;
}

// Predicts one plane of a Record chroma call.
void record_predict(Zan8u* p, Zan32s step, int height, Intra intra, Zan32u mode, Zan32u top, Zan32u bottom,
                    Zan32s) {
    if (intra == Intra::Half && mode == 0)
        ::zan::ZAN_PATH::h264intra::chroma_dc_split[height == 16 ? 2 : 0](p, step, avail_mb(top), avail_mb(bottom));
    else if (height == 16)
        ::zan::ZAN_PATH::h264intra::chroma422[mode](p, step, avail_mb(top));
    else
        ::zan::ZAN_PATH::h264intra::chroma[mode](p, step, avail_mb(top));
}
void record_predict(Zan16u* p, Zan32s step, int height, Intra intra, Zan32u mode, Zan32u top, Zan32u bottom,
                    Zan32s bitDepth) {
    if (intra == Intra::Half && mode == 0)
        chroma_dc_split_16(p, step, height, avail_mb(top), avail_mb(bottom), bitDepth);
    else if (height == 16)
        chroma8x16_16(p, step, static_cast<Zan32s>(mode), avail_mb(top), bitDepth);
    else
        chroma8x8_16(p, step, static_cast<Zan32s>(mode), avail_mb(top), bitDepth);
}

// The whole flow of a Record chroma member.  blocks: 4 for 4:2:0, 8 for
// 4:2:2; wide: the 32s16u form.
template <class D>
ZanStatus chroma_record(const ZanReconstructRecord* const* rr, int blocks, Intra intra, Zan32u mode, Zan32u top,
                        Zan32u bottom, Zan16s dcU, Zan16s dcV) {
    constexpr bool wide = sizeof(typename D::S) == 2;
    if (!rr || record_null(rr[0]) || !rr[1] || !rr[1]->pSrcDstPlane || !rr[1]->pQuantTable) return zanStsNullPtr;
    const ZanReconstructRecord* r[2] = {rr[0], rr[1]};
    for (const ZanReconstructRecord* x : r) {
        if (wide ? qp_bad_depth(x->QP, x->bitDepth, -9, 75) : qp_bad(x->QP, 39)) return zanStsOutOfRange;
    }
    for (const ZanReconstructRecord* x : r)
        if (x->srcDstStep < 1) return zanStsStepBad;
    const int height = blocks == 4 ? 8 : 16;
    if (intra != Intra::None) {
        if (mode > 3) return zanStsOutOfRange;
        if (intra == Intra::Half ? !half_mode_ok(mode, top, blocks == 8) : !edges_ok_chroma(mode, top))
            return zanStsEdgeUnavailable;
        for (const ZanReconstructRecord* x : r)
            record_predict(static_cast<typename D::S*>(x->pSrcDstPlane), x->srcDstStep, height, intra, mode, top,
                           bottom, x->bitDepth);
    }
    D d[2];
    if constexpr (wide) {
        d[0] = depth16(r[0]);
        d[1] = depth16(r[1]);
    }
    ChromaPlane<D> pl[2] = {record_plane(d[0], r[0], blocks, dcU), record_plane(d[1], r[1], blocks, dcV)};
    if (!pl[0].dc && !pl[1].dc && !pl[0].ac && !pl[1].ac) return zanStsOk;
    chroma_residual(reinterpret_cast<typename D::C**>(r[0]->ppSrcDstCoeff), pl, blocks);
    return zanStsOk;
}

}  // namespace

ZanStatus zaniReconstructLumaIntra4x4_H264High_32s16u_IP1R(const ZanReconstructRecord* pReconInfo,
                                                           const Zan32u* pMBIntraTypes, Zan8u edgeType) {
    return luma_record_4x4(pReconInfo, pMBIntraTypes, edgeType, 16);
}

ZanStatus zaniReconstructLumaIntraHalf4x4_H264High_32s16u_IP1R(const ZanReconstructRecord* pReconInfo,
                                                               const Zan32u* pMBIntraTypes, Zan8u edgeType) {
    return luma_record_4x4(pReconInfo, pMBIntraTypes, edgeType, 8);
}

ZanStatus zaniReconstructLumaIntra8x8_H264High_32s16u_IP1R(const ZanReconstructRecord* pReconInfo,
                                                           const Zan32u* pMBIntraTypes, Zan8u edgeType) {
    return luma_record_8x8(pReconInfo, pMBIntraTypes, edgeType, 4);
}

ZanStatus zaniReconstructLumaIntraHalf8x8_H264High_32s16u_IP1R(const ZanReconstructRecord* pReconInfo,
                                                               const Zan32u* pMBIntraTypes, Zan8u edgeType) {
    return luma_record_8x8(pReconInfo, pMBIntraTypes, edgeType, 2);
}

ZanStatus zaniReconstructLumaIntra16x16_H264High_32s16u_IP1R(const ZanReconstructRecord* pReconInfo, Zan32u mode,
                                                             Zan8u edgeType) {
    if (ZanStatus st = check_luma_record(pReconInfo); st != zanStsOk) return st;
    const ZanReconstructRecord* r = pReconInfo;
    return intra16x16(depth16(r), reinterpret_cast<Zan32s**>(r->ppSrcDstCoeff), static_cast<Zan16u*>(r->pSrcDstPlane),
                      record_args(r), mode, edgeType);
}

ZanStatus zaniReconstructLumaInter4x4_H264High_32s16u_IP1R(const ZanReconstructRecord* pReconInfo) {
    if (ZanStatus st = check_luma_record(pReconInfo); st != zanStsOk) return st;
    const ZanReconstructRecord* r = pReconInfo;
    if (!(r->cbp & 0x1fffe)) return zanStsOk;
    return luma4x4(depth16(r), reinterpret_cast<Zan32s**>(r->ppSrcDstCoeff), static_cast<Zan16u*>(r->pSrcDstPlane),
                   record_args(r), nullptr, 0, 16, false);
}

ZanStatus zaniReconstructLumaInter8x8_H264High_32s16u_IP1R(const ZanReconstructRecord* pReconInfo) {
    if (ZanStatus st = check_luma_record(pReconInfo); st != zanStsOk) return st;
    const ZanReconstructRecord* r = pReconInfo;
    if (!((r->cbp << 1) & 0x1fffe)) return zanStsOk;
    return luma8x8(depth16(r), reinterpret_cast<Zan32s**>(r->ppSrcDstCoeff), static_cast<Zan16u*>(r->pSrcDstPlane),
                   record_args(r), nullptr, 0, 4);
}

ZanStatus zaniReconstructChromaIntra4x4_H264High_32s16u_IP2R(const ZanReconstructRecord* const* pReconInfo,
                                                             Zan32u mode, Zan8u edgeType) {
    return chroma_record<Depth16>(pReconInfo, 4, Intra::Full, mode, edgeType, edgeType, 0, 0);
}

ZanStatus zaniReconstructChromaIntraHalf4x4_H264High_32s16u_IP2R(const ZanReconstructRecord* const* pReconInfo,
                                                                 Zan32u mode, Zan8u edgeTypeTop,
                                                                 Zan8u edgeTypeBottom) {
    return chroma_record<Depth16>(pReconInfo, 4, Intra::Half, mode, edgeTypeTop, edgeTypeBottom, 0, 0);
}

ZanStatus zaniReconstructChromaInter4x4_H264High_32s16u_IP2R(const ZanReconstructRecord* const* pReconInfo) {
    return chroma_record<Depth16>(pReconInfo, 4, Intra::None, 0, 0, 0, 0, 0);
}

ZanStatus zaniReconstructChroma422Intra4x4_H264High_16s8u_IP2R(const ZanReconstructRecord* const* pReconInfo,
                                                               Zan32u mode, Zan8u edgeType, Zan16s levelScaleDCU,
                                                               Zan16s levelScaleDCV) {
    return chroma_record<Depth8>(pReconInfo, 8, Intra::Full, mode, edgeType, edgeType, levelScaleDCU, levelScaleDCV);
}

ZanStatus zaniReconstructChroma422Intra4x4_H264High_32s16u_IP2R(const ZanReconstructRecord* const* pReconInfo,
                                                                Zan32u mode, Zan8u edgeType, Zan16s levelScaleDCU,
                                                                Zan16s levelScaleDCV) {
    return chroma_record<Depth16>(pReconInfo, 8, Intra::Full, mode, edgeType, edgeType, levelScaleDCU, levelScaleDCV);
}

ZanStatus zaniReconstructChroma422IntraHalf4x4_H264High_16s8u_IP2R(const ZanReconstructRecord* const* pReconInfo,
                                                                   Zan32u mode, Zan8u edgeTypeTop,
                                                                   Zan8u edgeTypeBottom, Zan16s levelScaleDCU,
                                                                   Zan16s levelScaleDCV) {
    return chroma_record<Depth8>(pReconInfo, 8, Intra::Half, mode, edgeTypeTop, edgeTypeBottom, levelScaleDCU,
                                 levelScaleDCV);
}

ZanStatus zaniReconstructChroma422IntraHalf4x4_H264High_32s16u_IP2R(const ZanReconstructRecord* const* pReconInfo,
                                                                    Zan32u mode, Zan8u edgeTypeTop,
                                                                    Zan8u edgeTypeBottom, Zan16s levelScaleDCU,
                                                                    Zan16s levelScaleDCV) {
    return chroma_record<Depth16>(pReconInfo, 8, Intra::Half, mode, edgeTypeTop, edgeTypeBottom, levelScaleDCU,
                                  levelScaleDCV);
}

ZanStatus zaniReconstructChroma422Inter4x4_H264High_16s8u_IP2R(const ZanReconstructRecord* const* pReconInfo,
                                                               Zan16s levelScaleDCU, Zan16s levelScaleDCV) {
    return chroma_record<Depth8>(pReconInfo, 8, Intra::None, 0, 0, 0, levelScaleDCU, levelScaleDCV);
}

ZanStatus zaniReconstructChroma422Inter4x4_H264High_32s16u_IP2R(const ZanReconstructRecord* const* pReconInfo,
                                                                Zan16s levelScaleDCU, Zan16s levelScaleDCV) {
    return chroma_record<Depth16>(pReconInfo, 8, Intra::None, 0, 0, 0, levelScaleDCU, levelScaleDCV);
}

}  // namespace zan::ZAN_PATH
