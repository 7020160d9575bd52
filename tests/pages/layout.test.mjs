// Measures the HTML renderer's layout in headless Chromium: small node trees
// (tests/pages/fixtures/UiFixtures.cpp) written as pages, and the boxes the
// browser computes for them. Positions are checked to half a pixel.
//
// VELMORA_UI_FIXTURES: the velmora-ui-fixtures program (default: beside the
// simulator named by VELMORA_HOST, in the same build).
import { test, before, after } from 'node:test';
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { launch, closeBrowser } from './pagekit.mjs';

const program = process.env.VELMORA_UI_FIXTURES ||
  (process.env.VELMORA_HOST && path.resolve(path.dirname(process.env.VELMORA_HOST), '../../tests/pages/velmora-ui-fixtures'));

let folder, context;

before(async () => {
  assert.ok(program, 'set VELMORA_HOST (or VELMORA_UI_FIXTURES)');
  folder = mkdtempSync(path.join(tmpdir(), 'velmora-layout-'));
  execFileSync(program, [folder]);
  context = await (await launch()).newContext({ viewport: { width: 800, height: 800 } });
});

after(async () => {
  await context?.close();
  await closeBrowser();
  if (folder) rmSync(folder, { recursive: true, force: true });
});

// Opens a fixture; gives the page and the boxes of its nodes by id, each with
// its frame's box (the element around a framed node), relative to the root.
async function open(name) {
  const page = await context.newPage();
  await page.setContent(readFileSync(path.join(folder, `${name}.html`), 'utf8'));
  const boxes = await page.evaluate(() => {
    const root = document.querySelector('.velmora-root').getBoundingClientRect();
    const rect = (element) => {
      const r = element.getBoundingClientRect();
      return { x: r.x - root.x, y: r.y - root.y, width: r.width, height: r.height,
        right: r.right - root.x, bottom: r.bottom - root.y, cx: r.x - root.x + r.width / 2, cy: r.y - root.y + r.height / 2 };
    };
    const out = { root: rect(document.querySelector('.velmora-root')) };
    for (const element of document.querySelectorAll('[data-id]')) {
      out[element.dataset.id] = rect(element);
      if (element.parentElement.classList.contains('v-frame')) out[element.dataset.id].frame = rect(element.parentElement);
    }
    return out;
  });
  return { page, boxes };
}

const near = (actual, expected, what) =>
  assert.ok(Math.abs(actual - expected) <= 0.5, `${what}: ${actual} is not ${expected}`);

// Words of the element's text that the browser laid out over two lines or more.
const brokenWords = (page, id) => page.evaluate((id) => {
  const element = document.querySelector(`[data-id="${id}"]`);
  const node = [...element.childNodes].find((child) => child.nodeType === Node.TEXT_NODE);
  const broken = [];
  for (const match of node.data.matchAll(/\S+/g)) {
    const range = document.createRange();
    range.setStart(node, match.index);
    range.setEnd(node, match.index + match[0].length);
    const lines = new Set([...range.getClientRects()].filter((r) => r.width > 0).map((r) => Math.round(r.top)));
    if (lines.size > 1) broken.push(match[0]);
  }
  return broken;
}, id);

// Where the element's text is drawn, relative to the root.
const textBox = (page, id) => page.evaluate((id) => {
  const root = document.querySelector('.velmora-root').getBoundingClientRect();
  const range = document.createRange();
  range.selectNodeContents(document.querySelector(`[data-id="${id}"]`));
  const r = range.getBoundingClientRect();
  return { x: r.x - root.x, y: r.y - root.y, cx: r.x - root.x + r.width / 2, cy: r.y - root.y + r.height / 2 };
}, id);

const lineCount = (page, id) => page.evaluate((id) => {
  const element = document.querySelector(`[data-id="${id}"]`);
  const range = document.createRange();
  range.selectNodeContents(element);
  return new Set([...range.getClientRects()].filter((r) => r.width > 0).map((r) => Math.round(r.top))).size;
}, id);

test('a vertical stack places narrower children at its leading edge, centre or trailing edge', async () => {
  for (const [alignment, edge] of [['leading', 'x'], ['center', 'cx'], ['trailing', 'right']]) {
    const { page, boxes } = await open(`vstack-${alignment}`);
    near(boxes.stack.width, 200, `${alignment}: the stack is as wide as its widest child`);
    near(boxes.narrow[edge], boxes.wide[edge], `${alignment}: the narrow box`);
    near(boxes.text[edge], boxes.wide[edge], `${alignment}: the text`);
    near(boxes.narrow.y, boxes.wide.bottom, `${alignment}: no spacing`);
    await page.close();
  }
});

