// SPDX-License-Identifier: Apache-2.0
// Writes the log of a made-up playback to standard output: codecreport_make_log [FRAMES [STALL_AT]]
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
    android::test::Playback second = playback;
    second.pid = 5000;
    second.tid = 5010;
    second.tag = "SW.c2.video.vp9";
    second.format = "vp9";
    second.stalls.clear();
    for (auto& message : messagesOf(second)) messages.push_back(message);
    const std::string log = writeLog(messages, android::codecreport::LogFormat::THREADTIME);
    return fwrite(log.data(), 1, log.size(), stdout) == log.size() ? 0 : 1;
}
