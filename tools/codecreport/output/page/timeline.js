// SPDX-License-Identifier: Apache-2.0
// The plots of a session, and the way from an incident to its place in them and back.
import uPlot from 'uplot';
import { causesOf } from './causes.js';
import { make, section, table } from './dom.js';
import { UNKNOWN, clock, isKnown, lasting } from './format.js';
import { plotsLink, rowLink } from './incidents.js';
import { PlotGroup, axisRoom, say } from './plots.js';
import { strip } from './strip.js';

export const STAGES = {
  decrypt: { name: 'decrypt', color: '--decryption', dash: [2, 2] },
  codec: { name: 'codec', color: '--codec' },
  message: { name: 'message delay', color: '--message-delay', dash: [6, 3] },
  app: { name: 'app', color: '--application', dash: [10, 3] },
  lead: { name: 'render lead', color: '--display-queue', dash: [3, 6] },
};
const LEAST_FRAMES = 5;
const GAP_FRAMES = 6;
const PAD_MS = 400;
const PAD_FRAMES = 10;

const frameSeconds = (session) => (session.frame_interval?.p50_ms || 33) / 1000;
const seconds = (rows) => rows.map((row) => row[0] / 1000);
const column = (rows, index) => rows.map((row) => row[index]);
const fromZero = (u, min, max) => [0, Math.max(1, max * 1.05)];
const withRoom = (u, min, max) => {
  const low = Math.min(0, min ?? 0);
  const high = Math.max(1, max ?? 1);
  return [low - (high - low) * 0.05, high + (high - low) * 0.1];
};

/** Rows with an empty one wherever nothing came for long, so that no line leads over the gap. */
function withGaps(session, rows, valuesPerRow) {
  const longest = GAP_FRAMES * 1000 * frameSeconds(session) * valuesPerRow;
  const sorted = [...rows].sort((a, b) => a[0] - b[0]);
  return sorted.flatMap((row, i) => (i > 0 && row[0] - sorted[i - 1][0] > longest
    ? [[(row[0] + sorted[i - 1][0]) / 2, ...row.slice(1).fill(null)], row] : [row]));
}

/** Merges series with times of their own into one table of columns, as the plots want it. */
function joined(...tables) {
  return uPlot.join(tables.map((rows) => [seconds(rows), ...rows[0].slice(1).map((_, i) => column(rows, i + 1))]));
}

function latePlot(session) {
  const { columns, frames_per_row_count: every } = session.frames;
  const rows = withGaps(session, session.frames.rows, every);
  const late = columns.indexOf('late_ms');
  const dropped = columns.indexOf('dropped');
  if (!rows.some((row) => isKnown(row[late]) || row[dropped])) return null;
  const lateDrops = rows.map((row) => (row[dropped] ? row[late] : null));
  const otherDrops = rows.map((row) => (row[dropped] && !isKnown(row[late]) ? 0 : null));
  const others = otherDrops.some(isKnown);
  return {
    id: 'plot-late',
    title: `How much later than due each frame came${every > 1 ? ` (of each ${every} frames the worst)` : ''}`,
    data: [seconds(rows), rows.map((row) => (row[dropped] ? null : row[late])), lateDrops, ...(others ? [otherDrops] : [])],
    series: [
      { label: 'late (ms)', color: '--text' },
      { label: 'dropped, late (ms)', color: '--bad', points: true },
      ...(others ? [{ label: 'dropped, lateness not known', color: '--muted', points: true, say: () => '×' }] : []),
    ],
    scales: { y: { range: withRoom } },
    y: 'ms',
    label: `Lateness of each frame over time, ${rows.filter((row) => row[dropped]).length} dropped`,
  };
}

function stagePlot(session) {
  const { columns, frames_per_row_count: every } = session.frames;
  const rows = withGaps(session, session.frames.rows, every);
  const stages = Object.keys(STAGES).filter((stage) => session.stages[stage].count > 0);
  if (rows.length === 0 || stages.length === 0) return null;
  return {
    id: 'plot-stages',
    title: `Where each frame spent its time${every > 1 ? ` (of each ${every} frames the worst)` : ''}`,
    data: [seconds(rows), ...stages.map((stage) => column(rows, columns.indexOf(`${stage}_ms`)))],
    series: stages.map((stage) => ({ ...STAGES[stage], label: `${STAGES[stage].name} (ms)` })),
    scales: { y: { range: withRoom } },
    y: 'ms',
    label: `Milliseconds of each frame in ${stages.map((stage) => STAGES[stage].name).join(', ')}`,
  };
}

function syncPlot(session) {
  const { sync } = session;
  if (sync.points.rows.length === 0) return null;
  return {
    id: 'plot-sync',
    title: `Picture behind its schedule: outside +45/-100 ms for ${lasting(sync.outside_ms)} of ${lasting(sync.measured_ms)}`,
    data: joined(withGaps(session, sync.points.rows.map((row) => row.slice(0, 2)), sync.points.values_per_row_count)),
    series: [{ label: 'behind (ms)', color: '--message-delay' }],
    scales: { y: { range: withRoom } },
    y: 'ms',
    limits: [45, -100],
    label: `Picture behind its schedule over time, worst ${sync.worst_ms ?? UNKNOWN} milliseconds`,
  };
}

