// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <memory>
#include <mutex>
#include <vector>

#include <media/stagefright/CodecBase.h>
#include <media/stagefright/foundation/AMessage.h>

namespace android::test {

/** A codec that does nothing but keep the parameters that it is sent. Thread-safe. */
struct FakeCodec : public CodecBase {
    /** The messages of signalSetParameters(), oldest first. */
    std::vector<sp<AMessage>> parameters() const;

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
    void signalSetParameters(const sp<AMessage>& msg) override;
    void signalEndOfInputStream() override {}

  private:
    mutable std::mutex mLock;
    std::vector<sp<AMessage>> mParameters;
};

}  // namespace android::test
