// SPDX-License-Identifier: Apache-2.0
"use strict";

/** Puts the parts together: the chosen frame, the view, and what the header tells. */
(() => {
  const { report, frames } = Capture;
  const at = (id) => document.getElementById(id);
  const glass = at("glass");
  const kStep = 1.5; // A press of a zoom button.
  let chosen = null;

  function tellHeader() {
    at("title").textContent = Capture.title;
    const counts = ["frames_read", "joined", "refused"];
    for (const more of ["left_out", "dropped"]) if (report[more] > 0) counts.push(more);
    at("counts").append(...counts.map((field) => Text.element("div", { class: field },
      Text.element("dt", {}, Text.fieldName(field)), Text.element("dd", {}, String(report[field])))));
    const size = report.mosaic ? [`${report.mosaic.cols} \u00D7 ${report.mosaic.rows} pixels`] : [];
    const ended = ["full", "interrupted"].filter((field) => report[field]);
    at("origin").textContent = [...size, ...ended, `mode ${report.options.mode}`,
      `${report.options.scene} scene`, `backend ${report.backend}`, `framequilt ${report.version}`]
      .join(" \u00B7 ");
  }

  const state = () => ({ frame: chosen, view: Viewer?.shown(), layers: Layers.changed() });
  const remember = () => Link.writeSoon(state);

  function choose(frame) {
    chosen = frame ?? null;
    for (const part of [Record, FrameList, Timeline, Layers]) part.choose(chosen);
    remember();
  }

  /** Chosen elsewhere than on the mosaic: brought into view there. */
  function pick(frame) {
    choose(frame);
    const area = frame && Capture.areaOf(frame);
    if (area && Viewer) Viewer.reveal(area);
  }

  function show(frame) {
    const area = Capture.areaOf(frame);
    if (area && Viewer) Viewer.showArea(area);
  }

  function apply(wanted, immediately) {
    if (wanted.layers) Layers.show(wanted.layers);
    if (wanted.view && Viewer) Viewer.show(wanted.view, immediately);
    if (wanted.frame !== undefined) choose(frames.find((frame) => frame.number === wanted.frame));
  }

  /** A click takes the nearest frame under it; another one at that place the next of them. */
  let last = { x: NaN, y: NaN };
  function clickAt(point) {
    const found = Layers.framesAt(point);
    const again = Math.hypot(point.x - last.x, point.y - last.y) < 6 && found.includes(chosen);
    last = point;
    choose(found[again ? (found.indexOf(chosen) + 1) % found.length : 0]);
  }

  function tellPointer(event) {
    const bounds = glass.getBoundingClientRect();
    const spot = { x: event.clientX - bounds.left, y: event.clientY - bounds.top };
    const point = Viewer.mosaicPoint(spot.x, spot.y);
    const placed = {
      x: (point.x - Capture.origin.x) * Capture.scale,
      y: (point.y - Capture.origin.y) * Capture.scale,
    };
    const [x, y] = [placed.x, placed.y].map((side) => Text.number(Math.floor(side)));
    at("pointer").textContent = `x ${x}, y ${y} pixels`;
    glass.classList.toggle("over-frame", Layers.framesAt(spot).length > 0);
  }

  /** The bar is as long as a round number of pixels, or of micrometres. */
  function drawScaleBar() {
    const perPixel = Viewer.mapping().perPixel / Capture.scale;
    const side = Capture.pixelSize ? report.options.pixel_size : 1;
    const em = parseFloat(getComputedStyle(document.documentElement).fontSize);
    const most = 9 * em / perPixel * side;
    const power = 10 ** Math.floor(Math.log10(most));
    const length = power * [5, 2, 1].find((factor) => factor * power <= most);
    at("scale-bar").style.setProperty("--length", `${length / side * perPixel}px`);
    at("scale-text").textContent = Capture.pixelSize ? Text.length(length)
      : `${Number(length.toPrecision(1))} pixels`;
  }

  function openMosaic() {
    Viewer.onClick(clickAt);
    Viewer.onChange(() => {
      Layers.draw();
      drawScaleBar();
      remember();
    });
    at("viewer").addEventListener("pointermove", tellPointer);
    at("viewer").addEventListener("pointerleave", () => { at("pointer").textContent = ""; });
    at("zoom-in").addEventListener("click", () => Viewer.zoomBy(kStep));
    at("zoom-out").addEventListener("click", () => Viewer.zoomBy(1 / kStep));
    at("zoom-fit").addEventListener("click", () => Viewer.home());
    at("copy-link").addEventListener("click", () => Link.copy(state()));
    Viewer.whenOpen(() => {
      Viewer.home(true);
      apply(Link.read(), true);
      Layers.draw();
      // For whoever waits for the page to be complete.
      Viewer.whenDrawn(() => { document.documentElement.dataset.ready = "mosaic"; });
    });
  }

  function tellNoMosaic() {
    at("notice").textContent = Capture.words.no_mosaic;
    at("notice").hidden = false;
    for (const part of document.querySelectorAll(".bar-of-view, .foot")) part.hidden = true;
    apply(Link.read(), true);
    document.documentElement.dataset.ready = "record";
  }

  tellHeader();
  Layers.fillIn(at("layers"), remember);
  for (const part of [Record, FrameList, Timeline]) part.onPick(pick);
  for (const part of [Record, FrameList]) part.onShow(show);
  addEventListener("keydown", (event) => {
    if (event.key === "Escape") choose(null);
  });
  Link.onChange((wanted) => apply(wanted, false));
  choose(null);
  if (Viewer) openMosaic(); else tellNoMosaic();
})();
