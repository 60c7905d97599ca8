// SPDX-License-Identifier: Apache-2.0
// The page in a browser, from disk: FRAMEQUILT_PROGRAM and FRAMEQUILT_CHROMIUM say what to run.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { openBrowser, openPage } from "./browser.mjs";
import { kFrames, kOddName, makeCapture } from "./capture.mjs";

let capture;
let browser;
before(async () => {
  capture = makeCapture(process.env.FRAMEQUILT_PROGRAM);
  browser = await openBrowser(process.env.FRAMEQUILT_CHROMIUM);
});
after(async () => {
  await browser?.close();
  capture?.remove();
});

/** Blanks that keep a line together count as any other. */
const plain = (text) => text.replaceAll("\u00A0", " ");
const textOf = async (page, selector) => plain(await page.$eval(selector, (element) => element.innerText));

/** Clicks where the middle of a frame, or of where it would lie, is shown. */
async function clickFrame(page, number) {
  const spot = await page.evaluate((wanted) => {
    const frame = Capture.frames.find((one) => one.number === wanted);
    const area = frame.place ?? frame.guess;
    const { left, top, perPixel } = Viewer.mapping();
    const glass = document.getElementById("glass").getBoundingClientRect();
    return {
      x: glass.left + left + (area.x + area.cols / 2) * perPixel,
      y: glass.top + top + (area.y + area.rows / 2) * perPixel,
    };
  }, number);
  await page.mouse.click(spot.x, spot.y);
}

/** Waits until the record shows the frame of this number. */
const waitForFrame = (page, number) => page.waitForFunction(
  (wanted) => document.querySelector("#record .number")?.textContent === wanted,
  { polling: 20 }, String(number));

/** Pixels over the mosaic that anything is drawn on. */
const pixelsDrawn = (page) => page.$eval("#overlay", (canvas) => {
  const copy = new OffscreenCanvas(canvas.width, canvas.height).getContext("2d", { willReadFrequently: true });
  copy.drawImage(canvas, 0, 0);
  const { data } = copy.getImageData(0, 0, canvas.width, canvas.height);
  let count = 0;
  for (let i = 3; i < data.length; i += 4) if (data[i] > 0) ++count;
  return count;
});

/** How many gray levels the screen shows where the mosaic's middle is. */
async function shadesOnScreen(page) {
  const glass = await (await page.$("#glass")).boundingBox();
  const middle = { x: glass.x + glass.width / 2, y: glass.y + glass.height / 2 };
  const clip = { x: middle.x - 30, y: middle.y - 30, width: 60, height: 60 };
  const png = await page.screenshot({ clip, encoding: "base64" });
  return page.evaluate(async (bytes) => {
    const picture = new Image();
    picture.src = `data:image/png;base64,${bytes}`;
    await picture.decode();
    const pen = new OffscreenCanvas(60, 60).getContext("2d");
    pen.drawImage(picture, 0, 0);
    return new Set(pen.getImageData(0, 0, 60, 60).data).size;
  }, png);
}

const viewOf = (page) => page.evaluate(() => Viewer.shown());
const waitForHash = (page, part) =>
  page.waitForFunction((wanted) => location.hash.includes(wanted), { polling: 20 }, part);

function assertFromDiskAlone({ complaints, requests }) {
  assert.deepEqual(complaints, []);
  const strangers = requests.filter((url) => !/^(file|data|blob):/.test(url));
  assert.deepEqual(strangers, []);
}

test("the pyramid opens from disk with its tiles and the counts", async () => {
  const opened = await openPage(browser, capture.pyramid);
  const { page, requests } = opened;
  assertFromDiskAlone(opened);
  assert.ok(requests.some((url) => /mosaic_files\/\d+\/0_0\.jpg$/.test(url)));
  assert.equal(await textOf(page, "#title"), "m.png");
  assert.deepEqual((await textOf(page, "#counts")).split(/\s+/).join(" "), "frames read 6 joined 4 refused 2");
  const kManyShades = 60;
  assert.ok(await shadesOnScreen(page) > kManyShades);
  await page.close();
});

