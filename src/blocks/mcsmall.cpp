// Half-sample motion compensation of narrow blocks (4x8, 4x4, 4x2, 2x4,
// 2x2), forward and bidirectional, and the 4x4 HP copy that the VC-1
// interpolation takes from the HP tables.
//
// The narrow tables have one kernel per position (four slots each, so that
// the masked mcType indexes them directly); the kernel takes the rounding
// bit as an argument and turns it into a rounding constant before its loop.
// The arithmetic is exact 16-bit arithmetic on up to eight samples at a time
// (two rows of four, or four rows of two).
#include <cstring>
#include <initializer_list>
#include <utility>

#include "blocks/mc.h"
#include "common/scalar.h"
#include "common/simd.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::mc {
namespace {

using namespace zan::mc;
using scalar::at;
using scalar::put;

// ============================================================ scalar rules

template <int P>
Zan32s pos_rule(const Zan8u* r, Zan32s s, Zan32s x, Zan32s y, Zan32s rc) {
    Zan32s a = at(r, s, x, y);
    if constexpr (P == kFH) return (a + at(r, s, x, y + 1) + 1 - rc) >> 1;
    if constexpr (P == kHF) return (a + at(r, s, x + 1, y) + 1 - rc) >> 1;
    if constexpr (P == kHH) return (a + at(r, s, x + 1, y) + at(r, s, x, y + 1) + at(r, s, x + 1, y + 1) + 2 - rc) >> 2;
    return a;
}

Zan8u sat8(Zan32s v) { return static_cast<Zan8u>(v < 0 ? 0 : v > 255 ? 255 : v); }

template <int W, int H, int P>
void small_rule(const Zan8u* r, Zan32s rs, const Zan16s* res, Zan32s ress, Zan8u* d, Zan32s ds, Zan32s roundControl) {
    const Zan32s rc = roundControl & 1;
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < W; ++x) put(d, ds, x, y, sat8(pos_rule<P>(r, rs, x, y, rc) + at(res, ress, x, y)));
}

template <int W, int H, int PF, int PB>
void small_b_rule(const Zan8u* rf, Zan32s rfs, const Zan8u* rb, Zan32s rbs, const Zan16s* res, Zan32s ress, Zan8u* d,
                  Zan32s ds, Zan32s roundControl) {
    const Zan32s rc = roundControl & 1;
    for (Zan32s y = 0; y < H; ++y)
        for (Zan32s x = 0; x < W; ++x) {
            Zan32s pf = pos_rule<PF>(rf, rfs, x, y, rc), pb = pos_rule<PB>(rb, rbs, x, y, rc);
            put(d, ds, x, y, sat8((pf + pb + 2 * at(res, ress, x, y) + 1) / 2));
        }
}

template <int P, int RC>
void copy_hp4_rule(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds) {
    for (Zan32s y = 0; y < 4; ++y)
        for (Zan32s x = 0; x < 4; ++x) put(d, ds, x, y, static_cast<Zan8u>(pos_rule<P>(s, ss, x, y, RC)));
}

// ========================================================== vector kernels

using simd::load4;
using simd::load8;
using simd::row;

// Rows handled per vector: two rows of four or up to four rows of two.
constexpr int rows_per_vec(int W, int H) { return W == 4 ? 2 : (H < 4 ? H : 4); }

// Samples of rows y..y+RR-1, W each, widened to 16 bits.
template <int W, int RR>
inline __m128i gather(const Zan8u* p, Zan32s step, Zan32s y) {
    __m128i v;
    if constexpr (W == 4) {
        v = _mm_unpacklo_epi32(load4(row(p, step, y)), load4(row(p, step, y + 1)));
    } else {
        // Two rows of two samples in one 32-bit lane.
        auto rows2 = [&](Zan32s y0) {
            Zan16u a, b;
            std::memcpy(&a, row(p, step, y0), 2);
            std::memcpy(&b, row(p, step, y0 + 1), 2);
            return _mm_cvtsi32_si128(static_cast<Zan32s>(a | (static_cast<Zan32u>(b) << 16)));
        };
        if constexpr (RR == 2) v = rows2(y);
        else v = _mm_unpacklo_epi32(rows2(y), rows2(y + 2));
    }
    return _mm_unpacklo_epi8(v, _mm_setzero_si128());
}

