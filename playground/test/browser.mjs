// A page in headless Chromium that is driven over its protocol, and everything that it complained of.
import { accessSync } from 'node:fs';
import { pathToFileURL } from 'node:url';
import puppeteer from 'puppeteer-core';

const NAMES = ['/usr/bin/chromium', '/usr/bin/chromium-browser', '/usr/bin/google-chrome'];

export function findBrowser() {
  return NAMES.find((name) => {
    try {
      accessSync(name);
      return true;
    } catch {
      return false;
    }
  });
}

export function launch() {
  return puppeteer.launch({
    executablePath: findBrowser(),
    pipe: true,
    args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
      '--disable-component-update', '--disable-sync', '--hide-scrollbars', '--force-color-profile=srgb'],
  });
}

// Opens the file in a window of this many pixels, as from the disk. complaints has what the page said that
// it should not: exceptions, errors of the console, refusals of its policy, and requests of any kind.
export async function openPage(browser, file, { width = 1280, height = 900, fragment = '', scheme = 'light', ready = true } = {}) {
  const page = await browser.newPage();
  page.setDefaultTimeout(120_000); // for machines that are busy
  await page.setViewport({ width, height });
  await page.emulateMediaFeatures([{ name: 'prefers-color-scheme', value: scheme }]);
  await page.emulateTimezone('America/New_York');
  page.complaints = [];
  page.on('pageerror', (fault) => page.complaints.push(String(fault)));
  page.on('console', (message) => {
    // The browser's own editing tries to give what is typed its old look.
    if (['error', 'warn'].includes(message.type()) && !message.text().startsWith('Applying inline style')) page.complaints.push(message.text());
  });
  page.on('request', (request) => {
    if (!request.url().startsWith('file:') && !request.url().startsWith('blob:')) page.complaints.push(`request: ${request.url().slice(0, 100)}`);
  });
  await page.goto(pathToFileURL(file).href + fragment);
  if (ready) await page.waitForSelector('html[data-ready]');
  return page;
}
