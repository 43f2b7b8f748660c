// speed.mjs PAGE: how long the page takes to answer a keystroke in the amount of the ten-item sample.
// "answered" is from the key event until every receipt that is shown has changed and is laid out;
// "painted" is what the browser itself tells of the event until the next frame, in steps of 8 ms, the
// wait for the frame included; other programs on the machine add to both. "worked" is the processor time
// of the page's main thread for all that a keystroke causes (editing, receipts, layout, painting, its
// release), which others add little to. All in ms.
import { launch, openPage } from './browser.mjs';

const KEYS = 40;
const ROUNDS = 5;
const median = (numbers) => numbers.toSorted((a, b) => a - b)[Math.floor(numbers.length / 2)];
const shown = (numbers) => `median ${median(numbers).toFixed(1)}, least ${Math.min(...numbers).toFixed(1)}, most ${Math.max(...numbers).toFixed(1)}`;

async function measure(page) {
  await page.evaluate(() => {
    window.answered = [];
    window.painted = [];
    new PerformanceObserver((list) => {
      for (const entry of list.getEntries()) if (entry.name === 'keydown') window.painted.push(entry.duration);
    }).observe({ type: 'event', durationThreshold: 16 });
    const receipt = document.querySelector('.card:not([hidden]) .paper pre');
    let began;
    addEventListener('keydown', () => (began = performance.now()), true);
    new MutationObserver(() => {
      queueMicrotask(() => {
        document.body.getBoundingClientRect();
        window.answered.push(performance.now() - began);
      });
    }).observe(receipt, { childList: true, characterData: true, subtree: true });
  });
  await page.click('.cm-content');
  await page.keyboard.down('Control');
  await page.keyboard.press('Home');
  await page.keyboard.up('Control');
  await page.keyboard.press('ArrowDown');
  await page.keyboard.press('End');
  await page.keyboard.press('ArrowLeft');
  await page.keyboard.press('ArrowLeft');
  const session = await page.createCDPSession();
  await session.send('Performance.enable', { timeDomain: 'threadTicks' });
  const worked = async () => (await session.send('Performance.getMetrics')).metrics.find(({ name }) => name === 'TaskDuration').value;
  const before = await worked();
  for (let i = 0; i < KEYS; i++) {
    await page.keyboard.press(i % 2 === 0 ? 'x' : 'Backspace');
    await new Promise((done) => setTimeout(done, 30));
  }
  await new Promise((done) => setTimeout(done, 300));
  const work = ((await worked()) - before) * 1000 / KEYS;
  return { worked: work, ...(await page.evaluate(() => ({ answered: window.answered, painted: window.painted }))) };
}

const browser = await launch();
for (const [name, setUp] of [
  ['plain text, both copies', () => {}],
  ['all seven forms side by side, both copies', () => {
    document.querySelector('#arrangement [value="all"]').click();
    for (const button of document.querySelectorAll('#forms [aria-pressed="false"]')) button.click();
  }],
]) {
  const all = { answered: [], painted: [] };
  const medians = [];
  const works = [];
  for (let round = 0; round < ROUNDS; round++) {
    const page = await openPage(browser, process.argv[2], { width: 1600, height: 950 });
    await page.evaluate(setUp);
    const measured = await measure(page);
    if (measured.answered.length < KEYS) throw new Error(`${measured.answered.length} of ${KEYS} keystrokes were answered`);
    all.answered.push(...measured.answered);
    all.painted.push(...measured.painted);
    medians.push(median(measured.answered));
    works.push(measured.worked);
    await page.close();
  }
  console.log(`${name}: ${all.answered.length} keystrokes in ${ROUNDS} rounds, ms`);
  console.log(`  answered: ${shown(all.answered)}; medians of the rounds ${medians.map((one) => one.toFixed(1)).join(' ')}`);
  console.log(`  worked for a keystroke, a figure a round: ${works.map((one) => one.toFixed(1)).join(' ')}`);
  console.log(`  painted (those of 16 ms or more): ${all.painted.length}${all.painted.length ? `, ${shown(all.painted)}` : ''}`);
}
await browser.close();
