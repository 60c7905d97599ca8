// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/ome_xml.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tool_error_text.h"

using framequilt::tool::omeName;
using framequilt::tool::omeXml;
using framequilt::tool::requireOmeTiffName;

namespace {

std::string xmlOf(const std::string& name, std::optional<double> pixelSize = std::nullopt) {
  return omeXml(cv::Mat(30, 40, CV_8UC3), name, pixelSize);
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace

TEST(OmeXml, TellsTheShape) {
  const std::string colour = xmlOf("m");
  EXPECT_TRUE(contains(colour, " SizeX=\"40\" SizeY=\"30\" SizeC=\"3\" SizeZ=\"1\" SizeT=\"1\">"));
  EXPECT_TRUE(contains(colour, "SamplesPerPixel=\"3\""));
  const std::string gray = omeXml(cv::Mat(30, 40, CV_8UC1), "m", std::nullopt);
  EXPECT_TRUE(contains(gray, "SizeC=\"1\""));
  EXPECT_TRUE(contains(gray, "SamplesPerPixel=\"1\""));
}

TEST(OmeXml, TellsThePixelSizeWhereItIsKnown) {
  EXPECT_TRUE(contains(xmlOf("m", 0.65),
                       " PhysicalSizeX=\"0.65\" PhysicalSizeXUnit=\"&#181;m\" "
                       "PhysicalSizeY=\"0.65\" PhysicalSizeYUnit=\"&#181;m\">"));
  EXPECT_TRUE(contains(xmlOf("m", 2), "PhysicalSizeX=\"2\""));
  EXPECT_FALSE(contains(xmlOf("m"), "PhysicalSize"));
}

TEST(OmeXml, NamesAreEscapedInAscii) {
  EXPECT_TRUE(contains(xmlOf("a<&>\"b"), "Name=\"a&#60;&#38;&#62;&#34;b\""));
  EXPECT_TRUE(contains(xmlOf("\xC3\xBC"), "Name=\"&#252;\""));
  EXPECT_TRUE(contains(xmlOf("a\nb"), "Name=\"a?b\""));
  EXPECT_TRUE(contains(xmlOf("\xFF"), "Name=\"&#65533;\""));
  const std::string xml = xmlOf("\xC3\xBC\xFF", 0.5);
  EXPECT_TRUE(std::all_of(xml.begin(), xml.end(), [](char c) { return c > 0; })) << xml;
}

TEST(OmeXml, TheNameIsThatOfTheFile) {
  EXPECT_EQ(omeName("out/slide 3.ome.tif"), "slide 3");
  EXPECT_EQ(omeName("a.b.ome.tiff"), "a.b");
}

TEST(OmeXml, FilesHaveTheNameThatReadersExpect) {
  for (const char* name : {"m.ome.tif", "m.ome.tiff", "m.OME.TIF"}) {
    EXPECT_EQ(toolErrorOf([&] { requireOmeTiffName(name); }), "no error");
  }
  for (const char* name : {"m.tif", "m.ome.png", "m.ome", "ometif"}) {
    EXPECT_EQ(toolErrorOf([&] { requireOmeTiffName(name); }),
              "'" + std::string(name) + "' is no name of an OME-TIFF: end it with .ome.tif");
  }
}
