// H.264 interpolation: the reads through the picture boundary, the Top and
// Bottom forms, the Block forms, the exported wrappers of the whole family,
// the bi-prediction average and the plane expansion.
//
// Regions that leave the plane, and the rows that the Top and Bottom forms
// replace, are copied into a stack buffer and the ordinary kernels run on
// it.  Blocks may be of any allowed height, so the buffer is filled and
// consumed in bands of 16 output rows.
#include <climits>
#include <cstddef>
#include <cstring>

#include "common/simd.h"
#include "frame/bodies.h"
#include "h264/h264interp.h"

namespace zan::ZAN_PATH::h264interp {

using namespace zan::h264interp;

Zan32s edge_word(Zan64s x, Zan64s y, Zan32s width, Zan32s height, ZaniSize frame) {
    return (x < 0 ? kEdgeLeft : 0) | (x + width > frame.width ? kEdgeRight : 0) | (y < 0 ? kEdgeTop : 0) |
           (y + height > frame.height ? kEdgeBottom : 0);
}

namespace {

using namespace zan::h264interp;
using std::ptrdiff_t;

constexpr Zan32s kBand = 16;  // output rows per filling of a stack buffer

// Position i of one axis of a region reads plane position
// clamp(start + i, lo, hi); lo and hi may be unbounded.
struct Axis {
    Zan64s start;
    Zan64s lo = LLONG_MIN / 4;
    Zan64s hi = LLONG_MAX / 4;
    Zan64s at(Zan64s i) const {
        Zan64s v = start + i;
        return v < lo ? lo : v > hi ? hi : v;
    }
};

// The axis of a region at pos with n samples in a plane of size samples.
// bits: 1 the region starts before the plane, 2 it ends beyond it.  With
// both, the sign of pos chooses the one side that is clamped.  A region
// wholly outside is first moved so that one plane sample remains in it (it
// reads that sample throughout either way).
Axis boundary_axis(Zan32s bits, Zan64s pos, Zan32s n, Zan32s size) {
    if (bits == 3) bits = pos < 0 ? 1 : 2;
    Axis a{pos};
    if (bits == 1) {
        if (pos + n <= 0) a.start = 1 - n;
        a.lo = 0;
    } else if (bits == 2) {
        if (pos >= size) a.start = size - 1;
        a.hi = size - 1;
    }
    return a;
}

// n bytes (a row of a region: at most a few dozen) from s to d, in pieces
// that overlap at the end rather than read past it.
inline void copy_bytes(Zan8u* d, const Zan8u* s, size_t n) {
    if (n >= 16) {
        for (size_t i = 0; i + 16 < n; i += 16) simd::store16(d + i, simd::load16(s + i));
        simd::store16(d + n - 16, simd::load16(s + n - 16));
    } else if (n >= 8) {
        simd::store8(d, simd::load8(s));
        simd::store8(d + n - 8, simd::load8(s + n - 8));
    } else if (n >= 4) {
        std::memcpy(d, s, 4);
        std::memcpy(d + n - 4, s + n - 4, 4);
    } else {
        for (size_t i = 0; i < n; ++i) d[i] = s[i];
    }
}

// n elements of C samples, all equal to the C samples at v (one or two
// bytes in all: a byte, a 16-bit sample or an interleaved pair), stored
// from a broadcast register in pieces that overlap at the end.
template <class T, int C>
inline void fill_elems(T* d, const T* v, Zan64s n) {
    static_assert(sizeof(T) * C <= 2, "a fill pattern is one or two bytes");
    if (n <= 0) return;
    __m128i pattern;
    if constexpr (sizeof(T) * C == 1) {
        pattern = _mm_set1_epi8(static_cast<char>(*reinterpret_cast<const Zan8u*>(v)));
    } else {
        Zan16u two;
        std::memcpy(&two, v, 2);
        pattern = _mm_set1_epi16(static_cast<short>(two));
    }
    Zan8u* p = reinterpret_cast<Zan8u*>(d);
    const size_t bytes = sizeof(T) * C * static_cast<size_t>(n);
    if (bytes >= 16) {
        for (size_t i = 0; i + 16 < bytes; i += 16) simd::store16(p + i, pattern);
        simd::store16(p + bytes - 16, pattern);
    } else if (bytes >= 8) {
        simd::store8(p, pattern);
        simd::store8(p + bytes - 8, pattern);
    } else if (bytes >= 4) {
        const Zan32s four = _mm_cvtsi128_si32(pattern);
        std::memcpy(p, &four, 4);
        std::memcpy(p + bytes - 4, &four, 4);
    } else {
        const Zan32s four = _mm_cvtsi128_si32(pattern);
        std::memcpy(p, &four, bytes);
    }
}

// Copies rows firstRow .. firstRow + rows - 1 of a region of width samples
// (each of C elements) into buf, positions mapped by the two axes.
template <class T, int C>
void gather(const T* plane, ptrdiff_t step, const Axis& cols, const Axis& rowAxis, Zan32s width, Zan32s firstRow,
            Zan32s rows, T* buf, ptrdiff_t bufStep) {
    auto count_below = [&](Zan64s bound) {  // positions i in 0..width with start + i < bound
        Zan64s n = bound - cols.start;
        return n < 0 ? Zan64s{0} : n > width ? Zan64s{width} : n;
    };
    const Zan64s left = count_below(cols.lo), mid = count_below(cols.hi + 1);
    for (Zan32s r = 0; r < rows; ++r) {
        const T* src = plane + static_cast<ptrdiff_t>(rowAxis.at(firstRow + r)) * step;
        T* d = buf + bufStep * r;
        if (left > 0) fill_elems<T, C>(d, src + C * cols.lo, left);
        if (mid > left)
            copy_bytes(reinterpret_cast<Zan8u*>(d + C * left), reinterpret_cast<const Zan8u*>(src + C * (cols.start + left)),
                       sizeof(T) * C * static_cast<size_t>(mid - left));
        if (mid < width) fill_elems<T, C>(d + C * mid, src + C * cols.hi, width - mid);
    }
}

template <class T, int C>
void read_rows(Zan32s edge, const BoundaryRead<T>& r, Zan32s firstRow, Zan32s rows) {
    Axis cols = boundary_axis(edge & 3, r.x, r.width, r.frame.width);
    Axis rowAxis = boundary_axis((edge >> 2) & 3, r.y, r.height, r.frame.height);
    gather<T, C>(r.plane, r.planeStep, cols, rowAxis, r.width, firstRow, rows, r.buf, r.bufStep);
}

// ---------------------------------------------------------------- runners

// 8-bit luma of any allowed width: the width's bits 16, 8 and 4 side by side
// (24 by the table's own class).
void luma_8u(const Zan8u* s, Zan32s ss, Zan8u* d, Zan32s ds, Zan32s dx, Zan32s dy, Zan32s w, Zan32s h) {
    const Zan32s pos = dy * 4 + dx;
    Zan32s off = 0;
    if ((w & 24) == 24) {
        luma_table_8u[48 | pos](s, ss, d, ds, h);
        off = 24;
    } else {
        for (Zan32s bit : {16, 8})
            if (w & bit) {
                luma_table_8u[((bit * 2) & 48) | pos](s + off, ss, d + off, ds, h);
                off += bit;
            }
    }
    if (w & 4) luma_table_8u[pos](s + off, ss, d + off, ds, h);
}

// 8-bit chroma of any allowed width: bits 8, 4 and 2 side by side.  The
// arguments come as values, not as a record, so that no record the caller
// has just stored in pieces is loaded back whole (a store-forwarding stall).
void chroma_8u(const Chroma8Fn* table, int layout, const Zan8u* src, Zan32s ss, Zan8u* dst, Zan8u* dstV, Zan32s ds,
               Zan32s dx, Zan32s dy, Zan32s h, Zan32s w) {
    const Zan32s col = (dy ? 2 : 0) | (dx ? 1 : 0);
    Zan32s off = 0;
    for (Zan32s bit : {8, 4, 2})
        if (w & bit) {
            const ChromaJob8 k{src + (layout == 0 ? off : 2 * off), ss, dst + (layout == 1 ? 2 * off : off),
                               layout == 2 ? dstV + off : nullptr, ds, dx, dy, h};
            table[(bit & 12) | col](k);
            off += bit;
        }
}

const Chroma8Fn* chroma_table(int layout) {
    return layout == 0 ? chroma_table_8u : layout == 1 ? chroma_table_nv12_8u : chroma_table_nv12touv_8u;
}

// ------------------------------------------------- Top and Bottom forms

// Rows mapped by rowAxis (relative to pSrc), columns as they are: the
// filter's rows and columns are copied band by band into a buffer, and the
// kernel runs on it.
void luma_rows_8u(const Zan8u* pSrc, Zan32s ss, Zan8u* pDst, Zan32s ds, Zan32s dx, Zan32s dy, Zan32s w,
                  Zan32s h, Axis rowAxis) {
    const Zan32s mx = dx ? 2 : 0, my = dy ? 2 : 0, w2 = w + (dx ? 5 : 0), extra = dy ? 5 : 0;
    constexpr Zan32s kStep = 48;
    alignas(32) Zan8u buf[(kBand + 5) * kStep];
    rowAxis.start = -my;
    for (Zan32s r0 = 0; r0 < h; r0 += kBand) {
        const Zan32s n = h - r0 < kBand ? h - r0 : kBand;
        gather<Zan8u, 1>(pSrc, ss, Axis{-mx}, rowAxis, w2, r0, n + extra, buf, kStep);
        luma_8u(buf + my * kStep + mx, kStep, pDst + static_cast<ptrdiff_t>(ds) * r0, ds, dx, dy, w, n);
    }
}

void chroma_rows_8u(const Zan8u* pSrc, Zan32s ss, Zan8u* pDst, Zan32s ds, Zan32s dx, Zan32s dy, Zan32s w,
                    Zan32s h, Axis rowAxis) {
    const Zan32s w2 = w + (dx ? 1 : 0), extra = dy ? 1 : 0;
    constexpr Zan32s kStep = 16;
    alignas(32) Zan8u buf[(kBand + 1) * kStep];
    rowAxis.start = 0;
    for (Zan32s r0 = 0; r0 < h; r0 += kBand) {
        const Zan32s n = h - r0 < kBand ? h - r0 : kBand;
        gather<Zan8u, 1>(pSrc, ss, Axis{0}, rowAxis, w2, r0, n + extra, buf, kStep);
        chroma_8u(chroma_table_8u, 0, buf, kStep, pDst + static_cast<ptrdiff_t>(ds) * r0, nullptr, ds, dx, dy, n, w);
    }
}

template <bool Luma>
void rows_16u(const Job16& job, Axis rowAxis) {
    const Zan32s m = Luma ? 2 : 0, more = Luma ? 5 : 1;
    const Zan32s mx = job.dx ? m : 0, my = job.dy ? m : 0;
    const Zan32s w2 = job.width + (job.dx ? more : 0), extra = job.dy ? more : 0;
    constexpr Zan32s kStep = 48;
    alignas(64) Zan16u buf[(kBand + 5) * kStep];
    rowAxis.start = -my;
    for (Zan32s r0 = 0; r0 < job.height; r0 += kBand) {
        const Zan32s n = job.height - r0 < kBand ? job.height - r0 : kBand;
        gather<Zan16u, 1>(job.pSrc, job.srcStep, Axis{-mx}, rowAxis, w2, r0, n + extra, buf, kStep);
        const Job16 k{buf + my * kStep + mx, kStep, job.pDst + static_cast<ptrdiff_t>(job.dstStep) * r0, job.dstStep,
                      job.dx, job.dy, job.width, n, job.maxValue};
        if constexpr (Luma) luma_16u(k);
        else chroma_16u(k);
    }
}

Axis top_rows(Zan32s outPixels) {
    Axis a{0};
    a.lo = outPixels;
    return a;
}
Axis bottom_rows(Zan32s h, Zan32s outPixels) {
    Axis a{0};
    a.hi = Zan64s{h} - outPixels - 1;
    return a;
}

// ------------------------------------------------------------ Block forms

template <class T>
const T* at(const T* plane, Zan32s step, Zan64s x, Zan64s y) {
    return plane + static_cast<ptrdiff_t>(y) * step + static_cast<ptrdiff_t>(x);
}

// Geometry of a block's read: the fraction, the region's corner and extent,
// and where the kernel starts inside the region.
struct Geometry {
    Zan32s dx, dy;
    Zan64s x, y;    // region's first sample
    Zan32s w2, h2;  // region's extent
    Zan32s mx, my;  // the block's integer position inside the region
};

Geometry luma_geometry(const ZaniPoint& pos, const ZaniPoint& v, const ZaniSize& block) {
    Geometry g;
    g.dx = v.x & 3;
    g.dy = v.y & 3;
    g.mx = g.dx ? 2 : 0;
    g.my = g.dy ? 2 : 0;
    g.x = Zan64s{pos.x} + (v.x >> 2) - g.mx;
    g.y = Zan64s{pos.y} + (v.y >> 2) - g.my;
    g.w2 = block.width + (g.dx ? 5 : 0);
    g.h2 = block.height + (g.dy ? 5 : 0);
    return g;
}

Geometry chroma_geometry(const ZaniPoint& pos, const ZaniPoint& v, const ZaniSize& block) {
    Geometry g;
    g.dx = v.x & 7;
    g.dy = v.y & 7;
    g.mx = g.my = 0;
    g.x = Zan64s{pos.x} + (v.x >> 3);
    g.y = Zan64s{pos.y} + (v.y >> 3);
    g.w2 = block.width + (g.dx ? 1 : 0);
    g.h2 = block.height + (g.dy ? 1 : 0);
    return g;
}

// The region of a block read through the boundary into buf, rows
// r0 .. r0 + n + h2 - h - 1.
// (A corner beyond +-2^30 is held there: the region is then wholly outside
// the plane on that side, and reads the same.)
inline Zan32s held(Zan64s v) { return static_cast<Zan32s>(v < -(Zan64s{1} << 30) ? -(Zan64s{1} << 30) : v > (Zan64s{1} << 30) ? (Zan64s{1} << 30) : v); }

template <class T>
BoundaryRead<T> region_of(const T* plane, Zan32s step, ZaniSize frame, const Geometry& g, T* buf, Zan32s bufStep) {
    return {plane, step, frame, held(g.x), held(g.y), g.w2, g.h2, buf, bufStep};
}

void luma_block_8u(const ZanInterpolateBlockRecord& r) {
    const Zan32s w = r.sizeBlock.width, h = r.sizeBlock.height;
    if (r.pointVector.x == 0 && r.pointVector.y == 0) {
        luma_8u(at(r.pSrc[0], r.srcStep, r.pointBlockPos.x, r.pointBlockPos.y), r.srcStep, r.pDst[0], r.dstStep, 0, 0,
                w, h);
        return;
    }
    const Geometry g = luma_geometry(r.pointBlockPos, r.pointVector, r.sizeBlock);
    const Zan32s edge = edge_word(g.x, g.y, g.w2, g.h2, r.sizeFrame);
    if (edge == 0) {
        luma_8u(at(r.pSrc[0], r.srcStep, g.x + g.mx, g.y + g.my), r.srcStep, r.pDst[0], r.dstStep, g.dx, g.dy, w, h);
        return;
    }
    constexpr Zan32s kStep = 48;
    alignas(32) Zan8u buf[(kBand + 5) * kStep];
    const BoundaryRead<Zan8u> region = region_of(r.pSrc[0], r.srcStep, r.sizeFrame, g, buf, kStep);
    for (Zan32s r0 = 0; r0 < h; r0 += kBand) {
        const Zan32s n = h - r0 < kBand ? h - r0 : kBand;
        read_rows<Zan8u, 1>(edge, region, r0, n + g.h2 - h);
        luma_8u(buf + g.my * kStep + g.mx, kStep, r.pDst[0] + static_cast<ptrdiff_t>(r.dstStep) * r0, r.dstStep, g.dx,
                g.dy, w, n);
    }
}

void luma_block_16u(const ZanInterpolateBlockRecord_16u& r) {
    const Zan32s maxValue = static_cast<Zan32s>((1u << (r.bitDepth & 31)) - 1u);
    Job16 job{nullptr, r.srcStep, r.pDst[0], r.dstStep, 0, 0, r.sizeBlock.width, r.sizeBlock.height, maxValue};
    if (r.pointVector.x == 0 && r.pointVector.y == 0) {
        job.pSrc = at(r.pSrc[0], r.srcStep, r.pointBlockPos.x, r.pointBlockPos.y);
        luma_16u(job);
        return;
    }
    const Geometry g = luma_geometry(r.pointBlockPos, r.pointVector, r.sizeBlock);
    const Zan32s edge = edge_word(g.x, g.y, g.w2, g.h2, r.sizeFrame);
    job.dx = g.dx;
    job.dy = g.dy;
    if (edge == 0) {
        job.pSrc = at(r.pSrc[0], r.srcStep, g.x + g.mx, g.y + g.my);
        luma_16u(job);
        return;
    }
    constexpr Zan32s kStep = 48;
    alignas(64) Zan16u buf[(kBand + 5) * kStep];
    const BoundaryRead<Zan16u> region = region_of(r.pSrc[0], r.srcStep, r.sizeFrame, g, buf, kStep);
    const Zan32s h = r.sizeBlock.height;
    for (Zan32s r0 = 0; r0 < h; r0 += kBand) {
        const Zan32s n = h - r0 < kBand ? h - r0 : kBand;
        read_rows<Zan16u, 1>(edge, region, r0, n + g.h2 - h);
        const Job16 k{buf + g.my * kStep + g.mx, kStep, r.pDst[0] + static_cast<ptrdiff_t>(r.dstStep) * r0, r.dstStep,
                      job.dx, job.dy, job.width, n, job.maxValue};
        luma_16u(k);
    }
}

// layout 0: two planes; 1: interleaved in and out; 2: interleaved in, planes out.
void chroma_block_8u(const ZanInterpolateBlockRecord& r, int layout) {
    const Zan32s w = r.sizeBlock.width, h = r.sizeBlock.height;
    const Zan32s planes = layout == 0 ? 2 : 1, c = layout == 0 ? 1 : 2;
    const Chroma8Fn* table = chroma_table(layout);
    auto run = [&](int p, const Zan8u* src, Zan32s srcStep, Zan32s r0, Zan32s n, Zan32s dx, Zan32s dy) {
        Zan8u* d = r.pDst[layout == 2 ? 0 : p] + static_cast<ptrdiff_t>(r.dstStep) * r0;
        Zan8u* v = layout == 2 ? r.pDst[1] + static_cast<ptrdiff_t>(r.dstStep) * r0 : nullptr;
        chroma_8u(table, layout, src, srcStep, d, v, r.dstStep, dx, dy, n, w);
    };
    if (r.pointVector.x == 0 && r.pointVector.y == 0) {
        for (int p = 0; p < planes; ++p)
            run(p, at(r.pSrc[p], r.srcStep, Zan64s{c} * r.pointBlockPos.x, r.pointBlockPos.y), r.srcStep, 0, h, 0, 0);
        return;
    }
    const Geometry g = chroma_geometry(r.pointBlockPos, r.pointVector, r.sizeBlock);
    const Zan32s edge = edge_word(g.x, g.y, g.w2, g.h2, r.sizeFrame);
    if (edge == 0) {
        for (int p = 0; p < planes; ++p)
            run(p, at(r.pSrc[p], r.srcStep, c * g.x, g.y), r.srcStep, 0, h, g.dx, g.dy);
        return;
    }
    constexpr Zan32s kStep = 32;
    alignas(32) Zan8u buf[(kBand + 1) * kStep];
    for (int p = 0; p < planes; ++p) {
        const BoundaryRead<Zan8u> region = region_of(r.pSrc[p], r.srcStep, r.sizeFrame, g, buf, kStep);
        for (Zan32s r0 = 0; r0 < h; r0 += kBand) {
            const Zan32s n = h - r0 < kBand ? h - r0 : kBand;
            if (layout == 0) read_rows<Zan8u, 1>(edge, region, r0, n + g.h2 - h);
            else read_rows<Zan8u, 2>(edge, region, r0, n + g.h2 - h);
            run(p, buf, kStep, r0, n, g.dx, g.dy);
        }
    }
}

void chroma_block_16u(const ZanInterpolateBlockRecord_16u& r) {
    const Zan32s h = r.sizeBlock.height;
    Job16 job{nullptr, r.srcStep, nullptr, r.dstStep, 0, 0, r.sizeBlock.width, h, 0};
    if (r.pointVector.x == 0 && r.pointVector.y == 0) {
        for (int p = 0; p < 2; ++p) {
            job.pSrc = at(r.pSrc[p], r.srcStep, r.pointBlockPos.x, r.pointBlockPos.y);
            job.pDst = r.pDst[p];
            chroma_16u(job);
        }
        return;
    }
    const Geometry g = chroma_geometry(r.pointBlockPos, r.pointVector, r.sizeBlock);
    const Zan32s edge = edge_word(g.x, g.y, g.w2, g.h2, r.sizeFrame);
    job.dx = g.dx;
    job.dy = g.dy;
    if (edge == 0) {
        for (int p = 0; p < 2; ++p) {
            job.pSrc = at(r.pSrc[p], r.srcStep, g.x, g.y);
            job.pDst = r.pDst[p];
            chroma_16u(job);
        }
        return;
    }
    constexpr Zan32s kStep = 32;
    alignas(64) Zan16u buf[(kBand + 1) * kStep];
    for (int p = 0; p < 2; ++p) {
        const BoundaryRead<Zan16u> region = region_of(r.pSrc[p], r.srcStep, r.sizeFrame, g, buf, kStep);
        for (Zan32s r0 = 0; r0 < h; r0 += kBand) {
            const Zan32s n = h - r0 < kBand ? h - r0 : kBand;
            read_rows<Zan16u, 1>(edge, region, r0, n + g.h2 - h);
            const Job16 k{buf, kStep, r.pDst[p] + static_cast<ptrdiff_t>(r.dstStep) * r0, r.dstStep, job.dx, job.dy,
                          job.width, n, job.maxValue};
            chroma_16u(k);
        }
    }
}

// ------------------------------------------------------- plane expansion

// n rows of a plane at base, rows step apart: row n - 1 copied to `below`
// rows under it, every row of the n + below padded with `side` copies of
// its end samples, padded row 0 copied to `above` rows over it.
void expand(Zan8u* base, ptrdiff_t step, size_t width, Zan64s n, Zan64s below, Zan64s above, size_t side) {
    auto row = [&](Zan64s r) { return base + static_cast<ptrdiff_t>(r) * step; };
    for (Zan64s k = 1; k <= below; ++k) std::memmove(row(n - 1 + k), row(n - 1), width);
    for (Zan64s r = 0; r < n + below; ++r) {
        Zan8u* p = row(r);
        std::memset(p - side, p[0], side);
        std::memset(p + width, p[width - 1], side);
    }
    for (Zan64s k = 1; k <= above; ++k) std::memmove(row(-k) - side, row(0) - side, width + 2 * side);
}

// ------------------------------------------------------------- checks

inline bool luma_size_bad(ZaniSize s) { return (s.height & 3) != 0 || (s.width & ~28) != 0; }
inline bool chroma_size_bad(ZaniSize s) { return (s.height & 1) != 0 || (s.width & ~14) != 0; }
inline bool empty(ZaniSize s) { return s.width <= 0 || s.height <= 0; }
inline bool one_of_4_8_16(Zan32s v) { return v == 4 || v == 8 || v == 16; }
inline bool one_of_2_4_8_16(Zan32s v) { return v == 2 || v == 4 || v == 8 || v == 16; }

// Checks of the 16-bit plain, Top and Bottom forms (after the null test).
ZanStatus check_luma_16u(const ZanInterpolateSampleRecord& r) {
    if (r.roiSize.width > r.srcStep || r.roiSize.width > r.dstStep) return zanStsStepBad;
    if (static_cast<Zan32u>(r.dx) > 3 || static_cast<Zan32u>(r.dy) > 3) return zanStsBadArg;
    if (!one_of_4_8_16(r.roiSize.width) || !one_of_4_8_16(r.roiSize.height) || r.roiSize.width + r.roiSize.height == 20)
        return zanStsSizeBad;
    return zanStsOk;
}

ZanStatus check_chroma_16u(const ZanInterpolateSampleRecord& r) {
    if (r.srcStep < 8 || r.dstStep < 8) return zanStsStepBad;
    if (static_cast<Zan32u>(r.dx) > 7 || static_cast<Zan32u>(r.dy) > 7) return zanStsBadArg;
    const Zan32s w = r.roiSize.width;
    if (!one_of_2_4_8_16(r.roiSize.height) || (w != 2 && w != 4 && w != 8)) return zanStsSizeBad;
    return zanStsOk;
}

Job16 job_of(const ZanInterpolateSampleRecord& r) {
    return {r.pSrc, r.srcStep, r.pDst, r.dstStep, r.dx, r.dy, r.roiSize.width, r.roiSize.height,
            static_cast<Zan32s>((1u << (r.bitDepth & 31)) - 1u)};
}

}  // namespace
}  // namespace zan::ZAN_PATH::h264interp

