// A receipt printer that prints on the screen: reads the bytes for a printer back into what is on the
// paper, an element each: { kind: 'line', align, spans: [{ text, bold, tall, inverted }] }, 'barcode',
// 'qr', 'logo', 'feed', 'cut' and 'drawer'. Bytes that it does not know are a fault of the page.
import pages from 'code-pages'; // the characters of the bytes 0x80 to 0xFF by the page's name

const ALIGNMENTS = ['left', 'center', 'right'];

class Printer {
  constructor(bytes, page) {
    this.bytes = bytes;
    this.page = [...pages[page]];
    this.at = 0;
    this.printed = [];
    this.barcode = {};
    this.qr = {};
    this.reset();
  }

  reset() {
    this.style = { bold: false, tall: false, inverted: false };
    this.align = 'left';
    this.fontB = false;
    this.spans = [];
  }

  byte() {
    if (this.at >= this.bytes.length) throw new Error('the bytes for the printer end in a command');
    return this.bytes[this.at++];
  }

  text(length) {
    const bytes = this.bytes.subarray(this.at, (this.at += length));
    return new TextDecoder('utf-8', { ignoreBOM: true }).decode(bytes);
  }

  word() {
    return this.byte() + 256 * this.byte();
  }

  character(byte) {
    const text = byte < 0x80 ? String.fromCharCode(byte) : this.page[byte - 0x80];
    const last = this.spans.at(-1);
    if (last && last.style === this.style) last.text += text;
    else this.spans.push({ style: this.style, text });
  }

  set(change) {
    this.style = { ...this.style, ...change };
  }

  put(element) {
    this.printed.push({ align: this.align, ...element });
  }

  endLine() {
    this.put({ kind: 'line', fontB: this.fontB, spans: this.spans.map(({ style, text }) => ({ ...style, text })) });
    this.spans = [];
  }
}

function code128Text(data) {
  let text = '';
  let set = '';
  for (let at = 0; at < data.length; at++) {
    const character = data[at];
    if (character === '{') {
      const selected = data[++at];
      if (selected === '{') text += '{';
      else set = selected;
    } else text += set === 'C' ? String(character.charCodeAt(0)).padStart(2, '0') : character;
  }
  return text;
}

function escposQr(printer) {
  const length = printer.word();
  printer.byte(); // QR
  const task = String.fromCharCode(printer.byte());
  const data = printer.text(length - 2);
  if (task === 'C') printer.qr.module = data.charCodeAt(0);
  if (task === 'E') printer.qr.level = 'LMQH'[data.charCodeAt(0) - 48];
  if (task === 'P') printer.qr.text = data.slice(1);
  if (task === 'Q') printer.put({ kind: 'qr', ...printer.qr });
}

function starBarcode(printer) {
  const [, , module, height] = [printer.byte(), printer.byte(), printer.byte() + 1, printer.byte()];
  const end = printer.bytes.indexOf(0x1e, printer.at);
  const text = printer.text(end - printer.at).replaceAll('%0', '%');
  printer.byte();
  printer.put({ kind: 'barcode', text, module, height });
}

const skip = (count) => (printer) => {
  printer.at += count;
};
const bold = (printer, on) => printer.set({ bold: on });

const ESC = '\x1B';
const FS = '\x1C';
const GS = '\x1D';
const RS = '\x1E';

