// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/deep_zoom.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <string>

#include "file_size_limit.h"
#include "scenes.h"
#include "temporary_folder.h"
#include "tool_error_text.h"

using framequilt::tool::DeepZoom;
using framequilt::tool::writeDeepZoom;

namespace {

namespace fs = std::filesystem;

class DeepZooms : public testing::Test {
 protected:
  cv::Mat tile(const std::string& name) const {
    return cv::imread(folder_.file("m_files/" + name), cv::IMREAD_UNCHANGED);
  }

  TemporaryFolder folder_;
};

}  // namespace

TEST_F(DeepZooms, HoldsThePictureInTilesWithOverlap) {
  const cv::Mat picture = coloured(texture(600, 1100));
  writeDeepZoom(picture, DeepZoom{"m"}, folder_.path(), "shown");
  // 2 ^ 11 is the first power that holds 1100: levels 0 to 11.
  EXPECT_TRUE(fs::exists(folder_.file("m_files/11")));
  EXPECT_FALSE(fs::exists(folder_.file("m_files/12")));
  EXPECT_EQ(tile("0/0_0.jpg").size(), cv::Size(1, 1));
  EXPECT_EQ(tile("10/1_0.jpg").size(), cv::Size(550 - 510 + 1, 300));
  const cv::Mat middle = tile("11/1_1.jpg");
  const cv::Rect place(509, 509, 512, 91);
  ASSERT_EQ(middle.size(), place.size());
  EXPECT_LT(cv::norm(middle, picture(place), cv::NORM_L1) / (512 * 91 * 3), 4);
}

TEST_F(DeepZooms, IsDescribedBesideItsTiles) {
  writeDeepZoom(texture(60, 110), DeepZoom{"m"}, folder_.path(), "shown");
  const std::string description = readText(folder_.file("m.dzi"));
  for (const char* part :
       {"Format=\"jpg\"", "Overlap=\"1\"", "TileSize=\"510\"", "Height=\"60\"", "Width=\"110\""}) {
    EXPECT_NE(description.find(part), std::string::npos) << part << description;
  }
}

TEST_F(DeepZooms, GrayStaysGray) {
  const cv::Mat picture = texture(60, 110);
  writeDeepZoom(picture, DeepZoom{"m"}, folder_.path(), "shown");
  const cv::Mat whole = tile("7/0_0.jpg");
  EXPECT_EQ(whole.type(), CV_8UC1);
  EXPECT_EQ(whole.size(), picture.size());
}

TEST_F(DeepZooms, TheFolderMayHaveAnyName) {
  const fs::path odd = folder_.file("a [b] \"c\" %d.zip");
  fs::create_directory(odd);
  writeDeepZoom(texture(60, 110), DeepZoom{"m"}, odd, "shown");
  EXPECT_TRUE(fs::exists(odd / "m.dzi"));
  EXPECT_TRUE(fs::exists(odd / "m_files" / "7" / "0_0.jpg"));
}

TEST_F(DeepZooms, ADiskThatIsFullIsNamed) {
  const cv::Mat picture = noise(300, 300);
  // Full before anything is written, and within the tile that is the largest file.
  for (const rlim_t bytes : {rlim_t{0}, rlim_t{20'000}}) {
    EXPECT_EQ(toolErrorOf([&] {
                const FileSizeLimit full(bytes);
                writeDeepZoom(picture, DeepZoom{"m"}, folder_.path(), "shown");
              }),
              "the tiles of 'shown' could not be written: free some space or choose another "
              "folder")
        << bytes;
    fs::remove_all(folder_.file("m_files"));
  }
}
