// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace android::codecreport {

/** What the program ends with; Options.cpp says it to people. */
enum ExitCode {
    OK = 0,
    BAD_INPUT = 1,
    USAGE = 2,
    /** A comparison found something worse. */
    WORSE = 3,
    BAD_OUTPUT = 4,
    INPUT_ENDS_EARLY = 5,
    /** A comparison has too little to go by. */
    CANNOT_TELL = 6,
};

}  // namespace android::codecreport
