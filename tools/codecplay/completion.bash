# SPDX-License-Identifier: Apache-2.0
# bash completion of codecplay
_codecplay() {
    local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} words=
    case $before in
    --log | --metrics) compopt -o default && return ;;
    --prop)
        compopt -o nospace
        words='mediaanalytic.enable mediaanalytic.debug mediaanalytic.maxqueuesize
            mediaanalytic.maxdequeuetime mediaanalytic.maxqueuetime mediaanalytic.maxmsgdelaytime
            mediaanalytic.maxdecodetime mediaanalytic.vsyncperiod mediaanalytic.maxdecrypttime
            mediaanalytic.maxerrorframe mediaanalytic.maxearlytime vendor.vdecomx.hdr-type'
        ;;
    --display) words='1280x720 1920x1080 3840x2160' ;;
    --error) compopt -o nospace && words='fatal@ recoverable@ transient@' ;;
    --speed | --seek | --flush | --reconfigure | --loop | --instances | --component | --package | \
        --vsync | --buffers | --starve | --slow-decrypt | --slow-decode | --slow-message | --stall | \
        --block-display | --drop) return ;;
    *)
        if [[ $current != -* ]]; then compopt -o default && return; fi
        words='--speed --seek --flush --reconfigure --loop --instances --codec2 --omx --tunneled
            --secure --component --package --prop --display --vsync --buffers
            --starve --slow-decrypt --slow-decode --slow-message --stall --block-display --drop --error --log --metrics --json --quiet --help --version'
        ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}
complete -F _codecplay codecplay
