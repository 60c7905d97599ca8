// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/simulated_source.h"

#include <string>
#include <utility>

#include "tools/framequilt/generated_landscape.h"

namespace framequilt::tool {
namespace {

class SimulatedSource final : public FrameSource {
 public:
  SimulatedSource(const SimulationOptions& options, InputSettings settings)
      : settings_(std::move(settings)),
        shape_{options.path.frame.height, options.path.frame.width, options.gray ? 1 : 3},
        capture_(generateLandscape(roomyScene(options.path), options.seed), options) {}

  CaptureShape shape() const override { return shape_; }
  std::optional<std::size_t> count() const override {
    return static_cast<std::size_t>(capture_.frames());
  }
  std::optional<SourceFrame> next() override {
    if (settings_.stopAsked() || next_ == capture_.frames()) return std::nullopt;
    cv::Mat pixels = capture_.frame(next_++);
    return SourceFrame{std::move(pixels),
                       static_cast<std::size_t>(next_),
                       "simulated#" + std::to_string(next_),
                       {}};
  }
  std::size_t skipped() const override { return 0; }

 private:
  InputSettings settings_;
  CaptureShape shape_;
  SimulatedCapture capture_;
  int next_ = 0;
};

}  // namespace

std::unique_ptr<FrameSource> openSimulation(const SimulationOptions& options,
                                            const InputSettings& settings) {
  return std::make_unique<SimulatedSource>(options, settings);
}

}  // namespace framequilt::tool
