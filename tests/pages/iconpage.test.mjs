// The icon search page against velmora-cloud: requests, paging by cursor,
// empty pages, stale searches, failures and retries, and the bridge.
import assert from 'node:assert/strict';
import { after, describe, it } from 'node:test';
import { LICENSE_KEY, closeBrowser, messages, openPage, startCloud, submit, until, waits } from './pagekit.mjs';

after(closeBrowser);

const SEARCH_PATH = '/api/v2/icons/search';
const BUSY = 'The icon service is busy. Please try again in a moment.';
const UNAVAILABLE = 'The icon service is unavailable. Please try again later.';
const FAILED = 'Error fetching icons.';

async function open(t, faults = [], options = {}) {
  const cloud = await startCloud(faults);
  const opened = await openPage('icons', cloud, options);
  const consoleLines = [];
  opened.page.on('console', (message) => consoleLines.push(message.text()));
  t.after(async () => {
    await opened.close();
    await cloud.stop();
    assert.deepEqual(opened.errors.map(String), [], 'no uncaught exceptions');
  });
  const searches = () => opened.requests.filter((url) => url.pathname === SEARCH_PATH);
  return { cloud, ...opened, searches, consoleLines };
}

const overlay = (page) => page.locator('#loading');
// The overlay down and every picture loaded (or failed): pictures that load
// late move the paging buttons, and a click aimed before that lands elsewhere.
async function settle(page) {
  await overlay(page).waitFor({ state: 'hidden', timeout: 10_000 });
  await page.waitForFunction(() => Array.from(document.images).every((image) => image.complete), null,
    { timeout: 10_000 });
}
const tiles = (page) => page.locator('#results img.icon-tile');
const resultText = (page) => page.locator('#results .message').textContent();
const label = (page) => page.locator('#pagination .page-label').textContent();
const button = (page, name) => page.locator('#pagination button', { hasText: name });

// A click on a paging button, once its request has had a reply and the page
// has drawn it: the overlay may not be up yet when the click returns.
async function turn(page, name) {
  const answered = page.waitForResponse((response) => new URL(response.url()).pathname === SEARCH_PATH);
  await button(page, name).click();
  await answered;
  await settle(page);
}

async function search(page, term) {
  await submit(page, term);
  await settle(page);
}

// The body of the next search reply, read as the page reads it.
function nextReply(page) {
  return page.waitForResponse((response) => new URL(response.url()).pathname === SEARCH_PATH)
    .then((response) => response.json());
}

// Lets retry wait number `n` (from 1) run out on the page's clock.
async function passWait(page, n) {
  const scheduled = await until(async () => {
    const all = await waits(page);
    return all.length >= n && all;
  }, `retry wait ${n}`);
  await page.clock.runFor(scheduled[n - 1]);
}

const pause = (ms) => new Promise((resolve) => setTimeout(resolve, ms));

