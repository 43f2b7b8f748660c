// The page in headless Chromium, opened from the disk and used as people use it.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { after, before, describe, test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { findBrowser, launch, openPage } from './browser.mjs';

const root = fileURLToPath(new URL('../../', import.meta.url));
const PAGE = path.join(root, 'share/playground.html');
const COMMAND = process.env.QELRCPT ?? path.join(root, 'build/release/tools/qelrcpt');
const samples = readdirSync(path.join(root, 'examples/records')).sort();

let browser;
let page;
let work;

// One page at a time: those in the background get no time.
async function open(options, file = PAGE) {
  const opened = await openPage(browser, file, options);
  await page?.close();
  return opened;
}

const click = (selector) => page.evaluate((found) => document.querySelector(found).click(), selector);
const pressForm = (name) => click(`#forms [value="${name}"]`);
const choose = (name, value) => click(`#${name} [value="${value}"]`);
const select = (id, value) => page.select(`#${id}`, value);
const textOf = (selector) => page.$eval(selector, (node) => node.textContent);
const papers = (form = 'plain') => page.$$eval(`[data-form="${form}"] .paper pre`, (nodes) => nodes.filter((node) => node.checkVisibility()).map((node) => node.textContent));
const stale = () => page.$eval('#stale', (node) => (node.hidden ? '' : node.textContent));

// The editor's text, also where it is out of sight.
const editorText = () => page.$eval('.cm-content', (node) => node.cmTile?.view?.state.doc.toString() ?? node.cmView.view.state.doc.toString());

// Puts a text in place of the editor's, as if it were typed: no brackets are closed, nothing is unwrapped.
async function write(text) {
  await page.click('.cm-content');
  await page.keyboard.down('Control');
  await page.keyboard.press('a');
  await page.keyboard.up('Control');
  await page.keyboard.sendCharacter(text);
}

// The lines of the editor that have a marker of this severity beside them.
const markedLines = (severity) => page.evaluate((wanted) => {
  const numbers = [...document.querySelectorAll('.cm-lineNumbers .cm-gutterElement')].map((node) => [Math.round(node.getBoundingClientRect().top), node.textContent]);
  return [...document.querySelectorAll(`.cm-lint-marker-${wanted}`)].map((node) => {
    const top = Math.round(node.parentElement.getBoundingClientRect().top);
    return Number(numbers.find(([at]) => Math.abs(at - top) <= 1)?.[1]);
  });
}, severity);

// What the copy button of a form hands to the clipboard.
async function copied(form) {
  await page.evaluate(() => {
    navigator.clipboard.writeText = async (text) => {
      window.copied = text;
    };
  });
  await click(`[data-form="${form}"] .actions button`);
  return page.evaluate(() => window.copied);
}

before(async () => {
  assert.ok(findBrowser(), 'there is no Chromium');
  browser = await launch();
  page = await open();
  work = mkdtempSync(path.join(tmpdir(), 'playground.'));
});

after(async () => {
  await browser?.close();
  rmSync(work, { recursive: true });
});

