// MPEG-4 global motion compensation and sprite warping: the warp record, its
// init, the luma and chroma warps, the global motion vector of a macroblock,
// and the sprite brightness change.
//
// The record holds, per plane, the warp in one affine form (see WarpPlane in
// mpeg4pred.h): 0, 1, 2 and 3 warp points all become
//   F = (off + dx * x + dy * y) >> shift   in 1/s sample units (s = 2 << accuracy),
// exact to the codec's integer formulas; 4 points keep the projective
// coefficients in double precision and divide per sample.
//
// Sample value: a position in 1/16 units splits into an integer part and a
// fraction fx, fy (0..15); the four neighbours, each coordinate clamped to the
// reference rectangle, are mixed as
//   ((16 - fy)((16 - fx) a + fx b) + fy ((16 - fx) c + fx d) + roundTerm) >> 8.
// The vector kernel steps the positions of four samples at a time in 32-bit
// lanes (a row's positions are checked to fit first), clamps the coordinates
// with compare-and-select, forms the neighbours' byte offsets (16-bit
// multiplies where the step and the rows allow), fetches them, and
// mixes eight samples at a time in 16-bit lanes (every partial sum stays
// below 65536).
#include <cmath>
#include <cstring>
#include <utility>

#include "blocks/mc.h"
#include "common/simd.h"
#include "frame/bodies.h"
#include "h26x_mpeg4/mpeg4pred.h"

