# Frames that are shown, and the buffers between codec and display.
define frameShown = feed $1 ; deliver . ; show $2 .

story theFirstFrame_hasNoSteps: catches a statistic that starts from another number
~begin ; feed 40000 ; feed 10000 ; after 5 ; deliver 40000 ; deliver 10000 ; after 10
# Position 40 - 20 - 40, at 10015.
show @+20 40000
    I/ZMediaAnalyticV AVSYNC_V:-20(10035)(40) b:40 rts:10035(20) pid:<pid> First min:-1(-1 )(20) max:0(0)(20) avg:0(0)(20) cnt:1(0)

story aPeriodEndsWithTheFirstRenderAfter5000Ms: catches the bound, and a minimum, maximum or sum of another period
~begin ; frameShown 40000 @+20 ; after 5000
# Shown 4990 ms later, then 10 and 11; the steps add up to 100 ms, the leads to 60.
frameShown 80000 @+10 ; frameShown 100000 @+20 ; after 1 ; frameShown 140000 @+30
    I/ZMediaAnalyticV AVSYNC_V:70(14931)(140) b:40 rts:15031(30) pid:<pid> min:10(20 )(10) max:4990(40)(30) avg:2500500(50000)(20) cnt:3(5001)
# Backwards by 1.5 ms, and a lead that never was positive: the maximum stays where it began.
after 6000 ; frameShown 138500 @-7
    I/ZMediaAnalyticV AVSYNC_V:105(20896)(138) b:40 rts:20994(-7) pid:<pid> min:5963(-1 )(-7) max:5963(0)(0) avg:0(0)(-7) cnt:1(6000)
# After a flush the first frame is measured from zero.
flush ; after 10000 ; frameShown 7000000 @-5
    I/ZMediaAnalyticV AVSYNC_V:5(30996)(7000) b:7000 rts:30996(-5) pid:<pid> min:30996(7000 )(-5) max:30996(7000)(0) avg:0(0)(-5) cnt:1(0)
# Also one that was shown when the clock began.
after -1 ; leapTo 0 ; flush ; frameShown 0 @+20 ; frameShown 40000 @+20
    I/ZMediaAnalyticV AVSYNC_V:-31020(31020)(0) b:0 rts:31020(31020) pid:<pid> min:31020(0 )(31020) max:31020(0)(31020) avg:0(0)(31020) cnt:1(0)

story whenTheClientRendersByMediaTime_noLeadIsShown: catches a render time that is taken for one of the clock
~begin
feed 40000 ; deliver 40000 ; show 40000000 40000
    I/ZMediaAnalyticV AVSYNC_V:0(10000)(40) b:40 rts:40(0) pid:<pid> First min:-1(-1 )(-9960) max:0(0)(0) avg:0(0)(-9960) cnt:1(0)

# A lead of 2^32 ms is no minimum.
~omx
frameShown 0 @+4294967296
    I/ZMediaAnalyticV AVSYNC_V:-4294967296(4294977296)(0) b:0 rts:4294977296(4294967296) pid:<pid> First min:-1(-1 )(-1) max:0(0)(4294967296) avg:0(0)(4294967296) cnt:1(0)

story aFrameThatTheClientNeverReceived_hasBaseZero: catches a base that is taken from the render
~begin
feed 40000 ; show @+16 40000
    I/ZMediaAnalyticV AVSYNC_V:24(9976)(40) b:0 rts:10016(16) pid:<pid> First min:-1(-1 )(16) max:0(0)(16) avg:0(0)(16) cnt:1(0)

story theRenderLog_countsFromTheFrameBefore: catches a frame's place among those that wait
~begin ; debug 4 ; omx ; feed 40000 ; feed 80000
show @+20 80000 ; after 33 ; show @-3 40000
    I/ZMediaAnalyticV omx Render R-S:20 R:10020(10020) pts:80000 1/2
    I/ZMediaAnalyticV AVSYNC_V:60(9940)(80) b:0 rts:10020(20) pid:<pid> First min:-1(-1 )(20) max:0(0)(20) avg:0(0)(20) cnt:1(0)
    I/ZMediaAnalyticV omx Render R-S:-3 R:10030(10) pts:40000 0/1

story whenTheLeadIsBelowAVsync_theTimelineShowsTheFrame: catches the bound
~begin ; debug 0x400 ; omx
/Early/ frameShown 1000 @-40 ; frameShown 2000 @+15 ; frameShown 3000 @+16
    I/ZMediaAnalyticV Pre-Render Small_Early:-40:1000(9999) TD:1 FARD:(10000) FAD:10000(0) AL:0(10000) FL:0(0) 0/1$I:-0(1:0)
    I/ZMediaAnalyticV Small_Early:15:2000(9998) TD:1 FARD:40(0) FAD:0(0) AL:0(10000) FL:0(0) 0/1$I:-0(1:0)I:-0(1:-1000)

story overflow_isFatal: catches a time that wraps, and one that ends the process a step too early
~begin
fork frameShown max @
    F/ZMediaAnalyticV overflow: arithmetic overflow: 9223372036854775807 * 1000
    died
