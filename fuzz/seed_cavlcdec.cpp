// Writes seed streams for the CAVLC fuzz target: runs of valid blocks of
// every form (and Exp-Golomb codes) coded with the test writer, behind the
// four control bytes the target reads.
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "tests/api/cavlc_tables.h"

using namespace zan::cavlctest;

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DIR\n", argv[0]);
        return 2;
    }
    if (mkdir(argv[1], 0755) != 0 && errno != EEXIST) {
        std::perror(argv[1]);
        return 1;
    }
    std::mt19937 rng(1);
    int written = 0;
    for (int form = 0; form < 9; ++form)
        for (int n = 0; n < 6; ++n) {
            const Zan32u selCode = static_cast<Zan32u>(n % 8);
            const Zan32u sel = selCode < 6 ? selCode : selCode == 6 ? 8u : 200u;
            const int col = sel < 2 ? 0 : sel < 4 ? 1 : sel < 8 ? 2 : 5;
            const bool ac = form != 2 && (n & 1);
            std::uint8_t ctl[4] = {static_cast<std::uint8_t>(form), static_cast<std::uint8_t>(selCode << 5),
                                   static_cast<std::uint8_t>(ac ? 1 : 0), 0xF0};
            if (form == 1) ctl[2] = 16;
            Bits b;
            for (int k = 0; k < 12; ++k) {
                if (form == 8) {
                    const Zan32u v = rng() % 300u;
                    int len = 0;
                    while (((v + 1) >> (len + 1)) != 0) ++len;
                    b.put(0, len);
                    b.put(v + 1, len + 1);
                    continue;
                }
                const int size = form <= 3 ? (ac ? 15 : 16) : form <= 5 ? 4 : 8;
                std::vector<int> c(static_cast<std::size_t>(size), 0);
                const int count = static_cast<int>(rng() % static_cast<unsigned>(size + 1));
                for (int i = 0; i < count; ++i) {
                    const int mag = rng() % 4 ? 1 + static_cast<int>(rng() % 3u) : 1 + static_cast<int>(rng() % 3000u);
                    c[rng() % static_cast<unsigned>(size)] = rng() % 2 ? mag : -mag;
                }
                if (form <= 3)
                    write_block(b, c, col, TzKind::Block4x4);
                else
                    write_block(b, c, form <= 5 ? 3 : 4, form <= 5 ? TzKind::Dc420 : TzKind::Dc422);
            }
            std::vector<std::uint8_t> bytes(ctl, ctl + 4);
            const std::size_t nw = static_cast<std::size_t>((b.n + 31) / 32);
            for (std::size_t i = 0; i < nw; ++i) {
                const Zan32u w = b.w[i];
                bytes.insert(bytes.end(), reinterpret_cast<const std::uint8_t*>(&w), reinterpret_cast<const std::uint8_t*>(&w) + 4);
            }
            const std::string path = std::string(argv[1]) + "/seed_" + std::to_string(form) + "_" + std::to_string(n);
            FILE* f = std::fopen(path.c_str(), "wb");
            if (!f) {
                std::perror(path.c_str());
                return 1;
            }
            std::fwrite(bytes.data(), 1, bytes.size(), f);
            std::fclose(f);
            ++written;
        }
    std::printf("seed_cavlcdec: %d seeds\n", written);
    return 0;
}
