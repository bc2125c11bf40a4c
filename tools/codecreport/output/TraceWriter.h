// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "model/SessionObserver.h"
#include "output/OutputFile.h"

namespace perfetto::protos {
class TracePacket;
class TrackEvent;
}  // namespace perfetto::protos

namespace android::codecreport {

/**
 * Writes a native Perfetto trace while the log is read: a process track for each process, under it
 * a track for each codec session with its phases and moments, and under that a group of tracks for
 * each stage, counters for buffers, bitrate and sync. A frame is one slice a stage; a flow ties
 * its slices together. Slices of a stage that overlap stand on tracks of one name side by side.
 *
 * Timestamps are the log's timeline in nanoseconds, which the trace declares to be wall clock too.
 *
 * Memory: the tracks, that is, a few for each session; frames are written at once.
 */
class TraceWriter : public SessionObserver {
  public:
    explicit TraceWriter(std::string path) : mFile(std::move(path)) {}

    bool open() { return mFile.open(); }
    /** False if anything could not be written. */
    bool close() { return mFile.commit(); }
    const std::string& error() const { return mFile.error(); }

    void onSession(const Session& session) override;
    void onFrame(const Session& session, const Frame& frame) override;
    void onCounter(const Session& session, Counter counter, int64_t timeUs, double value) override;
    void onMoment(const Session& session, const Moment& moment) override;
    void onSpan(const Session& session, const char* name, int64_t beginUs, int64_t endUs) override;

  private:
    struct Lane {
        uint64_t uuid;
        int64_t busyUntilUs;
    };
    struct Tracks {
        uint64_t session = 0;
        std::map<std::string, std::vector<Lane>> lanes;
        std::array<uint64_t, kCounterCount> counters{};
    };

    uint64_t describe(uint64_t parent, const std::string& name, const char* unit);
    void describeClocks(int64_t timeUs);
    uint64_t processTrack(const Session& session);
    uint64_t laneFor(Tracks* tracks, const std::string& name, int64_t beginUs, int64_t endUs);
    void slice(Tracks* tracks, const std::string& name, int64_t beginUs, int64_t endUs,
               const Frame* frame, uint64_t flow, bool isLastOfFlow);
    perfetto::protos::TrackEvent* event(perfetto::protos::TracePacket* packet, int64_t timeUs,
                                        uint64_t track, int type);
    void write(const perfetto::protos::TracePacket& packet);

    OutputFile mFile;
    std::string mBuffer;
    uint64_t mNextUuid = 1;
    uint64_t mNextFlow = 1;
    std::map<int, uint64_t> mProcesses;
    std::unordered_map<int, Tracks> mTracks;
};

}  // namespace android::codecreport
