// Camera pipeline tools: shrink by 2, 4 or 8 with a fixed tree of rounded
// averages, convert to RGB565 or RGB555 with 13-bit fixed-point
// coefficients, and rotate, in one pass over the source; and convert 4:2:2
// to planar 4:2:0 (vertical chroma average) while rotating.
#include "picture/camera.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "common/path.h"
#include "frame/bodies.h"

namespace zan::ZAN_PATH::camera {
namespace {

inline Zan32s avg(Zan32s a, Zan32s b) { return (a + b + 1) >> 1; }

// Destination place of the pixel at row i, column j of an ow by oh picture.
template <int R>
inline ptrdiff_t place(Zan32s i, Zan32s j, Zan32s ow, Zan32s oh, ptrdiff_t pixStep) {
    if constexpr (R == 0) return i * pixStep + j;
    if constexpr (R == 1) return (ow - 1 - j) * pixStep + i;
    if constexpr (R == 2) return j * pixStep + (oh - 1 - i);
    return (oh - 1 - i) * pixStep + (ow - 1 - j);
}

struct Pair {
    Zan32s y0, y1, cb, cr;
};

// Byte b of row r of an area.
struct Area {
    const Zan8u* p;
    Zan32s step;
    Zan32s operator()(Zan32s r, Zan32s b) const { return p[static_cast<ptrdiff_t>(step) * r + b]; }
};

// The eight-row average of byte b, as a tree.
inline Zan32s a8(const Area& a, Zan32s b) {
    return avg(avg(avg(a(0, b), a(1, b)), avg(a(2, b), a(3, b))), avg(avg(a(4, b), a(5, b)), avg(a(6, b), a(7, b))));
}

// Y of a pixel, z = 8: the tree over A at b, b + 8, b + 4, b + 12, b + 2, ...
inline Zan32s y8(const Area& a, Zan32s b) {
    return avg(avg(avg(a8(a, b), a8(a, b + 8)), avg(a8(a, b + 4), a8(a, b + 12))),
               avg(avg(a8(a, b + 2), a8(a, b + 10)), avg(a8(a, b + 6), a8(a, b + 14))));
}

// Pixel pair of output row, from the area of z rows by 2z pixels.
template <int Z, int I>
inline Pair pair_of(const Area& a) {
    if constexpr (I == 1) {
        return {a(0, 1), a(0, 1 + 2 * Z), a(0, 0), a(0, 2)};
    } else if constexpr (Z == 2) {
        return {avg(avg(a(0, 1), a(0, 3)), avg(a(1, 1), a(1, 3))), avg(avg(a(0, 5), a(0, 7)), avg(a(1, 5), a(1, 7))),
                avg(avg(a(0, 0), a(1, 0)), avg(a(0, 4), a(1, 4))), avg(avg(a(0, 2), a(1, 2)), avg(a(0, 6), a(1, 6)))};
    } else if constexpr (Z == 4) {
        Zan32s r[4][4];
        for (Zan32s k = 0; k < 4; ++k) {
            r[0][k] = avg(avg(a(k, 1), a(k, 5)), avg(a(k, 3), a(k, 7)));
            r[1][k] = avg(avg(a(k, 9), a(k, 13)), avg(a(k, 11), a(k, 15)));
            r[2][k] = avg(avg(a(k, 0), a(k, 4)), avg(a(k, 8), a(k, 12)));
            r[3][k] = avg(avg(a(k, 2), a(k, 6)), avg(a(k, 10), a(k, 14)));
        }
        auto join = [](const Zan32s* v) { return avg(avg(v[0], v[1]), avg(v[2], v[3])); };
        return {join(r[0]), join(r[1]), join(r[2]), join(r[3])};
    } else {
        auto chroma = [&](Zan32s b) {
            return avg(avg(avg(a8(a, b), a8(a, b + 8)), avg(a8(a, b + 4), a8(a, b + 12))),
                       avg(avg(a8(a, b + 16), a8(a, b + 24)), avg(a8(a, b + 20), a8(a, b + 28))));
        };
        return {y8(a, 1), y8(a, 17), chroma(0), chroma(2)};
    }
}

// A single last pixel from its area of z rows by z pixels (y1 unused).
template <int Z, int I>
inline Pair single_of(const Area& a) {
    if constexpr (I == 1) {
        return {a(0, 1), 0, a(0, 0), a(0, 2)};
    } else if constexpr (Z == 2) {
        return {avg(avg(a(0, 1), a(0, 3)), avg(a(1, 1), a(1, 3))), 0, avg(a(0, 0), a(1, 0)), avg(a(0, 2), a(1, 2))};
    } else if constexpr (Z == 4) {
        Zan32s y = 0, cb = 0, cr = 0;
        for (Zan32s k = 0; k < 4; ++k) {
            y += (a(k, 1) + a(k, 3) + a(k, 5) + a(k, 7) + 2) >> 2;
            cb += avg(a(k, 0), a(k, 4));
            cr += avg(a(k, 2), a(k, 6));
        }
        return {(y + 2) >> 2, 0, (cb + 2) >> 2, (cr + 2) >> 2};
    } else {
        return {y8(a, 1), 0, avg(avg(a8(a, 0), a8(a, 8)), avg(a8(a, 4), a8(a, 12))),
                avg(avg(a8(a, 2), a8(a, 10)), avg(a8(a, 6), a8(a, 14)))};
    }
}

// Chroma terms of a pixel or pair: computed once per pair.
struct Chroma {
    Zan32s b, r, g;
};
inline Chroma chroma_terms(Zan32s cb, Zan32s cr) {
    const Zan32s u = cb - 128, v = cr - 128;
    return {2065 * u, 1634 * v, -401 * u - 833 * v};
}

template <int F>
inline Zan16u rgb(Zan32s y, const Chroma& c) {
    const Zan32s l = y * 1192 - 19072;
    const Zan32s b = std::clamp((l + c.b) >> 13, 0, 31);
    const Zan32s r = std::clamp((l + c.r) >> 13, 0, 31);
    if constexpr (F == 0) {
        const Zan32s g = std::clamp((l + c.g) >> 12, 0, 63);
        return static_cast<Zan16u>(b | g << 5 | r << 11);
    } else {
        const Zan32s g = std::clamp((l + c.g) >> 13, 0, 31);
        return static_cast<Zan16u>(b | g << 5 | r << 10);
    }
}

inline void put16(Zan16u* base, ptrdiff_t at, Zan16u v) { std::memcpy(base + at, &v, sizeof v); }

using ResizeFn = void (*)(const Zan8u* pSrc, Zan32s srcStep, Zan32s ow, Zan32s oh, Zan16u* pDst, ptrdiff_t pixStep);

template <int Z, int I, int F, int R>
void resize_csc_rotate(const Zan8u* pSrc, Zan32s srcStep, Zan32s ow, Zan32s oh, Zan16u* pDst, ptrdiff_t pixStep) {
    for (Zan32s i = 0; i < oh; ++i) {
        const Zan8u* g = pSrc + static_cast<ptrdiff_t>(srcStep) * Z * i;
        Zan32s j = 0;
        for (; j + 1 < ow; j += 2) {
            const Pair p = pair_of<Z, I>(Area{g + 2 * Z * j, srcStep});
            const Chroma c = chroma_terms(p.cb, p.cr);
            put16(pDst, place<R>(i, j, ow, oh, pixStep), rgb<F>(p.y0, c));
            put16(pDst, place<R>(i, j + 1, ow, oh, pixStep), rgb<F>(p.y1, c));
        }
        if (j < ow) {
            const Pair p = single_of<Z, I>(Area{g + 2 * Z * j, srcStep});
            put16(pDst, place<R>(i, j, ow, oh, pixStep), rgb<F>(p.y0, chroma_terms(p.cb, p.cr)));
        }
    }
}

#define ZAN_ROT(Z, I, F) resize_csc_rotate<Z, I, F, 0>, resize_csc_rotate<Z, I, F, 1>, \
                         resize_csc_rotate<Z, I, F, 2>, resize_csc_rotate<Z, I, F, 3>
#define ZAN_FACTOR(Z) {ZAN_ROT(Z, 1, 0), ZAN_ROT(Z, 1, 1), ZAN_ROT(Z, 2, 0), ZAN_ROT(Z, 2, 1)}
// [factor 2, 4, 8][interpolation - 1][colour format != 0][rotation]
constexpr ResizeFn kResize[3][16] = {ZAN_FACTOR(2), ZAN_FACTOR(4), ZAN_FACTOR(8)};
#undef ZAN_FACTOR
#undef ZAN_ROT

// 4:2:2 to 4:2:0.  The rows of one pair of source rows: Y, Cb and Cr of row
// y and of row y + 1, with the sample of pixel x (Y) or pair k (chroma).
struct RowPair {
    const Zan8u *y0, *y1, *cb0, *cb1, *cr0, *cr1;
    Zan32s yStride, cStride;  // bytes per Y sample and per chroma pair
};

using To420Fn = void (*)(const Zan8u* const src[3], const Zan32s srcStep[3], Zan32s w2, Zan32s h2,
                         Zan8u* const dst[3], const Zan32s dstStep[3]);

template <int R, bool Planar>
void to420_rotate(const Zan8u* const src[3], const Zan32s srcStep[3], Zan32s w2, Zan32s h2, Zan8u* const dst[3],
                  const Zan32s dstStep[3]) {
    const ptrdiff_t ys = dstStep[0], us = dstStep[1], vs = dstStep[2];
    for (Zan32s y = 0; y < h2; y += 2) {
        RowPair r;
        if constexpr (Planar) {
            r.y0 = src[1] + static_cast<ptrdiff_t>(y) * srcStep[1];
            r.y1 = r.y0 + srcStep[0];
            r.cb0 = src[0] + static_cast<ptrdiff_t>(y) * srcStep[0];
            r.cb1 = r.cb0 + srcStep[1];
            r.cr0 = src[2] + static_cast<ptrdiff_t>(y) * srcStep[2];
            r.cr1 = r.cr0 + srcStep[2];
            r.yStride = 1;
            r.cStride = 1;
        } else {
            const Zan8u* a = src[0] + static_cast<ptrdiff_t>(y) * srcStep[0];
            const Zan8u* b = a + srcStep[0];
            r = {a + 1, b + 1, a, b, a + 2, b + 2, 2, 4};
        }
        for (Zan32s x = 0; x < w2; x += 2) {
            const Zan32s k = x >> 1;
            dst[0][place<R>(y, x, w2, h2, ys)] = r.y0[x * r.yStride];
            dst[0][place<R>(y, x + 1, w2, h2, ys)] = r.y0[(x + 1) * r.yStride];
            dst[0][place<R>(y + 1, x, w2, h2, ys)] = r.y1[x * r.yStride];
            dst[0][place<R>(y + 1, x + 1, w2, h2, ys)] = r.y1[(x + 1) * r.yStride];
            const Zan32s cb = avg(r.cb0[k * r.cStride], r.cb1[k * r.cStride]);
            const Zan32s cr = avg(r.cr0[k * r.cStride], r.cr1[k * r.cStride]);
            dst[1][place<R>(y >> 1, k, w2 >> 1, h2 >> 1, us)] = static_cast<Zan8u>(cb);
            dst[2][place<R>(y >> 1, k, w2 >> 1, h2 >> 1, vs)] = static_cast<Zan8u>(cr);
        }
    }
}

constexpr To420Fn kTo420[2][4] = {
    {to420_rotate<0, false>, to420_rotate<1, false>, to420_rotate<2, false>, to420_rotate<3, false>},
    {to420_rotate<0, true>, to420_rotate<1, true>, to420_rotate<2, true>, to420_rotate<3, true>},
};

// Resize, colour conversion and rotation with every argument checked.
void resize_cc_rotate(const Zan8u* pSrc, Zan32s srcStep, ZaniSize roi, Zan16u* pDst, Zan32s dstStep, Zan32s z,
                      Zan32s interpolation, Zan32s colorFormat, Zan32s rotation) {
    const Zan32s zi = z == 2 ? 0 : z == 4 ? 1 : 2;
    kResize[zi][(interpolation - 1) * 8 + (colorFormat ? 4 : 0) + rotation](pSrc, srcStep, roi.width / z,
                                                                              roi.height / z, pDst, dstStep / 2);
}

void to420(bool planar, const Zan8u* const src[3], const Zan32s srcStep[3], ZaniSize roi, Zan8u* const dst[3],
           const Zan32s dstStep[3], Zan32s rotation) {
    kTo420[planar ? 1 : 0][rotation](src, srcStep, roi.width & ~1, roi.height & ~1, dst, dstStep);
}

}  // namespace

}  // namespace zan::ZAN_PATH::camera