// =============================================================== exports

namespace zan::ZAN_PATH {

using namespace zan::h264interp;
namespace hi = zan::ZAN_PATH::h264interp;

void zaniReadDataBlockThroughBoundary_8u(Zan32s edge, const BoundaryRead<Zan8u>& r) {
    hi::read_rows<Zan8u, 1>(edge, r, 0, r.height);
}
void zaniReadDataBlockThroughBoundary_16u(Zan32s edge, const BoundaryRead<Zan16u>& r) {
    hi::read_rows<Zan16u, 1>(edge, r, 0, r.height);
}
void zaniReadDataBlockThroughBoundary_NV12_8u(Zan32s edge, const BoundaryRead<Zan8u>& r) {
    hi::read_rows<Zan8u, 2>(edge, r, 0, r.height);
}

ZanStatus zaniInterpolateLuma_H264_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s dx,
                                          Zan32s dy, ZaniSize roiSize) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (static_cast<Zan32u>(dx) > 3 || static_cast<Zan32u>(dy) > 3) return zanStsBadArg;
    if (hi::luma_size_bad(roiSize)) return zanStsSizeBad;
    if (!hi::empty(roiSize)) hi::luma_8u(pSrc, srcStep, pDst, dstStep, dx, dy, roiSize.width, roiSize.height);
    return zanStsOk;
}

