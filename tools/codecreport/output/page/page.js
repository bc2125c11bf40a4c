// SPDX-License-Identifier: Apache-2.0
'use strict';

const report = JSON.parse(document.getElementById('report-data').textContent);
const meanings = JSON.parse(document.getElementById('meanings-data').textContent);
const STAGES = ['decrypt', 'codec', 'message', 'app', 'lead'];
const STAGE_NAMES = {
  decrypt: 'decrypt',
  codec: 'codec',
  message: 'message delay',
  app: 'app',
  lead: 'render lead',
};
const DASHES = { decrypt: [2, 2], message: [6, 3], app: [10, 3], lead: [3, 6] };

/** An element with attributes and children; text is never read as HTML. */
function make(name, attributes, ...children) {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(attributes || {})) {
    if (value != null && value !== false) element.setAttribute(key, value);
  }
  element.append(...children.filter((child) => child != null));
  return element;
}

const text = (value) => (value === null || value === undefined ? '–' : String(value));

/**
 * A table. Columns: { title, of: row => value or element, number }. Cells carry their value in
 * data-value, so that what is shown can be compared with the report.
 */
function table(caption, columns, rows, onRow) {
  const head = make('tr', {}, ...columns.map((column) =>
    make('th', { scope: 'col', class: column.number && 'number' }, column.title)));
  const body = rows.map((row) => {
    const line = make('tr', {}, ...columns.map((column) => {
      const value = column.of(row);
      const cell = make('td', { class: column.class || (column.number && 'number') });
      if (value instanceof Node) {
        cell.append(value);
      } else {
        cell.textContent = text(value);
        cell.dataset.value = text(value);
      }
      return cell;
    }));
    if (onRow) onRow(line, row);
    return line;
  });
  return make('div', { class: 'scroll', tabindex: 0, role: 'region', 'aria-label': caption },
    make('table', {}, make('caption', {}, caption), make('thead', {}, head),
      make('tbody', {}, ...body)));
}

function facts(id, entries) {
  return make('dl', { class: 'facts', id }, ...entries.filter(([, value]) => value !== undefined)
    .map(([name, value]) => make('div', {}, make('dt', {}, name), make('dd', {}, text(value)))));
}

function bar(from, length, whole) {
  const span = make('span', {});
  span.style.left = `${(100 * from) / whole}%`;
  span.style.width = `${Math.min(100, (100 * length) / whole)}%`;
  return make('div', { class: 'bar', 'aria-hidden': 'true' }, span);
}

const yesNo = (value) => (value ? 'yes' : 'no');
const section = (title, id, ...children) => make('div', { id }, make('h3', {}, title), ...children);
const none = (why) => make('p', { class: 'muted' }, why);

function headerOf(session) {
  const video = session.video || {};
  const size = video.width_px ? `${video.width_px} x ${video.height_px}` : null;
  return facts('facts', [
    ['Codec tag', session.codec_tag],
    ['Format', session.format],
    ['Kind', session.kind],
    ['Implementation', session.implementation],
    ['Resolution (pixels)', session.video && size],
    ['HDR type', session.video && video.hdr_type],
    ['Scan type', session.video && video.scan_type],
    ['Bit depth', session.video && video.bit_depth_bits],
    ['Colour standard', session.video && video.color_standard],
    ['Secure', yesNo(session.secure)],
    ['Tunneled', yesNo(session.tunneled)],
    ['Process', session.pid],
    ['Package', session.package || undefined],
    ['Begins at', session.start_time + (session.started_before_log ? ' (already running)' : '')],
    ['Duration (ms)', session.duration_ms],
    ['Rendered (frames)', session.video && session.counts.rendered_count],
    ['Dropped (frames)', session.video && session.counts.dropped_count],
    ['Errors', session.counts.error_count],
  ]);
}

