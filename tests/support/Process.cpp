// SPDX-License-Identifier: Apache-2.0
#include "tests/support/Process.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <sstream>

namespace android::test {

namespace {

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

Process::Process(const std::vector<std::string>& command) {
    int out[2];
    int err[2];
    if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) return;
    std::vector<char*> arguments;
    for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);

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
    if (posix_spawnp(&mPid, arguments[0], &actions, &attributes, arguments.data(), environ) != 0) {
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
    if (mPid <= 0) return;
    kill(mPid, number);
    // It stops when it is scheduled next, and answers until then.
    siginfo_t stopped;
    if (number == SIGSTOP) waitid(P_PID, mPid, &stopped, WSTOPPED | WEXITED | WNOWAIT);
}

bool Process::collect(Clock::time_point end) {
    pollfd streams[] = {{mOut, POLLIN, 0}, {mErr, POLLIN, 0}};
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    if ((mOut < 0 && mErr < 0) || left.count() <= 0) return false;
    if (poll(streams, 2, static_cast<int>(left.count())) > 0) {
        if (streams[0].revents) readSome(&mOut, &mResult.out);
        if (streams[1].revents) readSome(&mErr, &mResult.err);
    }
    return true;
}

bool Process::waitForOutput(const std::string& text) {
    const Clock::time_point end = Clock::now() + std::chrono::seconds(20);
    const auto isIn = [&text](const std::string& all) { return all.find(text) != all.npos; };
    while (!isIn(mResult.out) && !isIn(mResult.err)) {
        if (!collect(end)) return false;
    }
    return true;
}

ProcessResult Process::wait(int timeoutMs) {
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(timeoutMs);
    while (collect(end)) {
    }
    if (mPid > 0) {
        if (mOut >= 0 || mErr >= 0) signal(SIGKILL);
        int status = 0;
        waitpid(mPid, &status, 0);
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
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

std::string readFile(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace android::test
