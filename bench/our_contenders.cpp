// SPDX-License-Identifier: Apache-2.0
#include "bench/our_contenders.h"

#include <framequilt/framequilt.h>
#include <framequilt/session.h>

#include <opencv2/core.hpp>
#include <stdexcept>
#include <string>

namespace framequilt::bench {
namespace {

constexpr int kMosaicLimit = 20000;

/// The entry points as a host calls them.
class EntryPoints : public Contender {
 public:
  EntryPoints(cv::Size frame, int cornerBudget) {
    constexpr int kJudgeByMotion = 1;
    constexpr int kStaticScene = 0;
    if (!initJoint(frame.height, frame.width, 3, cornerBudget, kMosaicLimit, kMosaicLimit,
                   kJudgeByMotion, kStaticScene)) {
      throw std::runtime_error("the library does not start");
    }
  }
  ~EntryPoints() override { uinitJoint(); }

  Placed start(const cv::Mat& first, const cv::Mat& second) override {
    cv::Mat reference = first.clone();  // The only one that is written: 0 becomes 1.
    record_.position = {kFirstMosaicSide / 2 - first.cols / 2,
                        kFirstMosaicSide / 2 - first.rows / 2};
    return call(reference.data, second, 0);
  }

  Placed next(const cv::Mat& frame) override { return call(nullptr, frame, 1); }

  cv::Size mosaicSize() const override { return mosaic_.size(); }

 private:
  static constexpr int kFirstMosaicSide = 6000;

  Placed call(unsigned char* reference, const cv::Mat& frame, int index) {
    const SPoint before = record_.position;
    stichingImagedJoint(reference, frame.data, index, /*frameScale=*/1, 0, 0, false, topLeft_,
                        bottomRight_, mosaic_, record_);
    if (record_.position.x == before.x && record_.position.y == before.y) return {};
    place_ += cv::Point(record_.offsetX, record_.offsetY);
    return {true, place_};
  }

  SPoint topLeft_{}, bottomRight_{};
  cv::Mat mosaic_;
  stitchflags record_{};
  cv::Point place_;
};

class SessionOfAUser : public Contender {
 public:
  explicit SessionOfAUser(cv::Size frame) : session_(optionsFor(frame)) {}

  Placed start(const cv::Mat& first, const cv::Mat& second) override {
    session_.add(first);
    return next(second);
  }

  Placed next(const cv::Mat& frame) override {
    const FrameResult result = session_.add(frame);
    if (result.verdict != Verdict::kJoined) return {};
    return {true, result.placement};
  }

  cv::Size mosaicSize() const override {
    cv::Size whole;
    cv::Point corner;
    session_.mosaic().locateROI(whole, corner);
    return whole;
  }

 private:
  static SessionOptions optionsFor(cv::Size frame) {
    SessionOptions options;
    options.rows = frame.height;
    options.cols = frame.width;
    options.backend = Backend::kHost;
    return options;
  }

  Session session_;
};

Entry entryPoints(int cornerBudget) {
  const std::string budget = std::to_string(cornerBudget);
  return {"entry_points_" + budget, "entry points, budget " + budget,
          [=](cv::Size frame) { return std::make_unique<EntryPoints>(frame, cornerBudget); }};
}

}  // namespace

std::vector<Entry> ourContenders() {
  const int usual = SessionOptions().cornerBudget;
  return {entryPoints(1),
          entryPoints(usual),
          {"session", "session, budget " + std::to_string(usual),
           [](cv::Size frame) { return std::make_unique<SessionOfAUser>(frame); }}};
}

}  // namespace framequilt::bench
