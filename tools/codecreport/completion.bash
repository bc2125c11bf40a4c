# SPDX-License-Identifier: Apache-2.0
# bash completion of codecreport
_codecreport() {
    local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} words=
    case $before in
    -o | --output | --trace | --metrics) compopt -o default && return ;;
    --threshold | explain) return ;;
    esac
    if [[ $current == -* ]]; then
        words='--output --trace --json --metrics --threshold --markdown --quiet --help --version'
    else
        compopt -o default
        [ "$COMP_CWORD" -ne 1 ] || words='compare explain'
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}
complete -F _codecreport codecreport
