#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: check-options.sh PROGRAM FOLDER
# Fails unless the program's help, its man page and both completions in FOLDER know the same long
# options, and page and completions are well-formed.
set -euo pipefail

program=$1 folder=$2
name=$(basename "$program")

options() { grep -oE -- '--[a-z][a-z0-9-]*' | LC_ALL=C sort -u; }
same() { diff -u --label "$name --help" --label "$1" <("$program" --help | options) <(options); }

mandoc -T lint -W warning "$folder/$name.1"
bash -n "$folder/completion.bash"
zsh -n "$folder/completion.zsh"
mandoc -T ascii "$folder/$name.1" | sed 's|.\x08||g' | same "$name.1"
same completion.bash <"$folder/completion.bash"
same completion.zsh <"$folder/completion.zsh"

# What bash offers after "--" is what it knows.
bash -c "source '$folder/completion.bash'
    COMP_WORDS=('$name' --) COMP_CWORD=1
    compopt() { :; }
    _$name '$name' -- '$name' && printf '%s\n' \"\${COMPREPLY[@]}\"" | same "offered by bash"
