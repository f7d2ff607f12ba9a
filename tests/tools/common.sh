# What the tool tests share: a scratch folder, a failure count and the check of one command.
# Sourced by a test after it has set `vesk` and `sample` from its arguments; it ends with `finish`.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

expect() { # expect NAME EXPECTED_STATUS EXPECTED_STDOUT -- command...
    local name=$1 status=$2 output=$3
    shift 4
    local got rc
    got=$("$@" 2>"$work/stderr")
    rc=$?
    if [ "$rc" != "$status" ] || [ "$got" != "$output" ]; then
        echo "FAIL $name: exit $rc (want $status), output:"
        printf '%s\n' "$got"
        echo "want:"
        printf '%s\n' "$output"
        echo "stderr:"
        cat "$work/stderr"
        failures=$((failures + 1))
    fi
}

finish() { # finish WHAT: the verdict, and the exit status that carries it
    if [ "$failures" -ne 0 ]; then
        echo "$failures check(s) failed"
        exit 1
    fi
    echo "$1: all checks passed"
}