ZanStatus zaniInterpolateChroma_H264_8u_C1R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s dx,
                                            Zan32s dy, ZaniSize roiSize) {
    if (!pSrc || !pDst) return zanStsNullPtr;
    if (static_cast<Zan32u>(dx) > 7 || static_cast<Zan32u>(dy) > 7) return zanStsBadArg;
    if (hi::chroma_size_bad(roiSize)) return zanStsSizeBad;
    if (!hi::empty(roiSize))
        hi::chroma_8u(hi::chroma_table_8u, 0, pSrc, srcStep, pDst, nullptr, dstStep, dx, dy, roiSize.height,
                      roiSize.width);
    return zanStsOk;
}

ZanStatus zaniInterpolateChroma_H264_8u_C2P2R(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDstU, Zan8u* pDstV,
                                              Zan32s dstStep, Zan32s dx, Zan32s dy, ZaniSize roiSize) {
    if (!pSrc || !pDstU || !pDstV) return zanStsNullPtr;
    if (static_cast<Zan32u>(dx) > 7 || static_cast<Zan32u>(dy) > 7) return zanStsBadArg;
    if (hi::chroma_size_bad(roiSize)) return zanStsSizeBad;
    if (!hi::empty(roiSize))
        hi::chroma_8u(hi::chroma_table_nv12touv_8u, 2, pSrc, srcStep, pDstU, pDstV, dstStep, dx, dy, roiSize.height,
                      roiSize.width);
    return zanStsOk;
}

