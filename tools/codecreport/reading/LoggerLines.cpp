// SPDX-License-Identifier: Apache-2.0
#include <inttypes.h>
#include <stdarg.h>
#include <stdio.h>

#include "reading/LineHandlers.h"

namespace android::codecreport {

namespace {

// Repeats come by the hundred and say the same.
constexpr uint64_t kMaxRepeatMoments = 20;

int64_t stampNow(const Fields& fields) {
    return fields.number("at_ms");
}

template <int64_t Startup::*MEMBER>
void stampPhase(const Event& event) {
    event.session.startup.*MEMBER = event.stamp("at_ms");
}

void onP2Begin(const Event& event) {
    stampPhase<&Startup::p2BeginUs>(event);
    Session& session = event.session;
    // The line itself may have waited for the service, and the log may show seconds only.
    if (session.startup.p2BeginUs != kNoTime) session.startUs = session.startup.p2BeginUs;
}

void onAdaptive(const Event& event) {
    event.session.maxWidth = event.fields.number("width");
    event.session.maxHeight = event.fields.number("height");
}

void onBitrate(const Event& event) {
    event.session.bitrateKbps.add(event.timeUs, event.fields.number("bitrate_kbps"));
}

void onFlush(const Event& event) {
    ++event.session.flushes;
    event.session.flushPending = true;
    event.session.ended = false;
    event.flow.onFlush(event.timeUs);
    event.moment("flush", format("flushed at %.3f fps", event.fields.real("framerate_fps")));
}

void onFirstPts(const Event& event) {
    Session& session = event.session;
    const int64_t pts = event.fields.number("pts_us");
    // A flush logs itself only where it ends a segment of video.
    if (session.sawFirstPts && !session.flushPending) {
        ++session.flushes;
        // When that was, no line tells.
        event.flow.onDiscontinuity(Place::FLUSH, kNoTime);
        event.moment("flush", format("output goes on at %.3f s", pts / 1e6));
    }
    session.sawFirstPts = true;
    session.flushPending = false;
}

void onSeek(const Event& event) {
    ++event.session.seeks;
    event.flow.onSeek();
    event.moment("seek", format("media time went from %.3f s to %.3f s",
                                event.fields.number("last_pts_us") / 1e6,
                                event.fields.number("pts_us") / 1e6));
}

void onDelayedOutput(const Event& event) {
    ++event.session.delayedOutputs;
    // With a line for each frame the frames themselves showed the gap.
    if (event.session.rendered == 0) event.flow.onResume();
    event.session.package = event.fields.text("package");
    event.moment("stall",
                 format("nothing was rendered for %" PRId64 " ms", event.fields.number("gap_ms")));
}

void onDisplayDropped(const Event& event) {
    event.session.displayDropped = event.fields.number("frames");
    event.moment("display drops", format("%" PRId64 " frames were lost on the way to the display",
                                         event.fields.number("frames")));
}

void onDroppedTotal(const Event& event) {
    event.moment("drops",
                 format("%" PRId64 " frames dropped so far", event.fields.number("frames")));
}

void onEnd(const Event& event) {
    event.session.ended = true;
    event.moment("end", "end of stream");
}

void onRepeatOutput(const Event& event) {
    if (++event.session.repeatedOutputs > kMaxRepeatMoments) return;
    event.moment("repeat",
                 format("output repeats media time %.3f s", event.fields.number("pts_us") / 1e6));
}

void onRepeatInput(const Event& event) {
    if (++event.session.repeatedInputs > kMaxRepeatMoments) return;
    event.moment("repeat",
                 format("input repeats media time %.3f s", event.fields.number("pts_us") / 1e6));
}

void onFormat(const Event& event) {
    Session& session = event.session;
    ++session.formatChanges;
    session.width = event.fields.number("width");
    session.height = event.fields.number("height");
    session.colorStandard = event.fields.number("color_standard");
    // Where the format has no such key, what was known stays known.
    for (const auto& [member, name] : {std::make_pair(&Session::hdrType, "hdr_type"),
                                       std::make_pair(&Session::scanType, "scan_type"),
                                       std::make_pair(&Session::bitDepth, "bit_depth")}) {
        const int64_t value = event.fields.number(name);
        if (value != -1) session.*member = value;
    }
    event.moment("format", format("%" PRId64 "x%" PRId64, session.width, session.height));
}

void onResolutionChange(const Event& event) {
    event.moment("resolution",
                 format("first frame %" PRId64 " ms after the last one before the format change",
                        event.fields.number("gap_ms")));
}

void onStop(const Event& event) {
    Startup& startup = event.session.startup;
    startup.stopBeginUs = event.stamp("stop_begin_ms");
    startup.stopEndUs = event.stamp("stop_end_ms");
}

}  // namespace

std::string format(const char* format, ...) {
    char text[256];
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof(text), format, args);
    va_end(args);
    return text;
}

void Event::moment(const char* kind, std::string text) const {
    session.addMoment({timeUs, kind, std::move(text)});
}

int64_t Event::stamp(const char* field) const {
    const int64_t ms = fields.number(field);
    return ms == 0 ? kNoTime : clock.fromMonotonic(ms);
}

void addLoggerLines(LineHandlers* handlers) {
    // P2 begins and the first frames wait for the service before their line: no measure of the
    // clock.
    *handlers = {
            {"p2_begin", {onP2Begin, nullptr}},
            {"p2_end", {stampPhase<&Startup::p2EndUs>, stampNow}},
            {"p3_begin", {stampPhase<&Startup::p3BeginUs>, stampNow}},
            {"p3_end", {stampPhase<&Startup::p3EndUs>, stampNow}},
            {"first_input", {stampPhase<&Startup::firstInputUs>, stampNow}},
            {"first_ready", {stampPhase<&Startup::firstReadyUs>, nullptr}},
            {"first_render", {stampPhase<&Startup::firstRenderUs>, nullptr}},
            {"adaptive", {onAdaptive, nullptr}},
            {"app_timestamps", {[](const Event& e) { e.session.appTimestamps = true; }, nullptr}},
            {"bitrate", {onBitrate, nullptr}},
            {"flush", {onFlush, nullptr}},
            {"first_pts", {onFirstPts, nullptr}},
            {"eos", {onEnd, nullptr}},
            {"seek", {onSeek, nullptr}},
            {"delayed_output", {onDelayedOutput, nullptr}},
            {"display_dropped", {onDisplayDropped, nullptr}},
            {"dropped_total", {onDroppedTotal, nullptr}},
            {"repeat_output", {onRepeatOutput, nullptr}},
            {"repeat_input", {onRepeatInput, nullptr}},
            {"format", {onFormat, nullptr}},
            {"resolution_change", {onResolutionChange, nullptr}},
            {"stop_time", {onStop, nullptr}},
    };
}

}  // namespace android::codecreport
