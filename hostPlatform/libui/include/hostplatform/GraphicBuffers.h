// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utils/Errors.h>

namespace android::hostplatform {

/** Makes each GraphicBuffer::lock() fail with this status; NO_ERROR ends that. Thread-safe. */
void setBufferLockFailure(status_t status);

/** While true, a successful GraphicBuffer::lock() yields a null address. Thread-safe. */
void setBufferMapsToNull(bool mapsToNull);

/** Locks that no unlock followed yet, over all buffers of the process. */
int lockedBufferCount();

}  // namespace android::hostplatform