ZanStatus zaniInterpolateLuma_H264_16u_C1R(const ZanInterpolateSampleRecord* pInfo) {
    if (!pInfo || !pInfo->pSrc || !pInfo->pDst) return zanStsNullPtr;
    if (ZanStatus st = hi::check_luma_16u(*pInfo)) return st;
    hi::luma_16u(hi::job_of(*pInfo));
    return zanStsOk;
}

ZanStatus zaniInterpolateChroma_H264_16u_C1R(const ZanInterpolateSampleRecord* pInfo) {
    if (!pInfo || !pInfo->pSrc || !pInfo->pDst) return zanStsNullPtr;
    if (ZanStatus st = hi::check_chroma_16u(*pInfo)) return st;
    hi::chroma_16u(hi::job_of(*pInfo));
    return zanStsOk;
}

#define ZAN_TOPBOTTOM_8U(name, kind, sizeBad, rows)                                                             \
    ZanStatus name(const Zan8u* pSrc, Zan32s srcStep, Zan8u* pDst, Zan32s dstStep, Zan32s dx, Zan32s dy,         \
                   Zan32s outPixels, ZaniSize roiSize) {                                                         \
        if (!pSrc || !pDst) return zanStsNullPtr;                                                                \
        const Zan32u maxFraction = kind == 0 ? 3 : 7;                                                            \
        if (static_cast<Zan32u>(dx) > maxFraction || static_cast<Zan32u>(dy) > maxFraction) return zanStsBadArg; \
        if (hi::sizeBad(roiSize)) return zanStsSizeBad;                                                          \
        if (hi::empty(roiSize)) return zanStsOk;                                                                 \
        if (kind == 0)                                                                                           \
            hi::luma_rows_8u(pSrc, srcStep, pDst, dstStep, dx, dy, roiSize.width, roiSize.height, rows);         \
        else                                                                                                     \
            hi::chroma_rows_8u(pSrc, srcStep, pDst, dstStep, dx, dy, roiSize.width, roiSize.height, rows);       \
        return zanStsOk;                                                                                         \
    }
