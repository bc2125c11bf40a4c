# SPDX-License-Identifier: Apache-2.0
# bash completion of codecloggerctl
_codecloggerctl() {
    local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} words=
    case $before in
    -i | --interval | -n | --count | --except | --label) return ;;
    esac
    if [[ $current == -* ]]; then
        words='--json --openmetrics --interval --count --except --label --help --version'
    elif [[ $before == allowlist ]]; then
        words='show set'
    elif [[ " ${COMP_WORDS[*]:1:COMP_CWORD-1} " != *\ @(list|status|watch|listen|allowlist)\ * ]]; then
        words='list status watch listen allowlist'
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}
complete -F _codecloggerctl codecloggerctl
