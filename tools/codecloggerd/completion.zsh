#compdef codecloggerd
# SPDX-License-Identifier: Apache-2.0
_arguments \
    '(-r --replace)'{-r,--replace}'[serve even if another service answers]' \
    '(-h --help)'{-h,--help}'[help]' \
    '--version[version]'
