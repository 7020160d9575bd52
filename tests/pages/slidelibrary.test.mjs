// The slide library's Saved Slides tab with the tagging window over it: the
// grid's thumbnails are real pictures, a hovered cell shows its red delete
// button, and the window's chips wear the add-in's red.
import { test, before, after } from 'node:test';
import assert from 'node:assert/strict';
import { mkdtempSync, mkdirSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { openSnapshot, pane, box, style } from './harness.mjs';

const artifacts = process.env.VELMORA_ARTIFACTS || mkdtempSync(path.join(tmpdir(), 'velmora-artifacts-'));

const scenario = [
  'open slidelibrary',
  "tab 'Slide Library' 'Saved Slides'",
  "hover 'Slide Library' 'Weekly Metrics' in",
  "call initializeTaggingOverlay 'Q3 Review.pptx'",
  "type 'Tag Slides' 'Add a tag…' Board",
  'key return',
  "tap 'Tag Slides' Hiring",
  'snapshot snapshot.html',
].join('\n') + '\n';

const red = 'rgb(251, 105, 105)';

let page, close, library, tagging;

before(async () => {
  ({ page, close } = await openSnapshot(scenario));
  library = pane(page, 'Slide Library');
  tagging = page.locator('[data-window-title="Tag Slides"]');
});

after(async () => {
  await close?.();
});

const cell = (name) => library.locator(`[data-kind="zstack"][data-ax="${name}"]`);

// The colour of the nearest box, from the element outwards, that paints a
// background, and the same for an outline.
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

test('the grid starts with the newest slide, each thumbnail a decoded picture', async () => {
  const cells = await library.locator('[data-kind="zstack"][data-action][data-ax]').evaluateAll((nodes) =>
    nodes.map((node) => {
      const image = node.querySelector('img');
      return {
        name: node.dataset.ax,
        size: image && [image.naturalWidth, image.naturalHeight],
        caption: node.querySelector('[data-label^="Missing: "]')?.textContent ?? null,
      };
    }));
  assert.ok(cells.length >= 10, `${cells.length} cells`);
  assert.equal(cells[0].name, 'Weekly Metrics');
  for (const { name, size, caption } of cells) {
    if (name === 'SWOT Analysis') {
      // The sample leaves this one's thumbnail out.
      assert.equal(size, null);
      assert.equal(caption, 'Missing: SWOT Analysis.png');
    } else {
      assert.deepEqual(size, [320, 240], name);
      assert.equal(caption, null, name);
    }
  }
  assert.ok(cells.some((c) => c.name === 'SWOT Analysis'), 'the slide without a thumbnail is built');
});

test('the hovered cell shows its delete button in red, the others hide theirs', async () => {
  const shown = cell('Weekly Metrics').locator('[data-ax="Delete"]');
  assert.equal(await style(shown, 'opacity'), '1');
  assert.equal(await background(shown.locator('[data-kind="symbol"]')), red);
  const buttonBox = await box(shown);
  const cellBox = await box(cell('Weekly Metrics'));
  // Top right, inside the cell.
  assert.ok(buttonBox.x + buttonBox.width <= cellBox.x + cellBox.width + 0.5);
  assert.ok(buttonBox.x > cellBox.x + cellBox.width / 2);
  assert.ok(buttonBox.y < cellBox.y + cellBox.height / 2);

  const hidden = cell('Budget Summary').locator('[data-ax="Delete"]');
  assert.equal(await style(hidden, 'opacity'), '0');
});

test('suggestions sit on the red at 0.4, without the tags already chosen', async () => {
  const chips = await tagging.locator('[data-kind="button"] > [data-kind="text"]').evaluateAll((nodes) =>
    nodes.map((node) => ({ text: node.textContent, color: getComputedStyle(node).backgroundColor })));
  const suggestions = chips.filter((chip) => chip.color !== 'rgba(0, 0, 0, 0)');
  assert.ok(suggestions.length >= 10, `${suggestions.length} suggestions`);
  for (const chip of suggestions) assert.equal(chip.color, 'rgba(251, 105, 105, 0.4)', chip.text);
  const texts = suggestions.map((chip) => chip.text);
  assert.ok(texts.includes('Finance') && texts.includes('customers'));
  assert.ok(!texts.includes('Hiring'), 'a chosen tag is no longer suggested');
});

test('chosen tags are white chips outlined in red, each with its remove button', async () => {
  for (const tag of ['Board', 'Hiring']) {
    const remove = tagging.locator(`[data-ax="Remove ${tag}"]`);
    assert.equal(await remove.count(), 1, tag);
    const chip = remove.locator('xpath=..');
    assert.equal(await chip.locator('[data-kind="text"]').textContent(), tag);
    assert.equal(await background(chip), 'rgb(255, 255, 255)');
    assert.equal(await outline(chip), red);
  }
});

// The library places the chips from its own text measure; the painted
// chips must still keep apart in the browser's.
test('no two chips in the window overlap', async () => {
  const boxes = await tagging.locator('[data-id] > :first-child').evaluateAll((nodes) =>
    nodes.map((node) => {
      const b = node.getBoundingClientRect();
      return { id: node.parentElement.dataset.id, x: b.x, y: b.y, right: b.right, bottom: b.bottom };
    }));
  assert.ok(boxes.length >= 12, `${boxes.length} chips`);
  for (let i = 0; i < boxes.length; ++i) {
    for (let j = i + 1; j < boxes.length; ++j) {
      const a = boxes[i], b = boxes[j];
      const apart = a.right <= b.x + 0.5 || b.right <= a.x + 0.5 || a.bottom <= b.y + 0.5 || b.bottom <= a.y + 0.5;
      assert.ok(apart, `${a.id} and ${b.id} overlap`);
    }
  }
});

test('a screenshot of the library and the window is saved', async () => {
  mkdirSync(artifacts, { recursive: true });
  await page.screenshot({ path: path.join(artifacts, 'velmora-slidelibrary.png'), fullPage: true });
});
