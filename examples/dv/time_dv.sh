#!/bin/sh
# Times zanvc-dvdec against ffmpeg's single-threaded DV decoder on a DV50
# (4:2:2, 720x576) clip of noisy test pictures, both writing packed 4:2:2
# (yuyv422) to /dev/null, and prints frames per second of each.
# Usage: time_dv.sh path/to/zanvc-dvdec [FRAMES]
dec=$1
frames=${2:-100}
command -v ffmpeg >/dev/null 2>&1 || { echo "ffmpeg not found"; exit 77; }
tmp=$(mktemp -d) || exit 1
trap 'rm -rf "$tmp"' EXIT
ffmpeg -hide_banner -loglevel error -f lavfi -i "testsrc2=size=720x576:rate=25" -frames:v "$frames" \
    -vf "noise=alls=20:allf=t" -pix_fmt yuv422p -c:v dvvideo -f dv -y "$tmp/clip.dv" || exit 1
now() { date +%s.%N; }
t0=$(now)
"$dec" "$tmp/clip.dv" /dev/null || exit 1
t1=$(now)
ffmpeg -hide_banner -loglevel error -threads 1 -i "$tmp/clip.dv" -pix_fmt yuyv422 -f rawvideo -y /dev/null || exit 1
t2=$(now)
awk -v f="$frames" -v a="$t0" -v b="$t1" -v c="$t2" 'BEGIN {
    printf "zanvc-dvdec:       %6.1f fps (%d frames in %.2f s)\n", f / (b - a), f, b - a
    printf "ffmpeg -threads 1: %6.1f fps (%d frames in %.2f s)\n", f / (c - b), f, c - b
}'
