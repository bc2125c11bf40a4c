# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# Sourced by run, test and .ci/run: installs missing packages, configures and builds.
# Exit code 69: the machine cannot be set up (no Debian, no root, a package that cannot be had).

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() { printf '\033[1m== %s\033[0m\n' "$*" >&2; }
die() {
    printf '%s: %s\n' "${0##*/}" "$1" >&2
    exit "${2:-1}"
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        die "packages are missing and neither root nor sudo is at hand to install them: $missing" 69
    fi
}

# need_packages FILE...: installs what the lists name and the machine lacks. An entry "package@arch" is
# a package of another architecture.
need_packages() {
    local entry name native installed
    native=$(dpkg --print-architecture 2>/dev/null) || native=
    installed=$(dpkg-query -W -f='${db:Status-Status} ${Package}:${Architecture}\n' 2>/dev/null) || :
    missing=
    # shellcheck disable=SC2013 # a word is an entry
    for entry in $(sed 's/#.*//' "$@"); do
        name=${entry#*:}
        if [ "$name" != "$entry" ] && command -v "${entry%%:*}" >/dev/null; then continue; fi
        case $name in
        *@*) name=${name/@/:} ;;
        *) name=$name:$native ;;
        esac
        # Packages without code are of the architecture "all".
        grep -qxF "installed $name
installed ${name%:*}:all" <<<"$installed" || missing="$missing ${name%":$native"}"
    done
    [ -n "$missing" ] || return 0
    command -v apt-get >/dev/null ||
        die "this is no Debian machine; install the equivalents of:$missing" 69
    say "installing$missing"
    for name in $missing; do
        case $name in *:*) as_root dpkg --add-architecture "${name#*:}" ;; esac
    done
    # Bookworm's names and versions are what the build is made for; others may do, or lack one.
    as_root apt-get update -q >&2 || die "apt-get update failed; is the package mirror reachable?" 69
    # shellcheck disable=SC2086 # a list of words
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends \
        $missing >&2 || die "apt-get could not install:$missing" 69
}

# What the preset "aarch64" needs. libutils wants p7zip's library, and the package that holds it cannot
# be installed for a second architecture.
need_aarch64() {
    local aside=$root/build/aarch64-packages
    need_packages "$root/scripts/packages.txt" "$root/scripts/packages-aarch64.txt"
    [ ! -e "$aside/usr/lib/p7zip/7z.so" ] || return 0
    mkdir -p "$aside"
    (cd "$aside" && apt-get download -q p7zip-full:arm64 >&2 && dpkg -x p7zip-full_*.deb .) ||
        die "p7zip-full:arm64 cannot be had" 69
}

# configure PRESET: once, and again when the presets have changed. A build folder that was moved or copied
# with its checkout starts afresh, because it holds the old paths.
configure() {
    local cache=$root/build/$1/CMakeCache.txt fresh=
    if [ -e "$cache" ] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$cache"; then
        fresh=--fresh
    elif [ -e "$root/build/$1/build.ninja" ] && [ ! "$root/CMakePresets.json" -nt "$cache" ]; then
        return 0
    fi
    say "configuring $1"
    cd "$root" || exit
    cmake ${fresh:+"$fresh"} --preset "$1" -DCMAKE_CXX_COMPILER_LAUNCHER=ccache >&2 ||
        die "configuring $1 failed" 1
    touch "$cache"
}

# build PRESET [TARGET...]: configures once, then builds (everything where no target is named).
build() {
    local preset=$1
    shift
    configure "$preset"
    cd "$root" || exit
    say "building $preset"
    cmake --build --preset "$preset" ${1:+--target "$@"} >&2 || die "building $preset failed" 1
}
