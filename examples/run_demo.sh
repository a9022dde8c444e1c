#!/usr/bin/env bash
# The demonstration: the sample drawing text to UTF-8 and back. $1: the convert_text program, $2: a folder to write to.
set -euo pipefail
program=$1 out=$2
sample=$(dirname "${BASH_SOURCE[0]}")/data/title_block.txt

echo "--- the sample as the drawing holds it (first lines) ---"
head -n 12 "$sample" | tr -d '\r' | cut -c 1-110
echo
echo "--- converted to UTF-8 ---"
"$program" --to-utf8 "$sample" "$out/title_block.utf8.txt" 2>"$out/summary.txt"
tr -d '\r' <"$out/title_block.utf8.txt"
echo
echo "--- summary ---"
cat "$out/summary.txt"
echo
echo "--- and back ---"
"$program" --to-escaped "$out/title_block.utf8.txt" "$out/title_block.back.txt" 2>"$out/summary.txt"
cat "$out/summary.txt"
if cmp "$sample" "$out/title_block.back.txt"; then
    echo "the file that came back is byte for byte the sample"
else
    echo "the file that came back differs from the sample" >&2
    exit 1
fi
