// zanvc cast: CAST denoising over a whole raw video, frame after frame with
// the history carried along.  Planar and grey inputs are filtered plane by
// plane with the one-plane form (one history per plane); packed YUYV 4:2:2
// goes through the interleaved form.  The edge map is the tool's own: the
// larger of the horizontal and vertical differences of the channel's
// neighbours.  The previous frame is the last output (--previous output, the
// default) or the last source (--previous source).
#include <algorithm>
#include <cmath>
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

// Edge strength of each byte of a plane whose channel samples lie `stride`
// bytes apart (1, or 2 and 4 for packed luma and chroma).
void edge_map(const Plane& p, std::vector<std::uint8_t>& e, bool packed) {
    e.assign(static_cast<size_t>(p.step * p.height), 0);
    for (int y = 0; y < p.height; ++y)
        for (int x = 0; x < p.width; ++x) {
            const int s = packed ? (x % 2 == 0 ? 2 : 4) : 1;
            auto at = [&](int xx, int yy) {
                xx = std::clamp(xx, 0, p.width - 1);
                yy = std::clamp(yy, 0, p.height - 1);
                if (packed && (xx - x) % s != 0) xx = x;  // stay in the channel at the border
                return static_cast<int>(p.data[yy * p.step + xx]);
            };
            const int dx = std::abs(at(x + s, y) - at(x - s, y)), dy = std::abs(at(x, y + 1) - at(x, y - 1));
            e[static_cast<size_t>(y * p.step + x)] = static_cast<std::uint8_t>(std::min(255, std::max(dx, dy)));
        }
}

}  // namespace

int cast(int argc, char** argv) {
    VideoInfo hint;
    const char* in = nullptr;
    const char* out = nullptr;
    const char* png = nullptr;
    bool prevSource = false;
    long pngFrame = 2;
    ZanDenoiseCastParams params;
    zaniFilterDenoiseCASTInit(&params);
    for (int i = 0; i < argc; ++i) {
        std::string err;
        const int used = parse_video_option(argc, argv, i, hint, err);
        if (used < 0) return std::fprintf(stderr, "zanvc cast: %s\n", err.c_str()), 2;
        if (used > 0) {
            i += used - 1;
            continue;
        }
        const char* a = argv[i];
        const bool more = i + 1 < argc;
        if (!std::strcmp(a, "--previous") && more) {
            prevSource = !std::strcmp(argv[++i], "source");
        } else if (!std::strcmp(a, "--png") && more) {
            png = argv[++i];
        } else if (!std::strcmp(a, "--png-frame") && more) {
            pngFrame = std::atol(argv[++i]);
        } else if (!std::strcmp(a, "--threshold") && more) {
            params.temporalDifference = static_cast<Zan8u>(std::atoi(argv[++i]));
        } else if (a[0] != '-' && !in) {
            in = a;
        } else if (a[0] != '-' && !out) {
            out = a;
        } else {
            return std::fprintf(stderr, "zanvc cast: unknown argument '%s'\n", a), 2;
        }
    }
    if (!in || !out) return std::fprintf(stderr, "zanvc cast: IN and OUT are needed (see tools/zanvc/commands.h for the options)\n"), 2;
    VideoReader reader;
    std::string err;
    if (!reader.open(in, hint, err)) return std::fprintf(stderr, "zanvc cast: %s\n", err.c_str()), 1;
    const VideoInfo info = reader.info();
    if (info.fmt == PixFmt::Uyvy422)
        return std::fprintf(stderr, "zanvc cast: uyvy422 is not supported (luma must be on even bytes: use yuyv422)\n"), 1;
    const bool packed = info.fmt == PixFmt::Yuyv422;
    VideoWriter writer;
    if (!writer.open(out, info, err)) return std::fprintf(stderr, "zanvc cast: %s\n", err.c_str()), 1;

    const int planes = plane_count(info.fmt);
    std::vector<std::uint8_t> cur, prev, dst(frame_bytes(info)), edge;
    std::vector<std::vector<Zan8u>> hist(static_cast<size_t>(planes));
    Progress progress("cast", reader.frame_count());
    long n = 0;
    while (reader.read(cur, err)) {
        for (int k = 0; k < planes; ++k) {
            const Plane c = plane(info, cur.data(), k), d = plane(info, dst.data(), k);
            const int w = packed ? c.width / 2 : c.width;
            const size_t blocks = packed ? static_cast<size_t>(4 * ((2 * w + 15) / 16) * ((c.height + 3) / 4))
                                         : static_cast<size_t>(((w + 3) / 4) * ((c.height + 3) / 4));
            hist[static_cast<size_t>(k)].resize(blocks);
            edge_map(c, edge, packed);
            const Zan8u* p = n == 0 ? nullptr : plane(info, prev.data(), k).data;
            const ZanStatus st =
                packed ? zaniFilterDenoiseCASTYUV422_8u_C2R(c.data, p, c.step, edge.data(), c.step, {w, c.height}, d.data,
                                                            d.step, hist[static_cast<size_t>(k)].data(), &params)
                       : zaniFilterDenoiseCAST_8u_C1R(c.data, p, c.step, edge.data(), c.step, {w, c.height}, d.data,
                                                      d.step, hist[static_cast<size_t>(k)].data(), &params);
            if (st != zanStsOk) return std::fprintf(stderr, "zanvc cast: status %d on frame %ld\n", st, n), 1;
        }
        if (png && n == pngFrame) {
            std::vector<std::uint8_t> rgb;
            frame_to_rgb(info, cur.data(), rgb);
            const std::string before = std::string(png) + "-before.png", after = std::string(png) + "-after.png";
            if (!write_png(before.c_str(), rgb.data(), info.width, info.height, 3, 3 * info.width, err)) break;
            frame_to_rgb(info, dst.data(), rgb);
            if (!write_png(after.c_str(), rgb.data(), info.width, info.height, 3, 3 * info.width, err)) break;
        }
        if (!writer.write(dst.data(), dst.size(), err)) break;
        prev = prevSource ? cur : dst;
        progress.update(++n);
    }
    progress.finish();
    if (!err.empty() || !writer.close(err)) return std::fprintf(stderr, "zanvc cast: %s\n", err.c_str()), 1;
    std::printf("cast: %ld frames of %dx%d %s\n", n, info.width, info.height, pixfmt_name(info.fmt));
    return 0;
}

}  // namespace zanvc_tool
