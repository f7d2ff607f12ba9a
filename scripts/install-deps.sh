#!/usr/bin/env bash
# Installs the Debian packages that building and testing Vesk needs, when any is missing.
set -euo pipefail

packages=(cmake ninja-build g++ g++-multilib libgtest-dev libbenchmark-dev pkg-config
          nlohmann-json3-dev rapidjson-dev libmsgpack-cxx-dev
          clang libclang-rt-14-dev)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq "${missing[@]}"
