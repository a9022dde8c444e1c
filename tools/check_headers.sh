#!/usr/bin/env bash
# Compiles every public header alone, as C++17 and C++20, with both compilers, warnings as errors.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
flags=(-fsyntax-only -Wall -Wextra -Wpedantic -Wundef -Wshadow -Wconversion -Werror -Iinclude -x c++)
failed=0 count=0
while read -r header; do
    for compiler in g++ clang++; do
        for standard in c++17 c++20; do
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
