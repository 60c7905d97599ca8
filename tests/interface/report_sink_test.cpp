// SPDX-License-Identifier: Apache-2.0
#include <framequilt/framequilt.h>
#include <framequilt/report_sink.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "features/selection.h"
#include "imaging/region.h"
#include "tests/support/captured_output.h"

namespace {

using framequilt::setReportSink;

/// Makes the library report "CornervalueIn size is 0".
void provoke() {
  float largest = 0.0F;
  fidMax({}, largest);
}

void append(const char* line, std::size_t length, void* context) {
  static_cast<std::vector<std::string>*>(context)->emplace_back(line, length);
}

class ReportSinkTest : public testing::Test {
 protected:
  void TearDown() override { setReportSink(nullptr, nullptr); }

  std::vector<std::string> lines_;
};

TEST_F(ReportSinkTest, LinesGoToStandardOutputAtFirst) {
  EXPECT_EQ(standardOutputOf([] {
              provoke();
              provoke();
            }),
            "CornervalueIn size is 0\nCornervalueIn size is 0\n");
}

/// The bytes A1 A2 are not UTF-8; they come out as they are.
TEST_F(ReportSinkTest, BytesAreNotConverted) {
  const std::string text =
      "ptr is null or endBigRow \xA1\xA2"
      "endBigCol overSize";
  ASSERT_EQ(text.size(), 45U);
  const auto cutOutOfNothing = [] {
    imgInfo info = {};
    willBigImgAssignRowColToSmallImg(nullptr, 0, 1, 0, 1, 1, 1, 1, info, nullptr);
  };
  EXPECT_EQ(standardOutputOf(cutOutOfNothing), text + "\n");
  setReportSink(append, &lines_);
  cutOutOfNothing();
  EXPECT_EQ(lines_, std::vector<std::string>{text});
}

TEST_F(ReportSinkTest, SinkReceivesTheTextAloneInsteadOfStandardOutput) {
  setReportSink(append, &lines_);
  EXPECT_EQ(standardOutputOf(provoke), "");
  EXPECT_EQ(lines_, std::vector<std::string>{"CornervalueIn size is 0"});
}

TEST_F(ReportSinkTest, NullRestoresStandardOutput) {
  setReportSink(append, &lines_);
  setReportSink(nullptr, &lines_);
  EXPECT_EQ(standardOutputOf(provoke), "CornervalueIn size is 0\n");
  EXPECT_TRUE(lines_.empty());
}

TEST_F(ReportSinkTest, LaterSinkReplacesTheFormer) {
  std::vector<std::string> former;
  setReportSink(append, &former);
  setReportSink(append, &lines_);
  provoke();
  EXPECT_TRUE(former.empty());
  EXPECT_EQ(lines_.size(), 1U);
}

/// The sink has no lock of its own.
TEST_F(ReportSinkTest, CallsNeverOverlap) {
  setReportSink(append, &lines_);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      for (int k = 0; k < 100; ++k) provoke();
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(lines_, std::vector<std::string>(400, "CornervalueIn size is 0"));
}

TEST_F(ReportSinkTest, LinesOfSeveralThreadsDoNotMixOnStandardOutput) {
  const std::string output = standardOutputOf([] {
    std::thread other([] {
      for (int k = 0; k < 100; ++k) provoke();
    });
    for (int k = 0; k < 100; ++k) provoke();
    other.join();
  });
  std::string expected;
  for (int k = 0; k < 200; ++k) expected += "CornervalueIn size is 0\n";
  EXPECT_EQ(output, expected);
}

TEST_F(ReportSinkTest, DebugTextsAreNoLines) {
  setReportSink(append, &lines_);
  char text[] = "debug";
  EXPECT_EQ(standardOutputOf([&] { CrossPlatformOutputDebugString(text); }), "");
  EXPECT_TRUE(lines_.empty());
  EXPECT_STREQ(text, "debug");
}

}  // namespace
