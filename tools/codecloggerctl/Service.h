// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <memory>

#include <codeclogger/ICodecLoggerAdmin.h>
#include <codeclogger/ServiceState.h>
#include <mediaCodecLogger/binder/media/IMediaCodecLoggerService.h>

namespace codecloggerctl {

/** The running logger service. */
struct Service {
    android::sp<android::media::IMediaCodecLoggerService> logger;
    android::sp<codeclogger::ICodecLoggerAdmin> admin;
};

/** False, with a message, when none runs. */
bool findService(Service* service);

/** False, with a message, when the service has gone. */
bool readState(const Service& service, codeclogger::ServiceState* state);

/** Says that the service has gone, and returns the exit code for that. */
int serviceGone();

}  // namespace codecloggerctl
