// What a user sees of the shortcut reference pane in the window snapshot:
// the failure texts in the middle of the pane's content, key chips whose
// words stay whole at the narrowest width, and the split view's dividers
// between the docked panes.
//
// VELMORA_HOST: path of the velmora-host binary (required).
import { test } from 'node:test';
import assert from 'node:assert/strict';
import { openSnapshot, pane, box } from './harness.mjs';

// Where the element's own text is drawn.
const textBox = (locator) => locator.evaluate((element) => {
  const range = document.createRange();
  range.selectNodeContents(element);
  const r = range.getBoundingClientRect();
  return { x: r.x, y: r.y, width: r.width, height: r.height };
});

// The distinct lines a text element's words were laid out on.
const lines = (locator) => locator.evaluate((element) => {
  const range = document.createRange();
  range.selectNodeContents(element);
  return new Set([...range.getClientRects()].filter((r) => r.width > 0).map((r) => Math.round(r.top))).size;
});

// Words of the element's text laid out over two lines or more.
const brokenWords = (locator) => locator.evaluate((element) => {
  const node = [...element.childNodes].find((child) => child.nodeType === Node.TEXT_NODE);
  const broken = [];
  for (const match of node.data.matchAll(/\S+/g)) {
    const range = document.createRange();
    range.setStart(node, match.index);
    range.setEnd(node, match.index + match[0].length);
    if (new Set([...range.getClientRects()].filter((r) => r.width > 0).map((r) => Math.round(r.top))).size > 1) {
      broken.push(match[0]);
    }
  }
  return broken;
});

for (const [catalogue, message] of [['none', 'Failed to load XML file'], ["'<shortcuts/>'", 'No shortcuts found']]) {
  test(`"${message}" sits in the middle of the pane's content, below its title bar`, async () => {
    const { page, close } = await openSnapshot(
      [`catalogue ${catalogue}`, 'open shortcuts', 'snapshot snapshot.html'].join('\n') + '\n');
    try {
      const reference = pane(page, 'Velmora Shortcuts');
      const content = await box(reference.locator('[data-part="contentContainer"]'));
      const titleBar = await box(reference.locator('[data-part="titleBar"]'));
      const text = await textBox(reference.locator(`[data-label="${message}"]`));
      assert.ok(Math.abs(text.x + text.width / 2 - (content.x + content.width / 2)) <= 1, 'centred across');
      assert.ok(Math.abs(text.y + text.height / 2 - (content.y + content.height / 2)) <= 1, 'centred down');
      assert.ok(text.y > titleBar.y + titleBar.height, 'below the title bar');
    } finally {
      await close();
    }
  });
}

// A catalogue whose long name and five keys crowd a row at 250 points.
const crowded = "'<s><object><name>Distribute the Selected Objects Horizontally</name>" +
  "<shortcut>Ctrl, Shift, Cmd, Opt, H</shortcut></object>" +
  "<object><name>Copy Position</name><shortcut>Ctrl, Shift, C</shortcut></object></s>'";

test('at 250 points the key chips keep their words whole and the names wrap between words', async () => {
  const { page, close } = await openSnapshot(
    [`catalogue ${crowded}`, 'open shortcuts', "width 'Velmora Shortcuts' 250", 'snapshot snapshot.html'].join('\n') + '\n');
  try {
    const reference = pane(page, 'Velmora Shortcuts');
    const chips = reference.locator('[data-kind="text"]').filter({ hasText: /^(Ctrl|Shift|Cmd|Opt|H|C)$/ });
    assert.equal(await chips.count(), 8);
    for (const chip of await chips.all()) {
      assert.equal(await lines(chip), 1, `the chip ${await chip.textContent()} is on one line`);
    }
    const long = reference.locator('[data-label="Distribute the Selected Objects Horizontally"]');
    assert.ok((await lines(long)) > 1, 'the long name wraps');
    assert.deepEqual(await brokenWords(long), [], 'between its words');
    assert.equal(await lines(reference.locator('[data-label="Copy Position"]')), 1, 'a name that fits stays on one line');
  } finally {
    await close();
  }
});

test('a thin divider parts each two docked panes, and the editor from the first', async () => {
  const { page, close } = await openSnapshot(
    ['open assistant', 'open shortcuts', 'snapshot snapshot.html'].join('\n') + '\n');
  try {
    const assistant = await box(pane(page, 'Velmora Assistant'));
    const shortcuts = await box(pane(page, 'Velmora Shortcuts'));
    const dividers = page.locator('[data-divider]');
    assert.equal(await dividers.count(), 2);
    const edges = [];
    for (const divider of await dividers.all()) {
      const b = await box(divider);
      assert.equal(b.width, 1);
      assert.equal(Math.round(b.height), Math.round(shortcuts.height));
      assert.notEqual(await divider.evaluate((e) => getComputedStyle(e).backgroundColor), 'rgba(0, 0, 0, 0)');
      edges.push(Math.round(b.x + b.width));
      // Drawn over the panes, not under them (it lets the pointer through,
      // so it takes hits for this look only).
      await divider.evaluate((e) => { e.style.pointerEvents = 'auto'; });
      const hit = await page.evaluate(([x, y]) => document.elementFromPoint(x, y)?.dataset.divider,
        [b.x + 0.5, b.y + b.height / 2]);
      assert.ok(hit, 'the divider is on top');
    }
    assert.deepEqual(edges, [Math.round(assistant.x), Math.round(shortcuts.x)]);
  } finally {
    await close();
  }
});
