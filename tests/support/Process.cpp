// SPDX-License-Identifier: Apache-2.0
#include "tests/support/Process.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <iterator>
#include <sstream>

namespace android::test {

namespace {

int64_t nowMs() {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * INT64_C(1000) + now.tv_nsec / 1000000;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

/** What runs a program of another architecture, word by word; empty where that is not needed. */
std::vector<std::string> emulator() {
    const char* command = getenv("MCL_EMULATOR");
    std::istringstream words(command == nullptr ? "" : command);
    return {std::istream_iterator<std::string>(words), {}};
}

/** Appends what can be read; closes the descriptor at its end. */
void readSome(int* fd, std::string* text) {
    char buffer[65536];
    const ssize_t got = read(*fd, buffer, sizeof(buffer));
    if (got > 0) {
        text->append(buffer, static_cast<size_t>(got));
    } else if (got == 0 || errno != EINTR) {
        close(*fd);
        *fd = -1;
    }
}

}  // namespace

Process::Process(const std::vector<std::string>& command,
                 const std::vector<std::string>& environment) {
    int out[2];
    int err[2];
    if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) return;
    std::vector<std::string> arguments = emulator();
    arguments.insert(arguments.end(), command.begin(), command.end());
    std::vector<std::string> variables = environment;
    for (char** entry = environ; *entry; ++entry) variables.emplace_back(*entry);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, err[1], STDERR_FILENO);
    // As a shell starts it, whatever this process ignores or blocks: a background job ignores
    // SIGINT.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    sigset_t signals;
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    if (posix_spawnp(&mPid, arguments[0].c_str(), &actions, &attributes, pointers(arguments).data(),
                     pointers(variables).data()) != 0) {
        mPid = -1;
    }
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    close(err[1]);
    mOut = out[0];
    mErr = err[0];
}

Process::~Process() {
    if (mPid > 0) {
        signal(SIGKILL);
        wait();
    }
    if (mOut >= 0) close(mOut);
    if (mErr >= 0) close(mErr);
}

void Process::signal(int number) {
    if (mPid > 0) kill(mPid, number);
}

bool Process::collect(int timeoutMs) {
    pollfd streams[] = {{mOut, POLLIN, 0}, {mErr, POLLIN, 0}};
    if (mOut < 0 && mErr < 0) return false;
    if (poll(streams, 2, timeoutMs) > 0) {
        if (streams[0].revents) readSome(&mOut, &mResult.out);
        if (streams[1].revents) readSome(&mErr, &mResult.err);
    }
    return true;
}

bool Process::waitForOutput(const std::string& text, int timeoutMs) {
    const int64_t endMs = nowMs() + timeoutMs;
    for (;;) {
        if (mResult.out.find(text) != std::string::npos ||
            mResult.err.find(text) != std::string::npos) {
            return true;
        }
        const int64_t leftMs = endMs - nowMs();
        if (leftMs <= 0 || !collect(static_cast<int>(leftMs))) return false;
    }
}

ProcessResult Process::wait(int timeoutMs) {
    const int64_t endMs = nowMs() + timeoutMs;
    int64_t leftMs;
    while ((leftMs = endMs - nowMs()) > 0 && collect(static_cast<int>(leftMs))) {
    }
    if (mPid > 0) {
        if (leftMs <= 0) signal(SIGKILL);
        int status = 0;
        while (waitpid(mPid, &status, 0) < 0 && errno == EINTR) {
        }
        mResult.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        mPid = -1;
    }
    return mResult;
}

ProcessResult runProcess(const std::vector<std::string>& command, int timeoutMs) {
    return Process(command).wait(timeoutMs);
}

std::vector<std::string> splitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    std::string line;
    while (std::getline(stream, line)) lines.push_back(line);
    return lines;
}

std::string readFile(const std::string& path) {
    std::string text;
    FILE* file = fopen(path.c_str(), "rb");
    if (!file) return text;
    char buffer[65536];
    size_t got;
    while ((got = fread(buffer, 1, sizeof(buffer), file)) > 0) text.append(buffer, got);
    fclose(file);
    return text;
}

}  // namespace android::test