describe('icon search: request and drawing', () => {
  it('asks for the first page with key, term, style and size in order, and draws each icon', async (t) => {
    const { page, searches } = await open(t);
    const reply = nextReply(page);
    await page.fill('#searchInput', '  arrow  ');
    await page.click('button[type=submit]');
    await settle(page);
    const body = await reply;

    assert.equal(searches().length, 1);
    const url = searches()[0];
    assert.deepEqual([...url.searchParams.keys()], ['licenseKey', 'query', 'creator', 'limit']);
    assert.equal(url.searchParams.get('licenseKey'), LICENSE_KEY);
    assert.match(url.search, /licenseKey=test%20key%2F1%262&/);
    assert.equal(url.searchParams.get('query'), 'arrow');
    assert.equal(url.searchParams.get('creator'), 'all');
    assert.equal(url.searchParams.get('limit'), '30');

    const drawn = await tiles(page).evaluateAll((images) =>
      images.map((image) => ({ src: image.getAttribute('src'), alt: image.alt, title: image.title })));
    assert.deepEqual(drawn, body.items.map((item) => ({
      src: item.thumbnailUrl,
      alt: item.title || 'Noun Project icon',
      title: item.attribution || item.title || '',
    })));
    assert.ok(drawn.some((tile) => tile.alt === 'Noun Project icon' && tile.title === ''),
      'the reply holds an icon without title or attribution');
    assert.equal(await page.locator('#pagination').innerHTML(), '', 'one page needs no paging row');
  });

  it('posts the icon clicked with its id as text', async (t) => {
    const { page, consoleLines } = await open(t);
    const reply = nextReply(page);
    await search(page, 'arrow right');
    const body = await reply;
    const index = body.items.findIndex((item) => typeof item.id === 'number');
    assert.ok(index >= 0, 'the reply holds a numeric id');

    await tiles(page).nth(index).click();
    const item = body.items[index];
    assert.deepEqual(await messages(page), [{ name: 'iconClicked', body: { provider: item.provider, id: String(item.id) } }]);
    assert.ok(consoleLines.includes(`Icon clicked ${item.provider} ${item.id}`));
  });

  it('pages forward and back by cursor, and labels pages from the total', async (t) => {
    const { page, searches } = await open(t);
    let reply = nextReply(page);
    await search(page, 'outline');
    const first = await reply;
    assert.ok(first.paging.total > 30 && first.paging.total <= 60, 'two pages of outlines');
    assert.equal(await label(page), 'Page 1 of 2');
    assert.equal(await button(page, 'Previous').isDisabled(), true);
    assert.equal(await button(page, 'Next').isDisabled(), false);

    reply = nextReply(page);
    await turn(page, 'Next');
    await reply;
    assert.equal(searches()[1].searchParams.get('cursor'), first.paging.nextCursor);
    assert.equal([...searches()[1].searchParams.keys()].at(-1), 'cursor');
    assert.equal(await label(page), 'Page 2 of 2');
    assert.equal(await button(page, 'Previous').isDisabled(), false);
    assert.equal(await button(page, 'Next').isDisabled(), true);
    assert.equal(await tiles(page).count(), first.paging.total - 30);

    await turn(page, 'Previous');
    assert.equal(searches().length, 3);
    assert.equal(searches()[2].searchParams.has('cursor'), false, 'the first page is asked for without a cursor');
    assert.equal(await label(page), 'Page 1 of 2');
    assert.equal(await button(page, 'Previous').isDisabled(), true);
  });

  it('labels without a total as "Page N", and a total of 0 as one page', async (t) => {
    const { page } = await open(t);
    await search(page, 'outline nototal');
    assert.equal(await label(page), 'Page 1');
    await search(page, 'outline zerototal');
    assert.equal(await label(page), 'Page 1 of 1');
    assert.equal(await button(page, 'Next').isDisabled(), false);
  });

  it('switches style without a request until there is a term, then searches anew from page one', async (t) => {
    const { page, searches } = await open(t);
    const tab = (name) => page.locator('.tab', { hasText: name });
    await tab('Style 1').click();
    assert.equal(await tab('Style 1').getAttribute('class'), 'tab active');
    assert.equal(await tab('All').getAttribute('class'), 'tab');
    await pause(200);
    assert.equal(searches().length, 0, 'no term, no request');

    await tab('All').click();
    await pause(200);
    assert.equal(searches().length, 0, 'no term, no request');

    await search(page, 'e');
    assert.equal(searches()[0].searchParams.get('creator'), 'all');
    await turn(page, 'Next');
    assert.equal(searches().length, 2);

    await tab('All').click();
    await pause(200);
    assert.equal(searches().length, 2, 'the active tab again does nothing');

    await tab('Style 2').click();
    await settle(page);
    assert.equal(searches().length, 3);
    assert.equal(searches()[2].searchParams.get('creator'), 'prosymbols');
    assert.equal(searches()[2].searchParams.has('cursor'), false, 'cursors of the old style are dropped');
    assert.ok(await tiles(page).count() > 0);
    assert.equal(await page.locator('.tab.active').textContent(), 'Style 2');
  });
});

