// The H.264 intra encoder: analysis, transform and quantisation, and
// reconstruction through the library; parameter sets, slice headers and
// macroblock syntax written here (CAVLC codes from the library's syntax
// elements, or bins through the library's CABAC coder); loop filter through
// the library once the picture is complete.
#include "encoder.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "bitwriter.h"
#include "zanvc.h"

namespace h264ex {

namespace {

using TokenColumn = const char* [17][4];
#include "../h264/cavlc_codes.inc"  // the decoder's table, checked against ffmpeg

struct Code {
    std::uint32_t bits = 0;
    int len = 0;
};

Code code_of(const char* s) {
    Code c;
    for (; *s; ++s) {
        c.bits = (c.bits << 1) | static_cast<std::uint32_t>(*s == '1');
        ++c.len;
    }
    return c;
}

// The code strings turned into (bits, length) pairs once.
struct CavlcTables {
    Code token[5][17][4];
    Code total_zeros[16][16];   // [TotalCoeff][total_zeros], 4x4 and AC blocks
    Code total_zeros_dc[4][4];  // 4:2:0 chroma DC
    Code run_before[8][16];     // [min(zerosLeft, 7)][run_before]
    CavlcTables() {
        for (int t = 0; t < 5; ++t)
            for (int n = 0; n <= kTokenMaxTotal[t]; ++n)
                for (int o = 0; o < 4; ++o)
                    if (kCoeffToken[t][n][o]) token[t][n][o] = code_of(kCoeffToken[t][n][o]);
        for (std::size_t n = 1; n < kTotalZeros4x4.size(); ++n)
            for (std::size_t z = 0; z < kTotalZeros4x4[n].size(); ++z) total_zeros[n][z] = code_of(kTotalZeros4x4[n][z]);
        for (std::size_t n = 1; n < kTotalZeros420.size(); ++n)
            for (std::size_t z = 0; z < kTotalZeros420[n].size(); ++z)
                total_zeros_dc[n][z] = code_of(kTotalZeros420[n][z]);
        for (std::size_t z = 1; z < kRunBefore.size(); ++z)
            for (std::size_t r = 0; r < kRunBefore[z].size(); ++r) run_before[z][r] = code_of(kRunBefore[z][r]);
    }
};

const CavlcTables& cavlc_tables() {
    static const CavlcTables t;
    return t;
}

// Zigzag scan: scan position -> raster position of a 4x4 block, and back.
const Zan32s kZigzag[16] = {0, 1, 4, 8, 5, 2, 3, 6, 9, 12, 13, 10, 7, 11, 14, 15};
const Zan16s kScanOfRaster[16] = {0, 1, 5, 6, 2, 4, 7, 12, 3, 8, 11, 13, 9, 10, 14, 15};

// 4x4 block n in coding order sits at (kBlkX[n], kBlkY[n]) in 4-sample
// units inside its macroblock.
const int kBlkX[16] = {0, 1, 0, 1, 2, 3, 2, 3, 0, 1, 0, 1, 2, 3, 2, 3};
const int kBlkY[16] = {0, 0, 1, 1, 0, 0, 1, 1, 2, 2, 3, 3, 2, 2, 3, 3};

// Code number of an intra coded_block_pattern (cbp -> codeNum; the standard
// lists codeNum -> cbp).
const int kCbpIntra[48] = {47, 31, 15, 0,  23, 27, 29, 30, 7,  11, 13, 14, 39, 43, 45, 46,
                           16, 3,  5,  10, 12, 19, 21, 26, 28, 35, 37, 42, 44, 1,  2,  4,
                           8,  17, 18, 20, 24, 6,  9,  22, 25, 32, 33, 34, 36, 40, 38, 41};

const int kChromaQp[52] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16, 17,
                           18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 29, 30, 31, 32, 32, 33,
                           34, 34, 35, 35, 36, 36, 37, 37, 37, 38, 38, 38, 39, 39, 39, 39};

// Loop-filter thresholds by index (Tables 8-16 and 8-17 of the standard):
// alpha, beta, and tc0 for bS 3 (the only strength below 4 in intra pictures).
const std::uint8_t kAlpha[52] = {0,  0,  0,  0,  0,  0,  0,  0,  0,   0,   0,   0,   0,   0,   0,   0,   4,   4,
                                 5,  6,  7,  8,  9,  10, 12, 13, 15,  17,  20,  22,  25,  28,  32,  36,  40,  45,
                                 50, 56, 63, 71, 80, 90, 101, 113, 127, 144, 162, 182, 203, 226, 255, 255};
const std::uint8_t kBeta[52] = {0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  2,  2,
                                2,  3,  3,  3,  3,  4,  4,  4,  6,  6,  7,  7,  8,  8,  9,  9,  10, 10,
                                11, 11, 12, 12, 13, 13, 14, 14, 15, 15, 16, 16, 17, 17, 18, 18};
const std::uint8_t kTc0Bs3[52] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,  0,  0,  0,  0,  0,  1,
                                  1, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 2,  2,  3,  3,  3,  4,  4,
                                  4, 5, 6, 6, 7, 8, 9, 10, 11, 13, 14, 16, 18, 20, 23, 25};

// Largest level magnitude a CAVLC level code can carry in Baseline and Main
// streams (level_prefix at most 15).
constexpr int kMaxLevel = 2063;

// Context index offsets of coded_block_flag by ctxBlockCat.
const int kCbfCatOffset[5] = {0, 4, 8, 12, 16};

// Per macroblock, what its neighbours need to know.
struct MbInfo {
    bool i16 = false;
    std::uint8_t cbp_luma = 0, cbp_chroma = 0, chroma_mode = 0;
    std::uint8_t mode4[16] = {};  // raster order of 4x4 units; 2 (DC) for Intra 16x16
    std::uint8_t nz[16] = {};     // coefficients per luma 4x4 block, raster (AC only in Intra 16x16)
    std::uint8_t nz_c[2][4] = {}; // chroma AC blocks, raster
    std::uint8_t cbf_dc[3] = {};  // coded_block_flag of luma DC (Intra 16x16), U DC, V DC
};

// The levels of the macroblock being coded.
struct MbLevels {
    int mode16 = 0;
    std::uint8_t mode4[16] = {};      // coding order
    Zan16s luma[16][16] = {};         // per 4x4 block in coding order, raster positions
    Zan16s dc_y[16] = {};             // Intra 16x16 DC levels, raster order of the blocks
    Zan16s dc_c[2][4] = {};           // chroma DC levels, raster 2x2
    Zan16s ac_c[2][4][16] = {};       // chroma AC levels, block raster, positions raster (0 unused)
};

int clamp_level(Zan16s* v, int n) {
    int count = 0;
    for (int i = 0; i < n; ++i) {
        v[i] = static_cast<Zan16s>(std::clamp<int>(v[i], -kMaxLevel, kMaxLevel));
        count += v[i] != 0;
    }
    return count;
}

