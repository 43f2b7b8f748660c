import assert from 'node:assert/strict';
import { once } from 'node:events';
import { readFileSync } from 'node:fs';
import test, { after } from 'node:test';

import { receipts } from './receipts.js';

const root = new URL('../../', import.meta.url);
const text = (path) => readFileSync(new URL(path, root), 'utf8');
const records = {
  1: JSON.parse(text('examples/records/chip-credit-sale.json')).record,
  2: JSON.parse(text('examples/records/issuer-decline.json')).record,
  3: { merch_name: '<script>alert(1)</script>', action: 'sale' },
  4: { amount: NaN },
};
const server = receipts(async (ttid) => records[ttid]).listen(0, '127.0.0.1');
await once(server, 'listening');
after(() => server.close());

async function get(ttid, language = 'en') {
  const address = `http://127.0.0.1:${server.address().port}/receipts/${ttid}`;
  const answer = await fetch(address, { headers: { 'Accept-Language': language } });
  return { status: answer.status, headers: answer.headers, body: await answer.text() };
}

test('the page has the style sheet and the customer copy as it was approved', async () => {
  const { status, headers, body } = await get(1);
  assert.equal(status, 200);
  assert.equal(headers.get('Content-Type'), 'text/html; charset=utf-8');
  const [customer] = text('tests/receipts/html/chip-credit-sale.json.txt').split('\n<hr class="rcpt_cut">\n');
  // A blank line stands between the blocks of a document.
  const blocks = customer.trimEnd().replaceAll('</div>\n\n<div', '</div>\n<div');
  assert.ok(body.includes(`<main class="receipt">\n${blocks}\n</main>`));
  assert.ok(body.includes(text('share/receipt.css')));
});

test("the customer's language, and what was not approved", async () => {
  const { body } = await get(2, 'fr-CA, fr;q=0.9, en;q=0.5');
  assert.ok(body.startsWith('<!DOCTYPE html>\n<html lang="fr">'));
  assert.ok(body.includes('<main class="receipt rcpt_not_approved">'));
  assert.match(body, /copie du client/i);
});

test('strange records and receipts that are not there', async () => {
  assert.ok(!(await get(3)).body.includes('<script>'));
  assert.equal((await get(5)).status, 404);
  assert.equal((await get(4)).status, 500);
});
