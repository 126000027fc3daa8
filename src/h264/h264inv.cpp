// H.264 inverse transforms and dequantisation: 4x4 and 8x8 inverse integer
// transforms, the luma and chroma DC stages, dequantisation by the flat
// tables or by a caller's level-scale row, the SI/SP re-quantisation, and
// the forms that add the residual to a prediction.
//
// The arithmetic of every form is part of its contract: which stages wrap
// around in 16 or 32 bits, which saturate, where the rounding 32 enters.
// The scalar rules below spell it out; the vector kernels repeat it lane by
// lane.
#include "h264/h264inv.h"

#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::h264inv {

using namespace zan::h264inv;

namespace {

// ======================================================= scalar arithmetic

constexpr Zan32s sat16(Zan64s v) { return v > 32767 ? 32767 : v < -32768 ? -32768 : static_cast<Zan32s>(v); }
constexpr Zan32s wrap16(Zan32s v) { return static_cast<Zan16s>(static_cast<Zan16u>(static_cast<Zan32u>(v))); }
constexpr Zan32s add32(Zan32s a, Zan32s b) { return static_cast<Zan32s>(static_cast<Zan32u>(a) + static_cast<Zan32u>(b)); }
constexpr Zan32s sub32(Zan32s a, Zan32s b) { return static_cast<Zan32s>(static_cast<Zan32u>(a) - static_cast<Zan32u>(b)); }
constexpr Zan32s mul32(Zan32s a, Zan32s b) { return static_cast<Zan32s>(static_cast<Zan32u>(a) * static_cast<Zan32u>(b)); }
constexpr Zan32s shl32(Zan32s a, Zan32s n) { return static_cast<Zan32s>(static_cast<Zan32u>(a) << n); }
constexpr Zan32s clamp(Zan32s v, Zan32s lo, Zan32s hi) { return v < lo ? lo : v > hi ? hi : v; }
// Largest sample of a bit depth; the shift count is taken modulo 32.
constexpr Zan32s max_sample(Zan32s bitDepth) { return static_cast<Zan32s>((1u << (bitDepth & 31)) - 1u); }

// The three kinds of addition the transforms use.
struct Sat16 {
    static Zan32s add(Zan32s a, Zan32s b) { return sat16(Zan64s{a} + b); }
    static Zan32s sub(Zan32s a, Zan32s b) { return sat16(Zan64s{a} - b); }
};
struct Wrap16 {
    static Zan32s add(Zan32s a, Zan32s b) { return wrap16(a + b); }
    static Zan32s sub(Zan32s a, Zan32s b) { return wrap16(a - b); }
};
struct Wrap32 {
    static Zan32s add(Zan32s a, Zan32s b) { return add32(a, b); }
    static Zan32s sub(Zan32s a, Zan32s b) { return sub32(a, b); }
};

// ============================================================ scalar rules

// One line of the 4x4 inverse transform (clause 8.5.12.2), whose odd
// inputs are halved, or with Halve false one line of the 4x4 Hadamard
// (clause 8.5.10) in the same butterfly order, which gives the standard's
// output order.  round is added to the two even terms before the last
// butterfly.
template <class Ops, bool Halve = true>
void line4(Zan32s& a0, Zan32s& a1, Zan32s& a2, Zan32s& a3, Zan32s round) {
    Zan32s h1 = Halve ? a1 >> 1 : a1, h3 = Halve ? a3 >> 1 : a3;
    Zan32s e0 = Ops::add(a0, a2), e1 = Ops::sub(a0, a2);
    Zan32s e2 = Ops::sub(h1, a3), e3 = Ops::add(a1, h3);
    e0 = Ops::add(e0, round);
    e1 = Ops::add(e1, round);
    a0 = Ops::add(e0, e3);
    a1 = Ops::add(e1, e2);
    a2 = Ops::sub(e1, e2);
    a3 = Ops::sub(e0, e3);
}

// Rows, then columns.
template <class RowOps, class ColOps>
void transform4x4(Zan32s b[16], Zan32s colRound) {
    for (int i = 0; i < 4; ++i) line4<RowOps>(b[4 * i], b[4 * i + 1], b[4 * i + 2], b[4 * i + 3], 0);
    for (int j = 0; j < 4; ++j) line4<ColOps>(b[j], b[4 + j], b[8 + j], b[12 + j], colRound);
}

// The saturating form: 32 enters the even terms of the column stage.
void inv4x4_sat(Zan32s b[16]) {
    transform4x4<Sat16, Sat16>(b, 32);
    for (int k = 0; k < 16; ++k) b[k] >>= 6;
}

template <class Ops>
void hadamard4x4(Zan32s b[16]) {
    for (int i = 0; i < 4; ++i) line4<Ops, false>(b[4 * i], b[4 * i + 1], b[4 * i + 2], b[4 * i + 3], 0);
    for (int j = 0; j < 4; ++j) line4<Ops, false>(b[j], b[4 + j], b[8 + j], b[12 + j], 0);
}

// pDst = clamp(sat16(pred + r), 0, maxv) for a 4x4 block.
template <class P>
void add_pred4x4(const P* pPred, Zan32s predStep, const Zan32s r[16], P* pDst, Zan32s dstStep, Zan32s maxv) {
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) {
            Zan32s v = clamp(sat16(Zan64s{scalar::at(pPred, predStep, x, y)} + r[4 * y + x]), 0, maxv);
            scalar::put(pDst, dstStep, x, y, static_cast<P>(v));
        }
}

void add4x4_flat_rule(const Zan8u* pPred, Zan32s predStep, Zan16s* pSrcDst, const Zan16s* pDC, Zan8u* pDst,
                      Zan32s dstStep, Zan32s QP, Zan32s AC) {
    const Zan16s* f = kInvQuantRaster[QP].v;
    Zan32s dc = pDC ? *pDC : pSrcDst[0] * f[0];
    Zan32s r[16];
    if (AC == 0) {
        for (Zan32s& v : r) v = wrap16(dc + 32) >> 6;
    } else {
        for (int k = 0; k < 16; ++k) r[k] = wrap16(pSrcDst[k] * f[k]);
        r[0] = wrap16(dc);
        inv4x4_sat(r);
        for (int k = 0; k < 16; ++k) pSrcDst[k] = static_cast<Zan16s>(r[k]);
    }
    add_pred4x4(pPred, predStep, r, pDst, dstStep, 255);
}

void residual4x4_flat_rule(Zan16s* pSrcDst, Zan32s step, const Zan16s* pDC, Zan32s AC, Zan32s QP) {
    using scalar::at;
    const Zan16s* f = kInvQuantRaster[QP].v;
    if (pDC) scalar::put(pSrcDst, step, 0, 0, *pDC);
    Zan32s dc = pDC ? *pDC : at(pSrcDst, step, 0, 0) * f[0];
    Zan32s r[16];
    if (AC == 0) {
        for (Zan32s& v : r) v = wrap16(dc + 32) >> 6;
    } else {
        for (int k = 0; k < 16; ++k) r[k] = wrap16(at(pSrcDst, step, k % 4, k / 4) * f[k]);
        r[0] = wrap16(dc);
        transform4x4<Wrap16, Wrap16>(r, 0);
        for (Zan32s& v : r) v = wrap16(v + 32) >> 6;
    }
    for (int k = 0; k < 16; ++k) scalar::put(pSrcDst, step, k % 4, k / 4, static_cast<Zan16s>(r[k]));
}

// Level-scale dequantisation of one 4x4 coefficient (product in 32 bits).
Zan32s dequant4x4(Zan32s c, Zan32s s, Zan32s QP) {
    Zan32s q = kQp.div[QP];
    Zan32s p = mul32(c, s);
    return QP < 24 ? add32(p, 1 << (3 - q)) >> (4 - q) : shl32(p, q - 4);
}

const Zan16s* scale4x4(const Zan16s* pScaleLevel, Zan32s QP) {
    return pScaleLevel ? pScaleLevel : kLevelScale4x4[kQp.rem[QP]].v;
}

void add4x4_16s_rule(const Zan8u* pPred, Zan32s predStep, Zan16s* pSrcDst, const Zan16s* pDC, Zan8u* pDst,
                     Zan32s dstStep, Zan32s QP, Zan32s AC, const Zan16s* pScaleLevel) {
    const Zan16s* s = scale4x4(pScaleLevel, QP);
    Zan32s r[16];
    if (AC & 1) {
        for (int k = 0; k < 16; ++k) r[k] = sat16(dequant4x4(pSrcDst[k], s[k], QP));
        if (pDC) r[0] = *pDC;
        inv4x4_sat(r);
        for (int k = 0; k < 16; ++k) pSrcDst[k] = static_cast<Zan16s>(r[k]);
    } else {
        Zan32s dc = pDC ? *pDC : dequant4x4(pSrcDst[0], s[0], QP);
        for (Zan32s& v : r) v = wrap16(add32(dc, 32) >> 6);
    }
    add_pred4x4(pPred, predStep, r, pDst, dstStep, 255);
}

