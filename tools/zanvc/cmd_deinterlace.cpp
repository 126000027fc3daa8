// zanvc deinterlace IN OUT: runs one of the library's deinterlacers over a
// whole raw video (.yuv with --size, or .y4m), frame after frame, and writes
// the progressive result in the same format.  Every plane of a planar frame
// is treated alike.  The kept field comes from the current frame; the blend
// also reads the frames before and after it, the motion-adaptive tool the
// one before and the two after (the first and last frames stand in for
// frames beyond the ends).
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "commands.h"
#include "picture_io.h"
#include "zanvc.h"

namespace zanvc_tool {
namespace {

enum class Method { Blend, Edge, Median, Motion, Triangle };

struct Options {
    const char* in = nullptr;
    const char* out = nullptr;
    VideoInfo hint;
    Method method = Method::Blend;
    bool keepBottom = false;  // keep the odd rows (bottom field) instead of the even ones
    int threshold = 10;       // median and motion-adaptive tools
    int lo = 4, hi = 24;      // motion thresholds of the blend's weight line
    unsigned weight = 128;    // centre weight of the triangle filter
    const char* pngBefore = nullptr;
    const char* pngAfter = nullptr;
    long pngFrame = 0;
};

bool parse(int argc, char** argv, Options& o) {
    std::string err;
    for (int i = 0; i < argc; ++i) {
        int used = parse_video_option(argc, argv, i, o.hint, err);
        if (used < 0) return std::fprintf(stderr, "zanvc deinterlace: %s\n", err.c_str()), false;
        if (used > 0) {
            i += used - 1;
            continue;
        }
        const char* a = argv[i];
        const char* v = i + 1 < argc ? argv[i + 1] : nullptr;
        auto need = [&]() {
            if (!v) std::fprintf(stderr, "zanvc deinterlace: %s needs a value\n", a);
            return v != nullptr;
        };
        if (std::strcmp(a, "--method") == 0) {
            if (!need()) return false;
            ++i;
            if (std::strcmp(v, "blend") == 0) o.method = Method::Blend;
            else if (std::strcmp(v, "edge") == 0) o.method = Method::Edge;
            else if (std::strcmp(v, "median") == 0) o.method = Method::Median;
            else if (std::strcmp(v, "motion") == 0) o.method = Method::Motion;
            else if (std::strcmp(v, "triangle") == 0) o.method = Method::Triangle;
            else return std::fprintf(stderr, "zanvc deinterlace: unknown method %s\n", v), false;
        } else if (std::strcmp(a, "--keep") == 0) {
            if (!need()) return false;
            ++i;
            if (std::strcmp(v, "top") == 0) o.keepBottom = false;
            else if (std::strcmp(v, "bottom") == 0) o.keepBottom = true;
            else return std::fprintf(stderr, "zanvc deinterlace: --keep takes top or bottom\n"), false;
        } else if (std::strcmp(a, "--threshold") == 0) {
            if (!need()) return false;
            o.threshold = std::atoi(argv[++i]);
        } else if (std::strcmp(a, "--motion") == 0) {
            if (!need() || std::sscanf(argv[++i], "%d,%d", &o.lo, &o.hi) != 2)
                return std::fprintf(stderr, "zanvc deinterlace: --motion takes LO,HI\n"), false;
        } else if (std::strcmp(a, "--weight") == 0) {
            if (!need()) return false;
            o.weight = static_cast<unsigned>(std::strtoul(argv[++i], nullptr, 10));
        } else if (std::strcmp(a, "--png-before") == 0) {
            if (!need()) return false;
            o.pngBefore = argv[++i];
        } else if (std::strcmp(a, "--png-after") == 0) {
            if (!need()) return false;
            o.pngAfter = argv[++i];
        } else if (std::strcmp(a, "--png-frame") == 0) {
            if (!need()) return false;
            o.pngFrame = std::atol(argv[++i]);
        } else if (a[0] == '-' && a[1] != '\0') {
            return std::fprintf(stderr, "zanvc deinterlace: unknown option %s\n", a), false;
        } else if (!o.in) {
            o.in = a;
        } else if (!o.out) {
            o.out = a;
        } else {
            return std::fprintf(stderr, "zanvc deinterlace: too many arguments\n"), false;
        }
    }
    if (!o.in || !o.out) return std::fprintf(stderr, "zanvc deinterlace: takes IN OUT\n"), false;
    return true;
}

// One plane of the output frame from the planes of the frames around it.
ZanStatus deinterlace_plane(const Options& o, const Plane* src[4], const Plane& dst,
                            ZanDeinterlaceBlendState* blend) {
    const int w = dst.width, h = dst.height, step = dst.step;
    const Zan8u* cur = src[1]->data;
    switch (o.method) {
        case Method::Blend: {
            const Zan8u* planes[3] = {src[0]->data, cur, src[2]->data};
            // topField 0 computes the odd rows (keeps the top field).
            return zaniDeinterlaceBlend_8u_C1(planes, step, dst.data, step, {w, h}, 0, o.keepBottom ? 1 : 0, 1, blend);
        }
        case Method::Edge: {
            // The kept field as a packed picture; the other field's rows are
            // interpolated between it rows, the one beyond the field repeated.
            const int keep = o.keepBottom ? 1 : 0, rows = (h - keep + 1) / 2, other = h - rows;
            for (int y = keep; y < h; y += 2) std::memcpy(dst.data + y * step, cur + y * step, static_cast<size_t>(w));
            if (other < 1) return zanStsOk;
            if (!o.keepBottom)  // odd row r between kept rows r and r+1
                return zaniDeinterlaceEdgeDetect_8u_C1R(cur, 2 * step, dst.data + step, 2 * step, {w, other}, 1,
                                                        rows == other ? 1 : 0);
            // even row r between kept rows r-1 and r (row 0 repeats kept row 0;
            // with an odd height the last row repeats the last kept row)
            if (h & 1) std::memcpy(dst.data + (h - 1) * step, cur + (h - 2) * step, static_cast<size_t>(w));
            return zaniDeinterlaceEdgeDetect_8u_C1R(cur + step, 2 * step, dst.data, 2 * step,
                                                    {w, (h & 1) ? other - 1 : other}, 0, 1);
        }
        case Method::Median:
            return zaniDeinterlaceMedianThreshold_8u_C1R(cur, step, dst.data, step, {w, h}, o.threshold,
                                                         o.keepBottom ? 0 : 1, 1);
        case Method::Motion: {
            const Zan8u* planes[4] = {src[0]->data, cur, src[2]->data, src[3]->data};
            const int field = o.keepBottom ? 1 : 0;  // kept rows' parity; the kept field is the current frame's
            return zaniDeinterlaceMotionAdaptive_8u_C1(planes, step, dst.data, step, {w, h}, o.threshold, field,
                                                       field, 1, 1);
        }
        case Method::Triangle:
            return zaniDeinterlaceFilterTriangle_8u_C1R(cur, step, dst.data, step, {w, h}, o.weight, 0);
    }
    return zanStsOk;
}

bool write_preview(const char* path, const VideoInfo& info, const std::vector<std::uint8_t>& frame) {
    std::vector<std::uint8_t> rgb;
    frame_to_rgb(info, frame.data(), rgb);
    std::string err;
    if (!write_png(path, rgb.data(), info.width, info.height, 3, info.width * 3, err)) {
        std::fprintf(stderr, "zanvc deinterlace: %s\n", err.c_str());
        return false;
    }
    return true;
}

}  // namespace

int deinterlace(int argc, char** argv) {
    Options o;
    if (!parse(argc, argv, o)) return 2;
    std::string err;
    VideoReader reader;
    if (!reader.open(o.in, o.hint, err)) return std::fprintf(stderr, "zanvc deinterlace: %s\n", err.c_str()), 1;
    const VideoInfo info = reader.info();
    if (info.fmt == PixFmt::Yuyv422 || info.fmt == PixFmt::Uyvy422)
        return std::fprintf(stderr, "zanvc deinterlace: planar input only (yuv420p, yuv422p, gray)\n"), 1;
    VideoWriter writer;
    if (!writer.open(o.out, info, err)) return std::fprintf(stderr, "zanvc deinterlace: %s\n", err.c_str()), 1;

    ZanDeinterlaceBlendState* blend = nullptr;
    if (o.method == Method::Blend) {
        Zan32s t[2] = {o.lo, o.hi};
        double c[2] = {0.0, 1.0};
        ZanStatus s = zaniDeinterlaceBlendInitAlloc_8u_C1({info.width, info.height}, t, c, &blend);
        if (s != zanStsOk) return std::fprintf(stderr, "zanvc deinterlace: blend record: status %d\n", s), 1;
    }

    // Frame k needs frames k - 1 .. k + 2, clamped to the frames that exist.
    const size_t bytes = frame_bytes(info);
    std::vector<std::uint8_t> out(bytes);
    Progress progress("deinterlace", reader.frame_count());
    int rc = 0;
    auto process = [&](long k, const FrameAt& frame) -> bool {
        std::vector<std::uint8_t>* f[4] = {&frame(k - 1), &frame(k), &frame(k + 1), &frame(k + 2)};
        std::memcpy(out.data(), f[1]->data(), bytes);
        for (int i = 0; i < plane_count(info.fmt); ++i) {
            Plane p[4], d = plane(info, out.data(), i);
            const Plane* ps[4];
            for (int j = 0; j < 4; ++j) {
                p[j] = plane(info, f[j]->data(), i);
                ps[j] = &p[j];
            }
            if (d.width < 3 || d.height < 3) continue;  // too small to have a field to compute
            ZanStatus s = deinterlace_plane(o, ps, d, blend);
            if (s < 0) return std::fprintf(stderr, "zanvc deinterlace: frame %ld plane %d: status %d\n", k, i, s), false;
        }
        if (o.pngBefore && k == o.pngFrame && !write_preview(o.pngBefore, info, *f[1])) return false;
        if (o.pngAfter && k == o.pngFrame && !write_preview(o.pngAfter, info, out)) return false;
        if (!writer.write(out.data(), bytes, err)) return std::fprintf(stderr, "zanvc deinterlace: %s\n", err.c_str()), false;
        progress.update(k + 1);
        return true;
    };
    long done = 0;
    if (!for_each_frame(reader, 2, "deinterlace", process, done)) rc = 1;
    progress.finish();
    if (blend) zaniDeinterlaceBlendFree_8u_C1(blend);
    if (!writer.close(err) && rc == 0) {
        std::fprintf(stderr, "zanvc deinterlace: %s\n", err.c_str());
        rc = 1;
    }
    if (rc == 0) std::fprintf(stderr, "zanvc deinterlace: %ld frames\n", done);
    return rc;
}

}  // namespace zanvc_tool
