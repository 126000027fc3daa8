#!/usr/bin/env bash
# Checks the built libraries themselves:
#  - libzanvcu8 exports exactly the names of the export list, nothing else;
#  - no instruction above SSSE3 (no SSE4, AVX, MOVBE) in either library;
#  - nothing is needed at run time but libc and libzancore.
set -euo pipefail
lib=$1 core=$2 list=$3 major=$4  # major: the SONAME version
fail=0

want=$(sed -n 's/^ZAN_EXPORT([a-z0-9]*, *\([A-Za-z0-9_]*\)).*/\1/p' "$list" | sort)
have=$(nm -D --defined-only "$lib" | awk '{print $3}' | sed 's/@.*//' | sort)
if [ "$want" != "$have" ]; then
  echo "exported names differ from the export list:"; diff <(echo "$want") <(echo "$have") || true; fail=1
else
  echo "exports: $(echo "$have" | wc -l) names, exactly the list"
fi

above='\s(v[a-z0-9]+|pmulld|pminsd|pmaxsd|pminud|pmaxud|pminsb|pmaxsb|pminuw|pmaxuw|ptest|pblendw|pblendvb|blendvps|blendvpd|blendps|blendpd|pextrb|pextrd|pextrq|pinsrb|pinsrd|pinsrq|pmovzx[a-z]+|pmovsx[a-z]+|packusdw|pcmpeqq|pcmpgtq|pcmpestr[im]|pcmpistr[im]|roundps|roundpd|roundss|roundsd|dpps|dppd|mpsadbw|phminposuw|movntdqa|insertps|extractps|popcnt|lzcnt|tzcnt|movbe|crc32|shlx|shrx|sarx|andn|bextr)\b'
for f in "$lib" "$core"; do
  hits=$(objdump -d --no-show-raw-insn "$f" | grep -E -c "$above" || true)
  if [ "$hits" != 0 ]; then
    echo "$f: $hits instructions above SSSE3:"; objdump -d --no-show-raw-insn "$f" | grep -E "$above" | head; fail=1
  else
    echo "$(basename "$f"): SSE2/SSSE3 only"
  fi
done

needed=$(readelf -d "$lib" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | sort | tr '\n' ' ')
for n in $needed; do
  case $n in libc.so.6|"libzancore.so.$major") ;; *) echo "$lib needs $n"; fail=1 ;; esac
done
echo "needed: $needed"
cneeded=$(readelf -d "$core" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | tr '\n' ' ')
for n in $cneeded; do
  case $n in libc.so.6) ;; *) echo "$core needs $n"; fail=1 ;; esac
done
soname=$(readelf -d "$lib" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[ "$soname" = "libzanvcu8.so.$major" ] || { echo "soname $soname"; fail=1; }
# No C++ runtime: no exception tables' personality, no RTTI.
if nm -D "$lib" | grep -v -E ' __cxa_finalize(@[A-Z0-9_.]+)?$' | grep -q -E '__cxa|__gxx_personality|_ZTI|_ZTS|_Znw|_Zdl'; then echo "C++ runtime symbols in $lib"; fail=1; fi
exit $fail
