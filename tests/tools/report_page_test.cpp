// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/report_page.h"

#include <framequilt/refusal.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "scenes.h"

using framequilt::Refusal;
using framequilt::wordsFor;
using framequilt::tool::DeepZoom;
using framequilt::tool::reportPage;
using framequilt::tool::tilesInside;
using framequilt::tool::tilesOf;
using nlohmann::json;

namespace {

/// What lies between two texts; empty where they are not there.
std::string between(const std::string& text, const std::string& before, const std::string& after) {
  const std::size_t begin = text.find(before);
  if (begin == std::string::npos) return "";
  const std::size_t from = begin + before.size();
  const std::size_t end = text.find(after, from);
  return end == std::string::npos ? "" : text.substr(from, end - from);
}

/// The data that the element of this id holds.
json dataOf(const std::string& page, const std::string& id) {
  return json::parse(
      between(page, "<script type=\"application/json\" id=\"" + id + "\">", "</script>"));
}

std::vector<unsigned char> fromBase64(const std::string& text) {
  const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::vector<unsigned char> bytes;
  unsigned bits = 0;
  int count = 0;
  for (const char c : text) {
    if (c == '=') break;
    bits = bits << 6 | static_cast<unsigned>(digits.find(c));
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes.push_back(static_cast<unsigned char>(bits >> count & 0xFFU));
  }
  return bytes;
}

cv::Mat pictureInside(const cv::Mat& mosaic) {
  const json tiles = json::parse(tilesInside(mosaic));
  EXPECT_EQ(tiles["type"], "image");
  const std::string url = tiles["url"];
  const std::string head = "data:image/jpeg;base64,";
  EXPECT_EQ(url.rfind(head, 0), 0U);
  EXPECT_EQ((url.size() - head.size()) % 4, 0U);
  return cv::imdecode(fromBase64(url.substr(head.size())), cv::IMREAD_UNCHANGED);
}

}  // namespace

TEST(ReportPage, HoldsItsData) {
  const json report = {{"frames", {{{"file", "a.png"}}}}};
  const std::string page = reportPage("m.png", "{\"k\":1}", report.dump());
  EXPECT_EQ(page.rfind("<!DOCTYPE html>", 0), 0U);
  EXPECT_EQ(between(page, "<title>", "</title>"), "m.png");
  EXPECT_EQ(dataOf(page, "report"), report);
  EXPECT_EQ(dataOf(page, "page")["title"], "m.png");
  EXPECT_EQ(dataOf(page, "page")["tiles"], json({{"k", 1}}));
}

TEST(ReportPage, NoNameEndsAnElement) {
  const std::string name = "a\"'&</script><!--<title>\xC3\xBC\xF0\x9F\x94\xAC.png";
  const json report = {{"frames", {{{"file", name}}}}};
  const std::string page = reportPage(name, "null", report.dump());
  EXPECT_EQ(dataOf(page, "report"), report);
  EXPECT_EQ(dataOf(page, "page")["title"], name);
  EXPECT_EQ(between(page, "<title>", "</title>"),
            "a\"'&amp;&lt;/script>&lt;!--&lt;title>\xC3\xBC\xF0\x9F\x94\xAC.png");
  EXPECT_EQ(page.find("<!--<title>"), std::string::npos);
}

TEST(ReportPage, ATitleThatIsNotUtf8DoesNotSpoilIt) {
  const std::string page = reportPage("a\xFF", "null", "{}");
  EXPECT_EQ(between(page, "<title>", "</title>"), "a\xEF\xBF\xBD");
  EXPECT_EQ(dataOf(page, "page")["title"], "a\xEF\xBF\xBD");
}

TEST(ReportPage, TakesItsWordsFromTheLibrary) {
  const json measures = dataOf(reportPage("m", "null", "{}"), "page")["words"]["measures"];
  ASSERT_EQ(measures.size(), 6U);
  EXPECT_EQ(measures[0]["field"], "matches");
  EXPECT_EQ(measures[0]["relation"], wordsFor(Refusal::kTooFewMatches).relation);
  EXPECT_EQ(measures[4], json({{"field", "brightness_difference"},
                               {"label", "brightness difference"},
                               {"unit", wordsFor(Refusal::kBrightness).unit},
                               {"relation", wordsFor(Refusal::kBrightness).relation},
                               {"refusal", wordsFor(Refusal::kBrightness).reason}}));
}

TEST(ReportPage, LoadsNothing) {
  const std::string page = reportPage("m", "null", "{}");
  for (const char* reference : {"<script src", "<link rel=\"stylesheet\"", "@import", ": url("}) {
    EXPECT_EQ(page.find(reference), std::string::npos) << reference;
  }
}

TEST(ReportPage, CarriesTheLicenceOfTheViewer) {
  const std::string page = reportPage("m", "null", "{}");
  EXPECT_NE(page.find("Redistribution and use in source and binary forms"), std::string::npos);
}

TEST(ReportPage, TilesOfAPyramidLieBesideIt) {
  EXPECT_EQ(json::parse(tilesOf(DeepZoom{"mosaic"}, {1100, 600})),
            json::parse(R"({"Image": {"xmlns": "http://schemas.microsoft.com/deepzoom/2008",
              "Url": "mosaic_files/", "Format": "jpg", "Overlap": 1, "TileSize": 510,
              "Size": {"Width": 1100, "Height": 600}}})"));
}

TEST(ReportPage, ASmallMosaicIsInsideAsItIs) {
  const cv::Mat mosaic = coloured(texture(60, 111));
  const cv::Mat inside = pictureInside(mosaic);
  ASSERT_EQ(inside.size(), mosaic.size());
  EXPECT_LT(cv::norm(inside, mosaic, cv::NORM_L1) / (60 * 111 * 3), 6);
}

TEST(ReportPage, ALargeMosaicIsMadeSmaller) {
  EXPECT_EQ(pictureInside(cv::Mat(100, 7680, CV_8UC1, cv::Scalar(90))).size(), cv::Size(3840, 50));
  EXPECT_EQ(pictureInside(cv::Mat(7680, 1, CV_8UC1, cv::Scalar(90))).size(), cv::Size(1, 3840));
}

TEST(ReportPage, WithoutAMosaicThereIsNoPicture) { EXPECT_EQ(tilesInside({}), "null"); }
