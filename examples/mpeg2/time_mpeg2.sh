#!/usr/bin/env bash
# Decoding speed of zanvc-mpeg2dec beside single-threaded ffmpeg on the same
# intra stream (testsrc2, 720x576, ffmpeg -g 1): whole-process wall time and
# CPU time, best of RUNS, both writing yuv420p.  Not a test: it prints.
# Usage: time_mpeg2.sh DEC [FRAMES] [RUNS] [OUT]  (OUT: a file, or /dev/null to leave
# the writing out; both programs write to the same place)
set -eu
DEC=$1 FRAMES=${2:-25} RUNS=${3:-5}
T=$(mktemp -d)
trap 'rm -rf "$T"' EXIT
OUT=${4:-$T/out.yuv}
ffmpeg -hide_banner -loglevel error -nostdin -y -f lavfi -i testsrc2=s=720x576:r=25 -frames:v "$FRAMES" \
    -c:v mpeg2video -g 1 -q:v 3 -f mpeg2video "$T/in.m2v"
# best_of CMD...: the smallest wall time and the smallest user+system CPU
# time over RUNS runs (the machine may be shared: CPU time is the steadier).
best_of() {
    local bw=999 bc=999 w c
    for _ in $(seq "$RUNS"); do
        /usr/bin/time -f "%e %U %S" -o "$T/t" "$@" >/dev/null 2>&1
        read -r w u s <"$T/t"
        c=$(awk -v u="$u" -v s="$s" 'BEGIN { print u + s }')
        bw=$(awk -v a="$bw" -v t="$w" 'BEGIN { print (t < a) ? t : a }')
        bc=$(awk -v a="$bc" -v t="$c" 'BEGIN { print (t < a) ? t : a }')
    done
    echo "$bw $bc"
}
read -r ow oc <<<"$(best_of "$DEC" "$T/in.m2v" "$OUT")"
read -r fw fc <<<"$(best_of ffmpeg -hide_banner -loglevel error -nostdin -y -threads 1 -i "$T/in.m2v" \
    -f rawvideo -pix_fmt yuv420p "$OUT")"
awk -v n="$FRAMES" -v ow="$ow" -v oc="$oc" -v fw="$fw" -v fc="$fc" -v s="$(stat -c %s "$T/in.m2v")" -v o="$OUT" 'BEGIN {
    printf "720x576 intra, %d pictures, %d bytes, output to %s, best of runs\n", n, s, o
    printf "                    wall s  pictures/s   cpu s  pictures/s\n"
    printf "zanvc-mpeg2dec    %8.3f  %10.1f  %6.3f  %10.1f\n", ow, n / ow, oc, n / (oc > 0 ? oc : 0.001)
    printf "ffmpeg -threads 1 %8.3f  %10.1f  %6.3f  %10.1f\n", fw, n / fw, fc, n / (fc > 0 ? fc : 0.001) }'
