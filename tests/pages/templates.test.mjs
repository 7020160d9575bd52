// The template pane against the simulator's cloud: its thumbnails are real
// pictures, in manifest order, and an inserted template shows on the slide.
import { test, before, after } from 'node:test';
import assert from 'node:assert/strict';
import { openSnapshot, pane } from './harness.mjs';

const scenario = [
  'open templates',
  'tap Templates tpl-0003',
  'snapshot snapshot.html',
].join('\n') + '\n';

let page, close, templates;

before(async () => {
  ({ page, close } = await openSnapshot(scenario));
  templates = pane(page, 'Templates');
});

after(async () => {
  await close?.();
});

test('the grid shows every template in manifest order', async () => {
  const ids = await templates.locator('[data-ax]').evaluateAll((cells) => cells.map((cell) => cell.dataset.ax));
  const expected = Array.from({ length: 12 }, (_, i) => `tpl-${String(i + 1).padStart(4, '0')}`);
  assert.deepEqual(ids, expected);
});

test('each thumbnail is a real picture the browser decodes', async () => {
  const sizes = await templates.locator('[data-ax] img').evaluateAll((images) =>
    images.map((image) => ({ width: image.naturalWidth, height: image.naturalHeight })));
  assert.ok(sizes.length >= 12, `${sizes.length} images`);
  for (const size of sizes) assert.deepEqual(size, { width: 320, height: 180 });
});

test('the inserted template is a slide with its picture', async () => {
  const picture = page.locator('[data-shape][data-source="tpl-0003"] img');
  await assert.doesNotReject(picture.waitFor());
  assert.equal(await picture.evaluate((image) => image.naturalWidth), 320);
});
