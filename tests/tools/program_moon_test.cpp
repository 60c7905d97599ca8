// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "program_run.h"
#include "temporary_folder.h"

namespace {

const std::string kMoon = FRAMEQUILT_EXAMPLES "/moon";

/// The fields of each line below the heading.
std::vector<std::vector<std::string>> table(const std::string& file) {
  std::ifstream stream(file);
  std::vector<std::vector<std::string>> lines;
  std::string line;
  std::getline(stream, line);
  while (std::getline(stream, line)) {
    std::istringstream fields(line);
    lines.emplace_back();
    for (std::string field; std::getline(fields, field, ',');) lines.back().push_back(field);
  }
  return lines;
}

/// Every frame of the capture is joined where it was cut, to `tolerance` pixels.
void expectTruth(const std::string& placements, int tolerance) {
  const auto found = table(placements);
  const auto truth = table(kMoon + "/truth.csv");
  ASSERT_EQ(truth.size(), 12U);
  ASSERT_EQ(found.size(), truth.size());
  for (std::size_t i = 0; i < truth.size(); ++i) {
    ASSERT_EQ(found[i].size(), 5U) << "frame " << i + 1;
    EXPECT_EQ(found[i][0], truth[i][0]);
    EXPECT_EQ(found[i][4], "1") << "frame " << i + 1;
    for (const auto& [place, expected] :
         {std::pair(found[i][2], truth[i][1]), std::pair(found[i][3], truth[i][2])}) {
      EXPECT_LE(std::abs(std::atoi(place.c_str()) - std::atoi(expected.c_str())), tolerance)
          << "frame " << i + 1 << ": " << place << " instead of " << expected;
    }
  }
}

}  // namespace

TEST(ProgramOnTheMoon, EveryFrameLiesWhereItWasCut) {
  const TemporaryFolder folder;
  const ProgramRun result = framequiltRun(
      {"stitch", kMoon, "-o", folder.file("moon.png"), "--placements", folder.file("places.csv")});
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out.rfind("frames read: 12\njoined: 12\nrefused: 0\n", 0), 0U) << result.out;
  expectTruth(folder.file("places.csv"), 3);
  const cv::Mat mosaic = cv::imread(folder.file("moon.png"));
  EXPECT_NEAR(mosaic.cols, 640 + 869 + 4, 4);
  EXPECT_NEAR(mosaic.rows, 480 + 446 + 3, 4);
}

TEST(ProgramOnTheMoon, HalfScaleKeepsPlacementsInPicturePixels) {
  const TemporaryFolder folder;
  const ProgramRun result =
      framequiltRun({"stitch", kMoon, "-o", folder.file("moon.png"), "--scale", "2", "--placements",
                     folder.file("places.csv")});
  ASSERT_EQ(result.status, 0) << result.err;
  // Pairs of corners agree within 4 pixels of the halved pictures.
  expectTruth(folder.file("places.csv"), 8);
  const cv::Mat mosaic = cv::imread(folder.file("moon.png"));
  EXPECT_NEAR(2 * mosaic.cols, 640 + 869 + 4, 4);
  EXPECT_NEAR(2 * mosaic.rows, 480 + 446 + 3, 4);
}

TEST(ProgramOnTheMoon, OverlapModeJoinsItToo) {
  const TemporaryFolder folder;
  const ProgramRun result = framequiltRun({"stitch", kMoon, "-o", folder.file("moon.jpg"), "--mode",
                                           "overlap", "--placements", folder.file("places.csv")});
  ASSERT_EQ(result.status, 0) << result.err;
  expectTruth(folder.file("places.csv"), 3);
}
