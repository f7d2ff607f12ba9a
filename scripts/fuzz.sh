#!/usr/bin/env bash
# Builds the fuzz preset and runs each fuzzer for a while: the configuration text reader and the
# readers of both stream formats.
# Usage: scripts/fuzz.sh [seconds [target...]]   (default 60 seconds each, every target). Exits
# non-zero when a fuzzer finds a crash; the crashing input is left in build/fuzz/artifacts/.
set -euo pipefail

seconds="${1:-60}"
shift || true
targets=("$@")
[ ${#targets[@]} -eq 0 ] && targets=(config gds gds_legacy)
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"

cmake --preset fuzz >/dev/null
cmake --build build/fuzz --target "${targets[@]/%/_fuzz}"

artifacts="build/fuzz/artifacts/"
mkdir -p "$artifacts"
for target in "${targets[@]}"; do
    # The fuzzer adds what it finds to its corpus: it works on a copy, so the seeds stay as
    # written.
    corpus="build/fuzz/corpus/$target"
    rm -rf "$corpus"
    mkdir -p "$corpus"
    cp "fuzz/corpus/$target"/* "$corpus/"
    echo "=== $target: ${seconds}s"
    "build/fuzz/fuzz/${target}_fuzz" -max_total_time="$seconds" -max_len=65536 \
        -artifact_prefix="$artifacts" "$corpus"
done
