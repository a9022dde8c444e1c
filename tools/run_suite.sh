#!/usr/bin/env bash
# Runs the tests of a build folder ($1) but those that the list $2 names, and says which are not run and why. A pattern
# that names no test is an error. What follows are options of ctest.
set -euo pipefail
build=$1 list=$2 excluded=''
while IFS=$'\t' read -r pattern reason; do
    case $pattern in '' | \#*) continue ;; esac
    excluded+=${excluded:+|}$pattern
    named=$(ctest --test-dir "$build" -N -R "$pattern" | sed -n "s/^ *Test *#[0-9]*: \(.*\)/not run: \1: $reason/p")
    [ -n "$named" ] || { echo "$list: $pattern names no test" >&2; exit 1; }
    echo "$named"
done <"$list"
ctest --test-dir "$build" -E "$excluded" --no-tests=error --output-on-failure -j "$(getconf _NPROCESSORS_ONLN)" "${@:3}" \
    >"$build/suite.log" 2>&1 || { grep -v ' Passed ' "$build/suite.log" | tail -n 150; exit 1; }
grep -E 'tests passed|Total Test time' "$build/suite.log"
