// pictures.mjs PAGE FOLDER: the page in windows of several sizes, light and dark, and README's picture.
import { mkdirSync } from 'node:fs';
import path from 'node:path';
import { launch, openPage } from './browser.mjs';

const [file, folder] = process.argv.slice(2);
const press = (selector) => (page) => page.evaluate((found) => document.querySelector(found).click(), selector);
const SCENES = {
  record: [],
  receipts: [press('.views [data-view="receipts"]')],
  beside: [press('.views [data-view="receipts"]'), press('#arrangement [value="all"]'), press('#copies [value="customer"]')],
  printer: [press('.views [data-view="receipts"]'), press('#forms [value="printer"]')],
};

mkdirSync(folder, { recursive: true });
const browser = await launch();
const first = await openPage(browser, file, { width: 1680, height: 940 });
for (const step of SCENES.beside) await step(first);
await press('#forms [value="json"]')(first);
await first.screenshot({ path: path.join(folder, 'playground.png') });
await first.close();
for (const scheme of ['light', 'dark']) {
  for (const [width, height] of [[360, 740], [1024, 768], [1600, 950]]) {
    for (const [scene, steps] of Object.entries(SCENES)) {
      const page = await openPage(browser, file, { width, height, scheme });
      for (const step of steps) await step(page);
      await page.screenshot({ path: path.join(folder, `${width}-${scheme}-${scene}.png`) });
      await page.close();
    }
  }
}
await browser.close();
