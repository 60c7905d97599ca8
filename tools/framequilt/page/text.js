// SPDX-License-Identifier: Apache-2.0
"use strict";

/** Words, numbers and elements. Texts of a capture go through `textContent` alone. */
const Text = (() => {
  const kMinus = "\u2212";

  /** Whole numbers plainly, others with one decimal, as on the console. */
  function number(value) {
    if (value === null || value === undefined) return "not measurable";
    const whole = Math.abs(value - Math.round(value)) < 0.001;
    const digits = whole ? Math.round(Math.abs(value)).toString() : Math.abs(value).toFixed(1);
    return (value < 0 && Number(digits) !== 0 ? kMinus : "") + digits;
  }

  /** A sign such as "%" stays on the line of its number. */
  function withUnit(value, unit) {
    if (value === null || !unit) return number(value);
    return `${number(value)}${unit === "%" ? "\u00A0" : " "}${unit}`;
  }

  const limit = (measure, value) => `${measure.relation} ${withUnit(value, measure.unit)}`;

  const point = (p) => `${number(p.x)}, ${number(p.y)}`;

  /** Micrometres, or millimetres from 1000 on. */
  function length(micrometres) {
    const large = Math.abs(micrometres) >= 1000;
    const value = large ? micrometres / 1000 : micrometres;
    return `${Number(value.toPrecision(4))} ${large ? "mm" : "\u00B5m"}`;
  }

  const upper = (text) => text.charAt(0).toUpperCase() + text.slice(1);

  /** How a report's field is called: "left_out" is "left out". */
  const fieldName = (field) => field.replaceAll("_", " ");

  const outcome = (frame) => (frame.joined ? "joined" : frame.record.reason.text);

  /**
   * An element with attributes and children; a child may be a text. "class" and the like are
   * attributes, "onclick" and the like are listeners.
   */
  function element(name, attributes = {}, ...children) {
    const made = document.createElement(name);
    for (const [key, value] of Object.entries(attributes)) {
      if (key.startsWith("on")) {
        made.addEventListener(key.slice(2), value);
      } else if (value !== false && value !== null) {
        made.setAttribute(key, value === true ? "" : value);
      }
    }
    made.append(...children.filter((child) => child !== null));
    return made;
  }

  function shape(name, attributes = {}, text = "") {
    const made = document.createElementNS("http://www.w3.org/2000/svg", name);
    for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
    if (text !== "") made.textContent = text;
    return made;
  }

  /** Tells what was done, for a moment. */
  function toast(text) {
    const place = document.getElementById("toast");
    place.textContent = text;
    place.hidden = false;
    clearTimeout(toast.timer);
    toast.timer = setTimeout(() => { place.hidden = true; }, 2500);
  }

  return { number, withUnit, limit, point, length, upper, fieldName, outcome, element, shape, toast };
})();
