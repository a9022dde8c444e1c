#!/usr/bin/env bash
# Installs the build folder $1 into an empty prefix and builds and runs the consumer beside this script against it: by
# find_package and by pkg-config, shared and static, with both compilers and both language standards.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$1" --prefix "$work/prefix" >/dev/null
cp -r "$here/consumer" "$work/consumer"
cd "$work"

headers_outside=$(find prefix/include -type f | grep -v '^prefix/include/TqOsBase/' || true)
[ -z "$headers_outside" ] || { echo "installed outside include/TqOsBase: $headers_outside"; exit 1; }

for compiler in g++ clang++; do
    for standard in 17 20; do
        for library in TqOsBase TqOsBaseStatic; do
            name=$compiler-$standard-$library
            echo "find_package: $name"
            cmake -S consumer -B "$name" -DCMAKE_CXX_COMPILER=$compiler -DCMAKE_CXX_STANDARD=$standard \
                -DCONSUMER_LIBRARY=$library -DCMAKE_PREFIX_PATH="$work/prefix" >"$name.log" 2>&1 &&
                cmake --build "$name" >>"$name.log" 2>&1 || { cat "$name.log"; exit 1; }
            "$name/consumer" "$work/file.bin"
        done
    done
done

echo "pkg-config"
PKG_CONFIG_PATH=$(dirname "$(find "$work/prefix" -name TqOsBase.pc)")
export PKG_CONFIG_PATH
# shellcheck disable=SC2046
g++ -std=c++17 -fvisibility=hidden consumer/main.cpp $(pkg-config --cflags --libs TqOsBase) -o by-pkg-config
LD_LIBRARY_PATH=$(pkg-config --variable=libdir TqOsBase) ./by-pkg-config "$work/file.bin"

echo "the first program of the README, and what it says that it prints"
block() { awk -v want="\`\`\`$1" '$0 == want && !done { on = 1; next } /^```/ && on { on = 0; done = 1 } on' "$readme"; }
readme=$here/../../README.md
block cpp >first.cpp
block text >first.expected
g++ -std=c++17 -Wall -Wextra -Werror first.cpp $(pkg-config --cflags --libs TqOsBase) -o first
LD_LIBRARY_PATH=$(pkg-config --variable=libdir TqOsBase) ./first | diff first.expected -
