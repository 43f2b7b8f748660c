// Receipts of card transactions: what the package offers. README.md describes it.

/** What a key of a record may hold. `null` and `undefined` count as an absent key. */
export type Value = string | number | bigint | boolean | null | undefined;

/** What is inside of the documents `line_items` and `moneris_rcpt_data`. */
export type Nested = Value | readonly Nested[] | { readonly [name: string]: Nested };

/**
 * One transaction: texts by key, in lower case, as the payment server returned them. Numbers are taken
 * by their decimal value, booleans as `true` and `false`; arrays and objects become JSON.
 */
export interface TransactionRecord {
  readonly line_items?: string | readonly Nested[] | null;
  readonly moneris_rcpt_data?: string | { readonly [name: string]: Nested } | null;
  readonly [key: string]: Nested;
}

export type Form = 'plain' | 'html' | 'xml' | 'json' | 'moneris' | 'moneris-ecomm';

/** ISO 639-1, in any case. */
export type Language = 'en' | 'fr' | 'es' | 'de' | 'it';

export type Industry =
  | 'retail'
  | 'mail'
  | 'ecomm'
  | 'restaurant'
  | 'lodging'
  | 'autofuel'
  | 'grocery'
  | 'selfserv'
  | 'unknown';

export type CopyName = 'customer' | 'merchant';

export type BlockName =
  | 'merch_info'
  | 'reference'
  | 'items'
  | 'order_money'
  | 'money'
  | 'disposition'
  | 'signature'
  | 'emv'
  | 'notice'
  | 'notes'
  | 'type'
  | 'line_items'
  | 'customer_info'
  | 'refund_policy';

/** A receipt printer, and what goes on its paper beside the lines. */
export interface PrinterOptions {
  /** `escpos` unless given. */
  readonly language?: 'escpos' | 'star' | null;
  /** Characters of font A across the paper: 48 unless given, 42, or 32 on 58 mm. */
  readonly paper?: number | null;
  /** `cp858` unless given. */
  readonly codePage?:
    | 'cp858'
    | 'cp437'
    | 'cp850'
    | 'cp852'
    | 'cp860'
    | 'cp863'
    | 'cp865'
    | 'cp866'
    | 'cp1252'
    | 'iso8859-15'
    | null;
  /** The printer's own number of the page, 0 to 255. */
  readonly codePageNumber?: number | null;
  /** `false`: every line in plain type. */
  readonly emphasis?: boolean | null;
  /** After each copy; `full` unless given. */
  readonly cut?: 'full' | 'partial' | 'none' | null;
  /** Lines to feed before the cut, 0 to 255. */
  readonly feed?: number | null;
  /** The cash drawer to open before the first copy: 1, or 2 on the connector's other pin. */
  readonly drawer?: 1 | 2 | null;
  /** A logo that is stored in the printer: its number, 1 to 255, or its key of two characters. */
  readonly logo?: number | string | null;
  /** The order number below each copy as a CODE128 barcode. */
  readonly barcode?: boolean | null;
  /** The text of a QR code below each copy. */
  readonly qr?: string | null;
  /** Its error correction; `M` unless given. */
  readonly qrLevel?: 'L' | 'M' | 'Q' | 'H' | null;
  /** Dots of its modules, 1 to 16; what fits, to 6, unless given. */
  readonly qrModule?: number | null;
}

/** What is not given, or is `null` or `undefined`, has its default. */
export interface Options {
  /** `plain` unless given. */
  readonly form?: Form | null;
  /** Columns of a plain receipt, 10 to 10000: 40 unless given, when printing `printer.paper`. */
  readonly width?: number | null;
  /** Between the lines of a plain receipt, and in every `text`: `lf` unless given. */
  readonly lineBreak?: 'lf' | 'crlf' | null;
  /** `both` unless given. */
  readonly copy?: CopyName | 'both' | null;
  /** The blocks to give; all unless given. */
  readonly blocks?: readonly BlockName[] | null;
  /** `true`: the control characters of the record's texts go through to a printer. */
  readonly raw?: boolean | null;
  /** Of the copies that have no language of their own; `en` unless given. */
  readonly language?: Language | null;
  readonly customerLanguage?: Language | null;
  readonly merchantLanguage?: Language | null;
  /** ISO 3166-1: numeric, or a code of those with rules of their own. `US` unless given. */
  readonly country?: 'US' | 'USA' | 'CA' | 'CAN' | 'GB' | 'GBR' | number | (string & {}) | null;
  /** ISO 4217: numeric, or a code of those that are written otherwise. `USD` unless given. */
  readonly currency?: 'USD' | 'CAD' | 'EUR' | 'GBP' | number | (string & {}) | null;
  /** Several in an array, or in a text with commas between them; `unknown` unless given. */
  readonly industry?: Industry | readonly Industry[] | (string & {}) | null;
  /** Such as `America/Toronto`; the platform's own unless given. */
  readonly timeZone?: string | null;
  /** For `print`. */
  readonly printer?: PrinterOptions | null;
}

