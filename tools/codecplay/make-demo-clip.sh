#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Makes a clip to play: 18 s of H.264 with B-frames and AAC in a transport stream, whose picture
# changes from 1280x720 to 1920x1080 and back on the way, as adaptive streaming does. SECONDS is
# how long each size lasts, 6 unless given.
set -eu

if [ $# -lt 1 ] || [ $# -gt 2 ]; then
    echo "usage: make-demo-clip.sh OUT.ts [SECONDS]" >&2
    exit 2
fi
out=$1
seconds=${2:-6}
work=$(mktemp -d "$(dirname "$out")/demo-clip.XXXXXX")
trap 'rm -rf "$work"' EXIT

# segment NAME SIZE: the picture for a while, with parameter sets of its own in the stream.
segment() {
    ffmpeg -v error -nostdin -y -f lavfi -i "testsrc2=size=$2:rate=30:duration=$seconds" \
        -c:v libx264 -preset superfast -crf 30 -bf 2 -g 30 -pix_fmt yuv420p \
        -colorspace bt709 -color_primaries bt709 -color_trc bt709 -color_range tv \
        -f mpegts "$work/$1.ts"
    echo "file $1.ts" >>"$work/list"
}
segment 1 1280x720
segment 2 1920x1080
segment 3 1280x720

ffmpeg -v error -nostdin -y -f concat -i "$work/list" \
    -f lavfi -i "sine=frequency=440:beep_factor=4:sample_rate=48000:duration=$((3 * seconds))" \
    -map 0:v -map 1:a -c:v copy -c:a aac -b:a 96k -ac 2 -f mpegts "$work/out.ts"
mv "$work/out.ts" "$out"
