// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/output_part.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPart = ".part";
constexpr std::string_view kOlder = ".old";

fs::path folderOf(const fs::path& target) {
  const fs::path folder = target.parent_path();
  return folder.empty() ? fs::path(".") : folder;
}

fs::path besides(const fs::path& target, std::string_view kind) {
  return folderOf(target) /
         ("." + target.filename().string() + "." + std::to_string(::getpid()) + std::string(kind));
}

bool endsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

/// What ".NAME.PID.part" says.
struct PartName {
  std::string target;  // Empty for any other name.
  pid_t process = 0;
};

PartName parsed(std::string_view name, std::string_view kind) {
  if (name.empty() || name.front() != '.' || !endsWith(name, kind)) return {};
  name.remove_prefix(1);
  name.remove_suffix(kind.size());
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return {};
  const std::string digits(name.substr(dot + 1));
  pid_t process = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), process);
  if (process <= 0 || std::to_string(process) != digits) return {};
  return {std::string(name.substr(0, dot)), process};
}

bool runs(pid_t process) { return ::kill(process, 0) == 0 || errno != ESRCH; }

enum class Lock { kTaken, kHeldElsewhere, kNone };

/// kNone: the file system has no locks.
Lock lockNow(int descriptor) {
  if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0) return Lock::kTaken;
  return errno == EWOULDBLOCK ? Lock::kHeldElsewhere : Lock::kNone;
}

/// A regular file or a folder of this very name, never what a link points to; -1 else.
int openThing(const fs::path& path, bool& isFolder) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) return -1;
  isFolder = S_ISDIR(status.st_mode);
  if (!isFolder && !S_ISREG(status.st_mode)) return -1;
  return ::open(path.c_str(),
                (isFolder ? O_RDONLY | O_DIRECTORY : O_RDWR) | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
}

/// Removes it unless somebody holds its lock. Where there are no locks the number decides: only
/// this process's own is surely nobody else's, other machines have others that are not seen here.
bool removeUnlessHeld(const fs::path& path, bool own) {
  bool isFolder = false;
  const int descriptor = openThing(path, isFolder);
  if (descriptor < 0) return false;
  const Lock lock = lockNow(descriptor);
  std::error_code failure;
  const bool mayGo = lock == Lock::kTaken || (lock == Lock::kNone && own);
  if (mayGo) isFolder ? fs::remove_all(path, failure) : fs::remove(path, failure);
  ::close(descriptor);
  return mayGo && !failure;
}

/// Holds the lock of what was just created. False: whoever removes leftovers was faster.
bool holds(int descriptor) {
  while (::flock(descriptor, LOCK_EX) != 0 && errno == EINTR) {
  }
  struct stat status {};
  return ::fstat(descriptor, &status) != 0 || status.st_nlink > 0;
}

template <class Create>
int createPart(const fs::path& part, Create create) {
  while (true) {
    const int descriptor = create();
    if (descriptor >= 0) {
      if (holds(descriptor)) return descriptor;
      ::close(descriptor);
    } else if (errno != EEXIST) {
      return -1;
    } else if (!removeUnlessHeld(part, true)) {
      errno = EEXIST;
      return -1;
    }
  }
}

/// An older folder whose successor never came.
void putBack(const fs::path& older, const fs::path& target) {
  std::error_code failure;
  if (!fs::exists(fs::symlink_status(target, failure))) {
    fs::rename(older, target, failure);
  } else {
    removeUnlessHeld(older, false);
  }
}

}  // namespace

fs::path partOf(const fs::path& target) { return besides(target, kPart); }
fs::path olderOf(const fs::path& target) { return besides(target, kOlder); }

int createPartFile(const fs::path& part) {
  return createPart(
      part, [&] { return ::open(part.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666); });
}

int createPartFolder(const fs::path& part) {
  return createPart(part, [&] {
    if (::mkdir(part.c_str(), 0777) != 0) return -1;
    return ::open(part.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  });
}

std::string targetNameOf(const std::string& name) { return parsed(name, kPart).target; }

bool removeLeftover(const fs::path& part) {
  const pid_t process = parsed(part.filename().string(), kPart).process;
  return process != 0 && !runs(process) && removeUnlessHeld(part, false);
}

void removeLeftovers(const fs::path& target) {
  const std::string targetName = target.filename().string();
  std::vector<fs::path> parts;
  std::vector<fs::path> older;
  std::error_code failure;
  fs::directory_iterator entry(folderOf(target), failure);
  for (; !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
    const std::string name = entry->path().filename().string();
    if (parsed(name, kPart).target == targetName) parts.push_back(entry->path());
    const auto [olderName, process] = parsed(name, kOlder);
    if (olderName == targetName && !runs(process)) older.push_back(entry->path());
  }
  for (const fs::path& part : parts) removeLeftover(part);
  for (const fs::path& folder : older) putBack(folder, target);
}

}  // namespace framequilt::tool
