// zanvc search: block motion estimation built only from the exported
// functions.
//
// Every 16x16 block of the current picture is searched over the window
// -R..R-1 (both directions) of the reference: one zaniSAD16x16xNI_8u16u_C1R
// call per window row gives 2R candidate SADs and the best of them.  The best
// full-sample vector is then refined to half samples with
// zaniSAD16x16_8u32s at the eight surrounding half-sample positions (mcType 4
// vertical, 8 horizontal, 12 both).
//
// The built-in input is a synthetic reference (smooth gradient plus a
// deterministic texture at two scales) and a current picture made from it
// with known motion: a global pan, a square moving another way at full-sample
// precision and a square moving by a half-sample vector.  The current
// picture of the half-sample square is interpolated with the same rounding as
// the library, so its true vector gives a SAD of 0.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "commands.h"
#include "zancore.h"

namespace zanvc_tool {
namespace {

// ------------------------------------------------------------- pictures

// An 8-bit picture with a margin of readable samples on every side, rows
// a multiple of 16 bytes apart, first sample of the margin 64-byte aligned.
class Plane {
public:
    Plane(Zan32s width, Zan32s height, Zan32s margin)
        : width_(width), height_(height), margin_(margin), step_((width + 2 * margin + 15) & ~15) {
        mem_ = static_cast<Zan8u*>(zanMalloc(step_ * (height + 2 * margin)));
        if (!mem_) {
            std::fprintf(stderr, "zanvc: out of memory\n");
            std::exit(1);
        }
        std::memset(mem_, 0, static_cast<size_t>(step_) * static_cast<size_t>(height + 2 * margin));
    }
    ~Plane() { zanFree(mem_); }
    Plane(const Plane&) = delete;
    Plane& operator=(const Plane&) = delete;

