// SPDX-License-Identifier: Apache-2.0
// Writes the log of made-up playbacks, one after the other, to standard output; the last stalls:
// codecreport_make_log [FRAMES [STALL_AT [SESSIONS]]]
#include <stdio.h>
#include <stdlib.h>

#include "SyntheticLog.h"

int main(int argc, char** argv) {
    android::test::Playback playback;
    if (argc > 1) playback.frames = atoi(argv[1]);
    const int stallAt = argc > 2 ? atoi(argv[2]) : 150;
    const int sessions = argc > 3 ? atoi(argv[3]) : 2;
    playback.slowDecodes = {{100, 120}};
    playback.drops = {200, 201, 202, 220};
    std::vector<android::test::Playback> playbacks;
    for (int i = 1; i <= sessions; ++i) {
        playback.pid = 5000 + i;
        playback.tid = 20000 + i;
        if (i == sessions) playback.stalls = {{stallAt, 400}};
        playbacks.push_back(playback);
        playback.startMs += playback.frames * android::test::kFrameMs + 1000;
    }
    const std::string log = logOf(playbacks);
    return fwrite(log.data(), 1, log.size(), stdout) == log.size() ? 0 : 1;
}
