// Every CAVLC syntax-element kernel against its scalar walk.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

#include "check/harness.h"
#include "h264/cavlcenc.h"

namespace {

using namespace zan;
using namespace zan::check;

const cavlcenc::Kernels& kernels() { return for_path(u8::cavlcenc::kernels, n8::cavlcenc::kernels); }

// All outputs of one call, with guard entries around the arrays so that a
// write past the counted entries shows.  The 32-bit block form can be given
// ranges longer than 16 positions, so the arrays have room for 48.
template <class L>
struct Out {
    std::array<Zan8u, 4> scalars;
    std::array<L, 64> levels;
    std::array<Zan8u, 64> runs;
    explicit Out(Zan8u fill) {
        scalars.fill(fill);
        levels.fill(static_cast<L>(0x5A5A));
        runs.fill(fill);
    }
    L* lv() { return levels.data() + 8; }
    Zan8u* rn() { return runs.data() + 8; }
    bool operator==(const Out& o) const = default;
};

// A value with a density of nonzero values that changes from draw to draw,
// with many +-1 (trailing ones) and the extremes of the type.
template <class T>
T value(Rng& rng, Zan32u zeroPercent) {
    if (rng.below(100) < zeroPercent) return 0;
    switch (rng.below(6)) {
        case 0: return 1;
        case 1: return -1;
        case 2: return static_cast<T>(rng.range(-3, 3));
        case 3: return rng.below(2) ? std::numeric_limits<T>::max() : std::numeric_limits<T>::min();
        case 4: return static_cast<T>(rng.next());
        default: return static_cast<T>(rng.range(-40, 40));
    }
}

template <class T, size_t N>
void fill_block(Rng& rng, std::array<T, N>& b) {
    const Zan32u zeroPercent = rng.below(101);
    for (auto& v : b) v = value<T>(rng, zeroPercent);
}

#define WHERE(e, d) (e).name << " draw " << (d) << " seed " << seed()

template <class T, class Entry>
void check_blocks(Rng& rng, const Entry& e, bool longRanges) {
    for (int d = 0; d < draws(); ++d) {
        std::array<T, 16> src;
        fill_block(rng, src);
        // A scan table with room below index 0 for the long ranges.
        std::array<Zan32s, 48> scanStore;
        for (auto& s : scanStore) s = static_cast<Zan32s>(rng.below(16));
        const Zan32s* scan = scanStore.data() + 32;
        if (d % 2) {  // half the draws: a permutation, as a real scan is
            std::array<Zan32s, 16> perm;
            for (Zan32s i = 0; i < 16; ++i) perm[static_cast<size_t>(i)] = i;
            for (Zan32s i = 15; i > 0; --i) std::swap(perm[static_cast<size_t>(i)], perm[rng.below(static_cast<Zan32u>(i + 1))]);
            std::copy(perm.begin(), perm.end(), scanStore.begin() + 32);
        }
        Zan32s last = rng.range(0, 15);
        Zan32s first = d % 4 == 0 ? 0 : rng.range(0, last);
        if (longRanges && d % 5 == 1) first = rng.range(-32, -1);
        Out<T> want(0xA5), got(0xA5);
        e.rule(src.data(), first, scan, last, &want.scalars[0], &want.scalars[1], &want.scalars[2],
               &want.scalars[3], want.lv(), want.rn());
        e.simd(src.data(), first, scan, last, &got.scalars[0], &got.scalars[1], &got.scalars[2],
               &got.scalars[3], got.lv(), got.rn());
        ASSERT_TRUE(want == got) << WHERE(e, d) << " range " << first << ".." << last << " T "
                                 << int(want.scalars[0]) << "/" << int(got.scalars[0]) << " n "
                                 << int(want.scalars[2]) << "/" << int(got.scalars[2]) << " zeros "
                                 << int(want.scalars[3]) << "/" << int(got.scalars[3]);
    }
}

TEST(CheckCavlcEnc, Blocks16s) {
    Rng rng(1);
    for (const auto& e : kernels().block16) check_blocks<Zan16s>(rng, e, false);
}

TEST(CheckCavlcEnc, Blocks32s) {
    Rng rng(2);
    for (const auto& e : kernels().block32) check_blocks<Zan32s>(rng, e, true);
}

template <class T, class Entry>
void check_dc(Rng& rng, const Entry& e) {
    for (int d = 0; d < draws(); ++d) {
        std::array<T, 8> src;
        fill_block(rng, src);
        Out<T> want(0x3C), got(0x3C);
        e.rule(src.data(), &want.scalars[0], &want.scalars[1], &want.scalars[2], &want.scalars[3], want.lv(),
               want.rn());
        e.simd(src.data(), &got.scalars[0], &got.scalars[1], &got.scalars[2], &got.scalars[3], got.lv(),
               got.rn());
        ASSERT_TRUE(want == got) << WHERE(e, d);
    }
}

TEST(CheckCavlcEnc, ChromaDc) {
    Rng rng(3);
    for (const auto& e : kernels().dc16) check_dc<Zan16s>(rng, e);
    for (const auto& e : kernels().dc32) check_dc<Zan32s>(rng, e);
}

}  // namespace
