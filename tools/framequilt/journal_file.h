// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {

/// A journal that cannot be written or does not fit what happens: ends a run that goes by it.
class JournalError : public ToolError {
 public:
  using ToolError::ToolError;
};

/// The file "journal.jsonl" of a journal's folder, locked against other processes while it lives.
class JournalFile {
 public:
  enum class Access { kRead, kAppend };

  /// Begins a journal in the folder `place`, which is made; it may be there when it is empty.
  /// \throws ToolError naming the folder and what to do.
  static JournalFile created(const std::filesystem::path& place);

  /// Opens the journal of `folder`. For appending, an incomplete last line is cut off.
  /// \throws ToolError where there is none, it is damaged, or another process has it.
  static JournalFile opened(const std::filesystem::path& folder, Access access);

  ~JournalFile();
  JournalFile(JournalFile&& other) noexcept;
  JournalFile& operator=(JournalFile&&) = delete;
  JournalFile(const JournalFile&) = delete;
  JournalFile& operator=(const JournalFile&) = delete;

  /// Adds a JSON object as a line, in one write, and waits until the disk has it.
  /// \throws JournalError; what was written of it is taken back.
  void append(const std::string& object);

  const std::filesystem::path& folder() const { return folder_; }
  std::filesystem::path file() const;

  /// The objects that were there when it was opened.
  const std::vector<std::string>& objects() const { return objects_; }

 private:
  JournalFile(std::filesystem::path folder, int flags);
  void lock(bool alone) const;
  void read();
  [[noreturn]] void throwUnwritten(int error) const;

  std::filesystem::path folder_;
  int descriptor_ = -1;
  std::vector<std::string> objects_;
  std::uint64_t checksum_ = 0;
  std::int64_t size_ = 0;
};

}  // namespace framequilt::tool