void add4x4_32s_rule(const Zan16u* pPred, Zan32s predStep, Zan32s* pSrcDst, const Zan32s* pDC, Zan16u* pDst,
                     Zan32s dstStep, Zan32s QP, Zan32s AC, Zan32s bitDepth, const Zan16s* pScaleLevel) {
    const Zan16s* s = scale4x4(pScaleLevel, QP);
    Zan32s r[16];
    if (AC & 1) {
        for (int k = 0; k < 16; ++k) r[k] = dequant4x4(pSrcDst[k], s[k], QP);
        if (pDC) r[0] = *pDC;
        transform4x4<Wrap32, Wrap32>(r, 0);
        for (int k = 0; k < 16; ++k) pSrcDst[k] = r[k] = add32(r[k], 32) >> 6;
    } else {
        Zan32s dc = pDC ? *pDC : dequant4x4(pSrcDst[0], s[0], QP);
        for (Zan32s& v : r) v = add32(dc, 32) >> 6;
    }
    add_pred4x4(pPred, predStep, r, pDst, dstStep, max_sample(bitDepth));
}

void inv4x4_16s_rule(const Zan16s* pSrc, Zan16s* pDst) {
    Zan32s r[16];
    for (int k = 0; k < 16; ++k) r[k] = pSrc[k];
    inv4x4_sat(r);
    for (int k = 0; k < 16; ++k) pDst[k] = static_cast<Zan16s>(r[k]);
}

void inv4x4_32s_rule(const Zan32s* pSrc, Zan32s* pDst) {
    Zan32s r[16];
    for (int k = 0; k < 16; ++k) r[k] = pSrc[k];
    transform4x4<Wrap32, Wrap32>(r, 0);
    for (int k = 0; k < 16; ++k) pDst[k] = add32(r[k], 32) >> 6;
}

// Luma DC, flat: exact Hadamard, (f * s + r) >> r, low 16 bits.
void luma_dc_flat_rule(Zan16s* p, Zan32s QP, const Zan16s*) {
    Zan32s b[16];
    for (int k = 0; k < 16; ++k) b[k] = p[k];
    hadamard4x4<Wrap32>(b);
    Zan32s r = QP < 6 ? 2 : QP < 12 ? 1 : 0;
    for (int k = 0; k < 16; ++k) p[k] = static_cast<Zan16s>((b[k] * kLumaDcFlat[QP] + r) >> r);
}

Zan32s dc_scale(const Zan16s* pScaleLevel, Zan32s qp) {
    return pScaleLevel ? *pScaleLevel : kLevelScale4x4[kQp.rem[qp]].v[0];
}

void luma_dc_16s_rule(Zan16s* p, Zan32s QP, const Zan16s* pScaleLevel) {
    Zan32s b[16];
    for (int k = 0; k < 16; ++k) b[k] = p[k];
    hadamard4x4<Sat16>(b);
    Zan32s s = dc_scale(pScaleLevel, QP), q = kQp.div[QP];
    for (int k = 0; k < 16; ++k) {
        Zan32s v = QP >= 36 ? wrap16(shl32(b[k] * s, q - 6)) : sat16((b[k] * s + (1 << (5 - q))) >> (6 - q));
        p[k] = static_cast<Zan16s>(v);
    }
}

void luma_dc_32s_rule(Zan32s* p, Zan32s QP, const Zan16s* pScaleLevel) {
    Zan32s b[16];
    for (int k = 0; k < 16; ++k) b[k] = p[k];
    hadamard4x4<Wrap32>(b);
    Zan32s s = dc_scale(pScaleLevel, QP), q = kQp.div[QP];
    for (int k = 0; k < 16; ++k)
        p[k] = QP >= 36 ? shl32(mul32(b[k], s), q - 6) : add32(mul32(b[k], s), 1 << (5 - q)) >> (6 - q);
}

// 2x2 Hadamard of c0 c1 / c2 c3 in the order f0..f3 of the contract.
template <class Ops>
void hadamard2x2(const Zan32s c[4], Zan32s f[4]) {
    f[0] = Ops::add(Ops::add(c[0], c[1]), Ops::add(c[2], c[3]));
    f[1] = Ops::add(Ops::sub(c[0], c[1]), Ops::sub(c[2], c[3]));
    f[2] = Ops::sub(Ops::add(c[0], c[1]), Ops::add(c[2], c[3]));
    f[3] = Ops::sub(Ops::sub(c[0], c[1]), Ops::sub(c[2], c[3]));
}

void chroma_dc_flat_rule(Zan16s* p, Zan32s QP, const Zan16s*) {
    Zan32s c[4] = {p[0], p[1], p[2], p[3]}, f[4];
    hadamard2x2<Wrap16>(c, f);
    for (int k = 0; k < 4; ++k) p[k] = static_cast<Zan16s>((f[k] * kInvQuant[QP][0]) >> 1);
}

void chroma_dc2x2_16s_rule(Zan16s* p, Zan32s QP, const Zan16s* pScaleLevel) {
    Zan32s c[4] = {p[0], p[1], p[2], p[3]}, f[4];
    hadamard2x2<Wrap32>(c, f);  // exact: four 16-bit values
    Zan32s s = dc_scale(pScaleLevel, QP), q = kQp.div[QP];
    for (int k = 0; k < 4; ++k) {
        Zan32s prod = mul32(f[k], s);
        p[k] = static_cast<Zan16s>(q < 5 ? wrap16(prod >> (5 - q)) : sat16(shl32(prod, q - 5)));
    }
}

void chroma_dc2x2_32s_rule(Zan32s* p, Zan32s QP, const Zan16s* pScaleLevel) {
    Zan32s c[4] = {p[0], p[1], p[2], p[3]}, f[4];
    hadamard2x2<Wrap32>(c, f);
    Zan32s s = dc_scale(pScaleLevel, QP), q = kQp.div[QP];
    for (int k = 0; k < 4; ++k) {
        Zan32s prod = mul32(f[k], s);
        p[k] = q < 5 ? prod >> (5 - q) : shl32(prod, q - 5);
    }
}

// 4:2:2 chroma DC, 16-bit form.  Per row k the sum S and difference D of
// its two values saturate to 16 bits, and for rows 1 and 3 also their
// negations NS, ND; the rest of the 4-point Hadamard down the rows wraps:
//   f0 = S0 + S1 + S2 + S3        f1 = S0 + S1 - S2 - S3
//   f2 = S0 + NS1 - S2 - NS3      f3 = S0 + NS1 + S2 + NS3
// (column 0 from S, column 1 likewise from D and ND).
void chroma_dc2x4_16s_rule(Zan16s* p, Zan32s QP, const Zan16s* pScaleLevel) {
    Zan32s S[4], D[4], NS[4], ND[4];
    for (int k = 0; k < 4; ++k) {
        Zan32s a = p[2 * k], b = p[2 * k + 1];
        S[k] = sat16(a + b);
        D[k] = sat16(a - b);
        NS[k] = sat16(-(a + b));
        ND[k] = sat16(b - a);
    }
    Zan32s f[8];
    const Zan32s* P[2] = {S, D};
    const Zan32s* N[2] = {NS, ND};
    for (int j = 0; j < 2; ++j) {
        const Zan32s* v = P[j];
        const Zan32s* n = N[j];
        f[0 + j] = wrap16(v[0] + v[1] + v[2] + v[3]);
        f[2 + j] = wrap16(v[0] + v[1] - v[2] - v[3]);
        f[4 + j] = wrap16(v[0] + n[1] - v[2] - n[3]);
        f[6 + j] = wrap16(v[0] + n[1] + v[2] + n[3]);
    }
    Zan32s qp = QP + 3, s = dc_scale(pScaleLevel, qp), q = kQp.div[qp];
    for (int k = 0; k < 8; ++k) {
        Zan32s v = q >= 6 ? wrap16(shl32(f[k] * s, q - 6)) : sat16((f[k] * s + (1 << (5 - q))) >> (6 - q));
        p[k] = static_cast<Zan16s>(v);
    }
}

// 4:2:2 chroma DC, 32-bit form: the transform of clause 8.5.11.1 wrapping in
// 32 bits.
void chroma_dc2x4_32s_rule(Zan32s* p, Zan32s QP, const Zan16s* pScaleLevel) {
    static constexpr Zan32s A[4][4] = {{1, 1, 1, 1}, {1, 1, -1, -1}, {1, -1, -1, 1}, {1, -1, 1, -1}};
    static constexpr Zan32s B[2][2] = {{1, 1}, {1, -1}};
    Zan32s f[8];
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 2; ++j) {
            Zan32s acc = 0;
            for (int k = 0; k < 4; ++k)
                for (int l = 0; l < 2; ++l) acc = add32(acc, mul32(A[i][k] * B[l][j], p[2 * k + l]));
            f[2 * i + j] = acc;
        }
    Zan32s qp = QP + 3, s = dc_scale(pScaleLevel, qp), q = kQp.div[qp];
    for (int k = 0; k < 8; ++k)
        p[k] = q >= 6 ? shl32(mul32(f[k], s), q - 6) : add32(mul32(f[k], s), 1 << (5 - q)) >> (6 - q);
}

