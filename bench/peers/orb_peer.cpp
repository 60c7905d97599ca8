// SPDX-License-Identifier: Apache-2.0
#include "bench/peers/orb_peer.h"

#include <algorithm>
#include <cmath>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "bench/peers/feather_canvas.h"

namespace framequilt::bench {
namespace {

constexpr int kFeatures = 2000;
constexpr int kLevels = 1;  // All frames are of one scale; eight take up to half as long again.
constexpr float kRatio = 0.75F;
constexpr int kBin = 8;                   // Pixels.
constexpr float kNear = 6;                // From the middle of a bin past its corners.
constexpr std::size_t kFewestPairs = 20;  // That agree.

struct Features {
  std::vector<cv::KeyPoint> points;
  cv::Mat descriptors;
};

using Offsets = std::vector<cv::Point2f>;

/// The middle of the bin that most offsets fall into.
cv::Point2f mostVotedOffset(const Offsets& offsets, cv::Size frame) {
  cv::Mat votes = cv::Mat::zeros(2 * frame.height / kBin + 1, 2 * frame.width / kBin + 1, CV_16U);
  for (const cv::Point2f& offset : offsets) {
    const auto col = static_cast<int>(offset.x + static_cast<float>(frame.width)) / kBin;
    const auto row = static_cast<int>(offset.y + static_cast<float>(frame.height)) / kBin;
    ++votes.at<unsigned short>(row, col);
  }
  cv::Point bin;
  cv::minMaxLoc(votes, nullptr, nullptr, nullptr, &bin);
  return cv::Point2f(bin * kBin - cv::Point(frame)) + cv::Point2f(kBin / 2.0F, kBin / 2.0F);
}

float median(std::vector<float> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// The offset that most agree on, in whole pixels; none when too few do.
std::optional<cv::Point> agreedOffset(const Offsets& offsets, cv::Size frame) {
  if (offsets.empty()) return std::nullopt;
  const cv::Point2f middle = mostVotedOffset(offsets, frame);
  std::vector<float> xs;
  std::vector<float> ys;
  for (const cv::Point2f& offset : offsets) {
    if (std::abs(offset.x - middle.x) > kNear || std::abs(offset.y - middle.y) > kNear) continue;
    xs.push_back(offset.x);
    ys.push_back(offset.y);
  }
  if (xs.size() < kFewestPairs) return std::nullopt;
  return cv::Point(cvRound(median(std::move(xs))), cvRound(median(std::move(ys))));
}

class OrbPeer : public Contender {
 public:
  Placed start(const cv::Mat& first, const cv::Mat& second) override {
    previous_ = featuresOf(first);
    canvas_.emplace(first);
    return next(second);
  }

  Placed next(const cv::Mat& frame) override {
    Features features = featuresOf(frame);
    const std::optional<cv::Point> offset = agreedOffset(offsetsTo(features), frame.size());
    if (!offset) return {};
    place_ += *offset;
    previous_ = std::move(features);
    canvas_->paste(frame, place_);
    return {true, place_};
  }

  cv::Size mosaicSize() const override { return canvas_->pixels().size(); }

 private:
  Features featuresOf(const cv::Mat& frame) {
    cv::cvtColor(frame, gray_, cv::COLOR_BGR2GRAY);
    Features features;
    orb_->detectAndCompute(gray_, cv::noArray(), features.points, features.descriptors);
    return features;
  }

  /// From the last joined frame, one for each pair of features that passes the ratio test.
  Offsets offsetsTo(const Features& features) {
    Offsets offsets;
    if (features.points.empty() || previous_.points.size() < 2) return offsets;
    std::vector<std::vector<cv::DMatch>> nearest;
    matcher_.knnMatch(features.descriptors, previous_.descriptors, nearest, 2);
    for (const std::vector<cv::DMatch>& pair : nearest) {
      if (pair.size() < 2 || pair[0].distance >= kRatio * pair[1].distance) continue;
      offsets.push_back(previous_.points[static_cast<std::size_t>(pair[0].trainIdx)].pt -
                        features.points[static_cast<std::size_t>(pair[0].queryIdx)].pt);
    }
    return offsets;
  }

  cv::Ptr<cv::ORB> orb_ = cv::ORB::create(kFeatures, /*scaleFactor=*/1.2F, kLevels);
  cv::BFMatcher matcher_{cv::NORM_HAMMING};
  cv::Mat gray_;
  Features previous_;
  cv::Point place_;
  std::optional<FeatherCanvas> canvas_;
};

}  // namespace

Entry orbPeer() {
  return {"orb", "ORB", [](cv::Size /*frame*/) { return std::make_unique<OrbPeer>(); }};
}

}  // namespace framequilt::bench
