// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/random_images.h"

/// A gray texture full of corners: smoothed noise, the same on every machine and run.
inline cv::Mat texture(int rows, int cols, std::uint64_t seed = 7) {
  const auto count = static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols);
  std::vector<unsigned char> noise = Random(seed).bytes(count);
  cv::Mat smooth;
  cv::GaussianBlur(cv::Mat(rows, cols, CV_8UC1, noise.data()), smooth, {9, 9}, 2.0);
  cv::Mat stretched;
  smooth.convertTo(stretched, CV_8U, 3.0, -3.0 * 128 + 128);
  return stretched;
}

inline cv::Mat coloured(const cv::Mat& gray) {
  cv::Mat colour;
  cv::cvtColor(gray, colour, cv::COLOR_GRAY2BGR);
  return colour;
}

/// Colour noise, the same on every machine and run.
inline cv::Mat noise(int rows, int cols, std::uint64_t seed = 7) {
  const auto count = static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols) * 3;
  std::vector<unsigned char> bytes = Random(seed).bytes(count);
  return cv::Mat(rows, cols, CV_8UC3, bytes.data()).clone();
}

inline void save(const std::string& file, const cv::Mat& picture) {
  if (!cv::imwrite(file, picture)) throw std::runtime_error("cannot write " + file);
}
