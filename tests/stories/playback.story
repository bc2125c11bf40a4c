# Timestamps of outputs: segments, seeks, repeats, the first frame, flushes.

story jumps_areSeeks: catches a bound off by one and timestamps compared unsigned
~configure
/seek/ output 0 ; output 33333 ; output 33333 ; output 66666 ; output 5066666
/seek/ output 10066667
    I updatePTSTime Possible seek found! last pts:5066666 cur pts:10066667
~configure
/seek/ output 100 ; output 99 ; output 100 ; output 5000101
    I updatePTSTime Possible seek found! last pts:100 cur pts:99
    I updatePTSTime Possible seek found! last pts:100 cur pts:5000101
# A negative timestamp runs on and becomes the last one. After -1 anything runs on.
~configure
/seek/ output 50 ; output -7 ; output 10
~configure
/seek/ output 50 ; output -7 ; output 5000000
    I updatePTSTime Possible seek found! last pts:-7 cur pts:5000000
~configure
/seek/ output 50 ; output -1 ; output 9000000
~configure
/seek/ output -7 ; output 9000000 ; output 9000001
~configure
/seek/ output 9223372036854775806 ; output max ; output 0
    I updatePTSTime Possible seek found! last pts:9223372036854775807 cur pts:0
~configure
/seek/ output 0 ; output min ; output max
    I updatePTSTime Possible seek found! last pts:-9223372036854775808 cur pts:9223372036854775807

story playback_isTheSumOfItsSegments: catches a segment that is lost, counted twice or left open by a seek, a flush or a report
# What comes before the first frame is not played. 66 ms before the flush, 10 s up to the seek and 2 s after it.
define segments = output -7 ; updateMetricsForFlush ; frame 0 ; output 33333 ; output 66666 ; updateMetricsForFlush ; output 10000000 ; output 15000000 ; output 20000000 ; output 5000000 ; output 7000000
~configure ; segments
# Frames that continue a segment: 2, 2 and 1 in 12066 ms.
/Playback/ logMetrics
    I 99999999.HW.c2.video.avc.TotalVideoPlaybackTimeMs = 12066
    metric qkuh/2/02330410 TotalVideoPlaybackTimeMs 12066 ms [HW_avc] 0
~configure ; segments
/Avg/ logMetrics
    I 99999999.HW.c2.video.avc.StreamAvgFramerate = 0.414
    metric 21qt/2/02330410 StreamAvgFramerate 0 fps [avc] fps=15 1
~configure c2.v audio/mp4a-latm ; segments
/Playback/ logMetrics
    I 99999999.VND.c2.audio.mp4a.TotalAudioPlaybackTimeMs = 12066
    metric v8xh/2/02330410 TotalAudioPlaybackTimeMs 12066 ms [VND_mp4a] 0
    = com.android.mediaplayer.VND.c2.audio.mp4a:TotalAudioPlaybackTimeMs=12066
~configure c2.v text/x ; segments
logMetrics
    = com.android.mediaplayer.VND.c2.unknown.x

story aTimestampStandsForItsFrames: catches a count that is taken for 1
service
~configure ; profileP2End ; input 0 ; output -7 count=9 ; output 0 count=3 ; render 0
client getBufferCountSinceLastFlush
    = 0
output 33333 count=0 ; client getBufferCountSinceLastFlush
    = 0
output 66666 count=4 ; client getBufferCountSinceLastFlush
    = 4
output 5000000 count=7 ; output 10000000 count=11 ; client getBufferCountSinceLastFlush
    = 22
# The first of a segment is where it begins and does not count.
output 20000000 count=5 ; client getBufferCountSinceLastFlush
    I updatePTSTime Possible seek found! last pts:10000000 cur pts:20000000
    = 0
output 20033333 count=2 ; client getBufferCountSinceLastFlush
    = 2