test("buttons zoom, and show the whole mosaic again", async () => {
  const opened = await openPage(browser, capture.pyramid);
  const { page } = opened;
  assert.equal(await viewOf(page), null);
  for (let i = 0; i < 3; ++i) await page.click("#zoom-in");
  await waitForHash(page, "view=");
  const near = await viewOf(page);
  await page.click("#zoom-out");
  await page.waitForFunction((width) => Viewer.shown().width > width * 1.2, { polling: 20 }, near.width);
  await page.click("#zoom-fit");
  await page.waitForFunction(() => Viewer.shown() === null && !location.hash.includes("view"), { polling: 20 });
  assertFromDiskAlone(opened);
  await page.close();
});

test("layers are switched on and off", async () => {
  const opened = await openPage(browser, capture.pyramid);
  const { page } = opened;
  let drawn = await pixelsDrawn(page);
  assert.ok(drawn > 0);
  for (const layer of ["outlines", "numbers", "refused"]) {
    await page.click(`#layer-${layer}`);
    const less = await pixelsDrawn(page);
    assert.ok(less < drawn, `${layer}: ${less} < ${drawn}`);
    drawn = less;
  }
  assert.equal(drawn, 0);
  await page.click("#layer-path");
  assert.ok(await pixelsDrawn(page) > 0);
  await waitForHash(page, "layers=path");
  assertFromDiskAlone(opened);
  await page.close();
});

test("a click on a frame shows its record, whatever it is called", async () => {
  const opened = await openPage(browser, capture.pyramid);
  const { page } = opened;
  await clickFrame(page, 2);
  await waitForFrame(page, 2);
  assert.equal(await textOf(page, "#record h2"), `2${kOddName}`);
  assert.equal(await textOf(page, "#record .pill"), "joined");
  const record = await textOf(page, "#record table");
  const { measures, placement } = await page.evaluate(() => Capture.frames[1].record);
  assert.match(record, new RegExp(`matches\\s+${measures.matches.value}\\s+needs at least 11`));
  const micrometres = `${Number((placement.x * 0.5).toPrecision(4))} \u00B5m`;
  assert.ok(record.includes(micrometres), `${micrometres} in ${record}`);
  assert.equal(await page.$("#record b"), null);
  assertFromDiskAlone(opened);
  await page.close();
});

test("a refused frame says why, in the words of the console", async () => {
  const opened = await openPage(browser, capture.pyramid);
  const { page } = opened;
  const reasons = await textOf(page, "#record");
  assert.match(reasons, /no overlap found\s+1\s+let neighbouring frames share about half/);
  assert.match(reasons, /moved too little\s+1/);
  await page.focus("#list");
  await page.keyboard.press("End");
  await waitForFrame(page, 6);
  assert.equal(await textOf(page, "#record .why"), "moved too little: moved by 0 %, needs more than 10 %");
  assert.match(await textOf(page, "#record tr.failed"), /moved by\s+0 %/);
  await page.keyboard.press("ArrowUp");
  await page.keyboard.press("ArrowUp");
  await waitForFrame(page, 4);
  const why = await page.evaluate(() => Capture.frames[3].record.reason.explanation);
  assert.equal(await textOf(page, "#record .why"), why);
  assert.match(await textOf(page, "#record"), /place unknown: marked on frame 3/);
  assertFromDiskAlone(opened);
  await page.close();
});

test("the plots have limits, and choose frames by click and keys", async () => {
  const opened = await openPage(browser, capture.pyramid);
  const { page } = opened;
  const titles = await page.$$eval(".plot h3", (all) => all.map((one) => one.innerText.trim()));
  assert.deepEqual(titles, ["Matches", "Offset (pixels)",
    "Moved by and overlap left", "Brightness difference", "Sharpness difference"]);
  const limits = await page.$$eval(".plot .limits", (all) => all.map((one) => one.innerText));
  assert.deepEqual(limits.map(plain),
    ["needs at least 11", "needs more than 10 %", "needs less than 128 gray levels",
      "needs less than 128 levels"]);
  assert.equal((await page.$$(".plot line.limit")).length, 5);
  const box = await (await page.$(".plot svg")).boundingBox();
  await page.mouse.click(box.x + box.width - 14, box.y + box.height / 2);
  await waitForFrame(page, 6);
  await page.focus("#plots");
  await page.keyboard.press("ArrowLeft");
  await waitForFrame(page, 5);
  assert.equal(await page.$eval("#plots", (one) => one.getAttribute("aria-valuenow")), "5");
  await page.keyboard.press("Home");
  await waitForFrame(page, 1);
  await page.keyboard.press("Escape");
  await page.waitForFunction(() => !document.querySelector("#record .number"), { polling: 20 });
  assertFromDiskAlone(opened);
  await page.close();
});