/** Phases of the start-up with a beginning and an end, both since the session began. */
function phasesOf(startup) {
  const phases = [
    ['P2, configure', 'p2_begin_ms', 'p2_end_ms'],
    ['P3, start', 'p3_begin_ms', 'p3_end_ms'],
    ['First input to first frame ready', 'first_input_ms', 'first_frame_ready_ms'],
    ['P5, first input to first frame rendered', 'first_input_ms', 'first_frame_render_ms'],
    ['Stop', 'stop_begin_ms', 'stop_end_ms'],
  ];
  return phases.filter(([, from, to]) => startup[from] !== null && startup[to] !== null)
    .map(([name, from, to]) => ({ name, from: startup[from], to: startup[to] }));
}

function startupOf(session) {
  const phases = phasesOf(session.startup);
  if (phases.length === 0) return section('Start-up', 'startup', none('The log holds no phases.'));
  const start = phases.filter((phase) => phase.name !== 'Stop');
  const whole = Math.max(1, ...start.map((phase) => phase.to));
  const draw = (phase) => (phase.name === 'Stop' ? '' : bar(phase.from, phase.to - phase.from, whole));
  return section('Start-up', 'startup', table('Phases, milliseconds since the session began', [
    { title: 'Phase', of: (phase) => phase.name },
    { title: 'From (ms)', of: (phase) => phase.from, number: true },
    { title: 'To (ms)', of: (phase) => phase.to, number: true },
    { title: 'Took (ms)', of: (phase) => Math.round((phase.to - phase.from) * 1000) / 1000, number: true },
    { title: '', of: draw, class: 'bar-cell' },
  ], phases));
}

function classesOf(session) {
  const classes = ['sd', 'hd', 'fhd', 'uhd'].map((name) => ({
    name: name.toUpperCase(),
    ms: session.report[`played_${name}_ms`],
  })).filter((entry) => entry.ms !== undefined);
  if (classes.length === 0) {
    return section('Played by resolution class', 'classes',
      none('The log holds no report of five seconds or more.'));
  }
  const whole = classes.reduce((sum, entry) => sum + entry.ms, 0);
  return section('Played by resolution class', 'classes', table('Time played', [
    { title: 'Class', of: (entry) => entry.name },
    { title: 'Played (ms)', of: (entry) => entry.ms, number: true },
    { title: '', of: (entry) => bar(0, entry.ms, whole), class: 'bar-cell' },
  ], classes));
}

function reportOf(session) {
  const keys = Object.keys(session.report);
  if (keys.length === 0) return section("The library's report", 'report', none('The log holds none.'));
  return section("The library's report", 'report', table('Values at the end of the configuration', [
    { title: 'Key', of: (key) => (meanings[key] || {}).key || key },
    { title: 'Value', of: (key) => session.report[key], number: true },
    { title: 'Unit', of: (key) => (meanings[key] || {}).unit || '' },
    { title: 'Meaning', of: (key) => (meanings[key] || {}).meaning || '' },
  ], keys));
}

function dropsOf(session) {
  const { drops } = session;
  if (drops.run_count === 0) return section('Dropped frames', 'drops', none('No drop was logged frame by frame.'));
  const most = Math.max(...drops.lengths.map((entry) => entry.run_count));
  const shown = drops.runs.length < drops.run_count ? ` (the first ${drops.runs.length})` : '';
  return section('Dropped frames', 'drops',
    make('p', {}, `${drops.run_count} runs, the longest of ${drops.longest_run_frames} frames.`),
    table('Runs by length', [
      { title: 'Length (frames)', of: (entry) => (entry.length_frames > 100 ? 'more than 100' : entry.length_frames), number: true },
      { title: 'Runs', of: (entry) => entry.run_count, number: true },
      { title: '', of: (entry) => bar(0, entry.run_count, most), class: 'bar-cell' },
    ], drops.lengths),
    table(`Every run${shown}`, [
      { title: 'At (ms)', of: (run) => run.start_ms, number: true },
      { title: 'Lasted (ms)', of: (run) => run.duration_ms, number: true },
      { title: 'Frames', of: (run) => run.length_frames, number: true },
      { title: 'Media time (s)', of: (run) => run.pts_us / 1e6, number: true },
      { title: 'Cause', of: (run) => run.cause },
    ], drops.runs));
}

