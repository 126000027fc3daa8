// zanvc mosquito: the mosquito noise filter over a whole raw video, every
// plane of every frame, each plane with its own state; the previous frame
// is the last source frame.  Packed inputs are refused (the filter works on
// single planes).
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "commands.h"
#include "picture_io.h"
#include "zanvc.h"

namespace zanvc_tool {

int mosquito(int argc, char** argv) {
    VideoInfo hint;
    const char* in = nullptr;
    const char* out = nullptr;
    const char* png = nullptr;
    long pngFrame = 0;
    for (int i = 0; i < argc; ++i) {
        std::string err;
        const int used = parse_video_option(argc, argv, i, hint, err);
        if (used < 0) return std::fprintf(stderr, "zanvc mosquito: %s\n", err.c_str()), 2;
        if (used > 0) {
            i += used - 1;
            continue;
        }
        const char* a = argv[i];
        if (!std::strcmp(a, "--png") && i + 1 < argc) {
            png = argv[++i];
        } else if (!std::strcmp(a, "--png-frame") && i + 1 < argc) {
            pngFrame = std::atol(argv[++i]);
        } else if (a[0] != '-' && !in) {
            in = a;
        } else if (a[0] != '-' && !out) {
            out = a;
        } else {
            return std::fprintf(stderr, "zanvc mosquito: unknown argument '%s'\n", a), 2;
        }
    }
    if (!in || !out) return std::fprintf(stderr, "zanvc mosquito: IN and OUT are needed (see tools/zanvc/commands.h for the options)\n"), 2;
    VideoReader reader;
    std::string err;
    if (!reader.open(in, hint, err)) return std::fprintf(stderr, "zanvc mosquito: %s\n", err.c_str()), 1;
    const VideoInfo info = reader.info();
    if (info.fmt == PixFmt::Yuyv422 || info.fmt == PixFmt::Uyvy422)
        return std::fprintf(stderr, "zanvc mosquito: packed input is not supported; use a planar format\n"), 1;
    VideoWriter writer;
    if (!writer.open(out, info, err)) return std::fprintf(stderr, "zanvc mosquito: %s\n", err.c_str()), 1;
    const int planes = plane_count(info.fmt);
    std::vector<std::uint8_t> cur, prev, dst(frame_bytes(info));
    std::vector<ZanDenoiseMosquitoState*> states(static_cast<size_t>(planes), nullptr);
    int status = 0;
    for (int k = 0; k < planes && !status; ++k) {
        std::vector<std::uint8_t> tmp(frame_bytes(info));
        const Plane p = plane(info, tmp.data(), k);
        if (zaniFilterDenoiseMosquitoInitAlloc_8u_C1(&states[static_cast<size_t>(k)], {p.width, p.height}) != zanStsOk)
            status = 1;
    }
    if (status) std::fprintf(stderr, "zanvc mosquito: no state for the planes\n");
    Progress progress("mosquito", reader.frame_count());
    long n = 0;
    while (!status && reader.read(cur, err)) {
        if (n == 0) prev = cur;
        for (int k = 0; k < planes && !status; ++k) {
            const Plane c = plane(info, cur.data(), k), p = plane(info, prev.data(), k), d = plane(info, dst.data(), k);
            const Zan8u* src[2] = {p.data, c.data};
            const ZanStatus st = zaniFilterDenoiseMosquito_8u_C1R(src, c.step, d.data, d.step, {c.width, c.height},
                                                                  states[static_cast<size_t>(k)], {0, 0},
                                                                  {c.width, c.height});
            if (st != zanStsOk) {
                std::fprintf(stderr, "zanvc mosquito: status %d on frame %ld plane %d\n", st, n, k);
                status = 1;
            }
        }
        if (status) break;
        if (png && n == pngFrame) {
            std::vector<std::uint8_t> rgb;
            frame_to_rgb(info, cur.data(), rgb);
            const std::string before = std::string(png) + "-before.png", after = std::string(png) + "-after.png";
            if (!write_png(before.c_str(), rgb.data(), info.width, info.height, 3, 3 * info.width, err)) break;
            frame_to_rgb(info, dst.data(), rgb);
            if (!write_png(after.c_str(), rgb.data(), info.width, info.height, 3, 3 * info.width, err)) break;
        }
        if (!writer.write(dst.data(), dst.size(), err)) break;
        prev = cur;
        progress.update(++n);
    }
    progress.finish();
    for (ZanDenoiseMosquitoState* s : states)
        if (s) zaniFilterDenoiseMosquitoFree_8u_C1(s);
    if (status) return status;
    if (!err.empty() || !writer.close(err)) return std::fprintf(stderr, "zanvc mosquito: %s\n", err.c_str()), 1;
    std::printf("mosquito: %ld frames of %dx%d %s\n", n, info.width, info.height, pixfmt_name(info.fmt));
    return 0;
}

}  // namespace zanvc_tool
