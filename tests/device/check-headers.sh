#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: check-headers.sh FLAG... -- HEADER...
# Fails unless each header compiles alone, and all together in both orders with g++ and clang++ as
# C++17 and C++20, and includes nothing of ours but what is listed. What a header lacks when it is
# alone it lacks with every compiler, so one is asked.
set -euo pipefail

flags=()
while [ "$1" != -- ]; do flags+=("$1") && shift; done
shift

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

jobs=()
for header in "$@"; do
    source=$work/${header//\//_}.cpp
    printf '#include <%s>\n' "$header" | tee -a "$work/forward.cpp" >"$source"
    jobs+=("clang++ -std=gnu++17 $source")
done
tac "$work/forward.cpp" >"$work/backward.cpp"
for source in "$work"/{forward,backward}.cpp; do
    for compiler in g++ clang++; do
        for standard in gnu++17 gnu++20; do jobs+=("$compiler -std=$standard $source"); done
    done
done
export FLAGS="${flags[*]} -fsyntax-only -fno-exceptions -fno-rtti -Wall -Wextra -Werror"
# shellcheck disable=SC2016 # expanded by the inner shell
printf '%s\n' "${jobs[@]}" | xargs -P "$(nproc)" -I{} sh -c '{} $FLAGS || { echo "failed: {}"; exit 1; }'

included=$(g++ -std=gnu++17 "${flags[@]}" -M "$work/forward.cpp" |
    tr ' ' '\n' | sed -n 's|.*/\(mediaCodecLogger/.*\.h\)$|\1|p' | LC_ALL=C sort -u)
diff -u --label "public headers" --label "included by them" \
    <(printf '%s\n' "$@" | LC_ALL=C sort) <(printf '%s\n' "$included")