ZAN_TOPBOTTOM_8U(zaniInterpolateLumaTop_H264_8u_C1R, 0, luma_size_bad, hi::top_rows(outPixels))
ZAN_TOPBOTTOM_8U(zaniInterpolateLumaBottom_H264_8u_C1R, 0, luma_size_bad, hi::bottom_rows(roiSize.height, outPixels))
ZAN_TOPBOTTOM_8U(zaniInterpolateChromaTop_H264_8u_C1R, 1, chroma_size_bad, hi::top_rows(outPixels))
ZAN_TOPBOTTOM_8U(zaniInterpolateChromaBottom_H264_8u_C1R, 1, chroma_size_bad,
                 hi::bottom_rows(roiSize.height, outPixels))
#undef ZAN_TOPBOTTOM_8U

#define ZAN_TOPBOTTOM_16U(name, luma, check, rows)                                     \
    ZanStatus name(const ZanInterpolateSampleRecord* pInfo, Zan32s outPixels) {        \
        if (!pInfo || !pInfo->pSrc || !pInfo->pDst) return zanStsNullPtr;              \
        if (ZanStatus st = hi::check(*pInfo)) return st;                               \
        [[maybe_unused]] const ZaniSize roiSize = pInfo->roiSize;                                     \
        hi::rows_16u<luma>(hi::job_of(*pInfo), rows);                                  \
        return zanStsOk;                                                               \
    }
