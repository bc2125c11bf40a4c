// SPDX-License-Identifier: Apache-2.0
import { choice, make, note, searchField, section, table } from './dom.js';
import { clock, count } from './format.js';

/** What happened in a session, moment by moment, to be searched. */
export function events(session) {
  const { moments } = session;
  if (moments.length === 0) return section('Events', 'events', note('None.'));
  const filter = { words: '', kind: '' };
  const list = make('div', {});
  const status = make('span', { class: 'muted', role: 'status' });
  const refresh = () => {
    const found = moments.filter((moment) => (!filter.kind || moment.kind === filter.kind)
      && `${moment.kind} ${moment.text}`.toLowerCase().includes(filter.words));
    status.textContent = `${count(found.length)} of ${count(session.moment_count)}`
      + `${session.moment_count > moments.length ? `, the first ${count(moments.length)} are kept` : ''}`;
    list.replaceChildren(table('What happened', [
      { title: 'At', of: (moment) => clock(moment.at_ms, 3), number: true },
      { title: 'Kind', of: (moment) => moment.kind },
      { title: 'What', of: (moment) => moment.text },
    ], found));
  };
  const set = (key) => (value) => { filter[key] = value; refresh(); };
  const kinds = [...new Set(moments.map((moment) => moment.kind))].sort();
  refresh();
  return section('Events', 'events', make('div', { class: 'controls' }, searchField('Search', set('words')),
    choice('Kind', [['', 'all'], ...kinds.map((kind) => [kind, kind])], set('kind')), status), list);
}
