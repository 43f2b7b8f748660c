// The words that options are said with, as the command qelrcpt knows them, and what they stand for.

export const LANGUAGES = { en: 0, fr: 1, es: 2, de: 3, it: 4 };

export const COUNTRIES = { US: 840, USA: 840, CA: 124, CAN: 124, GB: 826, GBR: 826 };

export const CURRENCIES = { USD: 840, CAD: 124, EUR: 978, GBP: 826 };

export const INDUSTRIES = {
  retail: 1,
  mail: 2,
  ecomm: 4,
  restaurant: 8,
  lodging: 16,
  autofuel: 32,
  grocery: 64,
  selfserv: 128,
  unknown: 0,
};

export const LINE_BREAKS = { lf: '\n', crlf: '\r\n' };

// By bits.
export const COPIES = { customer: 1, merchant: 2, both: 3 };

export const PRINTER_LANGUAGES = { escpos: 0, star: 1 };

export const CODE_PAGES = {
  cp858: 858,
  cp437: 437,
  cp850: 850,
  cp852: 852,
  cp860: 860,
  cp863: 863,
  cp865: 865,
  cp866: 866,
  cp1252: 1252,
  'iso8859-15': 28605,
};

export const CUTS = { full: 0, partial: 1, none: 2 };

export const QR_LEVELS = { L: 1, M: 2, Q: 3, H: 4 };

const GENERAL = [
  'merch_info',
  'reference',
  'items',
  'order_money',
  'money',
  'disposition',
  'signature',
  'emv',
  'notice',
  'notes',
];
const MONERIS = ['merch_info', 'type', 'money', 'reference', 'disposition', 'signature', 'notice'];
const MONERIS_ECOMM = ['merch_info', 'reference', 'line_items', 'customer_info', 'refund_policy'];

// In the order of the module's generators. width: in characters, absent where it is as one asks;
// lineBreak: within a block, likewise; ecommerce: what merchants of that industry get instead.
export const FORMS = {
  plain: { blocks: GENERAL, isText: true },
  html: { blocks: GENERAL, lineBreak: '\n' },
  xml: { blocks: GENERAL, lineBreak: '\n' },
  json: { blocks: GENERAL, lineBreak: '\n' },
  moneris: {
    blocks: [...MONERIS, ...MONERIS_ECOMM.filter((name) => !MONERIS.includes(name))],
    isText: true,
    width: 40,
    lineBreak: '\r\n',
    ecommerce: 'moneris-ecomm',
  },
  'moneris-ecomm': { blocks: MONERIS_ECOMM, isText: true, width: 70, lineBreak: '\r\n' },
};
