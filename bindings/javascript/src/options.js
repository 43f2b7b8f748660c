// From the options of a call to the numbers and texts that the module takes.

import { isPlainObject, isWellFormed, kindOf, quoted } from './record.js';
import {
  CODE_PAGES,
  COUNTRIES,
  CURRENCIES,
  CUTS,
  FORMS,
  INDUSTRIES,
  LANGUAGES,
  PRINTER_LANGUAGES,
  QR_LEVELS,
} from './words.js';
import { isZone } from './zones.js';

const USUAL_WIDTH = 40;

export const LINE_BREAKS = { lf: '\n', crlf: '\r\n' };

// By bits.
export const COPIES = { customer: 1, merchant: 2, both: 3 };

// The numbers of a call in the order of the module's.
const SETTINGS = [
  'texts',
  'form',
  'customerLanguage',
  'merchantLanguage',
  'country',
  'currency',
  'industry',
  'width',
  'lineBreak',
  'raw',
  'copies',
  'printerLanguage',
  'paper',
  'columns',
  'codePage',
  'hasCodePageNumber',
  'codePageNumber',
  'noEmphasis',
  'cut',
  'feed',
  'drawer',
  'logoNumber',
  'barcode',
  'qrLevel',
  'qrModule',
];

function listed(words) {
  return words.length < 2 ? words.join('') : `${words.slice(0, -1).join(', ')} or ${words.at(-1)}`;
}

function refuse(name, value, expected) {
  const shown = typeof value === 'string' ? quoted(value) : typeof value === 'number' ? value : kindOf(value);
  throw new TypeError(`${name}: ${shown} is unknown, expected ${expected}`);
}

// What is made of an option's value, by the option's name. Each throws a TypeError that names it.

function wordOf(words) {
  return (value, name) => {
    if (typeof value === 'string' && Object.hasOwn(words, value)) return words[value];
    return refuse(name, value, listed(Object.keys(words)));
  };
}

// The words are in lower case, the value may be in any.
function caselessWordOf(words) {
  return (value, name) => {
    const word = typeof value === 'string' ? value.toLowerCase() : undefined;
    if (word !== undefined && Object.hasOwn(words, word)) return words[word];
    return refuse(name, value, listed(Object.keys(words)));
  };
}

function numberOf(least, most) {
  return (value, name) => {
    if (Number.isInteger(value) && value >= least && value <= most) return value;
    return refuse(name, value, `a whole number from ${least} to ${most}`);
  };
}

function flagOf(value, name) {
  return typeof value === 'boolean' ? value : refuse(name, value, 'true or false');
}

// An ISO code: a word in any case of its letters, or a number, which may be a text.
function codeOf(words) {
  return (value, name) => {
    const text = typeof value === 'number' ? String(value) : value;
    if (typeof text === 'string') {
      const word = text.toUpperCase();
      if (Object.hasOwn(words, word)) return words[word];
      if (/^\d{1,9}$/.test(text) && Number(text) >= 1 && Number(text) <= 999) return Number(text);
    }
    return refuse(name, value, `${listed(Object.keys(words))}, or a number from 1 to 999`);
  };
}

// Names in an array, or in a text with commas between them.
function industryOf(value, name) {
  const names = typeof value === 'string' ? value.split(',').map((part) => part.trim()) : value;
  if (!Array.isArray(names)) return refuse(name, value, listed(Object.keys(INDUSTRIES)));
  return names.reduce((bits, part) => bits | caselessWordOf(INDUSTRIES)(part, name), 0);
}

function zoneOf(value, name) {
  if (typeof value === 'string' && isZone(value)) return value;
  return refuse(name, value, 'a time zone of this platform such as America/Toronto');
}

function formOf(value, name) {
  wordOf(FORMS)(value, name);
  return value;
}

function textOf(value, name) {
  const isText = typeof value === 'string' && value !== '' && !value.includes('\0') && isWellFormed(value);
  return isText ? value : refuse(name, value, 'a text that is not empty');
}

// The names of blocks; which there are depends on the form.
function namesOf(value, name) {
  return Array.isArray(value) ? value : refuse(name, value, 'an array of names of blocks');
}

// The number of a logo, or the two characters of its key.
function logoOf(value, name) {
  if (typeof value === 'string' && /^[\x20-\x7e]{2}$/.test(value)) return value;
  if (typeof value === 'string') return refuse(name, value, 'a key of two characters, or a number from 1 to 255');
  return numberOf(1, 255)(value, name);
}

// The options of a group: those that are given, each as the module takes it. What is undefined or
// null is not given.
function read(readers, given, prefix) {
  const taken = {};
  for (const name of Object.keys(given)) {
    const value = given[name];
    if (!Object.hasOwn(readers, name)) {
      const names = Object.keys(readers).map((known) => prefix + known);
      throw new TypeError(`${prefix}${name}: there is no such option, expected ${listed(names)}`);
    }
    if (value !== undefined && value !== null) taken[name] = readers[name](value, prefix + name);
  }
  return taken;
}

