// SPDX-License-Identifier: Apache-2.0
// Format messages with any of the keys that are read, of any type and value, while the system
// property has any content.
#include "Fuzz.h"

#include <limits>
#include <map>
#include <memory>

#include <cutils/properties.h>
#include <media/stagefright/CodecBase.h>
#include <media/stagefright/foundation/AMessage.h>
#include <mediaCodecLogger/MediaCodecLogger.h>
#include <tests/support/FakeClock.h>
#include <tests/support/LogCapture.h>
#include <tests/support/ScopedProperties.h>

using namespace android;

namespace {

constexpr char kHdrProperty[] = "vendor.vdecomx.hdr-type";
constexpr const char* kKeys[] = {
        "width",
        "height",
        "crop",
        "color-standard",
        "color-range",
        "color-transfer",
        kHdrProperty,
        "vendor.mtk-codec2.hdr-type",
        "vendor.vdecomx.bitdepth",
        "vendor.mtk-codec2.color-depth",
        "vendor.vdecomx.scan-type",
        "vendor.mtk-codec2.scan-type",
};

/** What the getters must answer, read from the message in the simplest way. */
struct Expected {
    int32_t width = 0;
    int32_t height = 0;
    int32_t bitDepth = 0;
    int32_t color = 0;
    std::string hdr;
    std::string scan;

    void read(const sp<AMessage>& format) {
        const auto find = [&](const char* key, const char* other, int32_t* value) {
            return format->findInt32(key, value) || format->findInt32(other, value);
        };
        int32_t left, top, right, bottom, value;
        width = height = 0;
        if (format->findRect("crop", &left, &top, &right, &bottom)) {
            width = static_cast<int32_t>(int64_t{right} - left + 1);
            height = static_cast<int32_t>(int64_t{bottom} - top + 1);
        } else {
            format->findInt32("width", &width);
            format->findInt32("height", &height);
        }
        find("vendor.vdecomx.bitdepth", "vendor.mtk-codec2.color-depth", &bitDepth);
        if (find("vendor.vdecomx.scan-type", "vendor.mtk-codec2.scan-type", &value)) {
            static const std::map<int32_t, std::string> kNames = {{0, "progressive"},
                                                                  {1, "interlace"}};
            const auto name = kNames.find(value);
            scan = name != kNames.end() ? name->second : "??";
        }
        const bool hasHdr = find(kHdrProperty, "vendor.mtk-codec2.hdr-type", &value);
        if (!hasHdr) value = property_get_int32(kHdrProperty, -1);
        if (hasHdr || value != -1) {
            static const std::map<int32_t, std::string> kNames = {{0, "SDR"},  {1, "HDR10"},
                                                                  {2, "DOVI"}, {3, "TCH"},
                                                                  {4, "HLG"},  {5, "HDR10Plus"}};
            const auto name = kNames.find(value);
            hdr = name != kNames.end() ? name->second : "??";
        }
    }
};

sp<AMessage> readMessage(fuzz::Bytes& in) {
    sp<AMessage> format = new AMessage;
    for (int entries = in.byte() % 12; entries > 0; --entries) {
        const uint8_t which = in.byte();
        const char* key = kKeys[which % std::size(kKeys)];
        switch (which / std::size(kKeys) % 8) {
            case 0:
                format->setInt64(key, in.number<int64_t>());
                break;
            case 1:
                format->setString(key, std::string(in.text()).c_str());
                break;
            case 2:
            case 3: {
                int32_t rect[4];
                for (int32_t& side : rect) side = in.number<int32_t>();
                format->setRect(key, rect[0], rect[1], rect[2], rect[3]);
                break;
            }
            case 4:
            case 5:
                format->setInt32(key, static_cast<int8_t>(in.byte()));
                break;
            default:
                format->setInt32(key, in.number<int32_t>());
        }
    }
    return format;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static test::LogCapture& log = *new test::LogCapture;
    fuzz::Bytes in(data, size);
    test::ScopedProperties properties;
    test::FakeClock clock(1000);
    const sp<MediaCodecLogger> logger = MediaCodecLogger::Create(1, 2);
    logger->configure("c2.vendor", "video/avc", 0, true, 0, 0, nullptr, true);
    Expected expected;
    while (!in.atEnd()) {
        if (in.flag()) property_set(kHdrProperty, std::string(in.text()).c_str());
        sp<AMessage> format = readMessage(in);
        const int64_t pts = in.number<int32_t>();
        logger->updatePTSTime(pts, false, 1);
        logger->updateFormatChanged(format);
        expected.read(format);

        int width, height, color;
        logger->getResolution(width, height);
        logger->getColorProperties(color);
        int32_t reported;
        if (format->findInt32("color-standard", &reported)) {
            FUZZ_CHECK(reported >= 65 || color == reported);
        } else {
            FUZZ_CHECK(color == expected.color);
        }
        expected.color = color;
        FUZZ_CHECK(width == expected.width && height == expected.height, "%dx%d\n", width, height);
        FUZZ_CHECK(logger->getBitDepth() == expected.bitDepth);
        FUZZ_CHECK(expected.hdr == logger->getHDRType().c_str());
        FUZZ_CHECK(expected.scan == logger->getScanType().c_str());
        FUZZ_CHECK(heldLocks() == 0);
        logger->getStatus();
    }
    logger->logMetrics();
    log.take();
    return 0;
}
