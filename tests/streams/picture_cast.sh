#!/usr/bin/env bash
# CAST denoising on video that ffmpeg makes.
#
#  1. A moving test pattern (testsrc2, 352x288, 12 frames) gets temporal
#     Gaussian noise from ffmpeg's noise filter.  `zanvc cast` must raise the
#     luma PSNR against the clean pattern (measured by ffmpeg's psnr filter)
#     by at least 1 dB (measured: 40.5 to 44.2 dB).
#  2. A clean still picture (one frame of the pattern, repeated) with the
#     previous source as the previous frame: every frame after the first is
#     still, and must come out byte for byte unchanged.
# Before/after PNGs of one noisy frame go to OUTDIR.
#
# usage: picture_cast.sh ZANVC_PROGRAM [OUTDIR]
# Exit 77 (skipped) when ffmpeg is not installed.
set -euo pipefail
zanvc=$1
outdir=${2:-.}
command -v ffmpeg > /dev/null || { echo "ffmpeg not found: skipped"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# luma PSNR of $1 against $2
psnr_y() {
  ffmpeg -v info -i "$1" -i "$2" -lavfi psnr -f null - 2>&1 | sed -n 's/.*PSNR y:\([0-9.]*\).*/\1/p' | tail -1
}

ffmpeg -v error -y -f lavfi -i "testsrc2=s=352x288:r=25" -frames:v 12 -pix_fmt yuv420p "$work/clean.y4m"
ffmpeg -v error -y -i "$work/clean.y4m" -vf "noise=c0s=14:c0f=t+a:c1s=8:c1f=t+a:c2s=8:c2f=t+a" -pix_fmt yuv420p "$work/noisy.y4m"
"$zanvc" cast "$work/noisy.y4m" "$work/out.y4m" --png "$outdir/picture_cast" --png-frame 6
before=$(psnr_y "$work/noisy.y4m" "$work/clean.y4m")
after=$(psnr_y "$work/out.y4m" "$work/clean.y4m")
verdict=$(awk -v a="$after" -v b="$before" 'BEGIN { print (a >= b + 1.0) ? "ok" : "FAILED" }')
echo "== noisy pattern: luma PSNR $before dB before, $after dB after: $verdict"
fail=0
[ "$verdict" = ok ] || fail=1

ffmpeg -v error -y -f lavfi -i "testsrc2=s=352x288:r=25" -frames:v 1 -pix_fmt yuv420p "$work/still.png"
ffmpeg -v error -y -loop 1 -i "$work/still.png" -frames:v 6 -pix_fmt yuv420p "$work/still.y4m"
"$zanvc" cast "$work/still.y4m" "$work/still-out.y4m" --previous source
ffmpeg -v error -y -i "$work/still.y4m" -f rawvideo "$work/still.yuv"
ffmpeg -v error -y -i "$work/still-out.y4m" -f rawvideo "$work/still-out.yuv"
frame=$((352 * 288 * 3 / 2))
if cmp -s <(tail -c +$((frame + 1)) "$work/still.yuv") <(tail -c +$((frame + 1)) "$work/still-out.yuv"); then
  echo "== clean still picture: frames 2 to 6 unchanged: ok"
else
  echo "== clean still picture: frames 2 to 6 changed: FAILED"
  fail=1
fi
echo "   (the first frame has no previous one and is filtered spatially throughout)"
exit $fail
