// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace android::hostplatform {

/**
 * Fixes the package name that AppIdentityManager gives for a process id; null goes back to the
 * first word of the process's command line. Thread-safe.
 */
void setPackageNameForPid(int pid, const char* packageName);

}  // namespace android::hostplatform
