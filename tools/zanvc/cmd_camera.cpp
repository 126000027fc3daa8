// zanvc camera: the camera pipeline over a whole raw 4:2:2 video (uyvy422,
// or yuyv422 reordered on the fly): shrink by 2, 4 or 8, convert to 16-bit
// RGB (565 or 555, little-endian) and rotate, frame by frame, writing the
// raw RGB frames and a PNG of the first one.  With --check every output
// pixel is compared with a double-precision model of the conversion (plain
// means over each pixel's source area, real coefficients) and the command
// fails when a colour component differs from it by more than 1.
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

// The largest difference between the picture and the model, in units of
// the colour fields.
double model_deviation(const std::uint8_t* src, int step, int w, int h, const Zan16u* out, int z, int interp,
                       int format, int rotation) {
    const int ow = w / z, oh = h / z;
    const bool swap = rotation == 1 || rotation == 2;
    const int dw = swap ? oh : ow;
    double worst = 0;
    for (int i = 0; i < oh; ++i)
        for (int j = 0; j < ow; ++j) {
            int r, c;
            switch (rotation) {
                case 0: r = i, c = j; break;
                case 1: r = ow - 1 - j, c = i; break;
                case 2: r = j, c = oh - 1 - i; break;
                default: r = oh - 1 - i, c = ow - 1 - j; break;
            }
            const Zan16u px = out[r * dw + c];
            const int pair0 = j & ~1;
            const bool single = (ow & 1) && j == ow - 1;
            auto at = [&](int y, int b) { return static_cast<double>(src[y * step + b]); };
            double yv = 0, cb = 0, cr = 0;
            if (interp == 1) {
                yv = at(i * z, 2 * z * j + 1);
                cb = at(i * z, 2 * z * pair0);
                cr = at(i * z, 2 * z * pair0 + 2);
            } else {
                const int chroma = single ? z / 2 : z;  // chroma samples per row of the area
                for (int q = 0; q < z; ++q) {
                    for (int p = 0; p < z; ++p) yv += at(i * z + q, 2 * (z * j + p) + 1);
                    for (int p = 0; p < chroma; ++p) {
                        cb += at(i * z + q, 2 * z * pair0 + 4 * p);
                        cr += at(i * z + q, 2 * z * pair0 + 4 * p + 2);
                    }
                }
                yv /= z * z;
                cb /= z * chroma;
                cr /= z * chroma;
            }
            const double l = 1192.0 * yv - 19072.0, u = cb - 128.0, v = cr - 128.0;
            auto q = [](double x, double hi) { return std::min(std::max(std::floor(x), 0.0), hi); };
            const double mb = q((l + 2065.0 * u) / 8192.0, 31), mr = q((l + 1634.0 * v) / 8192.0, 31);
            const double mg = format ? q((l - 401.0 * u - 833.0 * v) / 8192.0, 31) : q((l - 401.0 * u - 833.0 * v) / 4096.0, 63);
            const int b = px & 31, g = format ? (px >> 5) & 31 : (px >> 5) & 63, rr = format ? (px >> 10) & 31 : px >> 11;
            worst = std::max({worst, std::fabs(b - mb), std::fabs(g - mg), std::fabs(rr - mr)});
        }
    return worst;
}

}  // namespace

