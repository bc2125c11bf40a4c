// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace android::hostplatform {

/** Forgets every property of this process. Thread-safe. */
void clearProperties();

/**
 * While true, each property_set() fails with -1 and changes nothing, as on a device whose policy
 * forbids the caller to set properties. Thread-safe.
 */
void failPropertySet(bool fail);

}  // namespace android::hostplatform
