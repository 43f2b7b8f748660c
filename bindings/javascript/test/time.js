// The time of a receipt here beside the same work in C++, whose times the program in the first argument
// prints, and the memory that a million receipts take.

import { execFileSync } from 'node:child_process';

import { load, optionsOf, Renderer } from '../node.js';
import { samples } from './samples.js';

const ROUNDS = 400;
const RECEIPTS = 100;
const WARM = 8000;

const instances = [];
WebAssembly.Instance = class extends WebAssembly.Instance {
  constructor(...given) {
    super(...given);
    instances.push(this);
  }
};
await load();

// As the library is given them elsewhere: documents as JSON.
function textsOf(record) {
  const text = (value) => (typeof value === 'object' ? JSON.stringify(value, (_, inner) => (typeof inner === 'number' ? String(inner) : inner)) : String(value));
  return Object.fromEntries(Object.entries(record).map(([key, value]) => [key, text(value)]));
}

function leastTime(renderer, record) {
  for (let i = 0; i < WARM; ++i) renderer.render(record);
  let least = Infinity;
  for (let round = 0; round < ROUNDS; ++round) {
    const begin = performance.now();
    for (let i = 0; i < RECEIPTS; ++i) renderer.render(record);
    least = Math.min(least, ((performance.now() - begin) * 1000) / RECEIPTS);
  }
  return least;
}

console.log(`Node ${process.versions.node}\n`);
console.log('| sample | form | C++ µs | JavaScript µs | ratio | with objects µs |\n|---|---|--:|--:|--:|--:|');
for (const line of execFileSync(process.argv[2], { encoding: 'utf8' }).trim().split('\n')) {
  const [name, form, native] = line.split(' ');
  const { record, config } = samples.find((sample) => sample.name === name);
  // The in-store layout gives the e-commerce one to a merchant of that industry.
  const industry = form === 'moneris' ? 'retail' : config.industry;
  const renderer = new Renderer({ ...optionsOf(config), industry, form });
  const [texts, objects] = [textsOf(record), record].map((given) => leastTime(renderer, given));
  console.log(`| ${name} | ${form} | ${native} | ${texts.toFixed(2)} | ${(texts / Number(native)).toFixed(2)} | ${objects.toFixed(2)} |`);
}

const renderer = new Renderer({ timeZone: 'America/Toronto' });
const { record } = samples.find((sample) => sample.name === 'restaurant-ten-items.json');
console.log('\n| receipts | memory of the module, KiB | heap after collection, KiB |\n|--:|--:|--:|');
let made = 0;
for (const count of [1000, 10_000, 100_000, 1_000_000]) {
  for (; made < count; ++made) renderer.render({ ...record, ttid: made, timestamp: 1_700_000_000 + made * 61 });
  globalThis.gc?.();
  const kib = (bytes) => Math.round(bytes / 1024);
  console.log(`| ${count} | ${kib(instances.at(-1).exports.memory.buffer.byteLength)} | ${kib(process.memoryUsage().heapUsed)} |`);
}
console.log(`\nmodules made: ${instances.length}`);
