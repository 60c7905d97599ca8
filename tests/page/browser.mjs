// SPDX-License-Identifier: Apache-2.0
// Pages in a Chromium without a window.
import { pathToFileURL } from "node:url";
import puppeteer from "puppeteer-core";

export function openBrowser(chromium) {
  const args = [
    "--disable-gpu",
    "--disable-dev-shm-usage",
    // Whatever asks for a name finds none.
    "--host-resolver-rules=MAP * ~NOTFOUND",
  ];
  if (process.getuid() === 0) args.push("--no-sandbox");
  return puppeteer.launch({ executablePath: chromium, args, headless: true });
}

/**
 * Opens a file and waits until its mosaic is drawn, or, without one, until it is complete.
 * What it complained of and what it asked for come with it.
 */
export async function openPage(browser, file, { hash = "", width = 1280, height = 720, dark = false } = {}) {
  const page = await browser.newPage();
  const complaints = [];
  const requests = [];
  page.on("console", (message) => {
    if (["error", "warn"].includes(message.type())) complaints.push(message.text());
  });
  page.on("pageerror", (error) => complaints.push(error.message));
  page.on("request", (request) => requests.push(request.url()));
  page.on("requestfailed", (request) => complaints.push(`failed: ${request.url().slice(0, 200)}`));
  await page.setViewport({ width, height, isMobile: width < 600, hasTouch: width < 600 });
  await page.emulateMediaFeatures([{ name: "prefers-color-scheme", value: dark ? "dark" : "light" }]);
  await page.goto(pathToFileURL(file).href + hash);
  await page.waitForFunction("document.documentElement.dataset.ready", { polling: 20 });
  return { page, complaints, requests };
}
