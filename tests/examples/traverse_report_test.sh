#!/usr/bin/env bash
# Runs traverse_report ($1) on the survey of the source tree ($2), on odd files and on everything that can go wrong.
set -uo pipefail
program=$1 survey=$2/examples/data/traverse.txt
# shellcheck source=tests/examples/common.sh
. "$2/tests/examples/common.sh"

# expect_line FILE TEXT: a line of stdout or stderr that holds the text.
expect_line() {
    grep -qF -- "$2" "$1" || fail "no line with '$2' in $1: $(cat "$1")"
}

expect_status 0 --help
expect_line stdout "usage: tq-traverse-report"
for wrong in "" "--units feet $survey" "--angles 4 $survey" "--precision x $survey" "--precision 16 $survey" \
    "--out" "--colour red $survey" "$survey $survey"; do
    # shellcheck disable=SC2086
    expect_status 2 $wrong
    expect_line stderr "usage: tq-traverse-report"
done
expect_status 1 missing.txt
expect_line stderr "No such file"
expect_status 1 "$work"
expect_line stderr "Is a directory"

# The report is the same on the terminal and in the file, and it lines up: every row has its length column at one place,
# counted in columns of the terminal.
expect_status 0 --out report.txt "$survey"
cmp -s stdout report.txt || fail "the terminal and the file differ"
python3 - report.txt <<'PYTHON' || fail "columns do not line up"
import re, sys, unicodedata
def width(text):
    return sum(0 if unicodedata.combining(c) or unicodedata.category(c) == "Mn" else
               2 if unicodedata.east_asian_width(c) in "WF" else 1 for c in text)
rows = [line.rstrip("\n") for line in open(sys.argv[1], encoding="utf-8") if re.match(r"P\d+ ", line)]
ends = {width(row) for row in rows}
exponents = {width(row[:row.index("E+")]) for row in rows}
sys.exit(0 if len(rows) == 27 and len(exponents) == 1 and len(ends) == 1 else 1)
PYTHON

# Known numbers: a 3-4-5 triangle around an L, closed exactly.
printf 'units decimal 2\nangles degrees 1\na ; 0 ; 0 ; start\nb ; 4 ; 0\nc ; 4 ; 3 ; \\U+6771\na ; 0 ; 0 ;\n' >triangle.txt
expect_status 0 triangle.txt
expect_line stdout "perimeter  12.00"
expect_line stdout "closure    exact"
expect_line stdout "area       6.0000 square units"
expect_line stdout "東"
grep -E '^b +c +東 +90\.0 +3\.00 +7\.00 +3\.00E\+00 ' stdout >/dev/null || fail "second leg: $(cat stdout)"
expect_status 0 --out grün.txt triangle.txt
(printf '\xEF\xBB\xBF' && cat triangle.txt) | "$program" --out - - 2>stderr | cmp -s - grün.txt || fail "from a pipe"
expect_line stderr "standard input: skipped its UTF-8 byte order mark"
yes 'a;b' | head -n 1000 >bad.txt
expect_status 1 bad.txt
expect_line stderr "... and 980 more"
expect_status 0 --units architectural --precision 4 --angles surveyor triangle.txt
expect_line stdout "0'-4\""
expect_line stdout "(0.0417 square feet)"

# An open traverse: the error is the way back to the start.
printf 'units decimal 1\nbase 90\ndirection cw\nangles dms 0\na;0;0;\nb;0;300;\n' >open.txt
expect_status 0 open.txt
expect_line stdout "closure    300.0, bearing 180d, 1 : 1"
grep -E '^a +b +0d ' stdout >/dev/null || fail "clockwise from north: $(cat stdout)"

# Bad lines are named with what was expected; the good ones are reported.
printf 'units inches\na;0;0;one\nb;1;x;two\nc;3;4\nd;5\ncolour red\nunits decimal 2\nangles\n;1;2;\n' >bad.txt
printf 'e;%s;1;\n' "$(printf '9%.0s' $(seq 5000))" >>bad.txt
expect_status 1 bad.txt
for message in "bad.txt:1: expected one of scientific, decimal" 'bad.txt:3: expected a number for y, found "x"' \
    "bad.txt:5: expected a number for y, found nothing" "bad.txt:6: expected a point" \
    "bad.txt:7: expected points only" "bad.txt:8: expected points only" "bad.txt:9: expected the name of the point" \
    "bad.txt:10: expected at most 4096 bytes"; do
    expect_line stderr "$message"
done
expect_line stdout "points     2"
expect_line stdout "perimeter  5.0000"

# Nothing to report, and nothing to write to.
printf '# only a comment\n' >empty.txt
expect_status 1 empty.txt
expect_line stdout "no legs"
expect_line stderr "empty.txt is no traverse: it has no point"
expect_status 1 --out empty.txt empty.txt
expect_line stderr "is the traverse itself"
if [ -e /dev/full ]; then
    expect_status 1 --out /dev/full triangle.txt
    expect_line stderr "cannot write /dev/full: No space left on device"
    "$program" triangle.txt >/dev/full 2>stderr
    [ $? -eq 1 ] || fail "a full standard output was not reported"
    expect_line stderr "cannot write standard output: No space left on device"
fi

[ $failures -eq 0 ]
