// SPDX-License-Identifier: Apache-2.0
#include <benchmarks/Report.h>

#include <stdio.h>

#include <cmath>
#include <fstream>

namespace android::bench {

namespace {

/** Nanoseconds of one iteration, of the clock that the benchmark asked for. */
double nanoseconds(const benchmark::BenchmarkReporter::Run& run) {
    const bool isCpu = run.benchmark_name().find("real_time") == std::string::npos &&
                       run.benchmark_name().find("manual_time") == std::string::npos;
    const double time = isCpu ? run.GetAdjustedCPUTime() : run.GetAdjustedRealTime();
    return time * 1e9 / benchmark::GetTimeUnitMultiplier(run.time_unit);
}

/** "name/arguments" without what the benchmark library adds about its own settings. */
std::string shownName(const benchmark::BenchmarkReporter::Run& run) {
    std::string name = run.run_name.function_name;
    if (!run.run_name.args.empty()) name += " " + run.run_name.args;
    if (!run.run_name.threads.empty()) name += " " + run.run_name.threads;
    if (!run.report_label.empty()) name += " (" + run.report_label + ")";
    return name;
}

std::string counter(const benchmark::BenchmarkReporter::Run& run, const char* name) {
    const auto found = run.counters.find(name);
    if (found == run.counters.end()) return "";
    char text[32];
    snprintf(text, sizeof(text), "%g", std::round(found->second.value * 1000) / 1000);
    return text;
}

}  // namespace

bool Report::ReportContext(const Context& context) {
    PrintBasicContext(&GetErrorStream(), context);
    return true;
}

void Report::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        if (run.error_occurred) {
            mOk = false;
            fprintf(stderr, "%s: %s\n", run.benchmark_name().c_str(), run.error_message.c_str());
        } else if (run.aggregate_name == "median") {
            fprintf(stderr, "  %s\n", shownName(run).c_str());
            mMedians.push_back(run);
        }
    }
}

double Report::clockNs() const {
    for (const Run& run : mMedians) {
        if (run.run_name.function_name == kClockBenchmark) return nanoseconds(run);
    }
    return 0;
}

void Report::Finalize() {
    const double clock = clockNs();
    if (clock == 0) {
        fprintf(stderr, "%s did not run, so there is nothing to compare with\n", kClockBenchmark);
        mOk = false;
        return;
    }
    printf("| what | ns | clock reads' worth | allocations | bytes |\n");
    printf("|---|---:|---:|---:|---:|\n");
    for (Run& run : mMedians) {
        const double ns = nanoseconds(run);
        run.counters["clock_reads_worth"] = ns / clock;
        printf("| %s | %.1f | %.2f | %s | %s |\n", shownName(run).c_str(), ns, ns / clock,
               counter(run, kAllocations).c_str(), counter(run, kBytes).c_str());
    }
    if (!mJsonPath.empty()) writeJson();
}

void Report::writeJson() {
    std::ofstream file(mJsonPath);
    benchmark::JSONReporter json;
    json.SetOutputStream(&file);
    json.SetErrorStream(&GetErrorStream());
    json.ReportContext(Context());
    json.ReportRuns(mMedians);
    json.Finalize();
    file.close();
    if (!file) {
        fprintf(stderr, "cannot write %s\n", mJsonPath.c_str());
        mOk = false;
    }
}

}  // namespace android::bench
