// Raw video in and out for the picture commands of zanvc: .y4m files (the
// header gives size, chroma layout and rate) and headerless .yuv files (the
// caller gives size and layout), a PNG writer for previews, and a progress
// line on standard error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace zanvc_tool {

// Sample layouts of a frame, 8 bits per sample.
enum class PixFmt {
    Yuv420p,  // Y plane, then U and V at half width and half height
    Yuv422p,  // Y plane, then U and V at half width, full height
    Yuyv422,  // one packed plane: Y0 U Y1 V per pair of samples
    Uyvy422,  // one packed plane: U Y0 V Y1 per pair of samples
    Gray,     // Y plane only
};

struct VideoInfo {
    int width = 0, height = 0;
    PixFmt fmt = PixFmt::Yuv420p;
    int rate_num = 25, rate_den = 1;  // frames per second as a fraction
    char interlace = 'p';             // y4m 'I' tag: p progressive, t top first, b bottom first, m mixed
};

// One plane of a frame held in a byte buffer.
struct Plane {
    std::uint8_t* data = nullptr;
    int width = 0;   // in bytes (a packed 4:2:2 row is 2 * width bytes)
    int height = 0;
    int step = 0;    // bytes from one row to the next
};

const char* pixfmt_name(PixFmt fmt);           // the ffmpeg -pix_fmt name
bool parse_pixfmt(const char* name, PixFmt& fmt);  // accepts the ffmpeg names above
bool parse_size(const char* text, int& width, int& height);  // "WxH"

std::size_t frame_bytes(const VideoInfo& info);
int plane_count(PixFmt fmt);
// Plane i (0 luma or packed, 1 U, 2 V) of a frame buffer of frame_bytes(info).
Plane plane(const VideoInfo& info, std::uint8_t* frame, int i);

// Reads frames one at a time.  A name ending in .y4m is read with its header
// (the hint is ignored); any other file is headerless and takes its size and
// layout from the hint.  "-" reads standard input.
class VideoReader {
public:
    VideoReader() = default;
    VideoReader(const VideoReader&) = delete;
    VideoReader& operator=(const VideoReader&) = delete;
    ~VideoReader();

    bool open(const char* path, const VideoInfo& hint, std::string& err);
    // false at the end of the input (err empty) or on a damaged frame (err set).
    bool read(std::vector<std::uint8_t>& frame, std::string& err);
    const VideoInfo& info() const { return info_; }
    // Number of frames when the input is a regular file, else -1.
    long frame_count() const { return frames_; }

private:
    std::FILE* f_ = nullptr;
    bool y4m_ = false;
    VideoInfo info_;
    long frames_ = -1;
};

// Writes frames as .y4m (name ending in .y4m) or headerless raw bytes.
class VideoWriter {
public:
    VideoWriter() = default;
    VideoWriter(const VideoWriter&) = delete;
    VideoWriter& operator=(const VideoWriter&) = delete;
    ~VideoWriter();

    bool open(const char* path, const VideoInfo& info, std::string& err);
    bool write(const std::uint8_t* frame, std::size_t bytes, std::string& err);
    bool close(std::string& err);

private:
    std::FILE* f_ = nullptr;
    bool y4m_ = false;
};

// 8-bit PNG, channels 1 (gray), 3 (RGB) or 4 (RGBA), rows of width * channels
// bytes, step bytes apart.  The data are stored uncompressed.
bool write_png(const char* path, const std::uint8_t* pixels, int width, int height, int channels, int step,
               std::string& err);
// A frame converted to RGB (BT.601, studio range) for previews.
void frame_to_rgb(const VideoInfo& info, const std::uint8_t* frame, std::vector<std::uint8_t>& rgb);

// "label: 12/250 frames" on standard error, redrawn in place at most a few
// times per second, only for inputs long enough to need it.
class Progress {
public:
    Progress(const char* label, long total);
    void update(long done);
    void finish();

private:
    const char* label_;
    long total_;
    bool shown_ = false;
    double last_ = 0.0;
    double start_ = 0.0;
};

// Frame j of the input as a window over it sees it: clamped to the frames
// that exist and that the window still holds.
using FrameAt = std::function<std::vector<std::uint8_t>&(long j)>;
// Reads the input in order and calls process(k, frame) for every frame k as
// soon as frames up to k + ahead are read (or the input has ended); frames
// from k - 1 on stay available.  done receives the number of frames
// processed.  False on a damaged input (message printed, prefixed with
// "zanvc NAME") or when process returns false.
bool for_each_frame(VideoReader& reader, int ahead, const char* name,
                    const std::function<bool(long k, const FrameAt& frame)>& process, long& done);

// The options every picture command shares for its input: --size WxH,
// --pix-fmt NAME and --rate N[/D].  Returns the number of arguments used at
// argv[i] (0 if argv[i] is none of them, -1 on a bad value, err set).
int parse_video_option(int argc, char** argv, int i, VideoInfo& hint, std::string& err);

}  // namespace zanvc_tool
