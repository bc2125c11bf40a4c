// SPDX-License-Identifier: Apache-2.0
// Numbers of one session: who it was, how it started, what its frames took, what the library reported.
import { bar, facts, note, section, table } from './dom.js';
import { clock, count, figureOf, isKnown, round, yesNo } from './format.js';
import { STAGES } from './timeline.js';

const number = (key, title) => ({ title, of: (row) => row[key], number: true });
const wherever = (value) => (isKnown(value) ? value : undefined);

export function identity(session) {
  const { video, counts } = session;
  const size = video && isKnown(video.width_px) ? `${video.width_px} x ${video.height_px}` : null;
  const figure = (key) => video && figureOf(session, `counts.${key}`);
  return section('Identity', 'identity', facts('facts', [
    ['Codec tag', session.codec_tag],
    ['Format', session.format],
    ['Kind', session.kind],
    ['Implementation', session.implementation],
    ['Resolution (pixels)', video && size],
    ['HDR type', video && video.hdr_type],
    ['Scan type', video && video.scan_type],
    ['Bit depth', video && video.bit_depth_bits],
    ['Colour standard', video && video.color_standard],
    ['Secure', yesNo(session.secure)],
    ['Tunneled', yesNo(session.tunneled)],
    ['Process', session.pid],
    ['Package', wherever(session.package)],
    ['Begins at', session.start_time + (session.started_before_log ? ' (already running)' : '')],
    ['Duration', clock(session.duration_ms, 3)],
    ['Shown (frames)', figure('shown_count')],
    ['Rendered (frames)', figure('rendered_count')],
    ['Dropped (frames)', figure('dropped_count')],
    ['Lost at the display (frames)', figure('display_dropped_count')],
    ['Errors', counts.error_count],
  ]));
}

/** Phases of the start-up with a beginning and an end, both since the session began. */
function phasesOf(startup) {
  return [
    ['P2, configure', 'p2_begin_ms', 'p2_end_ms'],
    ['P3, start', 'p3_begin_ms', 'p3_end_ms'],
    ['First input to first frame ready', 'first_input_ms', 'first_frame_ready_ms'],
    ['P5, first input to first frame rendered', 'first_input_ms', 'first_frame_render_ms'],
    ['Stop', 'stop_begin_ms', 'stop_end_ms'],
  ].filter(([, from, to]) => isKnown(startup[from]) && isKnown(startup[to]))
    .map(([name, from, to]) => ({ name, from: startup[from], to: startup[to] }));
}

export function startup(session) {
  const phases = phasesOf(session.startup);
  if (phases.length === 0) return section('Start-up', 'startup', note('The log holds no phases.'));
  const whole = Math.max(1, ...phases.filter((phase) => phase.name !== 'Stop').map((phase) => phase.to));
  return section('Start-up', 'startup', table('Phases, milliseconds since the session began', [
    { title: 'Phase', of: (phase) => phase.name },
    number('from', 'From (ms)'), number('to', 'To (ms)'),
    { title: 'Took (ms)', of: (phase) => round(phase.to - phase.from, 3), number: true },
    { title: 'When', of: (phase) => (phase.name === 'Stop' ? '' : bar(phase.from, phase.to - phase.from, whole)), class: 'bar-cell' },
  ], phases));
}

export function stages(session) {
  const rows = [
    ...Object.entries(STAGES).map(([key, stage]) => ({ name: stage.name, ...session.stages[key] })),
    { name: 'frame interval', ...session.frame_interval },
    { name: 'later than due', ...session.lateness },
  ].filter((row) => row.count > 0);
  return section('Stages', 'stages', rows.length === 0
    ? note('The log holds no stage times; mediaanalytic.enable with mediaanalytic.debug 0x407 writes them.')
    : table('Milliseconds a frame', [
      { title: 'Stage', of: (row) => row.name }, number('count', 'Frames'), number('min_ms', 'Least'),
      number('p50_ms', 'p50'), number('p90_ms', 'p90'), number('p99_ms', 'p99'), number('max_ms', 'Most'),
    ], rows));
}

export function drops(session) {
  const lengths = session.drops?.lengths || [];
  if (lengths.length === 0) return '';
  const most = Math.max(...lengths.map((entry) => entry.run_count));
  return section('Dropped frames', 'drops', table('Runs of dropped frames by length', [
    { title: 'Length (frames)', of: (entry) => (entry.length_frames > 100 ? 'more than 100' : entry.length_frames), number: true },
    { title: 'Runs', of: (entry) => count(entry.run_count), number: true },
    { title: 'Share', of: (entry) => bar(0, entry.run_count, most), class: 'bar-cell' },
  ], lengths));
}

export function classes(session) {
  const played = ['sd', 'hd', 'fhd', 'uhd'].map((name) => ({ name: name.toUpperCase(), ms: session.report[`played_${name}_ms`] }))
    .filter((entry) => isKnown(entry.ms));
  const whole = played.reduce((sum, entry) => sum + entry.ms, 0);
  return section('Played by resolution class', 'classes', played.length === 0
    ? note('The log holds no report of five seconds or more.')
    : table('Time played', [
      { title: 'Class', of: (entry) => entry.name },
      number('ms', 'Played (ms)'),
      { title: 'Share', of: (entry) => bar(0, entry.ms, whole), class: 'bar-cell' },
    ], played));
}

export function libraryReport(session, meanings) {
  const keys = Object.keys(session.report);
  return section("The library's report", 'report', keys.length === 0 ? note('The log holds none.')
    : table('Values at the end of the configuration', [
      { title: 'Key', of: (key) => (meanings[key] || {}).key || key },
      { title: 'Value', of: (key) => session.report[key], number: true },
      { title: 'Unit', of: (key) => (meanings[key] || {}).unit || '' },
      { title: 'Meaning', of: (key) => (meanings[key] || {}).meaning || '' },
    ], keys));
}
