#!/bin/sh
# Compares zanvc-h263dec with ffmpeg's own decoding of MPEG-4 visual
# elementary streams (.m4v) that ffmpeg encodes from testsrc2 and mandelbrot
# at CIF, in GOPs of 12: simple profile tools (I and P VOPs, both
# quantisation methods, AC/DC prediction, four vectors, vector ranges above
# f_code 1, video packets), advanced simple tools (quarter-sample motion,
# B-VOPs with direct mode, output in display order) and data partitioning.
# The two decoders use different inverse DCTs, so pictures are not
# byte-identical; every picture must have a mean absolute difference to
# ffmpeg's below 0.5, a PSNR against ffmpeg's of at least MPEG4_MIN_PSNR
# (default 45 dB), and a PSNR against the source within 0.5 dB of ffmpeg's.
# Then truncated and damaged streams must be refused with a message (or
# decoded), never crash.
# Reversible codes: ffmpeg's encoder does not write them, so mpeg4-rvlc
# rewrites a data-partitioned stream with them; ffmpeg's decoding of the
# rewritten stream must equal its decoding of the original, and ours must
# equal ours of the original and pass the comparison above.
# Usage: test_mpeg4.sh path/to/zanvc-h263dec [path/to/mpeg4-rvlc]
dec=$1
rvlc=$2
command -v ffmpeg >/dev/null 2>&1 || { echo "ffmpeg not found: skipped"; exit 77; }
command -v python3 >/dev/null 2>&1 || { echo "python3 not found: skipped"; exit 77; }
ffmpeg -hide_banner -encoders 2>/dev/null | grep -q ' mpeg4 ' || { echo "ffmpeg has no mpeg4 encoder: skipped"; exit 77; }
tmp=$(mktemp -d) || exit 1
trap 'rm -rf "$tmp"' EXIT
fail=0
minpsnr=${MPEG4_MIN_PSNR:-45}

