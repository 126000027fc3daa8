// The commands of the zanvc program.  Each takes the arguments after its
// own name and returns the process exit code.
#pragma once

namespace zanvc_tool {

int demo(int argc, char** argv);    // H.264 encode and decode of a built-in clip (the default)
int search(int argc, char** argv);  // motion search demo / on two PGM pictures
int mc(int argc, char** argv);      // motion-compensated prediction at one vector
int info(int argc, char** argv);    // version record, path, processor features
int bench(int argc, char** argv);   // runs zanvc_bench and tabulates its results
// picture tools
int deinterlace(int argc, char** argv);  // deinterlaces a raw video with one of the library's tools
int denoise(int argc, char** argv);      // denoises a raw video (adaptive or smoothing filter)
// zanvc cast IN OUT [--size WxH] [--pix-fmt F] [--previous output|source] [--threshold T]
//                   [--png PREFIX] [--png-frame N]: CAST denoising with history
int cast(int argc, char** argv);
// zanvc camera IN OUT [--size WxH] [--pix-fmt uyvy422|yuyv422] [--zoom 2|4|8] [--interp nearest|mean]
//                     [--format 565|555] [--rotate 0..3] [--png FILE] [--check]: resize, RGB, rotate
int camera(int argc, char** argv);
// zanvc mosquito IN OUT [--size WxH] [--pix-fmt F] [--png PREFIX] [--png-frame N]: mosquito filter
int mosquito(int argc, char** argv);
// end of picture tools
void usage(const char* program);

// "u8" or "n8": the path the library chose when it loaded.
const char* active_path();

}  // namespace zanvc_tool
