// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace android::codecplay {

/** Exit codes, as --help and the manual page list them. */
enum ExitCode {
    EXIT_PLAYED = 0,
    EXIT_NOT_PLAYABLE = 1,
    EXIT_USAGE = 2,
    EXIT_DAMAGED = 3,
    EXIT_CANNOT_WRITE = 4,
    EXIT_STREAM_NOT_PLAYED = 5,
    EXIT_INTERRUPTED = 130,
    EXIT_TERMINATED = 143,
};

/** Whether the library reads a system property of this name. */
bool isKnownProperty(const std::string& name);

/** The one of two exit codes that a caller has to know of first. */
int worseExit(int a, int b);

/** Something that interrupts playback when it has reached a media time. */
struct Interruption {
    enum Kind { SEEK, FLUSH, RECONFIGURE };
    Kind kind;
    int64_t atUs;
    /** Where playback goes on: for a flush or a reconfiguration, where it was. */
    int64_t toUs;
};

/** Frames of the stream that faults are meant for, counted from 1, both ends included. */
struct FrameRange {
    int64_t first;
    int64_t last;

    bool contains(int64_t frame) const { return first <= frame && frame <= last; }
};

/** Where frames can be held up on their way, in the order of the way. */
enum class Fault {
    /** The source delivers nothing. Counts frames in the order in which they go in. */
    STARVE,
    /** The framework takes long to decrypt. Counts frames in the order in which they go in. */
    SLOW_DECRYPT,
    /** The component takes long. This and those below count frames as they come out. */
    SLOW_DECODE,
    /** The component's message reaches the framework late. */
    SLOW_MESSAGE,
    /** The application is busy with something else. */
    STALL,
    /** The display neither takes buffers nor gives any back. */
    BLOCK_DISPLAY,
};

struct Delay {
    Fault fault;
    FrameRange frames;
    int64_t delayMs;
};

struct DecoderError {
    int type;
    int64_t atUs;
};

struct Options {
    std::vector<std::string> files;

    /** Presentation pace times this; 0 plays as fast as it decodes. */
    double speed = 1.0;
    int loops = 1;
    int instances = 1;

    bool omx = false;
    bool tunneled = false;
    bool secure = false;
    /** What component names begin with; empty for the default of the road. */
    std::string component;
    std::string package = "codecplay";

    std::vector<std::pair<std::string, std::string>> properties;
    int displayWidth = 0;
    int displayHeight = 0;
    double vsyncHz = 60.0;
    int buffers = 8;

    std::vector<Interruption> interruptions;
    std::vector<Delay> delays;
    std::vector<FrameRange> drops;
    std::vector<DecoderError> errors;

    std::string logFile;
    std::string metricsFile;
    std::string storyFile;
    bool json = false;
    bool quiet = false;

    bool paced() const { return speed > 0; }
};

/**
 * Reads the command line; prints help, version or a complaint where it ends there.
 *
 * @return the exit code if the program is to end here
 */
std::optional<int> parseOptions(int argc, char** argv, Options* options);

}  // namespace android::codecplay
