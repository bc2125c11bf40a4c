#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
set -euo pipefail

usage() {
    cat <<'EOT'
usage: fuzz/make-seeds.sh [TARGET...]

Makes fuzz/seeds anew (of all targets, or of those named) out of what fuzz/run.sh has gathered: the
smallest set of inputs that still reaches every edge, or the 64 of them that reach most. Those of
log_reader start from pieces of a session that ./run played. Run "fuzz/run.sh 60" before.

  -h, --help   this text
EOT
}

case ${1:-} in -h | --help) usage && exit 0 ;; esac
cd "$(dirname "$0")/.."
[ $# -gt 0 ] || set -- $(cd build/fuzz/fuzz && ls -d fuzz_* | sed 's/^fuzz_//')

# A log begins with a byte that is even, metrics with one that is odd.
session_pieces() {
    local log=build/run/session.log lines at
    [ -e $log ] || return 0
    lines=$(wc -l <$log)
    for at in 1 $((lines / 2)) $((lines - 40)); do
        { printf 'L' && sed -n "$((at > 0 ? at : 1)),+12p" $log; } >"$1/session-$at"
    done
    { printf 'M' && head -n 4 build/run/metrics.jsonl; } >"$1/metrics"
    { printf 'L' && head -n 12 $log | gzip -n; } >"$1/compressed"
}

for target in "$@"; do
    corpus=build/fuzz/corpus/$target seeds=fuzz/seeds/$target
    mkdir -p "$corpus"
    [ "$target" != log_reader ] || session_pieces "$corpus"
    rm -rf "$seeds"
    mkdir -p "$seeds"
    "build/fuzz/fuzz/fuzz_$target" -set_cover_merge=1 -max_len=4096 "$seeds" "$corpus" \
        >build/fuzz/$target.log 2>&1
    # Written in the order of what each adds.
    (cd "$seeds" && ls -tr | tail -n +65 | xargs -r rm)
    printf '%s: %s of %s inputs\n' "$target" "$(find "$seeds" -type f | wc -l)" \
        "$(find "$corpus" -type f | wc -l)"
done
