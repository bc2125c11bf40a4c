# Frames on their way through a codec, the registry, the debug mask and dumps.

story theQueue_holdsOneFrameMoreThanItsLimit: catches the bound, and a codec that stays after it is full
# The call that is refused answers true as well.
~begin
announce 0 ; times 129 { announce +1000 } ; announce +1000
    W/ZMediaAnalyticV omx queue full:129, first ts:0, last ts:129000
    = false
property mediaanalytic.maxqueuesize 1 ; addCodec ; updateBuffers 0 0
times 4 { announce +1000 }
    W/ZMediaAnalyticV omx queue full:2, first ts:131000, last ts:133000
    = false
# A limit below 1 refuses silently.
property mediaanalytic.maxqueuesize 0 ; addCodec ; updateBuffers 0 0 ; announce 1 ; announce 2 ; announce 3 ; references
    = false | 0
property mediaanalytic.maxqueuesize -1 ; addCodec ; updateBuffers 0 0 ; announce 1 ; announce 2
    = false
# Only video keeps records; those of an encoder are opened although nothing ever closes them.
property mediaanalytic.maxqueuesize 0
audioCodec ; times 9 { announce +1 }
untracked ; times 9 { announce +1 }
encoder ; times 3 { announce +1 }
    = false

story unknownTimestamps_areWarnedOfAtEachInput: catches a cap where there is none
~begin
times 20 { queue -5 } ; times 20 { handOver -5 }
    W/ZMediaAnalyticV omx Not found when updateInputFrame ts:-5 (20 times)
    W/ZMediaAnalyticV omx Not found when updateOmxInput ts:-5 (20 times)

story theFormatName_replacesTheCodecsNameOnce: catches a name that is taken at another time
~begin ; debug 1 ; addCodec ; updateBuffers 0 0
announce 0 ; updateInputFrame 0 noFormat ; announce 0 ; updateInputFrame 0 format=avc ; announce 0 ; updateInputFrame 0 format=hevc
    I/ZMediaAnalyticV  ETB:0 s:700 tsS:1
    I/ZMediaAnalyticV avc ETB:0 s:700 tsS:2
    I/ZMediaAnalyticV avc ETB:0 s:700 tsS:3

story ofTwoFramesWithOneTimestamp_theOlderIsMeant: catches the newer one, or both
~begin ; debug 2 ; addCodec ; updateBuffers 0 0 ; feed 1000 ; after 10 ; announce 1000 ; queue 1000
after 4 ; handOver 1000 ; after 1 ; decode 1000
    I/ZMediaAnalyticV omx OMX FBD FL:1 mediaTs:1000 f:0 s:5000/2

story whenTheClientOwnsEveryFrame_onlyOmxWarns: catches the bound, and a frame that is owned twice
~begin ; feed 1000 ; decode 1000 ; decode 1000 ; announce 2000 ; queue 2000
updateOmxInput 2000 flags=0x10
    W/ZMediaAnalyticV omx Omx ETB:2000 size:800 c:3 u:2 tsS:2 flag:10
~handOver 1000 ; decode 1000
# The frames inside are none then, not a number below.
handOver 2000 ; after 40 ; deliver 2000 ; dropIt 2000
    W/ZMediaAnalyticV omx Omx ETB:2000 size:800 c:3 u:3 tsS:2 flag:0
    I/ZMediaAnalyticV Pre-Render Drop:2000(10038) TD:2 FARD:(10040) FAD:10040(0) AL:0(10040) FL:40(40) 1/2$I:-40(0:0)I:-40(0:-1)
c2 ; announce 1000 ; queue 1000 ; updateC2Output 1000 ; updateC2Output 1000 ; announce 2000 ; queue 2000

story inputBytes_areTheHeadOfTheBufferOrOfEachSubSample: catches bytes of another place, and a read behind the buffer
define bytes = updateInputFrame_pre 1000 data="\x00\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\xff\xfe\xfd\xfc\xfb" $*
~begin ; debug 0x40 ; addCodec ; updateBuffers 0 0
bytes iv="\x00\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\xff\xfe\xfd\xfc\xfb" ; bytes size=3 ; updateInputFrame_pre 1000 size=3
    I/ZMediaAnalyticV S:16 v:1 t:1000 00 01 02 03 04 05 06 07 08 09
    I/ZMediaAnalyticV S:3 v:1 t:1000 00 01 02
    I/ZMediaAnalyticV S:3 v:1 t:1000