describe('icon search: overlapping searches', () => {
  it('draws only the newest search when an older one answers late', async (t) => {
    // The older search answers two seconds late: long after the newer one, even on a loaded machine.
    const { page, searches } = await open(t, [['icons-search', 'delay', '2', '1']]);
    const late = page.waitForResponse((response) => response.url().includes('query=arrow'));
    await submit(page, 'arrow');
    await search(page, 'chart');
    assert.equal(searches().length, 2);
    const chartTiles = await tiles(page).count();
    assert.ok(chartTiles > 0);

    await (await late).finished();
    await pause(300);
    assert.equal(await tiles(page).count(), chartTiles);
    for (const alt of await tiles(page).evaluateAll((images) => images.map((image) => image.alt))) {
      assert.doesNotMatch(alt, /Arrow/);
    }
    assert.equal(await overlay(page).isVisible(), false);
  });

  it('keeps the overlay up until the newest search ends', async (t) => {
    // The cloud delays its requests in the order they arrive, so the newer
    // search starts only once the older one is on its way; it answers about
    // four seconds after the older one: time enough to look at the page in
    // between, even on a loaded machine.
    const { page } = await open(t, [['icons-search', 'delay', '1', '1'], ['icons-search', 'delay', '5', '1']]);
    const early = page.waitForResponse((response) => response.url().includes('query=arrow'));
    const sent = page.waitForRequest((request) => request.url().includes('query=arrow'));
    await submit(page, 'arrow');
    await sent;
    await pause(300);
    await submit(page, 'chart');
    await (await early).finished();
    await pause(300);
    assert.equal(await overlay(page).isVisible(), true, 'the older search does not hide the overlay');
    assert.equal(await tiles(page).count(), 0);

    await settle(page);
    assert.ok(await tiles(page).count() > 0);
  });
});

describe('icon search: empty pages', () => {
  it('follows three empty pages and shows the hit as page 4', async (t) => {
    const { page, searches } = await open(t);
    await search(page, 'arrow empty3 nototal');
    assert.equal(searches().length, 4);
    assert.equal(searches()[0].searchParams.has('cursor'), false);
    for (const url of searches().slice(1)) assert.ok(url.searchParams.get('cursor'));
    assert.ok(await tiles(page).count() > 0);
    assert.equal(await label(page), 'Page 4');
    assert.equal(await button(page, 'Previous').isDisabled(), false);
    assert.equal(await button(page, 'Next').isDisabled(), true);
  });

  it('stops after three hops and shows a fourth empty page as empty', async (t) => {
    const { page, searches } = await open(t);
    await search(page, 'arrow empty4 nototal');
    assert.equal(searches().length, 4);
    assert.equal(await resultText(page), 'No icons found for your query.');
    assert.equal(await label(page), 'Page 4');
    assert.equal(await button(page, 'Next').isDisabled(), false);

    await search(page, 'noresults');
    assert.equal(await resultText(page), 'No icons found for your query.');
    assert.equal(await page.locator('#pagination').innerHTML(), '');
  });
});

