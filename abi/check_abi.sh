#!/usr/bin/env bash
# Compares the libraries of a build with the ABI baselines.  Additions pass;
# a removed or changed export, or a changed record layout, fails.
#   check_abi.sh BASELINE_DIR IMAGE_DIR LIBZANVCU8 LIBZANCORE
# The built libraries are compared by their exported symbols (their stubs
# carry no types); the ABI images, built from the public headers with debug
# information, by the types of every export and of every record they reach.
set -euo pipefail
base=${1:?} images=${2:?} real_zanvcu8=${3:?} real_zancore=${4:?}
for tool in abidw abidiff; do
  command -v $tool > /dev/null || { echo "SKIP: $tool not found (package abigail-tools)"; exit 77; }
done
tmp=$(mktemp -d "${TMPDIR:-/tmp}/zanvc-abi.XXXXXX")
trap 'rm -rf "$tmp"' EXIT
fail=0
compare() {  # label baseline library
  local out=$tmp/diff.txt rc=0
  abidiff --no-added-syms "$2" "$3" > "$out" 2>&1 || rc=$?
  if [ $rc -eq 0 ]; then
    echo "ok   $1: $(grep -m1 'Functions changes summary' "$out" || echo 'no change')"
  else
    echo "FAIL $1 (abidiff status $rc): the ABI changed incompatibly"
    sed 's/^/     /' "$out"
    fail=1
  fi
}
for lib in zanvcu8 zancore; do
  baseline=$base/lib$lib.abi
  [ -f "$baseline" ] || { echo "FAIL no baseline $baseline"; fail=1; continue; }
  real=real_$lib
  compare "lib$lib exports" "$baseline" "${!real}"
  image=$(ls "$images"/lib$lib.so.*.* | head -1)
  compare "lib$lib types" "$baseline" "$image"
  # The image stands for the real library only if both export the same names.
  if ! diff <(nm -D --defined-only "${!real}" | awk '{print $3}' | sort) \
            <(nm -D --defined-only "$image" | awk '{print $3}' | sort) > "$tmp/names" ; then
    echo "FAIL lib$lib: the ABI image and the library export different names:"; sed 's/^/     /' "$tmp/names"; fail=1
  fi
done
if [ $fail = 0 ]; then echo "ABI check passed"; else
  echo "ABI check FAILED.  If the change is meant (a new major version), refresh the"
  echo "baselines with: cmake --build <build dir> --target abi-baseline"
fi
exit $fail
