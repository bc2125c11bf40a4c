// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <utils/RefBase.h>
#include <utils/String8.h>

#include <mediaCodecLogger/binder/IMediaCodecLoggerClient.h>

namespace android {

class MediaCodecLogger;

/**
 * Stands for one codec before the logger service and answers from the live state of the codec's
 * logger. The logger holds this object strongly and is held weakly; once the logger is gone, what
 * needs it is answered with an empty text, 0, false or, for the uid, -1.
 *
 * The address of this object (not of one of its bases) is the client id in every service call.
 *
 * Queries may come on any thread at any time. `initialize()` must be called once, before the object
 * is handed to the service.
 */
class MediaCodecLoggerClient : public BnMediaCodecLoggerClient {
  public:
    /** Only stores the reference, so the logger may call it from its own constructor. */
    explicit MediaCodecLoggerClient(const wp<MediaCodecLogger>& logger);

    /** Sets the identity; a ":" in `packageName` and what follows it is dropped. */
    void initialize(int pid, bool isVideo, String8 packageName) override;

    String8 getStatus() override;
    String8 getPackageName() override;
    bool isVideoClient() override;
    int32_t getPid() override;
    void getClientResolution(int& width, int& height) override;
    String8 getClientHDRType() override;
    int32_t getClientBitDepth() override;
    String8 getClientScanType() override;
    void getClientColorProperties(int& value) override;
    /** Since the last output frame, in milliseconds; before the first one, the clock plus 1. */
    int64_t getTimeSinceLastFrameRendered() override;
    int32_t getUid() override;
    int64_t getBufferCountSinceLastFlush() override;
    bool isVideoClientUsingSecureMem() override;
    String8 getClientCodecFormat() override;

  private:
    template <typename T, typename Read>
    T fromLogger(T fallback, Read read) const;

    int32_t mPid = 0;
    bool mIsVideo = false;
    String8 mPackageName;
    const wp<MediaCodecLogger> mLogger;
};

}  // namespace android
