// SPDX-License-Identifier: Apache-2.0
// What is around the library: the clock, properties, the screen, the service and the like.
#include <signal.h>
#include <spawn.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include <cutils/trace.h>
#include <hostplatform/AppIdentity.h>
#include <hostplatform/Audio.h>
#include <hostplatform/ColorConversion.h>
#include <hostplatform/Display.h>
#include <hostplatform/GraphicBuffers.h>
#include <hostplatform/Properties.h>
#include <hostplatform/Trace.h>
#include <mediaCodecLogger/ZephraMediaAnalytic.h>
#include <tests/support/LoggerServices.h>

#include "Operations.h"

namespace android::test {

namespace {

constexpr int kUnknownPid = 99999999;  // no process has it

class JournalingService : public RecordingService {
    void onCall(const std::string& call) override { Journal::instance().outcome("-> " + call); }
};

/** Makes the logger that of a process with this command line, which lives until that is read. */
void makeLoggerOf(Stage& stage, const std::string& commandLine) {
    const char* arguments[] = {commandLine.c_str(), "60", nullptr};
    pid_t pid;
    posix_spawn(&pid, "/bin/sleep", nullptr, nullptr, const_cast<char**>(arguments), environ);
    Journal::instance().mask(std::to_string(pid), "<pid of the process>");
    // For a moment after the start there is no command line yet.
    const std::string path = "/proc/" + std::to_string(pid) + "/cmdline";
    while (std::ifstream(path).peek() == EOF) usleep(1000);
    stage.makeLogger(pid, 1000);
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
}

}  // namespace

void StoryCodec::signalSetParameters(const sp<AMessage>& message) {
    std::string text = codecText(this) + " signalSetParameters";
    for (size_t i = 0; i < message->countEntries(); ++i) {
        AMessage::Type type;
        const char* name = message->getEntryNameAt(i, &type);
        int32_t value = -1;
        message->findInt32(name, &value);
        text += " " + std::string(name) + "=" + std::to_string(value);
    }
    Journal::instance().outcome(text);
}

Stage::Stage() {
    Journal::instance().mask("-nan", "nan");  // which of them it is, is the processor's affair
    service = new JournalingService;
    setService(nullptr);
    selectCodec("codec");
    makeLogger(kUnknownPid, 1000);
}

Stage::~Stage() {
    logger = nullptr;
    loggers.clear();
    // Only while the analytics are on a codec can be removed, and only a registration turns them
    // on.
    setProperty("mediaanalytic.enable", "true");
    ZephraMediaAnalytic::instance().addCodec("last", codecs.begin()->second.codec, 0, 0);
    for (const auto& [name, named] : codecs) {
        ZephraMediaAnalytic::instance().removeCodec(named.codec);
    }
    hostplatform::clearProperties();
}

void Stage::selectCodec(const std::string& name) {
    Codec& named = codecs[name];
    if (named.codec == nullptr) {
        named = {new StoryCodec, static_cast<long>(codecs.size())};
        Journal::instance().mask(codecText(named.codec.get()), "<" + name + ">");
    }
    codecName = name;
    codec = named.codec;
    key = named.key;
}

void Stage::selectLogger(const std::string& name) {
    loggers[loggerName] = logger;
    loggerName = name;
    logger = loggers[name];
}

void Stage::makeLogger(int pid, unsigned uid) {
    logger = MediaCodecLogger::Create(pid, uid);
}

void Stage::setService(const sp<IBinder>& binder) {
    OneServiceManager::instance().setService(binder);
}

const Operations& stageOperations() {
    static const Operations& operations = *new Operations{
            // The clock
            {"after",
             [](Args& a) {
                 const std::string text = a.text();
                 char* unit;
                 const int64_t time = strtoll(text.c_str(), &unit, 10);
                 a.stage.clock.advanceUs(strcmp(unit, "us") == 0 ? time : time * 1000);
             }},
            {"leapTo", [](Args& a) { a.stage.clock.leapTo(a.number()); }},
            {"clockReads",
             [](Args& a) {
                 const int64_t reads = a.stage.clock.reads();
                 result(reads - a.stage.readsBefore);
                 a.stage.readsBefore = reads;
             }},
            // The device
            {"property",
             [](Args& a) {
                 const std::string key = a.text();
                 setProperty(key.c_str(), a.text("").c_str());
             }},
            {"propertiesFail", [](Args&) { hostplatform::failPropertySet(true); }},
            {"display",
             [](Args& a) {
                 const bool isConnected = !a.flag("none");
                 hostplatform::setDisplayConnected(isConnected);
                 hostplatform::setDisplayConfigStatus(a.namedNumber("status", OK));
                 if (a.isEmpty()) return;
                 const int64_t width = a.number();
                 hostplatform::setDisplaySize(width, a.number());
             }},
            {"displayQueries", [](Args&) { result(hostplatform::displayQueryCount()); }},
            {"audio", [](Args& a) { hostplatform::setAudioParameters(a.text().c_str()); }},
            {"audioQueries", [](Args&) { result(hostplatform::audioQueryCount()); }},
            {"colorConversion",
             [](Args& a) { hostplatform::setColorConversionFailure(a.number()); }},
            {"graphicBuffers",
             [](Args& a) {
                 hostplatform::setBufferMapsToNull(a.flag("null"));
                 hostplatform::setBufferLockFailure(a.number(NO_ERROR));
             }},
            {"lockedBuffers", [](Args&) { result(hostplatform::lockedBufferCount()); }},
            {"dumps",
             [](Args& a) {
                 setDumps(a.flag("closed") ? Dumps::FAIL_TO_OPEN
                          : a.flag("full") ? Dumps::FAIL_TO_WRITE
                                           : Dumps::WORK);
                 a.flag("work");
             }},
            {"traceTags",
             [](Args& a) {
                 hostplatform::setTraceTags(a.flag("video") ? ATRACE_TAG_VIDEO : ATRACE_TAG_AUDIO);
                 a.flag("audio");
             }},
            {"package",
             [](Args& a) { hostplatform::setPackageNameForPid(getpid(), a.text().c_str()); }},
            // The service
            {"service",
             [](Args& a) {
                 if (a.flag("none")) return a.stage.setService(nullptr);
                 const sp<RecordingService> service = new JournalingService;
                 a.stage.service = service;
                 const int64_t lifetime = a.namedNumber("lifetime", -1);
                 a.stage.setService(lifetime >= 0 ? sp<IBinder>(new MortalRemote(service, lifetime))
                                                  : sp<IBinder>(service));
             }},
            {"answers",
             [](Args& a) {
                 RecordingService& service = *a.stage.service;
                 service.allowlisted = a.namedNumber("allowlist", service.allowlisted);
                 service.oldestAudioCodec =
                         a.named("oldestAudio", service.oldestAudioCodec.string()).c_str();
             }},
            // Codecs and loggers
            {"codec", [](Args& a) { a.stage.selectCodec(a.text()); }},
            {"noCodec", [](Args& a) { a.stage.codec = nullptr; }},
            {"references",
             [](Args& a) {
                 // Besides those of the stage.
                 result(a.stage.codec->getStrongCount() - 2);
             }},
            {"Create",
             [](Args& a) {
                 const std::string process = a.named("process", "");
                 if (!process.empty() || a.flag("process=")) return makeLoggerOf(a.stage, process);
                 const int64_t pid = a.number(kUnknownPid);
                 a.stage.makeLogger(pid, a.number(1000));
             }},
            {"logger", [](Args& a) { a.stage.selectLogger(a.text()); }},
            {"release", [](Args& a) { a.stage.logger = nullptr; }},
    };
    return operations;
}

bool call(const std::string& name, Args& args) {
    for (const auto* operations :
         {&stageOperations(), &loggerOperations(), &analyticsOperations()}) {
        const auto operation = operations->find(name);
        if (operation == operations->end()) continue;
        operation->second(args);
        return true;
    }
    return false;
}

}  // namespace android::test
