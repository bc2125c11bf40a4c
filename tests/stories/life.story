# A codec's life: names, start-up, the service, the reset.

story whenConfigured_namesTheCodec: catches a word of a codec's tag, or a format's name, that is another codec's
define tag = configure $*
tag c2.android.avc.decoder video/avc ; tag OMX.vendor.hevc video/hevc flags=1 ; tag OMX.vendor.hevc video/hevc flags=2
    I [BRISK] SW.c2.video.avc P2 + 1000
    I [BRISK] tunneled.HW.omx.video.hevc P2 + 1000
    I [BRISK] HW.omx.video.hevc P2 + 1000
tag C2.Android.vp9 video/x-vnd.on2.vp9 flags=1 ; tag OMX.google.vp8.decoder video/x-vnd.on2.vp8 ; tag OMX.GOOGLE.dec video/mp4v-es
    I [BRISK] SW.c2.video.vp9 P2 + 1000
    I [BRISK] SW.omx.video.vp8 P2 + 1000
    I [BRISK] HW.omx.video.mp4v P2 + 1000
tag c2.android.aac.decoder audio/mp4a-latm ; tag OMX.vendor.dec audio/ac3 flags=1 ; tag vendor.dec audio/g711-alaw
    I [BRISK] SW.c2.audio.mp4a P2 + 1000
    I [BRISK] VND.omx.audio.ac3 P2 + 1000
    I [BRISK] VND.audio.g711 P2 + 1000
tag vendor.dec audio/amr-wb ; tag c2.vendor audio ; tag c2.vendor text/a/b
    I [BRISK] VND.audio.amr P2 + 1000
    I [BRISK] VND.c2.audio.audio P2 + 1000
    I [BRISK] VND.c2.unknown.a/b P2 + 1000
getCodecFormat video/x-vnd.on2.vp9 ; getCodecFormat audio ; getCodecFormat text/a/b
    = vp9 | audio | a/b

story whenANameIsEmpty_theProcessDies: catches a precondition that is not held to
fork configure "" ""
    F !(!codecName.empty()): media/mediaCodecLogger/MediaCodecLogger:430 CHECK(!codecName.empty()) failed.
    died
fork configure c2.vendor ""
    F !(!mime.empty()): media/mediaCodecLogger/MediaCodecLogger:431 CHECK(!mime.empty()) failed.
    died

story whenPlaybackIsAdaptive_logsTheScreen: catches the bounds of a screen's class, and a size of which one side is 0
define adaptive = display $1 1 ; configure c2.v $2 maxWidth=$3 maxHeight=$4
/Adaptive/ adaptive 1279 video/avc 8 9 ; adaptive 1280 video/avc 8 9 ; adaptive 1920 video/avc 8 9 ; adaptive 3839 video/avc -8 9 ; adaptive 3840 video/avc 8 9 ; adaptive 3840 video/avc 8 0 ; adaptive 3840 video/avc 0 9
    I HW.c2.video.avc Adaptive Streaming max w:8 h:9, screen size:SD (2 times)
    I HW.c2.video.avc Adaptive Streaming max w:8 h:9, screen size:FHD
    I HW.c2.video.avc Adaptive Streaming max w:-8 h:9, screen size:FHD
    I HW.c2.video.avc Adaptive Streaming max w:8 h:9, screen size:4K
# Audio does not ask for the display.
~displayQueries ; adaptive 3840 audio/x 8 9
displayQueries
    = 7

story thePackageName_isThatOfTheProcess: catches a name that is too short or too long, and the pid in its place
define packageOf = Create process=$1 ; configure c2.v audio/mp4a-latm ; logMetrics ; replacePkgNameWithPid
/^=/ packageOf com.app:svc ; packageOf abc ; packageOf ab
    = com.app:svc.VND.c2.audio.mp4a | <pid of the process> | abc.VND.c2.audio.mp4a | <pid of the process> | com.android.mediaplayer.VND.c2.audio.mp4a | <pid of the process>
