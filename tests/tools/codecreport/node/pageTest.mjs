// SPDX-License-Identifier: Apache-2.0
// The page in a browser, held to the JSON that is written with it:
// node pageTest.mjs CODECREPORT MAKE-LOG BROWSER
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, statSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';
import { chromium } from 'playwright-core';

const [codecreport, makeLog, executablePath] = process.argv.slice(2);
const axe = createRequire(import.meta.url).resolve('axe-core/axe.min.js');
const LAPTOP = { width: 1366, height: 768 };
const PHONE = { width: 360, height: 740 };
const MOST_BYTES = 10e6;
const folder = mkdtempSync(join(tmpdir(), 'codecreport-'));
process.on('exit', () => rmSync(folder, { recursive: true }));
const file = (name) => join(folder, name);
const text = (value) => (value === null ? '–' : String(value));

/** The page and the report of a log, filtered before it is read. */
function reportOf(name, makeLogArguments, filter = (log) => log) {
  const log = execFileSync(makeLog, makeLogArguments, { maxBuffer: 1e9 });
  writeFileSync(file(`${name}.log`), filter(log));
  execFileSync(codecreport, ['-q', file(`${name}.log`), '-o', file(`${name}.html`), `--json=${file(`${name}.json`)}`]);
  return {
    url: pathToFileURL(file(`${name}.html`)).href,
    bytes: statSync(file(`${name}.html`)).size,
    ...JSON.parse(readFileSync(file(`${name}.json`), 'utf8')),
  };
}

async function open(browser, report, options) {
  const page = await browser.newPage({ viewport: LAPTOP, ...options });
  page.odd = [];
  page.on('console', (message) => { if (message.type() !== 'log') page.odd.push(message.text()); });
  page.on('pageerror', (error) => page.odd.push(String(error)));
  page.on('request', (request) => { if (!/^(file|data):/.test(request.url())) page.odd.push(request.url()); });
  await page.goto(report.url);
  return page;
}

async function close(page) {
  assert.deepEqual(page.odd, [], 'console, errors and requests');
  await page.close();
}

/** The shown values of one column of a table. */
const column = (page, table, title) => page.evaluate(([selector, name]) =>
  [...document.querySelectorAll(`${selector} td[data-title="${name}"]`)].map((cell) => cell.textContent), [table, title]);

async function firstScreenTellsTheVerdict(page, session) {
  const block = page.locator(`#session-${session.id}`);
  assert.equal(await block.getAttribute('open'), '', 'the worst session is open');
  assert.ok((await block.locator('summary').textContent()).includes(session.verdict.sentence));
  const rows = block.locator('tbody tr');
  assert.equal(await rows.count(), session.incidents.length);
  for (const [i, incident] of session.incidents.entries()) {
    assert.ok((await rows.nth(i).textContent()).includes(incident.evidence), incident.evidence);
    const box = await rows.nth(i).boundingBox();
    assert.ok(box.y > 0 && box.y + box.height < LAPTOP.height, 'without scrolling');
  }
}

const ranges = (page) => page.evaluate(() =>
  [...document.querySelectorAll('.plot')].map(({ u }) => [u.scales.x.min, u.scales.x.max]));

async function incidentLeadsToThePlotsAndBack(page, session) {
  const incident = session.incidents[session.incidents.length - 1];
  const link = page.locator(`#session-${session.id}-incident-${incident.id} a`);
  await link.focus();
  await page.keyboard.press('Enter');
  await page.waitForFunction(() => document.activeElement.classList.contains('plot'));
  for (const [min, max] of await ranges(page)) {
    assert.ok(min * 1000 <= incident.start_ms && max * 1000 >= incident.start_ms + incident.duration_ms, 'in view');
    assert.ok(max - min < session.duration_ms / 1000, 'zoomed');
  }
  await page.click('text=Back to the table');
  await page.waitForFunction((id) => document.activeElement.closest('tr')?.id === id,
    `session-${session.id}-incident-${incident.id}`);
}

/** Plots show the same time at the same place, and neither nothing nor more than there is. */
async function plotsZoomTogetherWithinLimits(page, session) {
  const plots = await page.evaluate(() => [...document.querySelectorAll('.plot')].map(({ u }) => {
    const { left, top, width, height } = u.bbox;
    const pixels = u.ctx.getImageData(left, top, width, height).data;
    let ink = 0;
    for (let i = 3; i < pixels.length; i += 4) if (pixels[i] > 200) ink += 1;
    return { ink, left, width };
  }));
  assert.equal(plots.length, 4);
  for (const { ink, left, width } of plots) {
    assert.ok(ink > 200, `drawn with ${ink} pixels`);
    assert.deepEqual([left, width], [plots[0].left, plots[0].width], 'aligned');
  }
  await page.focus('#plot-stages');
  for (let i = 0; i < 30; i += 1) await page.keyboard.press('+');
  const [min, max] = (await ranges(page))[3];
  assert.deepEqual(await ranges(page), plots.map(() => [min, max]));
  assert.ok(max - min >= 0.1 && max - min < 0.5, `a few frames: ${max - min} s`);
  for (let i = 0; i < 30; i += 1) await page.keyboard.press('-');
  assert.deepEqual((await ranges(page))[0], [0, session.duration_ms / 1000]);
}

