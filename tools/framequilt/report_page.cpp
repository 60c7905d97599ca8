// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/report_page.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/framequilt/measure_fields.h"
#include "tools/framequilt/page_text.h"
#include "tools/framequilt/stitch_log.h"

namespace framequilt::tool {
namespace {

using Json = nlohmann::ordered_json;

/// A larger picture would make the page slow to open, and not clearer on a large screen.
constexpr int kLongestSideInside = 3840;
constexpr int kQualityInside = 85;

std::string dumped(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string base64(const std::vector<unsigned char>& bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    unsigned bits = 0;
    for (std::size_t k = 0; k < 3; ++k) bits = bits << 8 | (k < count ? bytes[i + k] : 0U);
    for (std::size_t k = 0; k < 4; ++k) {
      text += k <= count ? kDigits[bits >> (18 - 6 * k) & 63U] : '=';
    }
  }
  return text;
}

cv::Mat atMost(const cv::Mat& picture, int longestSide) {
  const int longest = std::max(picture.cols, picture.rows);
  if (longest <= longestSide) return picture;
  const double factor = static_cast<double>(longestSide) / longest;
  const auto scaled = [factor](int side) { return std::max(1, cvRound(side * factor)); };
  cv::Mat smaller;
  cv::resize(picture, smaller, {scaled(picture.cols), scaled(picture.rows)}, 0, 0, cv::INTER_AREA);
  return smaller;
}

/// No '<' is left, so that no text in it ends the script element that holds it.
std::string inScript(std::string_view json) {
  std::string text;
  text.reserve(json.size());
  for (const char c : json) {
    if (c == '<') {
      text += "\\u003c";
    } else {
      text += c;
    }
  }
  return text;
}

std::string inHtml(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

/// The words that the console uses, too.
Json words() {
  Json measures = Json::array();
  for (const MeasureField& field : measureFields()) {
    const RefusalWords& refusal = wordsFor(field.refusal);
    measures.push_back({{"field", field.name},
                        {"label", field.label},
                        {"unit", refusal.unit},
                        {"relation", refusal.relation},
                        {"refusal", refusal.reason}});
  }
  return {{"measures", measures}, {"started_again", kStartedAgain}, {"no_mosaic", kNoMosaic}};
}

std::string filledIn(std::string_view page,
                     const std::array<std::pair<std::string_view, std::string>, 3>& texts) {
  std::string filled;
  for (const auto& [mark, text] : texts) {
    const std::size_t begin = page.find(mark);
    if (begin == std::string_view::npos) throw std::logic_error("the page lacks a mark");
    filled.append(page.substr(0, begin)).append(text);
    page.remove_prefix(begin + mark.size());
  }
  return filled.append(page);
}

}  // namespace

std::string tilesOf(const DeepZoom& pyramid, cv::Size mosaic) {
  return dumped({{"Image",
                  {{"xmlns", "http://schemas.microsoft.com/deepzoom/2008"},
                   {"Url", pyramid.name + "_files/"},
                   {"Format", DeepZoom::kFormat},
                   {"Overlap", pyramid.overlap},
                   {"TileSize", pyramid.tileSide},
                   {"Size", {{"Width", mosaic.width}, {"Height", mosaic.height}}}}}});
}

std::string tilesInside(const cv::Mat& mosaic) {
  if (mosaic.empty()) return "null";
  std::vector<unsigned char> bytes;
  cv::imencode(".jpg", atMost(mosaic, kLongestSideInside), bytes,
               {cv::IMWRITE_JPEG_QUALITY, kQualityInside});
  return dumped({{"type", "image"}, {"url", "data:image/jpeg;base64," + base64(bytes)}});
}

std::string reportPage(const std::string& title, const std::string& tiles,
                       const std::string& report) {
  const std::string valid = Json::parse(dumped(title)).get<std::string>();
  const std::string page =
      "{\"title\":" + dumped(title) + ",\"words\":" + dumped(words()) + ",\"tiles\":" + tiles + "}";
  return filledIn(pageText(), {{{"<title-of-page>", inHtml(valid)},
                                {"<page-json>", inScript(page)},
                                {"<report-json>", inScript(report)}}});
}

}  // namespace framequilt::tool
