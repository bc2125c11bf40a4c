// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

#include <mediaCodecLogger/MediaCodecLogger.h>
#include <tests/support/FakeClock.h>
#include <tests/support/FakeCodec.h>
#include <tests/support/RecordingService.h>

namespace android::test {

/** A codec whose parameters go into the journal. */
struct StoryCodec : public FakeCodec {
    void signalSetParameters(const sp<AMessage>& message) override;
};

/** What a story plays with: a clock that stands still, codecs by name, a logger and a service. */
class Stage {
  public:
    /** The clock shows 1000 ms, and there is a logger of a process that nobody knows. */
    Stage();
    /** Nothing of it is left in the process. */
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    /** Another codec becomes the current one; made when it is first named. */
    void selectCodec(const std::string& name);
    /** Another logger becomes the current one; none until it is made. */
    void selectLogger(const std::string& name);
    void makeLogger(int pid, unsigned uid);
    void setService(const sp<IBinder>& service);

    FakeClock clock{1000};
    int64_t readsBefore = 0;
    int64_t pts = 0;

    struct Codec {
        sp<CodecBase> codec;
        /** The number by which its events name it: 1 for the first. */
        long key = 0;
    };
    std::map<std::string, Codec> codecs;
    std::string codecName;
    sp<CodecBase> codec;
    long key = 0;

    std::map<std::string, sp<MediaCodecLogger>> loggers;
    std::string loggerName;
    sp<MediaCodecLogger> logger;
    sp<RecordingService> service;
};

}  // namespace android::test
