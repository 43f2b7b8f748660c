// An application that shows receipts: GET /receipts/20417 is the page of the customer's copy.
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';

import express from 'express';
import { load, Renderer } from 'qelrcpt';

await load();
const style = readFileSync(createRequire(import.meta.url).resolve('qelrcpt/receipt.css'), 'utf8');

// The merchant, read once. A server gives its time zone, or times are its own.
const shop = { form: 'html', currency: 'USD', country: 'US', timeZone: 'America/Denver', copy: 'customer' };
const languages = ['en', 'fr', 'es', 'de', 'it'];
const renderers = new Map(languages.map((language) => [language, new Renderer({ ...shop, language })]));

// Values of the record are escaped, so the blocks go into the page as they are.
function page(language, { approved, customer }) {
  return `<!DOCTYPE html>
<html lang="${language}">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Receipt</title>
<style>
${style}</style>
</head>
<body>
<main class="${approved ? 'receipt' : 'receipt rcpt_not_approved'}">
${customer.blocks.map(({ text }) => text).join('\n')}
</main>
</body>
</html>
`;
}

// find gives the record of a transaction as the payment server returned it, or undefined.
export function receipts(find) {
  const application = express();
  application.disable('x-powered-by');
  application.get('/receipts/:ttid', async (request, response) => {
    const record = await find(request.params.ttid);
    if (record === undefined) return response.status(404).type('text').send('There is no such receipt.\n');
    const language = request.acceptsLanguages(languages) || 'en';
    response.set('Cache-Control', 'private, no-store');
    response.set('Content-Security-Policy', "default-src 'none'; style-src 'unsafe-inline'");
    return response.send(page(language, renderers.get(language).render(record)));
  });
  return application;
}
