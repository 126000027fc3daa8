#!/usr/bin/env bash
# End-to-end checks of the MPEG-2 example programs against ffmpeg:
#  1. our encoder's streams decode in ffmpeg to our own reconstruction
#     (no sample off by more than 2, PSNR against the source within 0.5 dB);
#  2. our decoder matches ffmpeg's decode of ffmpeg's intra streams (plain,
#     intra VLC table one, non-linear quantiser, alternate scan, 9- and
#     10-bit DC, loaded intra weights) under the same bounds;
#  3. re-encoding ffmpeg's streams from the decoded levels gives the same bytes;
#  4. truncated and bit-flipped streams end with a message, never a crash.
# Usage: test_mpeg2.sh ENC DEC YUVCMP.  Exit 77 (skip) without ffmpeg.
set -u
ENC=$1 DEC=$2 CMP=$3
command -v ffmpeg >/dev/null 2>&1 || { echo "ffmpeg not found: skipped"; exit 77; }
T=$(mktemp -d)
trap 'rm -rf "$T"' EXIT
FF="ffmpeg -hide_banner -loglevel error -nostdin -y"
fail=0 worstPsnr=0 worstDiff=0 cases=0

bad() { echo "FAIL: $*"; fail=1; }

# compare NAME OURS THEIRS SOURCE: bounds and running worst case.
compare() {
    local name=$1 ours=$2 theirs=$3 src=$4
    local d po pt
    read -r _ _ _ d <<<"$("$CMP" "$ours" "$theirs")" || { bad "$name: size mismatch"; return; }
    read -r _ po _ _ <<<"$("$CMP" "$ours" "$src")"
    read -r _ pt _ _ <<<"$("$CMP" "$theirs" "$src")"
    local dp
    dp=$(awk -v a="$po" -v b="$pt" 'BEGIN { d = a - b; if (d < 0) d = -d; printf "%.3f", d }')
    printf '%-44s ours %7.3f dB  ffmpeg %7.3f dB  |diff| %s dB  max sample diff %s\n' "$name" "$po" "$pt" "$dp" "$d"
    awk -v x="$dp" 'BEGIN { exit !(x <= 0.5) }' || bad "$name: PSNR differs by $dp dB"
    [ "$d" -le 2 ] || bad "$name: a sample differs by $d"
    awk -v x="$dp" -v w="$worstPsnr" 'BEGIN { exit !(x > w) }' && worstPsnr=$dp
    [ "$d" -gt "$worstDiff" ] && worstDiff=$d
    cases=$((cases + 1))
}

# Sources: name, size, lavfi graph.
make_src() {
    $FF -f lavfi -i "$3" -frames:v 3 -pix_fmt yuv420p -f rawvideo "$T/$1.yuv" || bad "ffmpeg could not make $1"
}
make_src testsrc 176x144 "testsrc2=s=176x144:r=25"
make_src mandel 200x120 "mandelbrot=s=200x120:r=25"
make_src noise 72x40 "nullsrc=s=72x40:r=25,geq=random(1)*255:128+60*sin(X/3):random(2)*255"
make_src pal 720x576 "testsrc2=s=720x576:r=25"
size() { case $1 in testsrc) echo 176x144;; mandel) echo 200x120;; noise) echo 72x40;; pal) echo 720x576;; esac; }

