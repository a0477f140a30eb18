#!/usr/bin/env bash
# The main job on one machine: builds everything, then runs the demo (scripts/demo-run.sh) with the programs built:
# velmora-service with its bundled sample catalogue, the sample apps' old versions on a scratch "Mac volume", a check
# with the service in one request, then every update downloaded, checked and installed. With a display, velmora shows
# the updates in the tray and its window before they are installed (VELMORA_SCREENSHOTS=DIR draws them instead).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
BUILD_DIR=$build "$root/scripts/build.sh" -DVELMORA_BUILD_TESTS=OFF -DVELMORA_BUILD_BENCH=OFF
exec "$root/scripts/demo-run.sh" "$build/src/velmora-cli" "$build/service/velmora-service" \
    "$build/service/installed/Applications" "$build/src/app/velmora"
