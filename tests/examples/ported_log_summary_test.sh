#!/usr/bin/env bash
# Runs ported_log_summary ($1) on the log of the source tree ($2), twice into one folder, and on what it cannot use.
set -uo pipefail
program=$1 log=$2/examples/data/plot_server.log expected=$2/examples/data/expected_log_summary.txt
# shellcheck source=tests/examples/common.sh
. "$2/tests/examples/common.sh"

for locale in C C.UTF-8; do
    LC_ALL=$locale expect_status 0 "$log" Übersicht
    diff "$expected" stdout || fail "the summary differs in the locale $locale"
    diff <(grep -v '^report of' "$expected") Übersicht/summary.txt || fail "the report differs from what was printed"
done
LC_ALL=C expect_status 0 "$log" Übersicht Error,DEBUG
grep -qx 'plot              0      1      3226048590       65.065 s' stdout || fail "chosen levels: $(cat stdout)"
while IFS='|' read -r status arguments message; do
    # shellcheck disable=SC2086
    expect_status "$status" $arguments
    grep -qF "$message" stderr || fail "$arguments: $(cat stderr)"
done <<ROWS
2|$log|usage
2|$log out warn,loud|unknown level in warn,loud: Invalid argument
1|missing.log out|cannot read missing.log: No such file
1|$log stdout|cannot write stdout/summary.txt: Not a directory
ROWS
[ $failures -eq 0 ]
