// Words of the library and what they stand for. Made from its tables by scripts/update-documents.

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

// By their numbers.
export const SEVERITIES = ['note', 'warning', 'error'];

// The keys of a record that hold JSON.
export const DOCUMENT_KEYS = ['line_items', 'moneris_rcpt_data'];

// In the order of their numbers. width: in characters, absent where it is as one asks;
// lineBreak: within a block, likewise; ecommerce: what merchants of that industry get instead.
export const FORMS = {
  plain: {
    blocks: [
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
    ],
    isText: true,
  },
  html: {
    blocks: [
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
    ],
    lineBreak: '\n',
  },
  xml: {
    blocks: [
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
    ],
    lineBreak: '\n',
  },
  json: {
    blocks: [
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
    ],
    lineBreak: '\n',
  },
  moneris: {
    blocks: [
      'merch_info',
      'type',
      'money',
      'reference',
      'disposition',
      'signature',
      'notice',
      'line_items',
      'customer_info',
      'refund_policy',
    ],
    isText: true,
    width: 40,
    lineBreak: '\r\n',
    ecommerce: 'moneris-ecomm',
  },
  'moneris-ecomm': {
    blocks: ['merch_info', 'reference', 'line_items', 'customer_info', 'refund_policy'],
    isText: true,
    width: 70,
    lineBreak: '\r\n',
  },
};
