import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { existsSync, mkdtempSync, readFileSync, rmSync } from 'node:fs';
import { createServer } from 'node:http';
import { join } from 'node:path';
import test, { after } from 'node:test';
import { fileURLToPath, pathToFileURL } from 'node:url';
import { promisify } from 'node:util';

import { build } from 'esbuild';

const here = fileURLToPath(new URL('.', import.meta.url));
const root = new URL('../../', import.meta.url);
const made = mkdtempSync(join(here, 'dist-test-'));
after(() => rmSync(made, { recursive: true, force: true }));

// The component as a module for Node, and React's part for servers from the same place.
async function rendered(props) {
  const contents = `import { createElement, Suspense } from 'react';
    import { prerenderToNodeStream } from 'react-dom/static';
    import { Receipt } from './src/Receipt.jsx';
    export async function page(props) {
      const { prelude } = await prerenderToNodeStream(createElement(Suspense, { fallback: 'waiting' }, createElement(Receipt, props)));
      let html = '';
      for await (const piece of prelude) html += piece;
      return html;
    }`;
  const outfile = join(made, 'server.mjs');
  const externals = ['qelrcpt', 'react', 'react-dom'];
  if (!existsSync(outfile))
    await build({ stdin: { contents, resolveDir: here }, outfile, bundle: true, format: 'esm', platform: 'node', jsx: 'automatic', external: externals });
  return (await import(pathToFileURL(outfile))).page(props);
}

const sample = (name) => JSON.parse(readFileSync(new URL(`examples/records/${name}.json`, root), 'utf8')).record;

// The blocks of a copy as they were approved.
function approved(name, copy) {
  const copies = readFileSync(new URL(`tests/receipts/html/${name}.json.txt`, root), 'utf8').split('\n<hr class="rcpt_cut">\n\n');
  return copies[copy].trimEnd().split('\n\n').filter((block) => block !== '');
}

test('a server renders both copies as they were approved', async () => {
  const record = sample('chip-credit-sale');
  const options = { timeZone: 'America/Denver' };
  for (const [index, copy] of ['customer', 'merchant'].entries()) {
    const html = await rendered({ record, options, copy });
    for (const block of approved('chip-credit-sale', index)) assert.ok(html.includes(`<div>${block}</div>`), `${block}\n${html}`);
    assert.ok(html.includes('<article class="receipt" aria-label="Receipt">'));
  }
});

test('what was not approved, and merchants without a copy', async () => {
  assert.ok((await rendered({ record: sample('issuer-decline') })).includes('class="receipt rcpt_not_approved"'));
  assert.ok(!(await rendered({ record: sample('issuer-decline'), copy: 'merchant', options: { industry: 'autofuel' } })).includes('<article'));
});

const chromium = ['/usr/bin/chromium', '/usr/bin/chromium-browser'].find(existsSync);
const TYPES = { html: 'text/html', js: 'text/javascript', css: 'text/css', wasm: 'application/wasm' };

test('a browser shows the page', { skip: chromium ? false : 'there is no Chromium' }, async () => {
  execFileSync('npm', ['run', '--silent', 'build'], { cwd: here });
  const server = createServer((request, response) => {
    const path = join(here, request.url === '/' ? 'index.html' : request.url);
    if (!existsSync(path)) return response.writeHead(404).end();
    return response.setHeader('Content-Type', TYPES[path.split('.').at(-1)]).end(readFileSync(path));
  });
  await new Promise((listening) => server.listen(0, '127.0.0.1', listening));
  try {
    const { execFile } = await import('node:child_process');
    const flags = ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking', '--disable-component-update', '--disable-sync', `--user-data-dir=${join(made, 'chromium')}`, '--virtual-time-budget=10000', '--dump-dom'];
    const { stdout } = await promisify(execFile)(chromium, [...flags, `http://127.0.0.1:${server.address().port}/`]);
    for (const text of ['Tillerbird Bakery', 'Cortado', '$12.34', 'Approved']) assert.ok(stdout.includes(text), stdout);
  } finally {
    server.close();
    rmSync(join(here, 'dist'), { recursive: true, force: true });
  }
});