const ESCPOS = {
  [`${ESC}@`]: (printer) => printer.reset(),
  [`${FS}.`]: skip(0),
  [`${ESC}R`]: skip(1),
  [`${ESC}t`]: skip(1),
  [`${ESC}M`]: (printer) => (printer.fontB = printer.byte() === 1),
  [`${ESC}E`]: (printer) => bold(printer, printer.byte() === 1),
  [`${GS}!`]: (printer) => printer.set({ tall: (printer.byte() & 7) > 0 }),
  [`${GS}B`]: (printer) => printer.set({ inverted: printer.byte() === 1 }),
  [`${ESC}a`]: (printer) => (printer.align = ALIGNMENTS[printer.byte()]),
  [`${ESC}d`]: (printer) => printer.put({ kind: 'feed', lines: printer.byte() }),
  [`${ESC}p`]: (printer) => {
    printer.put({ kind: 'drawer', number: printer.byte() + 1 });
    printer.at += 2;
  },
  [`${FS}p`]: (printer) => printer.put({ kind: 'logo', name: String(printer.word() & 255) }),
  [`${GS}(L`]: (printer) => {
    printer.at += 4;
    printer.put({ kind: 'logo', name: printer.text(2) });
    printer.at += 2;
  },
  [`${GS}h`]: (printer) => (printer.barcode.height = printer.byte()),
  [`${GS}w`]: (printer) => (printer.barcode.module = printer.byte()),
  [`${GS}H`]: skip(1),
  [`${GS}f`]: skip(1),
  [`${GS}kI`]: (printer) =>
    printer.put({ kind: 'barcode', ...printer.barcode, text: code128Text(printer.text(printer.byte())) }),
  [`${GS}(k`]: escposQr,
  [`${GS}V`]: (printer) => {
    printer.put({ kind: 'cut', full: printer.byte() === 65 });
    printer.at += 1;
  },
};

const STAR = {
  [`${ESC}@`]: (printer) => printer.reset(),
  [`${ESC}R`]: skip(1),
  [`${ESC}${GS}t`]: skip(1),
  [`${ESC}${RS}F`]: (printer) => (printer.fontB = printer.byte() === 1),
  [`${ESC}E`]: (printer) => bold(printer, true),
  [`${ESC}F`]: (printer) => bold(printer, false),
  [`${ESC}h`]: (printer) => printer.set({ tall: printer.byte() > 0 }),
  [`${ESC}4`]: (printer) => printer.set({ inverted: true }),
  [`${ESC}5`]: (printer) => printer.set({ inverted: false }),
  [`${ESC}${GS}a`]: (printer) => (printer.align = ALIGNMENTS[printer.byte()]),
  [`${ESC}a`]: (printer) => printer.put({ kind: 'feed', lines: printer.byte() }),
  '\x07': (printer) => printer.put({ kind: 'drawer', number: 1 }),
  '\x1A': (printer) => printer.put({ kind: 'drawer', number: 2 }),
  [`${ESC}${FS}p`]: (printer) => printer.put({ kind: 'logo', name: String(printer.word() & 255) }),
  [`${ESC}b`]: starBarcode,
  [`${ESC}${GS}yS0`]: skip(1),
  [`${ESC}${GS}yS1`]: (printer) => (printer.qr.level = 'LMQH'[printer.byte()]),
  [`${ESC}${GS}yS2`]: (printer) => (printer.qr.module = printer.byte()),
  [`${ESC}${GS}yD1`]: (printer) => {
    printer.at += 1;
    printer.qr.text = printer.text(printer.word());
  },
  [`${ESC}${GS}yP`]: (printer) => printer.put({ kind: 'qr', ...printer.qr }),
  [`${ESC}d`]: (printer) => printer.put({ kind: 'cut', full: printer.byte() === 2 }),
};

const COMMANDS = {
  escpos: Object.entries(ESCPOS),
  star: Object.entries(STAR),
};

function startsWith(bytes, at, letters) {
  for (let i = 0; i < letters.length; i++) if (bytes[at + i] !== letters.charCodeAt(i)) return false;
  return true;
}

// What the bytes print; the page is that of the characters beyond ASCII, such as "cp858".
export function printOnScreen(bytes, language, page) {
  const printer = new Printer(bytes, page);
  while (printer.at < bytes.length) {
    const byte = bytes[printer.at];
    if (byte === 10) {
      printer.at++;
      printer.endLine();
      continue;
    }
    const command = byte < 0x20 && COMMANDS[language].find(([letters]) => startsWith(bytes, printer.at, letters));
    if (command) {
      printer.at += command[0].length;
      command[1](printer);
    } else if (byte >= 0x20) {
      printer.at++;
      printer.character(byte);
    } else throw new Error(`a printer's command that is not known, at byte ${printer.at}`);
  }
  return printer.printed;
}
