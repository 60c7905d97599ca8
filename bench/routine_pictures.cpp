// SPDX-License-Identifier: Apache-2.0
#include "bench/routine_pictures.h"

#include <cstddef>
#include <stdexcept>

#include "features/corner_budget.h"
#include "features/descriptor.h"
#include "features/harris.h"
#include "features/matching.h"
#include "features/selection.h"
#include "framequilt/tuning.h"
#include "imaging/filter.h"
#include "imaging/gray.h"
#include "tools/framequilt/generated_scene.h"

namespace framequilt::bench {
namespace {

constexpr float kHarrisK = 0.007F;
constexpr float kRobust = 0.5F;
constexpr float kRatio = 0.98F;

cv::Mat grayOf(const cv::Mat& colour) {
  cv::Mat gray(colour.size(), CV_8U);
  rgb2Gray(colour.data, colour.rows, colour.cols, gray.data);
  return gray;
}

float* floats(cv::Mat& plane) { return plane.ptr<float>(); }

/// As the corner search does it.
void smooth(cv::Mat& plane) {
  const int taps = smoothingTaps();
  const int border = taps / 2;
  const cv::Size padded = plane.size() + cv::Size(2 * border, 2 * border);
  cv::Mat one = cv::Mat::zeros(padded, CV_32F);
  cv::Mat two = cv::Mat::zeros(padded, CV_32F);
  opencvcopyFilter2DBorderCh1(floats(plane), plane.rows, plane.cols, border, floats(two),
                              floats(one));
  opencvFilter2DRowCalcCh1(floats(one), filter2DKer, one.rows, one.cols, taps, floats(two));
  opencvFilter2DColCalcCh1(floats(two), filter2DKer, one.rows, one.cols, taps, floats(one));
  opencvcopyFilter2DTakeOutBoundCh1(floats(one), one.rows, one.cols, border, floats(plane));
}

struct Response {
  cv::Mat gx2, gy2, gxy, plane;
  float mean = 0;

  explicit Response(const cv::Mat& gray) {
    for (cv::Mat* one : {&gx2, &gy2, &gxy, &plane}) *one = cv::Mat::zeros(gray.size(), CV_32F);
    findGradSquareCrossTerms(gray.data, gray.rows, gray.cols, floats(gx2), floats(gy2),
                             floats(gxy));
    for (cv::Mat* product : {&gx2, &gy2, &gxy}) smooth(*product);
    float sum = 0;
    calcResponseValue(floats(gx2), floats(gy2), floats(gxy), kHarrisK, gray.rows, gray.cols,
                      floats(plane), mean, sum);
  }
};

std::vector<SPoint> strongest(const cv::Mat& gray, int count) {
  Response response(gray);
  std::vector<float> values;
  std::vector<SPoint> points;
  responseValueMaxSuppression(floats(response.plane), response.mean, gray.rows, gray.cols, values,
                              points);
  int found = 0;
  goToFirstGetRidOfSomeSPoints(values, points, count, candidateCap(count), 1, 1, found);
  std::vector<SPoint> corners;
  goToSecondGetRidOfSomeSPoints(values, points, found, 1, kRobust, corners);
  return corners;
}

std::vector<unsigned short> described(const cv::Mat& gray, const std::vector<SPoint>& corners) {
  constexpr auto kLength = static_cast<std::size_t>(CornerPair::kLength);
  std::vector<unsigned short> scratch(kLength);
  std::vector<unsigned short> descriptors(corners.size() * kLength);
  noRotaFeatureDescriber(gray.data, gray.rows, gray.cols, CornerPair::kLength, CornerPair::kPatch,
                         corners, scratch.data(), descriptors.data());
  return descriptors;
}

}  // namespace

RoutinePictures::RoutinePictures(cv::Size frame) : size(frame) {
  const cv::Point step(frame.width / 4, frame.height / 40);
  const cv::Mat scene = tool::generateScene(frame + cv::Size(step), /*seed=*/1);
  colourA = scene(cv::Rect({}, frame)).clone();
  colourB = scene(cv::Rect(step, frame)).clone();
  grayA = grayOf(colourA);
  grayB = grayOf(colourB);

  Response found(grayA);
  gx2 = found.gx2;
  gy2 = found.gy2;
  gxy = found.gxy;
  response = found.plane;
  responseMean = found.mean;
  responseValueMaxSuppression(floats(response), responseMean, frame.height, frame.width,
                              candidateValues, candidates);

  mosaicPart = cv::Mat::zeros(frame, CV_8UC3);
  const cv::Rect overlap(cv::Point(), frame - cv::Size(step));
  colourB(overlap).copyTo(mosaicPart(overlap));
}

CornerPair::CornerPair(const RoutinePictures& pictures, int count)
    : cornersA(strongest(pictures.grayA, count)),
      cornersB(strongest(pictures.grayB, count)),
      descriptorsA(described(pictures.grayA, cornersA)),
      descriptorsB(described(pictures.grayB, cornersB)) {
  std::vector<float> distances(cornersA.size());
  std::vector<SPoint> matches;
  calacDistanceIndexFun(descriptorsA.data(), descriptorsB.data(), distances.data(), kRatio,
                        static_cast<int>(cornersA.size()), kLength,
                        static_cast<int>(cornersB.size()), kLength, matches);
  roughMatchSPoint(cornersA, cornersB, matches, matchedA, matchedB);
  const auto wanted = static_cast<std::size_t>(count);
  if (cornersA.size() != wanted || cornersB.size() != wanted || matchedA.empty()) {
    throw std::runtime_error("the frames have too few corners");
  }
}

}  // namespace framequilt::bench
