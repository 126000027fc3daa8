// Every H.264 interpolation kernel against its scalar rule: luma at all 16
// positions and every width class, chroma of every width class, column and
// layout, the bi-prediction average; random and extreme samples, every
// alignment, tight, odd, wide and negative steps, guard bands around every
// output, and reads confined to what the filter needs (the source put
// against an inaccessible page).
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "check/harness.h"
#include "h264/h264interp.h"

namespace {

using namespace zan;
using namespace zan::check;
using namespace zan::h264interp;

const Kernels& kernels() { return for_path(u8::h264interp::kernels, n8::h264interp::kernels); }

// Source samples: the biased random bytes of the harness, or (every third
// draw) only 0 and 255, which drive the 6-tap sums to their extremes
// (-2550 and 10710, and the centre's second stage to -214200 .. 475320).
void fill_source(Region& r, Rng& rng, int draw) {
    r.fill(rng);
    if (draw % 3 == 2)
        for (auto& b : r.storage()) b = rng.below(2) ? 255 : 0;
}

Zan32s step_of(const std::vector<Zan32s>& steps, int i) { return steps[static_cast<size_t>(i) % steps.size()]; }

TEST(CheckH264Interp, LumaEveryPositionAndWidth) {
    Rng rng(101);
    for (const auto& e : kernels().luma8) {
        const Zan32s dx = e.param & 3, dy = e.param >> 2;
        const Zan32s mx = dx ? 2 : 0, my = dy ? 2 : 0;
        const Zan32s srcW = e.width + (dx ? 5 : 0);
        for (int d = 0; d < draws(); ++d) {
            const Zan32s h = d % 5 == 0 ? rng.range(0, 19) : 4 * rng.range(1, 4);
            const Zan32s rows = h + (dy ? 5 : 0);
            const Zan32s ss = step_of(steps_for(srcW), d), ds = step_of(steps_for(e.width), d / 7);
            Region src(srcW, rows > 0 ? rows : 1, ss, d % 16), want(e.width, h > 0 ? h : 1, ds, (d / 16) % 16),
                got(e.width, h > 0 ? h : 1, ds, (d / 16) % 16);
            fill_source(src, rng, d);
            want.set(0xC3);
            got.set(0xC3);
            const Zan8u* s = src.origin() + static_cast<std::ptrdiff_t>(ss) * my + mx;
            e.rule(s, ss, want.origin(), ds, h);
            e.simd(s, ss, got.origin(), ds, h);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " h " << h << " steps " << ss << "/" << ds
                                           << " seed " << seed();
        }
    }
}

// Samples that drive the centre's second stage to both ends: each row holds
// a period-6 pattern whose 6-tap sum is 10710 (255 0 255 255 0 255) or
// -2550 (its complement) at every sixth column, and the rows follow the
// filter's own sign pattern (or its complement, or chance), so that some
// outputs reach the largest and smallest sums the centre can see.
TEST(CheckH264Interp, LumaCentreAtItsExtremes) {
    Rng rng(109);
    static const Zan8u kHigh[6] = {255, 0, 255, 255, 0, 255};
    static const bool kRowSign[6] = {true, false, true, true, false, true};
    for (const auto& e : kernels().luma8) {
        if ((e.param & 3) != 2 && (e.param >> 2) != 2) continue;
        const Zan32s dx = e.param & 3, dy = e.param >> 2;
        const Zan32s srcW = e.width + (dx ? 5 : 0);
        for (int d = 0; d < 48; ++d) {
            const Zan32s h = 4 * rng.range(1, 4), rows = h + 5, ss = srcW + 16 * (d % 2);
            Region src(srcW, rows, ss, d % 16), want(e.width, h, e.width, 0), got(e.width, h, e.width, 0);
            const Zan32s ox = rng.range(0, 5), oy = rng.range(0, 5), mode = d % 3;
            for (Zan32s y = 0; y < rows; ++y) {
                const bool rowHigh = mode == 2 ? rng.below(2) == 1 : kRowSign[(y + oy) % 6] == (mode == 0);
                for (Zan32s x = 0; x < srcW; ++x) {
                    const Zan8u v = kHigh[(x + ox) % 6];
                    src.origin()[static_cast<std::ptrdiff_t>(ss) * y + x] = rowHigh ? v : static_cast<Zan8u>(255 - v);
                }
            }
            want.set(0x11);
            got.set(0x11);
            const Zan8u* s = src.origin() + static_cast<std::ptrdiff_t>(ss) * (dy ? 2 : 0) + (dx ? 2 : 0);
            e.rule(s, ss, want.origin(), e.width, h);
            e.simd(s, ss, got.origin(), e.width, h);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " mode " << mode;
        }
    }
}

// Bytes of one chroma row of the source and of the destination.
Zan32s chroma_src_bytes(const KernelPair<Chroma8Fn>& e, Zan32s dx) {
    Zan32s samples = e.width + (dx ? 1 : 0);
    return (e.param & 3) == 0 ? samples : 2 * samples;
}
Zan32s chroma_dst_bytes(const KernelPair<Chroma8Fn>& e) { return (e.param & 3) == 1 ? 2 * e.width : e.width; }

TEST(CheckH264Interp, ChromaEveryWidthColumnAndLayout) {
    Rng rng(102);
    for (const auto& e : kernels().chroma8) {
        const Zan32s col = e.param >> 2;
        const bool split = (e.param & 3) == 2;
        for (int d = 0; d < draws(); ++d) {
            const Zan32s dx = col & 1 ? rng.range(1, 7) : 0, dy = col & 2 ? rng.range(1, 7) : 0;
            const Zan32s h = d % 5 == 0 ? rng.range(0, 17) : 2 * rng.range(1, 8);
            const Zan32s srcW = chroma_src_bytes(e, dx), dstW = chroma_dst_bytes(e);
            const Zan32s ss = step_of(steps_for(srcW), d), ds = step_of(steps_for(dstW), d / 7);
            const Zan32s rows = h + (dy ? 1 : 0), outRows = h > 0 ? h : 1;
            Region src(srcW, rows > 0 ? rows : 1, ss, d % 16);
            Region wantU(dstW, outRows, ds, (d / 16) % 16), gotU(dstW, outRows, ds, (d / 16) % 16);
            Region wantV(dstW, outRows, ds, d % 7), gotV(dstW, outRows, ds, d % 7);
            fill_source(src, rng, d);
            for (Region* r : {&wantU, &gotU, &wantV, &gotV}) r->set(0x3C);
            ChromaJob8 a{src.origin(), ss, wantU.origin(), split ? wantV.origin() : nullptr, ds, dx, dy, h};
            ChromaJob8 b{src.origin(), ss, gotU.origin(), split ? gotV.origin() : nullptr, ds, dx, dy, h};
            e.rule(a);
            e.simd(b);
            ASSERT_TRUE(wantU.same_as(gotU) && wantV.same_as(gotV))
                << e.name << " draw " << d << " dx " << dx << " dy " << dy << " h " << h << " steps " << ss << "/"
                << ds << " seed " << seed();
        }
    }
}

TEST(CheckH264Interp, SixteenBitChroma) {
    Rng rng(106);
    for (const auto& e : kernels().chroma16) {
        const Zan32s col = e.param >> 2;
        for (int d = 0; d < draws(); ++d) {
            const Zan32s dx = col & 1 ? rng.range(1, 7) : 0, dy = col & 2 ? rng.range(1, 7) : 0;
            const Zan32s h = d % 5 == 0 ? rng.range(0, 17) : 2 * rng.range(1, 8);
            const Zan32s srcW = 2 * (e.width + (dx ? 1 : 0)), dstW = 2 * e.width;
            const Zan32s ss = step_of(steps_for(srcW, 2), d), ds = step_of(steps_for(dstW, 2), d / 7);
            const Zan32s rows = h + (dy ? 1 : 0), outRows = h > 0 ? h : 1;
            Region src(srcW, rows > 0 ? rows : 1, ss, 2 * (d % 8));
            Region want(dstW, outRows, ds, 2 * ((d / 8) % 8)), got(dstW, outRows, ds, 2 * ((d / 8) % 8));
            // All 16 bits, or a bit depth's range.
            src.fill16(rng, 0, d % 2 ? 65535 : (1 << rng.range(8, 14)) - 1);
            want.set(0x3C);
            got.set(0x3C);
            e.rule({src.as<Zan16u>(), ss / 2, want.as<Zan16u>(), ds / 2, dx, dy, e.width, h, 65535});
            e.simd({src.as<Zan16u>(), ss / 2, got.as<Zan16u>(), ds / 2, dx, dy, e.width, h, 65535});
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " dx " << dx << " dy " << dy << " h " << h
                                           << " steps " << ss << "/" << ds << " seed " << seed();
        }
    }
}

// 16-bit luma: samples within a bit depth's range, or any 16-bit value
// under a smaller clamp (results then clamp at both ends).
TEST(CheckH264Interp, SixteenBitLumaEveryPositionAndWidth) {
    Rng rng(107);
    for (const auto& e : kernels().luma16) {
        const Zan32s dx = e.param & 3, dy = e.param >> 2;
        const Zan32s srcW = 2 * (e.width + (dx ? 5 : 0)), dstW = 2 * e.width;
        for (int d = 0; d < draws() / 2; ++d) {
            const Zan32s h = d % 5 == 0 ? rng.range(0, 17) : 4 * rng.range(1, 4);
            const Zan32s rows = h + (dy ? 5 : 0), outRows = h > 0 ? h : 1;
            const Zan32s ss = step_of(steps_for(srcW, 2), d), ds = step_of(steps_for(dstW, 2), d / 7);
            Region src(srcW, rows > 0 ? rows : 1, ss, 2 * (d % 8));
            Region want(dstW, outRows, ds, 2 * ((d / 8) % 8)), got(dstW, outRows, ds, 2 * ((d / 8) % 8));
            const Zan32s depth = rng.range(8, 16), maxValue = (1 << depth) - 1;
            src.fill16(rng, 0, d % 3 == 0 ? 65535 : maxValue);
            want.set(0xA6);
            got.set(0xA6);
            const Zan8u* s = src.origin() + static_cast<std::ptrdiff_t>(ss) * (dy ? 2 : 0) + (dx ? 4 : 0);
            const Zan16u* s16 = reinterpret_cast<const Zan16u*>(s);
            e.rule({s16, ss / 2, want.as<Zan16u>(), ds / 2, dx, dy, e.width, h, maxValue});
            e.simd({s16, ss / 2, got.as<Zan16u>(), ds / 2, dx, dy, e.width, h, maxValue});
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " depth " << depth << " h " << h << " steps "
                                           << ss << "/" << ds << " seed " << seed();
        }
    }
}

TEST(CheckH264Interp, BiPredictionAverage) {
    Rng rng(103);
    for (const auto& e : kernels().average)
        for (int d = 0; d < draws(); ++d) {
            const Zan32s w = e.width ? e.width : rng.range(2, 16), h = e.height ? e.height : rng.range(2, 16);
            const Zan32s s1 = step_of(steps_for(w), d), s2 = step_of(steps_for(w), d / 3),
                         ds = step_of(steps_for(w), d / 5);
            Region a(w, h, s1, d % 16), b(w, h, s2, (d / 16) % 16), want(w, h, ds, d % 5), got(w, h, ds, d % 5);
            a.fill(rng);
            b.fill(rng);
            want.set(0x99);
            got.set(0x99);
            e.rule(a.origin(), s1, b.origin(), s2, want.origin(), ds, w, h);
            e.simd(a.origin(), s1, b.origin(), s2, got.origin(), ds, w, h);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " " << w << "x" << h << " seed " << seed();
        }
}

// widthBytes x rows at step, put against an inaccessible page after it
// (atEnd) or before it, so that a read beyond the area faults.
class PageEdge {
public:
    PageEdge(Zan32s widthBytes, Zan32s rows, Zan32s step, bool atEnd) {
        page_ = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        size_t span = static_cast<size_t>(std::abs(step)) * static_cast<size_t>(rows - 1) + static_cast<size_t>(widthBytes);
        size_ = (span + page_ - 1) / page_ * page_ + 2 * page_;
        void* m = mmap(nullptr, size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (m == MAP_FAILED) return;
        map_ = static_cast<Zan8u*>(m);
        Zan8u* rw = map_ + page_;
        const size_t rwSize = size_ - 2 * page_;
        if (mprotect(rw, rwSize, PROT_READ | PROT_WRITE) != 0) return;
        Zan8u* first = atEnd ? rw + rwSize - span : rw;
        origin_ = step >= 0 ? first : first + static_cast<std::ptrdiff_t>(-step) * (rows - 1);
        rw_ = rw;
        rwSize_ = rwSize;
    }
    ~PageEdge() {
        if (map_) munmap(map_, size_);
    }
    PageEdge(const PageEdge&) = delete;
    PageEdge& operator=(const PageEdge&) = delete;
    bool ok() const { return origin_ != nullptr; }
    Zan8u* origin() { return origin_; }
    void fill(Rng& rng) { rng.fill(rw_, rwSize_); }

private:
    size_t page_ = 0, size_ = 0, rwSize_ = 0;
    Zan8u* map_ = nullptr;
    Zan8u* rw_ = nullptr;
    Zan8u* origin_ = nullptr;
};

// Each kernel reads only the filter's region: w (+5 with dx) by h (+5 with
// dy) for luma, one column and row more for chroma.  With a step of exactly
// the region's width the first and last rows touch the pages on both sides.
TEST(CheckH264Interp, ReadsStayInsideTheFilterRegion) {
    Rng rng(104);
    for (const auto& e : kernels().luma8) {
        const Zan32s dx = e.param & 3, dy = e.param >> 2;
        const Zan32s srcW = e.width + (dx ? 5 : 0);
        for (int d = 0; d < 8; ++d) {
            const Zan32s h = 4 * (1 + d % 4), rows = h + (dy ? 5 : 0);
            const Zan32s ss = d % 4 < 2 ? srcW : -srcW;
            PageEdge src(srcW, rows, ss, d % 2 == 0);
            ASSERT_TRUE(src.ok());
            src.fill(rng);
            std::vector<Zan8u> want(static_cast<size_t>(e.width * h)), got(want.size());
            const Zan8u* s = src.origin() + static_cast<std::ptrdiff_t>(ss) * (dy ? 2 : 0) + (dx ? 2 : 0);
            e.rule(s, ss, want.data(), e.width, h);
            e.simd(s, ss, got.data(), e.width, h);
            ASSERT_EQ(want, got) << e.name << " draw " << d;
        }
    }
    for (const auto& e : kernels().chroma8) {
        const Zan32s col = e.param >> 2;
        const Zan32s dx = col & 1 ? 3 : 0, dy = col & 2 ? 5 : 0;
        const Zan32s srcW = chroma_src_bytes(e, dx), dstW = chroma_dst_bytes(e);
        for (int d = 0; d < 8; ++d) {
            const Zan32s h = 2 * (1 + d % 4), rows = h + (dy ? 1 : 0);
            const Zan32s ss = d % 4 < 2 ? srcW : -srcW;
            PageEdge src(srcW, rows, ss, d % 2 == 0);
            ASSERT_TRUE(src.ok());
            src.fill(rng);
            std::vector<Zan8u> wantU(static_cast<size_t>(dstW * h)), gotU(wantU.size()), wantV(wantU.size()),
                gotV(wantU.size());
            const bool split = (e.param & 3) == 2;
            e.rule({src.origin(), ss, wantU.data(), split ? wantV.data() : nullptr, dstW, dx, dy, h});
            e.simd({src.origin(), ss, gotU.data(), split ? gotV.data() : nullptr, dstW, dx, dy, h});
            ASSERT_TRUE(wantU == gotU && wantV == gotV) << e.name << " draw " << d;
        }
    }
}

// The 16-bit kernels likewise.
TEST(CheckH264Interp, SixteenBitReadsStayInsideTheFilterRegion) {
    Rng rng(108);
    for (const auto& e : kernels().luma16) {
        const Zan32s dx = e.param & 3, dy = e.param >> 2;
        const Zan32s srcW = 2 * (e.width + (dx ? 5 : 0));
        for (int d = 0; d < 4; ++d) {
            const Zan32s h = 4 * (1 + d % 4), rows = h + (dy ? 5 : 0);
            const Zan32s ss = d % 4 < 2 ? srcW : -srcW;
            PageEdge src(srcW, rows, ss, d % 2 == 0);
            ASSERT_TRUE(src.ok());
            src.fill(rng);
            std::vector<Zan16u> want(static_cast<size_t>(e.width * h)), got(want.size());
            const auto* s = reinterpret_cast<const Zan16u*>(src.origin() + static_cast<std::ptrdiff_t>(ss) * (dy ? 2 : 0) + (dx ? 4 : 0));
            e.rule({s, ss / 2, want.data(), e.width, dx, dy, e.width, h, 1023});
            e.simd({s, ss / 2, got.data(), e.width, dx, dy, e.width, h, 1023});
            ASSERT_EQ(want, got) << e.name << " draw " << d;
        }
    }
    for (const auto& e : kernels().chroma16) {
        const Zan32s col = e.param >> 2, dx = col & 1 ? 3 : 0, dy = col & 2 ? 5 : 0;
        const Zan32s srcW = 2 * (e.width + (dx ? 1 : 0));
        for (int d = 0; d < 8; ++d) {
            const Zan32s h = 2 * (1 + d % 4), rows = h + (dy ? 1 : 0);
            const Zan32s ss = d % 4 < 2 ? srcW : -srcW;
            PageEdge src(srcW, rows, ss, d % 2 == 0);
            ASSERT_TRUE(src.ok());
            src.fill(rng);
            std::vector<Zan16u> want(static_cast<size_t>(e.width * h)), got(want.size());
            const auto* s = reinterpret_cast<const Zan16u*>(src.origin());
            e.rule({s, ss / 2, want.data(), e.width, dx, dy, e.width, h, 65535});
            e.simd({s, ss / 2, got.data(), e.width, dx, dy, e.width, h, 65535});
            ASSERT_EQ(want, got) << e.name << " draw " << d;
        }
    }
}

// The boundary read of each path against a plain model: every position
// outside the plane takes the nearest plane sample, except that an axis the
// region crosses at both ends is clamped only at the start when the region
// begins before the plane (else only at the end); the far side then reads
// the memory around the plane.
template <class T, int C>
void check_boundary_read(void (*read)(Zan32s, const BoundaryRead<T>&), Rng& rng) {
    constexpr Zan32s kPad = 40;  // readable samples around the plane
    for (int d = 0; d < 4 * draws(); ++d) {
        const Zan32s fw = rng.range(1, 20), fh = rng.range(1, 20);
        const Zan32s w = rng.range(1, d % 4 == 0 ? 30 : 16), h = rng.range(1, d % 4 == 0 ? 30 : 16);
        const Zan32s x = rng.range(-w - 6, fw + 6), y = rng.range(-h - 6, fh + 6);
        const Zan32s step = C * (fw + 2 * kPad) + rng.range(0, 3);
        std::vector<T> storage(static_cast<size_t>(step) * static_cast<size_t>(fh + 2 * kPad));
        for (auto& v : storage) v = static_cast<T>(rng.next());
        const T* plane = storage.data() + static_cast<size_t>(step) * kPad + C * kPad;
        std::vector<T> got(static_cast<size_t>(C * w * h) + 64, T(0x77));
        const Zan32s edge = (x < 0 ? 1 : 0) | (x + w > fw ? 2 : 0) | (y < 0 ? 4 : 0) | (y + h > fh ? 8 : 0);
        read(edge, BoundaryRead<T>{plane, step, {fw, fh}, x, y, w, h, got.data(), C * w});
        auto map = [](Zan32s p, Zan32s size, int bits, Zan32s start) {
            if (bits == 3) bits = start < 0 ? 1 : 2;
            if (bits & 1) return p < 0 ? 0 : p;
            if (bits & 2) return p > size - 1 ? size - 1 : p;
            return p;
        };
        for (Zan32s r = 0; r < h; ++r)
            for (Zan32s i = 0; i < w; ++i)
                for (int c = 0; c < C; ++c) {
                    Zan32s px = map(x + i, fw, edge & 3, x), py = map(y + r, fh, (edge >> 2) & 3, y);
                    T want = plane[static_cast<std::ptrdiff_t>(py) * step + C * px + c];
                    ASSERT_EQ(want, got[static_cast<size_t>(r * C * w + C * i + c)])
                        << "draw " << d << " frame " << fw << "x" << fh << " region " << x << "," << y << " " << w
                        << "x" << h << " at " << i << "," << r << " seed " << seed();
                }
        for (size_t k = static_cast<size_t>(C * w * h); k < got.size(); ++k) ASSERT_EQ(got[k], T(0x77));
    }
}

TEST(CheckH264Interp, BoundaryReads) {
    Rng rng(105);
    check_boundary_read<Zan8u, 1>(for_path(u8::zaniReadDataBlockThroughBoundary_8u, n8::zaniReadDataBlockThroughBoundary_8u), rng);
    check_boundary_read<Zan16u, 1>(for_path(u8::zaniReadDataBlockThroughBoundary_16u, n8::zaniReadDataBlockThroughBoundary_16u), rng);
    check_boundary_read<Zan8u, 2>(for_path(u8::zaniReadDataBlockThroughBoundary_NV12_8u, n8::zaniReadDataBlockThroughBoundary_NV12_8u), rng);
}

}  // namespace
