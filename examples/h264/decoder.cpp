// The H.264 example decoder: parameter sets, slices and pictures of an Annex B
// stream, decoded with the library's code tables, residual decoding,
// reconstruction, interpolation, weighting and loop filter; order counts,
// reference lists and marking, and output in display order.
#include "decoder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "picture.h"
#include "syntax.h"

namespace h264ex {

namespace {

struct Decoder {
    std::vector<Sps> spss = std::vector<Sps>(32);
    std::vector<Pps> ppss = std::vector<Pps>(256);
    CavlcTables tables;
    Picture pic;
    bool open = false;  // a picture is being decoded
    std::vector<SliceFilter> slices;
    const std::function<void(const DecodedFrame&)>* sink = nullptr;
    DecodedFrame frame;
    int frames = 0;
    bool debug = std::getenv("H264EX_DEBUG") != nullptr;

    // Pictures: references, pictures waiting for output, the current one.
    std::vector<std::unique_ptr<Frame>> pool;
    Frame* cur = nullptr;
    int next_uid = 1;
    SliceHeader first;  // first slice header of the current picture
    Sps sps_cur;
    int max_frame_num = 16;
    int max_long_idx = -1;  // no long-term frame index allowed
    // Order count state carried from picture to picture.
    int prev_poc_msb = 0, prev_poc_lsb = 0;
    int prev_frame_num = 0, prev_frame_num_offset = 0;
    int frame_num_offset = 0, poc_msb = 0;
    SliceContext sc;

    Frame* free_frame() {
        for (auto& f : pool)
            if (!f->is_ref() && !f->waiting_output && f.get() != cur) return f.get();
        pool.push_back(std::make_unique<Frame>());
        return pool.back().get();
    }

    void emit(Frame* f) {
        f->waiting_output = false;
        f->output(frame);
        (*sink)(frame);
        ++frames;
    }
    // Outputs waiting pictures in order count order while more than keep
    // of them wait.
    void bump(std::size_t keep) {
        for (;;) {
            std::size_t n = 0;
            Frame* best = nullptr;
            for (auto& f : pool)
                if (f->waiting_output) {
                    ++n;
                    if (!best || f->poc < best->poc) best = f.get();
                }
            if (n <= keep || !best) return;
            emit(best);
        }
    }

    int wrap(const Frame* f) const { return f->frame_num > first.frame_num ? f->frame_num - max_frame_num : f->frame_num; }

    void compute_poc(const Sps& sps, const SliceHeader& sh) {
        const bool idr = sh.nal_type == 5;
        if (sps.poc_type == 0) {
            if (idr) prev_poc_msb = prev_poc_lsb = 0;
            const int max_lsb = 1 << sps.log2_max_poc_lsb;
            const int lsb = sh.poc_lsb;
            if (lsb < prev_poc_lsb && prev_poc_lsb - lsb >= max_lsb / 2) poc_msb = prev_poc_msb + max_lsb;
            else if (lsb > prev_poc_lsb && lsb - prev_poc_lsb > max_lsb / 2) poc_msb = prev_poc_msb - max_lsb;
            else poc_msb = prev_poc_msb;
            const int top = poc_msb + lsb;
            cur->poc = std::min(top, top + sh.delta_poc_bottom);
            return;
        }
        if (idr) frame_num_offset = 0;
        else if (prev_frame_num > sh.frame_num) frame_num_offset = prev_frame_num_offset + max_frame_num;
        else frame_num_offset = prev_frame_num_offset;
        if (sps.poc_type == 2) {
            cur->poc = idr ? 0 : 2 * (frame_num_offset + sh.frame_num) - (sh.nal_ref_idc == 0 ? 1 : 0);
            return;
        }
        const int n = static_cast<int>(sps.offset_for_ref_frame.size());
        int abs_num = n != 0 ? frame_num_offset + sh.frame_num : 0;
        if (sh.nal_ref_idc == 0 && abs_num > 0) --abs_num;
        int expected = 0;
        if (abs_num > 0) {
            int per_cycle = 0;
            for (int v : sps.offset_for_ref_frame) per_cycle += v;
            expected = ((abs_num - 1) / n) * per_cycle;
            for (int i = 0; i <= (abs_num - 1) % n; ++i) expected += sps.offset_for_ref_frame[static_cast<std::size_t>(i)];
        }
        if (sh.nal_ref_idc == 0) expected += sps.offset_for_non_ref_pic;
        const int top = expected + sh.delta_poc[0];
        const int bottom = top + sps.offset_for_top_to_bottom + sh.delta_poc[1];
        cur->poc = std::min(top, bottom);
    }

