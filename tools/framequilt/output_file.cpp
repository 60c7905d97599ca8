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

OutputFile::OutputFile(fs::path target) : target_(std::move(target)) {
  requirePlace(target_);
  const std::string name = target_.filename().string();
  const fs::path temporary =
      folderOf(target_) / ("." + name + "." + std::to_string(::getpid()) + ".part");
  ::unlink(temporary.c_str());  // Left by a process of the same number that was killed.
  descriptor_ = ::open(temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
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
  close();
  if (std::rename(temporary_.c_str(), target_.c_str()) != 0) throwUnwritten(errno);
  temporary_.clear();
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

void OutputFile::close() {
  // A file system that cannot sync says EINVAL; that is no loss of data.
  if (::fsync(descriptor_) != 0 && errno != EINVAL) throwUnwritten(errno);
  const int descriptor = std::exchange(descriptor_, -1);
  if (::close(descriptor) != 0) throwUnwritten(errno);
}

}  // namespace framequilt::tool
