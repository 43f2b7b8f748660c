// What a record may hold, what it may not, and what comes of strangers' records.

import assert from 'node:assert/strict';
import test from 'node:test';
import vm from 'node:vm';

import { check, load, print, render, Renderer } from '../node.js';
import { run, sample, withoutCommand } from './samples.js';

const instances = [];
WebAssembly.Instance = class extends WebAssembly.Instance {
  constructor(...given) {
    super(...given);
    instances.push(this);
  }
};
await load();

const usual = sample('restaurant-ten-items').record;
const before = render(usual).text;

function total(record) {
  return /TOTAL: +\$(\S+)$/m.exec(render(record, { blocks: ['money'] }).customer.text)?.[1];
}

test('numbers are taken by their decimal value', () => {
  const numbers = [
    [12.5, '12.5'],
    [1e3, '1000'],
    [1e21, `1${'0'.repeat(21)}`],
    [-1.25e21, `-125${'0'.repeat(19)}`],
    [1.5e-7, '0.00000015'],
    [-1e-10, '-0.0000000001'],
    [-0, '0'],
    [12345678901234567890n, '12345678901234567890'],
  ];
  for (const [ttid, written] of numbers) {
    const shown = render({ ttid }, { blocks: ['reference'] }).customer.text;
    assert.equal(/TTID: +(\S+)$/m.exec(shown)[1], written);
  }
  assert.deepEqual([12.5, 1e3, '7'].map((amount) => total({ amount })), ['12.50', '1000.00', '7.00']);
});

test('booleans are words and absent keys are absent', () => {
  const signed = (value) => render({ u_need_signature: value }).merchant.block('signature') !== undefined;
  assert.deepEqual([true, 'yes', 1, false, 0, null, undefined].map(signed), [true, true, true, false, false, false, false]);
  for (const absent of [null, undefined]) assert.ok(render({ merch_name: absent }).text.includes('UNKNOWN MERCHANT NAME'));
  assert.ok(!render({ merch_name: '' }).text.includes('UNKNOWN MERCHANT NAME'));
});

test('arrays and objects become JSON', () => {
  const items = [
    { name: 'Tea "Earl\u0000Grey" \u2028', qty: 2, price: 7.5, modifiers: [{ name: 'Milk', price: 1e-1, type: 'addon', qty: 1n }] },
    { name: 'Loyalty', type: 'discount_percent', price: 10, qty: null, notes: undefined },
    null,
    { name: true, qty: '1', price: '3', __proto__: null },
  ];
  const asText = [
    { name: 'Tea "Earl\u0000Grey" \u2028', qty: '2', price: '7.5', modifiers: [{ name: 'Milk', price: '0.1', type: 'addon', qty: '1' }] },
    { name: 'Loyalty', type: 'discount_percent', price: '10', qty: null },
    null,
    { name: 'true', qty: '1', price: '3' },
  ];
  for (const form of ['plain', 'json', 'xml']) {
    const given = render({ line_items: items }, { form }).text;
    assert.equal(given, render({ line_items: JSON.stringify(asText) }, { form }).text);
    assert.ok(/milk/i.test(given) && given.includes('7.50') && /true/i.test(given));
  }
  const bought = render({ moneris_rcpt_data: { items: [{ sku: 4711, descr: 'Yarn', qty: 1 }], policy: 'Within 30 days' } }, { form: 'moneris-ecomm' }).text;
  assert.ok(bought.includes('4711') && /Within 30 days/i.test(bought), bought);
});

class Sale {
  amount = '1';
}

const cyclic = [];
cyclic.push({ modifiers: cyclic });
const nested = (levels) => Array.from({ length: levels }).reduce((inner) => [inner], 'x');

