#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Plays a clip with codecplay, each time with one or two known faults, and prints what codecreport
# takes for the cause. As docs/diagnosis.md has it.
# shellcheck disable=SC2046,SC2086 # options are lists of words
set -euo pipefail

usage() {
    cat <<'EOF'
usage: played.sh [-v] [FOLDER]

Plays 72 sessions of 7 s in presentation pace, two at a time (4.5 minutes). Clips, logs and a
database of them (all.db) stay in FOLDER (build/diagnosis). With -v, also what was told wrongly.
A busy machine is a fault as well: run it with `nice -n -10` or `chrt -r 10`.

  PLAYED_BIN   folder of the programs (build/release/bin)
EOF
}

verbose=
[ "${1:-}" = -v ] && verbose=1 && shift
case ${1:-} in
-*) usage && exit $(($1 == --help ? 0 : 2)) ;;
esac
root=$(cd "$(dirname "$0")/../.." && pwd)
export bin=${PLAYED_BIN:-$root/build/release/bin}
out=${1:-$root/build/diagnosis}
mkdir -p "$out"
cd "$out"
rm -f ./*.log all.db sessions

# clip FPS: 7 s.
clip() {
    [ -e "$1.mp4" ] || ffmpeg -v error -nostdin -y \
        -f lavfi -i "testsrc2=size=320x180:rate=$1:duration=7" \
        -c:v libx264 -preset ultrafast -bf 2 -g "$1" -pix_fmt yuv420p "$1.mp4"
}
for fps in 24 25 30 50 60; do clip $fps; done

# session NAME TRUTH ARGUMENT...: one line of `sessions`. TRUTH: CAUSE, CAUSE+CAUSE or healthy.
session() { echo "$*" >>sessions; }

# fault KIND FRAME STRENGTH: its option; the weaker is what buffers just do not bridge.
fault() {
    local weak=450 strong=850
    case $1 in
    starve | slow-decode) weak=700 strong=1300 ;;
    slow-decrypt) weak=700 strong=1300 && echo --secure ;;
    drop) echo "--drop $2-$(($2 + ($3 == 1 ? 9 : 26)))" && return ;;
    esac
    [ "$3" = 1 ] && echo "--$1 $2:$weak" || echo "--$1 $2:$strong"
}

cause() {
    case $1 in
    starve) echo input_starved ;;
    slow-decrypt) echo decryption ;;
    slow-decode) echo codec ;;
    slow-message) echo message_delay ;;
    stall | drop) echo application ;;
    block-display) echo display_queue ;;
    esac
}

roads=(--codec2 --omx)
n=0
for kind in starve slow-decrypt slow-decode slow-message stall block-display drop; do
    for strength in 1 2; do
        for place in start middle seek end; do
            frame=105
            more=
            # What is decoded ahead is gone with a seek: the 112th is the first to go in behind it.
            case $place in
            start) frame=12 ;;
            seek) frame=116 more="--seek 4@3" ;;
            end) frame=190 ;;
            esac
            session "$kind-$place-$strength" "$(cause $kind)" "${roads[n++ % 2]}" \
                $(fault $kind $frame $strength) $more 30.mp4
        done
        n=$((n + 1))
    done
done
# Far enough apart to be two incidents, and at once.
for pair in "starve 50 stall 140" "slow-decode 50 block-display 140" "slow-decrypt 50 drop 140" \
    "slow-message 50 starve 130" "stall 90 block-display 130" "slow-decode 90 stall 100"; do
    read -r first at second later <<<"$pair"
    session "$first-and-$second" "$(cause "$first")+$(cause "$second")" "${roads[n++ % 2]}" \
        $(fault "$first" "$at" 2) $(fault "$second" "$later" 2) 30.mp4
done
for fps in 24 25 30 50 60; do
    for road in "${roads[@]}"; do session "healthy-$fps$road" healthy "$road" $fps.mp4; done
done

play() {
    local name=$1
    shift 2
    "$bin/codecplay" --prop mediaanalytic.enable=true --prop mediaanalytic.debug=0x407 --json \
        --log "$name.log" "$@" >"$name.played"
}
export -f play
xargs -P 2 -I{} bash -c 'play {}' <sessions

# The player's own counts tell whether there was anything to be seen.
while read -r name truth _; do
    second=none
    [[ $truth != *+* ]] || second=${truth#*+}
    lost=$(grep -oE '"(late|requested|never_shown)": [0-9]+' "$name.played" |
        awk '{ sum += $2 } END { print sum }')
    "$bin/codecreport" -q --db all.db --no-frames --label name="$name" --label lost="$lost" \
        --label first="${truth%+*}" --label second="$second" "$name.log"
done <sessions

# One row a fault: what was injected, and what is named of the worst incident; of two, each has to
# have a share.
cat >judged.sql <<'EOF'
WITH played AS (SELECT session_id,
    max(CASE l.name WHEN 'name' THEN value END) AS name,
    max(CASE l.name WHEN 'lost' THEN value END) + 0 AS lost,
    max(CASE l.name WHEN 'first' THEN value END) AS first,
    nullif(max(CASE l.name WHEN 'second' THEN value END), 'none') AS second
  FROM session JOIN label l USING (log_id) GROUP BY session_id),
fault AS (SELECT *, first AS truth FROM played
  UNION ALL SELECT *, second FROM played WHERE second IS NOT NULL),
judged AS (SELECT f.*, CASE
    WHEN second IS NOT NULL AND EXISTS (SELECT 1 FROM incident_share s
      WHERE s.session_id = f.session_id AND s.cause = truth AND s.share > 0) THEN truth
    ELSE coalesce((SELECT cause FROM incident i WHERE i.session_id = f.session_id
      ORDER BY stood_ms + 20 * never_shown_count DESC LIMIT 1), 'nothing') END AS said
  FROM fault f)
EOF
ask() {
    "$bin/codecreport" query all.db "$(cat judged.sql) $1" --jsonl | sed -E 's/^\{"row":"(.*)"\}$/\1/; s/\\\\([\\"])/\1/g'
}

causes=(input_starved decryption codec message_delay application display_queue display_rate unknown
    nothing)
columns="'| ' || replace(truth, '_', ' ') || ' |'"
heads="| injected \\ named |"
for cause in "${causes[@]}"; do
    columns+=" || ' ' || coalesce(nullif(sum(said = '$cause'), 0), '') || ' |'"
    heads+=" ${cause//_/ } |"
done
ask "SELECT '| causes right | ' || sum(said = truth) || ' of ' || count(*) || ' |'
    AS row FROM judged WHERE truth <> 'healthy' AND lost > 0"
ask "SELECT '| sessions in which no picture was lost | ' || count(*) || ', named ' ||
    sum(said NOT IN ('nothing', truth)) || ' other cause(s) |'
    AS row FROM judged WHERE truth <> 'healthy' AND lost = 0"
ask "SELECT '| healthy without an incident | ' || sum(said = 'nothing') || ' of ' || count(*) || ' |'
    AS row FROM judged WHERE truth = 'healthy'"
printf '\n%s\n|%s\n' "$heads" "---|---|---|---|---|---|---|---|---|---|"
ask "SELECT $columns AS row FROM judged WHERE truth <> 'healthy' AND lost > 0 GROUP BY truth"
[ -z "$verbose" ] || ask "SELECT name || ': ' || truth || ' is called ' || said || ', lost ' || lost ||
    coalesce((SELECT group_concat('; ' || i.cause || ' at ' || start_ms || ' stood ' || stood_ms ||
        ': ' || evidence, '') FROM incident i WHERE i.session_id = judged.session_id), '')
    AS row FROM judged WHERE said <> CASE WHEN truth = 'healthy' THEN 'nothing' ELSE truth END"
