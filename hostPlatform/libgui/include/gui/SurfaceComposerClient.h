// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <limits>
#include <memory>

#include <binder/IBinder.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>

#include <ui/PhysicalDisplayId.h>

namespace android {

struct DisplayConfig;

/** The queries about displays. There is one display, with the id 0. Thread-safe. */
class SurfaceComposerClient : public RefBase {
  public:
    /** Null for every other id, and while the display is disconnected. */
    static sp<IBinder> getPhysicalDisplayToken(PhysicalDisplayId displayId);

    /** NAME_NOT_FOUND for a token that is not the display's. */
    static status_t getActiveDisplayConfig(const sp<IBinder>& display, DisplayConfig* config);
};

}  // namespace android
