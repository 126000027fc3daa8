// zanvc: command-line front end of the library.  With no arguments it runs
// the H.264 demo: a built-in clip through the example encoder and decoder.
#include <cstdio>
#include <cstring>

#include "commands.h"
#include "zanvc.h"

namespace zanvc_tool {

const char* active_path() { return zanvcGetLibVersion()->targetCode; }

void usage(const char* program) {
    std::printf(
        "usage: %s [command] [options]\n"
        "\n"
        "commands:\n"
        "  demo [--qp N] [--frames N] [--size WxH] [--no-deblock] [--out FILE]\n"
        "        encodes a built-in synthetic clip (352x288, 10 pictures, moving texture)\n"
        "        with the example H.264 intra encoder (CAVLC, QP 26), decodes it with the\n"
        "        example decoder, and prints the size, the PSNR, whether the decoded\n"
        "        pictures equal the encoder's reconstruction byte for byte, and the speed\n"
        "        of both.  Writes the stream to zanvc-demo.264 in the current directory\n"
        "        (or FILE).  Fails (exit 1) if the pictures differ.  This is the default\n"
        "        command.\n"
        "  search [options] [CUR.pgm REF.pgm]\n"
        "        full-search motion estimation per 16x16 block with half-sample\n"
        "        refinement, through the exported SAD functions.  Without pictures it\n"
        "        synthesizes a textured picture and a second one moved by known\n"
        "        vectors, and fails (exit 1) unless at least 90%% of the blocks with a\n"
        "        known vector, and of the panned blocks, get it back.\n"
        "          --range R     search window -R..R-1 in both directions (8, 16, 24, 32; default 16)\n"
        "          --size WxH    size of the built-in pictures (multiples of 16; default 176x144)\n"
        "          --seed N      texture seed of the built-in pictures (default 1)\n"
        "          --no-map      leave out the vector map\n"
        "  mc [CUR.pgm REF.pgm] --vector DX,DY [--round 0|1] [--max-mse T]\n"
        "        predicts every 16x16 block of CUR from REF at the vector DX,DY, in half\n"
        "        samples (the block at x takes REF at x + DX/2), through the exported HP\n"
        "        copy, adds the residual back through the exported motion compensation\n"
        "        (which must rebuild CUR exactly) and prints the mean squared residual per\n"
        "        sample, over the blocks whose reference lies inside the picture.  Fails\n"
        "        (exit 1) above T.  Without pictures it shifts a synthetic picture by known\n"
        "        vectors (whole and half samples) and fails unless each true vector gives a\n"
        "        residual of 0 and every other vector within one sample a larger one.\n"
        "  info  version record, active path, processor features, cache size, threads\n"
        "  bench [--markdown] [--min-time=S] [--repetitions=N] [FILTER]\n"
        "        runs zanvc_bench (FILTER is its --benchmark_filter regular expression)\n"
        "        and prints per kernel: scalar rule, u8 and n8 kernel times in CPU ns\n"
        "        per call (the median of N runs) and the speed-up of the faster kernel\n"
        "        over the rule; then the exported functions and the candidate-row\n"
        "        comparisons.  S: least seconds per benchmark (default 0.1).\n"
        "  deinterlace IN OUT [--size WxH] [--pix-fmt F] [--method M] [--keep top|bottom]\n"
        "              [--threshold T] [--motion LO,HI] [--weight C] [--png-before FILE]\n"
        "              [--png-after FILE] [--png-frame N]\n"
        "        deinterlaces a raw video (.yuv with --size, or .y4m; the same format out)\n"
        "        frame after frame.  M: blend (three frames, motion-weighted; LO,HI are the\n"
        "        motion thresholds of the weight, default 4,24), edge (edge-directed,\n"
        "        one field), median (median with a dead zone of T, default 10), motion\n"
        "        (four frames, weave or average, threshold T) or triangle (vertical\n"
        "        low-pass, centre weight C of 256, default 128).  The kept field is the\n"
        "        top one (even rows) unless --keep bottom.  The PNG options write frame N\n"
        "        (default 0) before and after.\n"
        "  denoise IN OUT [--size WxH] [--pix-fmt F] [--method adaptive|smooth]\n"
        "              [--threshold T] [--mode 0..3] [--radius R] [--png-before FILE]\n"
        "              [--png-after FILE] [--png-frame N]\n"
        "        denoises a raw video frame after frame: adaptive (mean over a window of\n"
        "        radius R, default 1, in three frames, whose other frames' samples count\n"
        "        within T of the centre, default 20; mode 3 uses both neighbours' sums)\n"
        "        or smooth (edge-preserving 3x3 mean, edges at a difference of T,\n"
        "        default 12).\n"
        "  cast IN OUT [--size WxH] [--pix-fmt F] [--previous output|source] [--threshold T]\n"
        "              [--png PREFIX] [--png-frame N]\n"
        "        CAST denoising frame after frame, with its history of still blocks\n"
        "        (one plane per call, or packed 4:2:2).\n"
        "  camera IN OUT [--size WxH] [--pix-fmt uyvy422|yuyv422] [--zoom 2|4|8]\n"
        "              [--interp nearest|mean] [--format 565|555] [--rotate 0..3] [--png FILE] [--check]\n"
        "        the camera path: packed 4:2:2 resized by 2, 4 or 8, converted to 16-bit\n"
        "        RGB and rotated; --check compares each frame with a double-precision model.\n"
        "  mosquito IN OUT [--size WxH] [--pix-fmt F] [--png PREFIX] [--png-frame N]\n"
        "        the mosquito-noise filter over the luma of a decoded video, with its state.\n"
        "  help  this text\n"
        "\n"
        "ZANCORE_CPU_FEATURES=<hex mask> masks processor features before the library\n"
        "loads; ffffffffffffffdf (MOVBE off) selects the u8 path.\n",
        program);
}

}  // namespace zanvc_tool

int main(int argc, char** argv) {
    using namespace zanvc_tool;
    if (argc < 2) return demo(0, argv + 1);
    const char* cmd = argv[1];
    if (std::strcmp(cmd, "demo") == 0) return demo(argc - 2, argv + 2);
    if (std::strcmp(cmd, "search") == 0) return search(argc - 2, argv + 2);
    if (std::strcmp(cmd, "mc") == 0) return mc(argc - 2, argv + 2);
    if (std::strcmp(cmd, "info") == 0) return info(argc - 2, argv + 2);
    if (std::strcmp(cmd, "bench") == 0) return bench(argc - 2, argv + 2);
    // picture tools
    if (std::strcmp(cmd, "deinterlace") == 0) return deinterlace(argc - 2, argv + 2);
    if (std::strcmp(cmd, "denoise") == 0) return denoise(argc - 2, argv + 2);
    if (std::strcmp(cmd, "cast") == 0) return cast(argc - 2, argv + 2);
    if (std::strcmp(cmd, "camera") == 0) return camera(argc - 2, argv + 2);
    if (std::strcmp(cmd, "mosquito") == 0) return mosquito(argc - 2, argv + 2);
    // end of picture tools
    if (std::strcmp(cmd, "help") == 0 || std::strcmp(cmd, "--help") == 0 || std::strcmp(cmd, "-h") == 0) {
        usage(argv[0]);
        return 0;
    }
    // Options without a command belong to the default command.
    if (cmd[0] == '-') return demo(argc - 1, argv + 1);
    std::fprintf(stderr, "%s: unknown command '%s'\n\n", argv[0], cmd);
    usage(argv[0]);
    return 2;
}
