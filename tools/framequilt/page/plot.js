// SPDX-License-Identifier: Apache-2.0
"use strict";

/** One measure over the numbers of the frames, with its limits. */
const Plot = (() => {
  // Where values reach so far beyond the limit, a plain axis would hide what is close to it.
  const kLogarithmicFrom = 12;

  /** Round numbers from `low` to `high`, about as many as asked for, no closer than `least`. */
  function roundSteps(low, high, count, least = 0) {
    const raw = Math.max(least, (high - low) / Math.max(1, count));
    const power = 10 ** Math.floor(Math.log10(raw));
    const step = power * [1, 2, 5, 10].find((factor) => factor * power >= raw * 0.999);
    const steps = [];
    for (let value = Math.ceil(low / step) * step; value <= high + step / 1e6; value += step) {
      steps.push(Math.abs(value) < step / 1e6 ? 0 : value);
    }
    return steps;
  }

  /** From values to a share of the axis, and back the ticks that are worth a line. */
  function plainAxis(low, high) {
    const ticks = roundSteps(low, high, 4);
    const step = ticks.length > 1 ? ticks[1] - ticks[0] : 1;
    const first = Math.floor(low / step + 1e-9) * step;
    const last = Math.ceil(high / step - 1e-9) * step;
    return { ticks: roundSteps(first, last, 4), share: (v) => (v - first) / (last - first) };
  }

  function logarithmicAxis(high) {
    const decades = Math.max(2, Math.ceil(Math.log10(high + 1)));
    const ticks = [0];
    for (let i = 0; i <= decades; ++i) ticks.push(10 ** i);
    // Zero has a place, too.
    const level = (v) => Math.log10(1 + v);
    const top = level(Math.max(high * 1.15, 10));
    return { ticks: ticks.filter((v) => v !== 1 && level(v) <= top), share: (v) => level(v) / top };
  }

  /**
   * `plot` is {label, unit, limitText, limits: [{value, below}], series: [{label, of}], high, note}, where `of`
   * gives a frame's value: undefined where there is none, null where it was not measurable; `below`
   * tells on which side of the limit a frame is refused, and `high` is the end of the axis where
   * values have one.
   */
  function make(plot) {
    const svg = Text.shape("svg", { "aria-hidden": "true" });
    const title = Text.element("h3", {}, Text.upper(plot.label), " ",
      // A limit has the unit beside it.
      Text.element("small", {}, plot.note ?? (plot.limitText ? "" : `(${plot.unit})`)));
    const legend = plot.limitText
      ? Text.element("p", { class: "limits", title: plot.limitText }, plot.limitText)
      : Text.element("p", {}, ...plot.series.map((one, i) =>
        Text.element("span", { class: `key key-${i}` }, one.label)));
    const header = Text.element("header", {}, title, legend);
    const root = Text.element("div", { class: "plot" }, header, svg);

    const frames = Capture.frames;
    const first = frames.length ? frames[0].number : 1;
    const last = frames.length ? frames[frames.length - 1].number : 1;
    const valuesOf = (frame) => plot.series.map((one) => one.of(frame));
    const axis = axisFor(plot, frames.flatMap(valuesOf).filter((v) => Number.isFinite(v)));

    let box = { left: 0, right: 1, top: 0, bottom: 1 };
    const across = (number) => first === last ? (box.left + box.right) / 2
      : box.left + (number - first) / (last - first) * (box.right - box.left);
    const up = (value) => box.bottom - axis.share(value) * (box.bottom - box.top);
    let moving = null;
    let fixed = null;

    function draw() {
      const width = svg.clientWidth;
      const height = svg.clientHeight;
      if (!width || !height) return;
      const em = parseFloat(getComputedStyle(document.documentElement).fontSize);
      const widest = Math.max(...axis.ticks.map((tick) => Text.number(tick).length));
      box = {
        left: (0.9 + 0.5 * widest) * em,
        right: width - 0.8 * em,
        top: 0.6 * em,
        bottom: height - 1.55 * em,
      };
      svg.replaceChildren();
      svg.setAttribute("viewBox", `0 0 ${width} ${height}`);
      drawLimits();
      drawAxes(em, height);
      plot.series.forEach((one, i) => drawSeries(one, i, em));
      drawRefused(em);
      moving = Text.shape("line", { class: "at", visibility: "hidden" });
      fixed = Text.shape("g");
      svg.append(moving, fixed);
      markChosen();
    }

    function drawLimits() {
      for (const { value, below } of plot.limits) {
        const y = up(value);
        const [top, bottom] = below ? [y, box.bottom] : [box.top, y];
        svg.append(
          Text.shape("rect", {
            class: "out", x: box.left, y: top, width: box.right - box.left,
            height: Math.max(0, bottom - top),
          }),
          Text.shape("line", { class: "limit", x1: box.left, x2: box.right, y1: y, y2: y }));
      }
    }

    function drawAxes(em, height) {
      for (const tick of axis.ticks) {
        const y = up(tick);
        if (y < box.top - 1 || y > box.bottom + 1) continue;
        const line = { class: tick === 0 ? "axis" : "grid", x1: box.left, x2: box.right, y1: y, y2: y };
        svg.append(Text.shape("line", line),
          Text.shape("text", { x: box.left - 0.4 * em, y: y + 0.28 * em, "text-anchor": "end" },
            Text.number(tick)));
      }
      const room = 3.2 * em;
      const count = Math.max(1, Math.floor((box.right - box.left) / room));
      const ticks = last === first ? [first]
        : roundSteps(first, last, count, 1);
      for (const tick of new Set([...(ticks.includes(first) ? [] : [first]), ...ticks])) {
        const x = across(tick);
        if (tick !== first && x - across(first) < 1.8 * em) continue;
        const half = 0.25 * em * String(tick).length;
        const middle = Math.min(x, box.right + 0.8 * em - half);
        svg.append(
          Text.shape("line", { class: "axis", x1: x, x2: x, y1: box.bottom, y2: box.bottom + 0.25 * em }),
          Text.shape("text", { x: middle, y: height - 0.35 * em, "text-anchor": "middle" },
            String(tick)));
      }
      svg.append(Text.shape("line",
        { class: "axis", x1: box.left, x2: box.right, y1: box.bottom, y2: box.bottom }));
    }

    function drawSeries(one, i, em) {
      let line = "";
      let dots = "";
      let open = false;
      for (const frame of frames) {
        const value = one.of(frame);
        const drawn = frame.joined && Number.isFinite(value);
        if (drawn) {
          const spot = `${across(frame.number).toFixed(1)} ${up(value).toFixed(1)}`;
          line += `${open ? "L" : "M"}${spot}`;
          dots += `M${spot}h0`;
        }
        // The first frame has no values, and breaks nothing.
        open = drawn || (open && value === undefined && frame.joined);
      }
      const room = (box.right - box.left) / Math.max(1, last - first);
      const size = Math.max(0.16 * em, Math.min(0.42 * em, 0.7 * room));
      svg.append(Text.shape("path", { class: `line series-${i}`, d: line }),
        Text.shape("path", { class: `dots series-${i}`, d: dots, "stroke-width": size }));
    }

    /** A cross at each value of a refused frame, and a mark below for each refused frame. */
    function drawRefused(em) {
      const arm = 0.2 * em;
      let crosses = "";
      let rug = "";
      for (const frame of frames) {
        if (frame.joined) continue;
        const x = across(frame.number);
        rug += `M${x} ${box.bottom + 1}v${0.3 * em}`;
        for (const value of valuesOf(frame)) {
          if (value === undefined) continue;
          const y = value === null ? box.bottom : up(value);
          crosses += `M${x - arm} ${y - arm}l${2 * arm} ${2 * arm}m0 ${-2 * arm}l${-2 * arm} ${2 * arm}`;
        }
      }
      svg.append(Text.shape("path", { class: "rug", d: rug }),
        Text.shape("path", { class: "crosses", d: crosses }));
    }

    let chosen = null;
    function markChosen() {
      if (!fixed) return;
      fixed.replaceChildren();
      if (!chosen) return;
      const x = across(chosen.number);
      fixed.append(Text.shape("line", { class: "chosen", x1: x, x2: x, y1: box.top, y2: box.bottom }));
      for (const value of valuesOf(chosen)) {
        if (!Number.isFinite(value)) continue;
        fixed.append(Text.shape("circle", { class: "chosen-dot", cx: x, cy: up(value), r: 4 }));
      }
    }

    return {
      root,
      svg,
      draw,
      choose: (frame) => {
        chosen = frame;
        markChosen();
      },
      /** Marks the frame under the pointer; none takes the mark away. */
      point: (frame) => {
        if (!moving) return;
        moving.setAttribute("visibility", frame ? "visible" : "hidden");
        if (!frame) return;
        const x = across(frame.number);
        for (const [key, value] of Object.entries({ x1: x, x2: x, y1: box.top, y2: box.bottom })) {
          moving.setAttribute(key, value);
        }
      },
      /** The number, perhaps between two frames, at this distance from the plot's left side. */
      numberAt: (x) => first + (x - box.left) / (box.right - box.left) * (last - first),
      /** "matches 83" */
      textOf: (frame) => {
        const values = valuesOf(frame);
        if (values.every((v) => v === undefined)) return "";
        const numbers = values.map(Text.number).join(", ");
        return `${plot.label} ${numbers}${plot.unit ? ` ${plot.unit}` : ""}`;
      },
    };
  }

  function axisFor(plot, values) {
    const limits = plot.limits.map((limit) => limit.value);
    const high = Math.max(...values, ...limits, plot.high ?? 1);
    const low = Math.min(...values, ...limits, 0);
    const least = limits.length ? Math.min(...limits) : 0;
    if (plot.mayBeLogarithmic && least > 0 && high > kLogarithmicFrom * least) {
      return logarithmicAxis(high);
    }
    return plainAxis(low, plot.high ? high : high + (high - low) * 0.04);
  }

  return { make };
})();
