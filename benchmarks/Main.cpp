// SPDX-License-Identifier: Apache-2.0
// codec_benchmark [--json=FILE] [options of Google Benchmark]: what the library costs.
#include <string.h>

#include <future>
#include <thread>

#include <benchmark/benchmark.h>
#include <benchmarks/NullLog.h>
#include <benchmarks/Report.h>

int main(int argc, char** argv) {
    constexpr char kJson[] = "--json=";
    std::string jsonPath;
    if (argc > 1 && strncmp(argv[1], kJson, strlen(kJson)) == 0) {
        jsonPath = argv[1] + strlen(kJson);
        argv[1] = argv[0];
        --argc;
        ++argv;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;

    // With a second thread alive the C library's locks and reference counts are what they are in a
    // media process: it takes short cuts while there is only one.
    std::promise<void> done;
    std::thread bystander([wait = done.get_future()] { wait.wait(); });

    android::bench::discardLog();
    android::bench::Report report(jsonPath);
    benchmark::RunSpecifiedBenchmarks(&report);
    done.set_value();
    bystander.join();
    return report.ok() ? 0 : 1;
}
