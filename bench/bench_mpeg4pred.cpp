// MPEG-4 prediction tools: each quarter-sample copy kernel (the path's own
// form under the plain name, the other form, SSE2 or SSSE3, with its suffix)
// beside its rule at a few positions (acc 1 quarter in x, 2 half in x, 5 quarter in both, 10
// half in both, 15 three quarters in both), the OBMC mixing kernels, and the
// exported OBMC calls (all neighbours distinct, and all equal to the current
// vector), the warp kernel on a 16x16 macroblock and an 8x8 chroma block
// (a rotation and zoom of about 3 %), the brightness gain on a 64x16 region,
// and the exported warps of a macroblock with 0, 1, 2 and 3 warp points.
// Sources are random bytes in a 64-byte-step picture held in L1.
#include <string>

#include "bench_util.h"
#include "h26x_mpeg4/mpeg4pred.h"

namespace {

using namespace zan;
using namespace zan::mpeg4pred;
using bench::Buffer;

constexpr Zan32s kStep = 64;
constexpr Zan32s kAccs[] = {1, 2, 5, 10, 15};

void add_copies(const char* path, KernelList<CopyQPFn> list, bool rule) {
    for (const auto& e : list)
        for (Zan32s acc : kAccs) {
            // The second form shares its rule with the first.
            if (rule && std::string(e.name).find(':') != std::string::npos) continue;
            const CopyQPFn fn = rule ? e.rule : e.simd;
            bench::add(std::string("mpeg4pred/") + e.name + "/acc" + std::to_string(acc) + "/" + path,
                       [=](benchmark::State& s) {
                           Buffer src(kStep * 24), dst(kStep * 16 + 40);
                           src.fill(5);
                           for (auto _ : s) {
                               fn(src.data() + 2 * kStep + 3, kStep, dst.data() + 40, kStep, acc, 0);
                               benchmark::ClobberMemory();
                           }
                       });
        }
}

void add_sums(const char* path, KernelList<SumOBMCFn> list, bool rule) {
    for (const auto& e : list) {
        const SumOBMCFn fn = rule ? e.rule : e.simd;
        bench::add(std::string("mpeg4pred/") + e.name + "/" + path, [=](benchmark::State& s) {
            Buffer a(256), b(256), c(256), dst(kStep * 16 + 40);
            a.fill(1), b.fill(2), c.fill(3);
            for (auto _ : s) {
                fn(a.data(), b.data(), c.data(), dst.data() + 40, kStep);
                benchmark::ClobberMemory();
            }
        });
    }
}

template <class Fn>
void add_obmc(const std::string& name, Fn fn, bool same) {
    bench::add("mpeg4pred/export/" + name + (same ? ":same" : ":distinct"), [=](benchmark::State& s) {
        Buffer src(kStep * 48), dst(kStep * 16 + 40);
        src.fill(9);
        const Zan16s cur[2] = {3, -5}, l[2] = {1, 2}, r[2] = {-3, 4}, a[2] = {5, -1}, b[2] = {-2, -6};
        const Zan8u* block = src.data() + 16 * kStep + 16;
        for (auto _ : s) {
            fn(block, kStep, dst.data() + 40, kStep, cur, same ? cur : l, same ? cur : r, same ? cur : a,
               same ? cur : b, 0);
            benchmark::ClobberMemory();
        }
    });
}

// A rotation and zoom near identity in the affine form of a plane, 1/16
// accuracy (rho 0), 16 fractional bits.
WarpPlane bench_plane() {
    WarpPlane p{};
    p.shift = 16, p.rho = 0, p.roundTerm = 127;
    p.rect[0] = 0, p.rect[1] = 0, p.rect[2] = 64, p.rect[3] = 40;
    const Zan64s one = Zan64s{16} << 16;
    p.dx[0] = one + one / 40, p.dy[0] = one / 30, p.off[0] = 4 * one + 12345;
    p.dx[1] = -one / 30, p.dy[1] = one + one / 40, p.off[1] = 6 * one + 54321;
    return p;
}

void add_warps(const char* path, KernelList<WarpFn> list, bool rule) {
    for (const auto& e : list)
        for (Zan32s n : {16, 8}) {
            const WarpFn fn = rule ? e.rule : e.simd;
            bench::add(std::string("mpeg4pred/") + e.name + "/" + std::to_string(n) + "x" + std::to_string(n) + "/" +
                           path,
                       [=](benchmark::State& s) {
                           Buffer src(kStep * 40), dst(kStep * 16);
                           src.fill(7);
                           const WarpPlane p = bench_plane();
                           for (auto _ : s) {
                               fn(src.data(), kStep, dst.data(), kStep, 16, 8, n, n, p);
                               benchmark::ClobberMemory();
                           }
                       });
        }
}

void add_brightness(const char* path, KernelList<BrightnessFn> list, bool rule) {
    for (const auto& e : list) {
        const BrightnessFn fn = rule ? e.rule : e.simd;
        bench::add(std::string("mpeg4pred/") + e.name + "/64x16/" + path, [=](benchmark::State& s) {
            Buffer buf(kStep * 16);
            buf.fill(3);
            for (auto _ : s) {
                fn(buf.data(), kStep, 64, 16, 1331);
                benchmark::ClobberMemory();
            }
        });
    }
}

void add_warp_exports() {
    for (Zan32s n : {0, 1, 2, 3}) {
        bench::add("mpeg4pred/export/zaniWarpLuma_MPEG4_8u_C1R:points" + std::to_string(n), [=](benchmark::State& s) {
            Buffer src(kStep * 48), dst(kStep * 16), block(384);
            src.fill(11);
            const Zan32s du[3] = {3, 2, -1}, dv[3] = {-5, 1, 2};
            const ZaniRect sprite{0, 0, 64, 48}, vop{0, 0, 64, 48}, mb{16, 16, 16, 16};
            auto* ws = reinterpret_cast<ZanWarpSpec*>(block.data());
            zaniWarpInit_MPEG4(ws, du, dv, n, 0, 3, 1, 0, 2, &sprite, &vop);
            for (auto _ : s) {
                zaniWarpLuma_MPEG4_8u_C1R(src.data(), kStep, dst.data(), kStep, &mb, ws);
                benchmark::ClobberMemory();
            }
        });
    }
}

}  // namespace

