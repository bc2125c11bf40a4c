// SPDX-License-Identifier: Apache-2.0
// How values are written. What the log does not tell is a dash, never 0.

export const UNKNOWN = '–';
export const isKnown = (value) => value !== null && value !== undefined;
export const text = (value) => (isKnown(value) ? String(value) : UNKNOWN);
export const yesNo = (value) => (isKnown(value) ? (value ? 'yes' : 'no') : UNKNOWN);
export const round = (value, digits) => Number(value.toFixed(digits));

export const count = (value) => (isKnown(value) ? value.toLocaleString('en') : UNKNOWN);
export const percent = (share) => {
  if (!isKnown(share)) return UNKNOWN;
  if (share > 0 && share < 0.01) return '< 1 %';
  return share < 1 && share > 0.99 ? '> 99 %' : `${Math.round(share * 100)} %`;
};

/** A moment of the session: 0:06.7, 1:02:03.4. `digits` of the second, more when zoomed in. */
export function clock(ms, digits = 1) {
  if (!isKnown(ms)) return UNKNOWN;
  const unit = 10 ** digits;
  const parts = Math.round((Math.abs(ms) / 1000) * unit);
  const seconds = Math.floor(parts / unit);
  const two = (value) => String(value).padStart(2, '0');
  const hours = Math.floor(seconds / 3600);
  const minutes = Math.floor(seconds / 60) % 60;
  const fraction = digits > 0 ? `.${String(parts % unit).padStart(digits, '0')}` : '';
  const head = hours > 0 ? `${hours}:${two(minutes)}` : String(minutes);
  return `${ms < 0 ? '-' : ''}${head}:${two(seconds % 60)}${fraction}`;
}

/** A length of time: 0.033 s, 1.84 s, 18.0 s, 2 min 5 s, 3 h 20 min. */
export function lasting(ms) {
  if (!isKnown(ms)) return UNKNOWN;
  const seconds = ms / 1000;
  if (seconds === 0) return '0 s';
  if (seconds < 0.1) return `${seconds.toFixed(3)} s`;
  if (seconds < 9.995) return `${seconds.toFixed(2)} s`;
  if (seconds < 59.95) return `${seconds.toFixed(1)} s`;
  const whole = Math.round(seconds);
  if (whole < 3600) return `${Math.floor(whole / 60)} min ${whole % 60} s`;
  return `${Math.floor(whole / 3600)} h ${Math.floor((whole % 3600) / 60)} min`;
}

/** A figure of the session by its path in the report; of part of which was logged, "at least". */
export function figureOf(session, path, write = count) {
  const value = path.split('.').reduce((at, key) => (isKnown(at) ? at[key] : at), session);
  const inPart = (session.at_least || []).includes(path);
  if (!isKnown(value) || (inPart && value === 0)) return UNKNOWN;
  return inPart ? `at least ${write(value)}` : write(value);
}
