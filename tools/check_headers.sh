#!/usr/bin/env bash
# Compiles every public header alone, as C++17, C++20 and C++23, with the compilers $@ (g++ and clang++ without them),
# warnings as errors; those without a throw in them also without exceptions.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
[ $# -gt 0 ] || set -- g++ clang++

alone() { # COMPILER OPTION HEADER
    echo "#include <${3#include/}>" | "$1" -std=c++17 "$2" -fsyntax-only -Wall -Wextra -Wpedantic -Wundef -Wshadow \
        -Wconversion -Werror -Iinclude -x c++ - || { echo "$3: $1 $2 failed" >&2; return 1; }
}
export -f alone

throwing='TqOsBase.h|containers/|format/Checked.h|codepage/(TqAnsiTextIterator|TqCharMapper).h|'
throwing+='stream/(FileStreamBuf|OpenStream|TqFileSystem|TqFlatMemBuf).h|porting/'
list=$(for compiler in "$@"; do
    for option in -std=c++17 -std=c++20 -std=c++2b -fno-exceptions; do
        find include -name '*.h' | sort | sed "s/^/$compiler $option /"
    done
done | grep -vE -e '(-std=c[+][+]17|-fno-exceptions) include/TqOsBase/format/Checked[.]h' \
    -e "-fno-exceptions include/TqOsBase/($throwing)") # Checked.h asks for C++20
xargs -P "$(getconf _NPROCESSORS_ONLN)" -L 1 bash -c 'alone "$@"' alone <<<"$list"
echo "$(wc -l <<<"$list") compilations"
