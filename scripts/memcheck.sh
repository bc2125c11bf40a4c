#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Plays a clip with analysis on as Codec2 and as OMX, with a logger service in another process, all
# under valgrind's memcheck. Exit code: 0 clean, 1 build failed or errors found, 69 set-up failed.
set -euo pipefail
source "$(dirname "$0")/setup.sh"
cd "$root"
need_packages scripts/packages.txt scripts/packages-ci.txt
build release codecplay codecloggerd codecloggerctl

bin=$root/build/release/bin
scratch=$(mktemp -d)
export HOSTBINDER_DIR=$scratch/services
service=
trap '[ -z "$service" ] || kill "$service" 2>/dev/null || true; rm -rf "$scratch"' EXIT

# memcheck NAME COMMAND...: what libutils shares is only pointed to behind its head, so what is
# "possibly lost" tells nothing.
memcheck() {
    local log=$scratch/$1.valgrind
    shift
    exec valgrind --error-exitcode=99 --leak-check=full --show-leak-kinds=definite \
        --errors-for-leak-kinds=definite --track-fds=no --log-file="$log" "$@"
}

# verdict NAME CODE
verdict() {
    local log=$scratch/$1.valgrind
    [ "$2" -eq 0 ] || { cat "$log" >&2 && die "memcheck of $1 ended with code $2" 1; }
    printf 'memcheck: %s: %s, %s\n' "$1" "$(sed -n 's/.*ERROR SUMMARY: \([0-9]* errors\).*/\1/p' "$log")" \
        "$(sed -n 's/.*total heap usage: \([0-9,]* allocs\).*/\1/p' "$log")"
}

say "memcheck"
ffmpeg -v error -nostdin -y -f lavfi -i testsrc2=size=320x240:rate=25:duration=12 \
    -f lavfi -i sine=duration=12 -c:v libx264 -preset ultrafast -c:a aac -threads 1 "$scratch/clip.mp4"

(memcheck service "$bin/codecloggerd") >"$scratch/service.log" 2>&1 &
service=$!
for _ in {1..300}; do
    "$bin/codecloggerctl" list >/dev/null 2>&1 && break
    sleep 0.1
done

for backend in codec2 omx; do
    code=0
    # Started under its package's name it need not start itself anew, which valgrind does not follow.
    (memcheck $backend "$bin/codecplay" --package "$bin/codecplay" --$backend --speed 0 \
        --prop mediaanalytic.enable=true --prop mediaanalytic.debug=0x407 --seek 3@2 --flush 6 \
        --reconfigure 9 --log "$scratch/log" --metrics "$scratch/metrics" "$scratch/clip.mp4") \
        >/dev/null || code=$?
    verdict $backend $code
done

code=0
kill -TERM "$service"
wait "$service" || code=$?
service=
verdict service $code