function freezesOf(session) {
  const { freezes } = session;
  if (freezes.freeze_count === 0) {
    return section('Freezes', 'freezes', none(session.frame_interval.count > 0
      ? 'None.' : 'Not known: the log holds no line for each rendered frame (mediaanalytic.debug 0x4).'));
  }
  return section('Freezes', 'freezes',
    make('p', { class: 'bad' }, `${freezes.freeze_count} freezes, ${freezes.total_ms} ms in all.`),
    table('Freezes: between two frames at least 3 times and 150 ms more than the average of the last 30', [
      { title: 'At (ms)', of: (freeze) => freeze.start_ms, number: true },
      { title: 'Lasted (ms)', of: (freeze) => freeze.duration_ms, number: true },
      { title: 'Media time (s)', of: (freeze) => freeze.pts_us / 1e6, number: true },
      { title: 'Verdict', of: (freeze) => freeze.verdict },
    ], freezes.list));
}

function stageTableOf(session) {
  const rows = [
    ...STAGES.map((stage) => ({ name: STAGE_NAMES[stage], stats: session.stages[stage] })),
    { name: 'frame interval', stats: session.frame_interval },
    { name: 'later than due', stats: session.lateness },
  ].filter((row) => row.stats.count > 0);
  if (rows.length === 0) {
    return none('The log holds no stage times; mediaanalytic.enable with mediaanalytic.debug 0x407 writes them.');
  }
  const number = (key, title) => ({ title, of: (row) => row.stats[key], number: true });
  return table('Milliseconds a frame', [
    { title: 'Stage', of: (row) => row.name },
    number('count', 'Frames'), number('min_ms', 'Least'), number('p50_ms', 'p50'),
    number('p90_ms', 'p90'), number('p99_ms', 'p99'), number('max_ms', 'Most'),
  ], rows);
}

function worstOf(session) {
  if (session.worst_frames.length === 0) return section('Worst frames', 'worst', none('None was late or dropped.'));
  const number = (key, title) => ({ title, of: (frame) => frame[key], number: true });
  return section('Worst frames', 'worst', table('The latest frames, with what held them up', [
    number('at_ms', 'At (ms)'),
    { title: 'Media time (s)', of: (frame) => frame.pts_us / 1e6, number: true },
    number('late_ms', 'Late (ms)'),
    { title: 'End', of: (frame) => (frame.dropped ? 'dropped' : 'shown') },
    { title: 'Verdict', of: (frame) => frame.verdict },
    number('decrypt_ms', 'Decrypt'), number('codec_ms', 'Codec'), number('message_ms', 'Message'),
    number('app_ms', 'App'), number('lead_ms', 'Lead'),
  ], session.worst_frames));
}

function momentsOf(session) {
  if (session.moments.length === 0) return section('Moments', 'moments', none('None.'));
  return section('Moments', 'moments', table('What happened', [
    { title: 'At (ms)', of: (moment) => moment.at_ms, number: true },
    { title: 'Kind', of: (moment) => moment.kind },
    { title: 'What', of: (moment) => moment.text },
  ], session.moments));
}

const seconds = (rows) => rows.map((row) => row[0] / 1000);
const column = (rows, index) => rows.map((row) => row[index]);

/** Merges series with times of their own into one table of columns, as the plots want it. */
function joined(...tables) {
  return uPlot.join(tables.map((rows) => [seconds(rows), ...rows[0].slice(1).map((_, i) => column(rows, i + 1))]));
}

function marksOf(session) {
  const stalls = session.moments.filter((moment) => moment.kind === 'stall').map((moment) => moment.at_ms / 1000);
  return {
    moments: [...session.drops.runs.map((run) => run.start_ms / 1000), ...stalls],
    spans: session.freezes.list.map((freeze) => ({
      from: freeze.start_ms / 1000,
      to: (freeze.start_ms + freeze.duration_ms) / 1000,
    })),
  };
}

const fromZero = (u, min, max) => [0, Math.max(1, max * 1.05)];