~configure ; frame 0 ; output 2500000 count=25 ; output 5001000 count=25
/Avg/ logMetrics
    I 99999999.HW.c2.video.avc.StreamAvgFramerate = 9.998
    metric 21qt/2/02330410 StreamAvgFramerate 9 fps [avc] fps=15 1

story aRepeatStandsForItsFrames: catches repeats that count 1 whatever they stand for, and warnings that come late
~settle
output 33333 count=10 ; output 33333 ; output 33333
    I 99999999.HW.c2.video.avc Repeating PTS in Output = 33333 (2 times)
    I W.rot11.99999999.HW.c2.video.avc Repeating PTS in Output = 33333
getEmbeddedWarnings
    = W.rot12.99999999.HW.c2.video.avc

story onlyTheOpenSegment_isTheStatussRate: catches a rate over all segments
~settle ; play 60 33333 ; updateMetricsForFlush
getStatus "Stream Framerate (fps)"
    = 0.000
play 10 40000 ; getStatus "Stream Framerate (fps)"
    I updatePTSTime [HW.c2.video.avc] First PTS after Flush or reset = 2073313
    I Rendering first frame after starting or flushing.
    = 4.110
# Twenty frames after a seek in one second.
~output 90000000 ; times 20 { output +50000 }
getStatus "Stream Framerate (fps)" ; updateMetricsForFlush
    = 20.000
    I Flushing: 99999999.HW.c2.video.avc.framerate = 20.000 fps

~configure ; output 50 ; output 60 ; output -7
getStatus "Stream Framerate (fps)" ; updateMetricsForFlush
    = 0.000

story theEndOfTheStream_changesNothing: catches an end of stream that is measured
~configure
output 5 eos
    I updatePTSTime [HW.c2.video.avc] First PTS after Flush or reset = 5
    I updatePTSTime [HW.c2.video.avc] EOS pts:5
output 100 ; output 9000000 eos ; output 200 ; output 200 eos
    I updatePTSTime [HW.c2.video.avc] EOS pts:9000000
    I updatePTSTime [HW.c2.video.avc] EOS pts:200

story theFirstFrame_isReadyOnce: catches readiness before an input, of an empty one, or a second time
~configure ; output 0 ; input 0 size=0
after 20 ; input 7 ; after 30 ; output 7 ; output 8
    I [BRISK] HW.c2.video.avc Got First Input Frame 1020 pts:7
    I [BRISK] HW.c2.video.avc Got First Frame Ready 1050(30)
# After a flush it is none any more. After a configuration it is.
/Got/ updateMetricsForFlush ; input 9 ; output 9
/Got/ configure ; input 10 ; output 10
    I [BRISK] HW.c2.video.avc Got First Input Frame 1050 pts:10
    I [BRISK] HW.c2.video.avc Got First Frame Ready 1050(0)

story theFirstTimestamp_isTheSmallest: catches a first output that is taken for the smallest one, or the other way round
~configure ; input 100000 ; output 100000 ; render 100000 ; output 66666 ; output 133333 ; output 5100000
/Playback/ output 10200000 ; logMetrics
    I 99999999.HW.c2.video.avc.TotalVideoPlaybackTimeMs = 5033
    metric qkuh/2/02330410 TotalVideoPlaybackTimeMs 5033 ms [HW_avc] 0
~configure ; frame -100000 ; output 66666 ; output 5000000 ; output 10000000
/Playback/ logMetrics
    I 99999999.HW.c2.video.avc.TotalVideoPlaybackTimeMs = 9933
    metric qkuh/2/02330410 TotalVideoPlaybackTimeMs 9933 ms [HW_avc] 0

