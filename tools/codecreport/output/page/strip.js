// SPDX-License-Identifier: Apache-2.0
import { causeClass, causeName, sharesOf } from './causes.js';
import { make } from './dom.js';
import { clock, lasting } from './format.js';

const LABEL_ROOM = 0.025;
const TICKS = { seek: 'seek', flush: 'flush', error: 'error', resolution: 'resolution change' };

function markOf(incident, left, width, onPick) {
  const mark = make('span', {
    class: 'mark',
    title: `${incident.id}: ${clock(incident.start_ms)}, stood ${lasting(incident.stood_ms)}, ${causeName(incident.cause)}`,
    click: () => onPick(incident),
  }, ...sharesOf(incident).map(([cause, share]) => {
    const part = make('span', { class: causeClass(cause) });
    part.style.flexGrow = share;
    return part;
  }));
  mark.style.left = `${left * 100}%`;
  mark.style.width = `${width * 100}%`;
  return mark;
}

/**
 * A stretch of a session as a strip with its incidents: each as wide as it lasted, split by the
 * shares of its causes, with its number above where there is room.
 */
export function strip(session, fromMs, toMs, onPick) {
  const whole = Math.max(1, toMs - fromMs);
  const at = (ms) => Math.min(1, Math.max(0, (ms - fromMs) / whole));
  const marks = [];
  const labels = [];
  let lastLabel = -1;
  const within = (session.incidents || []).filter((incident) =>
    incident.start_ms <= toMs && incident.start_ms + incident.duration_ms >= fromMs);
  for (const incident of within) {
    const left = at(incident.start_ms);
    const right = at(incident.start_ms + incident.duration_ms);
    marks.push(markOf(incident, left, right - left, onPick));
    const middle = (left + right) / 2;
    if (middle - lastLabel < LABEL_ROOM) continue;
    lastLabel = middle;
    const label = make('span', {}, String(incident.id));
    label.style.left = `${Math.min(0.99, Math.max(0.01, middle)) * 100}%`;
    labels.push(label);
  }
  const ticks = (session.moments || []).filter((moment) =>
    TICKS[moment.kind] && moment.at_ms >= fromMs && moment.at_ms <= toMs).map((moment) => {
    const tick = make('span', { class: 'tick', title: `${clock(moment.at_ms)} ${TICKS[moment.kind]}: ${moment.text}` });
    tick.style.left = `${at(moment.at_ms) * 100}%`;
    return tick;
  });
  const said = within.slice(0, 20).map((incident) =>
    `${clock(incident.start_ms)} ${causeName(incident.cause)} ${lasting(incident.stood_ms)}`).join('; ');
  return make('div', {
    class: 'strip',
    role: 'img',
    'aria-label': `From ${clock(fromMs)} to ${clock(toMs)}: ${within.length} incidents${said && `: ${said}`}`,
  },
  make('div', { class: 'strip-labels' }, ...labels),
  make('div', { class: 'strip-track' }, ...marks, ...ticks),
  make('div', { class: 'strip-scale' }, make('span', {}, clock(fromMs)), make('span', {}, clock(toMs))));
}
