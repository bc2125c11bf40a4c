#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
set -euo pipefail

usage() {
    cat <<'EOT'
usage: fuzz/run.sh [SECONDS [TARGET...]]

Builds the fuzz targets (all, or those named) and lets each run for SECONDS (default 5) on its seeds
and on what earlier runs gathered in build/asan/corpus. An input that fails is written to
fuzz/regressions/TARGET; commit it with the repair, and the tests replay it from then on.

  -h, --help   this text

Exit code: 0 nothing found, 1 an input failed, 2 usage, 69 set-up failed.
EOT
}

case ${1:-} in -h | --help) usage && exit 0 ;; esac
seconds=${1:-5}
case $seconds in '' | *[!0-9]*) usage >&2 && exit 2 ;; esac
[ $# -eq 0 ] || shift

source "$(dirname "$0")/../scripts/setup.sh"
need_packages "$root/scripts/packages.txt"
if [ $# -gt 0 ]; then build asan "${@/#/fuzz_}"; else build asan fuzzers; fi
cd "$root/build/asan/fuzz"
[ $# -gt 0 ] || set -- fuzz_*
cd "$root"

found=0
for target in "${@#fuzz_}"; do
    corpus=build/asan/corpus/$target log=build/asan/fuzz/$target.log
    mkdir -p "$corpus" "fuzz/seeds/$target" "fuzz/regressions/$target"
    code=0
    # The limits say what "too slow" and "too much memory" are for inputs of a few kilobytes.
    "build/asan/fuzz/fuzz_$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=1024 \
        -malloc_limit_mb=256 -max_len=4096 -print_final_stats=1 -use_value_profile=1 \
        -artifact_prefix="fuzz/regressions/$target/" "$corpus" "fuzz/seeds/$target" "fuzz/regressions/$target" \
        >"$log" 2>&1 || code=$?
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    covered=$(sed -n 's/.* cov: \([0-9]*\) .*/\1/p' "$log" | tail -n 1)
    if [ $code -eq 0 ]; then
        printf 'fuzz %-20s %9s inputs, %6s edges\n' "$target" "$runs" "$covered"
    else
        found=1
        printf 'fuzz %-20s FAILED, see %s\n' "$target" "$log"
        grep -E 'does not hold|ERROR|SUMMARY|Test unit written|runtime error' "$log" || tail -n 20 "$log"
    fi
    # Git keeps no empty folders, and neither does this.
    rmdir "fuzz/seeds/$target" "fuzz/regressions/$target" 2>/dev/null || true
done
exit $found
