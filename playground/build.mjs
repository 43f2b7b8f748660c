// build.mjs [FILE]: makes the page, in one file that fetches nothing (share/playground.html). The same
// sources give the same bytes.
import { createHash } from 'node:crypto';
import { mkdirSync, readdirSync, readFileSync, writeFileSync } from 'node:fs';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';

const here = path.dirname(fileURLToPath(import.meta.url));
const root = path.dirname(here);
const at = (...parts) => path.join(root, ...parts);
const bindings = process.env.QELRCPT_JAVASCRIPT ?? at('bindings', 'javascript');
const records = at('examples', 'records');

// The sample records by their file's name.
function samples() {
  return Object.fromEntries(readdirSync(records).sort().map((name) => [name, readFileSync(path.join(records, name), 'utf8')]));
}

// The characters of the bytes 0x80 to 0xFF by the name of their code page, from the library's own tables.
function codePages() {
  const source = readFileSync(at('src', 'qel_rcpt_print_pages.cpp'), 'utf8');
  const pages = {};
  for (const [, name, literals] of source.matchAll(/char16_t page_(\w+)\[\] =\s*((?:u"[^"]*"\s*)+);/g)) {
    const text = literals.replace(/"\s*u"/g, '').replace(/^u"|"\s*$/g, '');
    pages[name.startsWith('iso') ? name.replace('_', '-') : `cp${name}`] = JSON.parse(`"${text}"`);
  }
  for (const [name, page] of Object.entries(pages))
    if ([...page].length !== 128) throw new Error(`code page ${name}: ${[...page].length} characters, expected 128`);
  return pages;
}

// The keys of a record with their meaning, from the library's own table.
function recordKeys() {
  const source = readFileSync(at('src', 'qel_rcpt_keys.hpp'), 'utf8');
  const text = String.raw`((?:R"\(.*?\)"|(?:"(?:[^"\\]|\\.)*"\s*)+))`;
  const row = new RegExp(String.raw`\{\s*"(\w+)",\s*key_group::\w+,\s*key_kind::(\w+),\s*key_readers::\w+,\s*${text},\s*${text},\s*${text}\}`, 'g');
  const joined = (literals) => literals.startsWith('R"(') ? literals.slice(3, -2) : JSON.parse(literals.trim().replace(/"\s+"/g, ''));
  const keys = Array.from(source.matchAll(row), ([, name, kind, meaning, detail, example]) => (
    { name, kind, meaning: joined(meaning), detail: joined(detail), example: joined(example) }));
  const written = source.match(/key_kind::\w+, key_readers|key_kind::\w+,\s+key_readers/g).length;
  if (keys.length !== written) throw new Error(`record keys: ${keys.length} were read, expected ${written}`);
  return keys;
}

const MODULES = { samples, 'code-pages': codePages, 'record-keys': recordKeys };

const plugin = {
  name: 'qelrcpt',
  setup({ onLoad, onResolve }) {
    onResolve({ filter: /^(samples|code-pages|record-keys)$/ }, ({ path: name }) => ({ path: name, namespace: 'made' }));
    onLoad({ filter: /.*/, namespace: 'made' }, ({ path: name }) => ({ contents: JSON.stringify(MODULES[name]()), loader: 'json' }));
    onResolve({ filter: /^qelrcpt(\/|$)/ }, ({ path: name }) => ({
      path: path.join(bindings, name === 'qelrcpt' ? 'index.js' : name.slice('qelrcpt/'.length)) }));
    onResolve({ filter: /^style-mod$/ }, ({ importer }) =>
      importer.endsWith('style_modules.js') ? undefined : { path: path.join(here, 'src', 'style_modules.js') });
  },
};

async function bundle(options) {
  const { outputFiles } = await build({
    absWorkingDir: here,
    bundle: true,
    minify: true,
    write: false,
    charset: 'utf8',
    legalComments: 'none',
    logLevel: 'warning',
    target: ['chrome123', 'firefox128', 'safari17.5'],
    ...options,
  });
  return outputFiles[0].text;
}

const hash = (text) => `'sha256-${createHash('sha256').update(text).digest('base64')}'`;

// A script's text may not hold what ends or reopens its element.
const inScript = (text) => text.replaceAll('</script', '<\\/script').replaceAll('<!--', '<\\!--').trim();

const style = (await bundle({ entryPoints: ['page.css'] })).trim();
const script = inScript(await bundle({
  entryPoints: ['src/main.js'],
  format: 'esm',
  loader: { '.wasm': 'binary', '.css': 'text' },
  plugins: [plugin],
}));
if (/<\/script|<!--/i.test(script)) throw new Error('the script would end its own element');

const policy = [
  "default-src 'none'",
  `script-src ${hash(script)} 'wasm-unsafe-eval'`,
  `style-src ${hash(style)}`,
  "base-uri 'none'",
  "form-action 'none'",
  "require-trusted-types-for 'script'",
  'trusted-types receipt',
].join('; ');

const page = readFileSync(path.join(here, 'page.html'), 'utf8')
  .replace('@POLICY@', () => policy)
  .replace('@STYLE@', () => style)
  .replace('<script>@SCRIPT@', () => `<script type="module">${script}`);
const file = path.resolve(process.argv[2] ?? at('share', 'playground.html'));
mkdirSync(path.dirname(file), { recursive: true });
writeFileSync(file, page);
console.log(`${path.relative(process.cwd(), file)}: ${Math.round(page.length / 1024)} KB`);
