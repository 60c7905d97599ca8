// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/output_folder.h"

#include <unistd.h>

#include <system_error>

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

fs::path besides(const fs::path& target, const char* kind) {
  return target.parent_path() /
         ("." + target.filename().string() + "." + std::to_string(::getpid()) + kind);
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
  requireReplaceable(target_, names);
  const fs::path temporary = besides(target_, ".part");
  std::error_code failure;
  fs::remove_all(temporary, failure);  // Left by a process of the same number that was killed.
  if (!fs::create_directory(temporary, failure)) {
    throw ToolError("folder " + inQuotes(target_) + " cannot be created (" + failure.message() +
                    "): choose another place");
  }
  temporary_ = temporary;
}

OutputFolder::~OutputFolder() {
  std::error_code ignored;
  if (!temporary_.empty()) fs::remove_all(temporary_, ignored);
}

void OutputFolder::publish() {
  const fs::path older = besides(target_, ".old");
  std::error_code none;
  fs::rename(target_, older, none);
  std::error_code failure;
  fs::rename(temporary_, target_, failure);
  std::error_code ignored;
  if (failure) {
    if (!none) fs::rename(older, target_, ignored);
    throw ToolError(inQuotes(target_) + " could not be written (" + failure.message() +
                    "): choose another folder");
  }
  temporary_.clear();
  fs::remove_all(older, ignored);
}

}  // namespace framequilt::tool
