// SPDX-License-Identifier: Apache-2.0
#include <stdio.h>
#include <unistd.h>

#include <binder/ProcessState.h>
#include <tools/codeclogger/Within.h>
#include <utils/String16.h>

#include "Options.h"
#include "Service.h"
#include "Watch.h"

namespace android::codecloggerctl {

namespace {

int show(const Service& service, const Options& options) {
    codeclogger::ServiceState state{};
    if (!readState(service, &state)) return EXIT_NO_SERVICE;
    codeclogger::CodecQuery query;
    const codeclogger::View view = codeclogger::show(options.request, state, &query);
    if (view.status != OK) {
        fprintf(stderr, "codecloggerctl: %s\n", view.text.c_str());
        return EXIT_FAILED;
    }
    return print(view.text) ? EXIT_OK : EXIT_FAILED;
}

int setAllowlist(const Service& service, const Options& options) {
    const auto status = codeclogger::within(kPatienceMs, [service, options] {
        const auto label =
                options.label.empty() ? nullptr : std::make_unique<std::string>(options.label);
        return service.logger->setMitigateFrameDropAllowlist(label, options.packages,
                                                             options.exceptions);
    });
    if (!status) return serviceSilent();
    if (status->isOk()) return EXIT_OK;
    if (status->transactionError() == BAD_VALUE) {
        fputs("codecloggerctl: a name or the label is not UTF-8\n", stderr);
        return EXIT_FAILED;
    }
    return serviceGone();
}

/** The service itself writes to our standard output. */
int dump(const Service& service, const Options& options) {
    // For the codecs' second and for a terminal that is slow.
    constexpr int64_t kDumpPatienceMs = 10000;
    Vector<String16> words;
    for (const std::string& word : options.words) words.add(String16(word.c_str()));
    const sp<IBinder> binder = IInterface::asBinder(service.logger);
    const auto status = codeclogger::within(
            kDumpPatienceMs, [binder, words] { return binder->dump(STDOUT_FILENO, words); });
    if (!status) return serviceSilent();
    switch (*status) {
        case OK:
            return EXIT_OK;
        case BAD_VALUE:
            return EXIT_USAGE;
        case DEAD_OBJECT:
            return serviceGone();
        default:
            return EXIT_FAILED;
    }
}

int run(int argc, char** argv) {
    Options options;
    if (const auto code = parseOptions(argc, argv, &options)) return *code;
    Service service;
    if (!findService(&service)) return EXIT_NO_SERVICE;
    ProcessState::self()->startThreadPool();
    switch (options.command) {
        case Command::SHOW:
            return show(service, options);
        case Command::WATCH:
            return watch(service, options);
        case Command::LISTEN:
            return listen(service, options);
        case Command::ALLOWLIST_SET:
            return setAllowlist(service, options);
        case Command::DUMP:
            return dump(service, options);
    }
    return EXIT_FAILED;
}

}  // namespace

}  // namespace android::codecloggerctl

int main(int argc, char** argv) {
    return android::codeclogger::leave(android::codecloggerctl::run(argc, argv));
}
