#!/bin/sh
# Byte-exact comparison of zanvc-h264dec with ffmpeg's own decoding on short
# intra clips that libx264 codes with CAVLC, over sizes, QPs, transforms,
# loop-filter settings, slices and scaling matrices; then streams the decoder
# must refuse cleanly (CABAC, truncated, damaged) without crashing.
# Usage: test_h264.sh path/to/zanvc-h264dec
dec=$1
command -v ffmpeg >/dev/null 2>&1 || { echo "ffmpeg not found: skipped"; exit 77; }
ffmpeg -hide_banner -encoders 2>/dev/null | grep -q libx264 || { echo "libx264 not available: skipped"; exit 77; }
tmp=$(mktemp -d) || exit 1
trap 'rm -rf "$tmp"' EXIT
fail=0
n=0

# encode NAME SOURCE SIZE FRAMES "x264 params" [extra ffmpeg options]
# (the pixel format is $pixfmt)
pixfmt=yuv420p
encode() {
    name=$1 src=$2 size=$3 frames=$4 params=$5
    shift 5
    ffmpeg -hide_banner -loglevel error -f lavfi -i "$src=size=$size:rate=25" -frames:v "$frames" \
        -pix_fmt "$pixfmt" -c:v libx264 -x264-params "keyint=1:cabac=0:$params" "$@" -y "$tmp/$name.264" ||
        { echo "FAIL $name: encoder"; fail=1; return 1; }
}

check() {
    name=$1
    n=$((n + 1))
    ffmpeg -hide_banner -loglevel error -i "$tmp/$name.264" -f rawvideo -y "$tmp/$name.ref.yuv" ||
        { echo "FAIL $name: reference decode"; fail=1; return; }
    if ! "$dec" "$tmp/$name.264" "$tmp/$name.yuv"; then
        echo "FAIL $name: decoder error"; fail=1; return
    fi
    if cmp -s "$tmp/$name.yuv" "$tmp/$name.ref.yuv"; then
        echo "ok   $name"
    else
        echo "FAIL $name: output differs ($(cmp "$tmp/$name.yuv" "$tmp/$name.ref.yuv" 2>&1 | head -1))"
        fail=1
    fi
}

run() {
    encode "$@" && check "$1"
}

# Baseline-style intra: 4x4 and 16x16 prediction, no loop filter.
run nodb_q26   testsrc2   176x144 3 "8x8dct=0:no-deblock=1" -qp 26
run nodb_q12   mandelbrot 176x144 2 "8x8dct=0:no-deblock=1" -qp 12
run nodb_q45   testsrc2   176x144 2 "8x8dct=0:no-deblock=1" -qp 45
run nodb_q1    testsrc2   176x144 1 "8x8dct=0:no-deblock=1" -qp 1
# Loop filter: default, with offsets, and chroma QP offsets.
run db_q26     testsrc2   176x144 3 "8x8dct=0" -qp 26
run db_q36     mandelbrot 176x144 2 "8x8dct=0" -qp 36
run db_off     testsrc2   176x144 2 "8x8dct=0:deblock=2,-1" -qp 30
run db_offneg  mandelbrot 176x144 2 "8x8dct=0:deblock=-3,3" -qp 40
run db_cqp     testsrc2   176x144 2 "8x8dct=0:chroma-qp-offset=5" -qp 33
run db_cqpneg  mandelbrot 176x144 2 "8x8dct=0:chroma-qp-offset=-7" -qp 44
# 8x8 transform and prediction (High), with the loop filter on and off.
run t8_q26     testsrc2   176x144 3 "8x8dct=1" -qp 26
run t8_q16nodb mandelbrot 176x144 2 "8x8dct=1:no-deblock=1" -qp 16
run t8_q40off  testsrc2   176x144 2 "8x8dct=1:deblock=-2,2:chroma-qp-offset=3" -qp 40
# Default scaling matrices.
run cqm_jvt    testsrc2   176x144 2 "8x8dct=1:cqm=jvt" -qp 24
run cqm_jvt4   mandelbrot 176x144 2 "8x8dct=0:cqm=jvt" -qp 30
# Custom scaling matrices (luma and chroma 4x4 lists, the 8x8 list).
q4y=8,12,16,17,21,25,26,30,34,35,39,43,44,48,52,53
q4c=20,22,24,26,28,30,32,34,36,38,40,42,44,46,48,50
q8=$(i=0; s=; while [ $i -lt 64 ]; do s="$s${s:+,}$((10 + i + (i * 7) % 5))"; i=$((i + 1)); done; echo "$s")
run cqm_custom mandelbrot 176x144 2 "8x8dct=1:cqm4iy=$q4y:cqm4ic=$q4c:cqm8i=$q8" -qp 22
run cqm_cust4  testsrc2   176x144 2 "8x8dct=0:cqm4iy=$q4c:cqm4ic=$q4y" -qp 31
# Lossless (QP 0 turns on transform bypass).
run lossless   testsrc2   176x144 2 "8x8dct=1" -qp 0
run lossless4  mandelbrot 176x144 2 "8x8dct=0" -qp 0
# Several slices, with the loop filter across or not across their borders.
run slices4    testsrc2   176x144 2 "8x8dct=1:slices=4" -qp 28
run slices4x   mandelbrot 176x144 2 "8x8dct=0:slices=4:deblock=1,1" -qp 34
# Cropping: a size that is not a multiple of 16.
run crop       testsrc2   200x120 2 "8x8dct=1:slices=3" -qp 27
run crop_nodb  mandelbrot 200x120 2 "8x8dct=0:no-deblock=1" -qp 20

