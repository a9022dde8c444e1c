#!/usr/bin/env bash
# The demonstration says what examples/data/expected_demo.txt holds. $1: the program, $2: the source tree.
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$2/examples/run_demo.sh" "$1" "$work" | diff "$2/examples/data/expected_demo.txt" -
