// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>

namespace framequilt::tool {

/// A file that appears under its name only when it is complete.
///
/// The bytes go to a temporary file in the same folder, which then takes the place of `target`; an
/// older file of that name stays until that moment, and for good when `publish` fails or is never
/// called.
class OutputFile {
 public:
  /// What becomes of an output whose folder is removed before it is published: one of many that
  /// belong together fails, one that is worth something alone is written into a new folder.
  enum class FolderRemoved { kFail, kMakeAgain };

  /// Creates the temporary file, so that a folder that cannot take the output is known at once.
  /// \throws ToolError naming the folder or the target.
  explicit OutputFile(std::filesystem::path target,
                      FolderRemoved folderRemoved = FolderRemoved::kFail);
  /// Removes the temporary file of an output that was not published.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  /// Adds `size` bytes. \throws ToolError naming the target.
  void write(const void* bytes, std::size_t size);

  /// Brings what was written to the disk and moves the file into place. At most once.
  /// \throws ToolError naming the target.
  void publish();

  /// The same with these bytes as the whole content.
  void publish(const void* bytes, std::size_t size);

  const std::filesystem::path& target() const { return target_; }

  /// The temporary file, for a writer that goes back and reads what it wrote. Still the owner's.
  int descriptor() const { return descriptor_; }

  /// Says that the target could not be written, for this errno. \throws ToolError always.
  [[noreturn]] void throwUnwritten(int error) const;

 private:
  void create();
  void publishAnew();
  void copyFrom(int source);
  void sync() const;

  std::filesystem::path target_;
  FolderRemoved folderRemoved_;
  std::filesystem::path temporary_;  // Empty once published.
  int descriptor_ = -1;
};

}  // namespace framequilt::tool
