// Fuzz target: the byte-cursor coefficient decoders of H.261, H.263 and
// MPEG-4.
//
// Input: byte 0 picks the decoder, byte 1 its flags and scan, byte 2 the
// quantiser; the rest is the stream.  Every decoder is called from each of
// the 8 bit offsets of the first byte, and then block after block until it
// fails or its cursor leaves the data.
//
// Forward decoders: the stream is followed by two zero bytes, which belong
// to the data (16 zero bits form no code in any of these tables, so every
// block stops in them, and the longest code that starts in the data, the
// 33-bit extended escape, ends in them), and then by exactly the 4 bytes of
// slack that the decoders may read past the byte of their next bit; the page
// after that is unreadable, so an over-read faults at once.  Backward
// decoders start on the last bit of the stream, which ends at the unreadable
// page, so any read above the starting byte faults; below the stream lie
// zero bytes, which stop them.
//
// Invariants: the status is Ok or CoefDecodeBad; a failed call leaves the
// cursor where it was (or, for the two documented DC rows, one byte on); a
// successful call moves the cursor forward (backward for the reversible
// backward forms) with an offset of 0..7 and reports a last index in range;
// Decode forms that store in scan order leave every entry past the last
// index zero.
#include <cstdint>
#include <cstring>

#include "guarded.h"
#include "zanvc.h"

namespace {

constexpr int kDecoders = 15;

struct Rec {
    alignas(16) Zan8u bytes[156 + 16];
    ZanQuantInvSpec_MPEG4* get() { return reinterpret_cast<ZanQuantInvSpec_MPEG4*>(bytes + 1); }
};

Zan32s pos_of(const Zan8u* base, const Zan8u* p, Zan32s off) { return static_cast<Zan32s>(p - base) * 8 + off; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 4) return 0;
    const int which = data[0] % kDecoders;
    const Zan32s flags = data[1];
    const Zan32s adv = flags & 1, modQ = (flags >> 1) & 1, rvlc = (flags >> 2) & 1, sep = (flags >> 3) & 1;
    const Zan32s scan = ((flags >> 4) & 3) == 3 ? -1 : (flags >> 4) & 3;
    const Zan32s cbp = (flags >> 6) & 1;
    const Zan32s QP = 1 + data[2] % 31;
    data += 3;
    size -= 3;

    static Rec plain, weighted;
    static const bool ready = [] {
        Zan8u w[64];
        for (int k = 0; k < 64; ++k) w[k] = static_cast<Zan8u>(8 + 3 * k);
        return zaniQuantInvInterInit_MPEG4(nullptr, plain.get(), 8) == zanStsOk &&
               zaniQuantInvInterInit_MPEG4(w, weighted.get(), 8) == zanStsOk;
    }();
    ZAN_FUZZ_CHECK(ready);

    const bool backward = which == 13 || which == 14;
    if (backward) {
        zan::fuzz::Guarded g(data, size, 0);
        const Zan8u* const base = g.begin();
        for (Zan32s startOff = 0; startOff < 8; ++startOff) {
            Zan8u* p = g.begin() + size - 1;
            Zan32s off = startOff;
            for (int call = 0; call < 64 && p >= base; ++call) {
                Zan8u* const p0 = p;
                const Zan32s off0 = off;
                Zan16s blk[64];
                std::memset(blk, 0x5A, sizeof blk);
                Zan32s last = -77;
                const ZanStatus st = which == 13 ? zaniDecodeCoeffsIntraRVLCBack_MPEG4_1u16s(&p, &off, blk, &last, sep)
                                                 : zaniDecodeCoeffsInterRVLCBack_MPEG4_1u16s(&p, &off, blk, &last);
                ZAN_FUZZ_CHECK(st == zanStsOk || st == zanStsCoefDecodeBad);
                if (st != zanStsOk) {
                    ZAN_FUZZ_CHECK(p == p0 && off == off0);
                    ZAN_FUZZ_CHECK(last >= -64 && last <= 63);  // the position p
                    break;
                }
                ZAN_FUZZ_CHECK(off >= 0 && off <= 7);
                ZAN_FUZZ_CHECK(pos_of(base, p, off) < pos_of(base, p0, off0));
                ZAN_FUZZ_CHECK(last >= (which == 13 && sep ? 0 : -1) && last <= 63);
                for (Zan32s k = last + 1; k < 64; ++k) ZAN_FUZZ_CHECK(blk[k] == 0);
            }
        }
        return 0;
    }

