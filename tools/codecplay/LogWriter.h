// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace android::codecplay {

/**
 * Sends every line of the process's log, of all priorities, to a file descriptor in logcat's
 * threadtime form: "MM-DD HH:MM:SS.mmm  PID  TID P TAG     : text". Each line is written at once
 * and whole, so a killed process leaves a readable log.
 *
 * @param fd stays the caller's; -1 discards the log
 */
void startLog(int fd);

/** Whether a line could not be written, other than to a reader that went away. */
bool logWriteFailed();

}  // namespace android::codecplay
