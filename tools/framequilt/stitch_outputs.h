// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core/mat.hpp>
#include <optional>
#include <ostream>
#include <string>

#include "tools/framequilt/options_stitch.h"
#include "tools/framequilt/output_file.h"
#include "tools/framequilt/output_folder.h"
#include "tools/framequilt/stitch_log.h"

namespace framequilt::tool {

/// A text for a file, or for standard output where the name is "-".
class TextOutput {
 public:
  /// \throws ToolError where the file cannot be created.
  TextOutput(const std::string& name, std::ostream& standardOutput);
  /// \throws ToolError where the file cannot be written.
  void publish(const std::string& text);

 private:
  std::optional<OutputFile> file_;
  std::ostream& standardOutput_;
};

/// All files that one run writes. They are created first, so that a folder that takes none is known
/// before anything is stitched, and appear under their names when they are complete.
class StitchOutputs {
 public:
  /// \throws ToolError naming the file and what is wrong with it.
  StitchOutputs(const StitchOptions& options, std::ostream& standardOutput);

  /// \throws ToolError naming the file that could not be written; those before it are complete.
  void publishMosaic(const cv::Mat& mosaic);
  void publishOutlines(const cv::Mat& picture);
  void publishOmeTiff(const cv::Mat& mosaic, std::optional<double> pixelSize);
  /// The page of the pyramid takes up the report.
  void publishPyramid(const cv::Mat& mosaic, const std::string& report);
  void publishReportPage(const cv::Mat& mosaic, const std::string& report);
  void publishPlacements(const std::string& text);
  void publishReport(const std::string& json);

  bool wantsOutlines() const { return outlines_.has_value(); }

 private:
  std::string title_;  // Of the pages.
  OutputFile mosaic_;
  std::optional<OutputFile> outlines_;
  std::optional<OutputFile> omeTiff_;
  std::optional<OutputFolder> pyramid_;
  std::optional<OutputFile> reportPage_;
  std::optional<TextOutput> placements_;
  std::optional<TextOutput> report_;
};

}  // namespace framequilt::tool
