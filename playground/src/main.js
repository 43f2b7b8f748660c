// The page: the record and the merchant on the left, the receipts on the right, anew at every change.
import samples from 'samples';
import { check, load, optionsOf, print, render } from 'qelrcpt';
import wasm from 'qelrcpt/qelrcpt.wasm';
import { FORMS as KNOWN_FORMS } from 'qelrcpt/src/words.js';
import { Card, FORMS } from './cards.js';
import { byId, element } from './dom.js';
import { Width } from './edge.js';
import { Editor } from './editor.js';
import { diagnosticsOf, Findings, located, repeated, worstFirst } from './findings.js';
import { fromFragment, toFragment } from './link.js';
import { PrinterSettings } from './printer_settings.js';
import { jsonOfLines, readRecord, TextFault } from './read_record.js';
import { Settings } from './settings.js';

const FIRST_SAMPLE = 'restaurant-ten-items.json';
const COPIES = [['customer', 'Customer'], ['merchant', 'Merchant'], ['both', 'Both']];
const ARRANGEMENTS = [['one', 'One'], ['all', 'Side by side']];
const SIDE_BY_SIDE = ['plain', 'html', 'json'];
const MOST_FINDINGS = 200; // that are shown: a browser has no room for any number of them
const THEMES = [['light dark', 'System'], ['light', 'Light'], ['dark', 'Dark']];

const state = { forms: ['plain'], arrangement: 'one', copies: 'both' };
const desk = byId('desk');
const cards = new Map();

function say(text) {
  const toast = byId('toast');
  toast.textContent = text;
  toast.classList.add('is-shown');
  clearTimeout(say.timer);
  say.timer = setTimeout(() => toast.classList.remove('is-shown'), 3000);
}

// From the record to everything that is shown of it

const settings = new Settings(byId('merchant'), update);
const width = new Width(byId('width'), byId('columns'), update);
const printerSettings = new PrinterSettings(update);
const editor = new Editor(byId('editor'), { changed: update, pasted: (text) => open({ text }) });
const findings = new Findings({
  list: byId('findings'),
  totals: byId('totals'),
  badge: byId('count'),
  lineAt: (place) => editor.lineAt(place),
  show: ({ from }) => {
    showView('record');
    editor.show(from);
  },
});

// What the text's own envelope says of the merchant goes before the controls.
function merchantOptions(read) {
  return { ...settings.values, ...(read.config ? optionsOf(read.config) : {}) };
}

function receiptOf(form, record, options) {
  const { customerLanguage, merchantLanguage } = options;
  const languages = { customer: customerLanguage, merchant: merchantLanguage };
  if (form.name === 'printer') return printedOf(record, options);
  const receipt = render(record, { ...options, form: form.name, copy: state.copies, width: width.columns });
  const columns = KNOWN_FORMS[receipt.form].width ?? width.columns;
  return { copies: receipt.copies, text: receipt.text, isApproved: receipt.approved, width: columns, languages };
}

function printedOf(record, options) {
  const chosen = printerSettings.options;
  const made = print(record, { ...options, ...chosen, copy: state.copies });
  const copies = ['customer', 'merchant'].filter((name) => made[name]).map((name) => ({ name, ...made[name] }));
  const replaced = copies.reduce((sum, copy) => sum + copy.replaced, 0);
  const lost = replaced === 0 ? '' : `, ${replaced} ${replaced === 1 ? 'character' : 'characters'} not on the code page`;
  const size = copies.reduce((sum, copy) => sum + copy.bytes.length, 0);
  return { copies, printer: chosen.printer, about: `${size} bytes${lost}` };
}

function showReceipts(read) {
  const options = merchantOptions(read);
  for (const form of FORMS.filter(({ name }) => state.forms.includes(name))) {
    let receipt;
    try {
      receipt = receiptOf(form, read.record, options);
    } catch (fault) {
      if (!(fault instanceof TypeError)) throw fault;
      receipt = { problem: fault.message, width: width.columns };
    }
    cards.get(form.name).show(receipt);
  }
}

// The check of the form that is shown; of the general ones where there are several.
function findingsOf(read) {
  const form = state.forms.every((name) => name.startsWith('moneris')) ? state.forms[0] : 'plain';
  const found = check(read.record, { ...merchantOptions(read), form });
  return worstFirst([...found.map(({ offset, ...finding }) => ({ ...finding, index: offset })), ...repeated(read)]);
}

function faultOf(fault) {
  if (fault instanceof TextFault) return { from: fault.from, to: fault.to, severity: 'error', message: fault.message };
  if (fault instanceof TypeError) return { from: 0, to: 1, severity: 'error', message: fault.message, isMissing: true };
  throw fault;
}

