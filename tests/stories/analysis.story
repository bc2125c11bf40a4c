# The line of a frame and its histories. A frame that is dropped shows them.

story aFrameInTime_hasNoHistory: catches a time that is measured from another event
~begin ; shownFirst ; feed 40000
# Decoded 20 ms after its input and after the frame before; output 24 after its input, 4 after the render, 24 after its call.
after 20 ; decode 40000 ; after 4 ; updateOutputFrame 40000 ; after 6
dropIt 40000
    I/ZMediaAnalyticV Drop:40000(10000) TD:40 FARD:4(24) FAD:20(4) AL:6(10040) FL:20(24) 0/1

story beforeTheFirstRender_theLineSaysSo: catches a frame that is measured from a render of the time before a flush
~begin
feed 1000 ; deliver 1000 ; dropIt 1000
    I/ZMediaAnalyticV Pre-Render Drop:1000(9999) TD:1 FARD:(10000) FAD:10000(0) AL:0(10000) FL:0(0) 0/1$I:-0(1:0)
~shownFirst
feed 1000 ; deliver 1000 ; dropIt 1000
    I/ZMediaAnalyticV Drop:1000(10009) TD:1 FARD:-20(0) FAD:0(0) AL:0(10010) FL:0(0) 0/1
flush ; feed 1000 ; deliver 1000 ; dropIt 1000
    I/ZMediaAnalyticV Pre-Render Drop:1000(10009) TD:1 FARD:(10010) FAD:10010(0) AL:0(10010) FL:0(0) 0/1$I:-0(1:0)
# Dropped before its output, it shows the initial stamps.
feed 2000 ; after 5 ; dropIt 2000
    I/ZMediaAnalyticV Pre-Render Drop:2000(10013) TD:2 FARD:(-1) FAD:0(-1) AL:10016(10015) FL:-10010(-10011) 0/1
    W/ZMediaAnalyticV mFramesOwnedByUs is 0 unexpectedly
# Only a known frame of video is analysed; reported as rendered, it is not touched.
dropIt 3000 ; feed 3000 ; dropFrameAnalyze 3000 rendered
feed 4000 ; updateBuffers 0 0 notVideo ; dropIt 4000

story afterARenderByMediaTime_theDistanceIsLeftOut: catches a render time that is set against the clock though it is none
~begin ; feed 5000000 ; show 5000000000 5000000 ; feed 5040000 ; deliver 5040000
dropIt 5040000
    I/ZMediaAnalyticV Drop:5040000(4960) TD:40 FARD:(0) FAD:10000(0) AL:0(10000) FL:0(0) 0/1$I:-0(1:0)I:-0(1:-40000)

story texts_growBeyondTheirBuffer: catches a line that is cut or loses a character where its buffer ends
define longName = codec x ; addCodec "n"*$1 ; updateBuffers 0 0 ; announce 1 ; updateInputFrame 1 format="n"*$1 ; updateOutputFrame 1
~begin ; debug 0x400
/Pre-Render/ longName 191 ; longName 192 ; longName 193 ; longName 600
    I/ZMediaAnalyticV Pre-Render n{191}:1(10000) TD:0 FARD:(10000) FAD:0(10000) AL:0(10000) FL:0(0) 0/1$D:-0(0)$I:-0(0:0)
    I/ZMediaAnalyticV Pre-Render n{192}:1(10000) TD:0 FARD:(10000) FAD:0(10000) AL:0(10000) FL:0(0) 0/1$D:-0(0)$I:-0(0:0)
    I/ZMediaAnalyticV Pre-Render n{193}:1(10000) TD:0 FARD:(10000) FAD:0(10000) AL:0(10000) FL:0(0) 0/1$D:-0(0)$I:-0(0:0)
    I/ZMediaAnalyticV Pre-Render n{600}:1(10000) TD:0 FARD:(10000) FAD:0(10000) AL:0(10000) FL:0(0) 0/1$D:-0(0)$I:-0(0:0)

