#!/usr/bin/env python3
"""Writes a small H.264 stream (CAVLC) whose P pictures predict from motion
vectors far outside the reference picture: an IDR picture of I_PCM
macroblocks with a textured pattern, then P pictures whose macroblocks
(16x16, 16x8, 8x16 and 8x8 partitions with 8x8 to 4x4 sub-partitions) point
tens to hundreds of samples beyond every edge and corner, at every
quarter-sample fraction, without residual, with the loop filter on; then,
optionally, B pictures with explicit weights (weighted_bipred_idc 1) on
lists 0, 1 and both, over every B partition and sub-partition type.
With long_term 1 the pictures also use long-term references: the IDR
picture is marked long-term, the second P picture raises the long-term
index limit and marks itself long-term, the third moves a short-term picture
to that long-term index (which drops the picture holding it) and puts a
long-term picture first in its list.
With direct 1 or 2 the B pictures also hold B_Skip, B_Direct_16x16 and
direct 8x8 sub-macroblocks, spatial and temporal by turns; 2 turns the 8x8
inference of direct vectors off.
libx264 never leaves the picture by more than a few dozen samples and never
writes explicit B weights, long-term references or direct prediction
without 8x8 inference.
With poc1 1 the order counts are of type 1 (a cycle of two offsets and a
small per-picture delta), so that temporal direct scaling sees uneven
distances.
Usage: make_far_mv_stream.py OUT.264 [width_mbs height_mbs bit_depth pictures [b_pictures [long_term [direct [poc1]]]]]"""
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


class Lcg:
    def __init__(self, seed):
        self.s = seed

    def next(self, n):
        self.s = (self.s * 1103515245 + 12345) & 0x7FFFFFFF
        return (self.s >> 8) % n


def median(a, b, c):
    return max(min(a, b), min(max(a, b), c))