async function axeFindsNothing(page) {
  await page.addScriptTag({ path: axe });
  const findings = await page.evaluate(async () => (await globalThis.axe.run()).violations
    .map(({ id, nodes }) => `${id}: ${nodes.map((node) => node.html.slice(0, 90)).join(' | ')}`));
  assert.deepEqual(findings, []);
}

async function looks(browser, report, colorScheme) {
  const page = await open(browser, report, { colorScheme });
  const session = report.sessions.reduce((worst, other) =>
    (other.standing.total_ms > worst.standing.total_ms ? other : worst));
  await firstScreenTellsTheVerdict(page, session);
  await incidentLeadsToThePlotsAndBack(page, session);
  await plotsZoomTogetherWithinLimits(page, session);
  const stages = Object.values(session.stages).filter((stats) => stats.count > 0);
  assert.deepEqual(await column(page, '#stages', 'p99'),
    [...stages, session.frame_interval, session.lateness].map((stats) => text(stats.p99_ms)));
  assert.deepEqual(await column(page, '#report', 'Value'), Object.values(session.report).map(text));
  await page.fill('#events input', 'no such event');
  assert.match(await page.textContent('#events [role=status]'), /^0 of /);
  await axeFindsNothing(page);
  await page.click('#plots summary >> nth=0');
  await page.waitForSelector('#plots details tbody tr', { timeout: 5000 });
  await close(page);
}

async function fitsAPhoneAndPaper(browser, report) {
  const page = await open(browser, report, { viewport: PHONE });
  const width = () => page.evaluate(() => document.documentElement.scrollWidth);
  assert.ok(await width() <= PHONE.width, `${await width()} pixels wide`);
  await page.emulateMedia({ media: 'print' });
  await page.evaluate(() => dispatchEvent(new Event('beforeprint')));
  assert.equal(await page.locator('details.session:not([open])').count(), 0, 'all unfolded');
  assert.equal(await page.locator('.controls:visible, input:visible, select:visible').count(), 0, 'no controls');
  await close(page);
}

/** Without the lines of shown frames nobody knows how many there were. */
async function unknownIsADash(browser) {
  const report = reportOf('unknown', [], (log) =>
    log.toString().split('\n').filter((line) => /\.format|P[235]|Report|MediaCodecLogger/.test(line)).join('\n'));
  const page = await open(browser, report);
  const facts = Object.fromEntries(await page.evaluate(() =>
    [...document.querySelectorAll('#facts div')].map((fact) => [fact.firstChild.textContent, fact.lastChild.textContent])));
  assert.equal(facts['Shown (frames)'], '–');
  assert.equal(facts['Rendered (frames)'], '–');
  assert.equal(await page.locator('#plot-late').count(), 0);
  await close(page);
}

async function thousandsOfSessionsStayUsable(browser) {
  const report = reportOf('many', ['8', '3', '5000']);
  assert.equal(report.sessions.length, 5000);
  assert.ok(report.bytes < MOST_BYTES, `${report.bytes} bytes`);
  const page = await open(browser, report);
  assert.equal(await page.locator('details.session').count(), 10);
  assert.match(await page.textContent('#session-title'), /^Session 5000:/, 'the worst');
  assert.ok(await page.locator('.plot').count() > 1, 'and its plots');
  await page.fill('#sessions input', '7123');
  assert.equal(await page.textContent('#sessions [role=status]'), '1 of 5,000 sessions');
  await page.click('details.session summary');
  await page.waitForFunction(() => document.getElementById('session-title').textContent.startsWith('Session 2123:'));
  await page.fill('#sessions input', '');
  await page.selectOption('#sessions select >> nth=2', 'duration');
  assert.equal(await page.textContent('#sessions [role=status]'), '5,000 of 5,000 sessions');
  await close(page);
}

const browser = await chromium.launch({ executablePath,
  args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
    '--disable-background-networking', '--disable-component-update', '--disable-sync'] });
try {
  const report = reportOf('session', []);
  for (const colorScheme of ['light', 'dark']) await looks(browser, report, colorScheme);
  await fitsAPhoneAndPaper(browser, report);
  await unknownIsADash(browser);
  await thousandsOfSessionsStayUsable(browser);
} finally {
  await browser.close();
}