int count_nonzero(const Zan16s* v, int n) {
    int c = 0;
    for (int i = 0; i < n; ++i) c += v[i] != 0;
    return c;
}

// CABAC coder over a buffer that grows when the coder reaches its end.
struct Cabac {
    ZanCABACState st{};
    std::vector<std::uint32_t> buf;
    std::size_t size = 0;
    int moves = 0, retries = 0;
    ZanStatus status = zanStsOk;  // first failure

    Zan8u* base() { return reinterpret_cast<Zan8u*>(buf.data()); }

    bool start(const std::vector<std::uint8_t>& header, std::size_t header_bits, int qp, std::size_t initial) {
        size = std::max<std::size_t>(initial, (header.size() + 8 + 3) & ~std::size_t{3});
        buf.assign(size / 4 + 1, 0);
        std::memcpy(base(), header.data(), header.size());
        moves = retries = 0;
        status = zaniCABACInit_H264(&st, base(), static_cast<Zan32u>(header_bits), static_cast<Zan32u>(size), qp, -1);
        return status == zanStsOk;
    }
    // Moves the coder to a buffer twice as large.
    void grow() {
        const std::size_t nsize = size * 2;
        std::vector<std::uint32_t> nbuf(nsize / 4 + 1, 0);
        std::memcpy(nbuf.data(), buf.data(), size);
        const ZanStatus s = zaniCABACSetStream_H264(reinterpret_cast<Zan8u*>(nbuf.data()), static_cast<Zan32u>(nsize), &st);
        if (s != zanStsOk) {
            if (status == zanStsOk) status = s;
            return;
        }
        buf.swap(nbuf);
        size = nsize;
        ++moves;
    }
    // Single bins are kept clear of the buffer's end (a bin that fails there
    // may already have carried into earlier bytes); residual blocks, which
    // the library undoes as a whole, are repeated after a move instead.
    void room(std::ptrdiff_t words) {
        while (status == zanStsOk && st.pStreamEnd - st.pStreamWord < words) grow();
    }
    void bin(int ctx, int b) {
        room(2);
        const ZanStatus s = zaniCABACEncodeBin_H264(static_cast<Zan32u>(ctx), static_cast<Zan32u>(b), &st);
        if (s != zanStsOk && status == zanStsOk) status = s;
    }
    void residual(const Zan16s* scan, int n, int cat) {
        int last = n - 1;
        while (last >= 0 && scan[last] == 0) --last;
        for (;;) {
            room(1);
            const ZanStatus s = zaniCABACEncodeResidualBlock_H264_16s(scan, last, static_cast<Zan32u>(cat), 0, 1, &st);
            if (s == zanStsCabacBad && status == zanStsOk) {
                ++retries;
                grow();
                continue;
            }
            if (s != zanStsOk && status == zanStsOk) status = s;
            return;
        }
    }
    // end_of_slice_flag 1 and the flush; returns the payload bytes.
    std::size_t finish() {
        room(4);
        bin(276, 1);
        Zan32u bytes = 0;
        room(4);
        const ZanStatus s = zaniCABACTerminateSlice_H264(&bytes, &st);
        if (s != zanStsOk && status == zanStsOk) status = s;
        return bytes;
    }
};

const char* status_text(ZanStatus s) {
    static char text[32];
    std::snprintf(text, sizeof text, "status %d", static_cast<int>(s));
    return text;
}

}  // namespace

struct Encoder::Impl {
    EncoderConfig cfg;
    int mbw = 0, mbh = 0;
    int lw = 0, lh = 0, cw = 0, ch = 0;  // padded plane sizes
    int qp = 26, qpc = 26, lambda = 1;
    std::vector<Zan8u> src_y, src_u, src_v;  // padded source
    std::vector<Zan8u> rec_y, rec_u, rec_v;  // reconstruction
    std::vector<MbInfo> info;
    MbLevels lv;
    BitWriter bw;   // CAVLC slice, or the slice header before CABAC
    Cabac cabac;
    bool headers_sent = false;
    int idr_pic_id = 0;
    ZanStatus failure = zanStsOk;
    std::string fail_where;

    void fail(ZanStatus s, const char* where) {
        if (failure == zanStsOk) {
            failure = s;
            fail_where = where;
        }
    }
    void check(ZanStatus s, const char* where) {
        if (s != zanStsOk) fail(s, where);
    }

    void load(const std::uint8_t* yuv);
    void write_sps(std::vector<std::uint8_t>& out) const;
    void write_pps(std::vector<std::uint8_t>& out) const;
    void slice_header(BitWriter& w) const;
    void encode_mb(int mx, int my);
    int analyse_i16(int mx, int my, int& best_cost);
    int code_i4x4(int mx, int my, int limit);
    void code_i16(int mx, int my, int mode);
    void code_chroma(int mx, int my);
    void write_mb_cavlc(int mx, int my);
    void write_mb_cabac(int mx, int my);
    void cavlc_block(const Zan16s* raster, int first, int nc, int max_coeff);
    int luma_nc(int mx, int my, int bx, int by) const;
    int chroma_nc(int mx, int my, int c, int bx, int by) const;
    void deblock();
};

Encoder::Encoder() : impl_(std::make_unique<Impl>()) {}
Encoder::~Encoder() = default;

bool Encoder::open(const EncoderConfig& config, std::string& err) {
    Impl& e = *impl_;
    if (config.width < 2 || config.height < 2 || config.width > 16384 || config.height > 16384 ||
        (config.width & 1) || (config.height & 1)) {
        err = "width and height must be even, 2 to 16384";
        return false;
    }
    if (config.qp < 0 || config.qp > 51) {
        err = "QP must be 0 to 51";
        return false;
    }
    e.cfg = config;
    e.mbw = (config.width + 15) / 16;
    e.mbh = (config.height + 15) / 16;
    e.lw = e.mbw * 16;
    e.lh = e.mbh * 16;
    e.cw = e.lw / 2;
    e.ch = e.lh / 2;
    e.qp = config.qp;
    e.qpc = kChromaQp[config.qp];
    e.lambda = std::max(1, static_cast<int>(std::lround(0.85 * std::pow(2.0, (config.qp - 12) / 3.0))));
    const std::size_t ls = static_cast<std::size_t>(e.lw) * static_cast<std::size_t>(e.lh);
    const std::size_t cs = ls / 4;
    e.src_y.assign(ls, 0);
    e.src_u.assign(cs, 0);
    e.src_v.assign(cs, 0);
    e.rec_y.assign(ls, 0);
    e.rec_u.assign(cs, 0);
    e.rec_v.assign(cs, 0);
    e.info.assign(static_cast<std::size_t>(e.mbw) * static_cast<std::size_t>(e.mbh), MbInfo{});
    e.headers_sent = false;
    e.idr_pic_id = 0;
    (void)cavlc_tables();
    return true;
}

