#!/usr/bin/env bash
# Verifies our systemd units as configured in a build folder, and that each system unit's sandbox rates below 3.0
# in "systemd-analyze security" (0 is the safest, 10 the least safe).
# Usage: check-systemd-units.sh system|user UNIT_FILE...
set -euo pipefail
manager=$1
shift
runtime=$(mktemp -d)
trap 'rm -rf "$runtime"' EXIT
export XDG_RUNTIME_DIR=$runtime
status=0
for unit in "$@"; do
    # verify also looks for the program a unit runs: here it is the build's, not yet installed.
    faults=$(systemd-analyze verify "--$manager" --man=no "$unit" 2>&1 |
        grep -v 'is not executable: No such file or directory' || true)
    if [ -n "$faults" ]; then
        echo "$unit: $faults"
        status=1
    fi
    if [ "$manager" = system ]; then
        exposure=$(systemd-analyze security --offline=true "$unit" |
            sed -n 's/.*Overall exposure level for [^:]*: \([0-9.]*\).*/\1/p')
        echo "$(basename "$unit"): exposure $exposure"
        awk -v e="$exposure" 'BEGIN { exit !(e != "" && e < 3.0) }' || status=1
    fi
done
exit $status
