// Every SAD vector kernel against its scalar rule.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstdint>

#include "blocks/sad.h"
#include "check/harness.h"

namespace {

using namespace zan;
using namespace zan::check;

const sad::BlockKernels& blocks() { return for_path(u8::sad::block_kernels, n8::sad::block_kernels); }
const sad::CandidateKernels& candidates() {
    return for_path(u8::sad::candidate_kernels, n8::sad::candidate_kernels);
}
const sad::SubKernels& subs() { return for_path(u8::sad::sub_kernels, n8::sad::sub_kernels); }

// One draw's layout: alignments cycle through every combination, steps
// through the list of interesting steps.
struct Layout {
    Zan32s curAlign, refAlign, curStep, refStep;
};
Layout layout(int draw, Zan32s curBytes, Zan32s refBytes, Zan32s elem) {
    auto cs = steps_for(curBytes, elem), rs = steps_for(refBytes, elem);
    Zan32s a = draw % 16, b = (draw / 16) % 16;
    if (elem == 2) { a &= ~1; b &= ~1; }
    return {a, b, cs[static_cast<size_t>(draw) % cs.size()], rs[static_cast<size_t>(draw / 3) % rs.size()]};
}

#define WHERE(e, d, l)                                                                              \
    (e).name << " draw " << (d) << " align " << (l).curAlign << "/" << (l).refAlign << " steps "    \
             << (l).curStep << "/" << (l).refStep << " seed " << seed()

// Output arrays with guard words on both sides.
template <class T, size_t N>
struct Guarded {
    std::array<T, N + 16> a;
    explicit Guarded(T fill) { a.fill(fill); }
    T* out() { return a.data() + 8; }
    bool operator==(const Guarded& o) const { return a == o.a; }
};

TEST(CheckSad, SingleBlock8u) {
    Rng rng(1);
    for (const auto& e : blocks().sad8)
        for (int d = 0; d < draws(); ++d) {
            Layout l = layout(d, e.width, e.width + 1, 1);
            Region cur(e.width, e.height, l.curStep, l.curAlign), ref(e.width + 1, e.height + 1, l.refStep, l.refAlign);
            cur.fill(rng);
            ref.fill(rng);
            Zan32s want = e.rule(cur.origin(), l.curStep, ref.origin(), l.refStep);
            Zan32s got = e.simd(cur.origin(), l.curStep, ref.origin(), l.refStep);
            ASSERT_EQ(want, got) << WHERE(e, d, l);
        }
}

TEST(CheckSad, SingleBlock16u) {
    Rng rng(2);
    for (const auto& e : blocks().sad16)
        for (int d = 0; d < draws(); ++d) {
            Layout l = layout(d, 2 * e.width, 2 * e.width + 2, 2);
            Region cur(2 * e.width, e.height, l.curStep, l.curAlign), ref(2 * e.width + 2, e.height + 1, l.refStep, l.refAlign);
            // Half the draws stay in the defined range 0..32767, half use all of 16 bits.
            Zan32s hi = d % 2 ? 32767 : 65535;
            cur.fill16(rng, 0, hi);
            ref.fill16(rng, 0, hi);
            Zan32s want = e.rule(cur.as<Zan16u>(), l.curStep, ref.as<Zan16u>(), l.refStep);
            Zan32s got = e.simd(cur.as<Zan16u>(), l.curStep, ref.as<Zan16u>(), l.refStep);
            ASSERT_EQ(want, got) << WHERE(e, d, l);
        }
}

TEST(CheckSad, TwoChannels) {
    Rng rng(3);
    for (const auto& e : blocks().pair)
        for (int d = 0; d < draws(); ++d) {
            Layout l = layout(d, 16, 18, 1);
            Region cur(16, 8, l.curStep, l.curAlign), ref(18, 9, l.refStep, l.refAlign);
            cur.fill(rng);
            ref.fill(rng);
            Guarded<Zan32s, 2> want(-7), got(-7);
            e.rule(cur.origin(), l.curStep, ref.origin(), l.refStep, want.out(), want.out() + 1);
            e.simd(cur.origin(), l.curStep, ref.origin(), l.refStep, got.out(), got.out() + 1);
            ASSERT_TRUE(want == got) << WHERE(e, d, l) << ": U " << want.out()[0] << "/" << got.out()[0] << " V "
                                     << want.out()[1] << "/" << got.out()[1];
        }
}

TEST(CheckSad, SubBlocks) {
    Rng rng(4);
    for (const auto& e : blocks().blocks8)
        for (int d = 0; d < draws(); ++d) {
            Layout l = layout(d, 16, 16, 1);
            Region cur(16, 16, l.curStep, l.curAlign), ref(16, 16, l.refStep, l.refAlign);
            cur.fill(rng);
            ref.fill(rng);
            Guarded<Zan16u, 16> want(0xA5A5), got(0xA5A5);
            e.rule(cur.origin(), l.curStep, ref.origin(), l.refStep, want.out());
            e.simd(cur.origin(), l.curStep, ref.origin(), l.refStep, got.out());
            ASSERT_TRUE(want == got) << WHERE(e, d, l);
        }
    for (const auto& e : blocks().blocks16)
        for (int d = 0; d < draws(); ++d) {
            Layout l = layout(d, 32, 32, 2);
            Region cur(32, 16, l.curStep, l.curAlign), ref(32, 16, l.refStep, l.refAlign);
            cur.fill16(rng, 0, 65535);
            ref.fill16(rng, 0, 65535);
            Guarded<Zan32u, 16> want(0xA5A5A5A5u), got(0xA5A5A5A5u);
            e.rule(cur.as<Zan16u>(), l.curStep, ref.as<Zan16u>(), l.refStep, want.out());
            e.simd(cur.as<Zan16u>(), l.curStep, ref.as<Zan16u>(), l.refStep, got.out());
            ASSERT_TRUE(want == got) << WHERE(e, d, l);
        }
}

// Candidate rows.  Kernels built for one alignment of pRef get that
// alignment, a reference step that is a multiple of 16 and an aligned result
// array; the others get anything.
TEST(CheckSad, CandidateRows) {
    Rng rng(5);
    for (const auto& e : candidates().cand)
        for (int d = 0; d < draws(); ++d) {
            Zan32s count = 8 * rng.range(1, 6);
            Zan32s refBytes = e.width + count - 1;
            Layout l = layout(d, e.width, refBytes, 1);
            Zan32s resultOffset = 8;  // in Zan16u: 16-byte aligned inside the guard
            if (e.param >= 0) {
                l.refAlign = e.param + 16 * (d % 2);
                l.refStep = (l.refStep >= 0 ? 1 : -1) * (((l.refStep < 0 ? -l.refStep : l.refStep) + 15) & ~15);
                if (l.refStep >= 0 && l.refStep < refBytes) l.refStep += 16;
            } else {
                resultOffset += d % 8;
            }
            Region cur(e.width, e.height, l.curStep, l.curAlign), ref(refBytes, e.height, l.refStep, l.refAlign);
            cur.fill(rng);
            ref.fill(rng);
            alignas(16) std::array<Zan16u, 96> want, got;
            want.fill(0x5A5A);
            got.fill(0x5A5A);
            e.rule(cur.origin(), l.curStep, ref.origin(), l.refStep, want.data() + resultOffset, count);
            e.simd(cur.origin(), l.curStep, ref.origin(), l.refStep, got.data() + resultOffset, count);
            ASSERT_TRUE(want == got) << WHERE(e, d, l) << " count " << count;
        }
}

TEST(CheckSad, MinimumIndex) {
    Rng rng(6);
    for (const auto& e : candidates().minIndex)
        for (int d = 0; d < draws(); ++d) {
            Zan32s count = 8 * rng.range(1, 12);
            alignas(16) std::array<Zan16u, 112> values;
            // Few distinct values, so that ties within and across lanes are common.
            Zan32s spread = d % 3 == 0 ? 3 : e.param;
            Zan32s base = rng.range(0, e.param - spread);
            for (auto& v : values) v = static_cast<Zan16u>(base + rng.range(0, spread));
            if (d % 7 == 0)
                for (auto& v : values) v = static_cast<Zan16u>(e.param);
            const Zan16u* p = values.data() + d % 8;
            ASSERT_EQ(e.rule(p, count), e.simd(p, count)) << e.name << " draw " << d << " count " << count;
        }
}

// Long rows: indices pass 65535, ties fall in different stretches of 65536.
TEST(CheckSad, MinimumIndexLongRows) {
    Rng rng(9);
    constexpr Zan32s kCount = 2 * 65536 + 64;
    std::vector<Zan16u> store(kCount + 16);
    for (const auto& e : candidates().minIndex)
        for (int d = 0; d < 24; ++d) {
            // 16-byte aligned or not.
            auto base = reinterpret_cast<std::uintptr_t>(store.data());
            Zan16u* p = store.data() + (((16 - (base & 15)) & 15) / 2) + d % 2;
            Zan32s count = kCount - 8 * (d % 3);
            Zan32s low = rng.range(0, e.param - 8);
            for (Zan32s i = 0; i < count; ++i) p[i] = static_cast<Zan16u>(low + 1 + rng.range(0, 7));
            // The smallest value at a few places, often a multiple of 65536 apart.
            Zan32s first = rng.range(0, count - 1);
            for (Zan32s at : {first, first + 65536, rng.range(0, count - 1), first % 65536})
                if (at < count && (d % 4 != 0 || at > 65535)) p[at] = static_cast<Zan16u>(low);
            ASSERT_EQ(e.rule(p, count), e.simd(p, count)) << e.name << " draw " << d << " count " << count;
        }
}

// Reads stay inside what a kernel may read: the candidates' bytes, and for
// the aligned kernels the aligned 16-byte units holding them.  The region is
// put against an inaccessible page, after it or before it, so a read beyond
// faults.
class EdgeRegion {
public:
    // widthBytes x height rows at step.  With slack the readable area
    // extends to the whole aligned 16-byte units of the region, and align is
    // the offset of its lowest byte in its unit; atEnd puts the area against
    // the page after it, else against the page before it.
    EdgeRegion(Zan32s widthBytes, Zan32s height, Zan32s step, Zan32s align, bool slack, bool atEnd) {
        page_ = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        std::size_t span = static_cast<std::size_t>(std::abs(step)) * static_cast<std::size_t>(height - 1) +
                           static_cast<std::size_t>(widthBytes);
        std::size_t lead = slack ? static_cast<std::size_t>(align) : 0;     // readable bytes before the first
        std::size_t tail = slack ? (16 - (lead + span) % 16) % 16 : 0;      // and after the last
        size_ = (lead + span + tail + page_ - 1) / page_ * page_ + 2 * page_;
        void* m = mmap(nullptr, size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        map_ = m == MAP_FAILED ? nullptr : static_cast<Zan8u*>(m);
        if (!map_) return;
        Zan8u* rw = map_ + page_;
        std::size_t rwSize = size_ - 2 * page_;
        if (mprotect(rw, rwSize, PROT_READ | PROT_WRITE) != 0) {
            munmap(map_, size_);
            map_ = nullptr;
            return;
        }
        Zan8u* first = atEnd ? rw + rwSize - tail - span : rw + lead;
        origin_ = step >= 0 ? first : first + static_cast<std::ptrdiff_t>(-step) * (height - 1);
        rw_ = rw;
        rwSize_ = rwSize;
    }
    ~EdgeRegion() {
        if (map_) munmap(map_, size_);
    }
    EdgeRegion(const EdgeRegion&) = delete;
    EdgeRegion& operator=(const EdgeRegion&) = delete;
    bool ok() const { return map_ != nullptr; }
    Zan8u* origin() { return origin_; }
    void fill(Rng& rng) { rng.fill(rw_, rwSize_); }

private:
    std::size_t page_ = 0, size_ = 0, rwSize_ = 0;
    Zan8u* map_ = nullptr;
    Zan8u* rw_ = nullptr;
    Zan8u* origin_ = nullptr;
};

TEST(CheckSad, CandidateRowsReadOnlyTheirBytes) {
    Rng rng(10);
    for (const auto& e : candidates().cand)
        for (int d = 0; d < 64; ++d) {
            Zan32s count = 8 * rng.range(1, 4);
            Zan32s refBytes = e.width + count - 1;
            bool aligned = e.param >= 0;
            bool atEnd = d % 2 == 0;
            Zan32s refStep = refBytes + rng.range(0, 20);
            if (aligned) refStep = (refStep + 15) & ~15;
            if (d % 4 >= 2) refStep = -refStep;
            Zan32s curStep = (d % 3 == 0 ? -1 : 1) * (e.width + rng.range(0, 9));
            // The first byte's offset in its unit: S for the aligned kernels,
            // whatever lies against the edge otherwise.
            EdgeRegion ref(refBytes, e.height, refStep, aligned ? e.param : 0, aligned, atEnd);
            EdgeRegion cur(e.width, e.height, curStep, 0, false, !atEnd);
            ASSERT_TRUE(ref.ok() && cur.ok());
            ref.fill(rng);
            cur.fill(rng);
            auto phase = static_cast<Zan32s>(reinterpret_cast<std::uintptr_t>(ref.origin()) & 15);
            ASSERT_TRUE(!aligned || phase == e.param);
            alignas(16) std::array<Zan16u, 48> want, got;
            want.fill(0x5A5A);
            got.fill(0x5A5A);
            e.rule(cur.origin(), curStep, ref.origin(), refStep, want.data() + 8, count);
            e.simd(cur.origin(), curStep, ref.origin(), refStep, got.data() + 8, count);
            ASSERT_TRUE(want == got) << e.name << " draw " << d << " count " << count << " steps " << curStep
                                     << "/" << refStep << (atEnd ? " at the end" : " at the start");
        }
}

TEST(CheckSad, DifferenceBlock) {
    Rng rng(7);
    for (const auto& e : subs().sub)
        for (int d = 0; d < draws(); ++d) {
            Layout l = layout(d, 8, 8, 1);
            Region cur(8, 8, l.curStep, l.curAlign), ref(8, 8, l.refStep, l.refAlign);
            cur.fill(rng);
            ref.fill(rng);
            // param 16: the kernel stores aligned rows and gets them.
            auto ds = e.param == 16 ? std::vector<Zan32s>{16, 32, -16, -48} : steps_for(16, 2);
            Zan32s diffStep = ds[static_cast<size_t>(d / 5) % ds.size()];
            Zan32s diffAlign = e.param == 16 ? 16 * (d % 4) : 2 * (d % 8);
            Region want(16, 8, diffStep, diffAlign), got(16, 8, diffStep, diffAlign);
            want.set(0xEE);
            got.set(0xEE);
            Zan32s a = e.rule(cur.origin(), l.curStep, ref.origin(), l.refStep, want.as<Zan16s>(), diffStep);
            Zan32s b = e.simd(cur.origin(), l.curStep, ref.origin(), l.refStep, got.as<Zan16s>(), diffStep);
            ASSERT_EQ(a, b) << WHERE(e, d, l);
            ASSERT_TRUE(want.same_as(got)) << WHERE(e, d, l) << " diff step " << diffStep;
        }
}

TEST(CheckSad, FrameField) {
    Rng rng(8);
    for (const auto& e : subs().field8)
        for (int d = 0; d < draws(); ++d) {
            Layout l = layout(d, 16, 16, 1);
            Region src(16, 16, l.curStep, l.curAlign);
            src.fill(rng);
            Guarded<Zan32s, 2> want(-3), got(-3);
            e.rule(src.origin(), l.curStep, want.out(), want.out() + 1);
            e.simd(src.origin(), l.curStep, got.out(), got.out() + 1);
            ASSERT_TRUE(want == got) << e.name << " draw " << d << " step " << l.curStep;
        }
    for (const auto& e : subs().field16)
        for (int d = 0; d < draws(); ++d) {
            Layout l = layout(d, 32, 32, 2);
            Region src(32, 16, l.curStep, l.curAlign);
            src.fill16(rng, 0, 65535);
            Guarded<Zan32s, 2> want(-3), got(-3);
            e.rule(src.as<Zan16s>(), l.curStep, want.out(), want.out() + 1);
            e.simd(src.as<Zan16s>(), l.curStep, got.out(), got.out() + 1);
            ASSERT_TRUE(want == got) << e.name << " draw " << d << " step " << l.curStep;
        }
}

}  // namespace
