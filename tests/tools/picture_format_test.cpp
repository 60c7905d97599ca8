// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/picture_format.h"

#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "scenes.h"
#include "tools/framequilt/tool_error.h"

using framequilt::tool::encodePicture;
using framequilt::tool::requireWritableFormat;
using framequilt::tool::ToolError;

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
    const std::vector<unsigned char> bytes = encodePicture(picture, name);
    const cv::Mat read = cv::imdecode(bytes, cv::IMREAD_UNCHANGED);
    ASSERT_EQ(read.size(), picture.size()) << name;
    EXPECT_EQ(cv::norm(read, picture, cv::NORM_INF), 0) << name;
  }
}

TEST(PictureFormat, EachExtensionGivesItsOwnFormat) {
  const cv::Mat picture = texture(20, 30);
  EXPECT_EQ(encodePicture(picture, "m.png")[0], 0x89);
  EXPECT_EQ(encodePicture(picture, "m.jpeg")[0], 0xFF);
  EXPECT_EQ(encodePicture(picture, "m.bmp")[0], 'B');
  EXPECT_EQ(encodePicture(picture, "m.tiff")[0], 'I');
}

TEST(PictureFormat, APictureTooLargeForJpegNamesTiff) {
  const cv::Mat picture(1, 65501, CV_8UC1, cv::Scalar(5));
  EXPECT_NO_THROW(encodePicture(picture, "m.png"));
  EXPECT_NO_THROW(encodePicture(picture.colRange(0, 65500), "m.jpg"));
  try {
    encodePicture(picture, "m.jpg");
    ADD_FAILURE();
  } catch (const ToolError& failure) {
    EXPECT_STREQ(failure.what(),
                 "'m.jpg' would have 65501 x 1 pixels, more than a JPEG holds: end the name with "
                 ".tif");
  }
}
