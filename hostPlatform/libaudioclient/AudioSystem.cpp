// SPDX-License-Identifier: Apache-2.0
#include <media/AudioSystem.h>

#include <mutex>
#include <string>

#include <hostplatform/Audio.h>

namespace android {

namespace {

struct AudioServer {
    std::mutex lock;
    // Not a String8: its buffer is counted inside libutils, where ThreadSanitizer cannot see it.
    std::string reply;
    int queryCount = 0;
};

// Never destroyed: codecs may still ask while the process exits.
AudioServer& audioServer() {
    static AudioServer& instance = *new AudioServer;
    return instance;
}

}  // namespace

String8 AudioSystem::getParameters(audio_io_handle_t /*ioHandle*/, const String8& /*keys*/) {
    std::lock_guard<std::mutex> guard(audioServer().lock);
    ++audioServer().queryCount;
    return String8(audioServer().reply.data(), audioServer().reply.size());
}

String8 AudioSystem::getParameters(const String8& keys) {
    return getParameters(0, keys);
}

namespace hostplatform {

void setAudioParameters(const char* keyValuePairs) {
    std::lock_guard<std::mutex> guard(audioServer().lock);
    audioServer().reply = keyValuePairs;
}

int audioQueryCount() {
    std::lock_guard<std::mutex> guard(audioServer().lock);
    return audioServer().queryCount;
}

}  // namespace hostplatform

}  // namespace android
