// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <binder/IInterface.h>
#include <binder/Parcel.h>
#include <binder/Status.h>
#include <utils/String8.h>

#include <mediaCodecLogger/binder/IMediaCodecLoggerClient.h>
#include <mediaCodecLogger/binder/media/IMediaCodecLoggerListener.h>

namespace android {

/** Under this name the logger service is registered with the service manager. */
inline constexpr char kLoggerServiceName[] = "zephra_media_codec_logger";

/**
 * The system-wide logger service, as codecs see it: they register here, report their first frame
 * and output after a pause, and ask whether their app is on the allowlist of frame-drop mitigation.
 * Observers use media::IMediaCodecLoggerService, whose methods are the codes 7 to 14 of this one
 * under the same descriptor; one object serves both kinds of caller.
 *
 * A client id is chosen by the codec's process, which keeps it unique only within itself.
 *
 * Calls block until the service replies, except the two events `onFirstFrameRendered()` and
 * `onOutBufferAvailableAfterDelay()`. A proxy may be used on any thread. When the service is gone,
 * void methods return, status methods carry the error, out-values stay as they are and values are 0
 * or empty; some calls log a warning.
 *
 * Two codes are crossed on purpose against the order of the methods; see docs/service-protocol.md.
 */
class IMediaCodecLoggerService : public IInterface {
  public:
    DECLARE_META_INTERFACE(MediaCodecLoggerService)

    virtual void registerClient(int64_t id, const sp<IMediaCodecLoggerClient>& client) = 0;
    virtual void unregisterClient(int64_t id) = 0;
    /** The client whose video is playing, and its id; null, with `id` as it was, on failure. */
    virtual sp<IMediaCodecLoggerClient> getActiveVideoClient(int64_t& id) = 0;
    /** The texts, which may be null, are sent only when `flagB` is false. */
    virtual void updateHidlMediaMetrics(const char* first, const char* second, const bool& flagA,
                                        const bool& flagB) = 0;
    /** One-way. */
    virtual void onFirstFrameRendered(int64_t id) = 0;
    /** One-way. */
    virtual void onOutBufferAvailableAfterDelay(int64_t id, int64_t delayMs) = 0;
    virtual binder::Status registerListener(const sp<media::IMediaCodecLoggerListener>& listener,
                                            int64_t* listenerId) = 0;
    virtual binder::Status unregisterListener(int64_t listenerId) = 0;
    virtual binder::Status getTimeSinceLastFrameRendered(int64_t id, int64_t* ms) = 0;
    virtual binder::Status getActiveVideoClients(std::vector<int64_t>* ids) = 0;
    virtual binder::Status getUid(int64_t id, int32_t* uid) = 0;
    virtual binder::Status getBufferCountSinceLastFlush(int64_t id, int64_t* count) = 0;
    virtual binder::Status isVideoClientUsingSecureMem(int64_t id, bool* secure) = 0;
    virtual binder::Status setMitigateFrameDropAllowlist(const std::unique_ptr<std::string>& text,
                                                         const std::vector<std::string>& listA,
                                                         const std::vector<std::string>& listB) = 0;
    /** Non-zero when the package is on the allowlist. Null counts as an empty name. */
    virtual int32_t isInMitigateFrameDropAllowlist(const char* packageName) = 0;
    virtual String8 getOldestAudioClientCodec() = 0;
};

class BpMediaCodecLoggerService : public BpInterface<IMediaCodecLoggerService> {
  public:
    explicit BpMediaCodecLoggerService(const sp<IBinder>& remote);

    void registerClient(int64_t id, const sp<IMediaCodecLoggerClient>& client) override;
    void unregisterClient(int64_t id) override;
    sp<IMediaCodecLoggerClient> getActiveVideoClient(int64_t& id) override;
    void updateHidlMediaMetrics(const char* first, const char* second, const bool& flagA,
                                const bool& flagB) override;
    void onFirstFrameRendered(int64_t id) override;
    void onOutBufferAvailableAfterDelay(int64_t id, int64_t delayMs) override;
    binder::Status registerListener(const sp<media::IMediaCodecLoggerListener>& listener,
                                    int64_t* listenerId) override;
    binder::Status unregisterListener(int64_t listenerId) override;
    binder::Status getTimeSinceLastFrameRendered(int64_t id, int64_t* ms) override;
    binder::Status getActiveVideoClients(std::vector<int64_t>* ids) override;
    binder::Status getUid(int64_t id, int32_t* uid) override;
    binder::Status getBufferCountSinceLastFlush(int64_t id, int64_t* count) override;
    binder::Status isVideoClientUsingSecureMem(int64_t id, bool* secure) override;
    binder::Status setMitigateFrameDropAllowlist(const std::unique_ptr<std::string>& text,
                                                 const std::vector<std::string>& listA,
                                                 const std::vector<std::string>& listB) override;
    int32_t isInMitigateFrameDropAllowlist(const char* packageName) override;
    String8 getOldestAudioClientCodec() override;

  private:
    template <typename... Arguments>
    status_t call(uint32_t code, uint32_t flags, Parcel* reply, const Arguments&... arguments);
    template <typename T>
    binder::Status askAboutClient(uint32_t code, int64_t id, T* value);
};

/** Checks the interface token and nothing else: who may call what is for the service to decide. */
class BnMediaCodecLoggerService : public BnInterface<IMediaCodecLoggerService> {
  protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply,
                        uint32_t flags = 0) override;
};

}  // namespace android
