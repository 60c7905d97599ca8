// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/tiff_writing.h"

#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>
#include <string>

#include "file_size_limit.h"
#include "same_pixels.h"
#include "scenes.h"
#include "temporary_folder.h"
#include "tools/framequilt/picture_reading.h"
#include "tools/framequilt/tool_error.h"

using framequilt::tool::OutputFile;
using framequilt::tool::readPicture;
using framequilt::tool::ToolError;
using framequilt::tool::writeTiff;

namespace {

class TiffWriting : public testing::Test {
 protected:
  void write(const cv::Mat& picture) const {
    OutputFile output(file());
    writeTiff(picture, output);
    output.publish();
  }
  std::string file() const { return folder_.file("m.tif"); }

  TemporaryFolder folder_;
};

}  // namespace

TEST_F(TiffWriting, ComesBackByteForByte) {
  // Within a tile, of exactly one, and of several with a rest.
  for (const cv::Size size : {cv::Size(1, 1), cv::Size(256, 256), cv::Size(700, 530)}) {
    const cv::Mat colour = noise(size.height, size.width);
    write(colour);
    EXPECT_TRUE(samePixels(readPicture(file(), 3), colour)) << size;
    EXPECT_TRUE(samePixels(cv::imread(file(), cv::IMREAD_UNCHANGED), colour)) << size;
    cv::Mat gray;
    cv::extractChannel(colour, gray, 0);
    write(gray);
    EXPECT_TRUE(samePixels(readPicture(file(), 1), gray)) << size;
    EXPECT_TRUE(samePixels(cv::imread(file(), cv::IMREAD_UNCHANGED), gray)) << size;
  }
}

TEST_F(TiffWriting, RowsMayLieApart) {
  const cv::Mat large = noise(400, 500);
  const cv::Mat part = large(cv::Rect(17, 31, 301, 290));
  write(part);
  EXPECT_TRUE(samePixels(readPicture(file(), 3), part));
}

TEST_F(TiffWriting, IsABigTiff) {
  write(texture(20, 30));
  EXPECT_EQ(readText(file()).substr(0, 4), std::string("II\x2B\0", 4));
}

TEST_F(TiffWriting, IsCompressed) {
  write(cv::Mat(1000, 1000, CV_8UC1, cv::Scalar(7)));
  EXPECT_LT(readText(file()).size(), 100'000U);
}

TEST_F(TiffWriting, ADiskThatIsFullIsNamedAndTheOlderFileStays) {
  const cv::Mat picture = noise(600, 600);
  // Full within the first tiles, within the last ones, and when the directory is written.
  write(picture);
  const std::size_t whole = readText(file()).size();
  writeText(file(), "older");
  for (const std::size_t bytes : {std::size_t{1000}, whole - 200'000, whole - 50}) {
    OutputFile output(file());
    try {
      const FileSizeLimit full(bytes);
      writeTiff(picture, output);
      ADD_FAILURE() << bytes;
    } catch (const ToolError& failure) {
      EXPECT_EQ(failure.what(), "'" + file() +
                                    "' could not be written (File too large): free some space or "
                                    "choose another folder");
    }
  }
  EXPECT_EQ(readText(file()), "older");
  EXPECT_EQ(folder_.names(), std::vector<std::string>{"m.tif"});
}
