# The stream's format, what the component reports, and the prefix of warnings.

story aChange_logsWhatTheMessageSays: catches a key that is not read, and a size of the whole buffer instead of the crop
~configure
updateFormatChanged ; updateFormatChanged width=1920 ; updateFormatChanged width=1920 height=1088 crop=0,0,1919,1079
    I updateFormatChanged width = 0 height = 0, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
    I updateFormatChanged width = 1920 height = 0, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
    I updateFormatChanged width = 1920 height = 1080, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
updateFormatChanged crop=-2147483648,8,2147483647,7
    I updateFormatChanged width = 0 height = 0, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
# Of two keys for one thing the first counts.
updateFormatChanged vendor.vdecomx.hdr-type=1 vendor.mtk-codec2.hdr-type=2 vendor.mtk-codec2.color-depth=10 vendor.mtk-codec2.scan-type=1 color-standard=64
    I updateFormatChanged width = 0 height = 0, hdrType = 1, scanType = 1, bitDepth = 10, colorStandard = 64
updateFormatChanged vendor.mtk-codec2.color-depth=8 vendor.vdecomx.bitdepth=12 vendor.vdecomx.scan-type=1 vendor.mtk-codec2.scan-type=0
    I updateFormatChanged width = 0 height = 0, hdrType = -1, scanType = 1, bitDepth = 12, colorStandard = 0

story theGetters_answerTheLastChange: catches what a message does not say and should stay, or the other way round
~configure
define getters = getResolution ; getBitDepth ; getColorProperties ; getHDRType ; getScanType
~updateFormatChanged width=1280 vendor.vdecomx.bitdepth=-1 vendor.vdecomx.scan-type=0 color-standard=6
~updateFormatChanged height=8
getters
    = 0x8 | -1 | 6 | "" | progressive
# A reset clears the numbers and keeps the texts.
resetMetricsData ; getters
    = 0x0 | 0 | 0 | "" | progressive

story hdrAndScanTypes_haveNames: catches a name of another number, and the order of message, property and default
define hdr = updateFormatChanged vendor.mtk-codec2.hdr-type=$1 vendor.mtk-codec2.scan-type=$2 ; getHDRType ; getScanType
~configure
/^=/ hdr 0 0 ; hdr 1 1 ; hdr 2 2 ; hdr 3 -1 ; hdr 4 3 ; hdr 5 0 ; updateFormatChanged ; getHDRType ; hdr 6 0
    = SDR | progressive | HDR10 | interlace | DOVI | ?? | TCH | ?? | HLG | ?? | HDR10Plus | progressive | HDR10Plus | ?? | progressive
property vendor.vdecomx.hdr-type 4
updateFormatChanged ; getHDRType
    I updateFormatChanged width = 0 height = 0, hdrType = 4, scanType = -1, bitDepth = -1, colorStandard = 0
    = HLG
property vendor.vdecomx.hdr-type -1
/^=/ updateFormatChanged ; getHDRType
    = HLG
# The message goes before the property, also when it says -1.
property vendor.vdecomx.hdr-type 0
/^=/ hdr -1 0 ; updateFormatChanged vendor.vdecomx.hdr-type=1 vendor.mtk-codec2.hdr-type=2 ; getHDRType
    = ?? | progressive | HDR10

story anExtendedColorStandard_isConverted: catches the bound of what is extended, and a value written though the conversion failed
~configure
# 64 + 6 + 7 * 5: BT2020 primaries and matrix.
updateFormatChanged color-standard=65 ; updateFormatChanged color-standard=105 ; getColorProperties
    I updateFormatChanged convert extend color changed from [65] to standard [1] !
    I updateFormatChanged width = 0 height = 0, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 1
    I updateFormatChanged convert extend color changed from [105] to standard [6] !
    I updateFormatChanged width = 0 height = 0, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 6
    = 6
convertExtendedColorToStandard color-standard=105
    = 0 standard 6
colorConversion -22 ; updateFormatChanged color-standard=105 ; getColorProperties
    I updateFormatChanged width = 0 height = 0, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 105
    = 105
convertExtendedColorToStandard color-standard=105
    = -22 standard -1

story aChange_closesTheSegmentAtTheOldClass: catches playback that is added to the new class, and the order of lines
~configure ; frame 0 ; size 1280 720 ; play 60 100000
# 60 frames in 6 s. Portrait is SD, because only the width counts.
size 1080 1920
    I updateFormatChanged width = 1080 height = 1920, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
    I 99999999.HW.c2.video.avc.framerate = 10.000 fps
play 10 100000 ; size 1920 800
    I 99999999.HW.c2.video.avc Resolution change from 1280x720 to 1080x1920 took = 100
    metric c48a/2/02330410 FHDRampupTime 6100 ms [HW_avc] 0
    I updateFormatChanged width = 1920 height = 800, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
    I 99999999.HW.c2.video.avc.framerate = 10.000 fps
