// SPDX-License-Identifier: Apache-2.0
#include "ReportSupport.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>

#include <filesystem>

#include <tools/codecreport/Analysis.h>
#include <tools/codecreport/output/JsonReport.h>

#include "SyntheticLog.h"

namespace android::test {

namespace {

/** A folder of this process, made at the first use and removed with all in it at the end. */
class ScratchFolder {
  public:
    ScratchFolder() {
        mPath = testing::TempDir() + "codecreport_test.XXXXXX";
        EXPECT_NE(nullptr, mkdtemp(mPath.data())) << mPath;
    }
    ~ScratchFolder() {
        std::error_code error;
        std::filesystem::remove_all(mPath, error);
    }
    const std::string& path() const { return mPath; }

  private:
    std::string mPath;
};

void expectValues(const Json& expected, const Json& actual, const std::string& path) {
    if (!expected.is_structured()) {
        EXPECT_EQ(expected, actual) << path;
    } else if (expected.is_array() && expected.size() != actual.size()) {
        ADD_FAILURE() << path << ": " << actual;
    } else {
        for (const auto& [key, value] : expected.items()) {
            const Json::json_pointer at("/" + key);
            EXPECT_TRUE(actual.contains(at)) << path << "/" << key;
            if (actual.contains(at)) expectValues(value, actual[at], path + "/" + key);
        }
    }
}

}  // namespace

std::string fileWith(const std::string& content, const std::string& name) {
    static const ScratchFolder folder;
    const std::string path = folder.path() + "/" + name;
    FILE* file = fopen(path.c_str(), "w");
    EXPECT_EQ(content.size(), fwrite(content.data(), 1, content.size(), file));
    fclose(file);
    return path;
}

ProcessResult codecreport(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), CODECREPORT);
    return runProcess(arguments);
}

void expectHas(const char* expected, const Json& actual) {
    expectValues(Json::parse(expected), actual, "");
}

Json reportOfFiles(const std::vector<std::string>& paths) {
    const codecreport::Reference reference;
    codecreport::Analysis analysis;
    EXPECT_TRUE(codecreport::readLogs(reference, paths, false, &analysis));
    return codecreport::toJson(analysis);
}

Json reportOf(const std::string& log) {
    return reportOfFiles({fileWith(log)});
}

std::string threadtime(const std::vector<std::pair<const char*, std::string>>& tagsAndTexts) {
    std::vector<LogMessage> messages;
    int64_t ms = 100'000;
    for (const auto& [tag, text] : tagsAndTexts) {
        messages.push_back({ms, 4321, 4330, tag, text});
        ms += 1000;
    }
    return writeLog(messages);
}

}  // namespace android::test
