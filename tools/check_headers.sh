#!/usr/bin/env bash
# Compiles every public header alone, as C++17, C++20 and C++23, with the compilers $@ (g++ and clang++ without them),
# warnings as errors.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
[ $# -gt 0 ] || set -- g++ clang++

alone() { # COMPILER STANDARD HEADER
    echo "#include <${3#include/}>" | "$1" "-std=$2" -fsyntax-only -Wall -Wextra -Wpedantic -Wundef -Wshadow \
        -Wconversion -Werror -Iinclude -x c++ - || { echo "$3: $1 -std=$2 failed" >&2; return 1; }
}
export -f alone

list=$(for compiler in "$@"; do
    for standard in c++17 c++20 c++2b; do
        find include -name '*.h' | sort | sed "s/^/$compiler $standard /"
    done
done | grep -v 'c++17 include/TqOsBase/format/Checked[.]h') # the one header that asks for more
xargs -P "$(getconf _NPROCESSORS_ONLN)" -L 1 bash -c 'alone "$@"' alone <<<"$list"
echo "$(wc -l <<<"$list") compilations"
