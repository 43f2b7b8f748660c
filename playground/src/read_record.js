// Reads a record as the command does: a JSON object of texts, alone or in an envelope with its
// merchant, and remembers where each key stands. Numbers and booleans count as their own text, what is
// nested as the JSON that is written there, and null as absent.

const MOST_LEVELS = 512;
const BLANKS = ' \t\n\r';

export class TextFault extends Error {
  constructor(message, from, to = from + 1) {
    super(message);
    this.from = from;
    this.to = to;
  }
}

// A JSON number as decimal text without an exponent: 1.0E7 is 10000000.
export function decimalText(number) {
  const [significand, exponentText] = number.split(/e/i);
  const exponent = Number(exponentText ?? 0);
  if (exponentText === undefined || Math.abs(exponent) > 400) return number;
  const sign = significand.startsWith('-') ? '-' : '';
  const [units, decimals = ''] = significand.slice(sign.length).split('.');
  const digits = units + decimals;
  const point = units.length + exponent;
  if (point <= 0) return `${sign}0.${'0'.repeat(-point)}${digits}`;
  if (point >= digits.length) return sign + digits + '0'.repeat(point - digits.length);
  return `${sign}${digits.slice(0, point)}.${digits.slice(point)}`;
}

class Reader {
  constructor(text) {
    this.text = text;
    this.at = text.startsWith('\uFEFF') ? 1 : 0;
    this.levels = 0;
  }

  fail(message, from = this.at, to = from + 1) {
    throw new TextFault(message, from, to);
  }

  unexpected(wanted, at = this.at) {
    const found = at < this.text.length ? `'${String.fromCodePoint(this.text.codePointAt(at))}'` : 'the end';
    this.fail(`Unexpected ${found}, expected ${wanted}`, at);
  }

  skipBlanks() {
    for (;;) {
      while (this.at < this.text.length && BLANKS.includes(this.text[this.at])) this.at++;
      if (this.text[this.at] !== '/') return;
      this.skipComment();
    }
  }

  skipComment() {
    const begin = this.at;
    const opening = this.text.slice(begin, begin + 2);
    if (opening !== '//' && opening !== '/*') this.fail("Unexpected '/', expected a comment to begin with // or /*");
    const ending = opening === '//' ? /[\r\n]/g : /\*\//g;
    ending.lastIndex = begin + 2;
    const isEnded = ending.test(this.text);
    if (!isEnded && opening === '/*') this.fail('Comment without an end, expected */', begin, begin + 2);
    this.at = isEnded ? ending.lastIndex : this.text.length;
  }

  // Takes the character when it comes next, after blanks.
  take(character) {
    this.skipBlanks();
    if (this.text[this.at] !== character) return false;
    this.at++;
    return true;
  }

