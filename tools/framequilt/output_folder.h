// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <set>
#include <string>

namespace framequilt::tool {

/// A folder that appears under its name only when it is complete, as `OutputFile` does for a file.
///
/// What is written goes to a temporary folder beside `target`, which then takes its place; an older
/// folder of that name stays until then.
class OutputFolder {
 public:
  /// Creates the temporary folder.
  /// \param names  What an older folder of this name may hold; with anything else in it, it is
  ///               refused, since it would be lost.
  /// \throws ToolError naming the folder and what to do.
  OutputFolder(const std::filesystem::path& target, const std::set<std::string>& names);
  /// Removes the temporary folder of an output that was not published.
  ~OutputFolder();
  OutputFolder(const OutputFolder&) = delete;
  OutputFolder& operator=(const OutputFolder&) = delete;

  /// Where to write; empty at first. One that was removed meanwhile is created again.
  /// \throws ToolError naming the target.
  const std::filesystem::path& place();
  const std::filesystem::path& target() const { return target_; }

  /// Brings the folder to the disk and moves it into place, at once where the file system can
  /// exchange two names. At most once. \throws ToolError naming the target.
  void publish();

 private:
  void create();
  bool isThere() const;
  [[noreturn]] void throwUnwritten(int error) const;

  std::filesystem::path target_;
  std::filesystem::path temporary_;  // Empty once published.
  int descriptor_ = -1;
};

}  // namespace framequilt::tool