def main():
    path = sys.argv[1]
    w, h, depth, pictures = (int(a) for a in sys.argv[2:6]) if len(sys.argv) > 5 else (5, 4, 8, 3)
    bpictures = int(sys.argv[6]) if len(sys.argv) > 6 else 0
    lt = int(sys.argv[7]) if len(sys.argv) > 7 else 0
    direct = int(sys.argv[8]) if len(sys.argv) > 8 else 0
    poc1 = int(sys.argv[9]) if len(sys.argv) > 9 else 0
    sps = Bits()
    sps.u(8, 66 if depth == 8 else 110); sps.u(8, 0); sps.u(8, 30); sps.ue(0)
    if depth != 8:
        sps.ue(1); sps.ue(depth - 8); sps.ue(depth - 8); sps.u(1, 0); sps.u(1, 0)
    sps.ue(0)       # log2_max_frame_num - 4
    if poc1:
        sps.ue(1); sps.u(1, 0); sps.se(0); sps.se(1); sps.ue(2); sps.se(3); sps.se(5)
    else:
        sps.ue(2)   # order counts of type 2
    sps.ue(4 if direct else 3 if lt else 2)  # max_num_ref_frames
    sps.u(1, 0)
    sps.ue(w - 1); sps.ue(h - 1); sps.u(1, 1)
    sps.u(1, 0 if direct == 2 else 1)  # direct_8x8_inference_flag
    sps.u(1, 0); sps.u(1, 0)
    pps = Bits()
    pps.ue(0); pps.ue(0); pps.u(1, 0); pps.u(1, 0); pps.ue(0)
    pps.ue(1); pps.ue(0)  # two list-0 references by default
    pps.u(1, 0); pps.u(2, 0); pps.se(0); pps.se(0); pps.se(0)
    pps.u(1, 1); pps.u(1, 0); pps.u(1, 0)
    stream = nal(3, 7, sps.rbsp()) + nal(3, 8, pps.rbsp())
    # PPS 1: explicit weights in P and B slices.
    pps = Bits()
    pps.ue(1); pps.ue(0); pps.u(1, 0); pps.u(1, 0); pps.ue(0)
    pps.ue(1); pps.ue(1)
    pps.u(1, 1); pps.u(2, 1); pps.se(0); pps.se(0); pps.se(0)
    pps.u(1, 1); pps.u(1, 0); pps.u(1, 0)
    stream += nal(3, 8, pps.rbsp())

    # IDR picture: I_PCM macroblocks with a texture that differs everywhere,
    # so that every clamped read shows.
    sl = Bits()
    sl.ue(0); sl.ue(7); sl.ue(0); sl.u(4, 0); sl.ue(0)
    if poc1:
        sl.se(0)    # delta_pic_order_cnt[0]
    sl.u(1, 0); sl.u(1, lt)  # dec_ref_pic_marking of an IDR picture
    sl.se(0)
    sl.ue(0); sl.se(0); sl.se(0)
    top = (1 << depth) - 1
    for addr in range(w * h):
        mx, my = addr % w, addr // w
        sl.ue(25)
        sl.align()
        for i in range(256):
            x, y = 16 * mx + i % 16, 16 * my + i // 16
            sl.u(depth, (x * 37 + y * 11 + (x * y) % 23 + ((x ^ y) & 7) * 19) * top // 1024 % (top + 1))
        for c in range(2):
            for i in range(64):
                x, y = 8 * mx + i % 8, 8 * my + i // 8
                sl.u(depth, ((x * 29 + c * 300) ^ (y * 53)) * top // 2048 % (top + 1))
    stream += nal(3, 5, sl.rbsp())

    rng = Lcg(7 * w + 13 * h + depth)
    pw, ph = 64 * w, 64 * h  # picture size in quarter samples
    for pic in range(1, pictures):
        sl = Bits()
        sl.ue(0); sl.ue(5); sl.ue(0); sl.u(4, pic)
        if poc1:
            sl.se(pic % 3 - 1)
        if pic == 1:  # one reference so far
            sl.u(1, 1); sl.ue(0)
        else:
            sl.u(1, 0)  # num_ref_idx_active_override_flag
        if lt and pic == 3:  # long-term picture 0 first in list 0
            sl.u(1, 1); sl.ue(2); sl.ue(0); sl.ue(3)
        else:
            sl.u(1, 0)  # ref_pic_list_modification_flag_l0
        if lt and pic == 2:  # long-term indices 0..1; this picture long-term 1
            sl.u(1, 1); sl.ue(4); sl.ue(2); sl.ue(6); sl.ue(1); sl.ue(0)
        elif lt and pic == 3:  # picture 1 (short-term) to long-term index 1
            sl.u(1, 1); sl.ue(3); sl.ue(1); sl.ue(1); sl.ue(0)
        else:
            sl.u(1, 0)  # adaptive_ref_pic_marking_mode_flag
        sl.se(0)
        sl.ue(0); sl.se(1); sl.se(-1)
        mvs = {}  # 4x4 block -> vector, to keep the coded differences modest

        def target():
            # Far beyond one of the edges or corners, any fraction.
            side = rng.next(9)
            far = 200 + rng.next(1800)
            tx = [-far - pw, 0, far + pw][side % 3] + rng.next(64) - 32
            ty = [-far - ph, 0, far + ph][side // 3] + rng.next(64) - 32
            return tx, ty

        for addr in range(w * h):
            mx, my = addr % w, addr // w
            sl.ue(0)  # mb_skip_run
            kind = rng.next(4)
            nrefs = min(pic, 2)
            if kind < 3:
                parts = [(0, 0, 16, 16)] if kind == 0 else \
                    [(0, 0, 16, 8), (0, 8, 16, 8)] if kind == 1 else [(0, 0, 8, 16), (8, 0, 8, 16)]
                sl.ue(kind)
                refs = [rng.next(nrefs) for _ in parts]
                if nrefs > 1:
                    for r in refs:
                        sl.u(1, 1 - r)  # te(v) with two references
                subs = [[p] for p in parts]
            else:
                sl.ue(3)
                shapes = [rng.next(4) for _ in range(4)]
                for s in shapes:
                    sl.ue(s)
                refs = [rng.next(nrefs) for _ in range(4)]
                if nrefs > 1:
                    for r in refs:
                        sl.u(1, 1 - r)
                subs = []
                for k, s in enumerate(shapes):
                    x8, y8 = (k & 1) * 8, (k >> 1) * 8
                    subs.append([(x8, y8, 8, 8)] if s == 0 else
                                [(x8, y8, 8, 4), (x8, y8 + 4, 8, 4)] if s == 1 else
                                [(x8, y8, 4, 8), (x8 + 4, y8, 4, 8)] if s == 2 else
                                [(x8 + 4 * (j & 1), y8 + 4 * (j >> 1), 4, 4) for j in range(4)])
            for group in subs:
                for (x, y, pw_, ph_) in group:
                    bx, by = 4 * mx + x // 4, 4 * my + y // 4
                    a = mvs.get((bx - 1, by), (0, 0))
                    b = mvs.get((bx, by - 1), (0, 0))
                    c = mvs.get((bx + pw_ // 4, by - 1), mvs.get((bx - 1, by - 1), (0, 0)))
                    pred = (median(a[0], b[0], c[0]), median(a[1], b[1], c[1]))
                    tx, ty = target()
                    sl.se(tx - pred[0])
                    sl.se(ty - pred[1])
                    for j in range(ph_ // 4):
                        for i in range(pw_ // 4):
                            mvs[(bx + i, by + j)] = (tx, ty)
            sl.ue(0)  # coded_block_pattern 0
        stream += nal(2, 1, sl.rbsp())

    # B pictures (reference pictures, so that order counts of type 2 stay
    # in decoding order) predicting from the two latest pictures through
    # both lists with explicit weights.
    b_subs = {1: (1, 0), 2: (2, 0), 3: (3, 0), 4: (1, 1), 5: (1, 2), 6: (2, 1), 7: (2, 2), 8: (3, 1),
              9: (3, 2), 10: (1, 3), 11: (2, 3), 12: (3, 3)}
    b_pairs = [(1, 1), (2, 2), (1, 2), (2, 1), (1, 3), (2, 3), (3, 1), (3, 2), (3, 3)]
    for bp in range(bpictures if pictures >= 3 else 0):
        frame_num = pictures + bp
        sl = Bits()
        sl.ue(0); sl.ue(6); sl.ue(1); sl.u(4, frame_num % 16)
        if poc1:
            sl.se(1 - frame_num % 3)
        sl.u(1, 1 if not direct else bp % 2)  # direct_spatial_mv_pred_flag
        # Temporal direct needs the co-located block's reference in list 0:
        # with direct macroblocks, list 0 holds every reference.
        nref = [min(pictures + bp, 4) if direct else 2, 2]
        if direct:
            sl.u(1, 1); sl.ue(nref[0] - 1); sl.ue(nref[1] - 1)
        else:
            sl.u(1, 0)  # two references in each list by default
        sl.u(1, 0); sl.u(1, 0)  # no list modification
        luma_log2, chroma_log2 = rng.next(8), rng.next(8)
        sl.ue(luma_log2); sl.ue(chroma_log2)
        for l in range(2):
            for r in range(nref[l]):
                if rng.next(4):
                    sl.u(1, 1); sl.se(rng.next(95) - 30); sl.se(rng.next(61) - 30)
                else:
                    sl.u(1, 0)
                if rng.next(4):
                    sl.u(1, 1)
                    for c in range(2):
                        sl.se(rng.next(95) - 30); sl.se(rng.next(61) - 30)
                else:
                    sl.u(1, 0)
        sl.u(1, 0)  # adaptive_ref_pic_marking_mode_flag
        sl.se(0)
        sl.ue(0); sl.se(0); sl.se(2)
        mvs = [{}, {}]
        near = bp % 2 == 0  # every other picture keeps its vectors inside

        def btarget():
            if near:
                return rng.next(200) - 100, rng.next(160) - 80
            side = rng.next(9)
            far = 100 + rng.next(900)
            return ([-far - pw, 0, far + pw][side % 3] + rng.next(64) - 32,
                    [-far - ph, 0, far + ph][side // 3] + rng.next(64) - 32)

        skipped = 0
        for addr in range(w * h):
            mx, my = addr % w, addr // w
            if direct and rng.next(5) == 0:
                skipped += 1  # B_Skip
                continue
            sl.ue(skipped)  # mb_skip_run
            skipped = 0
            kind = rng.next(4 if direct else 3)
            if kind == 3:
                sl.ue(0)  # B_Direct_16x16
                sl.ue(0)  # coded_block_pattern 0
                continue
            if kind == 0:
                t = 1 + rng.next(3)
                sl.ue(t)
                parts = [((0, 0, 16, 16), t)]
                groups = [[parts[0][0]]]
                preds = [t]
            elif kind == 1:
                t = 4 + rng.next(18)
                sl.ue(t)
                shape = [(0, 0, 16, 8), (0, 8, 16, 8)] if t % 2 == 0 else [(0, 0, 8, 16), (8, 0, 8, 16)]
                preds = list(b_pairs[(t - 4) // 2])
                groups = [[shape[0]], [shape[1]]]
            else:
                sl.ue(22)
                types = [(0 if direct and rng.next(3) == 0 else 1 + rng.next(12)) for _ in range(4)]
                for st in types:
                    sl.ue(st)
                preds = [b_subs[st][0] if st else 0 for st in types]
                groups = []
                for k, st in enumerate(types):
                    if st == 0:
                        groups.append([])
                        continue
                    s = b_subs[st][1]
                    x8, y8 = (k & 1) * 8, (k >> 1) * 8
                    groups.append([(x8, y8, 8, 8)] if s == 0 else
                                  [(x8, y8, 8, 4), (x8, y8 + 4, 8, 4)] if s == 1 else
                                  [(x8, y8, 4, 8), (x8 + 4, y8, 4, 8)] if s == 2 else
                                  [(x8 + 4 * (j & 1), y8 + 4 * (j >> 1), 4, 4) for j in range(4)])
            for l in range(2):
                for p in preds:
                    if p >> l & 1:
                        r = rng.next(nref[l])
                        if nref[l] == 2:
                            sl.u(1, 1 - r)  # te(v) with two references
                        else:
                            sl.ue(r)
            for l in range(2):
                for p, group in zip(preds, groups):
                    if not p >> l & 1:
                        continue
                    for (x, y, pw_, ph_) in group:
                        bx, by = 4 * mx + x // 4, 4 * my + y // 4
                        m = mvs[l]
                        a = m.get((bx - 1, by), (0, 0))
                        b = m.get((bx, by - 1), (0, 0))
                        c = m.get((bx + pw_ // 4, by - 1), m.get((bx - 1, by - 1), (0, 0)))
                        pred = (median(a[0], b[0], c[0]), median(a[1], b[1], c[1]))
                        tx, ty = btarget()
                        sl.se(tx - pred[0])
                        sl.se(ty - pred[1])
                        for j in range(ph_ // 4):
                            for i in range(pw_ // 4):
                                m[(bx + i, by + j)] = (tx, ty)
            sl.ue(0)  # coded_block_pattern 0
        if skipped:
            sl.ue(skipped)
        stream += nal(2, 1, sl.rbsp())
    with open(path, "wb") as f:
        f.write(stream)


main()