bytes iv="\x00\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\xff\xfe\xfd\xfc\xfb" samples=2:1
    I/ZMediaAnalyticV iv:00 01 02 03 04 05 06 07 08 09 0a ff fe fd fc fb
    I/ZMediaAnalyticV s:0 v:1 t:1000 c:2 e:1 S:16 00 01 02
bytes count=2 ; bytes samples=5:6,0:2,0:0,1:1
    I/ZMediaAnalyticV s:0 v:1 t:1000 c:5 e:6 S:16 00 01 02 03 04 05 06 07 08 09
    I/ZMediaAnalyticV s:1 v:1 t:1000 c:0 e:2 S:16 ff fe
    I/ZMediaAnalyticV s:2 v:1 t:1000 c:0 e:0 S:16
    I/ZMediaAnalyticV s:3 v:1 t:1000 c:1 e:1 S:16 fd fc
bytes size=4 samples=3:0,4:0,4:0 ; updateInputFrame_pre 1000 size=4 samples=0:4000000000,1:0
    I/ZMediaAnalyticV s:0 v:1 t:1000 c:3 e:0 S:4 00 01 02
    I/ZMediaAnalyticV s:1 v:1 t:1000 c:4 e:0 S:4 03
    I/ZMediaAnalyticV s:2 v:1 t:1000 c:4 e:0 S:4
    I/ZMediaAnalyticV s:0 v:1 t:1000 c:0 e:-294967296 S:4
    I/ZMediaAnalyticV s:1 v:1 t:1000 c:1 e:0 S:4
fork bytes samples=0xffffffff:1
    F/ZMediaAnalyticV overflow: arithmetic overflow: 4294967295 + 1
    died
debug 0 ; addCodec ; updateBuffers 0 0 ; bytes samples=0xffffffff:1

story anOmxBuffer_countsWhenItHoldsAKnownFrame: catches an end of stream or an empty buffer that counts, and warnings without reason
define owned = feed 1000 ; updateOmxOutput $* ; dropIt 1000
~begin
/mFrames/ owned 1000
/mFrames/ owned 1000 flags=1
    W/ZMediaAnalyticV mFramesOwnedByUs is 0 unexpectedly
/W/ owned 1000 size=0
    W/ZMediaAnalyticV mFramesOwnedByUs is 0 unexpectedly
/W/ owned 1001 flags=2 size=7
    W/ZMediaAnalyticV omx not found ts:1001 size:7 infos Size:1 flag:2 when updateOmxOutput
    W/ZMediaAnalyticV mFramesOwnedByUs is 0 unexpectedly
/W/ owned 1001 size=0
    W/ZMediaAnalyticV mFramesOwnedByUs is 0 unexpectedly
~debug 2 ; addCodec ; updateBuffers 0 0
owned 1000 flags=0x10
    I/ZMediaAnalyticV omx OMX FBD FL:0 mediaTs:1000 f:16 s:5000/1
    I/ZMediaAnalyticV Pre-Render Drop:1000(9999) TD:1 FARD:(-1) FAD:10000(-10001) AL:10001(10000) FL:0(-10001) 0/1$I:-0(1:0)
/W/ owned 1000 flags=0x11 size=0
    W/ZMediaAnalyticV mFramesOwnedByUs is 0 unexpectedly
/W/ owned 1000 size=0
    W/ZMediaAnalyticV omx not found ts:1000 size:0 infos Size:1 flag:0 when updateOmxOutput
    W/ZMediaAnalyticV mFramesOwnedByUs is 0 unexpectedly

story aCodec2Item_countsWhateverItsFlags: catches the flags of one back-end at the other
~begin ; c2 ; feed 1000
updateC2Output 1001 ; updateC2Output 1000 flags=1 ; feed 3000 ; dropIt 1000
    I/ZMediaAnalyticV Pre-Render Drop:1000(9999) TD:1 FARD:(-1) FAD:10000(-10001) AL:10001(10000) FL:0(-10001) 0/2$I:-0(1:2)I:-0(1:0)
