#!/usr/bin/env bash
# Installs a build to a temporary prefix and uses it as an outside project
# would: the files and symlinks are where they belong, and a small C program
# builds against them through the CMake package and through pkg-config, and
# runs.
#   check_install.sh BUILD_DIR [PREFIX]
# With PREFIX the files are already there (unpacked from the packages) and
# the build directory only gives the version they must carry.
# CMAKE and CC name the tools to use (default: cmake, cc).
set -euo pipefail
build=${1:?usage: check_install.sh BUILD_DIR [PREFIX]}
# shellcheck source=/dev/null
. "$build/zanvc_release.env"
so=$ZANVC_SO_VERSION major=$ZANVC_SO_MAJOR
here=$(cd "$(dirname "$0")" && pwd)
cmake=${CMAKE:-cmake}
cc=${CC:-cc}
tmp=$(mktemp -d "${TMPDIR:-/tmp}/zanvc-install.XXXXXX")
trap 'rm -rf "$tmp"' EXIT
prefix=${2:-$tmp/prefix}
fail=0

[ $# -ge 2 ] || "$cmake" --install "$build" --prefix "$prefix" > "$tmp/install.log"

# Files, and the library names as the loader and the linker look for them.
check_lib() {  # name: libNAME.so.MAJOR.MINOR a file, .so.MAJOR and .so symlinks
  local lib=$prefix/lib/lib$1.so n=lib$1.so
  if [ -f "$lib.$so" ] && [ ! -L "$lib.$so" ]; then echo "ok   lib/$n.$so"; else echo "FAIL lib/$n.$so missing or not a file"; fail=1; fi
  if [ -L "$lib.$major" ] && [ "$(readlink "$lib.$major")" = "$n.$so" ]; then echo "ok   lib/$n.$major -> $n.$so"; else echo "FAIL lib/$n.$major not a symlink to $n.$so"; fail=1; fi
  if [ -L "$lib" ] && [ "$(readlink "$lib")" = "$n.$major" ]; then echo "ok   lib/$n -> $n.$major"; else echo "FAIL lib/$n not a symlink to $n.$major"; fail=1; fi
  local soname
  soname=$(readelf -d "$lib.$so" 2>/dev/null | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
  if [ "$soname" = "$n.$major" ]; then echo "ok   SONAME $soname"; else echo "FAIL SONAME of $n.$so is '$soname'"; fail=1; fi
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
     -DZANVC_EXPECT_VERSION="$so" \
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

# Both package descriptions carry the release version.
pcver=$(PKG_CONFIG_PATH=$prefix/lib/pkgconfig pkg-config --modversion zanvc 2>/dev/null || true)
if [ "$pcver" = "$ZANVC_VERSION" ]; then echo "ok   pkg-config version $pcver"; else echo "FAIL pkg-config version '$pcver', want $ZANVC_VERSION"; fail=1; fi
if grep -q "PACKAGE_VERSION \"$ZANVC_VERSION\"" "$prefix/lib/cmake/zanvc/zanvcConfigVersion.cmake"; then
  echo "ok   CMake package version $ZANVC_VERSION"
else
  echo "FAIL CMake package version file does not say $ZANVC_VERSION"; fail=1
fi

if [ $fail = 0 ]; then echo "install check passed"; else echo "install check FAILED"; fi
exit $fail
