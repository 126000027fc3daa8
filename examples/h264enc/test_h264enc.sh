#!/bin/sh
# zanvc-h264enc against independent decoders: short clips from ffmpeg's test
# sources are encoded at several QPs with CAVLC and CABAC, loop filter on and
# off, at sizes that are and are not multiples of 16.  ffmpeg's decoding of
# every stream must equal the encoder's --recon byte for byte; the example
# decoder zanvc-h264dec must agree on the CAVLC streams.  A CABAC run that
# starts with a buffer of a few bytes must report buffer moves and repeated
# residual blocks and still give the very same stream.
# Usage: test_h264enc.sh path/to/zanvc-h264enc [path/to/zanvc-h264dec]
enc=$1
dec=$2
command -v ffmpeg >/dev/null 2>&1 && command -v ffprobe >/dev/null 2>&1 || { echo "ffmpeg not found: skipped"; exit 77; }
tmp=$(mktemp -d) || exit 1
trap 'rm -rf "$tmp"' EXIT
fail=0
n=0
profiled=

# source NAME LAVFI-SOURCE SIZE FRAMES
source() {
    ffmpeg -hide_banner -loglevel error -f lavfi -i "$2=size=$3:rate=25" -frames:v "$4" -pix_fmt yuv420p \
        -f rawvideo -y "$tmp/$1.yuv" || { echo "FAIL source $1"; fail=1; }
}

# run SOURCE W H QP [encoder options]
run() {
    src=$1 w=$2 h=$3 qp=$4
    shift 4
    name="${src}_q${qp}$(echo "$@" | tr -d ' -')"
    n=$((n + 1))
    if ! "$enc" "$tmp/$src.yuv" "$w" "$h" "$tmp/$name.264" --qp "$qp" --recon "$tmp/$name.rec" "$@" >"$tmp/log.txt"; then
        echo "FAIL $name: encoder error"; cat "$tmp/log.txt"; fail=1; return
    fi
    # The stream must hold whole pictures of the clip, and not be empty.
    frames=$(($(wc -c <"$tmp/$src.yuv") / (w * h * 3 / 2)))
    [ "$(wc -c <"$tmp/$name.rec")" -eq $((frames * w * h * 3 / 2)) ] || { echo "FAIL $name: recon size"; fail=1; return; }
    if ! ffmpeg -hide_banner -loglevel error -xerror -i "$tmp/$name.264" -f rawvideo -pix_fmt yuv420p -y "$tmp/$name.ff" 2>"$tmp/fferr.txt" ||
        [ -s "$tmp/fferr.txt" ]; then
        echo "FAIL $name: ffmpeg decode: $(head -3 "$tmp/fferr.txt")"; fail=1; return
    fi
    if ! cmp -s "$tmp/$name.ff" "$tmp/$name.rec"; then
        echo "FAIL $name: ffmpeg output differs from the recon ($(cmp "$tmp/$name.ff" "$tmp/$name.rec" 2>&1 | head -1))"
        fail=1; return
    fi
    # CAVLC streams declare (Constrained) Baseline, CABAC streams Main
    # (asked of ffprobe once per entropy coder: each call costs time).
    result="ffmpeg equal"
    case " $* " in *" --cabac "*) kind=cabac ;; *) kind=cavlc ;; esac
    if ! echo "$profiled" | grep -q $kind; then
        profiled="$profiled $kind"
        profile=$(ffprobe -v error -select_streams v:0 -show_entries stream=profile -of default=nw=1:nk=1 "$tmp/$name.264")
        case "$kind|$profile" in
        "cabac|Main" | "cavlc|Constrained Baseline" | "cavlc|Baseline") result="$profile, $result" ;;
        *) echo "FAIL $name: profile '$profile' for $kind"; fail=1; return ;;
        esac
    fi
    case " $* " in
    *" --cabac "*) ;;
    *)
        if [ -n "$dec" ]; then
            if ! "$dec" "$tmp/$name.264" "$tmp/$name.zd" 2>"$tmp/decerr.txt"; then
                echo "FAIL $name: zanvc-h264dec: $(cat "$tmp/decerr.txt")"; fail=1; return
            fi
            if ! cmp -s "$tmp/$name.zd" "$tmp/$name.rec"; then
                echo "FAIL $name: zanvc-h264dec output differs from the recon"; fail=1; return
            fi
            result="$result, zanvc-h264dec equal"
        fi
        ;;
    esac
    echo "ok   $name: $(wc -c <"$tmp/$name.264") bytes, $result"
}

source t2 testsrc2 176x144 3
source mb mandelbrot 176x144 2
source odd testsrc2 200x120 2
source bars smptehdbars 96x64 2
# Samples of 0 or 255 at random: the largest residuals and levels.
ffmpeg -hide_banner -loglevel error -f lavfi -i "nullsrc=size=176x144:rate=25,geq=lum='255*gt(random(1),0.5)':cb='255*gt(random(2),0.5)':cr='255*gt(random(3),0.5)',format=yuv420p" \
    -frames:v 2 -f rawvideo -y "$tmp/noise.yuv" || { echo "FAIL source noise"; fail=1; }

for qp in 10 22 30 38 51; do
    run t2 176 144 $qp
    run t2 176 144 $qp --cabac
done
for qp in 16 28 44; do
    run mb 176 144 $qp
    run mb 176 144 $qp --cabac
done
run mb 176 144 26 --no-deblock
run mb 176 144 26 --cabac --no-deblock
run odd 200 120 24
run odd 200 120 34 --cabac
run bars 96 64 20
run bars 96 64 20 --cabac
# Low QPs: the largest levels.
run mb 176 144 2
run mb 176 144 2 --cabac
run noise 176 144 0
run noise 176 144 0 --cabac

# A CABAC buffer far too small: the coder reports its end, the encoder moves
# it to larger buffers, repeats the refused residual blocks, and the stream
# is the same as with a buffer of the right size.
n=$((n + 1))
"$enc" "$tmp/t2.yuv" 176 144 "$tmp/small.264" --qp 14 --cabac --cabac-buffer 16 >"$tmp/small.txt" &&
    "$enc" "$tmp/t2.yuv" 176 144 "$tmp/big.264" --qp 14 --cabac >/dev/null || { echo "FAIL small buffer: encoder error"; fail=1; }
moves=$(sed -n 's/^CABAC buffer moves \([0-9]*\), residual blocks repeated \([0-9]*\)$/\1 \2/p' "$tmp/small.txt")
set -- $moves
if [ "${1:-0}" -gt 0 ] && [ "${2:-0}" -gt 0 ] && cmp -s "$tmp/small.264" "$tmp/big.264"; then
    echo "ok   small CABAC buffer: $1 moves, $2 residual blocks repeated, same stream"
else
    echo "FAIL small CABAC buffer: moves '${1:-}' repeats '${2:-}', streams $(cmp -s "$tmp/small.264" "$tmp/big.264" && echo equal || echo differ)"
    fail=1
fi

# Arguments the command refuses.
n=$((n + 1))
if "$enc" "$tmp/t2.yuv" 175 144 "$tmp/x.264" 2>/dev/null || "$enc" "$tmp/t2.yuv" 176 144 "$tmp/x.264" --qp 52 2>/dev/null; then
    echo "FAIL bad arguments accepted"; fail=1
else
    echo "ok   odd width and QP 52 refused"
fi

echo "$n checks"
exit $fail
