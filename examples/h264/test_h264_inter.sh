#!/bin/sh
# Byte-exact comparison of zanvc-h264dec with ffmpeg's own decoding, in
# display order, on short P and B clips that libx264 codes with CAVLC: pans
# and zooms whose vectors leave the picture, 1 to 4 reference frames, every
# partition size, explicit weights over fades, B pictures with spatial and
# temporal direct prediction, implicit weights and pyramids, slices,
# lossless and scaling-matrix coding, 8 and 10 bits; written streams whose
# vectors point hundreds of samples outside the picture, with explicit B
# weights and long-term references; then damaged inter streams that must
# end cleanly.
# Usage: test_h264_inter.sh path/to/zanvc-h264dec SET
#   SET p: P pictures; b: B pictures; hbd: 10-bit, far vectors, damage.
dec=$1
set=$2
command -v ffmpeg >/dev/null 2>&1 || { echo "ffmpeg not found: skipped"; exit 77; }
ffmpeg -hide_banner -encoders 2>/dev/null | grep -q libx264 || { echo "libx264 not available: skipped"; exit 77; }
tmp=$(mktemp -d) || exit 1
trap 'rm -rf "$tmp"' EXIT
fail=0
n=0
here=$(dirname "$0")

# Sources: a pan across a larger test picture (fast enough that blocks near
# the edges predict from outside), a zoom into a fractal, plain test
# pictures with fades.
pan="testsrc2=size=352x288:rate=25,crop=176:144:x='min(170,t*400)':y='min(140,t*250)'"
pan_back="testsrc2=size=352x288:rate=25,crop=176:144:x='max(0,170-t*420)':y='max(0,140-t*300)'"
zoom="mandelbrot=size=352x288:rate=25,zoompan=z='1+0.04*on':x='iw/2-iw/zoom/2':y='ih/2-ih/zoom/2':d=1:s=176x144"
fade_in="testsrc2=size=176x144:rate=25,fade=in:0:12"
fade_out="mandelbrot=size=176x144:rate=25,fade=out:6:10"

# encode NAME SOURCE FRAMES "x264 params" [extra ffmpeg options]
# (the pixel format is $pixfmt)
pixfmt=yuv420p
encode() {
    name=$1 src=$2 frames=$3 params=$4
    shift 4
    ffmpeg -hide_banner -loglevel error -f lavfi -i "$src" -frames:v "$frames" -pix_fmt "$pixfmt" \
        -c:v libx264 -x264-params "cabac=0:$params" "$@" -y "$tmp/$name.264" ||
        { echo "FAIL $name: encoder"; fail=1; return 1; }
}

# $refopts: options of the reference decode.
refopts=
check() {
    name=$1
    n=$((n + 1))
    ffmpeg -hide_banner -loglevel error $refopts -i "$tmp/$name.264" -f rawvideo -y "$tmp/$name.ref.yuv" ||
        { echo "FAIL $name: reference decode"; fail=1; return; }
    if ! "$dec" "$tmp/$name.264" "$tmp/$name.yuv"; then
        echo "FAIL $name: decoder error"; fail=1; return
    fi
    if [ ! -s "$tmp/$name.ref.yuv" ]; then
        echo "FAIL $name: empty reference"; fail=1; return
    fi
    if cmp -s "$tmp/$name.yuv" "$tmp/$name.ref.yuv"; then
        echo "ok   $name ($(wc -c <"$tmp/$name.yuv") bytes)"
    else
        echo "FAIL $name: output differs ($(cmp "$tmp/$name.yuv" "$tmp/$name.ref.yuv" 2>&1 | head -1))"
        fail=1
    fi
}

run() {
    encode "$@" && check "$1"
}

# The stream must really hold the slice types a case is about.
has_slices() {
    name=$1 want=$2
    ffmpeg -hide_banner -i "$tmp/$name.264" -c copy -bsf:v trace_headers -f null - 2>&1 |
        grep -q "slice_type .* = $want\$" || { echo "FAIL $name: no slice of type $want"; fail=1; }
}

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