story whenTheMessageIsLate_itsHistoryIsShown: catches the bound, an event outside the time between, and inputs or buffers in another order
define late = flush ; shownFirst ; feed 40000 ; dequeue 2 ; after 10 ; decode 40000 ; updateQueueBuffer 2 @-4 0 ; after 2 ; announce 80000 ; after 3 ; queue 80000 ; after 3 ; dequeue 2 ; after $1 ; announce 120000 ; queue 120000 ; updateOutputFrame 40000
~begin ; updateBuffers 1 4
~late 2
dropIt 40000
    I/ZMediaAnalyticV Drop:40000(9990) TD:40 FARD:0(20) FAD:10(10) AL:0(10030) FL:10(20) 0/3
~late 3
dropIt 40000
    I/ZMediaAnalyticV Drop:40000(10021) TD:40 FARD:1(21) FAD:10(11) AL:0(10061) FL:10(21) 0/3$D:-0(0)D:-6(3)Q:-3(12)
# The walk back from a buffer that came later ends at once.
~late 3 ; after 1 ; dequeue 2
dropIt 40000
    I/ZMediaAnalyticV Drop:40000(10053) TD:40 FARD:1(21) FAD:10(11) AL:1(10093) FL:10(21) 0/3$D:-0(0)D:-6(3)
# It ends at an input that came earlier, though one before it came later.
~flush ; shownFirst ; feed 40000 ; announce 80000 ; announce 120000 ; queue 120000 ; after 10 ; decode 40000 ; after 2 ; queue 80000 ; after 9 ; updateOutputFrame 40000
dropIt 40000
    I/ZMediaAnalyticV Drop:40000(10084) TD:40 FARD:1(21) FAD:10(11) AL:0(10124) FL:10(21) 0/3
# Nothing in between leaves no mark.
~flush ; shownFirst ; feed 40000 ; after 10 ; decode 40000 ; after 11 ; updateOutputFrame 40000
dropIt 40000
    I/ZMediaAnalyticV Drop:40000(10115) TD:40 FARD:1(21) FAD:10(11) AL:0(10155) FL:10(21) 0/1

story theDelayHistory_hasSixInputsAndSixBuffers: catches another length
~begin ; shownFirst ; feed 40000 ; decode 40000 ; times 8 { after 2 ; feed +1 ; dequeue 2 } ; updateOutputFrame 40000
dropIt 40000
    I/ZMediaAnalyticV Drop:40000(9986) TD:40 FARD:-4(16) FAD:0(16) AL:0(10026) FL:0(16) 0/9$D:-0(0)D:-2(0)D:-4(0)D:-6(0)D:-8(0)D:-10(0)Q:-0(10027)Q:-2(10025)Q:-4(10023)Q:-6(10021)Q:-8(10019)Q:-10(10017)

story pastTheLow32BitsOfTheClock_theHistoryReachesBack: catches a comparison of whole times where the low half is meant
~begin ; after 2147473648 ; flush ; shownFirst ; feed 40000 ; after 10 ; decode 40000 ; after 11 ; updateOutputFrame 40000
dropIt 40000
    I/ZMediaAnalyticV Drop:40000(2147483639) TD:40 FARD:1(21) FAD:10(11) AL:0(2147483679) FL:10(21) 0/1$D:-21(0)
~after 2147483648 ; flush ; shownFirst ; feed 40000 ; after 10 ; decode 40000 ; after 11 ; updateOutputFrame 40000
dropIt 40000
    I/ZMediaAnalyticV Drop:40000(4294967318) TD:40 FARD:1(21) FAD:10(11) AL:0(4294967358) FL:10(21) 0/1$D:-21(0)

