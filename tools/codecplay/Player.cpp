// SPDX-License-Identifier: Apache-2.0
#include "Player.h"

#include <inttypes.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "Messages.h"

namespace android::codecplay {

namespace {

/** A stream may keep the others waiting for their start so long. */
constexpr int64_t kStartPatienceNs = 500'000'000;

/** A longer step of the media time is a jump: where containers allow jumps, and elsewhere. */
constexpr int64_t kJumpUs = 10'000'000;
constexpr int64_t kUnlikelyJumpUs = 30'000'000;

constexpr int64_t kProgressIntervalNs = 200'000'000;

constexpr useconds_t kPollUs = 5000;

}  // namespace

Player::Player(const Options& options, std::string file, int instance,
               const std::atomic<bool>& stop)
    : mOptions(options),
      mStop(stop),
      mDemuxer(stop),
      mClock(options.speed, static_cast<int64_t>(1e9 / options.vsyncHz),
             [this] { forEachSession([](CodecSession& session) { session.wake(); }); }),
      mInterruptions(options.interruptions.begin(), options.interruptions.end()),
      mLoopsLeft(options.loops - 1) {
    mResult.file = std::move(file);
    mResult.instance = instance;
}

template <typename F>
void Player::forEachSession(F&& f) {
    for (const auto& session : mSessions) {
        if (session) f(*session);
    }
}

void Player::warn(const std::string& text) {
    complain(mResult.file, text);
    mResult.warnings.push_back(text);
}

void Player::fail(int exitCode, const std::string& text) {
    warn(text);
    mResult.exitCode = worseExit(mResult.exitCode, exitCode);
}

FileResult Player::play() {
    if (!open()) {
        mResult.exitCode = EXIT_NOT_PLAYABLE;
        return std::move(mResult);
    }
    forEachSession([](CodecSession& session) { session.start(); });
    feed();
    finish();
    judge();
    return std::move(mResult);
}

bool Player::open() {
    std::string error;
    const bool opened = mDemuxer.open(mResult.file, &error);
    const auto unplayable = [this](int stream, const std::string& reason) {
        fail(EXIT_STREAM_NOT_PLAYED, "stream " + std::to_string(stream) + ": " + reason);
    };
    for (const UnplayableStream& stream : mDemuxer.unplayable()) {
        unplayable(stream.index, stream.reason);
    }
    if (!opened) {
        if (!mStop) warn(error);
        return false;
    }
    mResult.format = mDemuxer.formatName();
    mResult.durationUs = mDemuxer.durationUs();
    const std::vector<StreamInfo>& streams = mDemuxer.streams();
    const auto video = std::find_if(streams.begin(), streams.end(),
                                    [](const StreamInfo& stream) { return stream.video; });
    const StreamInfo* faulty = video == streams.end() ? &streams.front() : &*video;
    size_t count = 0;
    for (const StreamInfo& stream : streams) {
        auto session =
                std::make_unique<CodecSession>(mOptions, stream, &stream == faulty, &mClock, mStop);
        if (session->open(&error)) {
            ++count;
            if (!mPrimary || &stream == faulty) mPrimary = session.get();
            mSessions.push_back(std::move(session));
        } else {
            unplayable(stream.index, error);
            mSessions.push_back(nullptr);
        }
    }
    mClock.expect(count, mDemuxer.mayJump() ? kJumpUs : kUnlikelyJumpUs);
    return count > 0;
}

void Player::feed() {
    while (!mStop && feedNext()) reportProgress();
    showProgress("");
    for (const Interruption& interruption : mInterruptions) {
        if (mStop) break;
        warn("playback never reached " + std::to_string(interruption.atUs / 1e6) + " s");
    }
}

/** One step of playback; false at its end. */
bool Player::feedNext() {
    if (interruptIfDue()) return true;
    if (!mInputEnded) {
        Packet packet;
        std::string error;
        const Demuxer::Result result = mDemuxer.read(&packet, &error);
        if (result == Demuxer::Result::PACKET) {
            push(std::move(packet));
            return true;
        }
        if (result == Demuxer::Result::ERROR) {
            fail(EXIT_DAMAGED, "cannot be read any further: " + error);
        }
        endInput();
        return true;
    }
    if (!allFinished()) {
        usleep(kPollUs);
        return true;
    }
    // The last frames may have reached a time at which something is to happen.
    if (interruptIfDue()) return true;
    if (mLoopsLeft == 0) return false;
    --mLoopsLeft;
    interrupt(CodecSession::Command::FLUSH, Demuxer::kBeginning);
    return true;
}

void Player::push(Packet packet) {
    CodecSession* session = mSessions[packet.stream].get();
    if (!session) return;
    const int64_t startNs = monotonicNs();
    while (!session->offer(&packet)) {
        // What interrupts playback also discards this packet.
        if (mStop || interruptionDue()) return;
        if (monotonicNs() - startNs > kStartPatienceNs) mClock.startWithoutTheRest();
        reportProgress();
    }
    // Unpaced playback goes packet by packet, so that each run does the same.
    if (!mOptions.paced()) session->waitIdle();
}

void Player::endInput() {
    mInputEnded = true;
    for (size_t i = 0; i < mSessions.size(); ++i) {
        if (!mSessions[i]) continue;
        mSessions[i]->offerEnd(mDemuxer.endUs(i));
        if (!mOptions.paced()) mSessions[i]->waitIdle();
    }
}

bool Player::allFinished() {
    bool finished = true;
    forEachSession([&](CodecSession& session) { finished = finished && session.finished(); });
    return finished;
}

/** Playback goes on when the stream that it is measured by ends before the others. */
int64_t Player::positionUs() {
    int64_t positionUs = mPrimary->positionUs();
    if (mPrimary->finished()) {
        forEachSession([&](CodecSession& session) {
            positionUs = std::max(positionUs, session.positionUs());
        });
    }
    return positionUs;
}

bool Player::interruptionDue() {
    return !mInterruptions.empty() && mInterruptions.front().atUs <= positionUs();
}

bool Player::interruptIfDue() {
    if (!interruptionDue()) return false;
    const Interruption next = mInterruptions.front();
    mInterruptions.pop_front();
    interrupt(next.kind == Interruption::RECONFIGURE ? CodecSession::Command::RECONFIGURE
                                                     : CodecSession::Command::FLUSH,
              next.toUs);
    return true;
}

/** Empties all codecs and goes on at toUs. */
void Player::interrupt(CodecSession::Command::Kind kind, int64_t toUs) {
    const bool seekable = mDemuxer.seekable();
    forEachSession([&](CodecSession& session) {
        session.post({kind, seekable ? toUs : Demuxer::kBeginning});
    });
    forEachSession([&](CodecSession& session) { session.waitCommand(&mPatienceNs); });
    mClock.reset();
    if (!mDemuxer.seek(toUs) && !mStop) {
        warn(seekable ? "its beginning cannot be read again; playback ends here"
                      : "cannot be sought in; playback goes on where it is");
        // Rounds without anything to play would be many.
        mLoopsLeft = 0;
    }
    mInputEnded = false;
}

void Player::finish() {
    forEachSession([](CodecSession& session) { session.post({CodecSession::Command::STOP}); });
    forEachSession([&](CodecSession& session) {
        const bool ended = session.waitCommand(&mPatienceNs);
        if (!ended) {
            warn("stream " + std::to_string(session.streamIndex()) +
                 ": its codec does not end; does the logger service hang?");
            mResult.abandoned = true;
        }
        mResult.sessions.push_back(describeSession(session, ended));
    });
}

/** Says what was wrong with the file. */
void Player::judge() {
    uint64_t frames = 0;
    uint64_t errors = 0;
    for (const SessionResult& session : mResult.sessions) {
        frames += session.frames;
        errors += session.decodeErrors;
    }
    if (errors > 0) fail(EXIT_DAMAGED, "damaged frames: " + std::to_string(errors));
    const int64_t missingUs = mStop ? 0 : mDemuxer.missingUs();
    if (missingUs > 0) {
        char text[80];
        snprintf(text, sizeof(text), "is cut off: %.1f s of %.1f s are missing", missingUs / 1e6,
                 mDemuxer.durationUs() / 1e6);
        fail(EXIT_DAMAGED, text);
    }
    if (frames == 0 && !mStop) fail(EXIT_NOT_PLAYABLE, "nothing in it can be decoded");
}

void Player::reportProgress() {
    if (mResult.instance > 1 || !progressAllowed()) return;
    const int64_t nowNs = monotonicNs();
    if (nowNs - mProgressShownNs < kProgressIntervalNs) return;
    mProgressShownNs = nowNs;
    const SessionCounts& counts = mPrimary->counts();
    char text[120];
    snprintf(text, sizeof(text), "  %.1f / %.1f s  rendered %" PRIu64 "  late %" PRIu64,
             std::max<int64_t>(positionUs(), 0) / 1e6, mResult.durationUs / 1e6,
             counts.rendered.load(), counts.droppedLate.load());
    showProgress(mResult.file.substr(mResult.file.rfind('/') + 1) + text);
}

}  // namespace android::codecplay
