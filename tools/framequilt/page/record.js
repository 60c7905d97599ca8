// SPDX-License-Identifier: Apache-2.0
"use strict";

/** What became of the chosen frame; without one, why frames were refused. */
const Record = (() => {
  const place = document.getElementById("record");
  const make = Text.element;
  let onPick = () => {};
  let onShow = () => {};

  const row = (name, value, limit = "", failed = false) =>
    make("tr", { class: failed ? "failed" : null }, make("th", { scope: "row" }, name),
      make("td", {}, value), make("td", { class: "limit" }, limit));

  function placeText(placement) {
    if (!Capture.pixelSize) return "";
    const side = Capture.report.options.pixel_size;
    return `${Text.length(placement.x * side)}, ${Text.length(placement.y * side)}`;
  }

  function rowsOf({ record }) {
    const rows = [];
    if (record.placement) {
      rows.push(row("placement", Text.point(record.placement), placeText(record.placement) || "x, y in pixels"));
    }
    const measures = record.measures ?? {};
    if (measures.offset) rows.push(row("offset", Text.point(measures.offset), "x, y in pixels"));
    for (const measure of Capture.words.measures) {
      const value = measures[measure.field];
      if (!value) continue;
      const failed = !record.joined &&
        (measure.refusal === record.reason.text || measure.label === record.reason.quantity);
      // Longer units stand beside the limit.
      const number = Text.withUnit(value.value, measure.unit === "%" ? "%" : "");
      rows.push(row(measure.label, number, Text.limit(measure, value.limit), failed));
    }
    if (record.milliseconds !== undefined) {
      rows.push(row("time", `${record.milliseconds.toFixed(1)} ms`));
    }
    return rows;
  }

  function remarks(frame) {
    const { record } = frame;
    const lines = [];
    if (record.became_first) lines.push(`${Capture.words.started_again} '${frame.file}'`);
    if (record.joined && !record.measures) lines.push("first frame");
    if (frame.guess) lines.push("dashed on the mosaic: where its offset would have put it");
    if (frame.beside) {
      lines.push(`place unknown: marked on frame ${frame.beside.number}, which it was matched with`);
    }
    return lines.map((line) => make("p", { class: "remark" }, line));
  }

  function stepButton(label, frame) {
    return make("button", { type: "button", class: "button", disabled: !frame, onclick: () => onPick(frame) },
      label);
  }

  function showFrame(frame) {
    const { record } = frame;
    const reason = record.reason;
    const state = record.joined ? "joined" : "refused";
    place.replaceChildren(
      make("header", {},
        make("h2", { title: frame.file }, make("span", { class: "number" }, String(frame.number)),
          frame.file),
        make("span", { class: `pill ${state}` }, state)),
      ...(reason ? [make("p", { class: "why" }, reason.explanation ?? reason.text)] : []),
      ...(reason?.advice ? [make("p", { class: "remark" }, reason.advice)] : []),
      ...remarks(frame),
      make("table", {}, make("tbody", {}, ...rowsOf(frame))),
      make("div", { class: "steps" },
        stepButton("\u2190 Previous", Capture.frames[frame.index - 1]),
        make("button", {
          type: "button", class: "button", disabled: !Capture.areaOf(frame), onclick: () => onShow(frame),
        }, "Zoom to"),
        stepButton("Next \u2192", Capture.frames[frame.index + 1])));
  }

  /** Reasons with their frames, in the order in which they are met. */
  function byReason() {
    const reasons = new Map();
    for (const frame of Capture.frames) {
      if (frame.joined) continue;
      const { text } = frame.record.reason;
      reasons.set(text, [...(reasons.get(text) ?? []), frame]);
    }
    return reasons;
  }

  function showSummary() {
    const reasons = [...byReason()].map(([text, frames]) =>
      make("button", { type: "button", onclick: () => onPick(frames[0]) },
        make("b", {}, text), make("b", {}, String(frames.length)),
        make("span", {}, frames[0].record.reason.advice ?? "")));
    place.replaceChildren(
      make("header", {}, make("h2", {}, reasons.length ? "Why frames were refused"
        : "No frame was refused")),
      ...(reasons.length ? [make("div", { class: "reasons" }, ...reasons)] : []),
      make("p", { class: "remark" },
        "Choose a frame in the mosaic, the plots or the list to see its record."));
  }

  return {
    choose: (frame) => frame ? showFrame(frame) : showSummary(),
    onPick: (callback) => { onPick = callback; },
    /** Calls back with a frame that is to be zoomed to. */
    onShow: (callback) => { onShow = callback; },
  };
})();
