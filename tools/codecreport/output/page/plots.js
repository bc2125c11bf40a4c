// SPDX-License-Identifier: Apache-2.0
// Plots over the time of a session, one under the other: the same axis at the same place, zoomed alike.
import uPlot from 'uplot';
import { make } from './dom.js';
import { clock, isKnown, text } from './format.js';

const HEIGHT = 210;
const STEP = 0.25;
const CLICK_PX = 4;
const NARROW_PX = 600;

/** Steps of the time axis, in seconds, of which each moment can be written in full. */
const STEPS_S = [0.001, 0.002, 0.005, 0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900,
  1800, 3600, 7200, 14400, 21600, 43200, 86400];

const token = (name) => getComputedStyle(document.documentElement).getPropertyValue(name).trim();
export const causeToken = (cause) => `--${cause.replace('_', '-')}`;

/** Room for the values beside the plot, left and right alike, whether it has a second axis or not. */
export const axisRoom = () => (innerWidth < NARROW_PX ? 40 : 56);

function axis(label, more) {
  return {
    label,
    labelSize: 16,
    size: axisRoom() - 16,
    gap: 3,
    stroke: token('--muted'),
    grid: { stroke: token('--line'), width: 1 },
    ticks: { show: false },
    font: '12px system-ui, sans-serif',
    labelFont: '12px system-ui, sans-serif',
    ...more,
  };
}

/** Moments with as many digits as the steps between them need. */
function moments(u, splits, axisIndex, space, step) {
  const digits = step >= 1 ? 0 : step >= 0.1 ? 1 : step >= 0.01 ? 2 : 3;
  return splits.map((seconds) => clock(seconds * 1000, digits));
}

/** A band for each incident, with its number, and lines at the limits of the values. */
function drawMarks(u, incidents, limits) {
  const { ctx, bbox } = u;
  const ratio = devicePixelRatio;
  ctx.save();
  ctx.beginPath();
  ctx.rect(bbox.left, bbox.top, bbox.width, bbox.height);
  ctx.clip();
  ctx.textAlign = 'left';
  ctx.font = `${11 * ratio}px system-ui, sans-serif`;
  let lastLabel = -Infinity;
  for (const incident of incidents) {
    const left = u.valToPos(incident.start_ms / 1000, 'x', true);
    const right = u.valToPos((incident.start_ms + incident.duration_ms) / 1000, 'x', true);
    if (right < bbox.left || left > bbox.left + bbox.width) continue;
    const width = Math.max(2 * ratio, right - left);
    ctx.fillStyle = token(causeToken(incident.cause));
    ctx.fillRect(left, bbox.top, width, 4 * ratio);
    ctx.globalAlpha = 0.16;
    ctx.fillRect(left, bbox.top, width, bbox.height);
    ctx.globalAlpha = 1;
    const label = Math.max(left, bbox.left) + 3 * ratio;
    if (label - lastLabel < 18 * ratio) continue;
    lastLabel = label;
    ctx.fillStyle = token('--text');
    ctx.fillText(String(incident.id), label, bbox.top + 16 * ratio);
  }
  ctx.strokeStyle = token('--bad');
  ctx.setLineDash([6, 4]);
  for (const limit of limits) {
    const y = u.valToPos(limit, 'y', true);
    ctx.beginPath();
    ctx.moveTo(bbox.left, y);
    ctx.lineTo(bbox.left + bbox.width, y);
    ctx.stroke();
  }
  ctx.restore();
}

/** A stroke as the series is drawn: a line with its dashes, or a cross for single points. */
function sample(series) {
  const box = make('span', { class: 'sample', 'aria-hidden': 'true' });
  const shape = series.points ? '<path d="M9 1l6 6M15 1l-6 6" stroke-width="2"/>'
    : `<path d="M0 4h24" stroke-width="2.5" stroke-dasharray="${(series.dash || []).join(' ')}"/>`;
  box.innerHTML = `<svg width="24" height="8">${shape}</svg>`;
  box.style.setProperty('--stroke', `var(${series.color})`);
  return box;
}

/** One button a series, which hides and shows it, with its value under the pointer. */
function legendOf(plot) {
  return make('div', { class: 'legend' }, ...plot.series.map((series, i) => make('button', {
    type: 'button',
    'aria-pressed': 'true',
    title: 'Hide or show',
    click: ({ currentTarget }) => {
      const { u } = currentTarget.closest('figure').querySelector('.plot');
      const show = !u.series[i + 1].show;
      u.setSeries(i + 1, { show });
      currentTarget.setAttribute('aria-pressed', String(show));
    },
  }, sample(series), `${series.label} `, make('span', { class: 'value' }))),
  make('span', { class: 'value' }));
}

/** A value in words; a series may have its own. */
export const say = (series, value) => (isKnown(value) && series.say ? series.say(value) : text(value));

function showValues(u, plot, legend) {
  const values = legend.querySelectorAll('.value');
  const { idx, idxs } = u.cursor;
  plot.series.forEach((series, i) => {
    const at = idxs ? idxs[i + 1] : idx;
    values[i].textContent = isKnown(idx) ? say(series, isKnown(at) ? u.data[i + 1][at] : null) : '';
  });
  values[values.length - 1].textContent = isKnown(idx) ? `at ${clock(u.data[0][idx] * 1000, 3)}` : '';
}

