#!/usr/bin/env bash
# Builds and runs the consumer beside this script against the library, from outside its tree:
#   run.sh build FOLDER       the build folder, installed into an empty prefix: by find_package and by pkg-config, shared
#                             and static, with both compilers and both language standards, and the README's program
#   run.sh prefix FOLDER      an installed tree, with one compiler and one standard
#   run.sh subproject FOLDER  the library's source folder, by add_subdirectory
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
mode=$1
subject=$(cd "$2" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r "$here/consumer" "$work/consumer"
cd "$work"

# consume NAME CMAKE_ARGUMENT ...
consume() {
    local name=$1
    echo "$name"
    cmake -S consumer -B "$name" "${@:2}" >"$name.log" 2>&1 && cmake --build "$name" -j 2 >>"$name.log" 2>&1 ||
        { cat "$name.log"; exit 1; }
    "$name/consumer_TqOsBase" "$work/file.bin"
    "$name/consumer_TqOsBaseStatic" "$work/file.bin"
}

by_find_package() {
    consume "find_package-$1-$2" -DCMAKE_CXX_COMPILER="$1" -DCMAKE_CXX_STANDARD="$2" -DCMAKE_PREFIX_PATH="$prefix"
    # What runs must be what was just installed, not another copy on this machine.
    LC_ALL=C ldd "find_package-$1-$2/consumer_TqOsBase" | grep -F "$prefix/" >/dev/null ||
        { echo "the consumer does not run with the library of $prefix"; exit 1; }
}

by_pkg_config() {
    echo "pkg-config"
    PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name TqOsBase.pc)")
    export PKG_CONFIG_PATH
    local flags libdir
    libdir=$(pkg-config --variable=libdir TqOsBase)
    read -ra flags < <(pkg-config --cflags --libs TqOsBase)
    g++ -std=c++17 -fvisibility=hidden consumer/main.cpp "${flags[@]}" -o by-pkg-config
    LD_LIBRARY_PATH=$libdir ./by-pkg-config "$work/file.bin"
    read -ra flags < <(pkg-config --cflags TqOsBase)
    g++ -std=c++17 -c consumer/main.cpp "${flags[@]}" -o by-pkg-config-static.o
    # The C compiler adds no library of its own: what the static one needs, the file has to say.
    read -ra flags < <(pkg-config --static --libs-only-l TqOsBase)
    gcc by-pkg-config-static.o "${flags[@]/-lTqOsBase/$libdir/libTqOsBase.a}" -o by-pkg-config-static
    ./by-pkg-config-static "$work/file.bin"
}

first_program() {
    echo "the first program of the README, and what it says that it prints"
    local readme=$here/../../README.md flags
    block() { awk -v want="\`\`\`$1" '$0 == want && !done { on = 1; next } /^```/ && on { on = 0; done = 1 } on' "$readme"; }
    block cpp >first.cpp
    block text >first.expected
    read -ra flags < <(pkg-config --cflags --libs TqOsBase)
    g++ -std=c++17 -Wall -Wextra -Werror first.cpp "${flags[@]}" -o first
    LD_LIBRARY_PATH=$(pkg-config --variable=libdir TqOsBase) ./first | diff first.expected -
}

case $mode in
build)
    prefix=$work/prefix
    cmake --install "$subject" --prefix "$prefix" >/dev/null
    headers_outside=$(find "$prefix/include" -type f | grep -v "^$prefix/include/TqOsBase/" || true)
    [ -z "$headers_outside" ] || { echo "installed outside include/TqOsBase: $headers_outside"; exit 1; }
    for compiler in g++ clang++; do
        for standard in 17 20; do
            by_find_package $compiler $standard
        done
    done
    by_pkg_config
    first_program
    ;;
prefix)
    prefix=$subject
    by_find_package g++ 17
    by_pkg_config
    ;;
subproject)
    consume subproject -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_CXX_STANDARD=17 -DCONSUMER_SUBPROJECT="$subject" \
        -DTQ_WARNINGS_AS_ERRORS=ON
    # Without a build type it is optimised all the same, and what the program does not link is not built.
    cmake -G Ninja -S consumer -B alone -DCONSUMER_SUBPROJECT="$subject" -DCONSUMER_LIBRARIES=TqOsBase >/dev/null
    LC_ALL=C ninja -C alone -n -v all >alone.commands
    grep -q -- '-O3 .*src/format/OutputWithFormat\.cpp' alone.commands || { echo "not optimised"; exit 1; }
    ! grep -q 'libTqOsBase\.a' alone.commands || { echo "the static library is built unasked"; exit 1; }
    ;;
*)
    echo "usage: run.sh build|prefix|subproject FOLDER" >&2
    exit 2
    ;;
esac
