// Bit writer for H.264 raw byte sequence payloads (RBSP) and the Annex B
// byte stream: fixed-length codes, Exp-Golomb codes, trailing bits, and NAL
// units with emulation prevention.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace h264ex {

class BitWriter {
public:
    // Appends the low `bits` bits of v (bits 0..32), most significant first.
    void put(std::uint32_t v, int bits) {
        if (bits <= 0) return;
        const std::uint64_t mask = bits >= 32 ? 0xffffffffu : (std::uint64_t{1} << bits) - 1;
        acc_ = (acc_ << bits) | (v & mask);
        n_ += bits;
        while (n_ >= 8) {
            n_ -= 8;
            bytes_.push_back(static_cast<std::uint8_t>(acc_ >> n_));
        }
    }
    void put_bit(std::uint32_t b) { put(b & 1u, 1); }
    // ue(v): Exp-Golomb code of v.
    void ue(std::uint32_t v) {
        const std::uint64_t x = static_cast<std::uint64_t>(v) + 1;
        int len = 0;
        while ((x >> (len + 1)) != 0) ++len;
        put(0, len);
        put(static_cast<std::uint32_t>(x >> 16), len + 1 - 16 > 0 ? len + 1 - 16 : 0);
        put(static_cast<std::uint32_t>(x & 0xffffu), len + 1 < 16 ? len + 1 : 16);
    }
    // se(v): positive k as 2k - 1, zero and negative k as -2k.
    void se(std::int32_t v) {
        ue(v > 0 ? static_cast<std::uint32_t>(2 * v - 1) : static_cast<std::uint32_t>(-2 * static_cast<std::int64_t>(v)));
    }
    // rbsp_trailing_bits: a stop bit 1, then zeros to the byte boundary.
    void trailing() {
        put_bit(1);
        while (n_ != 0) put_bit(0);
    }
    std::size_t bit_count() const { return bytes_.size() * 8 + static_cast<std::size_t>(n_); }
    // The bytes written; a partial last byte is given with its low bits 0.
    std::vector<std::uint8_t> bytes() const {
        std::vector<std::uint8_t> b = bytes_;
        if (n_ != 0) b.push_back(static_cast<std::uint8_t>(acc_ << (8 - n_)));
        return b;
    }
    void clear() {
        bytes_.clear();
        acc_ = 0;
        n_ = 0;
    }

private:
    std::vector<std::uint8_t> bytes_;
    std::uint64_t acc_ = 0;  // bits not yet stored: the low n_ (< 8 between calls)
    int n_ = 0;
};

// Appends one NAL unit to an Annex B stream: start code 00 00 00 01, the
// header byte, then the payload with an emulation-prevention byte 03 after
// every two zero bytes that a byte 00..03 follows.
inline void append_nal(std::vector<std::uint8_t>& out, int nal_ref_idc, int nal_unit_type,
                       const std::uint8_t* rbsp, std::size_t size) {
    out.insert(out.end(), {0, 0, 0, 1});
    out.push_back(static_cast<std::uint8_t>((nal_ref_idc << 5) | nal_unit_type));
    int zeros = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const std::uint8_t b = rbsp[i];
        if (zeros >= 2 && b <= 3) {
            out.push_back(3);
            zeros = 0;
        }
        out.push_back(b);
        zeros = b == 0 ? zeros + 1 : 0;
    }
}

}  // namespace h264ex
