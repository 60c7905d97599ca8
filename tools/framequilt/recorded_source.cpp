// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/recorded_source.h"

#include <array>
#include <cstdio>
#include <opencv2/imgcodecs.hpp>
#include <system_error>
#include <utility>
#include <vector>

#include "tools/framequilt/output_file.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/picture_reading.h"
#include "tools/framequilt/picture_source.h"
#include "tools/framequilt/tool_error.h"
#include "tools/framequilt/video_source.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

class KeptFrames final : public FrameSource {
 public:
  KeptFrames(const RecordedRun& run, fs::path folder, SourceOpener camera,
             const InputSettings& settings)
      : run_(run),
        folder_(std::move(folder)),
        openCamera_(std::move(camera)),
        settings_(settings) {}

  CaptureShape shape() const override { return run_.header().shape; }
  std::optional<std::size_t> count() const override { return std::nullopt; }
  std::optional<SourceFrame> next() override {
    if (settings_.stopAsked()) return std::nullopt;
    return next_ < run_.frames() ? keptFrame() : liveFrame();
  }
  std::size_t skipped() const override { return skipped_ + (camera_ ? camera_->skipped() : 0); }
  std::size_t dropped() const override { return dropped_ + (camera_ ? camera_->dropped() : 0); }
  CaptureOrigin origin() const override { return run_.header().origin; }

 private:
  SourceFrame keptFrame() {
    const nlohmann::ordered_json record = run_.frame(next_++);
    number_ = record.at("frame").get<std::size_t>();
    skipped_ = record.at("left_out").get<std::size_t>();
    dropped_ = record.at("dropped").get<std::size_t>();
    return {readPicture(folder_ / record.at("path").get<std::string>(), shape().channels),
            number_,
            record.at("file").get<std::string>(),
            {}};
  }

  std::optional<SourceFrame> liveFrame() {
    if (!camera_) {
      camera_ = openCamera_(settings_);
      requireSameShape();
    }
    std::optional<SourceFrame> frame = camera_->next();
    if (!frame) return frame;
    // The camera counts from 1 again.
    frame->number += number_;
    frame->name = origin().camera + "#" + std::to_string(frame->number);
    return frame;
  }

  void requireSameShape() const {
    const CaptureShape now = camera_->shape();
    if (now.rows == shape().rows && now.cols == shape().cols) return;
    throw ToolError(origin().camera + " gives frames of " + sizeText(now.rows, now.cols) +
                    " now, the run's have " + sizeText(shape().rows, shape().cols) +
                    ": set it as before");
  }

  const RecordedRun& run_;
  fs::path folder_;
  SourceOpener openCamera_;
  InputSettings settings_;
  std::unique_ptr<FrameSource> camera_;
  std::size_t next_ = 0;
  std::size_t number_ = 0;  // Of the last kept frame; so with the two below.
  std::size_t skipped_ = 0;
  std::size_t dropped_ = 0;
};

/// \throws ToolError where a recorded frame needs a file that is not there.
void requireThere(const fs::path& file, const std::string& remedy) {
  std::error_code failure;
  if (fs::exists(file, failure)) return;
  throw ToolError(inQuotes(file) + " of the journal cannot be found: " + remedy);
}

constexpr const char* kPutBack =
    "put it back, or name the folder that holds the inputs now by --inputs";

/// Those that were recorded have to be there; the others may be left out when their turn comes.
std::unique_ptr<FrameSource> reopenedPictures(const RecordedRun& run, const fs::path& inputs,
                                              const InputSettings& settings) {
  std::vector<CaptureOrigin::Picture> pictures = run.header().origin.pictures;
  if (!inputs.empty()) {
    for (CaptureOrigin::Picture& picture : pictures) {
      picture.path = inputs / picture.path.filename();
    }
  }
  auto picture = pictures.begin();
  for (std::size_t i = 0; i < run.frames(); ++i) {
    const auto number = run.frame(i).at("frame").get<std::size_t>();
    while (picture != pictures.end() && picture->number != number) ++picture;
    if (picture == pictures.end()) break;
    requireThere(picture->path, kPutBack);
  }
  return reopenPictures(pictures, run.header().shape, run.header().leftOut, settings);
}

void requireKeptFrames(const RecordedRun& run, const fs::path& folder) {
  for (std::size_t i = 0; i < run.frames(); ++i) {
    requireThere(folder / run.frame(i).at("path").get<std::string>(), "put it back");
  }
}

}  // namespace

std::string keptFramePath(std::size_t number) {
  std::array<char, 32> name{};
  std::snprintf(name.data(), name.size(), "frames/%06zu.png", number);
  return name.data();
}

void keepFrame(const cv::Mat& pixels, std::size_t number, const fs::path& folder) {
  const fs::path file = folder / keptFramePath(number);
  std::error_code failure;
  fs::create_directory(file.parent_path(), failure);
  OutputFile output(file);
  std::vector<unsigned char> bytes;
  // The fastest level: a frame of a camera is mostly noise.
  if (!cv::imencode(".png", pixels, bytes, {cv::IMWRITE_PNG_COMPRESSION, 1})) {
    throw ToolError(inQuotes(file) + " could not be encoded");
  }
  output.publish(bytes.data(), bytes.size());
}

StitchOptions recordedOptions(const RecordedRun& run, const fs::path& folder) {
  StitchOptions options = run.header().options;
  options.backend = run.header().backend;
  if (!options.hints.empty()) options.hints = (folder / options.hints).string();
  return options;
}

std::unique_ptr<FrameSource> openRecorded(const RecordedRun& run, const fs::path& folder,
                                          const fs::path& inputs, const SourceOpener& camera,
                                          const InputSettings& settings) {
  const CaptureOrigin& origin = run.header().origin;
  if (!origin.camera.empty()) {
    requireKeptFrames(run, folder);
    return std::make_unique<KeptFrames>(run, folder, camera, settings);
  }
  if (origin.video.empty()) return reopenedPictures(run, inputs, settings);
  const fs::path video = inputs.empty() ? origin.video : inputs / origin.video.filename();
  requireThere(video, kPutBack);
  return openVideo(video, settings);
}

}  // namespace framequilt::tool
