// SPDX-License-Identifier: Apache-2.0
#include <framequilt/report_sink.h>
#include <gtest/gtest.h>

#include <opencv2/core.hpp>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  // Thousands of runs say their lines, and OpenCV each of its failures.
  framequilt::setReportSink([](const char*, std::size_t, void*) {}, nullptr);
  cv::redirectError([](int, const char*, const char*, const char*, int, void*) { return 0; });
  return RUN_ALL_TESTS();
}
