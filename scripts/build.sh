#!/usr/bin/env bash
# Installs what is missing, then configures and builds into BUILD_DIR (default: build).
# Extra arguments go to CMake, e.g. scripts/build.sh -DVELMORA_ASAN=ON
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
"$root/scripts/install-deps.sh"
cmake -S "$root" -B "$build" -G Ninja "$@"
cmake --build "$build" --parallel "$(nproc)"
