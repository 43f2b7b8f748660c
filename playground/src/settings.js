// The merchant's settings as controls, from one table. A value that stands in a file and not in the table
// is added to its control.
import { COUNTRIES as COUNTRY_CODES, CURRENCIES as CURRENCY_CODES } from 'qelrcpt/src/words.js';
import { element } from './dom.js';

const LANGUAGES = [
  ['en', 'English'],
  ['fr', 'French'],
  ['es', 'Spanish'],
  ['de', 'German'],
  ['it', 'Italian'],
];

// Those that the command has no name for are chosen by their numbers of ISO 3166-1.
const COUNTRIES = [
  ['US', 'United States'],
  ['CA', 'Canada'],
  ['GB', 'United Kingdom'],
  ['36', 'Australia'],
  ['40', 'Austria'],
  ['250', 'France'],
  ['276', 'Germany'],
  ['372', 'Ireland'],
  ['380', 'Italy'],
  ['484', 'Mexico'],
  ['528', 'Netherlands'],
  ['554', 'New Zealand'],
  ['724', 'Spain'],
  ['756', 'Switzerland'],
];

const CURRENCIES = [
  ['USD', 'US dollar, $12.34'],
  ['CAD', 'Canadian dollar, $12.34'],
  ['EUR', 'euro, €12,34'],
  ['GBP', 'pound, £12.34'],
];

const INDUSTRIES = [
  ['unknown', 'not said'],
  ['retail', 'retail'],
  ['restaurant', 'restaurant'],
  ['grocery', 'grocery'],
  ['lodging', 'lodging'],
  ['mail', 'mail order'],
  ['ecomm', 'e-commerce'],
  ['autofuel', 'automated fuel'],
  ['selfserv', 'self-service'],
];

function zones() {
  const known = Intl.supportedValuesOf?.('timeZone') ?? [];
  return [...new Set([ownZone(), 'UTC', ...known])].map((zone) => [zone, zone.replaceAll('_', ' ')]);
}

function ownZone() {
  return new Intl.DateTimeFormat().resolvedOptions().timeZone;
}

const CONTROLS = [
  { name: 'customerLanguage', label: 'Customer copy', choices: LANGUAGES, usual: 'en' },
  { name: 'merchantLanguage', label: 'Merchant copy', choices: LANGUAGES, usual: 'en' },
  { name: 'country', label: 'Country', choices: COUNTRIES, usual: 'US' },
  { name: 'currency', label: 'Currency', choices: CURRENCIES, usual: 'USD' },
  { name: 'industry', label: 'Industry', choices: INDUSTRIES, usual: 'unknown' },
  { name: 'timeZone', label: 'Time zone', choices: zones(), usual: ownZone() },
];

// A code or word as the controls have it, of those that files may have.
function normal(name, value) {
  const text = String(value).trim();
  const words = { country: COUNTRY_CODES, currency: CURRENCY_CODES }[name];
  if (!words) return name === 'timeZone' ? text : text.toLowerCase();
  const number = words[text.toUpperCase()] ?? Number(text);
  return Object.keys(words).find((word) => words[word] === number) ?? String(number);
}

export class Settings {
  constructor(form, changed) {
    this.selects = new Map();
    for (const { name, label, choices, usual } of CONTROLS) {
      const select = element('select', { name, id: `merchant-${name}` });
      select.append(...choices.map(([value, text]) => element('option', { value }, text)));
      select.value = usual;
      this.selects.set(name, select);
      form.append(element('label', { className: 'field' }, element('span', {}, label), select));
    }
    form.addEventListener('input', changed);
    form.addEventListener('submit', (event) => event.preventDefault());
  }

  // By the library's names.
  get values() {
    return Object.fromEntries([...this.selects].map(([name, select]) => [name, select.value]));
  }

  // Takes what is said; what is not said, or is nothing that refusalOf(setting) lets pass, goes back to
  // what is usual. Gives the first refusal, or an empty text.
  take(said, refusalOf) {
    let first = '';
    for (const { name, usual } of CONTROLS) {
      const given = said[name] ?? (name.endsWith('Language') ? said.language : undefined) ?? usual;
      const refusal = refusalOf({ [name]: normal(name, given) });
      const value = refusal ? usual : normal(name, given);
      first ||= refusal;
      const select = this.selects.get(name);
      if (![...select.options].some((option) => option.value === value))
        select.append(element('option', { value }, value));
      select.value = value;
    }
    return first;
  }

  // In a few words, for when the controls are folded away.
  get summary() {
    const { customerLanguage, merchantLanguage, country, currency, industry } = this.values;
    const languages = customerLanguage === merchantLanguage ? customerLanguage : `${customerLanguage} and ${merchantLanguage}`;
    return [languages, country, currency, industry === 'unknown' ? '' : industry].filter(Boolean).join(' · ');
  }
}