void dequant8x8_16s_rule(Zan16s* p, Zan32s Qp6, const Zan16s* s) {
    for (int k = 0; k < 64; ++k) {
        Zan32s prod = p[k] * s[k];
        Zan32s v = Qp6 >= 6 ? wrap16(shl32(prod, Qp6 - 6)) : sat16((prod + (1 << (5 - Qp6))) >> (6 - Qp6));
        p[k] = static_cast<Zan16s>(v);
    }
}

void dequant8x8_32s_rule(Zan32s* p, Zan32s Qp6, const Zan16s* s) {
    for (int k = 0; k < 64; ++k) {
        Zan32s prod = mul32(p[k], s[k]);
        p[k] = Qp6 >= 6 ? shl32(prod, Qp6 - 6) : add32(prod, 1 << (5 - Qp6)) >> (6 - Qp6);
    }
}

// One line of the 8x8 inverse transform (clause 8.5.13).  Sums of more than
// two terms are taken left to right, "-a + b" as b - a.
template <class Ops>
void line8(Zan32s* d, int stride) {
    auto D = [&](int i) { return d[i * stride]; };
    Zan32s e0 = Ops::add(D(0), D(4));
    Zan32s e1 = Ops::sub(Ops::sub(Ops::sub(D(5), D(3)), D(7)), D(7) >> 1);
    Zan32s e2 = Ops::sub(D(0), D(4));
    Zan32s e3 = Ops::sub(Ops::sub(Ops::add(D(1), D(7)), D(3)), D(3) >> 1);
    Zan32s e4 = Ops::sub(D(2) >> 1, D(6));
    Zan32s e5 = Ops::add(Ops::add(Ops::sub(D(7), D(1)), D(5)), D(5) >> 1);
    Zan32s e6 = Ops::add(D(2), D(6) >> 1);
    Zan32s e7 = Ops::add(Ops::add(Ops::add(D(3), D(5)), D(1)), D(1) >> 1);
    Zan32s f0 = Ops::add(e0, e6), f1 = Ops::add(e1, e7 >> 2), f2 = Ops::add(e2, e4), f3 = Ops::add(e3, e5 >> 2);
    Zan32s f4 = Ops::sub(e2, e4), f5 = Ops::sub(e3 >> 2, e5), f6 = Ops::sub(e0, e6), f7 = Ops::sub(e7, e1 >> 2);
    const Zan32s g[8] = {Ops::add(f0, f7), Ops::add(f2, f5), Ops::add(f4, f3), Ops::add(f6, f1),
                         Ops::sub(f6, f1), Ops::sub(f4, f3), Ops::sub(f2, f5), Ops::sub(f0, f7)};
    for (int i = 0; i < 8; ++i) d[i * stride] = g[i];
}

template <class Ops>
void transform8x8(Zan32s b[64]) {
    for (int i = 0; i < 8; ++i) line8<Ops>(b + 8 * i, 1);
    for (int j = 0; j < 8; ++j) line8<Ops>(b + j, 8);
}

void add8x8_16s_rule(const Zan8u* pPred, Zan32s predStep, const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep) {
    Zan32s b[64];
    for (int k = 0; k < 64; ++k) b[k] = pSrc[k];
    transform8x8<Sat16>(b);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            Zan32s pred = scalar::at(pPred, predStep, x, y);
            Zan32s v = sat16(Zan64s{pred * 64 + 32} + b[8 * y + x]) >> 6;
            scalar::put(pDst, dstStep, x, y, static_cast<Zan8u>(clamp(v, 0, 255)));
        }
}

void add8x8_32s_rule(const Zan16u* pPred, Zan32s predStep, const Zan32s* pSrc, Zan16u* pDst, Zan32s dstStep,
                     Zan32s bitDepth) {
    Zan32s b[64];
    for (int k = 0; k < 64; ++k) b[k] = pSrc[k];
    transform8x8<Wrap32>(b);
    Zan32s maxv = max_sample(bitDepth);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            Zan32s pred = scalar::at(pPred, predStep, x, y);
            Zan32s v = add32(add32(b[8 * y + x], 32), pred << 6) >> 6;
            scalar::put(pDst, dstStep, x, y, static_cast<Zan16u>(clamp(v, 0, maxv)));
        }
}

// SI/SP 4x4 (clause 8.6): re-quantisation with qs and the inverse transform
// with rows wrapping in 16 bits and columns in 32 bits.  This scalar code is
// the implementation: the path is rare and holds a per-position branch.
// qp and qs outside 0..51 are the caller's fault; they are limited to that
// range here only so that the tables are never read outside.
Zan32s safe_qp(Zan32s qp) { return static_cast<Zan32u>(qp) > 51u ? 51 : qp; }

void sisp4x4(Zan16s* pSrcDst, const Zan16s* pPredict, const Zan16s* pDC, Zan32s AC, Zan32s qp, Zan32s qs,
             Zan32s switching) {
    static constexpr Zan32s A[3] = {16, 25, 20};
    qp = safe_qp(qp);
    qs = safe_qp(qs);
    Zan32s qd = switching ? qs : qp;
    Zan32s shift = 15 + qs / 6, half = (1 << shift) / 2;
    Zan32s out[16];
    for (int k = 0; k < 16; ++k) {
        Zan32s c = kClass4x4[k];
        if (k == 0 && pDC) {
            out[0] = *pDC;
            continue;
        }
        Zan32s t = pPredict[k];
        if (k == 0 || AC != 0) t = add32(t, mul32(mul32(pSrcDst[k], A[c]), kInvQuant[qd][c]) >> 6);
        Zan32s mag = t < 0 ? sub32(0, t) : t;
        Zan32s m = add32(mul32(mag, kQuantCoefClass[qs % 6][c]), half) >> shift;
        Zan32s v = mul32(m, kInvQuant[qs][c]);
        out[k] = wrap16(t < 1 ? sub32(0, v) : v);
    }
    transform4x4<Wrap16, Wrap32>(out, 0);
    for (int k = 0; k < 16; ++k) pSrcDst[k] = static_cast<Zan16s>(clamp((out[k] + 32) >> 6, 0, 255));
}

void sisp_chroma_dc(Zan16s* pSrcDst, const Zan16s* pDCPredict, Zan32s qp, Zan32s qs, Zan32s switching) {
    qp = safe_qp(qp);
    qs = safe_qp(qs);
    Zan32s qd = switching ? qs : qp;
    Zan32s c[4] = {pDCPredict[0], pDCPredict[1], pDCPredict[2], pDCPredict[3]}, h[4];
    hadamard2x2<Wrap16>(c, h);
    Zan32s v[4];
    for (int i = 0; i < 4; ++i) {
        Zan32s t = h[i] + ((pSrcDst[i] * (kInvQuant[qd][0] << 4)) >> 5);
        Zan32s mag = t < 0 ? -t : t;
        Zan32s m = add32(mul32(mag, kQuantCoefClass[qs % 6][0]), 1 << (15 + qs / 6)) >> (16 + qs / 6);
        Zan32s w = mul32(m, kInvQuant[qs][0]);
        v[i] = wrap16(t < 0 ? sub32(0, w) : w);
    }
    Zan32s f[4];
    hadamard2x2<Wrap32>(v, f);
    for (int i = 0; i < 4; ++i) pSrcDst[i] = static_cast<Zan16s>(f[i] >> 1);
}

// ========================================================== vector kernels

using simd::load16;
using simd::load4;
using simd::load8;
using simd::row;
using simd::store16;
using simd::store8;

// [a low half | b high half].
inline __m128i lo_hi(__m128i a, __m128i b) {
    return _mm_castpd_si128(_mm_shuffle_pd(_mm_castsi128_pd(a), _mm_castsi128_pd(b), 2));
}
inline __m128i swap_halves(__m128i v) { return _mm_shuffle_epi32(v, _MM_SHUFFLE(1, 0, 3, 2)); }

struct VSat16 {
    static __m128i add(__m128i a, __m128i b) { return _mm_adds_epi16(a, b); }
    static __m128i sub(__m128i a, __m128i b) { return _mm_subs_epi16(a, b); }
    template <int n> static __m128i sra(__m128i a) { return _mm_srai_epi16(a, n); }
};
struct VWrap16 {
    static __m128i add(__m128i a, __m128i b) { return _mm_add_epi16(a, b); }
    static __m128i sub(__m128i a, __m128i b) { return _mm_sub_epi16(a, b); }
    template <int n> static __m128i sra(__m128i a) { return _mm_srai_epi16(a, n); }
};
struct VWrap32 {
    static __m128i add(__m128i a, __m128i b) { return _mm_add_epi32(a, b); }
    static __m128i sub(__m128i a, __m128i b) { return _mm_sub_epi32(a, b); }
    template <int n> static __m128i sra(__m128i a) { return _mm_srai_epi32(a, n); }
};

