#!/usr/bin/env bash
# Runs every test of a build for macOS ($1) by the runner it was configured with, and says what cannot be run and why.
set -euo pipefail
build=$1 here=$(dirname "${BASH_SOURCE[0]}")
excluded=''
while IFS=$'\t' read -r pattern reason; do
    case $pattern in '' | \#*) continue ;; esac
    excluded+=${excluded:+|}$pattern
    ctest --test-dir "$build" -N -R "$pattern" | sed -n "s/^ *Test *#[0-9]*: \(.*\)/not run: \1: $reason/p"
done <"$here/cannot_run.txt"
ctest --test-dir "$build" -E "$excluded" --no-tests=error --output-on-failure -j "$(getconf _NPROCESSORS_ONLN)" \
    >"$build/suites.log" 2>&1 || { grep -v ' Passed ' "$build/suites.log" | tail -n 150; exit 1; }
tail -n 6 "$build/suites.log" | grep -E 'tests passed|Total Test time'