describe('receipts', () => {
  test('every sample in every form is the receipt that the library gives elsewhere', async () => {
    await choose('arrangement', 'all');
    for (const form of ['xml', 'moneris', 'moneris-ecomm']) await pressForm(form);
    let compared = 0;
    for (const name of samples) {
      await select('sample', name);
      for (const form of ['plain', 'html', 'xml', 'json', 'moneris']) {
        let expected;
        try {
          expected = readFileSync(path.join(root, 'tests/receipts', form, `${name}.txt`), 'utf8');
        } catch {
          continue;
        }
        compared++;
        assert.equal((await copied(form)).replaceAll('\r\n', '\n'), expected, `${name}, ${form}`);
        if (form === 'xml' || form === 'json') assert.equal(await textOf(`[data-form="${form}"] .code`), expected);
        if (form === 'plain' || form === 'moneris')
          assert.deepEqual(await papers(form), expected.slice(0, -1).split(/\n\n- [ -]* -\n\n/), `${name}, ${form}`);
      }
    }
    assert.ok(compared > 85, `${compared} receipts`);
    assert.deepEqual(page.complaints, []);
  });

  test('HTML has the elements, ids and classes that the library wrote, and its style sheet', async () => {
    await select('sample', 'restaurant-ten-items.json');
    const expected = readFileSync(path.join(root, 'tests/receipts/html/restaurant-ten-items.json.txt'), 'utf8').split('<hr class="rcpt_cut">')[0];
    const [isSame, color] = await page.evaluate((markup) => {
      const shown = document.querySelector('.paper.html').shadowRoot;
      const outline = (node) => [...node.querySelectorAll('*')].map((one) => [one.localName, one.id, one.className, one.childElementCount ? '' : one.textContent].join('|'));
      const found = outline(shown.querySelector('div'));
      const pairs = [...markup.matchAll(/<(div|span)(?: id="([^"]*)")?(?: class="([^"]*)")?>/g)].map(([, name, id = '', kind = '']) => [name, id, kind].join('|'));
      return [JSON.stringify(found.map((one) => one.split('|').slice(0, 3).join('|'))) === JSON.stringify(pairs),
        getComputedStyle(shown.querySelector('.amount.total')).borderTopWidth];
    }, expected);
    assert.ok(isSame);
    assert.equal(color, '2px');
  });

  test('a copy each, or both; none where the industry has none', async () => {
    await choose('arrangement', 'one');
    await pressForm('plain');
    const first = async () => (await papers()).map((text) => text.match(/(CUSTOMER|MERCHANT) COPY/)[0]);
    assert.deepEqual(await first(), ['CUSTOMER COPY', 'MERCHANT COPY']);
    await choose('copies', 'merchant');
    assert.deepEqual(await first(), ['MERCHANT COPY']);
    await select('merchant-industry', 'autofuel');
    assert.deepEqual(await first(), []);
    assert.match(await textOf('[data-form="plain"] .problem'), /no such copy/);
    await choose('copies', 'both');
    assert.deepEqual(await first(), ['CUSTOMER COPY']);
  });

  test('the merchant decides languages, dates and money', async () => {
    await select('sample', 'restaurant-ten-items.json');
    await select('merchant-customerLanguage', 'de');
    await select('merchant-currency', 'EUR');
    await select('merchant-country', '276');
    await select('merchant-timeZone', 'Asia/Tokyo');
    const [customer, merchant] = await papers();
    for (const words of ['KREDITKARTENVERKAUF', '€266,93', '05/07/26 11:00:15', 'KUNDENKOPIE']) assert.ok(customer.includes(words), words);
    for (const words of ['CREDIT CARD SALE', '€266,93', 'MERCHANT COPY']) assert.ok(merchant.includes(words), words);
  });

  test('printer paper has the lines of the receipt in every language and code page', async () => {
    await choose('arrangement', 'all');
    for (const name of ['html', 'json']) if (await page.$eval(`#forms [value="${name}"]`, (node) => node.ariaPressed === 'true')) await pressForm(name);
    await pressForm('printer');
    await click('#printer-barcode');
    await page.focus('#width');
    for (let i = 0; i < 8; i++) await page.keyboard.press('ArrowRight');
    let compared = 0;
    for (const name of ['restaurant-ten-items.json', 'euro-sale-german.json', 'duplicate.json', 'interac-chip-sale.json']) {
      await select('sample', name);
      for (const [language, codePage] of [['escpos', 'cp858'], ['star', 'cp858'], ['escpos', 'cp1252'], ['escpos', 'iso8859-15'], ['star', 'cp1252']]) {
        await select('printer-language', language);
        await select('printer-codePage', codePage);
        const printed = await page.$$eval('.printed', (nodes) => nodes.map((node) => [...node.children].filter((row) => row.matches('.row')).map((row) => row.textContent).join('\n')));
        assert.deepEqual(printed, await papers(), `${name}, ${language}, ${codePage}`);
        compared++;
      }
    }
    assert.equal(compared, 20);
    const looks = await page.$$eval('.printed .bold, .printed .inverted', (nodes) => nodes.map((node) => node.textContent.trim()));
    assert.ok(looks.some((text) => text.startsWith('TOTAL:')), looks.join());
    await page.type('#printer-qr', 'https://receipts.example/r/8Zk3q');
    const codes = await page.$$eval('.printed svg', (nodes) => nodes.map((node) => node.getAttribute('aria-label')));
    assert.deepEqual(codes, ['QR code: https://receipts.example/r/8Zk3q', 'QR code: https://receipts.example/r/8Zk3q']);
    await select('printer-codePage', 'cp850');
    assert.match(await textOf('[data-form="printer"] .problem'), /code page/);
    await pressForm('printer');
  });
});

