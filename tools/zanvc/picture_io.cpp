#include "picture_io.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <deque>

namespace zanvc_tool {

namespace {

struct FmtName {
    PixFmt fmt;
    const char* name;
    const char* y4m;  // chroma tag, or null when y4m has none
};

constexpr FmtName kFormats[] = {
    {PixFmt::Yuv420p, "yuv420p", "420jpeg"}, {PixFmt::Yuv422p, "yuv422p", "422"},
    {PixFmt::Yuyv422, "yuyv422", nullptr},   {PixFmt::Uyvy422, "uyvy422", nullptr},
    {PixFmt::Gray, "gray", "mono"},
};

bool ends_with(const char* s, const char* tail) {
    const std::size_t n = std::strlen(s), m = std::strlen(tail);
    return n >= m && std::strcmp(s + n - m, tail) == 0;
}

double now_seconds() {
    using clock = std::chrono::steady_clock;
    return std::chrono::duration<double>(clock::now().time_since_epoch()).count();
}

// Parses the y4m stream header line (without its newline).
bool parse_y4m_header(const std::string& line, VideoInfo& info, std::string& err) {
    if (line.compare(0, 10, "YUV4MPEG2 ") != 0) return err = "not a y4m stream", false;
    info = VideoInfo{};
    std::size_t pos = 10;
    while (pos < line.size()) {
        std::size_t end = line.find(' ', pos);
        if (end == std::string::npos) end = line.size();
        const std::string tok = line.substr(pos, end - pos);
        pos = end + 1;
        if (tok.empty()) continue;
        const char* v = tok.c_str() + 1;
        switch (tok[0]) {
            case 'W': info.width = std::atoi(v); break;
            case 'H': info.height = std::atoi(v); break;
            case 'F': {
                int n = 0, d = 0;
                if (std::sscanf(v, "%d:%d", &n, &d) == 2 && n > 0 && d > 0) info.rate_num = n, info.rate_den = d;
                break;
            }
            case 'I': info.interlace = *v ? *v : 'p'; break;
            case 'C': {
                const std::string c = v;
                if (c.compare(0, 3, "420") == 0 && c.find("p1") == std::string::npos)
                    info.fmt = PixFmt::Yuv420p;
                else if (c == "422")
                    info.fmt = PixFmt::Yuv422p;
                else if (c == "mono")
                    info.fmt = PixFmt::Gray;
                else
                    return err = "y4m chroma layout " + c + " is not supported (8-bit 420, 422, mono)", false;
                break;
            }
            default: break;  // X comments, A aspect
        }
    }
    if (info.width <= 0 || info.height <= 0) return err = "y4m header without a valid size", false;
    return true;
}

bool read_line(std::FILE* f, std::string& line, std::size_t limit) {
    line.clear();
    for (int c; (c = std::fgetc(f)) != EOF;) {
        if (c == '\n') return true;
        if (line.size() >= limit) return false;
        line.push_back(static_cast<char>(c));
    }
    return false;
}

// CRC-32 (polynomial 0xEDB88320) as PNG chunks use it.
std::uint32_t crc32(std::uint32_t crc, const std::uint8_t* p, std::size_t n) {
    static const std::array<std::uint32_t, 256> table = [] {
        std::array<std::uint32_t, 256> t{};
        for (std::uint32_t i = 0; i < 256; ++i) {
            std::uint32_t c = i;
            for (int k = 0; k < 8; ++k) c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            t[i] = c;
        }
        return t;
    }();
    crc = ~crc;
    for (std::size_t i = 0; i < n; ++i) crc = table[(crc ^ p[i]) & 0xFF] ^ (crc >> 8);
    return ~crc;
}

void put_be32(std::vector<std::uint8_t>& out, std::uint32_t v) {
    out.push_back(static_cast<std::uint8_t>(v >> 24));
    out.push_back(static_cast<std::uint8_t>(v >> 16));
    out.push_back(static_cast<std::uint8_t>(v >> 8));
    out.push_back(static_cast<std::uint8_t>(v));
}

void put_chunk(std::vector<std::uint8_t>& out, const char* type, const std::vector<std::uint8_t>& body) {
    put_be32(out, static_cast<std::uint32_t>(body.size()));
    const std::size_t start = out.size();
    out.insert(out.end(), type, type + 4);
    out.insert(out.end(), body.begin(), body.end());
    put_be32(out, crc32(0, out.data() + start, out.size() - start));
}

std::uint8_t clamp255(double v) { return static_cast<std::uint8_t>(std::clamp(v + 0.5, 0.0, 255.0)); }

}  // namespace

const char* pixfmt_name(PixFmt fmt) {
    for (const FmtName& f : kFormats)
        if (f.fmt == fmt) return f.name;
    return "?";
}

bool parse_pixfmt(const char* name, PixFmt& fmt) {
    for (const FmtName& f : kFormats)
        if (std::strcmp(f.name, name) == 0) return fmt = f.fmt, true;
    return false;
}

bool parse_size(const char* text, int& width, int& height) {
    char tail = 0;
    int w = 0, h = 0;
    if (std::sscanf(text, "%dx%d%c", &w, &h, &tail) != 2 || w <= 0 || h <= 0 || w > 16384 || h > 16384)
        return false;
    width = w, height = h;
    return true;
}

std::size_t frame_bytes(const VideoInfo& info) {
    const std::size_t w = static_cast<std::size_t>(info.width), h = static_cast<std::size_t>(info.height);
    const std::size_t cw = (w + 1) / 2, ch = (h + 1) / 2;
    switch (info.fmt) {
        case PixFmt::Yuv420p: return w * h + 2 * cw * ch;
        case PixFmt::Yuv422p: return w * h + 2 * cw * h;
        case PixFmt::Yuyv422:
        case PixFmt::Uyvy422: return 2 * cw * 2 * h;
        case PixFmt::Gray: return w * h;
    }
    return 0;
}

int plane_count(PixFmt fmt) {
    return (fmt == PixFmt::Yuv420p || fmt == PixFmt::Yuv422p) ? 3 : 1;
}

Plane plane(const VideoInfo& info, std::uint8_t* frame, int i) {
    const int w = info.width, h = info.height, cw = (w + 1) / 2, ch = (h + 1) / 2;
    Plane p;
    switch (info.fmt) {
        case PixFmt::Yuyv422:
        case PixFmt::Uyvy422: p = {frame, 4 * cw, h, 4 * cw}; break;
        case PixFmt::Gray: p = {frame, w, h, w}; break;
        case PixFmt::Yuv420p:
        case PixFmt::Yuv422p: {
            const int chroma_h = info.fmt == PixFmt::Yuv420p ? ch : h;
            if (i == 0) p = {frame, w, h, w};
            else {
                std::uint8_t* base = frame + static_cast<std::size_t>(w) * h +
                                     static_cast<std::size_t>(i - 1) * cw * chroma_h;
                p = {base, cw, chroma_h, cw};
            }
            break;
        }
    }
    return p;
}

VideoReader::~VideoReader() {
    if (f_ && f_ != stdin) std::fclose(f_);
}

bool VideoReader::open(const char* path, const VideoInfo& hint, std::string& err) {
    f_ = std::strcmp(path, "-") == 0 ? stdin : std::fopen(path, "rb");
    if (!f_) return err = std::string("cannot open ") + path, false;
    y4m_ = ends_with(path, ".y4m");
    if (y4m_) {
        std::string line;
        if (!read_line(f_, line, 4096) || !parse_y4m_header(line, info_, err)) {
            if (err.empty()) err = "damaged y4m header";
            return false;
        }
    } else {
        if (hint.width <= 0 || hint.height <= 0)
            return err = std::string("the size of ") + path + " is unknown: give --size WxH", false;
        info_ = hint;
    }
    struct stat st {};
    if (f_ != stdin && fstat(fileno(f_), &st) == 0 && S_ISREG(st.st_mode)) {
        const long header = std::ftell(f_);
        const std::size_t per = frame_bytes(info_) + (y4m_ ? 6 : 0);
        frames_ = static_cast<long>((static_cast<std::size_t>(st.st_size) - static_cast<std::size_t>(header)) / per);
    }
    return true;
}

bool VideoReader::read(std::vector<std::uint8_t>& frame, std::string& err) {
    err.clear();
    if (y4m_) {
        std::string line;
        if (!read_line(f_, line, 1024)) {
            if (!line.empty()) err = "damaged y4m frame header";
            return false;
        }
        if (line.compare(0, 5, "FRAME") != 0) return err = "damaged y4m frame header", false;
    }
    frame.resize(frame_bytes(info_));
    const std::size_t got = std::fread(frame.data(), 1, frame.size(), f_);
    if (got == frame.size()) return true;
    if (got != 0 || y4m_) err = "the last frame is cut short";
    return false;
}

VideoWriter::~VideoWriter() {
    std::string ignored;
    close(ignored);
}

bool VideoWriter::open(const char* path, const VideoInfo& info, std::string& err) {
    f_ = std::strcmp(path, "-") == 0 ? stdout : std::fopen(path, "wb");
    if (!f_) return err = std::string("cannot create ") + path, false;
    y4m_ = ends_with(path, ".y4m");
    if (y4m_) {
        const char* tag = nullptr;
        for (const FmtName& f : kFormats)
            if (f.fmt == info.fmt) tag = f.y4m;
        if (!tag) return err = std::string("y4m cannot hold ") + pixfmt_name(info.fmt) + ": write a .yuv", false;
        std::fprintf(f_, "YUV4MPEG2 W%d H%d F%d:%d I%c A1:1 C%s\n", info.width, info.height, info.rate_num,
                     info.rate_den, info.interlace, tag);
    }
    return true;
}

bool VideoWriter::write(const std::uint8_t* frame, std::size_t bytes, std::string& err) {
    if (y4m_ && std::fputs("FRAME\n", f_) == EOF) return err = "write error", false;
    if (std::fwrite(frame, 1, bytes, f_) != bytes) return err = "write error", false;
    return true;
}

bool VideoWriter::close(std::string& err) {
    if (!f_) return true;
    const bool ok = f_ == stdout ? std::fflush(f_) == 0 : std::fclose(f_) == 0;
    f_ = nullptr;
    if (!ok) err = "write error";
    return ok;
}

bool write_png(const char* path, const std::uint8_t* pixels, int width, int height, int channels, int step,
               std::string& err) {
    static constexpr std::uint8_t kColourType[5] = {0, 0, 0, 2, 6};
    if (width <= 0 || height <= 0 || (channels != 1 && channels != 3 && channels != 4))
        return err = "bad picture for PNG", false;
    // The image data: one filter byte (0, none) per row, then the row, in
    // zlib stored blocks of at most 65535 bytes, then the Adler-32 sum.
    std::vector<std::uint8_t> raw;
    const std::size_t row = static_cast<std::size_t>(width) * static_cast<std::size_t>(channels);
    raw.reserve((row + 1) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        raw.push_back(0);
        const std::uint8_t* p = pixels + static_cast<std::ptrdiff_t>(y) * step;
        raw.insert(raw.end(), p, p + row);
    }
    std::vector<std::uint8_t> z = {0x78, 0x01};
    for (std::size_t at = 0; at < raw.size() || at == 0;) {
        const std::size_t n = std::min<std::size_t>(65535, raw.size() - at);
        const bool last = at + n == raw.size();
        z.push_back(last ? 1 : 0);
        z.push_back(static_cast<std::uint8_t>(n));
        z.push_back(static_cast<std::uint8_t>(n >> 8));
        z.push_back(static_cast<std::uint8_t>(~n));
        z.push_back(static_cast<std::uint8_t>(~n >> 8));
        z.insert(z.end(), raw.begin() + static_cast<std::ptrdiff_t>(at), raw.begin() + static_cast<std::ptrdiff_t>(at + n));
        at += n;
        if (last) break;
    }
    std::uint32_t a = 1, b = 0;
    for (std::uint8_t v : raw) a = (a + v) % 65521, b = (b + a) % 65521;
    put_be32(z, (b << 16) | a);

    std::vector<std::uint8_t> out = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<std::uint8_t> ihdr;
    put_be32(ihdr, static_cast<std::uint32_t>(width));
    put_be32(ihdr, static_cast<std::uint32_t>(height));
    ihdr.insert(ihdr.end(), {8, kColourType[channels], 0, 0, 0});
    put_chunk(out, "IHDR", ihdr);
    put_chunk(out, "IDAT", z);
    put_chunk(out, "IEND", {});
    std::FILE* f = std::fopen(path, "wb");
    if (!f) return err = std::string("cannot create ") + path, false;
    const bool ok = std::fwrite(out.data(), 1, out.size(), f) == out.size();
    if (std::fclose(f) != 0 || !ok) return err = std::string("write error on ") + path, false;
    return true;
}

void frame_to_rgb(const VideoInfo& info, const std::uint8_t* frame, std::vector<std::uint8_t>& rgb) {
    const int w = info.width, h = info.height;
    rgb.assign(static_cast<std::size_t>(w) * h * 3, 0);
    std::uint8_t* base = const_cast<std::uint8_t*>(frame);
    const Plane p0 = plane(info, base, 0);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            int Y = 0, U = 128, V = 128;
            switch (info.fmt) {
                case PixFmt::Gray: Y = p0.data[y * p0.step + x]; break;
                case PixFmt::Yuyv422:
                case PixFmt::Uyvy422: {
                    const std::uint8_t* q = p0.data + y * p0.step + (x / 2) * 4;
                    const bool yuyv = info.fmt == PixFmt::Yuyv422;
                    Y = yuyv ? q[(x & 1) * 2] : q[1 + (x & 1) * 2];
                    U = yuyv ? q[1] : q[0];
                    V = yuyv ? q[3] : q[2];
                    break;
                }
                case PixFmt::Yuv420p:
                case PixFmt::Yuv422p: {
                    const Plane pu = plane(info, base, 1), pv = plane(info, base, 2);
                    const int cy = info.fmt == PixFmt::Yuv420p ? y / 2 : y;
                    Y = p0.data[y * p0.step + x];
                    U = pu.data[cy * pu.step + x / 2];
                    V = pv.data[cy * pv.step + x / 2];
                    break;
                }
            }
            const double l = 1.164 * (Y - 16), u = U - 128, v = V - 128;
            std::uint8_t* o = &rgb[(static_cast<std::size_t>(y) * w + x) * 3];
            o[0] = clamp255(l + 1.596 * v);
            o[1] = clamp255(l - 0.392 * u - 0.813 * v);
            o[2] = clamp255(l + 2.017 * u);
        }
}

