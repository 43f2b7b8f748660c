// Every sample in every form, in whatever runs it: prints how many receipts read as they were approved.

import { check, load, optionsOf, print, render } from 'qelrcpt';
import { approved, formsOf, samples } from './samples.js';

await load();
let right = 0;
for (const each of samples) {
  for (const form of formsOf(each)) {
    const options = { ...optionsOf(each.config), form };
    if (render(each.record, options).text === approved(each, form)) ++right;
    check(each.record, options);
  }
}
const { customer } = print(samples[0].record, { printer: { barcode: true } });
const refused = [{ custref: 'a\ud83d' }, { custref: 'a\0' }, { amount: NaN }].filter((record) => {
  try {
    render(record);
  } catch (fault) {
    return fault instanceof TypeError;
  }
  return false;
});
const time = render({ timestamp: 1773502867 }, { timeZone: 'Australia/Lord_Howe' }).text.includes('03/15/26 02:41:07');
console.log([right, customer.bytes.length > 500, refused.length, time].join(' '));
