// SPDX-License-Identifier: Apache-2.0
"use strict";

/** All frames, or those joined or refused. */
const FrameList = (() => {
  const list = document.getElementById("list");
  const filters = document.getElementById("filters");
  const make = Text.element;
  let listed = Capture.frames;
  let chosen = null;
  let onPick = () => {};
  let onShow = () => {};

  const kFilters = [
    { label: "all", holds: () => true },
    { label: "joined", holds: (frame) => frame.joined },
    { label: "refused", holds: (frame) => !frame.joined },
  ];

  const rows = new Map(Capture.frames.map((frame) => [frame, make("div",
    { class: "row", role: "option", id: `row-${frame.index}`, "aria-selected": "false" },
    make("span", { class: "number" }, String(frame.number)),
    make("span", { title: frame.file }, frame.file),
    make("span", { class: frame.joined ? "joined" : "refused" }, Text.outcome(frame)))]));
  const frameOf = (target) => {
    const row = target.closest(".row");
    return row ? Capture.frames[Number(row.id.slice("row-".length))] : null;
  };

  function filter(kind) {
    listed = Capture.frames.filter(kind.holds);
    list.replaceChildren(...listed.map((frame) => rows.get(frame)));
    if (listed.length === 0) list.append(make("p", { class: "none" }, `no frame ${kind.label}`));
    for (const button of filters.children) {
      button.setAttribute("aria-pressed", String(button.dataset.kind === kind.label));
    }
    reveal();
  }

  /** Scrolls the list alone, never the page. */
  function reveal() {
    const row = chosen && rows.get(chosen);
    if (!row?.isConnected) return;
    const top = row.offsetTop;
    if (top < list.scrollTop) list.scrollTop = top - 4;
    const below = top + row.offsetHeight - list.clientHeight;
    if (below > list.scrollTop) list.scrollTop = below + 4;
  }

  for (const kind of kFilters) {
    const count = Capture.frames.filter(kind.holds).length;
    filters.append(make("button", { type: "button", "data-kind": kind.label, onclick: () => filter(kind) },
      `${Text.upper(kind.label)} ${count}`));
  }
  filter(kFilters[0]);

  list.addEventListener("click", (event) => {
    const frame = frameOf(event.target);
    if (frame) onPick(frame);
  });
  list.addEventListener("dblclick", (event) => {
    const frame = frameOf(event.target);
    if (frame) onShow(frame);
  });
  list.addEventListener("keydown", (event) => {
    if (event.key === "Enter" && chosen) onShow(chosen);
    const now = listed.indexOf(chosen);
    const target = { ArrowDown: now + 1, ArrowUp: now - 1, Home: 0, End: listed.length - 1 }[event.key];
    if (target === undefined || listed.length === 0) return;
    event.preventDefault();
    onPick(listed[Math.max(0, Math.min(target, listed.length - 1))]);
  });

  return {
    choose: (frame) => {
      if (chosen) rows.get(chosen).setAttribute("aria-selected", "false");
      chosen = frame;
      if (!frame) {
        list.removeAttribute("aria-activedescendant");
        return;
      }
      rows.get(frame).setAttribute("aria-selected", "true");
      list.setAttribute("aria-activedescendant", `row-${frame.index}`);
      reveal();
    },
    onPick: (callback) => { onPick = callback; },
    onShow: (callback) => { onShow = callback; },
  };
})();
