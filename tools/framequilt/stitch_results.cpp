// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/stitch_results.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/framequilt/outlines.h"
#include "tools/framequilt/placements_text.h"
#include "tools/framequilt/report_json.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

constexpr const char* kCropNothing = "none";

Backend backendOf(const StitchOptions& options) {
  if (options.backend == "auto") return Backend::kAuto;
  return options.backend == "opencl" ? Backend::kOpencl : Backend::kHost;
}

/// The picture to write, and where the first placed frame lies in it.
struct Picture {
  cv::Mat pixels;
  cv::Point first;
};

Picture pictureOf(const Session& session, bool withMargins) {
  Picture picture{session.mosaic(), -session.steadyBox().tl()};
  if (picture.pixels.empty() || !withMargins) return picture;
  cv::Size whole;
  cv::Point corner;
  picture.pixels.locateROI(whole, corner);
  picture.pixels.adjustROI(corner.y, whole.height, corner.x, whole.width);
  picture.first += corner;
  return picture;
}

std::vector<FrameOutline> outlinesOf(const StitchLog& log, const Picture& picture,
                                     const SessionOptions& options, int scale) {
  std::vector<FrameOutline> outlines;
  for (const StitchLog::Entry& entry : log.entries()) {
    if (!entry.joined) continue;
    outlines.push_back(
        {entry.number, cv::Rect(picture.first + entry.placement / scale,
                                cv::Size(options.cols / scale, options.rows / scale))});
  }
  return outlines;
}

/// Each output is worth having without the others.
class Attempts {
 public:
  explicit Attempts(const Note& note) : note_(note) {}

  void make(const std::function<void()>& action) {
    try {
      action();
    } catch (const ToolError& failure) {
      if (last_) note_(last_->what());
      last_ = failure;
    }
  }

  void requireAll() const {
    if (last_) throw *last_;
  }

 private:
  const Note& note_;
  std::optional<ToolError> last_;  // Not told yet.
};

std::optional<double> mosaicPixelSize(const StitchOptions& options, int scale) {
  if (!options.pixelSize) return std::nullopt;
  return *options.pixelSize * scale;
}

}  // namespace

SessionOptions sessionOptions(const StitchOptions& options, const CaptureShape& shape) {
  SessionOptions session;
  session.rows = shape.rows;
  session.cols = shape.cols;
  session.channels = shape.channels;
  session.criterion = options.mode == "overlap" ? Criterion::kOverlap : Criterion::kMotion;
  session.dynamicScene = options.dynamicScene;
  session.scale = options.scale;
  session.cornerBudget = options.cornerBudget;
  session.maxRows = options.maxRows;
  session.maxCols = options.maxCols;
  session.backend = backendOf(options);
  return session;
}

cv::Mat publishResults(const StitchOptions& options, const StitchedCapture& capture,
                       StitchOutputs& outputs, const Note& note) {
  const Session& session = capture.session;
  const SessionOptions& shape = capture.sessionOptions;
  const Picture picture = pictureOf(session, options.crop == kCropNothing);
  const bool written = !picture.pixels.empty();
  const std::string report =
      reportJson(options,
                 {session.backend(), session.scale(), picture.pixels.size(), picture.first,
                  capture.leftOut, capture.dropped, capture.end.full, capture.end.interrupted,
                  cv::Size(shape.cols, shape.rows)},
                 capture.log);
  Attempts attempts(note);
  if (written) attempts.make([&] { outputs.publishMosaic(picture.pixels); });
  attempts.make([&] { outputs.publishReport(report); });
  if (written) {
    attempts.make(
        [&] { outputs.publishPlacements(placementsText(capture.log, options.placements)); });
    attempts.make(
        [&] { outputs.publishOmeTiff(picture.pixels, mosaicPixelSize(options, session.scale())); });
  }
  attempts.make([&] { outputs.publishReportPage(picture.pixels, report); });
  // Late, since it takes a second copy of the mosaic.
  if (written && outputs.wantsOutlines()) {
    attempts.make([&] {
      outputs.publishOutlines(
          withOutlines(picture.pixels, outlinesOf(capture.log, picture, shape, session.scale())));
    });
  }
  // Last, since it takes the most files by far.
  if (written) attempts.make([&] { outputs.publishPyramid(picture.pixels, report); });
  attempts.requireAll();
  return picture.pixels;
}

}  // namespace framequilt::tool
