// SPDX-License-Identifier: Apache-2.0
// A codec's life as a story of any events in any order, with numbers, texts, a clock and a device
// of any kind. Nothing may crash, hang or leak; a lock that is kept hangs the next event.
// MCL_FUZZ_STORY=1 prints the story of an input, for tests/stories.
//
// Numbers stay below 2^40, because sums of more end the process on purpose.
#include "Fuzz.h"

#include <ctype.h>
#include <fcntl.h>
#include <unistd.h>

#include <tests/stories/Journal.h>
#include <tests/stories/Stage.h>
#include <tests/stories/Story.h>

using namespace android;

namespace {

/** "#" is a number, "%" a small one, "$" a text. */
constexpr const char* kEvents[] = {
        "after %",
        "after #us",
        "codec %",
        "service",
        "service none",
        "service lifetime=%",
        "answers allowlist=# oldestAudio=$",
        "display % #",
        "display none",
        "audio $",
        "property mediaanalytic.enable true",
        "property mediaanalytic.debug %",
        "property mediaanalytic.debug 0xf047f",
        "property mediaanalytic.maxqueuesize %",
        "property mediaanalytic.$ $",
        "property vendor.vdecomx.hdr-type $",
        "dumps closed",
        // The logger
        "configure",
        "configure c2.mtk.dec video/avc flags=%",
        "configure c2.android audio/raw",
        "configure x$ video/$ flags=% maxWidth=# maxHeight=%",
        "configure OMX.x x$ loggingOff",
        "configure c2.x video/hevc encoder",
        "resetMetricsData",
        "updateDisplaySize",
        "updatePTSTime #",
        "updatePTSTime +% count=%",
        "updatePTSTime . eos",
        "times 30 { after 20 ; input +20000 ; output . ; render . }",
        "logRepeatPTS % #",
        "checkRepeatedInputPTS .",
        "updateMetricsForFlush",
        "updateFormatChanged width=# height=% crop=%,%,%,% color-standard=# "
        "vendor.mtk-codec2.hdr-type=%",
        "updateVendorMetrics "
        "$HWCRenderFrameCount=%$MaxConsecutiveFramesDropped=%$TunnelFrameDropCount=%",
        "parseMetricValue $ $",
        "queueInputBuffer_pre # # data=$",
        "logInputBufferBitrate # size=% secure",
        "logInputBufferBitrate +% size=# secureMemory",
        "updateFrameDropCounters # dropped",
        "times 12 { updateFrameDropCounters . dropped }",
        "updateFrameDropCounters .",
        "updateFrameDropCounters",
        "resetConsecutiveFrameDropFlag # . count=%",
        "resetConsecutiveFrameDropFlag @+% . fromTunnel count=%",
        "isInMitigateFrameDropAllowlist",
        "logMetrics",
        "logToBuffers $ #",
        "logFramerateToPulse %",
        "profileP2End",
        "profileP3Start",
        "profileP3End",
        "profileMCStopBegin",
        "profileMCStopEnd",
        "uploadDecoderError %",
        "getHDRType",
        "getFramerate",
        "getEmbeddedWarnings",
        "isAtmosDetected",
        "Create",
        "convertExtendedColorToStandard color-standard=#",
        // The analytics
        "addCodec $ key=%",
        "updateBuffers 0 %",
        "updateBuffers 1 % %",
        "updateBuffers key=% 1 % notVideo",
        "updateCCodecConfigs",
        "updateCCodecConfigs encoder",
        "removeCodec",
        "updateInputFrame_pre # data=$ samples=%:%,%:%",
        "updateInputFrame_pre .",
        "updateInputFrame . format=$",
        "updateOmxInput . flags=% data=$",
        "updateOmxOutput . key=% flags=%",
        "updateC2Output . flags=%",
        "updateACodecOutput data=$",
        "updateOutputFrame .",
        "updateFrameRender @+% .",
        "updateFrameRender # .",
        "dropFrameAnalyze .",
        "updateQueueBuffer % @-% @+% .",
        "updateQueueBuffer % # # #",
        "updateDequeueBuffer % @-% owned=%",
        "flush",
};

std::string quoted(std::string_view bytes) {
    std::string text = "\"";
    for (const char c : bytes) {
        char code[5];
        if (isalnum(static_cast<unsigned char>(c))) {
            text += c;
            continue;
        }
        snprintf(code, sizeof(code), "\\x%02x", static_cast<unsigned char>(c == '\0' ? ' ' : c));
        text += code;
    }
    return text + "\"";
}

std::string nextEvent(fuzz::Bytes* input) {
    std::string event;
    for (const char* at = kEvents[input->byte() % std::size(kEvents)]; *at != '\0'; ++at) {
        if (*at == '#') {
            event += std::to_string(input->number<int64_t>() >> 23);
        } else if (*at == '%') {
            event += std::to_string(input->byte());
        } else {
            event += *at == '$' ? quoted(input->bytes(input->byte() % 64)) : std::string(1, *at);
        }
    }
    return event;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool isPrinted = getenv("MCL_FUZZ_STORY") != nullptr;
    static const test::Definitions words = {
            {"input", "logInputBufferBitrate $1"},
            {"output", "updatePTSTime $1"},
            {"render", "updateFrameDropCounters $1 ; resetConsecutiveFrameDropFlag -1 ."}};
    static const int output = isPrinted ? STDOUT_FILENO : open("/dev/null", O_WRONLY | O_CLOEXEC);
    test::Journal::instance().open(output);
    fuzz::Bytes input(data, size);
    std::map<std::string, test::Stage::Codec> codecs;
    {
        test::Stage stage;
        test::play(stage, words, "display 1920 1080 ; audio \"\" ; dumps work");
        while (!input.atEnd()) {
            const std::string event = nextEvent(&input);
            if (isPrinted) test::Journal::instance().source(event);
            test::play(stage, words, event);
        }
        codecs = stage.codecs;
    }
    for (const auto& [name, codec] : codecs) {
        FUZZ_CHECK(codec.codec->getStrongCount() == 1, "%s is still held", name.c_str());
    }
    return 0;
}