template <int W, int RR>
inline __m128i gather_residual(const Zan16s* p, Zan32s step, Zan32s y) {
    if constexpr (W == 4) return _mm_unpacklo_epi64(load8(row(p, step, y)), load8(row(p, step, y + 1)));
    if constexpr (RR == 2) return _mm_unpacklo_epi32(load4(row(p, step, y)), load4(row(p, step, y + 1)));
    return _mm_unpacklo_epi64(_mm_unpacklo_epi32(load4(row(p, step, y)), load4(row(p, step, y + 1))),
                              _mm_unpacklo_epi32(load4(row(p, step, y + 2)), load4(row(p, step, y + 3))));
}

// Packs 16-bit lanes with unsigned saturation and stores rows y..y+RR-1.
template <int W, int RR>
inline void store_rows(Zan8u* p, Zan32s step, Zan32s y, __m128i v) {
    v = _mm_packus_epi16(v, v);
    if constexpr (W == 4) {
        Zan32s a = _mm_cvtsi128_si32(v), b = _mm_cvtsi128_si32(_mm_srli_si128(v, 4));
        std::memcpy(row(p, step, y), &a, 4);
        std::memcpy(row(p, step, y + 1), &b, 4);
    } else {
        Zan32s a = _mm_cvtsi128_si32(v), b = _mm_cvtsi128_si32(_mm_srli_si128(v, 4));
        std::memcpy(row(p, step, y), &a, 2);
        std::memcpy(row(p, step, y + 1), reinterpret_cast<Zan8u*>(&a) + 2, 2);
        if constexpr (RR == 4) {
            std::memcpy(row(p, step, y + 2), &b, 2);
            std::memcpy(row(p, step, y + 3), reinterpret_cast<Zan8u*>(&b) + 2, 2);
        }
    }
}

// The prediction of rows y..y+RR-1 at position P; k is the rounding
// constant (1 - rc for two samples, 2 - rc for four).
template <int W, int RR, int P>
inline __m128i predict(const Zan8u* r, Zan32s s, Zan32s y, __m128i k) {
    __m128i a = gather<W, RR>(r, s, y);
    if constexpr (P == kFH) return _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(a, gather<W, RR>(r, s, y + 1)), k), 1);
    if constexpr (P == kHF) return _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(a, gather<W, RR>(r + 1, s, y)), k), 1);
    if constexpr (P == kHH) {
        __m128i top = _mm_add_epi16(a, gather<W, RR>(r + 1, s, y));
        __m128i bottom = _mm_add_epi16(gather<W, RR>(r, s, y + 1), gather<W, RR>(r + 1, s, y + 1));
        return _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(top, bottom), k), 2);
    }
    return a;
}

template <int P>
inline __m128i rounding(Zan32s roundControl) {
    return _mm_set1_epi16(static_cast<Zan16s>((P == kHH ? 2 : 1) - (roundControl & 1)));
}

template <int W, int H, int P>
void small_simd(const Zan8u* r, Zan32s rs, const Zan16s* res, Zan32s ress, Zan8u* d, Zan32s ds, Zan32s roundControl) {
    constexpr int RR = rows_per_vec(W, H);
    const __m128i k = rounding<P>(roundControl);
    for (Zan32s y = 0; y < H; y += RR)
        store_rows<W, RR>(d, ds, y, _mm_adds_epi16(predict<W, RR, P>(r, rs, y, k), gather_residual<W, RR>(res, ress, y)));
}