function ratePlot(session) {
  const rates = session.frame_rate ? session.frame_rate.rows : [];
  const inputs = session.input_rate.rows.length > 0 ? session.input_rate.rows : session.reported_bitrate.rows.map((row) => row.slice(0, 2));
  const tables = [rates, inputs].filter((rows) => rows.length > 0);
  if (tables.length === 0) return null;
  const series = [];
  if (rates.length > 0) series.push({ label: 'frames/s', color: '--codec' });
  if (inputs.length > 0) series.push({ label: 'kbit/s', color: '--app', scale: rates.length > 0 ? 'y2' : 'y', dash: [6, 3] });
  return {
    id: 'plot-rates',
    title: 'Frame rate and input bitrate',
    data: joined(...tables),
    series,
    scales: { y: { range: fromZero }, y2: { range: fromZero } },
    y: rates.length > 0 ? 'frames/s' : 'kbit/s',
    y2: rates.length > 0 && inputs.length > 0 ? 'kbit/s' : null,
    marks: session.drops && marksOf(session),
    label: `Frame rate and bitrate over time, ${rates.length} and ${inputs.length} values`,
  };
}

function syncPlot(session) {
  const { sync } = session;
  if (sync.points.rows.length === 0) return null;
  return {
    id: 'plot-sync',
    title: `Sync: ${sync.outside_ms} ms of ${sync.measured_ms} ms outside +45/-100 ms, worst ${sync.worst_ms} ms, last ${sync.last_ms} ms`,
    data: joined(sync.points.rows.map((row) => [row[0], row[1]])),
    series: [{ label: 'ms behind', color: '--message' }],
    y: 'ms behind the schedule',
    marks: { ...marksOf(session), limits: [45, -100] },
    label: `Video behind its schedule over time, worst ${sync.worst_ms} milliseconds`,
  };
}

function stagePlot(session) {
  const { rows, columns } = session.frames;
  const stages = STAGES.filter((stage) => session.stages[stage].count > 0);
  if (rows.length === 0 || stages.length === 0) return null;
  const sorted = [...rows].sort((a, b) => a[0] - b[0]);
  const every = session.frames.frames_per_row_count;
  return {
    id: 'plot-stages',
    title: `Stages of each frame${every > 1 ? ` (of each ${every} frames the worst)` : ''}; dotted lines: drops and stalls, bands: freezes`,
    data: [seconds(sorted), ...stages.map((stage) => column(sorted, columns.indexOf(`${stage}_ms`)))],
    series: stages.map((stage) => ({ label: STAGE_NAMES[stage], color: `--${stage}`, dash: DASHES[stage] })),
    y: 'ms',
    marks: marksOf(session),
    label: `Milliseconds of each frame in ${stages.map((stage) => STAGE_NAMES[stage]).join(', ')}`,
  };
}

/** The plot's values as a table, made when it is asked for. */
function valuesOf(plot) {
  const details = make('details', {}, make('summary', {}, 'Values as a table'));
  details.addEventListener('toggle', () => {
    if (!details.open || details.children.length > 1) return;
    const rows = plot.data[0].map((_, i) => plot.data.map((values) => values[i]));
    details.append(table(plot.title, [{ title: 's', of: (row) => row[0], number: true },
      ...plot.series.map((s, i) => ({ title: s.label, of: (row) => row[i + 1], number: true }))], rows));
  });
  return details;
}

function figure(plot) {
  return make('figure', {}, make('figcaption', {}, plot.title),
    make('div', { class: 'plot', id: plot.id }), valuesOf(plot));
}

function plotsOf(session) {
  const plots = [ratePlot(session)];
  if (session.video) plots.push(syncPlot(session), stagePlot(session));
  return plots.filter((plot) => plot !== null);
}

