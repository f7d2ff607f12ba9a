#!/usr/bin/env bash
# Sets up what is missing, then builds and tests Vesk in every configuration: native x86-64,
# 32-bit i386, AddressSanitizer + UndefinedBehaviorSanitizer, and ThreadSanitizer. Also checks
# that an outside project builds against the library through find_package, add_subdirectory and
# pkg-config, and fuzzes the configuration text reader and both stream readers for a minute each.
# VESK_LEGS="native asan" limits the configurations; VESK_FUZZ_SECONDS sets the fuzzing time.
set -uo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh || exit 1

legs=${VESK_LEGS:-"native i386 asan tsan fuzz"}
fuzz_seconds=${VESK_FUZZ_SECONDS:-60}
passed=0
failed=0
status=0
logdir=$(mktemp -d)

for leg in $legs; do
    if [ "$leg" = fuzz ]; then
        echo "=== fuzz: ${fuzz_seconds}s per target (clang, ASan+UBSan)"
        if scripts/fuzz.sh "$fuzz_seconds" >"$logdir/fuzz" 2>&1; then
            passed=$((passed + 1))
            grep -E "^(=== |Done [0-9]+ runs)" "$logdir/fuzz"
        else
            tail -n 40 "$logdir/fuzz"
            echo "=== fuzz FAILED"
            failed=$((failed + 1))
            status=1
        fi
        continue
    fi
    echo "=== $leg: build"
    if ! cmake --preset "$leg" >"$logdir/$leg.configure" 2>&1; then
        cat "$logdir/$leg.configure"
        echo "=== $leg: configure FAILED"
        status=1
        failed=$((failed + 1))
        continue
    fi
    if ! cmake --build --preset "$leg" 2>&1 | tail -n 40 | grep -v '^\[' ; then :; fi
    if [ "${PIPESTATUS[0]}" -ne 0 ]; then
        echo "=== $leg: build FAILED"
        status=1
        failed=$((failed + 1))
        continue
    fi
    echo "=== $leg: test"
    ctest --preset "$leg" -j2 2>&1 | tee "$logdir/$leg.ctest" | grep -E -v '^ *Start |^ *[0-9]+/[0-9]+ Test +#[0-9]+: .* Passed'
    [ "${PIPESTATUS[0]}" -ne 0 ] && status=1
    summary=$(grep -E 'tests passed, [0-9]+ tests failed out of [0-9]+' "$logdir/$leg.ctest" | tail -n 1)
    if [ -z "$summary" ]; then
        status=1
        failed=$((failed + 1))
        continue
    fi
    leg_failed=$(sed -E 's/.* ([0-9]+) tests failed out of ([0-9]+).*/\1/' <<<"$summary")
    leg_total=$(sed -E 's/.* ([0-9]+) tests failed out of ([0-9]+).*/\2/' <<<"$summary")
    passed=$((passed + leg_total - leg_failed))
    failed=$((failed + leg_failed))
done

# The consumer checks need the native build.
case " $legs " in
*" native "*)
    echo "=== consumer: find_package, add_subdirectory, pkg-config"
    if scripts/check-consumer.sh >"$logdir/consumer" 2>&1; then
        passed=$((passed + 3))
        tail -n 3 "$logdir/consumer"
    else
        cat "$logdir/consumer"
        echo "=== consumer FAILED"
        failed=$((failed + 1))
        status=1
    fi
    ;;
esac

rm -rf "$logdir"
echo
echo "all configurations ($legs):"
echo "$passed passed, $failed failed"
exit $status
