// SPDX-License-Identifier: Apache-2.0
// For scale: a buffer through a pipeline of two elements, and the same with GStreamer's own latency
// tracer, whose lines are formatted and thrown away like those of all other figures.
#include <gst/gst.h>

#include <benchmarks/Measure.h>

namespace android::bench {

namespace {

void formatAndDiscard(GstDebugCategory*, GstDebugLevel, const gchar*, const gchar*, gint, GObject*,
                      GstDebugMessage* message, gpointer) {
    benchmark::DoNotOptimize(gst_debug_message_get(message));
}

void startGStreamer() {
    static const bool started = [] {
        gst_init(nullptr, nullptr);
        gst_debug_remove_log_function(gst_debug_log_default);
        gst_debug_add_log_function(formatAndDiscard, nullptr, nullptr);
        return true;
    }();
    benchmark::DoNotOptimize(started);
}

/** It follows every pipeline of the process from then on, so plain pipelines run before. */
bool startLatencyTracer() {
    static const GstTracer* const tracer = []() -> GstTracer* {
        GstPluginFeature* found = gst_registry_lookup_feature(gst_registry_get(), "latency");
        if (found == nullptr) return nullptr;
        GstPluginFeature* loaded = gst_plugin_feature_load(found);
        gst_object_unref(found);
        if (loaded == nullptr) return nullptr;
        const GType type = gst_tracer_factory_get_tracer_type(GST_TRACER_FACTORY(loaded));
        gst_debug_set_threshold_from_string("GST_TRACER:7", FALSE);
        return GST_TRACER(g_object_new(type, "params", "flags=pipeline+element", nullptr));
    }();
    return tracer != nullptr;
}

void playBuffers(benchmark::State& state) {
    const gint64 buffers = state.max_iterations;
    char description[128];
    snprintf(description, sizeof(description),
             "fakesrc name=src num-buffers=%d ! identity ! fakesink sync=false",
             static_cast<int>(std::min<gint64>(buffers, G_MAXINT)));
    GstElement* pipeline = gst_parse_launch(description, nullptr);
    if (pipeline == nullptr) {
        state.SkipWithError("no pipeline");
        return;
    }
    while (state.KeepRunningBatch(buffers)) {
        const Stopwatch watch;
        gst_element_set_state(pipeline, GST_STATE_PLAYING);
        GstBus* bus = gst_element_get_bus(pipeline);
        const auto ends = static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR);
        GstMessage* end = gst_bus_timed_pop_filtered(bus, GST_CLOCK_TIME_NONE, ends);
        state.SetIterationTime(watch.elapsed());
        if (GST_MESSAGE_TYPE(end) == GST_MESSAGE_ERROR) state.SkipWithError("the pipeline failed");
        gst_message_unref(end);
        gst_object_unref(bus);
    }
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
}

void plainBuffer(benchmark::State& state) {
    startGStreamer();
    playBuffers(state);
}
BENCHMARK(plainBuffer)->Name("GStreamer: buffer, no tracer")->UseManualTime();

void tracedBuffer(benchmark::State& state) {
    startGStreamer();
    if (!startLatencyTracer()) {
        state.SkipWithError("GStreamer has no latency tracer here");
        return;
    }
    playBuffers(state);
}
BENCHMARK(tracedBuffer)->Name("GStreamer: buffer, latency tracer")->UseManualTime();

}  // namespace

}  // namespace android::bench
