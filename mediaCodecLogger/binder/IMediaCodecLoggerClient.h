// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <limits>
#include <memory>

#include <binder/IInterface.h>
#include <binder/Parcel.h>
#include <utils/String8.h>

namespace android {

/**
 * What the logger service can ask one codec. Every codec logger serves it and hands it to the
 * service with `IMediaCodecLoggerService::registerClient()`.
 *
 * Calls are two-way and may come on any thread at any time. A proxy whose codec is gone answers
 * with an empty text, false or 0 and logs nothing.
 *
 * The order of the methods is the order of the transaction codes; see docs/service-protocol.md.
 */
class IMediaCodecLoggerClient : public IInterface {
  public:
    DECLARE_META_INTERFACE(MediaCodecLoggerClient)

    /** The status for people: lines that start with a tab. */
    virtual String8 getStatus() = 0;
    /** The package of the process that owns the codec. */
    virtual String8 getPackageName() = 0;
    virtual bool isVideoClient() = 0;
    /** The process that owns the codec. */
    virtual int32_t getPid() = 0;
    /** Sets the identity of the implementing object. Local only: a proxy does nothing. */
    virtual void initialize(int pid, bool isVideo, String8 packageName) = 0;
    /** In pixels. The arguments stay as they are when the codec cannot be asked. */
    virtual void getClientResolution(int& width, int& height) = 0;
    virtual String8 getClientHDRType() = 0;
    virtual int32_t getClientBitDepth() = 0;
    virtual String8 getClientScanType() = 0;
    /** The colour standard. `value` stays as it is when the codec cannot be asked. */
    virtual void getClientColorProperties(int& value) = 0;

    // Later additions; an implementation that predates one answers with the default given here.

    /** In milliseconds. */
    virtual int64_t getTimeSinceLastFrameRendered();  // 0
    /** The user of the owning process. A proxy whose codec is gone answers 0, not -1. */
    virtual int32_t getUid();  // -1
    /** Frames output since the last flush or seek. */
    virtual int64_t getBufferCountSinceLastFlush();  // 0
    virtual bool isVideoClientUsingSecureMem();      // false
    /** The short name of the format, for example avc. */
    virtual String8 getClientCodecFormat();  // "other"
};

class BpMediaCodecLoggerClient : public BpInterface<IMediaCodecLoggerClient> {
  public:
    explicit BpMediaCodecLoggerClient(const sp<IBinder>& remote);

    String8 getStatus() override;
    String8 getPackageName() override;
    bool isVideoClient() override;
    int32_t getPid() override;
    void initialize(int pid, bool isVideo, String8 packageName) override;
    void getClientResolution(int& width, int& height) override;
    String8 getClientHDRType() override;
    int32_t getClientBitDepth() override;
    String8 getClientScanType() override;
    void getClientColorProperties(int& value) override;
    int64_t getTimeSinceLastFrameRendered() override;
    int32_t getUid() override;
    int64_t getBufferCountSinceLastFlush() override;
    bool isVideoClientUsingSecureMem() override;
    String8 getClientCodecFormat() override;

  private:
    status_t call(uint32_t code, Parcel* reply);
    template <typename T>
    T ask(uint32_t code, T (Parcel::*read)() const);
};

class BnMediaCodecLoggerClient : public BnInterface<IMediaCodecLoggerClient> {
  public:
    String8 getClientHDRType() override;   // empty
    int32_t getClientBitDepth() override;  // 0
    String8 getClientScanType() override;  // empty

  protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply,
                        uint32_t flags = 0) override;
};

}  // namespace android
