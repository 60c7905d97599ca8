// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/capture_folder.h"

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <system_error>
#include <utility>

#include "tools/framequilt/output_part.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kTruthName = "truth.csv";

/// frame_NNNN.png, with four digits or more.
bool isFrameName(std::string_view name) {
  constexpr std::string_view kBegin = "frame_";
  constexpr std::string_view kEnd = ".png";
  constexpr std::size_t kFewestDigits = 4;
  if (name.size() < kBegin.size() + kFewestDigits + kEnd.size()) return false;
  if (name.substr(0, kBegin.size()) != kBegin) return false;
  if (name.substr(name.size() - kEnd.size()) != kEnd) return false;
  const std::string_view digits =
      name.substr(kBegin.size(), name.size() - kBegin.size() - kEnd.size());
  return digits.find_first_not_of("0123456789") == std::string_view::npos;
}

/// Of what a killed run left, the name it would have got.
std::string nameInCapture(const fs::path& file) {
  const std::string name = file.filename().string();
  const std::string target = targetNameOf(name);
  return target.empty() ? name : target;
}

bool isOfCapture(const fs::path& file) {
  std::error_code ignored;
  if (!fs::is_regular_file(fs::symlink_status(file, ignored))) return false;
  const std::string name = nameInCapture(file);
  return name == kTruthName || isFrameName(name);
}

std::vector<fs::path> entriesOf(const fs::path& folder) {
  std::error_code failure;
  std::vector<fs::path> entries;
  fs::directory_iterator entry(folder, failure);
  for (; !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
    entries.push_back(entry->path());
  }
  if (failure) {
    throw ToolError("folder " + inQuotes(folder) + " cannot be listed (" + failure.message() +
                    "): check its permissions");
  }
  std::sort(entries.begin(), entries.end());
  return entries;
}

/// Frames may well come from elsewhere under such names; those that lie beside a truth do not.
void requireCaptureOnly(const fs::path& folder, const std::vector<fs::path>& entries) {
  const auto stranger = std::find_if_not(entries.begin(), entries.end(), isOfCapture);
  if (stranger != entries.end()) {
    throw ToolError("folder " + inQuotes(folder) + " holds " + inQuotes(stranger->filename()) +
                    ", which is no part of a simulated capture: choose a new or empty folder");
  }
  const bool hasTruth = std::any_of(entries.begin(), entries.end(), [](const fs::path& entry) {
    return nameInCapture(entry) == kTruthName;
  });
  if (!entries.empty() && !hasTruth) {
    throw ToolError("folder " + inQuotes(folder) +
                    " holds frames without a truth.csv, perhaps no simulated ones: choose a new or "
                    "empty folder");
  }
}

}  // namespace

CaptureFolder::CaptureFolder(fs::path folder, const fs::path& scene) : folder_(std::move(folder)) {
  std::error_code ignored;
  const fs::file_status status = fs::status(folder_, ignored);
  if (!fs::exists(status)) return;
  if (!fs::is_directory(status)) {
    throw ToolError(inQuotes(folder_) + " is a file: name a folder for the frames");
  }
  earlier_ = entriesOf(folder_);
  requireCaptureOnly(folder_, earlier_);
  for (const fs::path& file : earlier_) {
    if (fs::equivalent(file, scene, ignored)) {
      throw ToolError("scene " + inQuotes(scene) +
                      " lies in the folder for the frames: choose another folder");
    }
  }
}

void CaptureFolder::prepare() {
  std::error_code failure;
  fs::create_directories(folder_, failure);
  if (failure) {
    throw ToolError("folder " + inQuotes(folder_) + " cannot be created (" + failure.message() +
                    "): choose another place");
  }
  // The truth sorts last, so that what remains of a removal that was cut short has its truth.
  for (const fs::path& file : earlier_) {
    fs::remove(file, failure);
    if (failure) {
      throw ToolError(inQuotes(file) + " cannot be removed (" + failure.message() +
                      "): check the permissions of its folder");
    }
  }
  earlier_.clear();
}

fs::path CaptureFolder::frame(int number) const {
  char name[32];
  std::snprintf(name, sizeof name, "frame_%04d.png", number);
  return folder_ / name;
}

fs::path CaptureFolder::truth() const { return folder_ / kTruthName; }

}  // namespace framequilt::tool