# I_PCM beside Intra 16x16 macroblocks, in one or several slices, with the
# loop filter on everywhere, off, or not across slice borders (a written
# stream: libx264 never codes I_PCM nor that last filter setting).
if command -v python3 >/dev/null 2>&1; then
    for geo in "5 4 38 0 1" "4 3 24 0 1" "6 5 44 0 3" "6 5 44 2 3" "6 5 44 1 2" "7 4 30 2 4"; do
        name=pcm_$(echo "$geo" | tr ' ' '_')
        python3 "$(dirname "$0")/make_pcm_stream.py" "$tmp/$name.264" $geo && check "$name"
    done
else
    echo "python3 not found: I_PCM streams skipped"
fi

# 4:2:2 chroma, 8-bit.
pixfmt=yuv422p
run c422_nodb  testsrc2   176x144 2 "8x8dct=0:no-deblock=1" -qp 30
run c422_db    mandelbrot 200x120 2 "8x8dct=0:deblock=1,-1:chroma-qp-offset=4" -qp 36
run c422_t8    testsrc2   200x120 2 "8x8dct=1:slices=3" -qp 20
run c422_lossl mandelbrot 176x144 1 "8x8dct=1" -qp 0

# 10-bit samples, 4:2:0 and 4:2:2 (written as 16-bit little-endian).
pixfmt=yuv420p10le
run p10_nodb   testsrc2   176x144 2 "8x8dct=0:no-deblock=1" -qp 24
run p10_t8     mandelbrot 200x120 2 "8x8dct=1:slices=3:deblock=2,-1:chroma-qp-offset=-4" -qp 33
run p10_lowqp  testsrc2   176x144 1 "8x8dct=1" -qp 2
run p10_lossl  testsrc2   176x144 1 "8x8dct=0" -qp 0
pixfmt=yuv422p10le
run p10_422    mandelbrot 200x120 2 "8x8dct=1:chroma-qp-offset=3" -qp 28
run p10_422n   testsrc2   176x144 2 "8x8dct=0:no-deblock=1" -qp 12
run p10_422l   testsrc2   176x144 1 "8x8dct=1" -qp 0
pixfmt=yuv420p

# Streams to refuse: exit status 1 with a message, never a crash.
refuse() {
    name=$1 file=$2
    n=$((n + 1))
    "$dec" "$file" "$tmp/refused.yuv" 2>"$tmp/err.txt"
    rc=$?
    if [ $rc -eq 1 ] && [ -s "$tmp/err.txt" ]; then
        echo "ok   $name refused: $(cat "$tmp/err.txt")"
    else
        echo "FAIL $name: status $rc"; fail=1
    fi
}
# Damaged streams: any clean outcome (decoded or refused), never a signal.
survive() {
    name=$1 file=$2
    n=$((n + 1))
    "$dec" "$file" "$tmp/damaged.yuv" 2>/dev/null
    rc=$?
    if [ $rc -le 1 ]; then
        echo "ok   $name (status $rc)"
    else
        echo "FAIL $name: status $rc"; fail=1
    fi
}

encode cabac testsrc2 176x144 1 "cabac=1" -qp 26 && refuse cabac "$tmp/cabac.264"
base="$tmp/t8_q26.264"
size=$(wc -c <"$base")
for cut in 20 100 700 $((size / 2)) $((size - 9)); do
    head -c "$cut" "$base" >"$tmp/cut.264"
    survive "truncated_$cut" "$tmp/cut.264"
done
# Bit flips at spread positions after the parameter sets.
i=0
for pos in 40 61 97 150 333 517 1001 1999 3001 4500 6007 7777; do
    [ "$pos" -lt "$size" ] || continue
    cp "$base" "$tmp/flip.264"
    byte=$(od -An -tu1 -j "$pos" -N1 "$tmp/flip.264" | tr -d ' ')
    printf "$(printf '\\%03o' $((byte ^ (1 << (i % 8)))))" |
        dd of="$tmp/flip.264" bs=1 seek="$pos" conv=notrunc 2>/dev/null
    survive "flip_$pos" "$tmp/flip.264"
    i=$((i + 1))
done

echo "$n checks"
exit $fail
