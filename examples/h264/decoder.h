// The H.264 example decoder as a library: decodes a whole Annex B byte
// stream and hands each picture, cropped and planar, to a callback in
// display order.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace h264ex {

// One output picture: the planar samples exactly as zanvc-h264dec writes them
// to its output file (cropped; one byte per sample at 8 bits, little-endian
// 16-bit samples above 8 bits).
struct DecodedFrame {
    int width = 0, height = 0, bit_depth = 8, chroma_format = 1;
    std::vector<unsigned char> data;
};

// Decodes a whole Annex B stream; calls sink once per picture in output
// (display) order.  Returns false with a message in err on error.
bool decode_annexb(const unsigned char* data, std::size_t size,
                   const std::function<void(const DecodedFrame&)>& sink, std::string& err);

}  // namespace h264ex