describe('typing', () => {
  before(async () => {
    page = await open();
  });

  test('the receipt follows', async () => {
    await write('{"merch_name": "Café Zoë", "action": "sale", "amount": 5, "tax": "0.40", "code": "AUTH"}');
    const [customer] = await papers();
    for (const words of ['CAFÉ ZOË', 'PURCHASE', '$4.60', '$5.00', 'APPROVED']) assert.ok(customer.includes(words), `${words}\n${customer}`);
  });

  test('broken JSON is told where it is, and the receipt stays, pale, until it is mended', async () => {
    const text = '{\n  "amount": "5.00"\n  "tax": "0.40"\n}';
    await write(text);
    assert.deepEqual(await markedLines('error'), [3]);
    assert.match(await stale(), /^Line 3: Unexpected '"', expected ',' or '}'/);
    assert.match(await textOf('#findings'), /line 3/);
    assert.ok((await papers())[0].includes('CAFÉ ZOË'));
    assert.ok(await page.$eval('.papers', (node) => Number(getComputedStyle(node).opacity) < 1));
    await page.click('#findings button');
    await page.keyboard.press('ArrowUp');
    await page.keyboard.press('End');
    await page.keyboard.type(',');
    assert.equal(await stale(), '');
    assert.ok((await papers())[0].includes('$0.40'));
  });

  test('what the check finds stands beside its line', async () => {
    await write('{\n  "merch_name": "Joe",\n  "account": "4111111111111111",\n  "amount": "1,234.50",\n  "amuont": "5",\n  "merch_name": "Jim"\n}');
    const errors = await markedLines('error');
    assert.ok(errors.includes(3) && errors.includes(4), `lines ${errors}`);
    const warnings = await markedLines('warning');
    assert.ok(warnings.includes(5) && warnings.includes(6), `lines ${warnings}`);
    const rows = await page.$$eval('#findings li', (nodes) => nodes.map((node) => node.textContent));
    assert.ok(rows.findIndex((row) => row.includes('line 3')) < rows.findIndex((row) => row.includes('line 5')), rows.join('\n'));
    assert.ok(rows.every((row) => !row.includes('4111111111111111')));
    assert.match(await textOf('#totals'), /^\d+ errors/);
    await page.evaluate(() => [...document.querySelectorAll('#findings button')].find((node) => node.textContent.includes('line 4')).click());
    assert.match(await page.$eval('.cm-activeLine', (node) => node.textContent), /1,234\.50/);
  });

  test('any number of findings is told of, and the worst are listed', async () => {
    await write(`{${'"a":1,'.repeat(5000)}"amount":"x"}`);
    const rows = await page.$$eval('#findings li', (nodes) => nodes.map((node) => node.textContent));
    assert.equal(rows.length, 201);
    assert.ok(rows.some((row) => row.includes('amount-unreadable')), rows[0]);
    assert.match(rows[200], /^4\d{3} more are not shown/);
  });

  test('keys are offered with their meaning', async () => {
    await write('{\n  \n}');
    await page.keyboard.press('ArrowUp');
    await page.keyboard.press('End');
    await page.keyboard.type('"merch_na');
    await page.waitForSelector('.cm-tooltip-autocomplete [aria-selected]');
    assert.match(await textOf('.cm-tooltip-autocomplete [aria-selected]'), /^merch_name.*trading name/);
    await new Promise((done) => setTimeout(done, 100)); // before which the editor takes no choice
    await page.keyboard.press('Enter');
    await page.keyboard.type('Hatch');
    assert.equal(await editorText(), '{\n  "merch_name": "Hatch"\n}');
    assert.ok((await papers())[0].includes('HATCH'));
  });

  test('an envelope that is pasted fills in the merchant', async () => {
    await page.click('.cm-content');
    await page.keyboard.down('Control');
    await page.keyboard.press('a');
    await page.keyboard.up('Control');
    await page.evaluate(() => {
      const data = new DataTransfer();
      data.setData('text/plain', '{\n  "config": {"lang": "FR", "country": 124, "currency": "cad", "industry": "retail, ecomm"},\n  "record": {\n    "amount": 7.10\n  }\n}');
      document.querySelector('.cm-content').dispatchEvent(new ClipboardEvent('paste', { clipboardData: data, bubbles: true, cancelable: true }));
    });
    assert.equal(await editorText(), '{\n  "amount": 7.10\n}\n');
    const chosen = await page.$$eval('#merchant select', (nodes) => nodes.slice(0, 5).map((node) => node.value));
    assert.deepEqual(chosen, ['fr', 'fr', 'CA', 'CAD', 'retail, ecomm']);
    assert.ok((await papers())[0].includes('7.10$'));
    assert.deepEqual(page.complaints, []);
  });

  test('tidying changes blanks alone', async () => {
    await write('{"a":[1.10,{"b":"{,}"},[],{}],"c":"x\\"y",  "d" :null}');
    await click('#format');
    assert.equal(await editorText(), '{\n  "a": [\n    1.10,\n    {\n      "b": "{,}"\n    },\n    [],\n    {}\n  ],\n  "c": "x\\"y",\n  "d": null\n}\n');
  });
});

