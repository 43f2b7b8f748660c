// A card for each form: its receipts as they look, and as they are copied and downloaded.
import receiptStyle from '../../share/receipt.css';
import pageStyle from '../../tools/writing/page.css';
import { drawBarcode, drawQr } from './codes.js';
import { coloured } from './colours.js';
import { copyText, htmlPage } from './documents.js';
import { element, icon } from './dom.js';
import { elementOf } from './markup.js';
import { printOnScreen } from './paper.js';
import { Pieces } from './pieces.js';

const COPY_NAMES = { customer: 'Customer copy', merchant: 'Merchant copy' };

// name: as the library calls it; paper: a form of text, drawn on paper.
export const FORMS = [
  { name: 'plain', title: 'Plain text', tab: 'Text', paper: true, ending: 'txt', type: 'text/plain' },
  { name: 'html', title: 'HTML', tab: 'HTML', about: 'with share/receipt.css', ending: 'html', type: 'text/html' },
  { name: 'xml', title: 'XML', tab: 'XML', ending: 'xml', type: 'application/xml' },
  { name: 'json', title: 'JSON', tab: 'JSON', ending: 'json', type: 'application/json' },
  { name: 'moneris', title: 'Moneris in store', tab: 'Moneris', about: '40 columns', paper: true, ending: 'txt', type: 'text/plain' },
  { name: 'moneris-ecomm', title: 'Moneris e-commerce', tab: 'Moneris e-commerce', about: '70 columns', paper: true, ending: 'txt', type: 'text/plain' },
  { name: 'printer', title: 'Printer paper', tab: 'Printer', ending: 'bin', type: 'application/octet-stream' },
];

function figure(copy, paper) {
  const caption = COPY_NAMES[copy.name];
  return element('figure', { className: 'copy', 'aria-label': caption }, element('figcaption', {}, caption), paper);
}

// Keeps the elements of a card from one receipt to the next, so that what is unchanged stays as it is.
class Papers {
  constructor(make) {
    this.root = element('div', { className: 'papers' });
    this.make = make;
    this.shown = new Map();
  }

  show(copies, draw) {
    for (const [name, { figure: gone }] of this.shown) {
      if (copies.some((copy) => copy.name === name)) continue;
      gone.remove();
      this.shown.delete(name);
    }
    copies.forEach((copy, index) => {
      if (!this.shown.has(copy.name)) {
        const content = this.make();
        const made = figure(copy, content.paper);
        this.shown.set(copy.name, { figure: made, content });
        this.root.insertBefore(made, this.root.children[index] ?? null);
      }
      draw(this.shown.get(copy.name).content, copy, index);
    });
  }
}

// Sets the text where it is another one.
function setText(node, text) {
  if (node.textContent !== text) node.textContent = text;
}

class TextView {
  constructor(edge) {
    this.papers = new Papers(() => {
      const text = element('pre');
      const paper = element('div', { className: 'paper text' }, text);
      if (edge) paper.append(edge());
      return { paper, text };
    });
    this.root = this.papers.root;
  }

  show({ copies, width }) {
    this.papers.show(copies, ({ paper, text }, copy) => {
      paper.style.setProperty('--columns', width);
      setText(text, copyText(copy));
    });
  }
}

let sheet;

class HtmlView {
  constructor() {
    if (!sheet) {
      sheet = new CSSStyleSheet();
      sheet.replaceSync(receiptStyle);
    }
    this.papers = new Papers(() => {
      const paper = element('div', { className: 'paper html' });
      const shadow = paper.attachShadow({ mode: 'open' });
      shadow.adoptedStyleSheets = [sheet];
      const receipt = element('div');
      shadow.append(receipt);
      return { paper, receipt, blocks: new Pieces(receipt, elementOf) };
    });
    this.root = this.papers.root;
  }

  show({ copies, isApproved }) {
    this.papers.show(copies, ({ receipt, blocks }, copy) => {
      receipt.className = isApproved ? '' : 'rcpt_not_approved';
      blocks.show(copy.blocks.map((block) => block.text));
    });
  }
}

class CodeView {
  constructor(name) {
    this.code = element('pre', { className: 'code', tabIndex: 0, 'aria-label': name.toUpperCase(), role: 'region' });
    this.lines = new Pieces(this.code, (line) => element('span', {}, coloured(line, name)));
    this.root = element('div', { className: 'papers' }, this.code);
  }

  show({ text }) {
    this.lines.show(text.match(/[^\n]*\n|[^\n]+$/g) ?? []);
  }
}

