// SPDX-License-Identifier: Apache-2.0
#include "Resources.h"

// The assembler reads the files; CMake gives their folders and rebuilds this source when they
// change.
#define RESOURCE(name, file)                                                         \
    asm(".section .rodata\n"                                                         \
        ".balign 8\n"                                                                \
        ".global codecreport_" #name                                                 \
        "\n"                                                                         \
        "codecreport_" #name                                                         \
        ":\n"                                                                        \
        ".incbin \"" file                                                            \
        "\"\n"                                                                       \
        ".global codecreport_" #name                                                 \
        "_end\n"                                                                     \
        "codecreport_" #name                                                         \
        "_end:\n"                                                                    \
        ".byte 0\n"                                                                  \
        ".previous\n");                                                              \
    extern "C" const char codecreport_##name[];                                      \
    extern "C" const char codecreport_##name##_end[];                                \
    namespace android::codecreport::resources {                                      \
    std::string_view name() {                                                        \
        return {codecreport_##name,                                                  \
                static_cast<size_t>(codecreport_##name##_end - codecreport_##name)}; \
    }                                                                                \
    }

RESOURCE(analysisFields, "reference/analysis-fields.json")
RESOURCE(analyticsLines, "reference/analytics-lines.json")
RESOURCE(causes, "reference/causes.json")
RESOURCE(debugMask, "reference/debug-mask.json")
RESOURCE(fields, "reference/fields.json")
RESOURCE(history, "reference/history.json")
RESOURCE(loggerLines, "reference/logger-lines.json")
RESOURCE(metrics, "reference/metrics.json")
RESOURCE(reportJson, "reference/report-json.json")
RESOURCE(reportKeys, "reference/report-keys.json")
RESOURCE(serviceLines, "reference/service-lines.json")
RESOURCE(settings, "reference/settings.json")
RESOURCE(statusLines, "reference/status-lines.json")
RESOURCE(verdicts, "reference/verdicts.json")

RESOURCE(fleetHtml, "fleet/fleet.html")
RESOURCE(pageHtml, "output/page/page.html")
RESOURCE(pageCss, "output/page/page.css")
RESOURCE(pageJs, "page.js")
RESOURCE(plotCss, "uplot/dist/uPlot.min.css")
RESOURCE(plotLicense, "uplot/LICENSE")
