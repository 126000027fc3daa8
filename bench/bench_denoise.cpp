// Denoising: every row kernel (rule, u8, n8) on one 720-sample row, and the
// exported filters on whole 720x576 and 1920x1080 pictures, reported with a
// Mpix/s counter.
#include <string>

#include "bench_util.h"
#include "picture/denoise.h"

namespace {

using namespace zan;
using namespace zan::denoise;
using bench::Buffer;

constexpr Zan32s kRow = 720;
constexpr Zan32s kStep = 768;

struct Rows {
    Buffer p[3] = {Buffer(kStep * 5), Buffer(kStep * 5), Buffer(kStep * 5)};
    Buffer mask{kStep * 5};
    Buffer out{kStep};
    Rows() {
        for (int i = 0; i < 3; ++i) {
            p[i].fill(static_cast<std::uint64_t>(i + 3));
            for (std::size_t k = 0; k < p[i].size(); ++k)
                p[i].data()[k] = static_cast<Zan8u>(((k % kStep) / 4) % 180 + 30 + (p[i].data()[k] & 15));
        }
        mask.fill(9);
        for (std::size_t k = 0; k < mask.size(); ++k) mask.data()[k] = mask.data()[k] < 40 ? 255 : 0;
    }
    const Zan8u* at(int i) { return p[i].data() + 2 * kStep + 1; }
};

const Zan16u* recip() {
    static ZanDenoiseAdaptiveState* st = [] {
        ZanDenoiseAdaptiveState* s = nullptr;
        zaniFilterDenoiseAdaptiveInitAlloc_8u_C1(&s, {1408, 8}, {1, 1});
        return s;
    }();
    return st->pRecip;
}

void rate(benchmark::State& s, double pixels) {
    s.counters["Mpix/s"] = benchmark::Counter(pixels / 1e6, benchmark::Counter::kIsIterationInvariantRate);
}

void time_adaptive(benchmark::State& s, const KernelPair<AdaptiveRowFn>&, AdaptiveRowFn fn) {
    Rows r;
    const Zan8u* rows[3] = {r.at(0), r.at(1), r.at(2)};
    const Zan16u* R = recip();
    for (auto _ : s) {
        fn(rows, kStep, r.out.data(), kRow, 12, R);
        benchmark::ClobberMemory();
    }
    rate(s, kRow);
}
void time_mask(benchmark::State& s, const KernelPair<MaskFn>&, MaskFn fn) {
    Rows r;
    for (auto _ : s) {
        fn(r.at(1), kStep, r.out.data(), 1, kRow, 6);
        benchmark::ClobberMemory();
    }
    rate(s, kRow);
}
void time_average(benchmark::State& s, const KernelPair<AverageRowFn>&, AverageRowFn fn) {
    Rows r;
    for (auto _ : s) {
        fn(r.at(1), kStep, r.mask.data() + 2 * kStep + 1, kStep, r.out.data(), kRow);
        benchmark::ClobberMemory();
    }
    rate(s, kRow);
}

struct Pictures {
    Zan32s w, h;
    Buffer p[3], out, buf;
    Pictures(Zan32s w_, Zan32s h_)
        : w(w_), h(h_),
          p{Buffer(static_cast<size_t>(w_) * h_), Buffer(static_cast<size_t>(w_) * h_), Buffer(static_cast<size_t>(w_) * h_)},
          out(static_cast<size_t>(w_) * h_), buf(2 * static_cast<size_t>(w_ + 3) * (h_ + 3)) {
        for (int i = 0; i < 3; ++i) {
            p[i].fill(static_cast<std::uint64_t>(i + 11));
            for (std::size_t k = 0; k < p[i].size(); ++k)
                p[i].data()[k] = static_cast<Zan8u>(((k % static_cast<size_t>(w)) / 3 + k / static_cast<size_t>(w)) % 200 + 20 + (p[i].data()[k] & 15));
        }
    }
};

template <class Call>
void add_picture(const std::string& what, Zan32s w, Zan32s h, Call call) {
    bench::add("denoise/export/" + what + "_" + std::to_string(w) + "x" + std::to_string(h),
               [=](benchmark::State& s) {
                   Pictures pic(w, h);
                   for (auto _ : s) {
                       call(pic);
                       benchmark::ClobberMemory();
                   }
                   rate(s, w * static_cast<double>(h));
               });
}

void add_exports() {
    for (auto [w, h] : {std::pair{720, 576}, std::pair{1920, 1080}}) {
        // The 3x3 window runs in vector form up to a region 1408 wide; wider
        // regions take the general scalar form.
        add_picture("adaptive3x3", w, h, [](Pictures& p) {
            ZanDenoiseAdaptiveState* st = nullptr;
            zaniFilterDenoiseAdaptiveInitAlloc_8u_C1(&st, {p.w, p.h}, {1, 1});
            const Zan8u* pl[3] = {p.p[0].data(), p.p[1].data(), p.p[2].data()};
            zaniFilterDenoiseAdaptive_8u_C1R(pl, p.w, p.out.data(), p.w, {p.w, p.h}, {1, 1}, {0, 0}, {p.w, p.h}, 12,
                                             3, st);
            zaniFilterDenoiseAdaptiveFree_8u_C1(st);
        });
        add_picture("smooth", w, h, [](Pictures& p) {
            zaniFilterDenoiseSmooth_8u_C1R(p.p[1].data(), p.w, p.out.data(), p.w, {p.w, p.h}, 12, {0, 0}, {p.w, p.h},
                                           p.buf.data());
        });
    }
}

}  // namespace

ZAN_BENCH_FAMILY(denoise) {
    using bench::add_pairs;
    const Kernels& ku = u8::denoise::kernels;
    const Kernels& kn = n8::denoise::kernels;
    add_pairs<AdaptiveRowFn>("denoise", ku.adaptive, kn.adaptive, time_adaptive);
    add_pairs<MaskFn>("denoise", ku.mask, kn.mask, time_mask);
    add_pairs<AverageRowFn>("denoise", ku.average, kn.average, time_average);
    add_exports();
}
