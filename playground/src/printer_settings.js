// What the printer is told, as controls.
import { CODE_PAGES, CUTS, PRINTER_LANGUAGES } from 'qelrcpt/src/words.js';
import { element } from './dom.js';

const choices = (words, names = {}) => Object.keys(words).map((word) => [word, names[word] ?? word]);

const CONTROLS = [
  { name: 'form', label: 'Receipt', choices: [['plain', 'plain text'], ['moneris', 'Moneris in store'], ['moneris-ecomm', 'Moneris e-commerce']], usual: 'plain' },
  { name: 'language', label: 'Language', choices: choices(PRINTER_LANGUAGES, { escpos: 'ESC/POS', star: 'StarPRNT' }), usual: 'escpos' },
  { name: 'paper', label: 'Paper', choices: [['48', '80 mm, 48 columns'], ['42', '80 mm, 42 columns'], ['32', '58 mm, 32 columns']], usual: '48', isNumber: true },
  { name: 'codePage', label: 'Code page', choices: choices(CODE_PAGES), usual: 'cp858' },
  { name: 'cut', label: 'Cut', choices: choices(CUTS), usual: 'full' },
  { name: 'qr', label: 'QR code of', usual: '', hint: 'a link, say' },
  { name: 'logo', label: 'Logo', choices: [['', 'none'], ['1', 'stored as 1'], ['2', 'stored as 2']], usual: '', isNumber: true },
  { name: 'emphasis', label: 'Emphasis', usual: true },
  { name: 'barcode', label: 'Barcode of the order', usual: true },
  { name: 'drawer', label: 'Open the drawer', usual: false },
];

function control({ name, choices: listed, usual, hint }) {
  const id = `printer-${name}`;
  if (typeof usual === 'boolean') return element('input', { type: 'checkbox', id, name, checked: usual });
  if (!listed) return element('input', { type: 'text', id, name, placeholder: hint, autocomplete: 'off', spellcheck: false });
  const select = element('select', { id, name }, ...listed.map(([value, text]) => element('option', { value }, text)));
  select.value = usual;
  return select;
}

export class PrinterSettings {
  constructor(changed) {
    this.inputs = new Map();
    this.root = element('form', { className: 'printer-options', 'aria-label': 'Printer' });
    for (const row of CONTROLS) {
      const input = control(row);
      this.inputs.set(row.name, input);
      this.root.append(input.type === 'checkbox'
        ? element('label', { className: 'check' }, input, row.label)
        : element('label', { className: 'field' }, element('span', {}, row.label), input));
    }
    this.root.addEventListener('input', changed);
    this.root.addEventListener('submit', (event) => event.preventDefault());
  }

  get values() {
    return Object.fromEntries(CONTROLS.map(({ name }) => {
      const input = this.inputs.get(name);
      return [name, input.type === 'checkbox' ? input.checked : input.value];
    }));
  }

  set values(said) {
    for (const { name, usual } of CONTROLS) {
      const input = this.inputs.get(name);
      const value = typeof said[name] === typeof usual ? said[name] : usual;
      if (input.type === 'checkbox') input.checked = value;
      else input.value = value;
      if (input.value === '' && usual !== '') input.value = usual; // a word that there is not
    }
  }

  // As the library takes them.
  get options() {
    const { form, drawer, ...rest } = this.values;
    const printer = Object.fromEntries(Object.entries(rest).filter(([, value]) => value !== ''));
    for (const { name, isNumber } of CONTROLS) if (isNumber && printer[name]) printer[name] = Number(printer[name]);
    return { form, printer: drawer ? { ...printer, drawer: 1 } : printer };
  }
}