// =============================================================== exports

namespace zan::ZAN_PATH {

ZanStatus zaniResizeCCRotate_8u_C2R(const Zan8u* pSrc, Zan32s srcStep, ZaniSize roiSize, Zan16u* pDst,
                                    Zan32s dstStep, Zan32s zoomFactor, Zan32s interpolation, Zan32s colorFormat,
                                    Zan32s rotation) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (roiSize.width < zoomFactor || roiSize.height < zoomFactor) return zanStsSizeBad;
    if (zoomFactor != 2 && zoomFactor != 4 && zoomFactor != 8) return zanStsResizeFactorBad;
    if (interpolation != 1 && interpolation != 2) return zanStsInterpolationBad;
    if (rotation < 0 || rotation > 3) return zanStsBadArg;
    camera::resize_cc_rotate(pSrc, srcStep, roiSize, pDst, dstStep, zoomFactor, interpolation, colorFormat, rotation);
    return (roiSize.width & 1) || (roiSize.height & 1) ? zanStsOddSize : zanStsOk;
}

namespace {

ZanStatus to420_call(bool planar, const Zan8u* const src[3], const Zan32s srcStep[3], ZaniSize roiSize,
                     Zan8u* const pDst[3], const Zan32s dstStep[3], Zan32s rotation) {
    if (roiSize.width < 2 || roiSize.height < 2) return zanStsSizeBad;
    const ZanStatus done = (roiSize.width & 1) || (roiSize.height & 1) ? zanStsOddSize : zanStsOk;
    if (rotation < 0 || rotation > 3) return done;  // nothing written, the status of a valid call
    camera::to420(planar, src, srcStep, roiSize, pDst, dstStep, rotation);
    return done;
}

}  // namespace

