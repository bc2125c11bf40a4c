// SPDX-License-Identifier: Apache-2.0
#include "database/FrameRows.h"

#include "judging/Judge.h"

namespace android::codecreport {

namespace {

/** Times of a frame, in the order of their columns. */
constexpr int64_t Frame::*kTimes[] = {
        &Frame::announcedUs, &Frame::queuedUs,     &Frame::codecInUs, &Frame::codecOutUs,
        &Frame::outputUs,    &Frame::renderCallUs, &Frame::displayUs,
};

void bindTime(Statement* insert, int column, int64_t timeUs, int64_t startUs) {
    timeUs == kNoTime ? insert->bindNull(column) : insert->bind(column, timeUs - startUs);
}

void bindCount(Statement* insert, int column, int64_t count) {
    count < 0 ? insert->bindNull(column) : insert->bind(column, count);
}

}  // namespace

std::vector<Column> frameColumns() {
    return {
            {"session_id", "INTEGER", nullptr, "The session."},
            {"frame_no", "INTEGER", nullptr, "Counts from 1 in the order in which frames ended."},
            {"pts_us", "INTEGER", nullptr, "Media time, in microseconds as all times here."},
            {"library_no", "INTEGER", nullptr, "The library's number of the frame."},
            {"size_bytes", "INTEGER", nullptr, "Size of its input."},
            {"announced_us", "INTEGER", nullptr,
             "When the client brought it; this and what follows is since the session began."},
            {"queued_us", "INTEGER", nullptr, "When it was decrypted and handed to the component."},
            {"codec_in_us", "INTEGER", nullptr, "When the component took it."},
            {"codec_out_us", "INTEGER", nullptr, "When the component was done with it."},
            {"output_us", "INTEGER", nullptr, "When the client got it."},
            {"render_call_us", "INTEGER", nullptr, "When the client released or dropped it."},
            {"display_us", "INTEGER", nullptr, "When it was to be displayed."},
            {"due_us", "INTEGER", nullptr, "When it was due by the schedule that playback kept."},
            {"shown_us", "INTEGER", nullptr, "When it was shown; null: never, or not known."},
            {"fate", "TEXT", nullptr, "rendered or dropped; null: on its way when the log ended."},
            {"jank", "TEXT", nullptr, "none, late, dropped, replaced or stood."},
            {"incident_no", "INTEGER", nullptr, "The incident that it belongs to."},
    };
}

bool writeFrames(const FrameStore& frames, const Session& session, int64_t sessionId,
                 Statement* insert) {
    int64_t number = 0;
    bool ok = true;
    forEachFrame(frames, session, [&](const JudgedFrame& judged) {
        const Frame& frame = judged.frame;
        int column = 0;
        insert->bind(column++, sessionId);
        insert->bind(column++, ++number);
        insert->bind(column++, frame.ptsUs);
        bindCount(insert, column++, frame.number);
        bindCount(insert, column++, frame.sizeBytes);
        for (const auto time : kTimes) bindTime(insert, column++, frame.*time, session.startUs);
        bindTime(insert, column++, judged.dueUs, session.startUs);
        bindTime(insert, column++, judged.shownUs, session.startUs);
        if (frame.hasFate()) {
            insert->bind(column++, std::string_view(frame.rendered ? "rendered" : "dropped"));
        } else {
            insert->bindNull(column++);
        }
        insert->bind(column++, std::string_view(toString(judged.jank)));
        bindCount(insert, column++, judged.incident == 0 ? -1 : judged.incident);
        ok = ok && insert->run();
    });
    return ok;
}

}  // namespace android::codecreport
