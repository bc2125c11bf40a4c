// SPDX-License-Identifier: Apache-2.0
#include "output/TraceWriter.h"

#include <map>
#include <set>
#include <utility>

#include "judging/Judge.h"
#include "output/SessionTrace.h"

namespace android::codecreport {

namespace {

/** Trace time 0, on the log's timeline: the boot of the first session, where it is known. */
int64_t originOf(const Analysis& analysis) {
    const Session* first = nullptr;
    for (const auto& session : analysis.sessions) {
        const bool isAnchored = session->monotonicOffsetUs != kNoTime;
        if (isAnchored && (first == nullptr || session->startUs < first->startUs)) {
            first = session.get();
        }
    }
    return first == nullptr ? kNoTime : first->monotonicOffsetUs;
}

/** The package of any codec of the process, or the one that all metrics are of, or empty. */
std::string packageOf(const Analysis& analysis, const Session& session) {
    for (const auto& other : analysis.sessions) {
        const bool isSame = other->capture == session.capture && other->pid == session.pid;
        if (isSame && !other->package.empty()) return other->package;
    }
    std::set<std::string> packages;
    for (const auto& [key, row] : analysis.metrics.rows()) packages.insert(row.package);
    return packages.size() == 1 ? *packages.begin() : std::string();
}

}  // namespace

std::string writeTrace(const Analysis& analysis, const std::string& path) {
    OutputFile file(path);
    if (!file.open()) return file.error();

    std::string seed;
    for (const std::string& name : analysis.files) seed += name + "\n";
    for (const auto& session : analysis.sessions) {
        seed += session->tagText + " " + std::to_string(session->startUs) + "\n";
    }
    TraceStream stream(&file, seed);
    const int64_t bootUs = originOf(analysis);
    const int64_t originUs = bootUs == kNoTime ? 0 : bootUs;
    const int64_t firstUs = analysis.sessions.empty() ? originUs : analysis.sessions[0]->startUs;
    std::map<TraceStream::Clock, int64_t> clocks = {{TraceStream::Clock::REALTIME, firstUs * 1000}};
    if (bootUs != kNoTime) clocks[TraceStream::Clock::MONOTONIC] = (firstUs - bootUs) * 1000;
    stream.begin(clocks.rbegin()->first, clocks);

    std::map<std::pair<int, int>, uint64_t> processes;
    for (const auto& session : analysis.sessions) {
        uint64_t& process = processes[{session->capture, session->pid}];
        if (process == 0) {
            TraceTrack track = {};
            track.name = packageOf(analysis, *session);
            track.pid = session->pid;
            if (track.pid < 0 && track.name.empty()) track.name = "codecs";
            const std::string id = "process " + std::to_string(session->capture) + " " +
                                   std::to_string(session->pid);
            process = stream.addTrack(id, track);
        }
        SessionTrace trace(&stream, process, originUs, *session);
        trace.writeSession();
        forEachFrame(analysis.frames, *session,
                     [&trace](const JudgedFrame& frame) { trace.addFrame(frame); });
        trace.finish();
    }
    file.commit();
    return file.error();
}

}  // namespace android::codecreport
