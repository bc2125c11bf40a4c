// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace android::test {

/** How a program ended and what it printed. */
struct ProcessResult {
    /** Its exit code; 128 + the signal that ended it; -1 if it could not be started. */
    int exitCode = -1;
    std::string out;
    std::string err;
};

/**
 * A running program whose standard output and error are collected; standard input is empty. It is
 * killed when the object goes before its end.
 */
class Process {
  public:
    /** Starts a program, looked up in PATH unless the name has a slash. */
    explicit Process(const std::vector<std::string>& command);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t pid() const { return mPid; }
    void signal(int number);

    /** Collects output until `text` stands in it; false at its end or after 20 seconds. */
    bool waitForOutput(const std::string& text);
    /** Waits for the end; a program that takes longer is killed. */
    ProcessResult wait(int timeoutMs = 60000);

  private:
    using Clock = std::chrono::steady_clock;
    /** Reads what is there or comes; false when both streams have ended, or the time has come. */
    bool collect(Clock::time_point end);

    pid_t mPid = -1;
    int mOut = -1;
    int mErr = -1;
    ProcessResult mResult;
};

/** Runs a program to its end. */
ProcessResult runProcess(const std::vector<std::string>& command, int timeoutMs = 60000);

/** The lines of a text without their ends. */
std::vector<std::string> splitLines(const std::string& text);

/** The content of a file; empty if it cannot be read. */
std::string readFile(const std::string& path);

}  // namespace android::test