    bool start_picture(const Sps& sps, const Pps& pps, const SliceHeader& sh, std::string& err) {
        if (sh.first_mb != 0) return err = "picture does not start at macroblock 0", false;
        if (sh.nal_type == 5) {
            // An IDR picture: what waits is output, no reference remains.
            bump(0);
            for (auto& f : pool) f->short_ref = f->long_ref = false;
        }
        cur = free_frame();
        cur->uid = next_uid++;
        cur->short_ref = cur->long_ref = false;
        cur->waiting_output = false;
        cur->frame_num = sh.frame_num;
        first = sh;
        sps_cur = sps;
        max_frame_num = 1 << sps.log2_max_frame_num;
        compute_poc(sps, sh);
        pic.init(sps, pps, cur);
        slices.clear();
        headers.clear();
        open = true;
        return true;
    }

    bool build_lists(const SliceHeader& sh, std::string& err) {
        sc.type = sh.slice_type;
        sc.list[0].clear();
        sc.list[1].clear();
        sc.sh = &sh;
        sc.poc = cur->poc;
        sc.direct_spatial = sh.direct_spatial;
        sc.direct_8x8_inference = sps_cur.direct_8x8_inference;
        if (sh.slice_type == kSliceI) return true;
        std::vector<Frame*> shorts, longs;
        for (auto& f : pool) {
            if (f.get() == cur || !f->is_ref()) continue;
            if (f->mbw != cur->mbw || f->mbh != cur->mbh || f->hbd != cur->hbd ||
                f->bit_depth_luma != cur->bit_depth_luma || f->bit_depth_chroma != cur->bit_depth_chroma ||
                f->chroma_format != cur->chroma_format)
                return err = "a reference picture has another format", false;
            (f->long_ref ? longs : shorts).push_back(f.get());
        }
        std::sort(longs.begin(), longs.end(), [](const Frame* a, const Frame* b) { return a->long_idx < b->long_idx; });
        std::vector<Frame*> init[2];
        if (sh.slice_type == kSliceP) {
            std::sort(shorts.begin(), shorts.end(), [&](const Frame* a, const Frame* b) { return wrap(a) > wrap(b); });
            init[0] = shorts;
            init[0].insert(init[0].end(), longs.begin(), longs.end());
        } else {
            std::vector<Frame*> before, after;
            for (Frame* f : shorts) (f->poc < cur->poc ? before : after).push_back(f);
            std::sort(before.begin(), before.end(), [](const Frame* a, const Frame* b) { return a->poc > b->poc; });
            std::sort(after.begin(), after.end(), [](const Frame* a, const Frame* b) { return a->poc < b->poc; });
            init[0] = before;
            init[0].insert(init[0].end(), after.begin(), after.end());
            init[0].insert(init[0].end(), longs.begin(), longs.end());
            init[1] = after;
            init[1].insert(init[1].end(), before.begin(), before.end());
            init[1].insert(init[1].end(), longs.begin(), longs.end());
            if (init[1].size() > 1 && init[1] == init[0]) std::swap(init[1][0], init[1][1]);
        }
        for (int l = 0; l < (sh.slice_type == kSliceB ? 2 : 1); ++l) {
            const std::size_t n = static_cast<std::size_t>(sh.num_ref_idx[l]);
            std::vector<Frame*> list = init[l];
            list.resize(n + 1, nullptr);
            int pred = sh.frame_num;
            std::size_t idx = 0;
            for (const ListModification& m : sh.modifications[l]) {
                Frame* named = nullptr;
                if (m.idc < 2) {
                    const int abs_diff = m.value + 1;
                    if (abs_diff > max_frame_num) return err = "bad abs_diff_pic_num", false;
                    int no_wrap = m.idc == 0 ? pred - abs_diff : pred + abs_diff;
                    if (no_wrap < 0) no_wrap += max_frame_num;
                    if (no_wrap >= max_frame_num) no_wrap -= max_frame_num;
                    pred = no_wrap;
                    const int num = no_wrap > sh.frame_num ? no_wrap - max_frame_num : no_wrap;
                    for (Frame* f : shorts)
                        if (wrap(f) == num) named = f;
                } else {
                    for (Frame* f : longs)
                        if (f->long_idx == m.value) named = f;
                }
                if (!named) return err = "reference list modification names a missing picture", false;
                if (idx >= n) return err = "too many reference list modifications", false;
                for (std::size_t c = n; c > idx; --c) list[c] = list[c - 1];
                list[idx++] = named;
                std::size_t k = idx;
                for (std::size_t c = idx; c <= n; ++c)
                    if (list[c] != named) list[k++] = list[c];
            }
            list.resize(n);
            sc.list[l] = list;
        }
        const Pps& pps = ppss[static_cast<std::size_t>(sh.pps_id)];
        sc.weights = 0;
        if (sh.slice_type == kSliceP && pps.weighted_pred) sc.weights = 1;
        if (sh.slice_type == kSliceB) sc.weights = pps.weighted_bipred_idc;
        return true;
    }

