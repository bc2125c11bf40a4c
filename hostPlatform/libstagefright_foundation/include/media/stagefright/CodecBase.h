// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include <utils/Errors.h>

#include <media/stagefright/foundation/AHandler.h>
#include <media/stagefright/foundation/ColorUtils.h>

namespace android {

class BufferChannelBase;
struct PersistentSurface;
class Surface;

/** What the media framework asks of a codec back-end. All requests are asynchronous. */
struct CodecBase : public AHandler, /* static */ ColorUtils {
    virtual std::shared_ptr<BufferChannelBase> getBufferChannel() = 0;

    virtual void initiateAllocateComponent(const sp<AMessage>& msg) = 0;
    virtual void initiateConfigureComponent(const sp<AMessage>& msg) = 0;
    virtual void initiateCreateInputSurface() = 0;
    virtual void initiateSetInputSurface(const sp<PersistentSurface>& surface) = 0;
    virtual void initiateStart() = 0;
    virtual void initiateShutdown(bool keepComponentAllocated = false) = 0;

    virtual void onMessageReceived(const sp<AMessage>& msg) = 0;

    virtual status_t setSurface(const sp<Surface>& /*surface*/) { return INVALID_OPERATION; }

    virtual void signalFlush() = 0;
    virtual void signalResume() = 0;
    virtual void signalRequestIDRFrame() = 0;
    virtual void signalSetParameters(const sp<AMessage>& msg) = 0;
    virtual void signalEndOfInputStream() = 0;

  protected:
    CodecBase() = default;
    virtual ~CodecBase() = default;

  private:
    DISALLOW_EVIL_CONSTRUCTORS(CodecBase);
};

}  // namespace android
