#!/bin/sh
# Compares zanvc-h263dec with ffmpeg's own decoding of H.263 streams that
# ffmpeg encodes (QCIF and CIF, I and P pictures, several quantisers, with and
# without GOB headers; H.263 version 2 streams with slices, alternating
# rounding and the deblocking filter; four vectors per macroblock,
# unrestricted vectors, advanced intra coding with modified quantisation, the
# alternative inter VLC).
# The two decoders use different inverse DCTs, so pictures are not
# byte-identical: every picture must reach a high PSNR against ffmpeg's and a
# mean absolute difference below 0.5.  Streams with overlapped compensation
# are judged against the encoder's reconstruction instead (see run_enc).
# Then truncated and damaged streams must be refused with a message or
# decoded, never crash.
# H263_ONLY=PATTERN (grep -E) runs only the matching streams.
# Usage: test_h263.sh path/to/zanvc-h263dec
dec=$1
command -v ffmpeg >/dev/null 2>&1 || { echo "ffmpeg not found: skipped"; exit 77; }
command -v python3 >/dev/null 2>&1 || { echo "python3 not found: skipped"; exit 77; }
ffmpeg -hide_banner -encoders 2>/dev/null | grep -q ' h263 ' || { echo "ffmpeg has no h263 encoder: skipped"; exit 77; }
tmp=$(mktemp -d) || exit 1
trap 'rm -rf "$tmp"' EXIT
fail=0
minpsnr=${H263_MIN_PSNR:-50}

