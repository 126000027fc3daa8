// Every weighted-prediction vector kernel against its scalar rule: random
// and extreme samples, weights over the whole signed 16-bit range (and the
// H.264 range -128..127 with its ends), offsets and rounding terms over the
// whole 32-bit range, shift counts 0..7 and beyond 31, distinct U and V
// parameters, every alignment, tight, odd, wide and negative steps, in place
// and out of place, with guard bands around every output.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>

#include "check/harness.h"
#include "h264/h264weight.h"

namespace {

using namespace zan;
using namespace zan::check;
using zan::h264weight::Params;

const h264weight::Kernels& kernels() { return for_path(u8::h264weight::kernels, n8::h264weight::kernels); }

// A weight: mostly the H.264 range with its ends, sometimes anything a
// signed 16-bit lane holds.
Zan32s weight(Rng& rng) {
    switch (rng.below(6)) {
        case 0: return rng.below(2) ? -128 : 127;
        case 1: return rng.below(2) ? -32768 : 32767;
        case 2: return rng.range(-32768, 32767);
        case 3: return rng.range(-2, 2);
        default: return rng.range(-128, 127);
    }
}
Zan32s offset(Rng& rng) {
    switch (rng.below(5)) {
        case 0: return rng.below(2) ? -128 : 127;
        case 1: return static_cast<Zan32s>(rng.next());
        case 2: return rng.range(-70000, 70000);
        default: return rng.range(-128, 127);
    }
}
Zan32s log2wd(Rng& rng) {
    switch (rng.below(8)) {
        case 0: return rng.range(8, 40);
        case 1: return rng.range(-3, -1);
        default: return rng.range(0, 7);
    }
}

// Parameters as one of the forms builds them, or raw, with U and V apart
// half of the time.  max: the clamp's top.
Params params(Rng& rng, Zan32s max) {
    Params p{};
    switch (rng.below(5)) {
        case 0: p = h264weight::uni_params(log2wd(rng), weight(rng), offset(rng), max); break;
        case 1: p = h264weight::bi_params(log2wd(rng), weight(rng), offset(rng), weight(rng), offset(rng), max); break;
        case 2: p = h264weight::implicit_params(weight(rng), weight(rng), max); break;
        case 3:
            p = h264weight::average_params(weight(rng), weight(rng), log2wd(rng), offset(rng));
            p.max = max;
            break;
        default:
            p = {{weight(rng), weight(rng)}, {weight(rng), weight(rng)}, {offset(rng), offset(rng)},
                 static_cast<Zan32s>(rng.next()), static_cast<Zan32u>(rng.range(0, 33)), max};
            break;
    }
    if (rng.below(2)) {
        p.w1[1] = weight(rng);
        p.w2[1] = weight(rng);
        p.offset[1] = offset(rng);
    }
    return p;
}
Zan32s depth_max(Rng& rng) {
    if (rng.below(4) == 0) return rng.range(0, 65535);
    return h264weight::depth_max(rng.range(1, 16));
}

std::string describe(const Params& p) {
    return "w1 " + std::to_string(p.w1[0]) + "/" + std::to_string(p.w1[1]) + " w2 " + std::to_string(p.w2[0]) + "/" +
           std::to_string(p.w2[1]) + " offset " + std::to_string(p.offset[0]) + "/" + std::to_string(p.offset[1]) +
           " round " + std::to_string(p.round) + " shift " + std::to_string(p.shift) + " max " + std::to_string(p.max);
}

// One step of the list for a draw, and an alignment (even for 16-bit samples).
Zan32s pick_step(int d, int salt, Zan32s widthBytes, Zan32s elem) {
    auto s = steps_for(widthBytes, elem);
    return s[static_cast<size_t>(d / (salt + 1) + salt) % s.size()];
}
Zan32s pick_align(Rng& rng, Zan32s elem) { return static_cast<Zan32s>(rng.below(64)) & ~(elem - 1); }

#define WHERE(e, d, p) (e).name << " draw " << (d) << " " << describe(p) << " seed " << seed()

// Two identical destinations, one for the rule and one for the kernel: a
// random guard byte everywhere, then (for the in-place forms) the block's
// rows copied from a source region.
struct Outputs {
    Region want, got;
    Zan32s widthBytes, height, step;
    Outputs(Zan32s widthBytes_, Zan32s height_, Zan32s step_, Zan32s align, Rng& rng)
        : want(widthBytes_, height_, step_, align), got(widthBytes_, height_, step_, align),
          widthBytes(widthBytes_), height(height_), step(step_) {
        Zan8u guard = static_cast<Zan8u>(rng.below(256));
        want.set(guard);
        got.set(guard);
    }
    void load(Region& src) {
        for (Zan32s y = 0; y < height; ++y) {
            std::memcpy(want.origin() + static_cast<std::ptrdiff_t>(step) * y,
                        src.origin() + static_cast<std::ptrdiff_t>(src.step()) * y, static_cast<size_t>(widthBytes));
            std::memcpy(got.origin() + static_cast<std::ptrdiff_t>(step) * y,
                        src.origin() + static_cast<std::ptrdiff_t>(src.step()) * y, static_cast<size_t>(widthBytes));
        }
    }
};

TEST(CheckH264Weight, UniDirectional8u) {
    Rng rng(1);
    for (const auto& e : kernels().uni8)
        for (int d = 0; d < draws(); ++d) {
            Params p = params(rng, 255);
            if (!h264weight::vector_weights(p)) continue;
            Zan32s ss = pick_step(d, 0, e.width, 1), ds = pick_step(d, 1, e.width, 1);
            bool inPlace = d % 3 == 0;
            if (inPlace) {
                // The source is the destination.
                Outputs o(e.width, e.height, ss, pick_align(rng, 1), rng);
                Region src(e.width, e.height, ss, 0);
                src.fill(rng);
                o.load(src);
                e.rule(o.want.origin(), ss, o.want.origin(), ss, p);
                e.simd(o.got.origin(), ss, o.got.origin(), ss, p);
                ASSERT_TRUE(o.want.same_as(o.got)) << WHERE(e, d, p) << " in place, step " << ss;
            } else {
                Region src(e.width, e.height, ss, pick_align(rng, 1));
                src.fill(rng);
                Outputs o(e.width, e.height, ds, pick_align(rng, 1), rng);
                e.rule(src.origin(), ss, o.want.origin(), ds, p);
                e.simd(src.origin(), ss, o.got.origin(), ds, p);
                ASSERT_TRUE(o.want.same_as(o.got)) << WHERE(e, d, p) << " steps " << ss << "/" << ds;
            }
        }
}

TEST(CheckH264Weight, BiDirectional8u) {
    Rng rng(2);
    for (const auto& e : kernels().bi8)
        for (int d = 0; d < draws(); ++d) {
            Params p = params(rng, 255);
            if (!h264weight::vector_weights(p)) continue;
            Zan32s as = pick_step(d, 0, e.width, 1), bs = pick_step(d, 1, e.width, 1), ds = pick_step(d, 2, e.width, 1);
            Region a(e.width, e.height, as, pick_align(rng, 1));
            a.fill(rng);
            if (d % 4 == 0) {
                // Written over the second source, as the weighted average does.
                Outputs o(e.width, e.height, bs, pick_align(rng, 1), rng);
                Region b(e.width, e.height, bs, 0);
                b.fill(rng);
                o.load(b);
                e.rule(a.origin(), as, o.want.origin(), bs, o.want.origin(), bs, p);
                e.simd(a.origin(), as, o.got.origin(), bs, o.got.origin(), bs, p);
                ASSERT_TRUE(o.want.same_as(o.got)) << WHERE(e, d, p) << " over the second source, steps " << as
                                                   << "/" << bs;
            } else {
                Region b(e.width, e.height, bs, pick_align(rng, 1));
                b.fill(rng);
                Outputs o(e.width, e.height, ds, pick_align(rng, 1), rng);
                e.rule(a.origin(), as, b.origin(), bs, o.want.origin(), ds, p);
                e.simd(a.origin(), as, b.origin(), bs, o.got.origin(), ds, p);
                ASSERT_TRUE(o.want.same_as(o.got)) << WHERE(e, d, p) << " steps " << as << "/" << bs << "/" << ds;
            }
        }
}

// 16-bit samples over the whole 16-bit range half of the time (the kernels
// must read samples of 32768 and more as unsigned), else within the depth.
void fill16(Region& r, Rng& rng, int d, Zan32s max) { r.fill16(rng, 0, d % 2 ? 65535 : (max > 0 ? max : 1)); }

TEST(CheckH264Weight, UniDirectional16u) {
    Rng rng(3);
    for (const auto& e : kernels().uni16)
        for (int d = 0; d < draws(); ++d) {
            Params p = params(rng, depth_max(rng));
            if (!h264weight::vector_params16(p)) continue;
            Zan32s bytes = 2 * e.width;
            Zan32s ss = pick_step(d, 0, bytes, 2), ds = pick_step(d, 1, bytes, 2);
            if (d % 3 == 0) {
                Outputs o(bytes, e.height, ss, pick_align(rng, 2), rng);
                Region src(bytes, e.height, ss, 0);
                fill16(src, rng, d, p.max);
                o.load(src);
                e.rule(o.want.as<Zan16u>(), ss / 2, o.want.as<Zan16u>(), ss / 2, p);
                e.simd(o.got.as<Zan16u>(), ss / 2, o.got.as<Zan16u>(), ss / 2, p);
                ASSERT_TRUE(o.want.same_as(o.got)) << WHERE(e, d, p) << " in place, step " << ss;
            } else {
                Region src(bytes, e.height, ss, pick_align(rng, 2));
                fill16(src, rng, d, p.max);
                Outputs o(bytes, e.height, ds, pick_align(rng, 2), rng);
                e.rule(src.as<Zan16u>(), ss / 2, o.want.as<Zan16u>(), ds / 2, p);
                e.simd(src.as<Zan16u>(), ss / 2, o.got.as<Zan16u>(), ds / 2, p);
                ASSERT_TRUE(o.want.same_as(o.got)) << WHERE(e, d, p) << " steps " << ss << "/" << ds;
            }
        }
}

TEST(CheckH264Weight, BiDirectional16u) {
    Rng rng(4);
    for (const auto& e : kernels().bi16)
        for (int d = 0; d < draws(); ++d) {
            Params p = params(rng, depth_max(rng));
            if (!h264weight::vector_params16(p)) continue;
            Zan32s bytes = 2 * e.width;
            Zan32s as = pick_step(d, 0, bytes, 2), bs = pick_step(d, 1, bytes, 2), ds = pick_step(d, 2, bytes, 2);
            Region a(bytes, e.height, as, pick_align(rng, 2)), b(bytes, e.height, bs, pick_align(rng, 2));
            fill16(a, rng, d, p.max);
            fill16(b, rng, d / 2, p.max);
            Outputs o(bytes, e.height, ds, pick_align(rng, 2), rng);
            e.rule(a.as<Zan16u>(), as / 2, b.as<Zan16u>(), bs / 2, o.want.as<Zan16u>(), ds / 2, p);
            e.simd(a.as<Zan16u>(), as / 2, b.as<Zan16u>(), bs / 2, o.got.as<Zan16u>(), ds / 2, p);
            ASSERT_TRUE(o.want.same_as(o.got)) << WHERE(e, d, p) << " steps " << as << "/" << bs << "/" << ds;
        }
}

TEST(CheckH264Weight, Average16u) {
    Rng rng(5);
    for (const auto& e : kernels().avg16)
        for (int d = 0; d < draws(); ++d) {
            Zan32s max = d % 5 == 0 ? rng.range(65536, 1 << 20) : depth_max(rng);
            Zan32s height = rng.range(1, 16);
            Zan32s bytes = 2 * e.width;
            Zan32s as = pick_step(d, 0, bytes, 2), bs = pick_step(d, 1, bytes, 2), ds = pick_step(d, 2, bytes, 2);
            Region a(bytes, height, as, pick_align(rng, 2)), b(bytes, height, bs, pick_align(rng, 2));
            fill16(a, rng, d, max);
            fill16(b, rng, d / 2, max);
            Outputs o(bytes, height, ds, pick_align(rng, 2), rng);
            e.rule(a.as<Zan16u>(), as / 2, b.as<Zan16u>(), bs / 2, o.want.as<Zan16u>(), ds / 2, height, max);
            e.simd(a.as<Zan16u>(), as / 2, b.as<Zan16u>(), bs / 2, o.got.as<Zan16u>(), ds / 2, height, max);
            ASSERT_TRUE(o.want.same_as(o.got))
                << e.name << " draw " << d << " height " << height << " max " << max << " steps " << as << "/" << bs
                << "/" << ds << " seed " << seed();
        }
}

// Parameters the narrow 8-bit kernels take: drawn as the forms build them
// with byte-sized weights (and at the edge of the 16-bit sum) until they
// qualify.
Params narrow_params(Rng& rng) {
    for (;;) {
        auto w = [&] { return rng.below(4) == 0 ? (rng.below(2) ? -128 : 127) : rng.range(-128, 127); };
        Zan32s l = rng.below(6) == 0 ? rng.range(8, 40) : rng.range(0, 7);
        Params p{};
        switch (rng.below(5)) {
            case 0: p = h264weight::uni_params(l, w(), offset(rng), 255); break;
            case 1: {
                Zan32s w1 = w();
                Zan32s room = 128 - (w1 < 0 ? -w1 : w1);  // |w1| + |w2| <= 128
                p = h264weight::bi_params(l, w1, offset(rng), rng.range(-room, room > 127 ? 127 : room), offset(rng), 255);
                break;
            }
            case 2: {
                Zan32s w2 = rng.range(0, 64);
                p = h264weight::implicit_params(64 - w2, w2, 255);
                break;
            }
            case 3: p = h264weight::average_params(w(), w(), l, offset(rng)); break;
            default:
                p = {{w(), w()}, {w(), w()}, {offset(rng), offset(rng)}, rng.range(-32768, 32767),
                     static_cast<Zan32u>(rng.range(0, 33)), 255};
                break;
        }
        if (rng.below(2)) {
            p.w1[1] = w();
            p.w2[1] = p.w2[0] == 0 ? 0 : w();
            p.offset[1] = offset(rng);
        }
        if (h264weight::narrow8(p)) return p;
    }
}

TEST(CheckH264Weight, NarrowUniDirectional8u) {
    Rng rng(7);
    for (const auto& e : kernels().uni8Narrow)
        for (int d = 0; d < draws(); ++d) {
            Params p = narrow_params(rng);
            p.w2[0] = p.w2[1] = 0;
            if (!h264weight::narrow8(p)) continue;
            Zan32s ss = pick_step(d, 0, e.width, 1), ds = pick_step(d, 1, e.width, 1);
            Region src(e.width, e.height, ss, pick_align(rng, 1));
            src.fill(rng);
            Outputs o(e.width, e.height, d % 3 == 0 ? ss : ds, pick_align(rng, 1), rng);
            if (d % 3 == 0) {
                o.load(src);
                e.rule(o.want.origin(), ss, o.want.origin(), ss, p);
                e.simd(o.got.origin(), ss, o.got.origin(), ss, p);
            } else {
                e.rule(src.origin(), ss, o.want.origin(), ds, p);
                e.simd(src.origin(), ss, o.got.origin(), ds, p);
            }
            ASSERT_TRUE(o.want.same_as(o.got)) << WHERE(e, d, p) << " steps " << ss << "/" << ds;
        }
}

TEST(CheckH264Weight, NarrowBiDirectional8u) {
    Rng rng(8);
    for (const auto& e : kernels().bi8Narrow)
        for (int d = 0; d < draws(); ++d) {
            Params p = narrow_params(rng);
            Zan32s as = pick_step(d, 0, e.width, 1), bs = pick_step(d, 1, e.width, 1), ds = pick_step(d, 2, e.width, 1);
            Region a(e.width, e.height, as, pick_align(rng, 1)), b(e.width, e.height, bs, pick_align(rng, 1));
            a.fill(rng);
            b.fill(rng);
            Outputs o(e.width, e.height, ds, pick_align(rng, 1), rng);
            e.rule(a.origin(), as, b.origin(), bs, o.want.origin(), ds, p);
            e.simd(a.origin(), as, b.origin(), bs, o.got.origin(), ds, p);
            ASSERT_TRUE(o.want.same_as(o.got)) << WHERE(e, d, p) << " steps " << as << "/" << bs << "/" << ds;
        }
}

// The narrow test of the parameters is exact at its edges: a 16-bit sum of
// 32767 qualifies, one more does not, and the kernel agrees with the rule on
// the samples that reach it.
TEST(CheckH264Weight, NarrowEdge) {
    Params p = h264weight::bi_params(6, 127, 0, 1, 0, 255);  // 255 * 128 + 64 = 32704
    EXPECT_TRUE(h264weight::narrow8(p));
    p.round = 32767 - 255 * 128;
    EXPECT_TRUE(h264weight::narrow8(p));
    p.round += 1;
    EXPECT_FALSE(h264weight::narrow8(p));
    p = h264weight::bi_params(0, -128, 0, -1, 0, 255);  // sum down to -32895: does not fit
    EXPECT_FALSE(h264weight::narrow8(p));
    p = h264weight::bi_params(0, -128, 0, 0, 0, 255);
    p.round = -128;  // -32640 - 128 = -32768 fits
    EXPECT_TRUE(h264weight::narrow8(p));
    EXPECT_FALSE(h264weight::narrow8(h264weight::uni_params(0, 128, 0, 255)));
    EXPECT_FALSE(h264weight::narrow8(h264weight::uni_params(0, 1, 40000, 255)));
    Rng rng(9);
    const auto& k = kernels();
    const auto& bi = k.bi8Narrow[k.bi8Narrow.size() - 1];
    for (Params q : {h264weight::bi_params(6, 127, 127, 1, 127, 255), h264weight::bi_params(6, -128, -128, 0, 127, 255)}) {
        q.round = q.w1[0] > 0 ? 32767 - 255 * 128 : -128;
        ASSERT_TRUE(h264weight::narrow8(q));
        Region a(32, 16, 32, 0), b(32, 16, 32, 0);
        a.set(255);
        b.set(255);
        Outputs o(32, 16, 32, 0, rng);
        bi.rule(a.origin(), 32, b.origin(), 32, o.want.origin(), 32, q);
        bi.simd(a.origin(), 32, b.origin(), 32, o.got.origin(), 32, q);
        ASSERT_TRUE(o.want.same_as(o.got)) << describe(q);
    }
}

// Memory whose readable part ends against an inaccessible page: a block
// placed so that its last row ends there faults on any read past its rows.
class PageEnd {
public:
    explicit PageEnd(std::size_t bytes) {
        page_ = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        rw_ = (bytes + page_ - 1) / page_ * page_;
        void* m = mmap(nullptr, rw_ + page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        map_ = m == MAP_FAILED ? nullptr : static_cast<Zan8u*>(m);
        if (map_ && mprotect(map_ + rw_, page_, PROT_NONE) != 0) {
            munmap(map_, rw_ + page_);
            map_ = nullptr;
        }
    }
    ~PageEnd() {
        if (map_) munmap(map_, rw_ + page_);
    }
    PageEnd(const PageEnd&) = delete;
    PageEnd& operator=(const PageEnd&) = delete;
    bool ok() const { return map_ != nullptr; }
    // Origin of a block of rows of widthBytes, step apart, ending at the page.
    Zan8u* block(Zan32s widthBytes, Zan32s height, Zan32s step) {
        std::memset(map_, 0x5A, rw_);
        return map_ + rw_ - static_cast<std::size_t>(step) * static_cast<std::size_t>(height - 1) -
               static_cast<std::size_t>(widthBytes);
    }

private:
    std::size_t page_ = 0, rw_ = 0;
    Zan8u* map_ = nullptr;
};

TEST(CheckH264Weight, KernelsReadOnlyTheirRows) {
    const auto& k = kernels();
    Rng rng(10);
    PageEnd a(4096), b(4096), d(4096);
    ASSERT_TRUE(a.ok() && b.ok() && d.ok());
    for (int tight = 0; tight < 2; ++tight) {
        for (const auto* list : {&k.uni8, &k.uni8Narrow})
            for (const auto& e : *list) {
                Zan32s step = e.width + (tight ? 0 : 3);
                Params p = narrow_params(rng);
                p.w2[0] = p.w2[1] = 0;
                e.simd(a.block(e.width, e.height, step), step, d.block(e.width, e.height, step), step, p);
            }
        for (const auto* list : {&k.bi8, &k.bi8Narrow})
            for (const auto& e : *list) {
                Zan32s step = e.width + (tight ? 0 : 5);
                Params p = narrow_params(rng);
                e.simd(a.block(e.width, e.height, step), step, b.block(e.width, e.height, step), step,
                       d.block(e.width, e.height, step), step, p);
            }
        for (const auto& e : k.uni16) {
            Zan32s step = e.width + (tight ? 0 : 1);
            Params p = h264weight::uni_params(3, 9, 1, 1023);
            e.simd(reinterpret_cast<Zan16u*>(a.block(2 * e.width, e.height, 2 * step)), step,
                   reinterpret_cast<Zan16u*>(d.block(2 * e.width, e.height, 2 * step)), step, p);
        }
        for (const auto& e : k.bi16) {
            Zan32s step = e.width + (tight ? 0 : 1);
            Params p = h264weight::bi_params(3, 9, 1, -4, 0, 1023);
            e.simd(reinterpret_cast<Zan16u*>(a.block(2 * e.width, e.height, 2 * step)), step,
                   reinterpret_cast<Zan16u*>(b.block(2 * e.width, e.height, 2 * step)), step,
                   reinterpret_cast<Zan16u*>(d.block(2 * e.width, e.height, 2 * step)), step, p);
        }
        for (const auto& e : k.avg16)
            for (Zan32s h : {1, 7, 16}) {
                Zan32s step = e.width + (tight ? 0 : 1);
                e.simd(reinterpret_cast<Zan16u*>(a.block(2 * e.width, h, 2 * step)), step,
                       reinterpret_cast<Zan16u*>(b.block(2 * e.width, h, 2 * step)), step,
                       reinterpret_cast<Zan16u*>(d.block(2 * e.width, h, 2 * step)), step, h, 1023);
            }
    }
    SUCCEED() << "no kernel touched the page after its last row";
}

// Every combination of extreme weights, offsets and shift counts on blocks
// of extreme samples, for the largest kernels of each kind.
TEST(CheckH264Weight, ExtremeCorners) {
    Rng rng(6);
    const Zan32s ws[] = {-32768, -128, -1, 0, 1, 127, 32767};
    const Zan32s os[] = {-2147483647 - 1, -128, 0, 127, 2147483647};
    const Zan32s ls[] = {0, 1, 7, 15, 31, 32, -1};
    const auto& k = kernels();
    const auto& uni = k.uni8[k.uni8.size() - 1];
    const auto& bi = k.bi8[k.bi8.size() - 1];
    const auto& bi16 = k.bi16[k.bi16.size() - 1];
    Region a(32, 16, 48, 1), b(32, 16, 48, 2);
    for (Zan32s w1 : ws)
        for (Zan32s w2 : ws)
            for (Zan32s o : os)
                for (Zan32s l : ls) {
                    a.fill(rng);
                    b.fill(rng);
                    Params p = h264weight::bi_params(l, w1, o, w2, o, 255);
                    Params q = h264weight::uni_params(l, w1, o, 255);
                    q.w1[1] = w2;
                    Outputs x(32, 16, 40, 3, rng), y(32, 16, 40, 3, rng), z(32, 16, 40, 4, rng);
                    bi.rule(a.origin(), 48, b.origin(), 48, x.want.origin(), 40, p);
                    bi.simd(a.origin(), 48, b.origin(), 48, x.got.origin(), 40, p);
                    ASSERT_TRUE(x.want.same_as(x.got)) << WHERE(bi, 0, p);
                    uni.rule(a.origin(), 48, y.want.origin(), 40, q);
                    uni.simd(a.origin(), 48, y.got.origin(), 40, q);
                    ASSERT_TRUE(y.want.same_as(y.got)) << WHERE(uni, 0, q);
                    Params r = h264weight::bi_params(l, w1, o, w2, 0, 65535 >> (l & 7));
                    a.fill16(rng, 0, 65535);
                    b.fill16(rng, 0, 65535);
                    bi16.rule(a.as<Zan16u>(), 24, b.as<Zan16u>(), 24, z.want.as<Zan16u>(), 20, r);
                    bi16.simd(a.as<Zan16u>(), 24, b.as<Zan16u>(), 24, z.got.as<Zan16u>(), 20, r);
                    ASSERT_TRUE(z.want.same_as(z.got)) << WHERE(bi16, 0, r);
                }
}

}  // namespace
