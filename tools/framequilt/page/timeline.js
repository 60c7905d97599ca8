// SPDX-License-Identifier: Apache-2.0
"use strict";

/** The plots, which share the axis of the frames. */
const Timeline = (() => {
  const place = document.getElementById("plots");
  const hint = document.getElementById("hint");
  const frames = Capture.frames;
  const kPage = 10; // Frames that a page key moves.

  const measured = (field) => (frame) => {
    const measure = frame.record.measures?.[field];
    return measure === undefined ? undefined : measure.value;
  };

  function limitOf(measure) {
    const frame = frames.find((one) => one.record.measures?.[measure.field]);
    return frame.record.measures[measure.field].limit;
  }

  function plotOf(measure) {
    const limit = limitOf(measure);
    return {
      label: measure.label,
      unit: measure.unit,
      limitText: Text.limit(measure, limit),
      limits: [{ value: limit, below: measure.relation !== "needs less than" }],
      series: [{ label: measure.label, of: measured(measure.field) }],
      mayBeLogarithmic: measure.field === "matches",
    };
  }

  const offsets = {
    label: "offset",
    unit: "pixels",
    limits: [],
    series: ["x", "y"].map((side) => ({
      label: side,
      of: (frame) => frame.record.measures?.offset?.[side],
    })),
  };

  /** What is left of the way is the overlap, so that both limits stand in one plot. */
  function withOverlap(moved, overlap) {
    const limit = limitOf(overlap);
    const text = Text.limit(overlap, limit);
    moved.note = `and ${overlap.label} left`;
    if (text !== moved.limitText) moved.limitText += `; ${overlap.label} ${text}`;
    moved.limits.push({ value: 100 - limit, below: false });
    moved.high = 100;
  }

  function plotsOfRun() {
    const overlap = Capture.measures.find((measure) => measure.field === "overlap_percent");
    const plots = Capture.measures.filter((measure) => measure !== overlap).map((measure) => {
      const plot = plotOf(measure);
      if (overlap && measure.field === "moved_percent") withOverlap(plot, overlap);
      return plot;
    });
    const afterMatches = Capture.measures.length && Capture.measures[0].field === "matches" ? 1 : 0;
    if (frames.some((frame) => frame.record.measures?.offset)) plots.splice(afterMatches, 0, offsets);
    return plots;
  }

  const plots = plotsOfRun().map(Plot.make);
  place.append(...plots.map((plot) => plot.root));
  if (plots.length === 0) document.getElementById("timeline").hidden = true;
  place.setAttribute("aria-valuemin", frames.length ? frames[0].number : 0);
  place.setAttribute("aria-valuemax", frames.length ? frames[frames.length - 1].number : 0);

  let chosen = null;
  let onPick = () => {};

  /** The frame whose number is nearest. */
  function nearest(number) {
    let best = null;
    for (const frame of frames) {
      if (!best || Math.abs(frame.number - number) < Math.abs(best.number - number)) best = frame;
    }
    return best;
  }

  const frameUnder = (plot, event) =>
    nearest(plot.numberAt(event.clientX - plot.svg.getBoundingClientRect().left));

  function point(plot, event) {
    const frame = frameUnder(plot, event);
    for (const one of plots) one.point(frame);
    hint.textContent =
      [`${frame.number} ${frame.file}`, plot.textOf(frame) || Text.outcome(frame)].join(": ");
    hint.hidden = false;
    const outer = hint.parentElement.getBoundingClientRect();
    const inner = plot.root.getBoundingClientRect();
    const left = event.clientX - outer.left - hint.offsetWidth / 2;
    hint.style.left = `${Math.max(4, Math.min(left, outer.width - hint.offsetWidth - 4))}px`;
    hint.style.top = `${inner.top - outer.top - hint.offsetHeight + 4}px`;
  }

  function unpoint() {
    for (const plot of plots) plot.point(null);
    hint.hidden = true;
  }

  for (const plot of plots) {
    plot.svg.addEventListener("pointermove", (event) => point(plot, event));
    plot.svg.addEventListener("pointerleave", unpoint);
    plot.svg.addEventListener("click", (event) => onPick(frameUnder(plot, event)));
    new ResizeObserver(() => plot.draw()).observe(plot.svg);
  }

  place.addEventListener("keydown", (event) => {
    const now = chosen ? chosen.index : -1;
    const target = {
      ArrowLeft: now - 1,
      ArrowDown: now - 1,
      ArrowRight: now + 1,
      ArrowUp: now + 1,
      PageUp: now + kPage,
      PageDown: now - kPage,
      Home: 0,
      End: frames.length - 1,
    }[event.key];
    if (target === undefined) return;
    event.preventDefault();
    onPick(frames[Math.max(0, Math.min(target, frames.length - 1))]);
  });

  return {
    choose: (frame) => {
      chosen = frame;
      for (const plot of plots) plot.choose(frame);
      place.setAttribute("aria-valuenow", frame ? frame.number : 0);
      place.setAttribute("aria-valuetext",
        frame ? `frame ${frame.number}, ${frame.file}, ${Text.outcome(frame)}` : "no frame");
    },
    onPick: (callback) => { onPick = callback; },
  };
})();
