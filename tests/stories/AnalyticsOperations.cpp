// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include <mediaCodecLogger/ZephraMediaAnalytic.h>
#include <ui/GraphicBuffer.h>

#include "Operations.h"

namespace android::test {

namespace {

ZephraMediaAnalytic& analytics() {
    return ZephraMediaAnalytic::instance();
}

/** What is usual is not written down. */
void unlessOk(status_t status) {
    if (status != OK) result(status);
}

/** The bytes of the word "data", or null without one. */
const uint8_t* bytesOf(const std::string& data) {
    return data.empty() ? nullptr : reinterpret_cast<const uint8_t*>(data.data());
}

/** "clear:encrypted,clear:encrypted" */
std::vector<CryptoPlugin::SubSample> subSamplesOf(const std::string& text) {
    std::vector<CryptoPlugin::SubSample> samples;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find(',', at), text.size());
        const size_t colon = text.find(':', at);
        samples.push_back({static_cast<uint32_t>(strtoul(&text[at], nullptr, 0)),
                           static_cast<uint32_t>(strtoul(&text[colon + 1], nullptr, 0))});
        at = end + 1;
    }
    return samples;
}

void updateInputFramePre(Args& a) {
    const std::string data = a.named("data", "");
    const std::string iv = a.named("iv", "");
    const auto samples = subSamplesOf(a.named("samples", ""));
    const int64_t count = a.namedNumber("count", samples.size());
    const int64_t size = a.namedNumber("size", data.size());
    const long timeUs = a.pts();
    const bool isFollowed = analytics().updateInputFrame_pre(
            a.stage.codec, bytesOf(data), size, nullptr, bytesOf(iv), count, samples.data(),
            CryptoPlugin::kMode_AES_CTR, timeUs, a.time(1000), count > 0);
    if (!isFollowed) result(false);
}

/** A graphic buffer of eight bytes "g", or none. */
sp<GraphicBuffer> graphicBuffer(bool isWanted) {
    if (!isWanted) return nullptr;
    const sp<GraphicBuffer> buffer = new GraphicBuffer(4, 4, 1, 1, 0);
    void* address = nullptr;
    if (buffer->lock(GRALLOC_USAGE_SW_WRITE_OFTEN, &address) == OK) {
        if (address != nullptr) std::fill_n(static_cast<char*>(address), 8, 'g');
        buffer->unlock();
    }
    return buffer;
}

}  // namespace

const Operations& analyticsOperations() {
    static const Operations& operations = *new Operations{
            {"addCodec",
             [](Args& a) {
                 const long key = a.namedNumber("key", a.stage.key);
                 const long bufferKey = a.namedNumber("bufferKey", key);
                 unlessOk(analytics().addCodec(a.text(a.stage.codecName.c_str()).c_str(),
                                               a.stage.codec, key, bufferKey));
             }},
            {"removeCodec", [](Args& a) { unlessOk(analytics().removeCodec(a.stage.codec)); }},
            {"isEnabled", [](Args&) { result(analytics().isEnabled()); }},
            {"getPackageName", [](Args&) { result(analytics().getPackageName().string()); }},
            {"updateInputFrame_pre", updateInputFramePre},
            {"updateInputFrame",
             [](Args& a) {
                 const int64_t size = a.namedNumber("size", 700);
                 const std::string format = a.named("format", a.stage.codecName.c_str());
                 const long timeUs = a.pts();
                 analytics().updateInputFrame(a.stage.codec, size, timeUs, false,
                                              a.flag("noFormat") ? "" : format.c_str());
             }},
            {"updateOmxInput",
             [](Args& a) {
                 const std::string data = a.named("data", "");
                 const int64_t size = a.namedNumber("size", data.empty() ? 800 : data.size());
                 analytics().updateOmxInput(a.stage.codec, bytesOf(data), size, a.pts(),
                                            a.namedNumber("owned", 3), a.namedNumber("flags", 0));
             }},
            {"updateOutputFrame",
             [](Args& a) { analytics().updateOutputFrame(a.stage.codec, a.pts()); }},
            {"updateOmxOutput",
             [](Args& a) {
                 analytics().updateOmxOutput(a.namedNumber("key", a.stage.key), a.pts(),
                                             a.namedNumber("flags", 0), a.namedNumber("size", 500));
             }},
            {"updateC2Output",
             [](Args& a) {
                 analytics().updateC2Output(a.stage.codec, a.pts(), a.namedNumber("flags", 0));
             }},
            {"updateACodecOutput",
             [](Args& a) {
                 const sp<GraphicBuffer> buffer = graphicBuffer(a.flag("graphic"));
                 const std::string data = a.named("data", "");
                 analytics().updateACodecOutput(a.stage.codec, bytesOf(data), buffer.get(),
                                                a.namedNumber("size", data.size()));
             }},
            {"flush", [](Args& a) { analytics().flush(a.stage.codec); }},
            {"updateCCodecConfigs",
             [](Args& a) {
                 analytics().updateCCodecConfigs(a.stage.codec, !a.flag("notVideo"), a.flag("off"),
                                                 !a.flag("encoder"));
             }},
            {"updateBuffers",
             [](Args& a) {
                 const bool isVideo = !a.flag("notVideo");
                 const bool isOff = a.flag("off");
                 const bool isDecoder = !a.flag("encoder");
                 const long key = a.flag("byKey") ? a.stage.key : a.namedNumber("key", 0);
                 const int64_t port = a.number();
                 const int64_t count = a.number();
                 const int64_t minUndequeued = a.number(0);
                 if (key != 0) {
                     analytics().updateBuffers(key, port, count, minUndequeued);
                 } else {
                     analytics().updateBuffers(a.stage.codec, port, count, minUndequeued, isVideo,
                                               isOff, isDecoder);
                 }
             }},
            {"updateFrameRender",
             [](Args& a) {
                 const long renderTimeNs = a.time(1);
                 analytics().updateFrameRender(a.stage.codec, renderTimeNs, a.pts());
             }},
            {"dropFrameAnalyze",
             [](Args& a) {
                 analytics().dropFrameAnalyze(a.stage.codec, a.pts(), a.flag("rendered"));
             }},
            {"updateQueueBuffer",
             [](Args& a) {
                 const auto* buffer = reinterpret_cast<const GraphicBuffer*>(a.number());
                 const long startUs = a.time(1000);
                 const long renderTimeNs = a.time(1);
                 analytics().updateQueueBuffer(a.stage.codec, startUs, renderTimeNs,
                                               a.isEmpty() ? 40000 : a.pts(), buffer);
             }},
            {"updateDequeueBuffer",
             [](Args& a) {
                 const auto* buffer = reinterpret_cast<const void*>(a.number());
                 const int64_t owned = a.namedNumber("owned", 3);
                 analytics().updateDequeueBuffer(a.stage.codec, a.time(1000), buffer, owned);
             }},
    };
    return operations;
}

}  // namespace android::test
