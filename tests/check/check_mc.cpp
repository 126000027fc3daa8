// Every motion-compensation and block-arithmetic kernel against its scalar
// rule: every slot of every kernel table, random and extreme inputs, every
// alignment, tight, odd, wide and negative steps, guard bands around every
// output, and reads confined to the samples the position needs.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "blocks/mc.h"
#include "check/harness.h"

namespace {

using namespace zan;
using namespace zan::check;
using namespace zan::mc;

const WideKernels& wide() { return for_path(u8::mc::wide_kernels, n8::mc::wide_kernels); }
const SmallKernels& small() { return for_path(u8::mc::small_kernels, n8::mc::small_kernels); }
const BlockKernels& blocks() { return for_path(u8::mc::block_kernels, n8::mc::block_kernels); }

// ------------------------------------------------------------- positions

// Bytes across and rows that a block at position pos reads: one more row
// for a half sample in y (FH, HH), d more bytes for a half sample in x (HF, HH).
struct Area {
    Zan32s w, h;
};
Area area(int pos, Zan32s w, Zan32s h, Zan32s d) {
    return {w + (pos == kHF || pos == kHH ? d : 0), h + (pos == kFH || pos == kHH ? 1 : 0)};
}

bool starts_with(const char* s, const char* prefix) { return std::strncmp(s, prefix, std::strlen(prefix)) == 0; }
// The interleaved tables: neighbour two bytes on.
Zan32s distance_of(const char* name) {
    return starts_with(name, "mc16xHUV") || starts_with(name, "mc8xHNV12") ? 2 : 1;
}

// The positions a table slot stands for, from the documented indexing.
int wide_pos(Zan32s slot) { return slot >> 1; }
int wide_pf(Zan32s slot) { return (slot >> 1) & 3; }
int wide_pb(Zan32s slot) { return slot >> 3; }
int small_pos(Zan32s slot) { return slot >> 2; }
int small_pf(Zan32s slot) { return slot & 3; }
int small_pb(Zan32s slot) { return slot >> 2; }
int acc_pos(Zan32s slot) {
    const int acc = slot >> 1;
    return (acc & 1 ? kHF : kFF) | (acc & 2 ? kFH : kFF);
}

// ---------------------------------------------------------------- layouts

// Draw d's steps and alignments for a region w bytes wide: every alignment
// 0..15 in turn (even for 16-bit samples), the steps of steps_for.
Zan32s step_of(int d, Zan32s w, int salt, Zan32s elem = 1) {
    auto s = steps_for(w, elem);
    return s[static_cast<size_t>(d / (1 + salt) + salt) % s.size()];
}
Zan32s align_of(int d, int salt, Zan32s elem = 1) { return ((d * (salt + 1) + salt * 5) % 16) & ~(elem - 1); }

// Residual ranges: saturating and non-saturating mixes.
void fill_residual(Region& r, Rng& rng, int d) {
    switch (d % 5) {
        case 0: r.fill16(rng, -32768, 32767); break;
        case 1: r.fill16(rng, -300, 300); break;
        case 2: r.fill16(rng, -20, 20); break;
        case 3: r.fill16(rng, -1, 1); break;
        default: r.fill16(rng, -260, 260); break;
    }
}

// Two destinations with the same (random) contents, guard margins of 64
// bytes included.  (The two regions' storages lie at different offsets from
// a 64-byte boundary, so the bytes are copied relative to the regions.)
struct DstPair {
    Region want, got;
    DstPair(Zan32s w, Zan32s h, Zan32s step, Zan32s align, Rng& rng) : want(w, h, step, align), got(w, h, step, align) {
        want.fill(rng);
        const std::ptrdiff_t low = step >= 0 ? 0 : static_cast<std::ptrdiff_t>(step) * (h - 1);
        const std::size_t span = static_cast<std::size_t>(std::abs(step)) * static_cast<std::size_t>(h - 1) +
                                 static_cast<std::size_t>(w);
        std::memcpy(got.origin() + low - 64, want.origin() + low - 64, span + 128);
    }
    bool same() const { return want.same_as(got); }
};

std::string where(const char* name, int d, Zan32s h, Zan32s refStep, Zan32s resStep, Zan32s dstStep) {
    return std::string(name) + " draw " + std::to_string(d) + " height " + std::to_string(h) + " steps ref " +
           std::to_string(refStep) + " residual " + std::to_string(resStep) + " dst " + std::to_string(dstStep) +
           " seed " + std::to_string(seed());
}

// ------------------------------------------------------------ wide forms

// Heights that a wide kernel serves: every multiple of 4 up to its largest.
Zan32s height_of(int d, Zan32s maxH) { return 4 * (1 + d % (maxH / 4)); }

TEST(CheckMc, WideForward) {
    Rng rng(1);
    for (const auto& e : wide().fwd)
        for (int d = 0; d < draws(); ++d) {
            const Zan32s h = height_of(d, e.height), D = distance_of(e.name);
            const Area a = area(wide_pos(e.param), e.width, h, D);
            const Zan32s rs = step_of(d, a.w, 0), ress = step_of(d, 2 * e.width, 1, 2), ds = step_of(d, e.width, 2);
            Region ref(a.w, a.h, rs, align_of(d, 0)), res(2 * e.width, h, ress, align_of(d, 1, 2));
            ref.fill(rng);
            fill_residual(res, rng, d);
            DstPair dst(e.width, h, ds, align_of(d, 2), rng);
            e.rule(ref.origin(), rs, res.as<Zan16s>(), ress, dst.want.origin(), ds, h);
            e.simd(ref.origin(), rs, res.as<Zan16s>(), ress, dst.got.origin(), ds, h);
            ASSERT_TRUE(dst.same()) << where(e.name, d, h, rs, ress, ds);
        }
}

TEST(CheckMc, WideBidirectional) {
    Rng rng(2);
    // 96 slots: a third of the usual draws each keeps the run short.
    const int n = draws() / 3 + 1;
    for (const auto& e : wide().bidir)
        for (int d = 0; d < n; ++d) {
            const Zan32s h = height_of(d, e.height), D = distance_of(e.name);
            const Area af = area(wide_pf(e.param), e.width, h, D), ab = area(wide_pb(e.param), e.width, h, D);
            const Zan32s fs = step_of(d, af.w, 0), bs = step_of(d, ab.w, 3), ress = step_of(d, 2 * e.width, 1, 2),
                         ds = step_of(d, e.width, 2);
            Region rf(af.w, af.h, fs, align_of(d, 0)), rb(ab.w, ab.h, bs, align_of(d, 3));
            Region res(2 * e.width, h, ress, align_of(d, 1, 2));
            rf.fill(rng);
            rb.fill(rng);
            fill_residual(res, rng, d);
            DstPair dst(e.width, h, ds, align_of(d, 2), rng);
            e.rule(rf.origin(), fs, rb.origin(), bs, res.as<Zan16s>(), ress, dst.want.origin(), ds, h);
            e.simd(rf.origin(), fs, rb.origin(), bs, res.as<Zan16s>(), ress, dst.got.origin(), ds, h);
            ASSERT_TRUE(dst.same()) << where(e.name, d, h, fs, ress, ds) << " backward step " << bs;
        }
}

TEST(CheckMc, InterleavedPairsWithTwoResidualPlanes) {
    Rng rng(3);
    for (const auto& e : wide().pair)
        for (int d = 0; d < draws() / 2 + 1; ++d) {
            const bool bidir = e.param >= 32;
            const Zan32s slot = bidir ? e.param - 32 : e.param, h = height_of(d, e.height);
            const Area af = area(bidir ? wide_pf(slot) : wide_pos(slot), 16, h, 2);
            const Area ab = area(bidir ? wide_pb(slot) : kFF, 16, h, 2);
            const Zan32s fs = step_of(d, af.w, 0), bs = step_of(d, ab.w, 3), ress = step_of(d, 16, 1, 2),
                         ds = step_of(d, 16, 2);
            Region rf(af.w, af.h, fs, align_of(d, 0)), rb(ab.w, ab.h, bs, align_of(d, 3));
            Region ru(16, h, ress, align_of(d, 1, 2)), rv(16, h, ress, align_of(d, 4, 2));
            rf.fill(rng);
            rb.fill(rng);
            fill_residual(ru, rng, d);
            fill_residual(rv, rng, d + 1);
            DstPair dst(16, h, ds, align_of(d, 2), rng);
            McPairArgs args{};
            args.pRef = rf.origin();
            args.refStep = fs;
            args.pRefB = bidir ? rb.origin() : nullptr;  // the forward kernels must not touch it
            args.refStepB = bs;
            args.pResidualU = ru.as<Zan16s>();
            args.pResidualV = rv.as<Zan16s>();
            args.residualStep = ress;
            args.dstStep = ds;
            args.pDst = dst.want.origin();
            e.rule(&args, h);
            args.pDst = dst.got.origin();
            e.simd(&args, h);
            ASSERT_TRUE(dst.same()) << where(e.name, d, h, fs, ress, ds);
        }
}

// ----------------------------------------------------------- narrow forms

TEST(CheckMc, NarrowForward) {
    Rng rng(4);
    for (const auto& e : small().fwd)
        for (int d = 0; d < draws() / 2 + 1; ++d) {
            const Area a = area(small_pos(e.param), e.width, e.height, 1);
            const Zan32s rs = step_of(d, a.w, 0), ress = step_of(d, 2 * e.width, 1, 2), ds = step_of(d, e.width, 2);
            Region ref(a.w, a.h, rs, align_of(d, 0)), res(2 * e.width, e.height, ress, align_of(d, 1, 2));
            ref.fill(rng);
            fill_residual(res, rng, d);
            DstPair dst(e.width, e.height, ds, align_of(d, 2), rng);
            // Any roundControl: only bit 0 may count.
            const Zan32s rc = static_cast<Zan32s>(rng.next());
            e.rule(ref.origin(), rs, res.as<Zan16s>(), ress, dst.want.origin(), ds, rc);
            e.simd(ref.origin(), rs, res.as<Zan16s>(), ress, dst.got.origin(), ds, rc);
            ASSERT_TRUE(dst.same()) << where(e.name, d, e.height, rs, ress, ds) << " roundControl " << rc;
        }
}

TEST(CheckMc, NarrowBidirectional) {
    Rng rng(5);
    for (const auto& e : small().bidir)
        for (int d = 0; d < draws() / 2 + 1; ++d) {
            const Area af = area(small_pf(e.param), e.width, e.height, 1);
            const Area ab = area(small_pb(e.param), e.width, e.height, 1);
            const Zan32s fs = step_of(d, af.w, 0), bs = step_of(d, ab.w, 3), ress = step_of(d, 2 * e.width, 1, 2),
                         ds = step_of(d, e.width, 2);
            Region rf(af.w, af.h, fs, align_of(d, 0)), rb(ab.w, ab.h, bs, align_of(d, 3));
            Region res(2 * e.width, e.height, ress, align_of(d, 1, 2));
            rf.fill(rng);
            rb.fill(rng);
            fill_residual(res, rng, d);
            DstPair dst(e.width, e.height, ds, align_of(d, 2), rng);
            const Zan32s rc = static_cast<Zan32s>(rng.next());
            e.rule(rf.origin(), fs, rb.origin(), bs, res.as<Zan16s>(), ress, dst.want.origin(), ds, rc);
            e.simd(rf.origin(), fs, rb.origin(), bs, res.as<Zan16s>(), ress, dst.got.origin(), ds, rc);
            ASSERT_TRUE(dst.same()) << where(e.name, d, e.height, fs, ress, ds) << " roundControl " << rc;
        }
}

// ------------------------------------------------------------ block forms

// HP copies (also the 4x4 one) and interpolate-average: src at the slot's
// position into dst (which interpolate-average also reads).
void check_block_list(KernelList<BlockFn> list, Rng& rng, bool positions) {
    for (const auto& e : list)
        for (int d = 0; d < draws(); ++d) {
            const Area a = positions ? area(acc_pos(e.param), e.width, e.height, 1) : Area{e.width, e.height};
            const Zan32s ss = step_of(d, a.w, 0), ds = step_of(d, e.width, 2);
            Region src(a.w, a.h, ss, align_of(d, 0));
            src.fill(rng);
            DstPair dst(e.width, e.height, ds, align_of(d, 2), rng);
            e.rule(src.origin(), ss, dst.want.origin(), ds);
            e.simd(src.origin(), ss, dst.got.origin(), ds);
            ASSERT_TRUE(dst.same()) << where(e.name, d, e.height, ss, 0, ds);
        }
}

TEST(CheckMc, CopiesAtHalfSamplePositions) {
    Rng rng(6);
    check_block_list(blocks().copyHP, rng, true);
    check_block_list(small().copyHP, rng, true);
}

TEST(CheckMc, InterpolateAverage) {
    Rng rng(7);
    check_block_list(blocks().interpAvg, rng, true);
}

TEST(CheckMc, PlainCopyAndAverage) {
    Rng rng(8);
    check_block_list(blocks().copy, rng, false);
    for (const auto& e : blocks().average)
        for (int d = 0; d < draws(); ++d) {
            const Zan32s as = step_of(d, e.width, 0), bs = step_of(d, e.width, 1), ds = step_of(d, e.width, 2);
            Region a(e.width, e.height, as, align_of(d, 0)), b(e.width, e.height, bs, align_of(d, 1));
            a.fill(rng);
            b.fill(rng);
            DstPair dst(e.width, e.height, ds, align_of(d, 2), rng);
            e.rule(a.origin(), as, b.origin(), bs, dst.want.origin(), ds);
            e.simd(a.origin(), as, b.origin(), bs, dst.got.origin(), ds);
            ASSERT_TRUE(dst.same()) << where(e.name, d, e.height, as, bs, ds);
            // In place: the second source is the destination.
            e.rule(a.origin(), as, dst.want.origin(), ds, dst.want.origin(), ds);
            e.simd(a.origin(), as, dst.got.origin(), ds, dst.got.origin(), ds);
            ASSERT_TRUE(dst.same()) << where(e.name, d, e.height, as, bs, ds) << " in place";
        }
}

TEST(CheckMc, ResidualAdds) {
    Rng rng(9);
    for (const auto& e : blocks().add)
        for (int d = 0; d < draws(); ++d) {
            // param 16: the residual and its step are multiples of 16.
            const bool aligned = e.param == 16;
            const Zan32s ress = aligned ? std::vector<Zan32s>{16, 32, -16, -48}[static_cast<size_t>(d) % 4]
                                        : step_of(d, 16, 1, 2);
            const Zan32s ds = step_of(d, 8, 2);
            Region res(16, 8, ress, aligned ? 16 * (d % 4) : align_of(d, 1, 2));
            fill_residual(res, rng, d);
            DstPair dst(8, 8, ds, align_of(d, 2), rng);
            e.rule(res.as<Zan16s>(), ress, dst.want.origin(), ds);
            e.simd(res.as<Zan16s>(), ress, dst.got.origin(), ds);
            ASSERT_TRUE(dst.same()) << where(e.name, d, 8, 0, ress, ds);
        }
    for (const auto& e : blocks().addHP)
        for (int d = 0; d < draws(); ++d) {
            const Area a = area(acc_pos(e.param), 8, 8, 1);
            const Zan32s rs = step_of(d, a.w, 0), ress = step_of(d, 16, 1, 2), ds = step_of(d, 8, 2);
            Region ref(a.w, a.h, rs, align_of(d, 0)), res(16, 8, ress, align_of(d, 1, 2));
            ref.fill(rng);
            fill_residual(res, rng, d);
            DstPair dst(8, 8, ds, align_of(d, 2), rng);
            e.rule(res.as<Zan16s>(), ress, ref.origin(), rs, dst.want.origin(), ds);
            e.simd(res.as<Zan16s>(), ress, ref.origin(), rs, dst.got.origin(), ds);
            ASSERT_TRUE(dst.same()) << where(e.name, d, 8, rs, ress, ds);
        }
    for (const auto& e : blocks().addC)
        for (int d = 0; d < draws(); ++d) {
            const Zan32s ds = step_of(d, 8, 2);
            const Zan32s pick[] = {-32768, 32767, -256, 255, 256, -255, -1, 1, 0};
            const Zan16s value = static_cast<Zan16s>(d % 2 ? pick[(d / 2) % 9] : rng.range(-600, 600));
            DstPair dst(8, 8, ds, align_of(d, 2), rng);
            e.rule(value, dst.want.origin(), ds);
            e.simd(value, dst.got.origin(), ds);
            ASSERT_TRUE(dst.same()) << where(e.name, d, 8, 0, 0, ds) << " value " << value;
        }
}

// ------------------------------------------------------------- extremes

// References of all 255 (or all 0) against the largest residuals, every
// slot of the residual-adding tables.
TEST(CheckMc, ExtremeReferencesAndResiduals) {
    const Zan8u refValues[] = {255, 0, 255, 0};
    const Zan16s resValues[] = {32767, -32768, -32768, 32767};
    for (int k = 0; k < 4; ++k) {
        auto setRef = [&](Region& r) { r.set(refValues[k]); };
        auto setRes = [&](Region& r) {
            for (size_t i = 0; i + 1 < r.storage().size(); i += 2) std::memcpy(&r.storage()[i], &resValues[k], 2);
        };
        for (const auto& e : wide().fwd) {
            const Zan32s D = distance_of(e.name);
            const Area a = area(wide_pos(e.param), e.width, e.height, D);
            Region ref(a.w, a.h, 64, 3), res(2 * e.width, e.height, 64, 2);
            setRef(ref);
            setRes(res);
            Region want(e.width, e.height, 32, 1), got(e.width, e.height, 32, 1);
            e.rule(ref.origin(), 64, res.as<Zan16s>(), 64, want.origin(), 32, e.height);
            e.simd(ref.origin(), 64, res.as<Zan16s>(), 64, got.origin(), 32, e.height);
            ASSERT_TRUE(want.same_as(got)) << e.name << " extreme case " << k;
            ASSERT_EQ(got.origin()[0], resValues[k] > 0 ? 255 : 0) << e.name;
        }
        for (const auto& e : wide().bidir) {
            const Area a = area(kHH, e.width, e.height, 2);
            Region rf(a.w, a.h, 64, 5), rb(a.w, a.h, 64, 9), res(2 * e.width, e.height, 64, 2);
            setRef(rf);
            setRef(rb);
            setRes(res);
            Region want(e.width, e.height, 32, 1), got(e.width, e.height, 32, 1);
            e.rule(rf.origin(), 64, rb.origin(), 64, res.as<Zan16s>(), 64, want.origin(), 32, e.height);
            e.simd(rf.origin(), 64, rb.origin(), 64, res.as<Zan16s>(), 64, got.origin(), 32, e.height);
            ASSERT_TRUE(want.same_as(got)) << e.name << " extreme case " << k;
            ASSERT_EQ(got.origin()[0], resValues[k] > 0 ? 255 : 0) << e.name;
        }
        for (const auto& e : small().fwd) {
            Region ref(e.width + 1, e.height + 1, 16, 7), res(2 * e.width, e.height, 16, 2);
            setRef(ref);
            setRes(res);
            Region want(e.width, e.height, 8, 1), got(e.width, e.height, 8, 1);
            e.rule(ref.origin(), 16, res.as<Zan16s>(), 16, want.origin(), 8, k);
            e.simd(ref.origin(), 16, res.as<Zan16s>(), 16, got.origin(), 8, k);
            ASSERT_TRUE(want.same_as(got)) << e.name << " extreme case " << k;
        }
        for (const auto& e : small().bidir) {
            Region rf(e.width + 1, e.height + 1, 16, 7), rb(e.width + 1, e.height + 1, 16, 3);
            Region res(2 * e.width, e.height, 16, 2);
            setRef(rf);
            setRef(rb);
            setRes(res);
            Region want(e.width, e.height, 8, 1), got(e.width, e.height, 8, 1);
            e.rule(rf.origin(), 16, rb.origin(), 16, res.as<Zan16s>(), 16, want.origin(), 8, k);
            e.simd(rf.origin(), 16, rb.origin(), 16, res.as<Zan16s>(), 16, got.origin(), 8, k);
            ASSERT_TRUE(want.same_as(got)) << e.name << " extreme case " << k;
        }
        for (const auto& e : blocks().add) {
            Region res(16, 8, 16, 0);
            setRes(res);
            Region want(8, 8, 8, 0), got(8, 8, 8, 0);
            want.set(refValues[k]);
            got.set(refValues[k]);
            e.rule(res.as<Zan16s>(), 16, want.origin(), 8);
            e.simd(res.as<Zan16s>(), 16, got.origin(), 8);
            ASSERT_TRUE(want.same_as(got)) << e.name << " extreme case " << k;
        }
        for (const auto& e : blocks().addHP) {
            Region ref(9, 9, 16, 7), res(16, 8, 16, 2);
            setRef(ref);
            setRes(res);
            Region want(8, 8, 8, 1), got(8, 8, 8, 1);
            e.rule(res.as<Zan16s>(), 16, ref.origin(), 16, want.origin(), 8);
            e.simd(res.as<Zan16s>(), 16, ref.origin(), 16, got.origin(), 8);
            ASSERT_TRUE(want.same_as(got)) << e.name << " extreme case " << k;
            ASSERT_EQ(got.origin()[0], resValues[k] > 0 ? 255 : 0) << e.name;
        }
    }
}

// ------------------------------------------------------------------ reads

// A region placed against an inaccessible page, after it (atEnd) or before
// it, so that a read outside the region faults.
class EdgeRegion {
public:
    EdgeRegion(Zan32s widthBytes, Zan32s height, Zan32s step, bool atEnd) {
        page_ = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t span = static_cast<std::size_t>(std::abs(step)) * static_cast<std::size_t>(height - 1) +
                                 static_cast<std::size_t>(widthBytes);
        size_ = (span + page_ - 1) / page_ * page_ + 2 * page_;
        void* m = mmap(nullptr, size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        map_ = m == MAP_FAILED ? nullptr : static_cast<Zan8u*>(m);
        if (!map_) return;
        Zan8u* rw = map_ + page_;
        const std::size_t rwSize = size_ - 2 * page_;
        if (mprotect(rw, rwSize, PROT_READ | PROT_WRITE) != 0) {
            munmap(map_, size_);
            map_ = nullptr;
            return;
        }
        Zan8u* first = atEnd ? rw + rwSize - span : rw;
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

// Each reference region is exactly the area its position needs, against a
// page that faults: before it, after it, with positive and negative steps.
TEST(CheckMc, ReadsStayInsideThePositionsArea) {
    Rng rng(10);
    for (int v = 0; v < 4; ++v) {
        const bool atEnd = v % 2 == 0;
        const Zan32s sign = v < 2 ? 1 : -1;
        for (const auto& e : wide().fwd) {
            const Area a = area(wide_pos(e.param), e.width, e.height, distance_of(e.name));
            EdgeRegion ref(a.w, a.h, sign * (a.w + 1), atEnd);
            ASSERT_TRUE(ref.ok());
            ref.fill(rng);
            Region res(2 * e.width, e.height, 32, 0), want(e.width, e.height, 16, 0), got(e.width, e.height, 16, 0);
            res.fill16(rng, -300, 300);
            e.rule(ref.origin(), sign * (a.w + 1), res.as<Zan16s>(), 32, want.origin(), 16, e.height);
            e.simd(ref.origin(), sign * (a.w + 1), res.as<Zan16s>(), 32, got.origin(), 16, e.height);
            ASSERT_TRUE(want.same_as(got)) << e.name;
        }
        for (const auto& e : wide().bidir) {
            const Area af = area(wide_pf(e.param), e.width, e.height, distance_of(e.name));
            const Area ab = area(wide_pb(e.param), e.width, e.height, distance_of(e.name));
            EdgeRegion rf(af.w, af.h, sign * af.w, atEnd), rb(ab.w, ab.h, sign * ab.w, !atEnd);
            ASSERT_TRUE(rf.ok() && rb.ok());
            rf.fill(rng);
            rb.fill(rng);
            Region res(2 * e.width, e.height, 32, 0), want(e.width, e.height, 16, 0), got(e.width, e.height, 16, 0);
            res.fill16(rng, -300, 300);
            e.rule(rf.origin(), sign * af.w, rb.origin(), sign * ab.w, res.as<Zan16s>(), 32, want.origin(), 16, e.height);
            e.simd(rf.origin(), sign * af.w, rb.origin(), sign * ab.w, res.as<Zan16s>(), 32, got.origin(), 16, e.height);
            ASSERT_TRUE(want.same_as(got)) << e.name;
        }
        for (const auto& e : wide().pair) {
            const bool bidir = e.param >= 32;
            const Zan32s slot = bidir ? e.param - 32 : e.param;
            const Area af = area(bidir ? wide_pf(slot) : wide_pos(slot), 16, e.height, 2);
            const Area ab = area(bidir ? wide_pb(slot) : kFF, 16, e.height, 2);
            EdgeRegion rf(af.w, af.h, sign * af.w, atEnd), rb(ab.w, ab.h, sign * ab.w, !atEnd);
            ASSERT_TRUE(rf.ok() && rb.ok());
            rf.fill(rng);
            rb.fill(rng);
            Region ru(16, e.height, 16, 0), rv(16, e.height, 16, 0), want(16, e.height, 16, 0), got(16, e.height, 16, 0);
            ru.fill16(rng, -300, 300);
            rv.fill16(rng, -300, 300);
            McPairArgs args{rf.origin(), rb.origin(), ru.as<Zan16s>(), rv.as<Zan16s>(), want.origin(),
                            sign * af.w, sign * ab.w, 16, 16, {0, 0}};
            e.rule(&args, e.height);
            args.pDst = got.origin();
            e.simd(&args, e.height);
            ASSERT_TRUE(want.same_as(got)) << e.name;
        }
        for (const auto& e : small().fwd) {
            const Area a = area(small_pos(e.param), e.width, e.height, 1);
            EdgeRegion ref(a.w, a.h, sign * a.w, atEnd);
            ASSERT_TRUE(ref.ok());
            ref.fill(rng);
            Region res(2 * e.width, e.height, 8, 0), want(e.width, e.height, 4, 0), got(e.width, e.height, 4, 0);
            res.fill16(rng, -300, 300);
            e.rule(ref.origin(), sign * a.w, res.as<Zan16s>(), 8, want.origin(), 4, v);
            e.simd(ref.origin(), sign * a.w, res.as<Zan16s>(), 8, got.origin(), 4, v);
            ASSERT_TRUE(want.same_as(got)) << e.name;
        }
        for (const auto& e : small().bidir) {
            const Area af = area(small_pf(e.param), e.width, e.height, 1);
            const Area ab = area(small_pb(e.param), e.width, e.height, 1);
            EdgeRegion rf(af.w, af.h, sign * af.w, atEnd), rb(ab.w, ab.h, sign * ab.w, !atEnd);
            ASSERT_TRUE(rf.ok() && rb.ok());
            rf.fill(rng);
            rb.fill(rng);
            Region res(2 * e.width, e.height, 8, 0), want(e.width, e.height, 4, 0), got(e.width, e.height, 4, 0);
            res.fill16(rng, -300, 300);
            e.rule(rf.origin(), sign * af.w, rb.origin(), sign * ab.w, res.as<Zan16s>(), 8, want.origin(), 4, v);
            e.simd(rf.origin(), sign * af.w, rb.origin(), sign * ab.w, res.as<Zan16s>(), 8, got.origin(), 4, v);
            ASSERT_TRUE(want.same_as(got)) << e.name;
        }
        for (KernelList<BlockFn> list : {blocks().copyHP, blocks().interpAvg, small().copyHP})
            for (const auto& e : list) {
                const Area a = area(acc_pos(e.param), e.width, e.height, 1);
                EdgeRegion src(a.w, a.h, sign * a.w, atEnd);
                ASSERT_TRUE(src.ok());
                src.fill(rng);
                Region want(e.width, e.height, 16, 0), got(e.width, e.height, 16, 0);
                want.set(9);
                got.set(9);
                e.rule(src.origin(), sign * a.w, want.origin(), 16);
                e.simd(src.origin(), sign * a.w, got.origin(), 16);
                ASSERT_TRUE(want.same_as(got)) << e.name;
            }
        for (const auto& e : blocks().addHP) {
            const Area a = area(acc_pos(e.param), 8, 8, 1);
            EdgeRegion ref(a.w, a.h, sign * a.w, atEnd);
            ASSERT_TRUE(ref.ok());
            ref.fill(rng);
            Region res(16, 8, 16, 0), want(8, 8, 8, 0), got(8, 8, 8, 0);
            res.fill16(rng, -300, 300);
            e.rule(res.as<Zan16s>(), 16, ref.origin(), sign * a.w, want.origin(), 8);
            e.simd(res.as<Zan16s>(), 16, ref.origin(), sign * a.w, got.origin(), 8);
            ASSERT_TRUE(want.same_as(got)) << e.name;
        }
    }
}

// Every slot of every table is in the catalogue, and slots that must share
// a kernel do: the two full-sample slots of a forward table.
TEST(CheckMc, CatalogueCoversEveryTableSlot) {
    EXPECT_EQ(wide().fwd.size(), 24u);
    EXPECT_EQ(wide().bidir.size(), 96u);
    EXPECT_EQ(wide().pair.size(), 40u);
    EXPECT_EQ(small().fwd.size(), 80u);
    EXPECT_EQ(small().bidir.size(), 80u);
    EXPECT_EQ(small().copyHP.size(), 8u);
    EXPECT_EQ(blocks().copyHP.size(), 32u);
    EXPECT_EQ(blocks().interpAvg.size(), 32u);
    EXPECT_EQ(blocks().addHP.size(), 8u);
    for (size_t i = 0; i < wide().fwd.size(); i += 8) EXPECT_EQ(wide().fwd[i].simd, wide().fwd[i + 1].simd);
    for (size_t i = 0; i < blocks().copyHP.size(); i += 8) EXPECT_EQ(blocks().copyHP[i].simd, blocks().copyHP[i + 1].simd);
}

}  // namespace
