// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "model/FrameFlow.h"
#include "model/Session.h"
#include "reading/Fit.h"
#include "reading/LineHandlers.h"
#include "reading/LogClock.h"
#include "reading/LogLine.h"
#include "reference/Reference.h"

namespace android::codecreport {

/** What was read, and what of it was not understood. */
struct ReadStats {
    uint64_t bytes = 0;
    uint64_t lines = 0;
    /** Not a message of any form, nor part of one. */
    uint64_t notLogLines = 0;
    uint64_t otherTags = 0;
    uint64_t understood = 0;
    uint64_t cutOff = 0;
    /** The library's tag with a text that it does not write. */
    uint64_t unknown = 0;
    /** Understood, and no session to count it for. */
    uint64_t unattributed = 0;
    /** The first few texts that count as cut off or unknown. */
    std::vector<std::string> examples;
    int64_t firstUs = kNoTime;
    int64_t lastUs = kNoTime;
    uint64_t sessionsLeftOut = 0;
    uint64_t clockJumps = 0;
    uint64_t reboots = 0;
    bool hasMonotonicClock = false;
};

/**
 * Gathers the library's lines into sessions, one a configuration of a codec.
 *
 * Lines that show a codec tag belong to the open session with that tag in their process. Of
 * several, and for lines that show none, the thread decides: the session that it last wrote a line
 * with a tag for; else the only one. Where the log shows no threads, or what the line says cannot
 * be of the thread's session, that decides how well it goes on with what a session said before, and
 * at last the order of the lines. Frame lines go where their timestamp is in flight. A session ends
 * where its codec is configured anew; one whose beginning the log does not hold is opened by its
 * first line.
 *
 * Memory: kMaxSessions sessions, the worst kMaxDetailed with frames to draw, kMaxOpen of them open.
 */
class SessionBuilder {
  public:
    static constexpr size_t kMaxSessions = 5000;
    static constexpr size_t kMaxDetailed = 50;
    static constexpr size_t kMaxOpen = 128;

    SessionBuilder(const Reference& reference, FrameStore* store);

    /** One message of the log, of the library or not. */
    void onLine(const LogLine& line);

    /** What comes now was captured apart: by another clock, of other processes. */
    void beginCapture();

    ReadStats& stats() { return mStats; }

    /** Closes all sessions and hands them over in the order in which they began. */
    std::vector<std::unique_ptr<Session>> finish();

  private:
    using Open = OpenSession;
    enum class Owner { BY_TAG, BY_PREFIX, BY_LABEL, BY_THREAD };
    struct Route {
        LineHandler handler;
        Owner owner = Owner::BY_THREAD;
        bool video = false;
        bool begins = false;
        bool hasPts = false;
        Hint hint = Hint::NONE;
        /** The JSON key of a report line. */
        std::string reportKey;
    };

    void addRoutes(const Reference& reference);
    Route routeOf(const ReferenceEntry& entry, const LineHandlers& handlers, bool analytics) const;
    void onRecognised(const LogLine& line, const ReferenceEntry& entry, const Fields& fields);
    void onReportLine(const LogLine& line, const Event& event, const std::string& key);
    bool isPlausible(const Fields& fields) const;
    void addExample(std::string_view text);
    /** Where the line stands on the timeline. */
    int64_t place(const LogLine& line);

    Open* ownerOf(const Route& route, const LogLine& line, const LineHint& hint, int64_t timeUs);
    Open* byTag(const LogLine& line, const LineHint& hint, std::string_view tag, int64_t timeUs);
    Open* byLabel(const LogLine& line, const Route& route, const LineHint& hint, int64_t timeUs);
    Open* byThread(const LogLine& line, const LineHint& hint, bool video);
    /** The session that a thread is known to write for, or nullptr. */
    Open* ofThread(const LogLine& line) const;
    template <typename Predicate>
    Open* choose(const LogLine& line, const LineHint& hint, Predicate accepts);
    Open* begin(const LogLine& line, std::string_view tag, int64_t timeUs, bool startedBefore);
    void beginAnew(const LogLine& line, std::string_view tag);
    void close(Open* open);
    void keep(std::unique_ptr<Session> session);
    void learnPrefix(Session* session, const LinePrefix& prefix);
    static uint64_t threadOf(const LogLine& line);

    const Reference& mReference;
    FrameStore* mStore;
    LogClock mClock;
    int mCapture = 0;
    ReadStats mStats;
    Fields mFields;
    std::unordered_map<const ReferenceEntry*, Route> mRoutes;
    std::vector<std::unique_ptr<Open>> mOpen;
    std::unordered_map<uint64_t, Open*> mByThread;
    std::vector<std::unique_ptr<Session>> mDone;
    /** Those of mDone with frames to draw. */
    std::vector<Session*> mDetailed;
    /** When each process wrote its last line of any kind. */
    std::unordered_map<int, int64_t> mLastOfPidUs;
    uint64_t mTouches = 0;
    int mNextId = 1;
};

}  // namespace android::codecreport
