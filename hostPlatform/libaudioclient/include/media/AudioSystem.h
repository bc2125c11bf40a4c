// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utils/String8.h>

typedef int audio_io_handle_t;

namespace android {

/** The queries to the audio server. Thread-safe. */
class AudioSystem {
  public:
    /**
     * The server's reply to a query for keys: "key=value" pairs joined by ";", empty without an
     * audio server. ioHandle 0 asks for the global parameters.
     */
    static String8 getParameters(audio_io_handle_t ioHandle, const String8& keys);
    static String8 getParameters(const String8& keys);
};

}  // namespace android