    Zan32s width() const { return width_; }
    Zan32s height() const { return height_; }
    Zan32s margin() const { return margin_; }
    Zan32s step() const { return step_; }
    // Sample (x, y); -margin <= x < width + margin, likewise y.
    Zan8u* at(Zan32s x, Zan32s y) { return mem_ + static_cast<ptrdiff_t>(y + margin_) * step_ + (x + margin_); }
    Zan8u get(Zan32s x, Zan32s y) const {
        return mem_[static_cast<ptrdiff_t>(y + margin_) * step_ + (x + margin_)];
    }
    // Copies the outermost samples of the picture into the margin.
    void extend_edges() {
        for (Zan32s y = 0; y < height_; ++y) {
            std::memset(at(-margin_, y), get(0, y), static_cast<size_t>(margin_));
            std::memset(at(width_, y), get(width_ - 1, y), static_cast<size_t>(margin_));
        }
        const size_t rowBytes = static_cast<size_t>(width_ + 2 * margin_);
        for (Zan32s m = 1; m <= margin_; ++m) {
            std::memcpy(at(-margin_, -m), at(-margin_, 0), rowBytes);
            std::memcpy(at(-margin_, height_ - 1 + m), at(-margin_, height_ - 1), rowBytes);
        }
    }

private:
    Zan32s width_, height_, margin_, step_;
    Zan8u* mem_;
};

std::uint32_t hash(std::uint32_t seed, Zan32s x, Zan32s y) {
    std::uint32_t h = seed * 0x9E3779B9u ^ static_cast<std::uint32_t>(x) * 0x85EBCA6Bu ^
                      static_cast<std::uint32_t>(y) * 0xC2B2AE35u;
    h ^= h >> 15;
    h *= 0x2C1B3C6Du;
    h ^= h >> 12;
    h *= 0x297A2D39u;
    return h ^ (h >> 15);
}

// The synthetic scene at integer position (x, y), any sign: a smooth
// gradient, value noise on an 8-sample lattice (bilinear between lattice
// values) and a finer per-sample grain.
Zan8u scene(std::uint32_t seed, Zan32s x, Zan32s y) {
    const Zan32s gx = x >> 3, gy = y >> 3, fx = x & 7, fy = y & 7;
    auto lattice = [&](Zan32s i, Zan32s j) { return static_cast<Zan32s>(hash(seed, i, j) & 255); };
    const Zan32s top = lattice(gx, gy) * (8 - fx) + lattice(gx + 1, gy) * fx;
    const Zan32s bottom = lattice(gx, gy + 1) * (8 - fx) + lattice(gx + 1, gy + 1) * fx;
    const Zan32s smooth = (top * (8 - fy) + bottom * fy) >> 6;  // 0..255
    const Zan32s grain = static_cast<Zan32s>(hash(seed + 1, x, y) & 31) - 16;
    const Zan32s v = 64 + x / 3 + y / 4 + (smooth - 128) / 2 + grain;
    return static_cast<Zan8u>(std::clamp(v, 0, 255));
}

// Vectors are in half samples throughout.
struct Vec {
    Zan32s x, y;
    bool operator==(const Vec&) const = default;
};

// Reference sample at half-sample position (2x + v.x, 2y + v.y), rounded as
// the library's half-sample positions round.
Zan8u predict(const Plane& ref, Zan32s x, Zan32s y, Vec v) {
    const Zan32s ix = x + (v.x >> 1), iy = y + (v.y >> 1);
    const bool hx = v.x & 1, hy = v.y & 1;
    const Zan32s a = ref.get(ix, iy);
    if (hx && hy) return static_cast<Zan8u>((a + ref.get(ix + 1, iy) + ref.get(ix, iy + 1) + ref.get(ix + 1, iy + 1) + 2) >> 2);
    if (hx) return static_cast<Zan8u>((a + ref.get(ix + 1, iy) + 1) >> 1);
    if (hy) return static_cast<Zan8u>((a + ref.get(ix, iy + 1) + 1) >> 1);
    return static_cast<Zan8u>(a);
}

// A region of the current picture that moved by one vector.  Later regions
// lie on top of earlier ones; the first covers the whole picture.
struct Region {
    const char* what;
    Zan32s x0, y0, x1, y1;  // [x0, x1) x [y0, y1)
    Vec motion;
};

// ------------------------------------------------------------ the search

struct BlockResult {
    Vec found;
    Zan32s sad;
    int region;  // index of the region whose vector the block should find, -1 if it straddles regions
};

struct SearchStats {
    long sadsEvaluated = 0;
    long mismatches = 0;  // xNI results that a single-block call did not confirm
};

// Full search at full samples, one xNI call per window row, then half-sample
// refinement.  cur needs no margin; ref needs R + 16 samples of margin.
BlockResult search_block(Plane& cur, Plane& ref, Zan32s bx, Zan32s by, Zan32s range, SearchStats& stats) {
    alignas(16) Zan16u results[64];
    const Zan32s numCand = 2 * range;
    const Zan8u* c = cur.at(bx, by);
    Vec best{0, 0};
    Zan32s bestSad = 1 << 30;
    for (Zan32s dy = -range; dy < range; ++dy) {
        Zan32s index = -1;
        ZanStatus st = zaniSAD16x16xNI_8u16u_C1R(c, cur.step(), ref.at(bx - range, by + dy), ref.step(), results,
                                                  numCand, &index);
        if (st != zanStsOk) {
            std::fprintf(stderr, "zanvc: zaniSAD16x16xNI_8u16u_C1R returned status %d\n", st);
            std::exit(1);
        }
        stats.sadsEvaluated += numCand;
        const Zan32s dx = index - range, sad = results[index];
        // The lowest SAD wins; among equals the shorter vector.
        if (sad < bestSad || (sad == bestSad && std::abs(dx) + std::abs(dy) < std::abs(best.x) + std::abs(best.y))) {
            bestSad = sad;
            best = {dx, dy};
        }
    }
    // The winner again through the single-block function: the two exports
    // must agree.
    Zan32s check = -1;
    zaniSAD16x16_8u32s(c, cur.step(), ref.at(bx + best.x, by + best.y), ref.step(), &check, 0);
    ++stats.sadsEvaluated;
    if (check != bestSad) ++stats.mismatches;

    // Half-sample refinement: position (2 best + h) reads from the full
    // sample at or left of / above it.
    Vec bestHalf{2 * best.x, 2 * best.y};
    for (Zan32s hy = -1; hy <= 1; ++hy)
        for (Zan32s hx = -1; hx <= 1; ++hx) {
            if (hx == 0 && hy == 0) continue;
            const Zan32s x = best.x + (hx < 0 ? -1 : 0), y = best.y + (hy < 0 ? -1 : 0);
            const Zan32s mcType = (hx != 0 ? 8 : 0) + (hy != 0 ? 4 : 0);
            Zan32s sad = 0;
            zaniSAD16x16_8u32s(c, cur.step(), ref.at(bx + x, by + y), ref.step(), &sad, mcType);
            ++stats.sadsEvaluated;
            if (sad < bestSad) {
                bestSad = sad;
                bestHalf = {2 * best.x + hx, 2 * best.y + hy};
            }
        }
    return {bestHalf, bestSad, -1};
}

// ------------------------------------------------------------ reporting

std::string vec_text(Vec v) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "(%+.1f, %+.1f)", v.x / 2.0, v.y / 2.0);
    return buf;
}

