#compdef codecloggerctl
# SPDX-License-Identifier: Apache-2.0
_codecloggerctl_words() {
    local -a commands=('list:codecs' 'status:details of codecs' 'watch:frames and drops, refreshed'
        'listen:events as they happen' 'allowlist:packages whose drops are mitigated')
    if (( CURRENT == 1 )); then
        _describe command commands
    elif (( CURRENT == 2 )) && [[ $words[1] == allowlist ]]; then
        _values 'what to do' show set
    fi
}
_arguments \
    '--json[JSON]' \
    '--openmetrics[OpenMetrics text]' \
    '(-i --interval)'{-i,--interval}'[time between two refreshes]:seconds' \
    '(-n --count)'{-n,--count}'[refreshes or events to end after]:number' \
    '*--except[leave this package out]:package' \
    '--label[what the list is]:text' \
    '(-h --help)'{-h,--help}'[help]' \
    '--version[version]' \
    '*::command:_codecloggerctl_words'