test("the list holds all frames, or those of a kind", async () => {
  const { page } = await openPage(browser, capture.pyramid);
  const listed = () => page.$$eval("#list .row .number", (all) => all.map((one) => one.innerText).join(" "));
  assert.equal(await listed(), "1 2 3 4 5 6");
  await page.click("#filters button:nth-child(3)");
  assert.equal(await listed(), "4 6");
  await page.click("#list .row");
  await waitForFrame(page, 4);
  await page.click("#filters button:nth-child(2)");
  assert.equal(await listed(), "1 2 3 5");
  await page.close();
});

test("a link opens the same view", async () => {
  const opened = await openPage(browser, capture.pyramid,
    { hash: "#frame=3&view=200,150,100&layers=outlines,path" });
  const { page } = opened;
  await waitForFrame(page, 3);
  const view = await viewOf(page);
  assert.ok(Math.abs(view.x - 200) < 1 && Math.abs(view.y - 150) < 1 && Math.abs(view.width - 100) < 1,
    JSON.stringify(view));
  const on = await page.$$eval("#layers input:checked", (all) => all.map((one) => one.id));
  assert.deepEqual(on, ["layer-outlines", "layer-path"]);
  await page.evaluate(() => { location.hash = "#frame=2"; });
  await waitForFrame(page, 2);
  assertFromDiskAlone(opened);
  await page.close();
});

test("one file holds all of it", async () => {
  const opened = await openPage(browser, capture.oneFile);
  const { page, requests } = opened;
  assertFromDiskAlone(opened);
  assert.equal(requests.filter((url) => url.startsWith("file:")).length, 1);
  await clickFrame(page, 3);
  await waitForFrame(page, 3);
  await page.close();
});

test("without a mosaic the records are still there", async () => {
  const opened = await openPage(browser, capture.nothing);
  const { page } = opened;
  assert.match(await textOf(page, "#notice"), /^no mosaic written: nothing could be joined/);
  await page.click("#list .row:nth-child(2)");
  await waitForFrame(page, 2);
  assertFromDiskAlone(opened);
  await page.close();
});

for (const [width, height] of [[1280, 720], [390, 844], [3840, 2160]]) {
  test(`nothing is clipped at ${width} x ${height}`, async () => {
    const opened = await openPage(browser, capture.pyramid, { width, height, dark: width > 2000, hash: "#frame=6" });
    const { page } = opened;
    const fit = await page.evaluate(() => {
      const root = document.documentElement;
      const texts = [...document.querySelectorAll(
        "label, button, th, td, dt, dd, .pill, .why, .remark, .origin, .plot h3, .plot .limits, .plot text")];
      return {
        beside: root.scrollWidth - root.clientWidth,
        below: root.scrollHeight - root.clientHeight,
        clipped: texts.filter((one) => {
          const box = one.getBoundingClientRect();
          const around = (one.closest(".panel") ?? root).getBoundingClientRect();
          return box.width > 0 && (box.left < around.left || box.right > around.right ||
            (one.scrollWidth > one.clientWidth + 1 && one.clientWidth > 0));
        }).map((one) => one.textContent),
        labels: [...document.querySelectorAll(".plot text")].filter((one) => {
          const [box, plot] = [one, one.closest("svg")].map((part) => part.getBoundingClientRect());
          return box.left < plot.left || box.right > plot.right || box.bottom > plot.bottom + 1;
        }).map((one) => one.textContent),
        glass: document.getElementById("glass").clientHeight / window.innerHeight,
      };
    });
    assert.equal(fit.beside, 0);
    if (width >= 1280) assert.equal(fit.below, 0);
    assert.deepEqual(fit.clipped, []);
    assert.deepEqual(fit.labels, []);
    assert.ok(fit.glass > 0.4, `the mosaic takes ${fit.glass} of the height`);
    await page.close();
  });
}

test("frames have the size that the capture has", async () => {
  const { page } = await openPage(browser, capture.pyramid);
  assert.deepEqual(await page.evaluate(() => {
    const { cols, rows } = Capture.frames[0].place;
    return { cols, rows };
  }), kFrames);
  await page.close();
});
