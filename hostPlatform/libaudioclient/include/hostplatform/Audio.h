// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace android::hostplatform {

/**
 * The audio server's reply to every query, word for word: "key=value" pairs joined by ";".
 * Empty from the start, as without an audio server.
 */
void setAudioParameters(const char* keyValuePairs);

/** How often this process asked the audio server for parameters. */
int audioQueryCount();

}  // namespace android::hostplatform
