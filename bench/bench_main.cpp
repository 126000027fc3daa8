// The benchmark program: registers every family, then runs Google Benchmark
// with its usual flags.  Without --benchmark_min_time each benchmark runs for
// at least 0.1 s, which keeps a full run of a few hundred short kernels to a
// few minutes while the timings stay stable to a few percent.
#include <cstring>
#include <vector>

#include "bench_util.h"

int main(int argc, char** argv) {
    for (void (*registerFamily)() : zan::bench::families()) registerFamily();

    std::vector<char*> args(argv, argv + argc);
    bool minTimeGiven = false;
    for (char* a : args)
        if (std::strncmp(a, "--benchmark_min_time", 20) == 0) minTimeGiven = true;
    static char defaultMinTime[] = "--benchmark_min_time=0.1";
    if (!minTimeGiven) args.insert(args.begin() + 1, defaultMinTime);
    args.push_back(nullptr);

    int count = static_cast<int>(args.size()) - 1;
    benchmark::Initialize(&count, args.data());
    if (benchmark::ReportUnrecognizedArguments(count, args.data())) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