function ratePlot(session) {
  const rates = session.frame_rate ? session.frame_rate.rows : [];
  const inputs = session.input_rate.rows.length > 0
    ? session.input_rate.rows : session.reported_bitrate.rows.map((row) => row.slice(0, 2));
  const tables = [rates, inputs].filter((rows) => rows.length > 0);
  if (tables.length === 0) return null;
  const both = tables.length > 1;
  return {
    id: 'plot-rates',
    title: 'Frame rate and input bitrate',
    data: joined(...tables),
    series: [
      ...(rates.length > 0 ? [{ label: 'frames/s', color: '--codec' }] : []),
      ...(inputs.length > 0 ? [{ label: 'kbit/s', color: '--application', scale: both ? 'y2' : 'y', dash: [6, 3] }] : []),
    ],
    scales: { y: { range: fromZero }, y2: { range: fromZero } },
    y: rates.length > 0 ? 'frames/s' : 'kbit/s',
    y2: both ? 'kbit/s' : null,
    label: `Frame rate and bitrate over time, ${rates.length} and ${inputs.length} values`,
  };
}

/** The plot's values as a table, made when it is asked for. */
function valuesOf(plot) {
  const details = make('details', { class: 'controls' }, make('summary', {}, 'Values as a table'));
  details.addEventListener('toggle', () => {
    if (!details.open || details.children.length > 1) return;
    const rows = plot.data[0].map((_, i) => plot.data.map((values) => values[i]));
    details.append(table(plot.title, [{ title: 'at', of: (row) => clock(row[0] * 1000, 3), number: true },
      ...plot.series.map((series, i) => ({ title: series.label, of: (row) => say(series, row[i + 1]), number: true }))], rows));
  });
  return details;
}

function plotsOf(session) {
  const video = session.video && session.frames ? [latePlot(session), stagePlot(session), syncPlot(session)] : [];
  return [...video, ratePlot(session)].filter((plot) => plot !== null);
}

export class Timeline {
  /** @param onIncident called with an incident that the reader pointed at in the plots */
  constructor(session, onIncident) {
    this.session = session;
    this.plots = session.input_rate ? plotsOf(session) : [];
    this.incidents = session.incidents || [];
    this.view = make('div', {});
    this.at = make('p', { class: 'at', role: 'status' });
    this.onIncident = onIncident;
    this.group = new PlotGroup(Math.max(0.001, session.duration_ms / 1000), LEAST_FRAMES * frameSeconds(session), this.incidents, {
      onRange: (min, max) => this.showStrip(min, max),
      onIncident,
    });
  }

  get isEmpty() { return this.plots.length === 0; }

  section() {
    const button = (name, label, click) => make('button', { type: 'button', 'aria-label': label, title: label, click }, name);
    const { group } = this;
    return section('Over time', 'plots',
      make('div', { class: 'toolbar' },
        make('div', { class: 'controls' },
          button('◀', 'Earlier', () => group.move(-1)), button('▶', 'Later', () => group.move(1)),
          button('+', 'Zoom in', () => group.zoom(1)), button('−', 'Zoom out', () => group.zoom(-1)),
          button('Whole session', null, () => this.showAll()),
          make('span', { class: 'muted wide' }, 'Drag to zoom; on a plot: arrow keys, +, - and 0.')),
        this.at, this.view),
      ...this.plots.map((plot) => group.figure(plot, valuesOf(plot))));
  }

  draw() { if (!this.isEmpty) this.group.draw(); }

  showAll() {
    this.at.replaceChildren();
    this.group.show(0, this.group.endS);
  }

  showStrip(min, max) {
    const part = strip(this.session, min * 1000, max * 1000, this.onIncident);
    part.style.margin = `0 ${axisRoom()}px`;
    this.view.replaceChildren(part);
  }

  /** Shows an incident's place, with what leads on and back. */
  showIncident(id) {
    const index = this.incidents.findIndex((incident) => incident.id === id);
    const incident = this.incidents[index];
    if (!incident || this.isEmpty) return false;
    const frames = PAD_FRAMES * (this.session.frames?.frames_per_row_count ?? 1);
    const pad = Math.max(PAD_MS, incident.duration_ms / 2, frames * 1000 * frameSeconds(this.session));
    this.group.show((incident.start_ms - pad) / 1000, (incident.start_ms + incident.duration_ms + pad) / 1000);
    const other = (step, name) => {
      const neighbour = this.incidents[index + step];
      return neighbour ? make('a', { class: 'controls', href: plotsLink(this.session, neighbour) }, name) : '';
    };
    this.at.replaceChildren(make('strong', {}, `Incident ${incident.id} at ${clock(incident.start_ms)}`),
      ` (media time ${clock(incident.media_ms)}) stood ${lasting(incident.stood_ms)} `, causesOf(incident), `${incident.evidence}. `,
      make('a', { class: 'controls', href: rowLink(this.session, incident) }, 'Back to the table'), ' ',
      other(-1, 'Previous'), ' ', other(1, 'Next'));
    const element = document.getElementById('plots');
    element.scrollIntoView();
    element.querySelector('.plot').focus({ preventScroll: true });
    return true;
  }
}
