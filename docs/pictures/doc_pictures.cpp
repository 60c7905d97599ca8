// SPDX-License-Identifier: Apache-2.0
/// \file
/// Makes the pictures of docs/how-a-run-works.md and docs/tuning.md with the library's own
/// routines.
///
///     doc_pictures CAPTURE FOLDER
///
/// CAPTURE has pictures frame_01.jpg and so on, neighbours overlapping by about half.
#include <framequilt/report_sink.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "docs/pictures/gate_pictures.h"
#include "docs/pictures/run_pictures.h"

namespace {

std::vector<cv::Mat> framesOf(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".jpg") names.push_back(entry.path().string());
  }
  std::sort(names.begin(), names.end());
  std::vector<cv::Mat> frames;
  frames.reserve(names.size());
  for (const std::string& name : names) frames.push_back(cv::imread(name, cv::IMREAD_COLOR));
  if (frames.size() < 8) throw std::runtime_error("'" + folder + "' has too few pictures");
  return frames;
}

}  // namespace

int main(int count, char** arguments) try {
  if (count != 3) throw std::runtime_error("usage: doc_pictures CAPTURE FOLDER");
  framequilt::setReportSink([](const char*, std::size_t, void*) {}, nullptr);
  const std::string folder = arguments[2];
  const cv::Mat mosaic = framequilt::pictures::writeRunPictures(framesOf(arguments[1]), folder);
  // The whole of it is covered but for a rim.
  constexpr int kRim = 12;
  const cv::Rect inner(kRim, kRim, mosaic.cols - 2 * kRim, mosaic.rows - 2 * kRim);
  framequilt::pictures::writeGatePictures(mosaic(inner), folder);
} catch (const std::exception& failure) {
  std::fprintf(stderr, "doc_pictures: %s\n", failure.what());
  return 1;
}
