// SPDX-License-Identifier: Apache-2.0
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <closed/PulseLog.h>
#include <hostplatform/MetricsSink.h>

namespace android {
namespace {

constexpr size_t kDataSetSize = 4864;

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

TEST(MetricsTest, recordIsOneLineOfJson_whoeverElseWrites) {
    char path[] = "/tmp/metricsXXXXXX";
    close(mkstemp(path));
    ASSERT_TRUE(hostplatform::openMetricsFile(path));
    const std::string name(3000, 'n');
    char set[kDataSetSize] = {};
    __pulse_log_ext_set_data(set, "fps", "24", 0);
    const auto write = [&] {
        for (int i = 0; i < 200; ++i) {
            __pulse_log_ext_print_v2("Vlog", "src", "s/2", "grp", name.c_str(), "com.example", "ms",
                                     "dim", 2.5, set, 0, 1);
        }
    };
    const pid_t child = fork();
    if (child == 0) {
        write();
        _exit(0);
    }
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) threads.emplace_back(write);
    for (std::thread& thread : threads) thread.join();
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    hostplatform::closeMetricsFile();

    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    unlink(path);
    const std::string line =
            R"({"log":"Vlog","source":"src","schema":"s/2","group":"grp","name":")" + name +
            R"(","package":"com.example","unit":"ms","dimension":"dim","value":2.5,)"
            R"("data":{"fps":"24"},"flag":1})";
    EXPECT_EQ(lines, std::vector<std::string>(800, line));
}

}  // namespace
}  // namespace android