const PRINTED = {
  line({ spans, align, fontB }) {
    const row = element('div', { className: `row ${align}${fontB ? ' font-b' : ''}` });
    for (const { text, bold, tall, inverted } of spans) {
      const looks = [bold && 'bold', tall && 'tall', inverted && 'inverted'].filter(Boolean).join(' ');
      row.append(looks ? element('span', { className: looks }, text) : text);
    }
    return row;
  },
  barcode({ text, module, height, align }) {
    const { modules, svg } = drawBarcode(text, height);
    svg.setAttribute('preserveAspectRatio', 'none');
    setSize(svg, modules * module, height);
    return element('div', { className: align }, svg, element('div', { className: 'row center' }, text));
  },
  qr({ text, level, module, align }) {
    const { modules, svg } = drawQr(text, level);
    setSize(svg, modules * module, modules * module);
    return element('div', { className: align }, svg);
  },
  logo: ({ name, align }) => element('div', { className: align }, element('span', { className: 'stored' }, `LOGO ${name}`)),
  feed: ({ lines }) => element('div', {}, ...Array.from({ length: lines }, () => element('div', { className: 'row' }))),
  cut: ({ full }) => element('div', { className: 'cut' }, full ? 'cut' : 'partial cut'),
  drawer: ({ number }) => element('div', { className: 'aside' }, `opens cash drawer ${number}`),
};

function setSize(svg, width, height) {
  svg.style.width = `calc(${width} * var(--dot))`;
  svg.style.height = `calc(${height} * var(--dot))`;
}

class PrinterView {
  constructor() {
    this.papers = new Papers(() => {
      const paper = element('div', { className: 'paper printed' });
      return { paper, printed: new Pieces(paper, (one) => PRINTED[one.kind](one)) };
    });
    this.root = this.papers.root;
  }

  show({ copies, printer }) {
    this.papers.show(copies, ({ paper, printed }, copy) => {
      paper.style.setProperty('--dots', 12 * printer.paper);
      printed.show(printOnScreen(copy.bytes, printer.language, printer.codePage));
    });
  }
}

function viewOf(form, edge) {
  if (form.name === 'plain') return new TextView(edge);
  if (form.paper) return new TextView();
  if (form.name === 'html') return new HtmlView();
  if (form.name === 'printer') return new PrinterView();
  return new CodeView(form.name);
}

const hex = (bytes) => Array.from(bytes, (byte) => byte.toString(16).padStart(2, '0')).join(' ');

function allBytes(copies) {
  const bytes = new Uint8Array(copies.reduce((sum, copy) => sum + copy.bytes.length, 0));
  let at = 0;
  for (const copy of copies) {
    bytes.set(copy.bytes, at);
    at += copy.bytes.length;
  }
  return bytes;
}

export class Card {
  // edge() gives an edge to drag; say(text) tells the user; more is shown above the receipts.
  constructor(form, { edge, say, more }) {
    this.form = form;
    this.view = viewOf(form, edge);
    this.about = element('p', { className: 'about' }, form.about ?? '');
    this.problem = element('p', { className: 'problem', hidden: true });
    const heading = element('h3', { id: `form-${form.name}` }, form.title);
    const button = (name, label, action) =>
      element('button', { type: 'button', className: 'quiet', title: `${label} ${form.title}`, onclick: action }, icon(name), label);
    this.copyButton = button('copy', 'Copy', () => this.copy(say));
    this.downloadButton = button('download', 'Download', () => this.download(say));
    this.root = element('article', { className: 'card', 'aria-labelledby': heading.id },
      element('header', {}, heading, this.about,
        element('div', { className: 'actions' }, this.copyButton, this.downloadButton)),
      ...(more ? [more] : []), this.problem, this.view.root);
    this.root.dataset.form = form.name;
  }

  // receipt: { copies, text, width, languages, isApproved, printer } or { problem }.
  show(receipt) {
    this.receipt = receipt;
    const { problem = '', copies = [] } = receipt;
    const told = problem || (copies.length === 0 ? 'There is no such copy: merchants of this industry get none.' : '');
    setText(this.problem, told);
    this.problem.hidden = told === '';
    this.view.root.hidden = told !== '';
    this.copyButton.disabled = this.downloadButton.disabled = told !== '';
    if (this.form.name === 'plain') setText(this.about, `${receipt.width} columns`);
    if (receipt.about !== undefined) setText(this.about, receipt.about);
    if (told === '') this.view.show(receipt);
  }

  // What the copy button copies: the command's output; bytes as hexadecimal numbers.
  get text() {
    const { copies, text } = this.receipt;
    return this.form.name === 'printer' ? hex(allBytes(copies)) : text;
  }

  // What is downloaded: the same, but a page of one copy, and the bytes themselves.
  get file() {
    const { copies, languages, isApproved, text } = this.receipt;
    if (this.form.name === 'printer') return allBytes(copies);
    if (this.form.name !== 'html') return text;
    const lang = languages[copies[0].name];
    return htmlPage(copies[0], { lang, isApproved, style: receiptStyle + pageStyle });
  }

  async copy(say) {
    try {
      await navigator.clipboard.writeText(this.text);
      say(`${this.form.title} copied.`);
    } catch {
      say('The browser did not let the page copy. Download it instead.');
    }
  }

  download(say) {
    const { copies } = this.receipt;
    const which = copies.length === 1 || this.form.name === 'html' ? `-${copies[0].name}` : '';
    const name = `receipt-${this.form.name}${which}.${this.form.ending}`;
    const url = URL.createObjectURL(new Blob([this.file], { type: this.form.type }));
    element('a', { href: url, download: name }).click();
    setTimeout(() => URL.revokeObjectURL(url), 10_000);
    say(`${name} downloaded.`);
  }
}
