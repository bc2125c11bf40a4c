// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace android::codecreport {

/** A codec tag taken apart: "tunneled.HW.c2.video.avc". */
struct CodecTag {
    bool tunneled = false;
    /** "HW", "SW" or "VND" */
    std::string implementation;
    /** "omx", "c2" or empty */
    std::string framework;
    /** "video", "audio" or "unknown" */
    std::string kind;
    std::string format;
};

/** False if the text is no codec tag. */
bool parseCodecTag(std::string_view text, CodecTag* tag);

/** The beginning of metric and warning lines: "W.mcfd12.1234.4K.secure.HW.c2.video.hevc". */
struct LinePrefix {
    int pid = -1;
    bool uhdScreen = false;
    bool secure = false;
    bool secureMemory = false;
    bool atmos = false;
    int maxDropRun = 0;
    int repeatedOutputs = 0;
    int repeatedInputs = 0;
    std::string_view tag;
};

bool parseLinePrefix(std::string_view text, LinePrefix* prefix);

}  // namespace android::codecreport