const crosses = (u, seriesIndex) => {
  const { ctx } = u;
  const size = 3 * devicePixelRatio;
  ctx.save();
  ctx.beginPath();
  ctx.rect(u.bbox.left, u.bbox.top, u.bbox.width, u.bbox.height);
  ctx.clip();
  ctx.beginPath();
  u.data[0].forEach((x, i) => {
    const value = u.data[seriesIndex][i];
    if (!isKnown(value) || x < u.scales.x.min || x > u.scales.x.max) return;
    const left = u.valToPos(x, 'x', true);
    const top = u.valToPos(value, 'y', true);
    ctx.moveTo(left - size, top - size);
    ctx.lineTo(left + size, top + size);
    ctx.moveTo(left + size, top - size);
    ctx.lineTo(left - size, top + size);
  });
  ctx.strokeStyle = u.series[seriesIndex].stroke();
  ctx.lineWidth = 1.5 * devicePixelRatio;
  ctx.stroke();
  ctx.restore();
  return null;
};

export class PlotGroup {
  /**
   * @param endS the session's length; nothing beyond it is shown
   * @param leastS no zoom shows less than this
   */
  constructor(endS, leastS, incidents, { onRange, onIncident }) {
    Object.assign(this, { endS, leastS: Math.min(leastS, endS), incidents, onRange, onIncident });
    this.range = [0, endS];
    this.plots = [];
  }

  /** A range of at least a few frames and of nothing beyond the session. */
  clamp(min, max) {
    const width = Math.min(Math.max(max - min, this.leastS), this.endS);
    const from = Math.min(Math.max(0, (min + max - width) / 2), this.endS - width);
    return [from, from + width];
  }

  /** @param plot { id, title, label, data, series: [{ label, color, scale, dash, points, say }], scales, y, y2, limits } */
  figure(plot, ...more) {
    const element = make('div', {
      class: 'plot', id: plot.id, tabindex: 0, role: 'img', 'aria-label': plot.label, keydown: (event) => this.onKey(event),
    });
    const legend = legendOf(plot);
    this.plots.push({ plot, element, legend });
    return make('figure', {}, make('figcaption', {}, plot.title), legend, element, ...more);
  }

  /** Draws the figures, which are in the document by now; also again, in other colours or another width. */
  draw() {
    for (const { plot, element, legend } of this.plots) {
      if (element.u) element.u.destroy();
      element.u = new uPlot(this.options(plot, element, legend), plot.data, element);
      [...legend.querySelectorAll('button')].forEach((button, i) => {
        if (button.getAttribute('aria-pressed') === 'false') element.u.setSeries(i + 1, { show: false });
      });
      this.backByClick(element.u);
    }
    this.show(...this.range);
  }

  options(plot, element, legend) {
    const room = axisRoom();
    return {
      width: Math.max(240, element.clientWidth),
      height: HEIGHT,
      legend: { show: false },
      padding: [8, plot.y2 ? 0 : room, 0, 0],
      cursor: {
        sync: { key: 'session' },
        drag: { x: true, y: false },
        bind: { dblclick: () => () => this.show(0, this.endS) },
      },
      scales: { x: { time: false, range: (u, min, max) => this.clamp(min, max) }, ...plot.scales },
      axes: [axis(null, { size: 26, values: moments, incrs: STEPS_S, space: 70 }), axis(plot.y, { scale: 'y' }),
        ...(plot.y2 ? [axis(plot.y2, { scale: 'y2', side: 1, grid: { show: false } })] : [])],
      series: [{}, ...plot.series.map((series) => ({
        label: series.label,
        scale: series.scale || 'y',
        stroke: token(series.color),
        width: 1.5,
        dash: series.dash,
        ...(series.points ? { paths: crosses, points: { show: false } } : {}),
      }))],
      hooks: {
        drawAxes: [(u) => drawMarks(u, this.incidents, plot.limits || [])],
        setScale: [(u, scale) => { if (scale === 'x') this.follow(u); }],
        setCursor: [(u) => showValues(u, plot, legend)],
      },
    };
  }

  /** A click into an incident's band leads to its row. */
  backByClick(u) {
    let down = 0;
    u.over.addEventListener('mousedown', (event) => { down = event.clientX; });
    u.over.addEventListener('click', (event) => {
      if (Math.abs(event.clientX - down) > CLICK_PX) return;
      const ms = 1000 * u.posToVal(event.clientX - u.over.getBoundingClientRect().left, 'x');
      const found = this.incidents.find((incident) =>
        ms >= incident.start_ms && ms <= incident.start_ms + incident.duration_ms);
      if (found) this.onIncident(found);
    });
  }

  follow(u) {
    const { min, max } = u.scales.x;
    if (this.following || !isKnown(min)) return;
    this.show(min, max, u);
  }

  /** Shows a range in all plots. */
  show(min, max, from) {
    this.range = this.clamp(min, max);
    this.following = true;
    for (const { element } of this.plots) {
      if (element.u !== from) element.u.setScale('x', { min: this.range[0], max: this.range[1] });
    }
    // Scales are applied behind the caller; their hooks must not come back here.
    queueMicrotask(() => queueMicrotask(() => { this.following = false; }));
    this.onRange(...this.range);
  }

  move(step) {
    const [min, max] = this.range;
    const by = (max - min) * STEP * step;
    this.show(min + by, max + by);
  }

  zoom(step) {
    const [min, max] = this.range;
    const by = (max - min) * STEP * step;
    this.show(min + by, max - by);
  }

  onKey(event) {
    const actions = {
      ArrowLeft: () => this.move(-1),
      ArrowRight: () => this.move(1),
      '+': () => this.zoom(1),
      '=': () => this.zoom(1),
      '-': () => this.zoom(-1),
      0: () => this.show(0, this.endS),
      Home: () => this.show(0, this.endS),
    };
    if (!actions[event.key] || event.ctrlKey || event.metaKey || event.altKey) return;
    event.preventDefault();
    actions[event.key]();
  }

  destroy() {
    for (const { element } of this.plots) if (element.u) element.u.destroy();
  }
}
