#compdef codecplay
# SPDX-License-Identifier: Apache-2.0
_arguments \
    '--speed[times presentation pace, 0 for no pace]:number' \
    '*--seek[go on elsewhere]:TO@AT' \
    '*--flush[flush all codecs]:time' \
    '*--reconfigure[stop, report and configure again]:time' \
    '--loop[play each file so often]:number' \
    '--instances[play so often at once]:number' \
    '(--omx)--codec2[report sessions as Codec2]' \
    '(--codec2)--omx[report sessions as OMX]' \
    '--tunneled[tunneled video]' \
    '--secure[encrypted input, secure memory]' \
    '--component[beginning of component names]:prefix' \
    '--package[package name of the application]:name' \
    '*--prop[set a system property]:property:(mediaanalytic.enable=true mediaanalytic.debug=)' \
    '--display[size of the display]:size:(1280x720 1920x1080 3840x2160)' \
    '--vsync[refresh rate of the display]:hertz' \
    '--buffers[output buffers]:number' \
    '*--starve[stop the input]:FIRST[-LAST]\:MS' \
    '*--slow-decrypt[decrypt slowly]:FIRST[-LAST]\:MS' \
    '*--slow-decode[decode slowly]:FIRST[-LAST]\:MS' \
    '*--slow-message[delay messages of the component]:FIRST[-LAST]\:MS' \
    '*--stall[handle pictures late]:FIRST[-LAST]\:MS' \
    '*--block-display[block the queue to the display]:FIRST[-LAST]\:MS' \
    '*--drop[drop pictures]:FIRST[-LAST]' \
    '*--error[report a decoder error]:TYPE@AT' \
    '--log[write the log there]:file:_files' \
    '--metrics[write metrics records there]:file:_files' \
    '--json[print the sessions as JSON]' \
    '(-q --quiet)'{-q,--quiet}'[neither log nor summary]' \
    '(-h --help)'{-h,--help}'[help]' \
    '--version[version]' \
    '*:file:_files'
