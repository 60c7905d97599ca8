// SPDX-License-Identifier: Apache-2.0
/// \file
/// A camera that wanders over a bounded scene for as long as one likes, and what goes wrong on its
/// way.
#pragma once

#include <cstdint>
#include <opencv2/core/mat.hpp>
#include <optional>
#include <vector>

#include "framequilt/session.h"
#include "tools/framequilt/seeded_random.h"

namespace framequilt::bench {

/// What a frame is to become.
enum class Offer {
  kStep,       ///< Joined.
  kStanding,   ///< Refused: moved too little.
  kFar,        ///< Moved too far.
  kScrap,      ///< Too few matches, most of it is covered.
  kUnrelated,  ///< No overlap, of another scene.
  kBlank,      ///< No overlap, without a corner.
  kDark,       ///< By motion a moving scene; by overlap another brightness.
  kBright,     ///< By motion a moving scene, for the frame before was dark.
  kDull,       ///< By overlap, dynamic scene: another sharpness.
  kCancelled,  ///< Cancelled by the caller.
  kOtherSize,  ///< An error.
};

/// All of them, in order.
const std::vector<Offer>& allOffers();
const char* nameOf(Offer offer);
/// Whether a frame became what it was to become. \param result  None: an error.
bool isAsMeant(Offer offer, Criterion criterion, const std::optional<FrameResult>& result);

/// Puts limits in place of those of tuning.h that small frames with much contrast stay below, and
/// can exceed. Before a session is opened.
void setSoakLimits();

/// The next thing to hand over.
struct Offering {
  Offer offer = Offer::kStep;
  cv::Mat frame;
  cv::Point place;  ///< Of its top-left corner in the scene.
};

/// The same for a seed on every machine.
class SoakCamera {
 public:
  /// \param withRefusals  Else everything is a step.
  SoakCamera(const SessionOptions& options, std::uint32_t seed, bool withRefusals);

  Offering next();
  /// The offering became a reference: the next ones move on from there.
  void joined(const Offering& offering) { place_ = offering.place; }

 private:
  Offer drawOffer();
  cv::Point drawPlace(Offer offer);
  cv::Point drawStep(Offer offer);
  void flattenMeasuredPart(const cv::Point& place, cv::Mat& frame) const;

  cv::Size frame_;
  Criterion criterion_;
  bool dynamicScene_;
  bool withRefusals_;
  cv::Mat scene_, otherScene_;
  tool::SeededRandom random_;
  cv::Point place_;  ///< Of the frame that the next one is matched with.
  int offered_ = 0;
  bool afterDark_ = false;
};

}  // namespace framequilt::bench
