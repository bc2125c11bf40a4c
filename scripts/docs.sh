#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Writes the tables of docs/*.md from those that codecreport answers from: what stands between
# "<!-- codecreport explain --markdown TABLE -->" and "<!-- end of TABLE -->". With --check, shows
# what would change and ends with 1 if anything would.
set -euo pipefail

check=
[ "${1-}" != --check ] || { check=1 && shift; }
cd "$(dirname "$0")/.."
program=${1-build/release/bin/codecreport}

rewrite() {
    local line table
    while IFS= read -r line || [ -n "$line" ]; do
        printf '%s\n' "$line"
        [[ $line =~ ^'<!-- codecreport explain --markdown '([a-z]+)' -->'$ ]] || continue
        table=${BASH_REMATCH[1]}
        # The document's own heading is the first.
        printf '\n%s\n\n' "$("$program" explain --markdown "$table" | sed '1s/^# /## /')"
        while IFS= read -r line && [ "$line" != "<!-- end of $table -->" ]; do :; done
        printf '%s\n' "$line"
    done
}

status=0
for table in logger fields report status service metrics settings debug analytics analysis history \
    verdicts causes json database; do
    grep -qx "<!-- codecreport explain --markdown $table -->" docs/*.md ||
        { echo "docs.sh: no document shows the table '$table'" >&2 && status=1; }
done
for document in docs/*.md; do
    new=$(rewrite <"$document")
    if [ "$check" ]; then
        diff -u --label "$document" --label "what codecreport explains" "$document" - \
            <<<"$new" || status=1
    elif ! diff -q "$document" - <<<"$new" >/dev/null; then
        printf '%s\n' "$new" >"$document"
    fi
done
exit $status
