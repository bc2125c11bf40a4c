// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include <closed/PulseLog.h>
#include <tests/support/MetricsCapture.h>

namespace android {
namespace {

using hostplatform::MetricsRecord;
using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

constexpr size_t kDataSetSize = 4864;
constexpr size_t kHeadSize = 16;

/** A data set with guard bytes behind it. */
struct DataSet {
    DataSet() { memset(bytes + kDataSetSize, 0x5a, sizeof(bytes) - kDataSetSize); }

    bool isIntact() const {
        const auto isGuard = [](char c) { return c == 0x5a; };
        return std::all_of(bytes + kDataSetSize, std::end(bytes), isGuard);
    }

    char bytes[kDataSetSize + 64] = {};
};

void print(const char* name, double value, void* dataSet) {
    __pulse_log_ext_print_v2("Vlog", "source", "schema/2", "group", name, "com.example", "ms",
                             "dim", value, dataSet, 0, 1);
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

TEST(DataSetTest, keepsEntriesInOrderAndTheLastValueUntilTheHeadIsCleared) {
    test::MetricsCapture metrics;
    DataSet set;
    const std::pair<const char*, const char*> entries[] = {
            {"b", "1"}, {"a", ""}, {"b", "2"}, {"null", nullptr}};
    for (const auto& [key, value] : entries) {
        EXPECT_EQ(__pulse_log_ext_set_data(set.bytes, key, value, 0), 0);
    }
    print("name", 1, set.bytes);
    memset(set.bytes, 0, kHeadSize);
    print("name", 2, set.bytes);
    print("name", 3, nullptr);

    const auto records = metrics.records();
    ASSERT_THAT(records, SizeIs(3));
    EXPECT_THAT(records[0].data, ElementsAre(Pair("b", "2"), Pair("a", ""), Pair("null", "")));
    EXPECT_THAT(records[1].data, IsEmpty());
    EXPECT_THAT(records[2].data, IsEmpty());
}

TEST(DataSetTest, whenFull_refusesAndWritesNothingOutside) {
    test::MetricsCapture metrics;
    DataSet set;
    const std::string value(100, 'v');
    int added = 0;
    while (__pulse_log_ext_set_data(set.bytes, std::to_string(1000 + added).c_str(), value.c_str(),
                                    0) == 0) {
        ++added;
    }
    // 4848 bytes behind the head, 5 and 101 for each entry.
    EXPECT_EQ(added, 45);
    EXPECT_NE(__pulse_log_ext_set_data(set.bytes, std::string(5000, 'k').c_str(), "", 0), 0);
    EXPECT_EQ(__pulse_log_ext_set_data(set.bytes, "small", "fits", 0), 0);
    EXPECT_TRUE(set.isIntact());
    print("name", 0, set.bytes);
    EXPECT_THAT(metrics.records().at(0).data, SizeIs(46));
}

TEST(MetricsTest, recordIsOneLineOfJson) {
    const MetricsFile file;
    DataSet set;
    __pulse_log_ext_set_data(set.bytes, "fps", "24", 0);
    __pulse_log_ext_print_v2("Vlog", "src", "s/2", "grp", "Name", "com.example", "ms", "dim", 2.5,
                             set.bytes, 0, 1);
    __pulse_log_ext_print_v2(nullptr, "", "", "", "", "", "", "", 3, nullptr, 7, 0);
    EXPECT_THAT(
            file.lines(),
            ElementsAre(R"({"log":"Vlog","source":"src","schema":"s/2","group":"grp",)"
                        R"("name":"Name","package":"com.example","unit":"ms","dimension":"dim",)"
                        R"("value":2.5,"data":{"fps":"24"},"flag":1})",
                        R"({"log":"","source":"","schema":"","group":"","name":"","package":"",)"
                        R"("unit":"","dimension":"","value":3.0,"data":{},"reserved":7,)"
                        R"("flag":0})"));
}

TEST(MetricsTest, everyTextMakesValidJson) {
    const std::pair<const char*, const char*> cases[] = {
            {"\"\\line\nend\x01\xc3\xa4", "\"\\line\nend\x01\xc3\xa4"},
            {"bad\xff", "bad\xef\xbf\xbd"},
            {"cut\xe2\x82", "cut\xef\xbf\xbd"},
    };
    for (const auto& [text, inJson] : cases) {
        MetricsRecord record;
        record.name = text;
        record.value = NAN;
        record.data = {{text, text}};
        const std::string line = hostplatform::toJson(record);
        EXPECT_EQ(line.find('\n'), std::string::npos);
        const json parsed = json::parse(line, nullptr, false);
        ASSERT_FALSE(parsed.is_discarded()) << line;
        EXPECT_EQ(parsed["name"], inJson);
        EXPECT_EQ(parsed["data"][inJson], inJson);
        EXPECT_TRUE(parsed["value"].is_null());
    }
}

TEST(MetricsTest, whenProcessesAndThreadsWrite_linesStayWhole) {
    constexpr int kWriters = 4;
    constexpr int kRecords = 200;
    const MetricsFile file;
    const std::string name(3000, 'n');
    const auto write = [&name] {
        for (int i = 0; i < kRecords; ++i) print(name.c_str(), i, nullptr);
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
        ASSERT_EQ(json::parse(line, nullptr, false)["name"], name);
    }
}

}  // namespace
}  // namespace android
