// SPDX-License-Identifier: Apache-2.0
// codec_benchmark [--json=FILE] [options of Google Benchmark]: what the library costs.
#include <stdio.h>
#include <string.h>

#include <benchmark/benchmark.h>
#include <benchmarks/NullLog.h>
#include <benchmarks/Report.h>
#include <mediaCodecLogger/MediaCodecLogger.h>

int main(int argc, char** argv) {
    constexpr char kJson[] = "--json=";
    std::string jsonPath;
    if (argc > 1 && strncmp(argv[1], kJson, strlen(kJson)) == 0) {
        jsonPath = argv[1] + strlen(kJson);
        argv[1] = argv[0];
        --argc;
        ++argv;
    }
    const std::string size = std::to_string(sizeof(android::MediaCodecLogger));
    benchmark::AddCustomContext("sizeof(MediaCodecLogger)", size);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;

    android::bench::discardLog();
    android::bench::Report report(jsonPath);
    benchmark::RunSpecifiedBenchmarks(&report);
    printf("\nsizeof(MediaCodecLogger): %s bytes\n", size.c_str());
    return report.ok() ? 0 : 1;
}