int camera(int argc, char** argv) {
    VideoInfo hint;
    hint.fmt = PixFmt::Uyvy422;
    const char* in = nullptr;
    const char* out = nullptr;
    const char* png = nullptr;
    int zoom = 2, interp = 2, rotation = 0, format = 0;
    bool check = false;
    for (int i = 0; i < argc; ++i) {
        std::string err;
        const int used = parse_video_option(argc, argv, i, hint, err);
        if (used < 0) return std::fprintf(stderr, "zanvc camera: %s\n", err.c_str()), 2;
        if (used > 0) {
            i += used - 1;
            continue;
        }
        const char* a = argv[i];
        const bool more = i + 1 < argc;
        if (!std::strcmp(a, "--zoom") && more) {
            zoom = std::atoi(argv[++i]);
        } else if (!std::strcmp(a, "--interp") && more) {
            ++i;
            interp = !std::strcmp(argv[i], "nearest") ? 1 : !std::strcmp(argv[i], "mean") ? 2 : std::atoi(argv[i]);
        } else if (!std::strcmp(a, "--rotate") && more) {
            rotation = std::atoi(argv[++i]);
        } else if (!std::strcmp(a, "--format") && more) {
            format = std::atoi(argv[++i]) == 555 ? 1 : 0;
        } else if (!std::strcmp(a, "--png") && more) {
            png = argv[++i];
        } else if (!std::strcmp(a, "--check")) {
            check = true;
        } else if (a[0] != '-' && !in) {
            in = a;
        } else if (a[0] != '-' && !out) {
            out = a;
        } else {
            return std::fprintf(stderr, "zanvc camera: unknown argument '%s'\n", a), 2;
        }
    }
    if (!in || !out) return std::fprintf(stderr, "zanvc camera: IN and OUT are needed (see tools/zanvc/commands.h for the options)\n"), 2;
    VideoReader reader;
    std::string err;
    if (!reader.open(in, hint, err)) return std::fprintf(stderr, "zanvc camera: %s\n", err.c_str()), 1;
    const VideoInfo info = reader.info();
    if (info.fmt != PixFmt::Uyvy422 && info.fmt != PixFmt::Yuyv422)
        return std::fprintf(stderr, "zanvc camera: the input must be packed 4:2:2 (uyvy422 or yuyv422)\n"), 1;
    const int w = info.width, h = info.height, step = 2 * w;
    if (w < zoom || h < zoom) return std::fprintf(stderr, "zanvc camera: the picture is smaller than the factor\n"), 1;
    const int ow = w / zoom, oh = h / zoom;
    const bool swap = rotation == 1 || rotation == 2;
    const int dw = swap ? oh : ow, dh = swap ? ow : oh;
    std::FILE* f = std::fopen(out, "wb");
    if (!f) return std::fprintf(stderr, "zanvc camera: cannot write %s\n", out), 1;
    std::vector<std::uint8_t> frame;
    std::vector<Zan16u> rgb(static_cast<size_t>(dw * dh));
    Progress progress("camera", reader.frame_count());
    long n = 0;
    double worst = 0;
    int status = 0;
    while (reader.read(frame, err)) {
        if (info.fmt == PixFmt::Yuyv422)  // Y0 U Y1 V -> U Y0 V Y1
            for (size_t k = 0; k + 1 < frame.size(); k += 2) std::swap(frame[k], frame[k + 1]);
        const ZanStatus st = zaniResizeCCRotate_8u_C2R(frame.data(), step, {w, h}, rgb.data(), 2 * dw, zoom, interp,
                                                       format, rotation);
        if (st < 0) {
            std::fprintf(stderr, "zanvc camera: status %d on frame %ld\n", st, n);
            status = 1;
            break;
        }
        if (check) worst = std::max(worst, model_deviation(frame.data(), step, w, h, rgb.data(), zoom, interp, format, rotation));
        if (png && n == 0) {
            std::vector<std::uint8_t> px(static_cast<size_t>(3 * dw * dh));
            for (size_t k = 0; k < rgb.size(); ++k) {
                const int v = rgb[k];
                const int r = format ? (v >> 10) & 31 : v >> 11, g = format ? (v >> 5) & 31 : (v >> 5) & 63, b = v & 31;
                px[3 * k] = static_cast<std::uint8_t>(r * 255 / 31);
                px[3 * k + 1] = static_cast<std::uint8_t>(format ? g * 255 / 31 : g * 255 / 63);
                px[3 * k + 2] = static_cast<std::uint8_t>(b * 255 / 31);
            }
            if (!write_png(png, px.data(), dw, dh, 3, 3 * dw, err)) break;
        }
        std::vector<std::uint8_t> bytes(rgb.size() * 2);
        for (size_t k = 0; k < rgb.size(); ++k) {
            bytes[2 * k] = static_cast<std::uint8_t>(rgb[k] & 0xFF);
            bytes[2 * k + 1] = static_cast<std::uint8_t>(rgb[k] >> 8);
        }
        if (std::fwrite(bytes.data(), 1, bytes.size(), f) != bytes.size()) {
            err = "write failed";
            break;
        }
        progress.update(++n);
    }
    progress.finish();
    if (std::fclose(f) != 0 && err.empty()) err = "write failed";
    if (status) return status;
    if (!err.empty()) return std::fprintf(stderr, "zanvc camera: %s\n", err.c_str()), 1;
    std::printf("camera: %ld frames of %dx%d to %dx%d RGB%s, factor %d, %s, rotation %d\n", n, w, h, dw, dh,
                format ? "555" : "565", zoom, interp == 1 ? "nearest" : "mean", rotation);
    if (check) {
        std::printf("model deviation %.3f (largest, in colour-field units)\n", worst);
        if (worst > 1.0) return 1;
    }
    return 0;
}

}  // namespace zanvc_tool