test('a horizontal stack places shorter children at its top, centre or bottom', async () => {
  for (const [alignment, edge] of [['top', 'y'], ['center', 'cy'], ['bottom', 'bottom']]) {
    const { page, boxes } = await open(`hstack-${alignment}`);
    near(boxes.stack.height, 60, `${alignment}: the stack is as tall as its tallest child`);
    near(boxes.short[edge], boxes.tall[edge], `${alignment}: the short box`);
    near(boxes.text[edge], boxes.tall[edge], `${alignment}: the text`);
    near(boxes.short.x, boxes.tall.right, `${alignment}: no spacing`);
    await page.close();
  }
});

test('stacks put their spacing between children, 8 points when none is given', async () => {
  const { page, boxes } = await open('spacing');
  near(boxes.v2.y - boxes.v1.bottom, 12, 'vertical, given');
  near(boxes.v3.y - boxes.v2.bottom, 12, 'vertical, given, again');
  near(boxes.h2.x - boxes.h1.right, 6, 'horizontal, given');
  near(boxes.z2.x - boxes.z1.right, 0, 'horizontal, zero');
  near(boxes.d2.y - boxes.d1.bottom, 8, 'vertical, default');
  near(boxes.h1.y - boxes.v3.bottom, 30, 'between the groups');
  await page.close();
});

test('a spacer keeps its least length where room is short and takes what is left otherwise', async () => {
  let { page, boxes } = await open('spacer-column');
  near(boxes.b.y - boxes.a.bottom, 30, 'a column 10 points too short');
  await page.close();

  ({ page, boxes } = await open('spacer-row'));
  near(boxes.chip.x - boxes.name.right, 30, 'a row whose text wraps');
  near(boxes.chip.right, boxes.chip.frame.right, 'the chip at the end of the row');
  assert.ok((await lineCount(page, 'name')) > 1, 'the text wraps');
  await page.close();

  ({ page, boxes } = await open('spacer-fill'));
  const row = boxes.row.frame;
  near(boxes.left.x, row.x, 'row: the first box at the start');
  near(boxes.right.right, row.right, 'row: the last box at the end');
  const column = boxes.column.frame;
  near(boxes.top.y, column.y, 'column: the first box at the top');
  near(boxes.bottom.bottom, column.bottom, 'column: the last box at the bottom');
  await page.close();
});

test('a presented popover shows under its anchor, over what follows, and a closed one shows nothing', async () => {
  const { page, boxes } = await open('popover');
  near(boxes.content.y, boxes.anchor.bottom, 'under the anchor');
  assert.ok(boxes.content.x <= boxes.anchor.x && boxes.content.right >= boxes.anchor.right,
    'spans the anchor');
  near(boxes.content.width, 100, 'its own width');
  near(boxes.after.y, boxes.anchor.bottom, 'the content takes no room in the stack');
  const hit = await page.evaluate(([x, y]) => {
    const root = document.querySelector('.velmora-root').getBoundingClientRect();
    return document.elementFromPoint(root.x + x, root.y + y)?.closest('[data-id]')?.dataset.id;
  }, [boxes.content.cx, boxes.content.cy]);
  assert.equal(hit, 'content', 'drawn over the box that follows');
  assert.ok(boxes.closedAnchor, 'a closed popover shows its anchor');
  assert.equal(boxes.closedContent, undefined, 'and not its content');
  await page.close();
});

test('a frame larger than its content places it by its alignment', async () => {
  const { page, boxes } = await open('frames');
  const across = { leading: 0, center: 40, trailing: 80 };
  const down = { top: 0, center: 15, bottom: 30 };
  const parts = {
    center: ['center', 'center'], leading: ['leading', 'center'], trailing: ['trailing', 'center'],
    top: ['center', 'top'], bottom: ['center', 'bottom'], topLeading: ['leading', 'top'],
    topTrailing: ['trailing', 'top'], bottomLeading: ['leading', 'bottom'], bottomTrailing: ['trailing', 'bottom'],
  };
  for (const [name, [h, v]] of Object.entries(parts)) {
    const b = { ...boxes[name], frame: boxes[`${name}-frame`].frame };
    near(b.frame.width, 100, `${name}: frame width`);
    near(b.frame.height, 40, `${name}: frame height`);
    near(b.width, 20, `${name}: content width`);
    near(b.x - b.frame.x, across[h], `${name}: across`);
    near(b.y - b.frame.y, down[v], `${name}: down`);
  }
  await page.close();
});