// Copies the picture into the padded planes, repeating the last column and
// row into the padding.
void Encoder::Impl::load(const std::uint8_t* yuv) {
    const int w = cfg.width, h = cfg.height;
    auto plane = [](const std::uint8_t* s, int sw, int sh, Zan8u* d, int dw, int dh) {
        for (int y = 0; y < dh; ++y) {
            const std::uint8_t* row = s + static_cast<std::size_t>(std::min(y, sh - 1)) * static_cast<std::size_t>(sw);
            Zan8u* out = d + static_cast<std::size_t>(y) * static_cast<std::size_t>(dw);
            std::memcpy(out, row, static_cast<std::size_t>(sw));
            for (int x = sw; x < dw; ++x) out[x] = row[sw - 1];
        }
    };
    const std::size_t ys = static_cast<std::size_t>(w) * static_cast<std::size_t>(h);
    plane(yuv, w, h, src_y.data(), lw, lh);
    plane(yuv + ys, w / 2, h / 2, src_u.data(), cw, ch);
    plane(yuv + ys + ys / 4, w / 2, h / 2, src_v.data(), cw, ch);
}

void Encoder::Impl::write_sps(std::vector<std::uint8_t>& out) const {
    BitWriter w;
    const int mbs = mbw * mbh;
    const int level = mbs <= 396 ? 21 : mbs <= 1620 ? 30 : mbs <= 3600 ? 31 : mbs <= 8192 ? 40 : mbs <= 22080 ? 50 : 51;
    w.put(cfg.cabac ? 77 : 66, 8);           // profile_idc: Main or Baseline
    w.put(cfg.cabac ? 0x40 : 0xC0, 8);       // constraint_set flags (Baseline streams also meet Main)
    w.put(static_cast<std::uint32_t>(level), 8);
    w.ue(0);                                 // seq_parameter_set_id
    w.ue(0);                                 // log2_max_frame_num_minus4
    w.ue(2);                                 // pic_order_cnt_type 2: output order is decoding order
    w.ue(1);                                 // max_num_ref_frames
    w.put(0, 1);                             // gaps_in_frame_num_value_allowed_flag
    w.ue(static_cast<std::uint32_t>(mbw - 1));
    w.ue(static_cast<std::uint32_t>(mbh - 1));
    w.put(1, 1);                             // frame_mbs_only_flag
    w.put(1, 1);                             // direct_8x8_inference_flag
    const bool crop = cfg.width != lw || cfg.height != lh;
    w.put(crop, 1);
    if (crop) {
        w.ue(0);
        w.ue(static_cast<std::uint32_t>((lw - cfg.width) / 2));
        w.ue(0);
        w.ue(static_cast<std::uint32_t>((lh - cfg.height) / 2));
    }
    w.put(0, 1);                             // vui_parameters_present_flag
    w.trailing();
    const auto b = w.bytes();
    append_nal(out, 3, 7, b.data(), b.size());
}

void Encoder::Impl::write_pps(std::vector<std::uint8_t>& out) const {
    BitWriter w;
    w.ue(0);                  // pic_parameter_set_id
    w.ue(0);                  // seq_parameter_set_id
    w.put(cfg.cabac, 1);      // entropy_coding_mode_flag
    w.put(0, 1);              // bottom_field_pic_order_in_frame_present_flag
    w.ue(0);                  // num_slice_groups_minus1
    w.ue(0);                  // num_ref_idx_l0_default_active_minus1
    w.ue(0);                  // num_ref_idx_l1_default_active_minus1
    w.put(0, 1);              // weighted_pred_flag
    w.put(0, 2);              // weighted_bipred_idc
    w.se(qp - 26);            // pic_init_qp_minus26
    w.se(0);                  // pic_init_qs_minus26
    w.se(0);                  // chroma_qp_index_offset
    w.put(1, 1);              // deblocking_filter_control_present_flag
    w.put(0, 1);              // constrained_intra_pred_flag
    w.put(0, 1);              // redundant_pic_cnt_present_flag
    w.trailing();
    const auto b = w.bytes();
    append_nal(out, 3, 8, b.data(), b.size());
}

void Encoder::Impl::slice_header(BitWriter& w) const {
    w.ue(0);                                          // first_mb_in_slice
    w.ue(7);                                          // slice_type: I, all slices of the picture
    w.ue(0);                                          // pic_parameter_set_id
    w.put(0, 4);                                      // frame_num (IDR)
    w.ue(static_cast<std::uint32_t>(idr_pic_id));     // idr_pic_id
    w.put(0, 1);                                      // no_output_of_prior_pics_flag
    w.put(0, 1);                                      // long_term_reference_flag
    w.se(0);                                          // slice_qp_delta
    w.ue(cfg.deblock ? 0 : 1);                        // disable_deblocking_filter_idc
    if (cfg.deblock) {
        w.se(0);                                      // slice_alpha_c0_offset_div2
        w.se(0);                                      // slice_beta_offset_div2
    }
}

// ------------------------------------------------------------------ analysis

// Tries the Intra 16x16 modes the neighbours allow; returns the best mode
// and its cost (SATD plus a mode charge).
int Encoder::Impl::analyse_i16(int mx, int my, int& best_cost) {
    Zan8u* rec = rec_y.data() + static_cast<std::size_t>(my * 16) * static_cast<std::size_t>(lw) + mx * 16;
    const Zan8u* src = src_y.data() + static_cast<std::size_t>(my * 16) * static_cast<std::size_t>(lw) + mx * 16;
    const bool top = my > 0, left = mx > 0, tl = top && left;
    const int avail = (top ? 1 : 0) | (left ? 2 : 0) | (tl ? 32 : 0);
    int best = -1;
    best_cost = 0;
    for (int mode = 0; mode < 4; ++mode) {
        if ((mode == 0 && !top) || (mode == 1 && !left) || (mode == 3 && !(top && left && tl))) continue;
        check(zaniPredictIntra_16x16_H264_8u_C1IR(rec, lw, mode, avail), "16x16 prediction");
        Zan32s satd = 0;
        check(zaniSATD16x16_8u32s_C1R(src, lw, rec, lw, &satd), "SATD 16x16");
        const int cost = satd + lambda * (mode == 2 ? 1 : 3);
        if (best < 0 || cost < best_cost) {
            best = mode;
            best_cost = cost;
        }
    }
    return best;
}

