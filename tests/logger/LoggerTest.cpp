// SPDX-License-Identifier: Apache-2.0
#include "LoggerTest.h"

#include <spawn.h>
#include <sys/wait.h>

#include <fstream>

#include <hostplatform/Audio.h>
#include <hostplatform/ColorConversion.h>
#include <hostplatform/Display.h>
#include <tests/support/LoggerServices.h>

namespace android::test {

NamedProcess::NamedProcess(const char* name) {
    const char* arguments[] = {name, "60", nullptr};
    posix_spawn(&mPid, "/bin/sleep", nullptr, nullptr, const_cast<char**>(arguments), environ);
    // For a moment after the start there is no command line yet.
    const std::string path = "/proc/" + std::to_string(mPid) + "/cmdline";
    while (std::ifstream(path).peek() == EOF) usleep(1000);
}

NamedProcess::~NamedProcess() {
    kill(mPid, SIGKILL);
    waitpid(mPid, nullptr, 0);
}

LoggerTest::LoggerTest() {
    hostplatform::setDisplaySize(1920, 1080);
    hostplatform::setDisplayConnected(true);
    hostplatform::setDisplayConfigStatus(OK);
    hostplatform::setAudioParameters("");
    hostplatform::setColorConversionFailure(OK);
    OneServiceManager::instance().setService(nullptr);
    create();
}

sp<RecordingService> LoggerTest::registerService() {
    const sp<RecordingService> service = new RecordingService;
    registerService(service);
    return service;
}

void LoggerTest::registerService(const sp<IBinder>& service) {
    OneServiceManager::instance().setService(service);
}

void LoggerTest::create(int pid) {
    logger = MediaCodecLogger::Create(pid, 1000);
    log.take();
}

void LoggerTest::configure(const CodecSetup& setup) {
    logger->configure(setup.codecName, setup.mime, setup.flags, setup.isDecoder, setup.maxWidth,
                      setup.maxHeight, codec, setup.logging);
}

void LoggerTest::render(long pts) {
    logger->updateFrameDropCounters(pts, true);
    logger->resetConsecutiveFrameDropFlag(-1, pts, false, 1);
}

void LoggerTest::frame(long pts) {
    input(pts);
    output(pts);
    render(pts);
    nextPts = pts;
}

void LoggerTest::play(int count, long stepUs) {
    while (count-- > 0) {
        clock.advanceUs(stepUs);
        frame(nextPts + stepUs);
    }
}

void LoggerTest::settle(const CodecSetup& setup) {
    configure(setup);
    frame(0);
    after(501);
    output(33333);
    log.take();
}

void LoggerTest::changeFormat(int width, int height) {
    sp<AMessage> format = new AMessage;
    format->setInt32("width", width);
    format->setInt32("height", height);
    logger->updateFormatChanged(format);
}

void LoggerTest::vendor(const char* metrics) {
    AString text(metrics);
    logger->updateVendorMetrics(text);
}

Lines LoggerTest::logged() {
    Lines lines;
    for (const auto& line : log.take()) {
        std::string text(1, "??VDIWEF"[line.priority]);
        if (line.tag != "MediaCodecLogger") text += "/" + line.tag;
        lines.push_back(text + " " + line.text);
    }
    return lines;
}

Lines LoggerTest::loggedWith(const char* word) {
    Lines lines;
    for (auto& line : logged()) {
        if (line.find(word) != std::string::npos) lines.push_back(line);
    }
    return lines;
}

Lines LoggerTest::sent() {
    Lines lines;
    for (const auto& record : metrics.take()) {
        EXPECT_EQ(record.log + record.source + record.group, "Vlogfsl0vcpdMMSW");
        EXPECT_EQ(record.packageName, PKG);
        char value[32];
        snprintf(value, sizeof(value), "%.17g", record.value);
        std::string text = record.schema + " " + record.name + " " + value + " " + record.unit +
                           " [" + record.dimension + "]";
        for (const auto& [key, entry] : record.data) text += " " + key + "=" + entry;
        lines.push_back(text + " " + std::to_string(record.flag));
    }
    return lines;
}

}  // namespace android::test
