// The picture side: 4:2:0 frame buffers and the per-block steps, each served
// by one library call:
//   decoding  variable-length decode + inverse quantisation + mismatch
//             control (zaniReconstructDCTBlockIntra_MPEG2_32s), inverse DCT
//             and store (zaniDCT8x8Inv_AANTransposed_16s8u_C1R);
//   encoding  forward DCT (zaniDCT8x8Fwd_8u16s_C2P2), quantisation
//             (zaniQuantIntra_MPEG2_16s_C1I), variable-length coding
//             (zaniPutIntraBlock), and the encoder's own reconstruction
//             (zaniQuantInvIntra_MPEG2_16s_C1I, then the inverse DCT).
// The inverse DCT takes its coefficients transposed, so everything between
// the two transforms works on transposed blocks: scans and weights are
// transposed once per picture, and the encoder feeds the forward DCT
// transposed samples (the DCT of a transposed block is the transposed DCT).
#pragma once

#include <cstdint>
#include <cstdio>
#include <vector>

#include <zanvc.h>

#include "bits.h"
#include "tables.h"

namespace mpeg2 {

// Planar 4:2:0 picture padded to whole macroblocks.
struct Frame {
    int width = 0, height = 0, mbWidth = 0, mbHeight = 0;
    int lumaStride = 0, chromaStride = 0;
    std::vector<Zan8u> y, u, v;
    void allocate(int w, int h, int mbRows);
    Zan8u* plane(int c) { return c == 0 ? y.data() : c == 1 ? u.data() : v.data(); }
    int stride(int c) const { return c == 0 ? lumaStride : chromaStride; }
    // Crops to width x height (chroma rounded up) and writes raw yuv420p.
    bool write(std::FILE* f) const;
    // Reads one raw yuv420p picture and replicates the edges into the padding.
    bool read(std::FILE* f);
};

// Per-picture block context: the scan and weights transposed.
struct BlockContext {
    alignas(16) Zan32s scanT[64];     // raster position (transposed) by scan index
    alignas(16) Zan16s weightsT[64];  // intra weights, transposed raster
    alignas(16) Zan32f invWeightsT[64];
    int lastInCorner = 0;             // largest scan index whose prefix stays in the 4x4 low corner
    int acTable = 0;                  // 0: table zero, 1: table one
    int dcShift = 3;                  // 3 - intra_dc_precision
    int dcReset = 128;                // predictor at the start of a slice
    void set(const uint8_t* weightsRaster, int alternateScan, int intraVlc, int dcPrecision);
    // The inverse DCT's count for a block whose last coded scan index is last.
    Zan32s idct_count(Zan32s last) const { return last == 0 ? 0 : last <= lastInCorner ? 1 : 10; }
};

// Decodes the six blocks of one intra macroblock at (mbx, mby) into the frame.
// pred[3]: DC predictors (Y, Cb, Cr).  Returns false on a bad code.
bool decode_macroblock(BitReader& r, const CodeTables& t, const BlockContext& c, int quantiserScale, bool fieldDct,
                       Zan16s pred[3], Frame& f, int mbx, int mby);

// Levels of the six blocks of one macroblock (transposed raster, DC level at 0)
// and the count of nonzero AC levels of each, for writing them again.
struct MacroblockLevels {
    alignas(16) Zan16s block[6][64];
    Zan32s count[6];
};
bool read_macroblock_levels(BitReader& r, const CodeTables& t, const BlockContext& c, Zan16s pred[3],
                            MacroblockLevels& m);
// Writes levels with zaniPutIntraBlock; pred[3] as above (32-bit here).
bool write_macroblock_levels(BitWriter& w, const CodeTables& t, const BlockContext& c, const MacroblockLevels& m,
                             Zan32s pred[3]);

// Transforms and quantises the macroblock of src at (mbx, mby) into levels and
// rebuilds it into recon as a decoder would.
bool encode_macroblock(const Frame& src, int mbx, int mby, const BlockContext& c, int quantiserScale,
                       MacroblockLevels& m, Frame& recon);

}  // namespace mpeg2
