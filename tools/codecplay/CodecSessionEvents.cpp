// SPDX-License-Identifier: Apache-2.0
// The share of CodecSession that talks to the library.
#include <inttypes.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include <mediaCodecLogger/ZephraMediaAnalytic.h>

#include "CodecSession.h"
#include "StoryRecorder.h"

namespace android::codecplay {

namespace {

/** Bit 0 of the configure flags. */
constexpr unsigned kTunneledFlag = 1;

/** Players drop a picture that is late by more than this, and show it if it is less. */
constexpr int64_t kLateNs = 30'000'000;

/** From here on the framework calls rendering that goes on delayed. */
constexpr int64_t kDelayedOutputMs = 1000;

constexpr uint8_t kContentKey[16] = {'c', 'o', 'd', 'e', 'c', 'p', 'l', 'a', 'y'};

int64_t nowUs() {
    return monotonicNs() / 1000;
}

}  // namespace

void CodecSession::configure() {
    ZephraMediaAnalytic& analytics = ZephraMediaAnalytic::instance();
    const AString name(mName.c_str());
    recordEvent(mCodec.get(), "addCodec \"%s\"", mName.c_str());
    analytics.addCodec(name, mCodec, key(), key());
    recordEvent(mCodec.get(), "configure \"%s\" %s flags=%u", mName.c_str(),
                mFormatName.mime.c_str(), tunneled() ? kTunneledFlag : 0);
    mLogger->configure(name, mFormatName.mime.c_str(), tunneled() ? kTunneledFlag : 0, true, 0, 0,
                       mCodec, true);
    // What a tunnel shows does not pass the framework, so its frames cannot be followed.
    if (!mOptions.omx) {
        recordEvent(mCodec.get(), "updateCCodecConfigs%s", storyKind());
        analytics.updateCCodecConfigs(mCodec, mStream.video, tunneled(), true);
    }
    recordEvent(mCodec.get(), "profileP2End");
    mLogger->profileP2End();
    mFormatAnnounced = false;
    recordEvent(mCodec.get(), "isInMitigateFrameDropAllowlist");
    mMitigatesDrops = mLogger->isInMitigateFrameDropAllowlist();

    recordEvent(mCodec.get(), "profileP3Start");
    mLogger->profileP3Start();
    reportBuffers();
    if (!mComponent.started()) mComponent.start();
    recordEvent(mCodec.get(), "profileP3End");
    mLogger->profileP3End();
}

/** Both ports have their buffers. */
void CodecSession::reportBuffers() {
    ZephraMediaAnalytic& analytics = ZephraMediaAnalytic::instance();
    const size_t counts[] = {Component::kInputBuffers, mDisplay.count()};
    for (unsigned port = 0; port < 2; ++port) {
        if (mOptions.omx) {
            recordEvent(mCodec.get(), "updateBuffers %u %zu %zu%s", port, counts[port],
                        DisplayQueue::kMinUndequeued, storyKind());
            analytics.updateBuffers(mCodec, port, counts[port], DisplayQueue::kMinUndequeued,
                                    mStream.video, tunneled(), true);
        } else {
            recordEvent(mCodec.get(), "updateBuffers byKey %u %zu %zu", port, counts[port],
                        DisplayQueue::kMinUndequeued);
            // By key, because the other form would make the codec an OMX one.
            analytics.updateBuffers(key(), port, counts[port], DisplayQueue::kMinUndequeued);
        }
    }
}

void CodecSession::stopCodec() {
    recordEvent(mCodec.get(), "profileMCStopBegin");
    mLogger->profileMCStopBegin();
    flush();
    recordEvent(mCodec.get(), "profileMCStopEnd");
    mLogger->profileMCStopEnd();

    const DisplayQueue::Statistics display = mDisplay.takeStatistics();
    mCounts.neverShown += display.neverShown;
    const uint64_t errors = mComponent.decodeErrors();
    std::string metrics = "CodecNonFatalErrorCount=" + std::to_string(errors - mErrorsReported);
    mErrorsReported = errors;
    if (tunneled()) {
        metrics += ";TunnelFrameDropCount=" + std::to_string(std::exchange(mTunnelDrops, 0));
    } else if (mStream.video) {
        metrics += ";HWCRenderFrameCount=" + std::to_string(display.shown) +
                   ";MaxConsecutiveFramesDropped=" + std::to_string(display.longestRunNeverShown);
    }
    recordEvent(mCodec.get(), "updateVendorMetrics \"%s\"", metrics.c_str());
    AString text(metrics.c_str());
    mLogger->updateVendorMetrics(text);
    recordEvent(mCodec.get(), "logMetrics");
    const AString report = mLogger->logMetrics();
    if (!report.empty()) mReports.push_back(report.c_str());
}

void CodecSession::queueInput(const Packet& packet) {
    ++mInputNumber;
    const bool sync = (packet.data->flags & AV_PKT_FLAG_KEY) != 0;
    queueInputBuffer(packet.data->data, static_cast<size_t>(packet.data->size), packet.timeUs,
                     BUFFER_FLAG_END_OF_FRAME | (sync ? BUFFER_FLAG_SYNC_FRAME : 0));
    ++mCounts.packets;
}

void CodecSession::queueInputBuffer(const uint8_t* data, size_t size, int64_t timeUs,
                                    unsigned flags) {
    recordEvent(mCodec.get(), "queueInputBuffer_pre %" PRId64, timeUs);
    if (mOptions.secure && size > 0) {
        // The start of a frame stays clear, so that its headers can be read; the rest counts as
        // encrypted, although there is nobody here to decrypt it.
        constexpr size_t kClearBytes = 32;
        const auto clear = static_cast<uint32_t>(std::min(size, kClearBytes));
        const CryptoPlugin::SubSample subSample{clear, static_cast<uint32_t>(size) - clear};
        uint8_t iv[16] = {};
        memcpy(iv, &mInputNumber, sizeof(mInputNumber));
        mLogger->queueInputBuffer_pre(data, size, kContentKey, iv, 1, &subSample,
                                      CryptoPlugin::kMode_AES_CTR, timeUs, nowUs(), true);
    } else {
        mLogger->queueInputBuffer_pre(data, size, nullptr, nullptr, 0, nullptr,
                                      CryptoPlugin::kMode_Unencrypted, timeUs, nowUs(), false);
    }
    if (size > 0) mFaults.hold(Fault::SLOW_DECRYPT, mInputNumber);
    recordEvent(mCodec.get(), "logInputBufferBitrate %" PRId64 " size=%zu%s", timeUs, size,
                secure() ? " secure secureMemory" : "");
    mLogger->logInputBufferBitrate(size, timeUs, secure(), secure());
    if (!mOptions.omx) return;
    size_t owned;
    {
        Mutex::Autolock lock(mLock);
        owned = Component::kInputBuffers - mFreeInputs;
    }
    recordEvent(mCodec.get(), "updateOmxInput %" PRId64 " size=%zu owned=%zu flags=%u", timeUs,
                size, owned, flags);
    ZephraMediaAnalytic::instance().updateOmxInput(mCodec, data, size, timeUs,
                                                   static_cast<int>(owned), flags);
}

void CodecSession::announceFormat(const StreamFormat& format) {
    const bool reallocated =
            mFormatAnnounced && mStream.video &&
            (format.width != mFormats.back().width || format.height != mFormats.back().height);
    if (reallocated) reportBuffers();
    sp<AMessage> message = format.toMessage(
            mFormatName.mime, mCodec->reportsMtkKeys() ? VendorKeys::MTK : VendorKeys::DEFAULT);
    recordFormat(mCodec.get(), message);
    mLogger->updateFormatChanged(message);
    mFormatAnnounced = true;
}

void CodecSession::onFrame(ComponentEvent frame) {
    ++mCounts.frames;
    const bool changed = mFormats.empty() || frame.format != mFormats.back();
    if (changed || !mFormatAnnounced) announceFormat(frame.format);
    if (changed) mFormats.push_back(frame.format);
    if (mOptions.omx) {
        recordEvent(mCodec.get(), "updateACodecOutput size=%zu", frame.size);
        ZephraMediaAnalytic::instance().updateACodecOutput(
                mCodec, frame.bytes.empty() ? nullptr : frame.bytes.data(), nullptr, frame.size);
    }
    // What goes through a tunnel has no output buffer that reaches the client.
    if (!tunneled()) {
        recordEvent(mCodec.get(), "updatePTSTime %" PRId64, frame.timeUs);
        mLogger->updatePTSTime(frame.timeUs, false, 1);
    }
    frame.position = mClock->follow(&mTrack, frame.timeUs);
    // Once it is reached, a clock that jumps back does not lead before the target again.
    if (frame.timeUs >= mSkipUntilUs) mSkipUntilUs = INT64_MIN;
    frame.beforeTarget = frame.timeUs < mSkipUntilUs;
    if (!mClockReady && !frame.beforeTarget) {
        mClockReady = true;
        mClock->ready(frame.timeUs);
    }
    frame.bytes.clear();
    mOutput.push_back(std::move(frame));
}

void CodecSession::onEnd(int64_t timeUs) {
    recordEvent(mCodec.get(), "updatePTSTime %" PRId64 " eos", timeUs);
    mLogger->updatePTSTime(timeUs, true, 1);
    if (!mClockReady) {
        mClockReady = true;
        mClock->readyWithNothing();
    }
    Mutex::Autolock lock(mLock);
    mEndOut = true;
}

void CodecSession::releaseFront() {
    // A busy application keeps neither framework nor component from their work.
    if (std::exchange(mStalledFrame, mOutput.front().number) != mOutput.front().number) {
        const int64_t delayNs = mFaults.delayNs(Fault::STALL, mStalledFrame);
        if (delayNs > 0) {
            mStalledUntilNs = monotonicNs() + delayNs;
            return;
        }
    }
    const ComponentEvent frame = std::move(mOutput.front());
    mOutput.pop_front();
    const int64_t dueNs = mClock->dueNs(frame.position);
    const Fate fate = fateOf(frame, dueNs);
    count(fate);
    if (mStream.video) {
        renderOrDrop(frame, fate, dueNs);
    } else {
        mDisplay.cancel(frame.buffer);
    }
    if (fate == Fate::DROP_BEFORE_TARGET) return;
    mPositionUs = frame.timeUs;
    while (!mErrors.empty() && mErrors.front().atUs <= frame.timeUs) {
        recordEvent(mCodec.get(), "uploadDecoderError %d", mErrors.front().type);
        mLogger->uploadDecoderError(mErrors.front().type);
        mErrors.pop_front();
    }
}

CodecSession::Fate CodecSession::fateOf(const ComponentEvent& frame, int64_t dueNs) const {
    if (frame.beforeTarget) return Fate::DROP_BEFORE_TARGET;
    if (mFaults.drops(frame.number)) return Fate::DROP_ON_REQUEST;
    // Applications that the service lets mitigate drops show late pictures instead, and each start
    // shows something.
    const bool mayDrop = mStream.video && paced() && mRenderedSinceFlush && !mMitigatesDrops;
    return mayDrop && monotonicNs() - dueNs > kLateNs ? Fate::DROP_LATE : Fate::RENDER;
}

void CodecSession::count(Fate fate) {
    switch (fate) {
        case Fate::RENDER:
            ++mCounts.rendered;
            mRenderedSinceFlush = true;
            break;
        case Fate::DROP_LATE:
            ++mCounts.droppedLate;
            break;
        case Fate::DROP_ON_REQUEST:
            ++mCounts.droppedOnRequest;
            break;
        case Fate::DROP_BEFORE_TARGET:
            ++mCounts.droppedBeforeTarget;
            break;
    }
}

void CodecSession::renderOrDrop(const ComponentEvent& frame, Fate fate, int64_t dueNs) {
    const bool rendered = fate == Fate::RENDER;
    // An application that sets no time of its own has its pictures rendered by media time. What is
    // dropped on the way to a seek's target is due at no time.
    const int64_t renderTimeNs = !rendered ? 0
                                 : paced() ? mDisplay.nearestVsync(dueNs)
                                           : frame.timeUs * 1000;
    if (tunneled()) {
        reportTunneled(frame, fate, renderTimeNs);
        mDisplay.cancel(frame.buffer);
        return;
    }
    recordEvent(mCodec.get(), "updateFrameDropCounters %" PRId64 "%s", frame.timeUs,
                rendered ? "" : " dropped");
    mLogger->updateFrameDropCounters(frame.timeUs, rendered);
    if (!rendered) {
        mDisplay.cancel(frame.buffer);
        return;
    }
    recordEvent(mCodec.get(), "resetConsecutiveFrameDropFlag %" PRId64 " %" PRId64, renderTimeNs,
                frame.timeUs);
    mLogger->resetConsecutiveFrameDropFlag(renderTimeNs, frame.timeUs, false, 1);
    const int64_t startUs = nowUs();
    mDisplay.block(mFaults.delayNs(Fault::BLOCK_DISPLAY, frame.number));
    mFaults.hold(Fault::BLOCK_DISPLAY, frame.number);
    mDisplay.queue(frame.buffer, renderTimeNs);
    recordEvent(mCodec.get(), "updateQueueBuffer %p %" PRId64 " %" PRId64 " %" PRId64,
                static_cast<const void*>(frame.buffer.get()), startUs, renderTimeNs, frame.timeUs);
    ZephraMediaAnalytic::instance().updateQueueBuffer(mCodec, startUs, renderTimeNs, frame.timeUs,
                                                      frame.buffer.get());
}

/** The hardware at the end of the tunnel has shown a picture, or kept quiet about it. */
void CodecSession::reportTunneled(const ComponentEvent& frame, Fate fate, int64_t renderTimeNs) {
    if (fate != Fate::RENDER) {
        if (fate != Fate::DROP_BEFORE_TARGET) ++mTunnelDrops;
        return;
    }
    recordEvent(mCodec.get(), "resetConsecutiveFrameDropFlag %" PRId64 " %" PRId64 " fromTunnel",
                renderTimeNs, frame.timeUs);
    mLogger->resetConsecutiveFrameDropFlag(renderTimeNs, frame.timeUs, true, 1);
    const int64_t nowMs = MediaCodecLogger::getSystemTimeMillis();
    const int64_t lastMs = std::exchange(mLastRenderMs, nowMs);
    if (lastMs >= 0 && nowMs - lastMs >= kDelayedOutputMs) {
        recordEvent(mCodec.get(), "notifyOutBufferAvailablAfterDelay %" PRId64, nowMs - lastMs);
        mLogger->notifyOutBufferAvailablAfterDelay(nowMs - lastMs);
    }
}

}  // namespace android::codecplay
