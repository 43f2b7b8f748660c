// What the tests share: the sample records, the receipts that were read and approved, the command.

import { execFileSync } from 'node:child_process';
import { readdirSync, readFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';

export const root = new URL('../../../', import.meta.url);
const records = new URL('examples/records/', root);

// The command as the judge, where there is one: scripts/javascript --test says where.
export const command = process.env.QELRCPT_COMMAND;
export const withoutCommand = command ? false : 'QELRCPT_COMMAND is not set';

export function run(args, input) {
  const started = execFileSync(command, args, { input, maxBuffer: 1 << 28, stdio: ['pipe', 'pipe', 'ignore'] });
  return args.includes('escpos') || args.includes('star') ? started : started.toString();
}

function parsed(text) {
  if (!text.startsWith('{')) {
    const lines = text.split('\n').filter((line) => line !== '' && !line.startsWith('#'));
    return { record: Object.fromEntries(lines.map((line) => line.split(/=(.*)/s).slice(0, 2))), config: {} };
  }
  const given = JSON.parse(text);
  return 'record' in given ? { config: {}, ...given } : { record: given, config: {} };
}

// The name of each sample's file, its record and its config.
export const samples = readdirSync(records)
  .sort()
  .map((name) => ({ name, ...parsed(readFileSync(new URL(name, records), 'utf8')) }));

export function sample(name) {
  return samples.find((one) => one.name === `${name}.json`);
}

export function pathOf({ name }) {
  return fileURLToPath(new URL(name, records));
}

// The processor's own samples are for its layouts, which bring the e-commerce one along.
export function formsOf({ name }) {
  return name.startsWith('moneris') ? ['moneris'] : ['plain', 'html', 'xml', 'json'];
}

export function approved({ name }, form) {
  return readFileSync(new URL(`tests/receipts/${form}/${name}.txt`, root), 'utf8');
}
