#!/usr/bin/env bash
# The deinterlacers on interlaced video that ffmpeg makes.
#
# ffmpeg renders a moving progressive test pattern at 50 frames a second
# (drawn at 176x144 and scaled up to 352x288, so that rows carry detail a
# field can describe) and weaves pairs of frames into interlaced frames (tinterlace, top field from
# the first frame of each pair).  `zanvc deinterlace` keeps the top field of
# each frame and computes the bottom one; the result is compared with the
# progressive frames that gave the top fields (luma PSNR, by ffmpeg).  Each
# deinterlacer must come closer to them than line doubling of the top field
# (also made by ffmpeg).  The vertical triangle filter is a low-pass over the
# woven frame, not a field interpolator: on the moving pattern its figure is
# printed, not judged; it is judged on a still picture woven the same way,
# where both fields hold the same instant and the filter must keep more of
# the picture than line doubling does.
# Before and after pictures of the blend go to OUTDIR as PNG (from the run on
# the u8 path only, so that the two paths' runs never write one file).
#
# usage: picture_deinterlace.sh ZANVC_PROGRAM OUTDIR
# Exit 77 (skipped) when ffmpeg is not installed.
set -euo pipefail
zanvc=$1
outdir=${2:-.}
command -v ffmpeg > /dev/null || { echo "ffmpeg not found: skipped"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

ffmpeg -v error -y -f lavfi -i "testsrc2=s=176x144:r=50" -frames:v 24 -vf "scale=352:288:flags=bicubic" \
  -pix_fmt yuv420p "$work/source.y4m"
ffmpeg -v error -y -i "$work/source.y4m" -vf "tinterlace=mode=interleave_top" -pix_fmt yuv420p "$work/woven.y4m"
ffmpeg -v error -y -i "$work/source.y4m" -vf "select='not(mod(n\,2))',setpts=N/25/TB" -r 25 -pix_fmt yuv420p \
  "$work/truth.y4m"
ffmpeg -v error -y -i "$work/woven.y4m" -vf "field=type=top,scale=iw:ih*2:flags=neighbor" -pix_fmt yuv420p \
  "$work/doubled.y4m"

# Luma PSNR of a video against the progressive truth.
psnr_y() {
  ffmpeg -v info -i "$1" -i "$work/truth.y4m" -lavfi "[0:v][1:v]psnr" -f null - 2>&1 |
    sed -n 's/.*PSNR y:\([0-9.inf]*\).*/\1/p' | tail -1
}

base=$(psnr_y "$work/doubled.y4m")
frames=$(ffmpeg -v error -i "$work/woven.y4m" -map 0:v -f null - -progress - 2>/dev/null | sed -n 's/^frame=//p' | tail -1)
echo "== $frames interlaced frames 352x288; line doubling: luma PSNR $base dB"
[ -n "$base" ] || { echo "no PSNR for line doubling"; exit 1; }
fail=0
for method in blend edge median motion triangle; do
  extra=()
  if [ "$method" = blend ] && [ "${ZANVC_EXPECT_PATH:-u8}" = u8 ]; then
    extra=(--png-before "$outdir/deinterlace_before.png" --png-after "$outdir/deinterlace_blend_after.png" --png-frame 5)
  fi
  "$zanvc" deinterlace "$work/woven.y4m" "$work/$method.y4m" --method "$method" "${extra[@]}"
  got=$(psnr_y "$work/$method.y4m")
  if [ "$method" = triangle ]; then
    echo "== $method: luma PSNR $got dB (not judged)"
    continue
  fi
  verdict=$(awk -v a="$got" -v b="$base" 'BEGIN { print (a > b) ? "ok" : "FAILED" }')
  echo "== $method: luma PSNR $got dB against $base dB for line doubling: $verdict"
  [ "$verdict" = ok ] || fail=1
done
# The still picture: one frame of the pattern held for 8 frames, woven.
ffmpeg -v error -y -f lavfi -i "testsrc2=s=176x144:r=50" -frames:v 8 \
  -vf "select=eq(n\,0),loop=loop=7:size=1:start=0,scale=352:288:flags=bicubic" -pix_fmt yuv420p "$work/source.y4m"
ffmpeg -v error -y -i "$work/source.y4m" -vf "tinterlace=mode=interleave_top" -pix_fmt yuv420p "$work/woven.y4m"
ffmpeg -v error -y -i "$work/source.y4m" -vf "select='not(mod(n\,2))',setpts=N/25/TB" -r 25 -pix_fmt yuv420p \
  "$work/truth.y4m"
ffmpeg -v error -y -i "$work/woven.y4m" -vf "field=type=top,scale=iw:ih*2:flags=neighbor" -pix_fmt yuv420p \
  "$work/doubled.y4m"
base=$(psnr_y "$work/doubled.y4m")
"$zanvc" deinterlace "$work/woven.y4m" "$work/triangle.y4m" --method triangle
got=$(psnr_y "$work/triangle.y4m")
verdict=$(awk -v a="$got" -v b="$base" 'BEGIN { print (a > b) ? "ok" : "FAILED" }')
echo "== still picture: triangle luma PSNR $got dB against $base dB for line doubling: $verdict"
[ "$verdict" = ok ] || fail=1
exit $fail
