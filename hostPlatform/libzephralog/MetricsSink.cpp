// SPDX-License-Identifier: Apache-2.0
#include "MetricsSink.h"

#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <mutex>
#include <nlohmann/json.hpp>

namespace android::hostplatform {

namespace {

struct Sink {
    std::mutex listenerLock;
    MetricsListener listener;

    std::mutex fileLock;
    int fd = -1;
    /** A line was cut off (the disk is full, say): the next one must not continue it. */
    bool isLineOpen = false;
};

// Never destroyed: codecs may still report while the process exits.
Sink& sink() {
    static Sink& instance = *new Sink;
    return instance;
}

/** Blocks SIGPIPE for this thread and swallows the one that a write to a closed pipe raises. */
class SigpipeGuard {
  public:
    SigpipeGuard() {
        sigemptyset(&mPipe);
        sigaddset(&mPipe, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        mWasPending = sigismember(&pending, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &mPipe, &mCallers);
    }

    ~SigpipeGuard() {
        const timespec noWait = {};
        while (!mWasPending && sigtimedwait(&mPipe, nullptr, &noWait) == -1 && errno == EINTR) {
        }
        pthread_sigmask(SIG_SETMASK, &mCallers, nullptr);
    }

    SigpipeGuard(const SigpipeGuard&) = delete;
    SigpipeGuard& operator=(const SigpipeGuard&) = delete;

  private:
    sigset_t mPipe;
    sigset_t mCallers;
    bool mWasPending;
};

void writeLine(std::string line) {
    if (sink().isLineOpen) line.insert(0, 1, '\n');
    line.push_back('\n');
    SigpipeGuard guard;
    ssize_t written = -1;
    do {
        written = write(sink().fd, line.data(), line.size());
    } while (written == -1 && errno == EINTR);
    if (written > 0) sink().isLineOpen = static_cast<size_t>(written) < line.size();
}

/** Takes a descriptor over; -1 leaves the sink without a file. */
void setFile(int fd) {
    std::lock_guard<std::mutex> guard(sink().fileLock);
    if (sink().fd != -1) close(sink().fd);
    sink().fd = fd;
    sink().isLineOpen = false;
}

}  // namespace

void setMetricsListener(MetricsListener listener) {
    std::lock_guard<std::mutex> guard(sink().listenerLock);
    sink().listener = std::move(listener);
}

std::string toJson(const MetricsRecord& record) {
    nlohmann::ordered_json data = nlohmann::ordered_json::object();
    for (const auto& [key, value] : record.data) data[key] = value;
    nlohmann::ordered_json json = {
            {"log", record.log},       {"source", record.source},
            {"schema", record.schema}, {"group", record.group},
            {"name", record.name},     {"package", record.packageName},
            {"unit", record.unit},     {"dimension", record.dimension},
            {"value", record.value},   {"data", std::move(data)},
    };
    if (record.reserved != 0) json["reserved"] = record.reserved;
    json["flag"] = record.flag;
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

bool openMetricsFile(const char* path) {
    const int fd = strcmp(path, "-") == 0
                           ? fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)
                           : open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (fd == -1) return false;
    setFile(fd);
    return true;
}

void closeMetricsFile() {
    setFile(-1);
}

void sendMetricsRecord(const MetricsRecord& record) {
    const int callersErrno = errno;
    {
        std::lock_guard<std::mutex> guard(sink().listenerLock);
        if (sink().listener) sink().listener(record);
    }
    {
        std::lock_guard<std::mutex> guard(sink().fileLock);
        if (sink().fd != -1) writeLine(toJson(record));
    }
    errno = callersErrno;
}

}  // namespace android::hostplatform