// Letters for the vectors found, most frequent first.
struct Legend {
    std::vector<Vec> vecs;
    std::vector<int> counts;
    char letter(Vec v) const {
        for (size_t i = 0; i < vecs.size(); ++i)
            if (vecs[i] == v) return i < 26 ? static_cast<char>('A' + i) : '#';
        return '?';
    }
};

Legend make_legend(const std::vector<BlockResult>& blocks) {
    Legend l;
    for (const BlockResult& b : blocks) {
        auto it = std::find(l.vecs.begin(), l.vecs.end(), b.found);
        if (it == l.vecs.end()) {
            l.vecs.push_back(b.found);
            l.counts.push_back(1);
        } else {
            ++l.counts[static_cast<size_t>(it - l.vecs.begin())];
        }
    }
    // Stable sort by count, descending.
    std::vector<size_t> order(l.vecs.size());
    for (size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return l.counts[a] > l.counts[b]; });
    Legend sorted;
    for (size_t i : order) {
        sorted.vecs.push_back(l.vecs[i]);
        sorted.counts.push_back(l.counts[i]);
    }
    return sorted;
}

struct Options {
    Zan32s width = 176, height = 144, range = 16;
    std::uint32_t seed = 1;
    bool map = true;
    const char* curFile = nullptr;
    const char* refFile = nullptr;
    bool expect = false;  // --expect given: the motion of the whole picture pair, in half samples
    Vec expected{0, 0};
};

bool parse_int(const char* text, long lo, long hi, long* out) {
    char* end = nullptr;
    long v = std::strtol(text, &end, 10);
    if (!*text || *end || v < lo || v > hi) return false;
    *out = v;
    return true;
}

// Reads a binary 8-bit PGM (P5, maxval <= 255).  Returns false with a message.
bool read_pgm(const char* path, Zan32s* w, Zan32s* h, std::vector<Zan8u>* pixels) {
    FILE* f = std::fopen(path, "rb");
    if (!f) {
        std::fprintf(stderr, "zanvc: cannot open %s\n", path);
        return false;
    }
    auto token = [&](long* v) {
        int ch = std::fgetc(f);
        while (ch == '#' || (ch != EOF && std::strchr(" \t\r\n", ch))) {
            if (ch == '#')
                while (ch != EOF && ch != '\n') ch = std::fgetc(f);
            ch = std::fgetc(f);
        }
        long n = 0;
        bool any = false;
        while (ch >= '0' && ch <= '9') {
            n = n * 10 + (ch - '0');
            any = true;
            if (n > 1000000) return false;
            ch = std::fgetc(f);
        }
        *v = n;
        return any;  // the one whitespace byte after the number is consumed
    };
    long width = 0, height = 0, maxval = 0;
    bool ok = std::fgetc(f) == 'P' && std::fgetc(f) == '5' && token(&width) && token(&height) && token(&maxval) &&
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

}  // namespace

