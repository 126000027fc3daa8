// zanvc-h264enc: encodes a raw planar 4:2:0 file into an H.264 Annex B
// stream of intra pictures, through the library's public interface.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "encoder.h"

namespace {

void usage() {
    std::fprintf(stderr,
                 "usage: zanvc-h264enc IN.yuv WIDTH HEIGHT OUT.264 [options]\n"
                 "  IN.yuv is planar 8-bit 4:2:0 (yuv420p); every picture becomes an IDR picture.\n"
                 "  --qp N            quantiser 0..51 (default 26)\n"
                 "  --cabac           CABAC, Main profile (default CAVLC, Baseline profile)\n"
                 "  --no-deblock      loop filter off\n"
                 "  --recon FILE      write the decoded pictures (what a decoder outputs)\n"
                 "  --frames N        encode at most N pictures\n"
                 "  --cabac-buffer N  bytes of the CABAC buffer each picture starts with (it grows)\n");
}

bool parse_int(const char* s, long lo, long hi, int& v) {
    char* end = nullptr;
    const long x = std::strtol(s, &end, 10);
    if (end == s || *end != '\0' || x < lo || x > hi) return false;
    v = static_cast<int>(x);
    return true;
}

double psnr(double sse, double n) { return sse == 0 ? 99.99 : 10.0 * std::log10(255.0 * 255.0 * n / sse); }

}  // namespace

int main(int argc, char** argv) {
    if (argc < 5) {
        usage();
        return 2;
    }
    h264ex::EncoderConfig cfg;
    const char* in_name = argv[1];
    const char* out_name = argv[4];
    const char* recon_name = nullptr;
    int frames_max = -1;
    if (!parse_int(argv[2], 2, 16384, cfg.width) || !parse_int(argv[3], 2, 16384, cfg.height)) {
        usage();
        return 2;
    }
    for (int i = 5; i < argc; ++i) {
        const std::string a = argv[i];
        const bool has_value = i + 1 < argc;
        int v = 0;
        if (a == "--qp" && has_value && parse_int(argv[i + 1], 0, 51, v)) {
            cfg.qp = v;
            ++i;
        } else if (a == "--cabac") {
            cfg.cabac = true;
        } else if (a == "--no-deblock") {
            cfg.deblock = false;
        } else if (a == "--recon" && has_value) {
            recon_name = argv[++i];
        } else if (a == "--frames" && has_value && parse_int(argv[i + 1], 0, 1000000000, v)) {
            frames_max = v;
            ++i;
        } else if (a == "--cabac-buffer" && has_value && parse_int(argv[i + 1], 8, 1000000000, v)) {
            cfg.cabac_buffer = static_cast<std::size_t>(v);
            ++i;
        } else {
            std::fprintf(stderr, "zanvc-h264enc: bad option '%s'\n", argv[i]);
            usage();
            return 2;
        }
    }
    std::string err;
    h264ex::Encoder enc;
    if (!enc.open(cfg, err)) {
        std::fprintf(stderr, "zanvc-h264enc: %s\n", err.c_str());
        return 2;
    }
    FILE* in = std::fopen(in_name, "rb");
    if (!in) {
        std::fprintf(stderr, "zanvc-h264enc: cannot open %s\n", in_name);
        return 1;
    }
    FILE* out = std::fopen(out_name, "wb");
    FILE* rec = recon_name ? std::fopen(recon_name, "wb") : nullptr;
    if (!out || (recon_name && !rec)) {
        std::fprintf(stderr, "zanvc-h264enc: cannot write %s\n", !out ? out_name : recon_name);
        std::fclose(in);
        if (out) std::fclose(out);
        return 1;
    }
    const std::size_t fsize = h264ex::frame_bytes(cfg.width, cfg.height);
    std::vector<std::uint8_t> pic(fsize), stream, recon;
    int frames = 0, i4 = 0, i16 = 0, moves = 0, retries = 0;
    std::size_t total = 0;
    double sse[3] = {0, 0, 0};
    double seconds = 0, cpu_seconds = 0;
    int rc = 0;
    while ((frames_max < 0 || frames < frames_max) && std::fread(pic.data(), 1, fsize, in) == fsize) {
        stream.clear();
        h264ex::FrameInfo fi;
        const auto t0 = std::chrono::steady_clock::now();
        const std::clock_t c0 = std::clock();
        const bool ok = enc.encode(pic.data(), stream, &recon, &fi, err);
        cpu_seconds += static_cast<double>(std::clock() - c0) / CLOCKS_PER_SEC;
        seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        if (!ok) {
            std::fprintf(stderr, "zanvc-h264enc: picture %d: %s\n", frames, err.c_str());
            rc = 1;
            break;
        }
        std::fwrite(stream.data(), 1, stream.size(), out);
        if (rec) std::fwrite(recon.data(), 1, recon.size(), rec);
        const std::size_t ys = static_cast<std::size_t>(cfg.width) * static_cast<std::size_t>(cfg.height);
        for (std::size_t k = 0; k < fsize; ++k) {
            const double d = static_cast<double>(pic[k]) - static_cast<double>(recon[k]);
            sse[k < ys ? 0 : k < ys + ys / 4 ? 1 : 2] += d * d;
        }
        total += fi.bytes;
        i4 += fi.mbs_i4x4;
        i16 += fi.mbs_i16x16;
        moves += fi.cabac_buffer_moves;
        retries += fi.cabac_block_retries;
        ++frames;
    }
    std::fclose(in);
    if (std::fclose(out) != 0) rc = 1;
    if (rec && std::fclose(rec) != 0) rc = 1;
    if (rc != 0) return rc;
    if (frames == 0) {
        std::fprintf(stderr, "zanvc-h264enc: no whole picture in %s\n", in_name);
        return 1;
    }
    const double ny = static_cast<double>(cfg.width) * cfg.height * frames;
    std::printf("%d pictures %dx%d, QP %d, %s%s: %zu bytes (%.1f kbit/picture)\n", frames, cfg.width, cfg.height,
                cfg.qp, cfg.cabac ? "CABAC" : "CAVLC", cfg.deblock ? "" : ", no loop filter", total,
                static_cast<double>(total) * 8 / 1000.0 / frames);
    std::printf("PSNR Y %.3f U %.3f V %.3f dB; macroblocks Intra 4x4 %d, Intra 16x16 %d\n", psnr(sse[0], ny),
                psnr(sse[1], ny / 4), psnr(sse[2], ny / 4), i4, i16);
    std::printf("encoding %.3f s, %.2f pictures/s; processor time %.3f s, %.2f pictures/s\n", seconds,
                seconds > 0 ? frames / seconds : 0.0, cpu_seconds, cpu_seconds > 0 ? frames / cpu_seconds : 0.0);
    if (cfg.cabac) std::printf("CABAC buffer moves %d, residual blocks repeated %d\n", moves, retries);
    return 0;
}
