#!/usr/bin/env bash
# Runs clang-tidy over the library's sources and the headers they include. $1: a configured build folder.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! run-clang-tidy -quiet -j "$(getconf _NPROCESSORS_ONLN)" -p "$1" "$PWD/(src|examples)/.*" >"$log" 2>&1; then
    grep -vE '^(clang-tidy|[0-9]+ warnings? (generated|treated)|Suppressed|Use -header-filter)' "$log" >&2 || true
    exit 1
fi
echo "$(grep -cE '^clang-tidy' "$log") files"
