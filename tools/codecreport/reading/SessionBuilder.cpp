// SPDX-License-Identifier: Apache-2.0
#include "reading/SessionBuilder.h"

#include <stdlib.h>

#include <algorithm>

#include "judging/Judge.h"
#include "model/Severity.h"

namespace android::codecreport {

namespace {

constexpr size_t kMaxExamples = 10;
constexpr size_t kMaxExampleLength = 160;
constexpr size_t kMaxThreads = 100'000;
constexpr size_t kMaxProcesses = 40'000;
// No time or timestamp comes near: 30 years in microseconds. More is damage, and would overflow.
constexpr int64_t kLargest = 1'000'000'000'000'000;

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

}  // namespace

SessionBuilder::SessionBuilder(const Reference& reference, FrameStore* store)
    : mReference(reference), mStore(store) {
    addRoutes(reference);
}

void SessionBuilder::addRoutes(const Reference& reference) {
    LineHandlers handlers;
    addLoggerLines(&handlers);
    addAnalyticsLines(&handlers);
    for (const Reference::Table& table : reference.tables()) {
        const bool isAnalytics = table.tag == "ZMediaAnalyticV";
        for (const ReferenceEntry& entry : table.entries) {
            if (!table.tag.empty() || !entry.fact("json").empty()) {
                mRoutes[&entry] = routeOf(entry, handlers, isAnalytics);
            }
        }
    }
}

SessionBuilder::Route SessionBuilder::routeOf(const ReferenceEntry& entry,
                                              const LineHandlers& handlers, bool analytics) const {
    Route route;
    const std::string& line = entry.fact("line");
    const auto handler = handlers.find(entry.id);
    if (handler != handlers.end()) route.handler = handler->second;
    route.reportKey = entry.fact("json");
    route.begins = entry.id == "p2_begin";
    route.video = analytics;
    route.hasPts = contains(line, "{pts_us:");
    route.hint = route.reportKey.empty() ? hintOf(entry.id) : Hint::REPORT;
    if (!route.reportKey.empty() || contains(line, "{prefix:")) {
        route.owner = Owner::BY_PREFIX;
    } else if (contains(line, "{tag:")) {
        route.owner = Owner::BY_TAG;
    } else if (analytics && (contains(line, "{label:") || route.hasPts)) {
        route.owner = Owner::BY_LABEL;
    }
    return route;
}

void SessionBuilder::onLine(const LogLine& line) {
    const ReferenceEntry* entry = nullptr;
    const auto match = mReference.recognise(line.tag, line.text, &entry, &mFields);
    if (match == Reference::Match::NO) {
        ++mStats.otherTags;
        place(line);
    } else if (match == Reference::Match::YES && isPlausible(mFields)) {
        ++mStats.understood;
        onRecognised(line, *entry, mFields);
    } else {
        ++(match == Reference::Match::CUT_OFF ? mStats.cutOff : mStats.unknown);
        addExample(line.text);
        place(line);
    }
}

int64_t SessionBuilder::place(const LogLine& line) {
    const int64_t timeUs = mClock.place(line);
    if (mLastOfPidUs.size() >= kMaxProcesses) mLastOfPidUs.clear();
    mLastOfPidUs[line.pid] = timeUs;
    return timeUs;
}

bool SessionBuilder::isPlausible(const Fields& fields) const {
    for (const Fields::Field& field : fields) {
        const bool isTime =
                field.name.size() > 3 && (field.name.substr(field.name.size() - 3) == "_ms" ||
                                          field.name.substr(field.name.size() - 3) == "_us");
        if ((isTime || field.name == "frames" || field.name == "size_bytes") &&
            (field.number > kLargest || field.number < -kLargest)) {
            return false;
        }
    }
    return true;
}

void SessionBuilder::addExample(std::string_view text) {
    if (mStats.examples.size() == kMaxExamples) return;
    mStats.examples.emplace_back(text.substr(0, kMaxExampleLength));
}

void SessionBuilder::onRecognised(const LogLine& line, const ReferenceEntry& entry,
                                  const Fields& fields) {
    const Route& route = mRoutes[&entry];
    int64_t timeUs = place(line);
    if (route.handler.nowMs != nullptr) {
        timeUs = mClock.anchor(route.handler.nowMs(fields));
    } else if (route.begins && !mClock.isAnchored()) {
        timeUs = mClock.anchor(fields.number("at_ms"));
    }
    mStats.firstUs = mStats.firstUs == kNoTime ? timeUs : std::min(mStats.firstUs, timeUs);
    mStats.lastUs = std::max(mStats.lastUs, timeUs);
    if (route.begins) beginAnew(line, fields.text("tag"));
    const LineHint hint = {route.hint, fields, route.reportKey, mClock.fromMonotonic(0)};
    Open* open = ownerOf(route, line, hint, timeUs);
    if (open == nullptr) {
        if (route.handler.handle != nullptr) ++mStats.unattributed;
        return;
    }
    Session& session = *open->session;
    session.endUs = timeUs;
    if (session.monotonicOffsetUs == kNoTime && mClock.isAnchored()) {
        session.monotonicOffsetUs = mClock.fromMonotonic(0);
    }
    open->touched = ++mTouches;
    open->lastTid = line.tid;
    if (route.hasPts) {
        const bool isInput = route.hint == Hint::INPUT || route.hint == Hint::FIRST_INPUT;
        (isInput ? open->lastInputPtsUs : open->lastOutputPtsUs) = fields.number("pts_us");
    }
    if (route.owner == Owner::BY_TAG || route.owner == Owner::BY_PREFIX) {
        if (mByThread.size() >= kMaxThreads) mByThread.clear();
        mByThread[threadOf(line)] = open;
    }
    const Event event = {session, *open->flow, fields, mClock, timeUs};
    if (!route.reportKey.empty()) {
        onReportLine(line, event, route.reportKey);
    } else if (route.handler.handle != nullptr) {
        route.handler.handle(event);
    }
}

void SessionBuilder::onReportLine(const LogLine& line, const Event& event, const std::string& key) {
    // An error has a line of its own with one dot before its key, in the report it has two.
    if (contains(line.text, "DecoderError") && !contains(line.text, "..DecoderError")) {
        ++event.session.errors;
        event.moment("error", key);
        return;
    }
    event.session.reported = true;
    event.session.report[key] = event.fields.real("value");
}

SessionBuilder::Open* SessionBuilder::ownerOf(const Route& route, const LogLine& line,
                                              const LineHint& hint, int64_t timeUs) {
    switch (route.owner) {
        case Owner::BY_TAG:
            return byTag(line, hint, hint.fields.text("tag"), timeUs);
        case Owner::BY_PREFIX: {
            LinePrefix prefix;
            if (!parseLinePrefix(hint.fields.text("prefix"), &prefix)) return nullptr;
            Open* open = byTag(line, hint, prefix.tag, timeUs);
            if (open != nullptr) learnPrefix(open->session.get(), prefix);
            return open;
        }
        case Owner::BY_LABEL:
            return byLabel(line, route, hint, timeUs);
        default:
            return byThread(line, hint, route.video);
    }
}

uint64_t SessionBuilder::threadOf(const LogLine& line) {
    return static_cast<uint64_t>(static_cast<uint32_t>(line.pid)) << 32 |
           static_cast<uint32_t>(line.tid);
}

SessionBuilder::Open* SessionBuilder::ofThread(const LogLine& line) const {
    const auto known = mByThread.find(threadOf(line));
    return known == mByThread.end() ? nullptr : known->second;
}

/**
 * Of the sessions that are accepted: the thread's, else the one that the line fits best, else the
 * one written to last. Where there is but one, the thread is its thread from now on, unless it is
 * known for another.
 */
template <typename Predicate>
SessionBuilder::Open* SessionBuilder::choose(const LogLine& line, const LineHint& hint,
                                             Predicate accepts) {
    const bool hasThread = line.tid >= 0;
    Open* known = hasThread ? ofThread(line) : nullptr;
    if (known != nullptr && accepts(*known) && fitOf(hint, *known) != kContradicts) return known;
    Open* best = nullptr;
    std::pair<int, uint64_t> bestFit;
    int count = 0;
    for (const auto& open : mOpen) {
        if (open->session->pid != line.pid || !accepts(*open)) continue;
        ++count;
        const std::pair<int, uint64_t> fit = {fitOf(hint, *open), open->touched};
        if (best != nullptr && fit < bestFit) continue;
        best = open.get();
        bestFit = fit;
    }
    if (count == 1 && hasThread && mByThread.size() < kMaxThreads) {
        mByThread.emplace(threadOf(line), best);
    }
    return best;
}

SessionBuilder::Open* SessionBuilder::byTag(const LogLine& line, const LineHint& hint,
                                            std::string_view tag, int64_t timeUs) {
    CodecTag parts;
    if (!parseCodecTag(tag, &parts)) return nullptr;
    Open* open = choose(line, hint, [tag](const Open& o) { return o.session->tagText == tag; });
    if (open != nullptr) return open;
    // A session that only frame lines told of until now.
    open = choose(line, hint, [&parts](const Open& o) {
        return o.session->tagText.empty() && o.session->tag.format == parts.format;
    });
    if (open == nullptr) return begin(line, tag, timeUs, true);
    open->session->tagText = tag;
    open->session->tag = parts;
    return open;
}

SessionBuilder::Open* SessionBuilder::byLabel(const LogLine& line, const Route& route,
                                              const LineHint& hint, int64_t timeUs) {
    const std::string_view label = hint.fields.text("label");
    const bool isEvent = label == "Drop" || label == "OWD" || label == "FBD" || label.empty();
    const auto accepts = [&](const Open& open) {
        return isEvent ? open.session->isVideo() : open.session->tag.format == label;
    };
    if (route.hasPts && route.hint != Hint::INPUT) {
        const int64_t pts = hint.fields.number("pts_us");
        Open* open = choose(line, hint, [&](const Open& o) {
            return accepts(o) && o.flow->find(pts) != nullptr;
        });
        if (open != nullptr) return open;
    }
    Open* open = choose(line, hint, accepts);
    if (open != nullptr || isEvent) return open;
    // Before its first input a tracker goes by the name of its component.
    if (contains(label, ".")) return ofThread(line) ? ofThread(line) : byThread(line, hint, true);
    return route.hint == Hint::INPUT ? begin(line, label, timeUs, true) : nullptr;
}

SessionBuilder::Open* SessionBuilder::byThread(const LogLine& line, const LineHint& hint,
                                               bool video) {
    return choose(line, hint, [video](const Open& o) { return !video || o.session->isVideo(); });
}

/** A configuration ends the session that the same codec had before. */
void SessionBuilder::beginAnew(const LogLine& line, std::string_view tag) {
    std::vector<Open*> over;
    for (const auto& open : mOpen) {
        const Session& session = *open->session;
        if (session.pid != line.pid || session.tagText != tag) continue;
        const bool isOver = session.reported || session.startup.stopEndUs != kNoTime;
        const bool isOfThread = line.tid >= 0 && open->lastTid == line.tid;
        if (isOver || isOfThread) over.push_back(open.get());
    }
    for (Open* open : over) close(open);
    begin(line, tag, place(line), false);
}

SessionBuilder::Open* SessionBuilder::begin(const LogLine& line, std::string_view tag,
                                            int64_t timeUs, bool startedBefore) {
    if (mOpen.size() == kMaxOpen) {
        const auto oldest = std::min_element(
                mOpen.begin(), mOpen.end(),
                [](const auto& a, const auto& b) { return a->touched < b->touched; });
        close(oldest->get());
    }
    auto open = std::make_unique<Open>();
    open->session = std::make_unique<Session>();
    Session& session = *open->session;
    session.id = mNextId++;
    session.capture = mCapture;
    session.pid = line.pid;
    session.startUs = session.endUs = timeUs;
    session.startedBefore = startedBefore;
    if (parseCodecTag(tag, &session.tag)) {
        session.tagText = tag;
    } else {
        // Only the frame analytics told of it, and those follow video.
        session.tag.kind = "video";
        session.tag.format = tag;
    }
    open->flow = std::make_unique<FrameFlow>(&session, mStore);
    open->lastTid = line.tid;
    open->touched = ++mTouches;
    mByThread[threadOf(line)] = open.get();
    mOpen.push_back(std::move(open));
    return mOpen.back().get();
}

void SessionBuilder::learnPrefix(Session* session, const LinePrefix& prefix) {
    session->clientPid = prefix.pid;
    session->uhdScreen |= prefix.uhdScreen;
    session->secure |= prefix.secure;
    session->secureMemory |= prefix.secureMemory;
    session->atmos |= prefix.atmos;
}

void SessionBuilder::keep(std::unique_ptr<Session> session) {
    if (mDone.size() == kMaxSessions) {
        ++mStats.sessionsLeftOut;
        return;
    }
    mDone.push_back(std::move(session));
    if (mDone.back()->frames.points().empty()) return;
    mDetailed.push_back(mDone.back().get());
    if (mDetailed.size() <= kMaxDetailed) return;
    // Frames are what a page is made of; without them the numbers stay.
    const auto least = std::min_element(
            mDetailed.rbegin(), mDetailed.rend(),
            [](const Session* a, const Session* b) { return severityOf(*b) > severityOf(*a); });
    Session& plain = **least;
    plain.frames = FramePoints();
    plain.renderedRate = RateSeries();
    plain.inputRate = RateSeries();
    plain.bitrateKbps = Series();
    plain.displayBuffers = Series();
    plain.sync.offsetMs = Series();
    plain.detailed = false;
    mDetailed.erase(std::next(least).base());
}

void SessionBuilder::close(Open* open) {
    open->flow->finish();
    const auto last = mLastOfPidUs.find(open->session->pid);
    if (last != mLastOfPidUs.end()) open->session->logEndUs = last->second;
    judge(*mStore, open->session.get());
    keep(std::move(open->session));
    for (auto it = mByThread.begin(); it != mByThread.end();) {
        it = it->second == open ? mByThread.erase(it) : std::next(it);
    }
    mOpen.erase(std::find_if(mOpen.begin(), mOpen.end(),
                             [open](const auto& other) { return other.get() == open; }));
}

void SessionBuilder::beginCapture() {
    while (!mOpen.empty()) close(mOpen.front().get());
    mStats.clockJumps += mClock.jumps();
    mStats.reboots += mClock.reboots();
    mStats.hasMonotonicClock |= mClock.isAnchored();
    mClock = LogClock();
    ++mCapture;
    mLastOfPidUs.clear();
}

std::vector<std::unique_ptr<Session>> SessionBuilder::finish() {
    beginCapture();
    std::sort(mDone.begin(), mDone.end(),
              [](const auto& a, const auto& b) { return a->id < b->id; });
    return std::move(mDone);
}

}  // namespace android::codecreport
