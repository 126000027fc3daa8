#include "bitstream.h"

namespace h264ex {

std::vector<NalSpan> split_nal_units(const std::uint8_t* data, std::size_t size) {
    std::vector<NalSpan> out;
    std::size_t i = 0, start = SIZE_MAX;
    while (i + 2 < size) {
        if (data[i] == 0 && data[i + 1] == 0 && data[i + 2] == 1) {
            if (start != SIZE_MAX) {
                std::size_t end = i;
                while (end > start && data[end - 1] == 0) --end;  // trailing zero bytes
                out.push_back({data + start, end - start});
            }
            i += 3;
            start = i;
        } else {
            ++i;
        }
    }
    if (start != SIZE_MAX && start < size) {
        std::size_t end = size;
        while (end > start && data[end - 1] == 0) --end;
        out.push_back({data + start, end - start});
    }
    return out;
}

void Rbsp::load(const std::uint8_t* nal, std::size_t size) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(size);
    int zeros = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const std::uint8_t b = nal[i];
        if (zeros >= 2 && b == 3) {
            zeros = 0;
            continue;
        }
        zeros = b == 0 ? zeros + 1 : 0;
        bytes.push_back(b);
    }
    while (!bytes.empty() && bytes.back() == 0) bytes.pop_back();
    bits = bytes.size() * 8;
    const std::size_t n = (bytes.size() + 3) / 4;
    words.assign(n + 8, 0xffffffffu);
    for (std::size_t k = 0; k < n; ++k) {
        std::uint32_t w = 0;
        for (std::size_t j = 0; j < 4; ++j) {
            const std::size_t p = 4 * k + j;
            w = (w << 8) | (p < bytes.size() ? bytes[p] : 0u);
        }
        words[k] = w;
    }
}

}  // namespace h264ex
