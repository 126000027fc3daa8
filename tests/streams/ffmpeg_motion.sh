#!/usr/bin/env bash
# Motion search on pictures that ffmpeg makes and codes.
#
# ffmpeg renders one textured test picture, pans a 352x288 window across it
# by a known vector (whole samples, or half samples by panning a twice-as-large
# copy and scaling back down), codes the two frames as MPEG-2 and decodes them
# to PGM.  `zanvc search` must then recover the vector in at least 90% of the
# blocks whose match lies inside the picture, through the candidate-row,
# single-block and half-sample SAD exports, despite the coding noise.
#
# usage: ffmpeg_motion.sh ZANVC_PROGRAM
# Exit 77 (skipped) when ffmpeg is not installed.
set -euo pipefail
zanvc=$1
command -v ffmpeg > /dev/null || { echo "ffmpeg not found: skipped"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

ffmpeg -v error -y -f lavfi -i "testsrc2=s=480x352" -frames:v 1 -vf "noise=alls=30:allf=u" "$work/still.png"

# name, vector of the second frame against the first in half samples (x y)
cases=("whole -6 4" "diagonal-half -5 3" "horizontal-half 9 -2" "vertical-half 0 7")
fail=0
for c in "${cases[@]}"; do
  read -r name hx hy <<< "$c"
  # The window moves by -v, so the content moves by v.  Frame n crops at
  # (80 - n hx, 32 - n hy) of the doubled picture; the halved result shows
  # the scene moved by v / 2 samples.
  ffmpeg -v error -y -loop 1 -i "$work/still.png" \
    -vf "scale=iw*2:ih*2:flags=bicubic,crop=704:576:'80-($hx)*n':'32-($hy)*n',scale=352:288:flags=area,format=yuv420p" \
    -frames:v 2 -c:v mpeg2video -q:v 2 "$work/$name.mpg"
  ffmpeg -v error -y -i "$work/$name.mpg" -vf format=gray -frames:v 2 "$work/$name-%d.pgm"
  expect=$(awk -v x="$hx" -v y="$hy" 'BEGIN { printf "%g,%g", -x / 2, -y / 2 }')
  echo "== $name: expecting $expect"
  if ! "$zanvc" search "$work/$name-2.pgm" "$work/$name-1.pgm" --expect "$expect" --no-map; then
    fail=1
  fi
done
exit $fail