/^=/ packageOf "x"*69 ; packageOf "x"*80 ; packageOf %s%n%1000000d%\x01
    = x{69}.VND.c2.audio.mp4a | <pid of the process> | x{69}.VND.c2.audio.mp4a | <pid of the process> | %s%n%1000000d%\x01.VND.c2.audio.mp4a | <pid of the process>
Create ; replacePkgNameWithPid ; replacePkgNameWithPid com.android.mediaplayer:svc
    = 99999999 | 99999999:svc
# The text is not compared, only measured.
replacePkgNameWithPid com.android.mediaplayer ; replacePkgNameWithPid short
    = 99999999com.android.mediaplayer | 99999999short
# The service is told the package without the process.
~service ; Create process=com.app:svc ; configure c2.v video/avc ; profileP2End
client getPackageName
    = com.app

story namesAreNoFormats: catches a text of others that is read as a format or shown by one
service ; answers oldestAudio=%s%n%d
~configure c2.%s%n%1000000d video/%s%n%1000000d ; profileP2End ; frame 0 ; after 501 ; play 160 33333 ; drop 10 ; render 0
client getClientCodecFormat ; getStatus
    = %s%n%1000000d | \tCodec Type: VIDEO\n\tHW: YES\n\tFormat: %s%n%1000000d\n\tSecure: NO\n\tIs Secure Memory Used: NO\n\tInput Bitrate: 217\n\tResolution: 0x0\n\tStream Framerate (fps): 30.000\n\tFramesDropped: 10\n
/FrameDrops / updateVendorMetrics "%s%n CodecNonFatalErrorCount=3 %s%n" ; logMetrics
    metric x28y/2/02330470 TotalFrameDrops 10 frames [HW] audioCodec=%s%n%d videoCodec=%s%n%1000000d displayFormat= framerate=24 duration=0-5 1

story atTheEndOfP2_theClientIsRegistered: catches lines, calls and the look-up out of order
service
~configure
profileP2End
    I [BRISK] HW.c2.video.avc P2 - 1000
    D Got zephra_media_codec_logger Service. Calling PID = 99999999
    -> registerClient(client)
client getPid isVideoClient getPackageName getUid
    = 99999999 | true | com.android.mediaplayer | 1000
# Once more with the service it has. The reset in between takes it off the list.
configure c2.v audio/mp4a-latm
    -> unregisterClient(client)
    I [BRISK] VND.c2.audio.mp4a P2 + 1000
profileP2End
    I [BRISK] VND.c2.audio.mp4a P2 - 1000
    D registerClient for <client>, probably moved from un-initialized to configured state
    -> registerClient(client)
# The report unregisters, the destructor does not. A client without its logger answers all the same.
logMetrics ; release
    -> unregisterClient(client)
    = com.android.mediaplayer.VND.c2.audio.mp4a
client getUid getPid getStatus getClientCodecFormat getClientResolution getTimeSinceLastFrameRendered getBufferCountSinceLastFlush isVideoClientUsingSecureMem
    = -1 | 99999999 | "" | "" | -1x-1 | 0 | 0 | false

story theClient_answersForItsLogger: catches a getter that asks for something else
service
~configure c2.v video/hevc ; profileP2End ; input 0 ; output 0 ; output 33333 ; render 0 ; input 5 secureMemory
~updateFormatChanged width=1280 height=720 vendor.mtk-codec2.hdr-type=4 vendor.mtk-codec2.color-depth=10 vendor.mtk-codec2.scan-type=1 color-standard=6
~output 66666 ; output 99999
client getClientResolution getClientHDRType getClientBitDepth getClientScanType getClientColorProperties getBufferCountSinceLastFlush isVideoClientUsingSecureMem getClientCodecFormat
    = 1280x720 | HLG | 10 | interlace | 6 | 2 | true | hevc
after 12 ; client getTimeSinceLastFrameRendered getStatus
    = 12 | \tCodec Type: VIDEO\n\tHW: YES\n\tFormat: hevc\n\tSecure: NO\n\tIs Secure Memory Used: YES\n\tInput Bitrate: 0\n\tResolution: 1280x720\n\tStream Framerate (fps): 30.000\n\tFramesDropped: 0\n

