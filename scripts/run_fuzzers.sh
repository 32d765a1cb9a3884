#!/usr/bin/env bash
# Runs every libFuzzer target of BUILD_DIR for SECONDS each, starting from the
# seed and regression inputs in fuzz/corpus/<target>/ (read only: new inputs
# go to BUILD_DIR/corpus/<target>/, findings to BUILD_DIR/findings/<target>/).
# Prints the executions per target and fails when any target found something.
set -euo pipefail

build_dir=${1:?usage: run_fuzzers.sh BUILD_DIR SECONDS}
seconds=${2:?usage: run_fuzzers.sh BUILD_DIR SECONDS}
repo=$(cd "$(dirname "$0")/.." && pwd)
targets=(calculate_filter homodyne_filter phase_transfer interp3)

failed=0
summary=()
for target in "${targets[@]}"; do
    work="$build_dir/corpus/$target"
    findings="$build_dir/findings/$target"
    log="$build_dir/fuzz_$target.log"
    mkdir -p "$work" "$findings"
    echo "== fuzz_$target for ${seconds}s"
    status=0
    "$build_dir/fuzz_$target" -max_total_time="$seconds" -timeout=10 -max_len=2048 \
        -artifact_prefix="$findings/" "$work" "$repo/fuzz/corpus/$target" >"$log" 2>&1 || status=$?
    runs=$(sed -n 's/^Done \([0-9]*\) runs.*/\1/p' "$log")
    if [ "$status" -eq 0 ] && [ -n "$runs" ]; then
        summary+=("fuzz_$target: $runs executions, no finding")
    else
        failed=1
        summary+=("fuzz_$target: FINDING (exit $status), input kept in $findings/, log $log")
        grep -E 'ERROR|runtime error|property violated|SUMMARY' "$log" | head -n 5 || true
    fi
done
printf '%s\n' "${summary[@]}"
exit "$failed"
