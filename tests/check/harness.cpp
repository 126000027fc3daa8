#include "check/harness.h"

#include <cstdlib>

namespace zan::check {

int active_path() {
    static const int path = zanvcGetLibVersion()->targetCode[0] == 'n' ? 1 : 0;
    return path;
}

std::uint64_t seed() {
    static const std::uint64_t s = [] {
        const char* text = std::getenv("ZANVC_CHECK_SEED");
        return text ? std::strtoull(text, nullptr, 0) : std::uint64_t{0x5EEDC0DE2026};
    }();
    return s;
}

int draws() {
    static const int n = [] {
        const char* text = std::getenv("ZANVC_CHECK_DRAWS");
        int v = text ? std::atoi(text) : 0;
        return v > 0 ? v : 300;
    }();
    return n;
}

Rng::Rng(std::uint64_t salt) : s_(seed() ^ (salt * 0x9E3779B97F4A7C15ull)) { next(); }

std::uint64_t Rng::next() {  // splitmix64
    std::uint64_t z = (s_ += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

void Rng::fill(void* p, std::size_t n) {
    auto* b = static_cast<Zan8u*>(p);
    // A third of the buffers hold only values near 0 and 255.
    bool extremes = below(3) == 0;
    for (std::size_t i = 0; i < n; ++i) {
        std::uint64_t v = next();
        Zan8u near = static_cast<Zan8u>((v >> 8) % 3);
        b[i] = extremes ? static_cast<Zan8u>((v & 1) ? 255 - near : near) : static_cast<Zan8u>(v);
    }
}

void Rng::fill16(void* p, std::size_t count, Zan32s lo, Zan32s hi) {
    bool extremes = below(3) == 0;
    for (std::size_t i = 0; i < count; ++i) {
        Zan32s v = extremes ? ((next() & 1) ? hi - range(0, 2) : lo + range(0, 2)) : range(lo, hi);
        if (v < lo) v = lo;
        if (v > hi) v = hi;
        Zan16u u = static_cast<Zan16u>(v);
        std::memcpy(static_cast<Zan8u*>(p) + 2 * i, &u, 2);
    }
}

Region::Region(Zan32s widthBytes, Zan32s height, Zan32s step, Zan32s align, std::size_t margin)
    : step_(step), margin_(margin) {
    std::size_t span = static_cast<std::size_t>(std::abs(step)) * static_cast<std::size_t>(height > 0 ? height - 1 : 0) +
                       static_cast<std::size_t>(widthBytes);
    storage_.assign(span + 2 * margin + 128, 0);
    auto base = reinterpret_cast<std::uintptr_t>(storage_.data()) + margin;
    base = (base + 63) & ~std::uintptr_t{63};
    Zan8u* first = reinterpret_cast<Zan8u*>(base + static_cast<std::uintptr_t>(align));
    origin_ = step >= 0 ? first : first + static_cast<std::ptrdiff_t>(-step) * (height - 1);
    first_ = static_cast<std::size_t>(first - storage_.data());
    span_ = span;
}

bool Region::same_as(const Region& other) const {
    if (span_ != other.span_ || margin_ != other.margin_) return false;
    return std::memcmp(storage_.data() + first_ - margin_, other.storage_.data() + other.first_ - margin_,
                       span_ + 2 * margin_) == 0;
}

std::vector<Zan32s> steps_for(Zan32s widthBytes, Zan32s elemBytes) {
    Zan32s round16 = (widthBytes + 15) & ~15;
    std::vector<Zan32s> s = {widthBytes, round16 + 16, -round16, -(round16 + 32)};
    if (elemBytes == 1) {
        s.push_back(widthBytes + 3);
        s.push_back(-(widthBytes + 7));
    } else {
        s.push_back(widthBytes + 2 * elemBytes);
        s.push_back(-(widthBytes + 6 * elemBytes));
    }
    return s;
}

}  // namespace zan::check
