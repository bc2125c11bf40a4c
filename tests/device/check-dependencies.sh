#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: check-dependencies.sh ANDROID_BP TABLE SOURCE_FOLDER...
# Fails unless the sources include Android headers of the table only, and the Android build depends
# on exactly the modules that bring them.
set -euo pipefail

bp=$1 table=$2
shift 2

included=$(grep -rhoE '^#include <[^>]+/[^>]+>' "$@" | tr -d '<>' | cut -d' ' -f2 |
    grep -vE '^(closed|mediaCodecLogger|sys)/' | LC_ALL=C sort -u)
strange=$(LC_ALL=C comm -23 <(printf '%s\n' "$included") <(awk '{ print $1 }' "$table" | LC_ALL=C sort))
[ -z "$strange" ] || { printf 'not in %s:\n%s\n' "$table" "$strange" && exit 1; }

needed() {
    awk -v included="$included" '
        BEGIN { split(included, list, "\n"); for (i in list) used[list[i]] = 1 }
        !/^#/ && ($1 == "-" || $1 in used) { print $2 }
    ' "$table" | LC_ALL=C sort -u
}
declared() {
    awk '
        /^[a-z_]+ \{$/ { inside = 0 }
        /^    name: "libmediacodeclogger_defaults",$/ { inside = 1 }
        inside && /^    (shared|header)_libs: \[$/ { listing = 1; next }
        /^    \],$/ { listing = 0 }
        inside && listing { gsub(/[ ",]/, ""); print }
    ' "$bp" | LC_ALL=C sort -u
}
diff -u --label "needed by the sources" --label "declared in $bp" <(needed) <(declared)
