# Frames that are dropped, frames that are rendered, and what the service is told of them.

story aRun_countsAsPiecesOf10_5_2And1: catches a piece that is lost or of another size
~settle ; drop 9 ; render 0 ; output 5000000 ; output 10000000
/ConsecFD/ logMetrics
    metric lxcd/2/02330410 FramedropType 2 frames [HW_avc] ConsecFD=2 1
    metric lxcd/2/02330410 FramedropType 1 frames [HW_avc] ConsecFD=5 1
    metric lxcd/2/02330410 FramedropType 9 frames [HW_avc] ConsecFD=max 1
~settle ; drop 48 ; render 0 ; drop 3 ; render 0 ; drop 1 ; render 0 ; drop 5 ; render 0 ; output 5000000 ; output 10000000
/Dropped/ logMetrics
    I 99999999.HW.c2.video.avc.OneConsecutiveFramesDropped = 3
    I 99999999.HW.c2.video.avc.TwoConsecutiveFramesDropped = 2
    I 99999999.HW.c2.video.avc.FiveConsecutiveFramesDropped = 2
    I 99999999.HW.c2.video.avc.TenConsecutiveFramesDropped = 4
    I 99999999.HW.c2.video.avc.TotalFramesDropped = 57
    metric w9lq/2/02330410 TotalFramesDropped 57 frames [HW_avc] 1
    I 99999999.HW.c2.video.avc.MaxConsecutiveFramesDropped = 48
    = com.android.mediaplayer.HW.c2.video.avc:videoResolution.SD=10000:OneConsecutiveFramesDropped=3:TwoConsecutiveFramesDropped=2:FiveConsecutiveFramesDropped=2:TenConsecutiveFramesDropped=4:TotalFramesDropped=57:MaxConsecutiveFramesDropped=48:BRISK-P5Ms=0:BRISK-P2Ms=18446744073709550115:BRISK-P3Ms=0:FirstFrameReadyMs=0

story theTotal_isLoggedWhenItIsAMultipleOfTen: catches another multiple, and a prefix that is a run too early
~settle
drop 5 ; render 0 ; drop 5 ; render 0 ; drop 20 ; render 0
    I 99999999.HW.c2.video.avc Dropped 10 frames
    I 99999999.HW.c2.video.avc Dropped 30 frames
# The prefix is that before the run counts as the longest. An empty run is logged as well.
updateFrameDropCounters
    I W.mcfd20.99999999.HW.c2.video.avc Dropped 30 frames
# A hundred at once is one line.
drop 100 ; render 0
    I W.mcfd20.99999999.HW.c2.video.avc Dropped 130 frames

story drops_countFromTheEndOfSettling: catches drops of settling that count, and settling that a flush does not start anew
~settle ; updateMetricsForFlush
~drop 7 ; render 2 ; after 500 ; drop 7 ; output 2
getStatus FramesDropped
    = 0
~drop 7 ; after 1 ; output 3 ; drop 2 ; render 3
getStatus FramesDropped
    = 2
# An open run counts when it ends.
~drop 4
getStatus FramesDropped ; updateFrameDropCounters
    = 2
getStatus FramesDropped
    = 6

story drops_countForLoggedDecodersOnly: catches the switches of drops mixed up
~settle encoder
drop 7 ; render 1 ; updateFrameDropCounters
~settle loggingOff
drop 7 ; render 1 ; updateFrameDropCounters
# With logging off again, or after another codec was configured, nothing is left of a run.
~settle ; drop 7 ; configure c2.v video/avc encoder
updateFrameDropCounters ; getStatus FramesDropped
    = 0

story aFlush_discardsAYoungRun: catches the bound of 300 ms, and a run that stays open
~settle ; drop 4 ; after 150 ; drop 4 ; after 149
updateMetricsForFlush ; render 0 ; getStatus FramesDropped
    I Flushing: 99999999.HW.c2.video.avc.framerate = 30.000 fps
    I 99999999.HW.c2.video.avc Dropped 0 frames
    I Rendering first frame after starting or flushing.
    = 0
~settle ; drop 4 ; after 150 ; drop 4 ; after 150
updateMetricsForFlush ; render 0 ; getStatus FramesDropped
    I Flushing: 99999999.HW.c2.video.avc.framerate = 30.000 fps
    I Rendering first frame after starting or flushing.
    = 8

