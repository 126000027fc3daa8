// zanvc denoise IN OUT: runs one of the library's denoisers over a whole raw
// video (.yuv with --size, or .y4m), frame after frame, and writes the result
// in the same format.  Every plane of a planar frame is filtered as a whole
// picture.  The adaptive filter reads the frames before and after the
// current one (the first and last frames stand in beyond the ends) and keeps
// one record per plane size for the whole run; the smoothing filter works on
// each frame alone.
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

struct Options {
    const char* in = nullptr;
    const char* out = nullptr;
    VideoInfo hint;
    bool smooth = false;
    int threshold = -1;  // default by method: 20 adaptive, 12 smooth
    int mode = 3;
    int radius = 1;
    const char* pngBefore = nullptr;
    const char* pngAfter = nullptr;
    long pngFrame = 0;
};

bool parse(int argc, char** argv, Options& o) {
    std::string err;
    for (int i = 0; i < argc; ++i) {
        int used = parse_video_option(argc, argv, i, o.hint, err);
        if (used < 0) return std::fprintf(stderr, "zanvc denoise: %s\n", err.c_str()), false;
        if (used > 0) {
            i += used - 1;
            continue;
        }
        const char* a = argv[i];
        const char* v = i + 1 < argc ? argv[i + 1] : nullptr;
        auto need = [&]() {
            if (!v) std::fprintf(stderr, "zanvc denoise: %s needs a value\n", a);
            return v != nullptr;
        };
        if (std::strcmp(a, "--method") == 0) {
            if (!need()) return false;
            ++i;
            if (std::strcmp(v, "adaptive") == 0) o.smooth = false;
            else if (std::strcmp(v, "smooth") == 0) o.smooth = true;
            else return std::fprintf(stderr, "zanvc denoise: unknown method %s\n", v), false;
        } else if (std::strcmp(a, "--threshold") == 0) {
            if (!need()) return false;
            o.threshold = std::atoi(argv[++i]);
        } else if (std::strcmp(a, "--mode") == 0) {
            if (!need()) return false;
            o.mode = std::atoi(argv[++i]);
            if (o.mode < 0 || o.mode > 3) return std::fprintf(stderr, "zanvc denoise: --mode takes 0..3\n"), false;
        } else if (std::strcmp(a, "--radius") == 0) {
            if (!need()) return false;
            o.radius = std::atoi(argv[++i]);
            if (o.radius < 1) return std::fprintf(stderr, "zanvc denoise: --radius must be 1 or more\n"), false;
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
            return std::fprintf(stderr, "zanvc denoise: unknown option %s\n", a), false;
        } else if (!o.in) {
            o.in = a;
        } else if (!o.out) {
            o.out = a;
        } else {
            return std::fprintf(stderr, "zanvc denoise: too many arguments\n"), false;
        }
    }
    if (!o.in || !o.out) return std::fprintf(stderr, "zanvc denoise: takes IN OUT\n"), false;
    if (o.threshold < 0) o.threshold = o.smooth ? 12 : 20;
    return true;
}

bool write_preview(const char* path, const VideoInfo& info, const std::vector<std::uint8_t>& frame) {
    std::vector<std::uint8_t> rgb;
    frame_to_rgb(info, frame.data(), rgb);
    std::string err;
    if (!write_png(path, rgb.data(), info.width, info.height, 3, info.width * 3, err)) {
        std::fprintf(stderr, "zanvc denoise: %s\n", err.c_str());
        return false;
    }
    return true;
}

}  // namespace

