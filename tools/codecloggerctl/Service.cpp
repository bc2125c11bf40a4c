// SPDX-License-Identifier: Apache-2.0
#include "Service.h"

#include <stdio.h>

#include <binder/IServiceManager.h>
#include <mediaCodecLogger/binder/IMediaCodecLoggerService.h>
#include <utils/String16.h>

#include "Options.h"

namespace codecloggerctl {

using android::IBinder;
using android::sp;
using android::String16;

bool findService(Service* service) {
    const sp<android::IServiceManager> manager = android::defaultServiceManager();
    const sp<IBinder> binder = manager->checkService(String16(android::kLoggerServiceName));
    if (binder == nullptr || binder->pingBinder() != android::OK) {
        fprintf(stderr,
                "codecloggerctl: no logger service is running: nobody serves %s. codecloggerd is "
                "one.\n",
                android::kLoggerServiceName);
        return false;
    }
    const sp<IBinder> admin = manager->checkService(codeclogger::ICodecLoggerAdmin::SERVICE_NAME());
    if (admin == nullptr) {
        fprintf(stderr,
                "codecloggerctl: the logger service that runs is not codecloggerd and cannot list "
                "its codecs\n");
        return false;
    }
    service->logger = android::media::IMediaCodecLoggerService::asInterface(binder);
    service->admin = codeclogger::ICodecLoggerAdmin::asInterface(admin);
    return true;
}

bool readState(const Service& service, codeclogger::ServiceState* state) {
    if (service.admin->getState(state).isOk()) return true;
    serviceGone();
    return false;
}

int serviceGone() {
    fputs("codecloggerctl: the logger service has gone\n", stderr);
    return EXIT_NO_SERVICE;
}

}  // namespace codecloggerctl