// One 4-point stage on 16-bit lanes, with the four input lines held as
// x = [a0 | a1] and y = [a2 | a3] (four lanes each).  Returns p = [b0 | b1]
// and q = [b3 | b2].  round goes to the lanes of the even terms (low half).
// The core transform halves its odd inputs (Halve), the Hadamard does not.
template <class V, bool Halve = true>
inline void stage4(__m128i x, __m128i y, __m128i round, __m128i& p, __m128i& q) {
    __m128i s = V::add(x, Halve ? lo_hi(y, V::template sra<1>(y)) : y);  // [e0 | e3]
    __m128i d = V::sub(Halve ? lo_hi(x, V::template sra<1>(x)) : x, y);  // [e1 | e2]
    s = V::add(s, round);
    d = V::add(d, round);
    __m128i e01 = _mm_unpacklo_epi64(s, d), e32 = _mm_unpackhi_epi64(s, d);
    p = V::add(e01, e32);
    q = V::sub(e01, e32);
}

// 4x4 transpose of 16-bit values held as [r0 | r1], [r2 | r3].
inline void transpose4x4_16(__m128i& a, __m128i& b) {
    __m128i t0 = _mm_unpacklo_epi16(a, b), t1 = _mm_unpackhi_epi16(a, b);
    a = _mm_unpacklo_epi16(t0, t1);
    b = _mm_unpackhi_epi16(t0, t1);
}

// The 16-bit 4x4 transform of V's arithmetic (or with Halve false the
// Hadamard): rows r01 = [row0 | row1], r23 = [row2 | row3] in, the same
// layout out (before the final shift).
template <class V, bool Halve = true>
inline void transform4x4_16(__m128i& r01, __m128i& r23, __m128i round) {
    __m128i p, q;
    transpose4x4_16(r01, r23);  // columns: lanes are rows
    stage4<V, Halve>(r01, r23, _mm_setzero_si128(), p, q);
    r01 = p;
    r23 = swap_halves(q);
    transpose4x4_16(r01, r23);  // rows again
    stage4<V, Halve>(r01, r23, round, p, q);
    r01 = p;
    r23 = swap_halves(q);
}

inline __m128i round_even32() { return _mm_set_epi16(0, 0, 0, 0, 32, 32, 32, 32); }

// Two rows of four 8-bit prediction samples as 16-bit lanes.
inline __m128i pred2x4_8u(const Zan8u* p, Zan32s step, Zan32s y) {
    __m128i v = _mm_unpacklo_epi32(load4(row(p, step, y)), load4(row(p, step, y + 1)));
    return _mm_unpacklo_epi8(v, _mm_setzero_si128());
}
inline void store2x4_8u(Zan8u* p, Zan32s step, Zan32s y, __m128i v16) {
    __m128i b = _mm_packus_epi16(v16, v16);
    Zan32s w0 = _mm_cvtsi128_si32(b), w1 = _mm_cvtsi128_si32(_mm_srli_si128(b, 4));
    std::memcpy(row(p, step, y), &w0, 4);
    std::memcpy(row(p, step, y + 1), &w1, 4);
}
// pDst = clamp(pred + residual) for residual rows [0 | 1], [2 | 3].
inline void add_pred4x4_8u(const Zan8u* pPred, Zan32s predStep, __m128i r01, __m128i r23, Zan8u* pDst,
                           Zan32s dstStep) {
    __m128i s01 = _mm_adds_epi16(pred2x4_8u(pPred, predStep, 0), r01);
    __m128i s23 = _mm_adds_epi16(pred2x4_8u(pPred, predStep, 2), r23);
    store2x4_8u(pDst, dstStep, 0, s01);
    store2x4_8u(pDst, dstStep, 2, s23);
}

void add4x4_flat_simd(const Zan8u* pPred, Zan32s predStep, Zan16s* pSrcDst, const Zan16s* pDC, Zan8u* pDst,
                      Zan32s dstStep, Zan32s QP, Zan32s AC) {
    const Zan16s* f = kInvQuantRaster[QP].v;
    Zan32s dc = pDC ? *pDC : pSrcDst[0] * f[0];
    if (AC == 0) {
        __m128i r = _mm_set1_epi16(static_cast<Zan16s>(static_cast<Zan16s>(dc + 32) >> 6));
        add_pred4x4_8u(pPred, predStep, r, r, pDst, dstStep);
        return;
    }
    __m128i r01 = _mm_mullo_epi16(load16(pSrcDst), simd::load16a(f));
    __m128i r23 = _mm_mullo_epi16(load16(pSrcDst + 8), simd::load16a(f + 8));
    r01 = _mm_insert_epi16(r01, dc, 0);
    transform4x4_16<VSat16>(r01, r23, round_even32());
    r01 = _mm_srai_epi16(r01, 6);
    r23 = _mm_srai_epi16(r23, 6);
    store16(pSrcDst, r01);
    store16(pSrcDst + 8, r23);
    add_pred4x4_8u(pPred, predStep, r01, r23, pDst, dstStep);
}

void residual4x4_flat_simd(Zan16s* pSrcDst, Zan32s step, const Zan16s* pDC, Zan32s AC, Zan32s QP) {
    const Zan16s* f = kInvQuantRaster[QP].v;
    if (pDC) std::memcpy(pSrcDst, pDC, 2);
    Zan32s dc = pDC ? *pDC : pSrcDst[0] * f[0];
    __m128i r01, r23;
    if (AC == 0) {
        r01 = r23 = _mm_set1_epi16(static_cast<Zan16s>(static_cast<Zan16s>(dc + 32) >> 6));
    } else {
        r01 = _mm_unpacklo_epi64(load8(row(pSrcDst, step, 0)), load8(row(pSrcDst, step, 1)));
        r23 = _mm_unpacklo_epi64(load8(row(pSrcDst, step, 2)), load8(row(pSrcDst, step, 3)));
        r01 = _mm_insert_epi16(_mm_mullo_epi16(r01, simd::load16a(f)), dc, 0);
        r23 = _mm_mullo_epi16(r23, simd::load16a(f + 8));
        transform4x4_16<VWrap16>(r01, r23, _mm_setzero_si128());
        const __m128i k32 = _mm_set1_epi16(32);
        r01 = _mm_srai_epi16(_mm_add_epi16(r01, k32), 6);
        r23 = _mm_srai_epi16(_mm_add_epi16(r23, k32), 6);
    }
    store8(row(pSrcDst, step, 0), r01);
    store8(row(pSrcDst, step, 1), _mm_unpackhi_epi64(r01, r01));
    store8(row(pSrcDst, step, 2), r23);
    store8(row(pSrcDst, step, 3), _mm_unpackhi_epi64(r23, r23));
}

// Eight 16-bit coefficients times eight 16-bit scales as two registers of
// 32-bit products.
inline void mul16x16_32(__m128i c, __m128i s, __m128i& lo, __m128i& hi) {
    __m128i l = _mm_mullo_epi16(c, s), h = _mm_mulhi_epi16(c, s);
    lo = _mm_unpacklo_epi16(l, h);
    hi = _mm_unpackhi_epi16(l, h);
}

// The 4x4 level-scale dequantisation of eight coefficients, saturated to 16 bits.
inline __m128i dequant8_16(__m128i c, __m128i s, bool left, __m128i count, __m128i round) {
    __m128i lo, hi;
    mul16x16_32(c, s, lo, hi);
    if (left) {
        lo = _mm_sll_epi32(lo, count);
        hi = _mm_sll_epi32(hi, count);
    } else {
        lo = _mm_sra_epi32(_mm_add_epi32(lo, round), count);
        hi = _mm_sra_epi32(_mm_add_epi32(hi, round), count);
    }
    return _mm_packs_epi32(lo, hi);
}

void add4x4_16s_simd(const Zan8u* pPred, Zan32s predStep, Zan16s* pSrcDst, const Zan16s* pDC, Zan8u* pDst,
                     Zan32s dstStep, Zan32s QP, Zan32s AC, const Zan16s* pScaleLevel) {
    const Zan16s* s = scale4x4(pScaleLevel, QP);
    if (!(AC & 1)) {
        Zan32s dc = pDC ? *pDC : dequant4x4(pSrcDst[0], s[0], QP);
        __m128i r = _mm_set1_epi16(static_cast<Zan16s>(add32(dc, 32) >> 6));
        add_pred4x4_8u(pPred, predStep, r, r, pDst, dstStep);
        return;
    }
    Zan32s q = kQp.div[QP];
    bool left = QP >= 24;
    __m128i count = _mm_cvtsi32_si128(left ? q - 4 : 4 - q);
    __m128i round = _mm_set1_epi32(left ? 0 : 1 << (3 - q));
    __m128i r01 = dequant8_16(load16(pSrcDst), load16(s), left, count, round);
    __m128i r23 = dequant8_16(load16(pSrcDst + 8), load16(s + 8), left, count, round);
    if (pDC) r01 = _mm_insert_epi16(r01, *pDC, 0);
    transform4x4_16<VSat16>(r01, r23, round_even32());
    r01 = _mm_srai_epi16(r01, 6);
    r23 = _mm_srai_epi16(r23, 6);
    store16(pSrcDst, r01);
    store16(pSrcDst + 8, r23);
    add_pred4x4_8u(pPred, predStep, r01, r23, pDst, dstStep);
}

