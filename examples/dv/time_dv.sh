#!/bin/sh
# Times zanvc-dvdec against ffmpeg's single-threaded DV decoder on a DV50
# (4:2:2, 720x576) clip of noisy test pictures, both writing packed 4:2:2
# (yuyv422) to /dev/null, and prints frames per second of each: the best of
# RUNS runs, the two taken in turn so that both see the same machine load,
# by wall-clock time and, where /usr/bin/time is at hand, by processor time
# (user + system), which a loaded machine disturbs less.
# Usage: time_dv.sh path/to/zanvc-dvdec [FRAMES] [RUNS]
dec=$1
frames=${2:-100}
runs=${3:-3}
command -v ffmpeg >/dev/null 2>&1 || { echo "ffmpeg not found"; exit 77; }
tmp=$(mktemp -d) || exit 1
trap 'rm -rf "$tmp"' EXIT
ffmpeg -hide_banner -loglevel error -f lavfi -i "testsrc2=size=720x576:rate=25" -frames:v "$frames" \
    -vf "noise=alls=20:allf=t" -pix_fmt yuv422p -c:v dvvideo -f dv -y "$tmp/clip.dv" || exit 1
if [ -x /usr/bin/time ]; then
    timed() { out=$1; shift; /usr/bin/time -f "%e %U %S" -o "$out" "$@"; }
else
    timed() { out=$1; shift; a=$(date +%s.%N); "$@" || return 1; b=$(date +%s.%N)
              awk -v a="$a" -v b="$b" 'BEGIN { print b - a, 0, 0 }' > "$out"; }
fi
: > "$tmp/ours"; : > "$tmp/theirs"
i=0
while [ "$i" -lt "$runs" ]; do
    timed "$tmp/t" "$dec" "$tmp/clip.dv" /dev/null || exit 1
    cat "$tmp/t" >> "$tmp/ours"
    timed "$tmp/t" ffmpeg -hide_banner -loglevel error -threads 1 -i "$tmp/clip.dv" -pix_fmt yuyv422 \
        -f rawvideo -y /dev/null || exit 1
    cat "$tmp/t" >> "$tmp/theirs"
    i=$((i + 1))
done
report() {
    awk -v f="$frames" -v name="$2" '
        NF >= 3 { w = $1; c = $2 + $3; if (n == 0 || w < bw) bw = w; if (n == 0 || c < bc) bc = c; n++ }
        END {
            line = sprintf("%-18s %6.1f fps wall (%.2f s)", name ":", f / bw, bw)
            if (bc > 0) line = line sprintf(", %6.1f fps processor time (%.2f s)", f / bc, bc)
            print line " for " f " frames, best of " n
        }' "$1"
}
report "$tmp/ours" zanvc-dvdec
report "$tmp/theirs" "ffmpeg -threads 1"
