// SPDX-License-Identifier: Apache-2.0
#include "ReportSupport.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <tools/codecreport/Analysis.h>
#include <tools/codecreport/JsonReport.h>

#include "SyntheticLog.h"

namespace android::test {

std::string fileWith(const std::string& content, const std::string& name) {
    const std::string path =
            testing::TempDir() + "codecreport_" + std::to_string(getpid()) + "_" + name;
    FILE* file = fopen(path.c_str(), "w");
    EXPECT_EQ(content.size(), fwrite(content.data(), 1, content.size(), file));
    fclose(file);
    return path;
}

Json reportOf(const std::string& log, codecreport::SessionObserver* observer) {
    const std::string path = fileWith(log);
    const codecreport::Reference reference;
    codecreport::Analysis analysis;
    EXPECT_TRUE(codecreport::readLogs(reference, {path}, observer, false, &analysis));
    unlink(path.c_str());
    return codecreport::toJson(analysis);
}

std::string threadtime(const std::vector<std::pair<const char*, std::string>>& tagsAndTexts) {
    std::vector<LogMessage> messages;
    int64_t ms = 100'000;
    for (const auto& [tag, text] : tagsAndTexts) {
        messages.push_back({ms, 4321, 4330, tag, text});
        ms += 1000;
    }
    return writeLog(messages, codecreport::LogFormat::THREADTIME);
}

}  // namespace android::test
