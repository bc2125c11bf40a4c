#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs the library's tests and prints which of its lines and branches they reach; docs/coverage.md
# says which they do not, and why. Page with every line: build/coverage/report/index.html.
# Exit code: 0 reached enough, 1 build failed or too little reached, 8 tests failed, 69 set-up failed.
set -euo pipefail
source "$(dirname "$0")/setup.sh"
cd "$root"
need_packages scripts/packages.txt scripts/packages-coverage.txt

readonly least_lines=99 least_branches=96

build coverage
find build/coverage -name '*.gcda' -delete
say "testing coverage"
ctest --preset coverage --quiet --output-log build/coverage/tests.log || {
    cat build/coverage/tests.log
    exit 8
}
mkdir -p build/coverage/report
# Of a decision that the compiler made of a call that may throw, or of code that cannot be reached,
# nobody could take both ways.
gcovr --root . --object-directory build/coverage/mediaCodecLogger --filter mediaCodecLogger/ \
    --exclude-throw-branches --exclude-unreachable-branches \
    --html-details build/coverage/report/index.html --txt build/coverage/report/report.txt --print-summary \
    --fail-under-line $least_lines --fail-under-branch $least_branches ||
    die "coverage is below $least_lines % of the lines or $least_branches % of the branches" 1
