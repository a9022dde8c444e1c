#!/usr/bin/env bash
# The demonstration: a boundary survey in the units of its drawing. $1: the traverse_report program, $2: a folder to write
# to.
set -euo pipefail
program=$1 out=$2
traverse=$(dirname "${BASH_SOURCE[0]}")/data/traverse.txt

echo "--- the survey as its file holds it (first lines) ---"
head -n 14 "$traverse" | cut -c 1-110
echo
echo "--- legs, closure and area ---"
"$program" --out "$out/traverse.report.txt" "$traverse"
echo
echo "--- the same closure in decimal units and degrees ---"
"$program" --units decimal --angles degrees --precision 3 "$traverse" | tail -n 6