debug 2 ; addCodec ; updateCCodecConfigs ; updateC2Output 1001 flags=1
    W/ZMediaAnalyticV c2 not found ts:1001 infos Size:0 flag:1 when updateC2Output

story warningsOfOutputAndRender_shareACapUntilTheNextFlush: catches a cap each, and one that a flush does not lift
~begin
times 10 { updateOutputFrame 0 } ; times 10 { show @ 0 }
    W/ZMediaAnalyticV omx not found ts when updateOutputFrame (10 times)
    W/ZMediaAnalyticV omx Not found ts  when updateFrameRender (6 times)
flush ; times 17 { updateOutputFrame 0 }
    W/ZMediaAnalyticV omx not found ts when updateOutputFrame (16 times)
property mediaanalytic.maxerrorframe 1 ; addCodec ; updateBuffers 0 0 ; updateOutputFrame 0 ; show @ 0
    W/ZMediaAnalyticV omx not found ts when updateOutputFrame
property mediaanalytic.maxerrorframe -1 ; addCodec ; updateBuffers 0 0 ; updateOutputFrame 0

story whenFlushed_framesAreForgottenAndNumbersRestartForAll: catches a frame that stays, and numbers of one codec only
~begin ; debug 0x400 ; omx
/cost/ feed 1000
    I/ZMediaAnalyticV omx Frame:1 Decrypt cost:0 ts:1000 size:700
~codec c2 ; addCodec ; updateCCodecConfigs
/cost/ feed 1000
    I/ZMediaAnalyticV c2 Frame:2 Decrypt cost:0 ts:1000 size:700
~codec omx ; decode 1000 ; flush ; codec c2
/cost/ feed 2000
    I/ZMediaAnalyticV c2 Frame:1 Decrypt cost:0 ts:2000 size:700
/cost/ codec omx ; feed 2000
    I/ZMediaAnalyticV omx Frame:2 Decrypt cost:0 ts:2000 size:700
# A flush gives back what was decoded; the other codec keeps its frames.
dropIt 1000 ; dropIt 2000
    I/ZMediaAnalyticV omx Frame:2 Frame latency in MediaCodec: -10001 Frame latency in Codec: -10000 2000 s:1 i:0
    I/ZMediaAnalyticV omx Frame:2 AL: App Latency: time spent by frame after it is ready in MediaCodec but before app handles it 10001
    I/ZMediaAnalyticV Pre-Render Drop:2000(9998) TD:2 FARD:(-1) FAD:0(-1) AL:10001(10000) FL:-10000(-10001) 0/1
    W/ZMediaAnalyticV mFramesOwnedByUs is 0 unexpectedly
/Drop/ codec c2 ; updateC2Output 1000 ; dropIt 1000
    I/ZMediaAnalyticV Pre-Render Drop:1000(9999) TD:1 FARD:(-1) FAD:10000(-10001) AL:10001(10000) FL:0(-10001) 0/2$I:-0(2:1)I:-0(1:0)

story bufferCounts_areLoggedWhenTheOutputOfVideoChanges: catches another port's change, and a codec that is no video
~begin
updateBuffers 0 5 2 ; updateBuffers 1 4 2 ; updateBuffers 1 4 2 ; updateBuffers 2 6 2 ; updateBuffers 1 6 2 ; updateBuffers 1 0 2
    I/ZMediaAnalyticV omx input:5 output:4 minUndequeue:2 video:1 decoder:1
    I/ZMediaAnalyticV omx input:5 output:0 minUndequeue:2 video:1 decoder:1
audioCodec ; updateBuffers 1 4 2 notVideo
codec unknown ; addCodec ; updateBuffers key=9 1 4 2

story theSwitch_isReadAtARegistration: catches a codec that is followed though the analytics were off, or not though on
property mediaanalytic.enable off ; omx ; isEnabled ; announce 0 ; references
    = false | 0
property mediaanalytic.enable true ; isEnabled ; c2 ; isEnabled ; announce 0
    = false | true
codec omx ; announce 0
    = false
