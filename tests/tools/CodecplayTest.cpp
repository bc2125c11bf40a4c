// SPDX-License-Identifier: Apache-2.0
#include "CodecplayTest.h"

#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <regex>

namespace android::test {

namespace {

std::string clipFolder() {
    mkdir(CODECPLAY_CLIPS, 0777);
    return CODECPLAY_CLIPS;
}

}  // namespace

std::string picture(double seconds, const std::string& size) {
    return "-f lavfi -i testsrc2=size=" + size + ":rate=30:duration=" + std::to_string(seconds) +
           " ";
}

std::string tone(double seconds) {
    return "-f lavfi -i sine=frequency=440:sample_rate=48000:duration=" + std::to_string(seconds) +
           " ";
}

std::string clip(const std::string& name, const std::string& arguments) {
    // The hash makes a new clip of a recipe that was changed.
    const std::string path =
            clipFolder() + "/" + std::to_string(std::hash<std::string>()(arguments)) + "-" + name;
    if (access(path.c_str(), F_OK) == 0) return path;
    // Several test processes may make the same clip; each makes its own and the last one stays.
    const std::string folder = clipFolder() + "/" + std::to_string(getpid());
    mkdir(folder.c_str(), 0777);
    const std::string made = folder + "/" + name;
    const ProcessResult result =
            runProcess({"sh", "-c",
                        "ffmpeg -v error -nostdin -y " + arguments + " -threads 1 '" + made + "'"});
    EXPECT_EQ(result.exitCode, 0) << arguments << "\n" << result.err;
    rename(made.c_str(), path.c_str());
    rmdir(folder.c_str());
    return path;
}

std::string ordinaryClip() {
    return clip("ordinary.mp4", picture(4) + tone(4) +
                                        "-c:v libx264 -preset ultrafast -bf 2 -g 30 -c:a aac "
                                        "-movflags +faststart");
}

std::string changedClip(const std::string& source, const std::string& name,
                        void (*change)(std::string* bytes)) {
    std::string bytes = readFile(source);
    change(&bytes);
    const std::string path = scratchFile(name);
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

std::string scratchFile(const std::string& name) {
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    std::string stem = std::string(test->test_suite_name()) + "." + test->name() + "-" + name;
    for (char& c : stem) {
        if (c == '/') c = '.';
    }
    const std::string path = clipFolder() + "/" + stem;
    unlink(path.c_str());
    return path;
}

Played play(std::vector<std::string> arguments) {
    Played played;
    const std::string logFile = scratchFile("log");
    played.process =
            runProcess(std::vector<std::string>{CODECPLAY, "--json", "--log", logFile} + arguments);
    static const std::regex kHead(
            R"(^\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} +\d+ +\d+ ([VDIWEF]) (\S+) *: )");
    for (const std::string& line : splitLines(readFile(logFile))) {
        std::smatch head;
        EXPECT_TRUE(std::regex_search(line, head, kHead)) << line;
        played.log.push_back(head[1].str() + "/" + head[2].str() + ": " + head.suffix().str());
    }
    played.json = Json::parse(played.process.out, nullptr, false);
    EXPECT_FALSE(played.json.is_discarded()) << played.process.out << played.process.err;
    return played;
}

std::vector<std::string> analysis(const std::string& mask) {
    return {"--prop", "mediaanalytic.enable=true", "--prop", "mediaanalytic.debug=" + mask};
}

size_t countLines(const std::vector<std::string>& log, const std::string& text) {
    size_t count = 0;
    for (const std::string& line : log) count += line.find(text) != std::string::npos;
    return count;
}

std::string findLine(const std::vector<std::string>& log, const std::string& text) {
    for (const std::string& line : log) {
        if (line.find(text) != std::string::npos) return line;
    }
    return "";
}

long numberBehind(const std::vector<std::string>& log, const std::string& text) {
    const std::string line = findLine(log, text);
    return line.empty() ? -1 : atol(line.c_str() + line.find(text) + text.size());
}

std::string missingInOrder(const std::vector<std::string>& log,
                           const std::vector<std::string>& texts) {
    auto next = texts.begin();
    for (const std::string& line : log) {
        if (next != texts.end() && line.find(*next) != std::string::npos) ++next;
    }
    return next == texts.end() ? "" : *next;
}

std::vector<uint64_t> probedFrames(const std::string& file) {
    const ProcessResult result =
            runProcess({"ffprobe", "-v", "quiet", "-count_frames", "-show_entries",
                        "stream=nb_read_frames", "-of", "json", file});
    std::vector<uint64_t> frames;
    const Json probe = Json::parse(result.out);
    for (const Json& stream : probe["streams"]) {
        frames.push_back(std::stoull(stream["nb_read_frames"].get<std::string>()));
    }
    return frames;
}

uint64_t accountedFrames(const Json& session) {
    const Json& dropped = session["dropped"];
    return session["rendered"].get<uint64_t>() + dropped["late"].get<uint64_t>() +
           dropped["requested"].get<uint64_t>() + dropped["before_target"].get<uint64_t>() +
           session["flushed"].get<uint64_t>() + session["no_picture"].get<uint64_t>();
}

}  // namespace android::test
