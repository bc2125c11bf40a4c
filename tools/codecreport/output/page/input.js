// SPDX-License-Identifier: Apache-2.0
// What was read: the log files and the metrics records.
import { facts, make, note, table } from './dom.js';
import { count, isKnown } from './format.js';

export function inputOf({ input }) {
  return [facts('input-facts', [
    ['Lines', count(input.line_count)], ['Lines of the library', count(input.understood_count)],
    ['Lines of other tags', count(input.other_tag_count)], ['No log lines', count(input.not_log_line_count)],
    ['Cut off', count(input.cut_off_count)], ['Not understood', count(input.unknown_count)],
    ['Of no session', count(input.unattributed_count)], ['Clock jumps', count(input.clock_jump_count)],
    ['Reboots', count(input.reboot_count)], ['Forms', Object.keys(input.formats || {}).join(', ')],
    ['Sessions left out', input.sessions_left_out_count || undefined],
  ]), ...(input.problems || []).map((problem) => make('p', { class: 'bad' }, problem)),
  ...(input.examples || []).map((example) => make('p', { class: 'muted' }, `Not understood: ${example}`))];
}

export function metricsOf({ metrics, metrics_left_out_count: leftOut }) {
  if (metrics.length === 0) return [note('No metrics records were given.')];
  return [table('Records of the metrics service', [
    { title: 'Name', of: (row) => row.name },
    { title: 'Dimension', of: (row) => row.dimension },
    { title: 'Data', of: (row) => row.data },
    { title: 'Last value', of: (row) => row.last_value, number: true },
    { title: 'Unit', of: (row) => row.unit },
    { title: 'Records', of: (row) => row.record_count, number: true },
    { title: 'Package', of: (row) => row.package },
  ], metrics), isKnown(leftOut) ? note(`${count(leftOut)} more are in the JSON report.`) : ''];
}
