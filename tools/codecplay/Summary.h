// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

#include "StreamFormat.h"

namespace android::codecplay {

class CodecSession;

/** What became of one codec session; SessionCounts explains the figures. */
struct SessionResult {
    int stream;
    bool video;
    std::string mime;
    std::string component;
    uint64_t packets;
    uint64_t frames;
    uint64_t rendered;
    uint64_t droppedLate;
    uint64_t droppedOnRequest;
    uint64_t droppedBeforeTarget;
    uint64_t flushed;
    uint64_t noPicture;
    uint64_t neverShown;
    uint64_t decodeErrors;
    std::vector<StreamFormat> formats;
    std::vector<std::string> reports;
};

/** What became of one file. */
struct FileResult {
    std::string file;
    /** From 1, where the file is played several times at once. */
    int instance = 1;
    std::string format;
    int64_t durationUs = 0;
    int exitCode = 0;
    std::vector<std::string> warnings;
    std::vector<SessionResult> sessions;
    /** A codec does not end, so that the process has to go without it. */
    bool abandoned = false;
};

/** @param ended the session was stopped; of one that was not only the figures can be had */
SessionResult describeSession(const CodecSession& session, bool ended);

/** For people. */
std::string summaryText(const FileResult& result);

/** For programs: one JSON document. */
std::string jsonText(const std::vector<FileResult>& results, int exitCode);

}  // namespace android::codecplay
