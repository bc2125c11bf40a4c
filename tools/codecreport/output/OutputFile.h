// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdio.h>

#include <string>
#include <string_view>
#include <vector>

namespace android::codecreport {

/**
 * An output that is complete or not there: it is written aside, in the same folder, and takes its
 * name when commit() is called. Until then what was there before stays. "-" is standard output;
 * that, devices and pipes are written straight.
 */
class OutputFile {
  public:
    explicit OutputFile(std::string path) : mPath(std::move(path)) {}
    /** What was not committed is removed. */
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    bool open();
    bool write(std::string_view bytes);
    bool commit();

    /** "path: why" of the first failure. */
    const std::string& error() const { return mError; }

  private:
    bool fail();
    bool openAside();

    std::string mPath;
    /** Where the name leads to in the end, and what is written in its stead. */
    std::string mTarget;
    std::string mAside;
    FILE* mFile = nullptr;
    std::string mError;
};

/** Opens, writes and commits; on failure *error says why. */
bool writeOutput(const std::string& path, std::string_view bytes, std::string* error);

/**
 * Why these outputs must not be written: one is an input, or two are one file. Empty: they may.
 * Names count by the file that they lead to; "-" is standard input or output; empty ones are none.
 */
std::string outputConflict(const std::vector<std::string>& inputs,
                           const std::vector<std::string>& outputs);

}  // namespace android::codecreport
