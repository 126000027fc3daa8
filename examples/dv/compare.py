#!/usr/bin/env python3
"""Compares a decoder's packed 4:2:2 output with ffmpeg's, frame by frame.

compare.py OURS REF SRC WIDTH HEIGHT FORMAT MAX_DB MAX_MAD
OURS and REF are two decodings of the same stream, SRC the pictures that
were encoded.  OURS is packed 4:2:2 (Y Cb Y Cr) of WIDTH x HEIGHT; REF and
SRC are planar 4:1:1, 4:2:0 or 4:2:2 (FORMAT 411, 420, 422), turned into
packed 4:2:2 here by the rules of DV output: 4:2:0 chroma rows by field
(row 2g serving rows 4g and 4g + 2, row 2g + 1 rows 4g + 1 and 4g + 3),
4:1:1 chroma doubled with the mean of neighbours (the last sample of each
32-pixel macroblock, or of the 16-pixel edge macroblock, repeated); or
already packed (FORMAT packed).  For every frame: the
mean absolute difference of OURS and REF must be at most MAX_MAD, and the
PSNR of OURS against SRC may fall at most MAX_DB below that of REF.
Prints the worst figures; exits 1 on a failure or a size mismatch.
"""
import math
import sys

ours, ref, src = (open(p, "rb").read() for p in sys.argv[1:4])
w, h, fmt = int(sys.argv[4]), int(sys.argv[5]), sys.argv[6]
max_db, max_mad = float(sys.argv[7]), float(sys.argv[8])
frame = w * h * 2


def to_packed(data):
    if fmt == "packed":
        return data
    cw = {"411": w // 4, "420": w // 2, "422": w // 2}[fmt]
    ch = h // 2 if fmt == "420" else h
    planar = w * h + 2 * cw * ch
    out = bytearray()
    for f in range(len(data) // planar):
        base = f * planar
        Y = data[base:base + w * h]
        U = data[base + w * h:base + w * h + cw * ch]
        V = data[base + w * h + cw * ch:base + planar]
        for y in range(h):
            cy = 2 * (y >> 2) + (y & 1) if fmt == "420" else y
            u = U[cy * cw:(cy + 1) * cw]
            v = V[cy * cw:(cy + 1) * cw]
            if fmt == "411":
                def dbl(c):
                    r = []
                    for i in range(cw):
                        # the right-edge macroblock holds chroma 176..179
                        last = cw - 1 if i >= 176 else i - i % 8 + 7
                        n = c[i + 1] if i < last else c[i]
                        r += [c[i], (c[i] + n) // 2]
                    return r
                u, v = dbl(u), dbl(v)
            row = bytearray(2 * w)
            row[0::2] = Y[y * w:(y + 1) * w]
            row[1::4] = bytes(u[:w // 2])
            row[3::4] = bytes(v[:w // 2])
            out += row
    return bytes(out)


ref, src = to_packed(ref), to_packed(src)
if not (len(ours) == len(ref) == len(src)) or len(ours) == 0 or len(ours) % frame:
    print(f"size mismatch: {len(ours)}, {len(ref)}, {len(src)} bytes")
    sys.exit(1)


def sse(x, y):
    return sum((p - q) * (p - q) for p, q in zip(x, y))


def psnr(e):
    return 99.0 if e == 0 else 10 * math.log10(255 * 255 * frame / e)


worst_drop, worst_mad, worst_ours, worst_ref = -99.0, 0.0, 99.0, 99.0
for f in range(len(ours) // frame):
    o, r, s = (b[f * frame:(f + 1) * frame] for b in (ours, ref, src))
    mad = sum(abs(p - q) for p, q in zip(o, r)) / frame
    po, pr = psnr(sse(o, s)), psnr(sse(r, s))
    worst_drop = max(worst_drop, pr - po)
    worst_mad = max(worst_mad, mad)
    worst_ours, worst_ref = min(worst_ours, po), min(worst_ref, pr)
if fmt == "packed":
    print(f"worst MAD {worst_mad:.3f}")
else:
    print(f"PSNR vs source: ours {worst_ours:.2f} dB, ffmpeg {worst_ref:.2f} dB (worst drop {worst_drop:.2f} dB); "
          f"worst MAD vs ffmpeg {worst_mad:.3f}")
sys.exit(0 if worst_drop <= max_db and worst_mad <= max_mad else 1)