int denoise(int argc, char** argv) {
    Options o;
    if (!parse(argc, argv, o)) return 2;
    std::string err;
    VideoReader reader;
    if (!reader.open(o.in, o.hint, err)) return std::fprintf(stderr, "zanvc denoise: %s\n", err.c_str()), 1;
    const VideoInfo info = reader.info();
    if (info.fmt == PixFmt::Yuyv422 || info.fmt == PixFmt::Uyvy422)
        return std::fprintf(stderr, "zanvc denoise: planar input only (yuv420p, yuv422p, gray)\n"), 1;
    VideoWriter writer;
    if (!writer.open(o.out, info, err)) return std::fprintf(stderr, "zanvc denoise: %s\n", err.c_str()), 1;

    const size_t bytes = frame_bytes(info);
    const int planes = plane_count(info.fmt);
    std::vector<std::uint8_t> out(bytes), scratch;
    // One adaptive record per plane (its region is the whole plane).
    std::vector<ZanDenoiseAdaptiveState*> states(static_cast<size_t>(planes), nullptr);
    int rc = 0;
    if (!o.smooth) {
        std::vector<std::uint8_t> probe(bytes);
        for (int i = 0; i < planes && rc == 0; ++i) {
            Plane p = plane(info, probe.data(), i);
            ZanStatus s = zaniFilterDenoiseAdaptiveInitAlloc_8u_C1(&states[static_cast<size_t>(i)], {p.width, p.height},
                                                                   {o.radius, o.radius});
            if (s != zanStsOk) {
                std::fprintf(stderr, "zanvc denoise: plane %d (%dx%d) with radius %d: status %d\n", i, p.width,
                             p.height, o.radius, s);
                rc = 1;
            }
        }
    }

    // Frame k needs frames k - 1 .. k + 1, clamped to the frames that exist.
    Progress progress("denoise", reader.frame_count());
    auto process = [&](long k, const FrameAt& frame) -> bool {
        std::vector<std::uint8_t>* f[3] = {&frame(k - 1), &frame(k), &frame(k + 1)};
        std::memcpy(out.data(), f[1]->data(), bytes);
        for (int i = 0; i < planes; ++i) {
            Plane p[3], d = plane(info, out.data(), i);
            for (int j = 0; j < 3; ++j) p[j] = plane(info, f[j]->data(), i);
            const ZaniSize size = {d.width, d.height};
            ZanStatus s;
            if (o.smooth) {
                if (d.height < 3) continue;
                scratch.assign(2 * static_cast<size_t>(d.height + 3) * static_cast<size_t>(d.width + 3), 0);
                s = zaniFilterDenoiseSmooth_8u_C1R(p[1].data, p[1].step, d.data, d.step, size, o.threshold, {0, 0},
                                                   size, scratch.data());
            } else {
                const Zan8u* src[3] = {p[0].data, p[1].data, p[2].data};
                s = zaniFilterDenoiseAdaptive_8u_C1R(src, p[1].step, d.data, d.step, size, {o.radius, o.radius},
                                                     {0, 0}, size, o.threshold, o.mode,
                                                     states[static_cast<size_t>(i)]);
            }
            if (s != zanStsOk)
                return std::fprintf(stderr, "zanvc denoise: frame %ld plane %d: status %d\n", k, i, s), false;
        }
        if (o.pngBefore && k == o.pngFrame && !write_preview(o.pngBefore, info, *f[1])) return false;
        if (o.pngAfter && k == o.pngFrame && !write_preview(o.pngAfter, info, out)) return false;
        if (!writer.write(out.data(), bytes, err)) return std::fprintf(stderr, "zanvc denoise: %s\n", err.c_str()), false;
        progress.update(k + 1);
        return true;
    };
    long done = 0;
    if (rc == 0 && !for_each_frame(reader, 1, "denoise", process, done)) rc = 1;
    progress.finish();
    for (ZanDenoiseAdaptiveState* s : states)
        if (s) zaniFilterDenoiseAdaptiveFree_8u_C1(s);
    if (!writer.close(err) && rc == 0) {
        std::fprintf(stderr, "zanvc denoise: %s\n", err.c_str());
        rc = 1;
    }
    if (rc == 0) std::fprintf(stderr, "zanvc denoise: %ld frames\n", done);
    return rc;
}

}  // namespace zanvc_tool
