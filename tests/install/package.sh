#!/usr/bin/env bash
# The packages in the build folder $1: the Debian packages are unpacked into an empty root and the consumer is built
# against it; the tarball holds the same files.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
cd "$1"

mkdir "$root/debian" "$root/tar"
for package in libtqosbase0_*.deb libtqosbase-dev_*.deb; do
    dpkg-deb -x "$package" "$root/debian"
done
dpkg-deb -f libtqosbase0_*.deb Depends | grep -q 'libstdc++6' || { echo "the library's needs are not named"; exit 1; }
dpkg-deb -f libtqosbase-dev_*.deb Depends | grep -q 'libtqosbase0' || { echo "the library is not asked for"; exit 1; }
runtime=$(dpkg-deb -c libtqosbase0_*.deb | grep -v '/$' | sed 's|.*\./||; s| ->.*||' | grep -v 'libTqOsBase\.so\.' || true)
[ -z "$runtime" ] || { echo "more than the library in the runtime package: $runtime"; exit 1; }
tar -xzf TqOsBase-*.tar.gz -C "$root/tar" --strip-components=1
diff <(cd "$root/debian/usr" && find . ! -type d | sort) <(cd "$root/tar" && find . ! -type d | sort)

"$here/run.sh" prefix "$root/debian/usr"
