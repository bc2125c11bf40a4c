// SPDX-License-Identifier: Apache-2.0
import { text } from './format.js';

/** An element with attributes and children; text is never read as HTML. */
export function make(name, attributes, ...children) {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(attributes || {})) {
    if (typeof value === 'function') element.addEventListener(key, value);
    else if (value != null && value !== false) element.setAttribute(key, value);
  }
  element.append(...children.filter((child) => child != null && child !== ''));
  return element;
}

/** A table in a region of its own that scrolls. Columns: { title, of: row => value or element, number, class }. */
export function table(caption, columns, rows, { onRow, hideCaption } = {}) {
  const head = make('tr', {}, ...columns.map((column) =>
    make('th', { scope: 'col', class: column.number ? 'number' : column.class }, column.title)));
  const body = rows.map((row) => {
    const line = make('tr', {}, ...columns.map((column) => {
      const value = column.of(row);
      return make('td', { class: column.class || (column.number && 'number'), 'data-title': column.title },
        value instanceof Node ? value : text(value));
    }));
    if (onRow) onRow(line, row);
    return line;
  });
  return make('div', { class: 'scroll', tabindex: 0, role: 'region', 'aria-label': caption },
    make('table', {}, make('caption', { class: hideCaption && 'unseen' }, caption),
      make('thead', {}, head), make('tbody', {}, ...body)));
}

/** Names with their values; those that are undefined do not apply and are left out. */
export function facts(id, entries) {
  return make('dl', { class: 'facts', id }, ...entries.filter(([, value]) => value !== undefined)
    .map(([name, value]) => make('div', {}, make('dt', {}, name), make('dd', {}, text(value)))));
}

export function bar(from, length, whole) {
  const span = make('span', {});
  span.style.left = `${(100 * from) / whole}%`;
  span.style.width = `${Math.min(100, (100 * length) / whole)}%`;
  return make('div', { class: 'bar', 'aria-hidden': 'true' }, span);
}

export const section = (title, id, ...children) =>
  make('section', { id, tabindex: -1, 'aria-label': title }, make('h3', {}, title), ...children);

export const note = (why) => make('p', { class: 'muted' }, why);

/** A choice with its label; `options` are [value, text]. */
export function choice(label, options, onChange) {
  return make('label', {}, `${label} `, make('select', { change: (event) => onChange(event.target.value) },
    ...options.map(([value, name]) => make('option', { value }, name))));
}

export function searchField(label, onInput) {
  return make('label', {}, `${label} `,
    make('input', { type: 'search', input: (event) => onInput(event.target.value.trim().toLowerCase()) }));
}
