// SPDX-License-Identifier: Apache-2.0
import { make, note } from './dom.js';
import { classes, drops, identity, libraryReport, stages, startup } from './details.js';
import { events } from './events.js';
import { focusRow, rowLink } from './incidents.js';
import { inputOf, metricsOf } from './input.js';
import { SessionList, emptyList, summaryOf } from './sessions.js';
import { Timeline } from './timeline.js';

const read = (id) => JSON.parse(document.getElementById(id).textContent);
const report = read('report-data');
const meanings = read('meanings-data');
const place = document.getElementById('session');
let current = null;
let timeline = null;

function detailsOf(session) {
  if (!session.moments) {
    return [note('The worst sessions fill this page; the plots and numbers of this one are in the JSON report.')];
  }
  return [
    timeline.isEmpty ? '' : timeline.section(),
    session.detailed ? '' : note('Plots are kept of the 50 worst sessions.'),
    session.video ? stages(session) : '',
    identity(session), startup(session),
    ...(session.video ? [drops(session), classes(session)] : []),
    libraryReport(session, meanings), events(session),
  ].filter((part) => part !== '');
}

function show(session) {
  if (session === current) return;
  if (timeline) timeline.group.destroy();
  current = session;
  list.open(session);
  timeline = new Timeline(session, (incident) => go(rowLink(session, incident)));
  place.replaceChildren(make('h2', { id: 'session-title' },
    `Session ${session.id}: ${session.codec_tag || session.format || 'codec not named'}`), ...detailsOf(session));
  timeline.draw();
}

/** Follows the address: a session, an incident in its table, or its place in the plots. */
function follow() {
  const [, id, what, number] = /^#session-(\d+)(?:-(incident|plots)-(\d+))?$/.exec(location.hash) || [];
  const session = report.sessions.find((candidate) => candidate.id === Number(id));
  show(session || report.sessions[0]);
  if (!session) return;
  if (what === 'plots' && timeline.showIncident(Number(number))) return;
  if (what) focusRow(session, Number(number));
  else document.querySelector(`#session-${id} summary`).focus();
}

/** Also where the address is the same as before. */
function go(address) {
  if (location.hash === address) follow();
  else location.hash = address;
}

document.getElementById('summary').textContent = summaryOf(report);
document.getElementById('input').replaceChildren(...inputOf(report));
document.getElementById('metrics').replaceChildren(...metricsOf(report));
const list = report.sessions.length > 0
  ? new SessionList(document.getElementById('sessions'), report.sessions, (session) => {
    history.replaceState(null, '', `#session-${session.id}`);
    show(session);
  }) : null;
if (list) follow();
else document.getElementById('sessions').append(emptyList());

addEventListener('hashchange', follow);
document.addEventListener('click', (event) => {
  const link = event.target.closest('a[href^="#session-"]');
  if (link && link.hash === location.hash) follow();
});

const redraw = () => { if (timeline) timeline.draw(); };
let width = innerWidth;
addEventListener('resize', () => { if (innerWidth !== width) { width = innerWidth; redraw(); } });
matchMedia('(prefers-color-scheme: dark)').addEventListener('change', redraw);
addEventListener('beforeprint', () => {
  document.documentElement.classList.add('printing');
  for (const block of document.querySelectorAll('details.session')) {
    block.fill();
    block.querySelector('.incidents')?.showAll();
  }
  redraw();
});
addEventListener('afterprint', () => {
  document.documentElement.classList.remove('printing');
  for (const block of document.querySelectorAll('details.session')) block.open = block.id === `session-${current.id}`;
  redraw();
});
