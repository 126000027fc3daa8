// Writes seed streams for the coefficient decoder fuzz target: random blocks
// coded with the library's own encoders, behind the three control bytes the
// target reads (decoder, flags and scan, quantiser).
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "zanvc.h"

namespace {

// One block of n nonzero levels at random positions, magnitudes up to max.
void random_block(std::mt19937& rng, Zan16s* b, int n, int max, int first) {
    for (int k = 0; k < 64; ++k) b[k] = 0;
    for (int k = 0; k < n; ++k) {
        const int pos = first + static_cast<int>(rng() % static_cast<unsigned>(64 - first));
        int m = (rng() % 4 == 0) ? 1 + static_cast<int>(rng() % static_cast<unsigned>(max)) : 1 + static_cast<int>(rng() % 3);
        b[pos] = static_cast<Zan16s>((rng() & 1) ? -m : m);
    }
}

int count(const Zan16s* b, int first) {
    int c = 0;
    for (int k = first; k < 64; ++k) c += b[k] != 0;
    return c;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DIR\n", argv[0]);
        return 2;
    }
    if (mkdir(argv[1], 0755) != 0 && errno != EEXIST) {
        std::perror(argv[1]);
        return 1;
    }
    std::mt19937 rng(7);
    int files = 0;
    for (int which = 0; which < 15; ++which)
        for (int variant = 0; variant < 4; ++variant) {
            // Flags: bit 0 advanced intra (luma/chroma for the MPEG-4 DC),
            // 1 modified quantisation, 2 reversible codes, 3 separate DC,
            // 4-5 scan (3: none), 6 cbp, 7 weights.
            const int flags = (variant & 1) | ((variant & 2) ? 0x06 : 0) | 0x40 | ((variant & 2) ? 0x80 : 0);
            const Zan32s adv = flags & 1, modQ = (flags >> 1) & 1, rvlc = (flags >> 2) & 1, sep = 0;
            std::vector<Zan8u> buf(4096, 0);
            Zan8u* p = buf.data();
            Zan32s off = 0;
            Zan16s b[64];
            for (int blk = 0; blk < 6; ++blk) {
                const int n = 1 + static_cast<int>(rng() % (blk % 3 == 2 ? 40 : 10));
                ZanStatus st = zanStsOk;
                switch (which) {
                    case 0: st = zaniEncodeDCIntra_H263_16s1u(static_cast<Zan16s>(1 + rng() % 254), &p, &off); break;
                    case 1:
                    case 3:
                        random_block(rng, b, n, modQ ? 1000 : 127, adv ? 0 : 1);
                        if (which == 3 && !adv) zaniEncodeDCIntra_H263_16s1u(static_cast<Zan16s>(1 + rng() % 254), &p, &off);
                        if (count(b, adv ? 0 : 1))
                            st = zaniEncodeCoeffsIntra_H263_16s1u(b, &p, &off, count(b, adv ? 0 : 1), adv, modQ, 0);
                        break;
                    case 2:
                    case 4:
                        random_block(rng, b, n, modQ ? 1000 : 127, 0);
                        st = zaniEncodeCoeffsInter_H263_16s1u(b, &p, &off, count(b, 0), modQ, 0);
                        break;
                    case 5:
                    case 7:
                        random_block(rng, b, n, 127, 1);
                        b[0] = static_cast<Zan16s>(1 + rng() % 254);
                        st = zaniEncodeCoeffsIntra_H261_16s1u(b, &p, &off, count(b, 0), 0);
                        break;
                    case 6:
                    case 8:
                        random_block(rng, b, n, 127, 0);
                        st = zaniEncodeCoeffsInter_H261_16s1u(b, &p, &off, count(b, 0), 0);
                        break;
                    case 9:
                        st = zaniEncodeDCIntra_MPEG4_16s1u(static_cast<Zan16s>(static_cast<int>(rng() % 4095) - 2047), &p,
                                                           &off, adv);
                        break;
                    case 10:
                    case 13:
                        random_block(rng, b, n, 2047, 0);
                        st = zaniEncodeCoeffsIntra_MPEG4_16s1u(b, &p, &off, count(b, 0), which == 13 ? 1 : rvlc, sep,
                                                               which == 13 ? -1 : 0);
                        break;
                    default:
                        random_block(rng, b, n, 2047, 0);
                        st = zaniEncodeCoeffsInter_MPEG4_16s1u(b, &p, &off, count(b, 0), which == 14 ? 1 : rvlc,
                                                               which == 14 ? -1 : 0);
                        break;
                }
                if (st != zanStsOk) {
                    std::fprintf(stderr, "seed_coefdec: encoder failed (%d)\n", st);
                    return 1;
                }
            }
            const std::size_t used = static_cast<std::size_t>(p - buf.data()) + (off ? 1 : 0);
            const unsigned char ctl[3] = {static_cast<unsigned char>(which), static_cast<unsigned char>(flags), 6};
            const std::string path = std::string(argv[1]) + "/seed" + std::to_string(files++);
            std::FILE* f = std::fopen(path.c_str(), "wb");
            if (!f) {
                std::perror(path.c_str());
                return 1;
            }
            std::fwrite(ctl, 1, 3, f);
            std::fwrite(buf.data(), 1, used, f);
            std::fclose(f);
        }
    return 0;
}