// The receipts of the last record that could be read stay, but pale.
function showFault(fault) {
  const line = editor.lineAt(fault.from);
  byId('stale').textContent = `${fault.isMissing ? '' : `Line ${line}: `}${fault.message}. The receipts are those before it.`;
  byId('stale').hidden = false;
  desk.classList.add('is-stale');
  editor.mark(diagnosticsOf([fault]));
  findings.show([fault]);
}

function update() {
  const { text } = editor;
  byId('chosen').textContent = settings.summary;
  try {
    const read = readRecord(text);
    const all = findingsOf(read);
    const found = located(all.slice(0, MOST_FINDINGS), text, read);
    showReceipts(read);
    byId('stale').hidden = true;
    desk.classList.remove('is-stale');
    editor.mark(diagnosticsOf(found));
    findings.show(found, all.length - found.length);
  } catch (fault) {
    showFault(faultOf(fault));
  }
}

// Taking records in: from samples, files, links and what the command put into the page

// The part of an envelope's text that is the record, its lines moved to the left.
function recordText(text, read) {
  const end = text.lastIndexOf('}', text.lastIndexOf('}') - 1) + 1;
  const record = text.slice(read.begin, end);
  const indent = /[\t ]*$/.exec(text.slice(0, read.begin).split('\n').at(-1).replace(/\S.*$/, ''))[0];
  return record.replaceAll(`\n${indent}`, '\n');
}

// An envelope is taken apart: the merchant goes into the controls.
function unwrap(text) {
  const json = jsonOfLines(text) ?? text;
  try {
    const read = readRecord(json);
    if (!read.isEnvelope) return { text: json };
    return { text: recordText(json, read), config: optionsOf(read.config ?? {}) };
  } catch {
    return { text: json };
  }
}

// Why the library takes no such options; an empty text when it takes them.
function refusalOf(options) {
  try {
    check({}, options);
    return '';
  } catch (fault) {
    return fault.message;
  }
}

function open({ text, config, layout = {} }) {
  const given = unwrap(text);
  if (given.config || config) {
    const refusal = settings.take({ ...given.config, ...config }, refusalOf);
    if (refusal) say(refusal);
  }
  if (layout.printer) printerSettings.values = layout.printer;
  if (layout.width) width.show(layout.width);
  choose(layout);
  editor.text = given.text.endsWith('\n') ? given.text : `${given.text}\n`;
  update();
}

function openSample(name) {
  open({ text: samples[name], config: {} });
}

async function openFile(file) {
  const MOST_BYTES = 4_000_000;
  if (file.size > MOST_BYTES) return say(`${file.name} is too large for this page.`);
  try {
    open({ text: new TextDecoder('utf-8', { fatal: true }).decode(await file.arrayBuffer()) });
    byId('sample').value = '';
    say(`${file.name} opened. It stays on this computer.`);
  } catch {
    say(`${file.name} is not a text in UTF-8.`);
  }
}

async function openLink() {
  try {
    const linked = await fromFragment(location.hash);
    if (!linked) return false;
    open({ text: linked.text, config: linked.config ?? {}, layout: linked.layout ?? {} });
    byId('sample').value = '';
    return true;
  } catch (fault) {
    say(fault.message);
    return false;
  }
}

async function copyLink() {
  const layout = { ...state, width: width.columns, printer: printerSettings.values };
  const fragment = await toFragment({ text: editor.text, config: settings.values, layout });
  const link = location.href.split('#')[0] + fragment;
  try {
    await navigator.clipboard.writeText(link);
    say('Link copied. It holds the record itself; nothing was sent.');
  } catch {
    location.hash = fragment;
    say('The link is in the address bar. It holds the record itself; nothing was sent.');
  }
}

