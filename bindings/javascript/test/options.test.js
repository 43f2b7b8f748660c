// Options: their names and values, and what is said of others.

import assert from 'node:assert/strict';
import test from 'node:test';

import { check, load, optionsOf, print, render, Renderer } from '../node.js';
import { COPIES, LINE_BREAKS } from '../src/options.js';
import * as words from '../src/words.js';
import { run, withoutCommand } from './samples.js';

test('before the library is loaded', () => {
  assert.throws(() => render({}), { name: 'Error', message: /await load\(\)/ });
});

test('loading: what cannot be loaded can be tried again', async () => {
  await assert.rejects(load(new Uint8Array([0, 97, 115, 109, 1, 2, 3, 4])), WebAssembly.CompileError);
  await assert.rejects(load(new URL('missing.wasm', import.meta.url)), { code: 'ENOENT' });
  await assert.rejects(load(new Uint8Array([0, 97, 115, 109, 1, 0, 0, 0])), TypeError); // a module of nothing
  assert.throws(() => render({}), { message: /await load\(\)/ });
  assert.throws(() => render({}), Error);
  const loading = load();
  assert.equal(load(), loading);
  assert.equal(await loading, undefined);
});

const REFUSED = [
  [{ forms: 'plain' }, /^forms: there is no such option, expected form, width, .* or printer$/],
  [{ form: 'pdf' }, /^form: 'pdf' is unknown, expected plain, html, xml, json, moneris or moneris-ecomm$/],
  [{ form: 'toString' }, /^form: 'toString' is unknown/],
  [{ form: ['plain'] }, /^form: an array is unknown/],
  [{ width: 9 }, /^width: 9 is unknown, expected a whole number from 10 to 10000$/],
  [{ width: '40' }, /^width: '40' is unknown/],
  [{ width: 40.5 }, /^width: 40\.5 is unknown/],
  [{ lineBreak: '\n' }, /^lineBreak: .* expected lf or crlf$/],
  [{ copy: 'bank' }, /^copy: 'bank' is unknown, expected customer, merchant or both$/],
  [{ blocks: 'money' }, /^blocks: 'money' is unknown, expected an array of names of blocks$/],
  [{ blocks: ['money', 'type'] }, /^blocks: 'type' is unknown, expected merch_info, .* or notes$/],
  [{ form: 'moneris', blocks: ['items'] }, /^blocks: 'items' is unknown, expected merch_info, type, /],
  [{ raw: 1 }, /^raw: 1 is unknown, expected true or false$/],
  [{ language: 'fr-CA' }, /^language: 'fr-CA' is unknown, expected en, fr, es, de or it$/],
  [{ customerLanguage: 1 }, /^customerLanguage: 1 is unknown/],
  [{ merchantLanguage: '' }, /^merchantLanguage: '' is unknown/],
  [{ country: 'DE' }, /^country: 'DE' is unknown, expected US, .* or a number from 1 to 999$/],
  [{ country: 0 }, /^country: 0 is unknown/],
  [{ currency: 1000 }, /^currency: 1000 is unknown/],
  [{ currency: 'constructor' }, /^currency: 'constructor' is unknown/],
  [{ industry: 'retail,bank' }, /^industry: 'bank' is unknown, expected retail, /],
  [{ industry: ['retail', 4] }, /^industry: 4 is unknown/],
  [{ industry: 4 }, /^industry: 4 is unknown/],
  [{ timeZone: 'America/Nowhere' }, /^timeZone: 'America\/Nowhere' is unknown, expected a time zone of this platform/],
  [{ timeZone: '+05:30' }, /^timeZone: /],
  [{ timeZone: '' }, /^timeZone: '' is unknown/],
  [{ printer: 'escpos' }, /^printer: 'escpos' is unknown, expected an object$/],
  [{ printer: { columns: 48 } }, /^printer\.columns: there is no such option, expected printer\.language, /],
  [{ printer: { language: 'png' } }, /^printer\.language: 'png' is unknown, expected escpos or star$/],
  [{ printer: { drawer: true } }, /^printer\.drawer: a boolean is unknown, expected a whole number from 1 to 2$/],
  [{ printer: { logo: 'ABC' } }, /^printer\.logo: 'ABC' is unknown, expected a key of two characters/],
  [{ printer: { logo: 0 } }, /^printer\.logo: 0 is unknown/],
  [{ printer: { qr: '' } }, /^printer\.qr: '' is unknown/],
  [{ printer: { qr: 'a\0b' } }, /^printer\.qr: /],
  [{ printer: { qrLevel: 'm' } }, /^printer\.qrLevel: 'm' is unknown, expected L, M, Q or H$/],
  [null, /^the options are null, expected an object$/],
  ['plain', /^the options are a string/],
];

test('unknown options and values are refused by their names', async () => {
  await load();
  for (const [options, message] of REFUSED) {
    for (const operation of [render, check, print]) assert.throws(() => operation({}, options), { name: 'TypeError', message }, String(message));
    assert.throws(() => new Renderer(options), { name: 'TypeError', message });
  }
});

test('half of a surrogate pair in an option', () => {
  assert.throws(() => print({}, { printer: { qr: '\ud83d' } }), { name: 'TypeError', message: /^printer\.qr: / });
});

test('what is not given is as usual', () => {
  const names = ['form', 'width', 'lineBreak', 'copy', 'blocks', 'raw', 'language', 'country', 'currency', 'industry', 'timeZone', 'printer'];
  const record = { action: 'sale', amount: '12.34', code: 'AUTH', timestamp: 1773502867 };
  const usual = render(record).text;
  for (const nothing of [undefined, null]) assert.equal(render(record, Object.fromEntries(names.map((name) => [name, nothing]))).text, usual);
});

test('the config of a record file', () => {
  const config = { lang: 'fr', customer_lang: 'de', merchant_lang: 'it', country: 124, currency: 'CAD', industry: ['retail'], timezone: 'America/Toronto' };
  assert.deepEqual(optionsOf(config), { language: 'fr', customerLanguage: 'de', merchantLanguage: 'it', country: 124, currency: 'CAD', industry: ['retail'], timeZone: 'America/Toronto' });
  assert.throws(() => optionsOf({ language: 'fr' }), { name: 'TypeError', message: /^language: there is no such setting, expected lang, / });
  assert.throws(() => optionsOf([]), TypeError);
});

test('words and blocks are those of the command', { skip: withoutCommand }, () => {
  const wordsOf = (args, option) => {
    const line = run([...args, '--list-options']).split('\n').find((one) => one.startsWith(`${option}|`));
    return line.split('|')[2].split(' ').sort();
  };
  const alpha2 = Object.keys(words.COUNTRIES).filter((code) => code.length === 2);
  const lists = {
    '--form': Object.keys(words.FORMS),
    '--line-break': Object.keys(LINE_BREAKS),
    '--copy': Object.keys(COPIES),
    '--lang': Object.keys(words.LANGUAGES),
    '--country': alpha2,
    '--currency': Object.keys(words.CURRENCIES),
    '--industry': Object.keys(words.INDUSTRIES),
    '--code-page': Object.keys(words.CODE_PAGES),
    '--cut': Object.keys(words.CUTS),
    '--qr-level': Object.keys(words.QR_LEVELS),
  };
  for (const [option, known] of Object.entries(lists)) assert.deepEqual([...known].sort(), wordsOf([], option), option);
  for (const [form, { blocks }] of Object.entries(words.FORMS)) assert.deepEqual([...blocks].sort(), wordsOf(['--form', form], '--block'), form);
});