template <int W, int H, int PF, int PB>
void small_b_simd(const Zan8u* rf, Zan32s rfs, const Zan8u* rb, Zan32s rbs, const Zan16s* res, Zan32s ress, Zan8u* d,
                  Zan32s ds, Zan32s roundControl) {
    constexpr int RR = rows_per_vec(W, H);
    const __m128i kf = rounding<PF>(roundControl), kb = rounding<PB>(roundControl);
    for (Zan32s y = 0; y < H; y += RR) {
        __m128i p = _mm_avg_epu16(predict<W, RR, PF>(rf, rfs, y, kf), predict<W, RR, PB>(rb, rbs, y, kb));
        store_rows<W, RR>(d, ds, y, _mm_adds_epi16(p, gather_residual<W, RR>(res, ress, y)));
    }
}

template <int P, int RC>
void copy_hp4_simd(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds) {
    const __m128i k = rounding<P>(RC);
    for (Zan32s y = 0; y < 4; y += 2) store_rows<4, 2>(d, ds, y, predict<4, 2, P>(s, ss, y, k));
}

// ================================================================= tables

// Forward slot i: position i >> 2.  Bidirectional slot i: forward position
// i & 3, backward i >> 2.  HP slot i: acc = i >> 1, rounding i & 1.
constexpr int small_pos(std::size_t i) { return static_cast<int>(i >> 2); }
constexpr int small_pf(std::size_t i) { return static_cast<int>(i & 3); }
constexpr int small_pb(std::size_t i) { return static_cast<int>(i >> 2); }
constexpr int hp_pos(std::size_t i) {
    constexpr int byAcc[4] = {kFF, kHF, kFH, kHH};
    return byAcc[i >> 1];
}
constexpr int hp_rc(std::size_t i) { return hp_pos(i) == kFF ? 0 : static_cast<int>(i & 1); }

template <int W, int H, bool Rule, std::size_t... I>
constexpr std::array<McSmallFn, sizeof...(I)> small_table(std::index_sequence<I...>) {
    if constexpr (Rule) return {small_rule<W, H, small_pos(I)>...};
    else return {small_simd<W, H, small_pos(I)>...};
}
template <int W, int H, bool Rule, std::size_t... I>
constexpr std::array<McSmallBFn, sizeof...(I)> small_b_table(std::index_sequence<I...>) {
    if constexpr (Rule) return {small_b_rule<W, H, small_pf(I), small_pb(I)>...};
    else return {small_b_simd<W, H, small_pf(I), small_pb(I)>...};
}
template <bool Rule, std::size_t... I>
constexpr std::array<BlockFn, sizeof...(I)> copy_hp4_table(std::index_sequence<I...>) {
    if constexpr (Rule) return {copy_hp4_rule<hp_pos(I), hp_rc(I)>...};
    else return {copy_hp4_simd<hp_pos(I), hp_rc(I)>...};
}

using Seq8 = std::make_index_sequence<8>;
using Seq16 = std::make_index_sequence<16>;

}  // namespace

const std::array<McSmallFn, 16> kMC4x8 = small_table<4, 8, false>(Seq16{});
const std::array<McSmallFn, 16> kMC4x4 = small_table<4, 4, false>(Seq16{});
const std::array<McSmallFn, 16> kMC4x2 = small_table<4, 2, false>(Seq16{});
const std::array<McSmallFn, 16> kMC2x4 = small_table<2, 4, false>(Seq16{});
const std::array<McSmallFn, 16> kMC2x2 = small_table<2, 2, false>(Seq16{});
const std::array<McSmallBFn, 16> kMC4x8B = small_b_table<4, 8, false>(Seq16{});
const std::array<McSmallBFn, 16> kMC4x4B = small_b_table<4, 4, false>(Seq16{});
const std::array<McSmallBFn, 16> kMC4x2B = small_b_table<4, 2, false>(Seq16{});
const std::array<McSmallBFn, 16> kMC2x4B = small_b_table<2, 4, false>(Seq16{});
const std::array<McSmallBFn, 16> kMC2x2B = small_b_table<2, 2, false>(Seq16{});
const std::array<BlockFn, 8> kCopy4x4HP = copy_hp4_table<false>(Seq8{});

// ============================================================= catalogue