void inv4x4_16s_simd(const Zan16s* pSrc, Zan16s* pDst) {
    __m128i r01 = load16(pSrc), r23 = load16(pSrc + 8);
    transform4x4_16<VSat16>(r01, r23, round_even32());
    store16(pDst, _mm_srai_epi16(r01, 6));
    store16(pDst + 8, _mm_srai_epi16(r23, 6));
}

// ---- 32-bit lanes

// Low 32 bits of the lane-wise product (SSE2 has no 32-bit mullo).
inline __m128i mullo32(__m128i a, __m128i b) {
    __m128i even = _mm_mul_epu32(a, b);
    __m128i odd = _mm_mul_epu32(_mm_srli_epi64(a, 32), _mm_srli_epi64(b, 32));
    return _mm_unpacklo_epi32(_mm_shuffle_epi32(even, _MM_SHUFFLE(0, 0, 2, 0)),
                              _mm_shuffle_epi32(odd, _MM_SHUFFLE(0, 0, 2, 0)));
}
// Four 16-bit values at p, sign-extended to 32-bit lanes.
inline __m128i load4_16s_as_32(const Zan16s* p) {
    __m128i v = load8(p);
    return _mm_srai_epi32(_mm_unpacklo_epi16(v, v), 16);
}
// Low 16 bits of each 32-bit lane of a and b, packed a then b.
inline __m128i pack_low16(__m128i a, __m128i b) {
    return _mm_packs_epi32(_mm_srai_epi32(_mm_slli_epi32(a, 16), 16), _mm_srai_epi32(_mm_slli_epi32(b, 16), 16));
}
// clamp(v, 0, maxv) on 32-bit lanes, maxv >= 0.
inline __m128i clamp32(__m128i v, __m128i maxv) {
    v = _mm_and_si128(v, _mm_cmpgt_epi32(v, _mm_setzero_si128()));
    __m128i over = _mm_cmpgt_epi32(v, maxv);
    return _mm_or_si128(_mm_and_si128(over, maxv), _mm_andnot_si128(over, v));
}

// Sample limits for clamp_pack: the largest sample in 32-bit and, where it
// fits (bit depths up to 15), 16-bit lanes.
struct SampleMax {
    __m128i v32, v16;
    bool narrow;
    explicit SampleMax(Zan32s bitDepth)
        : v32(_mm_set1_epi32(max_sample(bitDepth))),
          v16(_mm_set1_epi16(static_cast<Zan16s>(max_sample(bitDepth)))),
          narrow(max_sample(bitDepth) <= 32767) {}
};
// clamp(v, 0, max) of two registers of 32-bit lanes, packed to 16 bits (the
// low 16 bits of the clamped values).  When max fits 15 bits, a saturating
// pack followed by a 16-bit clamp gives the same result in three steps.
inline __m128i clamp_pack(__m128i a, __m128i b, const SampleMax& m) {
    if (m.narrow) return _mm_min_epi16(_mm_max_epi16(_mm_packs_epi32(a, b), _mm_setzero_si128()), m.v16);
    return pack_low16(clamp32(a, m.v32), clamp32(b, m.v32));
}

inline void transpose4x4_32(__m128i& r0, __m128i& r1, __m128i& r2, __m128i& r3) {
    __m128i t0 = _mm_unpacklo_epi32(r0, r1), t1 = _mm_unpacklo_epi32(r2, r3);
    __m128i t2 = _mm_unpackhi_epi32(r0, r1), t3 = _mm_unpackhi_epi32(r2, r3);
    r0 = _mm_unpacklo_epi64(t0, t1);
    r1 = _mm_unpackhi_epi64(t0, t1);
    r2 = _mm_unpacklo_epi64(t2, t3);
    r3 = _mm_unpackhi_epi64(t2, t3);
}

// One 4-point stage on 32-bit lanes: the core transform halves its odd
// inputs (Halve), the Hadamard does not.
template <bool Halve>
inline void stage4_32(__m128i& a0, __m128i& a1, __m128i& a2, __m128i& a3) {
    __m128i h1 = Halve ? _mm_srai_epi32(a1, 1) : a1, h3 = Halve ? _mm_srai_epi32(a3, 1) : a3;
    __m128i e0 = _mm_add_epi32(a0, a2), e1 = _mm_sub_epi32(a0, a2);
    __m128i e2 = _mm_sub_epi32(h1, a3), e3 = _mm_add_epi32(a1, h3);
    a0 = _mm_add_epi32(e0, e3);
    a1 = _mm_add_epi32(e1, e2);
    a2 = _mm_sub_epi32(e1, e2);
    a3 = _mm_sub_epi32(e0, e3);
}

// Rows, then columns, of rows r[0..3] (wrapping 32-bit arithmetic).
template <bool Halve>
inline void pass4x4_32(__m128i r[4]) {
    transpose4x4_32(r[0], r[1], r[2], r[3]);
    stage4_32<Halve>(r[0], r[1], r[2], r[3]);
    transpose4x4_32(r[0], r[1], r[2], r[3]);
    stage4_32<Halve>(r[0], r[1], r[2], r[3]);
}

// Wrapping 32-bit 4x4 transform, rows r[0..3] in, residual rows out.
inline void transform4x4_32(__m128i r[4]) {
    pass4x4_32<true>(r);
    const __m128i k32 = _mm_set1_epi32(32);
    for (int i = 0; i < 4; ++i) r[i] = _mm_srai_epi32(_mm_add_epi32(r[i], k32), 6);
}

void inv4x4_32s_simd(const Zan32s* pSrc, Zan32s* pDst) {
    __m128i r[4];
    for (int i = 0; i < 4; ++i) r[i] = load16(pSrc + 4 * i);
    transform4x4_32(r);
    for (int i = 0; i < 4; ++i) store16(pDst + 4 * i, r[i]);
}

void add4x4_32s_simd(const Zan16u* pPred, Zan32s predStep, Zan32s* pSrcDst, const Zan32s* pDC, Zan16u* pDst,
                     Zan32s dstStep, Zan32s QP, Zan32s AC, Zan32s bitDepth, const Zan16s* pScaleLevel) {
    const Zan16s* s = scale4x4(pScaleLevel, QP);
    __m128i r[4];
    if (AC & 1) {
        Zan32s q = kQp.div[QP];
        bool left = QP >= 24;
        __m128i count = _mm_cvtsi32_si128(left ? q - 4 : 4 - q);
        __m128i round = _mm_set1_epi32(left ? 0 : 1 << (3 - q));
        for (int i = 0; i < 4; ++i) {
            __m128i p = mullo32(load16(pSrcDst + 4 * i), load4_16s_as_32(s + 4 * i));
            r[i] = left ? _mm_sll_epi32(p, count) : _mm_sra_epi32(_mm_add_epi32(p, round), count);
        }
        if (pDC) r[0] = _mm_or_si128(_mm_andnot_si128(_mm_cvtsi32_si128(-1), r[0]), _mm_cvtsi32_si128(*pDC));
        transform4x4_32(r);
        for (int i = 0; i < 4; ++i) store16(pSrcDst + 4 * i, r[i]);
    } else {
        Zan32s dc = pDC ? *pDC : dequant4x4(pSrcDst[0], s[0], QP);
        r[0] = r[1] = r[2] = r[3] = _mm_set1_epi32(add32(dc, 32) >> 6);
    }
    // The sum saturates to signed 16 bits before the clamp, so the clamp's
    // top is at most 32767.
    Zan32s top = max_sample(bitDepth) < 32767 ? max_sample(bitDepth) : 32767;
    const __m128i maxv = _mm_set1_epi16(static_cast<Zan16s>(top)), zero = _mm_setzero_si128();
    for (int i = 0; i < 4; i += 2) {
        __m128i p0 = _mm_unpacklo_epi16(load8(row(pPred, predStep, i)), zero);
        __m128i p1 = _mm_unpacklo_epi16(load8(row(pPred, predStep, i + 1)), zero);
        __m128i v = _mm_packs_epi32(_mm_add_epi32(p0, r[i]), _mm_add_epi32(p1, r[i + 1]));
        v = _mm_min_epi16(_mm_max_epi16(v, zero), maxv);
        store8(row(pDst, dstStep, i), v);
        store8(row(pDst, dstStep, i + 1), _mm_unpackhi_epi64(v, v));
    }
}

// ---- DC stages

