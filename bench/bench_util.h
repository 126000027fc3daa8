// Shared pieces of the benchmark program.
//
// Every family has one source file that registers its benchmarks with
// ZAN_BENCH_FAMILY.  Catalogue entries are timed three ways, under the names
//   <family>/<entry>/rule   the scalar rule
//   <family>/<entry>/u8     the vector kernel of the u8 build
//   <family>/<entry>/n8     the vector kernel of the n8 build
// and calls through the exported functions (which run the path the library
// chose at load) as <family>/export/<what>.  `zanvc bench` reads these names
// to lay out its tables, so keep to them.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "common/kernel_pair.h"
#include "zanvc.h"

namespace zan::bench {

// Zero-filled scratch memory, 64-byte aligned, freed on destruction.  The
// benchmarks keep their inputs small so that they stay in the L1 cache.
class Buffer {
public:
    explicit Buffer(std::size_t bytes)
        : size_((bytes + 63) & ~std::size_t{63}), p_(static_cast<Zan8u*>(std::aligned_alloc(64, size_))) {
        if (!p_) std::abort();
        std::memset(p_, 0, size_);
    }
    ~Buffer() { std::free(p_); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    Zan8u* data() { return p_; }
    std::size_t size() const { return size_; }
    template <class T>
    T* as(std::size_t byteOffset = 0) {
        return reinterpret_cast<T*>(p_ + byteOffset);
    }
    // Deterministic pseudo-random bytes (splitmix64 of a salt).
    void fill(std::uint64_t salt) {
        std::uint64_t s = salt * 0x9E3779B97F4A7C15ull;
        for (std::size_t i = 0; i < size_; ++i) {
            std::uint64_t z = (s += 0x9E3779B97F4A7C15ull);
            z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
            z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
            p_[i] = static_cast<Zan8u>(z ^ (z >> 31));
        }
    }
    // 16-bit samples in 0..mask (mask of low bits), from the same bytes.
    void fill16(std::uint64_t salt, Zan16u mask) {
        fill(salt);
        for (std::size_t i = 0; i + 1 < size_; i += 2) {
            Zan16u v;
            std::memcpy(&v, p_ + i, 2);
            v = static_cast<Zan16u>(v & mask);
            std::memcpy(p_ + i, &v, 2);
        }
    }

private:
    std::size_t size_;
    Zan8u* p_;
};

// Registers one benchmark, timed in nanoseconds.
template <class Body>
benchmark::internal::Benchmark* add(const std::string& name, Body body) {
    return benchmark::RegisterBenchmark(name.c_str(), body)->Unit(benchmark::kNanosecond);
}

// Registers <family>/<entry>/rule, /u8 and /n8 for every entry of a pair of
// catalogues (the u8 and n8 lists of one kernel type).  time(state, entry, fn)
// runs the timing loop of one function of the entry; entry gives the block
// size and the family-specific param.  The n8 member is found by name, so the
// two lists need not be in the same order; an entry only one path has still
// gets its rule and its kernel timed.
template <class Fn, class Time>
void add_pairs(const char* family, KernelList<Fn> u8, KernelList<Fn> n8, Time time) {
    auto find = [](KernelList<Fn> list, const char* name) -> const KernelPair<Fn>* {
        for (const auto& e : list)
            if (std::strcmp(e.name, name) == 0) return &e;
        return nullptr;
    };
    const std::string prefix = std::string(family) + "/";
    for (const KernelPair<Fn>& e : u8) {
        const KernelPair<Fn> entry = e;
        add(prefix + entry.name + "/rule", [=](benchmark::State& s) { time(s, entry, entry.rule); });
        add(prefix + entry.name + "/u8", [=](benchmark::State& s) { time(s, entry, entry.simd); });
        if (const KernelPair<Fn>* m = find(n8, entry.name)) {
            const KernelPair<Fn> other = *m;
            add(prefix + entry.name + "/n8", [=](benchmark::State& s) { time(s, other, other.simd); });
        }
    }
    for (const KernelPair<Fn>& e : n8) {
        if (find(u8, e.name)) continue;
        const KernelPair<Fn> entry = e;
        add(prefix + entry.name + "/rule", [=](benchmark::State& s) { time(s, entry, entry.rule); });
        add(prefix + entry.name + "/n8", [=](benchmark::State& s) { time(s, entry, entry.simd); });
    }
}

// The registration functions of the families, run by main before it parses
// the command line (not during static initialisation, so the catalogues are
// certainly in place).
inline std::vector<void (*)()>& families() {
    static std::vector<void (*)()> list;
    return list;
}
struct FamilyRegistrar {
    explicit FamilyRegistrar(void (*registerFamily)()) { families().push_back(registerFamily); }
};

}  // namespace zan::bench

// Defines the registration function of a family:
//   ZAN_BENCH_FAMILY(sad) { bench::add_pairs(...); ... }
#define ZAN_BENCH_FAMILY(family)                                                                  \
    static void zan_bench_register_##family();                                                    \
    static const ::zan::bench::FamilyRegistrar zan_bench_registrar_##family{zan_bench_register_##family}; \
    static void zan_bench_register_##family()
