#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs clang-tidy, as .clang-tidy says, over the library's sources and headers, or over the folders
# that are named. Exit code: 0 clean, 1 findings, 69 set-up failed.
set -euo pipefail
source "$(dirname "$0")/setup.sh"
cd "$root"
need_packages scripts/packages.txt scripts/packages-ci.txt

[ $# -gt 0 ] || set -- mediaCodecLogger
configure release
pattern="^$root/($(IFS='|' && echo "$*"))/"
say "clang-tidy"
# What the compiler is asked to warn of is its affair; g++ has options that clang lacks.
run-clang-tidy-14 -quiet -j2 -p build/release -header-filter "$pattern" \
    -extra-arg=-Wno-unknown-warning-option "$pattern" >build/tidy.log 2>&1 || {
    grep -v '^clang-tidy-14 \|warnings generated' build/tidy.log >&2
    die "clang-tidy has findings" 1
}
printf 'clang-tidy: %s files without findings\n' "$(grep -c '^clang-tidy-14 ' build/tidy.log)"
