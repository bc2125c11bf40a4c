// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <atomic>
#include <string>
#include <vector>

#include "Ffmpeg.h"

namespace android::codecplay {

/**
 * The bytes of a media file, which may be a pipe whose other end takes its time: every wait ends
 * when playback is to. One thread.
 */
class MediaInput {
  public:
    explicit MediaInput(const std::atomic<bool>& stop) : mStop(stop) {}
    ~MediaInput();
    MediaInput(const MediaInput&) = delete;
    MediaInput& operator=(const MediaInput&) = delete;

    /** "-" is standard input; false with a reason. */
    bool open(const std::string& file, std::string* error);
    /** Whether it can be read again from any place. */
    bool seekable() const { return mSeekable; }
    /** The first bytes, whatever was read by now; nothing of a pipe. */
    std::vector<uint8_t> firstBytes(size_t count) const;
    /** Goes to the beginning; what was read so far must not be in use any more. */
    AVIOContext* begin();

  private:
    static int onRead(void* self, uint8_t* to, int size);
    static int64_t onSeek(void* self, int64_t offset, int whence);
    bool waitForBytes() const;
    void freeContext();

    const std::atomic<bool>& mStop;
    int mFd = -1;
    bool mSeekable = false;
    AVIOContext* mContext = nullptr;
};

}  // namespace android::codecplay
