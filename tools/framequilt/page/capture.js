// SPDX-License-Identifier: Apache-2.0
"use strict";

/**
 * The capture as the report tells of it, with the frames placed on the mosaic.
 *
 * Rectangles are {x, y, cols, rows} in pixels of the mosaic. A frame has
 *   place   where it lies, if it was joined;
 *   guess   where it would lie, if it was refused but its offset is known;
 *   beside  the frame that it was matched with, if it was refused and its place is unknown.
 */
const Capture = (() => {
  const jsonOf = (id) => JSON.parse(document.getElementById(id).textContent);
  const report = jsonOf("report");
  const page = jsonOf("page");

  const scale = report.scale;
  const origin = report.mosaic?.first_frame ?? { x: 0, y: 0 };
  const cols = report.frame_size.cols / scale;
  const rows = report.frame_size.rows / scale;

  /** Of a frame at `placement`, which counts in pixels of frames. */
  function rectangle(placement) {
    return {
      x: origin.x + placement.x / scale,
      y: origin.y + placement.y / scale,
      cols,
      rows,
    };
  }

  function located(record, reference) {
    const frame = { record, number: record.frame, file: record.file, joined: record.joined };
    const offset = record.measures?.offset;
    if (record.joined) {
      frame.place = rectangle(record.placement);
    } else if (reference && offset) {
      const from = reference.record.placement;
      frame.guess = rectangle({ x: from.x + offset.x, y: from.y + offset.y });
    } else if (reference) {
      frame.beside = reference;
    }
    return frame;
  }

  const frames = [];
  let reference = null; // The joined frame that the next one was matched with.
  for (const record of report.frames) {
    const frame = located(record, reference);
    frame.index = frames.length;
    frames.push(frame);
    if (frame.joined) reference = frame;
  }

  /** Where to look for a frame on the mosaic; none for one that was refused before any joined. */
  function areaOf(frame) {
    return frame.place ?? frame.guess ?? frame.beside?.place;
  }

  return {
    report,
    words: page.words,
    title: page.title,
    tiles: page.tiles,
    mosaic: report.mosaic,
    /** Micrometres of a mosaic pixel's side, or null. */
    pixelSize: report.options.pixel_size ? report.options.pixel_size * scale : null,
    scale,
    origin,
    frameSize: { cols, rows },
    frames,
    areaOf,
    /** The measures that this run has values of. */
    measures: page.words.measures.filter((measure) =>
      report.frames.some((frame) => frame.measures?.[measure.field])),
  };
})();
