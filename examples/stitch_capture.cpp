// SPDX-License-Identifier: Apache-2.0
// Stitches a capture frame by frame and says where each frame lies, or why it is not joined.
#include <framequilt/report_sink.h>
#include <framequilt/session.h>

#include <cstdio>
#include <opencv2/core.hpp>

int main() try {
  // A scene of random squares, and a camera that moves over it; the last step is too wide.
  cv::Mat scene(600, 1200, CV_8UC3);
  cv::RNG random(7);
  for (int r = 0; r < scene.rows; r += 8) {
    for (int c = 0; c < scene.cols; c += 8) {
      scene(cv::Rect(c, r, 8, 8)).setTo(cv::Scalar::all(random.uniform(40, 200)));
    }
  }
  const cv::Point path[] = {{0, 80}, {90, 100}, {200, 110}, {700, 110}};

  framequilt::setReportSink([](const char*, std::size_t, void*) {}, nullptr);  // Engine's lines.
  framequilt::SessionOptions options;
  options.rows = 360;
  options.cols = 480;
  framequilt::Session session(options);
  for (const cv::Point& corner : path) {
    const cv::Mat frame = scene(cv::Rect(corner, cv::Size(options.cols, options.rows)));
    const framequilt::FrameResult result = session.add(frame);
    if (result.verdict == framequilt::Verdict::kJoined) {
      std::printf("joined at (%d, %d)\n", result.placement.x, result.placement.y);
    } else if (result.verdict == framequilt::Verdict::kRefused) {
      std::printf("refused, %s\n", explain(result).c_str());
    }
  }
  const cv::Mat mosaic = session.mosaic();
  std::printf("mosaic of %d x %d pixels\n", mosaic.cols, mosaic.rows);
} catch (const framequilt::Error& failure) {
  std::fprintf(stderr, "%s\n", failure.what());
  return 1;
}
