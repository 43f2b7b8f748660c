// Reading records: what the command takes, the page takes as well, and what is wrong is told where it is.
import assert from 'node:assert/strict';
import { readdirSync, readFileSync } from 'node:fs';
import { describe, test } from 'node:test';
import { decimalText, jsonOfLines, placeInValue, readRecord, TextFault } from '../src/read_record.js';

const RECORDS = new URL('../../examples/records/', import.meta.url);
const valuesOf = (text) => ({ ...readRecord(text).record });

function faultOf(text) {
  try {
    readRecord(text);
  } catch (fault) {
    assert.ok(fault instanceof TextFault, fault);
    return fault;
  }
  return null;
}

describe('values', () => {
  const cases = [
    ['{}', {}],
    ['\uFEFF{"a": "b"}', { a: 'b' }],
    ['{"amount": 12.50, "tip": 1.0E2, "void": true, "auth": null}', { amount: '12.50', tip: '100', void: 'true' }],
    ['{"a": "\\u00e9\\ud83d\\ude00\\n\\"\\/"}', { a: 'é😀\n"/' }],
    ['{"a": [1.10, null, {"b": false, "c": "1"}]}', { a: '["1.10", null, {"b": "false", "c": "1"}]' }],
    ['{"a": "1", "a": "2"}', { a: '2' }],
    ['// card\n{"a": /* none */ "b"} // end', { a: 'b' }],
    ['{ // card\r"a": "b"}', { a: 'b' }],
    ['{"config": {"lang": "fr"}, "record": {"a": 5}}', { a: '5' }],
    ['{"config": "x", "record": "y"}', { config: 'x', record: 'y' }],
    ['{"__proto__": "p", "constructor": "c"}', Object.fromEntries([['__proto__', 'p'], ['constructor', 'c']])],
  ];
  for (const [text, expected] of cases)
    test(text, () => assert.deepEqual(Object.entries(readRecord(text).record), Object.entries(expected)));

  test('an envelope says what its merchant is', () => {
    const read = readRecord('{"config": {"country": 124, "lang": "fr"}, "record": {"a": "b"}}');
    assert.deepEqual(read.config, { country: '124', lang: 'fr' });
    assert.equal(read.isEnvelope, true);
    assert.equal(read.begin, 53);
  });

  test('numbers lose their exponents only', () => {
    for (const [number, text] of [['1.0E7', '10000000'], ['125e-2', '1.25'], ['-5e-3', '-0.005'], ['1.10', '1.10'], ['-12.5e1', '-125'], ['1e-1', '0.1']])
      assert.equal(decimalText(number), text);
  });
});

describe('faults', () => {
  // The text, the part of it at which the fault is (from its only "»" on), and words of the message.
  const cases = [
    ['»', "'{'"],
    ['»[]', "'{'"],
    ['{"a": "1"» "b": "2"}', "expected ',' or '}'", 1],
    ['{"a" »"1"}', "':' after the key"],
    ['{"a": "1",»}', 'a key in double quotes'],
    ['{»a: 1}', 'a key in double quotes'],
    ['{"a": »}', 'a value'],
    ['{"a": »"one\n}', 'closing quote'],
    ['{"a": "b»\tc"}', 'Control character'],
    ['{"a": "b»\\x"}', 'Unknown escape'],
    ['{"a": "»\\u12"}', 'four hexadecimal digits'],
    ['{"a": "»\\ud800"}', 'surrogate'],
    ['{"a": »01}', 'begin with 0'],
    ['{"a": »1.}', 'expected a digit'],
    ['{"a": »-}', 'expected a digit'],
    ['{"a": »1e999}', 'out of range'],
    ['{"a": »nul}', 'a value'],
    ['{"a": [1 »2]}', "',' or ']'"],
    ['{"a": "1"} »x', 'nothing after the object'],
    ['{"a": »/* x', 'without an end'],
    [`{"a": ${'['.repeat(512)}»[`, 'at most 512 levels'],
  ];
  for (const [marked, words, skipped = 0] of cases) {
    test(marked.slice(0, 30), () => {
      const fault = faultOf(marked.replace('»', ''));
      assert.ok(fault, 'it is taken');
      assert.ok(fault.message.includes(words), fault.message);
      assert.equal(fault.from, marked.indexOf('»') + skipped);
      assert.ok(fault.to > fault.from);
    });
  }
});

test('what JSON is and what not is judged as the platform judges it', () => {
  let state = 20261123;
  const random = (limit) => (state = (state * 48271) % 2147483647) % limit;
  const alphabet = '{}[]",:.-+eE0123456789\\ntrufalsd \n';
  const texts = readdirSync(RECORDS).filter((name) => name.endsWith('.json')).map((name) => readFileSync(new URL(name, RECORDS), 'utf8'));
  let refused = 0;
  for (let round = 0; round < 4000; round++) {
    const text = texts[random(texts.length)].slice(0, 900).replace(/,[^,]*$/, '}');
    const at = random(text.length);
    const changed = text.slice(0, at) + (round % 3 === 0 ? '' : alphabet[random(alphabet.length)]) + text.slice(at + (round % 3 === 1 ? 0 : 1));
    let isJson = true;
    try {
      JSON.parse(changed);
    } catch {
      isJson = false;
    }
    const fault = faultOf(changed);
    if (fault) refused++;
    assert.equal(fault === null, isJson, `${fault?.message}\n${changed}`);
  }
  assert.ok(refused > 1000, `${refused} refused`);
});

describe('places in values', () => {
  // The text, the key, the index in its value, and the text from that place on.
  const cases = [
    ['{"a": "4111"}', 'a', 2, '11"}'],
    ['{"a": "\\u00e9\\n\\ud83d\\ude00x"}', 'a', 4, 'x"}'],
    ['{"a": "\\u00e9\\n\\ud83d\\ude00x"}', 'a', 1, '\\n'],
    ['{"a": "b"}', 'a', 99, '"}'],
    ['{"a": 12.5}', 'a', 1, '2.5'],
    ['{"a": 1e3}', 'a', 2, '1e3'],
    ['{"a": [10, "xy"]}', 'a', 8, 'xy"'], // of ["10", "xy"]
    ['{"a": [10, "xy"]}', 'a', 2, '10'],
  ];
  for (const [text, key, index, rest] of cases) {
    test(`${text} ${index}`, () => {
      const member = readRecord(text).members.find((found) => found.key === key);
      assert.ok(text.slice(placeInValue(text, member, index)).startsWith(rest), text.slice(placeInValue(text, member, index)));
    });
  }
});

test('lines of key=value become JSON', () => {
  assert.deepEqual(valuesOf(jsonOfLines('# note\na = b \r\nline_items=[{"name":"x"}]\nc="\n')),
    { a: ' b ', line_items: '[{"name":"x"}]', c: '"' });
  for (const text of ['', '{"a": 1}', 'a\nb=c', 'some words', '=x']) assert.equal(jsonOfLines(text), null, text);
});
