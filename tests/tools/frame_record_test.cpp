// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/frame_record.h"

#include <gtest/gtest.h>

#include <string>

using framequilt::tool::differenceText;
using framequilt::tool::firstDifference;
using framequilt::tool::mosaicRecord;
using Json = nlohmann::ordered_json;

namespace {

std::string difference(const char* was, const char* is) {
  const auto found = firstDifference(Json::parse(was), Json::parse(is));
  return found ? differenceText(*found) : "same";
}

}  // namespace

TEST(FrameRecord, TheFirstFieldThatDiffersIsNamed) {
  EXPECT_EQ(difference(R"({"a":{"x":1,"y":2},"b":3})", R"({"a":{"x":1,"y":2},"b":3})"), "same");
  EXPECT_EQ(difference(R"({"a":{"x":1,"y":2},"b":3})", R"({"a":{"x":1,"y":4},"b":5})"),
            "a/y was 2, is 4");
  EXPECT_EQ(difference(R"({"a":1,"b":"old"})", R"({"b":"new","a":1})"), R"(b was "old", is "new")");
}

TEST(FrameRecord, AFieldOnOneSideIsADifference) {
  EXPECT_EQ(difference(R"({"a":1,"b":2})", R"({"a":1})"), "b was 2, is nothing");
  EXPECT_EQ(difference(R"({"a":1})", R"({"a":1,"b":2})"), "b was nothing, is 2");
  EXPECT_EQ(difference(R"(null)", R"({"a":1})"), "all of it was null, is nothing");
}

TEST(FrameRecord, PathsDoNotCount) {
  EXPECT_EQ(difference(R"({"path":"/a/f.png","b":2})", R"({"path":"/b/f.png","b":2})"), "same");
}

TEST(FrameRecord, NumbersAreComparedToTheLastBit) {
  EXPECT_EQ(difference(R"({"a":0.1})", R"({"a":0.1})"), "same");
  EXPECT_EQ(difference(R"({"a":0.1})", R"({"a":0.10000000000000002})"),
            "a was 0.1, is 0.10000000000000002");
}

TEST(FrameRecord, NoMosaicIsNull) {
  EXPECT_EQ(mosaicRecord(cv::Mat()), Json(nullptr));
  const Json record = mosaicRecord(cv::Mat(2, 3, CV_8UC1, cv::Scalar(7)));
  EXPECT_EQ(record["cols"], 3);
  EXPECT_EQ(record["rows"], 2);
}