namespace {

struct Label {
    char s[48];
};
constexpr const char* kPosName[4] = {"ff", "fh", "hf", "hh"};

constexpr Label label(const char* table, int slot, const char* p1, const char* p2, const char* rc) {
    Label l{};
    int n = 0;
    for (const char* p = table; *p;) l.s[n++] = *p++;
    l.s[n++] = '[';
    if (slot >= 10) l.s[n++] = static_cast<char>('0' + slot / 10);
    l.s[n++] = static_cast<char>('0' + slot % 10);
    l.s[n++] = ']';
    l.s[n++] = '_';
    for (const char* part : {p1, p2, rc})
        for (const char* p = part; *p;) l.s[n++] = *p++;
    return l;
}

constexpr std::array<Label, 16> small_labels(const char* table) {
    std::array<Label, 16> out{};
    for (std::size_t i = 0; i < 16; ++i) out[i] = label(table, static_cast<int>(i), kPosName[small_pos(i)], "", "");
    return out;
}
constexpr std::array<Label, 16> small_b_labels(const char* table) {
    std::array<Label, 16> out{};
    for (std::size_t i = 0; i < 16; ++i)
        out[i] = label(table, static_cast<int>(i), kPosName[small_pf(i)], kPosName[small_pb(i)], "");
    return out;
}
constexpr std::array<Label, 8> hp_labels(const char* table) {
    std::array<Label, 8> out{};
    for (std::size_t i = 0; i < 8; ++i)
        out[i] = label(table, static_cast<int>(i), kPosName[hp_pos(i)], "", i & 1 ? "_to_zero" : "_to_near");
    return out;
}

constexpr auto kL4x8 = small_labels("mc4x8"), kL4x4 = small_labels("mc4x4"), kL4x2 = small_labels("mc4x2"),
               kL2x4 = small_labels("mc2x4"), kL2x2 = small_labels("mc2x2");
constexpr auto kL4x8B = small_b_labels("mc4x8B"), kL4x4B = small_b_labels("mc4x4B"),
               kL4x2B = small_b_labels("mc4x2B"), kL2x4B = small_b_labels("mc2x4B"),
               kL2x2B = small_b_labels("mc2x2B");
constexpr auto kLCopy4x4 = hp_labels("copy4x4HP");

template <class Fn, std::size_t N, std::size_t M>
constexpr void append(std::array<KernelPair<Fn>, M>& out, std::size_t& n, const std::array<Label, N>& names,
                      const std::array<Fn, N>& rules, const std::array<Fn, N>& kernels, Zan32s w, Zan32s h) {
    for (std::size_t i = 0; i < N; ++i) out[n++] = {names[i].s, rules[i], kernels[i], w, h, static_cast<Zan32s>(i)};
}

constexpr std::array<KernelPair<McSmallFn>, 80> fwd_pairs() {
    std::array<KernelPair<McSmallFn>, 80> out{};
    std::size_t n = 0;
    append(out, n, kL4x8, small_table<4, 8, true>(Seq16{}), small_table<4, 8, false>(Seq16{}), 4, 8);
    append(out, n, kL4x4, small_table<4, 4, true>(Seq16{}), small_table<4, 4, false>(Seq16{}), 4, 4);
    append(out, n, kL4x2, small_table<4, 2, true>(Seq16{}), small_table<4, 2, false>(Seq16{}), 4, 2);
    append(out, n, kL2x4, small_table<2, 4, true>(Seq16{}), small_table<2, 4, false>(Seq16{}), 2, 4);
    append(out, n, kL2x2, small_table<2, 2, true>(Seq16{}), small_table<2, 2, false>(Seq16{}), 2, 2);
    return out;
}
constexpr std::array<KernelPair<McSmallBFn>, 80> bi_pairs() {
    std::array<KernelPair<McSmallBFn>, 80> out{};
    std::size_t n = 0;
    append(out, n, kL4x8B, small_b_table<4, 8, true>(Seq16{}), small_b_table<4, 8, false>(Seq16{}), 4, 8);
    append(out, n, kL4x4B, small_b_table<4, 4, true>(Seq16{}), small_b_table<4, 4, false>(Seq16{}), 4, 4);
    append(out, n, kL4x2B, small_b_table<4, 2, true>(Seq16{}), small_b_table<4, 2, false>(Seq16{}), 4, 2);
    append(out, n, kL2x4B, small_b_table<2, 4, true>(Seq16{}), small_b_table<2, 4, false>(Seq16{}), 2, 4);
    append(out, n, kL2x2B, small_b_table<2, 2, true>(Seq16{}), small_b_table<2, 2, false>(Seq16{}), 2, 2);
    return out;
}
constexpr std::array<KernelPair<BlockFn>, 8> copy_hp4_pairs() {
    std::array<KernelPair<BlockFn>, 8> out{};
    std::size_t n = 0;
    append(out, n, kLCopy4x4, copy_hp4_table<true>(Seq8{}), copy_hp4_table<false>(Seq8{}), 4, 4);
    return out;
}

constexpr auto kFwdPairs = fwd_pairs();
constexpr auto kBiPairs = bi_pairs();
constexpr auto kCopyHP4Pairs = copy_hp4_pairs();

}  // namespace

