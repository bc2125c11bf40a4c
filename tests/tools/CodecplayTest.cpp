// SPDX-License-Identifier: Apache-2.0
#include "CodecplayTest.h"

#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <regex>
#include <sstream>

namespace android::test {

std::string picture(double seconds) {
    return "-f lavfi -i testsrc2=size=64x48:rate=30:duration=" + std::to_string(seconds) + " ";
}

std::string tone(double seconds) {
    return "-f lavfi -i sine=frequency=440:sample_rate=48000:duration=" + std::to_string(seconds) +
           " ";
}

std::string clip(const std::string& name, const std::string& arguments) {
    // The hash makes a new clip of a recipe that was changed.
    const std::string path =
            CODECPLAY_CLIPS "/" + std::to_string(std::hash<std::string>()(arguments)) + "-" + name;
    if (access(path.c_str(), F_OK) == 0) return path;
    // Several test processes may make the same clip; each makes its own and the last one stays.
    const std::string made = scratchFile(name);
    const ProcessResult result =
            runProcess({"sh", "-c",
                        "ffmpeg -v error -nostdin -y " + arguments + " -threads 1 '" + made + "'"});
    EXPECT_EQ(result.exitCode, 0) << arguments << "\n" << result.err;
    rename(made.c_str(), path.c_str());
    return path;
}

std::string ordinaryClip() {
    return clip("ordinary.mp4", picture(4) + tone(4) +
                                        "-c:v libx264 -preset ultrafast -bf 2 -g 30 -c:a aac "
                                        "-movflags +faststart");
}

std::string changedClip(const std::string& source, const std::string& name,
                        const std::string& command) {
    const std::string path = scratchFile(name);
    runProcess({"sh", "-c", "export LC_ALL=C; (" + command + ") >" + path, source});
    return path;
}

std::string scratchFile(const std::string& name) {
    mkdir(CODECPLAY_CLIPS, 0777);
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    std::string stem = std::string(test->test_suite_name()) + "." + test->name() + "-" + name;
    std::replace(stem.begin(), stem.end(), '/', '.');
    const std::string path = CODECPLAY_CLIPS "/" + stem;
    unlink(path.c_str());
    return path;
}

std::vector<std::string> codecplay(const std::string& arguments) {
    return {"sh", "-c", "exec " CODECPLAY " " + arguments};
}

Played play(const std::string& arguments) {
    Played played;
    const std::string logFile = scratchFile("log");
    played.process = runProcess(codecplay("--json --log " + logFile + ' ' + arguments));
    static const std::regex kHead(
            R"(^\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} +\d+ +\d+ ([VDIWEF]) (\S+) *: )");
    for (const std::string& line : splitLines(readFile(logFile))) {
        std::smatch head;
        EXPECT_TRUE(std::regex_search(line, head, kHead)) << line;
        played.log.push_back(head[1].str() + "/" + head[2].str() + ": " + head.suffix().str());
    }
    played.json = Json::parse(played.process.out, nullptr, false);
    EXPECT_TRUE(played.json.is_object()) << played.process.out << played.process.err;
    EXPECT_EQ(played.json["exit_code"], played.process.exitCode) << played.process.err;
    for (const Json& file : played.json["files"]) {
        for (const Json& session : file["sessions"]) {
            if (session["kind"] == "audio") continue;
            const Json& dropped = session["dropped"];
            uint64_t accounted = 0;
            for (const Json& frames :
                 {session["rendered"], dropped["late"], dropped["requested"],
                  dropped["before_target"], session["flushed"], session["no_picture"]}) {
                accounted += frames.get<uint64_t>();
            }
            EXPECT_EQ(accounted, session["packets"]) << session;
        }
    }
    return played;
}

std::string analysis(const std::string& mask) {
    return "--prop mediaanalytic.enable=true --prop mediaanalytic.debug=" + mask + ' ';
}

std::vector<std::string> Played::lines(const std::string& text) const {
    std::vector<std::string> found;
    for (const std::string& line : log) {
        if (line.find(text) != std::string::npos) found.push_back(line);
    }
    return found;
}

std::string Played::line(const std::string& text) const {
    const std::vector<std::string> found = lines(text);
    return found.empty() ? "" : found.front();
}

std::string Played::missingInOrder(const std::vector<std::string>& texts) const {
    auto next = texts.begin();
    for (const std::string& line : log) {
        if (next != texts.end() && line.find(*next) != std::string::npos) ++next;
    }
    return next == texts.end() ? "" : *next;
}

long numberBehind(const std::string& line, const std::string& text) {
    const size_t at = line.find(text);
    return at == std::string::npos ? -1 : atol(line.c_str() + at + text.size());
}

std::vector<uint64_t> probedFrames(const std::string& file) {
    std::istringstream frames(
            runProcess({"ffprobe", "-v", "quiet", "-count_frames", "-of", "default=nk=1:nw=1",
                        "-show_entries", "stream=nb_read_frames", file})
                    .out);
    return {std::istream_iterator<uint64_t>(frames), {}};
}

}  // namespace android::test
