#!/usr/bin/env bash
# tools/fuzz.sh SECONDS [TARGET ...]: runs every fuzz target for so many seconds from its seed corpus (fuzz/corpus/TARGET).
# A finding is left as build/fuzz/crash-TARGET-*, printed, and fails the run.
set -uo pipefail
cd "$(dirname "$0")/.."
seconds=$1
shift
targets=("$@")
[ ${#targets[@]} -gt 0 ] || mapfile -t targets < <(cd build/fuzz/bin 2>/dev/null && ls fuzz_* 2>/dev/null)
[ ${#targets[@]} -gt 0 ] || { echo "fuzz: no target is built"; exit 1; }
failed=0
one() {
    local target=$1 corpus=fuzz/corpus/${1#fuzz_} work
    work=$(mktemp -d)
    mkdir -p "$corpus"
    timeout $((seconds + 60)) "build/fuzz/bin/$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="build/fuzz/crash-$target-" "$work" "$corpus" >"build/fuzz/$target.log" 2>&1
    local status=$?
    rm -rf "$work"
    rmdir --ignore-fail-on-non-empty "$corpus" 2>/dev/null
    local runs
    runs=$(awk '/stat::number_of_executed_units/ { print $2 }' "build/fuzz/$target.log")
    if [ $status -ne 0 ] || [ -z "$runs" ] || [ "$runs" -eq 0 ]; then
        echo "fuzz $target: FINDING or no run (exit status $status)"
        tail -n 30 "build/fuzz/$target.log"
        return 1
    fi
    echo "fuzz $target: $runs executions"
}
export -f one
export seconds
printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I{} bash -c 'one {}' || failed=1
exit $failed
