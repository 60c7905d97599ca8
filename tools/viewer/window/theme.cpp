// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/window/theme.h"

namespace framequilt::viewer {
namespace {

constexpr int kMiddleGray = 128;

const Theme kDarkTheme = {true,
                          QColor(0x17, 0x19, 0x1c),
                          QColor(0x3f, 0xc3, 0x80),
                          QColor(0xf2, 0x5c, 0x5c),
                          QColor(0xe5, 0xb1, 0x45),
                          QColor(0xff, 0xc8, 0x57),
                          QColor(0x5a, 0xb0, 0xff),
                          QColor(0x4d, 0xa3, 0xff),
                          QColor(0xff, 0xa1, 0x4d),
                          QColor(0x9a, 0xa1, 0xab),
                          QColor(0x3a, 0x3f, 0x46),
                          QColor(0x2a, 0x2d, 0x32),
                          QColor(0x10, 0x12, 0x14)};

const Theme kLightTheme = {false,
                           QColor(0xdd, 0xe0, 0xe4),
                           QColor(0x1a, 0x8f, 0x52),
                           QColor(0xc9, 0x2a, 0x2a),
                           QColor(0xa8, 0x6a, 0x00),
                           QColor(0xe0, 0x7b, 0x00),
                           QColor(0x1a, 0x6f, 0xd4),
                           QColor(0x1f, 0x6f, 0xcf),
                           QColor(0xc9, 0x5f, 0x0a),
                           QColor(0x5c, 0x64, 0x6e),
                           QColor(0xd0, 0xd4, 0xda),
                           QColor(0xff, 0xff, 0xff),
                           QColor(0xff, 0xff, 0xff)};

struct Shades {
  QColor window, base, raised, text, disabled, button, highlight, onHighlight, tip;
};

QPalette paletteOf(const Shades& shades) {
  QPalette palette;
  const auto set = [&](QPalette::ColorRole role, const QColor& on, const QColor& off) {
    palette.setColor(QPalette::Active, role, on);
    palette.setColor(QPalette::Inactive, role, on);
    palette.setColor(QPalette::Disabled, role, off);
  };
  const auto same = [&](QPalette::ColorRole role, const QColor& colour) {
    set(role, colour, colour);
  };
  same(QPalette::Window, shades.window);
  same(QPalette::Base, shades.base);
  same(QPalette::AlternateBase, shades.raised);
  same(QPalette::Button, shades.button);
  same(QPalette::ToolTipBase, shades.tip);
  same(QPalette::ToolTipText, shades.text);
  same(QPalette::Light, shades.button.lighter(115));
  same(QPalette::Midlight, shades.button.lighter(107));
  same(QPalette::Mid, shades.button.darker(125));
  same(QPalette::Dark, shades.button.darker(150));
  same(QPalette::Shadow, Qt::black);
  set(QPalette::WindowText, shades.text, shades.disabled);
  set(QPalette::Text, shades.text, shades.disabled);
  set(QPalette::ButtonText, shades.text, shades.disabled);
  set(QPalette::PlaceholderText, shades.disabled, shades.disabled);
  set(QPalette::Highlight, shades.highlight, shades.button);
  set(QPalette::HighlightedText, shades.onHighlight, shades.disabled);
  same(QPalette::Link, shades.highlight);
  same(QPalette::BrightText, Qt::white);
  return palette;
}

const Shades kDarkShades = {
    QColor(0x22, 0x25, 0x29), QColor(0x1b, 0x1d, 0x21), QColor(0x26, 0x29, 0x2e),
    QColor(0xe8, 0xea, 0xed), QColor(0x72, 0x78, 0x80), QColor(0x30, 0x34, 0x3a),
    QColor(0x2f, 0x6f, 0xb5), QColor(0xff, 0xff, 0xff), QColor(0x30, 0x34, 0x3a)};
const Shades kLightShades = {
    QColor(0xf4, 0xf5, 0xf7), QColor(0xff, 0xff, 0xff), QColor(0xf0, 0xf2, 0xf4),
    QColor(0x1c, 0x1f, 0x23), QColor(0x9a, 0xa0, 0xa8), QColor(0xf0, 0xf1, 0xf3),
    QColor(0x1f, 0x6f, 0xcf), QColor(0xff, 0xff, 0xff), QColor(0xff, 0xff, 0xff)};

}  // namespace

Theme themeFor(const QPalette& palette) {
  return palette.color(QPalette::Window).lightness() < kMiddleGray ? kDarkTheme : kLightTheme;
}

const Theme& brightTheme() { return kDarkTheme; }

QPalette paletteFor(Appearance appearance, const QPalette& system) {
  switch (appearance) {
    case Appearance::kLight:
      return paletteOf(kLightShades);
    case Appearance::kDark:
      return paletteOf(kDarkShades);
    case Appearance::kSystem:
      break;
  }
  return system;
}

}  // namespace framequilt::viewer