test('a frame that fills the width puts its text at the leading or trailing edge', async () => {
  const { page, boxes } = await open('frame-fill');
  near(boxes.left.frame.width, boxes.ruler.width, 'the frame fills the stack');
  near(boxes.left.x, boxes.ruler.x, 'leading');
  near(boxes.right.right, boxes.ruler.right, 'trailing');
  assert.ok(boxes.left.width < 100, 'the text keeps its own width');
  await page.close();
});

test('images show at their own size, or resized to their frame, fitted or filled', async () => {
  const { page, boxes } = await open('images');
  near(boxes.natural.width, 40, 'own width');
  near(boxes.natural.height, 20, 'own height');
  for (const [id, width, height] of [['fit', 100, 100], ['fill', 100, 100], ['small', 60, 30], ['missing', 14, 14]]) {
    near(boxes[id].width, width, `${id}: width`);
    near(boxes[id].height, height, `${id}: height`);
  }
  // The picture inside: the whole frame, kept in proportion by fitting or filling.
  const drawn = await page.evaluate(() => Object.fromEntries([...document.querySelectorAll('[data-id] > img')].map((img) => {
    const r = img.getBoundingClientRect();
    return [img.parentElement.dataset.id, { width: r.width, height: r.height, fit: getComputedStyle(img).objectFit }];
  })));
  assert.deepEqual(Object.keys(drawn).sort(), ['fill', 'fit', 'natural', 'small']);
  assert.deepEqual([drawn.fit.width, drawn.fit.height, drawn.fit.fit], [100, 100, 'contain']);
  assert.deepEqual([drawn.fill.width, drawn.fill.height, drawn.fill.fit], [100, 100, 'cover']);
  assert.deepEqual([drawn.small.width, drawn.small.height], [60, 30]);
  assert.deepEqual([drawn.natural.width, drawn.natural.height], [40, 20]);
  await page.close();
});

test('a horizontal scroll view runs its content across, a vertical one down', async () => {
  const { page, boxes } = await open('scrolls');
  for (let i = 1; i < 5; i++) {
    near(boxes[`h${i}`].x, boxes[`h${i - 1}`].right, `across: box ${i} after box ${i - 1}`);
    near(boxes[`h${i}`].y, boxes.h0.y, `across: box ${i} on the same line`);
    near(boxes[`v${i}`].y, boxes[`v${i - 1}`].bottom, `down: box ${i} under box ${i - 1}`);
    near(boxes[`v${i}`].x, boxes.v0.x, `down: box ${i} in the same column`);
  }
  const metrics = await page.evaluate(() => Object.fromEntries(['across', 'down'].map((id) => {
    const element = document.querySelector(`[data-id="${id}"]`);
    const style = getComputedStyle(element);
    return [id, { width: element.clientWidth, height: element.clientHeight, scrollWidth: element.scrollWidth,
      scrollHeight: element.scrollHeight, x: style.overflowX, y: style.overflowY }];
  })));
  assert.deepEqual(metrics.across, { width: 200, height: 60, scrollWidth: 500, scrollHeight: 60, x: 'auto', y: 'hidden' });
  assert.deepEqual(metrics.down, { width: 200, height: 100, scrollWidth: 200, scrollHeight: 200, x: 'hidden', y: 'auto' });
  await page.close();
});

test('paddings add their own length on each edge', async () => {
  const { page, boxes } = await open('padding');
  near(boxes.inner.y - boxes.outer.y, 3, 'top');
  near(boxes.inner.x - boxes.outer.x, 5, 'leading');
  near(boxes.outer.bottom - boxes.inner.bottom, 7, 'bottom');
  near(boxes.outer.right - boxes.inner.right, 11, 'trailing');
  near(boxes.padded.width, boxes.plain.width + 16, 'around a text, across');
  near(boxes.padded.height, boxes.plain.height + 16, 'around a text, down');
  await page.close();
});

test('a root smaller than its view sits in the middle; a scroll view fills it', async () => {
  let { page, boxes } = await open('root-text');
  const message = await textBox(page, 'message');
  near(message.cx, 125, 'the message across');
  near(message.cy, 200, 'the message down');
  await page.close();

  ({ page, boxes } = await open('root-stack'));
  near(boxes.stack.width, 100, 'the stack keeps its width');
  assert.ok(boxes.stack.height < 40, `the stack keeps its height: ${boxes.stack.height}`);
  near(boxes.stack.cx, 125, 'the stack across');
  near(boxes.stack.cy, 200, 'the stack down');
  near(boxes.title.x, boxes.bar.x, 'its children at its leading edge');
  await page.close();

  ({ page, boxes } = await open('root-scroll'));
  assert.deepEqual([boxes.scroll.x, boxes.scroll.y, boxes.scroll.width, boxes.scroll.height], [0, 0, 250, 400]);
  near(boxes.row.x, 10, 'its content from the top left');
  near(boxes.row.y, 10, 'its content from the top left');
  await page.close();
});

