// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace android::bench {

/** The benchmark that all others are measured against. */
constexpr char kClockBenchmark[] = "clock_gettime";

/** Shows whatever the benchmarks count as columns of these names. */
constexpr char kAllocations[] = "allocations";
constexpr char kBytes[] = "bytes";

/**
 * Prints a table of the medians once all benchmarks have run, each also as a multiple of one
 * clock_gettime, and writes the same as JSON.
 */
class Report : public benchmark::BenchmarkReporter {
  public:
    /** `jsonPath` may be empty: no JSON then. */
    explicit Report(std::string jsonPath) : mJsonPath(std::move(jsonPath)) {}

    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

    /** Whether every benchmark ran. */
    bool ok() const { return mOk; }

  private:
    double clockNs() const;
    void writeJson();

    const std::string mJsonPath;
    std::vector<Run> mMedians;
    bool mOk = true;
};

}  // namespace android::bench
