#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Compares how many instructions each event takes with the baseline that is kept here. Unlike times,
# the counts repeat: a difference comes from the code, the compiler or the system's libraries.
set -euo pipefail

usage() {
    cat <<'EOT'
usage: benchmarks/check-instructions.sh [--update]

Builds, counts the instructions of each event under callgrind and compares them with the baseline of
this compiler and C library, benchmarks/instructions/<key>.txt. Without such a baseline nothing is
compared.

  --update     writes the baseline from what is counted now
  -h, --help   this text

Exit code: 0 no event became dearer, 1 one did or the build failed, 2 usage, 69 set-up failed.
EOT
}

update=
case ${1:-} in
"") ;;
--update) update=1 ;;
-h | --help) usage && exit 0 ;;
*) usage >&2 && exit 2 ;;
esac

source "$(dirname "$0")/../scripts/setup.sh"
need_packages "$root/scripts/packages.txt" "$root/scripts/packages-bench.txt"
cmake --preset release -S "$root" -DCMAKE_CXX_COMPILER_LAUNCHER=ccache >/dev/null
build release event_counts

# More than this share above the baseline is a regression; smaller ones come from elsewhere, such as
# an update of a system library.
tolerance=0.03

compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$root/build/release/CMakeCache.txt")
key=$(basename "$compiler")-$("$compiler" -dumpversion)-$(uname -m)-glibc-$(getconf GNU_LIBC_VERSION |
    cut -d' ' -f2)
baseline=$root/benchmarks/instructions/$key.txt

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
say "counting instructions ($key)"
# The C library would choose its string functions by the model of the processor.
GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX,-AVX2,-AVX_Fast_Unaligned_Load,-ERMS,-FSRM \
    valgrind --quiet --tool=callgrind --collect-atstart=no \
    --callgrind-out-file="$scratch/out" "$root/build/release/bin/event_counts"

mapfile -t dumps < <(printf '%s\n' "$scratch"/out.* | sort -V)
# Each dump holds the sum over the repeats of one event; "nothing" is what the counting itself takes.
awk '
    /^desc: Trigger: Client Request: / { sub(/^desc: Trigger: Client Request: /, ""); name = $0 }
    /^totals: / && name != "" {
        match(name, / x[0-9]+$/)
        repeats = substr(name, RSTART + 2)
        name = substr(name, 1, RSTART - 1)
        count = $2 / repeats
        if (name == "nothing") nothing = count
        else printf "%d\t%s\n", count - nothing + 0.5, name
        name = ""
    }' "${dumps[@]}" >"$scratch/counts"

if [ -n "$update" ]; then
    cp "$scratch/counts" "$baseline"
    say "wrote ${baseline#"$root/"}"
    exit 0
fi
if [ ! -e "$baseline" ]; then
    cat "$scratch/counts"
    say "no baseline for $key; nothing to compare with (--update makes one)"
    exit 0
fi

awk -F '\t' -v tolerance="$tolerance" '
    NR == FNR { old[$2] = $1; next }
    {
        now[$2] = $1
        change = ($2 in old) ? 100 * ($1 - old[$2]) / (old[$2] ? old[$2] : 1) : 0
        worse = ($2 in old) && $1 > old[$2] * (1 + tolerance) + 2
        note = !($2 in old) ? "not in the baseline" : worse ? "MORE THAN BEFORE" : ""
        if (note != "") bad = 1
        printf "%-44s %8d %8s %+6.1f %%  %s\n", $2, $1, ($2 in old) ? old[$2] : "-", change, note
    }
    END {
        for (name in old) if (!(name in now)) { print name ": no longer counted"; bad = 1 }
        exit bad
    }' "$baseline" "$scratch/counts" || die "the counts above differ from the baseline.
If the change is worth its instructions (say why in the commit), or only the compiler or a library of
the system changed, write a new baseline: benchmarks/check-instructions.sh --update" 1