case $set in
p)
    # One reference, every partition, no filter, then with it.
    run p_pan_r1      "$pan"      16 "bframes=0:ref=1:partitions=all:8x8dct=0:no-deblock=1:merange=64" -qp 24
    run p_pan_r1_db   "$pan_back" 16 "bframes=0:ref=1:partitions=all:8x8dct=0:merange=64" -qp 30
    has_slices p_pan_r1 5
    # Several references, the 8x8 transform, filter offsets.
    run p_zoom_r2     "$zoom"     16 "bframes=0:ref=2:partitions=all:8x8dct=1" -qp 28
    run p_zoom_r3     "$zoom"     16 "bframes=0:ref=3:partitions=p8x8,i4x4:8x8dct=0:deblock=2,-2" -qp 34
    run p_pan_r4      "$pan"      20 "bframes=0:ref=4:partitions=all:8x8dct=1:deblock=-2,1" -qp 22
    # Explicit weights over fades (weightp=2 also codes duplicate references).
    run p_fade_in     "$fade_in"  16 "bframes=0:ref=2:weightp=2" -qp 26
    run p_fade_out    "$fade_out" 16 "bframes=0:ref=3:weightp=2:8x8dct=0" -qp 32
    # Slices, chroma QP offsets, scaling matrices, lossless.
    run p_slices      "$pan"      12 "bframes=0:ref=2:slices=3:chroma-qp-offset=-3" -qp 27
    run p_cqm         "$zoom"     10 "bframes=0:ref=2:cqm=jvt:8x8dct=1" -qp 26
    run p_lossless    "$pan"       6 "bframes=0:ref=1" -qp 0
    # Cropped size (not a multiple of 16).
    run p_crop        "$zoom"     12 "bframes=0:ref=2:partitions=all" -qp 28 -s 200x120
    # 4:2:2 chroma in P pictures is refused with a message.
    pixfmt=yuv422p
    encode c422 "$pan" 3 "bframes=0:ref=1" -qp 26 && refuse c422_inter "$tmp/c422.264"
    pixfmt=yuv420p
    ;;
b)
    # Plain B pictures, then pyramids, both direct modes, implicit weights.
    run b_spatial     "$pan"      16 "bframes=2:b-pyramid=none:ref=1:direct=spatial:weightb=0:8x8dct=0" -qp 26
    run b_temporal    "$pan"      16 "bframes=2:b-pyramid=none:ref=1:direct=temporal:weightb=0:8x8dct=0" -qp 26
    has_slices b_spatial 6
    run b_pyr_spatial "$zoom"     20 "bframes=2:b-pyramid=normal:ref=3:direct=spatial:weightb=1:partitions=all" -qp 28
    run b_pyr_temp    "$pan_back" 20 "bframes=2:b-pyramid=normal:ref=3:direct=temporal:weightb=1:partitions=all" -qp 28
    run b_three_temp  "$zoom"     20 "bframes=3:b-pyramid=normal:ref=4:direct=temporal:weightb=1:8x8dct=1" -qp 24
    # Explicit weights in P with implicit ones in B over a fade.
    run b_fade        "$fade_in"  20 "bframes=2:b-pyramid=normal:ref=3:weightp=2:weightb=1:direct=spatial" -qp 26
    # Short key-frame interval: IDR pictures flush the waiting B pictures.
    run b_keyint      "$pan"      24 "bframes=2:b-pyramid=normal:keyint=8:min-keyint=8:ref=3:direct=auto" -qp 30
    # Slices and filter offsets, lossless, scaling matrices, cropping.
    run b_slices      "$pan"      16 "bframes=2:b-pyramid=normal:ref=2:weightb=1:direct=temporal:slices=3:deblock=1,2" -qp 30
    run b_lossless    "$pan"       8 "bframes=1:ref=2" -qp 0
    run b_cqm         "$zoom"     12 "bframes=2:ref=2:cqm=jvt:8x8dct=1:direct=spatial" -qp 26
    run b_crop        "$zoom"     12 "bframes=2:ref=2:direct=auto" -qp 26 -s 200x120
    ;;
