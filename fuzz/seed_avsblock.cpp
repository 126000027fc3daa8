// Writes seed streams for the AVS block fuzz target: for each decoder and
// scan type, runs of short codes, escapes with long levels, end-of-block
// codes at once, and zero prefixes, behind the two control bytes the
// target reads.
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

// Bits, most significant first, packed into bytes.
struct Bits {
    std::vector<std::uint8_t> bytes;
    int n = 0;
    void put(std::uint64_t v, int len) {
        for (int i = len - 1; i >= 0; --i) {
            if (n % 8 == 0) bytes.push_back(0);
            if ((v >> i) & 1) bytes.back() = static_cast<std::uint8_t>(bytes.back() | (0x80 >> (n % 8)));
            ++n;
        }
    }
    void golomb(std::uint64_t value, int k) {
        const std::uint64_t v = value + (std::uint64_t{1} << k);
        int len = 0;
        while ((v >> len) > 1) ++len;
        put(0, len - k);
        put(v, len + 1);
    }
};

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
    int written = 0;
    for (int which = 0; which < 3; ++which)
        for (int variant = 0; variant < 8; ++variant) {
            Bits b;
            b.put(static_cast<std::uint64_t>(which | ((variant & 3) << 2)), 8);
            b.put(static_cast<std::uint64_t>(rng() % 32), 8);
            for (int k = 0; k < 40; ++k) {
                const int kind = static_cast<int>(rng() % 6);
                if (kind == 0) b.golomb(59 + rng() % 20, 2);        // an escape code
                if (kind == 0) b.golomb(rng() % (variant * 500 + 3), 1);
                if (kind == 1) b.put(0, static_cast<int>(rng() % 12));  // a long prefix
                if (kind >= 2) b.golomb(rng() % 59, static_cast<int>(rng() % 4));
            }
            const std::string path = std::string(argv[1]) + "/seed_" + std::to_string(written++);
            std::FILE* f = std::fopen(path.c_str(), "wb");
            if (!f) {
                std::perror(path.c_str());
                return 1;
            }
            std::fwrite(b.bytes.data(), 1, b.bytes.size(), f);
            std::fclose(f);
        }
    std::printf("%d seeds\n", written);
    return 0;
}