// Codes the macroblock as Intra 4x4, block by block (prediction, residual,
// levels, reconstruction in place).  Stops and returns -1 as soon as its
// cost passes `limit`; else returns the cost.
int Encoder::Impl::code_i4x4(int mx, int my, int limit) {
    MbInfo& cur = info[static_cast<std::size_t>(my * mbw + mx)];
    int total = 0;
    for (int n = 0; n < 16; ++n) {
        const int bx = kBlkX[n], by = kBlkY[n];
        const int x0 = mx * 16 + bx * 4, y0 = my * 16 + by * 4;
        Zan8u* rec = rec_y.data() + static_cast<std::size_t>(y0) * static_cast<std::size_t>(lw) + x0;
        const Zan8u* src = src_y.data() + static_cast<std::size_t>(y0) * static_cast<std::size_t>(lw) + x0;
        const bool top = y0 > 0, left = x0 > 0, tl = top && left;
        bool tr = false;
        if (top && x0 + 4 < lw) {
            if (by == 0) {
                tr = true;  // in the macroblock row above, already coded
            } else {
                // inside this macroblock: coded before block n?
                const int rx = bx + 1, ry = by - 1;
                if (rx < 4) {
                    for (int k = 0; k < n; ++k)
                        if (kBlkX[k] == rx && kBlkY[k] == ry) tr = true;
                }
            }
        }
        const int avail = (top ? 1 : 0) | (left ? 2 : 0) | (tl ? 32 : 0) | (tr ? 64 : 0);
        // Predicted mode from the neighbours' modes.
        int pred_mode = 2;
        if (top && left) {
            const int ma = bx > 0 ? cur.mode4[by * 4 + bx - 1] : info[static_cast<std::size_t>(my * mbw + mx - 1)].mode4[by * 4 + 3];
            const int mb = by > 0 ? cur.mode4[(by - 1) * 4 + bx] : info[static_cast<std::size_t>((my - 1) * mbw + mx)].mode4[12 + bx];
            pred_mode = std::min(ma, mb);
        }
        int best = -1, best_cost = 0, last_tried = -1;
        for (int mode = 0; mode < 9; ++mode) {
            const bool ok = mode == 2 || ((mode == 0 || mode == 3 || mode == 7) && top) ||
                            ((mode == 1 || mode == 8) && left) || ((mode >= 4 && mode <= 6) && top && left && tl);
            if (!ok) continue;
            check(zaniPredictIntra_4x4_H264_8u_C1IR(rec, lw, mode, avail), "4x4 prediction");
            last_tried = mode;
            Zan32s satd = 0;
            check(zaniSATD4x4_8u32s_C1R(src, lw, rec, lw, &satd), "SATD 4x4");
            const int cost = satd + lambda * (mode == pred_mode ? 1 : 2);
            if (best < 0 || cost < best_cost) {
                best = mode;
                best_cost = cost;
            }
        }
        total += best_cost;
        if (total > limit) return -1;
        if (best != last_tried) check(zaniPredictIntra_4x4_H264_8u_C1IR(rec, lw, best, avail), "4x4 prediction");
        lv.mode4[n] = static_cast<std::uint8_t>(best);
        cur.mode4[by * 4 + bx] = static_cast<std::uint8_t>(best);
        Zan16s diff[16];
        check(zaniGetDiff4x4_8u16s_C1(src, lw, rec, lw, diff, 8), "difference");
        Zan32s num = 0, last = 0;
        Zan16s* levels = lv.luma[n];
        check(zaniTransformQuantFwd4x4_H264_16s_C1(diff, levels, qp, &num, 1, kScanOfRaster, &last, nullptr),
              "4x4 transform and quantisation");
        num = clamp_level(levels, 16);
        cur.nz[by * 4 + bx] = static_cast<std::uint8_t>(num);
        if (num > 0) {
            Zan16s work[16];
            std::memcpy(work, levels, sizeof work);
            check(zaniTransformQuantInvAddPred4x4_H264_16s_C1IR(rec, lw, work, nullptr, rec, lw, qp, 1, nullptr),
                  "4x4 reconstruction");
        }
    }
    return total;
}

// Codes the macroblock as Intra 16x16 with the given mode.
void Encoder::Impl::code_i16(int mx, int my, int mode) {
    MbInfo& cur = info[static_cast<std::size_t>(my * mbw + mx)];
    Zan8u* rec = rec_y.data() + static_cast<std::size_t>(my * 16) * static_cast<std::size_t>(lw) + mx * 16;
    const Zan8u* src = src_y.data() + static_cast<std::size_t>(my * 16) * static_cast<std::size_t>(lw) + mx * 16;
    const bool top = my > 0, left = mx > 0, tl = top && left, tr = top && mx + 1 < mbw;
    const int avail = (top ? 1 : 0) | (left ? 2 : 0) | (tl ? 32 : 0);
    check(zaniPredictIntra_16x16_H264_8u_C1IR(rec, lw, mode, avail), "16x16 prediction");
    Zan16s diff[256];
    check(zaniSub16x16_8u16s_C1R(src, lw, rec, lw, diff, 32), "difference");
    int ac_total = 0;
    for (int n = 0; n < 16; ++n) {
        const int bx = kBlkX[n], by = kBlkY[n];
        Zan16s blk[16], coef[16];
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 4; ++x) blk[y * 4 + x] = diff[(by * 4 + y) * 16 + bx * 4 + x];
        check(zaniTransformResidual4x4Fwd_H264_16s_C1(blk, coef), "4x4 transform");
        lv.dc_y[by * 4 + bx] = coef[0];
        coef[0] = 0;
        Zan32s num = 0, last = 0;
        check(zaniQuantizeResidual4x4Fwd_H264_16s_C1(coef, lv.luma[n], &num, &last, nullptr, kScanOfRaster, qp, 1),
              "4x4 quantisation");
        lv.luma[n][0] = 0;
        ac_total += clamp_level(lv.luma[n], 16);
    }
    Zan16s tblock[16];
    Zan32s dc_num = 0, dc_last = 0;
    check(zaniTransformQuantFwdLumaDC4x4_H264_16s_C1I(lv.dc_y, tblock, qp, &dc_num, 1, kScanOfRaster, &dc_last, nullptr),
          "luma DC transform and quantisation");
    dc_num = clamp_level(lv.dc_y, 16);
    lv.mode16 = mode;
    cur.i16 = true;
    cur.cbp_luma = ac_total > 0 ? 15 : 0;
    cur.cbf_dc[0] = dc_num > 0;
    std::fill(std::begin(cur.mode4), std::end(cur.mode4), std::uint8_t{2});
    // Reconstruction: the coded blocks one after another for the library.
    Zan16s coeffs[16 + 256];
    Zan16s* p = coeffs;
    Zan32u cbp = 0;
    if (dc_num > 0) {
        std::memcpy(p, lv.dc_y, sizeof lv.dc_y);
        p += 16;
        cbp |= 1;
    }
    for (int n = 0; n < 16; ++n) {
        const int nz = cur.cbp_luma ? count_nonzero(lv.luma[n], 16) : 0;
        cur.nz[kBlkY[n] * 4 + kBlkX[n]] = static_cast<std::uint8_t>(nz);
        if (nz > 0) {
            std::memcpy(p, lv.luma[n], sizeof lv.luma[n]);
            p += 16;
            cbp |= 1u << (n + 1);
        }
    }
    Zan16s* cursor = coeffs;
    const Zan8u edge = static_cast<Zan8u>((left ? 0 : 1) | (top ? 0 : 4) | (tl ? 0 : 16) | (tr ? 0 : 32));
    check(zaniReconstructLumaIntra16x16MB_H264_16s8u_C1R(&cursor, rec, lw, static_cast<Zan32u>(mode), cbp, qp, edge),
          "16x16 reconstruction");
}

