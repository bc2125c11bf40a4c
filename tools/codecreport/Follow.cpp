// SPDX-License-Identifier: Apache-2.0
#include "Follow.h"

#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "ExitCode.h"
#include "reading/GrowingLog.h"

namespace android::codecreport {

namespace {

// Files tell nobody that they have grown.
constexpr int kPollMs = 200;
// Of its time, at most this part goes into reports that nobody may look at.
constexpr int64_t kShare = 5;

int64_t nowMs() {
    using std::chrono::milliseconds;
    return std::chrono::duration_cast<milliseconds>(
                   std::chrono::steady_clock::now().time_since_epoch())
            .count();
}

/** Interrupts come as something to read, so that none comes between. */
int openInterrupts() {
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    sigprocmask(SIG_BLOCK, &ends, nullptr);
    return signalfd(-1, &ends, SFD_CLOEXEC);
}

/** @return false at an interrupt */
bool waitForMore(int interrupts, const std::vector<GrowingLog>& logs) {
    std::vector<pollfd> waits = {{interrupts, POLLIN, 0}};
    for (const GrowingLog& log : logs) {
        if (log.pipeFd() >= 0) waits.push_back({log.pipeFd(), POLLIN, 0});
    }
    poll(waits.data(), waits.size(), kPollMs);
    return waits[0].revents == 0;
}

}  // namespace

int follow(const std::vector<std::string>& files, int64_t intervalMs, const MakeReport& report) {
    std::vector<GrowingLog> logs(files.size());
    Copies copies;
    for (size_t i = 0; i < files.size(); ++i) {
        if (!logs[i].open(files[i])) {
            fprintf(stderr, "codecreport: %s\n", logs[i].error().c_str());
            return BAD_INPUT;
        }
        copies[files[i]] = logs[i].copyPath();
    }
    const int interrupts = openInterrupts();
    bool hasGrown = false;
    int64_t nextMs = nowMs() + intervalMs;
    for (bool goesOn = true; goesOn;) {
        goesOn = waitForMore(interrupts, logs);
        for (GrowingLog& log : logs) {
            if (!log.copy()) {
                fprintf(stderr, "codecreport: %s\n", log.error().c_str());
                goesOn = false;
            }
            hasGrown |= log.takeGrown();
        }
        if (std::all_of(logs.begin(), logs.end(), [](const auto& log) { return log.hasEnded(); })) {
            break;
        }
        const int64_t startMs = nowMs();
        if (!goesOn || !hasGrown || startMs < nextMs) continue;
        report(copies, false);
        hasGrown = false;
        nextMs = nowMs() + std::max(intervalMs, kShare * (nowMs() - startMs));
    }
    close(interrupts);
    return report(copies, true);
}

}  // namespace android::codecreport
