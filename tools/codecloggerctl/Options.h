// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <optional>
#include <string>
#include <vector>

#include <tools/codeclogger/ViewRequest.h>

namespace android::codecloggerctl {

enum ExitCode {
    EXIT_OK = 0,
    EXIT_FAILED = 1,
    EXIT_USAGE = 2,
    EXIT_NO_SERVICE = 4,
};

enum class Command { SHOW, WATCH, LISTEN, ALLOWLIST_SET, DUMP };

struct Options {
    Command command = Command::SHOW;
    /** The format of watch and listen as well. */
    codeclogger::ViewRequest request;
    /** What dump passes on. */
    std::vector<std::string> words;
    std::vector<std::string> packages;
    std::vector<std::string> exceptions;
    std::string label;
    int64_t intervalMs = 1000;
    /** Refreshes of watch or events of listen to end after; 0 for no end. */
    int64_t count = 0;

    bool isJson() const { return request.format == codeclogger::ViewRequest::Format::JSON; }
};

/** The exit code if the program is to end here. */
std::optional<int> parseOptions(int argc, char** argv, Options* options);

}  // namespace android::codecloggerctl