story repeatsCount_from501MsAfterTheFirstRender: catches a bound of settling, and settling by another event's clock
# With logging off, the release of the buffer does not count as the render.
define repeatAfter = input 0 ; output 0 ; updateFrameDropCounters 0 ; after 100 ; resetConsecutiveFrameDropFlag -1 0 ; after $1 ; output 0 ; output 0
~configure
/Output/ repeatAfter 400
~configure ; frame 0 ; after -1
/Output/ output 0 ; output 0 ; output -5 ; output -5
    I 99999999.HW.c2.video.avc Repeating PTS in Output = 0 (2 times)
~configure
/Output/ repeatAfter 401
    I 99999999.HW.c2.video.avc Repeating PTS in Output = 0 (2 times)
~configure loggingOff
/Output/ repeatAfter 500
~configure loggingOff
/Output/ repeatAfter 501
    I 99999999.HW.c2.video.avc Repeating PTS in Output = 0 (2 times)

story repeats_areThrottledOnRequest: catches another period, or throttling without the request
~settle c2.v video/avc flags=2 ; times 18 { output 33333 }
# Those with 18, 19, 20, 40 and 60 repeats before them.
/Output/ times 43 { output 33333 }
    I W.rot18.99999999.HW.c2.video.avc Repeating PTS in Output = 33333
    I W.rot19.99999999.HW.c2.video.avc Repeating PTS in Output = 33333
    I W.rot20.99999999.HW.c2.video.avc Repeating PTS in Output = 33333
    I W.rot40.99999999.HW.c2.video.avc Repeating PTS in Output = 33333
    I W.rot60.99999999.HW.c2.video.avc Repeating PTS in Output = 33333
~settle c2.v video/avc flags=1 ; times 20 { output 33333 }
/Output/ times 3 { output 33333 }
    I W.rot20.99999999.tunneled.HW.c2.video.avc Repeating PTS in Output = 33333
    I W.rot21.99999999.tunneled.HW.c2.video.avc Repeating PTS in Output = 33333
    I W.rot22.99999999.tunneled.HW.c2.video.avc Repeating PTS in Output = 33333
# Without playback, by its own operation: the count is what it is told.
~configure c2.v video/avc flags=2
logRepeatPTS -7 33333
    I 99999999.HW.c2.video.avc Repeating PTS in Output = 33333
~settle ; times 24 { output 33333 }
logRepeatPTS 5 33333 ; logRepeatPTS 41 33333 ; logRepeatPTS -1 33333
    I W.rot24.99999999.HW.c2.video.avc Repeating PTS in Output = 33333 (3 times)

story anInputsRepeat_isOneThatWasQueuedExactlyTwice: catches "at least twice", and a history that holds another number than 20
~settle ; input 33333
/Input/ output 33333
~input 1 ; input 33333
/Input/ output 33333
    W 99999999.HW.c2.video.avc Repeating PTS in Input = 33333
~input 33333
/Input/ output 33333
# The frame of settle took the first of the 20 places: 18 more keep both, the 19th does not.
~settle ; input 33333 ; input 33333 ; times 18 { input 7 }
/Input/ checkRepeatedInputPTS 33333
    W 99999999.HW.c2.video.avc Repeating PTS in Input = 33333
~input 7
/Input/ checkRepeatedInputPTS 33333

story theInputHistory_isKeptAndFilledFromItsHead: catches a reset that clears the history or leaves its write position
# Places 8 and 9 of the 20: after a reset the ninth input takes the first of them.
~settle ; times 7 { input 5 } ; input 33333 ; input 33333 ; resetMetricsData ; times 8 { input 7 }
/Input/ checkRepeatedInputPTS 33333
    W 99999999.HW.c2.video.avc Repeating PTS in Input = 33333
~input 7
/Input/ checkRepeatedInputPTS 33333
~input 44444 ; input 44444 ; times 18 { input 7 }
/Input/ checkRepeatedInputPTS 44444
    W 99999999.HW.c2.video.avc Repeating PTS in Input = 44444
~input 8
/Input/ checkRepeatedInputPTS 44444
# Places that were never filled hold no timestamp that a stream has.
Create ; configure ; checkRepeatedInputPTS 0 ; checkRepeatedInputPTS -1
    I [BRISK] HW.c2.video.avc P2 + 1501