# compare NAME WIDTH HEIGHT: per picture, ours against ffmpeg's decoding
# (PSNR, mean absolute difference) and both against the source; prints the
# worst picture.
compare() {
    python3 - "$tmp/$1.yuv" "$tmp/$1.ref.yuv" "$tmp/$1.src.yuv" "$2" "$3" "$minpsnr" <<'PY'
import math, sys
ours, ref, src, w, h, minpsnr = sys.argv[1], sys.argv[2], sys.argv[3], int(sys.argv[4]), int(sys.argv[5]), float(sys.argv[6])
a = open(ours, 'rb').read()
b = open(ref, 'rb').read()
s = open(src, 'rb').read()
fs = w * h * 3 // 2
if len(b) == 0 or len(b) % fs:
    print("reference size %d is not a whole number of pictures" % len(b)); sys.exit(1)
if len(a) != len(b):
    print("%d pictures, ffmpeg %d" % (len(a) // fs, len(b) // fs)); sys.exit(1)
def sse_sad(p, q):
    sad = sse = 0
    for x, y in zip(p, q):
        d = x - y
        sad += abs(d)
        sse += d * d
    return sse, sad
def psnr(sse):
    return 99.0 if sse == 0 else 10 * math.log10(255.0 * 255.0 * fs / sse)
worst_psnr, worst_mad, worst_drop, bad = 1e9, 0.0, -1e9, []
for i in range(len(b) // fs):
    pa, pb, ps = a[i * fs:(i + 1) * fs], b[i * fs:(i + 1) * fs], s[i * fs:(i + 1) * fs]
    sse, sad = sse_sad(pa, pb)
    mad, p = sad / fs, psnr(sse)
    drop = psnr(sse_sad(pb, ps)[0]) - psnr(sse_sad(pa, ps)[0])  # how much worse than ffmpeg against the source
    worst_psnr, worst_mad, worst_drop = min(worst_psnr, p), max(worst_mad, mad), max(worst_drop, drop)
    if mad >= 0.5 or p < minpsnr or drop > 0.5:
        bad.append("picture %d: PSNR %.2f dB, MAD %.3f, %.3f dB below ffmpeg against the source" % (i, p, mad, drop))
print("%d pictures, worst PSNR %.2f dB, worst MAD %.4f, worst loss against the source %.3f dB" %
      (len(b) // fs, worst_psnr, worst_mad, worst_drop))
for m in bad[:5]:
    print("  " + m)
sys.exit(1 if bad else 0)
PY
}

# run NAME SOURCE FRAMES RATE [encoder options]: CIF, GOP 12.
run() {
    name=$1 src=$2 frames=$3 rate=$4
    shift 4
    ffmpeg -hide_banner -loglevel error -f lavfi -i "$src=size=352x288:rate=$rate" -frames:v "$frames" \
        -pix_fmt yuv420p -f rawvideo -y "$tmp/$name.src.yuv" ||
        { echo "FAIL $name: source"; fail=1; return; }
    ffmpeg -hide_banner -loglevel error -f lavfi -i "$src=size=352x288:rate=$rate" -frames:v "$frames" \
        -pix_fmt yuv420p -g 12 -c:v mpeg4 "$@" -f m4v -y "$tmp/$name.m4v" ||
        { echo "FAIL $name: encoder"; fail=1; return; }
    ffmpeg -hide_banner -loglevel error -i "$tmp/$name.m4v" -f rawvideo -pix_fmt yuv420p -fps_mode passthrough \
        -y "$tmp/$name.ref.yuv" || { echo "FAIL $name: reference decode"; fail=1; return; }
    if ! "$dec" "$tmp/$name.m4v" "$tmp/$name.yuv"; then
        echo "FAIL $name: decoder error"; fail=1; return
    fi
    if res=$(compare "$name" 352 288); then
        echo "ok   $name: $res"
    else
        echo "FAIL $name: $res"; fail=1
    fi
}

# Simple profile: I and P VOPs.
run sp_h263q     testsrc2   24 25 -q:v 4
run sp_mpegq     mandelbrot 24 25 -q:v 5 -mpeg_quant 1
run sp_mv4_fast  testsrc2   24 5  -q:v 3 -flags +mv4+aic                  # f_code above 1
run sp_mv4_q12   mandelbrot 24 25 -q:v 12 -flags +mv4 -mpeg_quant 1
run sp_rate      testsrc2   24 25 -b:v 300k -flags +mv4                   # varying quantiser (dquant)
run sp_packets   mandelbrot 24 25 -q:v 4 -ps 800 -threads 1               # video packets
# Advanced simple: quarter samples, B-VOPs with direct mode.
run asp_qpel     testsrc2   24 25 -q:v 4 -flags +qpel
run asp_bf       testsrc2   24 25 -q:v 4 -bf 2
run asp_all      mandelbrot 24 25 -q:v 6 -bf 2 -flags +qpel+mv4 -mpeg_quant 1
run asp_all_fast testsrc2   24 5  -q:v 3 -bf 2 -flags +qpel+mv4 -ps 1200 -threads 1
# Data partitioning.
run dp           testsrc2   24 25 -q:v 4 -data_partitioning 1 -flags +mv4
run dp_asp       mandelbrot 24 25 -q:v 5 -data_partitioning 1 -bf 2 -flags +qpel -ps 1000 -threads 1

# rvlc NAME: the stream of an earlier run NAME rewritten with reversible codes.
rvlc() {
    name=$1
    [ -n "$rvlc" ] || { echo "skip rvlc_$name: no mpeg4-rvlc"; return; }
    if ! "$rvlc" "$tmp/$name.m4v" "$tmp/rvlc_$name.m4v"; then
        echo "FAIL rvlc_$name: rewrite"; fail=1; return
    fi
    cp "$tmp/$name.src.yuv" "$tmp/rvlc_$name.src.yuv"
    ffmpeg -hide_banner -loglevel error -i "$tmp/rvlc_$name.m4v" -f rawvideo -pix_fmt yuv420p -fps_mode passthrough \
        -y "$tmp/rvlc_$name.ref.yuv" || { echo "FAIL rvlc_$name: reference decode"; fail=1; return; }
    cmp -s "$tmp/rvlc_$name.ref.yuv" "$tmp/$name.ref.yuv" ||
        { echo "FAIL rvlc_$name: ffmpeg decodes the rewritten stream differently"; fail=1; return; }
    if ! "$dec" "$tmp/rvlc_$name.m4v" "$tmp/rvlc_$name.yuv"; then
        echo "FAIL rvlc_$name: decoder error"; fail=1; return
    fi
    cmp -s "$tmp/rvlc_$name.yuv" "$tmp/$name.yuv" ||
        { echo "FAIL rvlc_$name: reversible decoding differs from the ordinary codes"; fail=1; return; }
    if res=$(compare "rvlc_$name" 352 288); then
        echo "ok   rvlc_$name: $res"
    else
        echo "FAIL rvlc_$name: $res"; fail=1
    fi
}
rvlc dp
rvlc dp_asp

# Damaged streams: exit status 0 (decoded) or 1 with a message, never a
# crash; truncated inside a VOP must be refused.
damaged() {
    name=$1 expect=$2
    "$dec" "$tmp/$name" "$tmp/$name.yuv" 2>"$tmp/$name.err"
    rc=$?
    if [ $rc -ne 0 ] && [ $rc -ne 1 ]; then
        echo "FAIL $name: exit status $rc"; fail=1; return
    fi
    if [ $rc -eq 1 ] && ! grep -q 'zanvc-h263dec: ' "$tmp/$name.err"; then
        echo "FAIL $name: refused without a message"; fail=1; return
    fi
    if [ "$expect" = refuse ] && [ $rc -eq 0 ]; then
        echo "FAIL $name: accepted"; fail=1; return
    fi
    echo "ok   $name: exit $rc $(head -c 150 "$tmp/$name.err")"
}
base=$tmp/asp_all_fast.m4v
if [ -s "$base" ]; then
    size=$(wc -c <"$base")
    for cut in 40 200 $((size / 3)) $((size / 2 + 17)) $((size - 5)); do
        head -c "$cut" "$base" >"$tmp/cut_$cut.m4v"
        damaged "cut_$cut.m4v" refuse
    done
    for seed in 1 2 3 4 5 6 7 8; do
        python3 - "$base" "$tmp/flip_$seed.m4v" "$seed" <<'PY'
import random, sys
d = bytearray(open(sys.argv[1], 'rb').read())
r = random.Random(int(sys.argv[3]))
for _ in range(6):
    i = r.randrange(60, len(d))
    d[i] ^= 1 << r.randrange(8)
open(sys.argv[2], 'wb').write(d)
PY
        damaged "flip_$seed.m4v" any
    done
    python3 - "$base" "$tmp/garbage.m4v" <<'PY'
import random, sys
d = bytearray(open(sys.argv[1], 'rb').read())
r = random.Random(9)
for i in range(len(d) // 3, len(d) // 3 + 400):
    d[i] = r.randrange(256)
open(sys.argv[2], 'wb').write(d)
PY
    damaged garbage.m4v any
    if [ -s "$tmp/rvlc_dp_asp.m4v" ]; then  # damaged reversible codes
        for seed in 11 12 13; do
            python3 - "$tmp/rvlc_dp_asp.m4v" "$tmp/rflip_$seed.m4v" "$seed" <<'PY'
import random, sys
d = bytearray(open(sys.argv[1], 'rb').read())
r = random.Random(int(sys.argv[3]))
for _ in range(6):
    i = r.randrange(60, len(d))
    d[i] ^= 1 << r.randrange(8)
open(sys.argv[2], 'wb').write(d)
PY
            damaged "rflip_$seed.m4v" any
        done
    fi
    # a tool the decoder does not have (interlace) is refused by name
    ffmpeg -hide_banner -loglevel error -f lavfi -i testsrc2=size=176x144:rate=25 -frames:v 2 -pix_fmt yuv420p \
        -c:v mpeg4 -flags +ildct -f m4v -y "$tmp/interlaced.m4v" && damaged interlaced.m4v refuse &&
        grep -q interlaced "$tmp/interlaced.m4v.err" || { echo "FAIL interlaced: no clear message"; fail=1; }
    printf '\000\000\001\266\377\377' >"$tmp/vop_only.m4v"
    damaged vop_only.m4v refuse
fi
exit $fail
