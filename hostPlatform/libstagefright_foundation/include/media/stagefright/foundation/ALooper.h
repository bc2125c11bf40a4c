// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <utils/RefBase.h>

#include <media/stagefright/foundation/ABase.h>

namespace android {

/** Gives its types and its clock; it runs no thread here. */
struct ALooper : public RefBase {
    typedef int32_t event_id;
    typedef int32_t handler_id;

    ALooper() = default;

    /** CLOCK_MONOTONIC in microseconds. */
    static int64_t GetNowUs();

  private:
    DISALLOW_EVIL_CONSTRUCTORS(ALooper);
};

}  // namespace android
