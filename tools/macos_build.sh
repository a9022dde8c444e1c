#!/usr/bin/env bash
# Cross-compiles the library and everything that tests it for macOS, x86_64 and arm64; checks the exported symbols and the
# name under which programs will look for the library; makes the package of both architectures.
#
# usage: macos_build.sh [--run] [ARCHITECTURE ...]
#   --run   also runs the suites: the programs as they are for macOS, in tools/macho_run
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
readonly googletest=/usr/src/googletest/googletest
jobs=$(getconf _NPROCESSORS_ONLN)

# The program that runs macOS programs here, as a list for CMake: our loader, for arm64 compiled for that processor and
# itself run by qemu.
runner() {
    local build=build/macho_run-$1 compiler=g++
    [ "$1" = x86_64 ] || compiler=aarch64-linux-gnu-g++
    cmake -S tools/macho_run -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER="$compiler" \
        >/dev/null
    cmake --build "$build" -j "$jobs" >"$build/build.log" || { cat "$build/build.log" >&2; exit 1; }
    [ "$1" = x86_64 ] || printf 'qemu-aarch64-static;-L;/usr/aarch64-linux-gnu;'
    printf '%s' "$PWD/$build/macho_run"
}

build() {
    local arch=$1 emulator=$2 build=build/macos-$1
    local compiler
    compiler=$(tools/zig_compiler.sh "${arch/arm64/aarch64}-macos")
    cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_LIBDIR=lib \
        -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/macos/toolchain.cmake" -DTQ_ZIG_COMPILER="$compiler" -DTQ_MACOS_ARCH="$arch" \
        -DCMAKE_PROJECT_INCLUDE="$PWD/cmake/macos/RunPath.cmake" -DGTest_DIR="$PWD/cmake/cross" \
        -DTQ_GTEST_SOURCE="$googletest" -DCMAKE_CROSSCOMPILING_EMULATOR="$emulator" \
        -DTQ_BUILD_TESTS=ON -DTQ_BUILD_FUZZ=ON -DTQ_BUILD_BENCH=OFF >/dev/null
    cmake --build "$build" -j "$jobs" >"$build/build.log" || { grep -v '^\[' "$build/build.log" >&2; exit 1; }
    python3 tools/check_symbols.py abi/TqOsBase.symbols "$build/libTqOsBase.dylib" llvm-nm
    local install_name
    install_name=$(llvm-objdump --macho --dylib-id "$build/libTqOsBase.dylib" | tail -n 1)
    [[ $install_name =~ ^@rpath/libTqOsBase\.[0-9]+\.dylib$ ]] || { echo "install name: $install_name" >&2; exit 1; }
    echo "$arch: install name $install_name"
}

run=no
[ "${1-}" != --run ] || { run=yes && shift; }
architectures=("${@:-x86_64}")
[ $# -gt 0 ] || architectures=(x86_64 arm64)

unset CMAKE_CXX_COMPILER_LAUNCHER
for arch in "${architectures[@]}"; do
    echo "== building for macOS, $arch"
    build "$arch" "$(runner "$arch")"
done
[ ${#architectures[@]} -ne 2 ] || tools/macos_package.sh
[ $run = yes ] || exit 0
for arch in "${architectures[@]}"; do
    echo "== running the suites of macOS, $arch"
    tools/run_suite.sh "build/macos-$arch" "tests/not_run/macos-$arch.txt"
done
