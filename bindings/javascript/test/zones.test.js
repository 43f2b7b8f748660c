// Times of day across changes of the clocks.

import assert from 'node:assert/strict';
import test from 'node:test';

import { load, render, Renderer } from '../node.js';
import { offsetOf } from '../src/zones.js';
import { run, withoutCommand } from './samples.js';

await load();

function shown(timeZone, seconds) {
  const { customer } = render({ timestamp: seconds }, { timeZone, blocks: ['reference'] });
  return /TIME: +(.*)$/m.exec(customer.text)[1];
}

// When the clocks are changed, in UTC, and what they show the second before and then.
const CHANGES = [
  ['America/Toronto', '2026-03-08T07:00:00Z', '03/08/26 01:59:59', '03/08/26 03:00:00'],
  ['America/Toronto', '2026-11-01T06:00:00Z', '11/01/26 01:59:59', '11/01/26 01:00:00'],
  ['America/St_Johns', '2026-03-08T05:30:00Z', '03/08/26 01:59:59', '03/08/26 03:00:00'],
  ['Europe/Berlin', '2026-03-29T01:00:00Z', '03/29/26 01:59:59', '03/29/26 03:00:00'],
  ['Europe/London', '2026-10-25T01:00:00Z', '10/25/26 01:59:59', '10/25/26 01:00:00'],
  ['Australia/Lord_Howe', '2026-10-03T15:30:00Z', '10/04/26 01:59:59', '10/04/26 02:30:00'],
  ['Pacific/Auckland', '2026-04-04T14:00:00Z', '04/05/26 02:59:59', '04/05/26 02:00:00'],
  ['America/Sao_Paulo', '2019-02-17T02:00:00Z', '02/16/19 23:59:59', '02/16/19 23:00:00'],
  ['Pacific/Apia', '2011-12-30T10:00:00Z', '12/29/11 23:59:59', '12/31/11 00:00:00'],
  ['Africa/Monrovia', '1972-01-07T00:44:30Z', '01/06/72 23:59:59', '01/07/72 00:44:30'],
];

test('the clocks of a zone before and after they are changed', () => {
  for (const [zone, change, before, after] of CHANGES) {
    const seconds = Date.parse(change) / 1000;
    assert.deepEqual([shown(zone, seconds - 1), shown(zone, seconds)], [before, after], `${zone} ${change}`);
    // Again, when what was asked is kept, and on the days beside.
    assert.deepEqual([shown(zone, seconds), shown(zone, seconds - 1)], [after, before], `${zone} ${change}`);
    assert.notEqual(shown(zone, seconds + 86400), after);
  }
});

test('both copies show the same time, and other zones do not matter', () => {
  const toronto = new Renderer({ timeZone: 'America/Toronto' });
  const tokyo = new Renderer({ timeZone: 'Asia/Tokyo' });
  for (let i = 0; i < 3; ++i) {
    for (const [renderer, time] of [[toronto, '03/14/26 11:41:07'], [tokyo, '03/15/26 00:41:07']]) {
      for (const copy of renderer.render({ timestamp: 1773502867 }).copies) assert.ok(copy.block('reference').includes(time));
    }
  }
});

// Of the platform by another way: the fields of a date instead of the name of an offset.
function askedOtherwise(zone, seconds) {
  const fields = {};
  const format = new Intl.DateTimeFormat('en-US', { timeZone: zone, hourCycle: 'h23', year: 'numeric', month: 'numeric', day: 'numeric', hour: 'numeric', minute: 'numeric', second: 'numeric' });
  for (const { type, value } of format.formatToParts(seconds * 1000)) fields[type] = Number(value);
  return Date.UTC(fields.year, fields.month - 1, fields.day, fields.hour, fields.minute, fields.second) / 1000 - seconds;
}

test('an offset that is kept for a day holds all day, in every zone', () => {
  const zones = Intl.supportedValuesOf('timeZone');
  assert.ok(zones.length > 300);
  let state = 12345;
  const random = (below) => (state = (state * 48271) % 2147483647) % below;
  for (const zone of zones) {
    for (let i = 0; i < 12; ++i) {
      const seconds = random(70 * 365) * 86400 + random(86400);
      assert.equal(offsetOf(zone, BigInt(seconds)), askedOtherwise(zone, seconds), `${zone} ${seconds}`);
    }
  }
});

test('three years, every four hours, in zones with clocks of their own', { skip: withoutCommand }, () => {
  const hours = Array.from({ length: 3 * 366 * 6 }, (_, i) => Date.UTC(2021, 0, 1) / 1000 + i * 4 * 3600 - (i % 2));
  for (const zone of ['America/New_York', 'Australia/Lord_Howe', 'Asia/Tehran', 'America/Santiago', 'Africa/Casablanca', 'Pacific/Chatham', 'Asia/Gaza', 'Antarctica/Troll']) {
    const lines = run(['--batch', '--timezone', zone, '--block', 'reference', '--copy', 'customer', '-'], hours.map((timestamp) => `${JSON.stringify({ timestamp })}\n`).join('')).trim().split('\n');
    const renderer = new Renderer({ timeZone: zone, blocks: ['reference'], copy: 'customer' });
    lines.forEach((line, i) => assert.ok(line.includes(JSON.stringify(renderer.render({ timestamp: hours[i] }).customer.block('reference'))), `${zone} ${hours[i]}: ${line}`));
  }
});

test('times far away', () => {
  const far = [
    [0, '01/01/70 00:00:00'],
    ['253402300800', '01/01/00 00:00:00'], // the year 10000
    [-1, '00/00/00 00:00:00'],
  ];
  for (const [seconds, time] of far) assert.equal(shown('UTC', seconds), time);
  // Clocks go by the same rules 400 years later, and however long it takes.
  const cycle = 146097n * 86400n;
  for (const seconds of [1783502867n, 1773502867n, 1793502867n]) {
    for (const cycles of [1n, 1000n, 10n ** 8n])
      assert.equal(offsetOf('Europe/Berlin', seconds + cycles * cycle), offsetOf('Europe/Berlin', seconds + cycle));
  }
  // Milliseconds by mistake: in March of 57980, by today's rules, when clocks are ahead.
  assert.equal(offsetOf('America/Toronto', 1767512312000n), -14400);
});

test("without a zone it is the platform's own", () => {
  const there = process.env.TZ;
  try {
    process.env.TZ = 'Asia/Kathmandu';
    assert.equal(shown(undefined, 1773502867), '03/14/26 21:26:07');
  } finally {
    if (there === undefined) delete process.env.TZ;
    else process.env.TZ = there;
  }
});
