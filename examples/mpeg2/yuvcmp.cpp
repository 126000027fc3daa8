// zanvc-yuvcmp A.yuv B.yuv: PSNR over all samples and the largest sample
// difference of two files of equal length (raw pictures of any layout).
// Prints "psnr P maxdiff M"; PSNR 99 for identical files.  Exit 1 when the
// files differ in length or cannot be read.
#include <cmath>
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: zanvc-yuvcmp A.yuv B.yuv\n");
        return 2;
    }
    std::FILE* a = std::fopen(argv[1], "rb");
    std::FILE* b = std::fopen(argv[2], "rb");
    if (!a || !b) {
        std::fprintf(stderr, "zanvc-yuvcmp: cannot open the files\n");
        return 1;
    }
    unsigned char ba[65536], bb[65536];
    double sse = 0;
    long long n = 0;
    int maxDiff = 0;
    for (;;) {
        const size_t na = std::fread(ba, 1, sizeof ba, a), nb = std::fread(bb, 1, sizeof bb, b);
        if (na != nb) {
            std::fprintf(stderr, "zanvc-yuvcmp: the files differ in length\n");
            return 1;
        }
        if (na == 0) break;
        for (size_t i = 0; i < na; ++i) {
            const int d = std::abs(ba[i] - bb[i]);
            if (d > maxDiff) maxDiff = d;
            sse += static_cast<double>(d) * d;
        }
        n += static_cast<long long>(na);
    }
    if (n == 0) {
        std::fprintf(stderr, "zanvc-yuvcmp: empty files\n");
        return 1;
    }
    const double mse = sse / static_cast<double>(n);
    std::printf("psnr %.3f maxdiff %d\n", mse > 0 ? 10 * std::log10(255.0 * 255.0 / mse) : 99.0, maxDiff);
    return 0;
}
