// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/output_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "tools/framequilt/output_part.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

fs::path folderOf(const fs::path& target) {
  const fs::path folder = target.parent_path();
  return folder.empty() ? fs::path(".") : folder;
}

void requirePlace(const fs::path& target) {
  std::error_code ignored;
  if (!fs::is_directory(folderOf(target), ignored)) {
    throw ToolError("folder " + inQuotes(folderOf(target)) + " for " + inQuotes(target) +
                    " does not exist: create it or choose another");
  }
  if (target.filename().empty() || fs::is_directory(target, ignored)) {
    throw ToolError(inQuotes(target) + " is a folder: name a file in it");
  }
}

}  // namespace

OutputFile::OutputFile(fs::path target, FolderRemoved folderRemoved)
    : target_(std::move(target)), folderRemoved_(folderRemoved) {
  requirePlace(target_);
  create();
}

void OutputFile::create() {
  const fs::path temporary = partOf(target_);
  descriptor_ = createPartFile(temporary);
  if (descriptor_ < 0 && errno == EEXIST) {
    throw ToolError(inQuotes(target_) +
                    " is being written by another framequilt: wait until that ends");
  }
  if (descriptor_ < 0) {
    throw ToolError("no file can be created in " + inQuotes(folderOf(target_)) + " (" +
                    std::strerror(errno) + "): choose a folder that you may write to");
  }
  temporary_ = temporary;
}

OutputFile::~OutputFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

void OutputFile::publish(const void* bytes, std::size_t size) {
  write(bytes, size);
  publish();
}

void OutputFile::publish() {
  sync();
  if (std::rename(temporary_.c_str(), target_.c_str()) != 0) {
    if (errno != ENOENT || folderRemoved_ == FolderRemoved::kFail) throwUnwritten(errno);
    publishAnew();
  }
  temporary_.clear();
  // The rename is done, and so is the lock.
  ::close(std::exchange(descriptor_, -1));
}

/// The folder was removed meanwhile; the descriptor still has what was written.
void OutputFile::publishAnew() {
  const int source = std::exchange(descriptor_, -1);
  temporary_.clear();
  try {
    std::error_code ignored;  // Told by what comes next.
    fs::create_directories(folderOf(target_), ignored);
    create();
    copyFrom(source);
    sync();
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) throwUnwritten(errno);
  } catch (...) {
    ::close(source);
    throw;
  }
  ::close(source);
}

void OutputFile::copyFrom(int source) {
  std::vector<char> block(1 << 20);
  off_t place = 0;
  while (true) {
    const ssize_t size = ::pread(source, block.data(), block.size(), place);
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) throwUnwritten(errno);
    if (size == 0) return;
    write(block.data(), static_cast<std::size_t>(size));
    place += size;
  }
}

void OutputFile::write(const void* bytes, std::size_t size) {
  const char* next = static_cast<const char*>(bytes);
  while (size > 0) {
    const ssize_t written = ::write(descriptor_, next, size);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throwUnwritten(errno);
    next += written;
    size -= static_cast<std::size_t>(written);
  }
}

void OutputFile::throwUnwritten(int error) const {
  throw ToolError(inQuotes(target_) + " could not be written (" + std::strerror(error) +
                  "): free some space or choose another folder");
}

void OutputFile::sync() const {
  // A file system that cannot sync says EINVAL; that is no loss of data.
  if (::fsync(descriptor_) != 0 && errno != EINVAL) throwUnwritten(errno);
}

}  // namespace framequilt::tool