describe('width', () => {
  before(async () => {
    page = await open({ width: 1600 });
  });

  const columns = () => page.$eval('#columns', (node) => Number.parseInt(node.textContent, 10));
  const widest = async () => Math.max(...(await papers()).join('\n').split('\n').map((line) => line.length));

  test('the edge is dragged from 10 to 80 columns, and follows the pointer', async () => {
    const middle = async () => page.$eval('.edge span', (node) => {
      const { left, width, top, height } = node.getBoundingClientRect();
      return { x: left + width / 2, y: top + height / 2 };
    });
    const column = await page.$eval('.paper pre', (node) => node.getBoundingClientRect().width / 40);
    const from = await middle();
    await page.mouse.move(from.x, from.y);
    await page.mouse.down();
    await page.mouse.move(from.x - 8 * column, from.y, { steps: 4 });
    assert.equal(await columns(), 32);
    assert.equal(await widest(), 32);
    assert.ok(Math.abs((await middle()).x - (from.x - 8 * column)) < column, 'the edge is not where the pointer is');
    await page.mouse.move(from.x - 700, from.y);
    assert.equal(await columns(), 10);
    await page.mouse.move(from.x + 900, from.y);
    assert.equal(await columns(), 80);
    assert.equal(await widest(), 80);
    await page.mouse.up();
    await page.mouse.move(from.x, from.y);
    assert.equal(await columns(), 80, 'it is not let go');
  });

  test('keys do the same, on the edge and on the slider', async () => {
    for (const selector of ['.edge', '#width']) {
      await page.focus(selector);
      await page.keyboard.press('Home');
      assert.equal(await columns(), 10);
      await page.keyboard.press('ArrowRight');
      await page.keyboard.press('ArrowUp');
      assert.equal(await columns(), 12);
      await page.keyboard.press('End');
      await page.keyboard.press('ArrowLeft');
      assert.equal(await columns(), 79);
    }
    const [now, text] = await page.$eval('.edge', (node) => [node.ariaValueNow, node.getAttribute('aria-valuetext')]);
    assert.deepEqual([now, text], ['79', '79 columns']);
  });
});

