// SPDX-License-Identifier: Apache-2.0
// Causes and verdicts: words, and marks that differ by pattern as well as by colour.
import { make } from './dom.js';
import { percent } from './format.js';

const NAMES = {
  input_starved: 'input starved',
  decryption: 'decryption',
  codec: 'codec',
  message_delay: 'message delay',
  application: 'application',
  display_queue: 'display queue',
  display_rate: 'display rate',
  unknown: 'unknown',
};
const SYMBOLS = { smooth: '✓', stuttered: '▲', 'broke off': '✕', 'cannot tell': '?' };

export const CAUSES = Object.keys(NAMES);
export const VERDICTS = Object.keys(SYMBOLS);
export const causeName = (cause) => NAMES[cause] || cause;
export const causeClass = (cause) => `cause-${cause.replace('_', '-')}`;

/** The causes of an incident with their shares of it, largest first. */
export const sharesOf = (incident) => Object.entries(incident.shares || { [incident.cause]: 1 })
  .filter(([, share]) => share > 0).sort((a, b) => b[1] - a[1]);

/** A patch in a cause's colour and pattern, to stand beside its name. */
export const swatch = (cause) => make('span', { class: `swatch ${causeClass(cause)}`, 'aria-hidden': 'true' });

export function causesOf(incident) {
  const shares = sharesOf(incident);
  const name = ([cause, share]) => (shares.length > 1 ? `${causeName(cause)} ${percent(share)}` : causeName(cause));
  return make('span', { class: 'causes' },
    ...shares.flatMap((entry) => [make('span', {}, swatch(entry[0]), name(entry)), ' ']));
}

export function verdictBadge(word) {
  return make('span', { class: `verdict verdict-${word.replace(' ', '-')}` },
    make('span', { 'aria-hidden': 'true' }, SYMBOLS[word] || '?'), ` ${word}`);
}
