// SPDX-License-Identifier: Apache-2.0
#include "bench/peers/phase_peer.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <utility>

#include "bench/peers/feather_canvas.h"

namespace framequilt::bench {
namespace {

constexpr int kReduction = 4;
constexpr double kSmallestOverlap = 0.1;   // Of the frame's area.
constexpr double kLeastCorrelation = 0.5;  // Of a frame that is joined.
constexpr int kPatch = 192;                // Side of what is looked for at full size.
constexpr int kSearch = 2 * kReduction;    // How far the place may be off, to each side.

/// A frame in gray, as it is and reduced.
struct GrayFrame {
  cv::Mat full;
  cv::Mat reduced;
  cv::Mat reducedFloat;

  explicit GrayFrame(const cv::Mat& frame) {
    cv::cvtColor(frame, full, cv::COLOR_BGR2GRAY);
    cv::resize(full, reduced, frame.size() / kReduction, 0, 0, cv::INTER_AREA);
    reduced.convertTo(reducedFloat, CV_32F);
  }
};

/// Where a frame of `size`, moved by `offset`, overlaps one that was not moved.
cv::Rect overlap(cv::Size size, cv::Point offset) {
  return cv::Rect({}, size) & cv::Rect(offset, size);
}

/// Normalised correlation, -1 to 1, of two gray images of one size.
double correlation(const cv::Mat& a, const cv::Mat& b) {
  const auto pixels = static_cast<double>(a.total());
  const double meanA = cv::mean(a)[0];
  const double meanB = cv::mean(b)[0];
  const double varianceA = cv::norm(a, cv::NORM_L2SQR) / pixels - meanA * meanA;
  const double varianceB = cv::norm(b, cv::NORM_L2SQR) / pixels - meanB * meanB;
  if (varianceA <= 0 || varianceB <= 0) return 0;
  return (a.dot(b) / pixels - meanA * meanB) / std::sqrt(varianceA * varianceB);
}

struct Candidate {
  cv::Point offset;
  double correlation = -1;
};

/// The shift is known modulo the size of the transform: of the four offsets that this leaves, the
/// one at which the overlaps look most alike.
Candidate bestAlias(const cv::Mat& before, const cv::Mat& now, cv::Point2d offset) {
  const cv::Size transform(cv::getOptimalDFTSize(now.cols), cv::getOptimalDFTSize(now.rows));
  Candidate best;
  for (const int aroundX : {0, offset.x > 0 ? -transform.width : transform.width}) {
    for (const int aroundY : {0, offset.y > 0 ? -transform.height : transform.height}) {
      const cv::Point candidate(cvRound(offset.x) + aroundX, cvRound(offset.y) + aroundY);
      const cv::Rect box = overlap(now.size(), candidate);
      if (box.area() < kSmallestOverlap * now.size().area()) continue;
      const double score = correlation(before(box), now(box - candidate));
      if (score > best.correlation) best = {candidate, score};
    }
  }
  return best;
}

/// Of nine patches spread over `box`, the one with most contrast.
cv::Rect richestPatch(const cv::Mat& image, const cv::Rect& box) {
  const cv::Size size(std::min(kPatch, box.width), std::min(kPatch, box.height));
  const cv::Size room = box.size() - size;
  cv::Rect richest(box.tl(), size);
  double most = -1;
  for (int i = 0; i < 9; ++i) {
    const cv::Rect patch(box.tl() + cv::Point(room.width * (i % 3) / 2, room.height * (i / 3) / 2),
                         size);
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(image(patch), mean, deviation);
    if (deviation[0] > most) {
      most = deviation[0];
      richest = patch;
    }
  }
  return richest;
}

/// The offset at full size: a patch of the new frame, looked for around its place in the one
/// before.
Candidate refined(const cv::Mat& before, const cv::Mat& now, cv::Point offset) {
  const cv::Rect common = overlap(now.size(), offset);
  const cv::Rect inside(common.x + kSearch, common.y + kSearch, common.width - 2 * kSearch,
                        common.height - 2 * kSearch);
  if (inside.width <= 0 || inside.height <= 0) return {};
  const cv::Rect there = richestPatch(before, inside);
  const cv::Rect searched(there.tl() - cv::Point(kSearch, kSearch),
                          there.size() + cv::Size(2 * kSearch, 2 * kSearch));
  cv::Mat scores;
  cv::matchTemplate(before(searched), now(there - offset), scores, cv::TM_CCOEFF_NORMED);
  Candidate best;
  cv::Point at;
  cv::minMaxLoc(scores, nullptr, &best.correlation, nullptr, &at);
  best.offset = offset + at - cv::Point(kSearch, kSearch);
  return best;
}

class PhasePeer : public Contender {
 public:
  explicit PhasePeer(cv::Size frame) {
    cv::createHanningWindow(window_, frame / kReduction, CV_32F);
  }

  Placed start(const cv::Mat& first, const cv::Mat& second) override {
    previous_.emplace(first);
    canvas_.emplace(first);
    return next(second);
  }

  Placed next(const cv::Mat& frame) override {
    GrayFrame now(frame);
    const std::optional<cv::Point> offset = offsetTo(now);
    if (!offset) return {};
    place_ += *offset;
    previous_ = std::move(now);
    canvas_->paste(frame, place_);
    return {true, place_};
  }

  cv::Size mosaicSize() const override { return canvas_->pixels().size(); }

 private:
  std::optional<cv::Point> offsetTo(const GrayFrame& now) const {
    // How far the contents moved, which is the other way than the camera.
    const cv::Point2d shift =
        cv::phaseCorrelate(previous_->reducedFloat, now.reducedFloat, window_);
    const Candidate coarse = bestAlias(previous_->reduced, now.reduced, -shift);
    if (coarse.correlation < kLeastCorrelation) return std::nullopt;
    const Candidate fine = refined(previous_->full, now.full, coarse.offset * kReduction);
    if (fine.correlation < kLeastCorrelation) return std::nullopt;
    return fine.offset;
  }

  cv::Mat window_;
  std::optional<GrayFrame> previous_;
  cv::Point place_;
  std::optional<FeatherCanvas> canvas_;
};

}  // namespace

Entry phasePeer() {
  return {"phase_correlation", "phase correlation",
          [](cv::Size frame) { return std::make_unique<PhasePeer>(frame); }};
}

}  // namespace framequilt::bench
