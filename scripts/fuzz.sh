#!/usr/bin/env bash
# Builds the fuzz targets (clang, libFuzzer, AddressSanitizer and UBSan) into build-fuzz and runs each for SECONDS
# (default 60) on a scratch copy of its seed corpus. Fails when any target crashes, leaks, hangs, runs out of memory
# or meets undefined behaviour; the input that did it is kept in the scratch folder named at the end.
# FUZZ_BUILD_DIR picks another build folder; FUZZ_SEED fixes libFuzzer's seed, so that a run repeats the inputs
# of an earlier run with the same seed (CI uses one, so its verdict repeats); fuzz/README.md tells how to run one
# target for hours.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-60}
build=${FUZZ_BUILD_DIR:-$root/build-fuzz}

"$root/scripts/install-deps.sh"
launcher=()
if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_C_COMPILER=/usr/bin/clang -DCMAKE_CXX_COMPILER=/usr/bin/clang++ \
    -DVELMORA_FUZZ=ON -DVELMORA_BUILD_TESTS=OFF -DVELMORA_BUILD_BENCH=OFF "${launcher[@]}"
cmake --build "$build" --parallel "$(nproc)" --target fuzzers

scratch=$(mktemp -d "${TMPDIR:-/tmp}/velmora-fuzz.XXXXXX")
failed=()
for seeds in "$build"/fuzz/seeds/*/; do
    name=$(basename "$seeds")
    work=$scratch/$name
    mkdir -p "$work/corpus" "$work/tmp"
    cp -R "$seeds/." "$work/corpus/"
    args=(-max_total_time="$seconds" -seed="${FUZZ_SEED:-0}" -timeout=30 -rss_limit_mb=2048 -print_final_stats=1
        -artifact_prefix="$work/")
    if [ -f "$root/fuzz/dictionaries/$name.dict" ]; then
        args+=(-dict="$root/fuzz/dictionaries/$name.dict")
    fi
    echo "== fuzz-$name: $seconds s"
    if TMPDIR=$work/tmp UBSAN_OPTIONS=print_stacktrace=1 "$build/fuzz/fuzz-$name" "${args[@]}" "$work/corpus" \
        >"$work/log" 2>&1; then
        grep -E '^(Done|stat::number_of_executed_units|stat::peak_rss_mb)' "$work/log" || true
    else
        failed+=("$name")
        tail -n 80 "$work/log"
    fi
done

if [ ${#failed[@]} -gt 0 ]; then
    echo "fuzzing found faults in: ${failed[*]} (inputs, logs and corpora kept in $scratch)" >&2
    exit 1
fi
rm -rf "$scratch"
echo "fuzzing found nothing"
