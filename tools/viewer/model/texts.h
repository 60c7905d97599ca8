// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace framequilt::viewer {

/// Texts of the library and of file names, which are UTF-8.
inline QString textOf(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// "slow down ..." as a sentence: "Slow down ....". Empty for an empty text.
inline QString sentence(const QString& text) {
  if (text.isEmpty()) return text;
  return text.front().toUpper() + text.mid(1) + (text.endsWith('.') ? "" : ".");
}

}  // namespace framequilt::viewer