ZAN_TOPBOTTOM_16U(zaniInterpolateLumaTop_H264_16u_C1R, true, check_luma_16u, hi::top_rows(outPixels))
ZAN_TOPBOTTOM_16U(zaniInterpolateLumaBottom_H264_16u_C1R, true, check_luma_16u,
                  hi::bottom_rows(roiSize.height, outPixels))
ZAN_TOPBOTTOM_16U(zaniInterpolateChromaTop_H264_16u_C1R, false, check_chroma_16u, hi::top_rows(outPixels))
ZAN_TOPBOTTOM_16U(zaniInterpolateChromaBottom_H264_16u_C1R, false, check_chroma_16u,
                  hi::bottom_rows(roiSize.height, outPixels))
#undef ZAN_TOPBOTTOM_16U

ZanStatus zaniInterpolateLumaBlock_H264_8u_P1R(const ZanInterpolateBlockRecord* pInfo) {
    if (!pInfo || !pInfo->pSrc[0] || !pInfo->pDst[0]) return zanStsNullPtr;
    if (hi::luma_size_bad(pInfo->sizeBlock)) return zanStsSizeBad;
    if (!hi::empty(pInfo->sizeBlock)) hi::luma_block_8u(*pInfo);
    return zanStsOk;
}

ZanStatus zaniInterpolateLumaBlock_H264_16u_P1R(const ZanInterpolateBlockRecord_16u* pInfo) {
    if (!pInfo || !pInfo->pSrc[0] || !pInfo->pDst[0]) return zanStsNullPtr;
    if (hi::luma_size_bad(pInfo->sizeBlock)) return zanStsSizeBad;
    if (!hi::empty(pInfo->sizeBlock)) hi::luma_block_16u(*pInfo);
    return zanStsOk;
}