story aFormatChange_isTimedAtItsFirstFrame: catches a change that is told before its frame, twice, or with another size
~settle
~size 640 480 ; size 1280 720
# 511 ms after the frame that settle rendered.
after 10 ; output 66666 ; output 99999
    I 99999999.HW.c2.video.avc Resolution change from 640x480 to 1280x720 took = 511
# Also one that keeps the size.
~size 1280 720
output 133332
    I 99999999.HW.c2.video.avc Resolution change from 1280x720 to 1280x720 took = 511

story rampUp_isSentOnceAClass: catches a class sent twice, by another side of the frame, or compared signed
define next = size $1 $2 ; output 33334
~settle
/metric/ next 1919 1080
/metric/ next 1920 1080 ; next 1920 800 ; next 3840 2160 ; next 1920 1080 ; next 3840 2160
    metric c48a/2/02330410 FHDRampupTime 501 ms [HW_avc] 0
    metric p61w/2/02330410 UHDRampupTime 501 ms [HW_avc] 0
~settle
/metric/ next 1080 1920 ; next 3839 2160
    metric c48a/2/02330410 FHDRampupTime 501 ms [HW_avc] 0
~settle
/metric/ next 3840 2160 ; next 1920 1080 ; next 3840 2160
    metric p61w/2/02330410 UHDRampupTime 501 ms [HW_avc] 0
~settle
/metric/ next -1 1920
    metric p61w/2/02330410 UHDRampupTime 501 ms [HW_avc] 0
~settle ; after -600
/metric/ next 1920 1080
    metric c48a/2/02330410 FHDRampupTime 1.84467441e+19 ms [HW_avc] 0

story rampUp_namesTheCodec: catches a mark of the record that is missing or another codec's
display 3840 2160
define ramp = settle $* ; input 1 secure ; size 1920 1080 ; output 33334
/metric/ ramp c2.vendor.dec video/hevc flags=1 ; ramp c2.android.dec video/hevc flags=1 ; ramp c2.vendor.dec text/x flags=1
    metric c48a/2/02330410 FHDRampupTime 501 ms [HW_hevc_4K_secure_tunneled] 0
    metric c48a/2/02330410 FHDRampupTime 501 ms [SW_hevc_4K_secure_tunneled] 0
    metric c48a/2/02330410 FHDRampupTime 2503 ms [VND_x] 0

story aFlush_logsTheFramerateAndSettlesAnew: catches a segment that a flush leaves open, and an order in which it closes it
~configure ; output 0 ; times 3 { output +333333 } ; output +1
updateMetricsForFlush
    I Flushing: 99999999.HW.c2.video.avc.framerate = 4.000 fps
# The first frame after it reads as a seek from where the segment ended.
output 7000000 ; output 7000000
    I updatePTSTime [HW.c2.video.avc] First PTS after Flush or reset = 7000000
    I updatePTSTime Possible seek found! last pts:1000000 cur pts:7000000
# One frame makes no rate.
updateMetricsForFlush ; updateMetricsForFlush
~configure c2.v audio/mp4a-latm ; output 0 ; output 1000000
updateMetricsForFlush

story countsBeyond32Bits_areTakenWhole: catches a count or a repeat that is compared signed or loses its upper half
service
~settle ; profileP2End
output 33333 count=4294967297 ; client getBufferCountSinceLastFlush ; getEmbeddedWarnings
    I 99999999.HW.c2.video.avc Repeating PTS in Output = 33333
    = 4294967298 | 99999999.HW.c2.video.avc
output 33333 count=-5 ; output 33333 ; getEmbeddedWarnings
    I 99999999.HW.c2.video.avc Repeating PTS in Output = 33333 (2 times)
    = 99999999.HW.c2.video.avc