void Encoder::Impl::code_chroma(int mx, int my) {
    MbInfo& cur = info[static_cast<std::size_t>(my * mbw + mx)];
    const std::size_t off = static_cast<std::size_t>(my * 8) * static_cast<std::size_t>(cw) + static_cast<std::size_t>(mx * 8);
    Zan8u* rec[2] = {rec_u.data() + off, rec_v.data() + off};
    const Zan8u* src[2] = {src_u.data() + off, src_v.data() + off};
    const bool top = my > 0, left = mx > 0, tl = top && left, tr = top && mx + 1 < mbw;
    const int avail = (top ? 1 : 0) | (left ? 2 : 0) | (tl ? 32 : 0);
    static const int kModeBits[4] = {1, 3, 3, 5};
    int best = -1, best_cost = 0, last_tried = -1;
    for (int mode = 0; mode < 4; ++mode) {
        if ((mode == 1 && !left) || (mode == 2 && !top) || (mode == 3 && !(top && left && tl))) continue;
        int cost = lambda * kModeBits[mode];
        for (int c = 0; c < 2; ++c) {
            check(zaniPredictIntraChroma8x8_H264_8u_C1IR(rec[c], cw, mode, avail), "chroma prediction");
            Zan32s satd = 0;
            check(zaniSATD8x8_8u32s_C1R(src[c], cw, rec[c], cw, &satd), "SATD 8x8");
            cost += satd;
        }
        last_tried = mode;
        if (best < 0 || cost < best_cost) {
            best = mode;
            best_cost = cost;
        }
    }
    if (best != last_tried)
        for (int c = 0; c < 2; ++c)
            check(zaniPredictIntraChroma8x8_H264_8u_C1IR(rec[c], cw, best, avail), "chroma prediction");
    cur.chroma_mode = static_cast<std::uint8_t>(best);
    bool any_dc = false, any_ac = false;
    for (int c = 0; c < 2; ++c) {
        Zan16s diff[64];
        check(zaniSub8x8_8u16s_C1R(src[c], cw, rec[c], cw, diff, 16), "difference");
        for (int b = 0; b < 4; ++b) {
            const int bx = b & 1, by = b >> 1;
            Zan16s blk[16], coef[16];
            for (int y = 0; y < 4; ++y)
                for (int x = 0; x < 4; ++x) blk[y * 4 + x] = diff[(by * 4 + y) * 8 + bx * 4 + x];
            check(zaniTransformResidual4x4Fwd_H264_16s_C1(blk, coef), "4x4 transform");
            lv.dc_c[c][b] = coef[0];
            coef[0] = 0;
            Zan32s num = 0, last = 0;
            check(zaniQuantizeResidual4x4Fwd_H264_16s_C1(coef, lv.ac_c[c][b], &num, &last, nullptr, kScanOfRaster, qpc,
                                                          1),
                  "4x4 quantisation");
            lv.ac_c[c][b][0] = 0;
            any_ac = clamp_level(lv.ac_c[c][b], 16) > 0 || any_ac;
        }
        Zan16s tblock[4];
        Zan32s num = 0;
        check(zaniTransformQuantFwdChromaDC2x2_H264_16s_C1I(lv.dc_c[c], tblock, qpc, &num, 1, 1, nullptr),
              "chroma DC transform and quantisation");
        num = clamp_level(lv.dc_c[c], 4);
        cur.cbf_dc[1 + c] = num > 0;
        any_dc = any_dc || num > 0;
    }
    cur.cbp_chroma = static_cast<std::uint8_t>(any_ac ? 2 : any_dc ? 1 : 0);
    Zan16s coeffs[8 + 128];
    Zan16s* p = coeffs;
    Zan32u cbp = 0;
    for (int c = 0; c < 2; ++c)
        if (cur.cbf_dc[1 + c]) {
            std::memcpy(p, lv.dc_c[c], sizeof lv.dc_c[c]);
            p += 4;
            cbp |= 1u << (17 + c);
        }
    for (int c = 0; c < 2; ++c)
        for (int b = 0; b < 4; ++b) {
            const int nz = cur.cbp_chroma == 2 ? count_nonzero(lv.ac_c[c][b], 16) : 0;
            cur.nz_c[c][b] = static_cast<std::uint8_t>(nz);
            if (nz > 0) {
                std::memcpy(p, lv.ac_c[c][b], sizeof lv.ac_c[c][b]);
                p += 16;
                cbp |= 1u << (19 + 4 * c + b);
            }
        }
    Zan16s* cursor = coeffs;
    const Zan8u edge = static_cast<Zan8u>((left ? 0 : 1) | (top ? 0 : 4) | (tl ? 0 : 16) | (tr ? 0 : 32));
    check(zaniReconstructChromaIntraMB_H264_16s8u_P2R(&cursor, rec[0], rec[1], static_cast<Zan32u>(cw),
                                                        static_cast<Zan32u>(best), cbp, qpc, edge),
          "chroma reconstruction");
}

void Encoder::Impl::encode_mb(int mx, int my) {
    MbInfo& cur = info[static_cast<std::size_t>(my * mbw + mx)];
    cur = MbInfo{};
    int cost16 = 0;
    const int mode16 = analyse_i16(mx, my, cost16);
    const int cost4 = code_i4x4(mx, my, cost16);
    if (cost4 < 0) {
        cur = MbInfo{};
        code_i16(mx, my, mode16);
    } else {
        cur.i16 = false;
        std::uint8_t cbp = 0;
        for (int n = 0; n < 16; ++n)
            if (cur.nz[kBlkY[n] * 4 + kBlkX[n]]) cbp = static_cast<std::uint8_t>(cbp | (1 << (n >> 2)));
        cur.cbp_luma = cbp;
    }
    code_chroma(mx, my);
    if (cfg.cabac)
        write_mb_cabac(mx, my);
    else
        write_mb_cavlc(mx, my);
}

// -------------------------------------------------------------------- CAVLC

