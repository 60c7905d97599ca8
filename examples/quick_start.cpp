// SPDX-License-Identifier: Apache-2.0
// Stitches the pictures that it is given, in their order, and writes mosaic.png.
#include <framequilt/report_sink.h>
#include <framequilt/session.h>

#include <cstdio>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>

int main(int count, char** files) try {
  if (count < 3) throw std::runtime_error("usage: quick_start PICTURE PICTURE ...");
  framequilt::setReportSink([](const char*, std::size_t, void*) {}, nullptr);  // Engine's lines.
  framequilt::SessionOptions options;
  const cv::Size size = cv::imread(files[1]).size();
  options.rows = size.height;
  options.cols = size.width;
  framequilt::Session session(options);
  for (int i = 1; i < count; ++i) {
    const framequilt::FrameResult result = session.add(cv::imread(files[i]));
    if (result.verdict == framequilt::Verdict::kRefused) {
      std::printf("%s: %s\n", files[i], explain(result).c_str());
    }
  }
  cv::imwrite("mosaic.png", session.mosaic());
  std::printf("mosaic of %d x %d pixels\n", session.mosaic().cols, session.mosaic().rows);
} catch (const std::exception& failure) {
  std::fprintf(stderr, "%s\n", failure.what());
  return 1;
}
