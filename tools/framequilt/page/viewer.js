// SPDX-License-Identifier: Apache-2.0
"use strict";

/**
 * The mosaic in an OpenSeadragon viewer, addressed in pixels of the mosaic.
 *
 * The viewer's own unit is the mosaic's width. Tiles are drawn on a plain canvas, since a page from
 * disk may not read pictures back, as WebGL would have to.
 */
const Viewer = (() => {
  if (!Capture.mosaic || !Capture.tiles) return null;
  const { cols, rows } = Capture.mosaic;
  const kMostPixelsPerPixel = 16;

  const viewer = OpenSeadragon({
    element: document.getElementById("viewer"),
    tileSources: Capture.tiles,
    drawer: "canvas",
    showNavigationControl: false,
    maxZoomPixelRatio: kMostPixelsPerPixel,
    minZoomImageRatio: 0.7,
    visibilityRatio: 0.4,
    homeFillsViewer: false,
    animationTime: 0.5,
    imageLoaderLimit: 12,
    maxImageCacheCount: 400,
    gestureSettingsMouse: { clickToZoom: false, dblClickToZoom: true },
    gestureSettingsTouch: { clickToZoom: false, dblClickToZoom: true, flickEnabled: true },
    gestureSettingsPen: { clickToZoom: false, dblClickToZoom: true },
  });
  const view = viewer.viewport;

  /** Keys of the viewer that would turn or mirror the mosaic. */
  viewer.addHandler("canvas-key", (event) => {
    if (["r", "R", "f"].includes(event.originalEvent.key)) event.preventDefaultAction = true;
  });
  viewer.addHandler("tile-load-failed", () => {
    const notice = document.getElementById("notice");
    notice.textContent = "tiles are missing: keep index.html beside the folder with the tiles";
    notice.classList.add("small");
    notice.hidden = false;
  });

  // The whole mosaic stays in view, whatever becomes of the window, until the user goes elsewhere.
  let whole = true;
  for (const event of ["canvas-drag", "canvas-scroll", "canvas-pinch", "canvas-double-click", "canvas-key"]) {
    viewer.addHandler(event, () => { whole = false; });
  }
  viewer.addHandler("after-resize", () => { if (whole) home(true); });
  viewer.addHandler("resize", () => { if (whole) requestAnimationFrame(() => home(true)); });

  const toUnit = (x, y) => new OpenSeadragon.Point(x / cols, y / cols);

  /** From the mosaic to the view: {left, top, perPixel}, at this moment. */
  function mapping() {
    const corner = view.pixelFromPoint(new OpenSeadragon.Point(0, 0), true);
    const unit = view.deltaPixelsFromPoints(new OpenSeadragon.Point(1, 0), true).x;
    return { left: corner.x, top: corner.y, perPixel: unit / cols };
  }

  /** The point of the mosaic under a point of the view. */
  function mosaicPoint(x, y) {
    const unit = view.pointFromPixel(new OpenSeadragon.Point(x, y), true);
    return { x: unit.x * cols, y: unit.y * cols };
  }

  /** What is shown, or will be: its middle and width in pixels of the mosaic; null for all of it. */
  function shown() {
    if (whole) return null;
    const bounds = view.getBounds();
    const middle = bounds.getCenter();
    return { x: middle.x * cols, y: middle.y * cols, width: bounds.width * cols };
  }

  function show({ x, y, width }, immediately = false) {
    whole = false;
    view.zoomTo(cols / width, null, immediately);
    view.panTo(toUnit(x, y), immediately);
    view.applyConstraints(immediately);
  }

  /** Moves the view when nothing of the rectangle's middle part is in it. */
  function reveal(area) {
    const bounds = view.getBounds();
    const middle = toUnit(area.x + area.cols / 2, area.y + area.rows / 2);
    const inside = middle.x > bounds.x && middle.x < bounds.x + bounds.width &&
      middle.y > bounds.y && middle.y < bounds.y + bounds.height;
    if (inside) return;
    whole = false;
    view.panTo(middle);
  }

  /** Fits a rectangle with a margin around it, as a share of its sides. */
  function fit(area, margin, immediately) {
    const corner = toUnit(area.x - margin * area.cols, area.y - margin * area.rows);
    const size = toUnit(area.cols * (1 + 2 * margin), area.rows * (1 + 2 * margin));
    view.fitBounds(new OpenSeadragon.Rect(corner.x, corner.y, size.x, size.y), immediately);
  }

  function showArea(area) {
    whole = false;
    fit(area, 0.15, false);
  }

  function home(immediately = false) {
    whole = true;
    fit({ x: 0, y: 0, cols, rows }, 0.02, immediately);
  }

  function zoomBy(factor) {
    whole = false;
    view.zoomBy(factor);
    view.applyConstraints();
  }

  return {
    viewer,
    cols,
    rows,
    mapping,
    mosaicPoint,
    shown,
    show,
    reveal,
    showArea,
    zoomBy,
    home,
    /** Calls back whenever the view has changed on the screen. */
    onChange: (callback) => {
      for (const event of ["update-viewport", "resize"]) viewer.addHandler(event, callback);
    },
    /** Calls back with the point of the view that was clicked, or tapped. */
    onClick: (callback) => {
      viewer.addHandler("canvas-click", (event) => {
        if (event.quick) callback(event.position);
      });
    },
    whenOpen: (callback) => {
      if (viewer.isOpen()) {
        callback();
      } else {
        viewer.addOnceHandler("open", callback);
      }
    },
    /** Calls back once every tile of the first view is on the screen. */
    whenDrawn: (callback) => {
      const picture = viewer.world.getItemAt(0);
      const look = () => { if (picture.getFullyLoaded()) callback(); else setTimeout(look, 20); };
      look();
    },
  };
})();
