// SPDX-License-Identifier: Apache-2.0
#include <stdio.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include <tools/codeclogger/Views.h>

#include "CodecProgress.h"
#include "Service.h"
#include "Watch.h"

namespace android::codecloggerctl {

using codeclogger::Json;

namespace {

constexpr char kClearScreen[] = "\033[H\033[2J";

std::string decimal(double value) {
    char text[32];
    snprintf(text, sizeof(text), "%.1f", value);
    return text;
}

using ProgressByHandle = std::map<int32_t, CodecProgress>;

std::string watchText(const std::vector<CodecInfo>& codecs, const ProgressByHandle& progress,
                      double seconds) {
    if (codecs.empty()) return "No codec is registered.\n";
    codeclogger::TextTable table({"#", "PID", "PACKAGE", "FORMAT", "RESOLUTION", "FRAMES", "/s",
                                  "DROPPED", "/s", "LATE", "/s", "kbps", "fps", "LAST FRAME"});
    for (const CodecInfo& codec : codecs) {
        const codeclogger::ClientEntry& entry = codec.entry;
        std::vector<std::string> row = {(entry.isActive ? "*" : "") + std::to_string(entry.handle),
                                        std::to_string(entry.pid), entry.packageName, entry.format,
                                        codec.resolution()};
        const CodecProgress& p = progress.at(entry.handle);
        for (const Count& count : {p.frames(), p.dropped(), p.late()}) {
            row.push_back(std::to_string(count.total));
            row.push_back(decimal(static_cast<double>(count.recent) / seconds));
        }
        row.push_back(std::to_string(codec.bitrateKbps));
        row.push_back(decimal(codec.framerate));
        row.push_back(codec.lastFrame());
        table.add(std::move(row));
    }
    return table.text();
}

std::string watchJson(const codeclogger::ServiceState& state, const std::vector<CodecInfo>& codecs,
                      const ProgressByHandle& progress, int64_t intervalMs) {
    std::vector<Json> list;
    for (const CodecInfo& codec : codecs) {
        const CodecProgress& p = progress.at(codec.entry.handle);
        Json sinceStart = Json::object();
        Json inInterval = Json::object();
        for (const auto& [name, count] :
             {std::pair<const char*, const Count&>("frames", p.frames()),
              {"dropped", p.dropped()},
              {"late", p.late()}}) {
            sinceStart.set(name, count.total);
            inInterval.set(name, count.recent);
        }
        list.push_back(codeclogger::codecJson(codec));
        list.back().set("since_start", std::move(sinceStart));
        list.back().set("in_interval", std::move(inInterval));
    }
    Json json = codeclogger::stateJson(state, list);
    json.set("interval_ms", intervalMs);
    return json.text(true);
}

}  // namespace

int watch(const Service& service, const Options& options) {
    codeclogger::CodecQuery query;
    ProgressByHandle progress;
    int64_t lastMs = 0;
    // Kept from refresh to refresh, so that the codecs' proxies need not be made anew.
    codeclogger::ServiceState state{};
    for (int64_t refresh = 1;; ++refresh) {
        if (!readState(service, &state)) return EXIT_NO_SERVICE;
        const std::vector<CodecInfo> codecs = query.ask(state.clients);
        const int64_t now = codeclogger::nowMs();
        const int64_t sinceLastMs = refresh > 1 ? now - lastMs : options.intervalMs;
        lastMs = now;
        ProgressByHandle registered;
        for (const CodecInfo& codec : codecs) {
            CodecProgress& p = registered[codec.entry.handle] = progress[codec.entry.handle];
            p.update(codec);
        }
        progress = std::move(registered);
        std::string text;
        if (options.isJson()) {
            text = watchJson(state, codecs, progress, sinceLastMs);
        } else {
            text = isatty(STDOUT_FILENO) ? kClearScreen : refresh > 1 ? "\n" : "";
            text += watchText(codecs, progress, static_cast<double>(sinceLastMs) / 1000);
        }
        if (!print(text)) return EXIT_FAILED;
        if (refresh == options.count) return EXIT_OK;
        std::this_thread::sleep_for(std::chrono::milliseconds(options.intervalMs));
    }
}

}  // namespace android::codecloggerctl