describe('icon search: failures', () => {
  it('retries pages of 500 and 503 twice, 1500 then 3000 ms apart, then gives up', async (t) => {
    const { page, searches } = await open(t, [['icons-search', 'status', '500', '1'], ['icons-search', 'status', '503']]);
    await submit(page, 'arrow');
    await passWait(page, 1);
    await until(() => searches().length === 2, 'the second attempt');
    await passWait(page, 2);
    await settle(page);
    assert.equal(searches().length, 3);
    assert.deepEqual(await waits(page), [1500, 3000]);
    assert.equal(await resultText(page), FAILED);
  });

  it('waits the full delay before a retry', async (t) => {
    const { page, searches } = await open(t, [['icons-search', 'error', 'PROVIDER_TIMEOUT', 'retryable', '1']]);
    await submit(page, 'arrow');
    await until(async () => (await waits(page)).length === 1, 'the first wait');
    await page.clock.runFor(1499);
    await pause(200);
    assert.equal(searches().length, 1, 'no retry before 1500 ms');
    await page.clock.runFor(1);
    await settle(page);
    assert.equal(searches().length, 2);
    assert.ok(await tiles(page).count() > 0, 'the retry that succeeds draws');
  });

  it('retries a dropped connection and says there is no connection', async (t) => {
    const { page, searches } = await open(t, [['icons-search', 'drop']]);
    await submit(page, 'arrow');
    await passWait(page, 1);
    await passWait(page, 2);
    await settle(page);
    assert.equal(searches().length, 3);
    assert.equal(await resultText(page), 'No connection to the icon service.');
  });

  it('gives up at once on answers that are not worth retrying, with a sentence per code', async (t) => {
    const cases = [
      ['PROVIDER_TIMEOUT', BUSY],
      ['PROVIDER_RATE_LIMITED', BUSY],
      ['PROVIDER_UNAVAILABLE', UNAVAILABLE],
      ['PROVIDER_AUTHENTICATION_FAILED', UNAVAILABLE],
      ['PROVIDER_INVALID_RESPONSE', UNAVAILABLE],
      ['SOMETHING_NEW', FAILED],
    ];
    const faults = cases.map(([code]) => ['icons-search', 'error', code, 'final', '1']);
    // A page that is not JSON below 500 is no reason to retry either.
    faults.push(['icons-search', 'status', '404', '1']);
    const { page, searches, consoleLines } = await open(t, faults);
    for (const [n, [code, sentence]] of [...cases, ['UNKNOWN', FAILED]].entries()) {
      await search(page, 'arrow');
      assert.equal(searches().length, n + 1, `${code}: one request`);
      assert.equal(await resultText(page), sentence, code);
    }
    assert.ok(consoleLines.some((line) => line.startsWith('Error fetching icons: UNKNOWN HTTP 404')));
    assert.deepEqual(await messages(page), []);
  });

  it('asks once when the quota is used up, and tells the host', async (t) => {
    const { page, searches } = await open(t, [['icons-search', 'error', 'DOWNLOAD_QUOTA_EXHAUSTED']]);
    await search(page, 'arrow');
    assert.equal(searches().length, 1);
    assert.equal(await resultText(page), 'You have used all your icon downloads this month.');
    assert.deepEqual(await messages(page), [{ name: 'quotaExhausted', body: true }]);
  });

  it('shows the quota sentence when the host has no quota handler', async (t) => {
    const { page, errors } = await open(t, [['icons-search', 'error', 'DOWNLOAD_QUOTA_EXHAUSTED']],
      { handlers: ['iconClicked'] });
    await search(page, 'arrow');
    assert.equal(await resultText(page), 'You have used all your icon downloads this month.');
    assert.deepEqual(errors, []);
  });

  it('starts over from page one, silently, when a later page\'s cursor is refused', async (t) => {
    const { page, searches, consoleLines } = await open(t,
      [['icons-search', 'delay', '0', '2'], ['icons-search', 'error', 'INVALID_CURSOR', '1']]);
    await search(page, 'e');
    assert.match(await label(page), /^Page 1 of 3$/);
    await turn(page, 'Next');
    assert.equal(await label(page), 'Page 2 of 3');
    await turn(page, 'Next');

    assert.equal(searches().length, 4);
    assert.ok(searches()[2].searchParams.get('cursor'));
    assert.equal(searches()[3].searchParams.has('cursor'), false);
    assert.equal(await label(page), 'Page 1 of 3');
    assert.equal(await button(page, 'Previous').isDisabled(), true);
    assert.ok(await tiles(page).count() > 0);
    assert.ok(!consoleLines.some((line) => line.startsWith('Error fetching icons')));
  });

  it('shows an error when the first page is refused as a bad cursor, and does not ask again', async (t) => {
    const { page, searches } = await open(t, [['icons-search', 'error', 'INVALID_CURSOR']]);
    await search(page, 'arrow');
    assert.equal(await resultText(page), FAILED);
    await pause(300);
    assert.equal(searches().length, 1);
  });
});

describe('icon search: connectivity', () => {
  it('shows the offline line on the offline event and hides it when back online', async (t) => {
    const { page, context } = await open(t);
    const line = page.locator('#offlineMessage');
    assert.equal(await line.isVisible(), false);
    await context.setOffline(true);
    await until(() => line.isVisible(), 'the offline line');
    assert.equal(await line.textContent(), 'Please connect to the internet.');
    await context.setOffline(false);
    await until(async () => !(await line.isVisible()), 'the offline line to go');
  });

  it('shows the offline line at once when the page opens offline', async (t) => {
    const { page } = await open(t, [], { offline: true });
    assert.equal(await page.locator('#offlineMessage').isVisible(), true);
  });
});
