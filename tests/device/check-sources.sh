#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: check-sources.sh ANDROID_BP MODULE SOURCE...
# Fails unless the module of the Android build compiles exactly these C++ sources.
set -euo pipefail

bp=$1 module=$2
shift 2

# Prints the C++ sources of the module. Modules and properties stand as bpfmt writes them.
module_sources() {
    awk -v name="    name: \"$module\"," '
        /^[a-z_]+ \{$/ { inside = 0 }
        $0 == name { inside = 1 }
        inside && /^    srcs: \[$/ { listing = 1; next }
        /^    \],$/ { listing = 0 }
        inside && listing && /\.cpp",$/ { gsub(/[ ",]/, ""); print }
        inside && /^    srcs: \[".*"\],$/ { gsub(/.*\["|"\],/, ""); print }
    ' "$bp" | LC_ALL=C sort
}

diff -u --label Android.bp --label "as bpfmt writes it" "$bp" <(bpfmt -o "$bp")
diff -u --label "$module in Android.bp" --label "the CMake target" \
    <(module_sources) <(printf '%s\n' "$@" | LC_ALL=C sort)
