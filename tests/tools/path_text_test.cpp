// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/path_text.h"

#include <gtest/gtest.h>

using framequilt::tool::inQuotes;
using framequilt::tool::lowerExtension;
using framequilt::tool::outlinedCopyOf;
using framequilt::tool::sizeText;

TEST(PathText, QuotesKeepAMessageOneLine) { EXPECT_EQ(inQuotes("a\nb\x7F.png"), "'a?b?.png'"); }

TEST(PathText, AnExtensionIsLowered) {
  EXPECT_EQ(lowerExtension("x/A.B.TIFF"), ".tiff");
  EXPECT_EQ(lowerExtension("x.y/a"), "");
}

TEST(PathText, ASizeIsWidthByHeight) { EXPECT_EQ(sizeText(480, 640), "640 x 480 pixels"); }

TEST(PathText, TheOutlinedCopyLiesBesideTheMosaic) {
  EXPECT_EQ(outlinedCopyOf("x/m.png"), "x/m-outlines.png");
  EXPECT_EQ(outlinedCopyOf("m.a.TIF"), "m.a-outlines.TIF");
}
