// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

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
    /**
     * Starts a program, looked up in PATH unless the name has a slash.
     *
     * @param environment NAME=VALUE entries besides those of this process
     */
    explicit Process(const std::vector<std::string>& command,
                     const std::vector<std::string>& environment = {});
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t pid() const { return mPid; }
    void signal(int number);

    /** Collects output until `text` stands in it; false at the end of output or after the time. */
    bool waitForOutput(const std::string& text, int timeoutMs = 20000);
    /** Waits for the end; a program that takes longer is killed. */
    ProcessResult wait(int timeoutMs = 60000);

  private:
    /** Reads what is there, waiting for it up to the time; false when both streams have ended. */
    bool collect(int timeoutMs);

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
