// The picture pipeline of the H.264 example decoder: intra prediction and
// reconstruction of parsed macroblocks through the library, the loop filter
// over the finished picture, and the bookkeeping of neighbours.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "decoder.h"
#include "syntax.h"

namespace h264ex {

// What the loop filter needs of one slice.
struct SliceFilter {
    int disable = 0;
    int alpha_offset = 0, beta_offset = 0;
};

class Picture {
public:
    bool init(const Sps& sps, const Pps& pps);
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
    void deblock(const std::vector<SliceFilter>& slices);
    bool decoded(int addr) const { return info_[static_cast<std::size_t>(addr)].slice >= 0; }
    int mb_count() const { return mbw_ * mbh_; }
    // The cropped picture as planar samples.
    void output(DecodedFrame& f) const;

private:
    struct MbInfo {
        int slice = -1;
        MbKind kind = kMbI4x4;
        int qp = 0;     // QP_Y as the filter sees it (0 for I_PCM)
        int qpc[2] = {0, 0};
        bool t8x8 = false;
    };
    bool available(int mbx, int mby, int slice) const {
        return mbx >= 0 && mby >= 0 && mbx < mbw_ && mby < mbh_ &&
               info_[static_cast<std::size_t>(mby * mbw_ + mbx)].slice == slice;
    }
    void filter_mb(int mbx, int mby, const std::vector<SliceFilter>& slices);
    template <class P, class C>
    bool recon_mb(P* y, P* u, P* v, const Macroblock& mb, const MbInfo& in, Zan8u edge);

    Sps sps_;
    int mbw_ = 0, mbh_ = 0;
    int ystride_ = 0, cstride_ = 0;
    int mbch_ = 8;   // chroma rows per macroblock (8 or 16)
    int cbh_ = 2;    // chroma 4x4 block rows per macroblock
    std::vector<std::uint8_t> y_, u_, v_;
    std::vector<std::uint16_t> y16_, u16_, v16_;  // samples above 8 bits
    bool hbd_ = false;
    int qp_bd_y_ = 0, qp_bd_c_ = 0;  // QP offsets of the bit depths
    std::vector<MbInfo> info_;
    std::vector<std::uint8_t> mode_;     // 4x4 cells: prediction mode (2 when not NxN)
    std::vector<std::uint8_t> total_;    // 4x4 cells: luma totals
    std::vector<std::uint8_t> total_c_[2];  // chroma 4x4 cells
    int chroma_qp_offset_[2] = {0, 0};
    Zan16s ls4_[3][6][16];  // level scale: lists Y, Cb, Cr intra, by QP % 6
    Zan16s ls8_[6][64];
};

}  // namespace h264ex
