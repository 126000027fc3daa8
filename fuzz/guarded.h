// A fuzz input placed at the very end of readable memory.
//
// The bytes are copied so that the data, plus the slack a decoder is allowed
// to read past it, ends exactly at a page that is not readable.  A decoder
// that reads one byte beyond what its contract allows faults at once, under
// the sanitizers or not.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace zan::fuzz {

class Guarded {
public:
    // size bytes of data followed by slack bytes of value fill.
    Guarded(const std::uint8_t* data, std::size_t size, std::size_t slack, std::uint8_t fill = 0) {
        const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t used = size + slack;
        pages_ = (used + page - 1) / page * page + page;
        void* m = mmap(nullptr, pages_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (m == MAP_FAILED) std::abort();
        base_ = static_cast<std::uint8_t*>(m);
        guard_ = base_ + pages_ - page;
        if (mprotect(guard_, page, PROT_NONE) != 0) std::abort();
        begin_ = guard_ - used;
        if (size) std::memcpy(begin_, data, size);
        std::memset(begin_ + size, fill, slack);
    }
    ~Guarded() { munmap(base_, pages_); }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;

    std::uint8_t* begin() const { return begin_; }
    // First byte that may not be read.
    const std::uint8_t* limit() const { return guard_; }

private:
    std::uint8_t* base_ = nullptr;
    std::uint8_t* guard_ = nullptr;
    std::uint8_t* begin_ = nullptr;
    std::size_t pages_ = 0;
};

// Fails loudly: a broken invariant is a finding.
#define ZAN_FUZZ_CHECK(cond)                                                            \
    do {                                                                                \
        if (!(cond)) {                                                                  \
            __builtin_printf("invariant failed: %s (%s:%d)\n", #cond, __FILE__, __LINE__); \
            std::abort();                                                               \
        }                                                                               \
    } while (0)

}  // namespace zan::fuzz