void luma_dc_16s_simd(Zan16s* p, Zan32s QP, const Zan16s* pScaleLevel) {
    __m128i r01 = load16(p), r23 = load16(p + 8);
    transform4x4_16<VSat16, false>(r01, r23, _mm_setzero_si128());  // saturating Hadamard
    Zan32s s = dc_scale(pScaleLevel, QP), q = kQp.div[QP];
    __m128i sv = _mm_set1_epi16(static_cast<Zan16s>(s));
    if (QP >= 36) {
        __m128i count = _mm_cvtsi32_si128(q - 6);
        r01 = _mm_sll_epi16(_mm_mullo_epi16(r01, sv), count);
        r23 = _mm_sll_epi16(_mm_mullo_epi16(r23, sv), count);
    } else {
        __m128i count = _mm_cvtsi32_si128(6 - q), round = _mm_set1_epi32(1 << (5 - q));
        r01 = dequant8_16(r01, sv, false, count, round);
        r23 = dequant8_16(r23, sv, false, count, round);
    }
    store16(p, r01);
    store16(p + 8, r23);
}

// Flat luma DC: 16-bit input widened, exact Hadamard, (f * s + r) >> r,
// low 16 bits.
void luma_dc_flat_simd(Zan16s* p, Zan32s QP, const Zan16s*) {
    __m128i v01 = load16(p), v23 = load16(p + 8);
    __m128i r[4] = {_mm_srai_epi32(_mm_unpacklo_epi16(v01, v01), 16), _mm_srai_epi32(_mm_unpackhi_epi16(v01, v01), 16),
                    _mm_srai_epi32(_mm_unpacklo_epi16(v23, v23), 16), _mm_srai_epi32(_mm_unpackhi_epi16(v23, v23), 16)};
    pass4x4_32<false>(r);  // Hadamard
    Zan32s sh = QP < 6 ? 2 : QP < 12 ? 1 : 0;
    const __m128i s = _mm_set1_epi32(kLumaDcFlat[QP]), round = _mm_set1_epi32(sh), count = _mm_cvtsi32_si128(sh);
    for (__m128i& x : r) x = _mm_sra_epi32(_mm_add_epi32(mullo32(x, s), round), count);
    store16(p, pack_low16(r[0], r[1]));
    store16(p + 8, pack_low16(r[2], r[3]));
}

void luma_dc_32s_simd(Zan32s* p, Zan32s QP, const Zan16s* pScaleLevel) {
    __m128i r[4] = {load16(p), load16(p + 4), load16(p + 8), load16(p + 12)};
    pass4x4_32<false>(r);  // Hadamard
    Zan32s q = kQp.div[QP];
    const __m128i s = _mm_set1_epi32(dc_scale(pScaleLevel, QP));
    if (QP >= 36) {
        const __m128i count = _mm_cvtsi32_si128(q - 6);
        for (__m128i& x : r) x = _mm_sll_epi32(mullo32(x, s), count);
    } else {
        const __m128i count = _mm_cvtsi32_si128(6 - q), round = _mm_set1_epi32(1 << (5 - q));
        for (__m128i& x : r) x = _mm_sra_epi32(_mm_add_epi32(mullo32(x, s), round), count);
    }
    for (int i = 0; i < 4; ++i) store16(p + 4 * i, r[i]);
}

// 4:2:2 chroma DC, 16-bit: each row pair duplicated and multiply-added
// against the sign patterns gives the row sums and differences (and their
// negations for rows 1 and 3) as 32-bit values, packed to 16 bits with
// saturation; the Hadamard down the rows then wraps in 16 bits.
void chroma_dc2x4_16s_simd(Zan16s* p, Zan32s QP, const Zan16s* pScaleLevel) {
    const __m128i plus = _mm_setr_epi16(1, 1, 1, -1, 1, 1, 1, -1), minus = _mm_setr_epi16(1, 1, 1, -1, -1, -1, -1, 1);
    __m128i v = load16(p);
    __m128i x01 = _mm_shuffle_epi32(v, _MM_SHUFFLE(1, 1, 0, 0)), x23 = _mm_shuffle_epi32(v, _MM_SHUFFLE(3, 3, 2, 2));
    // a: S0 D0 S1 D1 S2 D2 S3 D3; b: S0 D0 NS1 ND1 S2 D2 NS3 ND3.
    __m128i a = _mm_packs_epi32(_mm_madd_epi16(x01, plus), _mm_madd_epi16(x23, plus));
    __m128i b = _mm_packs_epi32(_mm_madd_epi16(x01, minus), _mm_madd_epi16(x23, minus));
    __m128i ta = _mm_add_epi16(a, _mm_shuffle_epi32(a, _MM_SHUFFLE(2, 3, 0, 1)));  // rows 0+1, 2+3
    __m128i tb = _mm_add_epi16(b, _mm_shuffle_epi32(b, _MM_SHUFFLE(2, 3, 0, 1)));  // rows 0-1, 2-3
    __m128i lo = _mm_unpacklo_epi32(ta, tb), hi = _mm_unpackhi_epi32(ta, tb);
    __m128i f = _mm_unpacklo_epi32(_mm_add_epi16(lo, hi), _mm_sub_epi16(lo, hi));  // f0 f1 f3 f2
    f = _mm_shuffle_epi32(f, _MM_SHUFFLE(2, 3, 1, 0));
    Zan32s qp = QP + 3, q = kQp.div[qp];
    const __m128i s = _mm_set1_epi16(static_cast<Zan16s>(dc_scale(pScaleLevel, qp)));
    if (q >= 6) {
        f = _mm_sll_epi16(_mm_mullo_epi16(f, s), _mm_cvtsi32_si128(q - 6));
    } else {
        f = dequant8_16(f, s, false, _mm_cvtsi32_si128(6 - q), _mm_set1_epi32(1 << (5 - q)));
    }
    store16(p, f);
}

void dequant8x8_16s_simd(Zan16s* p, Zan32s Qp6, const Zan16s* s) {
    if (Qp6 >= 6) {
        __m128i count = _mm_cvtsi32_si128(Qp6 - 6);
        for (int k = 0; k < 64; k += 8) store16(p + k, _mm_sll_epi16(_mm_mullo_epi16(load16(p + k), load16(s + k)), count));
    } else {
        __m128i count = _mm_cvtsi32_si128(6 - Qp6), round = _mm_set1_epi32(1 << (5 - Qp6));
        for (int k = 0; k < 64; k += 8) store16(p + k, dequant8_16(load16(p + k), load16(s + k), false, count, round));
    }
}

void dequant8x8_32s_simd(Zan32s* p, Zan32s Qp6, const Zan16s* s) {
    bool left = Qp6 >= 6;
    __m128i count = _mm_cvtsi32_si128(left ? Qp6 - 6 : 6 - Qp6);
    __m128i round = _mm_set1_epi32(left ? 0 : 1 << (5 - Qp6));
    for (int k = 0; k < 64; k += 4) {
        __m128i prod = mullo32(load16(p + k), load4_16s_as_32(s + k));
        store16(p + k, left ? _mm_sll_epi32(prod, count) : _mm_sra_epi32(_mm_add_epi32(prod, round), count));
    }
}

// ---- 8x8

inline void transpose8x8_16(__m128i r[8]) { simd::transpose8x8_epi16(r); }

// One 8-point stage across eight registers (lanes are independent lines),
// in the order of line8.
template <class V>
inline void stage8(__m128i d[8]) {
    using S = V;
    __m128i e0 = S::add(d[0], d[4]);
    __m128i e1 = S::sub(S::sub(S::sub(d[5], d[3]), d[7]), S::template sra<1>(d[7]));
    __m128i e2 = S::sub(d[0], d[4]);
    __m128i e3 = S::sub(S::sub(S::add(d[1], d[7]), d[3]), S::template sra<1>(d[3]));
    __m128i e4 = S::sub(S::template sra<1>(d[2]), d[6]);
    __m128i e5 = S::add(S::add(S::sub(d[7], d[1]), d[5]), S::template sra<1>(d[5]));
    __m128i e6 = S::add(d[2], S::template sra<1>(d[6]));
    __m128i e7 = S::add(S::add(S::add(d[3], d[5]), d[1]), S::template sra<1>(d[1]));
    __m128i f0 = S::add(e0, e6), f1 = S::add(e1, S::template sra<2>(e7));
    __m128i f2 = S::add(e2, e4), f3 = S::add(e3, S::template sra<2>(e5));
    __m128i f4 = S::sub(e2, e4), f5 = S::sub(S::template sra<2>(e3), e5);
    __m128i f6 = S::sub(e0, e6), f7 = S::sub(e7, S::template sra<2>(e1));
    d[0] = S::add(f0, f7);
    d[1] = S::add(f2, f5);
    d[2] = S::add(f4, f3);
    d[3] = S::add(f6, f1);
    d[4] = S::sub(f6, f1);
    d[5] = S::sub(f4, f3);
    d[6] = S::sub(f2, f5);
    d[7] = S::sub(f0, f7);
}