#define ZAN_CHROMA_BLOCK(name, layout)                                                                     \
    ZanStatus name(const ZanInterpolateBlockRecord* pInfo) {                                               \
        if (!pInfo || !pInfo->pSrc[0] || !pInfo->pSrc[1] || !pInfo->pDst[0] || !pInfo->pDst[1])            \
            return zanStsNullPtr;                                                                          \
        if (hi::chroma_size_bad(pInfo->sizeBlock)) return zanStsSizeBad;                                   \
        if (!hi::empty(pInfo->sizeBlock)) hi::chroma_block_8u(*pInfo, layout);                             \
        return zanStsOk;                                                                                   \
    }
ZAN_CHROMA_BLOCK(zaniInterpolateChromaBlock_H264_8u_P2R, 0)
ZAN_CHROMA_BLOCK(zaniInterpolateChromaBlock_H264_8u_C2C2R, 1)
ZAN_CHROMA_BLOCK(zaniInterpolateChromaBlock_H264_8u_C2P2R, 2)
#undef ZAN_CHROMA_BLOCK

ZanStatus zaniInterpolateChromaBlock_H264_16u_P2R(const ZanInterpolateBlockRecord_16u* pInfo) {
    if (!pInfo || !pInfo->pSrc[0] || !pInfo->pSrc[1] || !pInfo->pDst[0] || !pInfo->pDst[1]) return zanStsNullPtr;
    if (hi::chroma_size_bad(pInfo->sizeBlock)) return zanStsSizeBad;
    if (!hi::empty(pInfo->sizeBlock)) hi::chroma_block_16u(*pInfo);
    return zanStsOk;
}

