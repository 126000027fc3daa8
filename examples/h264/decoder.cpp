// The H.264 example decoder: parameter sets, slices and pictures of an Annex B
// stream, decoded with the library's code tables, residual decoding,
// reconstruction and loop filter.
#include "decoder.h"

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
    int frame_num = -1;
    std::vector<SliceFilter> slices;
    const std::function<void(const DecodedFrame&)>* sink = nullptr;
    DecodedFrame frame;
    int frames = 0;
    bool debug = std::getenv("H264EX_DEBUG") != nullptr;

    bool finish(std::string& err) {
        if (!open) return true;
        open = false;
        for (int a = 0; a < pic.mb_count(); ++a)
            if (!pic.decoded(a)) return err = "picture has missing macroblocks", false;
        pic.deblock(slices);
        pic.output(frame);
        (*sink)(frame);
        ++frames;
        return true;
    }

    bool slice(BitReader& br, int nal_type, int ref_idc, std::string& err) {
        SliceHeader sh;
        if (!parse_slice_header(br, nal_type, ref_idc, spss, ppss, sh, err)) return false;
        const Pps& pps = ppss[static_cast<std::size_t>(sh.pps_id)];
        const Sps& sps = spss[static_cast<std::size_t>(pps.sps_id)];
        if (sps.bit_depth_luma > 14 || sps.bit_depth_chroma > 14) return err = "bit depth above 14", false;
        if (sps.chroma_format_idc != 1 && sps.chroma_format_idc != 2)
            return err = "only 4:2:0 and 4:2:2 chroma are supported", false;
        if (open && (sh.first_mb == 0 || sh.frame_num != frame_num)) {
            if (!finish(err)) return false;
        }
        if (!open) {
            if (sh.first_mb != 0) return err = "picture does not start at macroblock 0", false;
            pic.init(sps, pps);
            slices.clear();
            open = true;
            frame_num = sh.frame_num;
        }
        if (!pic.same_format(sps)) return err = "parameter sets changed inside a picture", false;
        pic.use_pps(pps);
        const int id = static_cast<int>(slices.size());
        slices.push_back({sh.disable_deblocking, sh.alpha_offset, sh.beta_offset});
        int qp = sh.qp;
        Macroblock mb;
        NeighbourInfo nb;
        for (int addr = sh.first_mb;; ++addr) {
            if (addr >= pic.mb_count()) return err = "slice runs past the end of the picture", false;
            if (pic.decoded(addr)) return err = "macroblock decoded twice", false;
            pic.neighbours(addr, id, nb);
            if (!parse_macroblock(br, sps, pps, tables, nb, qp, mb, err)) return false;
            if (debug)
                std::fprintf(stderr, "mb %d kind %d m16 %d cm %d cbp %d/%d qp %d pat %x modes %u %u %u %u\n", addr,
                             mb.kind, mb.mode16, mb.chroma_mode, mb.cbp_luma, mb.cbp_chroma, mb.qp, mb.pattern,
                             mb.modes[0], mb.modes[1], mb.modes[2], mb.modes[3]);
            if (!pic.reconstruct(addr, id, mb, pps, err)) return false;
            if (!br.more_rbsp_data()) break;
        }
        return true;
    }
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
    if (dec->frames == 0) return err = "no picture in the stream", false;
    return true;
}

}  // namespace h264ex
