#!/usr/bin/env bash
# Makes the macOS package of the builds for both architectures: what an installation has, with universal libraries, as
# build/macos/TqOsBase-VERSION-macos.tar.gz. The libraries are not stripped: that would break the signature without which
# macOS on arm64 runs nothing.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
version=$(sed -n 's/.*kVersion.*"\(.*\)".*/\1/p' include/TqOsBase/Version.h)
name=TqOsBase-$version-macos
stage=$PWD/build/macos/$name
# Debian gives it no name of its own.
lipo=$(dirname "$(readlink -f "$(command -v llvm-nm)")")/llvm-lipo
fail() { echo "macos_package: $*" >&2; exit 1; }

rm -rf build/macos
cmake --install build/macos-x86_64 --prefix "$stage" >/dev/null
cmake --install build/macos-arm64 --prefix "$stage.arm64" >/dev/null
# But for what is compiled both are the same files.
diff -r --exclude='libTqOsBase*' --exclude=tq-convert-text --exclude=tq-traverse-report "$stage" "$stage.arm64" || fail "the architectures install different files"
rm -rf "$stage.arm64"
for pair in "libTqOsBase.$version.dylib=lib" libTqOsBase.a=lib examples/tq-convert-text=bin examples/tq-traverse-report=bin; do
    built=${pair%=*}
    packed=$stage/${pair#*=}/$(basename "$built")
    "$lipo" -create "build/macos-x86_64/$built" "build/macos-arm64/$built" -output "$packed"
    [ "$("$lipo" -archs "$packed" | xargs -n1 | sort | xargs)" = "arm64 x86_64" ] || fail "$built: not universal"
done
llvm-objdump --macho --arch=arm64 --private-headers "$stage/lib/libTqOsBase.$version.dylib" | grep -q LC_CODE_SIGNATURE ||
    fail "the library for arm64 is not signed"
tar -C build/macos -czf "build/macos/$name.tar.gz" "$name"
ls -1 "build/macos/$name.tar.gz"
