// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <memory>

#include <media/stagefright/CodecBase.h>

namespace android::codecplay {

/**
 * The codec back-end as the library sees it: an identity, and the receiver of the parameters that
 * the library subscribes to. What a framework would ask of it, CodecSession does itself.
 */
class HostCodec : public CodecBase {
  public:
    /** Whether somebody asked for the vendor entries of output formats; any thread. */
    bool reportsMtkKeys() const { return mReportsMtkKeys; }

    void signalSetParameters(const sp<AMessage>& msg) override {
        if (msg->contains("vendor.mtk-codec2.hdr-type")) mReportsMtkKeys = true;
    }

    std::shared_ptr<BufferChannelBase> getBufferChannel() override { return nullptr; }
    void initiateAllocateComponent(const sp<AMessage>&) override {}
    void initiateConfigureComponent(const sp<AMessage>&) override {}
    void initiateCreateInputSurface() override {}
    void initiateSetInputSurface(const sp<PersistentSurface>&) override {}
    void initiateStart() override {}
    void initiateShutdown(bool) override {}
    void onMessageReceived(const sp<AMessage>&) override {}
    void signalFlush() override {}
    void signalResume() override {}
    void signalRequestIDRFrame() override {}
    void signalEndOfInputStream() override {}

  private:
    std::atomic<bool> mReportsMtkKeys{false};
};

}  // namespace android::codecplay
