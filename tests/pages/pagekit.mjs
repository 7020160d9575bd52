// Opens the search pages in headless Chromium against a velmora-cloud of
// their own, with the native bridge recorded and the page's clock held.
//
// VELMORA_CLOUD: path of the velmora-cloud binary (default: the default build's).
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { readFileSync } from 'node:fs';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { chromium } from 'playwright-core';

const root = path.resolve(path.dirname(fileURLToPath(import.meta.url)), '../..');
const cloudProgram = process.env.VELMORA_CLOUD ||
  path.join(root, 'build/default/tools/velmora-cloud/velmora-cloud');

export const LICENSE_KEY = 'test key/1&2';

// Starts a cloud whose faults are `--fault` word lists, e.g. ['icons-search', 'status', '503'].
// Gives its service base and stop().
export async function startCloud(faults = []) {
  const args = ['--templates', '0'];
  for (const fault of faults) args.push('--fault', ...fault.map(String));
  const child = spawn(cloudProgram, args, { stdio: ['ignore', 'pipe', 'pipe'] });
  let output = '';
  let errors = '';
  child.stderr.on('data', (chunk) => { errors += chunk; });
  const started = new Promise((resolve, reject) => {
    const timer = setTimeout(() => reject(new Error(`velmora-cloud did not start: ${errors}`)), 10_000);
    child.on('error', (error) => { clearTimeout(timer); reject(error); });
    child.on('exit', (code) => { clearTimeout(timer); reject(new Error(`velmora-cloud exited ${code}: ${errors}`)); });
    child.stdout.on('data', (chunk) => {
      output += chunk;
      let end;
      while ((end = output.indexOf('\n')) >= 0) {
        const line = output.slice(0, end);
        output = output.slice(end + 1);
        const service = /^service (http:\/\/127\.0\.0\.1:\d+\/api)$/.exec(line);
        if (service) {
          clearTimeout(timer);
          resolve(service[1]);
        }
      }
    });
  });
  const stop = async () => {
    if (child.pid === undefined || child.exitCode !== null || child.signalCode !== null) return;
    const exited = new Promise((resolve) => child.once('exit', resolve));
    child.kill('SIGTERM');
    await exited;
  };
  try {
    return { service: await started, stop };
  } catch (error) {
    await stop();
    throw error;
  }
}

let browser;
export async function launch() {
  browser ??= await chromium.launch({
    executablePath: '/usr/bin/chromium',
    args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
      '--disable-background-networking', '--disable-component-update', '--disable-sync'],
  });
  return browser;
}

export async function closeBrowser() {
  await browser?.close();
  browser = undefined;
}

const pages = {
  icons: {
    file: 'IconSearchPage.html',
    markers: (service) => ({ '{{LICENSE_KEY}}': LICENSE_KEY, '{{API_BASE}}': `${service}/v2/icons` }),
  },
  images: {
    file: 'ImageSearchPage.html',
    markers: (service) => ({ '{{SERVICE_BASE}}': service }),
  },
};

export function pageSource(name, service) {
  const { file, markers } = pages[name];
  let html = readFileSync(path.join(root, 'src/websearch/pages', file), 'utf8');
  for (const [marker, value] of Object.entries(markers(service))) {
    assert.ok(html.includes(marker), `${file} holds ${marker}`);
    html = html.replaceAll(marker, value);
  }
  return html;
}

// Opens page `name` ('icons' or 'images') against `cloud`. `handlers` are the
// bridge's names; each records into window.__messages. The clock stands still
// until the test moves it; window.__waits lists each timeout's delay.
// `offline`: the browser is offline before the page loads. `errors` gathers
// uncaught exceptions.
export async function openPage(name, cloud,
  { handlers = ['iconClicked', 'quotaExhausted', 'downloadImage'], offline = false } = {}) {
  const context = await (await launch()).newContext({ viewport: { width: 600, height: 800 } });
  await context.clock.install({ time: 0 });
  await context.clock.pauseAt(1000);
  await context.addInitScript((names) => {
    window.__messages = [];
    window.__waits = [];
    const messageHandlers = {};
    for (const name of names) {
      messageHandlers[name] = { postMessage: (body) => window.__messages.push({ name, body }) };
    }
    window.webkit = { messageHandlers };
    // Runs after the clock's own script, so this wraps the held setTimeout.
    const clockTimeout = window.setTimeout;
    window.setTimeout = function (callback, delay, ...rest) {
      window.__waits.push(delay);
      return clockTimeout.call(this, callback, delay, ...rest);
    };
  }, handlers);

  context.setDefaultTimeout(10_000);
  const page = await context.newPage();
  const errors = [];
  page.on('pageerror', (error) => errors.push(error));
  // Every request the page makes to the service, as URL objects, in order.
  const requests = [];
  page.on('request', (request) => {
    if (request.url().startsWith(cloud.service)) requests.push(new URL(request.url()));
  });
  if (offline) await context.setOffline(true);
  await page.setContent(pageSource(name, cloud.service));
  const close = () => context.close();
  return { page, context, requests, errors, close };
}

export const messages = (page) => page.evaluate(() => window.__messages);
export const waits = (page) => page.evaluate(() => window.__waits);

// Polls `probe` until it gives something truthy; fails after `timeout` ms.
export async function until(probe, what, timeout = 10_000) {
  const deadline = Date.now() + timeout;
  for (;;) {
    const value = await probe();
    if (value) return value;
    assert.ok(Date.now() < deadline, `timed out waiting for ${what}`);
    await new Promise((resolve) => setTimeout(resolve, 20));
  }
}

// Types the term and presses Return, which also works while the loading
// overlay covers the Search button.
export async function submit(page, term) {
  await page.fill('#searchInput', term);
  await page.press('#searchInput', 'Enter');
}
