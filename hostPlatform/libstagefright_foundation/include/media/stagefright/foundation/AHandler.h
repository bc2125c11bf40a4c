// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <utils/RefBase.h>

#include <media/stagefright/foundation/ABase.h>
#include <media/stagefright/foundation/ALooper.h>

namespace android {

struct AMessage;

/** Receives messages. Here no looper delivers any; codecs call each other directly. */
struct AHandler : public RefBase {
    AHandler() = default;

    ALooper::handler_id id() const { return 0; }
    sp<ALooper> looper() const { return nullptr; }

  protected:
    virtual void onMessageReceived(const sp<AMessage>& msg) = 0;

  private:
    DISALLOW_EVIL_CONSTRUCTORS(AHandler);
};

}  // namespace android
