// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace framequilt::tool {

/// A folder that takes a simulated capture: frame_0001.png and so on, and truth.csv.
class CaptureFolder {
 public:
  /// Takes a folder that is missing, is empty or holds nothing but an earlier capture with its
  /// truth. Changes nothing yet.
  /// \param scene  Must not be among the files to be replaced; empty: none.
  /// \throws ToolError for any other folder.
  CaptureFolder(std::filesystem::path folder, const std::filesystem::path& scene);

  /// Makes the folder if it is missing, else removes the earlier capture from it.
  /// \throws ToolError when that is not possible.
  void prepare();

  /// \param number  Counted from 1.
  std::filesystem::path frame(int number) const;
  std::filesystem::path truth() const;
  const std::filesystem::path& path() const { return folder_; }

 private:
  std::filesystem::path folder_;
  std::vector<std::filesystem::path> earlier_;  // The truth last.
};

}  // namespace framequilt::tool
