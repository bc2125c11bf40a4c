// SPDX-License-Identifier: Apache-2.0
#include "Watch.h"

#include <stdio.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "CodecProgress.h"
#include "Views.h"

namespace codecloggerctl {

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
    TextTable table({"#", "PID", "PACKAGE", "FORMAT", "RESOLUTION", "FRAMES", "/s", "DROPPED", "/s",
                     "LATE", "/s", "kbps", "fps", "LAST FRAME"});
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
    nlohmann::ordered_json json = stateJson(state, codecs);
    json["interval_ms"] = intervalMs;
    for (size_t i = 0; i < codecs.size(); ++i) {
        const CodecProgress& p = progress.at(codecs[i].entry.handle);
        const struct {
            const char* name;
            const Count& count;
        } kCounts[] = {{"frames", p.frames()}, {"dropped", p.dropped()}, {"late", p.late()}};
        for (const auto& [name, count] : kCounts) {
            json["codecs"][i]["since_start"][name] = count.total;
            json["codecs"][i]["in_interval"][name] = count.recent;
        }
    }
    return dump(json, true);
}

}  // namespace

int watch(const Service& service, const Options& options) {
    CodecQuery query;
    ProgressByHandle progress;
    int64_t lastMs = 0;
    // Kept from refresh to refresh, so that the codecs' proxies need not be made anew.
    codeclogger::ServiceState state{};
    for (int64_t refresh = 1;; ++refresh) {
        if (!readState(service, &state)) return EXIT_NO_SERVICE;
        const std::vector<CodecInfo> codecs = query.ask(state.clients);
        const int64_t now = nowMs();
        const int64_t sinceLastMs = refresh > 1 ? now - lastMs : options.intervalMs;
        lastMs = now;
        ProgressByHandle registered;
        for (const CodecInfo& codec : codecs) {
            CodecProgress& p = registered[codec.entry.handle] = progress[codec.entry.handle];
            p.update(codec);
        }
        progress = std::move(registered);
        std::string text;
        if (options.format == Format::JSON) {
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

}  // namespace codecloggerctl
