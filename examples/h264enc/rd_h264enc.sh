#!/bin/sh
# Rate and distortion of zanvc-h264enc beside x264 at the same QP, intra
# only: x264 with -preset ultrafast -tune psnr -qp N -x264-params keyint=1,
# zanvc-h264enc with CAVLC and with CABAC.  Every stream is decoded by ffmpeg
# and compared with the source by ffmpeg's psnr filter, so both encoders are
# measured alike.  Prints one row per clip and QP: bytes per picture and
# PSNR (Y, and the average over the three planes as ffmpeg weighs them).
# x264's own QP for I pictures is read from its log.
# Usage: rd_h264enc.sh path/to/zanvc-h264enc [QP...]
enc=$1
shift
qps=${*:-22 27 32 37}
command -v ffmpeg >/dev/null 2>&1 || { echo "ffmpeg not found"; exit 77; }
ffmpeg -hide_banner -encoders 2>/dev/null | grep -q libx264 || { echo "libx264 not available"; exit 77; }
tmp=$(mktemp -d) || exit 1
trap 'rm -rf "$tmp"' EXIT
frames=5

# psnr STREAM SOURCE W H -> "Y AVERAGE"
psnr() {
    ffmpeg -hide_banner -nostats -i "$1" -f rawvideo -pix_fmt yuv420p -s "$3x$4" -i "$2" \
        -lavfi "[0:v][1:v]psnr" -f null - 2>&1 |
        sed -n 's/.*PSNR y:\([0-9.inf]*\) u:[0-9.inf]* v:[0-9.inf]* average:\([0-9.inf]*\).*/\1 \2/p' | tail -1
}

# x264 in constant-QP mode codes I pictures at a lower QP than asked (its
# ipratio); its log gives the QP it used, and zanvc-h264enc runs at that QP.
# x264's ultrafast preset turns its loop filter off, so zanvc-h264enc is shown
# without (like for like) and with its loop filter.
printf "%-19s %-6s| %-21s| %-21s| %-21s| %-21s\n" "clip" "QP" "x264 ultrafast" "zanvc CAVLC, no LF" \
    "zanvc CABAC, no LF" "zanvc CAVLC, LF on"
printf "%-19s %-6s| %-21s| %-21s| %-21s| %-21s\n" "" "x264>" "bytes   Y dB   avg" "bytes   Y dB   avg" \
    "bytes   Y dB   avg" "bytes   Y dB   avg"
for clip in "testsrc2 352x288" "mandelbrot 352x288" "smptehdbars 352x288" "gradients 352x288" "life 352x288"; do
    set -- $clip
    src=$1 size=$2
    w=${size%x*} h=${size#*x}
    ffmpeg -hide_banner -loglevel error -f lavfi -i "$src=size=$size:rate=25" -frames:v $frames -pix_fmt yuv420p \
        -f rawvideo -y "$tmp/src.yuv" || continue
    for qp in $qps; do
        ffmpeg -hide_banner -loglevel info -f rawvideo -pix_fmt yuv420p -s "$size" -i "$tmp/src.yuv" \
            -c:v libx264 -preset ultrafast -tune psnr -qp "$qp" -x264-params keyint=1 -y "$tmp/x.264" 2>"$tmp/x.log"
        aq=$(sed -n 's/.*frame I:.*Avg QP: *\([0-9.]*\).*/\1/p' "$tmp/x.log" | head -1)
        zq=$(printf "%.0f" "$aq")
        "$enc" "$tmp/src.yuv" "$w" "$h" "$tmp/z.264" --qp "$zq" --no-deblock >/dev/null
        "$enc" "$tmp/src.yuv" "$w" "$h" "$tmp/zc.264" --qp "$zq" --cabac --no-deblock >/dev/null
        "$enc" "$tmp/src.yuv" "$w" "$h" "$tmp/zd.264" --qp "$zq" >/dev/null
        row=""
        for s in x z zc zd; do
            bytes=$(($(wc -c <"$tmp/$s.264") / frames))
            set -- $(psnr "$tmp/$s.264" "$tmp/src.yuv" "$w" "$h")
            row="$row| $(printf "%6d %6.2f %6.2f " "$bytes" "$1" "$2")"
        done
        printf "%-19s %-6s%s\n" "$src $size" "$qp>$zq" "$row"
    done
done
