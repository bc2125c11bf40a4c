// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "CodecSession.h"
#include "Demuxer.h"
#include "MediaClock.h"
#include "Options.h"
#include "Summary.h"

namespace android::codecplay {

/** Plays one file once: feeds its packets to a session each stream and interrupts them. */
class Player {
  public:
    /** @param stop set by somebody else to end playback early, reports included */
    Player(const Options& options, std::string file, int instance, const std::atomic<bool>& stop);

    /** Plays to the end and says on standard error what went wrong. */
    FileResult play();

  private:
    bool open();
    void feed();
    bool feedNext();
    void push(Packet packet);
    bool interruptIfDue();
    int64_t positionUs();
    bool interruptionDue();
    void interrupt(CodecSession::Command::Kind kind, int64_t toUs);
    void endInput();
    bool allFinished();
    void finish();
    void judge();
    void warn(const std::string& text);
    /** Says what went wrong, and that it is the reason of the exit code. */
    void fail(int exitCode, const std::string& text);
    void reportProgress();

    template <typename F>
    void forEachSession(F&& f);

    const Options& mOptions;
    const std::atomic<bool>& mStop;
    FileResult mResult;
    Demuxer mDemuxer;
    MediaClock mClock;
    /** By stream; null where there is no decoder. */
    std::vector<std::unique_ptr<CodecSession>> mSessions;
    /** The first video, else the first: the position of playback is its position. */
    CodecSession* mPrimary = nullptr;
    std::deque<Interruption> mInterruptions;
    int mLoopsLeft;
    bool mInputEnded = false;
    int64_t mProgressShownNs = 0;
    /** What is left of the time that codecs may take to end when playback is to. */
    int64_t mPatienceNs = 2'000'000'000;
};

}  // namespace android::codecplay