function showSession(session) {
  Plots.clear();
  const plots = plotsOf(session);
  const parts = [headerOf(session), startupOf(session)];
  if (plots.length > 0) {
    parts.push(section('Over time', 'plots',
      make('p', { class: 'muted' }, 'Drag to zoom, double-click for all; with the keyboard: arrows, +, - and 0.'),
      ...plots.map(figure)));
  }
  if (session.video) {
    parts.push(section('Stages', 'stages', stageTableOf(session)), worstOf(session),
      freezesOf(session), dropsOf(session), classesOf(session));
  }
  parts.push(reportOf(session), momentsOf(session));
  document.getElementById('session').replaceChildren(
    make('h2', { id: 'session-title' }, `Session ${session.id}: ${session.codec_tag || session.format}`), ...parts);
  const range = [0, Math.max(1, session.duration_ms / 1000)];
  for (const plot of plots) Plots.draw(document.getElementById(plot.id), plot, range);
  for (const row of document.querySelectorAll('#sessions tbody tr')) {
    row.setAttribute('aria-current', String(row.dataset.id === String(session.id)));
  }
}

function showSessions() {
  const link = (session) => make('a', { href: `#session-${session.id}` }, `${session.id}: ${session.codec_tag || session.format}`);
  document.getElementById('sessions').replaceChildren(report.sessions.length === 0
    ? none('The log holds no line of a codec session.')
    : table('Codec sessions in the order in which they began', [
      { title: 'Session', of: link },
      { title: 'Process', of: (session) => session.pid, number: true },
      { title: 'Begins at', of: (session) => session.start_time },
      { title: 'Duration (ms)', of: (session) => session.duration_ms, number: true },
      { title: 'Rendered', of: (session) => session.video && session.counts.rendered_count, number: true },
      { title: 'Dropped', of: (session) => session.video && session.counts.dropped_count, number: true },
      { title: 'Freezes', of: (session) => session.video && session.freezes.freeze_count, number: true },
      { title: 'Errors', of: (session) => session.counts.error_count, number: true },
    ], report.sessions, (row, session) => { row.dataset.id = session.id; }));
}

function showInput() {
  const { input } = report;
  document.getElementById('summary').textContent =
    `${input.files.join(', ')}: ${input.line_count} lines, ${input.understood_count} of the library, ${report.sessions.length} sessions`;
  document.getElementById('input').replaceChildren(facts('input-facts', [
    ['Lines', input.line_count], ['Lines of the library', input.understood_count],
    ['Lines of other tags', input.other_tag_count], ['No log lines', input.not_log_line_count],
    ['Cut off', input.cut_off_count], ['Not understood', input.unknown_count],
    ['Of no session', input.unattributed_count], ['Clock jumps', input.clock_jump_count],
    ['Reboots', input.reboot_count], ['Forms', Object.keys(input.formats).join(', ')],
    ['Sessions left out', input.sessions_left_out_count || undefined],
  ]), ...input.problems.map((problem) => make('p', { class: 'bad' }, problem)),
  ...input.examples.map((example) => make('p', { class: 'muted' }, `Not understood: ${example}`)));
}

function showMetrics() {
  document.getElementById('metrics').replaceChildren(report.metrics.length === 0
    ? none('No metrics records were given.')
    : table('Records of the metrics service', [
      { title: 'Name', of: (row) => row.name },
      { title: 'Dimension', of: (row) => row.dimension },
      { title: 'Data', of: (row) => row.data },
      { title: 'Last value', of: (row) => row.last_value, number: true },
      { title: 'Unit', of: (row) => row.unit },
      { title: 'Records', of: (row) => row.record_count, number: true },
      { title: 'Package', of: (row) => row.package },
    ], report.metrics));
}

/** The session that the address names, else the first of video. */
function chosen() {
  const id = Number(location.hash.replace('#session-', ''));
  return report.sessions.find((session) => session.id === id)
    || report.sessions.find((session) => session.video) || report.sessions[0];
}

function show() {
  const session = chosen();
  if (session) showSession(session);
}

showInput();
showMetrics();
showSessions();
show();
addEventListener('hashchange', () => {
  show();
  document.getElementById('session').focus();
});
addEventListener('resize', () => Plots.resize());
matchMedia('(prefers-color-scheme: dark)').addEventListener('change', show);
