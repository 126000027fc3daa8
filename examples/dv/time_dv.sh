#!/bin/sh
# Times zanvc-dvdec against ffmpeg's single-threaded DV decoder on a DV50
# (4:2:2, 720x576) clip of noisy test pictures, both writing packed 4:2:2
# (yuyv422) to /dev/null, and prints frames per second of each: the best of
# RUNS runs, the two taken in turn so that both see the same machine load.
# Usage: time_dv.sh path/to/zanvc-dvdec [FRAMES] [RUNS]
dec=$1
frames=${2:-100}
runs=${3:-3}
command -v ffmpeg >/dev/null 2>&1 || { echo "ffmpeg not found"; exit 77; }
tmp=$(mktemp -d) || exit 1
trap 'rm -rf "$tmp"' EXIT
ffmpeg -hide_banner -loglevel error -f lavfi -i "testsrc2=size=720x576:rate=25" -frames:v "$frames" \
    -vf "noise=alls=20:allf=t" -pix_fmt yuv422p -c:v dvvideo -f dv -y "$tmp/clip.dv" || exit 1
now() { date +%s.%N; }
ours=99999 theirs=99999
i=0
while [ "$i" -lt "$runs" ]; do
    t0=$(now)
    "$dec" "$tmp/clip.dv" /dev/null || exit 1
    t1=$(now)
    ffmpeg -hide_banner -loglevel error -threads 1 -i "$tmp/clip.dv" -pix_fmt yuyv422 -f rawvideo -y /dev/null || exit 1
    t2=$(now)
    ours=$(awk -v a="$t0" -v b="$t1" -v m="$ours" 'BEGIN { d = b - a; print (d < m ? d : m) }')
    theirs=$(awk -v a="$t1" -v b="$t2" -v m="$theirs" 'BEGIN { d = b - a; print (d < m ? d : m) }')
    i=$((i + 1))
done
awk -v f="$frames" -v a="$ours" -v b="$theirs" 'BEGIN {
    printf "zanvc-dvdec:       %6.1f fps (%d frames in %.2f s, best run)\n", f / a, f, a
    printf "ffmpeg -threads 1: %6.1f fps (%d frames in %.2f s, best run)\n", f / b, f, b
}'
