// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace android::codecplay {

// What is said on standard error: complaints, and on a terminal one line of progress, which gives
// way to them. Thread-safe.

/** "codecplay: WHAT: TEXT" */
void complain(const std::string& what, const std::string& text);

/** Replaces the line of progress; cut to the terminal's width. Empty takes it away. */
void showProgress(const std::string& text);

/** Whether there is a line of progress: not without a terminal, nor where the log shares it. */
void allowProgress(bool allowed);
bool progressAllowed();

}  // namespace android::codecplay
