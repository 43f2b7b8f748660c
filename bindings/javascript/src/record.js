// From an object to the texts of a record.

import { DOCUMENT_KEYS } from './words.js';

const MOST_LEVELS = 512; // of JSON that the library reads

// With escapes for control characters and the like.
export function quoted(text) {
  return `'${JSON.stringify(text).slice(1, -1).replaceAll('\\"', '"')}'`;
}

function refuse(key, what) {
  throw new TypeError(`${quoted(key)} ${what}`);
}

// Decimal text without an exponent.
function decimal(number) {
  const text = String(number);
  const mark = text.indexOf('e');
  if (mark < 0) return text;
  const sign = text.startsWith('-') ? '-' : '';
  const [units, decimals = ''] = text.slice(sign.length, mark).split('.');
  const point = units.length + Number(text.slice(mark + 1));
  const digits = units + decimals;
  if (point <= 0) return `${sign}0.${'0'.repeat(-point)}${digits}`;
  return sign + digits.padEnd(point, '0');
}

export function isPlainObject(value) {
  if (typeof value !== 'object' || value === null) return false;
  const prototype = Object.getPrototypeOf(value);
  // The second for objects of another window or context.
  return prototype === null || Object.getPrototypeOf(prototype) === null;
}

export function kindOf(value) {
  if (value === null || value === undefined) return String(value);
  if (Array.isArray(value)) return 'an array';
  if (typeof value !== 'object') return `a ${typeof value}`;
  return isPlainObject(value) ? 'an object' : `an object of ${Object.prototype.toString.call(value).slice(8, -1)}`;
}

// The text of what is no object; undefined for what has none.
function scalar(value, key) {
  switch (typeof value) {
    case 'string':
      return value;
    case 'number':
      if (!Number.isFinite(value)) refuse(key, `holds ${value}, expected a finite number`);
      return decimal(value);
    case 'bigint':
    case 'boolean':
      return String(value);
    default:
      return undefined;
  }
}

// What is to be JSON with texts for its numbers and booleans, as the library wants them. What holds
// none is given as it is.
function withTexts(value, key, level) {
  if (typeof value === 'string' || value === null || value === undefined) return value;
  const text = scalar(value, key);
  if (text !== undefined) return text;
  const isArray = Array.isArray(value);
  if (!isArray && !isPlainObject(value))
    refuse(key, `holds ${kindOf(value)}, expected texts, numbers, booleans, arrays and plain objects`);
  if (level > MOST_LEVELS) refuse(key, `is nested too deeply, expected at most ${MOST_LEVELS} levels`);
  let changed;
  for (const name of Object.keys(value)) {
    const made = withTexts(value[name], key, level + 1);
    if (made === value[name]) continue;
    changed ??= isArray ? value.slice() : { __proto__: null, ...value };
    changed[name] = made;
  }
  return changed ?? value;
}

// Half of a surrogate pair is written as its escape.
function json(value, key) {
  const text = JSON.stringify(withTexts(value, key, 1));
  if (/(?<!\\)(?:\\\\)*\\u[dD][89a-fA-F]/.test(text)) refuse(key, 'holds half of a surrogate pair');
  return text;
}

function textOf(value, key) {
  const text = scalar(value, key);
  if (text !== undefined) return text;
  if (DOCUMENT_KEYS.includes(key)) return json(value, key);
  return refuse(key, `is ${kindOf(value)}, expected a text, a number, true or false`);
}

// The keys of a record, each with its value behind it. Throws a TypeError that names the key.
export function appendTexts(texts, record) {
  if (!isPlainObject(record)) throw new TypeError(`the record is ${kindOf(record)}, expected a plain object`);
  for (const key of Object.keys(record)) {
    const value = record[key];
    if (value === null || value === undefined) continue;
    texts.push(key, typeof value === 'string' ? value : textOf(value, key));
  }
}

// Whether the text is what UTF-8 can hold.
export const isWellFormed =
  typeof ''.isWellFormed === 'function' ? (text) => text.isWellFormed() : (text) => !/\p{Surrogate}/u.test(text);

// Says which of the keys, from that place on, has what no record can hold.
export function refuseCharacters(texts, from) {
  for (let i = from; i < texts.length; i += 2) {
    if (!isWellFormed(`${texts[i]}\0${texts[i + 1]}`)) refuse(texts[i], 'holds half of a surrogate pair');
    if (`${texts[i]}${texts[i + 1]}`.includes('\0')) refuse(texts[i], 'holds a NUL character');
  }
}

// Tells of places in bytes of UTF-8 where they are in the text, in UTF-16 units. Each is sought from the
// one before, for the findings of a large value come in about its order.
export function placesIn(text) {
  let bytes = 0;
  let index = 0;
  return (offset) => {
    while (bytes < offset && index < text.length) {
      const code = text.codePointAt(index);
      bytes += code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
      index += code < 0x10000 ? 1 : 2;
    }
    while (bytes > offset) {
      const unit = text.charCodeAt(index - 1);
      const isPair = (unit & 0xfc00) === 0xdc00;
      bytes -= unit < 0x80 ? 1 : unit < 0x800 ? 2 : isPair ? 4 : 3;
      index -= isPair ? 2 : 1;
    }
    return index;
  };
}
