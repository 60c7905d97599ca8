// SPDX-License-Identifier: Apache-2.0
#include "docs/pictures/gate_pictures.h"

#include <framequilt/tuning.h>

#include <cstdio>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "docs/pictures/drawing.h"
#include "docs/pictures/examined_pair.h"
#include "imaging/imaging_state.h"
#include "imaging/motion.h"

namespace framequilt::pictures {
namespace {

constexpr int kPanelCols = 560;

/// A camera over the scene: where the frame that is there lies, and the next one.
struct Views {
  cv::Rect one, two;
};

Views views(cv::Point first, cv::Point step, cv::Size size = {640, 480}) {
  return {cv::Rect(first, size), cv::Rect(first + step, size)};
}

ExaminedPair judged(const std::string& what, const cv::Mat& one, const cv::Mat& two,
                    Refusal expected, const SessionOptions& options = {}) {
  ExaminedPair pair = examine(one, two, options);
  const bool joined = pair.result.verdict == Verdict::kJoined;
  std::printf("%s: %s\n", what.c_str(), joined ? "joined" : explain(pair.result).c_str());
  if (pair.result.reason != expected) throw std::runtime_error(what + " is judged otherwise");
  return pair;
}

ExaminedPair judged(const std::string& what, const cv::Mat& scene, const Views& at,
                    Refusal expected, const SessionOptions& options = {}) {
  return judged(what, scene(at.one).clone(), scene(at.two).clone(), expected, options);
}

/// The scene in the background, both frames where they were taken, the corners that agree.
cv::Mat panel(const cv::Mat& scene, const Views& at, const ExaminedPair& pair) {
  const bool joined = pair.result.verdict == Verdict::kJoined;
  cv::Mat picture = scene * 0.35;
  for (const cv::Rect& frame : {at.one, at.two}) scene(frame).copyTo(picture(frame));
  const int width = scene.cols / 300;
  drawOutline(picture, at.two, joined ? kJoined : kRefused, width);
  drawOutline(picture, at.one, kFirst, width);
  if (joined || pair.result.reason == Refusal::kTooFewMatches) {
    drawPoints(picture, pair.agreeingOne, kJoined, at.one.tl());
  }
  return atWidth(picture, kPanelCols);
}

cv::Mat noOverlap(const cv::Mat& scene) {
  const Views apart = views({30, 60}, {800, 300});
  const Views half = views({30, 60}, {330, 100});
  return inARow({panel(scene, apart, judged("no overlap", scene, apart, Refusal::kNoOverlap)),
                 panel(scene, half, judged("half an overlap", scene, half, Refusal::kNone))});
}

cv::Mat tooFewMatches(const cv::Mat& scene) {
  const Views narrow = views({0, 300}, {540, 20});
  SessionOptions more;
  more.cornerBudget = 30;
  return inARow(
      {panel(scene, narrow, judged("few matches", scene, narrow, Refusal::kTooFewMatches)),
       panel(scene, narrow, judged("more corners", scene, narrow, Refusal::kNone, more))});
}

cv::Mat movedTooLittle(const cv::Mat& scene) {
  const Views close = views({330, 160}, {50, 12});
  const Views later = views({330, 160}, {150, 36});
  return inARow(
      {panel(scene, close, judged("a small step", scene, close, Refusal::kMovedTooLittle)),
       panel(scene, later, judged("three such steps", scene, later, Refusal::kNone))});
}

/// Only large frames have room for corners in so narrow an overlap.
cv::Mat movedTooFar(const cv::Mat& scene) {
  cv::Mat large;
  cv::resize(scene, large, {}, 2, 2, cv::INTER_CUBIC);
  const cv::Size size(1480, 1000);
  const Views far = views({20, 300}, {1370, 30}, size);
  const Views nearer = views({20, 300}, {1200, 30}, size);
  SessionOptions many;
  many.cornerBudget = 30;
  return inARow(
      {panel(large, far, judged("a wide step", large, far, Refusal::kMovedTooFar, many)),
       panel(large, nearer, judged("a shorter step", large, nearer, Refusal::kNone, many))});
}

/// What the motion measure compares: the smoothed gray images, pixel by pixel where they stand.
cv::Mat smoothedDifference(cv::Mat one, cv::Mat two) {
  const cv::Size padded(one.cols + 4, one.rows + 4);
  cv::Mat before(one.size(), CV_8U), now(one.size(), CV_8U);
  cv::Mat scratch[4];
  for (cv::Mat& plane : scratch) plane = cv::Mat::zeros(padded, CV_8U);
  PreFrameImageGrayCpu = before.data;
  CurFrameImageGrayCpu = now.data;
  PreFrameImageGrayBoundCpu = scratch[0].data;
  PreFrameImageGrayBoundTempCpu = scratch[1].data;
  CurFrameImageGrayBoundCpu = scratch[2].data;
  CurFrameImageGrayBoundTempCpu = scratch[3].data;
  imageMotionModel(one.data, two.data, one.rows, one.cols, 3, 3);
  PreFrameImageGrayCpu = CurFrameImageGrayCpu = nullptr;
  PreFrameImageGrayBoundCpu = PreFrameImageGrayBoundTempCpu = nullptr;
  CurFrameImageGrayBoundCpu = CurFrameImageGrayBoundTempCpu = nullptr;
  cv::Mat difference;
  cv::absdiff(before, now, difference);
  return difference * 3;
}

cv::Mat movingScene(const cv::Mat& scene) {
  const Views at = views({330, 160}, {150, 36});
  SessionOptions dynamic;
  dynamic.dynamicScene = true;
  const ExaminedPair pair = judged("a dynamic scene", scene, at, Refusal::kMovingScene, dynamic);
  return atWidth(inARow({pair.one, pair.two, smoothedDifference(pair.one, pair.two)}), 1130);
}

SessionOptions byOverlap() {
  SessionOptions options;
  options.criterion = Criterion::kOverlap;
  options.dynamicScene = true;
  return options;
}

/// The mosaic of a pair that was joined.
cv::Mat mosaicOf(const ExaminedPair& pair, SessionOptions options) {
  options.rows = pair.one.rows;
  options.cols = pair.one.cols;
  options.backend = Backend::kHost;
  Session session(options);
  session.add(pair.one);
  session.add(pair.two);
  return session.copyRegion(cv::Rect(pair.result.placement / 2, pair.one.size()));
}

/// Both frames, and what the mosaic would be of them.
cv::Mat frameByFrame(const ExaminedPair& pair, const cv::Mat& mosaic) {
  return atWidth(inARow({pair.one, pair.two, mosaic}), 1130);
}

cv::Mat brightness(const cv::Mat& scene) {
  const Views at = views({330, 160}, {250, 36});
  const cv::Mat one = scene(at.one).clone();
  const cv::Mat brighter = scene(at.two) * 1.5;
  const ExaminedPair refused =
      judged("a brighter frame", one, brighter, Refusal::kBrightness, byOverlap());
  SessionOptions wide = byOverlap();
  wide.dynamicScene = false;
  const ExaminedPair joined = judged("... of a static scene", one, brighter, Refusal::kNone, wide);
  return frameByFrame(refused, mosaicOf(joined, wide));
}

/// Blur costs matches before it comes near the limit: it takes a narrow one to be refused for it.
cv::Mat sharpness(const cv::Mat& scene) {
  const Views at = views({330, 160}, {250, 36});
  const cv::Mat one = scene(at.one).clone();
  cv::Mat blurred;
  cv::GaussianBlur(scene(at.two), blurred, {}, 2.0);
  const ExaminedPair joined = judged("a blurred frame", one, blurred, Refusal::kNone, byOverlap());
  std::printf("  sharpness differs by %.1f, %.0f matches\n",
              joined.result.measures.sharpness.value_or(Measure{}).value,
              joined.result.measures.matches.value);
  const float before = defintThCpu0;
  defintThCpu0 = 5.0F;
  const ExaminedPair refused =
      judged("... with a limit of 5", one, blurred, Refusal::kSharpness, byOverlap());
  defintThCpu0 = before;
  return frameByFrame(refused, mosaicOf(joined, byOverlap()));
}

/// The canvas of a run, with the margins that it has for growing.
cv::Mat mosaicFull(const cv::Mat& scene) {
  const Views at = views({330, 160}, {250, 36});
  SessionOptions small;
  small.maxRows = small.maxCols = 5000;
  SessionOptions options = small;
  options.rows = at.one.height;
  options.cols = at.one.width;
  options.backend = Backend::kHost;
  Session session(options);
  session.add(scene(at.one).clone());
  if (!session.add(scene(at.two).clone()).full) throw std::runtime_error("not full");
  std::printf("a limit of 5000 x 5000: %s\n", explain(session.add(scene(at.one).clone())).c_str());
  constexpr int kSide = 6000;
  const cv::Point first(kSide / 2 - options.cols / 2, kSide / 2 - options.rows / 2);
  cv::Mat canvas = cv::Mat::zeros(kSide, kSide, CV_8UC3);
  const cv::Rect box = session.steadyBox();
  session.mosaic().copyTo(canvas(box + first));
  drawOutline(canvas, cv::Rect(first, at.one.size()), kFirst, 16);
  drawOutline(canvas, cv::Rect(first + at.two.tl() - at.one.tl(), at.two.size()), kJoined, 16);
  return atWidth(canvas, 480);
}

}  // namespace

void writeGatePictures(const cv::Mat& scene, const std::string& folder) {
  write(folder, "gate-no-overlap.jpg", noOverlap(scene));
  write(folder, "gate-too-few-matches.jpg", tooFewMatches(scene));
  write(folder, "gate-moved-too-little.jpg", movedTooLittle(scene));
  write(folder, "gate-moved-too-far.jpg", movedTooFar(scene));
  write(folder, "gate-moving-scene.jpg", movingScene(scene));
  write(folder, "gate-brightness.jpg", brightness(scene));
  write(folder, "gate-sharpness.jpg", sharpness(scene));
  write(folder, "gate-mosaic-full.jpg", mosaicFull(scene));
}

}  // namespace framequilt::pictures
