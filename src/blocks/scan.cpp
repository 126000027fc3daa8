// Scans: a coefficient block to scan order and back, through the zigzag or
// one of the two alternate tables (scan 1 alternate vertical, 2 alternate
// horizontal, anything else zigzag).
//
// The vector kernels gather with pshufb: each output register is the OR of
// shuffles of the input registers that feed it, with masks made at compile
// time from the scan tables.  When source and destination overlap, the
// kernels run the scalar sequence, whose result the overlap defines.
#include <cstdint>

#include "blocks/dct.h"
#include "common/scan_tables.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::dct {
namespace {

using namespace zan::dct;

// ============================================================ scalar rules

// Fewer than 20 non-zero coefficients: only non-zero values are stored, in
// scan order, until countNonZero of them have been found; the rest is zero.
// Otherwise all 64 go through the table.
void scan_fwd_rule(const Zan16s* src, Zan16s* dst, Zan32s countNonZero, Zan32s scan) {
    const Zan8u* table = scan_table(scan);
    if (countNonZero < 20) {
        for (int k = 0; k < 64; ++k) dst[k] = 0;
        Zan32s found = 0;
        for (int k = 0; k < 64 && found < countNonZero; ++k) {
            Zan16s v = src[table[k]];
            if (v != 0) {
                dst[k] = v;
                ++found;
            }
        }
    } else {
        for (int k = 0; k < 64; ++k) dst[k] = src[table[k]];
    }
}

// The DC is read first, the block cleared, the DC stored, then entries 1 to
// lastIndex are placed.
void scan_inv_rule(const Zan16s* src, Zan16s* dst, Zan32s lastIndex, Zan32s scan) {
    const Zan8u* table = scan_table(scan);
    Zan16s dc = src[0];
    for (int k = 0; k < 64; ++k) dst[k] = 0;
    dst[0] = dc;
    for (int k = 1; k <= lastIndex; ++k) dst[table[k]] = src[k];
}

// ========================================================== vector kernels

// Shuffle masks: output register o, input register r; byte 0x80 where the
// lane comes from another register.
struct Gather {
    Zan8u mask[8][8][16];
    bool uses[8][8];
};

// from[k]: the input position that output position k takes.
constexpr Gather make_gather(const Zan8u (&from)[64]) {
    Gather g{};
    for (int o = 0; o < 8; ++o)
        for (int r = 0; r < 8; ++r) {
            for (int l = 0; l < 8; ++l) {
                int p = from[8 * o + l];
                bool here = p / 8 == r;
                g.mask[o][r][2 * l] = here ? static_cast<Zan8u>(2 * (p % 8)) : 0x80;
                g.mask[o][r][2 * l + 1] = here ? static_cast<Zan8u>(2 * (p % 8) + 1) : 0x80;
                g.uses[o][r] = g.uses[o][r] || here;
            }
        }
    return g;
}

struct Inverse {
    Zan8u t[64];
};
constexpr Inverse invert(const Zan8u (&table)[64]) {
    Inverse r{};
    for (int k = 0; k < 64; ++k) r.t[table[k]] = static_cast<Zan8u>(k);
    return r;
}
constexpr Inverse kInvZigzag = invert(ownvc_Zigzag), kInvAltV = invert(ownvc_AltScanV),
                  kInvAltH = invert(ownvc_AltScanH);

// One object per table (not an array): a template argument must name a
// whole object for every compiler, not an element of an array.
alignas(16) constexpr Gather kFwdZigzag = make_gather(ownvc_Zigzag);
alignas(16) constexpr Gather kFwdAltV = make_gather(ownvc_AltScanV);
alignas(16) constexpr Gather kFwdAltH = make_gather(ownvc_AltScanH);
alignas(16) constexpr Gather kInvZigzagG = make_gather(kInvZigzag.t);
alignas(16) constexpr Gather kInvAltVG = make_gather(kInvAltV.t);
alignas(16) constexpr Gather kInvAltHG = make_gather(kInvAltH.t);
template <int S>
constexpr const Gather& fwd_gather() { return S == 1 ? kFwdAltV : S == 2 ? kFwdAltH : kFwdZigzag; }
template <int S>
constexpr const Gather& inv_gather() { return S == 1 ? kInvAltVG : S == 2 ? kInvAltHG : kInvZigzagG; }

template <const Gather& G>
__attribute__((always_inline)) inline void gather(const __m128i (&in)[8], __m128i (&out)[8]) {
#pragma GCC unroll 8
    for (int o = 0; o < 8; ++o) {
        __m128i acc = _mm_setzero_si128();
#pragma GCC unroll 8
        for (int r = 0; r < 8; ++r)
            if (G.uses[o][r]) acc = _mm_or_si128(acc, _mm_shuffle_epi8(in[r], simd::load16(G.mask[o][r])));
        out[o] = acc;
    }
}

inline bool overlap(const Zan16s* a, const Zan16s* b) {
    auto x = reinterpret_cast<std::uintptr_t>(a), y = reinterpret_cast<std::uintptr_t>(b);
    return (x > y ? x - y : y - x) < 128;
}

inline __m128i lane_index(int o) { return _mm_add_epi16(_mm_set1_epi16(static_cast<short>(8 * o)), _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7)); }