namespace zan::ZAN_PATH::mpeg4pred {

using namespace zan::mpeg4pred;
using simd::row;

extern const KernelPair<WarpFn> kWarpPairs[1];
extern const KernelPair<BrightnessFn> kBrightnessPairs[1];

namespace {

constexpr Zan32u kWarpMagic = 0x434D4151u;  // "QAMC" in memory order
constexpr Zan32s kWarpBlockSize = 384;

// The record, at the first 16-byte boundary of the caller's block.
struct alignas(16) WarpRecord {
    WarpPlane luma;
    WarpPlane chroma;
    double persp[9];  // a, b, c, d, e, f, g, h, D * W * H (4 points)
    Zan32s spriteFlagRound;
    Zan32s quarterSample;
    Zan32s numWarpPoints;
    Zan32s warpAccuracy;
    Zan32s spriteType;
    Zan32s mvMin, mvMax;
    Zan32s spriteRect[4];
    Zan32s chromaRect[4];
    Zan32s vopX, vopY, vopW, vopH;
    Zan32s warpPoints[8];  // r i'n, r j'n: the sprite points in 1/16 units
    Zan32s roundTerm;
    Zan32u magic;
};
static_assert(sizeof(WarpRecord) + 15 <= kWarpBlockSize, "the warp record must fit the caller's block");

WarpRecord* record_of(void* block) {
    auto a = (reinterpret_cast<uintptr_t>(block) + 15) & ~uintptr_t{15};
    return reinterpret_cast<WarpRecord*>(a);
}
const WarpRecord* record_of(const void* block) { return record_of(const_cast<void*>(block)); }

// ================================================================== rules

constexpr Zan32s clamp_to(Zan32s v, Zan32s lo, Zan32s hi) { return v < lo ? lo : (v > hi ? hi : v); }
constexpr Zan64s clamp_pos(Zan64s v) { return v < -kPosLimit ? -kPosLimit : (v > kPosLimit ? kPosLimit : v); }

// Bilinear value at a position in 1/16 units, coordinates clamped to rect;
// src addresses the rectangle's first sample.
inline Zan8u sample16(const Zan8u* src, Zan32s step, const Zan32s* rect, Zan32s roundTerm, Zan32s px, Zan32s py) {
    const Zan32s ix = px >> 4, iy = py >> 4, fx = px & 15, fy = py & 15;
    const Zan32s x0 = clamp_to(ix, rect[0], rect[0] + rect[2] - 1) - rect[0];
    const Zan32s x1 = clamp_to(ix + 1, rect[0], rect[0] + rect[2] - 1) - rect[0];
    const Zan8u* r0 = row(src, step, clamp_to(iy, rect[1], rect[1] + rect[3] - 1) - rect[1]);
    const Zan8u* r1 = row(src, step, clamp_to(iy + 1, rect[1], rect[1] + rect[3] - 1) - rect[1]);
    const Zan32s top = (16 - fx) * r0[x0] + fx * r0[x1];
    const Zan32s bottom = (16 - fx) * r1[x0] + fx * r1[x1];
    return static_cast<Zan8u>(((16 - fy) * top + fy * bottom + roundTerm) >> 8);
}

void warp_rule(const Zan8u* src, Zan32s srcStep, Zan8u* dst, Zan32s dstStep, Zan32s x0, Zan32s y0, Zan32s w,
               Zan32s h, const WarpPlane& p) {
    for (Zan32s y = 0; y < h; ++y) {
        Zan8u* d = row(dst, dstStep, y);
        for (Zan32s x = 0; x < w; ++x) {
            const Zan64s X = x0 + x, Y = y0 + y;
            const Zan64s F = clamp_pos((p.off[0] + p.dx[0] * X + p.dy[0] * Y) >> p.shift);
            const Zan64s G = clamp_pos((p.off[1] + p.dx[1] * X + p.dy[1] * Y) >> p.shift);
            d[x] = sample16(src, srcStep, p.rect, p.roundTerm, static_cast<Zan32s>(F << p.rho),
                            static_cast<Zan32s>(G << p.rho));
        }
    }
}

void brightness_rule(Zan8u* p, Zan32s step, Zan32s width, Zan32s height, Zan32s W) {
    for (Zan32s y = 0; y < height; ++y) {
        Zan8u* r = row(p, step, y);
        for (Zan32s x = 0; x < width; ++x) r[x] = static_cast<Zan8u>(clamp_to((r[x] * W + 520) >> 10, 0, 255));
    }
}

// ================================================================ kernels

// Lane-wise clamp of 32-bit values with SSE2 compares.
inline __m128i clamp_epi32(__m128i v, __m128i lo, __m128i hi) {
    __m128i below = _mm_cmplt_epi32(v, lo);
    v = _mm_or_si128(_mm_and_si128(below, lo), _mm_andnot_si128(below, v));
    __m128i above = _mm_cmpgt_epi32(v, hi);
    return _mm_or_si128(_mm_and_si128(above, hi), _mm_andnot_si128(above, v));
}

// Floor split of v by 2^shift: v = q * 2^shift + r, 0 <= r < 2^shift.
struct Split {
    Zan64s q, r;
};
inline Split split(Zan64s v, Zan32s shift) { return {v >> shift, v & ((Zan64s{1} << shift) - 1)}; }

// One component's positions along a row, four lanes at a time: lane k holds
// (q_k, r_k) for column x + k, and a step of four columns adds (4 dq, 4 dr)
// with the carry out of r.
struct Stepper {
    __m128i q, r, dq4, dr4, mask;
    __m128i shiftCount;
    void init(Zan64s base, Zan64s d, Zan32s shift) {
        const Split b = split(base, shift), s = split(d, shift);
        alignas(16) Zan32s qv[4], rv[4];
        for (int k = 0; k < 4; ++k) {
            const Split v = split(b.r + s.r * k, shift);
            qv[k] = static_cast<Zan32s>(b.q + s.q * k + v.q);
            rv[k] = static_cast<Zan32s>(v.r);
        }
        q = simd::load16a(qv);
        r = simd::load16a(rv);
        const Split four = split(s.r * 4, shift);  // 4 dr may carry
        dq4 = _mm_set1_epi32(static_cast<Zan32s>(s.q * 4 + four.q));
        dr4 = _mm_set1_epi32(static_cast<Zan32s>(four.r));
        mask = _mm_set1_epi32(static_cast<Zan32s>((Zan64s{1} << shift) - 1));
        shiftCount = _mm_cvtsi32_si128(shift);
    }
    void step() {
        r = _mm_add_epi32(r, dr4);
        q = _mm_add_epi32(q, _mm_add_epi32(dq4, _mm_srl_epi32(r, shiftCount)));
        r = _mm_and_si128(r, mask);
    }
};

// Fetches the four neighbours of four samples at positions (px, py) in 1/16
// units; writes the samples (a, b, c, d per sample, as 16-bit lanes in the
// order a0..a3 etc.) and the fractions.
struct Fetch4 {
    __m128i xlo, xhi, ylo, yhi, fifteen, one;
    void init(const Zan32s* rect) {
        xlo = _mm_set1_epi32(rect[0]);
        xhi = _mm_set1_epi32(rect[0] + rect[2] - 1);
        ylo = _mm_set1_epi32(rect[1]);
        yhi = _mm_set1_epi32(rect[1] + rect[3] - 1);
        fifteen = _mm_set1_epi32(15);
        one = _mm_set1_epi32(1);
    }
};

// Four row numbers (0..32767, in 32-bit lanes) times a 16-bit step, as
// 32-bit products.
inline __m128i row_offset(__m128i rows, __m128i step16) {
    const __m128i r16 = _mm_packs_epi32(rows, rows);
    return _mm_unpacklo_epi16(_mm_mullo_epi16(r16, step16), _mm_mulhi_epi16(r16, step16));
}

// The four neighbours of eight samples by their byte offsets, inserted
// straight into 16-bit lanes.
template <int... K>
inline void gather8(const Zan8u* src, const Zan32s* i00, const Zan32s* i01, const Zan32s* i10, const Zan32s* i11,
                    __m128i& a, __m128i& b, __m128i& c, __m128i& d, std::integer_sequence<int, K...>) {
    a = b = c = d = _mm_setzero_si128();
    ((a = _mm_insert_epi16(a, src[i00[K]], K), b = _mm_insert_epi16(b, src[i01[K]], K),
      c = _mm_insert_epi16(c, src[i10[K]], K), d = _mm_insert_epi16(d, src[i11[K]], K)),
     ...);
}

void warp_sse2(const Zan8u* src, Zan32s srcStep, Zan8u* dst, Zan32s dstStep, Zan32s x0, Zan32s y0, Zan32s w,
               Zan32s h, const WarpPlane& p) {
    Fetch4 f;
    f.init(p.rect);
    const __m128i rhoCount = _mm_cvtsi32_si128(p.rho);
    const __m128i round = _mm_set1_epi16(static_cast<short>(p.roundTerm));
    const __m128i sixteen = _mm_set1_epi16(16);
    const __m128i xorg = _mm_set1_epi32(p.rect[0]), yorg = _mm_set1_epi32(p.rect[1]);
    // With a 16-bit step and at most 32768 rows, the neighbours' byte
    // offsets are formed in the vector lanes; else their coordinates.
    const bool small = srcStep >= -32768 && srcStep <= 32767 && p.rect[3] <= 32768;
    const __m128i step16 = _mm_set1_epi16(static_cast<short>(small ? srcStep : 0));
    alignas(16) Zan32s cx0[8], cx1[8], cy0[8], cy1[8];
    alignas(16) Zan16u sa[8], sb[8], sc[8], sd[8];
    for (Zan32s y = 0; y < h; ++y) {
        Zan8u* d = row(dst, dstStep, y);
        const Zan64s Y = y0 + y;
        const Zan64s baseF = p.off[0] + p.dy[0] * Y + p.dx[0] * x0;
        const Zan64s baseG = p.off[1] + p.dy[1] * Y + p.dx[1] * x0;
        // The positions along a row are monotonic: if both ends lie within
        // the position limit, every position does, and fits 32-bit lanes.
        const Zan64s lastF = (baseF + p.dx[0] * (w - 1)) >> p.shift, firstF = baseF >> p.shift;
        const Zan64s lastG = (baseG + p.dx[1] * (w - 1)) >> p.shift, firstG = baseG >> p.shift;
        const bool fits = w >= 8 && p.shift <= 30 && firstF > -kPosLimit && firstF < kPosLimit && lastF > -kPosLimit &&
                          lastF < kPosLimit && firstG > -kPosLimit && firstG < kPosLimit && lastG > -kPosLimit &&
                          lastG < kPosLimit && p.dx[0] < (Zan64s{1} << 40) && p.dx[0] > -(Zan64s{1} << 40) &&
                          p.dx[1] < (Zan64s{1} << 40) && p.dx[1] > -(Zan64s{1} << 40);
        Zan32s x = 0;
        if (fits) {
            Stepper sf, sg;
            sf.init(baseF, p.dx[0], p.shift);
            sg.init(baseG, p.dx[1], p.shift);
            for (; x + 8 <= w; x += 8) {
                __m128i fxv[2], fyv[2];
                for (int half = 0; half < 2; ++half) {
                    const __m128i px = _mm_sll_epi32(sf.q, rhoCount), py = _mm_sll_epi32(sg.q, rhoCount);
                    const __m128i ix = _mm_srai_epi32(px, 4), iy = _mm_srai_epi32(py, 4);
                    fxv[half] = _mm_and_si128(px, f.fifteen);
                    fyv[half] = _mm_and_si128(py, f.fifteen);
                    const __m128i x0v = _mm_sub_epi32(clamp_epi32(ix, f.xlo, f.xhi), xorg);
                    const __m128i x1v = _mm_sub_epi32(clamp_epi32(_mm_add_epi32(ix, f.one), f.xlo, f.xhi), xorg);
                    const __m128i y0v = _mm_sub_epi32(clamp_epi32(iy, f.ylo, f.yhi), yorg);
                    const __m128i y1v = _mm_sub_epi32(clamp_epi32(_mm_add_epi32(iy, f.one), f.ylo, f.yhi), yorg);
                    if (small) {
                        // Byte offsets of the four neighbours: row (0..32767)
                        // times step (16 bits) as a 32-bit product.
                        const __m128i r0 = row_offset(y0v, step16), r1 = row_offset(y1v, step16);
                        simd::store16(cx0 + 4 * half, _mm_add_epi32(r0, x0v));
                        simd::store16(cx1 + 4 * half, _mm_add_epi32(r0, x1v));
                        simd::store16(cy0 + 4 * half, _mm_add_epi32(r1, x0v));
                        simd::store16(cy1 + 4 * half, _mm_add_epi32(r1, x1v));
                    } else {
                        simd::store16(cx0 + 4 * half, x0v);
                        simd::store16(cx1 + 4 * half, x1v);
                        simd::store16(cy0 + 4 * half, y0v);
                        simd::store16(cy1 + 4 * half, y1v);
                    }
                    sf.step();
                    sg.step();
                }
                __m128i va, vb, vc, vd;
                if (small) {
                    gather8(src, cx0, cx1, cy0, cy1, va, vb, vc, vd, std::make_integer_sequence<int, 8>{});
                } else {
                    for (int k = 0; k < 8; ++k) {
                        const Zan8u* r0 = row(src, srcStep, cy0[k]);
                        const Zan8u* r1 = row(src, srcStep, cy1[k]);
                        sa[k] = r0[cx0[k]];
                        sb[k] = r0[cx1[k]];
                        sc[k] = r1[cx0[k]];
                        sd[k] = r1[cx1[k]];
                    }
                    va = simd::load16a(sa), vb = simd::load16a(sb), vc = simd::load16a(sc), vd = simd::load16a(sd);
                }
                // Fractions of 8 samples as 16-bit lanes (values 0..15 pack exactly).
                const __m128i fx = _mm_packs_epi32(fxv[0], fxv[1]), fy = _mm_packs_epi32(fyv[0], fyv[1]);
                const __m128i gx = _mm_sub_epi16(sixteen, fx), gy = _mm_sub_epi16(sixteen, fy);
                const __m128i top = _mm_add_epi16(_mm_mullo_epi16(gx, va), _mm_mullo_epi16(fx, vb));
                const __m128i bottom = _mm_add_epi16(_mm_mullo_epi16(gx, vc), _mm_mullo_epi16(fx, vd));
                __m128i v = _mm_add_epi16(_mm_mullo_epi16(gy, top), _mm_mullo_epi16(fy, bottom));
                v = _mm_srli_epi16(_mm_add_epi16(v, round), 8);
                simd::store8(d + x, _mm_packus_epi16(v, v));
            }
        }
        for (; x < w; ++x) {
            const Zan64s X = x0 + x;
            const Zan64s F = clamp_pos((p.off[0] + p.dx[0] * X + p.dy[0] * Y) >> p.shift);
            const Zan64s G = clamp_pos((p.off[1] + p.dx[1] * X + p.dy[1] * Y) >> p.shift);
            d[x] = sample16(src, srcStep, p.rect, p.roundTerm, static_cast<Zan32s>(F << p.rho),
                            static_cast<Zan32s>(G << p.rho));
        }
    }
}

void brightness_sse2(Zan8u* p, Zan32s step, Zan32s width, Zan32s height, Zan32s W) {
    const __m128i w16 = _mm_set1_epi16(static_cast<short>(W)), bias = _mm_set1_epi32(520);
    const __m128i z = _mm_setzero_si128();
    for (Zan32s y = 0; y < height; ++y) {
        Zan8u* r = row(p, step, y);
        Zan32s x = 0;
        for (; x + 8 <= width; x += 8) {
            const __m128i s = _mm_unpacklo_epi8(simd::load8(r + x), z);
            const __m128i lo = _mm_mullo_epi16(s, w16), hi = _mm_mulhi_epi16(s, w16);
            __m128i a = _mm_srai_epi32(_mm_add_epi32(_mm_unpacklo_epi16(lo, hi), bias), 10);
            __m128i b = _mm_srai_epi32(_mm_add_epi32(_mm_unpackhi_epi16(lo, hi), bias), 10);
            const __m128i v = _mm_packs_epi32(a, b);
            simd::store8(r + x, _mm_packus_epi16(v, v));
        }
        for (; x < width; ++x) r[x] = static_cast<Zan8u>(clamp_to((r[x] * W + 520) >> 10, 0, 255));
    }
}

// ============================================================ the record

// a // b for b > 0: rounds half away from zero.
constexpr Zan64s div_round(Zan64s a, Zan64s b) { return a >= 0 ? (a + b / 2) / b : (a - b / 2) / b; }
constexpr Zan64s half_of(Zan32s shift) { return shift > 0 ? Zan64s{1} << (shift - 1) : 0; }

// Fills both planes' affine forms (0 to 3 points) and the projective
// coefficients (4 points).
void derive(WarpRecord& r) {
    const Zan32s n = r.numWarpPoints, rho = 3 - r.warpAccuracy;
    const Zan64s s = Zan64s{2} << r.warpAccuracy;
    const Zan64s i0 = r.vopX, j0 = r.vopY, W = r.vopW, H = r.vopH;
    // Sprite points in 1/16 units (r i'n) and in 1/s units (i'n).
    Zan64s P16[4][2], P[4][2];
    for (int k = 0; k < 4; ++k) {
        P16[k][0] = r.warpPoints[2 * k];
        P16[k][1] = r.warpPoints[2 * k + 1];
        P[k][0] = P16[k][0] >> rho;
        P[k][1] = P16[k][1] >> rho;
    }
    WarpPlane& L = r.luma;
    WarpPlane& C = r.chroma;
    L.rho = C.rho = rho;
    L.roundTerm = C.roundTerm = r.roundTerm;
    for (int k = 0; k < 4; ++k) {
        L.rect[k] = r.spriteRect[k];
        C.rect[k] = r.chromaRect[k];
    }
    // Luma positions count x, y from the picture's origin.
    if (n <= 1) {
        Zan64s cl[2], cc[2];
        if (n == 0) {
            cl[0] = s * i0, cl[1] = s * j0;
            cc[0] = s * (i0 / 2), cc[1] = s * (j0 / 2);
        } else {
            for (int c = 0; c < 2; ++c) {
                const Zan64s p = P[0][c];
                cl[c] = p;
                cc[c] = r.spriteType == 1 ? (p + 1) >> 1 : (p >> 1) | (p & 1);
            }
        }
        for (int c = 0; c < 2; ++c) {
            L.off[c] = cl[c];
            C.off[c] = cc[c];
        }
        L.dx[0] = L.dy[1] = C.dx[0] = C.dy[1] = s;
        L.dx[1] = L.dy[0] = C.dx[1] = C.dy[0] = 0;
        L.shift = C.shift = 0;
        return;
    }
    if (n <= 3) {
        Zan32s alpha = 0, beta = 0;
        while ((Zan64s{1} << alpha) < W) ++alpha;
        while ((Zan64s{1} << beta) < H) ++beta;
        const Zan64s Wp = Zan64s{1} << alpha, Hp = Zan64s{1} << beta;
        const Zan64s i1 = 16 * (i0 + Wp) + div_round((W - Wp) * (P16[0][0] - 16 * i0) +
                                                         Wp * (P16[1][0] - 16 * (i0 + W)), W);
        const Zan64s j1 = 16 * j0 + div_round((W - Wp) * (P16[0][1] - 16 * j0) + Wp * (P16[1][1] - 16 * j0), W);
        const Zan64s A = i1 - P16[0][0], B = j1 - P16[0][1];
        if (n == 2) {
            const Zan32s sh = alpha + rho;
            L.shift = sh;
            L.dx[0] = A, L.dy[0] = -B, L.off[0] = (P[0][0] << sh) + half_of(sh);
            L.dx[1] = B, L.dy[1] = A, L.off[1] = (P[0][1] << sh) + half_of(sh);
            // Chroma: X = 4 xc + 1, Y = 4 yc + 1.
            C.shift = sh + 2;
            C.dx[0] = 4 * A, C.dy[0] = -4 * B;
            C.off[0] = A - B + 2 * Wp * P16[0][0] - 16 * Wp + half_of(sh + 2);
            C.dx[1] = 4 * B, C.dy[1] = 4 * A;
            C.off[1] = B + A + 2 * Wp * P16[0][1] - 16 * Wp + half_of(sh + 2);
            return;
        }
        const Zan64s i2 = 16 * i0 + div_round((H - Hp) * (P16[0][0] - 16 * i0) + Hp * (P16[2][0] - 16 * i0), H);
        const Zan64s j2 = 16 * (j0 + Hp) + div_round((H - Hp) * (P16[0][1] - 16 * j0) +
                                                         Hp * (P16[2][1] - 16 * (j0 + H)), H);
        const Zan64s Cc = i2 - P16[0][0], D = j2 - P16[0][1];
        // Both increments in one scale: the smaller power's shifted left.
        const Zan32s m = alpha < beta ? alpha : beta;
        const Zan64s hs = Hp >> m, ws = Wp >> m;
        const Zan32s sh = alpha + beta + rho - m;
        L.shift = sh;
        L.dx[0] = A * hs, L.dy[0] = Cc * ws, L.off[0] = (P[0][0] << (sh)) + half_of(sh);
        L.dx[1] = B * hs, L.dy[1] = D * ws, L.off[1] = (P[0][1] << (sh)) + half_of(sh);
        C.shift = sh + 2;
        C.dx[0] = 4 * A * hs, C.dy[0] = 4 * Cc * ws;
        C.off[0] = A * hs + Cc * ws + 2 * Wp * hs * P16[0][0] - 16 * Wp * hs + half_of(sh + 2);
        C.dx[1] = 4 * B * hs, C.dy[1] = 4 * D * ws;
        C.off[1] = B * hs + D * ws + 2 * Wp * hs * P16[0][1] - 16 * Wp * hs + half_of(sh + 2);
        return;
    }
    // Four points: projective coefficients in double precision.
    const double x0 = static_cast<double>(P[0][0]), x1 = static_cast<double>(P[1][0]);
    const double x2 = static_cast<double>(P[2][0]), x3 = static_cast<double>(P[3][0]);
    const double y0 = static_cast<double>(P[0][1]), y1 = static_cast<double>(P[1][1]);
    const double y2 = static_cast<double>(P[2][1]), y3 = static_cast<double>(P[3][1]);
    const double dW = static_cast<double>(W), dH = static_cast<double>(H);
    const double g = ((x0 - x1 - x2 + x3) * (y2 - y3) - (x2 - x3) * (y0 - y1 - y2 + y3)) * dH;
    const double h = ((x1 - x3) * (y0 - y1 - y2 + y3) - (x0 - x1 - x2 + x3) * (y1 - y3)) * dW;
    const double D = (x1 - x3) * (y2 - y3) - (x2 - x3) * (y1 - y3);
    r.persp[0] = D * (x1 - x0) * dH + g * x1;
    r.persp[1] = D * (x2 - x0) * dW + h * x2;
    r.persp[2] = D * x0 * dW * dH;
    r.persp[3] = D * (y1 - y0) * dH + g * y1;
    r.persp[4] = D * (y2 - y0) * dW + h * y2;
    r.persp[5] = D * y0 * dW * dH;
    r.persp[6] = g;
    r.persp[7] = h;
    r.persp[8] = D * dW * dH;
}

// floor(num / den) as an integer within the position limit (a zero or
// non-finite quotient's position is taken as the limit's edge or 0).
Zan64s floor_div(double num, double den) {
    const double q = std::floor(num / den);
    if (!(q == q)) return 0;
    if (q <= static_cast<double>(-kPosLimit)) return -kPosLimit;
    if (q >= static_cast<double>(kPosLimit)) return kPosLimit;
    return static_cast<Zan64s>(q);
}

// Luma position of picture sample (x, y) (from the origin) with 4 points, in
// 1/s units.
void persp_luma(const WarpRecord& r, Zan64s x, Zan64s y, Zan64s& F, Zan64s& G) {
    const double* c = r.persp;
    const double X = static_cast<double>(x), Y = static_cast<double>(y);
    const double den = c[6] * X + c[7] * Y + c[8];
    F = floor_div(c[0] * X + c[1] * Y + c[2], den);
    G = floor_div(c[3] * X + c[4] * Y + c[5], den);
}
void persp_chroma(const WarpRecord& r, Zan64s xc, Zan64s yc, Zan64s& F, Zan64s& G) {
    const double* c = r.persp;
    const double s = static_cast<double>(2 << r.warpAccuracy);
    const double X = static_cast<double>(4 * xc + 1), Y = static_cast<double>(4 * yc + 1);
    const double t = c[6] * X + c[7] * Y + 2 * c[8];
    F = floor_div(2 * c[0] * X + 2 * c[1] * Y + 4 * c[2] - t * s, 4 * t);
    G = floor_div(2 * c[3] * X + 2 * c[4] * Y + 4 * c[5] - t * s, 4 * t);
}

// The projective warp of one plane: a division per sample.
template <bool Chroma>
void warp_persp(const WarpRecord& r, const Zan8u* src, Zan32s srcStep, Zan8u* dst, Zan32s dstStep,
                const ZaniRect& rc) {
    const WarpPlane& p = Chroma ? r.chroma : r.luma;
    for (Zan32s y = 0; y < rc.height; ++y) {
        Zan8u* d = row(dst, dstStep, y);
        for (Zan32s x = 0; x < rc.width; ++x) {
            Zan64s F, G;
            if (Chroma)
                persp_chroma(r, Zan64s{rc.x} + x, Zan64s{rc.y} + y, F, G);
            else
                persp_luma(r, Zan64s{rc.x} + x, Zan64s{rc.y} + y, F, G);
            d[x] = sample16(src, srcStep, p.rect, p.roundTerm, static_cast<Zan32s>(F << p.rho),
                            static_cast<Zan32s>(G << p.rho));
        }
    }
}

// One plane's warp: the fast copies where the warp is a translation to a
// whole or half sample position with the block's footprint inside the
// reference (equal to the bilinear value there), else the warp kernel.
void warp_plane(const WarpRecord& r, const WarpPlane& p, const Zan8u* src, Zan32s srcStep, Zan8u* dst,
                Zan32s dstStep, const ZaniRect& rc) {
    if (r.numWarpPoints <= 1) {
        const Zan64s px = clamp_pos(p.off[0] + p.dx[0] * rc.x) << p.rho;
        const Zan64s py = clamp_pos(p.off[1] + p.dy[1] * rc.y) << p.rho;
        const Zan64s fx = px & 15, fy = py & 15, ix = px >> 4, iy = py >> 4;
        const bool halves = (fx == 0 || fx == 8) && (fy == 0 || fy == 8);
        const bool inside = ix >= p.rect[0] && iy >= p.rect[1] &&
                            ix + rc.width - 1 + (fx ? 1 : 0) <= Zan64s{p.rect[0]} + p.rect[2] - 1 &&
                            iy + rc.height - 1 + (fy ? 1 : 0) <= Zan64s{p.rect[1]} + p.rect[3] - 1;
        if (halves && inside) {
            const Zan8u* s = row(src, srcStep, static_cast<Zan32s>(iy - p.rect[1])) + (ix - p.rect[0]);
            const Zan32s index = ((fy ? 2 : 0) + (fx ? 1 : 0)) * 2 + (r.roundTerm != 128 ? 1 : 0);
            if (rc.width == 16 && rc.height == 16) return mc::kCopy16x16HP[index](s, srcStep, dst, dstStep);
            if (rc.width == 8 && rc.height == 8) return mc::kCopy8x8HP[index](s, srcStep, dst, dstStep);
            if (fx == 0 && fy == 0) {
                for (Zan32s y = 0; y < rc.height; ++y)
                    std::memcpy(row(dst, dstStep, y), row(s, srcStep, y), static_cast<size_t>(rc.width));
                return;
            }
        }
    }
    warp_sse2(src, srcStep, dst, dstStep, rc.x, rc.y, rc.width, rc.height, p);
}

bool valid(const WarpRecord& r) { return r.magic == kWarpMagic; }

}  // namespace

const KernelPair<WarpFn> kWarpPairs[1] = {{"WarpNWP0123", warp_rule, warp_sse2, 40, 24, 0}};
const KernelPair<BrightnessFn> kBrightnessPairs[1] = {
    {"ChangeSpriteBrightness", brightness_rule, brightness_sse2, 37, 9, 0}};

}  // namespace zan::ZAN_PATH::mpeg4pred

