// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/output_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <utility>

#include "tools/framequilt/output_part.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

/// Without a slash at the end, which would hide the folder's own name.
fs::path named(const fs::path& folder) {
  const fs::path plain = folder.lexically_normal();
  return plain.filename().empty() ? plain.parent_path() : plain;
}

void requireReplaceable(const fs::path& target, const std::set<std::string>& names) {
  std::error_code failure;
  const fs::file_status status = fs::status(target, failure);
  if (!fs::exists(status)) return;
  if (!fs::is_directory(status)) {
    throw ToolError(inQuotes(target) + " is a file: name a new folder");
  }
  fs::directory_iterator entry(target, failure);
  for (; !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
    const fs::path name = entry->path().filename();
    if (names.count(name.string()) > 0) continue;
    throw ToolError("folder " + inQuotes(target) + " holds " + inQuotes(name) +
                    ", which is no part of this output: choose a new or empty folder");
  }
  if (failure) {
    throw ToolError("folder " + inQuotes(target) + " cannot be listed (" + failure.message() +
                    "): check its permissions");
  }
}

void requireParent(const fs::path& target) {
  const fs::path parent = target.has_parent_path() ? target.parent_path() : fs::path(".");
  std::error_code ignored;
  if (target.filename().empty() || target.filename() == "." || target.filename() == "..") {
    throw ToolError(inQuotes(target) + " cannot be replaced: name a new folder");
  }
  if (!fs::is_directory(parent, ignored)) {
    throw ToolError("folder " + inQuotes(parent) + " for " + inQuotes(target) +
                    " does not exist: create it or choose another");
  }
}

}  // namespace

OutputFolder::OutputFolder(const fs::path& target, const std::set<std::string>& names)
    : target_(named(target)) {
  requireParent(target_);
  removeLeftovers(target_);
  requireReplaceable(target_, names);
  create();
}

void OutputFolder::create() {
  const fs::path temporary = partOf(target_);
  descriptor_ = createPartFolder(temporary);
  if (descriptor_ < 0) {
    throw ToolError("folder " + inQuotes(target_) + " cannot be created (" + std::strerror(errno) +
                    "): choose another place");
  }
  temporary_ = temporary;
}

OutputFolder::~OutputFolder() {
  std::error_code ignored;
  if (!temporary_.empty()) fs::remove_all(temporary_, ignored);
  if (descriptor_ >= 0) ::close(descriptor_);
}

const fs::path& OutputFolder::place() {
  if (isThere()) return temporary_;
  std::error_code ignored;
  fs::create_directories(temporary_.parent_path(), ignored);
  ::close(std::exchange(descriptor_, -1));
  create();
  return temporary_;
}

/// Not so when it was removed, whoever may have made another of its name.
bool OutputFolder::isThere() const {
  struct stat made {};
  struct stat found {};
  return ::fstat(descriptor_, &made) == 0 && ::stat(temporary_.c_str(), &found) == 0 &&
         made.st_dev == found.st_dev && made.st_ino == found.st_ino;
}

void OutputFolder::publish() {
  if (!isThere()) throwUnwritten(ENOENT);
  // So that what appears under the name is on the disk, all of it.
  if (::syncfs(descriptor_) != 0) throwUnwritten(errno);
  if (::renameat2(AT_FDCWD, temporary_.c_str(), AT_FDCWD, target_.c_str(), RENAME_EXCHANGE) == 0) {
    std::error_code ignored;
    fs::remove_all(std::exchange(temporary_, {}), ignored);  // Which is the older one now.
    return;
  }
  const fs::path older = olderOf(target_);
  // No older one, or a file system that cannot exchange.
  const bool hadOlder = ::rename(target_.c_str(), older.c_str()) == 0;
  if (::rename(temporary_.c_str(), target_.c_str()) != 0) {
    const int reason = errno;
    [[maybe_unused]] const bool back = hadOlder && ::rename(older.c_str(), target_.c_str()) == 0;
    throwUnwritten(reason);
  }
  temporary_.clear();
  std::error_code ignored;
  if (hadOlder) fs::remove_all(older, ignored);
}

void OutputFolder::throwUnwritten(int error) const {
  throw ToolError(inQuotes(target_) + " could not be written (" + std::strerror(error) +
                  "): free some space or choose another folder");
}

}  // namespace framequilt::tool
