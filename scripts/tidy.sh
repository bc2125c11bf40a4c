#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs clang-tidy over the library, the host platform and the programs, or over those of these folders
# that are named, each by the .clang-tidy next to it. Exit code: 0 clean, 1 findings, 69 set-up failed.
set -euo pipefail
source "$(dirname "$0")/setup.sh"
cd "$root"
need_packages scripts/packages.txt scripts/packages-ci.txt

[ $# -gt 0 ] || set -- mediaCodecLogger hostPlatform tools
# The headers that the programs' sources want and the build makes.
build release codeclogger_admin codecreport_trace_proto
say "clang-tidy"
found=
for folder in "$@"; do
    # A folder at a time: a header is held to what its own folder asks, not to what its users' does.
    run-clang-tidy-14 -quiet -p build/release -header-filter "^$root/$folder/" "^$root/$folder/" \
        >build/tidy.log 2>&1 || {
        grep -v '^clang-tidy-14 \|warnings generated' build/tidy.log >&2
        found="$found $folder"
    }
    printf 'clang-tidy: %s files of %s\n' "$(grep -c '^clang-tidy-14 ' build/tidy.log)" "$folder"
done
[ -z "$found" ] || die "clang-tidy has findings in$found" 1
