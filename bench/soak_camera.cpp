// SPDX-License-Identifier: Apache-2.0
#include "bench/soak_camera.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "framequilt/tuning.h"
#include "tools/framequilt/generated_scene.h"

namespace framequilt::bench {
namespace {

/// Of the scene, in frames. The mosaic has its last size once the camera was at every edge.
constexpr int kFramesAcross = 6;

// Parts of a side, in percent. A step leaves more overlap than it has to, a far one less, but
// enough for its offset to be found.
constexpr int kShortestStep = 20;
constexpr int kLongestStep = 35;
constexpr int kLongestAside = 12;
constexpr int kShortestFar = 42;
constexpr int kLongestFar = 46;
constexpr int kStandingStill = 4;
constexpr float kLeastOverlap = 0.6F;

constexpr int kChangeLimit = 60;      // Gray levels; steps change about 20, darkness about 150.
constexpr float kSharpnessLimit = 8;  // Levels; steps differ by less than 6.
constexpr double kContrast = 0.5;
constexpr double kLightness = 140;
constexpr double kMeanGray = 200;
constexpr double kDarkness = 140;
constexpr int kScrapSide = 56;  // Pixels.

// Of a hundred frames.
constexpr int kShareOfEach = 3;

/// Offsets are found in steps of two pixels.
int even(int value) { return value - value % 2; }

int partOf(int side, int percent) { return side * percent / 100; }

/// Light enough for darkness to differ by more than half of the gray range.
cv::Mat lightScene(cv::Size size, std::uint32_t seed) {
  cv::Mat scene = tool::generateScene(size, seed);
  scene.convertTo(scene, -1, kContrast, kLightness);
  return scene;
}

bool isRefusedFor(Refusal reason, const std::optional<FrameResult>& result) {
  return result && result->verdict == Verdict::kRefused && result->reason == reason;
}

/// Everything but a part in the middle is gray.
void coverAllBut(const cv::Size& part, cv::Mat& frame) {
  const cv::Rect middle(even((frame.cols - part.width) / 2), even((frame.rows - part.height) / 2),
                        part.width, part.height);
  const cv::Mat shown = frame(middle).clone();
  frame.setTo(cv::Scalar::all(kMeanGray));
  shown.copyTo(frame(middle));
}

}  // namespace

const std::vector<Offer>& allOffers() {
  static const std::vector<Offer> all = {Offer::kStep,      Offer::kStanding,  Offer::kFar,
                                         Offer::kScrap,     Offer::kUnrelated, Offer::kBlank,
                                         Offer::kDark,      Offer::kBright,    Offer::kDull,
                                         Offer::kCancelled, Offer::kOtherSize};
  return all;
}

const char* nameOf(Offer offer) {
  switch (offer) {
    case Offer::kStep:
      return "step";
    case Offer::kStanding:
      return "standing";
    case Offer::kFar:
      return "far";
    case Offer::kScrap:
      return "scrap";
    case Offer::kUnrelated:
      return "unrelated";
    case Offer::kBlank:
      return "blank";
    case Offer::kDark:
      return "dark";
    case Offer::kBright:
      return "bright";
    case Offer::kDull:
      return "dull";
    case Offer::kCancelled:
      return "cancelled";
    case Offer::kOtherSize:
      return "other size";
  }
  return "";
}

bool isAsMeant(Offer offer, Criterion criterion, const std::optional<FrameResult>& result) {
  switch (offer) {
    case Offer::kStep:
      return result && result->verdict == Verdict::kJoined;
    case Offer::kStanding:
      return isRefusedFor(Refusal::kMovedTooLittle, result);
    case Offer::kFar:
      return isRefusedFor(Refusal::kMovedTooFar, result);
    case Offer::kScrap:
      return isRefusedFor(Refusal::kTooFewMatches, result);
    case Offer::kUnrelated:
    case Offer::kBlank:
      return isRefusedFor(Refusal::kNoOverlap, result);
    case Offer::kDark:
      return isRefusedFor(
          criterion == Criterion::kMotion ? Refusal::kMovingScene : Refusal::kBrightness, result);
    case Offer::kBright:
      return isRefusedFor(Refusal::kMovingScene, result);
    case Offer::kDull:
      return isRefusedFor(Refusal::kSharpness, result);
    case Offer::kCancelled:
      return result && result->verdict == Verdict::kCancelled;
    case Offer::kOtherSize:
      return !result;
  }
  return false;
}

void setSoakLimits() {
  ImageOverlap_minCpu = ImageOverlap_minCL = kLeastOverlap;
  motionValueThCpu0 = motionValueThCL0 = kChangeLimit;
  defintThCpu0 = kSharpnessLimit;
}

SoakCamera::SoakCamera(const SessionOptions& options, std::uint32_t seed, bool withRefusals)
    : frame_(options.cols, options.rows),
      criterion_(options.criterion),
      dynamicScene_(options.dynamicScene),
      withRefusals_(withRefusals),
      scene_(lightScene(frame_ * kFramesAcross, seed)),
      otherScene_(lightScene(frame_ * 2, seed + 1)),
      random_(seed, tool::RandomPurpose::kPath),
      place_(even(scene_.cols / 2), even(scene_.rows / 2)) {}

Offering SoakCamera::next() {
  Offering offering;
  offering.offer = drawOffer();
  offering.place = drawPlace(offering.offer);
  cv::Mat& frame = offering.frame;
  frame = scene_(cv::Rect(offering.place, frame_)).clone();
  switch (offering.offer) {
    case Offer::kScrap:
      coverAllBut({kScrapSide, kScrapSide}, frame);
      break;
    case Offer::kUnrelated:
      frame = otherScene_(cv::Rect(random_.between(0, frame_.width),
                                   random_.between(0, frame_.height), frame_.width, frame_.height))
                  .clone();
      break;
    case Offer::kBlank:
      frame.setTo(cv::Scalar::all(random_.between(1, 255)));
      break;
    case Offer::kDark:
      frame -= cv::Scalar::all(kDarkness);
      break;
    case Offer::kDull:
      flattenMeasuredPart(offering.place, frame);
      break;
    case Offer::kOtherSize:
      frame = frame.colRange(0, frame_.width - 2).clone();
      break;
    default:
      break;
  }
  return offering;
}

/// A pair joins first, so that the others have something to be refused for.
Offer SoakCamera::drawOffer() {
  const bool afterDark = std::exchange(afterDark_, false);
  if (offered_++ < 2 || !withRefusals_) return Offer::kStep;
  // The change is that since the frame before, which was refused, too.
  if (afterDark) return Offer::kBright;
  std::vector<Offer> kinds = {Offer::kStanding, Offer::kFar,  Offer::kScrap,     Offer::kUnrelated,
                              Offer::kBlank,    Offer::kDark, Offer::kCancelled, Offer::kOtherSize};
  if (criterion_ == Criterion::kOverlap && dynamicScene_) kinds.push_back(Offer::kDull);
  const auto kind = static_cast<std::size_t>(random_.between(0, 99) / kShareOfEach);
  const Offer offer = kind < kinds.size() ? kinds[kind] : Offer::kStep;
  afterDark_ = offer == Offer::kDark && criterion_ == Criterion::kMotion;
  return offer;
}

/// One that keeps the frame within the scene; there is room for it in one of the directions.
cv::Point SoakCamera::drawPlace(Offer offer) {
  const cv::Rect places(cv::Point(), scene_.size() - frame_ + cv::Size(1, 1));
  for (;;) {
    const cv::Point place = place_ + drawStep(offer);
    if (places.contains(place)) return place;
  }
}

cv::Point SoakCamera::drawStep(Offer offer) {
  if (offered_ == 1) return {};
  if (offer == Offer::kStanding) {
    const int most = partOf(frame_.height, kStandingStill);
    return {even(random_.between(-most, most)), even(random_.between(-most, most))};
  }
  const bool far = offer == Offer::kFar;
  const bool across = random_.between(0, 1) == 0;
  const int side = across ? frame_.width : frame_.height;
  const int along = random_.between(partOf(side, far ? kShortestFar : kShortestStep),
                                    partOf(side, far ? kLongestFar : kLongestStep)) *
                    (random_.between(0, 1) == 0 ? 1 : -1);
  const int most = partOf(frame_.height, kLongestAside);
  const int aside = random_.between(-most, most);
  return across ? cv::Point(even(along), even(aside)) : cv::Point(even(aside), even(along));
}

/// The sharpness reads the top-left quarter of what mosaic and frame share, and some of its upper
/// rows: nothing to measure is left there.
void SoakCamera::flattenMeasuredPart(const cv::Point& place, cv::Mat& frame) const {
  const cv::Rect shared = (cv::Rect(place_, frame_) & cv::Rect(place, frame_)) - place;
  cv::Mat part = frame(shared);
  const int rows = part.rows * 3 / 10;
  part.rowRange(0, rows).setTo(cv::Scalar::all(kMeanGray));
  part(cv::Rect(0, 0, part.cols / 2 + 2, part.rows / 2 + 2)).setTo(cv::Scalar::all(kMeanGray));
}

}  // namespace framequilt::bench
