// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/picture_format.h"

#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "scenes.h"
#include "temporary_folder.h"
#include "tools/framequilt/tool_error.h"

using framequilt::tool::OutputFile;
using framequilt::tool::requireWritableFormat;
using framequilt::tool::ToolError;
using framequilt::tool::writePicture;

namespace {

/// The file that the picture becomes under this name.
std::string written(const cv::Mat& picture, const std::string& name) {
  const TemporaryFolder folder;
  OutputFile output(folder.file(name));
  writePicture(picture, output);
  output.publish();
  return readText(folder.file(name));
}

}  // namespace

TEST(PictureFormat, KnownExtensionsAreTakenInAnyCase) {
  for (const char* name : {"m.png", "m.PNG", "m.jpg", "m.jpeg", "m.tif", "m.Tiff", "m.bmp"}) {
    EXPECT_NO_THROW(requireWritableFormat(name)) << name;
  }
}

TEST(PictureFormat, OtherExtensionsAreRefused) {
  for (const std::string name : {"m.gif", "m", "m.png.", "png", "m.exr"}) {
    try {
      requireWritableFormat(name);
      ADD_FAILURE() << name;
    } catch (const ToolError& failure) {
      EXPECT_EQ(failure.what(), "'" + name +
                                    "' names no known picture format: end it with .png, .jpg, .tif "
                                    "or .bmp");
    }
  }
}

TEST(PictureFormat, LosslessFormatsKeepEveryPixel) {
  const cv::Mat picture = coloured(texture(20, 30));
  for (const char* name : {"m.png", "m.TIF", "m.bmp"}) {
    const std::string file = written(picture, name);
    const std::vector<unsigned char> bytes(file.begin(), file.end());
    const cv::Mat read = cv::imdecode(bytes, cv::IMREAD_UNCHANGED);
    ASSERT_EQ(read.size(), picture.size()) << name;
    EXPECT_EQ(cv::norm(read, picture, cv::NORM_INF), 0) << name;
  }
}

TEST(PictureFormat, EachExtensionGivesItsOwnFormat) {
  const cv::Mat picture = texture(20, 30);
  EXPECT_EQ(written(picture, "m.png")[0], '\x89');
  EXPECT_EQ(written(picture, "m.jpeg")[0], '\xFF');
  EXPECT_EQ(written(picture, "m.bmp")[0], 'B');
  EXPECT_EQ(written(picture, "m.tiff")[0], 'I');
}

TEST(PictureFormat, APictureTooLargeForJpegNamesTiff) {
  const cv::Mat picture(1, 65501, CV_8UC1, cv::Scalar(5));
  EXPECT_NO_THROW(written(picture, "m.png"));
  EXPECT_NO_THROW(written(picture, "m.tif"));
  EXPECT_NO_THROW(written(picture.colRange(0, 65500), "m.jpg"));
  const TemporaryFolder folder;
  OutputFile output(folder.file("m.jpg"));
  try {
    writePicture(picture, output);
    ADD_FAILURE();
  } catch (const ToolError& failure) {
    EXPECT_EQ(failure.what(),
              "'" + folder.file("m.jpg") +
                  "' would have 65501 x 1 pixels, more than a JPEG holds: end the name with .tif");
  }
}
