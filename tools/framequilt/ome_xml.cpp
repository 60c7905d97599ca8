// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/ome_xml.h"

#include <glib.h>

#include <array>
#include <charconv>
#include <memory>
#include <string_view>

#include "tools/framequilt/path_text.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

bool isTiff(const std::string& extension) { return extension == ".tif" || extension == ".tiff"; }

/// As the value of an attribute. Characters beyond ASCII become references, since the tag of a TIFF
/// file that holds the description has no encoding.
std::string attribute(const std::string& text) {
  const std::unique_ptr<char, decltype(&g_free)> valid(
      g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), g_free);
  std::string value;
  for (const char* next = valid.get(); *next != '\0'; next = g_utf8_next_char(next)) {
    const gunichar character = g_utf8_get_char(next);
    const bool control = character < 0x20 || (character >= 0x7F && character < 0xA0);
    const bool plain = character < 0x80 && character != '&' && character != '<' &&
                       character != '>' && character != '"';
    if (control) {
      value += '?';
    } else if (plain) {
      value += *next;
    } else {
      value += "&#" + std::to_string(character) + ";";
    }
  }
  return value;
}

/// The shortest digits that give the number back.
std::string numberText(double number) {
  std::array<char, 32> text{};
  const auto [end, failure] = std::to_chars(text.data(), text.data() + text.size(), number);
  return {text.data(), end};
}

std::string physicalSize(std::optional<double> pixelSize) {
  if (!pixelSize) return "";
  const std::string size = numberText(*pixelSize);
  const std::string unit = attribute("\u00B5m");
  return " PhysicalSizeX=\"" + size + "\" PhysicalSizeXUnit=\"" + unit + "\" PhysicalSizeY=\"" +
         size + "\" PhysicalSizeYUnit=\"" + unit + "\"";
}

}  // namespace

void requireOmeTiffName(const fs::path& target) {
  if (isTiff(lowerExtension(target)) && lowerExtension(target.stem()) == ".ome") return;
  throw ToolError(inQuotes(target) + " is no name of an OME-TIFF: end it with .ome.tif");
}

std::string omeName(const fs::path& target) { return target.stem().stem().string(); }

std::string omeXml(const cv::Mat& picture, const std::string& name,
                   std::optional<double> pixelSize) {
  const std::string samples = std::to_string(picture.channels());
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<OME xmlns=\"http://www.openmicroscopy.org/Schemas/OME/2016-06\" "
         "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
         "xsi:schemaLocation=\"http://www.openmicroscopy.org/Schemas/OME/2016-06 "
         "http://www.openmicroscopy.org/Schemas/OME/2016-06/ome.xsd\" "
         "Creator=\"framequilt " FRAMEQUILT_VERSION
         "\">\n"
         "  <Image ID=\"Image:0\" Name=\"" +
         attribute(name) +
         "\">\n"
         "    <Pixels ID=\"Pixels:0\" DimensionOrder=\"XYCZT\" Type=\"uint8\" BigEndian=\"false\" "
         "Interleaved=\"true\" SizeX=\"" +
         std::to_string(picture.cols) + "\" SizeY=\"" + std::to_string(picture.rows) +
         "\" SizeC=\"" + samples + "\" SizeZ=\"1\" SizeT=\"1\"" + physicalSize(pixelSize) +
         ">\n"
         "      <Channel ID=\"Channel:0:0\" SamplesPerPixel=\"" +
         samples +
         "\"/>\n"
         "      <TiffData IFD=\"0\" PlaneCount=\"1\"/>\n"
         "    </Pixels>\n"
         "  </Image>\n"
         "</OME>\n";
}

}  // namespace framequilt::tool