int Encoder::Impl::luma_nc(int mx, int my, int bx, int by) const {
    const MbInfo& cur = info[static_cast<std::size_t>(my * mbw + mx)];
    int na = -1, nb = -1;
    if (bx > 0)
        na = cur.nz[by * 4 + bx - 1];
    else if (mx > 0)
        na = info[static_cast<std::size_t>(my * mbw + mx - 1)].nz[by * 4 + 3];
    if (by > 0)
        nb = cur.nz[(by - 1) * 4 + bx];
    else if (my > 0)
        nb = info[static_cast<std::size_t>((my - 1) * mbw + mx)].nz[12 + bx];
    if (na >= 0 && nb >= 0) return (na + nb + 1) >> 1;
    if (na >= 0) return na;
    if (nb >= 0) return nb;
    return 0;
}

int Encoder::Impl::chroma_nc(int mx, int my, int c, int bx, int by) const {
    const MbInfo& cur = info[static_cast<std::size_t>(my * mbw + mx)];
    int na = -1, nb = -1;
    if (bx > 0)
        na = cur.nz_c[c][by * 2];
    else if (mx > 0)
        na = info[static_cast<std::size_t>(my * mbw + mx - 1)].nz_c[c][by * 2 + 1];
    if (by > 0)
        nb = cur.nz_c[c][bx];
    else if (my > 0)
        nb = info[static_cast<std::size_t>((my - 1) * mbw + mx)].nz_c[c][2 + bx];
    if (na >= 0 && nb >= 0) return (na + nb + 1) >> 1;
    if (na >= 0) return na;
    if (nb >= 0) return nb;
    return 0;
}

// residual_block_cavlc of one block.  raster: the 16 levels (positions
// first..15 coded) or, with nc -1, the 4 chroma DC levels.
void Encoder::Impl::cavlc_block(const Zan16s* raster, int first, int nc, int max_coeff) {
    const CavlcTables& t = cavlc_tables();
    Zan8u t1 = 0, signs = 0, total = 0, tz = 0;
    Zan16s levels[16];
    Zan8u runs[16];
    if (nc < 0)
        check(zaniEncodeChromaDcCoeffsCAVLC_H264_16s(raster, &t1, &signs, &total, &tz, levels, runs), "CAVLC elements");
    else
        check(zaniEncodeCoeffsCAVLC_H264_16s(raster, first, kZigzag, 15, &t1, &signs, &total, &tz, levels, runs),
              "CAVLC elements");
    if (nc >= 8) {
        if (total == 0)
            bw.put(3, 6);
        else
            bw.put(static_cast<std::uint32_t>(((total - 1) << 2) | t1), 6);
    } else {
        const int col = nc < 0 ? 3 : nc < 2 ? 0 : nc < 4 ? 1 : 2;
        const Code& c = t.token[col][total][t1];
        bw.put(c.bits, c.len);
    }
    if (total == 0) return;
    for (int i = t1 - 1; i >= 0; --i) bw.put_bit((signs >> i) & 1u);
    int suffix_length = (total > 10 && t1 < 3) ? 1 : 0;
    for (int i = 0; i < total - t1; ++i) {
        const int level = levels[i];
        int code = level > 0 ? 2 * level - 2 : -2 * level - 1;
        if (i == 0 && t1 < 3) code -= 2;
        int prefix, suffix = 0, suffix_bits = 0;
        if (suffix_length == 0) {
            if (code < 14) {
                prefix = code;
            } else if (code < 30) {
                prefix = 14;
                suffix = code - 14;
                suffix_bits = 4;
            } else {
                prefix = 15;
                suffix = code - 30;
                suffix_bits = 12;
            }
        } else if (code < (15 << suffix_length)) {
            prefix = code >> suffix_length;
            suffix = code & ((1 << suffix_length) - 1);
            suffix_bits = suffix_length;
        } else {
            prefix = 15;
            suffix = code - (15 << suffix_length);
            suffix_bits = 12;
        }
        bw.put(0, prefix);
        bw.put_bit(1);
        bw.put(static_cast<std::uint32_t>(suffix), suffix_bits);
        if (suffix_length == 0) suffix_length = 1;
        if (std::abs(level) > (3 << (suffix_length - 1)) && suffix_length < 6) ++suffix_length;
    }
    if (total < max_coeff) {
        const Code& c = nc < 0 ? t.total_zeros_dc[total][tz] : t.total_zeros[total][tz];
        bw.put(c.bits, c.len);
    }
    int zeros_left = tz;
    for (int i = 0; i < total - 1 && zeros_left > 0; ++i) {
        const Code& c = t.run_before[std::min(zeros_left, 7)][runs[i]];
        bw.put(c.bits, c.len);
        zeros_left -= runs[i];
    }
}

void Encoder::Impl::write_mb_cavlc(int mx, int my) {
    const MbInfo& cur = info[static_cast<std::size_t>(my * mbw + mx)];
    const int cbp = cur.cbp_luma | (cur.cbp_chroma << 4);
    if (cur.i16) {
        bw.ue(static_cast<std::uint32_t>(1 + lv.mode16 + 4 * cur.cbp_chroma + (cur.cbp_luma ? 12 : 0)));
    } else {
        bw.ue(0);
        for (int n = 0; n < 16; ++n) {
            const int bx = kBlkX[n], by = kBlkY[n];
            const int x0 = mx * 16 + bx * 4, y0 = my * 16 + by * 4;
            int pred_mode = 2;
            if (x0 > 0 && y0 > 0) {
                const int ma = bx > 0 ? cur.mode4[by * 4 + bx - 1] : info[static_cast<std::size_t>(my * mbw + mx - 1)].mode4[by * 4 + 3];
                const int mb = by > 0 ? cur.mode4[(by - 1) * 4 + bx] : info[static_cast<std::size_t>((my - 1) * mbw + mx)].mode4[12 + bx];
                pred_mode = std::min(ma, mb);
            }
            const int mode = lv.mode4[n];
            if (mode == pred_mode) {
                bw.put_bit(1);
            } else {
                bw.put_bit(0);
                bw.put(static_cast<std::uint32_t>(mode < pred_mode ? mode : mode - 1), 3);
            }
        }
    }
    bw.ue(cur.chroma_mode);
    if (!cur.i16) {
        int code = 0;
        while (kCbpIntra[code] != cbp) ++code;
        bw.ue(static_cast<std::uint32_t>(code));
    }
    if (cur.i16 || cbp != 0) bw.se(0);  // mb_qp_delta
    if (cur.i16) {
        cavlc_block(lv.dc_y, 0, luma_nc(mx, my, 0, 0), 16);
        if (cur.cbp_luma)
            for (int n = 0; n < 16; ++n) cavlc_block(lv.luma[n], 1, luma_nc(mx, my, kBlkX[n], kBlkY[n]), 15);
    } else {
        for (int n = 0; n < 16; ++n)
            if (cur.cbp_luma & (1 << (n >> 2))) cavlc_block(lv.luma[n], 0, luma_nc(mx, my, kBlkX[n], kBlkY[n]), 16);
    }
    if (cur.cbp_chroma)
        for (int c = 0; c < 2; ++c) cavlc_block(lv.dc_c[c], 0, -1, 4);
    if (cur.cbp_chroma == 2)
        for (int c = 0; c < 2; ++c)
            for (int b = 0; b < 4; ++b) cavlc_block(lv.ac_c[c][b], 1, chroma_nc(mx, my, c, b & 1, b >> 1), 15);
}