    // Reference marking of the finished picture.
    bool mark(std::string& err) {
        if (first.nal_ref_idc == 0) return true;
        bool mmco5 = false;
        if (first.nal_type == 5) {
            max_long_idx = first.long_term_reference ? 0 : -1;
            if (first.long_term_reference) {
                cur->long_ref = true;
                cur->long_idx = 0;
            } else {
                cur->short_ref = true;
            }
        } else if (first.adaptive_marking) {
            for (const Mmco& m : first.mmcos) {
                auto short_by_num = [&](int num) -> Frame* {
                    for (auto& f : pool)
                        if (f.get() != cur && f->short_ref && wrap(f.get()) == num) return f.get();
                    return nullptr;
                };
                switch (m.op) {
                case 1:
                    if (Frame* f = short_by_num(first.frame_num - (m.arg1 + 1))) f->short_ref = false;
                    break;
                case 2:
                    for (auto& f : pool)
                        if (f.get() != cur && f->long_ref && f->long_idx == m.arg1) f->long_ref = false;
                    break;
                case 3: {
                    Frame* s = short_by_num(first.frame_num - (m.arg1 + 1));
                    if (m.arg2 > max_long_idx) return err = "long-term frame index above the maximum", false;
                    for (auto& f : pool)
                        if (f.get() != s && f->long_ref && f->long_idx == m.arg2) f->long_ref = false;
                    if (s) {
                        s->short_ref = false;
                        s->long_ref = true;
                        s->long_idx = m.arg2;
                    }
                    break;
                }
                case 4:
                    max_long_idx = m.arg1 - 1;
                    for (auto& f : pool)
                        if (f->long_ref && f->long_idx > max_long_idx) f->long_ref = false;
                    break;
                case 5:
                    for (auto& f : pool)
                        if (f.get() != cur) f->short_ref = f->long_ref = false;
                    max_long_idx = -1;
                    mmco5 = true;
                    break;
                case 6:
                    if (m.arg2 > max_long_idx) return err = "long-term frame index above the maximum", false;
                    for (auto& f : pool)
                        if (f.get() != cur && f->long_ref && f->long_idx == m.arg2) f->long_ref = false;
                    cur->long_ref = true;
                    cur->long_idx = m.arg2;
                    break;
                }
            }
            if (!cur->long_ref) cur->short_ref = true;
        } else {
            // Sliding window: the short-term picture with the smallest
            // FrameNumWrap goes when the references are full.
            const int cap = std::max(1, sps_cur.max_num_ref_frames);
            for (;;) {
                int n = 0;
                Frame* oldest = nullptr;
                for (auto& f : pool) {
                    if (f.get() == cur || !f->is_ref()) continue;
                    ++n;
                    if (f->short_ref && (!oldest || wrap(f.get()) < wrap(oldest))) oldest = f.get();
                }
                if (n < cap || !oldest) break;
                oldest->short_ref = false;
            }
            cur->short_ref = true;
        }
        int refs = 0;
        for (auto& f : pool) refs += f->is_ref() ? 1 : 0;
        if (refs > std::max(1, sps_cur.max_num_ref_frames))
            return err = "more reference pictures than the sequence allows", false;
        if (mmco5) {
            // The picture now counts as frame 0 with order count 0.
            bump(0);
            const int top = sps_cur.poc_type == 0 ? poc_msb + first.poc_lsb : cur->poc;
            prev_poc_msb = 0;
            prev_poc_lsb = top - cur->poc;
            cur->poc = 0;
            cur->frame_num = 0;
            prev_frame_num = 0;
            prev_frame_num_offset = 0;
            return true;
        }
        if (sps_cur.poc_type == 0) {
            prev_poc_msb = poc_msb;
            prev_poc_lsb = first.poc_lsb;
        }
        return true;
    }

    bool finish(std::string& err) {
        if (!open) return true;
        open = false;
        for (int a = 0; a < pic.mb_count(); ++a)
            if (!pic.decoded(a)) return err = "picture has missing macroblocks", false;
        pic.deblock(slices);
        if (!mark(err)) return false;
        if (!(first.nal_ref_idc != 0 && first.adaptive_marking &&
              std::any_of(first.mmcos.begin(), first.mmcos.end(), [](const Mmco& m) { return m.op == 5; }))) {
            prev_frame_num = first.frame_num;
            prev_frame_num_offset = frame_num_offset;
        }
        cur->waiting_output = true;
        bump(16);
        cur = nullptr;
        return true;
    }

