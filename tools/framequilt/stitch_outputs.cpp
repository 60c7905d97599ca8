// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/stitch_outputs.h"

#include <filesystem>
#include <set>
#include <vector>

#include "tools/framequilt/ome_xml.h"
#include "tools/framequilt/output_part.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/picture_format.h"
#include "tools/framequilt/report_page.h"
#include "tools/framequilt/tiff_writing.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStandardOutput = "-";
constexpr auto kAlone = OutputFile::FolderRemoved::kMakeAgain;

/// \throws ToolError when two outputs, or an output and an input, are one file.
void requireDifferent(const StitchOptions& options) {
  std::vector<fs::path> outputs = {options.output};
  if (options.outlines) outputs.push_back(outlinedCopyOf(options.output));
  for (const std::string& text : {options.placements, options.report}) {
    if (!text.empty() && text != kStandardOutput) outputs.emplace_back(text);
  }
  for (const std::string& name :
       {options.omeTiff, options.pyramid, options.reportHtml, options.journal}) {
    if (!name.empty()) outputs.emplace_back(name);
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

/// In the place of a name, whose leftovers of killed runs go.
fs::path cleared(const fs::path& file) {
  removeLeftovers(file);
  return file;
}

OutputFile pictureFile(const fs::path& file) {
  requireWritableFormat(file);
  return OutputFile(cleared(file), kAlone);
}

DeepZoom pyramidLayout() { return {"mosaic"}; }
constexpr const char* kPage = "index.html";

}  // namespace

TextOutput::TextOutput(const std::string& name, std::ostream& standardOutput)
    : standardOutput_(standardOutput) {
  if (name != kStandardOutput) file_.emplace(cleared(name), kAlone);
}

void TextOutput::publish(const std::string& text) {
  if (file_) {
    file_->publish(text.data(), text.size());
  } else {
    standardOutput_ << text << std::flush;
  }
}

StitchOutputs::StitchOutputs(const StitchOptions& options, std::ostream& standardOutput)
    : title_(fs::path(options.output).filename().string()),
      mosaic_((requireDifferent(options), pictureFile(options.output))) {
  if (options.outlines) outlines_.emplace(cleared(outlinedCopyOf(options.output)), kAlone);
  if (!options.omeTiff.empty()) {
    requireOmeTiffName(options.omeTiff);
    omeTiff_.emplace(cleared(options.omeTiff), kAlone);
  }
  if (!options.pyramid.empty()) {
    const std::string name = pyramidLayout().name;
    pyramid_.emplace(options.pyramid, std::set<std::string>{kPage, name + ".dzi", name + "_files"});
  }
  if (!options.reportHtml.empty()) reportPage_.emplace(cleared(options.reportHtml), kAlone);
  if (!options.placements.empty()) placements_.emplace(options.placements, standardOutput);
  if (!options.report.empty()) report_.emplace(options.report, standardOutput);
}

void StitchOutputs::publishMosaic(const cv::Mat& mosaic) { publishPicture(mosaic, mosaic_); }
void StitchOutputs::publishOutlines(const cv::Mat& picture) { publishPicture(picture, *outlines_); }
void StitchOutputs::publishOmeTiff(const cv::Mat& mosaic, std::optional<double> pixelSize) {
  if (!omeTiff_) return;
  writeOmeTiff(mosaic, pixelSize, *omeTiff_);
  omeTiff_->publish();
}
void StitchOutputs::publishPyramid(const cv::Mat& mosaic, const std::string& report) {
  if (!pyramid_) return;
  const DeepZoom layout = pyramidLayout();
  const fs::path place = pyramid_->place();
  writeDeepZoom(mosaic, layout, place, pyramid_->target());
  const std::string page = reportPage(title_, tilesOf(layout, mosaic.size()), report);
  try {
    OutputFile(place / kPage).publish(page.data(), page.size());
  } catch (const ToolError&) {  // It names a place that nobody knows.
    throw ToolError("the page of " + inQuotes(pyramid_->target()) +
                    " could not be written: free some space or choose another folder");
  }
  pyramid_->publish();
}
void StitchOutputs::publishReportPage(const cv::Mat& mosaic, const std::string& report) {
  if (!reportPage_) return;
  const std::string page = reportPage(title_, tilesInside(mosaic), report);
  reportPage_->publish(page.data(), page.size());
}
void StitchOutputs::publishPlacements(const std::string& text) {
  if (placements_) placements_->publish(text);
}
void StitchOutputs::publishReport(const std::string& json) {
  if (report_) report_->publish(json);
}

}  // namespace framequilt::tool
