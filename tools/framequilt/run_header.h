// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/framequilt/frame_source.h"
#include "tools/framequilt/options_stitch.h"

namespace framequilt::tool {

/// How a run was made: the first line of its journal.
struct RunHeader {
  std::string version;  ///< Of framequilt.
  std::string backend;  ///< That did the work: "host" or "opencl".
  CaptureShape shape{};
  CaptureOrigin origin;     ///< With absolute paths.
  std::size_t leftOut = 0;  ///< Pictures that could not be used, before the first frame.
  StitchOptions options;    ///< Outputs with absolute paths.
  nlohmann::ordered_json tuning;
};

/// The library's parameters as they are now.
nlohmann::ordered_json tuningJson();

/// The path from the root, so that it means the same in another folder.
std::filesystem::path fromRoot(const std::filesystem::path& path);

/// \throws JournalError for a name that JSON cannot hold.
std::string headerText(const RunHeader& header);

/// \param journal  What messages call the file, in quotes.
/// \throws ToolError for the first line of another format.
RunHeader readHeaderText(const std::string& text, const std::string& journal);

}  // namespace framequilt::tool
