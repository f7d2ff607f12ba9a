#!/usr/bin/env bash
# Builds the fuzz preset and runs the configuration text fuzzer for a while.
# Usage: scripts/fuzz.sh [seconds]   (default 60). Exits non-zero when the fuzzer finds a crash;
# the crashing input is left in build/fuzz/artifacts/.
set -euo pipefail

seconds="${1:-60}"
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"

cmake --preset fuzz >/dev/null
cmake --build build/fuzz --target config_fuzz

# The fuzzer adds what it finds to its corpus: it works on a copy, so the seeds stay as written.
corpus="build/fuzz/corpus/config"
artifacts="build/fuzz/artifacts/"
rm -rf "$corpus"
mkdir -p "$corpus" "$artifacts"
cp fuzz/corpus/config/* "$corpus/"

build/fuzz/fuzz/config_fuzz -max_total_time="$seconds" -max_len=65536 \
    -artifact_prefix="$artifacts" "$corpus"
