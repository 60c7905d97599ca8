// SPDX-License-Identifier: Apache-2.0
#include "interface/png_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "interface/c_failure.h"
#include "tests/tools/temporary_folder.h"

using framequilt::CallFailure;
using framequilt::writePng;

namespace {

cv::Mat noise(int rows, int cols, int type) {
  cv::Mat picture(rows, cols, type);
  cv::RNG random(7);
  random.fill(picture, cv::RNG::UNIFORM, 0, 256);
  return picture;
}

/// The text of the failure; it has the code of files.
std::string failureOf(const cv::Mat& picture, const std::string& path) {
  try {
    writePng(picture, path);
  } catch (const CallFailure& failure) {
    EXPECT_EQ(failure.code(), FRAMEQUILT_E_FILE);
    return failure.what();
  }
  return "nothing";
}

/// No file of this process grows beyond so many bytes while it lives.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    // The signal would end the process where the call fails otherwise.
    former_ = std::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit now{bytes, before_.rlim_max};
    EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &now), 0);
  }
  ~FileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, former_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_{};
  void (*former_)(int) = nullptr;
};

}  // namespace

TEST(PngFile, HoldsThePicture) {
  const TemporaryFolder folder;
  for (const int type : {CV_8UC1, CV_8UC3}) {
    // Not packed, as the mosaic is not.
    const cv::Mat picture = noise(40, 60, type)(cv::Rect(3, 5, 33, 21));
    const std::string path = folder.file("picture.png");
    writePng(picture, path);
    const cv::Mat read = cv::imread(path, cv::IMREAD_UNCHANGED);
    ASSERT_EQ(read.type(), type);
    ASSERT_EQ(read.size(), picture.size());
    EXPECT_EQ(cv::norm(read, picture, cv::NORM_INF), 0.0);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"picture.png"});
  }
}

TEST(PngFile, IsSmallerThanItsPixels) {
  const TemporaryFolder folder;
  const std::string path = folder.file("flat.png");
  writePng(cv::Mat(300, 400, CV_8UC3, cv::Scalar(1, 2, 3)), path);
  EXPECT_LT(std::filesystem::file_size(path), 3000U);
}

TEST(PngFile, IsOneByItsName) {
  const TemporaryFolder folder;
  const cv::Mat picture = noise(3, 4, CV_8UC1);
  for (const std::string name : {"mosaic", "mosaic.tif", ".png"}) {
    const std::string path = folder.file(name);
    EXPECT_EQ(failureOf(picture, path), "'" + path + "' names no PNG file: end it with .png");
  }
  EXPECT_EQ(failureOf(picture, ""), "'' names no PNG file: end it with .png");
  std::filesystem::create_directory(folder.file("folder.png"));
  EXPECT_EQ(failureOf(picture, folder.file("folder.png")),
            "'" + folder.file("folder.png") + "' is a folder: name a file in it");
  EXPECT_EQ(folder.names(), std::vector<std::string>{"folder.png"});
}

TEST(PngFile, LeavesTheOlderOneWhereTheDiskIsFull) {
  const TemporaryFolder folder;
  const std::string path = folder.file("mosaic.png");
  writeText(path, "older");
  for (const rlim_t room : {rlim_t{10}, rlim_t{20000}}) {
    const FileSizeLimit limit(room);
    EXPECT_EQ(failureOf(noise(200, 300, CV_8UC1), path),
              "'" + path +
                  "' could not be written (File too large): choose a folder that you may write "
                  "to, with room");
  }
  EXPECT_EQ(readText(path), "older");
  EXPECT_EQ(folder.names(), std::vector<std::string>{"mosaic.png"});
  writePng(noise(3, 4, CV_8UC1), path);
  EXPECT_NE(readText(path), "older");
}
