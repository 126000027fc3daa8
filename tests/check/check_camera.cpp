// Camera tools through the exports against plain models: the resize and
// colour conversion against a double-precision model of the conversion
// (plain means over each pixel's source area, the coefficients' real
// values, truncated to the field's units), within 1 per colour component; every rotation against the index
// arithmetic of the rotation table; the 4:2:0 conversion against the
// definition of its planes, on both source layouts.  Random pictures, sizes
// and steps (negative ones too).
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "check/harness.h"
#include "zanvc.h"

namespace {

using namespace zan::check;

// Destination (row, column) of pixel (i, j) of an ow by oh picture.
void rotated(int rotation, int i, int j, int ow, int oh, int* r, int* c) {
    switch (rotation) {
        case 0: *r = i, *c = j; break;
        case 1: *r = ow - 1 - j, *c = i; break;
        case 2: *r = j, *c = oh - 1 - i; break;
        default: *r = oh - 1 - i, *c = ow - 1 - j; break;
    }
}

struct Rgb {
    double b, g, r;
};

// The conversion in real numbers, components in their field's units,
// truncated to whole units as the field's shift does and clamped.
Rgb model_rgb(double y, double cb, double cr, int colorFormat) {
    const double l = 1192.0 * y - 19072.0, u = cb - 128.0, v = cr - 128.0;
    auto clamp = [](double x, double hi) { return std::min(std::max(std::floor(x), 0.0), hi); };
    const double g = l - 401.0 * u - 833.0 * v;
    return {clamp((l + 2065.0 * u) / 8192.0, 31), colorFormat ? clamp(g / 8192.0, 31) : clamp(g / 4096.0, 63),
            clamp((l + 1634.0 * v) / 8192.0, 31)};
}

TEST(CheckCamera, ResizeColourRotateAgainstModel) {
    Rng rng(0xCA3E);
    int n = 0;
    for (int z : {2, 4, 8})
        for (int interpolation : {1, 2})
            for (int colorFormat : {0, 1})
                for (int d = 0; d < std::max(draws() / 20, 6); ++d, ++n) {
                    const int w = rng.range(z, 5 * z + 3), h = rng.range(z, 4 * z + 3);
                    const int ow = w / z, oh = h / z;
                    const auto steps = steps_for(2 * w);
                    const int srcStep = steps[static_cast<size_t>(n) % steps.size()];
                    Region src(2 * w, h, srcStep, n % 16);
                    src.fill(rng);
                    auto at = [&](int y, int b) { return src.origin()[static_cast<std::ptrdiff_t>(srcStep) * y + b]; };
                    std::vector<Zan16u> first;
                    for (int rotation = 0; rotation < 4; ++rotation) {
                        const bool swap = rotation == 1 || rotation == 2;
                        const int dw = swap ? oh : ow, dh = swap ? ow : oh;
                        const int dstStep = 2 * dw + 2 * (n % 3);
                        std::vector<Zan16u> dst(static_cast<size_t>(dstStep / 2 * dh + 8), 0xBEEF);
                        const ZanStatus want = (w | h) & 1 ? zanStsOddSize : zanStsOk;
                        ASSERT_EQ(zaniResizeCCRotate_8u_C2R(src.origin(), srcStep, {w, h}, dst.data(), dstStep, z,
                                                            interpolation, colorFormat, rotation),
                                  want);
                        for (size_t k = static_cast<size_t>(dstStep / 2 * dh); k < dst.size(); ++k)
                            ASSERT_EQ(dst[k], 0xBEEF) << "written past the picture";
                        for (int i = 0; i < oh; ++i)
                            for (int j = 0; j < ow; ++j) {
                                int r, c;
                                rotated(rotation, i, j, ow, oh, &r, &c);
                                const Zan16u got = dst[static_cast<size_t>(r * (dstStep / 2) + c)];
                                if (rotation == 0) first.push_back(got);
                                // every rotation moves the same pixel value
                                ASSERT_EQ(got, first[static_cast<size_t>(i * ow + j)])
                                    << "rotation " << rotation << " pixel " << i << "," << j;
                                // the model: Y over the pixel's own area, chroma over
                                // the pair's area (the single last pixel: its own)
                                const int pair0 = j & ~1;
                                const bool single = (ow & 1) && j == ow - 1;
                                double y = 0, cb = 0, cr = 0;
                                if (interpolation == 1) {
                                    y = at(i * z, 2 * z * j + 1);
                                    cb = at(i * z, 2 * z * pair0);
                                    cr = at(i * z, 2 * z * pair0 + 2);
                                } else {
                                    const int cw = single ? z : 2 * z;  // pixels of the chroma area
                                    for (int q = 0; q < z; ++q) {
                                        for (int p = 0; p < z; ++p) y += at(i * z + q, 2 * (z * j + p) + 1);
                                        for (int p = 0; p < cw / 2; ++p) {
                                            cb += at(i * z + q, 2 * z * pair0 + 4 * p);
                                            cr += at(i * z + q, 2 * z * pair0 + 4 * p + 2);
                                        }
                                    }
                                    y /= z * z;
                                    cb /= z * cw / 2;
                                    cr /= z * cw / 2;
                                }
                                const Rgb m = model_rgb(y, cb, cr, colorFormat);
                                const int b = got & 31;
                                const int g = colorFormat ? (got >> 5) & 31 : (got >> 5) & 63;
                                const int rr = colorFormat ? (got >> 10) & 31 : got >> 11;
                                if (colorFormat) {
                                    ASSERT_EQ(got >> 15, 0);
                                }
                                ASSERT_LE(std::fabs(b - m.b), 1.0) << "z " << z << " interp " << interpolation;
                                ASSERT_LE(std::fabs(g - m.g), 1.0) << "z " << z << " interp " << interpolation;
                                ASSERT_LE(std::fabs(rr - m.r), 1.0) << "z " << z << " interp " << interpolation;
                            }
                    }
                }
}

// Y, Cb, Cr planes of a 4:2:0 picture w2 x h2 from the 4:2:2 samples of
// pixel (y, x): luma moves, chroma is the rounded-up vertical average.
TEST(CheckCamera, To420RotateAgainstDefinition) {
    Rng rng(0xCA3F);
    for (int d = 0; d < std::max(draws() / 4, 20); ++d)
        for (int planar = 0; planar < 2; ++planar) {
            const int w = rng.range(2, 21), h = rng.range(2, 17), w2 = w & ~1, h2 = h & ~1;
            const auto steps = steps_for(2 * w);
            const int s0 = steps[static_cast<size_t>(d) % steps.size()];
            // equal steps on the planar source, so that its crossed steps
            // agree with the plain layout (the crossing has its own test)
            const int ps = steps_for(w)[static_cast<size_t>(d) % 6];
            Region c2(2 * w, h, s0, d % 16), py(w, h, ps, d % 16), pcb((w + 1) / 2, h, ps, 3), pcr((w + 1) / 2, h, ps, 5);
            c2.fill(rng);
            py.fill(rng);
            pcb.fill(rng);
            pcr.fill(rng);
            auto Y = [&](int y, int x) {
                return planar ? py.origin()[static_cast<std::ptrdiff_t>(ps) * y + x]
                              : c2.origin()[static_cast<std::ptrdiff_t>(s0) * y + 2 * x + 1];
            };
            auto Cb = [&](int y, int k) {
                return planar ? pcb.origin()[static_cast<std::ptrdiff_t>(ps) * y + k]
                              : c2.origin()[static_cast<std::ptrdiff_t>(s0) * y + 4 * k];
            };
            auto Cr = [&](int y, int k) {
                return planar ? pcr.origin()[static_cast<std::ptrdiff_t>(ps) * y + k]
                              : c2.origin()[static_cast<std::ptrdiff_t>(s0) * y + 4 * k + 2];
            };
            for (int rotation = 0; rotation < 4; ++rotation) {
                const bool swap = rotation == 1 || rotation == 2;
                const int yw = swap ? h2 : w2, yh = swap ? w2 : h2;
                Zan32s dstStep[3] = {yw + d % 5, yw / 2 + d % 3, yw / 2 + 1};
                std::vector<Zan8u> py0(static_cast<size_t>(dstStep[0] * yh + 16), 0xA5),
                    pu0(static_cast<size_t>(dstStep[1] * (yh / 2) + 16), 0xA5),
                    pv0(static_cast<size_t>(dstStep[2] * (yh / 2) + 16), 0xA5);
                Zan8u* dst[3] = {py0.data(), pu0.data(), pv0.data()};
                const ZanStatus want = (w | h) & 1 ? zanStsOddSize : zanStsOk;
                if (planar) {
                    const Zan8u* src[3] = {pcb.origin(), py.origin(), pcr.origin()};
                    Zan32s srcStep[3] = {ps, ps, ps};
                    ASSERT_EQ(zaniCbYCr422ToYCbCr420_Rotate_8u_P3R(src, srcStep, {w, h}, dst, dstStep, rotation), want);
                } else {
                    ASSERT_EQ(zaniCbYCr422ToYCbCr420_Rotate_8u_C2P3R(c2.origin(), s0, {w, h}, dst, dstStep, rotation), want);
                }
                for (int y = 0; y < h2; ++y)
                    for (int x = 0; x < w2; ++x) {
                        int r, c;
                        rotated(rotation, y, x, w2, h2, &r, &c);
                        ASSERT_EQ(py0[static_cast<size_t>(r * dstStep[0] + c)], Y(y, x))
                            << "rotation " << rotation << " planar " << planar << " at " << y << "," << x;
                    }
                for (int y = 0; y < h2 / 2; ++y)
                    for (int k = 0; k < w2 / 2; ++k) {
                        int r, c;
                        rotated(rotation, y, k, w2 / 2, h2 / 2, &r, &c);
                        ASSERT_EQ(pu0[static_cast<size_t>(r * dstStep[1] + c)], (Cb(2 * y, k) + Cb(2 * y + 1, k) + 1) / 2);
                        ASSERT_EQ(pv0[static_cast<size_t>(r * dstStep[2] + c)], (Cr(2 * y, k) + Cr(2 * y + 1, k) + 1) / 2);
                    }
                // nothing past the planes
                for (size_t i = static_cast<size_t>(dstStep[0] * yh); i < py0.size(); ++i) ASSERT_EQ(py0[i], 0xA5);
                for (size_t i = static_cast<size_t>(dstStep[1] * (yh / 2)); i < pu0.size(); ++i) ASSERT_EQ(pu0[i], 0xA5);
            }
        }
}

}  // namespace
