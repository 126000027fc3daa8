// DV 2-4-8 transforms of field-coded blocks, in place: forward, inverse, and
// the inverse that reduces a block to 4x4 samples.  Layout, weights and
// rounding are described in dct.h; every pass is a matrix pass of exact
// 32-bit sums (dct_simd.h) rounded half up.
#include "blocks/dct.h"
#include "blocks/dct_simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::dct {
namespace {

using namespace zan::dct;

// C(v) cos(pi v (2z+1) / 8) at Q16: 32768 cos for v > 0, 23170 for v = 0.
constexpr Zan32s weight4(int v, int z) { return v == 0 ? kCosQ15[4] : cos16(kCosQ15, 2 * v * (2 * z + 1)); }

// Forward, down the columns: rows 0-3 the 4-point transform of the sums of
// lines 2z and 2z+1, rows 4-7 that of their differences.
constexpr Mat8 make_fwd_fields() {
    Mat8 m{};
    for (int v = 0; v < 4; ++v)
        for (int z = 0; z < 4; ++z) {
            m.m[v][2 * z] = m.m[v][2 * z + 1] = weight4(v, z);
            m.m[v + 4][2 * z] = weight4(v, z);
            m.m[v + 4][2 * z + 1] = -weight4(v, z);
        }
    return m;
}
// Inverse, down the columns: line 2z = (sum + difference) / 2, line 2z+1 =
// (sum - difference) / 2, each from the 4-point inverse c(v) cos(...), whose
// halves are again C(v) cos(...).
constexpr Mat8 make_inv_fields() {
    Mat8 f = make_fwd_fields(), m{};
    for (int i = 0; i < 8; ++i)
        for (int j = 0; j < 8; ++j) m.m[i][j] = f.m[j][i];
    return m;
}
// 4-point inverse with the halving of the 4x4 reduction, in the top left
// corner of an 8x8 matrix.
constexpr Mat8 make_inv4() {
    Mat8 m{};
    for (int z = 0; z < 4; ++z)
        for (int v = 0; v < 4; ++v) m.m[z][v] = weight4(v, z);
    return m;
}

constexpr Mat8 kFwdFields = make_fwd_fields();
constexpr Mat8 kInvFields = make_inv_fields();
constexpr Mat8 kFwdRows = forward8(kCosQ15, kCosQ15[4]);  // C(h) cos((2x+1) h pi / 16) at Q16
constexpr Mat8 kInvRows = inverse8(kCosQ15, kCosQ15[4]);
constexpr Mat8 kInv4 = make_inv4();

// ============================================================ scalar rules

void load_rule(const Zan16s* p, Block& b) {
    for (int i = 0; i < 8; ++i)
        for (int j = 0; j < 8; ++j) b[i][j] = p[8 * i + j];
}
void store_rule(Zan16s* p, const Block& b) {
    for (int i = 0; i < 8; ++i)
        for (int j = 0; j < 8; ++j) p[8 * i + j] = b[i][j];
}

void fwd_rule(Zan16s* p) {
    Block a, t, c;
    load_rule(p, a);
    mat_rule(kFwdFields, a, t, 1 << 11, 12);  // four fraction bits
    transpose_rule(t);
    mat_rule(kFwdRows, t, c, 1 << 19, 20);
    transpose_rule(c);
    store_rule(p, c);
}

void inv_rule(Zan16s* p) {
    Block c, t, a;
    load_rule(p, c);
    transpose_rule(c);
    mat_rule(kInvRows, c, t, 1 << 10, 11);  // five fraction bits
    transpose_rule(t);
    mat_rule(kInvFields, t, a, 1 << 20, 21);
    store_rule(p, a);
}

void inv4x4_rule(Zan16s* p) {
    Block c{}, t, u;
    for (int v = 0; v < 4; ++v)
        for (int h = 0; h < 4; ++h) c[v][h] = p[8 * v + h];
    mat_rule(kInv4, c, t, 1 << 10, 11);  // t[z][h], five fraction bits
    transpose_rule(t);
    mat_rule(kInv4, t, u, 1 << 20, 21);  // u[x][z]
    transpose_rule(u);
    for (int z = 0; z < 4; ++z)
        for (int x = 0; x < 4; ++x) p[4 * z + x] = u[z][x];
}

// ========================================================== vector kernels

void fwd_simd(Zan16s* p) {
    __m128i a[8], t[8];
    load_block(p, a);
    mat_pass<kFwdFields, 8, 8, 12>(a, t, 1 << 11);
    transpose8x8(t);
    mat_pass<kFwdRows, 8, 8, 20>(t, a, 1 << 19);
    transpose8x8(a);
    store_block(p, a);
}

void inv_simd(Zan16s* p) {
    __m128i c[8], t[8];
    load_block(p, c);
    transpose8x8(c);
    inv8_pass<kInvRows, 8, 11>(c, t, 1 << 10);
    transpose8x8(t);
    mat_pass<kInvFields, 8, 8, 21>(t, c, 1 << 20);
    store_block(p, c);
}

void inv4x4_simd(Zan16s* p) {
    __m128i c[8], t[8];
#pragma GCC unroll 4
    for (int v = 0; v < 4; ++v) c[v] = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + 8 * v));
    mat_pass<kInv4, 4, 4, 11>(c, t, 1 << 10);
    for (int i = 4; i < 8; ++i) t[i] = _mm_setzero_si128();
    transpose8x4(t);
    mat_pass<kInv4, 4, 4, 21>(t, c, 1 << 20);
    for (int i = 4; i < 8; ++i) c[i] = _mm_setzero_si128();
    transpose8x4(c);
#pragma GCC unroll 4
    for (int z = 0; z < 4; ++z) _mm_storel_epi64(reinterpret_cast<__m128i*>(p + 4 * z), c[z]);
}

// ============================================================= catalogue

constexpr KernelPair<InPlaceFn> kFwdPairs[] = {{"dv_fdct2x4x8", fwd_rule, fwd_simd, 8, 8, 0}};
constexpr KernelPair<InPlaceFn> kInvPairs[] = {{"dv_idct2x4x8", inv_rule, inv_simd, 8, 8, 0}};
constexpr KernelPair<InPlaceFn> kInv4Pairs[] = {{"dv_idct2x4x8_to_4x4", inv4x4_rule, inv4x4_simd, 4, 4, 0}};

}  // namespace

const DvKernels dv_kernels = {kFwdPairs, kInvPairs, kInv4Pairs};

}  // namespace zan::ZAN_PATH::dct

// =============================================================== exports

namespace zan::ZAN_PATH {

ZanStatus zaniDCT2x4x8Frw_16s_C1I(Zan16s* pSrcDst) {
    if (!pSrcDst) return zanStsNullPtr;
    dct::fwd_simd(pSrcDst);
    return zanStsOk;
}

ZanStatus zaniDCT2x4x8Inv_16s_C1I(Zan16s* pSrcDst) {
    if (!pSrcDst) return zanStsNullPtr;
    dct::inv_simd(pSrcDst);
    return zanStsOk;
}

ZanStatus zaniDCT8x4x2To4x4Inv_DV_16s_C1I(Zan16s* pSrcDst) {
    if (!pSrcDst) return zanStsNullPtr;
    dct::inv4x4_simd(pSrcDst);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
