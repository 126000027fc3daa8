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
        for (int i = bits - 1; i >= 0; --i) put_bit((v >> i) & 1u);
    }
    void put_bit(std::uint32_t b) {
        cur_ = static_cast<std::uint8_t>((cur_ << 1) | (b & 1u));
        if (++n_ == 8) {
            bytes_.push_back(cur_);
            cur_ = 0;
            n_ = 0;
        }
    }
    // ue(v): Exp-Golomb code of v.
    void ue(std::uint32_t v) {
        const std::uint64_t x = static_cast<std::uint64_t>(v) + 1;
        int len = 0;
        while ((x >> (len + 1)) != 0) ++len;
        put(0, len);
        for (int i = len; i >= 0; --i) put_bit(static_cast<std::uint32_t>((x >> i) & 1u));
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
        if (n_ != 0) b.push_back(static_cast<std::uint8_t>(cur_ << (8 - n_)));
        return b;
    }
    void clear() {
        bytes_.clear();
        cur_ = 0;
        n_ = 0;
    }

private:
    std::vector<std::uint8_t> bytes_;
    std::uint8_t cur_ = 0;
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