# compare NAME WIDTH HEIGHT: per-picture PSNR and mean absolute difference of
# ours against ffmpeg's decoding; prints the worst picture.
compare() {
    python3 - "$tmp/$1.yuv" "$tmp/$1.ref.yuv" "$2" "$3" "$minpsnr" <<'PY'
import math, sys
ours, ref, w, h, minpsnr = sys.argv[1], sys.argv[2], int(sys.argv[3]), int(sys.argv[4]), float(sys.argv[5])
a = open(ours, 'rb').read()
b = open(ref, 'rb').read()
fs = w * h * 3 // 2
if len(b) == 0 or len(b) % fs:
    print("reference size %d is not a whole number of pictures" % len(b)); sys.exit(1)
if len(a) != len(b):
    print("%d pictures, ffmpeg %d" % (len(a) // fs, len(b) // fs)); sys.exit(1)
worst_psnr, worst_mad, bad = 1e9, 0.0, []
for i in range(len(b) // fs):
    pa, pb = a[i * fs:(i + 1) * fs], b[i * fs:(i + 1) * fs]
    sad = sse = 0
    for x, y in zip(pa, pb):
        d = x - y
        sad += abs(d)
        sse += d * d
    mad = sad / fs
    psnr = 99.0 if sse == 0 else 10 * math.log10(255.0 * 255.0 * fs / sse)
    worst_psnr, worst_mad = min(worst_psnr, psnr), max(worst_mad, mad)
    if mad >= 0.5 or psnr < minpsnr:
        bad.append("picture %d: PSNR %.2f dB, MAD %.3f" % (i, psnr, mad))
print("%d pictures, worst PSNR %.2f dB, worst MAD %.4f" % (len(b) // fs, worst_psnr, worst_mad))
for m in bad[:5]:
    print("  " + m)
sys.exit(1 if bad else 0)
PY
}

# run NAME SOURCE WIDTH HEIGHT FRAMES QUANTISER [extra encoder options]
# (QUANTISER "-" leaves the quantiser to the encoder's rate control; the
# encoder is h263, or $codec when set)
run() {
    name=$1 src=$2 w=$3 h=$4 frames=$5 q=$6
    shift 6
    if [ -n "$H263_ONLY" ] && ! echo "$name" | grep -Eq "$H263_ONLY"; then return; fi
    set -- -c:v "${codec:-h263}" "$@"
    [ "$q" = "-" ] || set -- -q:v "$q" "$@"
    ffmpeg -hide_banner -loglevel error -f lavfi -i "$src=size=${w}x$h:rate=25" -frames:v "$frames" \
        -pix_fmt yuv420p -g 12 "$@" -f h263 -y "$tmp/$name.h263" ||
        { echo "FAIL $name: encoder"; fail=1; return; }
    ffmpeg -hide_banner -loglevel error -i "$tmp/$name.h263" -f rawvideo -pix_fmt yuv420p -fps_mode passthrough -y "$tmp/$name.ref.yuv" ||
        { echo "FAIL $name: reference decode"; fail=1; return; }
    if ! "$dec" "$tmp/$name.h263" "$tmp/$name.yuv"; then
        echo "FAIL $name: decoder error"; fail=1; return
    fi
    if res=$(compare "$name" "$w" "$h"); then
        echo "ok   $name: $res"
    else
        echo "FAIL $name: $res"; fail=1
    fi
}

run qcif_q2   testsrc2   176 144 24 2
run qcif_q5   mandelbrot 176 144 24 5
run qcif_q10  testsrc2   176 144 16 10
run qcif_q15  mandelbrot 176 144 16 15
run cif_q4    testsrc2   352 288 14 4
run cif_q12   mandelbrot 352 288 12 12
run sqcif_q6  testsrc2   128 96  8  6
run 4cif_q8   mandelbrot 704 576 3  8
# GOB headers (one per row of macroblocks, as for packetisation) and
# macroblock-level quantiser changes from adaptive quantisation.
run qcif_gob  testsrc2   176 144 16 6 -ps 200
run cif_gob   mandelbrot 352 288 12 8 -ps 400
run qcif_aq   testsrc2   176 144 16 - -b:v 80k -mbd 2 -mpv_flags +qp_rd
# H.263 version 2 (extended picture type, slices, rounding type alternating
# on P pictures), without and with the deblocking filter.
codec=h263p
run p_qcif_q3    testsrc2   176 144 16 3
run p_cif_q9     mandelbrot 352 288 12 9
run p_qcif_db5   testsrc2   176 144 16 5 -flags +loop
run p_qcif_db14  mandelbrot 176 144 16 14 -flags +loop
run p_cif_db7    testsrc2   352 288 12 7 -flags +loop
run p_4cif_q8    testsrc2   704 576 3 8
codec=

# A picture that pans and sways inside a larger one, so that content enters
# at the edges and vectors reach outside the picture.
pan_qcif="scale=264:216,crop=176:144:'44+40*sin(t*3)':'36+34*cos(t*2)'"
pan_cif="scale=528:432,crop=352:288:'88+80*sin(t*3)':'72+68*cos(t*2)'"

# Advanced prediction: four vectors per macroblock and overlapped
# compensation of the luminance (version 1 and version 2 headers).
# ffmpeg's decoder does not reproduce its encoder here: before compensating a
# macroblock it reads ahead the vectors of the one to its right, and that
# look-ahead predicts them from a stale vector of the current macroblock
# whenever the macroblock before it was skipped or intra (measured: a
# four-vector neighbour previewed at (4,-12) half samples where its own
# decoding, ours and the encoder use (0,-12)); its pictures drift away from
# the encoder's by up to 1.3 dB over 12 pictures.  So these streams are
# judged against the encoder's own reconstruction instead: ffmpeg reports
# the luminance PSNR of each reconstructed picture against the source
# (-flags +psnr, -vstats_file), and ours must give the same figure within
# 0.15 dB (the encoder's inverse DCT is not the library's; without overlapped
# compensation the same streams differ by 0.01 to 0.05 dB).  The difference
# to ffmpeg's decoding is printed for information.  Not used with the
# deblocking filter, whose effect the encoder's figure leaves out.
# run_enc NAME SOURCE WIDTH HEIGHT FRAMES QUANTISER FLAGS FILTER [encoder options]
# (FLAGS are added to -flags +psnr, FILTER is a -vf chain for the source or
# "", QUANTISER "-" leaves it to rate control)
run_enc() {
    name=$1 src=$2 w=$3 h=$4 frames=$5 q=$6 flags=$7 vf=$8
    shift 8
    if [ -n "$H263_ONLY" ] && ! echo "$name" | grep -Eq "$H263_ONLY"; then return; fi
    [ "$q" = "-" ] || set -- -q:v "$q" "$@"
    ffmpeg -hide_banner -loglevel error -f lavfi -i "$src=size=${w}x$h:rate=25" -frames:v "$frames" \
        -vf "${vf:-null}" -pix_fmt yuv420p -f rawvideo -y "$tmp/$name.src.yuv" ||
        { echo "FAIL $name: source"; fail=1; return; }
    ffmpeg -hide_banner -loglevel error -f rawvideo -pix_fmt yuv420p -s "${w}x$h" -r 25 -i "$tmp/$name.src.yuv" \
        -g 12 -c:v "${codec:-h263}" -flags "+psnr$flags" -obmc 1 "$@" -vstats_file "$tmp/$name.vstats" \
        -f h263 -y "$tmp/$name.h263" || { echo "FAIL $name: encoder"; fail=1; return; }
    ffmpeg -hide_banner -loglevel error -i "$tmp/$name.h263" -f rawvideo -pix_fmt yuv420p -fps_mode passthrough -y "$tmp/$name.ref.yuv" ||
        { echo "FAIL $name: reference decode"; fail=1; return; }
    if ! "$dec" "$tmp/$name.h263" "$tmp/$name.yuv"; then
        echo "FAIL $name: decoder error"; fail=1; return
    fi
    if res=$(python3 - "$tmp/$name" "$w" "$h" <<'PY'
import math, re, sys
base, w, h = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
fs, ys = w * h * 3 // 2, w * h
src = open(base + ".src.yuv", "rb").read()
ours = open(base + ".yuv", "rb").read()
ffd = open(base + ".ref.yuv", "rb").read()
enc = [float(m.group(1)) for m in (re.search(r"PSNR= *([0-9.]+)", l) for l in open(base + ".vstats")) if m]
n = len(src) // fs
if len(enc) != n or len(ours) != n * fs:
    print("%d source pictures, %d encoder figures, %d decoded" % (n, len(enc), len(ours) // fs)); sys.exit(1)
def psnr(a, b):
    sse = sum((x - y) * (x - y) for x, y in zip(a, b))
    return 99.0 if sse == 0 else 10 * math.log10(255.0 * 255.0 * len(a) / sse)
worst, worst_ff, bad = 0.0, 1e9, []
for i in range(n):
    s = src[i * fs:i * fs + ys]
    d = abs(psnr(ours[i * fs:i * fs + ys], s) - enc[i])
    worst = max(worst, d)
    if d > 0.15:
        bad.append("picture %d: %.3f dB from the encoder's %.2f" % (i, d, enc[i]))
    if len(ffd) == n * fs:
        worst_ff = min(worst_ff, psnr(ours[i * fs:(i + 1) * fs], ffd[i * fs:(i + 1) * fs]))
print("%d pictures, luminance PSNR within %.3f dB of the encoder's; against ffmpeg's decoding worst %.2f dB" % (n, worst, worst_ff))
for m in bad[:5]:
    print("  " + m)
sys.exit(1 if bad else 0)
PY
    ); then
        echo "ok   $name: $res"
    else
        echo "FAIL $name: $res"; fail=1
    fi
}

run_enc ap_qcif_q5     mandelbrot 176 144 24 5 "" ""
run_enc ap_cif_q8      testsrc2   352 288 12 8 "" ""
run_enc ap4_qcif_q5    mandelbrot 176 144 24 5 +mv4 ""
run_enc ap4_cif_q8     testsrc2   352 288 12 8 +mv4 ""
codec=h263p
run_enc p_ap_qcif_q3   testsrc2   176 144 24 3 "" ""
run_enc p_ap_cif_q10   mandelbrot 352 288 12 10 "" ""
run_enc p_ap4_qcif_q3  testsrc2   176 144 24 3 +mv4 ""
codec=
# Four-vector macroblocks alone: ffmpeg's -flags +mv4 writes them without
# setting advanced prediction; its decoder then predicts each block from its
# own vector without overlapping, and so does ours.
run mv4_qcif_q5    testsrc2   176 144 24 5 -flags +mv4
run mv4_cif_pan    testsrc2   352 288 12 6 -flags +mv4 -vf "$pan_cif"
codec=h263p
# Unrestricted vectors of version 2: the single-valued difference code and
# vectors pointing outside the picture, alone and with advanced prediction.
run p_umv_qcif_q5  testsrc2   176 144 24 5 -umv 1
run p_umv_qcif_pan testsrc2   176 144 24 4 -umv 1 -vf "$pan_qcif"
run p_umv_cif_pan  mandelbrot 352 288 12 6 -umv 1 -vf "$pan_cif"
codec=h263p
run_enc p_umv_ap_pan testsrc2  176 144 24 5 +mv4 "$pan_qcif" -umv 1
# Advanced intra coding (ffmpeg turns on modified quantisation with it):
# intra prediction modes, the intra table and alternate scans, the
# quantiser without offset, the chrominance quantiser, the extended escape
# at quantiser 1 (checked: decoded without that escape, the q1 stream fails).  The modified quantiser step code is not exercised: with
# advanced intra coding and a varying quantiser ffmpeg's encoder writes the
# two-bit DQUANT of the baseline, which its own decoder then misreads
# ("cbpy damaged", "run overflow"), so no valid stream can be made here.
run p_aic_qcif_q2  testsrc2   176 144 24 2 -flags +aic
run p_aic_qcif_q8  mandelbrot 176 144 24 8 -flags +aic
run p_aic_cif_q13  testsrc2   352 288 12 13 -flags +aic
run p_aic_qcif_q1  testsrc2   176 144 12 1 -flags +aic -qmin 1
run p_aic_qcif_i   mandelbrot 176 144 8 4 -flags +aic -g 1
# Everything together: advanced intra, modified quantisation, deblocking,
# unrestricted vectors, advanced prediction, on a panning picture.
run_enc p_all_qcif   testsrc2   176 144 24 4 +aic+mv4 "$pan_qcif" -umv 1
run_enc p_all_cif    mandelbrot 352 288 12 7 +aic+mv4 "$pan_cif" -umv 1
# The deblocking filter with modified quantisation (chrominance edges take
# the chrominance quantiser) and unrestricted vectors.
run p_aic_db_qcif  testsrc2   176 144 24 9 -flags +aic+loop -umv 1 -vf "$pan_qcif"
# Alternative inter VLC: inter blocks whose coefficients the inter table
# cannot code within 64 positions use the intra table (checked: with that
# fallback removed these streams fail to decode).
run p_aiv_qcif_q4  testsrc2   176 144 16 4 -aiv 1
run p_aiv_qcif_q2  mandelbrot 176 144 16 2 -aiv 1
run p_aiv_aic_q2   testsrc2   176 144 16 2 -aiv 1 -flags +aic
# Slices that start at any macroblock (-ps: a slice per packet of about that
# many bytes): vector and intra prediction stop at slice edges.
run p_slice_qcif   testsrc2   176 144 24 6 -ps 200
run p_slice_aic    testsrc2   176 144 24 6 -flags +aic -umv 1 -ps 300
run p_slice_cif_db mandelbrot 352 288 12 8 -flags +aic+loop -ps 400
run p_slice_mv4    testsrc2   176 144 24 5 -flags +mv4 -umv 1 -ps 150 -vf "$pan_qcif"
codec=

# Damaged streams: truncated at several points and with flipped bits.  The
# decoder may decode them (exit 0) or refuse them with one line naming the
# fault (exit 1); anything else (a signal, a sanitizer report) fails.
refused=0
damaged=0
# check_damaged FILE WHAT
check_damaged() {
    damaged=$((damaged + 1))
    "$dec" "$1" "$tmp/damaged.yuv" 2> "$tmp/err.txt"; rc=$?
    if grep -q 'Sanitizer\|runtime error' "$tmp/err.txt"; then echo "FAIL $2: sanitizer report"; fail=1
    elif [ $rc -eq 1 ] && grep -q '^zanvc-h263dec: ' "$tmp/err.txt"; then refused=$((refused + 1)); echo "ok   $2: $(head -1 "$tmp/err.txt")"
    elif [ $rc -eq 0 ]; then echo "ok   $2: decoded"
    else echo "FAIL $2: exit status $rc"; cat "$tmp/err.txt"; fail=1; fi
}
# Streams of every mode: baseline, version 2 with deblocking, advanced
# prediction with four vectors, unrestricted vectors, advanced intra coding
# with modified quantisation, all together, and slices starting anywhere.
for base in qcif_q5 p_qcif_db5 ap4_qcif_q5 p_umv_qcif_pan p_aic_qcif_q8 p_all_qcif p_slice_aic; do
    src="$tmp/$base.h263"
    if [ ! -s "$src" ]; then
        [ -n "$H263_ONLY" ] && continue
        echo "FAIL no stream $base to damage"; fail=1; continue
    fi
    size=$(wc -c < "$src")
    for cut in 3 40 333 1000 2500 4999 7777 $((size / 3)) $((size * 2 / 3)) $((size - 5)); do
        head -c "$cut" "$src" > "$tmp/cut.h263"
        check_damaged "$tmp/cut.h263" "$base truncated at $cut bytes"
    done
    for seed in 1 2 3 4 5 6 7 8 9 10 11 12; do
        python3 - "$src" "$tmp/flip.h263" "$seed" <<'PY'
import random, sys
data = bytearray(open(sys.argv[1], 'rb').read())
rnd = random.Random(int(sys.argv[3]))
for _ in range(rnd.choice([1, 3, 20])):
    i = rnd.randrange(len(data))
    data[i] ^= 1 << rnd.randrange(8)
open(sys.argv[2], 'wb').write(data)
PY
        check_damaged "$tmp/flip.h263" "$base with bit flips (seed $seed)"
    done
done
# A truncation inside a picture must be noticed at least somewhere.
[ $refused -gt 0 ] || [ $damaged -eq 0 ] || { echo "FAIL no damaged stream was refused"; fail=1; }
echo "$refused of $damaged damaged streams refused with a message"
# Not an H.263 stream at all.
printf 'not a video' > "$tmp/text.h263"
if "$dec" "$tmp/text.h263" "$tmp/damaged.yuv" 2> "$tmp/err.txt"; then
    echo "FAIL text file accepted"; fail=1
else
    echo "ok   text file refused: $(head -1 "$tmp/err.txt")"
fi
exit $fail
