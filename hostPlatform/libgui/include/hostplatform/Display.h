// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utils/Errors.h>

namespace android::hostplatform {

/** The display's size in pixels; 1920x1080 from the start. */
void setDisplaySize(int width, int height);

/** Without a display there is no token for it. Connected from the start. */
void setDisplayConnected(bool connected);

/** Makes the query of the display's configuration return this status. */
void setDisplayConfigStatus(status_t status);

/** How often this process asked for a display's token. */
int displayQueryCount();

}  // namespace android::hostplatform
