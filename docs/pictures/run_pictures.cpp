// SPDX-License-Identifier: Apache-2.0
#include "docs/pictures/run_pictures.h"

#include <framequilt/tuning.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "docs/pictures/drawing.h"
#include "docs/pictures/examined_pair.h"
#include "features/harris.h"
#include "imaging/filter.h"
#include "imaging/fusion.h"
#include "imaging/resize.h"

namespace framequilt::pictures {
namespace {

// As features/harris.cpp has it.
constexpr float kHarrisK = 0.007F;
constexpr int kTaps = 5;
constexpr int kBorder = kTaps / 2;

cv::Mat smoothed(cv::Mat& plane) {
  const cv::Size padded(plane.cols + 2 * kBorder, plane.rows + 2 * kBorder);
  cv::Mat one = cv::Mat::zeros(padded, CV_32F);
  cv::Mat two = cv::Mat::zeros(padded, CV_32F);
  const auto floats = [](cv::Mat& of) { return of.ptr<float>(); };
  opencvcopyFilter2DBorderCh1(floats(plane), plane.rows, plane.cols, kBorder, floats(two),
                              floats(one));
  opencvFilter2DRowCalcCh1(floats(one), filter2DKer, padded.height, padded.width, kTaps,
                           floats(two));
  opencvFilter2DColCalcCh1(floats(two), filter2DKer, padded.height, padded.width, kTaps,
                           floats(one));
  cv::Mat result(plane.size(), CV_32F);
  opencvcopyFilter2DTakeOutBoundCh1(floats(one), padded.height, padded.width, kBorder,
                                    floats(result));
  return result;
}

/// The Harris response at half size, where corners are searched.
cv::Mat response(const cv::Mat& frame) {
  cv::Mat gray = engineGray(frame);
  cv::Mat half(frame.rows / 2, frame.cols / 2, CV_8UC1);
  opencvInterLineARResize(gray.data, gray.rows, gray.cols, 2, 1, half.data);
  std::array<cv::Mat, 3> products;
  for (cv::Mat& product : products) product = cv::Mat::zeros(half.size(), CV_32F);
  findGradSquareCrossTerms(half.data, half.rows, half.cols, products[0].ptr<float>(),
                           products[1].ptr<float>(), products[2].ptr<float>());
  for (cv::Mat& product : products) product = smoothed(product);
  cv::Mat response = cv::Mat::zeros(half.size(), CV_32F);
  float mean = 0;
  float sum = 0;
  calcResponseValue(products[0].ptr<float>(), products[1].ptr<float>(), products[2].ptr<float>(),
                    kHarrisK, half.rows, half.cols, response.ptr<float>(), mean, sum);
  return response;
}

/// Responses span many orders of magnitude: their logarithms, from black to white.
cv::Mat visible(const cv::Mat& response) {
  cv::Mat logarithm;
  cv::log(response + 1.0F, logarithm);
  cv::Mat bytes;
  cv::normalize(logarithm, bytes, 0, 255, cv::NORM_MINMAX, CV_8U);
  cv::Mat enlarged;
  cv::resize(bytes, enlarged, {}, 2, 2, cv::INTER_NEAREST);
  return enlarged;
}

cv::Mat cornersPicture(const ExaminedPair& pair) {
  cv::Mat frame = inColour(pair.one);
  drawPoints(frame, pair.cornersOne, kFirst);
  return atWidth(inARow({visible(response(pair.one)), frame}), 1200);
}

cv::Mat matchesPicture(const ExaminedPair& pair) {
  cv::Mat both = inARow({pair.one, pair.two});
  const cv::Mat frames = both.clone();
  const cv::Point shift(both.cols - pair.two.cols, 0);
  const auto lines = [&](const Points& from, const Points& to, const cv::Scalar& colour) {
    for (std::size_t i = 0; i < from.size(); ++i) {
      cv::line(both, {from[i].x, from[i].y}, cv::Point(to[i].x, to[i].y) + shift, colour, 1,
               cv::LINE_AA);
    }
  };
  // Most pairs do not agree: they stay in the background.
  lines(pair.matchedOne, pair.matchedTwo, kRefused);
  cv::addWeighted(both, 0.4, frames, 0.6, 0, both);
  lines(pair.agreeingOne, pair.agreeingTwo, kJoined);
  return atWidth(both, 1200);
}

/// Both frames where the offset puts them, half of each where they overlap.
cv::Mat overlapPicture(const ExaminedPair& pair) {
  const cv::Rect one({}, pair.one.size());
  const cv::Rect two(pair.result.placement, pair.two.size());
  const cv::Rect all = one | two;
  cv::Mat picture(all.size(), CV_8UC3, cv::Scalar::all(255));
  pair.one.copyTo(picture(one - all.tl()));
  pair.two.copyTo(picture(two - all.tl()));
  const cv::Rect shared = one & two;
  cv::addWeighted(pair.one(shared), 0.5, pair.two(shared - two.tl()), 0.5, 0,
                  picture(shared - all.tl()));
  drawOutline(picture, one - all.tl(), kFirst);
  drawOutline(picture, two - all.tl(), kJoined);
  drawPoints(picture, pair.agreeingOne, kJoined, -all.tl());
  return atWidth(picture, 900);
}

/// A frame as it is fused with the ground that the mosaic has under it.
struct Fused {
  cv::Mat ground, frame, weight, result;
};

cv::Mat weightsPicture(const Fused& fused) {
  return atWidth(
      inAColumn({inARow({fused.ground, fused.frame}), inARow({fused.weight, fused.result})}), 1000);
}

/// How the mosaic looked after some of the frames, on a sheet of the size that it has at the end.
struct State {
  cv::Mat mosaic;
  cv::Rect steady;   ///< Where the mosaic lies,
  cv::Rect changed;  ///< and the newest frame.
};

cv::Mat growthPicture(const std::vector<State>& states) {
  const cv::Rect sheet = states.back().steady;
  std::vector<cv::Mat> rows;
  for (std::size_t i = 0; i + 1 < states.size(); i += 2) {
    std::vector<cv::Mat> row;
    for (const State& state : {states[i], states[i + 1]}) {
      cv::Mat panel(sheet.size(), CV_8UC3, cv::Scalar::all(235));
      cv::Mat part = panel((state.steady & sheet) - sheet.tl());
      cv::Mat filled;
      cv::inRange(state.mosaic, cv::Scalar::all(1), cv::Scalar::all(255), filled);
      state.mosaic.copyTo(part, filled);
      drawOutline(panel, state.changed - sheet.tl(), kJoined, 6);
      row.push_back(panel);
    }
    rows.push_back(inARow(row));
  }
  return atWidth(inAColumn(rows), 1100);
}

}  // namespace

cv::Mat writeRunPictures(const std::vector<cv::Mat>& frames, const std::string& folder) {
  const ExaminedPair pair = examine(frames.at(0), frames.at(1));
  std::printf("corners: %zu and %zu\npairs: %zu, of which agree: %zu\nmoved by (%d, %d)\n",
              pair.cornersOne.size(), pair.cornersTwo.size(), pair.matchedOne.size(),
              pair.agreeingOne.size(), pair.result.placement.x, pair.result.placement.y);
  write(folder, "run-corners.jpg", cornersPicture(pair));
  write(folder, "run-matches.jpg", matchesPicture(pair));
  write(folder, "run-overlap.jpg", overlapPicture(pair));

  SessionOptions options;
  options.rows = frames[0].rows;
  options.cols = frames[0].cols;
  options.backend = Backend::kHost;
  Session session(options);
  // Of a frame that lies beside one and below another.
  constexpr std::size_t kShown = 5;
  const std::array<std::size_t, 4> kStates = {1, 3, 6, frames.size() - 1};
  Fused fused;
  std::vector<State> states;
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const cv::Rect before = session.steadyBox();
    const cv::Mat mosaic = session.copyRegion(before);
    const FrameResult result = session.add(frames[i]);
    if (i > 0 && result.verdict != Verdict::kJoined) {
      throw std::runtime_error("frame " + std::to_string(i + 1) + " is " + explain(result));
    }
    const cv::Rect place(result.placement, frames[i].size());
    if (i == kShown) {
      fused.ground = cv::Mat::zeros(place.size(), CV_8UC3);
      const cv::Rect shared = before & place;
      mosaic(shared - before.tl()).copyTo(fused.ground(shared - place.tl()));
      fused.frame = frames[i];
      fused.weight = cv::Mat(place.size(), CV_8UC1);
      cv::Mat ground = fused.ground.clone();
      cv::Mat frame = cv::max(frames[i], 1);
      weightofTwoAreaFun(ground.data, frame.data, place.height, place.width, 3, 0,
                         fused.weight.data);
      fused.result = session.copyRegion(place);
    }
    if (std::find(kStates.begin(), kStates.end(), i) != kStates.end()) {
      const cv::Rect box = session.steadyBox();
      states.push_back({session.copyRegion(box), box, place});
    }
  }
  write(folder, "run-weights.jpg", weightsPicture(fused));
  write(folder, "run-growth.jpg", growthPicture(states));
  return session.mosaic().clone();
}

}  // namespace framequilt::pictures
