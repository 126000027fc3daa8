// zanvc demo (the default command): a built-in synthetic clip goes through
// the example H.264 intra encoder and back through the example decoder, both
// written against the library's public interface.  It prints the stream
// size, the PSNR against the clip, whether the decoder's pictures equal the
// encoder's reconstruction byte for byte, and the speed of both; it writes
// the stream so that any player can show it, and fails (exit 1) on any
// difference.
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include <unistd.h>

#include "commands.h"
#include "decoder.h"
#include "encoder.h"

namespace zanvc_tool {
namespace {

// A moving picture: a textured background drifting right and down, a ring
// pattern moving the other way, a bright square crossing the picture, a
// little noise; chroma with its own slow waves.
void synthesize(int w, int h, int t, std::vector<std::uint8_t>& pic) {
    pic.resize(h264ex::frame_bytes(w, h));
    std::uint32_t seed = 12345u + 977u * static_cast<std::uint32_t>(t);
    auto noise = [&seed]() {
        seed = seed * 1664525u + 1013904223u;
        return static_cast<int>((seed >> 24) % 7) - 3;
    };
    const double cx = w * 0.7 - 3.0 * t, cy = h * 0.4 + 1.5 * t;
    const int sq = 40, sx = (10 + 6 * t) % (w - sq), sy = h / 2 - sq / 2 + t;
    std::uint8_t* y = pic.data();
    for (int j = 0; j < h; ++j)
        for (int i = 0; i < w; ++i) {
            const double u = i - 2.0 * t, v = j - 1.0 * t;
            double s = 110 + 0.25 * (u + v) * 0.5 + 45 * std::sin(u * 0.11) * std::cos(v * 0.07) +
                       18 * std::sin((u * 0.6 + v * 0.8) * 0.35);
            const double r = std::hypot(i - cx, j - cy);
            if (r < 70) s += 40 * std::cos(r * 0.45);
            if (i >= sx && i < sx + sq && j >= sy && j < sy + sq) s = 225 - ((i - sx) ^ (j - sy)) % 8;
            s += noise();
            y[static_cast<std::size_t>(j) * w + i] = static_cast<std::uint8_t>(s < 0 ? 0 : s > 255 ? 255 : s);
        }
    std::uint8_t* cb = pic.data() + static_cast<std::size_t>(w) * h;
    std::uint8_t* cr = cb + static_cast<std::size_t>(w / 2) * (h / 2);
    for (int j = 0; j < h / 2; ++j)
        for (int i = 0; i < w / 2; ++i) {
            const double a = 128 + 40 * std::sin((i + j + 3.0 * t) * 0.05);
            const double b = 128 + 35 * std::cos((i - j - 2.0 * t) * 0.06) + 20 * std::sin(j * 0.2);
            cb[static_cast<std::size_t>(j) * (w / 2) + i] = static_cast<std::uint8_t>(a);
            cr[static_cast<std::size_t>(j) * (w / 2) + i] = static_cast<std::uint8_t>(b);
        }
}

double psnr(double sse, double n) { return sse == 0 ? 99.99 : 10.0 * std::log10(255.0 * 255.0 * n / sse); }

}  // namespace

int demo(int argc, char** argv) {
    int w = 352, h = 288, frames = 10, qp = 26;
    bool deblock = true;
    std::string out_name = "zanvc-demo.264";
    for (int i = 0; i < argc; ++i) {
        const std::string a = argv[i];
        const bool v = i + 1 < argc;
        if (a == "--qp" && v) {
            qp = std::atoi(argv[++i]);
        } else if (a == "--frames" && v) {
            frames = std::atoi(argv[++i]);
        } else if (a == "--size" && v) {
            if (std::sscanf(argv[++i], "%dx%d", &w, &h) != 2) w = 0;
        } else if (a == "--out" && v) {
            out_name = argv[++i];
        } else if (a == "--no-deblock") {
            deblock = false;
        } else {
            std::fprintf(stderr, "zanvc demo: unknown option '%s'\n", argv[i]);
            return 2;
        }
    }
    if (w < 64 || h < 64 || w > 4096 || h > 4096 || (w & 1) || (h & 1) || frames < 1 || frames > 1000 || qp < 0 ||
        qp > 51) {
        std::fprintf(stderr, "zanvc demo: size must be even, 64x64 to 4096x4096; 1 to 1000 frames; QP 0..51\n");
        return 2;
    }

    std::printf("zanvc demo: the example H.264 intra encoder and decoder, through libzanvcu8 (path %s)\n",
                active_path());
    std::vector<std::vector<std::uint8_t>> clip(static_cast<std::size_t>(frames));
    for (int t = 0; t < frames; ++t) synthesize(w, h, t, clip[static_cast<std::size_t>(t)]);
    std::printf("clip     %dx%d, %d pictures of moving texture, made in the program\n", w, h, frames);

    h264ex::EncoderConfig cfg;
    cfg.width = w;
    cfg.height = h;
    cfg.qp = qp;
    cfg.deblock = deblock;
    std::string err;
    h264ex::Encoder enc;
    if (!enc.open(cfg, err)) {
        std::fprintf(stderr, "zanvc demo: %s\n", err.c_str());
        return 2;
    }
    std::vector<std::uint8_t> stream;
    std::vector<std::vector<std::uint8_t>> recon(static_cast<std::size_t>(frames));
    int i4 = 0, i16 = 0;
    const auto t0 = std::chrono::steady_clock::now();
    const std::clock_t c0 = std::clock();
    for (int t = 0; t < frames; ++t) {
        h264ex::FrameInfo fi;
        if (!enc.encode(clip[static_cast<std::size_t>(t)].data(), stream, &recon[static_cast<std::size_t>(t)], &fi, err)) {
            std::fprintf(stderr, "zanvc demo: encoder: %s\n", err.c_str());
            return 1;
        }
        i4 += fi.mbs_i4x4;
        i16 += fi.mbs_i16x16;
    }
    const double enc_s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    const double enc_cpu = static_cast<double>(std::clock() - c0) / CLOCKS_PER_SEC;

    double sse[3] = {0, 0, 0};
    const std::size_t ys = static_cast<std::size_t>(w) * h, fs = h264ex::frame_bytes(w, h);
    for (int t = 0; t < frames; ++t)
        for (std::size_t k = 0; k < fs; ++k) {
            const double d = static_cast<double>(clip[static_cast<std::size_t>(t)][k]) -
                             static_cast<double>(recon[static_cast<std::size_t>(t)][k]);
            sse[k < ys ? 0 : k < ys + ys / 4 ? 1 : 2] += d * d;
        }
    const double ny = static_cast<double>(ys) * frames;
    std::printf("encoder  QP %d, CAVLC (Baseline profile), loop filter %s: %zu bytes, %.1f kbit/picture\n", qp,
                deblock ? "on" : "off", stream.size(), static_cast<double>(stream.size()) * 8 / 1000.0 / frames);
    std::printf("         macroblocks Intra 4x4 %d, Intra 16x16 %d; PSNR Y %.2f U %.2f V %.2f dB\n", i4, i16,
                psnr(sse[0], ny), psnr(sse[1], ny / 4), psnr(sse[2], ny / 4));

    int decoded = 0, equal = 0;
    bool format_ok = true;
    const auto t1 = std::chrono::steady_clock::now();
    const std::clock_t c1 = std::clock();
    const bool dec_ok = h264ex::decode_annexb(
        stream.data(), stream.size(),
        [&](const h264ex::DecodedFrame& f) {
            if (f.width != w || f.height != h || f.bit_depth != 8 || f.chroma_format != 1) format_ok = false;
            if (decoded < frames && f.data == recon[static_cast<std::size_t>(decoded)]) ++equal;
            ++decoded;
        },
        err);
    const double dec_s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t1).count();
    const double dec_cpu = static_cast<double>(std::clock() - c1) / CLOCKS_PER_SEC;
    if (!dec_ok) std::printf("decoder  error: %s\n", err.c_str());
    auto rate = [](int n, double s) { return s > 0 ? n / s : 0.0; };
    std::printf("speed    encoder %.1f pictures/s, decoder %.1f pictures/s (by the clock)\n", rate(frames, enc_s),
                rate(decoded, dec_s));
    std::printf("         encoder %.1f pictures/s, decoder %.1f pictures/s (by processor time)\n",
                rate(frames, enc_cpu), rate(decoded, dec_cpu));
    const bool exact = dec_ok && format_ok && decoded == frames && equal == frames;
    std::printf("check    decoder output equals the encoder's reconstruction: %s (%d of %d pictures equal, %d decoded)\n",
                exact ? "yes, byte for byte" : "NO", equal, frames, decoded);

    FILE* f = std::fopen(out_name.c_str(), "wb");
    bool written = f && std::fwrite(stream.data(), 1, stream.size(), f) == stream.size();
    if (f && std::fclose(f) != 0) written = false;
    std::string where = out_name;
    char cwd[4096];
    if (!out_name.empty() && out_name[0] != '/' && getcwd(cwd, sizeof cwd)) where = std::string(cwd) + "/" + out_name;
    if (written)
        std::printf("wrote    %s (H.264 Annex B; e.g. ffplay %s)\n", where.c_str(), out_name.c_str());
    else
        std::printf("could not write %s\n", out_name.c_str());
    return exact && written ? 0 : 1;
}

}  // namespace zanvc_tool
