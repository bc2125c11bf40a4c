// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <thread>

#include <binder/ProcessState.h>
#include <cutils/properties.h>
#include <hostplatform/Display.h>
#include <hostplatform/MetricsSink.h>

#include "Ffmpeg.h"
#include "LogWriter.h"
#include "Messages.h"
#include "Options.h"
#include "OutputFile.h"
#include "Player.h"
#include "StoryRecorder.h"
#include "Summary.h"

namespace android::codecplay {

namespace {

/** The signal that ended playback, or 0. */
std::atomic<int> gSignal{0};
std::atomic<bool> gStop{false};

/** Where all output goes. Never destroyed: codecs may still report while the process ends. */
struct Outputs {
    OutputFile log;
    OutputFile metrics;
    OutputFile story;
    OutputFile standard;
};

/** Says which outputs could not be written; true if all could. */
bool allWritten(const Outputs& outputs) {
    bool written = true;
    for (const OutputFile* file :
         {&outputs.log, &outputs.metrics, &outputs.story, &outputs.standard}) {
        const std::string error = file->error();
        if (error.empty()) continue;
        fprintf(stderr, "codecplay: %s\n", error.c_str());
        written = false;
    }
    return written;
}

/**
 * A descriptor that was closed would be given to the next file that is opened, which would then be
 * taken for standard input or output. What takes its place fails as a closed one does.
 */
void keepStandardDescriptors() {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(fd, F_GETFD) < 0) open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
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
    action.sa_handler = [](int number) {
        gSignal = number;
        gStop = true;
    };
    // The second signal ends the program the hard way.
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    // A reader of the log that goes away does not end playback; the report is yet to come.
    signal(SIGPIPE, SIG_IGN);
}

bool setProperties(const Options& options) {
    for (const auto& [name, value] : options.properties) {
        if (!isKnownProperty(name)) {
            complain("--prop " + name, "the library reads no property of this name");
        }
        if (property_set(name.c_str(), value.c_str()) == 0) continue;
        complain("--prop " + name, "the value is too long");
        return false;
    }
    return true;
}

bool openOutputs(const Options& options, Outputs* outputs) {
    const bool logOnStdout = options.logFile.empty() && !options.json && !options.quiet;
    if (logOnStdout) outputs->log.open("-");
    if (!options.logFile.empty()) outputs->log.open(options.logFile);
    if (!options.metricsFile.empty()) {
        outputs->metrics.open(options.metricsFile);
        hostplatform::setMetricsListener([outputs](const hostplatform::MetricsRecord& record) {
            outputs->metrics.write(hostplatform::toJson(record) + '\n');
        });
    }
    if (!options.storyFile.empty()) {
        outputs->story.open(options.storyFile);
        startStory(&outputs->story, options);
    }
    outputs->standard.open("-");
    allowProgress(!options.quiet && !outputs->log.isTerminal() && !outputs->metrics.isTerminal());
    return allWritten(*outputs);
}

std::vector<FileResult> playFile(const Options& options, const std::string& file) {
    std::vector<FileResult> results(static_cast<size_t>(options.instances));
    std::vector<std::thread> threads;
    threads.reserve(results.size());
    collectFfmpegMessages(file, options.quiet);
    for (int i = 0; i < options.instances; ++i) {
        threads.emplace_back([&, i] {
            auto player = std::make_unique<Player>(options, file, i + 1, gStop);
            results[static_cast<size_t>(i)] = player->play();
            // What is left of it still waits for its codecs.
            if (results[static_cast<size_t>(i)].abandoned) (void)player.release();
        });
    }
    for (std::thread& thread : threads) thread.join();
    reportFfmpegMessages();
    return results;
}

int run(const Options& options) {
    static Outputs& outputs = *new Outputs;
    handleSignals();
    if (!setProperties(options)) return EXIT_USAGE;
    if (options.displayWidth > 0) {
        hostplatform::setDisplaySize(options.displayWidth, options.displayHeight);
    }
    if (!openOutputs(options, &outputs)) return EXIT_CANNOT_WRITE;
    startLog(&outputs.log);
    ProcessState::self()->startThreadPool();

    std::vector<FileResult> results;
    int exitCode = EXIT_PLAYED;
    bool abandoned = false;
    // With the log or the records on standard output the summary would be in their way.
    const bool summaryOnStdout = !options.logFile.empty() && options.metricsFile != "-";
    for (const std::string& file : options.files) {
        if (gStop) break;
        for (FileResult& result : playFile(options, file)) {
            exitCode = worseExit(exitCode, result.exitCode);
            abandoned = abandoned || result.abandoned;
            if (!options.quiet && !options.json) {
                const std::string text = summaryText(result);
                summaryOnStdout ? outputs.standard.write(text) : (void)fputs(text.c_str(), stderr);
            }
            results.push_back(std::move(result));
        }
    }
    if (gStop) exitCode = worseExit(exitCode, 128 + gSignal);
    if (options.json) outputs.standard.write(jsonText(results, exitCode));
    if (!allWritten(outputs)) exitCode = EXIT_CANNOT_WRITE;
    if (abandoned) _exit(exitCode);
    return exitCode;
}

}  // namespace

}  // namespace android::codecplay

int main(int argc, char** argv) {
    using namespace android::codecplay;
    Options options;
    keepStandardDescriptors();
    if (const auto code = parseOptions(argc, argv, &options)) return *code;
    takePackageName(options.package, argv);
    return run(options);
}