namespace {
bool table_size(Zan32u v) { return v == 2 || v == 4 || v == 8 || v == 16; }
AverageFn average_kernel(Zan32u w, Zan32u h) {
    return table_size(w) && table_size(h) ? hi::average_table[(w >> 2) * 5 + (h >> 2)] : hi::average_any;
}
}  // namespace

ZanStatus zaniInterpolateBlock_H264_8u_P2P1R(const Zan8u* pSrc1, const Zan8u* pSrc2, Zan8u* pDst, Zan32u width,
                                             Zan32u height, Zan32s pitch) {
    if (!pSrc1 || !pSrc2 || !pDst) return zanStsNullPtr;
    if (width - 2 > 14 || height - 2 > 14) return zanStsSizeBad;
    average_kernel(width, height)(pSrc1, pitch, pSrc2, pitch, pDst, pitch, static_cast<Zan32s>(width),
                                  static_cast<Zan32s>(height));
    return zanStsOk;
}

ZanStatus zaniInterpolateBlock_H264_8u_P3P1R(const Zan8u* pSrc1, const Zan8u* pSrc2, Zan8u* pDst, Zan32u width,
                                             Zan32u height, Zan32s src1Step, Zan32s src2Step, Zan32s dstStep) {
    if (!pSrc1 || !pSrc2 || !pDst) return zanStsNullPtr;
    if (width - 2 > 14 || height - 2 > 14) return zanStsSizeBad;
    average_kernel(width, height)(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, static_cast<Zan32s>(width),
                                  static_cast<Zan32s>(height));
    return zanStsOk;
}

ZanStatus zaniExpandPlane_H264_8u_C1R(Zan8u* pSrcDst, Zan32u width, Zan32u height, Zan32s step, Zan32u expand,
                                      Zan32s structure) {
    if (!pSrcDst) return zanStsNullPtr;
    if ((height & 1) != 0 || height < 2 || width == 0) return zanStsSizeBad;
    if (expand == 0) return zanStsOk;
    const Zan64s h = height, e = expand;
    const std::ptrdiff_t s = step;
    switch (structure) {
        case 0: hi::expand(pSrcDst, s, width, h, e, e, expand); break;
        case 1: hi::expand(pSrcDst, 2 * s, width, h / 2, (e + 1) >> 1, e >> 1, expand); break;
        case 2: hi::expand(pSrcDst + s, 2 * s, width, h / 2, e >> 1, (e + 1) >> 1, expand); break;
        default: return zanStsBadArg;
    }
    return zanStsOk;
}

}  // namespace zan::ZAN_PATH
