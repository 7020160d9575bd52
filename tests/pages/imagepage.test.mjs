// The photo search page against velmora-cloud: the request, the tiles and
// their credit, numbered paging, replies that are errors, and the pick.
import assert from 'node:assert/strict';
import { after, describe, it } from 'node:test';
import { closeBrowser, messages, openPage, startCloud, submit } from './pagekit.mjs';

after(closeBrowser);

const SEARCH_PATH = '/api/get_searchImage';
const REFERRAL = '?utm_source=Velmora&utm_medium=referral';

async function open(t, faults = []) {
  const cloud = await startCloud(faults);
  const opened = await openPage('images', cloud);
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

// The overlay down and every picture loaded (or failed): pictures that load
// late move the paging buttons, and a click aimed before that lands elsewhere.
async function settle(page) {
  await page.locator('#loading').waitFor({ state: 'hidden', timeout: 10_000 });
  await page.waitForFunction(() => Array.from(document.images).every((image) => image.complete), null,
    { timeout: 10_000 });
}
const wrappers = (page) => page.locator('#results .image-wrapper');
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

function nextReply(page) {
  return page.waitForResponse((response) => new URL(response.url()).pathname === SEARCH_PATH)
    .then((response) => response.json());
}

async function search(page, term) {
  const reply = nextReply(page);
  await submit(page, term);
  await settle(page);
  return reply;
}

async function pagingState(page) {
  return {
    label: await label(page),
    previous: await button(page, 'Previous').isDisabled() ? 'disabled' : 'enabled',
    next: await button(page, 'Next').isDisabled() ? 'disabled' : 'enabled',
  };
}

describe('photo search: results', () => {
  it('asks for the term, page and size, and draws each photo with its credit', async (t) => {
    const { page, cloud, searches } = await open(t);
    const body = await search(page, '  nature  ');

    assert.equal(searches().length, 1);
    assert.equal(searches()[0].href, `${cloud.service}/get_searchImage?query=nature&page=1&per_page=30`);

    const drawn = await wrappers(page).evaluateAll((all) => all.map((wrapper) => {
      const link = wrapper.querySelector('.attribution a');
      return {
        src: wrapper.querySelector('img').getAttribute('src'),
        alt: wrapper.querySelector('img').alt,
        credit: wrapper.querySelector('.attribution').textContent,
        href: link.getAttribute('href'),
        target: link.target,
        rel: link.rel,
      };
    }));
    assert.deepEqual(drawn, body.results.map((photo) => ({
      src: photo.urls.small,
      alt: photo.alt_description || 'Unsplash Image',
      credit: `Photo by ${photo.user.name || 'Unknown'}`,
      href: photo.user.links.html + REFERRAL,
      target: '_blank',
      rel: 'noopener noreferrer',
    })));
    assert.ok(drawn.some((photo) => photo.alt === 'Unsplash Image'), 'the reply holds a photo without a description');
    assert.ok(drawn.some((photo) => photo.credit === 'Photo by Unknown'), 'the reply holds a photographer without a name');

    const credit = page.locator('.credit a');
    assert.equal(await credit.textContent(), 'Unsplash');
    assert.equal(await credit.getAttribute('href'), `${cloud.service}/provider${REFERRAL}`);
    assert.equal(await credit.getAttribute('target'), '_blank');
  });

  it('encodes the term', async (t) => {
    const { page, searches } = await open(t);
    await search(page, 'sea & sky/blue');
    assert.equal(searches()[0].search, '?query=sea%20%26%20sky%2Fblue&page=1&per_page=30');
  });

  it('pages by number and keeps the term', async (t) => {
    const { page, searches } = await open(t);
    const first = await search(page, 'e');
    assert.equal(first.total_pages, 2, 'the fixtures give two pages');
    assert.deepEqual(await pagingState(page), { label: 'Page 1 of 2', previous: 'disabled', next: 'enabled' });

    await turn(page, 'Next');
    assert.equal(searches()[1].searchParams.get('page'), '2');
    assert.equal(searches()[1].searchParams.get('query'), 'e');
    assert.deepEqual(await pagingState(page), { label: 'Page 2 of 2', previous: 'enabled', next: 'disabled' });

    await turn(page, 'Previous');
    assert.equal(searches()[2].searchParams.get('page'), '1');
    assert.deepEqual(await pagingState(page), { label: 'Page 1 of 2', previous: 'disabled', next: 'enabled' });

    const again = nextReply(page);
    await submit(page, 'sea');
    await settle(page);
    await again;
    assert.equal(searches()[3].searchParams.get('page'), '1', 'a new term starts at page one');
  });

  it('shows no results as one page when the page count is 0 or absent', async (t) => {
    const { page } = await open(t);
    for (const term of ['nophotos', 'nophotos nopages']) {
      await search(page, term);
      assert.equal(await resultText(page), 'No images found for your query.', term);
      assert.deepEqual(await pagingState(page), { label: 'Page 1 of 1', previous: 'disabled', next: 'disabled' }, term);
    }
  });
});

describe('photo search: failures', () => {
  it('reads an error body with status 500 as a reply without results', async (t) => {
    const { page, consoleLines } = await open(t, [['images', 'error', '500', 'SOMETHING_BROKE', '1']]);
    await search(page, 'sea');
    assert.equal(await resultText(page), 'No images found for your query.');
    assert.deepEqual(await pagingState(page), { label: 'Page 1 of 1', previous: 'disabled', next: 'disabled' });
    assert.ok(!consoleLines.some((line) => line.startsWith('Error fetching images')));
  });

  it('keeps the results it has when a reply is not JSON', async (t) => {
    const { page, consoleLines } = await open(t, [['images', 'delay', '0', '1'], ['images', 'status', '503']]);
    await search(page, 'e');
    const count = await wrappers(page).count();
    assert.ok(count > 0);

    await turn(page, 'Next');
    assert.equal(await wrappers(page).count(), count);
    assert.ok(consoleLines.some((line) => line.startsWith('Error fetching images:')));
  });
});

describe('photo search: picking', () => {
  it('posts the photo picked, and not when its credit link is followed', async (t) => {
    const { page, context } = await open(t);
    const body = await search(page, 'sea');
    const photo = body.results[0];

    await wrappers(page).first().locator('img').click();
    assert.deepEqual(await messages(page), [{
      name: 'downloadImage',
      body: {
        command: 'downloadImage',
        imageUrl: `${photo.urls.raw}&w=1500&dpr=2`,
        downloadLocation: photo.links.download_location,
      },
    }]);

    const opened = context.waitForEvent('page');
    await wrappers(page).nth(1).locator('.attribution a').click();
    const profile = await opened;
    await profile.waitForURL(body.results[1].user.links.html + REFERRAL);
    await profile.close();
    assert.equal((await messages(page)).length, 1, 'following the credit is no pick');

    await wrappers(page).nth(1).locator('.attribution').click({ position: { x: 2, y: 2 } });
    assert.equal((await messages(page)).length, 2, 'the strip outside its link still picks');
  });
});
