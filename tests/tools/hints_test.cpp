// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/hints.h"

#include <gtest/gtest.h>

#include <string>

#include "temporary_folder.h"
#include "tool_error_text.h"
#include "tools/framequilt/tool_error.h"

using framequilt::tool::Hints;
using framequilt::tool::ToolError;

namespace {

class HintsFile : public testing::Test {
 protected:
  Hints hints(const std::string& text) const {
    writeText(file(), text);
    return Hints::fromFile(file());
  }
  std::string errorOf(const std::string& text) const {
    return toolErrorOf([&] { hints(text); });
  }
  std::string file() const { return folder_.file("hints.csv"); }

  TemporaryFolder folder_;
};

}  // namespace

TEST(Hints, NothingIsKnownWithoutAFile) { EXPECT_FALSE(Hints().between(1, 2)); }

TEST_F(HintsFile, StepsCountFromTheFrameBefore) {
  const Hints known = hints("frame,dx,dy\n2,30,-4\n3,5,6\n");
  EXPECT_EQ(known.between(1, 2), cv::Point(30, -4));
  EXPECT_EQ(known.between(2, 3), cv::Point(5, 6));
  EXPECT_FALSE(known.between(3, 4));
  EXPECT_FALSE(known.between(0, 1));
}

TEST_F(HintsFile, StepsOverFramesThatWereLeftOutAddUp) {
  const Hints known = hints("frame,dx,dy\n2,30.4,-4\n3,5.3,6\n5,1,1\n");
  EXPECT_EQ(known.between(1, 3), cv::Point(36, 2));
  EXPECT_FALSE(known.between(3, 5));
}

TEST_F(HintsFile, StepsThatAddUpBeyondWholePixelsAreNoWay) {
  const Hints known = hints("frame,dx,dy\n2,1e9,0\n3,1e9,-1e9\n4,1e9,-1e9\n5,0,-1e9\n");
  EXPECT_EQ(known.between(1, 3), cv::Point(2000000000, -1000000000));
  EXPECT_FALSE(known.between(1, 4));
  EXPECT_FALSE(known.between(2, 5));
}

TEST_F(HintsFile, PositionsMayLieAnywhere) {
  const Hints known = hints("x,y,frame\n1000.25,2000,1\n1030,1990.5,4\n");
  EXPECT_EQ(known.between(1, 4), cv::Point(30, -10));
  EXPECT_FALSE(known.between(1, 2));
  EXPECT_FALSE(known.between(0, 1));
}

TEST_F(HintsFile, MessagesNameFileAndLine) {
  const std::string name = "'" + file() + "'";
  EXPECT_EQ(errorOf("frame,dx\n1,2\n"),
            name + " has neither columns dx and dy nor x and y: name them in its first line");
  EXPECT_EQ(errorOf("frame,dx,dy\n2,1,1\n2,3,3\n"),
            name + " line 3: has frame 2 a second time: keep one of the two lines");
  EXPECT_EQ(errorOf("frame,dx,dy\n2,1e12,1\n"),
            name + " line 2: has '1e12', farther than any frame lies: give pixels");
  for (const char* text :
       {"dx,dy\n1,2\n", "frame,dx,dy\nx,1,2\n", "frame,dx,dy\n1,a,2\n", "frame,dx,dy\n1,2\n", ""}) {
    EXPECT_EQ(errorOf(text).rfind(name, 0), 0U) << errorOf(text);
  }
  EXPECT_THROW(Hints::fromFile(folder_.file("missing.csv")), ToolError);
}
