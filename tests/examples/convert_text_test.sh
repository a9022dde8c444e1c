#!/usr/bin/env bash
# Runs convert_text ($1) on the sample of the source tree ($2), on odd texts and on everything that can go wrong.
set -uo pipefail
program=$1 sample=$2/examples/data/title_block.txt
# shellcheck source=tests/examples/common.sh
. "$2/tests/examples/common.sh"

# A failure with status 1 also says why in exactly one line.
expect_reason() {
    expect_status "$@"
    if [ "$1" -eq 1 ] && [ "$(wc -l <stderr)" -ne 1 ]; then
        fail "$* said more or less than one line: $(cat stderr)"
    fi
}

# expect_text DIRECTION INPUT OUTPUT [MESSAGE]: texts in the notation of printf; the message is looked for as it stands.
# One that names a place is about what is not carried. The input comes from a file, then through pipes.
expect_text() {
    local status=0
    [[ ${4-} == in.txt:[0-9]* ]] && status=3
    printf "$2" >in.txt
    printf "$3" >expected.txt
    cat in.txt | "$program" "$1" - - 2>/dev/null | cat >piped.txt
    cmp -s piped.txt expected.txt || fail "$1 of '$2' through pipes gave $(od -c piped.txt)"
    expect_reason $status "$1" in.txt out.txt
    cmp -s expected.txt out.txt || fail "$1 of '$2' gave $(od -c out.txt)"
    [ $# -lt 4 ] || grep -qF -- "$4" stderr || fail "$1 of '$2' did not say '$4' but: $(cat stderr)"
}

expect_reason 0 --help
expect_reason 2
expect_reason 2 --to-utf8 only-one
expect_reason 2 --to-latin in out
expect_reason 2 --to-utf8 in out more
printf '\377\376a\000' >utf16.txt
while IFS='|' read -r in out message; do
    expect_reason 1 --to-utf8 "$in" "$out"
    grep -qF "$message" stderr || fail "$in to $out: $(cat stderr)"
done <<ROWS
missing.txt|out.txt|missing.txt for reading: No such file or directory
$work|out.txt|for reading: Is a directory
$sample|$work|for writing: Is a directory
$sample|no-such-folder/out.txt|for writing: No such file or directory
$sample|/dev/full|cannot write /dev/full: No space left on device
utf16.txt|out.txt|utf16.txt is UTF-16 text; convert it to UTF-8 first
ROWS
"$program" --to-utf8 - out.txt <"$work" 2>stderr && fail "a directory as standard input was read"
grep -qF 'cannot read standard input: Is a directory' stderr || fail "a directory as standard input: $(cat stderr)"
"$program" --to-utf8 "$sample" - 2>stderr >/dev/full && fail "a full standard output was not reported"
grep -qF 'cannot write standard output: No space' stderr || fail "a full standard output: $(cat stderr)"
cp "$sample" same.txt
expect_reason 1 --to-utf8 same.txt ./same.txt
cmp -s "$sample" same.txt || fail "the file that was input and output at once is damaged"
cp "$sample" unreadable.txt
chmod 000 unreadable.txt
if [ "$(id -u)" -eq 0 ]; then
    cp "$program" ./unprivileged
    message=$(LD_LIBRARY_PATH=$(dirname "$(ldd "$program" | awk '/libTqOsBase/ {print $3}')") \
        setpriv --reuid=65534 --regid=65534 --clear-groups ./unprivileged --to-utf8 unreadable.txt /dev/null 2>&1)
    [ $? -eq 1 ] || fail "an unreadable file was read"
    [[ $message == *"Permission denied"* ]] || fail "an unreadable file gave: $message"
else
    expect_reason 1 --to-utf8 unreadable.txt /dev/null
fi

expect_reason 0 --to-utf8 "$sample" utf8.txt
grep -qF 'converting back gives the same bytes: yes' stderr || fail "the sample does not come back: $(cat stderr)"
grep -qF 'code page 932:' stderr || fail "escapes are not counted by code page: $(cat stderr)"
grep -qF 'Hafenfußgängerbrücke' utf8.txt || fail "no UTF-8 in the converted sample"
expect_reason 0 --to-escaped utf8.txt back.txt
cmp -s "$sample" back.txt || fail "the sample differs after there and back"

expect_text --to-utf8 '' '' 'lines:            0'
expect_text --to-utf8 'a\r\nb\n\nc' 'a\r\nb\n\nc' 'lines:            4'
expect_text --to-utf8 'x\\U+00E9\\u+4e2d\\M+18140\\M+10041\\U+00G1' 'x\xC3\xA9\xE4\xB8\xAD\\M+18140A\\U+00G1' \
    'same bytes: no'
expect_text --to-utf8 'a\000b\\U+00E9\000' 'a\000b\xC3\xA9\000' 'same bytes: yes'
expect_text --to-utf8 'one\ntw\\U+D83D\\U+0000!' 'one\ntw\\U+D83D\\U+0000!' 'in.txt:2:3: \U+D83D'
expect_text --to-utf8 'one\ntw\\U+D83D\\U+0000!' 'one\ntw\\U+D83D\\U+0000!' 'in.txt:2:10: \U+0000'
expect_text --to-escaped 'a\xC3\xA9\xEF\xBF\xBD' 'a\\U+00E9\\U+FFFD' 'same bytes: yes'
expect_text --to-escaped 'x\n\xC3\xA9\xF0\x9F\x98\x80y' 'x\n\\U+00E9\\U+FFFDy' 'in.txt:2:2: U+1F600'
expect_text --to-escaped 'x\xE9y\xC0\x80' 'x\\U+00E9y\\U+00C0\\U+0080' 'in.txt:1:2: byte E9'
expect_text --to-escaped 'a\000\xC3\xA9' 'a\000\\U+00E9' 'not carried:      0'

expect_text --to-escaped '\xEF\xBB\xBFa' 'a' 'in.txt: skipped its UTF-8 byte order mark'
grep -qF 'same bytes: no' stderr || fail "a skipped mark comes back"

# Names of every script, in every locale.
cp "$sample" 'Straße 📐.txt'
for locale in C C.UTF-8 POSIX; do
    rm -f grün.txt
    LC_ALL=$locale expect_reason 0 --to-utf8 'Straße 📐.txt' grün.txt
    cmp -s utf8.txt grün.txt || fail "names in the locale $locale"
done
LC_ALL=C expect_reason 1 --to-utf8 $'gr\xFCn.txt' out.txt

# What is no text is complained about twenty times.
head -c 3000 /dev/zero | tr '\000' '\351' >binary.txt
expect_status 3 --to-escaped binary.txt out.txt
grep -qF '... and 2980 more' stderr || fail "complaints are not capped: $(head -n 30 stderr)"
[ "$(wc -l <stderr)" -eq 28 ] || fail "$(wc -l <stderr) lines about one binary file"

# A line of some 460 KiB, in pieces whose ends fall on every part of an escape.
yes 'Kaistra\U+00DFe\M+18140 nach Pfeiler' | head -n 13000 | tr -d '\n' >long.txt
yes 'Kaistraße\M+18140 nach Pfeiler' | head -n 13000 | tr -d '\n' >long.expected
expect_reason 0 --to-utf8 long.txt long.utf8
cmp -s long.expected long.utf8 || fail "a long line is torn"
expect_reason 0 --to-escaped long.utf8 long.back
"$program" --to-escaped - - <long.utf8 2>/dev/null | cmp -s - long.txt || fail "a long line is torn in a pipe"
cmp -s long.txt long.back || fail "a long line is torn on the way back"
grep -qF '\U+ escapes:      13000' stderr || fail "escapes of a long line are miscounted: $(cat stderr)"

[ $failures -eq 0 ] && echo "all as expected"
exit $((failures > 0))
