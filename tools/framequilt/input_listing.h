// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace framequilt::tool {

/// The pictures that `inputs` stand for, in stitching order: a file stands for itself, a folder for
/// the pictures in it (by extension, not in its subfolders, no hidden files) in natural order.
///
/// \param output  Left out where a folder holds it: the mosaic of an earlier run is no frame.
/// \throws ToolError for a path that does not exist and for a folder without pictures.
std::vector<std::filesystem::path> listPictures(const std::vector<std::string>& inputs,
                                                const std::filesystem::path& output);

}  // namespace framequilt::tool
