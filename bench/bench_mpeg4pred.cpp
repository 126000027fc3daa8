// MPEG-4 prediction tools: each quarter-sample copy kernel beside its rule at
// a few positions (acc 1 quarter in x, 2 half in x, 5 quarter in both, 10
// half in both, 15 three quarters in both), the OBMC mixing kernels, and the
// exported OBMC calls (all neighbours distinct, and all equal to the current
// vector).  Sources are random bytes in a 64-byte-step picture held in L1.
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

}  // namespace

ZAN_BENCH_FAMILY(mpeg4pred) {
    add_copies("rule", u8::mpeg4pred::kernels.copyQP, true);
    add_copies("u8", u8::mpeg4pred::kernels.copyQP, false);
    add_copies("n8", n8::mpeg4pred::kernels.copyQP, false);
    add_sums("rule", u8::mpeg4pred::kernels.sumOBMC, true);
    add_sums("u8", u8::mpeg4pred::kernels.sumOBMC, false);
    add_sums("n8", n8::mpeg4pred::kernels.sumOBMC, false);
    for (bool same : {false, true}) {
        add_obmc("zaniOBMC8x8HP_MPEG4_8u_C1R", zaniOBMC8x8HP_MPEG4_8u_C1R, same);
        add_obmc("zaniOBMC8x8QP_MPEG4_8u_C1R", zaniOBMC8x8QP_MPEG4_8u_C1R, same);
        add_obmc("zaniOBMC16x16HP_MPEG4_8u_C1R", zaniOBMC16x16HP_MPEG4_8u_C1R, same);
    }
}