// -------------------------------------------------------------------- CABAC

void Encoder::Impl::write_mb_cabac(int mx, int my) {
    Cabac& cb = cabac;
    const MbInfo& cur = info[static_cast<std::size_t>(my * mbw + mx)];
    const MbInfo* a = mx > 0 ? &info[static_cast<std::size_t>(my * mbw + mx - 1)] : nullptr;
    const MbInfo* b = my > 0 ? &info[static_cast<std::size_t>((my - 1) * mbw + mx)] : nullptr;
    // mb_type (I slice, ctxIdx 3..10).
    const int inc0 = (a && a->i16 ? 1 : 0) + (b && b->i16 ? 1 : 0);
    if (!cur.i16) {
        cb.bin(3 + inc0, 0);
    } else {
        cb.bin(3 + inc0, 1);
        cb.bin(276, 0);  // not I_PCM
        cb.bin(3 + 3, cur.cbp_luma ? 1 : 0);
        if (cur.cbp_chroma == 0) {
            cb.bin(3 + 4, 0);
        } else {
            cb.bin(3 + 4, 1);
            cb.bin(3 + 5, cur.cbp_chroma == 2 ? 1 : 0);
        }
        cb.bin(3 + 6, (lv.mode16 >> 1) & 1);
        cb.bin(3 + 7, lv.mode16 & 1);
    }
    if (!cur.i16) {
        for (int n = 0; n < 16; ++n) {
            const int bx = kBlkX[n], by = kBlkY[n];
            int pred_mode = 2;
            if (mx * 16 + bx * 4 > 0 && my * 16 + by * 4 > 0) {
                const int ma = bx > 0 ? cur.mode4[by * 4 + bx - 1] : a->mode4[by * 4 + 3];
                const int mb = by > 0 ? cur.mode4[(by - 1) * 4 + bx] : b->mode4[12 + bx];
                pred_mode = std::min(ma, mb);
            }
            const int mode = lv.mode4[n];
            if (mode == pred_mode) {
                cb.bin(68, 1);
            } else {
                cb.bin(68, 0);
                const int rem = mode < pred_mode ? mode : mode - 1;
                for (int i = 0; i < 3; ++i) cb.bin(69, (rem >> i) & 1);
            }
        }
    }
    // intra_chroma_pred_mode (ctxIdx 64..67), truncated unary up to 3.
    {
        const int inc = (a && a->chroma_mode != 0 ? 1 : 0) + (b && b->chroma_mode != 0 ? 1 : 0);
        const int m = cur.chroma_mode;
        cb.bin(64 + inc, m > 0);
        if (m > 0) {
            cb.bin(64 + 3, m > 1);
            if (m > 1) cb.bin(64 + 3, m > 2);
        }
    }
    if (!cur.i16) {
        // coded_block_pattern: luma prefix (ctxIdx 73..76), chroma suffix (77..84).
        for (int b8 = 0; b8 < 4; ++b8) {
            const int bx8 = b8 & 1, by8 = b8 >> 1;
            int cond_a = 0, cond_b = 0;
            if (bx8 > 0)
                cond_a = ((cur.cbp_luma >> (b8 - 1)) & 1) == 0;
            else if (a)
                cond_a = ((a->cbp_luma >> (b8 + 1)) & 1) == 0;
            if (by8 > 0)
                cond_b = ((cur.cbp_luma >> (b8 - 2)) & 1) == 0;
            else if (b)
                cond_b = ((b->cbp_luma >> (b8 + 2)) & 1) == 0;
            cb.bin(73 + cond_a + 2 * cond_b, (cur.cbp_luma >> b8) & 1);
        }
        const int ca = a ? a->cbp_chroma : 0, cbn = b ? b->cbp_chroma : 0;
        cb.bin(77 + (ca > 0) + 2 * (cbn > 0), cur.cbp_chroma > 0);
        if (cur.cbp_chroma > 0) cb.bin(77 + 4 + (ca == 2) + 2 * (cbn == 2), cur.cbp_chroma == 2);
    }
    const int cbp = cur.cbp_luma | (cur.cbp_chroma << 4);
    if (cur.i16 || cbp != 0) cb.bin(60, 0);  // mb_qp_delta 0 (the previous one is always 0)

    // coded_block_flag condition of a neighbour: unavailable counts 1 in an
    // intra macroblock; else the neighbour block's flag.
    auto cbf = [&](int cat, int cond_a, int cond_b, int flag) {
        cb.room(2);
        cb.bin(85 + kCbfCatOffset[cat] + cond_a + 2 * cond_b, flag);
    };
    Zan16s scan[16];
    auto luma_cond = [&](int bx, int by, int& ca, int& cbb) {
        ca = bx > 0 ? cur.nz[by * 4 + bx - 1] != 0 : a ? a->nz[by * 4 + 3] != 0 : 1;
        cbb = by > 0 ? cur.nz[(by - 1) * 4 + bx] != 0 : b ? b->nz[12 + bx] != 0 : 1;
    };
    if (cur.i16) {
        const int ca = a ? a->cbf_dc[0] : 1, cbb = b ? b->cbf_dc[0] : 1;
        const int flag = cur.cbf_dc[0];
        cbf(0, ca, cbb, flag);
        if (flag) {
            for (int i = 0; i < 16; ++i) scan[i] = lv.dc_y[kZigzag[i]];
            cb.residual(scan, 16, 0);
        }
        if (cur.cbp_luma)
            for (int n = 0; n < 16; ++n) {
                int ca2, cb2;
                luma_cond(kBlkX[n], kBlkY[n], ca2, cb2);
                const int f = cur.nz[kBlkY[n] * 4 + kBlkX[n]] != 0;
                cbf(1, ca2, cb2, f);
                if (f) {
                    for (int i = 1; i < 16; ++i) scan[i - 1] = lv.luma[n][kZigzag[i]];
                    cb.residual(scan, 15, 1);
                }
            }
    } else {
        for (int n = 0; n < 16; ++n) {
            if (!(cur.cbp_luma & (1 << (n >> 2)))) continue;
            int ca2, cb2;
            luma_cond(kBlkX[n], kBlkY[n], ca2, cb2);
            const int f = cur.nz[kBlkY[n] * 4 + kBlkX[n]] != 0;
            cbf(2, ca2, cb2, f);
            if (f) {
                for (int i = 0; i < 16; ++i) scan[i] = lv.luma[n][kZigzag[i]];
                cb.residual(scan, 16, 2);
            }
        }
    }
    if (cur.cbp_chroma) {
        for (int c = 0; c < 2; ++c) {
            const int ca = a ? a->cbf_dc[1 + c] : 1, cbb = b ? b->cbf_dc[1 + c] : 1;
            const int f = cur.cbf_dc[1 + c];
            cbf(3, ca, cbb, f);
            if (f) cb.residual(lv.dc_c[c], 4, 3);
        }
    }
    if (cur.cbp_chroma == 2) {
        for (int c = 0; c < 2; ++c)
            for (int k = 0; k < 4; ++k) {
                const int bx = k & 1, by = k >> 1;
                const int ca = bx > 0 ? cur.nz_c[c][by * 2] != 0 : a ? a->nz_c[c][by * 2 + 1] != 0 : 1;
                const int cbb = by > 0 ? cur.nz_c[c][bx] != 0 : b ? b->nz_c[c][2 + bx] != 0 : 1;
                const int f = cur.nz_c[c][k] != 0;
                cbf(4, ca, cbb, f);
                if (f) {
                    for (int i = 1; i < 16; ++i) scan[i - 1] = lv.ac_c[c][k][kZigzag[i]];
                    cb.residual(scan, 15, 4);
                }
            }
    }
}

