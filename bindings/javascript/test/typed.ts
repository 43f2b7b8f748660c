// The declarations in use. Compiled by package.test.js, and run.

import { check, load, optionsOf, print, render, Renderer } from 'qelrcpt';
import type { Block, Copy, Finding, Form, Options, Printed, Receipt, TransactionRecord } from 'qelrcpt';

interface Sale {
  amount: string;
  ttid: number;
}

const sale: Sale = { amount: '12.34', ttid: 20417 };
const record: TransactionRecord = {
  ...sale,
  action: 'sale',
  u_need_signature: true,
  tax: 1.9,
  balance: undefined,
  authamount: null,
  stan: 213n,
  line_items: [{ name: 'Cortado', qty: 1, price: 4.25, modifiers: [{ name: 'Oat milk', price: '0.75' }] }],
  moneris_rcpt_data: { policy: 'Within 30 days', items: [] },
};
const options: Options = {
  form: 'plain',
  width: 32,
  language: 'fr',
  country: 276,
  currency: 'EUR',
  industry: ['retail', 'restaurant'],
  timeZone: 'Europe/Berlin',
  blocks: ['money', 'notice'],
  printer: { language: 'star', codePage: 'cp1252', cut: 'partial', qr: 'https://receipts.example/r' },
};

await load();
const receipt: Receipt = render(record, options);
const copy: Copy | undefined = receipt.merchant;
const money: string | undefined = copy?.block('money');
const blocks: readonly Block[] = receipt.customer?.blocks ?? [];
const findings: Finding[] = check(record);
const place: number | undefined = findings[0]?.offset;
const printed: Printed = print(record, { printer: { paper: 32 } });
const bytes: Uint8Array | undefined = printed.customer?.bytes;
const renderer = new Renderer(optionsOf({ lang: 'de', timezone: 'Europe/Berlin' }));
const form: Form = renderer.render(record).form;
// An object without a known shape, as a server's answer is.
const answer: Record<string, string> = JSON.parse('{"action": "sale"}');
render(answer);

// Each of these is refused by the compiler, and when it runs.
const refused: (() => unknown)[] = [
  // @ts-expect-error there is no such form
  () => render(record, { form: 'pdf' }),
  // @ts-expect-error there is no such option
  () => render(record, { columns: 32 }),
  // @ts-expect-error a number
  () => render(record, { width: '32' }),
  // @ts-expect-error there is no such language
  () => new Renderer({ language: 'fr-CA' }),
  // @ts-expect-error an option of the printer
  () => print(record, { printer: { columns: 48 } }),
  // @ts-expect-error a function
  () => render({ amount: () => 1 }),
  // @ts-expect-error a symbol
  () => render({ amount: Symbol('x') }),
  // @ts-expect-error nothing
  () => render(),
];
for (const call of refused) {
  try {
    call();
  } catch (fault) {
    if (fault instanceof TypeError) continue;
  }
  throw new Error(`taken: ${call}`);
}
// @ts-expect-error it cannot be changed
receipt.form = 'html';

const shown: unknown[] = [money, blocks.length, place, bytes?.length, form];
export const types = shown.map((value) => typeof value).join(' ');