int search(int argc, char** argv) {
    Options o;
    std::vector<const char*> files;
    for (int i = 0; i < argc; ++i) {
        const char* a = argv[i];
        long v = 0;
        if (std::strcmp(a, "--range") == 0 && i + 1 < argc) {
            if (!parse_int(argv[++i], 8, 32, &v) || v % 8) {
                std::fprintf(stderr, "zanvc: --range takes 8, 16, 24 or 32\n");
                return 2;
            }
            o.range = static_cast<Zan32s>(v);
        } else if (std::strcmp(a, "--seed") == 0 && i + 1 < argc) {
            if (!parse_int(argv[++i], 0, 0x7FFFFFFF, &v)) {
                std::fprintf(stderr, "zanvc: --seed takes a non-negative number\n");
                return 2;
            }
            o.seed = static_cast<std::uint32_t>(v);
        } else if (std::strcmp(a, "--size") == 0 && i + 1 < argc) {
            unsigned w = 0, h = 0;
            char tail = 0;
            if (std::sscanf(argv[++i], "%ux%u%c", &w, &h, &tail) != 2 || w < 64 || h < 64 || w > 4096 || h > 4096 ||
                w % 16 || h % 16) {
                std::fprintf(stderr, "zanvc: --size takes WxH, multiples of 16 from 64 to 4096\n");
                return 2;
            }
            o.width = static_cast<Zan32s>(w);
            o.height = static_cast<Zan32s>(h);
        } else if (std::strcmp(a, "--expect") == 0 && i + 1 < argc) {
            // DX,DY in samples, whole or half.
            double dx = 0, dy = 0;
            char tail = 0;
            if (std::sscanf(argv[++i], "%lf,%lf%c", &dx, &dy, &tail) != 2 || std::fabs(dx) > 64 || std::fabs(dy) > 64 ||
                2 * dx != std::floor(2 * dx) || 2 * dy != std::floor(2 * dy)) {
                std::fprintf(stderr, "zanvc: --expect takes DX,DY in whole or half samples, e.g. -3,2.5\n");
                return 2;
            }
            o.expect = true;
            o.expected = {static_cast<Zan32s>(2 * dx), static_cast<Zan32s>(2 * dy)};
        } else if (std::strcmp(a, "--no-map") == 0) {
            o.map = false;
        } else if (a[0] == '-') {
            std::fprintf(stderr, "zanvc: unknown option %s (see zanvc help)\n", a);
            return 2;
        } else {
            files.push_back(a);
        }
    }
    if (files.size() != 0 && files.size() != 2) {
        std::fprintf(stderr, "zanvc: search takes two pictures, CUR.pgm REF.pgm, or none\n");
        return 2;
    }
    const bool builtIn = files.empty();

    // ---- pictures
    std::vector<Region> regions;
    std::vector<Zan8u> curPixels, refPixels;
    if (!builtIn) {
        Zan32s cw = 0, ch = 0, rw = 0, rh = 0;
        if (!read_pgm(files[0], &cw, &ch, &curPixels) || !read_pgm(files[1], &rw, &rh, &refPixels)) return 2;
        if (cw != rw || ch != rh) {
            std::fprintf(stderr, "zanvc: the pictures differ in size (%dx%d, %dx%d)\n", cw, ch, rw, rh);
            return 2;
        }
        if (cw < 16 || ch < 16) {
            std::fprintf(stderr, "zanvc: the pictures are smaller than one 16x16 block\n");
            return 2;
        }
        o.width = cw;
        o.height = ch;
    }
    // Whole blocks only; a partial block at the right or bottom is left out.
    const Zan32s blocksX = o.width / 16, blocksY = o.height / 16;
    const Zan32s margin = o.range + 16;
    Plane ref(o.width, o.height, margin), cur(o.width, o.height, 0);
    if (builtIn) {
        // The reference carries the scene into its margin, as if the camera
        // saw a little more than the picture: blocks at the edge have their
        // true match too.
        for (Zan32s y = -margin; y < o.height + margin; ++y)
            for (Zan32s x = -margin; x < o.width + margin; ++x) *ref.at(x, y) = scene(o.seed, x, y);
        const Zan32s w = o.width, h = o.height;
        regions = {
            {"pan", 0, 0, w, h, {6, -4}},
            // Not aligned to the block grid: blocks on its border see two motions.
            {"square", w / 2, h / 4, w / 2 + 48, h / 4 + 48, {-10, 8}},
            // Aligned to the grid, moving by half samples in both directions.
            {"half-sample square", 16, h - 48, 48, h - 16, {5, -3}},
        };
        for (Zan32s y = 0; y < h; ++y)
            for (Zan32s x = 0; x < w; ++x) {
                Vec v = regions[0].motion;
                for (const Region& r : regions)
                    if (x >= r.x0 && x < r.x1 && y >= r.y0 && y < r.y1) v = r.motion;
                *cur.at(x, y) = predict(ref, x, y, v);
            }
    } else {
        for (Zan32s y = 0; y < o.height; ++y) {
            std::memcpy(cur.at(0, y), &curPixels[static_cast<size_t>(y * o.width)], static_cast<size_t>(o.width));
            std::memcpy(ref.at(0, y), &refPixels[static_cast<size_t>(y * o.width)], static_cast<size_t>(o.width));
        }
        ref.extend_edges();
        if (o.expect) {
            // Scored: the blocks whose expected match lies inside the reference.
            // A sample at x matches the reference at x + (dx >> 1), and at the
            // sample after it too when dx is odd (dx in half samples).
            const Zan32s dx = o.expected.x, dy = o.expected.y;
            const Zan32s x0 = std::max(0, -(dx >> 1)), x1 = std::min(o.width, o.width - (dx >> 1) - (dx & 1));
            const Zan32s y0 = std::max(0, -(dy >> 1)), y1 = std::min(o.height, o.height - (dy >> 1) - (dy & 1));
            regions = {{"expected", x0, y0, x1, y1, o.expected}};
        }
    }
    // Scoring needs known motion: the built-in pictures, or --expect.
    const bool scored = !regions.empty();

    // ---- search
    std::vector<BlockResult> blocks;
    SearchStats stats;
    const auto t0 = std::chrono::steady_clock::now();
    for (Zan32s by = 0; by < blocksY; ++by)
        for (Zan32s bx = 0; bx < blocksX; ++bx) blocks.push_back(search_block(cur, ref, 16 * bx, 16 * by, o.range, stats));
    const auto t1 = std::chrono::steady_clock::now();
    const double ms = std::chrono::duration<double, std::milli>(t1 - t0).count();

    // ---- which region each block lies wholly inside, if any
    std::vector<int> known(regions.size(), 0), right(regions.size(), 0);
    for (Zan32s by = 0; by < blocksY; ++by)
        for (Zan32s bx = 0; bx < blocksX; ++bx) {
            BlockResult& b = blocks[static_cast<size_t>(by * blocksX + bx)];
            // The topmost region of every sample must be the same one for the
            // block to have one known vector; otherwise it straddles regions.
            int top = -1;
            bool mixed = false;
            for (Zan32s y = 16 * by; y < 16 * by + 16 && !mixed; ++y)
                for (Zan32s x = 16 * bx; x < 16 * bx + 16; ++x) {
                    int here = -1;
                    for (size_t r = 0; r < regions.size(); ++r)
                        if (x >= regions[r].x0 && x < regions[r].x1 && y >= regions[r].y0 && y < regions[r].y1)
                            here = static_cast<int>(r);
                    if (top == -1) top = here;
                    if (here != top) {
                        mixed = true;
                        break;
                    }
                }
            b.region = mixed ? -1 : top;
            if (b.region >= 0) {
                ++known[static_cast<size_t>(b.region)];
                if (b.found == regions[static_cast<size_t>(b.region)].motion) ++right[static_cast<size_t>(b.region)];
            }
        }

    // ---- report
    const ZanLibraryVersion* v = zanvcGetLibVersion();
    long sadSum = 0;
    for (const BlockResult& b : blocks) sadSum += b.sad;
    const size_t nBlocks = blocks.size();
    std::printf("zanvc motion search -- %s, path %s\n", v->name, active_path());
    if (builtIn)
        std::printf("input        built-in %dx%d pictures, texture seed %u\n", o.width, o.height, o.seed);
    else
        std::printf("input        %s against %s, %dx%d\n", files[0], files[1], o.width, o.height);
    std::printf("blocks       %zu (%dx%d of 16x16), window %d..%d, half-sample refinement\n", nBlocks, blocksX,
                blocksY, -o.range, o.range - 1);
    std::printf("SADs         %ld (%d xNI calls of %d candidates per block, 9 single-block calls)\n",
                stats.sadsEvaluated, 2 * o.range, 2 * o.range);
    std::printf("time         %.3f ms, %.1f ns per SAD\n", ms, 1e6 * ms / static_cast<double>(stats.sadsEvaluated));
    std::printf("mean SAD     %.1f per block (%.2f per sample)\n", static_cast<double>(sadSum) / static_cast<double>(nBlocks),
                static_cast<double>(sadSum) / static_cast<double>(nBlocks) / 256.0);

    int allKnown = 0, allRight = 0;
    if (scored) {
        std::printf("known motion\n");
        for (size_t r = 0; r < regions.size(); ++r) {
            std::printf("  %-20s %-16s %3d of %3d blocks found it\n", regions[r].what, vec_text(regions[r].motion).c_str(),
                        right[r], known[r]);
            allKnown += known[r];
            allRight += right[r];
        }
        std::printf("  %-20s %-16s %3zu blocks, not scored\n", "straddling regions", "",
                    nBlocks - static_cast<size_t>(allKnown));
        std::printf("matched      %d of %d blocks with a known vector (%.1f%%)\n", allRight, allKnown,
                    allKnown ? 100.0 * allRight / allKnown : 0.0);
    }

    if (o.map) {
        const Legend legend = make_legend(blocks);
        std::printf("\nvector field, one letter per block%s\n",
                    scored ? "; right: + found the known vector, x did not, ~ straddles regions or not scored" : "");
        for (Zan32s by = 0; by < blocksY; ++by) {
            std::string line = "  ", marks = "    ";
            for (Zan32s bx = 0; bx < blocksX; ++bx) {
                const BlockResult& b = blocks[static_cast<size_t>(by * blocksX + bx)];
                line += legend.letter(b.found);
                line += ' ';
                if (scored) {
                    marks += b.region < 0 ? '~' : b.found == regions[static_cast<size_t>(b.region)].motion ? '+' : 'x';
                    marks += ' ';
                }
            }
            std::string text = line + (scored ? marks : std::string());
            while (!text.empty() && text.back() == ' ') text.pop_back();
            std::printf("%s\n", text.c_str());
        }
        std::printf("  ");
        for (size_t i = 0; i < legend.vecs.size() && i < 26; ++i)
            std::printf("%c %s x%d%s", static_cast<char>('A' + i), vec_text(legend.vecs[i]).c_str(), legend.counts[i],
                        i + 1 < legend.vecs.size() && i < 25 ? ",  " : "");
        if (legend.vecs.size() > 26) std::printf(",  # %zu other vectors", legend.vecs.size() - 26);
        std::printf("\n");
    }

    if (stats.mismatches) {
        std::printf("\nFAILED: %ld blocks where zaniSAD16x16xNI_8u16u_C1R and zaniSAD16x16_8u32s disagree\n",
                    stats.mismatches);
        return 1;
    }
    if (scored) {
        const int panKnown = known[0], panRight = right[0];
        const bool ok = panKnown > 0 && 10 * panRight >= 9 * panKnown && allKnown > 0 && 10 * allRight >= 9 * allKnown;
        std::printf("\n%s: %d of %d %s blocks, %d of %d blocks with a known vector (90%% needed)\n",
                    ok ? "ok" : "FAILED", panRight, panKnown, builtIn ? "panned" : "scored", allRight, allKnown);
        return ok ? 0 : 1;
    }
    return 0;
}

}  // namespace zanvc_tool
