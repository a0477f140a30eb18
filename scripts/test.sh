#!/usr/bin/env bash
# Builds (see build.sh) and runs the whole test suite. Extra arguments go to CMake.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
# The tests and benchmarks are switched on here, as the demo switches them off in the same build folder; later
# arguments still win.
BUILD_DIR=$build "$root/scripts/build.sh" -DVELMORA_BUILD_TESTS=ON -DVELMORA_BUILD_BENCH=ON "$@"
# The keychain tests need a session bus with an unlocked Secret Service; give the suite one of its own.
run_suite() { ctest --test-dir "$build" --no-tests=error --output-on-failure --parallel "$(nproc)" --timeout 600; }
if [ -z "${DBUS_SESSION_BUS_ADDRESS:-}" ] && command -v dbus-run-session >/dev/null; then
    export -f run_suite
    export build
    dbus-run-session -- bash -c 'printf velmora | gnome-keyring-daemon --unlock --components=secrets >/dev/null 2>&1 || true; run_suite'
else
    run_suite
fi
