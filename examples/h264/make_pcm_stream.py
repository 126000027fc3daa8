#!/usr/bin/env python3
"""Writes a small intra H.264 stream mixing I_PCM macroblocks with Intra 16x16
macroblocks that carry no residual (a checkerboard), with the loop filter on,
so that I_PCM samples, their QP of 0 in the filter and the nC of 16 they give
their neighbours are all exercised.  libx264 never writes I_PCM.
Usage: make_pcm_stream.py OUT.264 [width_mbs height_mbs qp [filter_idc slices]]
filter_idc: 0 filter everywhere, 1 no filter, 2 not across slice borders."""
import sys


class Bits:
    def __init__(self):
        self.bits = []

    def u(self, n, v):
        self.bits += [(v >> (n - 1 - i)) & 1 for i in range(n)]

    def ue(self, v):
        v += 1
        n = v.bit_length()
        self.u(n - 1, 0)
        self.u(n, v)

    def se(self, v):
        self.ue(2 * v - 1 if v > 0 else -2 * v)

    def align(self):
        while len(self.bits) % 8:
            self.bits.append(0)

    def code(self, s):
        self.bits += [int(c) for c in s]

    def rbsp(self):
        self.bits.append(1)
        self.align()
        out = bytearray()
        for i in range(0, len(self.bits), 8):
            out.append(int("".join(map(str, self.bits[i:i + 8])), 2))
        return bytes(out)


def nal(ref_idc, kind, payload):
    out = bytearray(b"\x00\x00\x00\x01")
    out.append((ref_idc << 5) | kind)
    zeros = 0
    for b in payload:
        if zeros >= 2 and b <= 3:
            out.append(3)
            zeros = 0
        out.append(b)
        zeros = zeros + 1 if b == 0 else 0
    return bytes(out)


def main():
    path = sys.argv[1]
    w, h, qp = (int(a) for a in sys.argv[2:5]) if len(sys.argv) > 4 else (5, 4, 38)
    idc, nslices = (int(a) for a in sys.argv[5:7]) if len(sys.argv) > 6 else (0, 1)
    sps = Bits()
    sps.u(8, 66); sps.u(8, 0); sps.u(8, 30); sps.ue(0)
    sps.ue(0); sps.ue(2); sps.ue(0); sps.u(1, 0)
    sps.ue(w - 1); sps.ue(h - 1); sps.u(1, 1); sps.u(1, 1); sps.u(1, 0); sps.u(1, 0)
    pps = Bits()
    pps.ue(0); pps.ue(0); pps.u(1, 0); pps.u(1, 0); pps.ue(0); pps.ue(0); pps.ue(0)
    pps.u(1, 0); pps.u(2, 0); pps.se(qp - 26); pps.se(0); pps.se(2)
    pps.u(1, 1); pps.u(1, 0); pps.u(1, 0)
    stream = nal(3, 7, sps.rbsp()) + nal(3, 8, pps.rbsp())
    n = w * h
    bounds = [n * k // nslices for k in range(nslices + 1)]
    total = {}
    for k in range(nslices):
        sl = Bits()
        sl.ue(bounds[k]); sl.ue(7); sl.ue(0); sl.u(4, 0); sl.ue(0)
        sl.u(1, 0); sl.u(1, 0)  # dec_ref_pic_marking of an IDR picture
        sl.se(2 * k)  # slice QP delta
        sl.ue(idc)
        if idc != 1:
            sl.se(2); sl.se(1)  # filter offsets
        total = {}  # neighbours in other slices are not available
        for addr in range(bounds[k], bounds[k + 1]):
            x, y = addr % w, addr // w
            if (x + y) % 2 == 0:
                sl.ue(25)
                sl.align()
                for i in range(256):
                    sl.u(8, 60 + 9 * x + 7 * y + (i % 16) // 3 + (i // 16) // 5)
                for i in range(128):
                    sl.u(8, 100 + 5 * x - 4 * y + (i % 8) // 3 + (i // 64) * 9)
                total[(x, y)] = 16
            else:
                sl.ue(1 + 2)  # Intra 16x16, DC prediction, no coded blocks
                sl.ue(0)      # chroma DC prediction
                sl.se(0)      # mb_qp_delta
                a, b = total.get((x - 1, y)), total.get((x, y - 1))
                nc = (a + b + 1) >> 1 if a is not None and b is not None else a if a is not None else b if b is not None else 0
                sl.code("1" if nc < 2 else "11" if nc < 4 else "1111" if nc < 8 else "000011")
                total[(x, y)] = 0
        stream += nal(3, 5, sl.rbsp())
    with open(path, "wb") as f:
        f.write(stream)


main()
