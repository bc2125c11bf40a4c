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
std::string picture(double seconds);
std::string tone(double seconds);

/** A clip that ffmpeg makes from `arguments`, once a build folder. The name ends in the format. */
std::string clip(const std::string& name, const std::string& arguments);

/** 4 s of H.264 with B-frames, a sync frame each second, and AAC. */
std::string ordinaryClip();

/** What a shell's command makes of a clip, which is its $0. */
std::string changedClip(const std::string& source, const std::string& name,
                        const std::string& command);

/** A path for a file of this test case that does not exist yet. */
std::string scratchFile(const std::string& name);

/** One run of codecplay with the log apart. */
struct Played {
    ProcessResult process;
    /** As "I/Tag: text". */
    std::vector<std::string> log;
    /** The document that --json printed. */
    Json json;

    const Json& sessions() const { return json["files"][0]["sessions"]; }
    const Json& video() const { return sessions()[0]; }

    /** The lines of the log that hold a text; how many; and the first, "" if there is none. */
    std::vector<std::string> lines(const std::string& text) const;
    size_t count(const std::string& text) const { return lines(text).size(); }
    std::string line(const std::string& text) const;
    /** The first of the texts that no line holds behind the line of the text before; "" if none. */
    std::string missingInOrder(const std::vector<std::string>& texts) const;
};

/** What a shell is told to run codecplay with these arguments. */
std::vector<std::string> codecplay(const std::string& arguments);

/**
 * Runs codecplay with --json and --log besides what is given. Whatever it plays, each packet of
 * video is accounted for, and the document tells the exit code.
 */
Played play(const std::string& arguments);

/** The number behind a text in a line; -1 if it is not there. */
long numberBehind(const std::string& line, const std::string& text);

/** The arguments that switch the frame analysis on, with a debug mask; a space behind them. */
std::string analysis(const std::string& mask);

/** Frames of each stream as ffprobe decodes them; twice those of transport streams. */
std::vector<uint64_t> probedFrames(const std::string& file);

}  // namespace android::test
