#!/usr/bin/env bash
# Builds and checks the project with the presets of CMakePresets.json.
#   ./build.sh test   release build and tests (with the API reference and ABI
#                     checks), sanitizer build and tests, the install and
#                     package checks, then short runs of the fuzz targets
#   ./build.sh demo   release build, then the zanvc H.264 demo on its built-in clip
# Missing build dependencies are installed with apt-get first.
set -euo pipefail
cd "$(dirname "$0")"
export CMAKE_BUILD_PARALLEL_LEVEL=${CMAKE_BUILD_PARALLEL_LEVEL:-2}
export CTEST_PARALLEL_LEVEL=${CTEST_PARALLEL_LEVEL:-2}

# Debian packages the build and the tests need (ffmpeg makes and codes the
# test pictures), each with a file that shows it installed.
deps=(
  "g++:/usr/bin/g++"
  "make:/usr/bin/make"
  "cmake:/usr/bin/cmake"
  "libgtest-dev:/usr/include/gtest/gtest.h"
  "libbenchmark-dev:/usr/include/benchmark/benchmark.h"
  "pkg-config:/usr/bin/pkg-config"
  "binutils:/usr/bin/objdump"
  "ffmpeg:/usr/bin/ffmpeg"
  "clang:/usr/bin/clang++"
  "libclang-rt-14-dev:/usr/lib/llvm-14/lib/clang/14.0.6/lib/linux/libclang_rt.fuzzer-x86_64.a"
  "python3:/usr/bin/python3"
  "doxygen:/usr/bin/doxygen"
  "abigail-tools:/usr/bin/abidiff"
  "libavutil-dev:/usr/include/x86_64-linux-gnu/libavutil/pixelutils.h"
)

install_deps() {
  local missing=() entry pkg file
  for entry in "${deps[@]}"; do
    pkg=${entry%%:*} file=${entry#*:}
    if [ ! -e "$file" ] || ! dpkg -s "$pkg" > /dev/null 2>&1; then
      # pkg-config may come from pkgconf alone; the command is what counts.
      if [ "$pkg" = pkg-config ] && command -v pkg-config > /dev/null; then continue; fi
      missing+=("$pkg")
    fi
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "== installing ${missing[*]}"
  local as_root=(env DEBIAN_FRONTEND=noninteractive)
  [ "$(id -u)" -eq 0 ] || as_root=(sudo "${as_root[@]}")
  "${as_root[@]}" apt-get update
  "${as_root[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
}

step() {  # name command...: runs a step and prints how long it took
  local name=$1 start=$SECONDS
  shift
  echo "== $name"
  "$@"
  echo "== $name: done in $((SECONDS - start)) s"
}

case ${1:-} in
  test)
    install_deps
    step "release: configure, build, test" cmake --workflow --preset test
    step "asan: configure, build, test" cmake --workflow --preset asan
    step "install check" tests/install/check_install.sh build/release
    step "packages: .deb and .tar.gz, unpacked and used" tests/install/check_package.sh build/release
    step "fuzz: clang build, short runs of every target" cmake --workflow --preset fuzz
    ;;
  demo)
    install_deps
    step "release build and demo" cmake --workflow --preset demo
    ;;
  *)
    echo "usage: $0 test|demo" >&2
    exit 2
    ;;
esac
