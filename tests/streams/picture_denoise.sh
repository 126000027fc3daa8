#!/usr/bin/env bash
# The denoisers on noisy and on clean video that ffmpeg makes.
#
# ffmpeg renders a moving test pattern (drawn at 176x144 and scaled up to
# 352x288) and adds noise that changes from frame to frame (noise filter).
# `zanvc denoise` must bring the noisy video closer to the clean one, by
# luma PSNR measured by ffmpeg, with the adaptive and with the smoothing
# filter (measured: noisy 30.4 dB, adaptive 36.9, smooth 36.3).  On clean
# still pictures no sample may move by more than 1: both filters at their
# default settings on a smooth gradient (a mean of a straight slope is its
# centre), and the smoothing filter at threshold 1 on the pattern itself,
# where every cell with any difference is an edge and only flat areas are
# averaged.  (At its default threshold of 12 the smoothing filter does soften
# edges weaker than about three times the threshold: up to 28 levels on this
# pattern; that is its purpose, not a fault.)  Before and after pictures go
# to OUTDIR as PNG (from the run on the u8 path only).
#
# usage: picture_denoise.sh ZANVC_PROGRAM OUTDIR
# Exit 77 (skipped) when ffmpeg is not installed.
set -euo pipefail
zanvc=$1
outdir=${2:-.}
command -v ffmpeg > /dev/null || { echo "ffmpeg not found: skipped"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

ffmpeg -v error -y -f lavfi -i "testsrc2=s=176x144:r=25" -frames:v 12 -vf "scale=352:288:flags=bicubic" \
  -pix_fmt yuv420p "$work/clean.y4m"
ffmpeg -v error -y -i "$work/clean.y4m" -vf "noise=alls=14:allf=t" -pix_fmt yuv420p "$work/noisy.y4m"

psnr_y() {  # luma PSNR of $1 against $2
  ffmpeg -v info -i "$1" -i "$2" -lavfi "[0:v][1:v]psnr" -f null - 2>&1 |
    sed -n 's/.*PSNR y:\([0-9.inf]*\).*/\1/p' | tail -1
}
# Largest difference of any sample (all planes) between two .y4m files of one layout.
max_diff() {
  { cmp -l <(ffmpeg -v error -i "$1" -f rawvideo -) <(ffmpeg -v error -i "$2" -f rawvideo -) || true; } |
    awk 'function oct(s,  v, i) { v = 0; for (i = 1; i <= length(s); i++) v = v * 8 + substr(s, i, 1); return v }
         BEGIN { m = 0 } { a = oct($2); b = oct($3); d = a > b ? a - b : b - a; if (d > m) m = d }
         END { print m }'
}

base=$(psnr_y "$work/noisy.y4m" "$work/clean.y4m")
[ -n "$base" ] || { echo "no PSNR for the noisy input"; exit 1; }
echo "== noisy input: luma PSNR $base dB against the clean video"
fail=0
for method in adaptive smooth; do
  png=()
  if [ "${ZANVC_EXPECT_PATH:-u8}" = u8 ]; then
    png=(--png-before "$outdir/denoise_before.png" --png-after "$outdir/denoise_${method}_after.png" --png-frame 4)
  fi
  "$zanvc" denoise "$work/noisy.y4m" "$work/$method.y4m" --method "$method" "${png[@]}"
  got=$(psnr_y "$work/$method.y4m" "$work/clean.y4m")
  verdict=$(awk -v a="$got" -v b="$base" 'BEGIN { print (a > b) ? "ok" : "FAILED" }')
  echo "== $method: luma PSNR $got dB against $base dB for the noisy input: $verdict"
  [ "$verdict" = ok ] || fail=1
done

# Clean stills.
ffmpeg -v error -y -f lavfi -i "testsrc2=s=176x144:r=25" -frames:v 1 -vf "scale=352:288:flags=bicubic,loop=4:1:0" \
  -pix_fmt yuv420p "$work/still.y4m"
ffmpeg -v error -y -f lavfi -i "gradients=s=352x288:c0=0x203040:c1=0xd0c0a0:seed=1" -frames:v 1 \
  -vf "loop=4:1:0" -pix_fmt yuv420p "$work/gradient.y4m"
for c in "smooth gradient" "adaptive gradient" "smooth still --threshold 1"; do
  read -r method input opts <<< "$c"
  # shellcheck disable=SC2086
  "$zanvc" denoise "$work/$input.y4m" "$work/$input-$method.y4m" --method "$method" $opts
  d=$(max_diff "$work/$input.y4m" "$work/$input-$method.y4m")
  verdict=$([ "$d" -le 1 ] && echo ok || echo FAILED)
  echo "== $method ${opts:-(default threshold)} on the clean $input: largest change $d: $verdict"
  [ "$verdict" = ok ] || fail=1
done
exit $fail
