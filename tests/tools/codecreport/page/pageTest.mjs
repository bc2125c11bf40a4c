// SPDX-License-Identifier: Apache-2.0
// The page in a browser, in light and dark, held to the JSON that is written with it:
// node pageTest.mjs BROWSER CODECREPORT MAKE-LOG [SCREENSHOT-PREFIX]
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';
import { chromium } from 'playwright-core';

const [executablePath, codecreport, makeLog, screenshots] = process.argv.slice(2);
const folder = mkdtempSync(join(tmpdir(), 'codecreport-'));
process.on('exit', () => rmSync(folder, { recursive: true }));
const file = (name) => join(folder, name);
writeFileSync(file('log'), execFileSync(makeLog));
execFileSync(codecreport, ['-q', file('log'), '-o', file('page.html'), `--json=${file('json')}`]);
const report = JSON.parse(readFileSync(file('json'), 'utf8'));
const url = pathToFileURL(file('page.html')).href;
const args = ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
  '--disable-background-networking', '--disable-component-update', '--disable-sync'];

/** The shown values of one column of a table. */
const column = (page, table, title) => page.evaluate(([selector, name]) => {
  const element = document.querySelector(`${selector} table`);
  const index = [...element.querySelectorAll('thead th')].findIndex((th) => th.textContent === name);
  if (index < 0) throw new Error(`no column ${name} in ${selector}`);
  return [...element.querySelectorAll('tbody tr')].map((row) => row.cells[index].dataset.value);
}, [table, title]);

const texts = (values) => values.map((value) => (value === null ? '–' : String(value)));

async function numbersEqual(page, session) {
  const check = async (table, title, values) =>
    assert.deepEqual(await column(page, table, title), texts(values), `${table} ${title}`);
  const worst = session.worst_frames;
  assert.match(worst[0].verdict, /^app: held for 467 ms/, 'the stall of the log');
  await check('#worst', 'Late (ms)', worst.map((frame) => frame.late_ms));
  await check('#worst', 'App', worst.map((frame) => frame.app_ms));
  await check('#worst', 'Verdict', worst.map((frame) => frame.verdict));
  await check('#freezes', 'Lasted (ms)', session.freezes.list.map((freeze) => freeze.duration_ms));
  await check('#drops', 'Runs', session.drops.lengths.map((entry) => entry.run_count));
  await check('#report', 'Value', Object.values(session.report));
  const stages = Object.values(session.stages).filter((stats) => stats.count > 0);
  for (const [title, key] of [['p50', 'p50_ms'], ['p99', 'p99_ms'], ['Most', 'max_ms']]) {
    await check('#stages', title,
      [...stages, session.frame_interval, session.lateness].map((stats) => stats[key]));
  }
  const { startup } = session;
  assert.equal((await column(page, '#startup', 'Took (ms)'))[0],
    String(startup.p2_end_ms - startup.p2_begin_ms), 'start-up');
}

/** Something is painted between the axes: the ink of the plot's own series. */
async function plotsDrawn(page, expected) {
  const plots = await page.evaluate(() => Plots.all().map((u) => {
    const { left, top, width, height } = u.bbox;
    const pixels = u.ctx.getImageData(left, top, width, height).data;
    let ink = 0;
    for (let i = 3; i < pixels.length; i += 4) if (pixels[i] > 200) ink += 1;
    const box = u.root.getBoundingClientRect();
    return { ink, points: u.data[0].length, wide: box.width, label: u.root.parentElement.ariaLabel };
  }));
  assert.equal(plots.length, expected, 'number of plots');
  for (const plot of plots) {
    assert.ok(plot.ink > 200, `${plot.label}: drawn with ${plot.ink} pixels`);
    assert.ok(plot.points > 1 && plot.wide > 500, plot.label);
  }
}

async function keyboardZooms(page) {
  const range = () => page.evaluate(() => Plots.all().map((u) => [u.scales.x.min, u.scales.x.max]));
  await page.focus('#plot-stages');
  const before = await range();
  await page.keyboard.press('+');
  const zoomed = await range();
  assert.ok(zoomed[0][0] > before[0][0] && zoomed[0][1] < before[0][1], 'zoomed in');
  assert.deepEqual(zoomed[0], zoomed[zoomed.length - 1], 'all plots show the same time');
  await page.keyboard.press('0');
  const all = await range();
  assert.ok(all[0][0] <= zoomed[0][0] && all[0][1] >= zoomed[0][1], 'all again');
}

/** What assistive technology needs: names for regions and plots, headers for columns. */
async function isAccessible(page) {
  const bare = await page.evaluate(() => [
    ...[...document.querySelectorAll('[role=img], [role=region]')].filter((e) => !e.ariaLabel),
    ...[...document.querySelectorAll('.scroll table')].filter((e) => !e.caption || !e.querySelector('th[scope=col]')),
    ...[...document.querySelectorAll('[aria-labelledby]')].filter((e) => !document.getElementById(e.getAttribute('aria-labelledby'))),
  ].map((e) => e.outerHTML.slice(0, 80)));
  assert.deepEqual(bare, [], 'elements without a name');
}

/** Text against its ground, by the contrast formula of the web's accessibility guidelines. */
async function isLegible(page) {
  const ratios = await page.evaluate(() => {
    const light = (text) => {
      const parts = text.match(/[\d.]+/g).slice(0, 3).map((v) => Number(v) / 255)
        .map((v) => (v <= 0.04045 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4));
      return 0.2126 * parts[0] + 0.7152 * parts[1] + 0.0722 * parts[2];
    };
    const ground = light(getComputedStyle(document.body).backgroundColor);
    return ['body', '.muted', 'a[href^="#session-"]', 'figcaption'].map((selector) => {
      const ink = light(getComputedStyle(document.querySelector(selector)).color);
      return [selector, (Math.max(ink, ground) + 0.05) / (Math.min(ink, ground) + 0.05)];
    });
  });
  for (const [selector, ratio] of ratios) assert.ok(ratio >= 4.5, `${selector}: contrast ${ratio}`);
}

async function run(browser, colorScheme) {
  const page = await browser.newPage({ colorScheme, viewport: { width: 1200, height: 900 } });
  const odd = [];
  page.on('console', (message) => { if (message.type() !== 'log') odd.push(message.text()); });
  page.on('pageerror', (error) => odd.push(String(error)));
  page.on('request', (request) => { if (!/^(file|data):/.test(request.url())) odd.push(request.url()); });
  await page.goto(url);
  const session = report.sessions.find((candidate) => candidate.video);
  assert.match(await page.textContent('#session-title'), new RegExp(session.codec_tag));
  await numbersEqual(page, session);
  await plotsDrawn(page, 3);
  await keyboardZooms(page);
  await isAccessible(page);
  await isLegible(page);
  if (screenshots) await page.screenshot({ path: `${screenshots}-${colorScheme}.png`, fullPage: true });

  const other = report.sessions[report.sessions.length - 1];
  await page.click(`a[href="#session-${other.id}"]`);
  await page.waitForFunction((id) => document.getElementById('session-title').textContent.startsWith(`Session ${id}:`), other.id);
  await page.click('#plots summary >> nth=0');
  await page.waitForSelector('#plots details tbody tr', { timeout: 5000 });
  assert.deepEqual(odd, [], 'console, errors and requests');
  await page.close();
}

const browser = await chromium.launch({ executablePath, args });
try {
  for (const colorScheme of ['light', 'dark']) await run(browser, colorScheme);
} finally {
  await browser.close();
}
