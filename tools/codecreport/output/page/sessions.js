// SPDX-License-Identifier: Apache-2.0
// The list of sessions, worst first as the report holds them: a block each, open or folded.
import { CAUSES, VERDICTS, causeName, verdictBadge } from './causes.js';
import { choice, make, note, searchField } from './dom.js';
import { UNKNOWN, count, figureOf, isKnown, lasting, percent, round } from './format.js';
import { incidentTable, plotsLink } from './incidents.js';
import { strip } from './strip.js';

const SHOWN_AT_FIRST = 10;
const SHOWN_MORE = 100;
const FEW = 4;

export const wordOf = (session) => (session.verdict ? session.verdict.word : null);

function identityOf(session) {
  const { video } = session;
  const size = video && isKnown(video.width_px) ? ` ${video.width_px}x${video.height_px}` : '';
  const length = isKnown(session.playback_ms)
    ? `${lasting(session.playback_ms)} of playback` : `${lasting(session.duration_ms)} long`;
  return [session.package || (isKnown(session.pid) ? `process ${session.pid}` : null),
    `${session.codec_tag || session.format || 'codec not named'}${size}`,
    session.start_time && session.start_time.replace(/\.\d+$/, ''), length].filter((part) => part).join(' · ');
}

function sentenceOf(session) {
  if (!session.verdict) {
    const { error_count: errors } = session.counts || {};
    const judged = session.kind === 'video' ? 'Not judged' : 'No pictures to judge';
    return errors > 0 ? `${judged}; ${count(errors)} errors` : judged;
  }
  const { sentence, missing } = session.verdict;
  return missing ? `${sentence}; the log lacks ${missing}` : sentence;
}

function cadenceOf(session) {
  const parts = [];
  const { cadence, sync, startup } = session;
  if (cadence && isKnown(cadence.content_fps)) {
    const hz = isKnown(cadence.display_hz) ? round(cadence.display_hz, 2) : UNKNOWN;
    parts.push(`cadence ${round(cadence.content_fps, 3)} fps on ${hz} Hz`);
    if (cadence.pattern) parts.push(cadence.pattern);
    if (isKnown(cadence.even)) parts.push(cadence.even ? 'even' : 'uneven');
    parts.push(`${count(cadence.mistimed_count)} mistimed`);
    if (isKnown(cadence.vsync_jitter_ms)) parts.push(`vsync jitter ${round(cadence.vsync_jitter_ms, 2)} ms`);
  } else {
    parts.push(`cadence ${UNKNOWN}`);
  }
  if (sync && sync.measured_ms > 0) {
    parts.push(`on schedule within +45/-100 ms for ${percent(1 - sync.outside_ms / sync.measured_ms)}`);
  }
  if (startup) {
    const first = startup.first_frame_render_ms;
    parts.push(`first picture after ${isKnown(first) ? `${round(first, 0)} ms` : UNKNOWN}`);
  }
  if (session.counts) {
    parts.push(`shown ${figureOf(session, 'counts.shown_count')}, dropped ${figureOf(session, 'counts.dropped_count')}`);
    if (session.counts.error_count > 0) parts.push(`${count(session.counts.error_count)} errors`);
  }
  return parts.join(' · ');
}

function soundOf({ report = {}, counts = {} }) {
  const bitrate = report.stream_avg_bitrate_kbps;
  return [`played ${lasting(report.total_audio_playback_ms)}`,
    `${isKnown(bitrate) ? round(bitrate, 0) : UNKNOWN} kbit/s`, `${count(counts.error_count)} errors`].join(' · ');
}

function bodyOf(session) {
  if (session.kind !== 'video') return [make('p', { class: 'cadence' }, soundOf(session))];
  return [
    strip(session, 0, session.duration_ms, (incident) => { location.hash = plotsLink(session, incident); }),
    incidentTable(session),
    make('p', { class: 'cadence' }, cadenceOf(session)),
  ];
}

const stoodMs = ({ causes }) => (causes ? Object.values(causes).reduce((sum, { stood_ms: ms }) => sum + ms, 0) : -1);

const SORTS = {
  worst: ['worst first', null],
  start: ['beginning', (a, b) => a.start_us - b.start_us],
  stood: ['time stood', (a, b) => stoodMs(b) - stoodMs(a)],
  incidents: ['incidents', (a, b) => (b.incident_count ?? -1) - (a.incident_count ?? -1)],
  duration: ['length', (a, b) => b.duration_ms - a.duration_ms],
};

