// Receipts as they were read and approved, and as the command makes them.

import assert from 'node:assert/strict';
import test from 'node:test';

import { check, load, optionsOf, print, render, Renderer } from '../node.js';
import { approved, formsOf, pathOf, run, sample, samples, withoutCommand } from './samples.js';

await load();

test('every sample reads as it was approved in every form', () => {
  let compared = 0;
  for (const each of samples) {
    for (const form of formsOf(each)) {
      const receipt = render(each.record, { ...optionsOf(each.config), form });
      assert.equal(receipt.text, approved(each, form), `${each.name}, ${form}`);
      ++compared;
    }
  }
  assert.ok(compared > 80);
});

// What a form's document has between the blocks of one copy.
const BETWEEN = { plain: '\n\n', html: '\n\n', moneris: '\n\n' };

test('the copies hold the blocks of the whole', () => {
  for (const each of samples) {
    for (const form of formsOf(each)) {
      const receipt = render(each.record, { ...optionsOf(each.config), form });
      for (const copy of receipt.copies) {
        assert.ok(copy.blocks.length > 3);
        for (const { name, text } of copy.blocks) assert.equal(copy.block(name), text);
        const blocks = copy.blocks.map(({ text }) => text.replaceAll('\r\n', '\n'));
        if (form in BETWEEN) assert.equal(copy.text, `${blocks.join(BETWEEN[form])}\n`);
        for (const block of blocks) assert.ok(receipt.text.includes(block));
      }
      if (form === 'json') assert.deepEqual(Object.keys(JSON.parse(receipt.text)), receipt.copies.map((copy) => copy.name));
    }
  }
});

test('whether it was approved', () => {
  const outcomes = [
    ['chip-credit-sale', true],
    ['partial-approval', true],
    ['issuer-decline', false],
    ['card-decline', false],
    ['communication-failure', false],
    ['void', false],
  ];
  for (const [name, isApproved] of outcomes) {
    const { record, config } = sample(name);
    for (const language of ['en', 'de']) assert.equal(render(record, { ...optionsOf(config), language }).approved, isApproved, name);
  }
});

// The options of the command and those that mean the same here.
const LAYOUTS = [
  [['--width', '24'], { width: 24 }],
  [['--width', '61', '--line-break', 'crlf'], { width: 61, lineBreak: 'crlf' }],
  [['--copy', 'merchant', '--customer-lang', 'fr', '--merchant-lang', 'IT'], { copy: 'merchant', customerLanguage: 'fr', merchantLanguage: 'IT' }],
  [['--lang', 'es', '--currency', 'EUR', '--country', '276'], { language: 'es', currency: 'eur', country: 276 }],
  [['--lang', 'fr', '--currency', '124', '--country', 'CAN'], { language: 'fr', currency: 124, country: 'can' }],
  [['--industry', 'retail,selfserv'], { industry: ['retail', 'selfserv'] }],
  [['--industry', 'autofuel'], { industry: 'autofuel' }],
  [['--form', 'html', '--line-break', 'crlf'], { form: 'html', lineBreak: 'crlf' }],
  [['--form', 'xml', '--copy', 'customer', '--line-break', 'crlf'], { form: 'xml', copy: 'customer', lineBreak: 'crlf' }],
  [['--form', 'json', '--block', 'money', '--block', 'emv'], { form: 'json', blocks: ['money', 'emv'] }],
  [['--form', 'moneris', '--line-break', 'crlf'], { form: 'moneris', lineBreak: 'crlf' }],
  [['--form', 'moneris', '--industry', 'ecomm'], { form: 'moneris', industry: 'ecomm' }],
  [['--form', 'moneris-ecomm', '--raw'], { form: 'moneris-ecomm', raw: true }],
  [['--raw'], { raw: true }],
];

test('layouts are those of the command', { skip: withoutCommand }, () => {
  const names = ['chip-credit-sale', 'restaurant-ten-items', 'markup-in-values', 'moneris-ecomm-purchase'];
  for (const name of names) {
    const { record, config } = sample(name);
    for (const [args, options] of LAYOUTS) {
      const wanted = run(['-q', ...args, pathOf(sample(name))]);
      // A language for both copies goes before those of the file.
      const own = options.language ? { customerLanguage: undefined, merchantLanguage: undefined } : {};
      const receipt = render(record, { ...optionsOf(config), ...own, ...options });
      assert.equal(receipt.text, wanted, `${name} ${args.join(' ')}`);
    }
  }
});