# 1. Our encoder, decoded by ffmpeg.
for src in testsrc mandel noise; do
    s=$(size $src); w=${s%x*}; h=${s#*x}
    for opt in "--qscale 1" "--qscale 4" "--qscale 12 --intra-vlc" "--qscale 31 --alternate-scan" \
               "--qscale 3 --dc-precision 2 --intra-vlc --alternate-scan"; do
        tag="enc $src ${opt// /}"
        if ! "$ENC" "$T/$src.yuv" "$w" "$h" "$T/o.m2v" $opt --recon "$T/rec.yuv" >/dev/null; then
            bad "$tag: encoder failed"; continue
        fi
        $FF -i "$T/o.m2v" -f rawvideo -pix_fmt yuv420p "$T/ff.yuv" || { bad "$tag: ffmpeg cannot decode it"; continue; }
        compare "$tag" "$T/rec.yuv" "$T/ff.yuv" "$T/$src.yuv"
        # Our decoder reads our stream to exactly our reconstruction.
        "$DEC" "$T/o.m2v" "$T/dec.yuv" 2>/dev/null && cmp -s "$T/dec.yuv" "$T/rec.yuv" ||
            bad "$tag: our decoder does not reproduce the reconstruction"
    done
done

# 2 and 3. ffmpeg's intra streams through our decoder and the re-encoder.
flat=$(printf '%s' "$(yes 24 | head -64 | paste -sd,)")
n=0
for src in testsrc mandel noise pal; do
    s=$(size $src)
    for opt in "-q:v 2" "-q:v 6 -intra_vlc 1" "-q:v 9 -qmax 28 -non_linear_quant 1" "-q:v 4 -alternate_scan 1" \
               "-q:v 3 -dc 9" "-q:v 5 -dc 10 -intra_vlc 1 -alternate_scan 1 -qmax 28 -non_linear_quant 1" \
               "-q:v 20" "-q:v 4 -intra_matrix $flat" "-q:v 3 -flags +ildct -alternate_scan 1"; do
        [ $src = pal ] && [ $n -ge 2 ] && continue  # keep the large pictures to a few cases
        [ $src = pal ] && n=$((n + 1))
        tag="dec $src ${opt// /}"
        tag=${tag:0:44}
        $FF -f rawvideo -pix_fmt yuv420p -s "$s" -r 25 -i "$T/$src.yuv" -c:v mpeg2video -g 1 $opt \
            -f mpeg2video "$T/ff.m2v" || { bad "$tag: ffmpeg could not encode"; continue; }
        $FF -i "$T/ff.m2v" -f rawvideo -pix_fmt yuv420p "$T/ff.yuv" || { bad "$tag: ffmpeg decode failed"; continue; }
        if "$DEC" "$T/ff.m2v" "$T/dec.yuv" 2>"$T/err"; then
            compare "$tag" "$T/dec.yuv" "$T/ff.yuv" "$T/$src.yuv"
        else
            bad "$tag: our decoder failed: $(cat "$T/err")"
        fi
        if "$DEC" --reencode "$T/ff.m2v" "$T/re.m2v" 2>"$T/err"; then
            cmp -s "$T/ff.m2v" "$T/re.m2v" || bad "$tag: the re-encoded stream differs ($(cmp "$T/ff.m2v" "$T/re.m2v" | head -1))"
        else
            bad "$tag: re-encode failed: $(cat "$T/err")"
        fi
    done
done

# 4. Damaged streams: truncations and bit flips.  A clean refusal is exit 1
# with a message; a damaged stream that still parses may decode (exit 0).
damaged=0 refused=0
check_damaged() {
    timeout 20 "$DEC" "$1" "$T/x.yuv" 2>"$T/err"
    local rc=$?
    damaged=$((damaged + 1))
    if [ $rc -ne 0 ]; then
        if [ $rc -ne 1 ] || ! grep -q "zanvc-mpeg2dec: " "$T/err"; then
            bad "damaged stream $2: exit $rc, message: $(head -c 200 "$T/err")"
        fi
        refused=$((refused + 1))
    fi
}
$FF -f rawvideo -pix_fmt yuv420p -s 176x144 -r 25 -i "$T/testsrc.yuv" -c:v mpeg2video -g 1 -q:v 3 -intra_vlc 1 \
    -f mpeg2video "$T/base.m2v" || bad "ffmpeg could not encode the damage base"
len=$(stat -c %s "$T/base.m2v")
for cut in 1 3 4 7 12 40 100 $((len / 3)) $((len / 2)) $((len - 30)) $((len - 5)); do
    head -c "$cut" "$T/base.m2v" >"$T/cut.m2v"
    check_damaged "$T/cut.m2v" "cut at $cut"
done
RANDOM=12345
for i in $(seq 1 60); do
    cp "$T/base.m2v" "$T/flip.m2v"
    for k in 1 2 3; do
        off=$(( (RANDOM * 32768 + RANDOM) % len ))
        byte=$(od -An -tu1 -j "$off" -N1 "$T/flip.m2v" | tr -d ' ')
        nb=$(( byte ^ (1 << (RANDOM % 8)) ))
        printf "$(printf '\\%03o' "$nb")" | dd of="$T/flip.m2v" bs=1 seek="$off" conv=notrunc status=none
    done
    check_damaged "$T/flip.m2v" "flips #$i"
done
echo "damaged streams: $damaged, refused with a message: $refused, none crashed or hung"

echo "worst case over $cases comparisons: |PSNR difference| $worstPsnr dB, max sample difference $worstDiff"
[ $fail -eq 0 ] && echo "all mpeg2 example checks passed"
exit $fail