story whenTheFrameIsLate_whatTheComponentHadIsShown: catches an input that went in later, and a list that stops where it should skip
~begin ; shownFirst ; feed 40000 ; after 5 ; dequeue 2 ; after 3 ; announce 80000 ; queue 80000 ; after 2 ; handOver 80000
~after 10 ; feed 120000 ; announce 130000 ; after 30 ; dequeue 2 ; decode 40000
# Too late to have mattered.
~after 1 ; feed 160000 ; dequeue 2 ; after 4 ; updateOutputFrame 40000
dropIt 40000
    I/ZMediaAnalyticV Drop:40000(10025) TD:40 FARD:35(55) FAD:50(5) AL:0(10065) FL:50(55) 0/5$I:-10060(0:90)I:-30(3:80)I:-40(2:40)I:-50(1:0)I:-59(1:-40000)$F:-0(2:10061)F:-45(2:10016)

story threeDistances_callForTheDecodeHistory: catches the bound of each, and one that is taken for another
define distances = flush ; announce 0 ; queue 0 ; after 1 ; handOver 0 ; after 9 ; deliver 0 ; after $2 ; show $1 0 ; feed 40000 ; after $3 ; decode 40000 ; after $4 ; updateOutputFrame 40000 ; dropIt 40000
~begin
# Output after the render call.
/Drop:4/ distances @+100 0 25 5
    I/ZMediaAnalyticV Drop:40000(10000) TD:40 FARD:-70(30) FAD:25(5) AL:0(10040) FL:25(30) 0/1
/Drop:4/ distances @+100 0 26 5
    I/ZMediaAnalyticV Drop:40000(10041) TD:40 FARD:-69(31) FAD:26(5) AL:0(10081) FL:26(31) 0/1$I:-26(1:0)I:-35(1:-40000)
# Decode interval less the delay.
/Drop:4/ distances @+100 20 12 2
    I/ZMediaAnalyticV Drop:40000(10085) TD:40 FARD:-86(14) FAD:32(2) AL:0(10125) FL:12(14) 0/1
/Drop:4/ distances @+100 20 13 2
    I/ZMediaAnalyticV Drop:40000(10130) TD:40 FARD:-85(15) FAD:33(2) AL:0(10170) FL:13(15) 0/1$I:-13(1:0)I:-42(1:-40000)
# Output after the render.
/Drop:4/ distances @-20 0 8 2
    I/ZMediaAnalyticV Drop:40000(10150) TD:40 FARD:30(10) FAD:8(2) AL:0(10190) FL:8(10) 0/1
/Drop:4/ distances @-20 0 9 2
    I/ZMediaAnalyticV Drop:40000(10171) TD:40 FARD:31(11) FAD:9(2) AL:0(10211) FL:9(11) 0/1$I:-9(1:0)I:-18(1:-40000)

story theDecodeHistory_endsAfter16InputsOrOneThatPrecedes: catches another length, and the last shown frame left out or shown twice
~begin ; shownFirst ; feed 40000 ; times 19 { feed +1000 } ; dequeue 0 ; dequeue 1 ; dequeue 2 ; dequeue 3 ; dequeue 4 ; dequeue 5 ; dequeue 6
~after 40 ; deliver 40000
dropIt 40000
    I/ZMediaAnalyticV Drop:40000(10010) TD:40 FARD:20(40) FAD:40(0) AL:0(10050) FL:40(40) 0/20$I:-40(20:19)I:-40(19:18)I:-40(18:17)I:-40(17:16)I:-40(16:15)I:-40(15:14)I:-40(14:13)I:-40(13:12)I:-40(12:11)I:-40(11:10)I:-40(10:9)I:-40(9:8)I:-40(8:7)I:-40(7:6)I:-40(6:5)I:-40(5:4)I:-49(1:-40000)$F:-40(6:10011)F:-40(5:10011)F:-40(4:10011)F:-40(3:10011)F:-40(2:10011)
~flush ; shownFirst ; feed 60000 ; feed 70000 ; feed 80000 ; feed 120000 ; after 40 ; deliver 80000
dropIt 80000
    I/ZMediaAnalyticV Drop:80000(10020) TD:80 FARD:20(40) FAD:40(0) AL:0(10100) FL:40(40) 2/4$I:-40(4:40)I:-40(3:0)I:-40(2:-10)I:-49(1:-80000)$F:-90(6:10011)F:-90(5:10011)F:-90(4:10011)F:-90(3:10011)F:-90(2:10011)

