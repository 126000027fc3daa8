#!/bin/sh
# Times zanvc-h264dec against ffmpeg's decoder on one thread, on a 1280x720
# CAVLC clip with P and B pictures that libx264 codes, and prints frames per
# second for both (processor time, best of several runs each).  Not part of the test suite.
# Usage: time_h264.sh path/to/zanvc-h264dec [frames [runs [x264 params]]]
dec=$1
frames=${2:-60}
runs=${3:-3}
params=${4:-"cabac=0:bframes=2:b-pyramid=normal:ref=3:weightp=2:weightb=1:direct=auto:partitions=all:8x8dct=1"}
command -v ffmpeg >/dev/null 2>&1 || { echo "ffmpeg not found"; exit 77; }
tmp=$(mktemp -d) || exit 1
trap 'rm -rf "$tmp"' EXIT
clip="$tmp/clip.264"
ffmpeg -hide_banner -loglevel error -f lavfi \
    -i "mandelbrot=size=1280x720:rate=25,zoompan=z='1+0.01*on':d=1:s=1280x720,noise=alls=6:allf=t" \
    -frames:v "$frames" -pix_fmt yuv420p -c:v libx264 -preset medium -x264-params "$params" -b:v 3M \
    -y "$clip" || exit 1
echo "clip: 1280x720, $frames frames, $(wc -c <"$clip") bytes, x264 $params"

# The output must agree before the timing means anything.
"$dec" "$clip" "$tmp/ours.yuv" || exit 1
ffmpeg -hide_banner -loglevel error -threads 1 -i "$clip" -f rawvideo -y "$tmp/ref.yuv" || exit 1
cmp -s "$tmp/ours.yuv" "$tmp/ref.yuv" && echo "output: identical to ffmpeg's" || { echo "output differs"; exit 1; }
rm -f "$tmp/ours.yuv" "$tmp/ref.yuv"

# Processor time (user + system) of a command, best of $runs runs: the
# machine may be shared, and wall time then says little.
cpu() {
    /usr/bin/time -f "%U %S" -o "$tmp/t" "$@" >/dev/null 2>&1 || { echo "command failed: $*" >&2; exit 1; }
    awk '{print $1 + $2}' "$tmp/t"
}
best() {
    b=
    i=0
    while [ $i -lt "$runs" ]; do
        t=$(cpu "$@") || exit 1
        b=$(echo "$t ${b:-1e9}" | awk '{print ($1 < $2 ? $1 : $2)}')
        i=$((i + 1))
    done
    echo "$b"
}
t_ours=$(best "$dec" "$clip" /dev/null)
t_ff=$(best ffmpeg -hide_banner -loglevel error -threads 1 -i "$clip" -f rawvideo -y /dev/null)
echo "$t_ours $t_ff $frames" | awk '{printf "zanvc-h264dec: %.2f s CPU, %.1f fps\nffmpeg -threads 1: %.2f s CPU, %.1f fps\nratio: %.2f\n", $1, $3 / $1, $2, $3 / $2, $1 / $2}'
