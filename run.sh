#!/usr/bin/env bash
# Sets up what is missing, builds Vesk (native x86-64) and runs the main program.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh
cmake --preset native >/dev/null
cmake --build --preset native --target vesk_values
exec build/native/examples/vesk_values "$@"