ZAN_BENCH_FAMILY(mpeg4pred) {
    add_copies("rule", u8::mpeg4pred::kernels.copyQP, true);
    add_copies("u8", u8::mpeg4pred::kernels.copyQP, false);
    add_copies("n8", n8::mpeg4pred::kernels.copyQP, false);
    add_sums("rule", u8::mpeg4pred::kernels.sumOBMC, true);
    add_sums("u8", u8::mpeg4pred::kernels.sumOBMC, false);
    add_sums("n8", n8::mpeg4pred::kernels.sumOBMC, false);
    add_warps("rule", u8::mpeg4pred::kernels.warp, true);
    add_warps("u8", u8::mpeg4pred::kernels.warp, false);
    add_warps("n8", n8::mpeg4pred::kernels.warp, false);
    add_brightness("rule", u8::mpeg4pred::kernels.brightness, true);
    add_brightness("u8", u8::mpeg4pred::kernels.brightness, false);
    add_brightness("n8", n8::mpeg4pred::kernels.brightness, false);
    add_warp_exports();
    for (bool same : {false, true}) {
        add_obmc("zaniOBMC8x8HP_MPEG4_8u_C1R", zaniOBMC8x8HP_MPEG4_8u_C1R, same);
        add_obmc("zaniOBMC8x8QP_MPEG4_8u_C1R", zaniOBMC8x8QP_MPEG4_8u_C1R, same);
        add_obmc("zaniOBMC16x16HP_MPEG4_8u_C1R", zaniOBMC16x16HP_MPEG4_8u_C1R, same);
    }
}