  string() {
    const begin = this.at++;
    let value = '';
    for (;;) {
      const from = this.at;
      while (this.at < this.text.length && !/["\\\u0000-\u001F]/.test(this.text[this.at])) this.at++;
      value += this.text.slice(from, this.at);
      const stop = this.text[this.at];
      if (stop === undefined || stop === '\n' || stop === '\r')
        this.fail('Text without a closing quote', begin, this.at);
      if (stop === '"') break;
      if (stop !== '\\') this.fail('Control character in a text, expected an escape such as \\n');
      value += this.escape();
    }
    this.at++;
    return value;
  }

  escape() {
    const SHORT = { '"': '"', '\\': '\\', '/': '/', b: '\b', f: '\f', n: '\n', r: '\r', t: '\t' };
    const begin = this.at;
    const letter = this.text[begin + 1];
    this.at += 2;
    if (letter in SHORT) return SHORT[letter];
    if (letter !== 'u') this.fail('Unknown escape, expected \\" \\\\ \\/ \\b \\f \\n \\r \\t or \\u', begin, begin + 2);
    const first = this.codeUnit(begin);
    if ((first & 0xf800) !== 0xd800) return String.fromCharCode(first);
    let second = 0;
    if (first < 0xdc00 && this.text.startsWith('\\u', this.at)) {
      this.at += 2;
      second = this.codeUnit(begin);
    }
    if ((second & 0xfc00) !== 0xdc00) this.fail('Half of a surrogate pair, expected two \\u escapes', begin, this.at);
    return String.fromCharCode(first, second);
  }

  codeUnit(begin) {
    const digits = this.text.slice(this.at, this.at + 4);
    if (!/^[0-9a-f]{4}$/i.test(digits))
      this.fail('Incomplete escape, expected four hexadecimal digits after \\u', begin, begin + 2);
    this.at += 4;
    return parseInt(digits, 16);
  }

  // A number, true, false or null, as it is written.
  word() {
    const begin = this.at;
    const [number] = /^-?\d*(?:\.\d*)?(?:[eE][+-]?\d*)?/.exec(this.text.slice(begin, begin + 1000));
    if (number !== '') {
      this.at += number.length;
      if (!/^-?(?:0|[1-9]\d*)(?:\.\d+)?(?:[eE][+-]?\d+)?$/.test(number))
        this.fail(/^-?0\d/.test(number) ? 'A number does not begin with 0' : 'Incomplete number, expected a digit', begin, this.at);
      if (!Number.isFinite(Number(number))) this.fail('Number out of range', begin, this.at);
      return { text: decimalText(number), isNumber: true };
    }
    for (const text of ['true', 'false', 'null']) {
      if (!this.text.startsWith(text, begin)) continue;
      this.at += text.length;
      return { text, isNumber: false };
    }
    return this.unexpected('a value');
  }

  // "key": , with the place of the key.
  name(wanted) {
    this.skipBlanks();
    const from = this.at;
    if (this.text[from] !== '"') this.unexpected(wanted);
    const key = this.string();
    const to = this.at;
    if (!this.take(':')) this.unexpected("':' after the key");
    this.skipBlanks();
    return { key, from, to };
  }

  // Calls member(name) in front of each value of an object.
  object(member) {
    const begin = this.at++;
    this.open(begin);
    if (!this.take('}')) {
      let wanted = "a key in double quotes or '}'";
      do {
        member(this.name(wanted));
        wanted = 'a key in double quotes';
      } while (this.take(','));
      if (!this.take('}')) this.unexpected("',' or '}'");
    }
    this.levels--;
  }

  array(element) {
    this.open(this.at++);
    if (!this.take(']')) {
      do {
        this.skipBlanks();
        element();
      } while (this.take(','));
      if (!this.take(']')) this.unexpected("',' or ']'");
    }
    this.levels--;
  }

  open(begin) {
    if (++this.levels > MOST_LEVELS) this.fail(`Nested too deeply, expected at most ${MOST_LEVELS} levels`, begin);
  }

  // The value as the text that the record gets, in pieces with the place that each begins at; null for
  // null.
  value() {
    const from = this.at;
    const character = this.text[from];
    if (character === '"') return { text: this.string(), isText: true, from, to: this.at };
    if (character !== '{' && character !== '[') {
      const { text } = this.word();
      return text === 'null' ? null : { text, from, to: this.at };
    }
    const pieces = [];
    const outer = this.levels;
    this.levels = 0;
    this.copied = from;
    this.nested(pieces);
    this.levels = outer;
    pieces.push({ at: this.copied, text: this.text.slice(this.copied, this.at) });
    return { text: pieces.map((piece) => piece.text).join(''), pieces, from, to: this.at };
  }

  nested(pieces) {
    const character = this.text[this.at];
    if (character === '{') return this.object(() => this.nested(pieces));
    if (character === '[') return this.array(() => this.nested(pieces));
    if (character === '"') return void this.string();
    const begin = this.at;
    const { text } = this.word();
    if (text === 'null') return;
    pieces.push({ at: this.copied, text: this.text.slice(this.copied, begin) }, { at: begin, text: `"${text}"` });
    this.copied = this.at;
  }

  // The members of an object; sections are those of an envelope.
  members(sections = []) {
    const found = [];
    const opened = {};
    this.object((name) => {
      if (sections.includes(name.key) && this.text[this.at] === '{') {
        const from = this.at;
        opened[name.key] = { members: this.members().found, from };
        return;
      }
      const value = this.value();
      if (value) found.push({ key: name.key, from: name.from, to: name.to, value });
    });
    return { found, opened };
  }
}

// Reads the text. Gives the record's values by key, its members in their order with their places in the
// text, where the record begins, and what an envelope says of the merchant. Throws TextFault.
export function readRecord(text) {
  const reader = new Reader(text);
  reader.skipBlanks();
  if (reader.text[reader.at] !== '{') reader.unexpected("a record: a JSON object, which begins with '{'");
  const begin = reader.at;
  const { found, opened } = reader.members(['record', 'config']);
  reader.skipBlanks();
  if (reader.at < text.length) reader.unexpected('nothing after the object');
  const members = opened.record ? opened.record.members : found;
  const record = Object.create(null);
  for (const { key, value } of members) record[key] = value.text;
  const config = opened.config && Object.fromEntries(opened.config.members.map(({ key, value }) => [key, value.text]));
  return { record, members, begin: opened.record?.from ?? begin, config, isEnvelope: Boolean(opened.record || opened.config) };
}

// Where in the text the character of a member's value is that has this index.
export function placeInValue(text, { value }, index) {
  if (value.isText) return placeInString(text, value, index);
  let left = index;
  for (const piece of value.pieces ?? [{ at: value.from, text: value.text }]) {
    const isCopied = text.startsWith(piece.text, piece.at); // and no number that became a text
    if (left < piece.text.length) return isCopied ? piece.at + left : piece.at;
    left -= piece.text.length;
  }
  return value.to - 1;
}

function placeInString(text, value, index) {
  let at = value.from + 1;
  for (let left = index; left > 0 && at < value.to - 1; left--) {
    const isEscape = text[at] === '\\';
    at += isEscape ? (text[at + 1] === 'u' ? 6 : 2) : 1;
  }
  return Math.min(at, value.to - 1);
}

// Lines of key=value as a JSON object; null when the text is something else.
export function jsonOfLines(text) {
  const lines = text.split(/\r?\n/).filter((line) => line.trim() !== '' && !line.trimStart().startsWith('#'));
  if (lines.length === 0 || /^\s*[{[]/.test(text) || !lines.every((line) => line.indexOf('=') > 0)) return null;
  const members = lines.map((line) => {
    const at = line.indexOf('=');
    const value = line.slice(at + 1);
    return `  ${JSON.stringify(line.slice(0, at).trim())}: ${isNested(value) ? value : JSON.stringify(value)}`;
  });
  return `{\n${members.join(',\n')}\n}\n`;
}

function isNested(text) {
  if (!/^\s*[{[]/.test(text)) return false;
  try {
    readRecord(`{"value":${text}}`);
    return true;
  } catch {
    return false;
  }
}
