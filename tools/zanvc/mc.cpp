// zanvc mc: motion-compensated prediction built only from the exported
// functions.
//
// Every 16x16 block of the current picture is predicted from the reference
// at one vector, given in half samples: the block at (x, y) takes the
// reference at (x + DX/2, y + DY/2).  The prediction comes from
// zaniCopy16x16HP_8u_C1R (acc: bit 0 half sample in x, bit 1 in y); the
// residual (current minus prediction, 16 bits) is then added back through
// zaniMC16x16_8u_C1 at the same position (mcType 8 half in x, 4 half in y),
// which must rebuild the current block exactly.  The report is the residual
// energy per sample: the mean squared residual over the blocks whose
// reference area lies inside the picture.
//
// The built-in input is a synthetic textured reference and current pictures
// made from it with known vectors by plain half-sample interpolation
// (rounding to nearest); the true vector must give a residual of 0 and
// every other nearby vector a larger one.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "commands.h"
#include "zanvc.h"

namespace zanvc_tool {
namespace {

// An 8-bit picture, rows a multiple of 16 bytes apart.
struct Picture {
    Zan32s width = 0, height = 0, step = 0;
    std::vector<Zan8u> px;
    Picture(Zan32s w, Zan32s h) : width(w), height(h), step((w + 15) & ~15), px(static_cast<size_t>(step * h)) {}
    Zan8u* at(Zan32s x, Zan32s y) { return px.data() + static_cast<ptrdiff_t>(y) * step + x; }
    Zan32s get(Zan32s x, Zan32s y) const { return px[static_cast<size_t>(y * step + x)]; }
};

struct Vec {
    Zan32s x, y;  // half samples
};

// Binary 8-bit PGM (P5, maxval up to 255).
bool read_pgm(const char* path, std::vector<Zan8u>* pixels, Zan32s* w, Zan32s* h) {
    FILE* f = std::fopen(path, "rb");
    if (!f) {
        std::fprintf(stderr, "zanvc: cannot open %s\n", path);
        return false;
    }
    auto number = [&](long* v) {
        int ch = std::fgetc(f);
        while (ch == '#' || (ch != EOF && std::strchr(" \t\r\n", ch))) {
            if (ch == '#')
                while (ch != EOF && ch != '\n') ch = std::fgetc(f);
            ch = std::fgetc(f);
        }
        long n = 0;
        bool any = false;
        while (ch >= '0' && ch <= '9' && n < 1000000) {
            n = n * 10 + (ch - '0');
            any = true;
            ch = std::fgetc(f);
        }
        *v = n;
        return any;
    };
    long width = 0, height = 0, maxval = 0;
    bool ok = std::fgetc(f) == 'P' && std::fgetc(f) == '5' && number(&width) && number(&height) && number(&maxval) &&
              width > 0 && height > 0 && maxval > 0 && maxval <= 255 && width * height <= (1L << 26);
    if (ok) {
        pixels->resize(static_cast<size_t>(width * height));
        ok = std::fread(pixels->data(), 1, pixels->size(), f) == pixels->size();
    }
    std::fclose(f);
    if (!ok) {
        std::fprintf(stderr, "zanvc: %s is not a binary 8-bit PGM (P5) picture\n", path);
        return false;
    }
    *w = static_cast<Zan32s>(width);
    *h = static_cast<Zan32s>(height);
    return true;
}

struct Result {
    double mse = 0;      // mean squared residual per sample
    long blocks = 0;     // blocks measured
    long mismatches = 0; // blocks that the residual add did not rebuild exactly
    bool failed = false; // an export returned a failure
};

// Predicts every 16x16 block of cur whose reference area lies inside ref.
Result predict(Picture& cur, Picture& ref, Vec v, Zan32s roundControl) {
    Result out;
    const Zan32s ix = v.x >> 1, iy = v.y >> 1, hx = v.x & 1, hy = v.y & 1;
    const Zan32s acc = hx | (hy << 1), mcType = (hx ? 8 : 0) | (hy ? 4 : 0);
    alignas(16) Zan8u pred[16 * 16];
    alignas(16) Zan8u rebuilt[16 * 16];
    alignas(16) Zan16s residual[16 * 16];
    double sum = 0;
    for (Zan32s by = 0; by + 16 <= cur.height; by += 16)
        for (Zan32s bx = 0; bx + 16 <= cur.width; bx += 16) {
            const Zan32s rx = bx + ix, ry = by + iy;
            if (rx < 0 || ry < 0 || rx + 16 + hx > ref.width || ry + 16 + hy > ref.height) continue;
            if (zaniCopy16x16HP_8u_C1R(ref.at(rx, ry), ref.step, pred, 16, acc, roundControl) != zanStsOk) {
                out.failed = true;
                return out;
            }
            long blockSum = 0;
            for (Zan32s y = 0; y < 16; ++y)
                for (Zan32s x = 0; x < 16; ++x) {
                    const Zan32s r = cur.get(bx + x, by + y) - pred[y * 16 + x];
                    residual[y * 16 + x] = static_cast<Zan16s>(r);
                    blockSum += r * r;
                }
            if (zaniMC16x16_8u_C1(ref.at(rx, ry), ref.step, residual, 32, rebuilt, 16, mcType, roundControl) !=
                zanStsOk) {
                out.failed = true;
                return out;
            }
            for (Zan32s y = 0; y < 16; ++y)
                if (std::memcmp(rebuilt + 16 * y, cur.at(bx, by + y), 16) != 0) {
                    ++out.mismatches;
                    break;
                }
            sum += static_cast<double>(blockSum);
            ++out.blocks;
        }
    out.mse = out.blocks ? sum / (256.0 * static_cast<double>(out.blocks)) : 0;
    return out;
}

// --------------------------------------------------------- built-in input

std::uint32_t hash(std::uint32_t seed, Zan32s x, Zan32s y) {
    std::uint32_t h = seed * 0x9E3779B9u ^ static_cast<std::uint32_t>(x) * 0x85EBCA6Bu ^
                      static_cast<std::uint32_t>(y) * 0xC2B2AE35u;
    h ^= h >> 15;
    h *= 0x2C1B3C6Du;
    h ^= h >> 12;
    return h ^ (h >> 16);
}

// Smooth value noise on an 8-sample lattice, a gradient and a fine grain.
Zan8u scene(std::uint32_t seed, Zan32s x, Zan32s y) {
    const Zan32s gx = x >> 3, gy = y >> 3, fx = x & 7, fy = y & 7;
    auto lattice = [&](Zan32s i, Zan32s j) { return static_cast<Zan32s>(hash(seed, i, j) & 255); };
    const Zan32s top = lattice(gx, gy) * (8 - fx) + lattice(gx + 1, gy) * fx;
    const Zan32s bottom = lattice(gx, gy + 1) * (8 - fx) + lattice(gx + 1, gy + 1) * fx;
    const Zan32s v = 40 + x / 4 + y / 3 + (((top * (8 - fy) + bottom * fy) >> 6) - 128) / 2 +
                     static_cast<Zan32s>(hash(seed + 7, x, y) % 41) - 20;
    return static_cast<Zan8u>(std::clamp(v, 0, 255));
}

// The current picture seen through vector v: each sample is the reference
// at (x + v.x / 2, y + v.y / 2), interpolated and rounded to nearest.
void shift(Picture& ref, Picture& cur, Vec v) {
    const Zan32s ix = v.x >> 1, iy = v.y >> 1, hx = v.x & 1, hy = v.y & 1;
    for (Zan32s y = 0; y < cur.height; ++y)
        for (Zan32s x = 0; x < cur.width; ++x) {
            const Zan32s sx = std::clamp(x + ix, 0, ref.width - 1 - hx), sy = std::clamp(y + iy, 0, ref.height - 1 - hy);
            const Zan32s a = ref.get(sx, sy), b = ref.get(sx + hx, sy), c = ref.get(sx, sy + hy),
                         d = ref.get(sx + hx, sy + hy);
            *cur.at(x, y) = static_cast<Zan8u>((a + b + c + d + 2) >> 2);
        }
}

bool parse_vector(const char* text, Vec* v) {
    int x = 0, y = 0;
    char tail = 0;
    if (std::sscanf(text, "%d,%d%c", &x, &y, &tail) != 2 || x < -256 || x > 256 || y < -256 || y > 256) return false;
    *v = {x, y};
    return true;
}

void print_vec(const char* label, Vec v) {
    std::printf("%s(%+d, %+d) half samples = (%+.1f, %+.1f)", label, v.x, v.y, v.x / 2.0, v.y / 2.0);
}

}  // namespace

int mc(int argc, char** argv) {
    Vec vec{0, 0};
    bool haveVec = false;
    Zan32s roundControl = 0;
    double maxMse = -1;
    std::vector<const char*> files;
    for (int i = 0; i < argc; ++i) {
        const char* a = argv[i];
        if (std::strcmp(a, "--vector") == 0 && i + 1 < argc) {
            if (!parse_vector(argv[++i], &vec)) {
                std::fprintf(stderr, "zanvc: --vector takes DX,DY in half samples, e.g. -5,3\n");
                return 2;
            }
            haveVec = true;
        } else if (std::strcmp(a, "--round") == 0 && i + 1 < argc) {
            roundControl = std::atoi(argv[++i]) & 1;
        } else if (std::strcmp(a, "--max-mse") == 0 && i + 1 < argc) {
            maxMse = std::atof(argv[++i]);
        } else if (a[0] == '-') {
            std::fprintf(stderr, "zanvc: unknown option %s (see zanvc help)\n", a);
            return 2;
        } else {
            files.push_back(a);
        }
    }
    std::printf("zanvc motion compensation -- %s, path %s\n", zanvcGetLibVersion()->name, active_path());

    if (!files.empty()) {
        if (files.size() != 2 || !haveVec) {
            std::fprintf(stderr, "zanvc: mc takes CUR.pgm REF.pgm --vector DX,DY, or no pictures\n");
            return 2;
        }
        std::vector<Zan8u> c, r;
        Zan32s cw = 0, ch = 0, rw = 0, rh = 0;
        if (!read_pgm(files[0], &c, &cw, &ch) || !read_pgm(files[1], &r, &rw, &rh)) return 2;
        if (cw != rw || ch != rh || cw < 16 || ch < 16) {
            std::fprintf(stderr, "zanvc: the pictures must be of one size, at least 16x16\n");
            return 2;
        }
        Picture cur(cw, ch), ref(rw, rh);
        for (Zan32s y = 0; y < ch; ++y) {
            std::memcpy(cur.at(0, y), &c[static_cast<size_t>(y * cw)], static_cast<size_t>(cw));
            std::memcpy(ref.at(0, y), &r[static_cast<size_t>(y * rw)], static_cast<size_t>(rw));
        }
        const Result at = predict(cur, ref, vec, roundControl);
        const Result still = predict(cur, ref, {0, 0}, roundControl);
        if (at.failed || still.failed) {
            std::printf("FAILED: an export returned a failure status\n");
            return 1;
        }
        std::printf("input        %s against %s, %dx%d, roundControl %d\n", files[0], files[1], cw, ch, roundControl);
        print_vec("vector       ", vec);
        std::printf("\nblocks       %ld of 16x16 with their reference inside the picture\n", at.blocks);
        std::printf("residual     %.3f per sample at the vector, %.3f at (0, 0)\n", at.mse, still.mse);
        if (at.mismatches) {
            std::printf("FAILED: %ld blocks not rebuilt exactly by zaniMC16x16_8u_C1\n", at.mismatches);
            return 1;
        }
        if (maxMse >= 0 && !(at.mse <= maxMse && at.blocks > 0)) {
            std::printf("FAILED: residual %.3f above %.3f\n", at.mse, maxMse);
            return 1;
        }
        return 0;
    }

    // Built-in: each known vector, and every vector within one sample of it.
    Picture ref(176, 144);
    for (Zan32s y = 0; y < ref.height; ++y)
        for (Zan32s x = 0; x < ref.width; ++x) *ref.at(x, y) = scene(1, x, y);
    std::vector<Vec> vectors = {{0, 0}, {6, -4}, {5, -3}, {3, 0}, {0, 7}, {-9, 2}};
    if (haveVec) vectors = {vec};
    bool ok = true;
    std::printf("input        built-in 176x144 reference, current pictures shifted by known vectors\n");
    for (Vec v : vectors) {
        Picture cur(ref.width, ref.height);
        shift(ref, cur, v);
        const Result truth = predict(cur, ref, v, 0);
        Vec best = v;
        double bestMse = truth.mse, nextMse = 1e30;
        long mismatches = truth.mismatches;
        for (Zan32s dy = -2; dy <= 2; ++dy)
            for (Zan32s dx = -2; dx <= 2; ++dx) {
                if (dx == 0 && dy == 0) continue;
                const Result r = predict(cur, ref, {v.x + dx, v.y + dy}, 0);
                ok = ok && !r.failed;
                mismatches += r.mismatches;
                nextMse = std::min(nextMse, r.mse);
                if (r.mse < bestMse) {
                    bestMse = r.mse;
                    best = {v.x + dx, v.y + dy};
                }
            }
        print_vec("  shift ", v);
        std::printf(": residual %.3f per sample over %ld blocks; nearest other vector %.3f", truth.mse, truth.blocks,
                    nextMse);
        const bool good = !truth.failed && truth.mse == 0 && best.x == v.x && best.y == v.y && nextMse > 0 &&
                          mismatches == 0;
        std::printf("%s\n", good ? "" : "  <- FAILED");
        ok = ok && good;
    }
    std::printf("\n%s: the true vector predicts exactly, every other vector within a sample does worse,\n"
                "and the residual added back rebuilds every block\n",
                ok ? "ok" : "FAILED");
    return ok ? 0 : 1;
}

}  // namespace zanvc_tool
