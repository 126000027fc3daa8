// Writes seed inputs for the DV segment fuzz target: segments whose blocks
// hold random short codes (amplitude 1 and 2, zero runs, long codes) and
// end-of-block codes, some long enough to overflow into other blocks,
// behind the form byte the target reads.
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

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
    for (int file = 0; file < 24; ++file) {
        const int form = file % 3;
        // One long bit string of codes laid over the whole segment, with the
        // DIF header bytes put back: blocks start and stop mid-code, which
        // gives unfinished and spare blocks alike.
        std::string bits;
        while (bits.size() < 400 * 8) {
            const unsigned r = rng() % 8;
            if (r < 3) bits += "00" + std::to_string(rng() % 2);
            else if (r < 5) bits += "010" + std::to_string(rng() % 2);
            else if (r < 6) bits += "0110";
            else if (r < 7) bits += "1111110" + std::string(6, char('0' + rng() % 2));
            else bits += "1111111" + std::string(8, char('0' + rng() % 2)) + "1";
        }
        std::vector<unsigned char> out(401);
        out[0] = static_cast<unsigned char>(form);
        for (int i = 0; i < 400; ++i) out[static_cast<size_t>(1 + i)] = static_cast<unsigned char>(std::stoi(bits.substr(static_cast<size_t>(8 * i), 8), nullptr, 2));
        for (int m = 0; m < 5; ++m) {
            out[static_cast<size_t>(1 + 80 * m)] = 0x90;
            out[static_cast<size_t>(1 + 80 * m + 3)] = static_cast<unsigned char>(rng() % 16);
        }
        const std::string name = std::string(argv[1]) + "/seed" + std::to_string(file);
        FILE* f = std::fopen(name.c_str(), "wb");
        if (!f) return 1;
        std::fwrite(out.data(), 1, out.size(), f);
        std::fclose(f);
    }
    return 0;
}
