// The picture pipeline of the H.264 example decoder: intra and inter
// prediction and reconstruction of parsed macroblocks through the library,
// the loop filter over the finished picture, the bookkeeping of neighbours,
// and the pictures (samples, motion, marking) that later pictures refer to.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "decoder.h"
#include "syntax.h"

namespace h264ex {

// Motion of one 4x4 luma block: vectors and reference indices by list
// (index -1: list not used, or intra), and the identity of the picture each
// index referred to.
struct MotionCell {
    std::int16_t mv[2][2];
    std::int8_t ref[2];
    std::int32_t uid[2];
};

// A decoded picture with what later pictures need of it: samples, motion,
// order count and reference marking.
struct Frame {
    int uid = 0;
    int poc = 0;
    int frame_num = 0, frame_num_wrap = 0;
    bool short_ref = false, long_ref = false;
    int long_idx = 0;
    bool waiting_output = false;
    int mbw = 0, mbh = 0;
    int ystride = 0, cstride = 0, mbch = 8;
    bool hbd = false;
    int bit_depth_luma = 8, bit_depth_chroma = 8, chroma_format = 1;
    int crop_left = 0, crop_right = 0, crop_top = 0, crop_bottom = 0;
    std::vector<std::uint8_t> y, u, v;
    std::vector<std::uint16_t> y16, u16, v16;  // samples above 8 bits
    std::vector<MotionCell> motion;             // 4x4 blocks in raster order
    bool is_ref() const { return short_ref || long_ref; }
    // The cropped picture as planar samples.
    void output(DecodedFrame& f) const;
};

// What inter prediction needs of the slice being decoded.
struct SliceContext {
    int type = kSliceI;
    std::vector<Frame*> list[2];  // reference lists (null: no picture)
    bool direct_spatial = true;
    bool direct_8x8_inference = true;
    int weights = 0;  // 0 none, 1 explicit, 2 implicit
    const SliceHeader* sh = nullptr;
    int poc = 0;  // of the current picture
};

// What the loop filter needs of one slice.
struct SliceFilter {
    int disable = 0;
    int alpha_offset = 0, beta_offset = 0;
};

class Picture {
public:
    // Starts a picture in frame f (its sample and motion storage is sized
    // here).
    bool init(const Sps& sps, const Pps& pps, Frame* f);
    void use_slice(const SliceContext* sc) { sc_ = sc; }
    // Takes the scaling lists and chroma QP offsets of a slice's PPS.
    void use_pps(const Pps& pps);
    // Whether a slice of this SPS may continue the picture.
    bool same_format(const Sps& sps) const {
        return sps.mb_width == mbw_ && sps.mb_height == mbh_ && sps.chroma_format_idc == sps_.chroma_format_idc &&
               sps.bit_depth_luma == sps_.bit_depth_luma && sps.bit_depth_chroma == sps_.bit_depth_chroma &&
               sps.transform_bypass == sps_.transform_bypass;
    }
    // Neighbour facts for the parser, for the macroblock at addr in slice.
    void neighbours(int addr, int slice, NeighbourInfo& nb) const;
    bool reconstruct(int addr, int slice, const Macroblock& mb, const Pps& pps, std::string& err);
    // A skipped macroblock (P_Skip or B_Skip) at the slice's current QP.
    static void skipped(int qp, Macroblock& mb);
    void deblock(const std::vector<SliceFilter>& slices);
    bool decoded(int addr) const { return info_[static_cast<std::size_t>(addr)].slice >= 0; }
    int mb_count() const { return mbw_ * mbh_; }

private:
    struct MbInfo {
        int slice = -1;
        MbKind kind = kMbI4x4;
        int qp = 0;     // QP_Y as the filter sees it (0 for I_PCM)
        int qpc[2] = {0, 0};
        bool t8x8 = false;
        bool one_motion = false;  // inter, one motion over the macroblock
    };
    struct Nb {
        bool avail;
        int ref;
        int mv[2];
    };
    bool available(int mbx, int mby, int slice) const {
        return mbx >= 0 && mby >= 0 && mbx < mbw_ && mby < mbh_ &&
               info_[static_cast<std::size_t>(mby * mbw_ + mbx)].slice == slice;
    }
    void filter_mb(int mbx, int mby, const std::vector<SliceFilter>& slices);
    int edge_strength(int px, int py, int qx, int qy, bool mb_edge) const;
    // Inter prediction (inter.cpp).
    bool motion(int mbx, int mby, const Macroblock& mb, std::string& err);
    Nb neighbour(int mbx, int mby, int x, int y, int list) const;
    void predict_mv(int mbx, int mby, int x, int y, int w, int h, int list, int ref, int hint, int mv[2]) const;
    bool direct(int mbx, int mby, int b8, const int sref[2], const int smv[2][2], bool zero, std::string& err);
    bool spatial_predictors(int mbx, int mby, int sref[2], int smv[2][2]) const;
    bool set_cells(int mbx, int mby, int x, int y, int w, int h, const int ref[2], const int mv[2][2], std::string& err);
    template <class P>
    bool predict(int mbx, int mby, const Macroblock& mb, std::string& err);
    template <class P>
    bool predict_block(int mbx, int mby, int x, int y, int w, int h, std::string& err);
    template <class P, class C>
    bool inter_residual(P* y, P* u, P* v, const Macroblock& mb, const MbInfo& in);
    template <class P, class C>
    bool recon_mb(P* y, P* u, P* v, const Macroblock& mb, const MbInfo& in, Zan8u edge);

    Sps sps_;
    Frame* f_ = nullptr;
    const SliceContext* sc_ = nullptr;
    int slice_ = 0;                 // slice of the macroblock being decoded
    bool done_[16] = {};            // 4x4 blocks of that macroblock with motion
    std::vector<std::uint8_t> nz_;  // 4x4 cells: coefficients, for the filter
    int mbw_ = 0, mbh_ = 0;
    int ystride_ = 0, cstride_ = 0;
    int mbch_ = 8;   // chroma rows per macroblock (8 or 16)
    int cbh_ = 2;    // chroma 4x4 block rows per macroblock
    bool hbd_ = false;
    int qp_bd_y_ = 0, qp_bd_c_ = 0;  // QP offsets of the bit depths
    std::vector<MbInfo> info_;
    std::vector<std::uint8_t> mode_;     // 4x4 cells: prediction mode (2 when not NxN)
    std::vector<std::uint8_t> total_;    // 4x4 cells: luma totals
    std::vector<std::uint8_t> total_c_[2];  // chroma 4x4 cells
    int chroma_qp_offset_[2] = {0, 0};
    Zan16s ls4_[6][6][16];  // level scale: Y, Cb, Cr intra, then inter; by QP % 6
    Zan16s ls8_[2][6][64];  // intra, inter
};

}  // namespace h264ex