~play 20 100000 ; size 4096 800 ; play 30 100000 ; size 3840 2160
# A segment that ends before it began adds nothing, and the next starts where it ended: 3 + 2 s.
~output -2000000 ; size 3840 2160 ; output 0
/videoResolution/ logMetrics
    I 99999999.HW.c2.video.avc.videoResolution.SD = 1000
    metric k29r/2/02330410 videoResolution 1000 ms [SD.15] 0
    I 99999999.HW.c2.video.avc.videoResolution.HD = 6000
    metric k29r/2/02330410 videoResolution 6000 ms [HD.15] 0
    I 99999999.HW.c2.video.avc.videoResolution.FHD = 2000
    metric k29r/2/02330410 videoResolution 2000 ms [FHD.15] 0
    I 99999999.HW.c2.video.avc.videoResolution.UHD = 5000
    metric k29r/2/02330410 videoResolution 5000 ms [UHD.15] 0
    = com.android.mediaplayer.HW.c2.video.avc:videoResolution.SD=1000:videoResolution.HD=6000:videoResolution.FHD=2000:videoResolution.UHD=5000:BRISK-P5Ms=0:BRISK-P2Ms=18446744073709550616:BRISK-P3Ms=0:FirstFrameReadyMs=0:StreamAvgBitrateInKbps=81

# Audio has no classes.
~configure c2.v audio/x ; frame 0 ; output 5000000 ; output 6000000 ; size 8 8
/Playback/ logMetrics

story aChange_asksForTheDisplayAgain: catches a screen that is known from the configuration only, and one that shrinks
displayQueries ; configure ; displayQueries
    = 0
    I [BRISK] HW.c2.video.avc P2 + 1000
    = 1
display 3840 2160 ; size 1280 720 ; displayQueries ; getEmbeddedWarnings
    I updateFormatChanged width = 1280 height = 720, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
    = 2 | 99999999.4K.HW.c2.video.avc
# From then on it is not asked any more.
display 1280 720 ; size 1280 720 ; updateDisplaySize ; displayQueries ; getEmbeddedWarnings
    I updateFormatChanged width = 1280 height = 720, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
    = 2 | 99999999.4K.HW.c2.video.avc

story theDisplay_mayFail: catches a class that is taken from a display that did not answer
~configure
define screen = display $* ; updateDisplaySize ; getEmbeddedWarnings
screen none 3840 2160 ; screen status=-2 ; screen
    = 99999999.HW.c2.video.avc | 99999999.HW.c2.video.avc | 99999999.4K.HW.c2.video.avc

story widths_mapToClasses: catches the bounds, and a width compared signed
mapResolution 0 ; mapResolution 1279 ; mapResolution 1280 ; mapResolution 1919 ; mapResolution 1920 ; mapResolution 3839 ; mapResolution 3840 ; mapResolution 4294967295
    = 0 | 0 | 1 | 1 | 2 | 2 | 3 | 3

story anEncodersChange_isIgnored: catches a change that an encoder or another's switch takes up
~configure c2.v video/avc encoder
size 1280 720 ; getResolution ; getColorProperties
    = 0x0 | 0
configure c2.v video/avc ; size 1280 720 ; getResolution
    I [BRISK] HW.c2.video.avc P2 + 1000
    I updateFormatChanged width = 1280 height = 720, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
    = 1280x720

story vendorValues_followTheirKeys: catches a key found inside another, a missing separator, and numbers of another base
define value = parseMetricValue $1 abc
value abc=5 ; value abc= ; value abc ; value "" ; value x ; value abc=-12;d ; value abc:x ; value xabc=7abc=8 ; value abc==5 ; value "abc= 6" ; value abc=0x1 ; value abc=9223372036854775808 ; value 12345678
    = 5 | 0 | 0 | 0 | 0 | -12 | 0 | 7 | 0 | 6 | 0 | 9223372036854775807 | 0

story thePrefix_tellsWarningsScreenSecurityAndTag: catches a warning's bound, and the marks of security crossed
~settle
updateVendorMetrics MaxConsecutiveFramesDropped=9; ; times 10 { output 33333 } ; getEmbeddedWarnings
    I 99999999.HW.c2.video.avc Repeating PTS in Output = 33333 (10 times)
    = 99999999.HW.c2.video.avc
updateVendorMetrics MaxConsecutiveFramesDropped=10; ; getEmbeddedWarnings
    = W.mcfd10.99999999.HW.c2.video.avc
# It does not shrink.
updateVendorMetrics MaxConsecutiveFramesDropped=3; ; updateVendorMetrics ; getEmbeddedWarnings
    = W.mcfd10.99999999.HW.c2.video.avc
~output 33333
getEmbeddedWarnings
    = W.mcfd10.rot11.99999999.HW.c2.video.avc
~input 33333 secure ; input 33333 secure ; times 10 { output 33333 }
getEmbeddedWarnings
    = W.mcfd10.rot21.99999999.secureSW.HW.c2.video.avc
/Input/ output 33333
    W W.mcfd10.rot22.99999999.secureSW.HW.c2.video.avc Repeating PTS in Input = 33333
getEmbeddedWarnings
    = W.mcfd10.rot22.rit11.99999999.secureSW.HW.c2.video.avc
~input 0 secure secureMemory ; display 3840 2160 ; updateDisplaySize
getEmbeddedWarnings
    = W.mcfd10.rot22.rit11.99999999.4K.secure.HW.c2.video.avc
# Security is the last input's, memory without security included.
~input 0 secureMemory
getEmbeddedWarnings ; getFramedropMeta ; getStatus Secure ; getStatus "Is Secure Memory Used"
    = W.mcfd10.rot22.rit11.99999999.4K.HW.c2.video.avc | HW | NO | YES
~input 0
getEmbeddedWarnings ; getFramedropMeta ; getStatus Secure ; getStatus "Is Secure Memory Used"
    = W.mcfd10.rot22.rit11.99999999.4K.HW.c2.video.avc | HW | NO | NO
