#!/usr/bin/env bash
# Decoding speed of zanvc-h263dec on an MPEG-4 visual stream beside
# single-threaded ffmpeg on the same stream (SOURCE, a lavfi source:
# testsrc2 by default, mandelbrot codes every macroblock; 720x576, GOP 12 with
# two B-VOPs between references, quarter samples and four-vector
# macroblocks): whole-process wall time and CPU time, best of RUNS, both
# writing yuv420p.  Not a test: it prints.
# Usage: time_mpeg4.sh DEC [FRAMES] [RUNS] [OUT] [SOURCE]  (OUT: a file, or
# /dev/null to leave the writing out; both programs write to the same place)
set -eu
DEC=$1 FRAMES=${2:-50} RUNS=${3:-5} SRC=${5:-testsrc2}
T=$(mktemp -d)
trap 'rm -rf "$T"' EXIT
OUT=${4:-$T/out.yuv}
[ "$OUT" = - ] && OUT=$T/out.yuv
ffmpeg -hide_banner -loglevel error -nostdin -y -f lavfi -i "$SRC=s=720x576:r=25" -frames:v "$FRAMES" \
    -c:v mpeg4 -g 12 -bf 2 -flags +qpel+mv4 -q:v 4 -f m4v "$T/in.m4v"
"$DEC" "$T/in.m4v" "$T/check.yuv" || { echo "zanvc-h263dec failed on the stream"; exit 1; }
rm -f "$T/check.yuv"
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
read -r ow oc <<<"$(best_of "$DEC" "$T/in.m4v" "$OUT")"
read -r fw fc <<<"$(best_of ffmpeg -hide_banner -loglevel error -nostdin -y -threads 1 -i "$T/in.m4v" \
    -f rawvideo -pix_fmt yuv420p "$OUT")"
awk -v n="$FRAMES" -v ow="$ow" -v oc="$oc" -v fw="$fw" -v fc="$fc" -v s="$(stat -c %s "$T/in.m4v")" -v o="$OUT" -v src="$SRC" 'BEGIN {
    printf "720x576 %s, MPEG-4 ASP (B-VOPs, quarter samples, four vectors), %d pictures, %d bytes, output to %s, best of runs\n", src, n, s, o
    printf "                    wall s  pictures/s   cpu s  pictures/s\n"
    printf "zanvc-h263dec     %8.3f  %10.1f  %6.3f  %10.1f\n", ow, n / ow, oc, n / (oc > 0 ? oc : 0.001)
    printf "ffmpeg -threads 1 %8.3f  %10.1f  %6.3f  %10.1f\n", fw, n / fw, fc, n / (fc > 0 ? fc : 0.001) }'
