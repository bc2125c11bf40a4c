// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace android::codecreport {

/** Reports as a whole, which only the pages are made of. */
constexpr char kReportTables[] = R"sql(
CREATE TABLE session_report (session_id INTEGER PRIMARY KEY, json_zstd BLOB NOT NULL);
CREATE TABLE log_report (log_id INTEGER PRIMARY KEY, json_zstd BLOB NOT NULL);
)sql";

/** In SQL that other engines know, too. */
constexpr char kViews[] = R"sql(
CREATE VIEW session_summary AS
SELECT s.session_id, s.log_id, l.path AS log_path, s.session_no, s.verdict, s.verdict_sentence,
  CASE WHEN s.codec_tag IS NOT NULL THEN s.codec_tag ELSE s.format END AS codec,
  s.package AS app,
  CASE WHEN s.width_px IS NOT NULL AND s.height_px IS NOT NULL
    THEN s.width_px || 'x' || s.height_px END AS resolution,
  s.kind, s.format, s.implementation, s.framework, s.secure, s.tunneled, s.hdr_type,
  s.start_time, s.start_us, s.duration_ms, s.playback_ms,
  s.playback_ms / 3600000.0 AS playback_hours,
  CASE WHEN s.verdict = 'cannot tell' OR s.verdict IS NULL THEN NULL
    WHEN s.verdict = 'smooth' THEN 0 ELSE 1 END AS stuttered,
  s.incident_count, s.standing_count, s.standing_total_ms, s.standing_longest_ms,
  CASE WHEN s.playback_ms > 0 THEN s.standing_total_ms / s.playback_ms END AS standing_share,
  s.shown_count, s.never_shown_count, s.dropped_count, s.display_dropped_count, s.error_count,
  s.first_frame_render_ms, s.content_fps, s.display_hz, s.cadence_even, s.mistimed_count,
  s.sync_measured_ms, s.sync_outside_ms, s.sync_worst_ms
FROM session s JOIN log l ON l.log_id = s.log_id;

CREATE VIEW frame_timeline AS
SELECT f.session_id, f.frame_no, f.pts_us, f.jank, f.fate, f.incident_no, i.cause,
  s.start_us + coalesce(f.shown_us, f.render_call_us) AS end_us,
  f.due_us / 1000.0 AS due_ms, f.shown_us / 1000.0 AS shown_ms,
  (f.shown_us - f.due_us) / 1000.0 AS late_ms,
  (f.queued_us - f.announced_us) / 1000.0 AS decrypt_ms,
  (f.codec_out_us - f.codec_in_us) / 1000.0 AS codec_ms,
  (f.output_us - f.codec_out_us) / 1000.0 AS message_ms,
  (f.render_call_us - f.output_us) / 1000.0 AS app_ms,
  CASE WHEN f.fate = 'rendered' THEN (f.display_us - f.render_call_us) / 1000.0 END AS lead_ms
FROM frame f JOIN session s ON s.session_id = f.session_id
LEFT JOIN incident i ON i.session_id = f.session_id AND i.incident_no = f.incident_no;
)sql";

}  // namespace android::codecreport
