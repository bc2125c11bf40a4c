// SPDX-License-Identifier: Apache-2.0
#include <tests/support/FakeCodec.h>

namespace android::test {

std::vector<sp<AMessage>> FakeCodec::parameters() const {
    std::lock_guard<std::mutex> guard(mLock);
    return mParameters;
}

void FakeCodec::signalSetParameters(const sp<AMessage>& msg) {
    std::lock_guard<std::mutex> guard(mLock);
    mParameters.push_back(msg);
}

}  // namespace android::test