test('texts break between words, and inside one only when it is wider than its room', async () => {
  const { page, boxes } = await open('wrapping');
  for (const key of ['Ctrl', 'Shift', 'Cmd', 'Left']) {
    assert.equal(await lineCount(page, key), 1, `the chip ${key} on one line`);
    assert.ok(boxes[key].right <= boxes.row.frame.right + 0.5, `the chip ${key} within the row`);
  }
  assert.deepEqual(await brokenWords(page, 'name'), [], 'the name wraps between words');
  assert.ok((await lineCount(page, 'name')) > 1, 'the name wraps');
  assert.deepEqual(await brokenWords(page, 'word'), ['Incomprehensibilities'], 'a word wider than its frame');
  assert.ok(boxes.word.width <= 40.5, `the long word within its frame: ${boxes.word.width}`);
  await page.close();
});

test('modifiers: a padded shape inset in its colour, opacity, transforms, borders, shadows, frame bounds', async () => {
  const { page, boxes } = await open('modifiers');
  const look = await page.evaluate(() => {
    const at = (id) => document.querySelector(`[data-id="${id}"]`);
    const style = (id) => getComputedStyle(at(id));
    const shape = at('paddedShape').querySelector('.v-shape');
    const r = shape.getBoundingClientRect();
    const outer = at('paddedShape').getBoundingClientRect();
    const matrix = (id) => { const m = new DOMMatrix(style(id).transform); return [m.a, m.b, m.c, m.d, m.e, m.f].map((v) => Math.round(v * 100) / 100); };
    return {
      shape: { inset: [r.x - outer.x, r.y - outer.y, outer.right - r.right, outer.bottom - r.bottom], color: getComputedStyle(shape).backgroundColor },
      faded: style('faded').opacity, scaled: matrix('scaled'), turned: matrix('turned'), moved: matrix('moved'),
      edged: [style('edged').outlineWidth, style('edged').outlineColor, style('edged').outlineStyle],
      lifted: style('lifted').filter,
      menu: { label: at('menu').querySelector('.v-menu-label').textContent, items: getComputedStyle(at('menu').querySelector('.v-menu-items')).display },
    };
  });
  assert.deepEqual(look.shape, { inset: [5, 5, 5, 5], color: 'rgb(255, 59, 48)' });
  assert.equal(look.faded, '0.5');
  assert.deepEqual(look.scaled, [2, 0, 0, 2, 0, 0]);
  assert.deepEqual(look.turned, [0, 1, -1, 0, 0, 0]);
  assert.deepEqual(look.moved, [1, 0, 0, 1, 7, 3]);
  assert.deepEqual(look.edged, ['2px', 'rgb(0, 122, 255)', 'solid']);
  assert.equal(look.lifted, 'drop-shadow(rgb(0, 0, 0) 0px 2px 4px)');
  assert.deepEqual(look.menu, { label: 'Tags \u25BE', items: 'none' });
  near(boxes.minHeight.frame.height, 50, 'a least height');
  near(boxes.idealWidth.frame.width, 80, 'an ideal width');
  near(boxes.maxWidth.frame.width, 60, 'a greatest width');
  assert.ok((await lineCount(page, 'maxWidth')) > 1, 'the text wraps in its greatest width');
  near(boxes.minWidth.frame.width, 90, 'a least width');
  near(boxes.afterMenu.y, boxes.menu.bottom + 10, 'what follows a menu shows after it');
  await page.close();
});

test('a layer holding a scroll view takes its layered stack\'s height and scrolls the rest', async () => {
  const { page, boxes } = await open('scroll-layer');
  near(boxes.layer.y, boxes.backdrop.y, 'from the top');
  near(boxes.layer.height, 100, 'as tall as the backdrop');
  const scroller = await page.evaluate(() => {
    const element = document.querySelector('[data-id="layerScroll"]');
    return { height: element.clientHeight, content: element.scrollHeight };
  });
  assert.deepEqual(scroller, { height: 100, content: 150 });
  await page.close();
});
