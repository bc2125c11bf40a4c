// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace android::codecplay {

class OutputFile;

/**
 * Writes the process's log to a file from now on, in logcat's threadtime form. The file must live
 * as long as the process.
 */
void startLog(OutputFile* file);

}  // namespace android::codecplay
