# Whole sessions: what a codec's life leaves in the log, at the metrics service and at the logger service.

story video60fpsWithDrops: catches any line, record or call of a whole session that is missing, wrong or out of order
# 381 frames, 16.667 ms apart, at 1080 + 16.667 k. Settling ends with frame 31 at 1596, the first 501 ms after the
# first render, so that every later drop counts. Runs: 17 = 10 + 5 + 2, 3 = 2 + 1.
service ; answers oldestAudio=mp4a
start
    I [BRISK] HW.c2.video.avc P2 + 1000
    I [BRISK] HW.c2.video.avc P2 - 1005
    D Got zephra_media_codec_logger Service. Calling PID = 99999999
    -> registerClient(client)
    I [BRISK] HW.c2.video.avc P3 + 1005
    I [BRISK] HW.c2.video.avc P3 - 1020
firstFrame 1920 1080
    I [BRISK] HW.c2.video.avc Got First Input Frame 1040 pts:0
    I updateFormatChanged width = 1920 height = 1080, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
    I updatePTSTime [HW.c2.video.avc] First PTS after Flush or reset = 0
    -> getOldestAudioClientCodec()
    I [BRISK] HW.c2.video.avc Got First Frame Ready 1070(30)
    I Rendering first frame after starting or flushing.
    I [BRISK] HW.c2.video.avc Got First Frame Render 1080(40), renderNum = 1
    -> onFirstFrameRendered(client)
play 60 16667 ; playDropping 17 16667 ; play 100 16667 ; playDropping 3 16667 ; play 200 16667
    I 99999999.HW.c2.video.avc Resolution change from 0x0 to 1920x1080 took = 16
    metric c48a/2/02330410 FHDRampupTime 516 ms [HW_avc] 0
    I W.mcfd17.99999999.HW.c2.video.avc Dropped 20 frames
    I W.mcfd17.99999999.HW.c2.video.avc.bitrateInKbps = 477
# Of 361 rendered frames.
updateVendorMetrics "CodecNonFatalErrorCount=2;HWCRenderFrameCount=357;MaxConsecutiveFramesDropped=4;"
    I 4 frames were dropped in SurfaceFlinger or HWC.