story withoutAService_aLineSaysSo: catches a client that registers nowhere silently
~configure
/ervice/ profileP2End ; frame 0
    W zephra_media_codec_logger Service unavailable!
    W MediaCodecLoggerService in NULL
/ervice/ service none ; profileP2End
    W zephra_media_codec_logger Service unavailable!

story aTunneledCodec_opensAndClosesItsHidlMetrics: catches the switches of the configuration before at a reconfiguration
service
/->/ configure c2.v video/avc flags=1 ; profileP2End
    -> registerClient(client)
    -> updateHidlMediaMetrics(com.android.mediaplayer, tunneled.HW.c2.video.avc, true, false)
/->/ configure c2.v video/avc encoder
    -> unregisterClient(client)
    -> updateHidlMediaMetrics(null, null, true, true)
/->/ profileP2End ; configure c2.v audio/raw flags=1 encoder
    -> registerClient(client)
    -> unregisterClient(client)
/->/ profileP2End ; configure c2.v video/avc loggingOff
    -> registerClient(client)
    -> updateHidlMediaMetrics(com.android.mediaplayer, VND.c2.audio.raw, false, false)
    -> unregisterClient(client)
    -> updateHidlMediaMetrics(null, null, false, true)
/->/ configure c2.v video/avc flags=1
/->/ resetMetricsData
    -> unregisterClient(client)
    -> updateHidlMediaMetrics(null, null, true, true)

story withLoggingOff_onlyThePhaseIsLogged: catches a codec that registers or subscribes though nobody logs it
service
configure c2.mtk.dec video/avc flags=1 loggingOff ; profileP2End
    I [BRISK] tunneled.HW.c2.video.avc P2 + 1000
    I [BRISK] tunneled.HW.c2.video.avc P2 - 1000
resetMetricsData ; logMetrics
    = ""

story onlyAMediaTekCodec2Decoder_isAskedForItsFormatKeys: catches a codec that is asked though it would not know the keys
define subscribe = configure $* ; profileP2End
/ubscribe/ subscribe C2.MTK.avc.decoder video/avc
    D Subscribe MTK C2 hdr-type, scan-type, color-depth parameters
/color-depth/ subscribe c2.mtk audio/x
    <codec> signalSetParameters vendor.mtk-codec2.hdr-type=0 vendor.mtk-codec2.scan-type=0 vendor.mtk-codec2.color-depth=0
    D Subscribe MTK C2 hdr-type, scan-type, color-depth parameters
/ubscribe/ subscribe c2.mtk.avc.encoder video/avc encoder ; subscribe c2.android.avc.decoder video/avc ; subscribe x.c2.mtk video/avc
/ubscribe/ noCodec ; subscribe c2.mtk.avc.decoder video/avc

story times_areWholeMilliseconds: catches nanoseconds that are rounded or divided by another number
after 999999us ; configure
    I [BRISK] HW.c2.video.avc P2 + 1999

