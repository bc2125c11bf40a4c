// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include <closed/PulseLog.h>
#include <hostplatform/MetricsSink.h>

namespace android {
namespace {

using testing::SizeIs;

constexpr size_t kDataSetSize = 4864;

void print(const char* name) {
    __pulse_log_ext_print_v2("Vlog", "source", "schema/2", "group", name, "com.example", "ms",
                             "dim", 1, nullptr, 0, 1);
}

/** A file that goes with the object, and is the metrics file meanwhile. */
class MetricsFile {
  public:
    MetricsFile() {
        close(mkstemp(mPath));
        EXPECT_TRUE(hostplatform::openMetricsFile(mPath));
    }
    ~MetricsFile() {
        hostplatform::closeMetricsFile();
        unlink(mPath);
    }

    std::vector<std::string> lines() const {
        std::ifstream file(mPath);
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);) lines.push_back(line);
        return lines;
    }

  private:
    char mPath[32] = "/tmp/metricsXXXXXX";
};

TEST(DataSetTest, whenFull_refusesAndWritesNothingOutside) {
    std::vector<char> set(kDataSetSize + 64);
    const auto add = [&set](const std::string& key, const std::string& value) {
        return __pulse_log_ext_set_data(set.data(), key.c_str(), value.c_str(), 0) == 0;
    };
    int added = 0;
    while (add(std::to_string(1000 + added), std::string(100, 'v'))) ++added;
    // 4848 bytes behind the head, 5 and 101 for each entry.
    EXPECT_EQ(added, 45);
    EXPECT_FALSE(add(std::string(5000, 'k'), ""));
    EXPECT_TRUE(add("small", "fits"));
    EXPECT_EQ(std::string(64, '\0'), std::string(set.data() + kDataSetSize, 64));
}

TEST(MetricsTest, recordIsOneLineOfJson) {
    const MetricsFile file;
    char set[kDataSetSize] = {};
    __pulse_log_ext_set_data(set, "fps", "24", 0);
    __pulse_log_ext_print_v2("Vlog", "src", "s/2", "grp", "Name", "com.example", "ms", "dim", 2.5,
                             set, 0, 1);
    EXPECT_THAT(file.lines(),
                testing::ElementsAre(
                        R"({"log":"Vlog","source":"src","schema":"s/2","group":"grp",)"
                        R"("name":"Name","package":"com.example","unit":"ms","dimension":"dim",)"
                        R"("value":2.5,"data":{"fps":"24"},"flag":1})"));
}

TEST(MetricsTest, whenProcessesAndThreadsWrite_linesStayWhole) {
    constexpr int kWriters = 4;
    constexpr int kRecords = 200;
    const MetricsFile file;
    const std::string name(3000, 'n');
    const auto write = [&name] {
        for (int i = 0; i < kRecords; ++i) print(name.c_str());
    };
    const pid_t child = fork();
    if (child == 0) {
        write();
        _exit(0);
    }
    std::vector<std::thread> threads;
    for (int t = 1; t < kWriters; ++t) threads.emplace_back(write);
    for (std::thread& thread : threads) thread.join();
    ASSERT_EQ(waitpid(child, nullptr, 0), child);

    const auto lines = file.lines();
    EXPECT_THAT(lines, SizeIs(kWriters * kRecords));
    for (const std::string& line : lines) {
        ASSERT_EQ(nlohmann::json::parse(line, nullptr, false)["name"], name);
    }
}

}  // namespace
}  // namespace android
