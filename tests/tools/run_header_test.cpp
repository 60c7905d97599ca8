// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/run_header.h"

#include <gtest/gtest.h>

#include <string>

#include "tool_error_text.h"

using framequilt::tool::CaptureOrigin;
using framequilt::tool::fromRoot;
using framequilt::tool::headerText;
using framequilt::tool::readHeaderText;
using framequilt::tool::RunHeader;
using framequilt::tool::tuningJson;
using Json = nlohmann::ordered_json;

namespace {

/// Every value is another than where nobody asks.
RunHeader someHeader() {
  RunHeader header;
  header.version = "9.8.7";
  header.backend = "opencl";
  header.shape = {30, 40, 1};
  header.origin.pictures = {{"/in/a.png", 1}, {"/in/c.png", 3}};
  header.leftOut = 2;
  header.tuning = tuningJson();
  auto& options = header.options;
  options.inputs = {"/in", "/also"};
  options.output = "/out/m.png";
  options.placements = "-";
  options.report = "/out/r.json";
  options.hints = "hints.csv";
  options.outlines = true;
  options.omeTiff = "/out/m.ome.tif";
  options.pyramid = "/out/p";
  options.reportHtml = "/out/r.html";
  options.pixelSize = 0.65;
  options.mode = "overlap";
  options.dynamicScene = true;
  options.backend = "opencl";
  options.scale = 2;
  options.cornerBudget = 30;
  options.maxRows = 7000;
  options.maxCols = 8000;
  options.every = 5;
  options.crop = "none";
  options.checkpointEvery = 7;
  return header;
}

std::string readError(const std::string& text) {
  return toolErrorOf([&] { readHeaderText(text, "'j'"); });
}

}  // namespace

TEST(RunHeader, WhatIsWrittenIsRead) {
  const RunHeader header = someHeader();
  const RunHeader read = readHeaderText(headerText(header), "'j'");
  EXPECT_EQ(headerText(read), headerText(header));
  EXPECT_EQ(read.version, "9.8.7");
  EXPECT_EQ(read.backend, "opencl");
  EXPECT_EQ(read.shape.rows, 30);
  EXPECT_EQ(read.shape.cols, 40);
  EXPECT_EQ(read.shape.channels, 1);
  ASSERT_EQ(read.origin.pictures.size(), 2U);
  EXPECT_EQ(read.origin.pictures[1].path, "/in/c.png");
  EXPECT_EQ(read.origin.pictures[1].number, 3U);
  EXPECT_EQ(read.leftOut, 2U);
  EXPECT_EQ(read.options.inputs, header.options.inputs);
  EXPECT_EQ(read.options.pixelSize, 0.65);
  EXPECT_EQ(read.options.every, 5);
  EXPECT_TRUE(read.options.dynamicScene);
}

TEST(RunHeader, EveryOptionOfTheRunIsKept) {
  // One that is added to `stitch` has to be added here, or to these that do not count.
  const Json options = Json::parse(headerText(someHeader()))["options"];
  const Json plain = Json::parse(headerText(RunHeader()))["options"];
  EXPECT_EQ(options.size(), 20U);
  for (const auto& item : options.items()) {
    EXPECT_NE(item.value(), plain[item.key()]) << item.key();
  }
}

TEST(RunHeader, AVideoOrACameraIsNamed) {
  RunHeader header = someHeader();
  header.origin = {{}, "/in/clip.avi", {}};
  EXPECT_EQ(readHeaderText(headerText(header), "'j'").origin.video, "/in/clip.avi");
  header.origin = {{}, {}, "camera:0"};
  EXPECT_EQ(readHeaderText(headerText(header), "'j'").origin.camera, "camera:0");
}

TEST(RunHeader, AnotherFormatIsRefused) {
  Json header = Json::parse(headerText(someHeader()));
  header["journal"] = 2;
  EXPECT_EQ(readError(header.dump()),
            "'j' has format 2, this framequilt reads 1: use the version that wrote it");
  const std::string foreign =
      "'j' is no journal of framequilt: give a folder that 'framequilt stitch --journal' made";
  EXPECT_EQ(readError("{}"), foreign);
  EXPECT_EQ(readError("nonsense"), foreign);
  EXPECT_EQ(readError("[1]"), foreign);
  EXPECT_EQ(readError(R"({"journal":"one"})"), foreign);
}

TEST(RunHeader, AHeaderWithoutAFieldIsRefused) {
  const Json whole = Json::parse(headerText(someHeader()));
  for (const auto& item : whole.items()) {
    if (item.key() == "journal") continue;
    Json header = whole;
    header.erase(item.key());
    EXPECT_EQ(readError(header.dump()),
              "'j' line 1 is not as framequilt writes it: use the version that wrote it")
        << item.key();
  }
}

TEST(RunHeader, NamesHaveToBeUtf8) {
  RunHeader header = someHeader();
  header.origin.pictures[0].path = "/in/\xff.png";
  EXPECT_EQ(toolErrorOf([&] { headerText(header); }),
            "'/in/\xff.png' cannot be named in a journal (it is not UTF-8): rename it, or stitch "
            "without --journal");
  header = someHeader();
  header.options.report = "\xff";
  EXPECT_NE(toolErrorOf([&] { headerText(header); }), "no error");
}

TEST(RunHeader, PathsGoFromTheRoot) {
  EXPECT_EQ(fromRoot("/a/./b/../c.png"), "/a/c.png");
  EXPECT_EQ(fromRoot("c.png"), std::filesystem::current_path() / "c.png");
}
