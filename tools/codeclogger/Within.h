// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <type_traits>
#include <utility>

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

/** Starts `question` on a thread of its own, which outlives a caller that gives up waiting. */
template <typename Question, typename T = std::invoke_result_t<Question>>
std::shared_ptr<Pending<T>> askAside(Question question) {
    auto pending = std::make_shared<Pending<T>>();
    std::thread([pending, question = std::move(question)] { pending->give(question()); }).detach();
    return pending;
}

/** The answer, if it comes within `ms`: a process that is stopped never answers. */
template <typename Question>
auto within(int64_t ms, Question question) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    return askAside(std::move(question))->wait(deadline);
}

}  // namespace android::codeclogger
