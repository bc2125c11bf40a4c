#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: check-recording.sh CODECPLAY STORY_TEST
# A session that codecplay recorded as a story brings the lines that the session brought, and the same
# ones each time. Their numbers may differ, because the clock goes on between a record and its call.
set -euo pipefail

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

ffmpeg -v error -nostdin -f lavfi -i testsrc2=size=160x120:rate=25:duration=6 -f lavfi \
    -i sine=duration=6 -c:v libx264 -preset ultrafast -c:a aac "$work/clip.mp4"
for backend in codec2 omx; do
    story=$work/$backend.story log=$work/$backend.log
    "$1" --$backend --speed 0 --flush 2 --reconfigure 4 \
        --story "$story" --log "$log" "$work/clip.mp4" >/dev/null
    "$2" --update "$story"
    "$2" "$story"
    diff <(sed -En 's/^    [DIWE](\/[A-Za-z]+)? (.*)/\2/p' "$story" | sed -E 's/ \([0-9]+ times\)//; s/<pid>/0/; s/\\n$//; s/[0-9]+/0/g; s/ +$//' | sort -u) \
        <(sed -E 's/^([^ ]+ +){4}. [A-Za-z]+ *: //; s/[0-9]+/0/g; s/ +$//' "$log" | sort -u)
done
