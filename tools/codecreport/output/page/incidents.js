// SPDX-License-Identifier: Apache-2.0
import { causesOf } from './causes.js';
import { make, note, table } from './dom.js';
import { clock, count, lasting } from './format.js';

const SHOWN_AT_FIRST = 8;
const PLACES = { start: 'at start', seek: 'after a seek', flush: 'after a flush', end: 'at the end' };

export const rowLink = (session, incident) => `#session-${session.id}-incident-${incident.id}`;
export const plotsLink = (session, incident) => `#session-${session.id}-plots-${incident.id}`;

const severity = (incident) => (incident.stood_ms || 0) + (incident.open_ended ? 1e12 : 0)
  + (incident.never_shown_count || 0) / 1e3;

/** The worst, in the order of time. */
function worst(incidents) {
  const chosen = new Set([...incidents].sort((a, b) => severity(b) - severity(a)).slice(0, SHOWN_AT_FIRST));
  return incidents.filter((incident) => chosen.has(incident));
}

function evidenceOf(incident) {
  const place = PLACES[incident.place];
  const parts = [place && `${place}`, incident.evidence, incident.open_ended && 'no picture came any more'];
  return parts.filter((part) => part).join('; ');
}

/** When it began, as the way to its place in the plots, where the page holds any. */
function beginning(session, incident) {
  const at = clock(incident.start_ms);
  if (!session.detailed || !session.moments) return at;
  return make('a', {
    href: plotsLink(session, incident),
    'aria-label': `Incident ${incident.id} at ${at}: show in the plots`,
    title: 'Show in the plots',
  }, at);
}

function tableOf(session, rows) {
  const columns = [
    { title: '#', of: (incident) => incident.id, number: true },
    { title: 'at', of: (incident) => beginning(session, incident), number: true },
    { title: 'stood', of: (incident) => lasting(incident.stood_ms), number: true },
    { title: 'lost', of: (incident) => count(incident.never_shown_count), number: true },
    { title: 'late', of: (incident) => count(incident.late_count), number: true },
    { title: 'cause', of: causesOf, class: 'cause' },
    { title: 'evidence', of: evidenceOf, class: 'evidence' },
  ];
  return table(`Incidents of session ${session.id}`, columns, rows, {
    hideCaption: true,
    onRow: (row, incident) => { row.id = rowLink(session, incident).slice(1); },
  });
}

/** The incidents of a session: the worst of many at first, all on demand and in print. */
export function incidentTable(session) {
  const { incidents } = session;
  if (!incidents) {
    return note(session.incident_count > 0
      ? 'The worst sessions fill this page; the incidents of this one are in the JSON report.' : 'No incident.');
  }
  if (incidents.length === 0) {
    return note(session.verdict?.word === 'smooth' ? 'No incident.' : 'The log does not tell of an incident.');
  }
  const box = make('div', { class: 'incidents' });
  const all = () => box.replaceChildren(tableOf(session, incidents),
    session.incident_count > incidents.length
      ? note(`The worst ${count(incidents.length)} of ${count(session.incident_count)}.`) : '');
  box.showAll = () => { if (box.querySelector('button')) all(); };
  if (incidents.length <= SHOWN_AT_FIRST + 2) {
    all();
  } else {
    box.append(tableOf(session, worst(incidents)), make('p', { class: 'controls' },
      `The ${SHOWN_AT_FIRST} longest of ${count(session.incident_count)}. `,
      make('button', { type: 'button', click: () => { all(); box.querySelector('.scroll').focus(); } },
        `Show ${count(incidents.length)}`)));
  }
  return box;
}

/** The row of an incident, with the whole list shown if it needs that. */
export function focusRow(session, id) {
  const find = () => document.getElementById(`session-${session.id}-incident-${id}`);
  if (!find()) document.querySelector(`#session-${session.id} .incidents`)?.showAll();
  const row = find();
  if (!row) return;
  row.scrollIntoView({ block: 'center' });
  row.tabIndex = -1;
  (row.querySelector('a') || row).focus({ preventScroll: true });
}
