// Syntax of the H.264 example decoder: parameter sets, slice headers and the
// macroblock layer of I, P and B slices coded with CAVLC.  Nothing here
// touches the picture; a parsed macroblock is handed to the picture
// pipeline.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <zanvc.h>

#include "bitstream.h"

namespace h264ex {

struct Sps {
    bool valid = false;
    int profile_idc = 0;
    int chroma_format_idc = 1;
    int bit_depth_luma = 8, bit_depth_chroma = 8;
    bool transform_bypass = false;
    bool seq_scaling_matrix_present = false;
    std::uint8_t scaling4x4[6][16];  // lists in zigzag order, after fall-back
    std::uint8_t scaling8x8[6][64];
    int log2_max_frame_num = 4;
    int poc_type = 0;
    int log2_max_poc_lsb = 4;
    bool delta_pic_order_always_zero = false;
    int offset_for_non_ref_pic = 0, offset_for_top_to_bottom = 0;
    std::vector<int> offset_for_ref_frame;
    int max_num_ref_frames = 1;
    bool direct_8x8_inference = true;
    int mb_width = 0, mb_height = 0;
    bool frame_mbs_only = true;
    int crop_left = 0, crop_right = 0, crop_top = 0, crop_bottom = 0;  // in samples
};

struct Pps {
    bool valid = false;
    int sps_id = 0;
    bool bottom_field_pic_order_present = false;
    int num_slice_groups = 1;
    int pic_init_qp = 26;
    int chroma_qp_offset[2] = {0, 0};
    bool deblocking_control_present = false;
    bool constrained_intra_pred = false;
    bool redundant_pic_cnt_present = false;
    bool transform_8x8_mode = false;
    int num_ref_idx_default[2] = {1, 1};
    bool weighted_pred = false;
    int weighted_bipred_idc = 0;
    bool has_scaling = false;  // lists below valid (own or from the SPS)
    std::uint8_t scaling4x4[6][16];
    std::uint8_t scaling8x8[6][64];
};

enum SliceType { kSliceP = 0, kSliceB = 1, kSliceI = 2 };

// A reference list modification: idc 0 / 1 subtract / add a picture-number
// difference, 2 names a long-term picture number.
struct ListModification {
    int idc = 0;
    int value = 0;
};

// A memory management control operation and its arguments.
struct Mmco {
    int op = 0;
    int arg1 = 0, arg2 = 0;
};

struct SliceHeader {
    int first_mb = 0;
    int slice_type = kSliceI;
    int nal_type = 1, nal_ref_idc = 0;
    int pps_id = 0;
    int frame_num = 0;
    int idr_pic_id = 0;
    int poc_lsb = 0, delta_poc_bottom = 0;
    int delta_poc[2] = {0, 0};
    bool direct_spatial = true;
    int num_ref_idx[2] = {0, 0};
    std::vector<ListModification> modifications[2];
    // Explicit weights by list and reference index (defaults filled in).
    int luma_log2_wd = 0, chroma_log2_wd = 0;
    int luma_weight[2][32], luma_offset[2][32];
    int chroma_weight[2][32][2], chroma_offset[2][32][2];
    bool no_output_of_prior_pics = false, long_term_reference = false;
    bool adaptive_marking = false;
    std::vector<Mmco> mmcos;
    int qp = 26;
    int disable_deblocking = 0;
    int alpha_offset = 0, beta_offset = 0;  // already doubled
};

// One macroblock as parsed.  Coefficients are packed as the library's
// reconstruction expects: only coded blocks, each in raster order.
enum MbKind { kMbI4x4, kMbI8x8, kMbI16x16, kMbPcm, kMbInter, kMbSkip, kMbDirect16x16 };
inline bool is_intra(MbKind k) { return k <= kMbPcm; }
// Partition shapes of an inter macroblock, and of the sub-macroblocks of an
// 8x8 one.
enum PartShape { kPart16x16, kPart16x8, kPart8x16, kPart8x8 };
enum SubShape { kSub8x8, kSub8x4, kSub4x8, kSub4x4 };
struct Macroblock {
    MbKind kind = kMbI4x4;
    // Inter: the shape, per partition (or 8x8 sub-macroblock) the lists it
    // predicts from (bit 0 list 0, bit 1 list 1; 0 for a direct
    // sub-macroblock), the sub-shapes, reference indices, and the motion
    // vector differences in partition order (sub-macroblock k, part j at
    // 4 k + j).
    PartShape shape = kPart16x16;
    int pred[4] = {0, 0, 0, 0};
    SubShape sub[4] = {kSub8x8, kSub8x8, kSub8x8, kSub8x8};
    int ref[2][4];
    int mvd[2][16][2];
    bool t8x8 = false;  // 8x8 transform of an inter macroblock
    std::uint32_t modes[16];  // 4x4 (16) or 8x8 (4) prediction modes
    int mode16 = 0;
    int chroma_mode = 0;
    int cbp_luma = 0, cbp_chroma = 0;
    int qp = 0;                 // QP_Y
    std::uint32_t pattern = 0;  // the library's coded-block pattern word
    std::uint32_t cpat[2] = {0, 0};  // 4:2:2 chroma per plane: bit 0 DC, 1.. AC
    Zan32s luma[16 + 256];
    Zan32s chroma[2 * 8 + 2 * 8 * 16];
    int luma_used = 0, chroma_used = 0;        // entries packed
    std::uint8_t total[16];                   // luma 4x4 totals by coding index
    std::uint8_t total_c[2][8];               // chroma AC totals by block
    std::uint16_t pcm[256 + 2 * 128];         // I_PCM samples: luma, U, V
};

// What the macroblock parser needs to know of the neighbours.
struct NeighbourInfo {
    bool avail_a = false, avail_b = false;  // left, above macroblocks usable
    // Prediction modes of the 4x4 cells left of and above the macroblock
    // (2 for a macroblock without NxN modes); totals likewise (16 for I_PCM).
    int mode_a[4], mode_b[4];
    int total_a[4], total_b[4];
    int total_ca[2][4], total_cb[2][4];  // chroma (rows/columns of blocks)
};

// The CAVLC code tables built with the library.
class CavlcTables {
public:
    bool build();
    ~CavlcTables();
    const Zan32u* token[3] = {};
    Zan32u* tokenDc420 = nullptr;
    Zan32u* tokenDc422 = nullptr;
    const Zan32u* tz4x4[16] = {};
    const Zan32u* tz420[4] = {};
    const Zan32u* tz422[8] = {};
    const Zan32u* rb[16] = {};

private:
    std::vector<Zan32u*> owned_;
};

bool parse_sps(BitReader& br, std::vector<Sps>& spss, std::string& err);
bool parse_pps(BitReader& br, const std::vector<Sps>& spss, std::vector<Pps>& ppss, std::string& err);
bool parse_slice_header(BitReader& br, int nal_type, int nal_ref_idc, const std::vector<Sps>& spss,
                        const std::vector<Pps>& ppss, SliceHeader& sh, std::string& err);
// Parses one macroblock (not a skipped one) of a slice; qp carries
// QP_Y,PRED in and the new QP_Y out.
bool parse_macroblock(BitReader& br, const Sps& sps, const Pps& pps, const SliceHeader& sh, const CavlcTables& t,
                      const NeighbourInfo& nb, int& qp, Macroblock& mb, std::string& err);

extern const int kZigzag4x4[16];
extern const int kZigzag8x8[64];

}  // namespace h264ex