# Switched off, all codecs fall silent and stay registered: removing while off leaves the entry.
codec c2 ; queue 1000 ; property mediaanalytic.enable false ; codec other ; addCodec ; codec c2 ; queue 1000 ; updateC2Output 1000 ; updateOmxOutput 1000 key=1 ; removeCodec
    W/ZMediaAnalyticV c2 Not found when updateInputFrame ts:1000
property mediaanalytic.enable true ; codec other ; addCodec ; codec c2 ; announce 1000

story whenFull_codecsAreRefusedEvenIfKnown: catches the capacity, and a reference that stays
property mediaanalytic.enable true
define tenMore = codec a$1 ; addCodec ; codec b$1 ; addCodec ; codec c$1 ; addCodec ; codec d$1 ; addCodec ; codec e$1 ; addCodec ; codec f$1 ; addCodec ; codec g$1 ; addCodec ; codec h$1 ; addCodec ; codec i$1 ; addCodec ; codec j$1 ; addCodec
tenMore 0 ; tenMore 1 ; tenMore 2 ; tenMore 3 ; tenMore 4 ; tenMore 5 ; tenMore 6 ; tenMore 7 ; tenMore 8 ; tenMore 9
codec last ; addCodec ; codec more ; addCodec key=31 ; references
    W/ZMediaAnalyticV addCodec Warning too much track <more> 0x1f c:more s:101
    = -24 | 0
codec a0 ; addCodec key=31
    W/ZMediaAnalyticV addCodec Warning too much track <a0> 0x1f c:a0 s:101
    = -24
removeCodec ; references ; codec more ; addCodec ; announce 0 ; references ; removeCodec ; references
    = 0 | 2 | 0

story whenRegisteredAgain_theCodecStartsAfresh: catches the old key, the old records, and a registration too many
~property mediaanalytic.enable true ; debug 2 ; omx ; feed 1000
addCodec again key=77 bufferKey=88 ; updateBuffers 0 0 ; updateOmxOutput 1000 key=2 size=2 ; updateOmxOutput 1000 key=77 ; updateBuffers key=2 1 2 ; updateBuffers key=88 1 4
    W/ZMediaAnalyticV again not found ts:1000 size:500 infos Size:0 flag:0 when updateOmxOutput
    I/ZMediaAnalyticV again input:0 output:4 minUndequeue:0 video:1 decoder:1
removeCodec ; references
    = 0

story keys_leadToTheCodecRegisteredFirst: catches the last one, keys of the other kind, and a key whose codec is gone
property mediaanalytic.enable true ; debug 0x20000
define report = updateOmxOutput 1000 key=5 size=9 ; updateBuffers key=6 0 4 2 ; updateOmxOutput 1000 key=6 ; updateBuffers key=5 0 4 2
codec first ; addCodec key=5 bufferKey=6 ; codec second ; addCodec key=5 bufferKey=6
report ; updateOutputFrame 1000
    I/ZMediaAnalyticV first OMX FBD mediaTs:1000 f:0 s:90
    I/ZMediaAnalyticV first input:4 output:0 minUndequeue:2 video:0 decoder:0
    I/ZMediaAnalyticV second FBD:1000
codec first ; removeCodec ; report
    I/ZMediaAnalyticV second OMX FBD mediaTs:1000 f:0 s:90
    I/ZMediaAnalyticV second input:4 output:0 minUndequeue:2 video:0 decoder:0
codec second ; removeCodec ; report

story eventsOfUnknownCodecs_areIgnored: catches a line, a death or a registration that such an event causes
~begin ; debug 0x7fffffff ; removeCodec
feed 0 ; deliver 0 ; show @ 0 ; dropIt 0 ; flush ; updateC2Output 0 ; updateACodecOutput data="x" ; updateBuffers 1 4
    = false
updateQueueBuffer 1 @ @ ; updateDequeueBuffer 1 @ ; updateCCodecConfigs ; noCodec ; announce 0
    = false

story thePackage_isThatOfThisProcess: catches another process's, or a name that is kept
package com.example.player ; getPackageName ; package com.example.other ; getPackageName
    = com.example.player | com.example.other

