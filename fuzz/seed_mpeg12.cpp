// Writes seed streams for the MPEG-1/2 decoder fuzz target: random blocks of
// levels coded with the library's own block encoders, behind the three
// control bytes the target reads.
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "src/common/scan_tables.h"
#include "tests/api/mpeg12_tables.h"
#include "zanvc.h"

using namespace zan::mpeg12test;

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DIR\n", argv[0]);
        return 2;
    }
    if (mkdir(argv[1], 0755) != 0 && errno != EEXIST) {
        std::perror(argv[1]);
        return 1;
    }
    Zan32u *enc0 = nullptr, *enc1 = nullptr;
    const std::vector<Zan32s> list0 = table_zero().list().array({8, 9}), list1 = table_one().list().array({8, 9});
    if (zaniCreateRLEncodeTable(list0.data(), &enc0) != zanStsOk || zaniCreateRLEncodeTable(list1.data(), &enc1) != zanStsOk) {
        std::fprintf(stderr, "seed_mpeg12: the encoding tables could not be built\n");
        return 1;
    }
    std::vector<Zan32s> dcPairs;
    for (const char* c : kDcLuma) dcPairs.insert(dcPairs.end(), {to_code(c), static_cast<Zan32s>(std::string(c).size())});
    Zan32s scan[64];
    for (int i = 0; i < 64; ++i) scan[i] = zan::ownvc_Zigzag[i];

    std::mt19937 rng(1);
    for (int n = 0; n < 24; ++n) {
        const bool intra = n % 2 == 0, one = n % 4 == 0;
        std::vector<Zan32u> words(64 * 4 * 4, 0);
        Zan32u* put = words.data();
        Zan32s freeBits = 32, pred = 1024;
        for (int b = 0; b < 4; ++b) {
            Zan16s lv[64] = {};
            const int nonzero = 1 + static_cast<int>(rng() % (n < 12 ? 12 : 60));
            Zan32s count = 0;
            for (int k = 0; k < nonzero; ++k) {
                const int pos = scan[1 + rng() % 63];
                if (lv[pos] == 0) ++count;
                lv[pos] = static_cast<Zan16s>(static_cast<int>(rng() % 81) - 40);
                if (lv[pos] == 0) { lv[pos] = 1; }
            }
            if (intra) {
                lv[0] = static_cast<Zan16s>(rng() % 2048);
                if (zaniPutIntraBlock(&put, &freeBits, lv, &pred, dcPairs.data(), one ? enc1 : enc0, scan, one ? 4 : 2,
                                      one ? 6 : 2, count) != zanStsOk)
                    break;
            } else if (zaniPutNonIntraBlock(&put, &freeBits, lv, enc0, scan, 2, 2, count) != zanStsOk) {
                break;
            }
        }
        const std::size_t used = static_cast<std::size_t>(put - words.data()) + 1;
        // Control bytes: the MPEG-2 intra decoder (table one for the
        // table-one streams) or the non-intra one, offset 31, zigzag, QP.
        const unsigned char ctl[3] = {static_cast<unsigned char>(intra ? (one ? 0x80 | 5 : 5) : 3), 31, 7};
        const std::string path = std::string(argv[1]) + "/seed" + std::to_string(n);
        std::FILE* f = std::fopen(path.c_str(), "wb");
        if (!f) {
            std::perror(path.c_str());
            return 1;
        }
        std::fwrite(ctl, 1, 3, f);
        std::fwrite(words.data(), 4, used, f);
        std::fclose(f);
    }
    zaniHuffmanTableFree_32s(enc0);
    zaniHuffmanTableFree_32s(enc1);
    return 0;
}
