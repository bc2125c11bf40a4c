// SPDX-License-Identifier: Apache-2.0
#include <getopt.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>

#include <limits>
#include <memory>

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <log/log.h>

#include "LoggerService.h"

namespace codeclogger {

namespace {

using android::sp;
using android::String16;

enum ExitCode { EXIT_REFUSED = 1, EXIT_USAGE = 2 };

constexpr char kUsage[] =
        "Examples:\n"
        "  codecloggerd              serve until the program is ended\n"
        "  codecloggerd --replace    take over from a service that runs already\n"
        "\n"
        "Usage: codecloggerd [OPTION...]\n"
        "A logger service that media codecs register with; codecloggerctl asks it.\n"
        "\n"
        "  -r, --replace    serve even if another logger service answers\n"
        "  -h, --help       show this and exit\n"
        "      --version    show the version and exit\n"
        "\n"
        "Exit status: 0 after SIGTERM, 130 after SIGINT, 1 if a service runs already or the names\n"
        "cannot be registered, 2 on a usage error.\n";

struct Options {
    bool replace = false;
};

/** Exits when the command line asks for help or is wrong. */
Options parse(int argc, char** argv) {
    enum { OPTION_VERSION = 1 };
    const option kOptions[] = {{"replace", no_argument, nullptr, 'r'},
                               {"help", no_argument, nullptr, 'h'},
                               {"version", no_argument, nullptr, OPTION_VERSION},
                               {}};
    Options options;
    int c;
    while ((c = getopt_long(argc, argv, "rh", kOptions, nullptr)) != -1) {
        switch (c) {
            case 'r':
                options.replace = true;
                break;
            case 'h':
                fputs(kUsage, stdout);
                exit(EXIT_SUCCESS);
            case OPTION_VERSION:
                puts("codecloggerd " CODECLOGGER_VERSION);
                exit(EXIT_SUCCESS);
            default:
                exit(EXIT_USAGE);
        }
    }
    if (optind < argc) {
        fprintf(stderr, "codecloggerd: %s: no argument is expected\n", argv[optind]);
        exit(EXIT_USAGE);
    }
    return options;
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
    const Options options = parse(argc, argv);
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
