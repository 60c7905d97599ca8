// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/stitch_outputs.h"

#include <filesystem>
#include <set>
#include <vector>

#include "tools/framequilt/path_text.h"
#include "tools/framequilt/picture_format.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStandardOutput = "-";

/// \throws ToolError when two outputs, or an output and an input, are one file.
void requireDifferent(const StitchOptions& options) {
  std::vector<fs::path> outputs = {options.output};
  if (options.outlines) outputs.push_back(outlinedCopyOf(options.output));
  for (const std::string& text : {options.placements, options.report}) {
    if (!text.empty() && text != kStandardOutput) outputs.emplace_back(text);
  }
  std::set<fs::path> seen;
  for (const fs::path& output : outputs) {
    if (!seen.insert(output.lexically_normal()).second) {
      throw ToolError(inQuotes(output) + " is asked to be two outputs: name two files");
    }
    for (const fs::path input : options.inputs) {
      std::error_code ignored;
      if (!fs::is_directory(input, ignored) && fs::equivalent(input, output, ignored)) {
        throw ToolError(inQuotes(output) + " is an input: write to another file");
      }
    }
  }
}

void publishPicture(const cv::Mat& picture, OutputFile& file) {
  writePicture(picture, file);
  file.publish();
}

OutputFile pictureFile(const fs::path& file) {
  requireWritableFormat(file);
  return OutputFile(file);
}

}  // namespace

TextOutput::TextOutput(const std::string& name, std::ostream& standardOutput)
    : standardOutput_(standardOutput) {
  if (name != kStandardOutput) file_.emplace(name);
}

void TextOutput::publish(const std::string& text) {
  if (file_) {
    file_->publish(text.data(), text.size());
  } else {
    standardOutput_ << text << std::flush;
  }
}

StitchOutputs::StitchOutputs(const StitchOptions& options, std::ostream& standardOutput)
    : mosaic_((requireDifferent(options), pictureFile(options.output))) {
  if (options.outlines) outlines_.emplace(outlinedCopyOf(options.output));
  if (!options.placements.empty()) placements_.emplace(options.placements, standardOutput);
  if (!options.report.empty()) report_.emplace(options.report, standardOutput);
}

void StitchOutputs::publishMosaic(const cv::Mat& mosaic) { publishPicture(mosaic, mosaic_); }
void StitchOutputs::publishOutlines(const cv::Mat& picture) { publishPicture(picture, *outlines_); }
void StitchOutputs::publishPlacements(const std::string& csv) {
  if (placements_) placements_->publish(csv);
}
void StitchOutputs::publishReport(const std::string& json) {
  if (report_) report_->publish(json);
}

}  // namespace framequilt::tool
