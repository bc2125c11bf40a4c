// SPDX-License-Identifier: Apache-2.0
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>

#include <limits>
#include <memory>

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <log/log.h>
#include <tools/codeclogger/Within.h>
#include <tools/options/OptionTable.h>

#include "LoggerService.h"

namespace android::codecloggerd {

namespace {

enum ExitCode { EXIT_REFUSED = 1 };

struct Options {
    bool replace = false;
};

options::Program program(Options* options) {
    return {"codecloggerd",
            CODECLOGGER_VERSION,
            {"[OPTION...]"},
            "A logger service that media codecs register with; codecloggerctl asks it. It serves "
            "until it is ended.",
            {},
            {{"Service",
              nullptr,
              {{"replace", 'r', nullptr,
                "serve even if another logger service is there. Codecs that registered with that "
                "one stay "
                "with it until they are released",
                [options](const char*) { return options->replace = true; }}}}},
            nullptr,
            {{0, "ended by SIGTERM"},
             {1, "a service runs already, or the names cannot be registered"},
             {2, "usage"},
             {130, "ended by SIGINT"}}};
}

constexpr int64_t kPatienceMs = 2000;

/** Whether this service may start; says what becomes of the codecs of one that it replaces. */
bool mayServe(const sp<IBinder>& other, const Options& options) {
    if (other == nullptr) return true;
    const auto ping = codeclogger::within(kPatienceMs, [other] { return other->pingBinder(); });
    if (ping && *ping != OK) return true;
    if (!options.replace) {
        fprintf(stderr, "codecloggerd: a logger service %s; --replace takes over\n",
                ping ? "runs already" : "is there but does not answer");
        return false;
    }
    const auto admin = interface_cast<codeclogger::ICodecLoggerAdmin>(
            defaultServiceManager()->checkService(codeclogger::ICodecLoggerAdmin::SERVICE_NAME()));
    if (!ping || admin == nullptr) return true;
    const auto state = codeclogger::within(kPatienceMs, [admin] {
        ServiceState answer{};
        admin->getState(&answer);
        return answer;
    });
    if (state && !state->clients.empty()) {
        fprintf(stderr,
                "codecloggerd: codecs that stay with the service of process %d until they are "
                "released: %zu\n",
                state->pid, state->clients.size());
    }
    return true;
}

bool serve(const Options& options) {
    const sp<IServiceManager> manager = defaultServiceManager();
    const String16 name(kLoggerServiceName);
    if (!mayServe(manager->checkService(name), options)) return false;
    const sp<LoggerService> service = new LoggerService;
    const String16& adminName = codeclogger::ICodecLoggerAdmin::SERVICE_NAME();
    // The admin interface first: who finds the service finds both.
    if (manager->addService(adminName, new AdminService(service)) != OK ||
        manager->addService(name, service) != OK) {
        fprintf(stderr, "codecloggerd: %s cannot be registered\n", kLoggerServiceName);
        return false;
    }
    ProcessState::self()->startThreadPool();
    fprintf(stderr, "codecloggerd: serving as %s\n", kLoggerServiceName);
    return true;
}

int run(int argc, char** argv) {
    Options options;
    const options::Program table = program(&options);
    std::vector<std::string> operands;
    if (const auto code = options::parse(table, argc, argv, &operands)) return *code;
    if (!operands.empty())
        return options::complain(table, operands[0] + ": no argument is expected");
    // The reader of a dump may go away.
    signal(SIGPIPE, SIG_IGN);
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

}  // namespace android::codecloggerd

int main(int argc, char** argv) {
    return android::codeclogger::leave(android::codecloggerd::run(argc, argv));
}
