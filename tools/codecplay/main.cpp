// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <atomic>
#include <limits>
#include <memory>
#include <thread>

#include <binder/ProcessState.h>
#include <cutils/properties.h>
#include <hostplatform/Display.h>
#include <hostplatform/MetricsSink.h>

#include "Ffmpeg.h"
#include "LogWriter.h"
#include "Options.h"
#include "Player.h"
#include "Summary.h"

namespace android::codecplay {

namespace {

std::atomic<bool> gStop{false};

int cannotWrite(const std::string& file) {
    fprintf(stderr, "codecplay: %s: cannot be written: %s\n", file.c_str(), strerror(errno));
    return EXIT_CANNOT_WRITE;
}

/** The library takes the package name from the command line, so that has to begin with it. */
void takePackageName(const std::string& package, char** argv) {
    if (package == argv[0]) return;
    std::string name = package;
    argv[0] = name.data();
    execv("/proc/self/exe", argv);
}

void handleSignals() {
    struct sigaction action = {};
    action.sa_handler = [](int) { gStop = true; };
    // The second signal ends the program the hard way.
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    // A reader of the log that goes away does not end playback; the report is yet to come.
    signal(SIGPIPE, SIG_IGN);
}

/** Opens what the log goes to; -1 for nothing. */
int openLog(const Options& options) {
    if (options.logFile.empty()) return options.json || options.quiet ? -1 : STDOUT_FILENO;
    return open(options.logFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
}

std::vector<FileResult> playFile(const Options& options, const std::string& file) {
    std::vector<FileResult> results(static_cast<size_t>(options.instances));
    std::vector<std::thread> threads;
    collectFfmpegMessages(file, options.quiet);
    for (int i = 0; i < options.instances; ++i) {
        threads.emplace_back([&, i] {
            results[static_cast<size_t>(i)] =
                    std::make_unique<Player>(options, file, i + 1, gStop)->play();
        });
    }
    for (std::thread& thread : threads) thread.join();
    reportFfmpegMessages();
    return results;
}

int run(const Options& options) {
    for (const auto& [name, value] : options.properties) {
        if (property_set(name.c_str(), value.c_str()) != 0) {
            fprintf(stderr, "codecplay: --prop %s: the value is too long\n", name.c_str());
            return EXIT_USAGE;
        }
    }
    if (options.displayWidth > 0) {
        hostplatform::setDisplaySize(options.displayWidth, options.displayHeight);
    }
    if (!options.metricsFile.empty() &&
        !hostplatform::openMetricsFile(options.metricsFile.c_str())) {
        return cannotWrite(options.metricsFile);
    }
    const int logFd = openLog(options);
    if (logFd < 0 && !options.logFile.empty()) return cannotWrite(options.logFile);
    startLog(logFd);
    handleSignals();
    ProcessState::self()->startThreadPool();

    std::vector<FileResult> results;
    int exitCode = EXIT_PLAYED;
    // With the log on standard output the summary would be in its way.
    FILE* const summary = logFd == STDOUT_FILENO ? stderr : stdout;
    for (const std::string& file : options.files) {
        if (gStop) break;
        for (FileResult& result : playFile(options, file)) {
            if (exitCode == EXIT_PLAYED || result.exitCode == EXIT_NOT_PLAYABLE) {
                exitCode = result.exitCode;
            }
            if (!options.quiet && !options.json) printSummary(summary, result);
            results.push_back(std::move(result));
        }
    }
    if (gStop) exitCode = EXIT_INTERRUPTED;
    if (logWriteFailed()) {
        exitCode = cannotWrite(options.logFile.empty() ? "standard output" : options.logFile);
    }
    if (options.json) printJson(stdout, results, exitCode);
    return exitCode;
}

}  // namespace

}  // namespace android::codecplay

int main(int argc, char** argv) {
    using namespace android::codecplay;
    Options options;
    const ParseResult parsed = parseOptions(argc, argv, &options);
    if (!parsed.run) return parsed.exitCode;
    takePackageName(options.package, argv);
    return run(options);
}
