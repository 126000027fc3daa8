// Every deinterlacing row kernel against its scalar rule, and the blend and
// the motion-adaptive tool over sequences of frames: the pictures built from
// the rules' rows equal the exported calls' pictures frame after frame, and
// the blend record comes through every call unchanged.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "check/harness.h"
#include "picture/deinterlace.h"

namespace {

using namespace zan;
using namespace zan::check;

const deinterlace::Kernels& kernels() { return for_path(u8::deinterlace::kernels, n8::deinterlace::kernels); }
bool vector_ok(const ZanDeinterlaceBlendState* st) {
    return for_path(u8::deinterlace::blend_state_vector_ok, n8::deinterlace::blend_state_vector_ok)(st);
}

// A band of rows -1..rows around row 0 of `bytes` bytes, at a chosen step
// and alignment; row(0) is the row a kernel computes.
struct Band {
    Region r;
    Band(Zan32s bytes, Zan32s rows, Zan32s step, Zan32s align) : r(bytes, rows + 2, step, align) {}
    Zan8u* row(Zan32s y) { return r.origin() + static_cast<std::ptrdiff_t>(r.step()) * (y + 1); }
};

// Widths that cover the scalar-only rows, one group, and groups plus an
// overlapping last group.
Zan32s draw_width(Rng& rng, int d) {
    static const Zan32s fixed[] = {1, 2, 3, 4, 15, 16, 17, 18, 19, 20, 33, 34, 35, 36};
    if (d < static_cast<int>(sizeof fixed / sizeof fixed[0])) return fixed[d];
    return rng.range(1, 100);
}

// Random weight records from the Init function, with thresholds and
// constants that reach each case of the preparation.
void random_state(Rng& rng, std::vector<Zan8u>& mem, ZanDeinterlaceBlendState** st) {
    Zan32s t[2];
    double c[2];
    switch (rng.below(5)) {
        case 0: t[0] = t[1] = rng.range(1, 255); break;
        case 1: t[0] = rng.range(-20, 300); t[1] = rng.range(-20, 300); break;
        default: t[0] = rng.range(0, 60); t[1] = t[0] + rng.range(1, 200); break;
    }
    c[0] = rng.range(-2000, 2000) / 1000.0;
    c[1] = rng.range(-2000, 3000) / 1000.0;
    if (rng.below(8) == 0) c[1] = rng.range(-40000, 40000);
    ASSERT_EQ(zaniDeinterlaceBlendInit_8u_C1({8, 8}, t, c, st, mem.data()), zanStsOk);
}

TEST(CheckDeinterlace, SpatialRows) {
    Rng rng(101);
    for (const auto& e : kernels().spatial)
        for (int d = 0; d < draws(); ++d) {
            Zan32s w = draw_width(rng, d), bytes = w * e.param;
            Zan32s step = steps_for(bytes)[static_cast<size_t>(d) % 6];
            Band src(bytes, 3, step, d % 64);
            src.r.fill(rng);
            Region want(bytes, 1, bytes, (d * 7) % 64), got(bytes, 1, bytes, (d * 7) % 64);
            want.set(0x5A);
            got.set(0x5A);
            Zan32s down = d & 1;
            e.rule(src.row(-1), src.row(1), want.origin(), bytes, down);
            e.simd(src.row(-1), src.row(1), got.origin(), bytes, down);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " width " << w << " seed " << seed();
        }
}

TEST(CheckDeinterlace, BlendRows) {
    Rng rng(102);
    std::vector<Zan8u> mem(1056 + 64);
    int vectorStates = 0;
    for (const auto& e : kernels().blend)
        for (int d = 0; d < draws(); ++d) {
            ZanDeinterlaceBlendState* st = nullptr;
            random_state(rng, mem, &st);
            if (!vector_ok(st)) continue;  // such records run the rule
            ++vectorStates;
            Zan32s w = draw_width(rng, d), bytes = w * e.param;
            auto steps = steps_for(bytes);
            Band p0(bytes, 1, steps[static_cast<size_t>(d) % 6], d % 32), p1(bytes, 1, steps[static_cast<size_t>(d + 1) % 6], (d * 3) % 32),
                p2(bytes, 1, steps[static_cast<size_t>(d + 2) % 6], (d * 5) % 32);
            p0.r.fill(rng);
            p1.r.fill(rng);
            p2.r.fill(rng);
            // Half the draws: the frames differ only a little, so that motion
            // lands inside the weight's slope.
            if (d & 2)
                for (Zan32s y = -1; y <= 1; ++y)
                    for (Zan32s x = 0; x < bytes; ++x) {
                        p0.row(y)[x] = static_cast<Zan8u>(p1.row(y)[x] + rng.range(-6, 6));
                        p2.row(y)[x] = static_cast<Zan8u>(p1.row(y)[x] + rng.range(-6, 6));
                    }
            Region want(bytes, 1, bytes, d % 64), got(bytes, 1, bytes, d % 64);
            want.set(0x5A);
            got.set(0x5A);
            Zan32s oIsP0 = (d >> 2) & 1, top = (d >> 3) & 1;
            e.rule(p0.row(0), p0.r.step(), p1.row(0), p1.r.step(), p2.row(0), p2.r.step(), want.origin(), bytes, oIsP0, top, st);
            e.simd(p0.row(0), p0.r.step(), p1.row(0), p1.r.step(), p2.row(0), p2.r.step(), got.origin(), bytes, oIsP0, top, st);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " width " << w << " slope " << st->slope
                                           << " intercept " << st->intercept << " full " << st->fullMotion
                                           << " zero " << st->zeroMotion << " seed " << seed();
        }
    EXPECT_GT(vectorStates, draws());  // most records are ones the vector path serves
}

TEST(CheckDeinterlace, MedianAndTriangleRows) {
    Rng rng(103);
    for (int d = 0; d < draws(); ++d) {
        Zan32s w = draw_width(rng, d);
        Band src(w, 1, steps_for(w)[static_cast<size_t>(d) % 6], d % 64);
        src.r.fill(rng);
        Region want(w, 1, w, d % 64), got(w, 1, w, d % 64);
        Zan32s t = d < 20 ? d * 13 - 10 : rng.range(-300, 600);
        for (const auto& e : kernels().median) {
            want.set(1);
            got.set(1);
            e.rule(src.row(0), src.r.step(), want.origin(), w, t);
            e.simd(src.row(0), src.r.step(), got.origin(), w, t);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " threshold " << t << " seed " << seed();
        }
        Zan32s c = rng.range(0, 256);
        for (const auto& e : kernels().triangle) {
            want.set(2);
            got.set(2);
            e.rule(src.row(0), src.r.step(), want.origin(), w, c);
            e.simd(src.row(0), src.r.step(), got.origin(), w, c);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " weight " << c << " seed " << seed();
        }
    }
}

TEST(CheckDeinterlace, MotionRows) {
    Rng rng(104);
    for (const auto& e : kernels().motion) {
        const bool aligned = std::string(e.name).find("aligned") != std::string::npos;
        for (int d = 0; d < draws(); ++d) {
            Zan32s w = aligned ? 16 * rng.range(1, 6) : draw_width(rng, d);
            Zan32s step = aligned ? 16 * rng.range(w / 16, w / 16 + 2) * (d & 1 ? -1 : 1) : steps_for(w)[static_cast<size_t>(d) % 6];
            std::vector<Band> pl;
            for (int i = 0; i < 4; ++i) pl.emplace_back(w, 1, step, aligned ? 0 : (d * (i + 1)) % 64);
            for (auto& p : pl) p.r.fill(rng);
            if (d & 2)  // near-still frames: the static tests pass or fail by a little
                for (int i = 0; i < 4; ++i)
                    if (i != 1)
                        for (Zan32s y = -1; y <= 1; ++y)
                            for (Zan32s x = 0; x < w; ++x)
                                pl[i].row(y)[x] = static_cast<Zan8u>(pl[1].row(y)[x] + rng.range(-5, 5));
            const Zan8u* rows[4] = {pl[0].row(0), pl[1].row(0), pl[2].row(0), pl[3].row(0)};
            Region want(w, 1, w, d % 64), got(w, 1, w, d % 64);
            want.set(3);
            got.set(3);
            Zan32s k = 1 + (d & 1), t = d < 30 ? d : rng.range(0, 40), ap = (d >> 2) & 1;
            e.rule(rows, step, want.origin(), w, k, t, ap);
            e.simd(rows, step, got.origin(), w, k, t, ap);
            ASSERT_TRUE(want.same_as(got)) << e.name << " draw " << d << " width " << w << " seed " << seed();
        }
    }
}

// A moving, noisy test sequence: frame f is a ramp pattern shifted by f.
std::vector<Zan8u> frame(Rng& rng, Zan32s bytes, Zan32s h, Zan32s stride, int f) {
    std::vector<Zan8u> p(static_cast<size_t>(stride) * h);
    for (Zan32s y = 0; y < h; ++y)
        for (Zan32s x = 0; x < bytes; ++x)
            p[static_cast<size_t>(y) * stride + x] =
                static_cast<Zan8u>(((x + 2 * f) * 7 + y * 3) % 256 / 2 + 60 + rng.range(-3, 3));
    return p;
}

// The blend of one frame as the rules define it: row copies and the rule rows.
void blend_reference(const KernelPair<deinterlace::BlendRowFn>& e, const std::vector<Zan8u>* pl[3],
                     Zan32s stride, Zan8u* dst, Zan32s w, Zan32s h, Zan32s topFirst, Zan32s topField,
                     const ZanDeinterlaceBlendState* st) {
    const Zan32s dx = e.param, bytes = w * dx, tf = dx == 1 ? topField != 0 : topField & 1;
    const Zan8u *p0 = pl[0]->data(), *p1 = pl[1]->data(), *p2 = pl[2]->data();
    for (Zan32s y = 0; y < h; ++y)
        if ((y & 1) != (tf ? 0 : 1) || (tf && y == 0)) std::memcpy(dst + y * stride, p1 + y * stride, static_cast<size_t>(bytes));
    Zan32s first = tf ? 2 : 1, bound = h + ((h & 1) ^ tf) - 2;
    for (Zan32s y = first; y <= bound; y += 2)
        e.rule(p0 + y * stride, stride, p1 + y * stride, stride, p2 + y * stride, stride, dst + y * stride, bytes,
               topFirst == topField, tf, st);
    if ((h & 1) == tf) std::memcpy(dst + (h - 1) * stride, p1 + (h - 1) * stride, static_cast<size_t>(bytes));
}

TEST(CheckDeinterlace, BlendSequences) {
    Rng rng(105);
    const int runs = draws() / 10 + 2;
    for (const auto& e : kernels().blend)
        for (int run = 0; run < runs; ++run) {
            const Zan32s w = rng.range(3, 70), h = rng.range(3, 24), bytes = w * e.param, stride = bytes + rng.range(0, 20);
            std::vector<Zan8u> mem(1056);
            ZanDeinterlaceBlendState* st = nullptr;
            Zan32s t[2] = {rng.range(0, 20), rng.range(0, 80)};
            double c[2] = {rng.range(-500, 500) / 1000.0, rng.range(500, 1500) / 1000.0};
            if (run % 4 == 1) t[1] = t[0];            // the step weight
            if (run % 4 == 2) t[0] = t[1] = 0;        // every sample spatial
            if (run % 4 == 3) t[0] = t[1] = 256;      // every sample the median
            ASSERT_EQ(zaniDeinterlaceBlendInit_8u_C1({w, h}, t, c, &st, mem.data()), zanStsOk);
            const std::vector<Zan8u> before = mem;
            std::vector<Zan8u> f0 = frame(rng, bytes, h, stride, 0), f1 = frame(rng, bytes, h, stride, 1), f2;
            const Zan32s topFirst = run & 1;
            for (int f = 2; f < 7; ++f) {
                f2 = frame(rng, bytes, h, stride, f);
                const std::vector<Zan8u>* pl[3] = {&f0, &f1, &f2};
                const Zan32s topField = (f + run) & 1;
                std::vector<Zan8u> want(static_cast<size_t>(stride) * h, 0), got(want);
                blend_reference(e, pl, stride, want.data(), w, h, topFirst, topField, st);
                ZanStatus s;
                if (e.param == 1) {
                    const Zan8u* planes[3] = {f0.data(), f1.data(), f2.data()};
                    s = zaniDeinterlaceBlend_8u_C1(planes, stride, got.data(), stride, {w, h}, topFirst, topField, 1, st);
                } else {
                    s = zaniDeinterlaceBlend_8u_C2(f0.data(), stride, f1.data(), stride, f2.data(), stride, got.data(),
                                                   stride, {w, h}, topFirst, topField, 1, st);
                }
                ASSERT_EQ(s, zanStsOk);
                ASSERT_EQ(want, got) << e.name << " run " << run << " frame " << f << " " << w << "x" << h
                                     << " seed " << seed();
                ASSERT_EQ(before, mem) << "the record changed";
                f0 = std::move(f1);
                f1 = std::move(f2);
            }
        }
}

TEST(CheckDeinterlace, MotionAdaptiveSequences) {
    Rng rng(106);
    const auto& e = kernels().motion[0];
    for (int run = 0; run < draws() / 10 + 2; ++run) {
        const Zan32s w = rng.range(1, 60), h = rng.range(1, 20), stride = w + rng.range(0, 9);
        std::vector<std::vector<Zan8u>> fr;
        for (int f = 0; f < 4; ++f) fr.push_back(frame(rng, w, h, stride, f));
        const Zan32s topFirst = run & 1, T = rng.range(0, 30), ap = (run >> 1) & 1;
        for (int f = 4; f < 9; ++f) {
            const Zan32s topField = f & 1, k = topField == topFirst ? 1 : 2;
            std::vector<Zan8u> want(static_cast<size_t>(stride) * h, 7), got(want);
            for (Zan32s y = topField; y < h; y += 2)
                if ((y - topField) / 2 < h / 2) std::memcpy(&want[y * stride], &fr[k][y * stride], static_cast<size_t>(w));
            if (topField == 1) {
                std::memcpy(&want[0], &fr[k][0], static_cast<size_t>(w));
                if (h & 1) std::memcpy(&want[(h - 1) * stride], &fr[k][(h - 1) * stride], static_cast<size_t>(w));
            } else if (!(h & 1)) {
                std::memcpy(&want[(h - 1) * stride], &fr[k][(h - 1) * stride], static_cast<size_t>(w));
            }
            Zan32s first = topField == 1 ? 2 : 1;
            if (first < h - 1)
                for (Zan32s r = first; r < first + 2 * ((h - first) / 2); r += 2) {
                    const Zan8u* rows[4] = {&fr[0][r * stride], &fr[1][r * stride], &fr[2][r * stride], &fr[3][r * stride]};
                    e.rule(rows, stride, &want[r * stride], w, k, T, ap);
                }
            const Zan8u* planes[4] = {fr[0].data(), fr[1].data(), fr[2].data(), fr[3].data()};
            ASSERT_EQ(zaniDeinterlaceMotionAdaptive_8u_C1(planes, stride, got.data(), stride, {w, h}, T, topFirst,
                                                          topField, 1, ap),
                      zanStsOk);
            ASSERT_EQ(want, got) << "run " << run << " frame " << f << " " << w << "x" << h << " seed " << seed();
            fr.erase(fr.begin());
            fr.push_back(frame(rng, w, h, stride, f));
        }
    }
}

}  // namespace
