// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>
#include <QPalette>

namespace framequilt::viewer {

/// Colours beside those of the palette, for light and dark windows.
struct Theme {
  bool dark = false;
  QColor canvas;    ///< Behind the mosaic.
  QColor joined;    ///< Green.
  QColor refused;   ///< Red.
  QColor waiting;   ///< Amber.
  QColor path;      ///< Of the camera.
  QColor selected;  ///< The frame chosen in the list.
  QColor first;     ///< Of the first series of a plot, and the accent of the window.
  QColor second;    ///< Of its second series.
  QColor subtle;    ///< Less important text.
  QColor line;      ///< Borders and grids.
  QColor card;      ///< Behind cards and plots.
  QColor onStrong;  ///< Text on the accent, on green or on red.
};

/// The colours that go with a palette: dark ones where its windows are dark.
Theme themeFor(const QPalette& palette);

/// Bright colours, for what is drawn on the mosaic itself.
const Theme& brightTheme();

enum class Appearance { kSystem, kLight, kDark };

/// The palette of the program for an appearance; the system's own for `kSystem`.
QPalette paletteFor(Appearance appearance, const QPalette& system);

}  // namespace framequilt::viewer