const PRINTER = {
  language: wordOf(PRINTER_LANGUAGES),
  paper: numberOf(10, 255),
  codePage: wordOf(CODE_PAGES),
  codePageNumber: numberOf(0, 255),
  emphasis: flagOf,
  cut: wordOf(CUTS),
  feed: numberOf(0, 255),
  drawer: numberOf(1, 2),
  logo: logoOf,
  barcode: flagOf,
  qr: textOf,
  qrLevel: wordOf(QR_LEVELS),
  qrModule: numberOf(1, 16),
};

function printerOf(value, name) {
  return isPlainObject(value) ? read(PRINTER, value, `${name}.`) : refuse(name, value, 'an object');
}

const OPTIONS = {
  form: formOf,
  width: numberOf(10, 10000),
  lineBreak: wordOf(LINE_BREAKS),
  copy: wordOf(COPIES),
  blocks: namesOf,
  raw: flagOf,
  language: caselessWordOf(LANGUAGES),
  customerLanguage: caselessWordOf(LANGUAGES),
  merchantLanguage: caselessWordOf(LANGUAGES),
  country: codeOf(COUNTRIES),
  currency: codeOf(CURRENCIES),
  industry: industryOf,
  timeZone: zoneOf,
  printer: printerOf,
};

function checkBlocks(form, names) {
  for (const name of names) {
    if (!FORMS[form].blocks.includes(name)) refuse('blocks', name, listed(FORMS[form].blocks));
  }
}

// What a call needs to know: for the module its numbers and its first texts, for the result the form
// and its layout.
export function prepare(given = {}) {
  if (!isPlainObject(given)) throw new TypeError(`the options are ${kindOf(given)}, expected an object`);
  const taken = read(OPTIONS, given, '');
  const { form = 'plain', blocks = [], lineBreak = '\n', printer = {} } = taken;
  checkBlocks(form, blocks);
  const industry = taken.industry ?? INDUSTRIES.unknown;
  const isEcommerce = (industry & INDUSTRIES.ecomm) !== 0;
  const shown = (isEcommerce && FORMS[form].ecommerce) || form;
  const widthOf = (usual) => FORMS[shown].width ?? taken.width ?? usual;
  const width = widthOf(USUAL_WIDTH);
  const paperWidth = widthOf(printer.paper ?? USUAL_WIDTH);
  const logo = printer.logo ?? 0;
  const numbers = {
    form: Object.keys(FORMS).indexOf(form),
    customerLanguage: taken.customerLanguage ?? taken.language ?? LANGUAGES.en,
    merchantLanguage: taken.merchantLanguage ?? taken.language ?? LANGUAGES.en,
    country: taken.country ?? COUNTRIES.US,
    currency: taken.currency ?? CURRENCIES.USD,
    industry,
    width,
    lineBreak: lineBreak === '\r\n' ? 1 : 0,
    raw: taken.raw ? 1 : 0,
    copies: taken.copy ?? COPIES.both,
    printerLanguage: printer.language ?? PRINTER_LANGUAGES.escpos,
    paper: printer.paper ?? 0,
    columns: paperWidth,
    codePage: printer.codePage ?? 0,
    hasCodePageNumber: printer.codePageNumber === undefined ? 0 : 1,
    codePageNumber: printer.codePageNumber ?? 0,
    noEmphasis: printer.emphasis === false ? 1 : 0,
    cut: printer.cut ?? CUTS.full,
    feed: printer.feed ?? 0,
    drawer: printer.drawer ?? 0,
    logoNumber: typeof logo === 'number' ? logo : 0,
    barcode: printer.barcode ? 1 : 0,
    qrLevel: printer.qrLevel ?? 0,
    qrModule: printer.qrModule ?? 0,
  };
  return {
    settings: Uint32Array.from(SETTINGS, (name) => numbers[name] ?? 0),
    heads: [taken.timeZone ?? '', blocks.join(','), typeof logo === 'string' ? logo : '', printer.qr ?? ''],
    form: shown,
    isText: FORMS[form].isText === true,
    width,
    paperWidth,
    lineBreak,
    blockLineBreak: FORMS[shown].lineBreak ?? lineBreak,
  };
}

// The numbers for printing: a plain receipt is as wide as the paper that is named, unless a width is.
export function settingsForPrinting({ settings, paperWidth }) {
  const printing = settings.slice();
  printing[SETTINGS.indexOf('width')] = paperWidth;
  return printing;
}

const CONFIG = {
  lang: 'language',
  customer_lang: 'customerLanguage',
  merchant_lang: 'merchantLanguage',
  country: 'country',
  currency: 'currency',
  industry: 'industry',
  timezone: 'timeZone',
};

// The options that the "config" of a record file of the command stands for.
export function optionsOf(config) {
  if (!isPlainObject(config)) throw new TypeError(`the config is ${kindOf(config)}, expected an object`);
  const options = {};
  for (const name of Object.keys(config)) {
    if (!Object.hasOwn(CONFIG, name))
      throw new TypeError(`${name}: there is no such setting, expected ${listed(Object.keys(CONFIG))}`);
    options[CONFIG[name]] = config[name];
  }
  return options;
}
