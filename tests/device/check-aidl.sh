#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: check-aidl.sh ANDROID_BP
# Fails unless the package of every .aidl file that a module lists starts at the module's `path`, or
# at the top where it has none: the build looks for the generated headers there, and the generator
# writes them by package.
set -euo pipefail

bp=$1
# "FILE ROOT/" for each listed file.
files=$(awk '
    /^[a-z_]+ \{$/ { count = 0; root = "" }
    /^    path: "/ { root = $2; gsub(/[",]/, "", root); root = root "/" }
    /\.aidl",$/ { file = $1; gsub(/[",]/, "", file); listed[count++] = file }
    /^\}$/ { for (i = 0; i < count; ++i) print listed[i], root }
' "$bp")
[ -n "$files" ] || { echo "$bp lists no .aidl file" && exit 1; }

failed=0
while read -r file root; do
    package=$(sed -n 's/^package \(.*\);$/\1/p' "$file")
    expected=$root${package//.//}/$(basename "$file")
    [ "$file" = "$expected" ] || { echo "$file: package $package belongs in $expected" && failed=1; }
done <<<"$files"
exit "$failed"
