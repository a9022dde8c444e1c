#!/usr/bin/env bash
# Makes, of the tree that this script lies in, what a release has, in the empty folder $1: the Debian packages, a tarball
# with the same files, an SPDX list of what is in it, and the sums of all. The same tree gives the same bytes, wherever
# and whenever it is built.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
out=$(mkdir -p "$1" && cd "$1" && pwd)
version=$(sed -n 's/.*kVersion.*"\(.*\)".*/\1/p' include/TqOsBase/Version.h)
umask 022
[ -z "$(ls -A "$out")" ] || { echo "package: $out is not empty" >&2; exit 1; }

# debhelper gives its commands a home of their own.
if command -v ccache >/dev/null; then
    export CCACHE_DIR=${CCACHE_DIR:-$(ccache --get-config cache_dir)}
fi
tree=$out/tqosbase-$version
mkdir "$tree"
tools/copy_sources.sh "$tree"
cp -r packaging/debian "$tree/debian"
maintainer=$(sed -n 's/^Maintainer: //p' packaging/debian/control)
python3 tools/debian_changelog.py "$maintainer" >"$tree/debian/changelog"

(cd "$tree" && dpkg-buildpackage -b -us -uc >"$out/build.log" 2>&1) || { tail -n 60 "$out/build.log"; exit 1; }

# The tarball is the packages' usr folder, without the parts that belong to Debian's way of things.
stage=$out/TqOsBase-$version-$(uname -s)-$(uname -m)
for package in "$out"/*.deb; do
    case $package in *-dbgsym_*) continue ;; esac
    dpkg-deb -x "$package" "$out/root"
done
mv "$out/root/usr" "$stage"
rm -rf "$stage/share/lintian" "$stage"/share/doc/*/changelog.Debian.gz
SOURCE_DATE_EPOCH=$(cd "$tree" && dpkg-parsechangelog -S Timestamp)
tar --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner -cf - -C "$out" "$(basename "$stage")" |
    gzip -9n >"$stage.tar.gz"
python3 tools/make_sbom.py "$stage" "$version" "$SOURCE_DATE_EPOCH" "$out"/*.deb >"$stage.spdx.json"
rm -rf "$out/root" "$stage" "$tree" "$out"/*.buildinfo "$out"/*.changes
(cd "$out" && export LC_ALL=C && sha256sum -- *.deb *.tar.gz *.spdx.json >SHA256SUMS)
