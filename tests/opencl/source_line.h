// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cctype>
#include <string>

/// A text that begins with a place in OpenclJoint.cpp: without the folders before
/// "opencl/", and with "LINE" for the first number. Empty when it is not such a text.
inline std::string withoutLineNumber(std::string text) {
  const std::size_t file = text.find("opencl/OpenclJoint.cpp");
  if (file == std::string::npos) return {};
  text.erase(0, file);
  const auto digit = [](unsigned char c) { return std::isdigit(c) != 0; };
  const auto number = std::find_if(text.begin(), text.end(), digit);
  text.replace(number, std::find_if_not(number, text.end(), digit), "LINE");
  return text;
}
