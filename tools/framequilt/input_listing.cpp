// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/input_listing.h"

#include <glob.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <system_error>

#include "tools/framequilt/natural_order.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 13> kPictureExtensions = {
    ".png", ".jpg",  ".jpeg", ".jpe", ".tif", ".tiff", ".bmp",
    ".dib", ".webp", ".jp2",  ".pgm", ".ppm", ".pnm"};

bool looksLikePicture(const fs::path& file) {
  if (file.filename().string().front() == '.') return false;
  return std::find(kPictureExtensions.begin(), kPictureExtensions.end(), lowerExtension(file)) !=
         kPictureExtensions.end();
}

bool sameFile(const fs::path& a, const fs::path& b) {
  std::error_code ignored;
  return fs::equivalent(a, b, ignored);
}

/// Whether a folder or a pattern gives this entry: neither a folder nor of an earlier run.
bool mayBeFrame(const fs::path& file, const std::vector<fs::path>& outputs) {
  std::error_code ignored;
  if (fs::is_directory(file, ignored)) return false;
  return std::none_of(outputs.begin(), outputs.end(), [&file](const fs::path& output) {
    return sameFile(file, output) || sameFile(file, outlinedCopyOf(output));
  });
}

void sortNaturally(std::vector<fs::path>& files) {
  std::sort(files.begin(), files.end(), [](const fs::path& a, const fs::path& b) {
    return naturalLess(a.native(), b.native());
  });
}

std::vector<fs::path> picturesIn(const fs::path& folder, const std::vector<fs::path>& outputs) {
  std::error_code failure;
  std::vector<fs::path> pictures;
  fs::directory_iterator entries(folder, failure);
  for (; !failure && entries != fs::directory_iterator(); entries.increment(failure)) {
    const fs::path& file = entries->path();
    if (looksLikePicture(file) && mayBeFrame(file, outputs)) pictures.push_back(file);
  }
  if (failure) {
    throw ToolError("folder " + inQuotes(folder) + " cannot be listed (" + failure.message() +
                    "): check its permissions");
  }
  if (pictures.empty()) {
    throw ToolError("folder " + inQuotes(folder) +
                    " holds no pictures: give a folder with .png, .jpg, .tif or .bmp files");
  }
  sortNaturally(pictures);
  return pictures;
}

bool isPattern(const std::string& input) { return input.find_first_of("*?[") != std::string::npos; }

std::vector<fs::path> filesMatching(const std::string& pattern,
                                    const std::vector<fs::path>& outputs) {
  glob_t matches{};
  std::vector<fs::path> files;
  if (::glob(pattern.c_str(), GLOB_NOSORT, nullptr, &matches) == 0) {
    for (std::size_t i = 0; i < matches.gl_pathc; ++i) {
      const fs::path file = matches.gl_pathv[i];
      if (mayBeFrame(file, outputs)) files.push_back(file);
    }
  }
  ::globfree(&matches);
  if (files.empty()) {
    throw ToolError("pattern " + inQuotes(pattern) + " matches no file: check it");
  }
  sortNaturally(files);
  return files;
}

std::vector<fs::path> filesOf(const std::string& input, const std::vector<fs::path>& outputs) {
  std::error_code failure;
  const fs::file_status status = fs::status(input, failure);
  if (fs::is_directory(status)) return picturesIn(input, outputs);
  if (fs::exists(status)) return {input};
  if (isPattern(input)) return filesMatching(input, outputs);
  throw ToolError(inQuotes(input) + " cannot be found (" + failure.message() + "): check the path");
}

}  // namespace

std::vector<fs::path> listFiles(const std::vector<std::string>& inputs,
                                const std::vector<fs::path>& outputs) {
  std::vector<fs::path> files;
  for (const std::string& input : inputs) {
    const std::vector<fs::path> found = filesOf(input, outputs);
    files.insert(files.end(), found.begin(), found.end());
  }
  return files;
}

}  // namespace framequilt::tool