const searched = (session) => `${identityOf(session)} ${session.id} ${session.pid} ${session.kind}`.toLowerCase();

export class SessionList {
  /** @param onOpen called with the session whose block the reader opened */
  constructor(element, sessions, onOpen) {
    this.element = element;
    this.sessions = sessions;
    this.onOpen = onOpen;
    this.filter = { words: '', verdict: '', cause: '', sort: 'worst' };
    this.limit = SHOWN_AT_FIRST;
    this.blocks = make('div', {});
    this.status = make('p', { class: 'muted', role: 'status' });
    this.more = make('button', { type: 'button', click: () => this.showMore() });
    element.replaceChildren(sessions.length > FEW ? this.controls() : '', this.blocks,
      make('p', { class: 'controls' }, this.more));
    this.refresh();
  }

  controls() {
    const set = (key) => (value) => {
      this.filter[key] = value;
      this.limit = SHOWN_AT_FIRST;
      this.refresh();
    };
    return make('div', { class: 'controls' },
      searchField('Search', set('words')),
      choice('Verdict', [['', 'all'], ...VERDICTS.map((word) => [word, word])], set('verdict')),
      choice('Cause', [['', 'all'], ...CAUSES.map((cause) => [cause, causeName(cause)])], set('cause')),
      choice('Order', Object.entries(SORTS).map(([key, [name]]) => [key, name]), set('sort')),
      this.status);
  }

  matching() {
    const { words, verdict, cause, sort } = this.filter;
    const found = this.sessions.filter((session) => (!verdict || wordOf(session) === verdict)
      && (!cause || (session.causes && session.causes[cause])) && (!words || searched(session).includes(words)));
    return SORTS[sort][1] ? found.sort(SORTS[sort][1]) : found;
  }

  refresh() {
    const found = this.matching();
    this.blocks.replaceChildren(...found.slice(0, this.limit).map((session) => this.block(session)));
    this.status.textContent = `${count(found.length)} of ${count(this.sessions.length)} sessions`;
    const left = found.length - this.limit;
    this.more.hidden = left <= 0;
    this.more.textContent = `Show ${Math.min(left, SHOWN_MORE)} more of ${count(left)}`;
  }

  showMore() {
    const next = this.limit;
    this.limit += SHOWN_MORE;
    this.refresh();
    this.blocks.children[next]?.querySelector('summary').focus();
  }

  block(session) {
    const word = wordOf(session);
    const details = make('details', { id: `session-${session.id}`, class: 'session', open: session === this.current },
      make('summary', {
        click: (event) => {
          if (details.open || session === this.current) return;
          event.preventDefault();
          this.onOpen(session);
          details.scrollIntoView({ block: 'nearest' });
        },
      },
        make('h2', { class: 'identity' }, identityOf(session)),
        make('span', { class: 'sentence' }, word ? verdictBadge(word) : '', ' ', sentenceOf(session))));
    const fill = () => { if (details.children.length === 1) details.append(...bodyOf(session)); };
    if (details.open) fill();
    details.fill = () => { details.open = true; fill(); };
    details.addEventListener('toggle', fill);
    return details;
  }

  /** Opens the session's block and folds the one before. */
  open(session) {
    const before = this.current && document.getElementById(`session-${this.current.id}`);
    this.current = session;
    if (before) before.open = false;
    if (!document.getElementById(`session-${session.id}`)) {
      if (!this.matching().includes(session)) {
        this.filter = { words: '', verdict: '', cause: '', sort: 'worst' };
        this.element.querySelectorAll('input, select').forEach((field) => {
          field.value = field.tagName === 'SELECT' ? field.options[0].value : '';
        });
      }
      this.limit = Math.max(this.limit, this.matching().indexOf(session) + 1);
      this.refresh();
    }
    document.getElementById(`session-${session.id}`).fill();
  }
}

/** What stands on top of the page. */
export function summaryOf(report) {
  const { input, sessions } = report;
  const tally = VERDICTS.map((word) => [word, sessions.filter((session) => wordOf(session) === word).length])
    .filter(([, number]) => number > 0).map(([word, number]) => `${count(number)} ${word}`);
  return [input.files.join(', '), `${count(input.line_count)} lines`,
    `${count(sessions.length)} ${sessions.length === 1 ? 'session' : 'sessions'}${tally.length > 0 ? ` (${tally.join(', ')})` : ''}`,
    input.first_time && `from ${input.first_time}`].filter((part) => part).join(' · ');
}

export const emptyList = () => note('The log holds no line of a codec session.');