// ==================================================================== exports

namespace zan::ZAN_PATH {

using namespace zan::ZAN_PATH::mpeg4pred;

ZanStatus zaniWarpGetSize_MPEG4(Zan32s* pSize) {
    if (!pSize) return zanStsNullPtr;
    *pSize = kWarpBlockSize;
    return zanStsOk;
}

ZanStatus zaniWarpInit_MPEG4(ZanWarpSpec* pSpec, const Zan32s* pDU, const Zan32s* pDV, Zan32s numWarpPoints,
                             Zan32s spriteType, Zan32s warpAccuracy, Zan32s roundingType, Zan32s quarterSample,
                             Zan32s fcode, const ZaniRect* pSpriteRect, const ZaniRect* pVopRect) {
    if (!pSpec || !pSpriteRect || !pVopRect) return zanStsNullPtr;
    if (numWarpPoints < 0 || numWarpPoints > 4) return zanStsOutOfRange;
    if (numWarpPoints == 4 && spriteType != 1) return zanStsOutOfRange;
    if (warpAccuracy < 0 || warpAccuracy > 3 || fcode < 1 || fcode > 7) return zanStsOutOfRange;
    if (pSpriteRect->width < 1 || pSpriteRect->height < 1 || pVopRect->width < 1 || pVopRect->height < 1)
        return zanStsSizeBad;
    WarpRecord& r = *record_of(pSpec);
    std::memset(static_cast<void*>(&r), 0, sizeof r);
    r.spriteFlagRound = (roundingType != 0 && spriteType != 1) ? 1 : 0;
    r.quarterSample = quarterSample != 0 ? 1 : 0;
    r.numWarpPoints = numWarpPoints;
    r.warpAccuracy = warpAccuracy;
    r.spriteType = spriteType;
    r.mvMin = -(16 << fcode);
    r.mvMax = (16 << fcode) - 1;
    r.spriteRect[0] = pSpriteRect->x, r.spriteRect[1] = pSpriteRect->y;
    r.spriteRect[2] = pSpriteRect->width, r.spriteRect[3] = pSpriteRect->height;
    r.chromaRect[0] = pSpriteRect->x / 2, r.chromaRect[1] = pSpriteRect->y / 2;
    r.chromaRect[2] = (pSpriteRect->width + 1) >> 1, r.chromaRect[3] = (pSpriteRect->height + 1) >> 1;
    r.vopX = pVopRect->x, r.vopY = pVopRect->y, r.vopW = pVopRect->width, r.vopH = pVopRect->height;
    r.roundTerm = 128 - (r.spriteFlagRound << (3 - warpAccuracy));
    if (numWarpPoints != 0 && (!pDU || !pDV)) return zanStsNullPtr;
    // The sprite points in 1/16 units: 8 (2 in + sum of du), the corners
    // (i0, j0), (i0 + W, j0), (i0, j0 + H), (i0 + W, j0 + H).
    Zan32s du[4] = {0, 0, 0, 0}, dv[4] = {0, 0, 0, 0};
    for (Zan32s k = 0; k < numWarpPoints; ++k) du[k] = pDU[k], dv[k] = pDV[k];
    const Zan32s cornerX[4] = {r.vopX, r.vopX + r.vopW, r.vopX, r.vopX + r.vopW};
    const Zan32s cornerY[4] = {r.vopY, r.vopY, r.vopY + r.vopH, r.vopY + r.vopH};
    const Zan32s sumU[4] = {du[0], du[0] + du[1], du[0] + du[2], du[0] + du[1] + du[2] + du[3]};
    const Zan32s sumV[4] = {dv[0], dv[0] + dv[1], dv[0] + dv[2], dv[0] + dv[1] + dv[2] + dv[3]};
    for (int k = 0; k < 4; ++k) {
        r.warpPoints[2 * k] = 8 * (2 * cornerX[k] + sumU[k]);
        r.warpPoints[2 * k + 1] = 8 * (2 * cornerY[k] + sumV[k]);
    }
    derive(r);
    r.magic = kWarpMagic;
    return zanStsOk;
}

ZanStatus zaniWarpLuma_MPEG4_8u_C1R(const Zan8u* pSrcY, Zan32s srcStepY, Zan8u* pDstY, Zan32s dstStepY,
                                    const ZaniRect* pDstRect, const ZanWarpSpec* pSpec) {
    if (!pSrcY || !pDstY || !pDstRect || !pSpec) return zanStsNullPtr;
    const WarpRecord& r = *record_of(pSpec);
    if (!valid(r)) return zanStsContextMismatch;
    const ZaniRect rc = *pDstRect;
    if (rc.width < 1 || rc.height < 1) return zanStsOk;
    if (r.numWarpPoints == 4)
        warp_persp<false>(r, pSrcY, srcStepY, pDstY, dstStepY, rc);
    else
        warp_plane(r, r.luma, pSrcY, srcStepY, pDstY, dstStepY, rc);
    return zanStsOk;
}

ZanStatus zaniWarpChroma_MPEG4_8u_P2R(const Zan8u* pSrcCb, Zan32s srcStepCb, const Zan8u* pSrcCr,
                                      Zan32s srcStepCr, Zan8u* pDstCb, Zan32s dstStepCb, Zan8u* pDstCr,
                                      Zan32s dstStepCr, const ZaniRect* pDstRect, const ZanWarpSpec* pSpec) {
    if (!pSrcCb || !pSrcCr || !pDstCb || !pDstCr || !pDstRect || !pSpec) return zanStsNullPtr;
    const WarpRecord& r = *record_of(pSpec);
    if (!valid(r)) return zanStsContextMismatch;
    const ZaniRect rc = *pDstRect;
    if (rc.width < 1 || rc.height < 1) return zanStsOk;
    if (r.numWarpPoints == 4) {
        warp_persp<true>(r, pSrcCb, srcStepCb, pDstCb, dstStepCb, rc);
        warp_persp<true>(r, pSrcCr, srcStepCr, pDstCr, dstStepCr, rc);
    } else {
        warp_plane(r, r.chroma, pSrcCb, srcStepCb, pDstCb, dstStepCb, rc);
        warp_plane(r, r.chroma, pSrcCr, srcStepCr, pDstCr, dstStepCr, rc);
    }
    return zanStsOk;
}

ZanStatus zaniCalcGlobalMV_MPEG4(Zan32s xOffset, Zan32s yOffset, Zan16s* pGMV, const ZanWarpSpec* pSpec) {
    if (!pSpec || !pGMV) return zanStsNullPtr;
    const WarpRecord& r = *record_of(pSpec);
    if (!valid(r)) return zanStsContextMismatch;
    if (r.numWarpPoints == 0) {
        pGMV[0] = pGMV[1] = 0;
        return zanStsOk;
    }
    Zan32s mv[2];
    if (r.numWarpPoints == 1) {
        // The first point's displacement from the picture's origin, 1/16
        // units, to half or quarter samples.
        mv[0] = static_cast<Zan16s>((r.warpPoints[0] - 16 * r.vopX) >> (3 - r.quarterSample));
        mv[1] = static_cast<Zan16s>((r.warpPoints[1] - 16 * r.vopY) >> (3 - r.quarterSample));
    } else {
        const Zan64s s = Zan64s{2} << r.warpAccuracy;
        const WarpPlane& p = r.luma;
        Zan64s sum[2] = {0, 0};
        for (Zan32s j = 0; j < 16; ++j)
            for (Zan32s i = 0; i < 16; ++i) {
                const Zan64s x = Zan64s{xOffset} + i, y = Zan64s{yOffset} + j;
                Zan64s F, G;
                if (r.numWarpPoints == 4) {
                    persp_luma(r, x, y, F, G);
                } else {
                    F = clamp_pos((p.off[0] + p.dx[0] * x + p.dy[0] * y) >> p.shift);
                    G = clamp_pos((p.off[1] + p.dx[1] * x + p.dy[1] * y) >> p.shift);
                }
                sum[0] += F - s * (x + r.vopX);
                sum[1] += G - s * (y + r.vopY);
            }
        const Zan32s a = r.warpAccuracy, q = r.quarterSample;
        for (int c = 0; c < 2; ++c) {
            const Zan64s v = (sum[c] - (sum[c] < 0 ? 1 : 0) + (Zan64s{1} << (a + 7 - q))) >> (a + 8 - q);
            mv[c] = v < -32768 ? -32768 : (v > 32767 ? 32767 : static_cast<Zan32s>(v));
        }
    }
    for (int c = 0; c < 2; ++c) pGMV[c] = static_cast<Zan16s>(clamp_to(mv[c], r.mvMin, r.mvMax));
    return zanStsOk;
}

ZanStatus zaniChangeSpriteBrightness_MPEG4_8u_C1IR(Zan8u* pSrcDst, Zan32s srcDstStep, Zan32s width, Zan32s height,
                                                   Zan32s brightnessChange) {
    if (!pSrcDst) return zanStsNullPtr;
    if (brightnessChange < -112 || brightnessChange > 1648) return zanStsOutOfRange;
    if (brightnessChange == 0) return zanStsOk;
    const Zan32s b = brightnessChange;
    const Zan32s W = ((b << 10) + (b < 0 ? -50 : 50)) / 100 + 1024;
    brightness_sse2(pSrcDst, srcDstStep, width, height, W);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