story aStop_isTimed_butNotOfAudio: catches a stop of audio, and one that never began
~configure
after 15 ; profileMCStopEnd ; profileMCStopBegin ; after 3 ; profileMCStopEnd
    I MC Stop Time(start: 0, stop:1015 :1015 <profileMCStopEnd 1462>\n
    I MC Stop Time(start: 1015, stop:1018 :3 <profileMCStopEnd 1462>\n
~configure c2.v audio/mp4a-latm ; clockReads
profileMCStopBegin ; profileMCStopEnd ; clockReads ; logMetrics
    = 0 | com.android.mediaplayer.VND.c2.audio.mp4a

story theStatus_showsTheCodec: catches a line of the status that is missing or another codec's
~configure c2.v video/avc flags=1 ; frame 0 secure secureMemory ; after 501 ; output 33333 ; size 1280 -720 ; drop 3 ; render 0
getStatus
    = \tCodec Type: VIDEO\n\tHW: YES\n\tFormat: avc\n\tSecure: YES\n\tIs Secure Memory Used: YES\n\tInput Bitrate: 0\n\tResolution: 1280x-720\n\tStream Framerate (fps): 0.000\n\tFramesDropped: 3\n
audio "atmos_detected=1"
~configure c2.android.x audio/raw
getStatus ; configure c2.android.x audio/eac3 ; getStatus
    = \tCodec Type: AUDIO\n\tHW: NO\n\tFormat: raw\n\tSecure: NO\n\tIs Secure Memory Used: YES\n\tInput Bitrate: 0\n\tAtmos: YES\n
    I [BRISK] SW.c2.audio.eac3 P2 + 1501
    = \tCodec Type: AUDIO\n\tHW: NO\n\tFormat: eac3\n\tSecure: NO\n\tIs Secure Memory Used: YES\n\tInput Bitrate: 0\n\tAtmos: NO\n

story aStatusPiece_holds300Characters: catches a buffer that is one byte shorter or longer
~configure c2.v text/"f"*206
getStatus
    = \tCodec Type: VIDEO\n\tHW: NO\n\tFormat: f{206}\n\tSecure: NO\n\tIs Secure Memory Used: NO\n\tInput Bitrate: 0\n
~configure c2.v text/"f"*207
fork getStatus
    F length > kMaxPieceLength: status text: a piece of 301 characters is too long
    died

story whateverASessionLeaves_theNextIsLikeAFirst: catches a member that a reset forgets, or clears though it is to be kept
# Rates, whole and half measured, repeats, an open run of drops, errors, a stop, a pending change and settling that lasts.
service
~settle ; times 245 { input +10000 secure } ; after 6000 ; times 13 { input 33333 secure } ; times 15 { output 33333 }
~size 1920 1080 ; drop 25 ; render 0 ; profileP3End ; profileMCStopEnd ; output 9000000 ; profileP2End
~display 3840 2160 ; updateDisplaySize ; display 1280 720 ; updateVendorMetrics CodecNonFatalErrorCount=3 ; drop 4 ; size 640 480 ; isAtmosDetected
resetMetricsData
    -> unregisterClient(client)
getStatus ; getEmbeddedWarnings ; getFramerate ; getResolution ; getBitDepth ; getColorProperties ; getFramedropMeta
    = \tCodec Type: VIDEO\n\tHW: YES\n\tFormat: avc\n\tSecure: NO\n\tIs Secure Memory Used: NO\n\tInput Bitrate: 0\n\tResolution: 0x0\n\tStream Framerate (fps): 0.000\n\tFramesDropped: 0\n | 99999999.HW.c2.video.avc | 24 | 0x0 | 0 | 0 | HW
client getBufferCountSinceLastFlush getTimeSinceLastFrameRendered isVideoClientUsingSecureMem getClientCodecFormat
    = 0 | 7502 | false | avc
# No change is pending, no run is open, no repeat is counted; the first timestamp and the first frame come again.
updateFrameDropCounters ; input 7 ; output 40000 ; output 40000 ; render 40000
    I 99999999.HW.c2.video.avc Dropped 0 frames
    I [BRISK] HW.c2.video.avc Got First Input Frame 7501 pts:7
    I updatePTSTime [HW.c2.video.avc] First PTS after Flush or reset = 40000
    -> getOldestAudioClientCodec()
    I [BRISK] HW.c2.video.avc Got First Frame Ready 7501(0)
    I Rendering first frame after starting or flushing.
    I [BRISK] HW.c2.video.avc Got First Frame Render 7501(0), renderNum = 1
    -> onFirstFrameRendered(client)
# What is left of the sample, the interval and the stop shows in what is measured next.
~after 5001 ; input 0 ; times 239 { input +20000 } ; output 5040000 ; output 10040000
/^=/ getFramerate ; logMetrics
    = 50 | com.android.mediaplayer.HW.c2.video.avc:videoResolution.SD=10000:BRISK-P5Ms=0:BRISK-P2Ms=0:BRISK-P3Ms=0:FirstFrameReadyMs=0:StreamAvgBitrateInKbps=3
# Once reported, a session is over until it is configured anew.
logMetrics ; configure ; logMetrics
    = ""
    -> unregisterClient(client)
    I [BRISK] HW.c2.video.avc P2 + 12502
    I 99999999.HW.c2.video.avc.BRISK-P2Ms = -12502
    I 99999999.HW.c2.video.avc.BRISK-P3Ms = 0
    I 99999999.HW.c2.video.avc.FirstFrameReadyMs = 0
    -> unregisterClient(client)
    = com.android.mediaplayer.HW.c2.video.avc:BRISK-P2Ms=18446744073709539114:BRISK-P3Ms=0:FirstFrameReadyMs=0

story afterAReset_everyMemberIsFresh: catches the one member that a reset forgets, or that it clears though it is kept
service ; answers oldestAudio=mp4a
define hdr = updateFormatChanged width=1280 height=720 vendor.mtk-codec2.hdr-type=1
define classes = hdr ; play 60 100000 ; size 1920 1080 ; play 60 100000 ; size 3840 2160 ; play 60 100000 ; size 3840 2160
# 15 repeats of a timestamp that was queued twice, drops of codec and display, half a sample, a stop, settling again.
define session = settle ; profileP2End ; classes ; input . ; times 15 { output . } ; drop 1 ; render . ; updateVendorMetrics HWCRenderFrameCount=9 ; profileMCStopBegin ; updateMetricsForFlush ; updateFrameDropCounters . ; resetMetricsData
~session
updateMetricsForFlush
~session
drop 1 ; updateFrameDropCounters ; updateVendorMetrics HWCRenderFrameCount=1 ; getStatus FramesDropped ; getEmbeddedWarnings ; profileMCStopEnd
    = 1 | 99999999.HW.c2.video.avc
    I MC Stop Time(start: 0, stop:38002 :38002 <profileMCStopEnd 1462>\n
~session ; after 501 ; input 0 ; output 0
output 0 ; updateFrameDropCounters 0 ; size 8 8 ; after 501 ; output 33333
    I Rendering first frame after starting or flushing.
    I updateFormatChanged width = 8 height = 8, hdrType = -1, scanType = -1, bitDepth = -1, colorStandard = 0
# Before its first input it does not ask for the audio again. 54.9 fps: a sample that went on would be of the next class.
~session ; output 0 ; updateFrameDropCounters 0 ; after 501 ; output 5000000 ; output 5001000 ; drop 1 ; input 0 ; render 0 ; times 239 { input +18200 }
/metric/ logMetrics
    metric j2w8/2/02330410 VideoCodec 5001 ms [HW_avc] 0
    metric qkuh/2/02330410 TotalVideoPlaybackTimeMs 5001 ms [HW_avc] 0
    metric 21qt/2/02330410 StreamAvgFramerate 0 fps [avc] fps=15 1
    metric k29r/2/02330410 videoResolution 5001 ms [SD.15] 0
    metric lxcd/2/02330410 FramedropType 1 frames [HW_avc] ConsecFD=1 1
    metric w9lq/2/02330410 TotalFramesDropped 1 frames [HW_avc] 1
    metric x28y/2/02330470 TotalFrameDrops 1 frames [HW] audioCodec=mp4a videoCodec=avc displayFormat=HDR10 framerate=50 duration=0-5 1
    metric lxcd/2/02330410 FramedropType 1 frames [HW_avc] ConsecFD=max 1
    metric csyv/2/02330410 FirstFrameReadyMs -76507 ms [HW_avc] 0
    metric pb8a/2/02330410 FirstFrameRenderMs 0 ms [HW_avc] 0

story aReconfiguration_endsWhatIsOpen: catches a change or a run of drops that the next session closes
~settle ; size 1280 720 ; drop 1 ; configure
play 40 33333
    I [BRISK] HW.c2.video.avc Got First Input Frame 1534 pts:66666
    I updatePTSTime [HW.c2.video.avc] First PTS after Flush or reset = 66666
    I [BRISK] HW.c2.video.avc Got First Frame Ready 1534(0)
    I Rendering first frame after starting or flushing.
    I [BRISK] HW.c2.video.avc Got First Frame Render 1534(0), renderNum = 1
    W MediaCodecLoggerService in NULL