void add8x8_16s_simd(const Zan8u* pPred, Zan32s predStep, const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep) {
    __m128i r[8];
    for (int i = 0; i < 8; ++i) r[i] = load16(pSrc + 8 * i);
    transpose8x8_16(r);
    stage8<VSat16>(r);
    transpose8x8_16(r);
    stage8<VSat16>(r);
    const __m128i zero = _mm_setzero_si128(), k32 = _mm_set1_epi16(32);
    for (int i = 0; i < 8; ++i) {
        __m128i pred = _mm_unpacklo_epi8(load8(row(pPred, predStep, i)), zero);
        __m128i v = _mm_adds_epi16(_mm_add_epi16(_mm_slli_epi16(pred, 6), k32), r[i]);
        v = _mm_srai_epi16(v, 6);
        store8(row(pDst, dstStep, i), _mm_packus_epi16(v, v));
    }
}

void add8x8_32s_simd(const Zan16u* pPred, Zan32s predStep, const Zan32s* pSrc, Zan16u* pDst, Zan32s dstStep,
                     Zan32s bitDepth) {
    // lo[i], hi[i]: columns 0-3 and 4-7 of row i.
    __m128i lo[8], hi[8];
    for (int i = 0; i < 8; ++i) {
        lo[i] = load16(pSrc + 8 * i);
        hi[i] = load16(pSrc + 8 * i + 4);
    }
    // Rows: per group of four rows, registers of one column each.
    for (int g = 0; g < 8; g += 4) {
        __m128i c[8] = {lo[g], lo[g + 1], lo[g + 2], lo[g + 3], hi[g], hi[g + 1], hi[g + 2], hi[g + 3]};
        transpose4x4_32(c[0], c[1], c[2], c[3]);
        transpose4x4_32(c[4], c[5], c[6], c[7]);
        stage8<VWrap32>(c);
        transpose4x4_32(c[0], c[1], c[2], c[3]);
        transpose4x4_32(c[4], c[5], c[6], c[7]);
        for (int i = 0; i < 4; ++i) {
            lo[g + i] = c[i];
            hi[g + i] = c[4 + i];
        }
    }
    // Columns: registers are rows.
    stage8<VWrap32>(lo);
    stage8<VWrap32>(hi);
    const __m128i zero = _mm_setzero_si128(), k32 = _mm_set1_epi32(32);
    const SampleMax maxv(bitDepth);
    for (int i = 0; i < 8; ++i) {
        __m128i pred = load16(row(pPred, predStep, i));
        __m128i pl = _mm_slli_epi32(_mm_unpacklo_epi16(pred, zero), 6);
        __m128i ph = _mm_slli_epi32(_mm_unpackhi_epi16(pred, zero), 6);
        __m128i vl = _mm_srai_epi32(_mm_add_epi32(_mm_add_epi32(lo[i], k32), pl), 6);
        __m128i vh = _mm_srai_epi32(_mm_add_epi32(_mm_add_epi32(hi[i], k32), ph), 6);
        store16(row(pDst, dstStep, i), clamp_pack(vl, vh, maxv));
    }
}

// ================================================================= catalogue

constexpr KernelPair<AddFlatFn> kAddFlat[] = {
    {"add4x4_flat", add4x4_flat_rule, add4x4_flat_simd, 4, 4, 51}};
constexpr KernelPair<ResidualFlatFn> kResidualFlat[] = {
    {"residual4x4_flat", residual4x4_flat_rule, residual4x4_flat_simd, 4, 4, 51}};
constexpr KernelPair<Add16Fn> kAdd16[] = {{"add4x4_16s", add4x4_16s_rule, add4x4_16s_simd, 4, 4, 51}};
constexpr KernelPair<Add32Fn> kAdd32[] = {{"add4x4_32s", add4x4_32s_rule, add4x4_32s_simd, 4, 4, 87}};
constexpr KernelPair<Inv16Fn> kInv16[] = {{"inv4x4_16s", inv4x4_16s_rule, inv4x4_16s_simd, 4, 4, 0}};
constexpr KernelPair<Inv32Fn> kInv32[] = {{"inv4x4_32s", inv4x4_32s_rule, inv4x4_32s_simd, 4, 4, 0}};
constexpr KernelPair<Dc16Fn> kDc16[] = {{"luma_dc_flat", luma_dc_flat_rule, luma_dc_flat_simd, 4, 4, 51},
                                        {"luma_dc_16s", luma_dc_16s_rule, luma_dc_16s_simd, 4, 4, 51},
                                        {"chroma_dc2x4_16s", chroma_dc2x4_16s_rule, chroma_dc2x4_16s_simd, 2, 4, 39}};
constexpr KernelPair<Dc32Fn> kDc32[] = {{"luma_dc_32s", luma_dc_32s_rule, luma_dc_32s_simd, 4, 4, 87}};
constexpr KernelPair<Dequant8x8_16Fn> kDequant16[] = {
    {"dequant8x8_16s", dequant8x8_16s_rule, dequant8x8_16s_simd, 8, 8, 8}};
constexpr KernelPair<Dequant8x8_32Fn> kDequant32[] = {
    {"dequant8x8_32s", dequant8x8_32s_rule, dequant8x8_32s_simd, 8, 8, 14}};
constexpr KernelPair<Add8x8_16Fn> kAdd8x8_16[] = {{"add8x8_16s", add8x8_16s_rule, add8x8_16s_simd, 8, 8, 0}};
constexpr KernelPair<Add8x8_32Fn> kAdd8x8_32[] = {{"add8x8_32s", add8x8_32s_rule, add8x8_32s_simd, 8, 8, 0}};

}  // namespace

const Kernels kernels = {kAddFlat, kResidualFlat, kAdd16, kAdd32, kInv16, kInv32, kDc16, kDc32,
                         kDequant16, kDequant32, kAdd8x8_16, kAdd8x8_32};

// ===================================================== shared entry points

void add4x4_flat(const Zan8u* pPred, Zan32s predStep, Zan16s* pSrcDst, const Zan16s* pDC, Zan8u* pDst,
                 Zan32s dstStep, Zan32s QP, Zan32s AC) {
    add4x4_flat_simd(pPred, predStep, pSrcDst, pDC, pDst, dstStep, QP, AC);
}
void residual4x4_flat(Zan16s* pSrcDst, Zan32s step, const Zan16s* pDC, Zan32s AC, Zan32s QP) {
    residual4x4_flat_simd(pSrcDst, step, pDC, AC, QP);
}
void add4x4_16s(const Zan8u* pPred, Zan32s predStep, Zan16s* pSrcDst, const Zan16s* pDC, Zan8u* pDst,
                Zan32s dstStep, Zan32s QP, Zan32s AC, const Zan16s* pScaleLevel) {
    add4x4_16s_simd(pPred, predStep, pSrcDst, pDC, pDst, dstStep, QP, AC, pScaleLevel);
}
void add4x4_32s(const Zan16u* pPred, Zan32s predStep, Zan32s* pSrcDst, const Zan32s* pDC, Zan16u* pDst,
                Zan32s dstStep, Zan32s QP, Zan32s AC, Zan32s bitDepth, const Zan16s* pScaleLevel) {
    add4x4_32s_simd(pPred, predStep, pSrcDst, pDC, pDst, dstStep, QP, AC, bitDepth, pScaleLevel);
}
void inv4x4_16s(const Zan16s* pSrc, Zan16s* pDst) { inv4x4_16s_simd(pSrc, pDst); }
void inv4x4_32s(const Zan32s* pSrc, Zan32s* pDst) { inv4x4_32s_simd(pSrc, pDst); }
// The 2x2 chroma DC stages (four values) and the 32-bit 4:2:2 one run as
// plain code.
void luma_dc_flat(Zan16s* p, Zan32s QP, const Zan16s* s) { luma_dc_flat_simd(p, QP, s); }
void chroma_dc_flat(Zan16s* p, Zan32s QP, const Zan16s* s) { chroma_dc_flat_rule(p, QP, s); }
void luma_dc_16s(Zan16s* p, Zan32s QP, const Zan16s* s) { luma_dc_16s_simd(p, QP, s); }
void luma_dc_32s(Zan32s* p, Zan32s QP, const Zan16s* s) { luma_dc_32s_simd(p, QP, s); }
void chroma_dc2x2_16s(Zan16s* p, Zan32s QP, const Zan16s* s) { chroma_dc2x2_16s_rule(p, QP, s); }
void chroma_dc2x2_32s(Zan32s* p, Zan32s QP, const Zan16s* s) { chroma_dc2x2_32s_rule(p, QP, s); }
void chroma_dc2x4_16s(Zan16s* p, Zan32s QP, const Zan16s* s) { chroma_dc2x4_16s_simd(p, QP, s); }
void chroma_dc2x4_32s(Zan32s* p, Zan32s QP, const Zan16s* s) { chroma_dc2x4_32s_rule(p, QP, s); }
void dequant8x8_16s(Zan16s* p, Zan32s Qp6, const Zan16s* s) { dequant8x8_16s_simd(p, Qp6, s); }
void dequant8x8_32s(Zan32s* p, Zan32s Qp6, const Zan16s* s) { dequant8x8_32s_simd(p, Qp6, s); }
void add8x8_16s(const Zan8u* pPred, Zan32s predStep, const Zan16s* pSrc, Zan8u* pDst, Zan32s dstStep) {
    add8x8_16s_simd(pPred, predStep, pSrc, pDst, dstStep);
}
void add8x8_32s(const Zan16u* pPred, Zan32s predStep, const Zan32s* pSrc, Zan16u* pDst, Zan32s dstStep,
                Zan32s bitDepth) {
    add8x8_32s_simd(pPred, predStep, pSrc, pDst, dstStep, bitDepth);
}

}  // namespace zan::ZAN_PATH::h264inv