    bool slice(BitReader& br, int nal_type, int ref_idc, std::string& err) {
        auto hp = std::make_unique<SliceHeader>();
        SliceHeader& sh = *hp;
        if (!parse_slice_header(br, nal_type, ref_idc, spss, ppss, sh, err)) return false;
        const Pps& pps = ppss[static_cast<std::size_t>(sh.pps_id)];
        const Sps& sps = spss[static_cast<std::size_t>(pps.sps_id)];
        if (sps.bit_depth_luma > 14 || sps.bit_depth_chroma > 14) return err = "bit depth above 14", false;
        if (sps.chroma_format_idc != 1 && sps.chroma_format_idc != 2)
            return err = "only 4:2:0 and 4:2:2 chroma are supported", false;
        if (sh.slice_type != kSliceI && sps.chroma_format_idc != 1)
            return err = "P and B slices are supported in 4:2:0 only", false;
        if (sh.slice_type != kSliceI && pps.constrained_intra_pred)
            return err = "constrained intra prediction in P and B slices is not supported", false;
        if (open && (sh.first_mb == 0 || sh.frame_num != first.frame_num || sh.poc_lsb != first.poc_lsb ||
                     (sh.nal_type == 5) != (first.nal_type == 5) || (sh.nal_ref_idc == 0) != (first.nal_ref_idc == 0))) {
            if (!finish(err)) return false;
        }
        if (!open && !start_picture(sps, pps, sh, err)) return false;
        if (!pic.same_format(sps)) return err = "parameter sets changed inside a picture", false;
        pic.use_pps(pps);
        if (!build_lists(sh, err)) return false;
        pic.use_slice(&sc);
        const int id = static_cast<int>(slices.size());
        slices.push_back({sh.disable_deblocking, sh.alpha_offset, sh.beta_offset});
        int qp = sh.qp;
        Macroblock mb;
        NeighbourInfo nb;
        int addr = sh.first_mb;
        auto check_addr = [&]() {
            if (addr >= pic.mb_count()) return err = "slice runs past the end of the picture", false;
            if (pic.decoded(addr)) return err = "macroblock decoded twice", false;
            return true;
        };
        for (bool more = true; more;) {
            if (sh.slice_type != kSliceI) {
                const std::uint32_t run = br.ue();
                if (br.bad()) return err = "truncated or damaged mb_skip_run", false;
                if (run > static_cast<std::uint32_t>(pic.mb_count())) return err = "bad mb_skip_run", false;
                for (std::uint32_t i = 0; i < run; ++i, ++addr) {
                    if (!check_addr()) return false;
                    Picture::skipped(qp, mb);
                    if (!pic.reconstruct(addr, id, mb, pps, err)) return false;
                }
                if (run > 0 && !br.more_rbsp_data()) break;
            }
            if (!check_addr()) return false;
            pic.neighbours(addr, id, nb);
            if (!parse_macroblock(br, sps, pps, sh, tables, nb, qp, mb, err)) return false;
            if (debug)
                std::fprintf(stderr, "mb %d kind %d shape %d cbp %d/%d qp %d pat %x\n", addr, mb.kind, mb.shape,
                             mb.cbp_luma, mb.cbp_chroma, mb.qp, mb.pattern);
            if (!pic.reconstruct(addr, id, mb, pps, err)) return false;
            ++addr;
            more = br.more_rbsp_data();
        }
        headers.push_back(std::move(hp));
        return true;
    }
    // Slice headers of the current picture (the slice context points into
    // them while the picture is open).
    std::vector<std::unique_ptr<SliceHeader>> headers;
};

}  // namespace

bool decode_annexb(const unsigned char* data, std::size_t size,
                   const std::function<void(const DecodedFrame&)>& sink, std::string& err) {
    auto dec = std::make_unique<Decoder>();
    dec->sink = &sink;
    if (!dec->tables.build()) return err = "cannot build the code tables", false;
    Rbsp rbsp;
    for (const NalSpan& nal : split_nal_units(data, size)) {
        if (nal.size < 1) continue;
        const int type = nal.data[0] & 31, ref_idc = (nal.data[0] >> 5) & 3;
        if (nal.data[0] & 0x80) return err = "forbidden_zero_bit set", false;
        rbsp.load(nal.data + 1, nal.size - 1);
        BitReader br(rbsp);
        bool ok = true;
        if (type == 7) {
            ok = parse_sps(br, dec->spss, err);
        } else if (type == 8) {
            ok = parse_pps(br, dec->spss, dec->ppss, err);
        } else if (type == 1 || type == 5) {
            ok = dec->slice(br, type, ref_idc, err);
        } else if (type == 2 || type == 3 || type == 4) {
            err = "data partitioning is not supported";
            ok = false;
        } else if (type == 20 || type == 14 || type == 15) {
            err = "scalable and multiview extensions are not supported";
            ok = false;
        }
        if (!ok) return false;
    }
    if (!dec->finish(err)) return false;
    dec->bump(0);
    if (dec->frames == 0) return err = "no picture in the stream", false;
    return true;
}

}  // namespace h264ex
