import { readFile } from 'node:fs/promises';

import { receipts } from './receipts.js';

// A till looks the transaction up; here each is one of the samples.
const samples = new URL('../records/', import.meta.url);
const files = { 20417: 'chip-credit-sale.json' };
const find = async (ttid) => Object.hasOwn(files, ttid) && JSON.parse(await readFile(new URL(files[ttid], samples), 'utf8')).record;

const server = receipts(async (ttid) => (await find(ttid)) || undefined).listen(3000, '127.0.0.1', () => {
  console.log(`http://127.0.0.1:${server.address().port}/receipts/20417`);
});
