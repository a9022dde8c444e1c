#!/usr/bin/env bash
# The README's CMake files around its first program: the one for the installed library ($1: the build folder to install)
# is built and run, the one with the tree as a subfolder ($2: the tree) is configured.
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# block LANGUAGE NUMBER: the README's block of that language and number.
block() {
    awk -v want="\`\`\`$1" -v number="$2" '/^```/ && on { on = 0 } on; $0 == want { on = ++seen == number }' "$tree/README.md"
}

tree=$2
cmake --install "$1" --prefix "$work/prefix" >/dev/null
for kind in installed subfolder; do
    mkdir "$work/$kind"
    block cpp 1 >"$work/$kind/first.cpp"
done
block cmake 1 >"$work/installed/CMakeLists.txt"
block cmake 2 >"$work/subfolder/CMakeLists.txt"
ln -s "$tree" "$work/subfolder/TqOsBase"

cmake -S "$work/installed" -B "$work/installed/build" -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/installed/build" >/dev/null
"$work/installed/build/first" | diff <(block text 1) -
cmake -S "$work/subfolder" -B "$work/subfolder/build" >/dev/null