story theMask_ofAnOmxVideoDecoder: catches a bit that logs something else, or of another kind of codec
define bit = after -$1 ; debug $2 ; omx ; flush ; announce 1000 ; after 2 ; queue 1000 ; handOver 1000 ; after 5 ; deliver 1000 ; updateACodecOutput data="abcd" ; after 3 ; updateQueueBuffer 8 @-11 @+10 1000 ; updateDequeueBuffer 16 @-100 owned=2
define shown = bit $1 $2 ; show @+10 1000
~begin
shown 0 0
    I/ZMediaAnalyticV AVSYNC_V:-10(10020)(1) b:1 rts:10020(10) pid:<pid> min:10020(1 )(10) max:10020(1)(10) avg:0(0)(10) cnt:1(0)
bit 10 0x1
    I/ZMediaAnalyticV omx ETB:1000 s:700 tsS:1
    I/ZMediaAnalyticV omx Omx ETB:1000 size:800 c:3 tsS:1 flag:0
bit 10 0x2
    I/ZMediaAnalyticV omx OMX FBD FL:5 mediaTs:1000 f:0 s:5000/1
    I/ZMediaAnalyticV omx FBD mediaTs:1000, 0/1
    I/ZMediaAnalyticV Pre-Render FBD:1000(10006) TD:1 FARD:(10007) FAD:10007(0) AL:0(10007) FL:5(5) 0/1$I:-5(1:0)
shown 10 0x4
    I/ZMediaAnalyticV omx Render R-S:10 R:10020(10020) pts:1000 0/1
    I/ZMediaAnalyticV AVSYNC_V:-10(10020)(1) b:1 rts:10020(10) pid:<pid> min:10020(1 )(10) max:10020(1)(10) avg:0(0)(10) cnt:1(0)
bit 10 0x8
    I/ZMediaAnalyticV dequeue actual:100(100) theory:0 renderTime:-1 index:-1 ownedByCom:2 ownByNat:1 0x10
bit 10 0x20
    I/ZMediaAnalyticV queueBuffer rendertime:10020000000, mediatime:1000 size:1
bit 10 0x40
    I/ZMediaAnalyticV S:0 v:1 t:1000
shown 10 0x400
    I/ZMediaAnalyticV omx Frame:1 Decrypt cost:2 ts:1000 size:700
    I/ZMediaAnalyticV omx Frame:1 sent to Omx, ETB(Empty this buffer) Timestamp:1000 size:800 frames owned by OMX:3 tsS:1 flag:0
    I/ZMediaAnalyticV omx Frame:1 Decoded and filled into output buffer, FBD(Fill buffer done) mediaTs:1000, 0/1
    I/ZMediaAnalyticV omx Frame:1 Frame latency in MediaCodec: 5 Frame latency in Codec: 5 1000 s:1 i:0
    I/ZMediaAnalyticV omx Frame:1 AL: App Latency: time spent by frame after it is ready in MediaCodec but before app handles it 0
    I/ZMediaAnalyticV Pre-Render omx:1000(10006) TD:1 FARD:(10007) FAD:10007(0) AL:0(10007) FL:5(5) 0/1$I:-5(1:0)
    I/ZMediaAnalyticV queueBuffer cost:11 ts:1000
    I/ZMediaAnalyticV Warning queueBuffer early too small:10 ms ts:1000
    I/ZMediaAnalyticV dequeue actual:100(100) theory:0 renderTime:-1 index:-1 0x10
    I/ZMediaAnalyticV omx Frame:1 Frame latency in MediaCodec: 5 Frame latency in Codec: 5 1000 s:1 i:0
    I/ZMediaAnalyticV omx Frame:1 AL: App Latency: time spent by frame after it is ready in MediaCodec but before app handles it 3
    I/ZMediaAnalyticV Pre-Render Small_Early:10:1000(10009) TD:1 FARD:(10007) FAD:10007(0) AL:3(10010) FL:5(5) 0/1$I:-5(1:0)
    I/ZMediaAnalyticV AVSYNC_V:-10(10020)(1) b:1 rts:10020(10) pid:<pid> min:10020(1 )(10) max:10020(1)(10) avg:0(0)(10) cnt:1(0)
bit 10 0x7f0000
    I/ZMediaAnalyticV omx input:0 output:0 minUndequeue:0 video:1 decoder:1

