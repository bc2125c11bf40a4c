// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include <media/stagefright/CodecBase.h>
#include <media/stagefright/foundation/AMessage.h>

namespace android::test {

/** A codec that does nothing. */
struct FakeCodec : public CodecBase {
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
    void signalSetParameters(const sp<AMessage>&) override {}
    void signalEndOfInputStream() override {}
};

}  // namespace android::test
