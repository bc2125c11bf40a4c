// SPDX-License-Identifier: Apache-2.0
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>

#include <limits>
#include <memory>

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <log/log.h>
#include <tools/options/OptionTable.h>

#include "LoggerService.h"

namespace codeclogger {

namespace {

using android::sp;
using android::String16;
namespace options = android::options;

enum ExitCode { EXIT_REFUSED = 1 };

struct Options {
    bool replace = false;
};

options::Program program(Options* options) {
    return {"codecloggerd",
            CODECLOGGER_VERSION,
            {"[OPTION...]"},
            "A logger service that media codecs register with; codecloggerctl asks it. It serves "
            "until "
            "it is ended.",
            {},
            {{"Service",
              nullptr,
              {{"replace", 'r', nullptr, "serve even if another logger service answers",
                [options](const char*) { return options->replace = true; }}}}},
            nullptr,
            {{0, "ended by SIGTERM"},
             {1, "a service runs already, or the names cannot be registered"},
             {2, "usage"},
             {130, "ended by SIGINT"}}};
}

bool serve(const Options& options) {
    const sp<android::IServiceManager> manager = android::defaultServiceManager();
    const String16 name(android::kLoggerServiceName);
    const sp<android::IBinder> other = manager->checkService(name);
    if (other != nullptr && other->pingBinder() == android::OK && !options.replace) {
        fprintf(stderr, "codecloggerd: a logger service runs already; --replace takes over\n");
        return false;
    }
    const sp<LoggerService> service = new LoggerService;
    // The admin interface first: who finds the service finds both.
    if (manager->addService(ICodecLoggerAdmin::SERVICE_NAME(), new AdminService(service)) !=
                android::OK ||
        manager->addService(name, service) != android::OK) {
        fprintf(stderr, "codecloggerd: %s cannot be registered\n", android::kLoggerServiceName);
        return false;
    }
    android::ProcessState::self()->startThreadPool();
    fprintf(stderr, "codecloggerd: serving as %s\n", android::kLoggerServiceName);
    return true;
}

int run(int argc, char** argv) {
    Options options;
    const options::Program table = program(&options);
    std::vector<std::string> operands;
    if (const auto code = options::parse(table, argc, argv, &operands)) return *code;
    if (!operands.empty())
        return options::complain(table, operands[0] + ": no argument is expected");
    // Before any thread starts, so that only sigwait() gets them.
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    sigprocmask(SIG_BLOCK, &ends, nullptr);
    if (!serve(options)) return EXIT_REFUSED;
    int number = 0;
    sigwait(&ends, &number);
    return number == SIGINT ? 128 + SIGINT : EXIT_SUCCESS;
}

}  // namespace

}  // namespace codeclogger

int main(int argc, char** argv) {
    return codeclogger::run(argc, argv);
}
