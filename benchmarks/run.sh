#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
set -euo pipefail

usage() {
    cat <<'EOT'
usage: benchmarks/run.sh [OPTION-OF-GOOGLE-BENCHMARK...]

Measures what the library costs on this machine and prints a table of medians, each also as a multiple
of one clock_gettime of the same run. Log lines are formatted and thrown away. The same figures as JSON:
build/benchmarks/benchmarks.json

Below the table: how often each event reads the clock, takes a lock and allocates.

  -h, --help   this text

For a quick look at some of it: benchmarks/run.sh --benchmark_filter='clock|frame' \
    --benchmark_repetitions=1

Exit code: 0 measured, 1 failed, 2 usage, 69 set-up failed.
EOT
}

case ${1:-} in
-h | --help) usage && exit 0 ;;
esac

source "$(dirname "$0")/../scripts/setup.sh"
need_packages "$root/scripts/packages.txt" "$root/scripts/packages-bench.txt"
# Configures again: the build may be older than the packages.
cmake --preset release -S "$root" -DCMAKE_CXX_COMPILER_LAUNCHER=ccache >/dev/null
build release codec_benchmark event_counts

out=$root/build/benchmarks
mkdir -p "$out"
say "measuring; takes about three minutes, best on an idle machine"
"$root/build/release/bin/codec_benchmark" --json="$out/benchmarks.json" \
    --benchmark_repetitions=5 --benchmark_min_time=0.1 "$@"
say "counting"
"$root/build/release/bin/event_counts"
say "the same figures as JSON: $out/benchmarks.json"
