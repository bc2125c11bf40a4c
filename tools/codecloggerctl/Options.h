// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

namespace codecloggerctl {

enum ExitCode {
    EXIT_OK = 0,
    EXIT_FAILED = 1,
    EXIT_USAGE = 2,
    EXIT_NO_SERVICE = 4,
};

enum class Command { LIST, STATUS, WATCH, LISTEN, ALLOWLIST_SHOW, ALLOWLIST_SET };
enum class Format { TEXT, JSON, OPENMETRICS };

struct Options {
    Command command = Command::LIST;
    Format format = Format::TEXT;
    /** Handles or client ids that status is to show; all when empty. */
    std::vector<int64_t> ids;
    std::vector<std::string> packages;
    std::vector<std::string> exceptions;
    std::string label;
    int64_t intervalMs = 1000;
    /** Refreshes of watch or events of listen to end after; 0 for no end. */
    int64_t count = 0;
};

/** Exits when the command line asks for help or is wrong. */
Options parseOptions(int argc, char** argv);

}  // namespace codecloggerctl