~settle ; drop 4 ; after -1 ; updateMetricsForFlush
getStatus FramesDropped
    = 4

story lateOutput_isToldFromOneSecondOn: catches the bound, the frame that it is measured from, and the order of line and call
service
~configure ; profileP2End
updateFrameDropCounters 0 ; after 999 ; updateFrameDropCounters 0 ; after -1 ; updateFrameDropCounters 0
    I Rendering first frame after starting or flushing.
after 1000 ; updateFrameDropCounters 0
    I the latest buffer is 1000 old with packageName com.android.mediaplayer. Possible resume detected
    -> onOutBufferAvailableAfterDelay(client, 1000)
client getTimeSinceLastFrameRendered
    = 0
after 7 ; client getTimeSinceLastFrameRendered
    = 7
# After a flush the first frame is a first one again.
updateMetricsForFlush ; client getTimeSinceLastFrameRendered
    = 7
after 2000 ; updateFrameDropCounters 0 ; checkAndNotifyOutBufferAvailableAfterDelay
    I the latest buffer is 2007 old with packageName com.android.mediaplayer. Possible resume detected
    -> onOutBufferAvailableAfterDelay(client, 2007)
    I Rendering first frame after starting or flushing.
after 1500 ; checkAndNotifyOutBufferAvailableAfterDelay
    I the latest buffer is 1500 old with packageName com.android.mediaplayer. Possible resume detected
    -> onOutBufferAvailableAfterDelay(client, 1500)
# A tunneled codec's time is that of its last output.
~configure c2.v video/avc flags=1 ; profileP2End ; input 0 ; resetConsecutiveFrameDropFlag -1 5 fromTunnel ; after 30
client getTimeSinceLastFrameRendered
    = 6536
# An encoder's output is none.
~configure c2.v video/avc encoder
times 2 { checkAndNotifyOutBufferAvailableAfterDelay ; after 1000 }

story theFirstRenderedFrame_isToldOnce: catches a first frame before an input, of audio, or a second one
service
~configure ; profileP2End
resetConsecutiveFrameDropFlag -1 0 count=3
~input 0 ; after 40
resetConsecutiveFrameDropFlag 0 0 count=3
    I [BRISK] HW.c2.video.avc Got First Frame Render 1040(40), renderNum = 3
    -> onFirstFrameRendered(client)
    I App sets Timestamps for render in SurfaceFlinger
resetConsecutiveFrameDropFlag 0 0 ; updateMetricsForFlush ; resetConsecutiveFrameDropFlag 0 0
~configure ; profileP2End ; input 0
resetConsecutiveFrameDropFlag 5 0 count=-1
    I [BRISK] HW.c2.video.avc Got First Frame Render 1040(0), renderNum = 18446744073709551615
    -> onFirstFrameRendered(client)
    I App sets Timestamps for render in SurfaceFlinger
~configure c2.v audio/mp4a-latm ; profileP2End
/Render/ frame 0
    I Rendering first frame after starting or flushing.
~configure c2.v video/avc encoder ; profileP2End
/Render/ frame 0
    I Rendering first frame after starting or flushing.

story aTunneledRender_isItsFramesOutput: catches a render that counts once for renderCount frames, and one of a codec that is not tunneled
service
~configure c2.v video/avc flags=1 ; profileP2End ; input 0
resetConsecutiveFrameDropFlag 0 77 fromTunnel count=4
    I updatePTSTime [tunneled.HW.c2.video.avc] First PTS after Flush or reset = 77
    -> getOldestAudioClientCodec()
    I [BRISK] tunneled.HW.c2.video.avc Got First Frame Ready 1000(0)
    I [BRISK] tunneled.HW.c2.video.avc Got First Frame Render 1000(0), renderNum = 4
    -> onFirstFrameRendered(client)
    I App sets Timestamps for render in SurfaceFlinger
resetConsecutiveFrameDropFlag 0 33410 fromTunnel count=4 ; client getBufferCountSinceLastFlush
    = 4
resetConsecutiveFrameDropFlag 0 66743 count=9 ; client getBufferCountSinceLastFlush
    = 4
~configure c2.v video/avc ; profileP2End ; input 0
resetConsecutiveFrameDropFlag 0 77 fromTunnel count=4 ; client getBufferCountSinceLastFlush
    = 0