profileMCStopBegin ; after 501 ; profileMCStopEnd
    I MC Stop Time(start: 7413, stop:7914 :501 <profileMCStopEnd 1462>\n
# Bitrate: 299 inputs of 1000 bytes in 5006 ms. Played: 380 x 16.667 ms.
logMetrics
    I 99999999.HW.c2.video.avc.TotalVideoPlaybackTimeMs = 6333
    metric j2w8/2/02330410 VideoCodec 6333 ms [HW_avc] 0
    metric qkuh/2/02330410 TotalVideoPlaybackTimeMs 6333 ms [HW_avc] 0
    I 99999999.HW.c2.video.avc.StreamAvgFramerate = 60.003
    metric 21qt/2/02330410 StreamAvgFramerate 60 fps [avc] fps=60 1
    I 99999999.HW.c2.video.avc.videoResolution.FHD = 6333
    metric k29r/2/02330410 videoResolution 6333 ms [FHD.60] 0
    I 99999999.HW.c2.video.avc.StreamFramerate = 59.999
    I 99999999.HW.c2.video.avc.AspectRatio = 1.778
    I 99999999.HW.c2.video.avc.OneConsecutiveFramesDropped = 1
    metric lxcd/2/02330410 FramedropType 1 frames [HW_avc] ConsecFD=1 1
    I 99999999.HW.c2.video.avc.TwoConsecutiveFramesDropped = 2
    metric lxcd/2/02330410 FramedropType 2 frames [HW_avc] ConsecFD=2 1
    I 99999999.HW.c2.video.avc.FiveConsecutiveFramesDropped = 1
    metric lxcd/2/02330410 FramedropType 1 frames [HW_avc] ConsecFD=5 1
    I 99999999.HW.c2.video.avc.TenConsecutiveFramesDropped = 1
    metric lxcd/2/02330410 FramedropType 1 frames [HW_avc] ConsecFD=10 1
    metric tbo7/2/02330470 FramedropSource 4 frames [HW_avc] FdType=SFAndHWCDrops 1
    metric tbo7/2/02330470 FramedropSource 20 frames [HW_avc] FdType=AppAndMcDrops 1
    I 99999999.HW.c2.video.avc.TotalFramesDropped = 24
    metric w9lq/2/02330410 TotalFramesDropped 24 frames [HW_avc] 1
    metric x28y/2/02330470 TotalFrameDrops 24 frames [HW] audioCodec=mp4a videoCodec=avc displayFormat= framerate=60 duration=0-5 1
    I 99999999.HW.c2.video.avc.MaxConsecutiveFramesDropped = 17
    metric lxcd/2/02330410 FramedropType 17 frames [HW_avc] ConsecFD=max 1
    I 99999999.HW.c2.video.avc.BRISK-P5Ms = 40
    metric csyv/2/02330410 FirstFrameReadyMs 30 ms [HW_avc] 0
    metric pb8a/2/02330410 FirstFrameRenderMs 40 ms [HW_avc] 0
    I 99999999.HW.c2.video.avc.BRISK-P2Ms = 5
    I 99999999.HW.c2.video.avc.BRISK-P3Ms = 15
    I 99999999.HW.c2.video.avc.FirstFrameReadyMs = 30
    I 99999999.HW.c2.video.avc.TotalMediaCodecStopTimeMs = 501
    I 99999999.HW.c2.video.avc.CodecNonFatalErrorCount = 2
    metric 6snt/2/02330410 CodecNonFatalErrorCount 2 frames [HW_avc] media=video 1
    I 99999999.HW.c2.video.avc.StreamAvgBitrateInKbps = 477
    metric jn5x/2/02330410 AvgBitrate 477 kbps [HW_avc] media=video 1
    -> unregisterClient(client)
    = com.android.mediaplayer.HW.c2.video.avc:videoResolution.FHD=6333:OneConsecutiveFramesDropped=1:TwoConsecutiveFramesDropped=2:FiveConsecutiveFramesDropped=1:TenConsecutiveFramesDropped=1:DisplayFramesDropped=4:MediaCodecFramesDropped=20:TotalFramesDropped=24:MaxConsecutiveFramesDropped=17:BRISK-P5Ms=40:BRISK-P2Ms=5:BRISK-P3Ms=15:FirstFrameReadyMs=30:TotalMediaCodecStopTimeMs=501:CodecNonFatalErrorCount=2:StreamAvgBitrateInKbps=477

story shortVideo_isNotReported: catches a bound of 5 s that lets a session of less report its playback
~start ; firstFrame 1280 720 ; output 4000999
profileMCStopBegin ; after 500 ; logMetrics
    I 99999999.HW.c2.video.avc.BRISK-P2Ms = 5
    I 99999999.HW.c2.video.avc.BRISK-P3Ms = 15
    I 99999999.HW.c2.video.avc.FirstFrameReadyMs = 30
    I 99999999.HW.c2.video.avc.TotalMediaCodecStopTimeMs = -1080
    = com.android.mediaplayer.HW.c2.video.avc:BRISK-P2Ms=5:BRISK-P3Ms=15:FirstFrameReadyMs=30:TotalMediaCodecStopTimeMs=18446744073709550536

story playback_countsFrom5001MsToADay: catches either bound of what counts as playback, for video and for audio
~configure ; frame 0 ; output 5000000
/metric/ logMetrics
~configure ; input 0 ; output 0 ; output 5000000 ; output 5001000
/metric/ logMetrics
~configure ; frame 0 ; output 5000000 ; output 5001000
/qkuh/ logMetrics
    metric qkuh/2/02330410 TotalVideoPlaybackTimeMs 5001 ms [HW_avc] 0
~configure ; frame 0 ; times 17279 { output +5000000 } ; output +4999000
/qkuh/ logMetrics
    metric qkuh/2/02330410 TotalVideoPlaybackTimeMs 86399999 ms [HW_avc] 0
~configure ; frame 0 ; times 17280 { output +5000000 }
/metric/ logMetrics
    metric csyv/2/02330410 FirstFrameReadyMs 0 ms [HW_avc] 0
    metric pb8a/2/02330410 FirstFrameRenderMs 0 ms [HW_avc] 0
# Time that runs back is unsigned as well, and so too long.
~configure ; input 0 ; after -3 ; output 0 ; render 0 ; output -7000000
/metric/ logMetrics
    metric csyv/2/02330410 FirstFrameReadyMs -3 ms [HW_avc] 0
    metric pb8a/2/02330410 FirstFrameRenderMs -3 ms [HW_avc] 0
~configure c2.v audio/x ; output 0 ; output -7000000
/metric/ logMetrics
~configure c2.v audio/mp4a-latm ; frame 0 ; output 5000000
/metric/ logMetrics
~configure c2.v audio/mp4a-latm ; input 0 ; output 0 ; output 5000000 ; output 5001000
/metric/ logMetrics
    metric v8xh/2/02330410 TotalAudioPlaybackTimeMs 5001 ms [VND_mp4a] 0
    metric 20fc/2/02330410 AudioCodec 5001 ms [VND_mp4a] 0
~configure c2.v audio/mp4a-latm ; frame 0 ; times 17279 { output +5000000 } ; output +4999000
/^=/ logMetrics
    = com.android.mediaplayer.VND.c2.audio.mp4a:TotalAudioPlaybackTimeMs=86399999
~configure c2.v audio/mp4a-latm ; frame 0 ; times 17280 { output +5000000 }
/metric/ logMetrics
# The classes of a session of a day are reported one by one. The rate is then unknown.
~configure ; frame 0 ; times 17279 { output +5000000 } ; size 1920 1080 ; output +2000000 ; output +3001000
/k29r/ logMetrics
    metric k29r/2/02330410 videoResolution 86395000 ms [SD.0] 0
    metric k29r/2/02330410 videoResolution 5001 ms [FHD.0] 0

story tunneledVideo: catches renders of a tunneled codec that do not count as outputs or count once instead of renderCount times
# 240 inputs at once, 20 ms apart: 50 fps. 6 s though only every third frame is reported.
~start c2.vendor.avc.decoder video/avc flags=1 ; input 0 ; times 239 { input +20000 } ; size 1280 720
updateFrameDropCounters 0 ; resetConsecutiveFrameDropFlag -1 0 fromTunnel count=3 ; after 60
    I Rendering first frame after starting or flushing.
    I updatePTSTime [tunneled.HW.c2.video.avc] First PTS after Flush or reset = 0
    I [BRISK] tunneled.HW.c2.video.avc Got First Frame Ready 1040(0)
    I [BRISK] tunneled.HW.c2.video.avc Got First Frame Render 1040(0), renderNum = 3
    W MediaCodecLoggerService in NULL
times 100 { updateFrameDropCounters +60000 ; resetConsecutiveFrameDropFlag -1 . fromTunnel count=3 ; after 60 }
    I 99999999.tunneled.HW.c2.video.avc Resolution change from 0x0 to 1280x720 took = 60
updateVendorMetrics TunnelFrameDropCount=4;HWCRenderFrameCount=1
/metric/ logMetrics
    metric j2w8/2/02330410 VideoCodec 6000 ms [HW_avc_tunneled] 0
    metric qkuh/2/02330410 TotalVideoPlaybackTimeMs 6000 ms [HW_avc_tunneled] 0
    metric 21qt/2/02330410 StreamAvgFramerate 50 fps [avc] fps=50 1
    metric k29r/2/02330410 videoResolution 6000 ms [HD.50] 0
    metric w9lq/2/02330410 TotalFramesDropped 4 frames [HW_avc_tunneled] 1
    metric x28y/2/02330470 TotalFrameDrops 4 frames [HW_tunneled] audioCodec= videoCodec=avc displayFormat= framerate=50 duration=0-5 1
    metric lxcd/2/02330410 FramedropType 0 frames [HW_avc_tunneled] ConsecFD=max 1

story secureVideoOnA4KScreen: catches playback of a resolution that is added to another, and marks of screen or security that are missing
# 10 fps, 2 s in each class. The first frames of FHD and UHD come 2.1 and 4.1 s after the first.
display 3840 2160
define play4K = times 20 { after 100 ; frame +100000 secure secureMemory }
~start OMX.vendor.hevc video/hevc maxWidth=3840 maxHeight=2160
~input 0 secure secureMemory ; after 30 ; size 1280 720 ; output 0 ; after 10 ; render 0
play4K ; size 1920 1080
    I 99999999.4K.secure.HW.omx.video.hevc Resolution change from 0x0 to 1280x720 took = 100
    I updateFormatChanged width = 1920 height = 1080, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
    I 99999999.4K.secure.HW.omx.video.hevc.framerate = 10.000 fps
play4K ; size 3840 2160
    I 99999999.4K.secure.HW.omx.video.hevc Resolution change from 1280x720 to 1920x1080 took = 100
    metric c48a/2/02330410 FHDRampupTime 2100 ms [HW_hevc_4K_secure] 0
    I updateFormatChanged width = 3840 height = 2160, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
    I 99999999.4K.secure.HW.omx.video.hevc.framerate = 10.000 fps
# Bitrate: 51 inputs of 1000 bytes in 5040 ms.
/_4K/ play4K ; logMetrics
    metric p61w/2/02330410 UHDRampupTime 4100 ms [HW_hevc_4K_secure] 0
    metric j2w8/2/02330410 VideoCodec 6000 ms [HW_hevc_4K_secure] 0
    metric qkuh/2/02330410 TotalVideoPlaybackTimeMs 6000 ms [HW_hevc_4K_secure] 0
    metric csyv/2/02330410 FirstFrameReadyMs 30 ms [HW_hevc_4K_secure] 0
    metric pb8a/2/02330410 FirstFrameRenderMs 40 ms [HW_hevc_4K_secure] 0
    metric jn5x/2/02330410 AvgBitrate 80 kbps [HW_hevc_4K_secure] media=video 1

story audioWithAtmos: catches audio that is reported as video or without its mark
audio "atmos_detected=1"
~start c2.vendor.raw audio/raw
# Bitrate: 252 inputs of 480 bytes in 5020 ms.
input 0 size=480 ; output 0 ; after 20 ; times 300 { input +20000 size=480 ; output . ; after 20 }
    I [BRISK] VND.c2.audio.raw Got First Input Frame 1040 pts:0
    I updatePTSTime [VND.c2.audio.raw] First PTS after Flush or reset = 0
    I [BRISK] VND.c2.audio.raw Got First Frame Ready 1040(0)
    I 99999999.VND.c2.audio.raw.atmos.bitrateInKbps = 192
logMetrics
    I 99999999.VND.c2.audio.raw.atmos.TotalAudioPlaybackTimeMs = 6000
    metric v8xh/2/02330410 TotalAudioPlaybackTimeMs 6000 ms [VND_raw.atmos] 0
    metric 20fc/2/02330410 AudioCodec 6000 ms [VND_raw.atmos] 0
    I 99999999.VND.c2.audio.raw.atmos.StreamAvgBitrateInKbps = 192
    metric jn5x/2/02330410 AvgBitrate 192 kbps [VND_raw.atmos] media=audio 1
    = com.android.mediaplayer.VND.c2.audio.raw:TotalAudioPlaybackTimeMs=6000:StreamAvgBitrateInKbps=192

story neitherAudioNorVideo: catches what is meant for "not audio" or "not video" and would hold for a third kind as well
service
~start c2.v text/x
firstFrame 1920 1080
    I [BRISK] VND.c2.unknown.x Got First Input Frame 1040 pts:0
    I updateFormatChanged width = 1920 height = 1080, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
    I updatePTSTime [VND.c2.unknown.x] First PTS after Flush or reset = 0
    -> getOldestAudioClientCodec()
    I [BRISK] VND.c2.unknown.x Got First Frame Ready 1070(30)
    I Rendering first frame after starting or flushing.
~play 60 100000 ; drop 2 ; render +100000 ; output 6500000 ; clockReads
getStatus ; updateMetricsForFlush
    = \tCodec Type: VIDEO\n\tHW: NO\n\tFormat: x\n\tSecure: NO\n\tIs Secure Memory Used: NO\n\tInput Bitrate: 80\n
profileMCStopBegin ; profileMCStopEnd ; clockReads ; displayQueries ; uploadDecoderError 1
    = 0 | 1
    I 99999999.VND.c2.unknown.x.DecoderErrorTrans = 1
    I 99999999.VND.c2.unknown.x..DecoderErrorFatal = 1
    metric 68pc/2/03330470 .DecoderErrorFatal 1 errors [VND_x] media=audio 1
    I 99999999.VND.c2.unknown.x.StreamAvgBitrateInKbps = 80
    metric jn5x/2/02330410 AvgBitrate 80 kbps [VND_x] media=audio 1
    -> unregisterClient(client)
client isVideoClient
    = false

story anErrorEndsTheSession: catches an error that is lost, counted twice or left for the next session, and a second report
~start ; firstFrame 640 480
/Error/ uploadDecoderError 0
    I 99999999.HW.c2.video.avc.DecoderErrorFatal = 1
    I 99999999.HW.c2.video.avc..DecoderErrorFatal = 1
    metric 68pc/2/03330470 .DecoderErrorFatal 1 errors [HW_avc] media=video 1
logMetrics
    = ""
uploadDecoderError 1
    I 99999999.HW.c2.video.avc.DecoderErrorTrans = 1
# One during a report counts until the report tells of errors. Then it is only a line.
~configure ; profileP2End ; input 0 ; output 0 ; render 0 ; input 0 ; output 5000000 ; output 5001000
define twoErrors = uploadDecoderError 2 ; uploadDecoderError 2
/Error/ during "metric csyv" twoErrors ; logMetrics
    I 99999999.HW.c2.video.avc.DecoderErrorRecov = 1 (2 times)
    I 99999999.HW.c2.video.avc..DecoderErrorFatal = 1
    metric 68pc/2/03330470 .DecoderErrorFatal 1 errors [HW_avc] media=video 1
    = com.android.mediaplayer.HW.c2.video.avc:videoResolution.SD=5001:BRISK-P5Ms=0:BRISK-P2Ms=0:BRISK-P3Ms=0:FirstFrameReadyMs=0:.DecoderErrorFatal=2
~configure ; input 0 ; after 5001 ; input 0
/Error/ during "metric jn5x" uploadDecoderError 2 ; logMetrics ; logMetrics ; configure ; logMetrics
    I 99999999.HW.c2.video.avc.DecoderErrorRecov = 1
# Neither the error after the report nor what was played since is left after a configuration.
~configure ; play 60 100000 ; updateVendorMetrics "CodecNonFatalErrorCount=2;" ; configure
~profileMCStopBegin ; after 500 ; profileMCStopEnd
uploadDecoderError 2
    I 99999999.HW.c2.video.avc.DecoderErrorRecov = 1
    I 99999999.HW.c2.video.avc.BRISK-P2Ms = -12081
    I 99999999.HW.c2.video.avc.BRISK-P3Ms = 0
    I 99999999.HW.c2.video.avc.FirstFrameReadyMs = 0
    I 99999999.HW.c2.video.avc..DecoderErrorFatal = 1
    metric 68pc/2/03330470 .DecoderErrorFatal 1 errors [HW_avc] media=video 1
uploadDecoderError 2
    I 99999999.HW.c2.video.avc.DecoderErrorRecov = 1

story errorsOfAudio_areReportedToo: catches an error's name or record that is another type's
~configure c2.v audio/mp4a-latm
uploadDecoderError 2 ; uploadDecoderError -3
    I 99999999.VND.c2.audio.mp4a.DecoderErrorRecov = 1
    I 99999999.VND.c2.audio.mp4a..DecoderErrorFatal = 1
    metric 68pc/2/03330470 .DecoderErrorFatal 1 errors [VND_mp4a] media=audio 1
    I 99999999.VND.c2.audio.mp4a.DecoderErrorTrans = 1
# With logging off there is only the line of the error.
~configure c2.v audio/mp4a-latm loggingOff
uploadDecoderError 0 ; logMetrics
    I 99999999.VND.c2.audio.mp4a.DecoderErrorFatal = 1
    = ""

story rates_haveClasses: catches a bound of a class of frame rates, and rates that do not fit into 32 bits
define rate = logFramerateToPulse $*
/^=/ rate 17 ; rate 17.1 ; rate 26 ; rate 26.1 ; rate 32 ; rate 32.1 ; rate 52 ; rate 52.1
    = 15 | 24 | 24 | 30 | 30 | 50 | 50 | 60
rate null 30 ; rate nullCodec 30
    = 0 | 0
/metric/ rate -1 ; rate nan ; rate 29.97 ; rate 1 ; rate 0.99
    metric 21qt/2/02330410 StreamAvgFramerate 0 fps [avc] fps=15 1
    metric 21qt/2/02330410 StreamAvgFramerate 0 fps [avc] fps=60 1
    metric 21qt/2/02330410 StreamAvgFramerate 29 fps [avc] fps=30 1
    metric 21qt/2/02330410 StreamAvgFramerate 1 fps [avc] fps=15 1
    metric 21qt/2/02330410 StreamAvgFramerate 0 fps [avc] fps=15 1
/metric/ rate 4294967040 ; rate 4294967296 ; rate inf
    metric 21qt/2/02330410 StreamAvgFramerate 4.29496704e+09 fps [avc] fps=60 1
    metric 21qt/2/02330410 StreamAvgFramerate 4.2949673e+09 fps [avc] fps=60 1 (2 times)
# The spread of a sample of 240 timestamps is that of 239 frames.
define spread = configure ; input 0 ; times 239 { input $1 } ; getFramerate
/^=/ spread 9759086 ; spread 9755102 ; spread 8692308 ; spread 8690909 ; spread 7468750 ; spread 5975000
    = 24 | 25 | 25 | 30 | 30 | 50
/^=/ spread 4596154 ; spread 4587332 ; spread 4345454
    = 50 | 50 | 60

story playingTimes_haveClasses: catches a bound of a class of playing times
getDurationRange -1 ; getDurationRange 300000 ; getDurationRange 300001 ; getDurationRange 1800000 ; getDurationRange 1800001 ; getDurationRange 7200000 ; getDurationRange 7200001
    = 0-5 | 0-5 | 5-30 | 5-30 | 30-120 | 30-120 | 120+

story texts_areCutAtTheirBuffersSize: catches a buffer that is one byte shorter or longer
# A key holds 149 characters with the package, whose place the pid then takes.
~configure c2.v text/"f"*91
/^I/ uploadDecoderError 0
    I 99999999.VND.c2.unknown.f{91}.DecoderErrorFatal = 1
    I 99999999.VND.c2.unknown.f{91}..DecoderErrorFatal = 1
~configure c2.v text/"f"*92
/^I/ uploadDecoderError 0
    I 99999999.VND.c2.unknown.f{92}.DecoderErrorFatal = 1
    I 99999999.VND.c2.unknown.f{92}..DecoderErrorFata = 1
~configure c2.v text/"f"*93
/^I/ uploadDecoderError 0
    I 99999999.VND.c2.unknown.f{93}.DecoderErrorFata = 1
    I 99999999.VND.c2.unknown.f{93}..DecoderErrorFat = 1
logToBuffers com.android.mediaplayer.key -1
    I 99999999.key = -1