hbd)
    # 10-bit samples (the library's 16-bit forms), P and B.
    pixfmt=yuv420p10le
    run h10_p_pan     "$pan"      16 "bframes=0:ref=2:partitions=all:8x8dct=0:merange=64" -qp 24
    run h10_p_fade    "$fade_out" 16 "bframes=0:ref=3:weightp=2:8x8dct=1" -qp 30
    run h10_b_spatial "$zoom"     16 "bframes=2:b-pyramid=normal:ref=3:weightb=1:direct=spatial" -qp 26
    run h10_b_temp    "$pan"      16 "bframes=2:b-pyramid=normal:ref=2:weightb=1:direct=temporal:weightp=2" -qp 22
    run h10_b_lossl   "$pan"       6 "bframes=1:ref=1" -qp 0
    pixfmt=yuv420p
    # Written streams with vectors far outside the picture, B pictures with
    # explicit weights, long-term references (marking and list modification),
    # B_Skip, B_Direct_16x16 and direct sub-macroblocks, spatial and
    # temporal, with and without 8x8 inference; order counts of type 1.  The reference is ffmpeg's plain C decoding:
    # its 10-bit SIMD bi-directional weighting differs from its own C code
    # for some legal weights and denominators these streams use.
    if command -v python3 >/dev/null 2>&1; then
        refopts="-cpuflags 0"
        for geo in "5 4 8 3" "3 2 8 4" "6 5 10 4" "4 3 10 3" "5 4 8 3 4" "3 2 8 4 3" "6 5 10 3 4" "4 4 10 4 3" \
            "5 4 8 5 3 1" "4 3 10 4 2 1" \
            "5 4 8 4 4 0 1" "5 4 8 4 4 0 2" "5 3 10 4 3 0 2" "6 4 8 5 4 1 2" "4 4 10 3 5 0 1" "4 4 8 3 5 1 1" \
            "4 4 10 3 5 0 1 1" "5 4 8 3 3 0 0 1"; do
            name=far_$(echo "$geo" | tr ' ' '_')
            python3 "$here/make_far_mv_stream.py" "$tmp/$name.264" $geo && check "$name"
        done
        refopts=
        # Temporal scaling of such vectors, chained over pictures, leaves the
        # 16-bit vector range: refused with a message.
        python3 "$here/make_far_mv_stream.py" "$tmp/overflow.264" 4 3 10 3 3 0 2 &&
            refuse overflow "$tmp/overflow.264"
    else
        echo "python3 not found: far-vector streams skipped"
    fi
    # Damaged inter streams: any clean outcome (decoded or refused), never
    # a signal; a stream cut before its first picture is refused with a
    # message.
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
    encode dmg "$pan" 12 "bframes=2:b-pyramid=normal:ref=3:weightp=2:weightb=1:direct=temporal" -qp 26 || exit 1
    base="$tmp/dmg.264"
    size=$(wc -c <"$base")
    for cut in 30 400 $((size / 3)) $((size / 2)) $((size - 7)); do
        head -c "$cut" "$base" >"$tmp/cut.264"
        survive "truncated_$cut" "$tmp/cut.264"
    done
    i=0
    pos=700
    while [ "$pos" -lt "$size" ]; do
        cp "$base" "$tmp/flip.264"
        byte=$(od -An -tu1 -j "$pos" -N1 "$tmp/flip.264" | tr -d ' ')
        printf "$(printf '\\%03o' $((byte ^ (1 << (i % 8)))))" |
            dd of="$tmp/flip.264" bs=1 seek="$pos" conv=notrunc 2>/dev/null
        survive "flip_$pos" "$tmp/flip.264"
        i=$((i + 1))
        pos=$((pos + size / 17 + 13))
    done
    # A P picture without its reference (the IDR picture removed).
    python3 - "$base" "$tmp/noidr.264" <<'EOF' 2>/dev/null || head -c 0 "$base" >"$tmp/noidr.264"
import sys
d = open(sys.argv[1], "rb").read()
parts = d.split(b"\x00\x00\x01")
out = b"".join(b"\x00\x00\x01" + p for p in parts[1:] if p and (p[0] & 31) != 5)
open(sys.argv[2], "wb").write(out)
EOF
    refuse noidr "$tmp/noidr.264"
    ;;
*)
    echo "unknown set $set"; exit 2
    ;;
esac

echo "$n checks"
exit $fail
