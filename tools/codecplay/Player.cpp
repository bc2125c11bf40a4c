// SPDX-License-Identifier: Apache-2.0
#include "Player.h"

#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace android::codecplay {

namespace {

/** A stream may keep the others waiting for their start so long. */
constexpr int64_t kStartPatienceNs = 500'000'000;

constexpr int64_t kProgressIntervalNs = 200'000'000;

constexpr useconds_t kPollUs = 5000;

}  // namespace

Player::Player(const Options& options, std::string file, int instance,
               const std::atomic<bool>& stop)
    : mOptions(options),
      mStop(stop),
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
    fprintf(stderr, "codecplay: %s: %s\n", mResult.file.c_str(), text.c_str());
    mResult.warnings.push_back(text);
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
    if (!mDemuxer.open(mResult.file, &error)) {
        warn(error);
        return false;
    }
    mResult.format = mDemuxer.formatName();
    mResult.durationUs = mDemuxer.durationUs();
    const std::vector<StreamInfo>& streams = mDemuxer.streams();
    const auto video = std::find_if(streams.begin(), streams.end(),
                                    [](const StreamInfo& stream) { return stream.video; });
    const StreamInfo* faulty = video == streams.end() ? &streams.front() : &*video;
    size_t opened = 0;
    for (const StreamInfo& stream : streams) {
        auto session =
                std::make_unique<CodecSession>(mOptions, stream, &stream == faulty, &mClock, mStop);
        if (session->open(&error)) {
            ++opened;
            if (!mPrimary || &stream == faulty) mPrimary = session.get();
            mSessions.push_back(std::move(session));
        } else {
            warn("stream " + std::to_string(stream.index) + ": " + error);
            mSessions.push_back(nullptr);
        }
    }
    mClock.expect(opened);
    return opened > 0;
}

void Player::feed() {
    while (!mStop && feedNext()) showProgress();
    if (isatty(STDERR_FILENO) && mProgressShownNs) fputs("\r\033[K", stderr);
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
            warn("cannot be read any further: " + error);
            mResult.exitCode = EXIT_DAMAGED;
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
    interrupt(CodecSession::Command::FLUSH, 0);
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
        showProgress();
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
    forEachSession([&](CodecSession& session) { session.post({kind, toUs}); });
    forEachSession([](CodecSession& session) { session.waitCommand(); });
    mClock.reset();
    if (!mDemuxer.seek(toUs)) warn("cannot be sought in; playback goes on where it is");
    mInputEnded = false;
}

void Player::finish() {
    forEachSession([](CodecSession& session) { session.post({CodecSession::Command::STOP}); });
    forEachSession([&](CodecSession& session) {
        session.waitCommand();
        mResult.sessions.push_back(describeSession(session));
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
    if (errors > 0) warn("damaged frames: " + std::to_string(errors));
    if (mDemuxer.corruptPackets() > 0) {
        warn("damaged packets: " + std::to_string(mDemuxer.corruptPackets()));
    }
    const int64_t missingUs = mStop ? 0 : mDemuxer.missingUs();
    if (missingUs > 0) {
        char text[80];
        snprintf(text, sizeof(text), "is cut off: %.1f s of %.1f s are missing", missingUs / 1e6,
                 mDemuxer.durationUs() / 1e6);
        warn(text);
    }
    if (errors > 0 || mDemuxer.corruptPackets() > 0 || missingUs > 0) {
        mResult.exitCode = EXIT_DAMAGED;
    }
    if (frames == 0 && !mStop) {
        warn("nothing in it can be decoded");
        mResult.exitCode = EXIT_NOT_PLAYABLE;
    }
    if (mStop) mResult.exitCode = EXIT_INTERRUPTED;
}

void Player::showProgress() {
    if (mOptions.quiet || mResult.instance > 1 || !isatty(STDERR_FILENO)) return;
    const int64_t nowNs = monotonicNs();
    if (nowNs - mProgressShownNs < kProgressIntervalNs) return;
    mProgressShownNs = nowNs;
    const SessionCounts& counts = mPrimary->counts();
    fprintf(stderr, "\r\033[K%s  %.1f / %.1f s  rendered %llu  late %llu", mResult.file.c_str(),
            std::max<int64_t>(positionUs(), 0) / 1e6, mResult.durationUs / 1e6,
            static_cast<unsigned long long>(counts.rendered.load()),
            static_cast<unsigned long long>(counts.droppedLate.load()));
}

}  // namespace android::codecplay
