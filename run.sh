#!/usr/bin/env bash
# Sets up what is missing, builds Vesk (native x86-64) and runs the vesk tool: by default on the
# sample settings file, else with the arguments given (./run.sh config get FILE SECTION KEY).
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh
cmake --preset native >/dev/null
cmake --build --preset native --target vesk_tool >/dev/null
if [ $# -eq 0 ]; then
    set -- config show examples/settings.cfg
fi
exec build/native/tools/vesk/vesk "$@"