// Indents what can be read, whatever its numbers are written like.
function tidy() {
  const INDENT = '  ';
  let level = 0;
  const { text } = editor;
  try {
    readRecord(text);
  } catch (fault) {
    return showFault(faultOf(fault));
  }
  if (/\/[/*]/.test(text.replace(/"(?:[^"\\]|\\.)*"/g, ''))) return say('A record with comments stays as it is.');
  const pieces = text.match(/"(?:[^"\\]|\\.)*"|[{}[\],:]|[^\s{}[\],:"]+/g);
  let made = '';
  pieces.forEach((piece, index) => {
    const isEmpty = '}]'.includes(piece) && '{['.includes(pieces[index - 1]);
    if ('}]'.includes(piece)) made += isEmpty ? '' : `\n${INDENT.repeat(--level)}`;
    made += piece;
    if (isEmpty) level--;
    if ('{['.includes(piece) && ++level && '}]'.includes(pieces[index + 1])) return;
    if ('{[,'.includes(piece)) made += `\n${INDENT.repeat(level)}`;
    if (piece === ':') made += ' ';
  });
  editor.text = `${made}\n`;
}

// The controls around

function choose({ forms, arrangement, copies }) {
  const known = Array.isArray(forms) ? forms.filter((name) => cards.has(name)) : [];
  if (ARRANGEMENTS.some(([value]) => value === arrangement)) state.arrangement = arrangement;
  if (COPIES.some(([value]) => value === copies)) state.copies = copies;
  if (known.length > 0) state.forms = known;
  if (state.arrangement === 'one') state.forms = state.forms.slice(0, 1);
  showChoices();
}

function showChoices() {
  for (const button of byId('forms').children)
    button.setAttribute('aria-pressed', state.forms.includes(button.value));
  for (const name of ['copies', 'arrangement'])
    byId(name).querySelector(`[value="${state[name]}"]`).checked = true;
  byId('width-field').hidden = !state.forms.includes('plain');
  desk.dataset.arrangement = state.arrangement;
  for (const [name, card] of cards) card.root.hidden = !state.forms.includes(name);
}

function pressForm(name) {
  const isShown = state.forms.includes(name);
  if (state.arrangement === 'one') state.forms = [name];
  else if (!isShown) state.forms = FORMS.map((form) => form.name).filter((other) => other === name || state.forms.includes(other));
  else if (state.forms.length > 1) state.forms = state.forms.filter((other) => other !== name);
  showChoices();
  update();
}

function arrange(arrangement) {
  if (arrangement === 'all' && state.forms.length === 1)
    state.forms = FORMS.map(({ name }) => name).filter((name) => SIDE_BY_SIDE.includes(name) || state.forms.includes(name));
  choose({ arrangement });
  update();
}

function segments(id, rows, chosen) {
  for (const [value, text] of rows)
    byId(id).append(element('label', {}, element('input', { type: 'radio', name: id, value }), text));
  byId(id).addEventListener('input', ({ target }) => chosen(target.value));
}

function showView(view) {
  document.body.dataset.view = view;
  for (const button of document.querySelectorAll('.views button'))
    button.setAttribute('aria-pressed', button.dataset.view === view);
}

function addThemes() {
  const button = byId('theme');
  let chosen = 0;
  const show = () => {
    const [scheme, name] = THEMES[chosen];
    document.documentElement.style.colorScheme = scheme;
    button.querySelector('span').textContent = name;
    button.setAttribute('aria-label', `Colours: ${name}`);
  };
  button.addEventListener('click', () => {
    chosen = (chosen + 1) % THEMES.length;
    show();
  });
  show();
}

function addControls() {
  const sample = byId('sample');
  sample.append(element('option', { value: '', disabled: true }, 'Your own record'));
  for (const name of Object.keys(samples))
    sample.append(element('option', { value: name }, name.replace(/\.\w+$/, '').replaceAll('-', ' ')));
  sample.addEventListener('change', () => openSample(sample.value));
  for (const form of FORMS) {
    const more = form.name === 'printer' ? printerSettings.root : undefined;
    const card = new Card(form, { edge: () => width.edge(), say, more });
    cards.set(form.name, card);
    desk.append(card.root);
    byId('forms').append(element('button', { type: 'button', value: form.name, onclick: () => pressForm(form.name) }, form.tab));
  }
  segments('copies', COPIES, (copies) => {
    choose({ copies });
    update();
  });
  segments('arrangement', ARRANGEMENTS, arrange);
  byId('open').addEventListener('click', () => byId('file').click());
  byId('file').addEventListener('change', ({ target }) => {
    if (target.files[0]) openFile(target.files[0]);
    target.value = '';
  });
  byId('format').addEventListener('click', tidy);
  byId('share').addEventListener('click', copyLink);
  for (const button of document.querySelectorAll('.views button'))
    button.addEventListener('click', () => showView(button.dataset.view));
  addEventListener('hashchange', openLink);
  addEventListener('dragover', (event) => event.preventDefault());
  addEventListener('drop', (event) => {
    const [file] = event.dataTransfer.files;
    if (!file) return;
    event.preventDefault();
    openFile(file);
  });
  addThemes();
}

async function start() {
  if (matchMedia('(max-height: 50rem), (max-width: 55rem)').matches) byId('settings').open = false;
  addControls();
  showChoices();
  await load(wasm);
  const given = JSON.parse(byId('given').textContent);
  if (await openLink()) return;
  if (given) {
    byId('sample').value = '';
    open(given);
  } else {
    byId('sample').value = FIRST_SAMPLE;
    openSample(FIRST_SAMPLE);
  }
}

await start();
document.documentElement.dataset.ready = '';
