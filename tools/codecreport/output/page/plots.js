// SPDX-License-Identifier: Apache-2.0
'use strict';

/** Plots over the time of a session, all of them zoomed alike. */
const Plots = (() => {
  const HEIGHT = 240;
  const STEP = 0.2;
  let drawn = [];
  let zooming = false;

  const color = (name) => getComputedStyle(document.documentElement).getPropertyValue(name).trim();

  /** What an axis needs to be legible on either ground. */
  function axis(label, more) {
    return {
      label,
      labelSize: 22,
      stroke: color('--muted'),
      grid: { stroke: color('--line'), width: 1 },
      ticks: { stroke: color('--line'), width: 1 },
      ...more,
    };
  }

  /** Vertical marks at moments, and bands for spans of time or of values. */
  function marks(u, { moments = [], spans = [], limits = [] }) {
    const { ctx, bbox } = u;
    ctx.save();
    ctx.beginPath();
    ctx.rect(bbox.left, bbox.top, bbox.width, bbox.height);
    ctx.clip();
    ctx.fillStyle = color('--band');
    for (const span of spans) {
      const left = u.valToPos(span.from, 'x', true);
      const right = u.valToPos(span.to, 'x', true);
      ctx.fillRect(left, bbox.top, Math.max(2, right - left), bbox.height);
    }
    ctx.strokeStyle = color('--bad');
    ctx.setLineDash([2, 3]);
    for (const moment of moments) {
      const x = u.valToPos(moment, 'x', true);
      ctx.beginPath();
      ctx.moveTo(x, bbox.top);
      ctx.lineTo(x, bbox.top + bbox.height);
      ctx.stroke();
    }
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

  function zoomOthers(u, scale) {
    if (scale !== 'x' || zooming) return;
    zooming = true;
    const { min, max } = u.scales.x;
    for (const other of drawn) if (other !== u) other.setScale('x', { min, max });
    zooming = false;
  }

  /** Arrow keys move, + and - zoom, 0 or Home shows all. */
  function onKey(event, u, range) {
    const { min, max } = u.scales.x;
    const width = max - min;
    const ranges = {
      ArrowLeft: [min - width * STEP, max - width * STEP],
      ArrowRight: [min + width * STEP, max + width * STEP],
      '+': [min + width * STEP, max - width * STEP],
      '=': [min + width * STEP, max - width * STEP],
      '-': [min - width * STEP, max + width * STEP],
      0: range,
      Home: range,
    };
    const chosen = ranges[event.key];
    if (!chosen || event.ctrlKey || event.metaKey || event.altKey) return;
    event.preventDefault();
    u.setScale('x', { min: chosen[0], max: chosen[1] });
  }

  /**
   * Draws one plot into an element.
   *
   * @param plot { data, series: [{ label, color, scale, dash }], scales, y, y2, marks, label }
   * @param range what the time axis shows at first, in seconds
   */
  function draw(element, plot, range) {
    const options = {
      width: Math.max(300, element.clientWidth - 8),
      height: HEIGHT,
      cursor: { sync: { key: 'session' }, drag: { x: true, y: false } },
      scales: { x: { time: false }, ...plot.scales },
      axes: [axis('seconds since the session began'), axis(plot.y, { scale: 'y' })],
      series: [
        { label: 's', value: (u, v) => (v == null ? '' : v.toFixed(3)) },
        ...plot.series.map((s) => ({
          label: s.label,
          scale: s.scale || 'y',
          stroke: color(s.color),
          width: 1.5,
          dash: s.dash,
          spanGaps: false,
          value: (u, v) => (v == null ? '' : String(v)),
        })),
      ],
      hooks: {
        drawAxes: [(u) => marks(u, plot.marks || {})],
        setScale: [zoomOthers],
      },
    };
    if (plot.y2) options.axes.push(axis(plot.y2, { scale: 'y2', side: 1, grid: { show: false } }));
    const u = new uPlot(options, plot.data, element);
    element.tabIndex = 0;
    element.setAttribute('role', 'img');
    element.setAttribute('aria-label', plot.label);
    element.addEventListener('keydown', (event) => onKey(event, u, range));
    drawn.push(u);
    u.setScale('x', { min: range[0], max: range[1] });
    return u;
  }

  function clear() {
    for (const u of drawn) u.destroy();
    drawn = [];
  }

  function resize() {
    for (const u of drawn) {
      const width = Math.max(300, u.root.parentElement.clientWidth - 8);
      u.setSize({ width, height: HEIGHT });
    }
  }

  return { draw, clear, resize, all: () => drawn };
})();
