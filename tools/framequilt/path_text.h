// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

namespace framequilt::tool {

/// The path as messages name it: in single quotes, control characters replaced by '?' so that a
/// message stays one line.
std::string inQuotes(const std::filesystem::path& path);

/// The extension with its dot, ASCII letters in lower case.
std::string lowerExtension(const std::filesystem::path& path);

/// "640 x 480 pixels".
std::string sizeText(int rows, int cols);

/// Where the copy of a mosaic with the frames' outlines lies: "m-outlines.png" beside "m.png".
std::filesystem::path outlinedCopyOf(const std::filesystem::path& mosaic);

}  // namespace framequilt::tool
