// SPDX-License-Identifier: Apache-2.0
#pragma once

#define JSON_NOEXCEPTION
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#include <tests/support/Process.h>

namespace android::test {

using Json = nlohmann::json;

/** ffmpeg inputs: seconds of a small moving picture at 30 frames a second, and of a tone. */
std::string picture(double seconds, const std::string& size = "64x48");
std::string tone(double seconds);

/** A clip that ffmpeg makes from `arguments`, once a build folder. The name ends in the format. */
std::string clip(const std::string& name, const std::string& arguments);

/** 4 s of H.264 with B-frames, a sync frame each second, and AAC. */
std::string ordinaryClip();

/** A copy of a clip that a function changed. */
std::string changedClip(const std::string& source, const std::string& name,
                        void (*change)(std::string* bytes));

/** A path for a file of this test case that does not exist yet. */
std::string scratchFile(const std::string& name);

/** One run of codecplay with the log apart. */
struct Played {
    ProcessResult process;
    /** As "I/Tag: text". */
    std::vector<std::string> log;
    /** The document that --json printed. */
    Json json;

    /** Session `index` of the first file. */
    const Json& session(size_t index) const { return json["files"][0]["sessions"][index]; }
    const Json& video() const { return session(0); }
};

/** Runs codecplay with --json and --log besides what is given. */
Played play(std::vector<std::string> arguments);

/** The arguments that switch the frame analysis on, with a debug mask. */
std::vector<std::string> analysis(const std::string& mask);

/** Joins lists. */
template <typename T>
std::vector<T> operator+(std::vector<T> left, const std::vector<T>& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

/** How many lines of the log hold a text. */
size_t countLines(const std::vector<std::string>& log, const std::string& text);

/** The first line that holds a text, "" if none does. */
std::string findLine(const std::vector<std::string>& log, const std::string& text);

/** The number behind a text in the first line that holds it; -1 if none does. */
long numberBehind(const std::vector<std::string>& log, const std::string& text);

/** The first of the texts that no line holds behind the line of the text before it; "" if none. */
std::string missingInOrder(const std::vector<std::string>& log,
                           const std::vector<std::string>& texts);

/** Frames of each stream as ffprobe decodes them. */
std::vector<uint64_t> probedFrames(const std::string& file);

/** The frames that left the codec or were given up, by the session's own account. */
uint64_t accountedFrames(const Json& session);

}  // namespace android::test
