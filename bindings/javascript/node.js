// The package where there are files: Node, Deno and Bun.

import { webcrypto } from 'node:crypto';
import { readFile } from 'node:fs/promises';

import { load as loadModule } from './src/module.js';

export { check, optionsOf, print, render, Renderer } from './index.js';

// Addresses of files are read; every other source is taken as in a browser.
async function read(source) {
  const given = await source;
  const isFile = given instanceof URL ? given.protocol === 'file:' : typeof given === 'string' && given.startsWith('file:');
  return isFile ? readFile(new URL(given)) : given;
}

export function load(source = new URL('./qelrcpt.wasm', import.meta.url)) {
  return loadModule(() => read(source), webcrypto);
}