const SmallKernels small_kernels = {kFwdPairs, kBiPairs, kCopyHP4Pairs};

}  // namespace zan::ZAN_PATH::mc

// =============================================================== exports

namespace zan::ZAN_PATH {

// mcType & 12 indexes a table of 16 directly; nothing but the pointers is
// checked.
#define ZAN_MC_SMALL(name, table)                                                                         \
    ZanStatus name(const Zan8u* pRef, Zan32s refStep, const Zan16s* pResidual, Zan32s residualStep,        \
                   Zan8u* pDst, Zan32s dstStep, Zan32s mcType, Zan32s roundControl) {                      \
        if (!pRef || !pResidual || !pDst) return zanStsNullPtr;                                            \
        mc::table[static_cast<Zan32u>(mcType & 12)](pRef, refStep, pResidual, residualStep, pDst, dstStep,  \
                                                    roundControl);                                         \
        return zanStsOk;                                                                                   \
    }
ZAN_MC_SMALL(zaniMC4x8_8u_C1, kMC4x8)
ZAN_MC_SMALL(zaniMC4x4_8u_C1, kMC4x4)
ZAN_MC_SMALL(zaniMC4x2_8u_C1, kMC4x2)
ZAN_MC_SMALL(zaniMC2x4_8u_C1, kMC2x4)
ZAN_MC_SMALL(zaniMC2x2_8u_C1, kMC2x2)
#undef ZAN_MC_SMALL

#define ZAN_MC_SMALL_BI(name, table)                                                                         \
    ZanStatus name(const Zan8u* pRefF, Zan32s refStepF, Zan32s mcTypeF, const Zan8u* pRefB, Zan32s refStepB,  \
                   Zan32s mcTypeB, const Zan16s* pResidual, Zan32s residualStep, Zan8u* pDst, Zan32s dstStep, \
                   Zan32s roundControl) {                                                                     \
        if (!pRefF || !pRefB || !pResidual || !pDst) return zanStsNullPtr;                                    \
        mc::table[static_cast<Zan32u>(((mcTypeF & 12) >> 2) | (mcTypeB & 12))](                               \
            pRefF, refStepF, pRefB, refStepB, pResidual, residualStep, pDst, dstStep, roundControl);          \
        return zanStsOk;                                                                                      \
    }
ZAN_MC_SMALL_BI(zaniMC4x8B_8u_C1, kMC4x8B)
ZAN_MC_SMALL_BI(zaniMC4x4B_8u_C1, kMC4x4B)
ZAN_MC_SMALL_BI(zaniMC4x2B_8u_C1, kMC4x2B)
ZAN_MC_SMALL_BI(zaniMC2x4B_8u_C1, kMC2x4B)
ZAN_MC_SMALL_BI(zaniMC2x2B_8u_C1, kMC2x2B)
#undef ZAN_MC_SMALL_BI

}  // namespace zan::ZAN_PATH
