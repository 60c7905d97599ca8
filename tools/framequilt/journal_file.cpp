// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/journal_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

#include "tools/framequilt/journal_lines.h"
#include "tools/framequilt/path_text.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

constexpr const char* kName = "journal.jsonl";

/// Without a slash at the end, which would hide the folder's own name.
fs::path named(const fs::path& folder) {
  const fs::path plain = folder.lexically_normal();
  return plain.filename().empty() ? plain.parent_path() : plain;
}

/// Makes the folder, or takes an empty one or one with a journal.
void prepareFolder(const fs::path& folder) {
  const fs::path parent = folder.parent_path();
  std::error_code failure;
  if (!parent.empty() && !fs::is_directory(parent, failure)) {
    throw ToolError("folder " + inQuotes(parent) + " for " + inQuotes(folder) +
                    " does not exist: create it or choose another");
  }
  if (fs::exists(folder, failure) && !fs::is_directory(folder, failure)) {
    throw ToolError(inQuotes(folder) + " is a file: name a new folder");
  }
  fs::create_directory(folder, failure);
  if (failure) {
    throw ToolError("folder " + inQuotes(folder) + " cannot be created (" + failure.message() +
                    "): choose another place");
  }
  if (fs::exists(folder / kName, failure)) return;
  failure.clear();
  const fs::directory_iterator entry(folder, failure);
  if (!failure && entry != fs::directory_iterator()) {
    const fs::path name = entry->path().filename();
    throw ToolError("folder " + inQuotes(folder) + " holds " + inQuotes(name) +
                    ": choose a new or empty folder for the journal");
  }
  if (failure) {
    throw ToolError("folder " + inQuotes(folder) + " cannot be listed (" + failure.message() +
                    "): check its permissions");
  }
}

/// So that the names in it last, too.
void syncFolder(const fs::path& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  ::fsync(descriptor);
  ::close(descriptor);
}

/// Removes what a killed process left of files that it was writing.
void removeParts(const fs::path& folder) {
  std::error_code failure;
  std::vector<fs::path> parts;
  fs::directory_iterator entry(folder, failure);
  for (; !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
    const fs::path& file = entry->path();
    if (file.filename().native().front() == '.' && file.extension() == ".part") {
      parts.push_back(file);
    }
  }
  for (const fs::path& part : parts) fs::remove(part, failure);
}

}  // namespace

JournalFile::JournalFile(fs::path folder, int flags) : folder_(std::move(folder)) {
  const fs::path file = folder_ / kName;
  descriptor_ = ::open(file.c_str(), flags | O_CLOEXEC, 0666);
  if (descriptor_ >= 0) return;
  const int reason = errno;
  if (reason == ENOENT || reason == ENOTDIR) {
    throw ToolError("folder " + inQuotes(folder_) +
                    " holds no journal: give the one that 'framequilt stitch --journal' made");
  }
  const bool noRoom = reason == ENOSPC || reason == EDQUOT;
  throw ToolError(inQuotes(file) + " cannot be opened (" + std::strerror(reason) +
                  (noRoom ? "): free some space" : "): check its permissions"));
}

JournalFile::JournalFile(JournalFile&& other) noexcept
    : folder_(std::move(other.folder_)),
      descriptor_(std::exchange(other.descriptor_, -1)),
      objects_(std::move(other.objects_)),
      checksum_(other.checksum_),
      size_(other.size_) {}

JournalFile::~JournalFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

fs::path JournalFile::file() const { return folder_ / kName; }

JournalFile JournalFile::created(const fs::path& place) {
  const fs::path folder = named(place);
  prepareFolder(folder);
  JournalFile journal(folder, O_RDWR | O_CREAT | O_APPEND);
  journal.lock(true);
  journal.read();
  if (!journal.objects_.empty()) {
    throw ToolError("folder " + inQuotes(folder) +
                    " holds a journal: go on with it by 'framequilt resume', or choose a new "
                    "folder");
  }
  if (::ftruncate(journal.descriptor_, 0) != 0) journal.throwUnwritten(errno);
  syncFolder(folder);
  return journal;
}

JournalFile JournalFile::opened(const fs::path& folder, Access access) {
  const bool append = access == Access::kAppend;
  JournalFile journal(folder, append ? O_RDWR | O_APPEND : O_RDONLY);
  journal.lock(append);
  journal.read();
  if (journal.objects_.empty()) {
    throw ToolError("the journal of " + inQuotes(folder) +
                    " is empty (its run ended before the first frame): stitch anew");
  }
  if (append) {
    if (::ftruncate(journal.descriptor_, journal.size_) != 0) journal.throwUnwritten(errno);
    removeParts(folder);
    removeParts(folder / "frames");
  }
  return journal;
}

void JournalFile::lock(bool alone) const {
  // A file system without locks has no other process to keep out that would know of one.
  if (::flock(descriptor_, (alone ? LOCK_EX : LOCK_SH) | LOCK_NB) == 0 || errno != EWOULDBLOCK) {
    return;
  }
  throw ToolError("the journal of " + inQuotes(folder_) +
                  " is in use by another framequilt: wait until that ends");
}

void JournalFile::read() {
  std::ifstream stream(file(), std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  JournalLines lines = readJournalLines(text, inQuotes(file()));
  objects_ = std::move(lines.objects);
  checksum_ = lines.checksum;
  size_ = static_cast<std::int64_t>(lines.goodBytes);
}

void JournalFile::append(const std::string& object) {
  std::uint64_t checksum = checksum_;
  const std::string line = sealedLine(object, checksum);
  int reason = 0;
  std::size_t done = 0;  // All of it with the first write, unless the disk is full.
  while (done < line.size() && reason == 0) {
    const ssize_t written = ::write(descriptor_, line.data() + done, line.size() - done);
    if (written > 0) done += static_cast<std::size_t>(written);
    if (written < 0 && errno != EINTR) reason = errno;
  }
  // A file system that cannot sync says EINVAL; that is no loss of data.
  if (reason == 0 && ::fdatasync(descriptor_) != 0 && errno != EINVAL) reason = errno;
  // What is written to a file without a name is lost.
  struct stat status {};
  if (reason == 0 && ::fstat(descriptor_, &status) == 0 && status.st_nlink == 0) {
    throw JournalError("the journal of " + inQuotes(folder_) + " was removed");
  }
  if (reason != 0) {
    // Where this fails, too, the torn line is dropped by whoever reads the journal.
    [[maybe_unused]] const int failed = ::ftruncate(descriptor_, size_);
    throwUnwritten(reason);
  }
  checksum_ = checksum;
  size_ += static_cast<std::int64_t>(line.size());
}

void JournalFile::throwUnwritten(int error) const {
  throw JournalError("the journal of " + inQuotes(folder_) + " could not be written (" +
                     std::strerror(error) + "): free some space");
}

}  // namespace framequilt::tool
