// Runs a scenario through the simulator, serves the window snapshot it writes
// from a loopback server, and opens it in headless Chromium.
//
// VELMORA_HOST: path of the velmora-host binary (required).
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { createServer } from 'node:http';
import { mkdtempSync, readFileSync, writeFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { chromium } from 'playwright-core';

// The scenario must end with `snapshot snapshot.html`. Gives the page, the
// transcript, and close() to release everything.
export async function openSnapshot(scenario) {
  const host = process.env.VELMORA_HOST;
  assert.ok(host, 'set VELMORA_HOST to the velmora-host binary');
  const work = mkdtempSync(path.join(tmpdir(), 'velmora-pages-'));
  writeFileSync(path.join(work, 'page.scenario'), scenario);
  const transcript = execFileSync(host, ['run', 'page.scenario'], { cwd: work, encoding: 'utf8' });
  assert.match(transcript, /^snapshot: \/.*\/snapshot\.html$/m);

  // Same origin for the page and anything it asks for.
  const server = createServer((request, response) => {
    const name = path.basename(new URL(request.url, 'http://127.0.0.1').pathname) || 'snapshot.html';
    try {
      const body = readFileSync(path.join(work, name));
      response.writeHead(200, { 'content-type': 'text/html; charset=utf-8' });
      response.end(body);
    } catch {
      response.writeHead(404);
      response.end();
    }
  });
  await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
  const origin = `http://127.0.0.1:${server.address().port}`;

  const browser = await chromium.launch({
    executablePath: '/usr/bin/chromium',
    args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
      '--disable-background-networking', '--disable-component-update', '--disable-sync'],
  });
  const context = await browser.newContext({ viewport: { width: 1320, height: 880 } });
  // The panes' pages talk to the host through this bridge; record, never answer.
  await context.addInitScript(() => {
    window.__messages = [];
    const handler = (name) => ({ postMessage: (body) => window.__messages.push({ name, body }) });
    window.webkit = { messageHandlers: new Proxy({}, { get: (_, name) => handler(String(name)) }) };
  });
  const page = await context.newPage();
  await page.goto(`${origin}/snapshot.html`);

  const close = async () => {
    await browser.close();
    server.close();
    rmSync(work, { recursive: true, force: true });
  };
  return { page, transcript, close };
}

export const pane = (page, title) => page.locator(`[data-pane-title="${title}"]`);

export const box = async (locator) => {
  const b = await locator.boundingBox();
  assert.ok(b, 'element is laid out');
  return b;
};

export const style = (locator, property) =>
  locator.evaluate((element, name) => getComputedStyle(element).getPropertyValue(name), property);

// "#4472C4" as the browser computes it: "rgb(68, 114, 196)".
export const rgb = (hex) => {
  const n = parseInt(hex.replace('#', ''), 16);
  return `rgb(${(n >> 16) & 255}, ${(n >> 8) & 255}, ${n & 255})`;
};