    constexpr std::size_t kZeros = 2, kSlack = 4;
    zan::fuzz::Guarded g(data, size, kZeros + kSlack, 0);
    const Zan8u* const base = g.begin();
    const Zan8u* const end = base + size + kZeros;  // first slack byte
    for (Zan32s startOff = 0; startOff < 8; ++startOff) {
        Zan8u* p = g.begin();
        Zan32s off = startOff;
        for (int call = 0; call < 64 && p < end; ++call) {
            Zan8u* const p0 = p;
            const Zan32s off0 = off;
            Zan16s blk[64];
            std::memset(blk, 0x5A, sizeof blk);
            Zan32s last = -77;
            Zan16s dc = -5;
            bool dcRow = false;     // a failure may leave the cursor one byte on
            bool scanOrder = false; // a Decode form storing at the index
            Zan32s keptDc = 0;      // entries below this index are not cleared
            ZanStatus st;
            switch (which) {
                case 0: st = zaniDecodeDCIntra_H263_1u16s(&p, &off, &dc); break;
                case 1:
                    st = zaniDecodeCoeffsIntra_H263_1u16s(&p, &off, blk, &last, adv, modQ, scan);
                    scanOrder = scan == -1;
                    keptDc = adv ? 0 : 1;
                    break;
                case 2:
                    st = zaniDecodeCoeffsInter_H263_1u16s(&p, &off, blk, &last, modQ, scan);
                    scanOrder = scan == -1;
                    break;
                case 3:
                    st = zaniReconstructCoeffsIntra_H263_1u16s(&p, &off, blk, &last, cbp, QP, adv, scan, modQ);
                    dcRow = !adv;
                    break;
                case 4: st = zaniReconstructCoeffsInter_H263_1u16s(&p, &off, blk, &last, QP, modQ); break;
                case 5:
                    st = zaniDecodeCoeffsIntra_H261_1u16s(&p, &off, blk, &last, scan == -1 ? -1 : 0);
                    dcRow = true;
                    scanOrder = scan == -1;
                    keptDc = 1;
                    break;
                case 6:
                    st = zaniDecodeCoeffsInter_H261_1u16s(&p, &off, blk, &last, scan == -1 ? -1 : 0);
                    scanOrder = scan == -1;
                    break;
                case 7: st = zaniReconstructCoeffsIntra_H261_1u16s(&p, &off, blk, &last, QP); break;
                case 8: st = zaniReconstructCoeffsInter_H261_1u16s(&p, &off, blk, &last, QP); break;
                case 9: st = zaniDecodeDCIntra_MPEG4_1u16s(&p, &off, &dc, adv); break;
                case 10:
                    st = zaniDecodeCoeffsIntra_MPEG4_1u16s(&p, &off, blk, &last, rvlc, sep, scan);
                    scanOrder = scan == -1;
                    keptDc = sep;
                    break;
                case 11:
                    st = zaniDecodeCoeffsInter_MPEG4_1u16s(&p, &off, blk, &last, rvlc, scan);
                    scanOrder = scan == -1 || scan == 2;
                    break;
                default:
                    st = zaniReconstructCoeffsInter_MPEG4_1u16s(&p, &off, blk, &last, rvlc, scan,
                                                                (flags & 0x80) ? weighted.get() : plain.get(),
                                                                1 + data[-1] % 31);
                    break;
            }
            ZAN_FUZZ_CHECK(st == zanStsOk || st == zanStsCoefDecodeBad);
            if (st != zanStsOk) {
                ZAN_FUZZ_CHECK((p == p0 && off == off0) || (dcRow && p == p0 + 1 && off == off0));
                // An overflowing MPEG-4 index: at most 63 plus the longest
                // step, a type 2 escape of run 40 raised by 41, plus 1.
                if (which != 0 && which != 9) ZAN_FUZZ_CHECK(last >= -1 && last <= 63 + 82);
                break;
            }
            ZAN_FUZZ_CHECK(off >= 0 && off <= 7);
            ZAN_FUZZ_CHECK(pos_of(base, p, off) > pos_of(base, p0, off0));
            if (which == 0 || which == 9) continue;
            ZAN_FUZZ_CHECK(last >= -1 && last <= 63);
            if (scanOrder)
                for (Zan32s k = last + 1; k < 64; ++k) ZAN_FUZZ_CHECK(k < keptDc || blk[k] == 0);
        }
    }
    return 0;
}
