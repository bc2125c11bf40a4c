// SPDX-License-Identifier: Apache-2.0
// Writes the log of made-up playbacks, one after the other, to standard output; the first stalls:
// codecreport_make_log [FRAMES [STALL_AT [SESSIONS]]]
#include <stdio.h>
#include <stdlib.h>

#include "SyntheticLog.h"

int main(int argc, char** argv) {
    android::test::Playback playback;
    if (argc > 1) playback.frames = atoi(argv[1]);
    playback.stalls = {{argc > 2 ? atoi(argv[2]) : 150, 400}};
    playback.slowDecodes = {{100, 120}};
    playback.drops = {200, 201, 202, 220};
    auto messages = messagesOf(playback);
    android::test::Playback other = playback;
    other.tag = "SW.c2.video.vp9";
    other.format = "vp9";
    other.stalls.clear();
    for (int i = 1; i < (argc > 3 ? atoi(argv[3]) : 2); ++i) {
        other.pid = 5000 + i;
        other.tid = 20000 + i;
        other.startMs += playback.frames * playback.intervalMs + 1000;
        for (auto& message : messagesOf(other)) messages.push_back(message);
    }
    const std::string log = writeLog(messages, android::codecreport::LogFormat::THREADTIME);
    return fwrite(log.data(), 1, log.size(), stdout) == log.size() ? 0 : 1;
}
