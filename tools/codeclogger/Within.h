// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>
#include <stdio.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <type_traits>
#include <utility>

#include <binder/IPCThreadState.h>

namespace android::codeclogger {

/** An answer that another thread is to give. */
template <typename T>
class Pending {
  public:
    using Clock = std::chrono::steady_clock;

    void give(T value) {
        std::lock_guard<std::mutex> lock(mLock);
        mValue = std::move(value);
        mGiven.notify_all();
    }

    /** Waits for it until `deadline`. */
    std::optional<T> wait(Clock::time_point deadline) {
        std::unique_lock<std::mutex> lock(mLock);
        mGiven.wait_until(lock, deadline, [this] { return mValue.has_value(); });
        return mValue;
    }

    bool isGiven() {
        std::lock_guard<std::mutex> lock(mLock);
        return mValue.has_value();
    }

  private:
    std::mutex mLock;
    std::condition_variable mGiven;
    std::optional<T> mValue;
};

/** Questions under way, also those for whose answers nobody waits any more. */
inline std::atomic<int> gUnanswered{0};

/** Starts `question` on a thread of its own, which outlives a caller that gives up waiting. */
template <typename Question, typename T = std::invoke_result_t<Question>>
std::shared_ptr<Pending<T>> askAside(Question question) {
    auto pending = std::make_shared<Pending<T>>();
    ++gUnanswered;
    std::thread([pending, question = std::move(question)] {
        pending->give(question());
        --gUnanswered;
    }).detach();
    return pending;
}

/** The answer, if it comes within `ms`: a process that is stopped never answers. */
template <typename Question>
auto within(int64_t ms, Question question) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    return askAside(std::move(question))->wait(deadline);
}

/** To return from main() with: the threads of open questions use what exit() would destroy. */
inline int leave(int exitCode) {
    if (gUnanswered > 0) {
        fflush(nullptr);
        IPCThreadState::self()->stopProcess();
        _exit(exitCode);
    }
    return exitCode;
}

}  // namespace android::codeclogger
