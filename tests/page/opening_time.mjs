// SPDX-License-Identifier: Apache-2.0
// Tells how long a page takes to open, until every tile of its first view is on the screen, and to
// show tiles again after a zoom: node opening_time.mjs PAGE
import { resolve } from "node:path";
import { openBrowser, openPage } from "./browser.mjs";

const kTimes = 5;
const file = resolve(process.argv[2]);
const browser = await openBrowser(process.env.FRAMEQUILT_CHROMIUM ?? "/usr/bin/chromium");
const openings = [];
const zooms = [];
for (let i = 0; i < kTimes; ++i) {
  const start = performance.now();
  const { page } = await openPage(browser, file);
  openings.push(performance.now() - start);
  zooms.push(await page.evaluate(async () => {
    const begin = performance.now();
    Viewer.show({ x: Viewer.cols / 3, y: Viewer.rows / 3, width: 1200 }, true);
    await new Promise((done) => setTimeout(() => Viewer.whenDrawn(done), 30));
    return performance.now() - begin;
  }));
  await page.close();
}
await browser.close();

const middle = (times) => [...times].sort((a, b) => a - b)[Math.floor(times.length / 2)].toFixed(0);
console.log(`opened in ${middle(openings)} ms, pixels at full size after ${middle(zooms)} ms ` +
  `(medians of ${kTimes}; the first opening ${openings[0].toFixed(0)} ms)`);
