// SPDX-License-Identifier: Apache-2.0
#include "model/Incident.h"

namespace android::codecreport {

const char* toString(Cause cause) {
    static constexpr const char* kNames[] = {"input_starved", "decryption",  "codec",
                                             "message_delay", "application", "display_queue",
                                             "display_rate",  "unknown"};
    return kNames[static_cast<size_t>(cause)];
}

const char* inWords(Cause cause) {
    static constexpr const char* kNames[] = {"input starved", "decryption",  "codec",
                                             "message delay", "application", "display queue",
                                             "display rate",  "unknown"};
    return kNames[static_cast<size_t>(cause)];
}

const char* toString(Place place) {
    static constexpr const char* kNames[] = {"playback", "start", "seek", "flush", "end"};
    return kNames[static_cast<size_t>(place)];
}

const char* toString(Word word) {
    static constexpr const char* kNames[] = {"smooth", "stuttered", "broke off", "cannot tell"};
    return kNames[static_cast<size_t>(word)];
}

const char* toString(Jank jank) {
    static constexpr const char* kNames[] = {"none", "late", "dropped", "replaced", "stood"};
    return kNames[static_cast<size_t>(jank)];
}

}  // namespace android::codecreport
