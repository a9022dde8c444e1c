#!/usr/bin/env bash
# What a release has, in the folder $1 (see tools/package.sh): the Debian packages have nothing that lintian finds fault
# with, and a program is built and debugged with them alone; sums and list agree with the files; a second build, elsewhere
# and without a cache of objects, gives the same bytes.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
fail() { echo "package: $*" >&2; exit 1; }
cd "$1"
version=$(sed -n 's/.*kVersion.*"\(.*\)".*/\1/p' "$here/../../include/TqOsBase/Version.h")

echo "lintian"
as_root=()
[ "$(id -u)" -ne 0 ] || as_root=(--allow-root)
lintian "${as_root[@]}" --fail-on error,warning ./*.deb

echo "what is in the packages"
mkdir "$root/debian" "$root/tar"
for package in libtqosbase0_*.deb libtqosbase-dev_*.deb tqosbase-tools_*.deb libtqosbase-doc_*.deb; do
    dpkg-deb -x "$package" "$root/debian"
done
[ -s libtqosbase0-dbgsym_*.deb ] || fail "no debugging symbols"
dpkg-deb -f libtqosbase0_*.deb Depends | grep -q 'libstdc++6' || fail "the library's needs are not named"
dpkg-deb -f libtqosbase-dev_*.deb Depends | grep -q 'libtqosbase0' || fail "the library is not asked for"
dpkg-deb --ctrl-tarfile libtqosbase0_*.deb | tar -xO ./triggers | grep -q ldconfig || fail "ldconfig is not called"
runtime=$(dpkg-deb -c libtqosbase0_*.deb | grep -v '/$' | sed 's|.*\./||; s| ->.*||' |
    grep -v 'libTqOsBase\.so\.\|share/doc/' || true)
[ -z "$runtime" ] || fail "more than the library in the runtime package: $runtime"
tar -xzf TqOsBase-*.tar.gz -C "$root/tar" --strip-components=1
diff <(cd "$root/debian/usr" && find . ! -type d ! -name changelog.Debian.gz | sort) \
    <(cd "$root/tar" && find . ! -type d | sort)
# gdb looks for it at the library's path, under the library's name.
library=$(cd "$root/debian" && find usr/lib -name "libTqOsBase.so.$version")
[ -f "$root/debian/usr/share/gdb/auto-load/$library-gdb.py" ] || fail "gdb does not find the views of /$library"

echo "sums and list"
sha256sum --quiet -c SHA256SUMS
python3 - "$root/tar" TqOsBase-*.spdx.json <<'EOF'
import hashlib, json, pathlib, sys
folder = pathlib.Path(sys.argv[1])
listed = {file["fileName"]: {sum["algorithm"]: sum["checksumValue"] for sum in file["checksums"]}
          for file in json.load(open(sys.argv[2]))["files"]}
there = {"./" + str(path.relative_to(folder)): hashlib.sha256(path.read_bytes()).hexdigest()
         for path in folder.rglob("*") if path.is_file() and not path.is_symlink()}
sys.exit(0 if there and there == {name: sums["SHA256"] for name, sums in listed.items()} else "the list is not of these files")
EOF

"$here/run.sh" prefix "$root/debian/usr"
for tool in tq-convert-text tq-traverse-report tq-porting; do
    grep -q "^\.Nm $tool" <(zcat "$root/debian/usr/share/man/man1/$tool.1.gz") || fail "no manual page of $tool"
done
LD_LIBRARY_PATH=$root/debian/$(dirname "$library") "$root/debian/usr/bin/tq-convert-text" --to-utf8 - - \
    <<<'Kaistra\U+00DFe' | grep -qx 'Kaistraße' || fail "tq-convert-text does not convert"

echo "programs of both compilers in both debuggers"
libdir=$root/debian/$(dirname "$library")
for compiler in g++ clang++; do
    "$compiler" -std=c++17 -g -O0 -I"$root/debian/usr/include" "$here/../debugger/Sample.cpp" -L"$libdir" -lTqOsBase \
        -Wl,-rpath,"$libdir" -o "$root/sample"
    for debugger in gdb lldb; do
        python3 "$here/../debugger/debugger_test.py" $debugger "$root/sample" "$root/debian/usr/share/TqOsBase/debugger" \
            --without heap || fail "$debugger does not show what a program of $compiler holds"
    done
done

echo "a second build gives the same bytes"
"$here/../../tools/copy_sources.sh" "$root/elsewhere"
CCACHE_DISABLE=1 TZ=Pacific/Chatham LC_ALL=de_DE.UTF-8 "$root/elsewhere/tools/package.sh" "$root/again"
diff SHA256SUMS "$root/again/SHA256SUMS" && exit
mkdir "$root/tar-again"
tar -xzf "$root"/again/TqOsBase-*.tar.gz -C "$root/tar-again" --strip-components=1
diff -rq --no-dereference "$root/tar" "$root/tar-again" || true
fail "two builds differ"
