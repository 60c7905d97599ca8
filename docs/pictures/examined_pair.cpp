// SPDX-License-Identifier: Apache-2.0
#include "docs/pictures/examined_pair.h"

#include <framequilt/tuning.h>

#include <stdexcept>
#include <string>

#include "features/consensus.h"
#include "features/descriptor.h"
#include "features/features_state.h"
#include "features/matching.h"
#include "imaging/gray.h"
#include "imaging/motion.h"

namespace framequilt::pictures {
namespace {

// As the engine calls its routines: cpu/corner_worker.cpp, features/offset.cpp.
constexpr int kPatch = 20;
constexpr float kRatio = 0.98F;

std::vector<unsigned short> described(const cv::Mat& frame, const Points& corners) {
  cv::Mat gray = engineGray(frame);
  const auto length = static_cast<std::size_t>(demesion);
  std::vector<unsigned short> scratch(length);
  std::vector<unsigned short> descriptors(length * corners.size());
  noRotaFeatureDescriber(gray.data, gray.rows, gray.cols, demesion, kPatch, corners, scratch.data(),
                         descriptors.data());
  return descriptors;
}

void match(ExaminedPair& pair) {
  std::vector<unsigned short> one = described(pair.one, pair.cornersOne);
  std::vector<unsigned short> two = described(pair.two, pair.cornersTwo);
  std::vector<float> distances(pair.cornersOne.size());
  Points matches;
  calacDistanceIndexFun(one.data(), two.data(), distances.data(), kRatio,
                        static_cast<int>(pair.cornersOne.size()), demesion,
                        static_cast<int>(pair.cornersTwo.size()), demesion, matches);
  roughMatchSPoint(pair.cornersOne, pair.cornersTwo, matches, pair.matchedOne, pair.matchedTwo);
  float dx = 0;
  float dy = 0;
  ransacMatchSPointArrayFun(pair.matchedOne, pair.matchedTwo, pair.agreeingOne, pair.agreeingTwo,
                            dx, dy);
}

}  // namespace

cv::Mat engineGray(const cv::Mat& frame) {
  cv::Mat conditioned = frame.clone();
  pretJudgeImageCh(conditioned.data, frame.rows, frame.cols, frame.channels());
  cv::Mat gray(frame.size(), CV_8UC1);
  rgb2Gray(conditioned.data, frame.rows, frame.cols, gray.data);
  return gray;
}

ExaminedPair examine(const cv::Mat& one, const cv::Mat& two, SessionOptions options) {
  options.rows = one.rows;
  options.cols = one.cols;
  options.backend = Backend::kHost;
  Session session(options);
  session.add(one);
  ExaminedPair pair;
  pair.one = one;
  pair.two = two;
  pair.result = session.add(two);
  pair.cornersOne = HarrissCornerSPointOneArray;
  pair.cornersTwo = HarrissCornerSPointTwoArray;
  match(pair);
  const auto counted = static_cast<std::size_t>(pair.result.measures.matches.value);
  if (pair.agreeingOne.size() != counted) {
    throw std::runtime_error("drawn are " + std::to_string(pair.agreeingOne.size()) +
                             " agreeing pairs, the engine counted " + std::to_string(counted));
  }
  return pair;
}

}  // namespace framequilt::pictures
