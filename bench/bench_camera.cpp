// Camera tools: the exports (plain code, one build per path) at 720x576 and
// 1920x1080 source pictures, reported as source megapixels per second
// (counter MP/s): resize by 2, 4 and 8 with mean and nearest interpolation
// and rotations 0 and 1, and the 4:2:0 conversions with rotations 0 and 1.
#include <string>

#include "bench_util.h"

namespace {

using namespace zan;
using bench::Buffer;

struct Size {
    Zan32s w, h;
};
constexpr Size kSizes[] = {{720, 576}, {1920, 1080}};

std::string size_name(Size s) { return std::to_string(s.w) + "x" + std::to_string(s.h); }

void rate(benchmark::State& st, Size s) {
    st.counters["MP/s"] = benchmark::Counter(static_cast<double>(s.w) * s.h * static_cast<double>(st.iterations()) / 1e6,
                                             benchmark::Counter::kIsRate);
}

}  // namespace

ZAN_BENCH_FAMILY(camera) {
    for (Size s : kSizes) {
        for (int z : {2, 4, 8})
            for (int interp : {1, 2})
                for (int rot : {0, 1}) {
                    const std::string name = "camera/export/resize" + std::to_string(z) + (interp == 1 ? "_nearest" : "_mean") +
                                             "_rot" + std::to_string(rot) + "_" + size_name(s);
                    bench::add(name, [=](benchmark::State& st) {
                        Buffer src(static_cast<size_t>(2 * s.w * s.h)), dst(static_cast<size_t>(2 * s.w * s.h / 4 + 64));
                        src.fill(5);
                        const Zan32s ow = s.w / z, oh = s.h / z;
                        const Zan32s dstStep = 2 * (rot == 1 ? oh : ow);
                        for (auto _ : st) {
                            zaniResizeCCRotate_8u_C2R(src.data(), 2 * s.w, {s.w, s.h}, dst.as<Zan16u>(), dstStep, z, interp, 0, rot);
                            benchmark::DoNotOptimize(dst.data());
                        }
                        rate(st, s);
                    });
                }
        for (int planar : {0, 1})
            for (int rot : {0, 1}) {
                const std::string name = std::string("camera/export/to420") + (planar ? "_P3R" : "_C2P3R") + "_rot" +
                                         std::to_string(rot) + "_" + size_name(s);
                bench::add(name, [=](benchmark::State& st) {
                    Buffer src(static_cast<size_t>(2 * s.w * s.h)), y(static_cast<size_t>(s.w * s.h)),
                        u(static_cast<size_t>(s.w * s.h / 4)), v(static_cast<size_t>(s.w * s.h / 4));
                    src.fill(6);
                    Zan8u* dst[3] = {y.data(), u.data(), v.data()};
                    const Zan32s yw = rot == 1 ? s.h : s.w;
                    Zan32s dstStep[3] = {yw, yw / 2, yw / 2};
                    const Zan8u* planes[3] = {src.data(), src.data() + s.w * s.h / 2, src.data() + s.w * s.h};
                    Zan32s srcStep[3] = {s.w / 2, s.w, s.w / 2};
                    for (auto _ : st) {
                        if (planar)
                            zaniCbYCr422ToYCbCr420_Rotate_8u_P3R(planes, srcStep, {s.w, s.h}, dst, dstStep, rot);
                        else
                            zaniCbYCr422ToYCbCr420_Rotate_8u_C2P3R(src.data(), 2 * s.w, {s.w, s.h}, dst, dstStep, rot);
                        benchmark::DoNotOptimize(y.data());
                    }
                    rate(st, s);
                });
            }
    }
}
