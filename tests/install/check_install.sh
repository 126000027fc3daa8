#!/usr/bin/env bash
# Installs a build to a temporary prefix and uses it as an outside project
# would: the files and symlinks are where they belong, and a small C program
# builds against them through the CMake package and through pkg-config, and
# runs.
#   check_install.sh BUILD_DIR
# CMAKE and CC name the tools to use (default: cmake, cc).
set -euo pipefail
build=${1:?usage: check_install.sh BUILD_DIR}
here=$(cd "$(dirname "$0")" && pwd)
cmake=${CMAKE:-cmake}
cc=${CC:-cc}
tmp=$(mktemp -d "${TMPDIR:-/tmp}/zanvc-install.XXXXXX")
trap 'rm -rf "$tmp"' EXIT
prefix=$tmp/prefix
fail=0

"$cmake" --install "$build" --prefix "$prefix" > "$tmp/install.log"

# Files, and the library names as the loader and the linker look for them.
check_lib() {  # name: libNAME.so.7.1 a file, .so.7 and .so symlinks
  local lib=$prefix/lib/lib$1.so
  if [ -f "$lib.7.1" ] && [ ! -L "$lib.7.1" ]; then echo "ok   lib/lib$1.so.7.1"; else echo "FAIL lib/lib$1.so.7.1 missing or not a file"; fail=1; fi
  if [ -L "$lib.7" ] && [ "$(readlink "$lib.7")" = "lib$1.so.7.1" ]; then echo "ok   lib/lib$1.so.7 -> lib$1.so.7.1"; else echo "FAIL lib/lib$1.so.7 not a symlink to lib$1.so.7.1"; fail=1; fi
  if [ -L "$lib" ] && [ "$(readlink "$lib")" = "lib$1.so.7" ]; then echo "ok   lib/lib$1.so -> lib$1.so.7"; else echo "FAIL lib/lib$1.so not a symlink to lib$1.so.7"; fail=1; fi
}
check_lib zanvcu8
check_lib zancore
for f in include/zanvc.h include/zancore.h lib/pkgconfig/zanvc.pc \
         lib/cmake/zanvc/zanvcConfig.cmake lib/cmake/zanvc/zanvcConfigVersion.cmake lib/cmake/zanvc/zanvcTargets.cmake; do
  if [ -f "$prefix/$f" ]; then echo "ok   $f"; else echo "FAIL $f missing"; fail=1; fi
done
for h in zanvc.h zancore.h; do
  cmp -s "$prefix/include/$h" "$here/../../include/$h" || { echo "FAIL include/$h differs from the source"; fail=1; }
done

# Nothing of the install may point back into the build or source tree.
if grep -rlI -e "$(cd "$build" && pwd)" -e "$(cd "$here/../.." && pwd)" "$prefix" > "$tmp/leaks" 2>/dev/null; then
  echo "FAIL installed files name the build or source tree:"; sed 's/^/     /' "$tmp/leaks"; fail=1
fi

# The CMake package.
if "$cmake" -S "$here" -B "$tmp/cmake-build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_C_COMPILER="$cc" \
     > "$tmp/cmake.log" 2>&1 && "$cmake" --build "$tmp/cmake-build" >> "$tmp/cmake.log" 2>&1; then
  if out=$(LD_LIBRARY_PATH=$prefix/lib "$tmp/cmake-build/consumer" 2>&1); then
    echo "ok   find_package(zanvc): $out"
  else
    echo "FAIL find_package(zanvc) consumer: $out"; fail=1
  fi
else
  echo "FAIL find_package(zanvc) build:"; sed 's/^/     /' "$tmp/cmake.log"; fail=1
fi

# pkg-config, with the prefix the .pc file finds for itself.
if flags=$(PKG_CONFIG_PATH=$prefix/lib/pkgconfig pkg-config --cflags --libs zanvc) &&
   "$cc" -std=c99 -o "$tmp/consumer-pc" "$here/consumer.c" $flags > "$tmp/pc.log" 2>&1; then
  if out=$(LD_LIBRARY_PATH=$prefix/lib "$tmp/consumer-pc" 2>&1); then
    echo "ok   pkg-config zanvc ($flags): $out"
  else
    echo "FAIL pkg-config consumer: $out"; fail=1
  fi
else
  echo "FAIL pkg-config build (flags: ${flags:-none}):"; sed 's/^/     /' "$tmp/pc.log" 2>/dev/null || true; fail=1
fi

if [ $fail = 0 ]; then echo "install check passed"; else echo "install check FAILED"; fi
exit $fail
