// SPDX-License-Identifier: Apache-2.0
// A small capture, stitched by the program, with its pages.
import { execFileSync } from "node:child_process";
import { copyFileSync, mkdirSync, mkdtempSync, renameSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";

/** File names are free in nearly everything; a page must not take them for markup. */
export const kOddName = "f2 \"x\" 'y' & <b>bold<!-- <script>\u00FC\u{1F52C}.png";

export const kFrames = { cols: 320, rows: 240 };

/**
 * Six pictures: three that join (numbers 1, 2 and 3), one of another place (4), one that joins (5)
 * and the same once more (6), which has moved too little.
 */
export function makeCapture(program) {
  const folder = mkdtempSync(join(tmpdir(), "framequilt-page-"));
  const run = (...args) => execFileSync(program, args, { stdio: "pipe" });
  const simulate = (name, seed) => run("simulate", "--generated", "-o", join(folder, name), "--frames", "4",
    "--cols", String(kFrames.cols), "--rows", String(kFrames.rows), "--seed", String(seed));
  simulate("here", 1);
  simulate("elsewhere", 2);
  const shots = join(folder, "shots");
  mkdirSync(shots);
  const take = (from, name) => copyFileSync(join(folder, from), join(shots, name));
  take("here/frame_0001.png", "f1.png");
  take("here/frame_0002.png", kOddName);
  take("here/frame_0003.png", "f3.png");
  take("elsewhere/frame_0001.png", "f4.png");
  take("here/frame_0004.png", "f5.png");
  take("here/frame_0004.png", "f6.png");
  // A page that is moved with its folder still works.
  run("stitch", shots, "-o", join(folder, "m.png"), "--pyramid", join(folder, "made here"), "--report-html",
    join(folder, "one.html"), "--pixel-size", "0.5", "--mode", "overlap");
  renameSync(join(folder, "made here"), join(folder, "moved [1] #2"));
  try {
    run("stitch", join(shots, "f1.png"), join(shots, "f4.png"), "-o", join(folder, "n.png"), "--report-html",
      join(folder, "none.html"));
  } catch (failure) {
    if (failure.status !== 1) throw failure; // Nothing joined, as it is meant here.
  }
  return {
    pyramid: join(folder, "moved [1] #2", "index.html"),
    oneFile: join(folder, "one.html"),
    nothing: join(folder, "none.html"),
    remove: () => rmSync(folder, { recursive: true }),
  };
}
