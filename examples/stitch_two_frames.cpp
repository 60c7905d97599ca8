// SPDX-License-Identifier: Apache-2.0
// Stitches two frames cut from one generated scene and says where the second one lies.
#include <framequilt/framequilt.h>

#include <cstdio>
#include <opencv2/core.hpp>

int main() {
  // A scene of random squares, and a camera that moves 90 columns and 20 rows over it.
  cv::Mat scene(600, 800, CV_8UC3);
  cv::RNG random(7);
  for (int r = 0; r < scene.rows; r += 8) {
    for (int c = 0; c < scene.cols; c += 8) {
      scene(cv::Rect(c, r, 8, 8)).setTo(cv::Scalar::all(random.uniform(40, 200)));
    }
  }
  cv::Mat first = scene(cv::Rect(100, 80, 480, 360)).clone();
  cv::Mat second = scene(cv::Rect(190, 100, 480, 360)).clone();

  if (!initJoint(first.rows, first.cols, first.channels(), 1, 20000, 20000, 1, 0)) return 1;
  SPoint left{}, right{};
  cv::Mat mosaic;
  stitchflags record{};
  const int result =
      stichingImagedJoint(first.data, second.data, 0, 1, 0, 0, false, left, right, mosaic, record);
  std::printf("result %d, moved by (%d, %d), %d matches, mosaic filled %d x %d\n", result,
              record.offsetX, record.offsetY, record.matchNum, right.x - left.x, right.y - left.y);
  uinitJoint();
  return result == 0 && record.offsetX == 90 && record.offsetY == 20 ? 0 : 1;
}