// =============================================================== exports

namespace zan::ZAN_PATH {

namespace {
// Range tests are unsigned, so negative values are out of range.
constexpr bool above(Zan32s v, Zan32u max) { return static_cast<Zan32u>(v) > max; }
}  // namespace

ZanStatus zaniDequantTransformResidualAndAdd_H264_16s_C1I(const Zan8u* pPred, Zan16s* pSrcDst, const Zan16s* pDC,
                                                          Zan8u* pDst, Zan32s predStep, Zan32s dstStep, Zan32s QP,
                                                          Zan32s AC) {
    if (!pPred || !pDst) return zanStsNullPtr;
    if (above(QP, 51)) return zanStsOutOfRange;
    if (!pSrcDst && (!pDC || AC != 0)) return zanStsNullPtr;
    h264inv::add4x4_flat(pPred, predStep, pSrcDst, pDC, pDst, dstStep, QP, AC);
    return zanStsOk;
}

ZanStatus zaniDequantTransformResidual_H264_16s_C1I(Zan16s* pSrcDst, Zan32s step, const Zan16s* pDC, Zan32s AC,
                                                    Zan32s QP) {
    if (!pSrcDst) return zanStsNullPtr;
    if (above(QP, 51)) return zanStsOutOfRange;
    if (step < 8) return zanStsStepBad;
    h264inv::residual4x4_flat(pSrcDst, step, pDC, AC, QP);
    return zanStsOk;
}

ZanStatus zaniDequantTransformResidual_SISP_H264_16s_C1I(Zan16s* pSrcDst, const Zan16s* pPredict, const Zan16s* pDC,
                                                         Zan32s AC, Zan32s qp, Zan32s qs, Zan32s switching) {
    if (!pSrcDst || !pPredict) return zanStsNullPtr;
    h264inv::sisp4x4(pSrcDst, pPredict, pDC, AC, qp, qs, switching);
    return zanStsOk;
}

ZanStatus zaniTransformDequantChromaDC_SISP_H264_16s_C1I(Zan16s* pSrcDst, const Zan16s* pDCPredict, Zan32s qp,
                                                         Zan32s qs, Zan32s switching) {
    if (!pSrcDst || !pDCPredict) return zanStsNullPtr;
    h264inv::sisp_chroma_dc(pSrcDst, pDCPredict, qp, qs, switching);
    return zanStsOk;
}

#define ZAN_H264INV_DC(name, T, maxQp, kernel)                                \
    ZanStatus name(T* pSrcDst, Zan32s QP, const Zan16s* pScaleLevel) {        \
        if (!pSrcDst) return zanStsNullPtr;                                   \
        if (above(QP, maxQp)) return zanStsOutOfRange;                        \
        h264inv::kernel(pSrcDst, QP, pScaleLevel);                            \
        return zanStsOk;                                                      \
    }
ZAN_H264INV_DC(zaniTransformQuantInvLumaDC4x4_H264_16s_C1I, Zan16s, 51, luma_dc_16s)
ZAN_H264INV_DC(zaniTransformQuantInvLumaDC4x4_H264_32s_C1I, Zan32s, 87, luma_dc_32s)
ZAN_H264INV_DC(zaniTransformQuantInvChromaDC2x2_H264_16s_C1I, Zan16s, 39, chroma_dc2x2_16s)
ZAN_H264INV_DC(zaniTransformQuantInvChromaDC2x2_H264_32s_C1I, Zan32s, 75, chroma_dc2x2_32s)
ZAN_H264INV_DC(zaniTransformQuantInvChromaDC2x4_H264_16s_C1I, Zan16s, 39, chroma_dc2x4_16s)
ZAN_H264INV_DC(zaniTransformQuantInvChromaDC2x4_H264_32s_C1I, Zan32s, 75, chroma_dc2x4_32s)
#undef ZAN_H264INV_DC

ZanStatus zaniTransformDequantLumaDC_H264_16s_C1I(Zan16s* pSrcDst, Zan32s QP) {
    if (!pSrcDst) return zanStsNullPtr;
    if (above(QP, 51)) return zanStsOutOfRange;
    h264inv::luma_dc_flat(pSrcDst, QP, nullptr);
    return zanStsOk;
}

ZanStatus zaniTransformDequantChromaDC_H264_16s_C1I(Zan16s* pSrcDst, Zan32s QP) {
    if (!pSrcDst) return zanStsNullPtr;
    if (above(QP, 51)) return zanStsOutOfRange;
    h264inv::chroma_dc_flat(pSrcDst, QP, nullptr);
    return zanStsOk;
}

ZanStatus zaniTransformQuantInvAddPred4x4_H264_16s_C1IR(const Zan8u* pPred, Zan32s predStep, Zan16s* pSrcDst,
                                                        const Zan16s* pDC, Zan8u* pDst, Zan32s dstStep, Zan32s QP,
                                                        Zan32s AC, const Zan16s* pScaleLevel) {
    if (!pPred || !pDst || !pSrcDst) return zanStsNullPtr;
    if (above(QP, 51)) return zanStsOutOfRange;
    h264inv::add4x4_16s(pPred, predStep, pSrcDst, pDC, pDst, dstStep, QP, AC, pScaleLevel);
    return zanStsOk;
}

ZanStatus zaniTransformQuantInvAddPred4x4_H264_32s_C1IR(const Zan16u* pPred, Zan32s predStep, Zan32s* pSrcDst,
                                                        const Zan32s* pDC, Zan16u* pDst, Zan32s dstStep, Zan32s QP,
                                                        Zan32s AC, Zan32s bitDepth, const Zan16s* pScaleLevel) {
    if (!pPred || !pSrcDst || !pDst) return zanStsNullPtr;
    if (above(QP, 87) || bitDepth < 9 || bitDepth > 14) return zanStsOutOfRange;
    h264inv::add4x4_32s(pPred, predStep, pSrcDst, pDC, pDst, dstStep, QP, AC, bitDepth, pScaleLevel);
    return zanStsOk;
}

ZanStatus zaniTransformResidual4x4Inv_H264_16s_C1(const Zan16s* pSrc, Zan16s* pDst) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    h264inv::inv4x4_16s(pSrc, pDst);
    return zanStsOk;
}

ZanStatus zaniTransformResidual4x4Inv_H264_32s_C1(const Zan32s* pSrc, Zan32s* pDst) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    h264inv::inv4x4_32s(pSrc, pDst);
    return zanStsOk;
}

ZanStatus zaniQuantLuma8x8Inv_H264_16s_C1I(Zan16s* pSrcDst, Zan32s Qp6, const Zan16s* pInvLevelScale) {
    if (!pSrcDst || !pInvLevelScale) return zanStsNullPtr;
    if (above(Qp6, 8)) return zanStsQpBad;
    h264inv::dequant8x8_16s(pSrcDst, Qp6, pInvLevelScale);
    return zanStsOk;
}

ZanStatus zaniQuantInvLuma8x8_H264_32s_C1I(Zan32s* pSrcDst, Zan32s Qp6, const Zan16s* pInvLevelScale) {
    if (!pSrcDst || !pInvLevelScale) return zanStsNullPtr;
    if (above(Qp6, 14)) return zanStsQpBad;
    h264inv::dequant8x8_32s(pSrcDst, Qp6, pInvLevelScale);
    return zanStsOk;
}

ZanStatus zaniTransformLuma8x8InvAddPred_H264_16s8u_C1R(const Zan8u* pPred, Zan32s predStep, const Zan16s* pSrc,
                                                        Zan8u* pDst, Zan32s dstStep) {
    if (!pPred || !pSrc || !pDst) return zanStsNullPtr;
    h264inv::add8x8_16s(pPred, predStep, pSrc, pDst, dstStep);
    return zanStsOk;
}

ZanStatus zaniTransformInvAddPredLuma8x8_H264_32s16u_C1R(const Zan16u* pPred, Zan32s predStep, const Zan32s* pSrc,
                                                         Zan16u* pDst, Zan32s dstStep, Zan32s bitDepth) {
    if (!pPred || !pSrc || !pDst) return zanStsNullPtr;
    h264inv::add8x8_32s(pPred, predStep, pSrc, pDst, dstStep, bitDepth);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