story notifications_areADecodersWithAService: catches a call without a service, or an encoder's
~configure
notifyFirstFrameRendered ; notifyOutBufferAvailablAfterDelay 7
    W MediaCodecLoggerService in NULL (2 times)
service
~profileP2End
notifyFirstFrameRendered ; notifyOutBufferAvailablAfterDelay 7 ; notifyOutBufferAvailablAfterDelay -1
    -> onFirstFrameRendered(client)
    -> onOutBufferAvailableAfterDelay(client, 7)
    -> onOutBufferAvailableAfterDelay(client, -1)
~configure c2.v video/avc encoder ; profileP2End
notifyFirstFrameRendered ; notifyOutBufferAvailablAfterDelay 7

story theAllowlist_isTheServicesAnswerNot0: catches answers other than 0 and 1 that are compared with 1, and a service asked at another time
~configure
isInMitigateFrameDropAllowlist
    = false
service ; isInMitigateFrameDropAllowlist
    -> isInMitigateFrameDropAllowlist(com.android.mediaplayer)
    = false
define asked = answers allowlist=$1 ; isInMitigateFrameDropAllowlist
/=/ asked 1 ; asked 2 ; asked 256 ; asked -1
    = true | true | true | true
service lifetime=9 ; answers allowlist=-2147483648 ; isInMitigateFrameDropAllowlist
    -> isInMitigateFrameDropAllowlist(com.android.mediaplayer)
    = true
service lifetime=0 ; answers allowlist=1 ; isInMitigateFrameDropAllowlist
    W/IMediaCodecLoggerService isInMitigateFrameDropAllowlist failed!
    = false

story theDropClass_isHardwareOrSoftware: catches the marks of a class in another order or of another codec
define class = configure $* ; input 0 secure ; getFramedropMeta
/^=/ class c2.vendor.x video/avc flags=1 ; class c2.android.x video/avc ; class c2.v audio/mp4a-latm
    = HW_secure_tunneled | SW_secure | SW_secure

story aFrame_readsTheClockThreeTimes: catches a clock read more on the path of every frame
# Once for the input, once for the render, once for the late-output check.
~settle ; output 33334 ; clockReads
frame 33335 ; clockReads
    = 3

story displayDrops_areRenderedButNotShown: catches the total that grows by another number, and the display's count over the codec's
~settle ; times 99 { render 0 }
updateVendorMetrics HWCRenderFrameCount=100;TunnelFrameDropCount=7
updateVendorMetrics HWCRenderFrameCount=101; ; updateVendorMetrics HWCRenderFrameCount=0; ; updateVendorMetrics HWCRenderFrameCount=-1
getStatus FramesDropped
    = 0
updateVendorMetrics HWCRenderFrameCount=90;
    I 10 frames were dropped in SurfaceFlinger or HWC.
# The total grows by each report. The display's share is that of the last one.
~updateVendorMetrics HWCRenderFrameCount=90; ; updateVendorMetrics HWCRenderFrameCount=100; ; output 5000000 ; output 10000000
getStatus FramesDropped
    = 20
/FramesDropped/ logMetrics
    I 99999999.HW.c2.video.avc.TotalFramesDropped = 20
    metric w9lq/2/02330410 TotalFramesDropped 20 frames [HW_avc] 1
    I 99999999.HW.c2.video.avc.MaxConsecutiveFramesDropped = 0
    = com.android.mediaplayer.HW.c2.video.avc:videoResolution.SD=10000:DisplayFramesDropped=10:MediaCodecFramesDropped=10:TotalFramesDropped=20:MaxConsecutiveFramesDropped=0:BRISK-P5Ms=0:BRISK-P2Ms=18446744073709550616:BRISK-P3Ms=0:FirstFrameReadyMs=0
~settle c2.v video/avc flags=1
updateVendorMetrics HWCRenderFrameCount=90;TunnelFrameDropCount=7
updateVendorMetrics TunnelFrameDropCount=-9223372036854775808 ; getStatus FramesDropped
    = 7
updateVendorMetrics TunnelFrameDropCount=-13;MaxConsecutiveFramesDropped=-1 ; updateFrameDropCounters ; updateVendorMetrics MaxConsecutiveFramesDropped=1 ; getEmbeddedWarnings
    I W.mcfd-1.99999999.tunneled.HW.c2.video.avc Dropped -6 frames
    = W.mcfd-1.99999999.tunneled.HW.c2.video.avc