story theMask_ofACodec2VideoDecoder: catches what is another back-end's
define bit = debug $1 ; c2 ; flush ; announce 1000 ; after 2 ; queue 1000 ; after 5 ; updateC2Output 1000 ; updateOutputFrame 1000
~begin
bit 2
    I/ZMediaAnalyticV c2 C2 OWD FL:5 mediaTs:1000 f:0 0/1
    I/ZMediaAnalyticV c2 OWD mediaTs:1000, 0/1
    I/ZMediaAnalyticV Pre-Render OWD:1000(10006) TD:1 FARD:(10007) FAD:10007(0) AL:0(10007) FL:5(5) 0/1$I:-5(1:0)
bit 0x400
    I/ZMediaAnalyticV c2 Frame:1 Decrypt cost:2 ts:1000 size:700
    I/ZMediaAnalyticV c2 Frame:1 Decoded and filled into output buffer, Output onWorkDone mediaTs:1000, 0/1
    I/ZMediaAnalyticV c2 Frame:1 Frame latency in MediaCodec: 5 Frame latency in Codec: 5 1000 s:1 i:0
    I/ZMediaAnalyticV c2 Frame:1 AL: App Latency: time spent by frame after it is ready in MediaCodec but before app handles it 0
    I/ZMediaAnalyticV Pre-Render c2:1000(10013) TD:1 FARD:(10014) FAD:10014(0) AL:0(10014) FL:5(5) 0/1$I:-5(1:0)

story theMask_ofAVideoEncoder: catches a record that is stamped though nobody decodes it
define bit = debug $1 ; encoder ; flush ; announce 1000 ; after 2 ; queue 1000 ; handOver 1000 ; after 5 ; deliver 1000 ; updateACodecOutput data="abcd" ; updateQueueBuffer 8 @-11 @+10 1000 ; updateDequeueBuffer 16 @-100
define shown = bit $1 ; show @+10 1000
~begin
bit 1 ; bit 2 ; shown 4 ; bit 0x40
    I/ZMediaAnalyticV enc ETB:1000, size:700
    I/ZMediaAnalyticV enc Omx ETB:1000 size:800 c:3 tsS:1 flag:0
    I/ZMediaAnalyticV enc OMX FBD mediaTs:1000 f:0 s:5001
    I/ZMediaAnalyticV enc FBD:1000
    I/ZMediaAnalyticV enc Render R-S:10 R:10031(10031) pts:1000 0/1
    I/ZMediaAnalyticV AVSYNC_V:-9(10030)(1) b:0 rts:10031(10) pid:<pid> min:10031(1 )(10) max:10031(1)(10) avg:0(0)(10) cnt:1(0)
    I/ZMediaAnalyticV S:0 v:1 t:1000
shown 0x400
    I/ZMediaAnalyticV queueBuffer cost:11 ts:1000
    I/ZMediaAnalyticV Warning queueBuffer early too small:10 ms ts:1000
    I/ZMediaAnalyticV dequeue actual:100(100) theory:0 renderTime:-1 index:-1 0x10
    I/ZMediaAnalyticV enc Frame:1 Frame latency in MediaCodec: 0 Frame latency in Codec: 0 1000 s:1 i:0
    I/ZMediaAnalyticV enc Frame:1 AL: App Latency: time spent by frame after it is ready in MediaCodec but before app handles it 10036
    I/ZMediaAnalyticV Pre-Render Small_Early:10:1000(10034) TD:1 FARD:(-1) FAD:0(-1) AL:10036(10035) FL:0(0) 0/1
    I/ZMediaAnalyticV AVSYNC_V:-9(10044)(1) b:0 rts:10045(10) pid:<pid> min:10045(1 )(10) max:10045(1)(10) avg:0(0)(10) cnt:1(0)
bit 0x7f0000
    I/ZMediaAnalyticV enc input:0 output:0 minUndequeue:0 video:1 decoder:0

story theMask_ofCodecsWithoutRecords: catches a bit of video that counts for audio, or the other way round
define bit = debug $1 ; $2 ; announce 1000 ; queue 1000 ; handOver 1000 ; deliver 1000 ; updateC2Output 1000 ; updateACodecOutput data="abcd" ; updateQueueBuffer 8 @-11 @+10 1000 ; show @+10 1000 ; updateDequeueBuffer 16 @-100
~begin
bit 0x7f audioCodec
    I/ZMediaAnalyticV queueBuffer rendertime:10010000000, mediatime:1000 size:1
    I/ZMediaAnalyticV dequeue actual:100(100) theory:0 renderTime:-1 index:-1 ownedByCom:3 ownByNat:1 0x10
