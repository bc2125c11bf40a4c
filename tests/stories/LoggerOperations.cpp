// SPDX-License-Identifier: Apache-2.0
#include <stdlib.h>

#include "Operations.h"

namespace android::test {

namespace {

sp<AMessage> formatOf(Args& args) {
    const sp<AMessage> format = new AMessage;
    for (const auto& [key, value] : args.pairs()) {
        int32_t r[4];
        if (sscanf(value.c_str(), "%d,%d,%d,%d", &r[0], &r[1], &r[2], &r[3]) == 4) {
            format->setRect(key.c_str(), r[0], r[1], r[2], r[3]);
        } else {
            format->setInt32(key.c_str(), static_cast<int32_t>(strtol(value.c_str(), nullptr, 0)));
        }
    }
    return format;
}

MediaCodecLogger& loggerOf(Args& args) {
    if (args.stage.logger == nullptr) fail("there is no logger");
    return *args.stage.logger;
}

void result(const AString& text) {
    test::result(text.c_str());
}
using test::result;

template <void (MediaCodecLogger::*operation)()>
void plain(Args& args) {
    (loggerOf(args).*operation)();
}

template <typename Result, Result (MediaCodecLogger::*operation)()>
void ask(Args& args) {
    result((loggerOf(args).*operation)());
}

void askClient(Args& args) {
    const sp<IMediaCodecLoggerClient> client = args.stage.service->client();
    const std::string what = args.text();
    int a = -1, b = -1;
    if (what == "getStatus") return result(client->getStatus().string());
    if (what == "getPackageName") return result(client->getPackageName().string());
    if (what == "isVideoClient") return result(client->isVideoClient());
    if (what == "getPid") return result(client->getPid());
    if (what == "getClientHDRType") return result(client->getClientHDRType().string());
    if (what == "getClientBitDepth") return result(client->getClientBitDepth());
    if (what == "getClientScanType") return result(client->getClientScanType().string());
    if (what == "getTimeSinceLastFrameRendered") {
        return result(client->getTimeSinceLastFrameRendered());
    }
    if (what == "getUid") return result(client->getUid());
    if (what == "getBufferCountSinceLastFlush") {
        return result(client->getBufferCountSinceLastFlush());
    }
    if (what == "isVideoClientUsingSecureMem") {
        return result(client->isVideoClientUsingSecureMem());
    }
    if (what == "getClientCodecFormat") return result(client->getClientCodecFormat().string());
    if (what == "getClientColorProperties") {
        client->getClientColorProperties(a);
        return result(a);
    }
    if (what != "getClientResolution") fail("the client has no '" + what + "'");
    client->getClientResolution(a, b);
    result(std::to_string(a) + "x" + std::to_string(b));
}

}  // namespace

const Operations& loggerOperations() {
    using Logger = MediaCodecLogger;
    static const Operations& operations = *new Operations{
            {"configure",
             [](Args& a) {
                 const bool isDecoder = !a.flag("encoder");
                 const bool isLogged = !a.flag("loggingOff");
                 const int64_t flags = a.namedNumber("flags", 0);
                 const int64_t width = a.namedNumber("maxWidth", 0);
                 const int64_t height = a.namedNumber("maxHeight", 0);
                 const std::string name = a.text("c2.vendor.avc.decoder");
                 loggerOf(a).configure(name.c_str(), a.text("video/avc").c_str(), flags, isDecoder,
                                       width, height, a.stage.codec, isLogged);
             }},
            {"resetMetricsData", plain<&Logger::resetMetricsData>},
            {"replacePkgNameWithPid",
             [](Args& a) {
                 const bool isNull = a.isEmpty();
                 const std::string text = a.text("");
                 result(loggerOf(a).replacePkgNameWithPid(isNull ? nullptr : text.c_str()));
             }},
            {"mapResolution", [](Args& a) { result(loggerOf(a).mapResolution(a.number())); }},
            {"updateDisplaySize", plain<&Logger::updateDisplaySize>},
            {"getCodecFormat",
             [](Args& a) {
                 AString format;
                 loggerOf(a).getCodecFormat(a.text().c_str(), format);
                 result(format);
             }},
            // Playback
            {"updatePTSTime",
             [](Args& a) {
                 loggerOf(a).updatePTSTime(a.pts(), a.flag("eos"), a.namedNumber("count", 1));
             }},
            {"logRepeatPTS",
             [](Args& a) {
                 const int64_t repeats = a.number();
                 loggerOf(a).logRepeatPTS(repeats, a.pts());
             }},
            {"checkRepeatedInputPTS", [](Args& a) { loggerOf(a).checkRepeatedInputPTS(a.pts()); }},
            {"updateMetricsForFlush", plain<&Logger::updateMetricsForFlush>},
            // Stream format
            {"updateFormatChanged",
             [](Args& a) {
                 sp<AMessage> format = formatOf(a);
                 loggerOf(a).updateFormatChanged(format);
             }},
            {"convertExtendedColorToStandard",
             [](Args& a) {
                 int standard = -1;
                 const sp<AMessage> format = formatOf(a);
                 const status_t status =
                         loggerOf(a).convertExtendedColorToStandard(format, standard);
                 result(std::to_string(status) + " standard " + std::to_string(standard));
             }},
            {"parseMetricValue",
             [](Args& a) {
                 const std::string text = a.text();
                 result(int64_t{loggerOf(a).parseMetricValue(text.c_str(), a.text().c_str())});
             }},
            {"updateVendorMetrics",
             [](Args& a) {
                 AString text(a.text("").c_str());
                 loggerOf(a).updateVendorMetrics(text);
             }},
            {"getEmbeddedWarnings",
             [](Args& a) {
                 AString text;
                 loggerOf(a).getEmbeddedWarnings(text);
                 result(text);
             }},
            {"getHDRType", ask<AString, &Logger::getHDRType>},
            {"getResolution",
             [](Args& a) {
                 int width, height;
                 loggerOf(a).getResolution(width, height);
                 result(std::to_string(width) + "x" + std::to_string(height));
             }},
            {"getBitDepth", ask<int, &Logger::getBitDepth>},
            {"getScanType", ask<AString, &Logger::getScanType>},
            {"getColorProperties",
             [](Args& a) {
                 int value;
                 loggerOf(a).getColorProperties(value);
                 result(value);
             }},
            // Input and bitrate
            {"queueInputBuffer_pre",
             [](Args& a) {
                 const std::string data = a.named("data", "");
                 const bool isEncrypted = a.flag("encrypted");
                 const long timeUs = a.pts();
                 loggerOf(a).queueInputBuffer_pre(reinterpret_cast<const uint8_t*>(data.data()),
                                                  data.size(), nullptr, nullptr, 0, nullptr,
                                                  CryptoPlugin::kMode_Unencrypted, timeUs,
                                                  a.time(1000), isEncrypted);
             }},
            {"logInputBufferBitrate",
             [](Args& a) {
                 loggerOf(a).logInputBufferBitrate(a.namedNumber("size", 1000), a.pts(),
                                                   a.flag("secure"), a.flag("secureMemory"));
             }},
            {"performBitrateCalculationAndTracking",
             [](Args& a) {
                 loggerOf(a).performBitrateCalculationAndTracking(a.namedNumber("size", 1000),
                                                                  a.pts());
             }},
            {"isAtmosDetected", ask<bool, &Logger::isAtmosDetected>},
            // Frame drops and notifications
            {"updateFrameDropCounters",
             [](Args& a) {
                 if (a.isEmpty()) return loggerOf(a).updateFrameDropCounters();
                 const bool isDropped = a.flag("dropped");
                 loggerOf(a).updateFrameDropCounters(a.pts(), !isDropped);
             }},
            {"resetConsecutiveFrameDropFlag",
             [](Args& a) {
                 const long renderTimeNs = a.time(1);
                 loggerOf(a).resetConsecutiveFrameDropFlag(
                         renderTimeNs, a.pts(), a.flag("fromTunnel"), a.namedNumber("count", 1));
             }},
            {"checkAndNotifyOutBufferAvailableAfterDelay",
             plain<&Logger::checkAndNotifyOutBufferAvailableAfterDelay>},
            {"notifyOutBufferAvailablAfterDelay",
             [](Args& a) { loggerOf(a).notifyOutBufferAvailablAfterDelay(a.number()); }},
            {"notifyFirstFrameRendered", plain<&Logger::notifyFirstFrameRendered>},
            {"isInMitigateFrameDropAllowlist", ask<bool, &Logger::isInMitigateFrameDropAllowlist>},
            {"getFramedropMeta", ask<AString, &Logger::getFramedropMeta>},
            // Report
            {"logMetrics", ask<AString, &Logger::logMetrics>},
            {"logToBuffers",
             [](Args& a) {
                 const std::string key = a.text();
                 loggerOf(a).logToBuffers(key.c_str(), a.number());
             }},
            {"logFramerateToPulse",
             [](Args& a) {
                 const char* package = a.flag("null") ? nullptr : "com.android.mediaplayer";
                 const char* codec = a.flag("nullCodec") ? nullptr : "avc";
                 result(loggerOf(a).logFramerateToPulse(package, codec,
                                                        strtof(a.text().c_str(), nullptr)));
             }},
            {"getFramerate", ask<AString, &Logger::getFramerate>},
            {"getDurationRange", [](Args& a) { result(loggerOf(a).getDurationRange(a.number())); }},
            // Start-up, stop, errors and status
            {"profileP2End",
             [](Args& a) {
                 loggerOf(a).profileP2End();
                 const sp<RecordingService>& service = a.stage.service;
                 if (service == nullptr || service->client() == nullptr) return;
                 Journal::instance().mask(
                         std::to_string(reinterpret_cast<int64_t>(service->client().get())),
                         "<client>");
             }},
            {"profileP3Start", plain<&Logger::profileP3Start>},
            {"profileP3End", plain<&Logger::profileP3End>},
            {"profileMCStopBegin", plain<&Logger::profileMCStopBegin>},
            {"profileMCStopEnd", plain<&Logger::profileMCStopEnd>},
            {"uploadDecoderError", [](Args& a) { loggerOf(a).uploadDecoderError(a.number()); }},
            {"getStatus",
             [](Args& a) {
                 const std::string status = loggerOf(a).getStatus().c_str();
                 if (a.isEmpty()) return result(status);
                 // One line of it.
                 const std::string name = "\t" + a.text() + ": ";
                 const size_t at = status.find(name);
                 if (at == std::string::npos) return result("none");
                 result(status.substr(at + name.size(), status.find('\n', at) - at - name.size()));
             }},
            {"client",
             [](Args& a) {
                 do askClient(a);
                 while (!a.isEmpty());
             }},
    };
    return operations;
}

}  // namespace android::test
