// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/placements_text.h"

#include <nlohmann/json.hpp>

#include "tools/framequilt/path_text.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

/// The form has no quotes, and readers take lines that begin with '#' for comments.
void requirePlainName(const std::string& name, const fs::path& file) {
  const bool plain =
      !name.empty() && name.front() != '#' && name.find_first_of(";\r\n") == std::string::npos;
  if (plain) return;
  throw ToolError(inQuotes(name) + " cannot be named in " + inQuotes(file) +
                  ": rename the picture (no ';', no '#' in front), or end the file's name with "
                  ".csv");
}

/// Readers expect a decimal point.
std::string coordinate(int pixels) { return std::to_string(pixels) + ".0"; }

}  // namespace

std::string placementsText(const StitchLog& log, const fs::path& file) {
  const std::string extension = lowerExtension(file);
  if (extension == ".txt") return tileConfiguration(log, file);
  return extension == ".json" ? placementsJson(log) : log.placementsCsv();
}

std::string placementsJson(const StitchLog& log) {
  Json frames = Json::array();
  for (const StitchLog::Entry& entry : log.entries()) {
    Json frame = {{"frame", entry.number}, {"file", entry.name}};
    if (entry.joined) {
      frame["x"] = entry.placement.x;
      frame["y"] = entry.placement.y;
    }
    frame["joined"] = entry.joined;
    frames.push_back(frame);
  }
  // A file name may hold bytes that are not UTF-8.
  return frames.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string tileConfiguration(const StitchLog& log, const fs::path& file) {
  std::string lines =
      "# Define the number of dimensions we are working on\n"
      "dim = 2\n"
      "\n"
      "# Define the image coordinates\n";
  for (const StitchLog::Entry& entry : log.entries()) {
    if (!entry.joined) continue;
    requirePlainName(entry.name, file);
    lines += entry.name + "; ; (" + coordinate(entry.placement.x) + ", " +
             coordinate(entry.placement.y) + ")\n";
  }
  return lines;
}

}  // namespace framequilt::tool