describe('links', () => {
  const linkOf = async () => {
    await page.evaluate(() => {
      navigator.clipboard.writeText = async (text) => {
        window.copied = text;
      };
    });
    await click('#share');
    await page.waitForFunction(() => window.copied);
    return page.evaluate(() => new URL(window.copied).hash);
  };

  test('a link holds the record, the merchant and what is shown', async () => {
    page = await open();
    const text = '{\n  "merch_name": "Crêperie 😀 </script>",\n  "amount": "5.00"\n}\n';
    await write(text);
    await select('merchant-customerLanguage', 'it');
    await choose('arrangement', 'all');
    await pressForm('moneris');
    await choose('copies', 'merchant');
    await page.focus('#width');
    await page.keyboard.press('ArrowLeft');
    const fragment = await linkOf();
    assert.match(fragment, /^#r=[\w-]+$/);
    assert.equal(await page.evaluate(() => location.hash), '', 'what is typed stands in the address');
    page = await open({ fragment });
    assert.equal(await editorText(), text);
    assert.equal(await page.$eval('#merchant-customerLanguage', (node) => node.value), 'it');
    assert.deepEqual(await page.$$eval('#forms [aria-pressed="true"]', (nodes) => nodes.map((node) => node.value)), ['plain', 'html', 'json', 'moneris']);
    assert.equal(await textOf('#columns'), '39 columns');
    assert.equal((await papers()).length, 1);
    assert.deepEqual(page.complaints, []);
  });

  test('a damaged link leaves a page that works', async () => {
    for (const fragment of ['#r=', '#r=%%%', '#r=AAAA', '#r=q1YqSy0qzszPU7JSMlTSUSouKcrMSwcA', '#other']) {
      page = await open({ fragment });
      assert.match((await papers())[0], /LANTERNWICK/, fragment);
      assert.deepEqual(page.complaints, []);
      if (fragment.startsWith('#r=')) assert.match(await textOf('#toast'), /damaged/);
    }
  });
});

describe('hostile records', () => {
  const ATTACKS = [
    '<img src=x onerror="window.hacked=1">',
    '<script>window.hacked=1</script>',
    '</script><script>window.hacked=1</script>',
    '"><svg onload=window.hacked=1>',
    "'-window.hacked=1-'",
    'javascript:window.hacked=1',
    '<style>*{display:none}</style><base href="https://evil.example/">',
    '<iframe srcdoc="<script>parent.hacked=1</script>">',
    '\u202Egpj.exe\u2066<!--',
    '&lt;img src=x onerror=window.hacked=1&gt;',
  ];
  const hostile = Object.fromEntries(['merch_name', 'merch_url', 'cardholdername', 'ordernum', 'order_notes', 'rcpt_user_notes', 'printdata', 'custref', 'action', '__proto__', '<img src=x onerror=window.hacked=1>', 'rcpt_custom'].map((key, index) => [key, key === 'rcpt_custom' ? ATTACKS.map((attack) => JSON.stringify(attack) + ':' + JSON.stringify(attack)).join(',') : ATTACKS[index % ATTACKS.length] + ATTACKS.join('')]));
  hostile.line_items = ATTACKS.map((name) => ({ name, price: name, notes: name, type: name }));
  hostile.amount = '5.00';
  const text = JSON.stringify(hostile);

  async function assertHarmless(what) {
    await choose('arrangement', 'all');
    for (const name of ['xml', 'moneris', 'moneris-ecomm', 'printer']) await pressForm(name);
    await new Promise((done) => setTimeout(done, 100));
    const seen = await page.evaluate(() => {
      const shadows = [...document.querySelectorAll('.paper.html')].map((node) => node.shadowRoot);
      const inHtml = shadows.flatMap((shadow) => [...shadow.querySelectorAll('*')]);
      return {
        hacked: 'hacked' in window,
        foreign: [...document.querySelectorAll('img, iframe, base, object, embed, style, script, link, svg svg')].map((node) => node.outerHTML.slice(0, 60)),
        names: [...new Set(inHtml.map((node) => node.localName))].sort(),
        attributes: [...new Set(inHtml.flatMap((node) => node.getAttributeNames()))].sort(),
        links: [...document.querySelectorAll('[href], [src]')].map((node) => node.getAttribute('href') ?? node.getAttribute('src')).filter((value) => !value.startsWith('#icon-')),
        polluted: 'merch_name' in {},
        isTold: shadows[0].textContent.includes('<script>window.hacked=1</script>'),
      };
    });
    assert.deepEqual({ ...seen, foreign: seen.foreign.length }, { hacked: false, foreign: 3, names: ['div', 'span'], attributes: ['class', 'id'], links: [], polluted: false, isTold: true }, `${what}\n${seen.foreign.join('\n')}`);
    assert.deepEqual(page.complaints, [], what);
  }

  test('typed', async () => {
    page = await open();
    await write(text);
    await assertHarmless('typed');
    await click('#findings button');
    await page.hover('.cm-lint-marker');
    await page.waitForSelector('.cm-tooltip');
    assert.equal(await page.$eval('.cm-tooltip', (node) => node.querySelectorAll('img, script, svg').length), 0);
    assert.equal(await page.evaluate(() => 'hacked' in window), false);
  });

  test('in the page that the command writes', async () => {
    const record = path.join(work, 'hostile.json');
    writeFileSync(record, text);
    const html = execFileSync(COMMAND, ['--quiet', '--playground', record], { encoding: 'utf8', maxBuffer: 1 << 24 });
    const file = path.join(work, 'hostile.html');
    writeFileSync(file, html);
    page = await open({}, file);
    assert.equal(await editorText(), `${text}\n`);
    await assertHarmless('written');
  });

  test('in a link, with settings that are none', async () => {
    page = await open();
    const state = (given) => page.evaluate(async (value) => {
      const stream = new Blob([JSON.stringify(value)]).stream().pipeThrough(new CompressionStream('deflate-raw'));
      const bytes = new Uint8Array(await new Response(stream).arrayBuffer());
      return `#r=${btoa(String.fromCharCode(...bytes)).replaceAll('+', '-').replaceAll('/', '_')}`;
    }, given);
    const markup = '<img src=x onerror=window.hacked=1>';
    const states = [
      { text, config: { customerLanguage: markup, country: [markup], currency: { a: 1 }, industry: 5, timeZone: markup, __proto__: { x: 1 } },
        layout: { forms: [markup, 'html', '__proto__'], arrangement: markup, copies: 7, width: markup, printer: { language: markup, qr: markup } } },
      { text, config: 'x', layout: 'y' },
      { text, config: null, layout: { width: 1e9, forms: 'plain', printer: [] } },
    ];
    for (const given of states) {
      const fragment = await state(given);
      page = await open({ fragment });
      assert.equal(await editorText(), `${text}\n`);
      assert.equal(await page.evaluate(() => 'hacked' in window), false);
      assert.deepEqual(page.complaints, []);
      assert.deepEqual(await page.$$eval('#merchant select', (nodes) => nodes.map((node) => node.value)), ['en', 'en', 'US', 'USD', 'unknown', 'America/New_York']);
      await assertHarmless('linked');
    }
  });

  test('the policy holds even where a script got in', async () => {
    page = await open();
    const tried = await page.evaluate(async () => {
      const script = document.createElement('script');
      const outcome = {};
      try {
        script.text = 'window.hacked = 1';
        document.body.append(script);
      } catch (fault) {
        outcome.script = fault.name;
      }
      try {
        document.body.innerHTML += '<img src=x onerror="window.hacked=1">';
      } catch (fault) {
        outcome.markup = fault.name;
      }
      // Out of the driver's own call, which may evaluate.
      outcome.eval = await new Promise((done) => {
        setTimeout(() => {
          try {
            done((0, eval)('1'));
          } catch (fault) {
            done(fault.name);
          }
        });
      });
      outcome.fetch = await fetch('https://evil.example/').then(() => 'sent', (fault) => fault.name);
      outcome.beacon = await new Promise((done) => {
        const image = new Image();
        image.onload = () => done('sent');
        image.onerror = () => done('refused');
        image.src = 'https://evil.example/x.png';
      });
      outcome.hacked = 'hacked' in window;
      return outcome;
    });
    assert.deepEqual(tried, { script: 'TypeError', markup: 'TypeError', eval: 'EvalError', fetch: 'TypeError', beacon: 'refused', hacked: false });
    assert.ok(page.complaints.every((complaint) => /Content Security Policy|Trusted|^request: https:\/\/evil/.test(complaint)), page.complaints.join('\n'));
  });
});

describe('everybody', () => {
  const SIZES = [[320, 640], [360, 740], [768, 1024], [1024, 768], [1600, 950], [2200, 1200]];

  test('nothing is cut off or pale on any screen, light or dark', async () => {
    for (const scheme of ['light', 'dark']) {
      for (const [width, height] of SIZES) {
        page = await open({ width, height, scheme });
        for (const view of ['record', 'receipts']) {
          await page.evaluate((name) => document.querySelector(`.views [data-view="${name}"]`).click(), view);
          const faults = await page.evaluate(() => {
            const found = [];
            const { scrollWidth, clientWidth, scrollHeight, clientHeight } = document.documentElement;
            if (scrollWidth > clientWidth) found.push(`scrolls sideways: ${scrollWidth}`);
            if (scrollHeight > clientHeight) found.push(`scrolls: ${scrollHeight}`);
            const channels = (color) => color.match(/[\d.]+/g).map(Number);
            const light = (color) => {
              const [r, g, b] = channels(color).map((value) => value / 255).map((value) => (value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4));
              return 0.2126 * r + 0.7152 * g + 0.0722 * b;
            };
            const groundOf = (node) => {
              for (let at = node; at; at = at.parentElement) {
                const [, , , alpha = 1] = channels(getComputedStyle(at).backgroundColor);
                if (alpha === 1) return getComputedStyle(at).backgroundColor;
              }
              return 'rgb(255, 255, 255)';
            };
            const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
            for (let text = walker.nextNode(); text; text = walker.nextNode()) {
              const node = text.parentElement;
              if (text.data.trim() === '' || !node.checkVisibility({ visibilityProperty: true, opacityProperty: true }) || node.closest('.hidden, :disabled, option, script, .toast')) continue;
              const [a, b] = [light(getComputedStyle(node).color), light(groundOf(node))].sort((x, y) => y - x);
              if ((a + 0.05) / (b + 0.05) < 4.5) found.push(`too pale: ${text.data.trim().slice(0, 20)} ${node.className}`);
            }
            for (const node of document.querySelectorAll('button, select, input')) {
              const { left, right, width: wide } = node.getBoundingClientRect();
              if (wide > 0 && !node.closest('.forms, .hidden, .desk') && !node.matches('.hidden') && (left < 0 || right > clientWidth)) found.push(`cut off: ${node.id || node.textContent}`);
            }
            return [...new Set(found)];
          });
          assert.deepEqual(faults, [], `${scheme}, ${width} pixels, ${view}`);
        }
      }
    }
  });

  test('the switch changes the colours', async () => {
    page = await open({ scheme: 'light' });
    const ground = () => page.evaluate(() => getComputedStyle(document.body).backgroundColor);
    const system = await ground();
    await click('#theme');
    assert.equal(await ground(), system);
    await click('#theme');
    assert.notEqual(await ground(), system);
    await click('#theme');
    assert.equal(await ground(), system);
  });

  test('everything has a name, and the keyboard reaches all of it', async () => {
    page = await open({ width: 1600 });
    const { nodes } = await (await page.createCDPSession()).send('Accessibility.getFullAXTree');
    const heard = nodes.filter((node) => !node.ignored).map((node) => [node.role.value, node.name?.value ?? '']);
    for (const [role, name] of [['heading', 'Record'], ['heading', 'Plain text'], ['combobox', 'Sample'], ['combobox', 'Customer copy'], ['combobox', 'Time zone'],
      ['textbox', 'Record as JSON'], ['radio', 'Merchant'], ['slider', 'Width of the paper'], ['button', 'Colours: System'], ['figure', 'Customer copy'], ['button', 'Text']])
      assert.ok(heard.some(([foundRole, foundName]) => foundRole === role && foundName.startsWith(name)), `${role} ${name}`);
    for (const role of ['button', 'combobox', 'radio', 'slider', 'textbox', 'checkbox'])
      assert.deepEqual(heard.filter(([found, name]) => found === role && name === ''), [], role);

    const reached = new Set();
    for (let i = 0; i < 60; i++) {
      await page.keyboard.press('Tab');
      reached.add(await page.evaluate(() => {
        const node = document.activeElement;
        return node.id || node.name || node.value || node.className || node.textContent;
      }));
    }
    for (const name of ['theme', 'sample', 'open', 'format', 'share', 'merchant-country', 'cm-content', 'plain', 'printer', 'copies', 'arrangement', 'width', 'desk', 'edge'])
      assert.ok([...reached].some((found) => String(found).split(' ').includes(name)), `${name}: ${[...reached].join(', ')}`);
  });

  test('downloads are what is shown', async () => {
    page = await open();
    await page.evaluate(() => {
      URL.createObjectURL = (blob) => {
        window.downloaded = blob;
        return '#';
      };
      HTMLAnchorElement.prototype.click = () => {};
    });
    const download = async (form) => {
      await pressForm(form);
      await click(`[data-form="${form}"] .actions button:last-child`);
      return page.evaluate(async () => ({ type: window.downloaded.type, bytes: [...new Uint8Array(await window.downloaded.arrayBuffer())] }));
    };
    const record = path.join(root, 'examples/records/restaurant-ten-items.json');
    const run = (...options) => [...execFileSync(COMMAND, ['--quiet', ...options, record])];
    assert.deepEqual((await download('plain')).bytes, run());
    assert.deepEqual((await download('json')).bytes, run('--form', 'json'));
    assert.deepEqual((await download('printer')).bytes, run('--output', 'escpos', '--paper', '48', '--barcode'));
    const html = Buffer.from((await download('html')).bytes).toString();
    assert.match(html, /^<!DOCTYPE html>\n<html lang="en">[\s\S]*rcpt_block[\s\S]*The Lanternwick Table/);
    assert.equal(html.match(/id="merch_name"/g).length, 1);
  });

  test('the command writes the page with the record and what it was asked for', async () => {
    const file = path.join(work, 'given.html');
    const record = path.join(root, 'examples/records/keyed-sale.txt');
    execFileSync(COMMAND, ['--quiet', '--playground', '--customer-lang', 'fr', '--country', 'CA', '--industry', 'mail,retail', '--timezone', 'America/Toronto',
      '--width', '32', '--copy', 'customer', '--set', 'custref=É-7', '-o', file, record]);
    page = await open({}, file);
    assert.deepEqual(await page.$$eval('#merchant select', (nodes) => nodes.map((node) => node.value)), ['fr', 'en', 'CA', 'USD', 'retail,mail', 'America/Toronto']);
    const expected = execFileSync(COMMAND, ['--quiet', '--customer-lang', 'fr', '--country', 'CA', '--copy', 'customer', '--width', '32', '--set', 'custref=É-7', record], { encoding: 'utf8' });
    assert.deepEqual(await papers(), [expected.slice(0, -1)]);
    assert.deepEqual(page.complaints, []);
  });
});
