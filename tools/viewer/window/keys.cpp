// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/window/keys.h"

#include <QCoreApplication>
#include <utility>

namespace framequilt::viewer {
namespace {

constexpr std::pair<const char*, const char*> kKeys[] = {
    {"Ctrl+O", "open a folder of pictures"},
    {"Ctrl+Shift+O", "open a video"},
    {"Ctrl+K", "open the camera"},
    {"Ctrl+T", "open a simulated capture"},
    {"Ctrl+N", "start page, and back"},
    {"Space", "pause, go on"},
    {"Ctrl+E", "end the run"},
    {"Ctrl+S", "save"},
    {"F", "fit the mosaic into the window"},
    {"1", "one pixel a pixel"},
    {"C", "follow the camera"},
    {"+ and -", "zoom"},
    {"Arrows, with Shift", "move, by most of a window"},
    {"P, O, M, F9", "path, outlines, map, side panel"},
    {"R, Shift+R", "next, previous refused frame"},
    {"Ctrl+G", "go to a frame by its number"},
    {"Esc", "choose no frame"},
    {"F11", "full screen"},
    {"Ctrl+Q", "quit"},
};

}  // namespace

QString keysTable() {
  QString table = "<table cellspacing='6'>";
  for (const auto& [keys, text] : kKeys) {
    table += QString("<tr><td><b>%1</b>&nbsp;&nbsp;</td><td>%2</td></tr>")
                 .arg(QString(keys), QCoreApplication::translate("Keys", text));
  }
  return table + "</table>";
}

}  // namespace framequilt::viewer
