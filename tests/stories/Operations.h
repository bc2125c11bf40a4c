// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <inttypes.h>
#include <stdio.h>

#include <map>
#include <string>

#include "Journal.h"
#include "Stage.h"
#include "Story.h"

namespace android::test {

/** What an event's name does. */
using Operations = std::map<std::string, void (*)(Args&)>;

const Operations& stageOperations();
/** The public operations of MediaCodecLogger and of its client, under their own names. */
const Operations& loggerOperations();
/** The same of ZephraMediaAnalytic. */
const Operations& analyticsOperations();

inline void result(const std::string& value) {
    Journal::instance().result(value);
}
inline void result(const char* value) {
    result(std::string(value));
}
inline void result(int64_t value) {
    result(std::to_string(value));
}
inline void result(bool value) {
    result(value ? "true" : "false");
}
inline void result(int32_t value) {
    result(int64_t{value});
}

/** A codec as log lines show it. */
inline std::string codecText(const CodecBase* codec) {
    char text[20];
    snprintf(text, sizeof(text), "%p", static_cast<const void*>(codec));
    return text;
}

}  // namespace android::test