const PAPER = [
  [['--output', 'escpos'], {}],
  [['--output', 'escpos', '--paper', '32', '--code-page', 'cp1252', '--cut', 'partial', '--feed', '3'], { paper: 32, codePage: 'cp1252', cut: 'partial', feed: 3 }],
  [['--output', 'escpos', '--barcode', '--drawer', '--logo', '7', '--no-emphasis'], { barcode: true, drawer: 1, logo: 7, emphasis: false }],
  [['--output', 'escpos', '--logo', 'key:AB', '--qr', 'https://receipts.example/é', '--qr-level', 'H', '--qr-module', '3'], { logo: 'AB', qr: 'https://receipts.example/é', qrLevel: 'H', qrModule: 3 }],
  [['--output', 'escpos', '--code-page', 'cp437', '--code-page-number', '0', '--other-drawer', '--cut', 'none'], { codePage: 'cp437', codePageNumber: 0, drawer: 2, cut: 'none' }],
  [['--output', 'star', '--qr', 'https://receipts.example/r', '--barcode'], { language: 'star', qr: 'https://receipts.example/r', barcode: true }],
];

test('what is printed is what the command prints', { skip: withoutCommand }, () => {
  for (const name of ['chip-credit-sale', 'euro-sale-german', 'fuel-sale', 'moneris-interac-chip-sale']) {
    const { record, config } = sample(name);
    const form = formsOf(sample(name))[0];
    for (const [args, printer] of PAPER) {
      const wanted = run(['-q', '--form', form, ...args, pathOf(sample(name))]);
      const { customer, merchant } = print(record, { ...optionsOf(config), form, printer });
      const bytes = Buffer.concat([customer, merchant].filter(Boolean).map((copy) => copy.bytes));
      assert.deepEqual(bytes, wanted, `${name} ${args.join(' ')}`);
    }
  }
});

test('what printing says beside the bytes', () => {
  const { record } = sample('chip-credit-sale');
  const plain = print(record, { width: 30, printer: { barcode: true } });
  assert.equal(plain.customer.hasBarcode, true);
  assert.equal(plain.customer.replaced, 0);
  const { ordernum, ...without } = record;
  const other = print({ ...without, order_notes: 'я漢' }, { copy: 'merchant', printer: { barcode: true } });
  assert.equal(other.customer, undefined);
  assert.deepEqual([other.merchant.hasBarcode, other.merchant.replaced], [false, 2]);
});

test('what cannot be printed', () => {
  const { record } = sample('chip-credit-sale');
  const refused = [
    [{ width: 65 }, /^width: 65 columns: the receipt is wider than the paper/],
    [{ printer: { language: 'star', codePage: 'cp850' } }, /^printer\.codePage: /],
    [{ printer: { language: 'star', logo: 'AB' } }, /^printer\.logo: /],
    [{ printer: { qr: 'x'.repeat(5000) } }, /^printer\.qr: /],
    [{ form: 'html' }, /^form: 'html' is for no printer/],
  ];
  for (const [options, message] of refused) assert.throws(() => print(record, options), { name: 'TypeError', message });
  assert.ok(print(record).customer.bytes.length > 500); // and nothing is left of them
});

test('findings are those of the command', { skip: withoutCommand }, () => {
  const changed = { ...sample('restaurant-ten-items').record, amount: '$4', custref: 'é€😀 4111111111111111', tax: 1.5 };
  const records = [...samples.map(({ record, config, name }) => ({ record, config, form: formsOf({ name })[0] })), { record: changed, config: {}, form: 'json' }];
  let found = 0;
  for (const { record, config, form } of records) {
    const text = JSON.stringify({ config, record });
    let output;
    try {
      output = run(['--check', '--output', 'json', '--form', form, '-'], text);
    } catch (ended) {
      output = ended.stdout.toString(); // errors were found
    }
    const key = ({ severity, rule, key: of, message }) => [severity, rule, of, message].join('\t');
    const ours = check(record, { ...optionsOf(config), form });
    assert.deepEqual(ours.map(key).sort(), JSON.parse(output).filter(({ rule }) => rule !== 'repeated-key').map(key).sort());
    found += ours.length;
  }
  assert.ok(found > 20);
});

test('the place of a finding is an index into the text', () => {
  const text = 'é€😀 4111111111111111';
  const finding = check({ custref: text }).find(({ rule }) => rule === 'card-number');
  assert.equal(text.slice(finding.offset), '4111111111111111');
  assert.equal(finding.key, 'custref');
  assert.match(finding.source, /PCI/);
});

test('the places of many findings are found in proportion to the text', () => {
  const text = `[${Array(20_000).fill('{"name":"","é😀":""}').join(',')}]`;
  const begin = performance.now();
  const begins = { 'member-unknown': '"é😀"', 'entry-without-name': '{"name"' };
  const found = check({ line_items: text }).filter(({ rule }) => Object.hasOwn(begins, rule));
  assert.ok(performance.now() - begin < 10_000);
  assert.equal(found.length, 40_000);
  assert.ok(found.every(({ rule, offset }) => text.startsWith(begins[rule], offset)));
});

test('the environment of a renderer is its own', () => {
  const { record } = sample('chip-credit-sale');
  const options = { form: 'plain', width: 32, language: 'de' };
  const renderer = new Renderer(options);
  const first = renderer.render(record).text;
  options.width = 60;
  new Renderer({ form: 'json' }).render(record);
  renderer.check(record);
  assert.equal(renderer.render(record).text, first);
  assert.equal(render(record, { width: 32, language: 'de' }).text, first);
});