// A record, and what the refusal says of it.
const REFUSED = [
  [{ amount: NaN }, /^'amount' holds NaN, expected a finite number$/],
  [{ amount: -Infinity }, /^'amount' holds -Infinity/],
  [{ amount: () => 1 }, /^'amount' is a function, expected a text, a number, true or false$/],
  [{ amount: Symbol('x') }, /^'amount' is a symbol/],
  [{ amount: new Date(0) }, /^'amount' is an object of Date/],
  [{ amount: new Number(1) }, /^'amount' is an object of Number/],
  [{ custref: ['x'] }, /^'custref' is an array/],
  [{ rcpt_custom: { Table: 4 } }, /^'rcpt_custom' is an object/],
  [{ custref: 'a\0b' }, /^'custref' holds a NUL character$/],
  [{ 'a\0b': 'x' }, /^'a\\u0000b' holds a NUL character$/],
  [{ a: 'x', b: 'y\0', c: '\0' }, /^'b' holds a NUL character$/],
  [{ custref: 'a\ud83d' }, /^'custref' holds half of a surrogate pair$/],
  [{ custref: '\ude00a' }, /^'custref' holds half/],
  [{ '\ud83d': '\ude00' }, /holds half of a surrogate pair$/],
  [{ a: '\ud83d', '\ude00b': 'x' }, /^'a' holds half of a surrogate pair$/],
  [{ line_items: [{ name: '\ud800' }] }, /^'line_items' holds half/],
  [{ line_items: [{ '\\\udfff': 'x' }] }, /^'line_items' holds half/],
  [{ line_items: [{ name: 'x', price: NaN }] }, /^'line_items' holds NaN/],
  [{ line_items: [{ name: () => 'x' }] }, /^'line_items' holds a function, expected texts, numbers/],
  [{ line_items: [new Map()] }, /^'line_items' holds an object of Map/],
  [{ line_items: [{ toJSON: () => 'x' }] }, /^'line_items' holds a function/],
  [{ line_items: cyclic }, /^'line_items' is nested too deeply, expected at most 512 levels$/],
  [{ line_items: nested(513) }, /^'line_items' is nested too deeply/],
  [null, /^the record is null, expected a plain object$/],
  [undefined, /^the record is undefined/],
  ['{"amount": "1"}', /^the record is a string/],
  [[{ amount: 1 }], /^the record is an array/],
  [new Sale(), /^the record is an object of Object/],
  [new Map([['amount', 1]]), /^the record is an object of Map/],
];

test('what no record can hold is refused, and leaves nothing behind', () => {
  const renderer = new Renderer();
  for (const [record, message] of REFUSED) {
    for (const operation of [(given) => render(given), (given) => check(given), (given) => print(given), (given) => renderer.render(given)])
      assert.throws(() => operation(record), { name: 'TypeError', message }, String(message));
    assert.equal(renderer.render(usual).text, before);
  }
});

test('what looks much the same is taken', () => {
  const taken = [
    { custref: '😀' },
    { custref: '\ufeffmark', 'кey': '\uffff' },
    { line_items: [{ name: '\\ud800', notes: '\\\\udfff' }] },
    { line_items: nested(512) },
    { line_items: new Array(3) },
    { line_items: [], moneris_rcpt_data: {} },
    { '': 'x', __proto__: null },
    JSON.parse('{"__proto__": "x", "line_items": [{"__proto__": 1, "name": "y"}], "constructor": "z"}'),
    vm.runInNewContext('({ amount: 1, line_items: [{ name: "x", price: 2 }] })'),
    Object.freeze({ amount: '1', line_items: Object.freeze([Object.freeze({ name: 'x', price: 1 })]) }),
    {},
  ];
  for (const record of taken) assert.ok(render(record).customer.blocks.length > 3);
  assert.ok(render({ merch_name: '\ufeffmark' }, { form: 'xml' }).text.includes('<merch_name>\ufeffmark</merch_name>'));
  assert.equal(render({ merch_name: '\ufeffmark' }, { form: 'html', blocks: ['merch_info'] }).customer.block('merch_info').indexOf('\ufeffmark') > 0, true);
});

test('a getter that throws or renders does no harm', () => {
  const failing = { amount: '1', get tax() { throw new RangeError('mine'); } };
  assert.throws(() => render(failing), { name: 'RangeError', message: 'mine' });
  const inner = { action: 'sale', get amount() { return String(render(usual).customer.blocks.length); } };
  assert.equal(total(inner), `${render(usual).customer.blocks.length}.00`);
  assert.equal(render(usual).text, before);
});

test('the record stays as it is', () => {
  const { record } = sample('moneris-ecomm-purchase-correction');
  const copy = structuredClone(record);
  render(record, { form: 'moneris-ecomm', industry: 'ecomm' });
  render({ ...record, custref: 'a\nb' });
  assert.deepEqual(record, copy);
});

test('control characters do not reach a printer', () => {
  const record = { merch_name: 'A\u001b@B\u0085C', line_items: [{ name: 'x\u0007y\nz', price: 1 }] };
  const { customer } = render(record);
  assert.ok(!/[\u0000-\u0009\u000b-\u001f\u007f-\u009f]/.test(customer.text), JSON.stringify(customer.text));
  assert.ok(customer.text.includes('A?@B C') && customer.text.includes('X?Y Z'));
  assert.ok(render(record, { raw: true }).customer.text.includes('A\u001b@B'));
});

