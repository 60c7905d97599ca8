// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/camera_source.h"

#include <charconv>
#include <exception>
#include <opencv2/videoio.hpp>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "tools/framequilt/newest_frame.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/stream_frames.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

constexpr std::string_view kPrefix = "camera:";
constexpr const char* kRemedy = ": check that it is connected and that no other program uses it";

std::string cameraText(int number) { return "camera " + std::to_string(number); }

/// Brings the frames of a camera to a place where the newest one waits.
class GrabbingThread {
 public:
  GrabbingThread(FrameGrabber camera, int every)
      : thread_([this, frames = FrameStepper(std::move(camera), every)]() mutable {
          grabAll(frames);
        }) {}
  ~GrabbingThread() {
    newest_.close();
    thread_.join();
  }
  GrabbingThread(const GrabbingThread&) = delete;
  GrabbingThread& operator=(const GrabbingThread&) = delete;

  NewestFrame& newest() { return newest_; }
  const NewestFrame& newest() const { return newest_; }

 private:
  void grabAll(FrameStepper& frames) {
    try {
      std::optional<NumberedFrame> frame = frames.next();
      while (frame && newest_.put(std::move(*frame))) frame = frames.next();
      newest_.close();
    } catch (...) {
      newest_.close(std::current_exception());
    }
  }

  NewestFrame newest_;
  std::thread thread_;
};

class CameraSource final : public FrameSource {
 public:
  CameraSource(int number, FrameGrabber camera, const InputSettings& settings)
      : settings_(settings),
        number_(number),
        thread_(std::move(camera), settings.every),
        frames_(
            std::string(kPrefix) + std::to_string(number),
            [this] { return thread_.newest().take(settings_.interrupted); }, settings) {
    if (!frames_.empty()) return;
    if (settings.stopAsked()) {
      throw ToolError("interrupted before " + cameraText(number) + " gave a frame");
    }
    throw ToolError(cameraText(number) + " gives no frames" + kRemedy);
  }

  CaptureShape shape() const override { return frames_.shape(); }
  std::optional<std::size_t> count() const override { return std::nullopt; }
  std::optional<SourceFrame> next() override {
    std::optional<SourceFrame> frame = settings_.stopAsked() ? std::nullopt : frames_.next();
    if (!frame && !settings_.stopAsked() && !std::exchange(endNoted_, true)) {
      settings_.remark(cameraText(number_) + " gives no more frames: the capture ends here");
    }
    return frame;
  }
  std::size_t skipped() const override { return frames_.skipped(); }
  std::size_t dropped() const override { return thread_.newest().dropped(); }
  CaptureOrigin origin() const override {
    return {{}, {}, std::string(kPrefix) + std::to_string(number_)};
  }

 private:
  InputSettings settings_;
  int number_;
  GrabbingThread thread_;
  StreamFrames frames_;
  bool endNoted_ = false;
};

}  // namespace

bool namesCamera(const std::string& input) { return input.rfind(kPrefix, 0) == 0; }

int cameraNumber(const std::string& input) {
  const std::string_view digits = std::string_view(input).substr(kPrefix.size());
  int number = -1;
  const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (failure != std::errc() || end != digits.data() + digits.size() || number < 0) {
    throw ToolError(inQuotes(input) + " names no camera: write camera:0 for the first one");
  }
  return number;
}

std::unique_ptr<FrameSource> openCamera(int number, const InputSettings& settings) {
#ifdef __linux__
  constexpr int kBackend = cv::CAP_V4L2;  // GStreamer would be loaded to look for it once more.
#else
  constexpr int kBackend = cv::CAP_ANY;
#endif
  const auto camera = std::make_shared<cv::VideoCapture>(number, kBackend);
  if (!camera->isOpened()) throw ToolError(cameraText(number) + " cannot be opened" + kRemedy);
  return openCamera(number,
                    {[camera] { return camera->grab(); },
                     [camera](cv::Mat& pixels) { return camera->retrieve(pixels); }},
                    settings);
}

std::unique_ptr<FrameSource> openCamera(int number, FrameGrabber camera,
                                        const InputSettings& settings) {
  return std::make_unique<CameraSource>(number, std::move(camera), settings);
}

}  // namespace framequilt::tool
