// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace framequilt::tool {

/// The files that `inputs` stand for, in stitching order: a file stands for itself, a folder for
/// the pictures in it (by extension, not in its subfolders, no hidden files), a pattern with '*',
/// '?' or '[' for the files that match it. What a folder or a pattern gives is in natural order.
///
/// \param outputs  Left out, with their outlined copies, where a folder or a pattern holds them:
///                 the mosaic of an earlier run is no frame.
/// \throws ToolError for a path that does not exist, a folder without pictures and a pattern
///         without matches.
std::vector<std::filesystem::path> listFiles(const std::vector<std::string>& inputs,
                                             const std::vector<std::filesystem::path>& outputs);

}  // namespace framequilt::tool