Progress::Progress(const char* label, long total) : label_(label), total_(total), start_(now_seconds()) {}

void Progress::update(long done) {
    const double t = now_seconds();
    // Short runs stay quiet; long ones redraw at most four times a second.
    if (t - start_ < 1.0 || t - last_ < 0.25) return;
    last_ = t;
    shown_ = true;
    if (total_ > 0)
        std::fprintf(stderr, "\r%s: %ld/%ld frames", label_, done, total_);
    else
        std::fprintf(stderr, "\r%s: %ld frames", label_, done);
    std::fflush(stderr);
}

void Progress::finish() {
    if (shown_) std::fputc('\n', stderr);
    shown_ = false;
}

bool for_each_frame(VideoReader& reader, int ahead, const char* name,
                    const std::function<bool(long k, const FrameAt& frame)>& process, long& done) {
    std::deque<std::vector<std::uint8_t>> held;  // frames base .. base + size - 1
    long base = 0, total = -1;
    done = 0;
    const FrameAt frame = [&](long j) -> std::vector<std::uint8_t>& {
        const long last = total >= 0 ? total - 1 : base + static_cast<long>(held.size()) - 1;
        if (j > last) j = last;
        if (j < base) j = base;
        return held[static_cast<size_t>(j - base)];
    };
    std::string err;
    for (;;) {
        std::vector<std::uint8_t> f;
        if (!reader.read(f, err)) {
            if (!err.empty()) return std::fprintf(stderr, "zanvc %s: %s\n", name, err.c_str()), false;
            break;
        }
        held.push_back(std::move(f));
        if (base + static_cast<long>(held.size()) - 1 - ahead >= done) {
            if (!process(done, frame)) return false;
            ++done;
            while (base < done - 1) {
                held.pop_front();
                ++base;
            }
        }
    }
    total = base + static_cast<long>(held.size());
    for (; done < total; ++done)
        if (!process(done, frame)) return false;
    return true;
}

int parse_video_option(int argc, char** argv, int i, VideoInfo& hint, std::string& err) {
    const char* opt = argv[i];
    const bool takes_value =
        std::strcmp(opt, "--size") == 0 || std::strcmp(opt, "--pix-fmt") == 0 || std::strcmp(opt, "--rate") == 0;
    if (!takes_value) return 0;
    if (i + 1 >= argc) return err = std::string(opt) + " needs a value", -1;
    const char* v = argv[i + 1];
    if (std::strcmp(opt, "--size") == 0) {
        if (!parse_size(v, hint.width, hint.height)) return err = std::string("bad size ") + v, -1;
    } else if (std::strcmp(opt, "--pix-fmt") == 0) {
        if (!parse_pixfmt(v, hint.fmt))
            return err = std::string("unknown pixel format ") + v + " (yuv420p, yuv422p, yuyv422, uyvy422, gray)", -1;
    } else {
        int n = 0, d = 1;
        if (std::sscanf(v, "%d/%d", &n, &d) < 1 || n <= 0 || d <= 0) return err = std::string("bad rate ") + v, -1;
        hint.rate_num = n, hint.rate_den = d;
    }
    return 2;
}

}  // namespace zanvc_tool
