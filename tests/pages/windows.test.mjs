// The two tool windows floating over the document: the table builder's
// buttons in the add-in's red, and the palette's nine presets.
import { test, before, after } from 'node:test';
import assert from 'node:assert/strict';
import { openSnapshot, box, style, rgb } from './harness.mjs';

const scenario = [
  'call initializeTablesOverlay 4 5 true false true false false',
  'call initializeLinesOverlay',
  'snapshot snapshot.html',
].join('\n') + '\n';

let page, close;

before(async () => {
  ({ page, close } = await openSnapshot(scenario));
});

after(async () => {
  await close?.();
});

const windowTitled = (title) => page.locator(`[data-window-title="${title}"]`);
const subtleRed = rgb('#FE6B6B');

// The colour of the nearest box, from the label outwards, that paints a
// background or an outline.
const background = (locator) =>
  locator.evaluate((element) => {
    for (let at = element; at; at = at.parentElement) {
      const color = getComputedStyle(at).backgroundColor;
      if (color !== 'rgba(0, 0, 0, 0)') return color;
    }
    return null;
  });
const outline = (locator) =>
  locator.evaluate((element) => {
    for (let at = element; at; at = at.parentElement) {
      const s = getComputedStyle(at);
      if (s.outlineStyle !== 'none' && parseFloat(s.outlineWidth) > 0) return s.outlineColor;
    }
    return null;
  });

test('both windows float centred over the document window', async () => {
  const documentBox = await box(page.locator('.host-window'));
  for (const title of ['Insert Table', 'Insert Lines']) {
    const b = await box(windowTitled(title));
    const dx = b.x + b.width / 2 - (documentBox.x + documentBox.width / 2);
    assert.ok(Math.abs(dx) < 2, `${title} is off centre by ${dx}`);
    assert.ok(b.width >= 300, `${title} is ${b.width} wide`);
  }
});

test("the table builder's buttons: Insert filled red, Cancel outlined in red", async () => {
  const builder = windowTitled('Insert Table');
  const insert = builder.locator('[data-label="Insert"]');
  const cancel = builder.locator('[data-label="Cancel"]');
  assert.equal(await background(insert), subtleRed);
  assert.equal(await style(insert, 'color'), rgb('#FFFFFF'));
  assert.equal(await outline(insert), subtleRed);
  assert.equal(await background(cancel), rgb('#FFFFFF'));
  assert.equal(await style(cancel, 'color'), subtleRed);
  assert.equal(await outline(cancel), subtleRed);
  assert.equal(Math.round((await box(insert.locator('xpath=..'))).width), 80);  // the label's frame
  assert.equal(await builder.locator('[data-default="1"]').count(), 1);
  // The rows and columns fields show the values the macro project passed.
  assert.equal(await builder.locator('input[placeholder="Rows"]').inputValue(), '4');
  assert.equal(await builder.locator('input[placeholder="Columns"]').inputValue(), '5');
});

test('the palette shows nine presets in three groups', async () => {
  const palette = windowTitled('Insert Lines');
  for (const heading of ['Default (Black)', 'Separator (Gray)', 'Arrow']) {
    await assert.doesNotReject(palette.locator(`[data-label="${heading}"]`).waitFor());
  }
  const options = palette.locator('[data-kind="button"]');
  assert.equal(await options.count(), 9);
  const labels = await options.evaluateAll((nodes) => nodes.map((node) => node.textContent.trim()));
  assert.deepEqual(labels, ['Default', 'Strong', 'Impact', 'Default', 'Strong', 'Impact', 'Triangle', 'Open', 'Circle']);
  // Each sample sits in its 80 by 30 frame; the arrows are drawn paths.
  assert.equal(await palette.locator('path').count(), 3);
});
