#!/usr/bin/env bash
# The camera pipeline on video that ffmpeg makes.
#
# ffmpeg renders a test pattern (testsrc2, 640x480, 3 frames) as packed
# uyvy422.  `zanvc camera --check` shrinks, converts and rotates it for
# every factor, interpolation, colour format and rotation, and compares
# every output pixel with a double-precision model of the conversion: no
# colour component may differ by more than 1.  Independently, ffmpeg's own
# area scaling and BT.601 conversion to rgb565le of the same frames must
# agree with the mean-interpolated output at factor 2 on average within 1
# unit per component.  A PNG of the first frame goes to OUTDIR.
#
# usage: picture_camera.sh ZANVC_PROGRAM [OUTDIR]
# Exit 77 (skipped) when ffmpeg is not installed.
set -euo pipefail
zanvc=$1
outdir=${2:-.}
command -v ffmpeg > /dev/null || { echo "ffmpeg not found: skipped"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

ffmpeg -v error -y -f lavfi -i "testsrc2=s=640x480:r=25" -frames:v 3 -pix_fmt uyvy422 -f rawvideo "$work/in.yuv"
fail=0
for zoom in 2 4 8; do
  for interp in nearest mean; do
    for format in 565 555; do
      for rot in 0 1 2 3; do
        if ! line=$("$zanvc" camera "$work/in.yuv" "$work/out.rgb" --size 640x480 --pix-fmt uyvy422 \
                      --zoom $zoom --interp $interp --format $format --rotate $rot --check | grep deviation); then
          echo "== factor $zoom $interp RGB$format rotation $rot: FAILED ($line)"
          fail=1
        fi
      done
    done
    echo "== factor $zoom $interp: every format and rotation within 1 of the model"
  done
done

"$zanvc" camera "$work/in.yuv" "$work/out.rgb" --size 640x480 --pix-fmt uyvy422 --zoom 2 --interp mean \
  --png "$outdir/picture_camera.png" > /dev/null
ffmpeg -v error -y -f rawvideo -pix_fmt uyvy422 -s 640x480 -i "$work/in.yuv" \
  -vf "scale=320:240:flags=area:in_range=tv,format=rgb565le" -f rawvideo "$work/ffmpeg.rgb"
mean=$(paste <(od -An -v -tu2 -w2 "$work/out.rgb") <(od -An -v -tu2 -w2 "$work/ffmpeg.rgb") | awk '
  { a = $1; b = $2
    d += (a % 32 > b % 32 ? a % 32 - b % 32 : b % 32 - a % 32)
    ga = int(a / 32) % 64; gb = int(b / 32) % 64; d += (ga > gb ? ga - gb : gb - ga)
    ra = int(a / 2048); rb = int(b / 2048); d += (ra > rb ? ra - rb : rb - ra); n += 3 }
  END { printf "%.3f", d / n }')
verdict=$(awk -v m="$mean" 'BEGIN { print (m <= 1.0) ? "ok" : "FAILED" }')
echo "== factor 2 mean against ffmpeg's area scaling and rgb565le: mean difference $mean per component: $verdict"
[ "$verdict" = ok ] || fail=1
exit $fail
