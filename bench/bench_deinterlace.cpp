// Deinterlacing: every row kernel (rule, u8, n8) on one 720-sample row, and
// the exported tools on whole 720x576 and 1920x1080 pictures, reported with
// a Mpix/s counter (target-field and kept-field samples together).
#include <string>

#include "bench_util.h"
#include "picture/deinterlace.h"

namespace {

using namespace zan;
using namespace zan::deinterlace;
using bench::Buffer;

constexpr Zan32s kRow = 720;    // samples per benchmarked row
constexpr Zan32s kStep = 1536;  // bytes between rows of the row benchmarks

// Four planes of 5 rows of smooth content with noise: frames that differ a
// little, so the blend and the motion tool meet every branch.
struct Rows {
    Buffer p[4] = {Buffer(kStep * 5), Buffer(kStep * 5), Buffer(kStep * 5), Buffer(kStep * 5)};
    Buffer out{kStep};
    Rows() {
        for (int i = 0; i < 4; ++i) {
            p[i].fill(static_cast<std::uint64_t>(i + 1));
            for (std::size_t k = 0; k < p[i].size(); ++k)
                p[i].data()[k] = static_cast<Zan8u>(((k % kStep) / 3 + (k / kStep) * 9) % 200 + (p[i].data()[k] & 15));
        }
    }
    const Zan8u* at(int i) { return p[i].data() + 2 * kStep; }
};

ZanDeinterlaceBlendState* line_state() {
    alignas(16) static Zan8u mem[1056];
    static ZanDeinterlaceBlendState* st = [] {
        Zan32s t[2] = {4, 40};
        double c[2] = {0.0, 1.0};
        ZanDeinterlaceBlendState* s = nullptr;
        zaniDeinterlaceBlendInit_8u_C1({720, 576}, t, c, &s, mem);
        return s;
    }();
    return st;
}

void time_spatial(benchmark::State& s, const KernelPair<SpatialRowFn>& e, SpatialRowFn fn) {
    Rows r;
    for (auto _ : s) {
        fn(r.at(0) - kStep, r.at(0) + kStep, r.out.data(), kRow * e.param, 1);
        benchmark::ClobberMemory();
    }
    s.counters["Mpix/s"] = benchmark::Counter(kRow / 1e6, benchmark::Counter::kIsIterationInvariantRate);
}
void time_blend(benchmark::State& s, const KernelPair<BlendRowFn>& e, BlendRowFn fn) {
    Rows r;
    const ZanDeinterlaceBlendState* st = line_state();
    for (auto _ : s) {
        fn(r.at(0), kStep, r.at(1), kStep, r.at(2), kStep, r.out.data(), kRow * e.param, 1, 0, st);
        benchmark::ClobberMemory();
    }
    s.counters["Mpix/s"] = benchmark::Counter(kRow / 1e6, benchmark::Counter::kIsIterationInvariantRate);
}
void time_median(benchmark::State& s, const KernelPair<MedianRowFn>&, MedianRowFn fn) {
    Rows r;
    for (auto _ : s) {
        fn(r.at(1), kStep, r.out.data(), kRow, 8);
        benchmark::ClobberMemory();
    }
    s.counters["Mpix/s"] = benchmark::Counter(kRow / 1e6, benchmark::Counter::kIsIterationInvariantRate);
}
void time_motion(benchmark::State& s, const KernelPair<MotionRowFn>&, MotionRowFn fn) {
    Rows r;
    const Zan8u* rows[4] = {r.at(0), r.at(1), r.at(2), r.at(3)};
    for (auto _ : s) {
        fn(rows, kStep, r.out.data(), kRow, 1, 12, 1);
        benchmark::ClobberMemory();
    }
    s.counters["Mpix/s"] = benchmark::Counter(kRow / 1e6, benchmark::Counter::kIsIterationInvariantRate);
}
void time_triangle(benchmark::State& s, const KernelPair<TriangleRowFn>&, TriangleRowFn fn) {
    Rows r;
    for (auto _ : s) {
        fn(r.at(1), kStep, r.out.data(), kRow, 128);
        benchmark::ClobberMemory();
    }
    s.counters["Mpix/s"] = benchmark::Counter(kRow / 1e6, benchmark::Counter::kIsIterationInvariantRate);
}

// Whole pictures through the exports.
struct Pictures {
    Zan32s w, h, step;
    Buffer p[4], out;
    Pictures(Zan32s w_, Zan32s h_, Zan32s bytesPerSample)
        : w(w_), h(h_), step((w_ * bytesPerSample + 63) & ~63),
          p{Buffer(static_cast<size_t>(step) * h), Buffer(static_cast<size_t>(step) * h),
            Buffer(static_cast<size_t>(step) * h), Buffer(static_cast<size_t>(step) * h)},
          out(static_cast<size_t>(step) * h) {
        for (int i = 0; i < 4; ++i) {
            p[i].fill(static_cast<std::uint64_t>(i + 7));
            for (std::size_t k = 0; k < p[i].size(); ++k)
                p[i].data()[k] = static_cast<Zan8u>(((k % static_cast<size_t>(step)) / 2 + k / static_cast<size_t>(step) * 3 + 5 * i) % 220 + (p[i].data()[k] & 7));
        }
    }
};

template <class Call>
void add_picture(const std::string& what, Zan32s w, Zan32s h, Zan32s bytesPerSample, Call call) {
    bench::add("deinterlace/export/" + what + "_" + std::to_string(w) + "x" + std::to_string(h),
               [=](benchmark::State& s) {
                   Pictures pic(w, h, bytesPerSample);
                   for (auto _ : s) {
                       call(pic);
                       benchmark::ClobberMemory();
                   }
                   s.counters["Mpix/s"] =
                       benchmark::Counter(w * static_cast<double>(h) / 1e6, benchmark::Counter::kIsIterationInvariantRate);
               });
}

void add_exports() {
    for (auto [w, h] : {std::pair{720, 576}, std::pair{1920, 1080}}) {
        add_picture("blend_c1", w, h, 1, [](Pictures& p) {
            const Zan8u* pl[3] = {p.p[0].data(), p.p[1].data(), p.p[2].data()};
            zaniDeinterlaceBlend_8u_C1(pl, p.step, p.out.data(), p.step, {p.w, p.h}, 0, 0, 1, line_state());
        });
        add_picture("blend_c2", w, h, 2, [](Pictures& p) {
            zaniDeinterlaceBlend_8u_C2(p.p[0].data(), p.step, p.p[1].data(), p.step, p.p[2].data(), p.step,
                                       p.out.data(), p.step, {p.w, p.h}, 0, 0, 1, line_state());
        });
        add_picture("edge_detect", w, h, 1, [](Pictures& p) {
            zaniDeinterlaceEdgeDetect_8u_C1R(p.p[1].data(), 2 * p.step, p.out.data() + p.step, 2 * p.step,
                                             {p.w, p.h / 2 - 1}, 1, 0);
        });
        add_picture("median_threshold", w, h, 1, [](Pictures& p) {
            zaniDeinterlaceMedianThreshold_8u_C1R(p.p[1].data(), p.step, p.out.data(), p.step, {p.w, p.h}, 8, 1, 1);
        });
        add_picture("motion_adaptive", w, h, 1, [](Pictures& p) {
            const Zan8u* pl[4] = {p.p[0].data(), p.p[1].data(), p.p[2].data(), p.p[3].data()};
            zaniDeinterlaceMotionAdaptive_8u_C1(pl, p.step, p.out.data(), p.step, {p.w, p.h}, 12, 0, 0, 1, 1);
        });
        add_picture("filter_triangle", w, h, 1, [](Pictures& p) {
            zaniDeinterlaceFilterTriangle_8u_C1R(p.p[1].data(), p.step, p.out.data(), p.step, {p.w, p.h}, 128, 0);
        });
    }
}

}  // namespace

ZAN_BENCH_FAMILY(deinterlace) {
    using bench::add_pairs;
    const Kernels& ku = u8::deinterlace::kernels;
    const Kernels& kn = n8::deinterlace::kernels;
    add_pairs<SpatialRowFn>("deinterlace", ku.spatial, kn.spatial, time_spatial);
    add_pairs<BlendRowFn>("deinterlace", ku.blend, kn.blend, time_blend);
    add_pairs<MedianRowFn>("deinterlace", ku.median, kn.median, time_median);
    add_pairs<MotionRowFn>("deinterlace", ku.motion, kn.motion, time_motion);
    add_pairs<TriangleRowFn>("deinterlace", ku.triangle, kn.triangle, time_triangle);
    add_exports();
}
