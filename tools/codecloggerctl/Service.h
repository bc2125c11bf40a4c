// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>
#include <string>

#include <android/codeclogger/ICodecLoggerAdmin.h>
#include <android/codeclogger/ServiceState.h>
#include <mediaCodecLogger/binder/media/IMediaCodecLoggerService.h>

namespace android::codecloggerctl {

/** How long the service may take to answer. */
constexpr int64_t kPatienceMs = 2000;

/** The running logger service. */
struct Service {
    sp<media::IMediaCodecLoggerService> logger;
    /** Null if the service is another than codecloggerd. */
    sp<codeclogger::ICodecLoggerAdmin> admin;
};

/** False, with a message, when none runs or answers. */
bool findService(Service* service);

/** False, with a message, when the service has gone, does not answer or cannot list its codecs. */
bool readState(const Service& service, codeclogger::ServiceState* state);

/** Says that the service has gone, and returns the exit code for that. */
int serviceGone();

/** Says that the service does not answer, and returns the exit code for that. */
int serviceSilent();

/** Writes to standard output at once; false, with a message, when that fails. */
bool print(const std::string& text);

}  // namespace android::codecloggerctl
