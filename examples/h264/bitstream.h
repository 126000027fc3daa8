// Byte-stream handling for the H.264 example decoder: NAL unit splitting,
// removal of emulation-prevention bytes, and a bit reader over native 32-bit
// words that shares its cursor with the library's word-cursor decoders.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace h264ex {

// Splits an Annex B byte stream into NAL unit payloads (start codes removed).
struct NalSpan {
    const std::uint8_t* data;
    std::size_t size;
};
std::vector<NalSpan> split_nal_units(const std::uint8_t* data, std::size_t size);

// The RBSP of one NAL unit (header byte excluded) packed into native 32-bit
// words, most significant bit first, followed by padding words of all ones
// (a damaged code then stops inside the padding instead of running on).
struct Rbsp {
    std::vector<std::uint32_t> words;
    std::size_t bits = 0;  // payload bits, trailing zero bytes dropped
    void load(const std::uint8_t* nal, std::size_t size);
};

class BitReader {
public:
    explicit BitReader(const Rbsp& r) : w_(r.words.data()), nbits_(r.bits) {}
    std::uint32_t u(int n) {  // n <= 32
        if (n == 0) return 0;
        std::uint64_t v = (std::uint64_t(w_[pos_ >> 5]) << 32) | w_[(pos_ >> 5) + 1];
        v = (v << (pos_ & 31)) >> (64 - n);
        pos_ += static_cast<std::size_t>(n);
        return static_cast<std::uint32_t>(v);
    }
    bool flag() { return u(1) != 0; }
    std::uint32_t ue() {
        int zeros = 0;
        while (!u(1)) {
            if (++zeros > 31 || overrun()) {
                bad_ = true;
                return 0;
            }
        }
        if (zeros == 0) return 0;
        std::uint64_t v = (std::uint64_t(1) << zeros) - 1 + u(zeros);
        if (v > 0xffffffffu) bad_ = true;
        return static_cast<std::uint32_t>(v);
    }
    std::int32_t se() {
        std::uint32_t k = ue();
        return (k & 1) ? static_cast<std::int32_t>((k + 1) / 2) : -static_cast<std::int32_t>(k / 2);
    }
    bool more_rbsp_data() const {
        if (pos_ >= nbits_) return false;
        // Data remains unless only the stop bit and zero bits follow.
        std::size_t last = nbits_ - 1;  // the stop bit is the last 1 of the payload
        while (last > pos_ && !bit_at(last)) --last;
        return last > pos_;
    }
    void align() { pos_ = (pos_ + 7) & ~std::size_t(7); }
    bool overrun() const { return pos_ > nbits_; }
    bool bad() const { return bad_ || overrun(); }
    std::size_t pos() const { return pos_; }

    // The library's word cursor for the current position, and back.
    void to_cursor(std::uint32_t** word, std::int32_t* bit) const {
        *word = const_cast<std::uint32_t*>(w_) + (pos_ >> 5);
        *bit = 31 - static_cast<std::int32_t>(pos_ & 31);
    }
    void from_cursor(const std::uint32_t* word, std::int32_t bit) {
        pos_ = static_cast<std::size_t>(word - w_) * 32 + static_cast<std::size_t>(31 - bit);
    }

private:
    bool bit_at(std::size_t p) const { return (w_[p >> 5] >> (31 - (p & 31))) & 1; }
    const std::uint32_t* w_;
    std::size_t nbits_;
    std::size_t pos_ = 0;
    bool bad_ = false;
};

}  // namespace h264ex