fork { frameShown -1000 @ ; frameShown max @ }
    I/ZMediaAnalyticV AVSYNC_V:0(10000)(-1) b:-1 rts:10000(0) pid:<pid> First min:-1(-1 )(0) max:0(0)(0) avg:0(0)(0) cnt:1(0)
    F/ZMediaAnalyticV overflow: arithmetic overflow: 9223372036854775807 - -1000
    died
fork { frameShown -1000 @ ; feed 9223372036854775000 ; dropIt 9223372036854775000 }
    I/ZMediaAnalyticV AVSYNC_V:0(10000)(-1) b:-1 rts:10000(0) pid:<pid> First min:-1(-1 )(0) max:0(0)(0) avg:0(0)(0) cnt:1(0)
    F/ZMediaAnalyticV overflow: arithmetic overflow: 9223372036854775000 - -1000
    died
~debug 0 ; omx ; frameShown -9000000000000000 @ ; frameShown 0 @
fork frameShown max @
    F/ZMediaAnalyticV overflow: arithmetic overflow: 9000000000000000 + 9223372036854775807
    died
~feed min
dropIt min
    I/ZMediaAnalyticV Drop:-9223372036854775808(9223372036864775) TD:-9223372036854775 FARD:-10001(-10001) FAD:-10000(-1) AL:10001(10000) FL:-10000(-10001) 0/1
    W/ZMediaAnalyticV mFramesOwnedByUs is 0 unexpectedly
~feed 9223372036854775000
dropIt 9223372036854775000
    I/ZMediaAnalyticV Drop:9223372036854775000(-9223372036844775) TD:9223372036854775 FARD:-10001(-10001) FAD:-10000(-1) AL:10001(10000) FL:-10000(-10001) 0/1
    W/ZMediaAnalyticV mFramesOwnedByUs is 0 unexpectedly

story aDequeue_isSetAgainstTheShowingOfTheNextBuffer: catches a buffer set against its own or another's showing
~begin ; debug 8 ; audioCodec
# The first ones were never queued.
updateDequeueBuffer 1 @-5
    I/ZMediaAnalyticV dequeue actual:5(5) theory:0 renderTime:-1 index:-1 ownedByCom:3 ownByNat:0 0x1
~updateQueueBuffer 1 @ @+10 ; updateQueueBuffer 2 @ @+26 ; updateQueueBuffer 3 @ @+43
updateDequeueBuffer 2 @-5
    I/ZMediaAnalyticV dequeue actual:5(-43) theory:48 renderTime:10043000000 index:1 ownedByCom:3 ownByNat:2 0x2
updateDequeueBuffer 3 @-5
    W/ZMediaAnalyticV Not found. If it is in the first stage, it is normal
    I/ZMediaAnalyticV dequeue actual:5(5) theory:0 renderTime:-1 index:1 ownedByCom:3 ownByNat:1 0x3
updateDequeueBuffer 1 @-5 ; updateDequeueBuffer 1 @-5 ; updateDequeueBuffer 0 @
    W/ZMediaAnalyticV Not found. If it is in the first stage, it is normal
    I/ZMediaAnalyticV dequeue actual:5(5) theory:0 renderTime:-1 index:0 ownedByCom:3 ownByNat:0 0x1
    I/ZMediaAnalyticV dequeue actual:5(5) theory:0 renderTime:-1 index:-1 ownedByCom:3 ownByNat:0 0x1
    W/ZMediaAnalyticV dequeue buffer is NULL

story aDequeueMayTakeAVsyncMoreThanNeeded_and80MsInAll: catches the bounds, and a showing in the past that counts
define took = audioCodec ; updateQueueBuffer 1 @ 0 ; updateQueueBuffer 2 @ $2 ; updateDequeueBuffer 1 $1
~begin ; debug 0x400
/dequeue/ took @-30 @-5 ; took @-41 @-16 ; took @-42 @-17 ; took @-80 @-5 ; took @-81 @-6 ; took @-90 @-10 ; took @-100 @-20
    I/ZMediaAnalyticV dequeue actual:42(17) theory:25 renderTime:9983000000 index:0 0x1
    I/ZMediaAnalyticV too long dequeue actual:81(6) theory:75 renderTime:9994000000 index:0 0x1
    I/ZMediaAnalyticV too long dequeue actual:90(10) theory:80 renderTime:9990000000 index:0 0x1
    I/ZMediaAnalyticV dequeue actual:100(20) theory:80 renderTime:9980000000 index:0 0x1
# A showing in the past counts as now.
/dequeue/ took @-16 @-116 ; took @-17 @-117
    I/ZMediaAnalyticV dequeue actual:17(117) theory:-100 renderTime:9883000000 index:0 0x1

story aQueuedBuffer_isJudgedByItsCostAndByHowEarlyItComes: catches the bounds, and the order of the lines
define cost = audioCodec ; updateQueueBuffer 1 $1 $2
~begin ; debug 0x400
cost @-10 @+16 ; cost @-11 @+16
    I/ZMediaAnalyticV queueBuffer cost:11 ts:40000