export interface Block {
  readonly name: BlockName;
  readonly text: string;
}

/** The customer's or the merchant's copy. */
export interface Copy {
  readonly name: CopyName;
  /** From top to bottom. A block with nothing to show is not there. */
  readonly blocks: readonly Block[];
  /** The text of a block; `undefined` where it is not there. */
  block(name: BlockName): string | undefined;
  /** The copy as one document, with a line break at its end. */
  readonly text: string;
}

export interface Receipt {
  /** The form of the blocks: e-commerce merchants get `moneris-ecomm` for `moneris`. */
  readonly form: Form;
  /** Whether the transaction was approved, wholly or in part. */
  readonly approved: boolean;
  readonly customer: Copy | undefined;
  /** Merchants of automated fuel and self-service get none. */
  readonly merchant: Copy | undefined;
  /** Those that are there, the customer's first. */
  readonly copies: readonly Copy[];
  /** All copies as one document, as the command `qelrcpt` writes it. */
  readonly text: string;
}

/** One thing that is wrong with a record. */
export interface Finding {
  readonly severity: 'note' | 'warning' | 'error';
  /** The rule's name, such as `amount-unreadable`. Names do not change. */
  readonly rule: string;
  /** Of the record, also one that it lacks; `""` for the record as a whole or the options. */
  readonly key: string;
  /** What is wrong and what to do: a sentence in English without card numbers. */
  readonly message: string;
  /** The index inside of the key's text, where there is a place to name. */
  readonly offset?: number;
  /** The document that asks for it, and when that was read, as year and month. */
  readonly source?: string;
  readonly date?: string;
}

/** One copy for a receipt printer. */
export interface PrintedCopy {
  readonly bytes: Uint8Array;
  /** Characters that are not on the code page and stand as their nearest, or as `?`. */
  readonly replaced: number;
  readonly hasBarcode: boolean;
}

export interface Printed {
  readonly form: Form;
  readonly customer: PrintedCopy | undefined;
  readonly merchant: PrintedCopy | undefined;
}

/** An answer of `fetch`. */
export interface Answer {
  readonly ok: boolean;
  readonly status: number;
  readonly url: string;
  arrayBuffer(): Promise<ArrayBuffer>;
}

/** Bytes, an address (a text or a `URL`), an answer of `fetch`, or a `WebAssembly.Module`. */
export type ModuleSource = ArrayBuffer | ArrayBufferView | string | { readonly href: string } | Answer | object;

/**
 * Loads the library; everything else wants it to have ended. It is loaded once: later calls give the
 * same promise, until one fails.
 * @param source `qelrcpt.wasm` of this package unless given
 */
export function load(source?: ModuleSource | PromiseLike<ModuleSource>): Promise<void>;

/** The copies of a transaction's receipt. */
export function render(record: TransactionRecord, options?: Options): Receipt;

/** What is wrong with a record before it becomes a receipt, group by group of rules. */
export function check(record: TransactionRecord, options?: Options): Finding[];

/** The copies of a plain or Moneris receipt as the bytes that a receipt printer takes. */
export function print(record: TransactionRecord, options?: Options): Printed;

/** Keeps its options for many records: reading them takes about as long as a receipt. */
export class Renderer {
  constructor(options?: Options);
  render(record: TransactionRecord): Receipt;
  check(record: TransactionRecord): Finding[];
  print(record: TransactionRecord): Printed;
}

/** The "config" of a record file of the command `qelrcpt`. */
export interface Config {
  readonly lang?: string;
  readonly customer_lang?: string;
  readonly merchant_lang?: string;
  readonly country?: string | number;
  readonly currency?: string | number;
  readonly industry?: string | readonly string[];
  readonly timezone?: string;
}

/** The options that such a "config" stands for; their values are read when they are used. */
export function optionsOf(config: Config): Options;