template <int S>
void scan_fwd_block(const Zan16s* src, Zan16s* dst, Zan32s countNonZero) {
    __m128i in[8], out[8];
#pragma GCC unroll 8
    for (int r = 0; r < 8; ++r) in[r] = simd::load16(src + 8 * r);
    gather<fwd_gather<S>()>(in, out);
    if (countNonZero < 20) {
        // Non-zero lanes as 64 bits in scan order; keep the positions before
        // the (countNonZero+1)-th of them.
        const __m128i z = _mm_setzero_si128();
        std::uint64_t nz = 0;
#pragma GCC unroll 4
        for (int o = 0; o < 8; o += 2) {
            __m128i zero = _mm_packs_epi16(_mm_cmpeq_epi16(out[o], z), _mm_cmpeq_epi16(out[o + 1], z));
            nz |= static_cast<std::uint64_t>(static_cast<Zan16u>(~_mm_movemask_epi8(zero))) << (8 * o);
        }
        for (Zan32s i = 0; i < countNonZero && nz; ++i) nz &= nz - 1;
        if (nz) {
            __m128i end = _mm_set1_epi16(static_cast<short>(__builtin_ctzll(nz)));
#pragma GCC unroll 8
            for (int o = 0; o < 8; ++o) out[o] = _mm_and_si128(out[o], _mm_cmpgt_epi16(end, lane_index(o)));
        }
    }
#pragma GCC unroll 8
    for (int o = 0; o < 8; ++o) simd::store16(dst + 8 * o, out[o]);
}

template <int S>
void scan_inv_block(const Zan16s* src, Zan16s* dst, Zan32s lastIndex) {
    if (lastIndex < 16) {
        // Few values: clear with vector stores and place them one by one.
        constexpr const Zan8u* table = S == 1 ? ownvc_AltScanV : S == 2 ? ownvc_AltScanH : ownvc_Zigzag;
        Zan16s dc = src[0];
#pragma GCC unroll 8
        for (int o = 0; o < 8; ++o) simd::store16(dst + 8 * o, _mm_setzero_si128());
        dst[0] = dc;
        for (Zan32s k = 1; k <= lastIndex; ++k) dst[table[k]] = src[k];
        return;
    }
    __m128i in[8], out[8];
    const __m128i end = _mm_set1_epi16(static_cast<short>(lastIndex + 1));
#pragma GCC unroll 8
    for (int r = 0; r < 8; ++r) in[r] = _mm_and_si128(simd::load16(src + 8 * r), _mm_cmpgt_epi16(end, lane_index(r)));
    gather<inv_gather<S>()>(in, out);
#pragma GCC unroll 8
    for (int o = 0; o < 8; ++o) simd::store16(dst + 8 * o, out[o]);
}

// ================================================================= tables

using FwdBlockFn = void (*)(const Zan16s*, Zan16s*, Zan32s);
constexpr FwdBlockFn kScanFwd[3] = {scan_fwd_block<0>, scan_fwd_block<1>, scan_fwd_block<2>};
constexpr FwdBlockFn kScanInv[3] = {scan_inv_block<0>, scan_inv_block<1>, scan_inv_block<2>};

inline int scan_index(Zan32s scan) { return scan == 1 || scan == 2 ? scan : 0; }

}  // namespace

void scan_fwd_simd(const Zan16s* src, Zan16s* dst, Zan32s countNonZero, Zan32s scan) {
    if (overlap(src, dst)) return scan_fwd_rule(src, dst, countNonZero, scan);
    kScanFwd[scan_index(scan)](src, dst, countNonZero);
}

void scan_inv_simd(const Zan16s* src, Zan16s* dst, Zan32s lastIndex, Zan32s scan) {
    if (overlap(src, dst)) return scan_inv_rule(src, dst, lastIndex, scan);
    kScanInv[scan_index(scan)](src, dst, lastIndex);
}

namespace {

// ============================================================= catalogue

constexpr KernelPair<ScanFwdFn> kScanFwdPairs[] = {{"scan_fwd", scan_fwd_rule, scan_fwd_simd, 8, 8, 0}};
constexpr KernelPair<ScanInvFn> kScanInvPairs[] = {{"scan_inv", scan_inv_rule, scan_inv_simd, 8, 8, 0}};

}  // namespace

const ScanKernels scan_kernels = {kScanFwdPairs, kScanInvPairs};

}  // namespace zan::ZAN_PATH::dct

// =============================================================== exports

namespace zan::ZAN_PATH {

ZanStatus zaniScanFwd_16s_C1(const Zan16s* pSrc, Zan16s* pDst, Zan32s countNonZero, Zan32s scan) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (countNonZero < 1 || countNonZero > 64) return zanStsOutOfRange;
    dct::scan_fwd_simd(pSrc, pDst, countNonZero, scan);
    return zanStsOk;
}

ZanStatus zaniScanInv_16s_C1(const Zan16s* pSrc, Zan16s* pDst, Zan32s lastIndex, Zan32s scan) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (lastIndex < 0 || lastIndex > 63) return zanStsOutOfRange;
    dct::scan_inv_simd(pSrc, pDst, lastIndex, scan);
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