cost @ @+15 ; cost @ @-3 ; cost @ @+200 ; cost @ @+201 ; cost @-1 @+200
    I/ZMediaAnalyticV Warning queueBuffer early too small:15 ms ts:40000
    I/ZMediaAnalyticV Warning queueBuffer early too small:-3 ms ts:40000
    I/ZMediaAnalyticV Warning queueBuffer early too large:201 ms ts:40000
    I/ZMediaAnalyticV Warning queueBuffer early too large:200 ms ts:40000
cost @-11 @+190 ; cost @-300 @+10
    I/ZMediaAnalyticV queueBuffer cost:11 ts:40000
    I/ZMediaAnalyticV Warning queueBuffer early too large:190 ms ts:40000
    I/ZMediaAnalyticV queueBuffer cost:300 ts:40000
    I/ZMediaAnalyticV Warning queueBuffer early too small:10 ms ts:40000
    I/ZMediaAnalyticV Warning queueBuffer early too large:10 ms ts:40000
# No time asked for, and one by media time.
audioCodec ; updateBuffers 1 3 notVideo ; updateQueueBuffer 1 @ 0 ; updateQueueBuffer 1 @ 40000000 40000
fork updateQueueBuffer 1 @ 40000000 max
    F/ZMediaAnalyticV overflow: arithmetic overflow: 9223372036854775807 * 1000
    died
# The limit is read at each allocation.
property mediaanalytic.maxearlytime 500
updateQueueBuffer 1 @ @+300 ; updateBuffers 0 1 notVideo ; updateDequeueBuffer 1 @ ; updateQueueBuffer 1 @ @+300
    I/ZMediaAnalyticV Warning queueBuffer early too large:300 ms ts:40000

story buffersQueued_areCountedUntilAnAllocationOfOutput: catches a count that a flush or another port clears
define queueOne = updateQueueBuffer 1 @ 7000000
define reallocate = updateBuffers $1 $2 2 ; flush ; queueOne
~begin ; debug 0x20 ; omx ; updateBuffers 1 1
# More than the output has are warned of.
queueOne ; updateQueueBuffer 2 @ 7000000 ; updateQueueBuffer 3 @ 7000000
    I/ZMediaAnalyticV queueBuffer rendertime:7000000, mediatime:40000 size:1
    I/ZMediaAnalyticV queueBuffer rendertime:7000000, mediatime:40000 size:2
    W/ZMediaAnalyticV Warning: queue too many buffers 2
    I/ZMediaAnalyticV queueBuffer rendertime:7000000, mediatime:40000 size:3
/size/ reallocate 1 9 ; reallocate 0 4 ; reallocate 1 9 ; reallocate 1 0 ; reallocate 1 9 ; reallocate 2 9
    I/ZMediaAnalyticV queueBuffer rendertime:7000000, mediatime:40000 size:1
    I/ZMediaAnalyticV queueBuffer rendertime:7000000, mediatime:40000 size:2
    I/ZMediaAnalyticV queueBuffer rendertime:7000000, mediatime:40000 size:1 (2 times)
    I/ZMediaAnalyticV queueBuffer rendertime:7000000, mediatime:40000 size:2
    I/ZMediaAnalyticV queueBuffer rendertime:7000000, mediatime:40000 size:1

story buffersTaken_areThoseBeforeTheNewestIsRead: catches a buffer that comes back and is still counted
~begin ; debug 0x28 ; omx ; updateBuffers 1 2 1
updateQueueBuffer 1 @ @+20 ; updateQueueBuffer 2 @ @+40 ; updateDequeueBuffer 1 @-1 ; updateQueueBuffer 3 @ @+60
    I/ZMediaAnalyticV queueBuffer rendertime:10020000000, mediatime:40000 size:1
    I/ZMediaAnalyticV queueBuffer rendertime:10040000000, mediatime:40000 size:2
    I/ZMediaAnalyticV dequeue actual:1(-40) theory:41 renderTime:10040000000 index:0 ownedByCom:3 ownByNat:1 0x1
    I/ZMediaAnalyticV queueBuffer rendertime:10060000000, mediatime:40000 size:2
updateDequeueBuffer 3 @-1 owned=7 ; updateDequeueBuffer 2 @-1 ; updateQueueBuffer 2 @ @+80
    W/ZMediaAnalyticV Not found. If it is in the first stage, it is normal
    I/ZMediaAnalyticV dequeue actual:1(1) theory:0 renderTime:-1 index:1 ownedByCom:7 ownByNat:1 0x3
    W/ZMediaAnalyticV Not found. If it is in the first stage, it is normal
    I/ZMediaAnalyticV dequeue actual:1(1) theory:0 renderTime:-1 index:0 ownedByCom:3 ownByNat:0 0x2
    I/ZMediaAnalyticV queueBuffer rendertime:10080000000, mediatime:40000 size:1
