#!/usr/bin/env bash
# Builds the outside project under examples/consumer three ways against the native build:
# from an installed tree with find_package, from the checkout with add_subdirectory, and with
# the flags of the installed vesk.pc.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install build/native --prefix "$work/prefix" >/dev/null
libdir=$(find "$work/prefix" -name 'libvesk.so' -printf '%h\n' | head -n 1)

cmake -S examples/consumer -B "$work/installed" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/installed" >/dev/null
LD_LIBRARY_PATH="$libdir" "$work/installed/consumer"
echo "find_package: ok"

cmake -S examples/consumer -B "$work/subdir" -G Ninja -DVESK_SOURCE_DIR="$root" >/dev/null
cmake --build "$work/subdir" >/dev/null
"$work/subdir/consumer"
echo "add_subdirectory: ok"

export PKG_CONFIG_PATH="$libdir/pkgconfig"
# shellcheck disable=SC2046
c++ examples/consumer/main.cpp -o "$work/pc-consumer" $(pkg-config --cflags --libs vesk)
LD_LIBRARY_PATH="$libdir" "$work/pc-consumer"
echo "pkg-config: ok"
