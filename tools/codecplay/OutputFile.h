// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <mutex>
#include <string>

namespace android::codecplay {

/** A file or standard output, and what became of writing it. Thread-safe. */
class OutputFile {
  public:
    /** Begins the file anew; "-" is standard output. False if that fails, which error() tells. */
    bool open(const std::string& path);
    bool isOpen() const;
    bool isTerminal() const;

    /** Writes all of it, in one piece where the system takes it so; after a failure nothing. */
    void write(const std::string& text);

    /** What went wrong first, or empty. A reader that goes away is nobody's fault. */
    std::string error() const;

  private:
    bool fail(int code);

    mutable std::mutex mLock;
    std::string mName;
    int mFd = -1;
    int mError = 0;
};

}  // namespace android::codecplay