story withoutInputs_theLastShownIsLeftOut: catches a frame of time 0 or none that is taken for one that was shown
~begin ; shownFirst ; feed 40000 ; after 40 ; updateOutputFrame 40000
dropIt 40000
    I/ZMediaAnalyticV Drop:40000(10010) TD:40 FARD:20(40) FAD:-10010(10050) AL:0(10050) FL:-10010(40) 0/1$D:-40(0)
    W/ZMediaAnalyticV mFramesOwnedByUs is 0 unexpectedly
~flush ; feed 0 ; show 0 0 ; feed 40000 ; after 40 ; deliver 40000
dropIt 40000
    I/ZMediaAnalyticV Pre-Render Drop:40000(10050) TD:40 FARD:(40) FAD:10090(0) AL:0(10090) FL:40(40) 0/1$I:-40(1:0)

story theHistoryOfBuffers_reachesTenBackOfTheFrames: catches another reach, and a buffer taken before the newest is read
define reach = flush ; shownFirst ; feed 40000 ; dequeue 99 ; after 40 ; decode 40000 ; after 1 ; times $1 { dequeue 2 } ; updateOutputFrame 40000 ; dropIt 40000
~begin
/Drop/ reach 10
    I/ZMediaAnalyticV Drop:40000(10011) TD:40 FARD:21(41) FAD:40(1) AL:0(10051) FL:40(41) 0/1$I:-40(1:0)I:-49(1:-40000)$F:-40(99:10011)
/Drop/ reach 11
    I/ZMediaAnalyticV Drop:40000(10062) TD:40 FARD:21(41) FAD:40(1) AL:0(10102) FL:40(41) 0/1$I:-40(1:0)I:-49(1:-40000)

story limits_areSetByTheirProperties: catches a property that sets another limit, or none
define one = codec one ; addCodec ; updateBuffers 0 0 ; feed 1000 ; decode 1000 ; after 11 ; feed 2000 ; updateOutputFrame 1000 ; updateQueueBuffer 1 @-11 @+289 ; updateQueueBuffer 2 @-11 @-7 ; updateDequeueBuffer 1 @-90 ; removeCodec ; after -11
~begin ; debug 0x400
/$/ one
    I/ZMediaAnalyticV Pre-Render one:1000(10010) TD:1 FARD:(10011) FAD:10000(11) AL:0(10011) FL:0(11) 0/2$D:-0(0)$I:-0(1:0)
/ue/ one
    I/ZMediaAnalyticV queueBuffer cost:11 ts:40000
    I/ZMediaAnalyticV Warning queueBuffer early too large:289 ms ts:40000
    W/ZMediaAnalyticV Warning: queue too many buffers 1
    I/ZMediaAnalyticV queueBuffer cost:11 ts:40000
    I/ZMediaAnalyticV Warning queueBuffer early too small:-7 ms ts:40000
    I/ZMediaAnalyticV too long dequeue actual:90(7) theory:83 renderTime:10004000000 index:0 0x1
~property mediaanalytic.maxmsgdelaytime 11
/$D/ one
~property mediaanalytic.maxmsgdelaytime "" ; property mediaanalytic.maxdecodetime 1000000
/$I/ one
~property mediaanalytic.maxdecodetime "" ; property mediaanalytic.vsyncperiod -7
/small/ one
~property mediaanalytic.vsyncperiod "" ; property mediaanalytic.maxqueuetime 0x64
/queueBuffer cost/ one
~property mediaanalytic.maxqueuetime "" ; property mediaanalytic.maxearlytime 300
/large/ one
~property mediaanalytic.maxearlytime "" ; property mediaanalytic.maxdequeuetime 90
/too long/ one
