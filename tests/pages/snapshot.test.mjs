// Runs the simulator on a scenario that docks both panes, opens its window
// snapshot in headless Chromium, finds the panes' titles and rows, checks a
// few computed sizes, and saves a screenshot.
//
// VELMORA_HOST: path of the velmora-host binary (required).
// VELMORA_ARTIFACTS: folder for the screenshot (default: a temporary folder).
import { test, before, after } from 'node:test';
import assert from 'node:assert/strict';
import { mkdtempSync, mkdirSync, readFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { openSnapshot, pane as paneIn, box, style } from './harness.mjs';

const artifacts = process.env.VELMORA_ARTIFACTS || mkdtempSync(path.join(tmpdir(), 'velmora-artifacts-'));

const shape = (id, left, top, height) =>
  `{"ID":${id},"Name":"Box ${id}","Top":${top},"Left":${left},"Width":50,"Height":${height},"ShpType":"1",` +
  `"HasFill":true,"FillColor":255,"HasTextFrame":true,"HasText":false,"AutoSize":false,"WordWrap":true,` +
  `"MarginTop":3.6,"MarginLeft":7.2,"ZOrder":${id},"HasLineBreaks":false}`;

const scenario = [
  'open assistant',
  'open shortcuts',
  `select '[${shape(1, 0, 10, 40)},${shape(2, 80, 30, 60)},${shape(3, 200, 50, 20)}]'`,
  "others '[]'",
  'assistant',
  'wait 1',
  'flags ctrl+cmd',
  "width 'Velmora Shortcuts' 500",
  'snapshot snapshot.html',
].join('\n') + '\n';

let page, close;

before(async () => {
  ({ page, close } = await openSnapshot(scenario));
});

after(async () => {
  await close?.();
});

const pane = (title) => paneIn(page, title);

test('both panes are docked side by side with their titles', async () => {
  await assert.doesNotReject(pane('Velmora Assistant').waitFor());
  const assistant = await box(pane('Velmora Assistant'));
  const shortcuts = await box(pane('Velmora Shortcuts'));
  assert.equal(Math.round(assistant.width), 250);
  assert.equal(Math.round(shortcuts.width), 500);
  assert.equal(Math.round(assistant.x + assistant.width), Math.round(shortcuts.x));
  for (const title of ['Velmora Assistant', 'Velmora Shortcuts']) {
    await assert.doesNotReject(pane(title).locator('[data-class="NSTextField"]', { hasText: title }).waitFor());
  }
});

test('the frame: a 28-point title bar and content reaching 5 points into it', async () => {
  const frame = pane('Velmora Assistant');
  const titleBar = await box(frame.locator('[data-part="titleBar"]'));
  const content = await box(frame.locator('[data-part="contentContainer"]'));
  const handle = await box(frame.locator('[data-part="resizeHandle"]'));
  assert.equal(Math.round(titleBar.height), 28);
  assert.equal(Math.round(content.y - titleBar.y), 23);
  assert.equal(Math.round(handle.width), 10);
  assert.equal(await style(frame.locator('[data-class="NSTextField"]'), 'font-size'), '14px');
});

test('assistant rows show with their header and key caps', async () => {
  const assistant = pane('Velmora Assistant');
  const header = assistant.locator('[data-label="Suggested Shortcuts"]');
  assert.equal(await style(header, 'font-size'), '14px');
  assert.equal(await style(header, 'font-weight'), '600');
  const row = assistant.locator('[data-label="Same Height"]');
  await assert.doesNotReject(row.waitFor());
  assert.equal(await style(row, 'font-size'), '12px');
  const rowBox = await box(row);
  const paneBox = await box(assistant);
  assert.ok(rowBox.x >= paneBox.x + 10 && rowBox.x + rowBox.width <= paneBox.x + paneBox.width - 10);
  await assert.doesNotReject(assistant.locator('[data-label="Missed Shortcuts"]').first().waitFor());
});

test('time badges stay on one line', async () => {
  const badges = pane('Velmora Assistant').locator('[data-kind="text"]').filter({ hasText: /^[-+]\d+s$/ });
  assert.ok((await badges.count()) > 0);
  for (const badge of await badges.all()) {
    const b = await box(badge);
    assert.ok(b.height < 20 && b.width > b.height, `badge ${await badge.textContent()} is ${b.width}x${b.height}`);
  }
});

test('the reference pane at 500 shows everything at twice the size but the chip spacing', async () => {
  const reference = pane('Velmora Shortcuts');
  const name = reference.locator('[data-label="Align Left"]');
  assert.equal(await style(name, 'font-size'), '20px');
  const chips = name.locator('xpath=following-sibling::*[@data-kind="hstack"][1]');
  assert.equal(await style(chips, 'column-gap'), '4px');
  const chip = chips.locator('[data-kind="text"]').first();
  assert.equal(await style(chip, 'font-size'), '18px');
  assert.equal(await chip.textContent(), 'Ctrl');
});

test('a screenshot of the window is saved', async () => {
  mkdirSync(artifacts, { recursive: true });
  const file = path.join(artifacts, 'velmora-snapshot.png');
  await page.screenshot({ path: file, fullPage: true });
  assert.ok(readFileSync(file).length > 1000);
  // No pane page sent anything to the host while loading.
  assert.deepEqual(await page.evaluate(() => window.__messages), []);
});