bit 0x47f80 audioCodec
    I/ZMediaAnalyticV aud input:0 output:0 minUndequeue:0 video:0 decoder:1
    I/ZMediaAnalyticV S:0 v:0 t:1000
    I/ZMediaAnalyticV queueBuffer cost:11 ts:1000
    I/ZMediaAnalyticV Warning queueBuffer early too small:10 ms ts:1000
    I/ZMediaAnalyticV dequeue actual:100(100) theory:0 renderTime:-1 index:-1 0x10
bit 0x10000 untracked ; bit 0x20000 untracked ; bit 0x40000 untracked
    I/ZMediaAnalyticV off input:0 output:0 minUndequeue:0 video:0 decoder:1
    I/ZMediaAnalyticV off ETB:1000, size:700
    I/ZMediaAnalyticV off Omx ETB:1000 size:800 c:3 tsS:0 flag:0
    I/ZMediaAnalyticV off input:0 output:0 minUndequeue:0 video:0 decoder:1
    I/ZMediaAnalyticV off OMX FBD mediaTs:1000 f:0 s:5000
    I/ZMediaAnalyticV off FBD:1000
    I/ZMediaAnalyticV off C2 OWD mediaTs:1000 f:0 0
    I/ZMediaAnalyticV off input:0 output:0 minUndequeue:0 video:0 decoder:1
    I/ZMediaAnalyticV S:0 v:0 t:1000

story theMask_isDecimalUnlessItBeginsWith0x: catches another base, blanks, and what stands behind the number
define mask = debug $1 ; omx ; announce 1 ; queue 1 ; updateOutputFrame 1 ; show @ 1
~begin
/omx/ mask 5 ; mask 0x5 ; mask 0xaF
    I/ZMediaAnalyticV omx ETB:1 s:700 tsS:1
    I/ZMediaAnalyticV omx Render R-S:0 R:10000(10000) pts:1 0/1
    I/ZMediaAnalyticV omx ETB:1 s:700 tsS:1
    I/ZMediaAnalyticV omx Render R-S:0 R:10000(10000) pts:1 0/1
    I/ZMediaAnalyticV omx ETB:1 s:700 tsS:1
    I/ZMediaAnalyticV omx FBD mediaTs:1, 0/1
    I/ZMediaAnalyticV omx Render R-S:0 R:10000(10000) pts:1 0/1
/omx/ mask 010 ; mask " 3"
    I/ZMediaAnalyticV omx FBD mediaTs:1, 0/1
    I/ZMediaAnalyticV omx ETB:1 s:700 tsS:1
    I/ZMediaAnalyticV omx FBD mediaTs:1, 0/1
/ETB:1/ mask -1
    I/ZMediaAnalyticV omx ETB:1 s:700 tsS:1
/omx/ mask 12abc ; mask 0x80000004
    I/ZMediaAnalyticV omx Render R-S:0 R:10000(10000) pts:1 0/1 (2 times)
/omx/ mask "" ; mask 0X5 ; mask " 0x3" ; mask abc ; mask 0x ; mask 0xzz ; mask 0x-1

story drops_areTracedAfterThePropertyThatAsksForIt: catches a counter before its property, and a bit that traces nothing
~begin ; debug 0x10 ; omx ; traceTags video ; feed 1000
/trace/ dropIt 1000
    property_set mediaanalytic.atrace=on
    trace drop_sysTime=10000
~traceTags audio ; feed 1000
/trace/ dropIt 1000
    property_set mediaanalytic.atrace=on
~debug 0xef ; omx ; traceTags video ; feed 1000
/trace/ dropIt 1000
~debug 0x10 ; omx ; propertiesFail ; feed 1000
/trace/ dropIt 1000
    property_set mediaanalytic.atrace=on
    trace drop_sysTime=10000

