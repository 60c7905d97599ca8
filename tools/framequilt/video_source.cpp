// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/video_source.h"

#include <stdlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <opencv2/videoio.hpp>
#include <opencv2/videoio/registry.hpp>
#include <string_view>

#include "tools/framequilt/path_text.h"
#include "tools/framequilt/stream_frames.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 11> kVideoExtensions = {
    ".avi", ".mp4", ".mkv", ".mov", ".webm", ".mpg", ".mpeg", ".m4v", ".wmv", ".ogv", ".ts"};

// More frames than this are no count but a mark for "unknown".
constexpr double kMostFrames = 1e9;

void requireReadable(const fs::path& file) {
  errno = 0;
  if (!std::ifstream(file, std::ios::binary)) {
    throw ToolError(inQuotes(file) + " cannot be opened (" + std::strerror(errno) +
                    "): check the path and its permissions");
  }
}

[[noreturn]] void throwUnreadable(const fs::path& file) {
  throw ToolError(inQuotes(file) +
                  " cannot be read as a video: convert it to .mp4, or give its frames as pictures");
}

cv::VideoCapture capture(const fs::path& file) {
  requireReadable(file);
  // FFmpeg prints remarks of its own otherwise, in several lines; asked for, they stay.
  static const bool quiet = ::setenv("OPENCV_FFMPEG_LOGLEVEL", "-8", 0) == 0;
  static_cast<void>(quiet);
  // The other backends print as well, and would take "f%d.avi" for a series of files.
  const int backend =
      cv::videoio_registry::hasBackend(cv::CAP_FFMPEG) ? cv::CAP_FFMPEG : cv::CAP_ANY;
  // An absolute path is never taken for an address on the net.
  cv::VideoCapture opened(fs::absolute(file).string(), backend);
  if (!opened.isOpened()) throwUnreadable(file);
  return opened;
}

class VideoSource final : public FrameSource {
 public:
  VideoSource(const fs::path& file, const InputSettings& settings)
      : settings_(settings),
        file_(file),
        capture_(capture(file)),
        stepper_({[this] { return capture_.grab(); },
                  [this](cv::Mat& pixels) { return capture_.retrieve(pixels); }},
                 settings.every),
        frames_(
            file.filename().string(), [this] { return stepper_.next(); }, settings) {
    if (frames_.empty()) throwUnreadable(file);
  }

  CaptureShape shape() const override { return frames_.shape(); }

  /// The file's own word, which may be an estimate.
  std::optional<std::size_t> count() const override {
    const double all = capture_.get(cv::CAP_PROP_FRAME_COUNT);
    if (!(all >= 1 && all < kMostFrames)) return std::nullopt;
    return static_cast<std::size_t>(std::ceil(all / settings_.every));
  }

  std::optional<SourceFrame> next() override {
    return settings_.stopAsked() ? std::nullopt : frames_.next();
  }
  std::size_t skipped() const override { return frames_.skipped(); }
  CaptureOrigin origin() const override { return {{}, file_, {}}; }

 private:
  InputSettings settings_;
  fs::path file_;
  cv::VideoCapture capture_;
  FrameStepper stepper_;
  StreamFrames frames_;
};

}  // namespace

bool namesVideo(const fs::path& file) {
  return std::find(kVideoExtensions.begin(), kVideoExtensions.end(), lowerExtension(file)) !=
         kVideoExtensions.end();
}

std::unique_ptr<FrameSource> openVideo(const fs::path& file, const InputSettings& settings) {
  return std::make_unique<VideoSource>(file, settings);
}

}  // namespace framequilt::tool
