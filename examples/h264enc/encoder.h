// An H.264 intra encoder written against the library's public header only:
// 8-bit 4:2:0, every picture an IDR picture of one slice, constant QP,
// Intra 4x4 and Intra 16x16 luma with SATD mode decision, CAVLC (Baseline
// profile) or CABAC (Main profile), loop filter on or off.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace h264ex {

struct EncoderConfig {
    int width = 0;            // luma samples, even, 2..16384
    int height = 0;           // luma rows, even, 2..16384
    int qp = 26;              // 0..51
    bool cabac = false;       // CABAC (Main profile) instead of CAVLC (Baseline)
    bool deblock = true;      // loop filter on (disable_deblocking_filter_idc 0) or off (1)
    // Bytes of the CABAC output buffer each picture starts with; 0 sizes it
    // from the picture.  A small buffer is grown on demand (the coder reports
    // its end, the encoder moves it to a larger one and goes on).
    std::size_t cabac_buffer = 0;
};

struct FrameInfo {
    std::size_t bytes = 0;         // bytes this picture added to the stream (parameter sets included)
    int mbs_i4x4 = 0;              // macroblocks coded Intra 4x4
    int mbs_i16x16 = 0;            // macroblocks coded Intra 16x16
    int cabac_buffer_moves = 0;    // CABAC buffer changes (zaniCABACSetStream_H264)
    int cabac_block_retries = 0;   // residual blocks repeated after the coder reported a full buffer
};

class Encoder {
public:
    Encoder();
    ~Encoder();
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    // Checks the configuration and prepares the encoder; false with a message.
    bool open(const EncoderConfig& config, std::string& err);

    // Encodes one picture given as planar 4:2:0 (width x height luma, then
    // the two chroma planes of (width / 2) x (height / 2)).  Appends Annex B
    // NAL units to `out` (the sequence and picture parameter sets before the
    // first picture).  When `recon` is not null it receives the picture that
    // a decoder of the stream outputs (after the loop filter), in the same
    // layout.  false with a message on a library failure.
    bool encode(const std::uint8_t* yuv, std::vector<std::uint8_t>& out, std::vector<std::uint8_t>* recon,
                FrameInfo* info, std::string& err);

    struct Impl;

private:
    std::unique_ptr<Impl> impl_;
};

// Bytes of one planar 4:2:0 picture of width x height.
inline std::size_t frame_bytes(int width, int height) {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3 / 2;
}

}  // namespace h264ex
