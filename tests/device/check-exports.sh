#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: check-exports.sh exact|demangled LIBRARY SYMBOL_LIST
# Fails unless the library exports the listed symbols and nothing else, and runs no code at load but
# the construction of the interface descriptors and of the singleton's lock. "demangled" is for
# a library of another standard library or compiler than the list.
set -euo pipefail

mode=$1 library=$2 list=$3

normalised() {
    # g++ exports an inline function that clang hides: the singleton's way in.
    if [ "$mode" = exact ]; then cat; else
        c++filt | sed 's/std::\(__1\|__cxx11\)::/std::/g; /^android::Singleton<.*>::getInstance()$/d'
    fi | LC_ALL=C sort -u
}

diff -u --label "$list" --label "exported by $library" \
    <(grep -v '^#' "$list" | normalised) \
    <(nm --dynamic --defined-only --format=posix "$library" | cut -d' ' -f1 | normalised)

diff -u --label "may run at load" --label "runs at load in $library" - \
    <(nm "$library" | sed -n 's/.*_GLOBAL__sub_I_//p' | LC_ALL=C sort) <<'END'
IMediaCodecLoggerClient.cpp
IMediaCodecLoggerListener.cpp
IMediaCodecLoggerService.cpp
IMediaCodecLoggerService.cpp
ZephraMediaAnalytic.cpp
END
