#include "syntax.h"

#include <cstring>
#include <map>

namespace h264ex {

namespace {

using TokenColumn = const char* [17][4];
#include "cavlc_codes.inc"

// Code list in the builders' form: [0] unused, level count, level widths,
// then per code length the count and rows, -1 at the end.
struct CodeList {
    std::map<int, std::vector<std::vector<Zan32s>>> by_length;
    void add(const char* bits, std::vector<Zan32s> rest) {
        Zan32s code = 0;
        int n = 0;
        for (const char* p = bits; *p; ++p, ++n) code = 2 * code + (*p == '1');
        rest.insert(rest.begin(), code);
        by_length[n].push_back(rest);
    }
    std::vector<Zan32s> array(std::vector<Zan32s> widths) const {
        std::vector<Zan32s> a = {0, static_cast<Zan32s>(widths.size())};
        a.insert(a.end(), widths.begin(), widths.end());
        const int max_len = by_length.empty() ? 0 : by_length.rbegin()->first;
        for (int len = 1; len <= max_len; ++len) {
            auto it = by_length.find(len);
            a.push_back(it == by_length.end() ? 0 : static_cast<Zan32s>(it->second.size()));
            if (it != by_length.end())
                for (const auto& row : it->second) a.insert(a.end(), row.begin(), row.end());
        }
        a.push_back(-1);
        return a;
    }
};

// Intra mapping of coded_block_pattern code numbers (4:2:0 and 4:2:2).
const int kCbpIntra[48] = {47, 31, 15, 0,  23, 27, 29, 30, 7,  11, 13, 14, 39, 43, 45, 46,
                           16, 3,  5,  10, 12, 19, 21, 26, 28, 35, 37, 42, 44, 1,  2,  4,
                           8,  17, 18, 20, 24, 6,  9,  22, 25, 32, 33, 34, 36, 40, 38, 41};

const std::uint8_t kDefault4x4[2][16] = {
    {6, 13, 13, 20, 20, 20, 28, 28, 28, 28, 32, 32, 32, 37, 37, 42},
    {10, 14, 14, 20, 20, 20, 24, 24, 24, 24, 27, 27, 27, 30, 30, 34}};
const std::uint8_t kDefault8x8[2][64] = {
    {6,  10, 10, 13, 11, 13, 16, 16, 16, 16, 18, 18, 18, 18, 18, 23, 23, 23, 23, 23, 23, 25,
     25, 25, 25, 25, 25, 25, 27, 27, 27, 27, 27, 27, 27, 27, 29, 29, 29, 29, 29, 29, 29, 31,
     31, 31, 31, 31, 31, 33, 33, 33, 33, 33, 36, 36, 36, 36, 38, 38, 38, 40, 40, 42},
    {9,  13, 13, 15, 13, 15, 17, 17, 17, 17, 19, 19, 19, 19, 19, 21, 21, 21, 21, 21, 21, 22,
     22, 22, 22, 22, 22, 22, 24, 24, 24, 24, 24, 24, 24, 24, 25, 25, 25, 25, 25, 25, 25, 27,
     27, 27, 27, 27, 27, 28, 28, 28, 28, 28, 30, 30, 30, 30, 32, 32, 32, 33, 33, 35}};

// Reads one scaling list; returns false when the stream asks for the default.
bool read_scaling_list(BitReader& br, std::uint8_t* list, int size, bool& use_default) {
    int last = 8, next = 8;
    use_default = false;
    for (int j = 0; j < size; ++j) {
        if (next != 0) {
            const int delta = br.se();
            if (delta < -128 || delta > 127) return false;
            next = (last + delta + 256) % 256;
            use_default = (j == 0 && next == 0);
        }
        list[j] = static_cast<std::uint8_t>(next == 0 ? last : next);
        last = list[j];
    }
    return true;
}

// Reads the scaling matrices of an SPS or PPS.  fallback4/fallback8 are the
// lists that stand in for the first Intra and Inter lists when absent (the
// defaults under rule A, the sequence lists under rule B).
bool read_scaling_matrices(BitReader& br, int count, std::uint8_t (*l4)[16], std::uint8_t (*l8)[64],
                           const std::uint8_t (*fb4)[16], const std::uint8_t (*fb8)[64]) {
    for (int i = 0; i < count; ++i) {
        const bool present = br.flag();
        if (i < 6) {
            bool def = false;
            if (present) {
                if (!read_scaling_list(br, l4[i], 16, def)) return false;
                if (def) std::memcpy(l4[i], kDefault4x4[i / 3], 16);
            } else if (i == 0 || i == 3) {
                // The defaults hold one Intra and one Inter list; the
                // sequence's lists hold all six.
                std::memcpy(l4[i], fb4 == kDefault4x4 ? kDefault4x4[i / 3] : fb4[i], 16);
            } else {
                std::memcpy(l4[i], l4[i - 1], 16);
            }
        } else {
            const int k = i - 6;
            bool def = false;
            if (present) {
                if (!read_scaling_list(br, l8[k], 64, def)) return false;
                if (def) std::memcpy(l8[k], kDefault8x8[k % 2], 64);
            } else if (k < 2) {
                std::memcpy(l8[k], fb8[k], 64);
            } else {
                std::memcpy(l8[k], l8[k - 2], 64);
            }
        }
    }
    return !br.bad();
}

void flat_lists(std::uint8_t (*l4)[16], std::uint8_t (*l8)[64]) {
    std::memset(l4, 16, 6 * 16);
    std::memset(l8, 16, 6 * 64);
}

}  // namespace

const int kZigzag4x4[16] = {0, 1, 4, 8, 5, 2, 3, 6, 9, 12, 13, 10, 7, 11, 14, 15};
const int kZigzag8x8[64] = {0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,
                            12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13, 6,  7,  14, 21, 28,
                            35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51,
                            58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

bool CavlcTables::build() {
    auto rl = [&](int column) -> Zan32u* {
        CodeList l;
        for (int total = 0; total <= kTokenMaxTotal[column]; ++total)
            for (int t = 0; t < 4; ++t)
                if (const char* c = kCoeffToken[column][total][t]) l.add(c, {t, total});
        const std::vector<Zan32s> a = l.array({8, 8});
        Zan32u* p = nullptr;
        if (zaniHuffmanRunLevelTableInitAlloc_32s(a.data(), &p) != zanStsOk) return nullptr;
        owned_.push_back(p);
        return p;
    };
    auto plain = [&](const std::vector<const char*>& codes) -> Zan32u* {
        CodeList l;
        for (std::size_t v = 0; v < codes.size(); ++v) l.add(codes[v], {static_cast<Zan32s>(v)});
        const std::vector<Zan32s> a = l.array({4, 7});
        Zan32u* p = nullptr;
        if (zaniHuffmanTableInitAlloc_32s(a.data(), &p) != zanStsOk) return nullptr;
        owned_.push_back(p);
        return p;
    };
    bool ok = true;
    for (int k = 0; k < 3; ++k) ok &= (token[k] = rl(k)) != nullptr;
    ok &= (tokenDc420 = rl(3)) != nullptr;
    ok &= (tokenDc422 = rl(4)) != nullptr;
    for (int i = 1; i < 16; ++i) ok &= (tz4x4[i] = plain(kTotalZeros4x4[i])) != nullptr;
    for (int i = 1; i < 4; ++i) ok &= (tz420[i] = plain(kTotalZeros420[i])) != nullptr;
    for (int i = 1; i < 8; ++i) ok &= (tz422[i] = plain(kTotalZeros422[i])) != nullptr;
    for (int i = 1; i < 8; ++i) ok &= (rb[i] = plain(kRunBefore[i])) != nullptr;
    for (int i = 8; i < 16; ++i) rb[i] = rb[7];
    return ok;
}

CavlcTables::~CavlcTables() {
    for (Zan32u* p : owned_) zaniHuffmanTableFree_32s(p);
}

bool parse_sps(BitReader& br, std::vector<Sps>& spss, std::string& err) {
    Sps s;
    s.profile_idc = static_cast<int>(br.u(8));
    br.u(16);  // constraint flags, level_idc
    const std::uint32_t id = br.ue();
    if (id > 31) return err = "bad seq_parameter_set_id", false;
    flat_lists(s.scaling4x4, s.scaling8x8);
    const int p = s.profile_idc;
    if (p == 100 || p == 110 || p == 122 || p == 244 || p == 44 || p == 83 || p == 86 || p == 118 ||
        p == 128 || p == 138 || p == 139 || p == 134 || p == 135) {
        s.chroma_format_idc = static_cast<int>(br.ue());
        if (s.chroma_format_idc > 3) return err = "bad chroma_format_idc", false;
        if (s.chroma_format_idc == 3 && br.flag()) return err = "separate colour planes are not supported", false;
        s.bit_depth_luma = 8 + static_cast<int>(br.ue());
        s.bit_depth_chroma = 8 + static_cast<int>(br.ue());
        if (s.bit_depth_luma > 14 || s.bit_depth_chroma > 14) return err = "bad bit depth", false;
        s.transform_bypass = br.flag();
        s.seq_scaling_matrix_present = br.flag();
        if (s.seq_scaling_matrix_present) {
            const int count = s.chroma_format_idc != 3 ? 8 : 12;
            if (count > 8) return err = "4:4:4 scaling matrices are not supported", false;
            if (!read_scaling_matrices(br, count, s.scaling4x4, s.scaling8x8, kDefault4x4, kDefault8x8))
                return err = "bad scaling matrix", false;
        }
    }
    s.log2_max_frame_num = static_cast<int>(br.ue()) + 4;
    if (s.log2_max_frame_num > 16) return err = "bad log2_max_frame_num", false;
    s.poc_type = static_cast<int>(br.ue());
    if (s.poc_type == 0) {
        s.log2_max_poc_lsb = static_cast<int>(br.ue()) + 4;
        if (s.log2_max_poc_lsb > 16) return err = "bad log2_max_pic_order_cnt_lsb", false;
    } else if (s.poc_type == 1) {
        s.delta_pic_order_always_zero = br.flag();
        s.offset_for_non_ref_pic = br.se();
        s.offset_for_top_to_bottom = br.se();
        const std::uint32_t n = br.ue();
        if (n > 255) return err = "bad num_ref_frames_in_pic_order_cnt_cycle", false;
        for (std::uint32_t i = 0; i < n; ++i) s.offset_for_ref_frame.push_back(br.se());
    } else if (s.poc_type != 2) {
        return err = "bad pic_order_cnt_type", false;
    }
    s.max_num_ref_frames = static_cast<int>(br.ue());
    if (s.max_num_ref_frames > 16) return err = "bad max_num_ref_frames", false;
    br.flag();  // gaps_in_frame_num_value_allowed_flag
    const std::uint32_t w = br.ue() + 1, h = br.ue() + 1;
    s.frame_mbs_only = br.flag();
    if (!s.frame_mbs_only) return err = "interlaced (field or MBAFF) coding is not supported", false;
    if (w > 1024 || h > 1024) return err = "picture too large", false;
    s.mb_width = static_cast<int>(w);
    s.mb_height = static_cast<int>(h);
    s.direct_8x8_inference = br.flag();
    if (br.flag()) {
        const int cx = s.chroma_format_idc == 1 || s.chroma_format_idc == 2 ? 2 : 1;
        const int cy = s.chroma_format_idc == 1 ? 2 : 1;
        s.crop_left = static_cast<int>(br.ue()) * cx;
        s.crop_right = static_cast<int>(br.ue()) * cx;
        s.crop_top = static_cast<int>(br.ue()) * cy;
        s.crop_bottom = static_cast<int>(br.ue()) * cy;
        if (s.crop_left + s.crop_right >= 16 * s.mb_width || s.crop_top + s.crop_bottom >= 16 * s.mb_height)
            return err = "bad cropping window", false;
    }
    // VUI and the rest are not needed.
    if (br.bad()) return err = "truncated or damaged sequence parameter set", false;
    s.valid = true;
    spss[id] = s;
    return true;
}

bool parse_pps(BitReader& br, const std::vector<Sps>& spss, std::vector<Pps>& ppss, std::string& err) {
    Pps p;
    const std::uint32_t id = br.ue();
    if (id > 255) return err = "bad pic_parameter_set_id", false;
    const std::uint32_t sid = br.ue();
    if (sid > 31 || !spss[sid].valid) return err = "picture parameter set refers to a missing sequence parameter set", false;
    const Sps& s = spss[sid];
    p.sps_id = static_cast<int>(sid);
    if (br.flag()) return err = "CABAC streams are not supported (CAVLC only)", false;
    p.bottom_field_pic_order_present = br.flag();
    p.num_slice_groups = static_cast<int>(br.ue()) + 1;
    if (p.num_slice_groups != 1) return err = "slice groups are not supported", false;
    for (int l = 0; l < 2; ++l) {
        const std::uint32_t n = br.ue();
        if (n > 31) return err = "bad num_ref_idx_default_active_minus1", false;
        p.num_ref_idx_default[l] = static_cast<int>(n) + 1;
    }
    p.weighted_pred = br.flag();
    p.weighted_bipred_idc = static_cast<int>(br.u(2));
    if (p.weighted_bipred_idc == 3) return err = "bad weighted_bipred_idc", false;
    p.pic_init_qp = 26 + br.se();
    br.se();  // pic_init_qs
    p.chroma_qp_offset[0] = br.se();
    p.deblocking_control_present = br.flag();
    p.constrained_intra_pred = br.flag();
    p.redundant_pic_cnt_present = br.flag();
    p.chroma_qp_offset[1] = p.chroma_qp_offset[0];
    std::memcpy(p.scaling4x4, s.scaling4x4, sizeof p.scaling4x4);
    std::memcpy(p.scaling8x8, s.scaling8x8, sizeof p.scaling8x8);
    if (br.more_rbsp_data()) {
        p.transform_8x8_mode = br.flag();
        if (br.flag()) {
            const int count = 6 + ((s.chroma_format_idc != 3) ? 2 : 6) * (p.transform_8x8_mode ? 1 : 0);
            if (count > 8) return err = "4:4:4 scaling matrices are not supported", false;
            bool ok;
            if (s.seq_scaling_matrix_present)
                ok = read_scaling_matrices(br, count, p.scaling4x4, p.scaling8x8, s.scaling4x4, s.scaling8x8);
            else
                ok = read_scaling_matrices(br, count, p.scaling4x4, p.scaling8x8, kDefault4x4, kDefault8x8);
            if (!ok) return err = "bad scaling matrix", false;
        }
        p.chroma_qp_offset[1] = br.se();
    }
    if (p.chroma_qp_offset[0] < -12 || p.chroma_qp_offset[0] > 12 || p.chroma_qp_offset[1] < -12 ||
        p.chroma_qp_offset[1] > 12)
        return err = "bad chroma QP offset", false;
    if (br.bad()) return err = "truncated or damaged picture parameter set", false;
    p.valid = true;
    ppss[id] = p;
    return true;
}

bool parse_slice_header(BitReader& br, int nal_type, int nal_ref_idc, const std::vector<Sps>& spss,
                        const std::vector<Pps>& ppss, SliceHeader& sh, std::string& err) {
    sh.nal_type = nal_type;
    sh.nal_ref_idc = nal_ref_idc;
    sh.first_mb = static_cast<int>(br.ue());
    std::uint32_t type = br.ue();
    if (type > 9) return err = "bad slice_type", false;
    type %= 5;
    if (type > 2) return err = "SP and SI slices are not supported", false;
    sh.slice_type = static_cast<int>(type);
    if (nal_type == 5 && sh.slice_type != kSliceI) return err = "IDR picture with a P or B slice", false;
    const std::uint32_t pid = br.ue();
    if (pid > 255 || !ppss[pid].valid) return err = "slice refers to a missing picture parameter set", false;
    sh.pps_id = static_cast<int>(pid);
    const Pps& p = ppss[pid];
    const Sps& s = spss[static_cast<std::size_t>(p.sps_id)];
    if (!s.valid) return err = "slice refers to a missing sequence parameter set", false;
    if (sh.first_mb >= s.mb_width * s.mb_height) return err = "bad first_mb_in_slice", false;
    sh.frame_num = static_cast<int>(br.u(s.log2_max_frame_num));
    if (nal_type == 5) sh.idr_pic_id = static_cast<int>(br.ue());
    sh.poc_lsb = sh.delta_poc_bottom = sh.delta_poc[0] = sh.delta_poc[1] = 0;
    if (s.poc_type == 0) {
        sh.poc_lsb = static_cast<int>(br.u(s.log2_max_poc_lsb));
        if (p.bottom_field_pic_order_present) sh.delta_poc_bottom = br.se();
    } else if (s.poc_type == 1 && !s.delta_pic_order_always_zero) {
        sh.delta_poc[0] = br.se();
        if (p.bottom_field_pic_order_present) sh.delta_poc[1] = br.se();
    }
    if (p.redundant_pic_cnt_present && br.ue() != 0) return err = "redundant pictures are not supported", false;
    sh.direct_spatial = true;
    if (sh.slice_type == kSliceB) sh.direct_spatial = br.flag();
    sh.num_ref_idx[0] = sh.num_ref_idx[1] = 0;
    if (sh.slice_type != kSliceI) {
        sh.num_ref_idx[0] = p.num_ref_idx_default[0];
        sh.num_ref_idx[1] = sh.slice_type == kSliceB ? p.num_ref_idx_default[1] : 0;
        if (br.flag()) {  // num_ref_idx_active_override_flag
            for (int l = 0; l < (sh.slice_type == kSliceB ? 2 : 1); ++l) {
                const std::uint32_t n = br.ue();
                if (n > 15) return err = "bad num_ref_idx_active_minus1", false;
                sh.num_ref_idx[l] = static_cast<int>(n) + 1;
            }
        }
        if (sh.num_ref_idx[0] > 16 || sh.num_ref_idx[1] > 16) return err = "too many active reference pictures", false;
    }
    for (int l = 0; l < 2; ++l) {
        sh.modifications[l].clear();
        if (l >= (sh.slice_type == kSliceB ? 2 : sh.slice_type == kSliceP ? 1 : 0)) continue;
        if (!br.flag()) continue;
        for (int n = 0;; ++n) {
            const std::uint32_t idc = br.ue();
            if (idc == 3) break;
            if (idc > 2 || n > 32 || br.bad()) return err = "bad reference list modification", false;
            const std::uint32_t v = br.ue();
            sh.modifications[l].push_back({static_cast<int>(idc), static_cast<int>(v)});
        }
    }
    const bool explicit_weights = (sh.slice_type == kSliceP && p.weighted_pred) ||
                                  (sh.slice_type == kSliceB && p.weighted_bipred_idc == 1);
    sh.luma_log2_wd = sh.chroma_log2_wd = 0;
    if (explicit_weights) {
        sh.luma_log2_wd = static_cast<int>(br.ue());
        if (sh.luma_log2_wd > 7) return err = "bad luma_log2_weight_denom", false;
        if (s.chroma_format_idc != 0) {
            sh.chroma_log2_wd = static_cast<int>(br.ue());
            if (sh.chroma_log2_wd > 7) return err = "bad chroma_log2_weight_denom", false;
        }
    }
    for (int l = 0; l < 2; ++l)
        for (int i = 0; i < 32; ++i) {
            sh.luma_weight[l][i] = 1 << sh.luma_log2_wd;
            sh.luma_offset[l][i] = 0;
            for (int c = 0; c < 2; ++c) {
                sh.chroma_weight[l][i][c] = 1 << sh.chroma_log2_wd;
                sh.chroma_offset[l][i][c] = 0;
            }
            if (!explicit_weights || i >= sh.num_ref_idx[l]) continue;
            if (br.flag()) {
                sh.luma_weight[l][i] = br.se();
                sh.luma_offset[l][i] = br.se();
                if (sh.luma_weight[l][i] < -128 || sh.luma_weight[l][i] > 127 || sh.luma_offset[l][i] < -128 ||
                    sh.luma_offset[l][i] > 127)
                    return err = "bad luma weight or offset", false;
            }
            if (s.chroma_format_idc != 0 && br.flag())
                for (int c = 0; c < 2; ++c) {
                    sh.chroma_weight[l][i][c] = br.se();
                    sh.chroma_offset[l][i][c] = br.se();
                    if (sh.chroma_weight[l][i][c] < -128 || sh.chroma_weight[l][i][c] > 127 ||
                        sh.chroma_offset[l][i][c] < -128 || sh.chroma_offset[l][i][c] > 127)
                        return err = "bad chroma weight or offset", false;
                }
        }
    sh.no_output_of_prior_pics = sh.long_term_reference = sh.adaptive_marking = false;
    sh.mmcos.clear();
    if (nal_ref_idc != 0) {  // dec_ref_pic_marking
        if (nal_type == 5) {
            sh.no_output_of_prior_pics = br.flag();
            sh.long_term_reference = br.flag();
        } else if ((sh.adaptive_marking = br.flag())) {
            for (int n = 0;; ++n) {
                Mmco m;
                m.op = static_cast<int>(br.ue());
                if (m.op == 0) break;
                if (m.op > 6 || n > 64 || br.bad()) return err = "bad memory_management_control_operation", false;
                if (m.op == 1 || m.op == 3) m.arg1 = static_cast<int>(br.ue());
                if (m.op == 2) m.arg1 = static_cast<int>(br.ue());
                if (m.op == 3 || m.op == 6) m.arg2 = static_cast<int>(br.ue());
                if (m.op == 4) m.arg1 = static_cast<int>(br.ue());
                sh.mmcos.push_back(m);
            }
        }
    }
    const int qp = p.pic_init_qp + br.se();
    const int qp_min = -6 * (s.bit_depth_luma - 8);
    if (qp < qp_min || qp > 51) return err = "bad slice QP", false;
    sh.qp = qp;
    sh.disable_deblocking = 0;
    sh.alpha_offset = sh.beta_offset = 0;
    if (p.deblocking_control_present) {
        const std::uint32_t d = br.ue();
        if (d > 2) return err = "bad disable_deblocking_filter_idc", false;
        sh.disable_deblocking = static_cast<int>(d);
        if (d != 1) {
            const int a = br.se(), b = br.se();
            if (a < -6 || a > 6 || b < -6 || b > 6) return err = "bad deblocking filter offsets", false;
            sh.alpha_offset = 2 * a;
            sh.beta_offset = 2 * b;
        }
    }
    if (br.bad()) return err = "truncated or damaged slice header", false;
    return true;
}

namespace {

inline int block_x(int b) { return (b & 1) | ((b >> 1) & 2); }
inline int block_y(int b) { return ((b >> 1) & 1) | ((b >> 2) & 2); }

int pred_nc(bool a, int na, bool b, int nb) {
    if (a && b) return (na + nb + 1) >> 1;
    if (a) return na;
    if (b) return nb;
    return 0;
}

// One CAVLC residual block through the library: 16 elements at *dst (moved on
// one block when coded), the total returned in total.
bool residual_block(BitReader& br, const CavlcTables& t, int nc, int limit, const Zan32s* scan, Zan32s** dst,
                    int& total, std::string& err) {
    Zan32u* word;
    Zan32s bit;
    br.to_cursor(&word, &bit);
    Zan16s n = 0;
    const ZanStatus st = zaniDecodeCAVLCCoeffs_H264_1u32s(&word, &bit, &n, dst, static_cast<Zan32u>(nc),
                                                          static_cast<Zan16s>(limit), t.token, t.tz4x4, t.rb, scan);
    if (st != zanStsOk) return err = "invalid CAVLC code in a residual block", false;
    br.from_cursor(word, bit);
    if (br.overrun()) return err = "truncated slice data", false;
    total = n;
    return true;
}

Zan32s g_zigzag[17], g_identity[17];
bool g_scans_ready = false;
void init_scans() {
    if (g_scans_ready) return;
    for (int i = 0; i < 16; ++i) {
        g_zigzag[i] = kZigzag4x4[i];
        g_identity[i] = i;
    }
    g_zigzag[16] = 15;
    g_identity[16] = 15;
    g_scans_ready = true;
}

const int kCbpInter[48] = {0,  16, 1,  2,  4,  8,  32, 3,  5,  10, 12, 15, 47, 7,  11, 13,
                           14, 6,  9,  31, 35, 37, 42, 44, 33, 34, 36, 40, 39, 43, 45, 46,
                           17, 18, 20, 24, 19, 21, 26, 28, 23, 27, 29, 30, 22, 25, 38, 41};

// Reference index te(v) with the given number of active references.
int read_ref_idx(BitReader& br, int active) {
    if (active == 2) return br.flag() ? 0 : 1;
    return static_cast<int>(br.ue());
}

// The prediction part of an inter macroblock up to its transform size flag:
// type, sub-macroblock types, reference indices, vector differences, coded
// block pattern.
bool parse_inter_header(BitReader& br, const Sps& sps, const Pps& pps, const SliceHeader& sh, std::uint32_t mb_type,
                        Macroblock& mb, std::string& err) {
    // Lists of the two 16x8 / 8x16 partitions of B types 4..21.
    static const int kBPairs[9][2] = {{1, 1}, {2, 2}, {1, 2}, {2, 1}, {1, 3}, {2, 3}, {3, 1}, {3, 2}, {3, 3}};
    // B sub-macroblock types: lists and shape (type 0 is direct).
    static const int kBSubPred[13] = {0, 1, 2, 3, 1, 1, 2, 2, 3, 3, 1, 2, 3};
    static const SubShape kBSubShape[13] = {kSub8x8, kSub8x8, kSub8x8, kSub8x8, kSub8x4, kSub4x8, kSub8x4,
                                            kSub4x8, kSub8x4, kSub4x8, kSub4x4, kSub4x4, kSub4x4};
    const bool b = sh.slice_type == kSliceB;
    mb.kind = kMbInter;
    int parts = 1;
    bool ref0_only = false;
    for (int l = 0; l < 2; ++l)
        for (int k = 0; k < 4; ++k) mb.ref[l][k] = -1;
    std::memset(mb.mvd, 0, sizeof mb.mvd);
    for (int k = 0; k < 4; ++k) {
        mb.pred[k] = 0;
        mb.sub[k] = kSub8x8;
    }
    bool small_parts = false;  // a sub-macroblock partition below 8x8
    if (!b) {
        if (mb_type <= 2) {
            mb.shape = static_cast<PartShape>(mb_type);
            parts = mb_type == 0 ? 1 : 2;
            for (int k = 0; k < parts; ++k) mb.pred[k] = 1;
        } else {
            mb.shape = kPart8x8;
            parts = 4;
            ref0_only = mb_type == 4;
            for (int k = 0; k < 4; ++k) {
                const std::uint32_t st = br.ue();
                if (st > 3) return err = "bad sub_mb_type", false;
                mb.sub[k] = static_cast<SubShape>(st);
                mb.pred[k] = 1;
                if (st) small_parts = true;
            }
        }
    } else {
        if (mb_type == 0) {
            mb.kind = kMbDirect16x16;
            mb.shape = kPart8x8;
            small_parts = !sps.direct_8x8_inference;
        } else if (mb_type <= 3) {
            mb.shape = kPart16x16;
            mb.pred[0] = static_cast<int>(mb_type);
        } else if (mb_type <= 21) {
            mb.shape = (mb_type & 1) ? kPart8x16 : kPart16x8;
            parts = 2;
            mb.pred[0] = kBPairs[(mb_type - 4) / 2][0];
            mb.pred[1] = kBPairs[(mb_type - 4) / 2][1];
        } else {
            mb.shape = kPart8x8;
            parts = 4;
            for (int k = 0; k < 4; ++k) {
                const std::uint32_t st = br.ue();
                if (st > 12) return err = "bad sub_mb_type", false;
                mb.sub[k] = kBSubShape[st];
                mb.pred[k] = kBSubPred[st];
                if (mb.sub[k] != kSub8x8 || (st == 0 && !sps.direct_8x8_inference)) small_parts = true;
            }
        }
    }
    if (mb.kind == kMbInter) {
        for (int l = 0; l < 2; ++l)
            for (int k = 0; k < parts; ++k) {
                if (!(mb.pred[k] >> l & 1)) continue;
                if (sh.num_ref_idx[l] > 1 && !ref0_only) {
                    const int r = read_ref_idx(br, sh.num_ref_idx[l]);
                    if (r < 0 || r >= sh.num_ref_idx[l]) return err = "bad ref_idx", false;
                    mb.ref[l][k] = r;
                } else {
                    mb.ref[l][k] = 0;
                }
            }
        for (int l = 0; l < 2; ++l)
            for (int k = 0; k < parts; ++k) {
                if (!(mb.pred[k] >> l & 1)) continue;
                const int n = mb.shape != kPart8x8 ? 1 : mb.sub[k] == kSub8x8 ? 1 : mb.sub[k] == kSub4x4 ? 4 : 2;
                for (int j = 0; j < n; ++j) {
                    const int idx = mb.shape == kPart8x8 ? 4 * k + j : k;
                    mb.mvd[l][idx][0] = br.se();
                    mb.mvd[l][idx][1] = br.se();
                    if (mb.mvd[l][idx][0] < -8192 || mb.mvd[l][idx][0] > 8191 || mb.mvd[l][idx][1] < -8192 ||
                        mb.mvd[l][idx][1] > 8191)
                        return err = "bad motion vector difference", false;
                }
            }
    }
    const std::uint32_t code = br.ue();
    if (code > 47) return err = "bad coded_block_pattern", false;
    mb.cbp_luma = kCbpInter[code] & 15;
    mb.cbp_chroma = kCbpInter[code] >> 4;
    if (mb.cbp_luma && pps.transform_8x8_mode && !small_parts) mb.t8x8 = br.flag();
    if (br.bad()) return err = "truncated macroblock header", false;
    return true;
}

}  // namespace

bool parse_macroblock(BitReader& br, const Sps& sps, const Pps& pps, const SliceHeader& sh, const CavlcTables& t,
                      const NeighbourInfo& nb, int& qp, Macroblock& mb, std::string& err) {
    init_scans();
    std::uint32_t mb_type = br.ue();
    if (br.bad()) return err = "bad mb_type", false;
    bool inter = false;
    if (sh.slice_type == kSliceP) {
        if (mb_type < 5) inter = true;
        else mb_type -= 5;
    } else if (sh.slice_type == kSliceB) {
        if (mb_type < 23) inter = true;
        else mb_type -= 23;
    }
    if (!inter && mb_type > 25) return err = "bad mb_type", false;
    mb.t8x8 = false;
    mb.pattern = 0;
    mb.luma_used = mb.chroma_used = 0;
    std::memset(mb.total, 0, sizeof mb.total);
    std::memset(mb.total_c, 0, sizeof mb.total_c);
    const int cfi = sps.chroma_format_idc;
    if (cfi != 1 && cfi != 2) return err = "only 4:2:0 and 4:2:2 chroma are supported", false;
    mb.cpat[0] = mb.cpat[1] = 0;
    if (inter) {
        if (!parse_inter_header(br, sps, pps, sh, mb_type, mb, err)) return false;
    } else if (mb_type == 25) {
        mb.kind = kMbPcm;
        br.align();
        const int n = 256 + (cfi == 1 ? 128 : 256);
        for (int i = 0; i < n; ++i) mb.pcm[i] = static_cast<std::uint16_t>(br.u(i < 256 ? sps.bit_depth_luma : sps.bit_depth_chroma));
        if (br.bad()) return err = "truncated I_PCM macroblock", false;
        std::memset(mb.total, 16, sizeof mb.total);
        std::memset(mb.total_c, 16, sizeof mb.total_c);
        mb.qp = qp;
        return true;
    }
    if (inter) {
        // Header parsed above.
    } else if (mb_type == 0) {
        mb.kind = kMbI4x4;
        if (pps.transform_8x8_mode && br.flag()) mb.kind = kMbI8x8;
        const int count = mb.kind == kMbI4x4 ? 16 : 4;
        const int step = mb.kind == kMbI4x4 ? 1 : 4;
        int grid[4][4];  // modes of this macroblock's cells as decided
        for (int k = 0; k < count; ++k) {
            const int b = k * step;
            const int x = block_x(b), y = block_y(b);
            const bool ha = x > 0 || nb.avail_a, hb = y > 0 || nb.avail_b;
            int pred = 2;
            if (ha && hb) {
                const int ma = x > 0 ? grid[y][x - 1] : nb.mode_a[y];
                const int mbm = y > 0 ? grid[y - 1][x] : nb.mode_b[x];
                pred = ma < mbm ? ma : mbm;
            }
            int mode = pred;
            if (!br.flag()) {
                const int rem = static_cast<int>(br.u(3));
                mode = rem < pred ? rem : rem + 1;
            }
            mb.modes[k] = static_cast<std::uint32_t>(mode);
            for (int dy = 0; dy < (step == 4 ? 2 : 1); ++dy)
                for (int dx = 0; dx < (step == 4 ? 2 : 1); ++dx) grid[y + dy][x + dx] = mode;
        }
        mb.chroma_mode = static_cast<int>(br.ue());
        if (mb.chroma_mode > 3) return err = "bad intra_chroma_pred_mode", false;
        const std::uint32_t code = br.ue();
        if (code > 47) return err = "bad coded_block_pattern", false;
        mb.cbp_luma = kCbpIntra[code] & 15;
        mb.cbp_chroma = kCbpIntra[code] >> 4;
    } else if (!inter) {
        mb.kind = kMbI16x16;
        const int v = static_cast<int>(mb_type) - 1;
        mb.mode16 = v % 4;
        mb.cbp_chroma = (v / 4) % 3;
        mb.cbp_luma = v >= 12 ? 15 : 0;
        mb.chroma_mode = static_cast<int>(br.ue());
        if (mb.chroma_mode > 3) return err = "bad intra_chroma_pred_mode", false;
        // Mode storage for neighbours' prediction: not NxN, counts as DC.
    }
    if (mb.cbp_luma || mb.cbp_chroma || mb.kind == kMbI16x16) {
        const int delta = br.se();
        const int off = 6 * (sps.bit_depth_luma - 8);
        if (delta < -(26 + off / 2) || delta > 25 + off / 2) return err = "bad mb_qp_delta", false;
        qp = ((qp + delta + 52 + 2 * off) % (52 + off)) - off;
    }
    mb.qp = qp;
    if (br.bad()) return err = "truncated macroblock header", false;

    // Luma residual.
    Zan32s* cur = mb.luma;
    auto nc_luma = [&](int b) {
        const int x = block_x(b), y = block_y(b);
        const bool ha = x > 0 || nb.avail_a, hb = y > 0 || nb.avail_b;
        int na = 0, nbv = 0;
        if (ha) {
            if (x > 0) {
                for (int c = 0; c < 16; ++c)
                    if (block_x(c) == x - 1 && block_y(c) == y) na = mb.total[c];
            } else {
                na = nb.total_a[y];
            }
        }
        if (hb) {
            if (y > 0) {
                for (int c = 0; c < 16; ++c)
                    if (block_x(c) == x && block_y(c) == y - 1) nbv = mb.total[c];
            } else {
                nbv = nb.total_b[x];
            }
        }
        return pred_nc(ha, na, hb, nbv);
    };
    int total = 0;
    if (mb.kind == kMbI16x16) {
        if (!residual_block(br, t, nc_luma(0), 16, g_zigzag, &cur, total, err)) return false;
        if (total) mb.pattern |= 1;
        if (mb.cbp_luma)
            for (int b = 0; b < 16; ++b) {
                if (!residual_block(br, t, nc_luma(b), 15, g_zigzag, &cur, total, err)) return false;
                mb.total[b] = static_cast<std::uint8_t>(total);
                if (total) mb.pattern |= 1u << (b + 1);
            }
    } else if (mb.kind == kMbI4x4 || (mb.kind != kMbI8x8 && !mb.t8x8)) {
        for (int b = 0; b < 16; ++b) {
            if (!(mb.cbp_luma >> (b >> 2) & 1)) continue;
            if (!residual_block(br, t, nc_luma(b), 16, g_zigzag, &cur, total, err)) return false;
            mb.total[b] = static_cast<std::uint8_t>(total);
            if (total) mb.pattern |= 1u << (b + 1);
        }
    } else {
        for (int b8 = 0; b8 < 4; ++b8) {
            if (!(mb.cbp_luma >> b8 & 1)) continue;
            Zan32s* blk = cur;
            std::memset(blk, 0, 64 * sizeof(Zan32s));
            bool any = false;
            for (int k = 0; k < 4; ++k) {
                Zan32s part[16];
                Zan32s* pp = part;
                if (!residual_block(br, t, nc_luma(4 * b8 + k), 16, g_identity, &pp, total, err)) return false;
                mb.total[4 * b8 + k] = static_cast<std::uint8_t>(total);
                if (total) {
                    any = true;
                    for (int i = 0; i < 16; ++i) blk[kZigzag8x8[4 * i + k]] = part[i];
                }
            }
            if (any) {
                mb.pattern |= 1u << b8;
                cur += 64;
            }
        }
    }
    mb.luma_used = static_cast<int>(cur - mb.luma);

    // Chroma residual: DC of both planes, then the AC blocks of each.
    cur = mb.chroma;
    const int nblk = cfi == 1 ? 4 : 8;
    if (mb.cbp_chroma) {
        for (int c = 0; c < 2; ++c) {
            Zan32u* word;
            Zan32s bit;
            br.to_cursor(&word, &bit);
            Zan16s n = 0;
            const ZanStatus st =
                cfi == 1 ? zaniDecodeCAVLCChromaDcCoeffs_H264_1u32s(&word, &bit, &n, &cur, t.tokenDc420, t.tz420, t.rb)
                         : zaniDecodeCAVLCChroma422DcCoeffs_H264_1u32s(&word, &bit, &n, &cur, t.tokenDc422, t.tz422,
                                                                        t.rb);
            if (st != zanStsOk) return err = "invalid CAVLC code in a chroma DC block", false;
            br.from_cursor(word, bit);
            if (br.overrun()) return err = "truncated slice data", false;
            if (n) {
                mb.pattern |= 1u << (17 + c);
                mb.cpat[c] |= 1;
            }
        }
    }
    if (mb.cbp_chroma & 2) {
        for (int c = 0; c < 2; ++c)
            for (int b = 0; b < nblk; ++b) {
                const int x = b & 1, y = b >> 1;
                const bool ha = x > 0 || nb.avail_a, hb = y > 0 || nb.avail_b;
                const int na = x > 0 ? mb.total_c[c][b - 1] : nb.total_ca[c][y];
                const int nbv = y > 0 ? mb.total_c[c][b - 2] : nb.total_cb[c][x];
                if (!residual_block(br, t, pred_nc(ha, na, hb, nbv), 15, g_zigzag, &cur, total, err)) return false;
                mb.total_c[c][b] = static_cast<std::uint8_t>(total);
                if (total) {
                    if (cfi == 1) mb.pattern |= 1u << (19 + 4 * c + b);
                    mb.cpat[c] |= 1u << (b + 1);
                }
            }
    }
    mb.chroma_used = static_cast<int>(cur - mb.chroma);
    return true;
}

}  // namespace h264ex
