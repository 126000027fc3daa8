#!/bin/sh
# Compares zanvc-dvdec with ffmpeg's decoding of short clips from ffmpeg's
# dvvideo encoder: 25 Mb/s NTSC 4:1:1 and PAL 4:2:0, 50 Mb/s 4:2:2, 100 Mb/s
# (DVCPRO HD) 1080/60i, 1080/50i, 720/60p and 720/50p, smooth and noisy
# content (noisy blocks overflow into other blocks' space); then reduced
# outputs against ffmpeg's decoding scaled by averaging (25 and 50 Mb/s; the
# program refuses them for 100 Mb/s), and damaged streams the decoder must
# survive.
# Usage: test_dv.sh path/to/zanvc-dvdec
dec=$1
here=$(dirname "$0")
command -v ffmpeg >/dev/null 2>&1 || { echo "ffmpeg not found: skipped"; exit 77; }
command -v python3 >/dev/null 2>&1 || { echo "python3 not found: skipped"; exit 77; }
tmp=$(mktemp -d) || exit 1
trap 'rm -rf "$tmp"' EXIT
fail=0

# make NAME SIZE RATE PIXFMT FILTER
# [SOURCE_RATE ENCODER_FLAGS]: a faster source rate with tinterlace makes
# fields that differ, and +ildct lets the encoder choose 2-4-8 blocks.
make() {
    ffmpeg -hide_banner -loglevel error -f lavfi -i "testsrc2=size=$2:rate=${6:-$3}" -frames:v 2 -vf "$5" \
        -pix_fmt "$4" -f rawvideo -y "$tmp/$1.src.yuv" &&
    ffmpeg -hide_banner -loglevel error -f rawvideo -s "$2" -r "$3" -pix_fmt "$4" -i "$tmp/$1.src.yuv" \
        ${7:-} -c:v dvvideo -f dv -y "$tmp/$1.dv" &&
    ffmpeg -hide_banner -loglevel error -i "$tmp/$1.dv" -f rawvideo -y "$tmp/$1.ref.yuv" &&
    ffmpeg -hide_banner -loglevel error -i "$tmp/$1.dv" -pix_fmt yuyv422 -f rawvideo -y "$tmp/$1.refp.yuv" ||
        { echo "FAIL $1: ffmpeg could not make the clip"; fail=1; return 1; }
}

# full NAME W H FORMAT (411, 420, 422: the planar format of the clip)
full() {
    if ! "$dec" "$tmp/$1.dv" "$tmp/$1.yuv"; then echo "FAIL $1: decoder error"; fail=1; return; fi
    if out=$(python3 "$here/compare.py" "$tmp/$1.yuv" "$tmp/$1.ref.yuv" "$tmp/$1.src.yuv" "$2" "$3" "$4" 0.5 0.5); then
        echo "ok   $1: $out"
    else
        echo "FAIL $1: $out"; fail=1
    fi
}

# reduced NAME W H F: against ffmpeg's decoding averaged over F x F
reduced() {
    w=$(($2 / $4)) h=$(($3 / $4))
    ffmpeg -hide_banner -loglevel error -s "$2x$3" -pix_fmt yuyv422 -f rawvideo -i "$tmp/$1.refp.yuv" \
        -vf "scale=$w:$h:flags=area" -pix_fmt yuyv422 -f rawvideo -y "$tmp/$1.ref$4.yuv" || { fail=1; return; }
    if ! "$dec" "$tmp/$1.dv" "$tmp/$1.r$4.yuv" --reduce "$4"; then echo "FAIL $1 /$4: decoder error"; fail=1; return; fi
    # The reference is its own source here; the test is the mean absolute
    # difference against the averaged picture (tolerance 4 levels).
    if out=$(python3 "$here/compare.py" "$tmp/$1.r$4.yuv" "$tmp/$1.ref$4.yuv" "$tmp/$1.ref$4.yuv" "$w" "$h" packed 99 4); then
        echo "ok   $1 /$4: $out"
    else
        echo "FAIL $1 /$4: $out"; fail=1
    fi
}

