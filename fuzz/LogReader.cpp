// SPDX-License-Identifier: Apache-2.0
// codecreport's reading of a captured log: any bytes, as a plain or compressed file, and of metrics
// records.
#include "Fuzz.h"

#include <sys/mman.h>
#include <unistd.h>

#include <tools/codecreport/Analysis.h>
#include <tools/codecreport/output/JsonReport.h>
#include <tools/codecreport/reference/Reference.h>

using namespace android::codecreport;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Reference& reference = *new Reference;
    if (size < 1) return 0;
    const int file = memfd_create("log", MFD_CLOEXEC);
    FUZZ_CHECK(file >= 0 && write(file, data + 1, size - 1) == static_cast<ssize_t>(size - 1));
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    Analysis analysis;
    if ((data[0] & 1) != 0) {
        readMetrics(path, &analysis);
    } else {
        readLogs(reference, {path}, false, &analysis);
    }
    close(file);
    // Whatever was read can be told.
    FUZZ_CHECK(nlohmann::json::accept(dump(toJson(analysis), false)));
    return 0;
}
