#compdef codecreport
# SPDX-License-Identifier: Apache-2.0
_codecreport_words() {
    local -a commands=('compare:hold one report against another' 'explain:say what a key means')
    (( CURRENT == 1 )) && _describe command commands
    _files
}
_arguments \
    '(-o --output)'{-o,--output}'[write the page]:file:_files' \
    '--trace[write a trace]:file:_files' \
    '--json=-[write JSON]::file:_files' \
    '--metrics[metrics records]:file:_files' \
    '*--threshold[how much worse a value may become]:[KEY=]LIMIT[%]' \
    '--markdown[print tables as Markdown]' \
    '(-q --quiet)'{-q,--quiet}'[no progress and no summary]' \
    '(-h --help)'{-h,--help}'[help]' \
    '--version[version]' \
    '*::log:_codecreport_words'
