// SPDX-License-Identifier: Apache-2.0
#include "CodecSession.h"

#include <inttypes.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include <mediaCodecLogger/ZephraMediaAnalytic.h>

#include "StoryRecorder.h"

namespace android::codecplay {

namespace {

/** What an application's extractor buffers ahead of a codec. */
constexpr size_t kQueuedPackets = 300;

/** How long offer() waits, so that the player's thread looks after its interruptions. */
constexpr nsecs_t kOfferNs = 10'000'000;

/** How long waits take no notice of playback's end. */
constexpr nsecs_t kLookForStopNs = 50'000'000;

/** Sound goes to its sink this much ahead of the speaker. */
constexpr int64_t kAudioLeadNs = 100'000'000;

/** Pictures go to the display so many refreshes ahead. */
constexpr int64_t kVideoLeadVsyncs = 2;

std::string componentName(const Options& options, const StreamInfo& stream,
                          const FormatName& format) {
    const std::string prefix = !options.component.empty() ? options.component
                               : options.omx              ? "OMX.ffmpeg"
                                                          : "c2.ffmpeg";
    const char* suffix = stream.video && options.secure ? ".decoder.secure" : ".decoder";
    return prefix + "." + format.shortName + suffix;
}

int64_t vsyncNs(const Options& options) {
    return static_cast<int64_t>(1e9 / options.vsyncHz);
}

}  // namespace

CodecSession::CodecSession(const Options& options, const StreamInfo& stream, bool takesFaults,
                           MediaClock* clock, const std::atomic<bool>& stop)
    : mOptions(options),
      mStream(stream),
      mClock(clock),
      mStop(stop),
      mFormatName(formatName(stream.parameters->codec_id)),
      mName(componentName(options, stream, mFormatName)),
      mFaults(takesFaults ? options.delays : std::vector<Delay>(),
              takesFaults ? options.drops : std::vector<FrameRange>(), stop),
      mDisplay(static_cast<size_t>(options.buffers), options.paced() ? vsyncNs(options) : 0,
               stream.video && !options.tunneled),
      mCodec(new HostCodec),
      mComponent(options, mFaults, mCodec, key(), &mDisplay, [this](ComponentEvent&& event) {
          if (event.kind == ComponentEvent::FRAME) {
              event.arrivesAtNs =
                      monotonicNs() + mFaults.delayNs(Fault::SLOW_MESSAGE, event.number);
          }
          Mutex::Autolock lock(mLock);
          mEvents.push_back(std::move(event));
          mChanged.broadcast();
      }) {
    if (!takesFaults) return;
    mErrors.assign(options.errors.begin(), options.errors.end());
    std::stable_sort(mErrors.begin(), mErrors.end(),
                     [](const DecoderError& a, const DecoderError& b) { return a.atUs < b.atUs; });
}

CodecSession::~CodecSession() {
    if (mThread.joinable()) {
        post({Command::STOP});
        mThread.join();
    }
}

bool CodecSession::open(std::string* error) {
    return mComponent.open(mStream, error);
}

void CodecSession::start() {
    mThread = std::thread([this] { run(); });
}

bool CodecSession::offer(Packet* packet) {
    Mutex::Autolock lock(mLock);
    if (mInput.size() >= kQueuedPackets) mChanged.waitRelative(mLock, kOfferNs);
    if (mInput.size() >= kQueuedPackets) return false;
    mInput.push_back(std::move(*packet));
    mChanged.broadcast();
    return true;
}

void CodecSession::offerEnd(int64_t timeUs) {
    Mutex::Autolock lock(mLock);
    mInputEnded = true;
    mEndUs = timeUs;
    mChanged.broadcast();
}

bool CodecSession::idle_l() const {
    return mInput.empty() && mEvents.empty() && mAllReleased && (!mInputEnded || mEndOut) &&
           mFreeInputs == Component::kInputBuffers;
}

void CodecSession::waitIdle() {
    Mutex::Autolock lock(mLock);
    while (!idle_l() && !mStop) mChanged.waitRelative(mLock, kLookForStopNs);
}

void CodecSession::post(Command command) {
    Mutex::Autolock lock(mLock);
    mCommand = command;
    mChanged.broadcast();
}

bool CodecSession::waitCommand(int64_t* patienceNs) {
    Mutex::Autolock lock(mLock);
    while (mCommand.kind != Command::NONE && *patienceNs > 0) {
        const int64_t startNs = monotonicNs();
        mChanged.waitRelative(mLock, kLookForStopNs);
        if (mStop) *patienceNs -= monotonicNs() - startNs;
    }
    return mCommand.kind == Command::NONE;
}

void CodecSession::wake() {
    Mutex::Autolock lock(mLock);
    mWoken = true;
    mChanged.broadcast();
}

bool CodecSession::finished() {
    Mutex::Autolock lock(mLock);
    return mEndOut && mAllReleased;
}

void CodecSession::run() {
    recordEvent(mCodec.get(), "Create");
    mLogger = MediaCodecLogger::Create(getpid(), getuid());
    configure();
    for (;;) {
        switch (waitForWork(releaseAtNs())) {
            case Work::NOTHING:
                break;
            case Work::COMMAND:
                onCommand();
                if (!mLogger) return;
                break;
            case Work::EVENT:
                onEvent();
                break;
            case Work::RELEASE:
                releaseFront();
                break;
            case Work::INPUT:
                onInput();
                break;
            case Work::END:
                onInputEnd();
                break;
        }
    }
}

/** When the frame at the front is to be released; INT64_MAX while nothing is. */
int64_t CodecSession::releaseAtNs() const {
    if (mOutput.empty()) return INT64_MAX;
    if (mStalledUntilNs > monotonicNs()) return mStalledUntilNs;
    if (mOutput.front().beforeTarget) return 0;
    const int64_t dueNs = mClock->dueNs(mOutput.front().position);
    if (dueNs == MediaClock::kNotStarted || !paced()) return dueNs;
    if (!mStream.video) return dueNs - kAudioLeadNs;
    return tunneled() ? dueNs
                      : mDisplay.nearestVsync(dueNs) - kVideoLeadVsyncs * mDisplay.vsyncNs();
}

CodecSession::Work CodecSession::waitForWork(int64_t deadlineNs) {
    Mutex::Autolock lock(mLock);
    mAllReleased = mOutput.empty();
    mWoken = false;
    for (;;) {
        if (mCommand.kind != Command::NONE) return Work::COMMAND;
        const int64_t nowNs = monotonicNs();
        int64_t wakeNs = deadlineNs;
        if (!mEvents.empty()) {
            if (mEvents.front().arrivesAtNs <= nowNs) return Work::EVENT;
            wakeNs = std::min(wakeNs, mEvents.front().arrivesAtNs);
        }
        if (deadlineNs <= nowNs) return Work::RELEASE;
        if (mFreeInputs > 0 && !mInput.empty()) {
            const int64_t inputNs = inputAtNs();
            if (inputNs <= nowNs) return Work::INPUT;
            wakeNs = std::min(wakeNs, inputNs);
        }
        if (mFreeInputs > 0 && mInput.empty() && mInputEnded && !mEndQueued) return Work::END;
        // The clock started: the deadline is another one now.
        if (mWoken) return Work::NOTHING;
        mChanged.broadcast();
        if (wakeNs == INT64_MAX) {
            mChanged.wait(mLock);
        } else {
            mChanged.waitRelative(mLock, wakeNs - nowNs);
        }
    }
}

/** From when on the source lets the next packet have, now that there is room for it. */
int64_t CodecSession::inputAtNs() {
    const int64_t next = mInputNumber + 1;
    if (mStarvedInput != next) {
        mStarvedInput = next;
        const int64_t delayNs = mFaults.delayNs(Fault::STARVE, next);
        mStarvedUntilNs = delayNs > 0 ? monotonicNs() + delayNs : 0;
    }
    return mStarvedUntilNs;
}

void CodecSession::onEvent() {
    ComponentEvent event;
    {
        Mutex::Autolock lock(mLock);
        event = std::move(mEvents.front());
        mEvents.pop_front();
        if (event.kind == ComponentEvent::INPUT_DONE) ++mFreeInputs;
    }
    switch (event.kind) {
        case ComponentEvent::FRAME:
            onFrame(std::move(event));
            break;
        case ComponentEvent::NO_PICTURE:
            ++mCounts.noPicture;
            // It will be neither rendered nor dropped by anybody else.
            recordEvent(mCodec.get(), "dropFrameAnalyze %" PRId64, event.timeUs);
            ZephraMediaAnalytic::instance().dropFrameAnalyze(mCodec, event.timeUs, false);
            break;
        case ComponentEvent::INPUT_DONE:
            break;
        case ComponentEvent::END:
            onEnd(event.timeUs);
            break;
    }
}

void CodecSession::onInput() {
    Packet packet;
    {
        Mutex::Autolock lock(mLock);
        packet = std::move(mInput.front());
        mInput.pop_front();
        --mFreeInputs;
        mChanged.broadcast();
    }
    queueInput(packet);
    mComponent.queue(std::move(packet));
}

void CodecSession::onInputEnd() {
    int64_t endUs;
    {
        Mutex::Autolock lock(mLock);
        endUs = mEndUs;
    }
    mEndQueued = true;
    queueInputBuffer(nullptr, 0, endUs, BUFFER_FLAG_END_OF_STREAM);
    mComponent.queueEnd(endUs);
}

void CodecSession::onCommand() {
    Command command;
    {
        Mutex::Autolock lock(mLock);
        command = mCommand;
    }
    switch (command.kind) {
        case Command::NONE:
            break;
        case Command::FLUSH:
            flush();
            recordEvent(mCodec.get(), "updateMetricsForFlush");
            mLogger->updateMetricsForFlush();
            break;
        case Command::RECONFIGURE:
            stopCodec();
            configure();
            break;
        case Command::STOP:
            stopCodec();
            mComponent.stop();
            recordEvent(mCodec.get(), "release");
            mLogger.clear();
            break;
    }
    mSkipUntilUs = command.skipUntilUs;
    Mutex::Autolock lock(mLock);
    mCommand = {};
    mChanged.broadcast();
}

/** Empties component, framework and application, and makes them as at the start. */
void CodecSession::flush() {
    mCounts.flushed += mComponent.flush() + mOutput.size();
    std::deque<ComponentEvent> events;
    {
        Mutex::Autolock lock(mLock);
        events.swap(mEvents);
        mInput.clear();
        mFreeInputs = Component::kInputBuffers;
        mInputEnded = false;
        mEndOut = false;
    }
    for (const ComponentEvent& event : events) {
        if (event.kind == ComponentEvent::NO_PICTURE) ++mCounts.noPicture;
        if (event.kind != ComponentEvent::FRAME) continue;
        ++mCounts.frames;
        ++mCounts.flushed;
        mDisplay.cancel(event.buffer);
    }
    for (const ComponentEvent& frame : mOutput) mDisplay.cancel(frame.buffer);
    mOutput.clear();
    mEndQueued = false;
    mClockReady = false;
    mRenderedSinceFlush = false;
    mTrack = {};
    mPositionUs = INT64_MIN;
}

}  // namespace android::codecplay