// Records at random, with values of all kinds under the keys that the library reads.
function* randomRecords(count) {
  let state = 20261123;
  const random = (below) => (state = (state * 48271) % 2147483647) % below;
  const pick = (list) => list[random(list.length)];
  const keys = [...new Set(['chip-credit-sale', 'restaurant-ten-items', 'moneris-ecomm-purchase', 'card-decline'].flatMap((name) => Object.keys(sample(name).record)))];
  const pieces = ['', ' ', 'AUTH', '12.34', '-', '$', '€', '漢字', '😀', 'é', '\u0301', '\u00ad', '\t', '\r\n', '\u001b[2J', '"', '\\u0041', '<b>&', ',', ':', '{', '[{"name":"x"}]', 'x'.repeat(90), '\u202e', '\ufeff', '0'.repeat(30)];
  const text = () => Array.from({ length: random(5) }, () => pick(pieces)).join('');
  const item = () => ({ name: text(), qty: random(4), price: random(9999) / 100, type: pick(['item', 'discount_percent', 'discount_fixed', 'addon', '']), notes: text() });
  for (let i = 0; i < count; ++i) {
    const record = {};
    for (let left = random(25); left > 0; --left) record[pick(keys)] = pick([text, text, text, () => random(100000) / 100, () => random(2) === 1])();
    if (random(2) === 1) record.line_items = Array.from({ length: random(4) }, item);
    else if (Array.isArray(record.line_items)) delete record.line_items;
    yield { ...record, timestamp: random(2 ** 30) }; // without one it is now
  }
}

test('random records read as the command makes them', { skip: withoutCommand }, () => {
  const records = [...randomRecords(2000)];
  const lines = records.map((record) => `${JSON.stringify(record)}\n`).join('');
  const forms = { plain: { width: 23 }, html: {}, xml: {}, moneris: {}, 'moneris-ecomm': {} };
  for (const [form, options] of Object.entries(forms)) {
    const width = options.width ? ['--width', String(options.width)] : [];
    const made = run(['-q', '--batch', '--timezone', 'UTC', '--form', form, ...width, '-'], lines).trim().split('\n');
    const renderer = new Renderer({ ...options, form, timeZone: 'UTC' });
    records.forEach((record, i) => {
      const { blocks } = JSON.parse(made[i]);
      const ours = renderer.render(record).copies.flatMap((copy) => copy.blocks.map((block) => [`${copy.name === 'customer' ? 'cust' : 'merch'}_${block.name}`, block.text]));
      assert.deepEqual(ours, Object.entries(blocks), `${form}: ${JSON.stringify(record)}`);
    });
  }
});

// The memory of the module that was made last.
function memory() {
  return instances.at(-1).exports.memory.buffer.byteLength;
}

test('memory is flat, whatever fails in between', () => {
  const renderers = [new Renderer({ form: 'html' }), new Renderer({ timeZone: 'Asia/Tokyo' }), new Renderer({ form: 'json' })];
  const renderAll = (times) => {
    for (let i = 0; i < times; ++i) for (const renderer of renderers) renderer.render(usual);
  };
  renderAll(100);
  const size = memory();
  renderAll(5000);
  for (let i = 0; i < 5000; ++i) {
    assert.throws(() => render({ ...usual, custref: `${'x'.repeat(1000)}\0` }), TypeError);
    assert.throws(() => print(usual, { width: 64, printer: { paper: 32 } }), TypeError);
    check(usual);
    print(usual, { printer: { qr: 'x' } });
  }
  assert.equal(memory(), size);
});

test('a large receipt does not stay', () => {
  const size = memory();
  const large = { order_notes: 'Fresh loaves daily. '.repeat(2 ** 18), merch_name: 'é' };
  assert.ok(render(large, { width: 20 }).customer.text.length > 5 * 10 ** 6);
  assert.ok(memory() > 10 * size);
  assert.equal(render(usual).text, before);
  assert.ok(memory() <= size);
});

test('a receipt that needs more memory than there is ends with an error, and the next one is made', () => {
  const line_items = [{ name: 'x', price: '1' }];
  const endless = { line_items: JSON.stringify(Array.from({ length: 400000 }, () => line_items[0])) };
  assert.throws(() => render(endless, { width: 10000 }), RangeError);
  assert.equal(render(usual).text, before);
});
