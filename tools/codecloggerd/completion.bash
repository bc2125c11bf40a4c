# SPDX-License-Identifier: Apache-2.0
# bash completion of codecloggerd
_codecloggerd() {
    mapfile -t COMPREPLY < <(compgen -W '--replace --help --version' -- "${COMP_WORDS[COMP_CWORD]}")
}
complete -F _codecloggerd codecloggerd
