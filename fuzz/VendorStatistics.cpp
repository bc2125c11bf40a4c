// SPDX-License-Identifier: Apache-2.0
// The statistics string of a codec's component: any text, read as the naive reading below would.
#include "Fuzz.h"

#include <errno.h>

#include <limits>
#include <memory>

#include <media/stagefright/CodecBase.h>
#include <mediaCodecLogger/MediaCodecLogger.h>
#include <tests/support/FakeClock.h>
#include <tests/support/LogCapture.h>

using namespace android;

namespace {

/** The digits after the key and one separator, 0 if there are none. */
long naiveValue(const std::string& text, const std::string& key) {
    const std::string seen = text.c_str();  // texts end at their first NUL
    const size_t at = seen.find(key);
    if (at == std::string::npos || at + key.size() + 1 >= text.size()) return 0;
    const char* value = text.c_str() + at + key.size() + 1;
    errno = 0;
    return strtol(value, nullptr, 10);
}

/** Bytes as they are, and those from 0xf0 on for a key. */
std::string readText(fuzz::Bytes& in) {
    static constexpr const char* kKeys[] = {"CodecNonFatalErrorCount", "TunnelFrameDropCount",
                                            "HWCRenderFrameCount", "MaxConsecutiveFramesDropped",
                                            "=9999999999999999999"};
    std::string text;
    for (const char byte : in.text()) {
        const uint8_t value = static_cast<uint8_t>(byte);
        value >= 0xf0 ? text.append(kKeys[value % std::size(kKeys)]) : text.append(1, byte);
    }
    return text;
}

uint32_t dropped(MediaCodecLogger& logger) {
    const AString status = logger.getStatus();
    const ssize_t at = status.find("FramesDropped: ");
    FUZZ_CHECK(at >= 0);
    return static_cast<uint32_t>(atol(status.c_str() + at + strlen("FramesDropped: ")));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static test::LogCapture& log = *new test::LogCapture;
    fuzz::Bytes in(data, size);
    const test::FakeClock clock(1000);
    const sp<MediaCodecLogger> logger = MediaCodecLogger::Create(1, 2);
    const bool tunneled = in.flag();
    logger->configure("c2.vendor", "video/avc", tunneled, true, 0, 0, nullptr, true);
    const int rendered = in.byte();
    for (int i = 0; i < rendered; ++i) logger->updateFrameDropCounters(i, true);

    uint32_t expected = 0;
    uint32_t longest = 0;
    while (!in.atEnd()) {
        const std::string text = readText(in);
        AString metrics(text.data(), text.size());
        // Where the text ends matters, so its last characters are taken off as well.
        for (size_t cut = 0; cut < std::min<size_t>(4, text.size()); ++cut) {
            const std::string head = text.substr(0, text.size() - cut);
            const AString seen(head.data(), head.size());
            for (const char* key :
                 {"CodecNonFatalErrorCount", "HWCRenderFrameCount", "", "=", "9"}) {
                FUZZ_CHECK(logger->parseMetricValue(seen, key) == naiveValue(head, key), "%s: %s\n",
                           key, head.c_str());
            }
        }
        logger->updateVendorMetrics(metrics);
        const auto value = [&](const char* key) {
            return static_cast<uint32_t>(naiveValue(text, key));
        };
        const uint32_t shown = value("HWCRenderFrameCount");
        if (tunneled) {
            expected += value("TunnelFrameDropCount");
        } else if (shown != 0 && static_cast<uint32_t>(rendered) > shown) {
            expected += rendered - shown;
        }
        longest = std::max(longest, value("MaxConsecutiveFramesDropped"));
        FUZZ_CHECK(dropped(*logger) == expected);
        AString prefix;
        logger->getEmbeddedWarnings(prefix);
        FUZZ_CHECK(prefix.startsWith("W.mcfd") == (longest > 9));
        FUZZ_CHECK(heldLocks() == 0);
    }
    log.take();
    return 0;
}
