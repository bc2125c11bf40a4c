// SPDX-License-Identifier: Apache-2.0
// The rows in DuckDB give the answers that SQLite gives: node rowsTest.mjs CODECREPORT MAKE-LOG
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdirSync, mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { DuckDBInstance } from '@duckdb/node-api';

const [codecreport, makeLog] = process.argv.slice(2);
const folder = mkdtempSync(join(tmpdir(), 'codecreport-rows-'));
process.on('exit', () => rmSync(folder, { recursive: true }));
const file = (name) => join(folder, name);
const run = (...words) => execFileSync(codecreport, ['-q', ...words], { encoding: 'utf8' });

// Two machines, each with logs of its own: their rows are put together, one log is on both.
for (const [machine, builds] of [['east', [1, 2, 3]], ['west', [3, 4]]]) {
  mkdirSync(file(machine));
  for (const build of builds) {
    writeFileSync(file(`${machine}/b${build}.log`), execFileSync(makeLog, [String(230 + 17 * build), '150']));
  }
  writeFileSync(file(`${machine}/m.jsonl`), `{"name":"p5","unit":"ms","value":${builds[0]},"data":{"a":"\\"é"}}\n`);
  // One after the other: of the log that is on both, the database holds the first's path.
  for (const out of [['rows', '-o', file(`rows-${machine}`)], ['--db', file('all.db')]]) {
    run(...out, file(machine), '--labels', '{build}.*', '--label', 'kind=test');
  }
}

const duckdb = await (await DuckDBInstance.create(':memory:')).connect();
await duckdb.run(readFileSync(file('rows-east/tables.sql'), 'utf8'));
const tables = readdirSync(file('rows-east')).filter((name) => name.endsWith('.jsonl')).map((name) => name.slice(0, -6));
for (const table of tables) {
  for (const machine of ['east', 'west']) {
    await duckdb.run(`CREATE TEMP TABLE part AS FROM ${table} LIMIT 0`);
    await duckdb.run(`COPY part FROM '${file(`rows-${machine}/${table}.jsonl`)}' (FORMAT json)`);
    // The first column is the log's or the session's id: what is there already is there whole.
    const id = table === 'log' || table === 'label' || table === 'metric' ? 'log_id' : 'session_id';
    await duckdb.run(`INSERT INTO ${table} FROM part WHERE ${id} NOT IN (SELECT ${id} FROM ${table})`);
    await duckdb.run('DROP TABLE part');
  }
}
const queries = [
  ...tables.map((table) => `SELECT * FROM ${table}`),
  'SELECT * FROM session_summary',
  `SELECT b.value AS build, s.codec, c.cause, count(*) AS n, sum(c.stood_ms) AS stood_ms,
     avg(s.stuttered) AS stuttered, sum(s.playback_hours) AS hours
   FROM session_summary s JOIN label b ON b.log_id = s.log_id AND b.name = 'build'
   LEFT JOIN session_cause c USING (session_id) GROUP BY 1, 2, 3`,
];
/** Rows without order, in words: sums to 12 digits, as they may come in another order, and ids whole. */
const inWords = (rows) => rows.map((row) => Object.entries(row).map(([key, value]) =>
  `${key}=${typeof value === 'number' ? Number(value.toPrecision(12)) : value}`).join(' ')).sort();
let compared = 0;
for (const sql of queries) {
  const lines = run('query', file('all.db'), sql, '--jsonl').split('\n').filter(Boolean);
  // Ids are greater than a number of JavaScript can hold.
  const expected = lines.map((line) => JSON.parse(line.replace(/:(-?\d{16,})/g, ':"$1"')));
  assert.deepEqual(inWords((await duckdb.runAndReadAll(sql)).getRowObjectsJS()), inWords(expected), sql);
  compared += expected.length;
}
assert.ok(compared > 100, `${compared} rows`);
