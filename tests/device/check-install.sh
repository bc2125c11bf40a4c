#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: check-install.sh BUILD_FOLDER COMPILER
# Installs the build, moves the tree, and builds and runs the examples against it, by its CMake
# package and by pkg-config.
set -euo pipefail

build=$1 compiler=$2
examples=$PWD/examples
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() { printf '%s\n' "$*" && exit 1; }

cmake --install "$build" --prefix "$work/first" >"$work/install.log" || { cat "$work/install.log" && exit 1; }
mv "$work/first" "$work/tree"

for program in codecplay codecloggerd codecloggerctl codecreport; do
    "$work/tree/bin/$program" --help >"$work/help" || fail "$program does not run"
    [ -s "$work/tree/share/man/man1/$program.1" ] || fail "$program has no man page"
done

run() {
    "$1" >"$work/output" 2>"$work/log" || { cat "$work/output" "$work/log" && exit 1; }
    grep -q 'HW.c2.video.avc:videoResolution.FHD=9999:.*:TotalFramesDropped=1:' "$work/output" ||
        fail "unexpected summary: $(cat "$work/output")"
}

cmake -S "$examples/session" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$work/tree" \
    -DCMAKE_CXX_COMPILER="$compiler" >/dev/null
cmake --build "$work/cmake"
run "$work/cmake/session"

pc=$(find "$work/tree" -name mediacodeclogger.pc -printf '%h')
cp "$examples/session/Makefile" "$examples/session/session.cpp" "$work"
PKG_CONFIG_PATH=$pc make -s -C "$work" CXX="$compiler" session
run "$work/session"
