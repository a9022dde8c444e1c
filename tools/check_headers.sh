#!/usr/bin/env bash
# Compiles every public header alone, as C++17, C++20 and C++23, with the compilers $@ (g++ and clang++ without them),
# warnings as errors.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
[ $# -gt 0 ] || set -- g++ clang++
flags=(-fsyntax-only -Wall -Wextra -Wpedantic -Wundef -Wshadow -Wconversion -Werror -Iinclude -x c++)
failed=0 count=0
while read -r header; do
    for compiler in "$@"; do
        for standard in c++17 c++20 c++2b; do
            count=$((count + 1))
            if ! echo "#include <${header#include/}>" | "$compiler" -std=$standard "${flags[@]}" -; then
                echo "$header: $compiler -std=$standard failed" >&2
                failed=1
            fi
        done
    done
done < <(find include -name '*.h' | sort)
echo "$count compilations"
exit $failed