ZanStatus zaniCbYCr422ToYCbCr420_Rotate_8u_C2P3R(const Zan8u* pSrc, Zan32s srcStep, ZaniSize roiSize,
                                                 Zan8u* pDst[3], Zan32s dstStep[3], Zan32s rotation) {
    if (!pSrc || !pDst || !dstStep) return zanStsNullPtr;
    if (!pDst[0] || !pDst[1] || !pDst[2]) return zanStsNullPtr;
    const Zan8u* const src[3] = {pSrc, nullptr, nullptr};
    const Zan32s steps[3] = {srcStep, 0, 0};
    return to420_call(false, src, steps, roiSize, pDst, dstStep, rotation);
}

ZanStatus zaniCbYCr422ToYCbCr420_Rotate_8u_P3R(const Zan8u* pSrc[3], Zan32s srcStep[3], ZaniSize roiSize,
                                               Zan8u* pDst[3], Zan32s dstStep[3], Zan32s rotation) {
    if (!pSrc || !pDst || !srcStep || !dstStep) return zanStsNullPtr;
    if (!pDst[0] || !pDst[1] || !pDst[2]) return zanStsNullPtr;
    if (!pSrc[0] || !pSrc[1] || !pSrc[2]) return zanStsNullPtr;
    return to420_call(true, pSrc, srcStep, roiSize, pDst, dstStep, rotation);
}

}  // namespace zan::ZAN_PATH
