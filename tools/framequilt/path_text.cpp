// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/path_text.h"

#include <algorithm>

namespace framequilt::tool {
namespace {

char printable(char c) {
  const bool control = static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
  return control ? '?' : c;
}

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

std::string inQuotes(const std::filesystem::path& path) {
  std::string text = path.string();
  std::transform(text.begin(), text.end(), text.begin(), printable);
  return "'" + text + "'";
}

std::string lowerExtension(const std::filesystem::path& path) {
  std::string extension = path.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(), lower);
  return extension;
}

std::string sizeText(int rows, int cols) {
  return std::to_string(cols) + " x " + std::to_string(rows) + " pixels";
}

std::filesystem::path outlinedCopyOf(const std::filesystem::path& mosaic) {
  std::filesystem::path name = mosaic.stem();
  name += "-outlines";
  name += mosaic.extension();
  return mosaic.parent_path() / name;
}

}  // namespace framequilt::tool
