// The equivalence checker: shared pieces.
//
// Every vector kernel is run beside its scalar rule on the same random input,
// at every alignment and with positive, negative and odd steps, and the two
// outputs must agree byte for byte, guard bands included, so a kernel that
// writes outside its block fails too.  The kernels checked are those of the
// path that libzanvcu8 chose at load; the suite runs once per path.
//
// ZANVC_CHECK_SEED=<n> repeats a run; the seed is printed on failure.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "zanvc.h"

namespace zan::check {

// 1 when the library runs the n8 build, 0 for u8.
int active_path();
// Picks the catalogue of the active path.
template <class T>
const T& for_path(const T& u8, const T& n8) {
    return active_path() == 1 ? n8 : u8;
}

// The run's seed (from ZANVC_CHECK_SEED, or fixed), for messages.
std::uint64_t seed();

class Rng {
public:
    explicit Rng(std::uint64_t salt);
    std::uint64_t next();
    std::uint32_t below(std::uint32_t n) { return static_cast<std::uint32_t>(next() % n); }
    Zan32s range(Zan32s lo, Zan32s hi) { return lo + static_cast<Zan32s>(below(static_cast<std::uint32_t>(hi - lo + 1))); }
    // Random bytes with a bias toward the extremes, which find saturation faults.
    void fill(void* p, std::size_t n);
    // Fills with 16-bit samples in [lo, hi], extremes favoured.
    void fill16(void* p, std::size_t count, Zan32s lo, Zan32s hi);

private:
    std::uint64_t s_;
};

// A 2-D region inside a larger buffer with guard margins on every side.  The
// origin lies at a chosen offset from a 64-byte boundary; a negative step puts
// the first row at the bottom of the storage.
class Region {
public:
    // width and height in bytes and rows of the area a kernel may touch
    // (including any extra rows or columns it reads), step in bytes with
    // |step| >= width, align in 0..63: origin address modulo 64.
    Region(Zan32s widthBytes, Zan32s height, Zan32s step, Zan32s align, std::size_t margin = 64);
    Zan8u* origin() { return origin_; }
    Zan32s step() const { return step_; }
    template <class T> T* as() { return reinterpret_cast<T*>(origin_); }
    std::vector<Zan8u>& storage() { return storage_; }
    // Fills the whole storage, guards included.
    void fill(Rng& rng) { rng.fill(storage_.data(), storage_.size()); }
    void fill16(Rng& rng, Zan32s lo, Zan32s hi) { rng.fill16(storage_.data(), storage_.size() / 2, lo, hi); }
    void set(Zan8u value) { std::memset(storage_.data(), value, storage_.size()); }
    // The same bytes from one margin before the region to one margin after it.
    bool same_as(const Region& other) const;

private:
    std::vector<Zan8u> storage_;
    Zan8u* origin_;
    Zan32s step_;
    std::size_t first_;   // index of the lowest byte of the region in storage_
    std::size_t span_;    // bytes from the lowest to the highest byte of the region
    std::size_t margin_;
};

// Steps worth trying for a block `widthBytes` wide: tight, odd, wide,
// negative, and the multiples of 16 that aligned kernels want.
std::vector<Zan32s> steps_for(Zan32s widthBytes, Zan32s elemBytes = 1);

// How many random draws each kernel gets (ZANVC_CHECK_DRAWS overrides).
int draws();

}  // namespace zan::check
