// The colour bar beside a living slide: the chips show the document's theme,
// and the shapes the bar painted are drawn on the slide.
import { test, before, after } from 'node:test';
import assert from 'node:assert/strict';
import { openSnapshot, pane, box, style, rgb } from './harness.mjs';

const theme = ['#1B1B1B', '#FFFFFF', '#2E3A59', '#EEF0F4', '#2F6FDE', '#E4572E', '#17BEBB', '#FFC914', '#76B041', '#9B5DE5'];

const scenario = [
  `theme '${theme.join(',')}'`,
  "shape Title left=60 top=30 width=840 height=90 'text=Quarterly review' fill=none line=none",
  'shape Revenue left=80 top=170 width=360 height=300',
  'shape Costs left=520 top=170 width=360 height=300 type=ellipse rotation=10',
  'selectshapes Revenue Costs',
  'open color',
  "tap Color 'Apply Fill#6'",
  "tap Color 'More Shades#5'",
  "tap Color 'Border#3'",
  'snapshot snapshot.html',
].join('\n') + '\n';

let page, close, bar;

before(async () => {
  ({ page, close } = await openSnapshot(scenario));
  bar = pane(page, 'Color');
});

after(async () => {
  await close?.();
});

// The colour a chip's filled shape shows.
const chipFill = (help, n) =>
  style(bar.locator(`[data-help="${help}"]`).nth(n).locator('[data-kind="roundedRectangle"]').first(), 'background-color');

test('the bar docks at 120 points with its three headings', async () => {
  assert.equal(Math.round((await box(bar)).width), 120);
  for (const heading of ['Transparent', 'Base Colors', 'Theme Colors']) {
    await assert.doesNotReject(bar.locator(`[data-label="${heading}"]`).waitFor());
  }
  assert.equal(await bar.locator('[data-help="Apply Fill"]').count(), 10);
});

test('each fill chip shows its slot of the document theme', async () => {
  for (let i = 0; i < theme.length; ++i) {
    assert.equal(await chipFill('Apply Fill', i), rgb(theme[i]), `slot ${i + 1}`);
  }
});

test('chips are 18 by 16 points in rows of four, and unfolded shades lighten and darken', async () => {
  const first = await box(bar.locator('[data-help="Apply Fill"]').first());
  assert.equal(Math.round(first.width), 18);
  assert.equal(Math.round(first.height), 16);
  const border = await box(bar.locator('[data-help="Apply Border"]').first());
  assert.equal(Math.round(border.x - first.x), 22);
  assert.equal(await bar.locator('[data-help="Fill"]').count(), 5);
  // Accent1's shades run from light to dark.
  const lightness = async (n) => {
    const [r, g, b] = (await chipFill('Fill', n)).match(/\d+/g).map(Number);
    return r + g + b;
  };
  const values = [];
  for (let n = 0; n < 5; ++n) values.push(await lightness(n));
  assert.deepEqual([...values].sort((a, b) => b - a), values);
  const accent1 = 0x2f + 0x6f + 0xde;
  assert.ok(values[2] > accent1 && values[3] < accent1, `shades ${values} around ${accent1}`);
});

test('the slide shows the shapes the bar painted, selected and to scale', async () => {
  const slide = page.locator('.host-slide');
  const scale = Number(await slide.getAttribute('data-scale'));
  assert.ok(scale > 0.3 && scale < 2, `scale ${scale}`);
  for (const name of ['Revenue', 'Costs']) {
    const shape = page.locator(`[data-shape="${name}"]`);
    assert.equal(await shape.getAttribute('data-selected'), '1');
    assert.equal(await style(shape, 'background-color'), rgb(theme[5]));  // Accent2
  }
  const revenue = await box(page.locator('[data-shape="Revenue"]'));
  assert.ok(Math.abs(revenue.width - 360 * scale) < 1.5, `width ${revenue.width} at scale ${scale}`);
  assert.equal(await page.locator('[data-shape="Title"]').getAttribute('data-selected'), null);
  await assert.doesNotReject(page.locator('[data-shape="Title"]', { hasText: 'Quarterly review' }).waitFor());
  assert.match(await style(page.locator('[data-shape="Costs"]'), 'transform'), /^matrix\(/);
});
