// SPDX-License-Identifier: Apache-2.0
#include "Service.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>

#include <binder/IServiceManager.h>
#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>
#include <tools/codeclogger/Within.h>
#include <utils/String16.h>

#include "Options.h"

namespace android::codecloggerctl {

using codeclogger::ICodecLoggerAdmin;
using codeclogger::ServiceState;
using codeclogger::within;

bool findService(Service* service) {
    const sp<IServiceManager> manager = defaultServiceManager();
    const sp<IBinder> binder = manager->checkService(String16(kLoggerServiceName));
    const auto ping = within(kPatienceMs, [binder] {
        return binder != nullptr ? binder->pingBinder() : status_t{NAME_NOT_FOUND};
    });
    if (!ping) {
        serviceSilent();
        return false;
    }
    if (*ping != OK) {
        fprintf(stderr,
                "codecloggerctl: no logger service is running: nobody serves %s. codecloggerd is "
                "one.\n",
                kLoggerServiceName);
        return false;
    }
    service->logger = media::IMediaCodecLoggerService::asInterface(binder);
    service->admin = ICodecLoggerAdmin::asInterface(
            manager->checkService(ICodecLoggerAdmin::SERVICE_NAME()));
    return true;
}

bool readState(const Service& service, ServiceState* state) {
    if (service.admin == nullptr) {
        fputs("codecloggerctl: the logger service that runs is not codecloggerd and cannot list "
              "its codecs\n",
              stderr);
        return false;
    }
    const auto answer = within(kPatienceMs, [admin = service.admin] {
        ServiceState given{};
        const bool isGiven = admin->getState(&given).isOk();
        return std::make_pair(isGiven, given);
    });
    if (!answer) {
        serviceSilent();
    } else if (!answer->first) {
        serviceGone();
    } else {
        *state = answer->second;
    }
    return answer && answer->first;
}

int serviceGone() {
    fputs("codecloggerctl: the logger service has gone\n", stderr);
    return EXIT_NO_SERVICE;
}

int serviceSilent() {
    fputs("codecloggerctl: the logger service does not answer\n", stderr);
    return EXIT_NO_SERVICE;
}

bool print(const std::string& text) {
    if (fputs(text.c_str(), stdout) >= 0 && fflush(stdout) == 0) return true;
    fprintf(stderr, "codecloggerctl: standard output cannot be written: %s\n", strerror(errno));
    return false;
}

}  // namespace android::codecloggerctl
