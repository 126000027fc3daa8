// CAST denoising: the whole-frame rule and the vector kernels of both paths,
// and the two exports, at 720x576 and 1920x1080, reported as megapixels per
// second (counter MP/s) beside the time per frame.  The input pair is a
// noisy picture and the same picture with a moving square and fresh noise,
// so that still and moving blocks mix; the history is kept from call to
// call.
#include <string>
#include <vector>

#include "bench_util.h"
#include "picture/cast.h"

namespace {

using namespace zan;
using bench::Buffer;

struct Size {
    Zan32s w, h;
};
constexpr Size kSizes[] = {{720, 576}, {1920, 1080}};

struct Frames {
    Zan32s w, h, rowBytes;
    Buffer cur, prev, edge, dst;
    std::vector<Zan8u> hist;
    Frames(Size s, Zan32s bytesPerPixel)
        : w(s.w), h(s.h), rowBytes(s.w * bytesPerPixel), cur(static_cast<size_t>(rowBytes * h)),
          prev(static_cast<size_t>(rowBytes * h)), edge(static_cast<size_t>(rowBytes * h)),
          dst(static_cast<size_t>(rowBytes * h)), hist(static_cast<size_t>(rowBytes * h / 4 + 64), 192) {
        noise.fill(7);
        for (Zan32s y = 0; y < h; ++y)
            for (Zan32s x = 0; x < rowBytes; ++x) {
                const size_t i = static_cast<size_t>(y * rowBytes + x);
                const Zan32s base = 60 + (x / 37 + y / 29) % 5 * 30;
                const Zan32s n1 = noise.data()[i % noise.size()] % 17 - 8, n2 = noise.data()[(i * 7 + 3) % noise.size()] % 17 - 8;
                const bool square = x > rowBytes / 3 && x < rowBytes / 2 && y > h / 3 && y < h / 2;
                prev.data()[i] = static_cast<Zan8u>(base + n1);
                cur.data()[i] = static_cast<Zan8u>((square ? base + 40 : base) + n2);
                edge.data()[i] = static_cast<Zan8u>((x % 37 == 0 || y % 29 == 0) ? 40 : 0);
            }
    }
    Buffer noise{4096};
};

template <class Fn>
void run(benchmark::State& st, Fn fn, Size s, Zan32s L) {
    Frames f(s, L);
    ZanDenoiseCastParams p;
    zaniFilterDenoiseCASTInit(&p);
    for (auto _ : st) {
        fn(f.cur.data(), f.prev.data(), f.rowBytes, f.edge.data(), f.rowBytes, {s.w, s.h}, f.dst.data(), f.rowBytes,
           f.hist.data(), &p);
        benchmark::DoNotOptimize(f.dst.data());
    }
    st.counters["MP/s"] = benchmark::Counter(static_cast<double>(s.w) * s.h * static_cast<double>(st.iterations()) / 1e6,
                                             benchmark::Counter::kIsRate);
}

std::string size_name(Size s) { return std::to_string(s.w) + "x" + std::to_string(s.h); }

}  // namespace

ZAN_BENCH_FAMILY(cast) {
    const cast::Kernels& ku = u8::cast::kernels;
    const cast::Kernels& kn = n8::cast::kernels;
    for (Size s : kSizes)
        for (size_t i = 0; i < ku.frame.size(); ++i) {
            const auto& e = ku.frame[i];
            const std::string base = std::string("cast/") + e.name + "_" + size_name(s);
            const Zan32s L = e.param;
            bench::add(base + "/rule", [=](benchmark::State& st) { run(st, e.rule, s, L); });
            bench::add(base + "/u8", [=](benchmark::State& st) { run(st, e.simd, s, L); });
            bench::add(base + "/n8", [=, &kn](benchmark::State& st) { run(st, kn.frame[i].simd, s, L); });
        }
    for (Size s : kSizes) {
        bench::add("cast/export/C1R_" + size_name(s),
                   [=](benchmark::State& st) { run(st, zaniFilterDenoiseCAST_8u_C1R, s, 1); });
        bench::add("cast/export/YUV422_C2R_" + size_name(s),
                   [=](benchmark::State& st) { run(st, zaniFilterDenoiseCASTYUV422_8u_C2R, s, 2); });
    }
}
