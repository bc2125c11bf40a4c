# Inputs: bitrate, frame rate, Atmos.

story theBitrate_isMeasuredOverMoreThanFiveSeconds: catches the bound, an interval that goes on, and the average over another time
~configure ; input 0 ; after 5000
input 0 ; after 1
# 3 buffers of 1000 bytes in 5001 ms: 24000 bits / 5001 ms.
input 0 ; getStatus "Input Bitrate"
    I 99999999.HW.c2.video.avc.bitrateInKbps = 4
    = 4
# The next buffer opens a new interval, whatever lies between. 52 buffers, the last 5100 ms after the first.
~after 60000 ; times 51 { input 0 ; after 100 }
input 0 ; after 1
    I 99999999.HW.c2.video.avc.bitrateInKbps = 81
# The report: 55000 bytes in 10101 ms.
logMetrics
    I 99999999.HW.c2.video.avc.BRISK-P2Ms = -1000
    I 99999999.HW.c2.video.avc.BRISK-P3Ms = 0
    I 99999999.HW.c2.video.avc.FirstFrameReadyMs = -1000
    I 99999999.HW.c2.video.avc.StreamAvgBitrateInKbps = 43
    metric jn5x/2/02330410 AvgBitrate 43 kbps [HW_avc] media=video 1
    = com.android.mediaplayer.HW.c2.video.avc:BRISK-P2Ms=18446744073709550616:BRISK-P3Ms=0:FirstFrameReadyMs=18446744073709550616:StreamAvgBitrateInKbps=43
# An interval of nothing but empty buffers, and one of a buffer beyond 32 bits.
~configure ; input 0 size=1 ; after 5001
input 0 size=0 ; after 5001 ; input 0 size=0
    I 99999999.HW.c2.video.avc.bitrateInKbps = 0
performBitrateCalculationAndTracking 0 size=1 ; after 6000 ; performBitrateCalculationAndTracking 0 size=6442450943
    I 99999999.HW.c2.video.avc.bitrateInKbps = 8589934
performBitrateCalculationAndTracking 0 size=1 ; after 6000 ; performBitrateCalculationAndTracking 0 size=-2
    I 99999999.HW.c2.video.avc.bitrateInKbps = 3074457345618258
/Bitrate/ logMetrics
    I 99999999.HW.c2.video.avc.StreamAvgBitrateInKbps = 3031563
    metric jn5x/2/02330410 AvgBitrate 3031563 kbps [HW_avc] media=video 1
    = com.android.mediaplayer.HW.c2.video.avc:BRISK-P2Ms=18446744073709480514:BRISK-P3Ms=0:FirstFrameReadyMs=18446744073709480514:StreamAvgBitrateInKbps=3031563

story theFramerate_isTheSpreadOf240Timestamps: catches a sample of another size, and a minimum or maximum that starts at 0
define rate = getStatus "Stream Framerate (fps)"
~configure c2.v video/avc flags=1
# Each pair swapped, as with B-frames: only the smallest and the largest count.
/^=/ input 33333 ; input 0 ; times 118 { input +100000 ; input +-33333 } ; input +66666 ; rate
    = 0.000
~input +33333
rate
    = 30.000
# The first one sets only the minimum, so that here 238 steps remain.
~input +33333 ; input 0 ; times 238 { input +33333 }
rate
    = 30.126
# Not at 0 but hours later, and before 0.
~input 7200000000 ; times 239 { input +20000 }
rate
    = 50.000
~input -8000000 ; times 239 { input +20000 }
rate
    = 29.875
~times 240 { input 0 }
rate
    = inf
~times 120 { input max ; input min }
rate
    = -239000000.000

story atmos_isAskedOnceASessionAndOnlyOfRawAudio: catches an answer that is not a number, and a question too many
define ask = configure c2.v $1 ; isAtmosDetected ; audio "atmos_detected=1" ; isAtmosDetected ; audioQueries
audio "a=1;atmos_detected=-2"
/^=/ ask audio/raw
    = true | true | 1
audio "atmos_detected=0"
/^=/ ask audio/raw
    = false | false | 2
audio "atmos_detected=true"
/^=/ ask audio/raw
    = false | false | 3
audio ""
/^=/ ask audio/raw
    = false | false | 4
/^=/ ask audio/eac3
    = false | false | 4
/^=/ ask video/avc
    = false | false | 4

story theFrameAnalytics_hearOfEveryEvent: catches an event of the logger that is not passed on, or passed on changed
property mediaanalytic.enable 1 ; property mediaanalytic.debug 0x7
addCodec ; updateCCodecConfigs
~configure
queueInputBuffer_pre 1234 data="abc" 7000 encrypted ; input 1234 size=3
    I [BRISK] HW.c2.video.avc Got First Input Frame 1000 pts:1234
    I/ZMediaAnalyticV avc queue:1234 s:3 tsS:1
output 1234
    I/ZMediaAnalyticV avc OWD mediaTs:1234, 0/1
    I/ZMediaAnalyticV Pre-Render OWD:1234(999) TD:1 FARD:(1000) FAD:0(1000) AL:0(1000) FL:-1000(0) 0/1$D:-0(993)
    I updatePTSTime [HW.c2.video.avc] First PTS after Flush or reset = 1234
    I [BRISK] HW.c2.video.avc Got First Frame Ready 1000(0)
resetConsecutiveFrameDropFlag 7000000 1234
    I/ZMediaAnalyticV avc Render R-S:-993 R:7(7) pts:1234 0/1
    I/ZMediaAnalyticV AVSYNC_V:993(7)(1) b:1 rts:7(-993) pid:<pid> First min:-1(-1 )(-993) max:0(0)(0) avg:0(0)(-993) cnt:1(0)
    I [BRISK] HW.c2.video.avc Got First Frame Render 1000(0), renderNum = 1
    W MediaCodecLoggerService in NULL
    I App sets Timestamps for render in SurfaceFlinger
~resetMetricsData ; queueInputBuffer_pre 2234 7000 ; input 2234 ; output 2234
updateFrameDropCounters 2234 dropped
    I/ZMediaAnalyticV Drop:2234(998) TD:1 FARD:993(0) FAD:0(1000) AL:0(1000) FL:-1000(0) 0/1$D:-0(993)
    W/ZMediaAnalyticV mFramesOwnedByUs is 0 unexpectedly
~queueInputBuffer_pre 3234 7000 ; input 3234 size=3
# The flush makes the tracker forget what was queued.
updateMetricsForFlush ; output 3234
    W/ZMediaAnalyticV avc not found ts when updateOutputFrame
    I updatePTSTime [HW.c2.video.avc] First PTS after Flush or reset = 3234
# An encoder's frames as well.
~updateBuffers 0 0 encoder ; configure c2.v video/avc encoder ; queueInputBuffer_pre 1 7000 ; queueInputBuffer_pre 2 7000
resetConsecutiveFrameDropFlag 7000000 1 ; updateFrameDropCounters 2 dropped
    I/ZMediaAnalyticV avc Render R-S:-993 R:7(7) pts:1 0/2
    I/ZMediaAnalyticV AVSYNC_V:993(7)(0) b:0 rts:7(-993) pid:<pid> min:7(0 )(-993) max:7(0)(0) avg:0(0)(-993) cnt:1(0)
    I/ZMediaAnalyticV Drop:2(1000) TD:0 FARD:-8(-1001) FAD:0(-1) AL:1001(1000) FL:0(0) 0/1
    W/ZMediaAnalyticV mFramesOwnedByUs is 0 unexpectedly
# The end of the logger removes its codec.
release ; updateInputFrame_pre 0
    = false
