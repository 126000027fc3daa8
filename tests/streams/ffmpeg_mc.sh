#!/usr/bin/env bash
# Motion-compensated prediction on pictures that ffmpeg makes.
#
# ffmpeg renders one textured test picture and pans a 352x288 window across
# it by a known vector: whole samples, or half samples by panning a
# twice-as-large copy and scaling back down.  The two frames go out as
# 8-bit grey PGM, uncoded.  `zanvc mc` then predicts every 16x16 block of
# the second frame from the first at the true vector, through the HP copy
# and motion-compensation exports, and reports the mean squared residual per
# sample.  It must be
#   - at most 0.01 for whole-sample pans (the frames are exact shifts of each
#     other: measured 0.000),
#   - at most 8 for half-sample pans (the bilinear half-sample average only
#     approximates ffmpeg's bicubic-then-area resampling: measured 1.8 to 4.2),
# with both roundings, and smaller than at the vector half a sample to the
# right (measured 38 to 43 there).
#
# usage: ffmpeg_mc.sh ZANVC_PROGRAM
# Exit 77 (skipped) when ffmpeg is not installed.
set -euo pipefail
zanvc=$1
command -v ffmpeg > /dev/null || { echo "ffmpeg not found: skipped"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

ffmpeg -v error -y -f lavfi -i "testsrc2=s=480x352" -frames:v 1 -vf "noise=alls=30:allf=u" "$work/still.png"

# The residual per sample that `zanvc mc` reports at the vector.
residual() {
  "$zanvc" mc "$@" | awk '/^residual/ { print $2 }'
}

# name, motion of the content from frame 1 to frame 2 in half samples (x y), limit
cases=("whole -6 4 0.01" "whole-far 10 -8 0.01" "diagonal-half -5 3 8" "horizontal-half 9 -2 8" "vertical-half 0 7 8")
fail=0
for c in "${cases[@]}"; do
  read -r name hx hy limit <<< "$c"
  # Frame n crops at (80 - n hx, 32 - n hy) of the doubled picture; the halved
  # result shows the scene moved by (hx, hy) / 2 samples.
  ffmpeg -v error -y -loop 1 -i "$work/still.png" \
    -vf "scale=iw*2:ih*2:flags=bicubic,crop=704:576:'80-($hx)*n':'32-($hy)*n',scale=352:288:flags=area,format=gray" \
    -frames:v 2 "$work/$name-%d.pgm"
  # A block at x of frame 2 shows what frame 1 holds at x - motion.
  vx=$(( -hx )); vy=$(( -hy ))
  for rc in 0 1; do
    if ! got=$(residual "$work/$name-2.pgm" "$work/$name-1.pgm" --vector "$vx,$vy" --round "$rc" --max-mse "$limit"); then
      echo "== $name (vector $vx,$vy, roundControl $rc): FAILED (residual ${got:-?} above $limit, or a block not rebuilt)"
      fail=1
      continue
    fi
    off=$(residual "$work/$name-2.pgm" "$work/$name-1.pgm" --vector "$((vx + 1)),$vy" --round "$rc")
    verdict=$(awk -v a="$got" -v b="$off" 'BEGIN { print (a < b) ? "ok" : "FAILED" }')
    echo "== $name (vector $vx,$vy, roundControl $rc): residual $got per sample (limit $limit), $off half a sample off: $verdict"
    [ "$verdict" = ok ] || fail=1
  done
done
exit $fail
