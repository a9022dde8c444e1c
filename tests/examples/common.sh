# What the tests of the example programs share; sourced by them, with the program's path in $program. Works in a fresh
# folder that goes at the end.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 755 "$work"
cd "$work" || exit 1
failures=0

fail() {
    echo "FAILED: $*"
    failures=$((failures + 1))
}

# expect_status STATUS ARGUMENTS...: the exit status; what the program says is then in stdout and stderr.
expect_status() {
    local expected=$1 status
    shift
    "$program" "$@" >stdout 2>stderr
    status=$?
    [ $status -eq "$expected" ] || fail "$* gave $status, not $expected: $(cat stderr)"
}
