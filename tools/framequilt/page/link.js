// SPDX-License-Identifier: Apache-2.0
"use strict";

/**
 * The view as the part of the address behind '#':
 * frame=NUMBER&view=X,Y,WIDTH&layers=NAME,NAME with the middle and the width of what is shown, in
 * pixels of the mosaic. What is as it is at first is left out.
 */
const Link = (() => {
  const rounded = (value) => Number(value.toFixed(1));
  let written = "";
  let timer = 0;

  function parse(hash) {
    const fields = new URLSearchParams(hash.replace(/^#/, ""));
    const state = {};
    if (fields.has("frame")) state.frame = Number(fields.get("frame"));
    if (fields.has("layers")) state.layers = fields.get("layers").split(",");
    const view = (fields.get("view") ?? "").split(",").map(Number);
    if (view.length === 3 && view.every(Number.isFinite) && view[2] > 0) {
      state.view = { x: view[0], y: view[1], width: view[2] };
    }
    return state;
  }

  function text({ frame, view, layers }) {
    const fields = [];
    if (frame) fields.push(`frame=${frame.number}`);
    if (view) fields.push(`view=${[view.x, view.y, view.width].map(rounded).join(",")}`);
    if (layers) fields.push(`layers=${layers.join(",")}`);
    return `#${fields.join("&")}`;
  }

  function write(state) {
    written = text(state);
    if (written !== (location.hash || "#")) history.replaceState(null, "", written);
  }

  async function copy() {
    const address = location.href;
    try {
      await navigator.clipboard.writeText(address);
    } catch {
      // Not allowed, as in some browsers for pages from disk.
      const field = Text.element("textarea", { readonly: true });
      field.value = address;
      document.body.append(field);
      field.select();
      document.execCommand("copy");
      field.remove();
    }
    Text.toast("link to this view copied");
  }

  return {
    read: () => parse(location.hash),
    /** Soon, since a view in motion changes with every picture. */
    writeSoon: (state) => {
      clearTimeout(timer);
      timer = setTimeout(() => write(state()), 250);
    },
    copy: (state) => {
      write(state);
      return copy();
    },
    onChange: (callback) => {
      addEventListener("hashchange", () => {
        if ((location.hash || "#") !== written) callback(parse(location.hash));
      });
    },
  };
})();
