// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdint.h>

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "output/OutputFile.h"

namespace perfetto::protos {
class TracePacket;
class TrackEvent;
}  // namespace perfetto::protos

namespace android::codecreport {

/** Arguments of an event; names are few, values any. */
using TraceArguments = std::vector<std::pair<const char*, std::variant<int64_t, std::string>>>;

/** Slices of a flow show what belongs together; the last one ends it. */
struct TraceFlow {
    uint64_t id = 0;
    bool ends = false;
};

struct TraceEvent {
    const char* category;
    std::string name;
    TraceArguments arguments = {};
    TraceFlow flow = {};
    /** No other event has the name: it is written out where others are numbered. */
    bool hasOwnName = false;
};

struct TraceTrack {
    uint64_t parent = 0;
    std::string name;
    /** Place among the tracks of one parent. */
    int rank = 0;
    /** Of a counter; null: it holds slices and instants. */
    const char* unit = nullptr;
    /** -1: the track is no process. */
    int pid = -1;
};

/**
 * The packets of a native Perfetto trace: clocks, tracks, interned names, events. Times are
 * nanoseconds of the clock that the trace began with.
 *
 * Memory: the names, which are few.
 */
class TraceStream {
  public:
    enum class Clock { REALTIME = 1, MONOTONIC = 3 };

    /** @param seed tells the trace's tracks and flows from those of any other that it is joined
     * with */
    TraceStream(OutputFile* file, const std::string& seed);
    ~TraceStream();

    /** Times are of `clock`. Both are told where both are known, so that one leads to the other. */
    void begin(Clock clock, const std::map<Clock, int64_t>& snapshotNs);

    /** An id that is the same in every trace of the same log, and in no other. */
    uint64_t idOf(const std::string& name) const;
    uint64_t addTrack(const std::string& id, const TraceTrack& track);

    void slice(uint64_t track, int64_t beginNs, int64_t endNs, const TraceEvent& event);
    void instant(uint64_t track, int64_t timeNs, const TraceEvent& event);
    void counter(uint64_t track, int64_t timeNs, double value);

  private:
    using Names = std::map<std::string, uint64_t>;

    perfetto::protos::TrackEvent* startEvent(uint64_t track, int type, int64_t timeNs);
    void describe(const TraceEvent& from, perfetto::protos::TrackEvent* event);
    void write();

    OutputFile* mFile;
    uint64_t mSeed;
    uint32_t mSequence;
    Names mCategories;
    Names mEvents;
    Names mArguments;
    std::unique_ptr<perfetto::protos::TracePacket> mPacket;
    std::string mBuffer;
};

}  // namespace android::codecreport
