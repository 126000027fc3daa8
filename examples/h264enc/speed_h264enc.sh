#!/bin/sh
# Speed of zanvc-h264enc on a 1280x720 clip (ffmpeg's testsrc2 and
# mandelbrot sources), CAVLC and CABAC, at a few QPs.  Prints the encoder's
# own report: pictures per second by the clock and by processor time (the
# second is the one to read on a shared machine).
# Usage: speed_h264enc.sh path/to/zanvc-h264enc [FRAMES]
enc=$1
frames=${2:-20}
command -v ffmpeg >/dev/null 2>&1 || { echo "ffmpeg not found"; exit 77; }
tmp=$(mktemp -d) || exit 1
trap 'rm -rf "$tmp"' EXIT
for src in testsrc2 mandelbrot; do
    ffmpeg -hide_banner -loglevel error -f lavfi -i "$src=size=1280x720:rate=25" -frames:v "$frames" \
        -pix_fmt yuv420p -f rawvideo -y "$tmp/hd.yuv" || exit 1
    for qp in 22 30 38; do
        for mode in "" --cabac; do
            printf "%-10s QP %2s %-7s " "$src" "$qp" "${mode:---cavlc}"
            "$enc" "$tmp/hd.yuv" 1280 720 "$tmp/hd.264" --qp "$qp" $mode | grep '^encoding' |
                sed 's/^encoding //'
        done
    done
done
