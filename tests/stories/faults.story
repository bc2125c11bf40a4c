# Everything around the library fails, and playback goes on.

story whereverTheServiceDies_playbackGoesOn: catches a call that a dead service turns into something else than a line
define session = configure c2.v video/avc flags=1 ; profileP2End ; frame 0 ; after 1500 ; render 0 ; isInMitigateFrameDropAllowlist ; logMetrics
/->/ service lifetime=100 ; session
    -> registerClient(client)
    -> updateHidlMediaMetrics(, , true, false)
    -> getOldestAudioClientCodec()
    -> onFirstFrameRendered(client)
    -> onOutBufferAvailableAfterDelay(client, 1500)
    -> isInMitigateFrameDropAllowlist(com.android.mediaplayer)
    -> unregisterClient(client)
    -> updateHidlMediaMetrics(null, null, true, true)
service lifetime=0
/fail/ Create ; session
    W/IMediaCodecLoggerService registerClient fail id:<client>
    W/IMediaCodecLoggerService getOldestAudioClientCodec Transaction failed
    W/IMediaCodecLoggerService isInMitigateFrameDropAllowlist failed!
    W/IMediaCodecLoggerService unregisterClient fail id:<client>
service lifetime=3
/fail/ Create ; session
    W/IMediaCodecLoggerService isInMitigateFrameDropAllowlist failed!
    W/IMediaCodecLoggerService unregisterClient fail id:<client>
# With the dead one that it still has.
/fail/ session
    W/IMediaCodecLoggerService unregisterClient fail id:<client>
    W/IMediaCodecLoggerService registerClient fail id:<client>
    W/IMediaCodecLoggerService getOldestAudioClientCodec Transaction failed
    W/IMediaCodecLoggerService isInMitigateFrameDropAllowlist failed!
    W/IMediaCodecLoggerService unregisterClient fail id:<client>

story aPropertyMayHoldAnything: catches a value that is read in another base, from its middle, or past 32 bits
define room = property mediaanalytic.maxqueuesize $1 ; codec $1 ; addCodec x ; updateCCodecConfigs ; times 200 { updateInputFrame_pre +1 } ; removeCodec
property mediaanalytic.enable true
/full/ room 1 ; room 0x4 ; room 03 ; room 5x ; room " 2" ; room x5 ; room %s%n ; room 2147483648 ; room "9"*90
    W/ZMediaAnalyticV x queue full:2, first ts:1, last ts:3
    W/ZMediaAnalyticV x queue full:5, first ts:201, last ts:206
    W/ZMediaAnalyticV x queue full:4, first ts:401, last ts:405
    W/ZMediaAnalyticV x queue full:6, first ts:601, last ts:607
    W/ZMediaAnalyticV x queue full:3, first ts:801, last ts:804
    W/ZMediaAnalyticV x queue full:129, first ts:1001, last ts:1130
    W/ZMediaAnalyticV x queue full:129, first ts:1201, last ts:1330
    W/ZMediaAnalyticV x queue full:129, first ts:1401, last ts:1530
    W/ZMediaAnalyticV x queue full:129, first ts:1601, last ts:1730
# Off is any other word than those for on.
define enable = property mediaanalytic.enable $1 ; codec of$1 ; addCodec x ; isEnabled ; removeCodec
enable 1 ; enable y ; enable yes ; enable on ; enable true ; enable 0 ; enable n ; enable no ; enable off ; enable false ; enable ON ; enable ""
    = true | true | true | true | true | false | false | false | false | false | false | false

story atTheClocksLimits_theLoggerGoesOn: catches a computation of the logger that overflows or ends the process
# Seconds at which a number of milliseconds no longer holds the clock.
define atLimit = configure ; profileP2End ; frame 0 ; leapTo $1 ; play 200 33333 ; drop 2 ; updateMetricsForFlush ; profileP3End ; profileMCStopEnd ; logMetrics ; leapTo 1
/BRISK-P3/ atLimit 0
    I 99999999.HW.c2.video.avc.BRISK-P3Ms = 6666
    = com.android.mediaplayer.HW.c2.video.avc:videoResolution.SD=6666:BRISK-P5Ms=0:BRISK-P2Ms=0:BRISK-P3Ms=6666:FirstFrameReadyMs=0:TotalMediaCodecStopTimeMs=6666
/BRISK-P3/ atLimit 9223372036854774
    I 99999999.HW.c2.video.avc.BRISK-P3Ms = -9223372036854770283
    = com.android.mediaplayer.HW.c2.video.avc:videoResolution.SD=6666:BRISK-P5Ms=0:BRISK-P2Ms=0:BRISK-P3Ms=9223372036854781333:FirstFrameReadyMs=0:TotalMediaCodecStopTimeMs=9223372036854781333:StreamAvgBitrateInKbps=0
/BRISK-P3/ atLimit 9223372036854776
    I 99999999.HW.c2.video.avc.BRISK-P3Ms = -9223372036854768617
    = com.android.mediaplayer.HW.c2.video.avc:videoResolution.SD=6666:BRISK-P5Ms=0:BRISK-P2Ms=0:BRISK-P3Ms=9223372036854782999:FirstFrameReadyMs=0:TotalMediaCodecStopTimeMs=9223372036854782999:StreamAvgBitrateInKbps=0
/BRISK-P3/ atLimit max
    I 99999999.HW.c2.video.avc.BRISK-P3Ms = 6666
    = com.android.mediaplayer.HW.c2.video.avc:videoResolution.SD=6666:BRISK-P5Ms=0:BRISK-P2Ms=0:BRISK-P3Ms=6666:FirstFrameReadyMs=0:TotalMediaCodecStopTimeMs=6666
/BRISK-P3/ atLimit min
    I 99999999.HW.c2.video.avc.BRISK-P3Ms = 7333
    = com.android.mediaplayer.HW.c2.video.avc:videoResolution.SD=6666:BRISK-P5Ms=0:BRISK-P2Ms=0:BRISK-P3Ms=7333:FirstFrameReadyMs=0:TotalMediaCodecStopTimeMs=7333

story beyondTheClocksLimits_theAnalyticsEndTheProcess: catches a time that wraps in a line of the analysis
property mediaanalytic.enable true ; addCodec c ; updateCCodecConfigs ; configure ; leapTo 9223372036854774
    I [BRISK] HW.c2.video.avc P2 + 1000
~play 3 33333
fork { leapTo 9223372036854776 ; queueInputBuffer_pre 5 ; input 5 }
    F/ZMediaAnalyticV overflow: arithmetic overflow: 9223372036854776 * 1000
    died
fork { leapTo -9223372036854777 ; queueInputBuffer_pre 5 ; input 5 }
    F/ZMediaAnalyticV overflow: arithmetic overflow: -9223372036854777 * 1000
    died
fork { leapTo max ; queueInputBuffer_pre 5 ; input 5 }
    I 99999999.HW.c2.video.avc.bitrateInKbps = 0
    F/ZMediaAnalyticV overflow: arithmetic overflow: 9223372036854775807 * 1000
    died