// ------------------------------------------------------------- loop filter

// Every edge of an intra picture has bS 4 on macroblock borders and 3
// inside; the picture's own borders are not filtered.
void Encoder::Impl::deblock() {
    const Zan8u alpha_y[2] = {kAlpha[qp], kAlpha[qp]}, beta_y[2] = {kBeta[qp], kBeta[qp]};
    const Zan8u alpha_c[2] = {kAlpha[qpc], kAlpha[qpc]}, beta_c[2] = {kBeta[qpc], kBeta[qpc]};
    Zan8u tc_y[16], tc_c[8];
    std::fill(std::begin(tc_y), std::end(tc_y), kTc0Bs3[qp]);
    std::fill(std::begin(tc_c), std::end(tc_c), kTc0Bs3[qpc]);
    for (int my = 0; my < mbh; ++my)
        for (int mx = 0; mx < mbw; ++mx) {
            Zan8u bs_v[16], bs_h[16];
            std::fill(std::begin(bs_v), std::end(bs_v), Zan8u{3});
            std::fill(std::begin(bs_h), std::end(bs_h), Zan8u{3});
            for (int k = 0; k < 4; ++k) {
                bs_v[k] = mx > 0 ? 4 : 0;
                bs_h[k] = my > 0 ? 4 : 0;
            }
            Zan8u* y = rec_y.data() + static_cast<std::size_t>(my * 16) * static_cast<std::size_t>(lw) + mx * 16;
            const std::size_t co = static_cast<std::size_t>(my * 8) * static_cast<std::size_t>(cw) + static_cast<std::size_t>(mx * 8);
            check(zaniFilterDeblockingLuma_VerEdge_H264_8u_C1IR(y, lw, alpha_y, beta_y, tc_y, bs_v), "deblocking");
            check(zaniFilterDeblockingLuma_HorEdge_H264_8u_C1IR(y, lw, alpha_y, beta_y, tc_y, bs_h), "deblocking");
            for (Zan8u* c : {rec_u.data() + co, rec_v.data() + co}) {
                check(zaniFilterDeblockingChroma_VerEdge_H264_8u_C1IR(c, cw, alpha_c, beta_c, tc_c, bs_v), "deblocking");
                check(zaniFilterDeblockingChroma_HorEdge_H264_8u_C1IR(c, cw, alpha_c, beta_c, tc_c, bs_h), "deblocking");
            }
        }
}

// ------------------------------------------------------------------ picture

bool Encoder::encode(const std::uint8_t* yuv, std::vector<std::uint8_t>& out, std::vector<std::uint8_t>* recon,
                     FrameInfo* frame_info, std::string& err) {
    Impl& e = *impl_;
    if (e.mbw == 0) {
        err = "encoder not opened";
        return false;
    }
    const std::size_t start = out.size();
    e.failure = zanStsOk;
    e.load(yuv);
    if (!e.headers_sent) {
        e.write_sps(out);
        e.write_pps(out);
        e.headers_sent = true;
    }
    e.bw.clear();
    e.slice_header(e.bw);
    if (e.cfg.cabac) {
        const std::size_t initial = e.cfg.cabac_buffer ? e.cfg.cabac_buffer
                                                       : static_cast<std::size_t>(e.lw) * static_cast<std::size_t>(e.lh) + 4096;
        if (!e.cabac.start(e.bw.bytes(), e.bw.bit_count(), e.qp, initial)) e.fail(e.cabac.status, "CABAC init");
    }
    FrameInfo fi;
    for (int my = 0; my < e.mbh && e.failure == zanStsOk; ++my)
        for (int mx = 0; mx < e.mbw && e.failure == zanStsOk; ++mx) {
            e.encode_mb(mx, my);
            if (e.info[static_cast<std::size_t>(my * e.mbw + mx)].i16)
                ++fi.mbs_i16x16;
            else
                ++fi.mbs_i4x4;
            if (e.cfg.cabac && !(mx == e.mbw - 1 && my == e.mbh - 1)) e.cabac.bin(276, 0);
            if (e.cfg.cabac && e.cabac.status != zanStsOk) e.fail(e.cabac.status, "CABAC coding");
        }
    if (e.failure == zanStsOk) {
        if (e.cfg.cabac) {
            const std::size_t bytes = e.cabac.finish();
            if (e.cabac.status != zanStsOk)
                e.fail(e.cabac.status, "CABAC termination");
            else
                append_nal(out, 3, 5, e.cabac.base(), bytes);
            fi.cabac_buffer_moves = e.cabac.moves;
            fi.cabac_block_retries = e.cabac.retries;
        } else {
            e.bw.trailing();
            const auto b = e.bw.bytes();
            append_nal(out, 3, 5, b.data(), b.size());
        }
    }
    if (e.failure == zanStsOk && e.cfg.deblock) e.deblock();
    if (e.failure != zanStsOk) {
        err = std::string("library call failed in ") + e.fail_where + ": " + status_text(e.failure);
        return false;
    }
    e.idr_pic_id ^= 1;
    if (recon) {
        const int w = e.cfg.width, h = e.cfg.height;
        recon->resize(frame_bytes(w, h));
        std::uint8_t* d = recon->data();
        for (int y = 0; y < h; ++y, d += w)
            std::memcpy(d, e.rec_y.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(e.lw), static_cast<std::size_t>(w));
        for (const auto* plane : {&e.rec_u, &e.rec_v})
            for (int y = 0; y < h / 2; ++y, d += w / 2)
                std::memcpy(d, plane->data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(e.cw),
                            static_cast<std::size_t>(w / 2));
    }
    fi.bytes = out.size() - start;
    if (frame_info) *frame_info = fi;
    return true;
}

}  // namespace h264ex
