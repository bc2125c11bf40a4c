// SPDX-License-Identifier: Apache-2.0
#include "ReportSupport.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <filesystem>
#include <memory>

#include <tools/codecreport/Analysis.h>
#include <tools/codecreport/output/JsonReport.h>

#include "SyntheticLog.h"

namespace android::test {

std::string fileWith(const std::string& content, const std::string& name) {
    // Made at the first use and removed with all in it at the end.
    static const std::shared_ptr<char> folder(
            mkdtemp(strdup((testing::TempDir() + "codecreport_test.XXXXXX").c_str())),
            [](char* made) { std::filesystem::remove_all(made); });
    const std::string path = std::string(folder.get()) + "/" + name;
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
    const Json values = Json::parse(expected).flatten();
    for (const auto& [path, value] : values.items()) {
        const Json::json_pointer at(path);
        EXPECT_EQ(value, actual.contains(at) ? actual[at] : Json("nothing")) << path;
    }
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
