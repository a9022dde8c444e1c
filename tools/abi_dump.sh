#!/usr/bin/env bash
# The interface of the library as types and layouts, for comparison with later builds.
#   abi_dump.sh write BUILD   stores that of the build folder as abi/TqOsBase-VERSION.abi.xz
#   abi_dump.sh check BUILD   compares the build folder with the last stored one; additions are allowed, all else fails
# The build must be one of g++ with debugging information (preset dev).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mode=$1
library=$2/libTqOsBase.so
case $mode in
write)
    version=$(readlink -f "$library" | sed 's/.*\.so\.//')
    # Where things are declared and what parameters are called is left out: it is no part of the interface.
    abidw --suppressions abi/suppressions.ini --headers-dir include --drop-private-types --drop-undefined-syms \
        --no-show-locs --no-parameter-names --no-write-default-sizes --no-corpus-path --no-comp-dir-path \
        --no-elf-needed "$library" |
        xz -9 >"abi/TqOsBase-$version.abi.xz"
    ls -l "abi/TqOsBase-$version.abi.xz"
    ;;
check)
    dump=$(find abi -name 'TqOsBase-*.abi.xz' | sort -V | tail -n 1)
    [ -n "$dump" ] || { echo "no stored interface in abi/" >&2; exit 1; }
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    xz -dc "$dump" >"$work/stored.abi"
    # Naming the headers here as well would make the tool overlook changed members.
    if ! abidiff --suppressions abi/suppressions.ini --no-added-syms "$work/stored.abi" "$library" >"$work/report"; then
        cat "$work/report"
        echo "$library differs from $dump" >&2
        exit 1
    fi
    echo "$library keeps the interface of $dump"
    ;;
*)
    echo "usage: abi_dump.sh write|check BUILD" >&2
    exit 2
    ;;
esac