story dumps_holdAllBytesInTheirOrder: catches bytes of another kind, file or order
define threeBytes = updateInputFrame_pre 0 data=$1 ; updateOmxInput 0 data=$1 ; updateACodecOutput data=$1
~begin ; debug 0x380 ; omx
threeBytes one ; threeBytes two
    fopen /data/tmp/dumpinput_video_<pid>_<pid>.raw wb
    I/ZMediaAnalyticV fopen /data/tmp/dumpinput_video_<pid>_<pid>.raw
    write dumpinput_video_<pid>_<pid>.raw one
    fopen /data/tmp/dumpdecrypted_1_<pid>_<pid>.raw wb
    I/ZMediaAnalyticV fopen /data/tmp/dumpdecrypted_1_<pid>_<pid>.raw
    write dumpdecrypted_1_<pid>_<pid>.raw one
    fopen /data/tmp/dumpoutput_video_<pid>_<pid>.raw wb
    I/ZMediaAnalyticV fopen /data/tmp/dumpoutput_video_<pid>_<pid>.raw
    write dumpoutput_video_<pid>_<pid>.raw one
    I/ZMediaAnalyticV write output size:3
    write dumpinput_video_<pid>_<pid>.raw two
    write dumpdecrypted_1_<pid>_<pid>.raw two
    write dumpoutput_video_<pid>_<pid>.raw two
    I/ZMediaAnalyticV write output size:3
removeCodec
    close dumpdecrypted_1_<pid>_<pid>.raw
    close dumpoutput_video_<pid>_<pid>.raw
    close dumpinput_video_<pid>_<pid>.raw
/^write/ debug 0x200000 ; audioCodec ; threeBytes one ; debug 0x100000 ; audioCodec ; threeBytes one ; debug 0x80000 ; audioCodec ; threeBytes one
    write dumpoutput_audio_<pid>_<pid>.raw one
    write dumpdecrypted_0_<pid>_<pid>.raw one
    write dumpinput_audio_<pid>_<pid>.raw one
/fail/ dumps closed ; removeCodec ; debug 0x300 ; omx ; updateOmxInput 0 data=one ; updateACodecOutput data=one
    W/ZMediaAnalyticV fopen fail 13 (2 times)

story whenADumpFails_analysisGoesOn: catches a file that is written on after it failed, and one that is never tried again
~begin ; debug 0x80 ; omx
dumps closed ; updateInputFrame_pre 0 data="abc" ; dumps full ; updateInputFrame_pre 0 data="abc"
    fopen /data/tmp/dumpinput_video_<pid>_<pid>.raw wb
    W/ZMediaAnalyticV fopen fail 13
    fopen /data/tmp/dumpinput_video_<pid>_<pid>.raw wb
    I/ZMediaAnalyticV fopen /data/tmp/dumpinput_video_<pid>_<pid>.raw
    W/ZMediaAnalyticV fwrite fail 28 ret:0 size:3
    close dumpinput_video_<pid>_<pid>.raw
/dump/ dumps work ; updateInputFrame_pre 0 data="fresh" ; dropIt 0
    fopen /data/tmp/dumpinput_video_<pid>_<pid>.raw wb
    I/ZMediaAnalyticV fopen /data/tmp/dumpinput_video_<pid>_<pid>.raw
    write dumpinput_video_<pid>_<pid>.raw fresh

story outputMayLieInAGraphicBuffer: catches memory that is written though there is none, and a lock that stays
~begin ; debug 0x200 ; omx
/write/ updateACodecOutput size=8 ; updateACodecOutput size=8 graphic ; updateACodecOutput size=8 graphic data="ignored!" ; updateACodecOutput data="plainmem"
    write dumpoutput_video_<pid>_<pid>.raw gggggggg
    I/ZMediaAnalyticV write output size:8
    write dumpoutput_video_<pid>_<pid>.raw gggggggg
    I/ZMediaAnalyticV write output size:8
    write dumpoutput_video_<pid>_<pid>.raw plainmem
    I/ZMediaAnalyticV write output size:8
graphicBuffers null ; updateACodecOutput size=8 graphic ; graphicBuffers -1 ; updateACodecOutput size=8 graphic ; lockedBuffers
    I/ZMediaAnalyticV write output size:8
    W/ZMediaAnalyticV lock graphic buffer fail: Operation not permitted (1)
    = 0