make ntsc411 720x480 30000/1001 yuv411p null && full ntsc411 720 480 411
make ntsc411noise 720x480 30000/1001 yuv411p "noise=alls=60:allf=t" && full ntsc411noise 720 480 411
make pal420 720x576 25 yuv420p null && full pal420 720 576 420
make pal420noise 720x576 25 yuv420p "noise=alls=60:allf=t" && full pal420noise 720 576 420
make dv50 720x576 25 yuv422p "noise=alls=20:allf=t" && full dv50 720 576 422
make dv50ntsc 720x480 30000/1001 yuv422p null && full dv50ntsc 720 480 422
make pal248 720x576 25 yuv420p "tinterlace=mode=merge" 50 "-flags +ildct" && full pal248 720 576 420
# The interlaced clip must hold 2-4-8 blocks (DCT mode bit of the block header).
blocks248=$(python3 -c '
import sys
d = open(sys.argv[1], "rb").read()
n = 0
for i in range(0, len(d), 80):
    if d[i] >> 5 == 4:
        o = 4
        for size in (14, 14, 14, 14, 10, 10):
            n += (d[i + o + 1] >> 6) & 1
            o += size
print(n)' "$tmp/pal248.dv")
if [ "${blocks248:-0}" -gt 1000 ]; then echo "ok   pal248 holds $blocks248 blocks in 2-4-8 mode"
else echo "FAIL pal248 holds only ${blocks248:-0} blocks in 2-4-8 mode"; fail=1; fi
make ntsc248 720x480 30000/1001 yuv411p "tinterlace=mode=merge" 60000/1001 "-flags +ildct" && full ntsc248 720 480 411
# 100 Mb/s: 1280x1080 (1080/60i), 1440x1080 (1080/50i) and 960x720 (720/60p,
# 720/50p), two frames each.
make hd1080 1280x1080 30000/1001 yuv422p null && full hd1080 1280 1080 422
make hd1080noise 1280x1080 30000/1001 yuv422p "noise=alls=30:allf=t" && full hd1080noise 1280 1080 422
make hd1080i50 1440x1080 25 yuv422p "noise=alls=30:allf=t" && full hd1080i50 1440 1080 422
make hd720 960x720 60000/1001 yuv422p null && full hd720 960 720 422
make hd720noise 960x720 60000/1001 yuv422p "noise=alls=30:allf=t" && full hd720noise 960 720 422
make hd720p50 960x720 50 yuv422p "noise=alls=30:allf=t" && full hd720p50 960 720 422
if "$dec" "$tmp/hd720.dv" "$tmp/hd720.r2.yuv" --reduce 2 2>"$tmp/err"; then echo "FAIL 100 Mb/s --reduce accepted"; fail=1
else echo "ok   100 Mb/s --reduce refused: $(cat "$tmp/err")"; fi
for f in 2 4 8; do
    reduced pal420 720 576 $f
    reduced ntsc411 720 480 $f
    reduced dv50 720 576 $f
done

# Damaged streams: every video DIF block's payload overwritten with noise,
# a truncated file, and a file of a foreign kind.  No crash, a clear message
# for what is refused.
python3 - "$tmp/pal420.dv" "$tmp/bad.dv" <<'PY'
import random, sys
d = bytearray(open(sys.argv[1], "rb").read())
random.seed(3)
for i in range(0, len(d), 80):
    if d[i] >> 5 == 4:
        for k in range(4, 80):
            d[i + k] = random.randrange(256)
open(sys.argv[2], "wb").write(d)
PY
if "$dec" "$tmp/bad.dv" "$tmp/bad.yuv"; then echo "ok   damaged payload decoded without failure"; else echo "FAIL damaged payload"; fail=1; fi
python3 - "$tmp/hd1080noise.dv" "$tmp/badhd.dv" <<'PY'
import random, sys
d = bytearray(open(sys.argv[1], "rb").read())
random.seed(5)
for i in range(0, len(d), 80):
    if d[i] >> 5 == 4:
        for k in range(3, 80):
            d[i + k] = random.randrange(256)
open(sys.argv[2], "wb").write(d)
PY
if "$dec" "$tmp/badhd.dv" "$tmp/badhd.yuv"; then echo "ok   damaged 100 Mb/s payload decoded without failure"
else echo "FAIL damaged 100 Mb/s payload"; fail=1; fi
head -c 100000 "$tmp/pal420.dv" > "$tmp/short.dv"
if "$dec" "$tmp/short.dv" "$tmp/short.yuv" 2>"$tmp/err"; then echo "FAIL truncated accepted"; fail=1
else echo "ok   truncated refused: $(cat "$tmp/err")"; fi
head -c 400 /dev/zero > "$tmp/zero.dv"
if "$dec" "$tmp/zero.dv" "$tmp/zero.yuv" 2>"$tmp/err"; then echo "FAIL zero file accepted"; fail=1
else echo "ok   foreign file refused: $(cat "$tmp/err")"; fi
exit $fail
