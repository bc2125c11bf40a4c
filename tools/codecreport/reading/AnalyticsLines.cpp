// SPDX-License-Identifier: Apache-2.0
#include <inttypes.h>
#include <stdlib.h>

#include <algorithm>
#include <charconv>

#include "reading/LineHandlers.h"

namespace android::codecreport {

namespace {

// A lead of more is a render time on another clock than the monotonic one.
constexpr int64_t kMaxLeadMs = 60'000;

int64_t parseNumber(std::string_view text) {
    int64_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

/** The frame was queued, as one or two lines say. */
Frame& onInput(const Event& event) {
    Frame& frame = event.flow.get(event.fields.number("pts_us"), true);
    if (frame.queuedUs != kNoTime) return frame;
    frame.queuedUs = event.timeUs;
    event.flow.onQueued(&frame);
    frame.sizeBytes = event.fields.number("size_bytes");
    ++event.session.inputs;
    event.session.inputBytes += frame.sizeBytes;
    event.session.inputRate.add(event.timeUs, frame.sizeBytes);
    return frame;
}

void onQueued(const Event& event) {
    event.flow.onRecords(event.fields.number("records"), event.timeUs);
    Frame& frame = onInput(event);
    if (event.fields.text("input_event") == "queue") frame.codecInUs = event.timeUs;
}

void onDecrypted(const Event& event) {
    Frame& frame = onInput(event);
    frame.number = event.fields.number("frame_no");
    const int64_t tookUs = event.fields.number("decrypt_ms") * 1000;
    frame.announcedUs = frame.queuedUs - tookUs;
    event.flow.onDecrypted(event.timeUs, tookUs);
}

void onPlainInput(const Event& event) {
    const int64_t size = event.fields.number("size_bytes");
    ++event.session.inputs;
    event.session.inputBytes += size;
    event.session.inputRate.add(event.timeUs, size);
}

void onOmxInput(const Event& event) {
    Frame* frame = event.flow.find(event.fields.number("pts_us"));
    if (frame != nullptr && frame->codecInUs == kNoTime) frame->codecInUs = event.timeUs;
}

void onDecoded(const Event& event) {
    Frame* frame = event.flow.find(event.fields.number("pts_us"));
    if (frame == nullptr) return;
    frame->codecOutUs = event.timeUs;
    frame->codecInUs = event.timeUs - event.fields.number("codec_ms") * 1000;
    event.flow.onDecoded(frame, -1);
}

void onOutput(const Event& event) {
    Frame& frame = event.flow.get(event.fields.number("pts_us"));
    if (frame.outputUs != kNoTime) return;
    frame.outputUs = event.timeUs;
    ++event.session.outputs;
}

/** The moments of a frame from the differences that an analysis line prints; unset ones are -1, 0.
 */
void foldAnalysis(const Event& event, Frame* frame) {
    const Fields& fields = event.fields;
    const int64_t outputMs = fields.number("now_ms") - fields.number("app_ms");
    const int64_t codecOutMs = outputMs - fields.number("message_ms");
    const int64_t codecInMs = codecOutMs - fields.number("codec_ms");
    const int64_t queuedMs = outputMs - fields.number("mediacodec_ms");
    const auto set = [&event](int64_t ms, int64_t* target) {
        if (ms > 0) *target = event.clock.fromMonotonic(ms);
    };
    if (outputMs > 0 && frame->outputUs == kNoTime) ++event.session.outputs;
    set(outputMs, &frame->outputUs);
    set(codecOutMs, &frame->codecOutUs);
    set(codecInMs, &frame->codecInUs);
    // The decrypt line was placed by the log's clock; its difference moves along.
    if (queuedMs > 0) {
        const int64_t queuedUs = event.clock.fromMonotonic(queuedMs);
        if (frame->announcedUs != kNoTime) frame->announcedUs += queuedUs - frame->queuedUs;
        frame->queuedUs = queuedUs;
    }
}

/** When the last rendered frame was to be shown, or was released by a client without a clock. */
int64_t lastShown(const Event& event) {
    const Fields& fields = event.fields;
    const int64_t outputMs = fields.number("now_ms") - fields.number("app_ms");
    const std::string_view afterRender = fields.text("after_render_ms");
    int64_t afterMs = fields.number("after_render_call_ms");
    if (!afterRender.empty()) afterMs = std::min(afterMs, parseNumber(afterRender));
    return outputMs - afterMs > 0 ? event.clock.fromMonotonic(outputMs - afterMs) : kNoTime;
}

void onAnalysis(const Event& event) {
    const int64_t pts = event.fields.number("pts_us");
    Frame& frame = event.flow.get(pts);
    foldAnalysis(event, &frame);
    event.flow.onDecoded(&frame, event.fields.number("records"));
    if (event.fields.text("label") != "Drop") return;
    event.flow.onDropped(pts, event.timeUs, pts - event.fields.number("ts_delta_ms") * 1000,
                         lastShown(event));
}

void onRendered(const Event& event) {
    const int64_t pts = event.fields.number("pts_us");
    const int64_t renderMs = event.fields.number("render_ms");
    const int64_t leadMs = event.fields.number("lead_ms");
    // Clients may ask for no time or for media time; neither is a moment on the clock.
    const bool isClock = renderMs > 0 && renderMs != pts / 1000 && std::abs(leadMs) <= kMaxLeadMs;
    event.flow.onRendered(pts, event.timeUs,
                          isClock ? event.clock.fromMonotonic(renderMs) : kNoTime);
}

void onSync(const Event& event) {
    const int64_t frames = event.fields.number("frames");
    const int64_t elapsedMs = event.fields.number("elapsed_ms");
    Session& session = event.session;
    session.syncFrames += frames;
    if (session.rendered == 0 && elapsedMs > 0) {
        // No line for each frame: the period's frames, spread over it.
        constexpr int64_t kGrainMs = 1000;
        for (int64_t ms = 0; ms < std::min<int64_t>(elapsedMs, 60'000); ms += kGrainMs) {
            const double part = std::min(kGrainMs, elapsedMs - ms);
            session.renderedRate.add(event.timeUs - (elapsedMs - ms) * 1000,
                                     frames * part / elapsedMs);
        }
    }
    event.flow.onSyncLine(event.timeUs, event.fields.number("behind_ms"), elapsedMs);
}

void onBuffers(const Event& event) {
    event.session.inputBuffers = event.fields.number("input_buffers");
    event.session.outputBuffers = event.fields.number("output_buffers");
}

void onQueueCost(const Event& event) {
    event.flow.onDisplayQueued(event.fields.number("pts_us"), event.timeUs,
                               event.fields.number("cost_ms") * 1000);
}

void onDequeue(const Event& event) {
    event.flow.onDequeued(event.timeUs, event.fields.number("actual_ms") * 1000);
}

void onQueueBuffer(const Event& event) {
    event.flow.onDisplayQueued(event.fields.number("pts_us"), event.timeUs, -1);
    event.session.displayBuffers.add(event.timeUs, event.fields.number("queued"));
}

void onWarning(const Event& event) {
    ++event.session.warnings;
}

void onQueueFull(const Event& event) {
    ++event.session.warnings;
    event.moment("analysis ended",
                 format("%" PRId64 " frames are in flight; frames are not followed any "
                        "more",
                        event.fields.number("records")));
}

int64_t analysisNow(const Fields& fields) {
    return fields.number("now_ms");
}

int64_t renderNow(const Fields& fields) {
    return fields.number("render_ms") - fields.number("lead_ms");
}

int64_t syncNow(const Fields& fields) {
    return fields.number("position_ms") + fields.number("behind_ms");
}

/** These come when a frame that is gone already was late: they only measure the clock. */
void onSmallEarly(const Event&) {}

}  // namespace

void addAnalyticsLines(LineHandlers* handlers) {
    const LineHandlers rows = {
            {"frame_queued", {onQueued, nullptr}},
            {"input_queued", {onPlainInput, nullptr}},
            {"frame_decrypted", {onDecrypted, nullptr}},
            {"frame_to_omx", {onOmxInput, nullptr}},
            {"omx_input", {onOmxInput, nullptr}},
            {"omx_input_odd", {onOmxInput, nullptr}},
            {"omx_decoded", {onDecoded, nullptr}},
            {"c2_decoded", {onDecoded, nullptr}},
            {"omx_output", {[](const Event& e) { ++e.session.outputs; }, nullptr}},
            {"c2_output", {[](const Event& e) { ++e.session.outputs; }, nullptr}},
            {"frame_output", {onOutput, nullptr}},
            {"output_short", {onOutput, nullptr}},
            {"analysis", {onAnalysis, analysisNow}},
            {"analysis_first", {onAnalysis, analysisNow}},
            {"small_early", {onSmallEarly, analysisNow}},
            {"small_early_first", {onSmallEarly, analysisNow}},
            {"rendered", {onRendered, renderNow}},
            {"sync", {onSync, syncNow}},
            {"buffers", {onBuffers, nullptr}},
            {"queue_cost", {onQueueCost, nullptr}},
            {"dequeue_plain", {onDequeue, nullptr}},
            {"dequeue_late", {onDequeue, nullptr}},
            {"dequeue_long", {onDequeue, nullptr}},
            {"queue_buffer", {onQueueBuffer, nullptr}},
            {"queue_full", {onQueueFull, nullptr}},
            {"input_not_found", {onWarning, nullptr}},
            {"render_not_found", {onWarning, nullptr}},
            {"output_not_found", {onWarning, nullptr}},
            {"omx_out_not_found", {onWarning, nullptr}},
            {"c2_out_not_found", {onWarning, nullptr}},
            {"owned_zero", {onWarning, nullptr}},
            {"queue_too_many", {onWarning, nullptr}},
    };
    handlers->insert(rows.begin(), rows.end());
}

}  // namespace android::codecreport
