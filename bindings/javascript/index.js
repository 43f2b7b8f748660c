// Receipts of card transactions: what the package offers. README.md describes it.

import { documentOf } from './src/documents.js';
import { call, load as loadModule, textsOf } from './src/module.js';
import { optionsOf, prepare, settingsForPrinting } from './src/options.js';
import { appendTexts, isWellFormed, placesIn, refuseCharacters } from './src/record.js';
import { SEVERITIES } from './src/words.js';

export { optionsOf };

const FINDING_TEXTS = 7;
const PRINTED_NUMBERS = 4;
const NO_COPY = 1; // a fault of printing

// The option that is at fault when a receipt cannot be printed; the others are the receipt's.
const OPTIONS_AT_FAULT = { 4: 'printer.codePage', 5: 'width', 6: 'printer.logo', 7: 'printer.qr' };

export function load(source = new URL('./qelrcpt.wasm', import.meta.url)) {
  return loadModule(() => source, globalThis.crypto);
}

class Copy {
  #layout;

  constructor(name, blocks, layout) {
    this.name = name;
    this.blocks = blocks;
    this.#layout = layout;
  }

  block(name) {
    return this.blocks.find((block) => block.name === name)?.text;
  }

  get text() {
    return documentOf([this], this.#layout);
  }
}

class Receipt {
  #layout;

  constructor(isApproved, customer, merchant, layout) {
    this.form = layout.form;
    this.approved = isApproved;
    this.customer = customer;
    this.merchant = merchant;
    this.#layout = layout;
  }

  get copies() {
    return [this.customer, this.merchant].filter((copy) => copy !== undefined);
  }

  get text() {
    return documentOf(this.copies, this.#layout);
  }
}

// Runs an operation on a record. Everything of the record is read before the module is called, so that
// a getter may do what it likes.
function run(operation, prepared, settings, record, read) {
  const { heads } = prepared;
  const texts = heads.slice();
  appendTexts(texts, record);
  const request = `${texts.join('\0')}\0`;
  settings[0] = texts.length;
  const result = isWellFormed(request)
    ? call(operation, { settings, zone: heads[0], request, read: (bytes, module) => read(bytes, module, texts) })
    : undefined;
  if (result === undefined) refuseCharacters(texts, heads.length);
  return result;
}

// The blocks of receipts, by their keys with commas between them, of which there are few.
const known = new Map();
const MOST_KNOWN = 256;

function namesOf(keys) {
  let names = known.get(keys);
  if (names === undefined) {
    names = keys
      .split(',')
      .filter((key) => key !== '')
      .map((key) => ({ isCustomer: key.startsWith('cust_'), name: key.slice(key.indexOf('_') + 1) }));
    if (known.size >= MOST_KNOWN) known.clear();
    known.set(keys, names);
  }
  return names;
}

function readReceipt(bytes, module, layout) {
  const texts = textsOf(bytes, module);
  const [approved, keys] = texts;
  const customer = [];
  const merchant = [];
  namesOf(keys).forEach(({ isCustomer, name }, index) => {
    (isCustomer ? customer : merchant).push({ name, text: texts[index + 2] });
  });
  const copyOf = (name, blocks) => (blocks.length === 0 ? undefined : new Copy(name, blocks, layout));
  return new Receipt(approved === '1', copyOf('customer', customer), copyOf('merchant', merchant), layout);
}

function readFindings(bytes, module, record) {
  const texts = textsOf(bytes, module);
  const findings = [];
  const places = new Map(); // by key
  for (let i = 0; i + FINDING_TEXTS <= texts.length; i += FINDING_TEXTS) {
    const [severity, rule, key, offset, message, source, date] = texts.slice(i, i + FINDING_TEXTS);
    const finding = { severity: SEVERITIES[severity], rule, key, message };
    if (offset !== '') {
      if (!places.has(key)) places.set(key, placesIn(record.get(key)));
      finding.offset = places.get(key)(Number(offset));
    }
    if (source !== '') Object.assign(finding, { source, date });
    findings.push(finding);
  }
  return findings;
}

function refusePrinting(fault, module, columns) {
  const option = OPTIONS_AT_FAULT[fault];
  const begin = option === undefined ? '' : `${option}: `;
  const width = option === 'width' ? `${columns} columns: ` : '';
  throw new TypeError(begin + width + module.textAt(module.exports.print_fault(fault)));
}

function readPrinted(bytes, module, { form, paperWidth }) {
  const printed = { form, customer: undefined, merchant: undefined };
  const numbers = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
  let at = 0;
  for (const name of ['customer', 'merchant']) {
    const number = (index) => numbers.getUint32(at + index * 4, true);
    const [fault, length, replaced, hasBarcode] = [number(0), number(1), number(2), number(3)];
    at += PRINTED_NUMBERS * 4;
    if (fault === NO_COPY) continue;
    if (fault !== 0) refusePrinting(fault, module, paperWidth);
    printed[name] = { bytes: bytes.slice(at, at + length), replaced, hasBarcode: hasBarcode !== 0 };
    at += length;
  }
  return printed;
}

export class Renderer {
  #prepared;

  constructor(options) {
    this.#prepared = prepare(options);
  }

  render(record) {
    const prepared = this.#prepared;
    return run('render', prepared, prepared.settings, record, (bytes, module) => readReceipt(bytes, module, prepared));
  }

  check(record) {
    const prepared = this.#prepared;
    return run('check', prepared, prepared.settings, record, (bytes, module, texts) => {
      const values = new Map();
      for (let i = prepared.heads.length; i < texts.length; i += 2) values.set(texts[i], texts[i + 1]);
      return readFindings(bytes, module, values);
    });
  }

  print(record) {
    const prepared = this.#prepared;
    if (!prepared.isText)
      throw new TypeError(`form: '${prepared.form}' is for no printer, expected plain, moneris or moneris-ecomm`);
    return run('print', prepared, settingsForPrinting(prepared), record, (bytes, module) =>
      readPrinted(bytes, module, prepared),
    );
  }
}

export function render(record, options) {
  return new Renderer(options).render(record);
}

export function check(record, options) {
  return new Renderer(options).check(record);
}

export function print(record, options) {
  return new Renderer(options).print(record);
}
