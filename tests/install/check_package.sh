#!/usr/bin/env bash
# Builds the packages of a build and uses them as a system would: the .deb
# files carry the release version, the runtime package holds only the
# libraries, the dev package the rest; both unpacked into a scratch root
# (dpkg-deb -x) give an install that check_install.sh then builds and runs
# its consumers against.  The .tar.gz holds the same files.
#   check_package.sh BUILD_DIR
set -euo pipefail
build=$(cd "${1:?usage: check_package.sh BUILD_DIR}" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=/dev/null
. "$build/zanvc_release.env"
tmp=$(mktemp -d "${TMPDIR:-/tmp}/zanvc-package.XXXXXX")
trap 'rm -rf "$tmp"' EXIT
fail=0

(cd "$build" && cpack -B "$tmp/pkg" > "$tmp/cpack.log" 2>&1) || { cat "$tmp/cpack.log"; exit 1; }
version=$ZANVC_VERSION-$ZANVC_BUILD_NUMBER
runtime=$tmp/pkg/libzanvc${ZANVC_SO_MAJOR}_${version}_amd64.deb
dev=$tmp/pkg/libzanvc-dev_${version}_amd64.deb
tarball=$(ls "$tmp"/pkg/zanvc-"$ZANVC_VERSION"-r"$ZANVC_BUILD_NUMBER"-*.tar.gz 2>/dev/null | head -1)
for f in "$runtime" "$dev" "$tarball"; do
  if [ -f "$f" ]; then echo "ok   $(basename "$f")"; else echo "FAIL package ${f:-tar.gz} missing; made: $(ls "$tmp/pkg")"; exit 1; fi
done

for deb in "$runtime" "$dev"; do
  v=$(dpkg-deb -f "$deb" Version)
  [ "$v" = "$version" ] && echo "ok   $(dpkg-deb -f "$deb" Package) $v" || { echo "FAIL $(basename "$deb") version $v"; fail=1; }
done
want_dep="libzanvc${ZANVC_SO_MAJOR} (= $version)"
case $(dpkg-deb -f "$dev" Depends) in *"$want_dep"*) echo "ok   dev depends on $want_dep" ;;
  *) echo "FAIL dev depends: $(dpkg-deb -f "$dev" Depends)"; fail=1 ;; esac

# What each package holds.
rt_files=$(dpkg-deb -c "$runtime" | awk '{print $6}' | grep -v '/$' | sort)
expect_rt=$(printf '%s\n' ./usr/lib/libzancore.so."$ZANVC_SO_MAJOR" ./usr/lib/libzancore.so."$ZANVC_SO_VERSION" \
                         ./usr/lib/libzanvcu8.so."$ZANVC_SO_MAJOR" ./usr/lib/libzanvcu8.so."$ZANVC_SO_VERSION" | sort)
if [ "$rt_files" = "$expect_rt" ]; then echo "ok   runtime package: the two libraries only"; else
  echo "FAIL runtime package holds:"; echo "$rt_files" | sed 's/^/     /'; fail=1; fi
dev_files=$(dpkg-deb -c "$dev" | awk '{print $6}' | grep -v '/$' | sort)
for f in ./usr/include/zanvc.h ./usr/include/zancore.h ./usr/lib/libzanvcu8.so ./usr/lib/libzancore.so \
         ./usr/lib/pkgconfig/zanvc.pc ./usr/lib/cmake/zanvc/zanvcConfig.cmake; do
  echo "$dev_files" | grep -qx "$f" || { echo "FAIL dev package lacks $f"; fail=1; }
done
if echo "$dev_files" | grep -q '\.so\.'; then echo "FAIL dev package holds a versioned library"; fail=1; fi

# The tarball: the same files as both packages together.
tar_files=$(tar -tzf "$tarball" | grep -v '/$' | sed 's|^[^/]*/||' | sort)
deb_files=$(printf '%s\n%s\n' "$rt_files" "$dev_files" | sed 's|^\./||' | sort)
if [ "$tar_files" = "$deb_files" ]; then echo "ok   tar.gz holds the files of both packages"; else
  echo "FAIL tar.gz differs from the packages:"; diff <(echo "$deb_files") <(echo "$tar_files") | sed 's/^/     /'; fail=1; fi

# Unpacked as the system would, then used by outside projects.
mkdir -p "$tmp/root"
dpkg-deb -x "$runtime" "$tmp/root"
dpkg-deb -x "$dev" "$tmp/root"
"$here/check_install.sh" "$build" "$tmp/root/usr" || fail=1

if [ $fail = 0 ]; then echo "package check passed"; else echo "package check FAILED"; fi
exit $fail
