// SPDX-License-Identifier: Apache-2.0
"use strict";

/** What is drawn over the mosaic: frames, their numbers, the way of the camera, refused frames. */
const Layers = (() => {
  const kColours = { frame: "#5be08f", refused: "#ff6a5e", path: "#7cc4ff", chosen: "#ffd84a" };
  const kCasing = "rgba(0, 0, 0, 0.55)";
  // The least width of a frame, in units of the text, for a badge or a number on it.
  const kBadgeRoom = 2.5;
  const kNumberRoom = 3.5;

  const kKinds = [
    { name: "outlines", label: "outlines", colour: kColours.frame, on: true },
    { name: "numbers", label: "numbers", colour: kColours.frame, on: true },
    { name: "path", label: "camera path", colour: kColours.path, on: false },
    { name: "refused", label: "refused", colour: kColours.refused, on: true },
  ];
  const on = Object.fromEntries(kKinds.map((kind) => [kind.name, kind.on]));

  const canvas = document.getElementById("overlay");
  const glass = document.getElementById("glass");
  const pen = canvas.getContext("2d");
  const joined = Capture.frames.filter((frame) => frame.place);
  const guessed = Capture.frames.filter((frame) => frame.guess);
  /** Frames whose place is unknown, by the frame that they were matched with. */
  const besides = new Map();
  for (const frame of Capture.frames) {
    if (frame.beside) besides.set(frame.beside, [...(besides.get(frame.beside) ?? []), frame]);
  }

  let chosen = null;
  let em = 14;
  let badges = []; // {x, y, width, height, frames} as drawn last.
  let numbers = []; // {x, y, width, height} as drawn last.

  /** The middle half of what frames keep to one another, in pixels of the mosaic. */
  const typicalStep = (() => {
    const steps = joined.slice(1).map((frame, i) =>
      Math.hypot(frame.place.x - joined[i].place.x, frame.place.y - joined[i].place.y));
    steps.sort((a, b) => a - b);
    return steps.length ? steps[Math.floor(steps.length / 2)] : Infinity;
  })();

  const inView = (map, area) => ({
    x: map.left + area.x * map.perPixel,
    y: map.top + area.y * map.perPixel,
    width: area.cols * map.perPixel,
    height: area.rows * map.perPixel,
  });

  const inViewWidth = (map) => Capture.frameSize.cols * map.perPixel;

  const visible = (box) => box.x < glass.clientWidth && box.y < glass.clientHeight &&
    box.x + box.width > 0 && box.y + box.height > 0;

  function strokeBoxes(boxes, colour, width, dash = []) {
    pen.beginPath();
    for (const box of boxes) {
      // The line lies inside, so that neighbours keep their own.
      pen.rect(box.x + width / 2, box.y + width / 2, box.width - width, box.height - width);
    }
    pen.setLineDash(dash);
    pen.lineWidth = width * 2.2;
    pen.strokeStyle = kCasing;
    pen.stroke();
    pen.lineWidth = width;
    pen.strokeStyle = colour;
    pen.stroke();
    pen.setLineDash([]);
  }

  const meet = (a, b) => a.x < b.x + b.width && b.x < a.x + a.width &&
    a.y < b.y + b.height && b.y < a.y + a.height;

  /** Not where it would cover another one, unless it has to be there. */
  function drawNumber(box, number, colour, always = false) {
    const text = String(number);
    pen.font = `600 ${0.85 * em}px system-ui, sans-serif`;
    const width = pen.measureText(text).width + 0.7 * em;
    const height = 1.35 * em;
    const x = box.x + 0.3 * em;
    const y = box.y + 0.3 * em;
    const plate = { x, y, width, height };
    if (!always && numbers.some((other) => meet(plate, other))) return;
    numbers.push(plate);
    pen.fillStyle = "rgba(10, 14, 20, 0.78)";
    pen.beginPath();
    pen.roundRect(x, y, width, height, 0.25 * em);
    pen.fill();
    pen.fillStyle = colour;
    pen.textBaseline = "middle";
    pen.fillText(text, x + 0.35 * em, y + 0.53 * height);
  }

  function drawPath(map) {
    const middles = joined.map((frame) => inView(map, frame.place))
      .map((box) => [box.x + box.width / 2, box.y + box.height / 2]);
    pen.lineJoin = "round";
    pen.beginPath();
    for (const [x, y] of middles) pen.lineTo(x, y);
    pen.lineWidth = 0.3 * em;
    pen.strokeStyle = kCasing;
    pen.stroke();
    pen.lineWidth = 0.14 * em;
    pen.strokeStyle = kColours.path;
    pen.stroke();
    pen.beginPath();
    const radius = Math.min(0.28 * em, 0.2 * typicalStep * map.perPixel);
    for (const [x, y] of middles) {
      pen.moveTo(x + radius, y);
      pen.arc(x, y, radius, 0, 2 * Math.PI);
    }
    pen.fillStyle = kColours.path;
    pen.fill();
    pen.lineJoin = "miter";
  }

  /** What a badge is on a frame that is small in view. */
  function drawDot(box, colour, frames) {
    const radius = 0.32 * em;
    const [x, y] = [box.x + box.width / 2, box.y + box.height / 2];
    pen.beginPath();
    pen.arc(x, y, radius, 0, 2 * Math.PI);
    pen.fillStyle = colour;
    pen.fill();
    pen.lineWidth = 0.1 * em;
    pen.strokeStyle = kCasing;
    pen.stroke();
    badges.push({ x: x - radius, y: y - radius, width: 2 * radius, height: 2 * radius, frames });
  }

  /** A cross at the far corner of the frame that refused ones were matched with. */
  function drawBadge(box, frames) {
    const isChosen = frames.includes(chosen);
    if (box.width < kBadgeRoom * em) {
      drawDot(box, isChosen ? kColours.chosen : kColours.refused, frames);
      return;
    }
    const text = frames.length > 1 ? `\u00D7 ${frames.length}` : "\u00D7";
    pen.font = `700 ${0.95 * em}px system-ui, sans-serif`;
    const height = 1.5 * em;
    const width = Math.max(height, pen.measureText(text).width + 0.8 * em);
    const x = box.x + box.width - width - 0.3 * em;
    const y = box.y + box.height - height - 0.3 * em;
    pen.beginPath();
    pen.roundRect(x, y, width, height, height / 2);
    pen.fillStyle = isChosen ? kColours.chosen : kColours.refused;
    pen.fill();
    pen.lineWidth = 0.1 * em;
    pen.strokeStyle = kCasing;
    pen.stroke();
    pen.fillStyle = "#1b0d0b";
    pen.textBaseline = "middle";
    pen.fillText(text, x + (width - pen.measureText(text).width) / 2, y + 0.53 * height);
    badges.push({ x, y, width, height, frames });
  }

  function draw() {
    if (!Viewer) return;
    em = parseFloat(getComputedStyle(document.documentElement).fontSize) * 0.92;
    const ratio = window.devicePixelRatio || 1;
    const width = Math.round(glass.clientWidth * ratio);
    const height = Math.round(glass.clientHeight * ratio);
    if (canvas.width !== width || canvas.height !== height) {
      canvas.width = width;
      canvas.height = height;
    }
    pen.setTransform(ratio, 0, 0, ratio, 0, 0);
    pen.clearRect(0, 0, glass.clientWidth, glass.clientHeight);
    const map = Viewer.mapping();
    const line = Math.max(1, 0.1 * em);
    const boxes = joined.map((frame) => ({ frame, box: inView(map, frame.place) }))
      .filter(({ box }) => visible(box));

    if (on.outlines) {
      // Many narrow steps would hide the mosaic.
      pen.globalAlpha = Math.max(0.5, Math.min(1, typicalStep * map.perPixel / (9 * em)));
      strokeBoxes(boxes.map(({ box }) => box), kColours.frame, line);
      pen.globalAlpha = 1;
    }
    if (on.path) drawPath(map);
    badges = [];
    if (on.refused) {
      const dash = [0.5 * em, 0.35 * em];
      strokeBoxes(guessed.map((frame) => inView(map, frame.guess)), kColours.refused, 1.2 * line,
        dash);
    }
    strokeChosen(map, line);
    numbers = [];
    if (on.numbers && Capture.frames.length > 0 && inViewWidth(map) > kNumberRoom * em) {
      if (on.refused) {
        for (const frame of guessed) {
          drawNumber(inView(map, frame.guess), frame.number, kColours.refused);
        }
      }
      for (const { frame, box } of boxes) drawNumber(box, frame.number, kColours.frame);
    }
    if (on.refused) {
      for (const [frame, frames] of besides) drawBadge(inView(map, frame.place), frames);
    }
    const area = chosenArea();
    if (area) drawNumber(inView(map, area), chosen.number, kColours.chosen, true);
  }

  const chosenArea = () => chosen?.place ?? chosen?.guess;

  function strokeChosen(map, line) {
    const area = chosenArea();
    if (!area) return;
    const dash = chosen.place ? [] : [0.5 * em, 0.35 * em];
    strokeBoxes([inView(map, area)], kColours.chosen, 2.2 * line, dash);
  }

  const contains = (box, { x, y }) =>
    x >= box.x && x < box.x + box.width && y >= box.y && y < box.y + box.height;

  /** Frames under a point of the view, the one whose middle is nearest first. */
  function framesAt(point) {
    const badge = badges.find((one) => contains(one, point));
    if (badge) return badge.frames;
    const map = Viewer.mapping();
    return [...joined, ...(on.refused ? guessed : [])]
      .map((frame) => ({ frame, box: inView(map, frame.place ?? frame.guess) }))
      .filter(({ box }) => contains(box, point))
      .map(({ frame, box }) => ({
        frame,
        distance: Math.hypot(box.x + box.width / 2 - point.x, box.y + box.height / 2 - point.y),
      }))
      .sort((a, b) => a.distance - b.distance)
      .map(({ frame }) => frame);
  }

  /** Boxes to switch the layers with; `onSwitch` is called after one was. */
  function fillIn(fieldset, onSwitch) {
    for (const kind of kKinds) {
      const box = Text.element("input", {
        type: "checkbox",
        id: `layer-${kind.name}`,
        onchange: () => {
          on[kind.name] = box.checked;
          draw();
          onSwitch();
        },
      });
      box.checked = on[kind.name];
      const sample = Text.shape("svg", { viewBox: "0 0 20 16", "aria-hidden": "true" });
      const colours = { fill: "none", stroke: kind.colour, "stroke-width": 2.4 };
      if (kind.name === "path") {
        sample.append(Text.shape("path", { ...colours, d: "M2 12L8 5l4 6 6-8" }));
      } else if (kind.name === "numbers") {
        sample.append(Text.shape("rect", { x: 2, y: 1, width: 16, height: 14, rx: 3, fill: "#222a35" }),
          Text.shape("path", { ...colours, "stroke-width": 2, d: "M8 5l2.4-1.5V12.5" }));
      } else {
        const dash = kind.name === "refused" ? "4 2.5" : "none";
        sample.append(Text.shape("rect",
          { ...colours, x: 2, y: 2, width: 16, height: 12, "stroke-dasharray": dash }));
      }
      fieldset.append(Text.element("label", {}, box, sample, kind.label));
    }
  }

  return {
    draw,
    framesAt,
    fillIn,
    /** The names of the layers that are on; null where these are the ones that are on at first. */
    changed: () => kKinds.every((kind) => on[kind.name] === kind.on) ? null
      : kKinds.map((kind) => kind.name).filter((name) => on[name]),
    show: (names) => {
      for (const { name } of kKinds) {
        on[name] = names.includes(name);
        const box = document.getElementById(`layer-${name}`);
        if (box) box.checked = on[name];
      }
      draw();
    },
    choose: (frame) => {
      chosen = frame;
      draw();
    },
  };
})();
