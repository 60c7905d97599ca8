// SPDX-License-Identifier: Apache-2.0
// The OME-TIFF, read with libtiff instead of the library that wrote it.
#include <gtest/gtest.h>
#include <tiffio.h>

#include <cstdint>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <string>
#include <vector>

#include "file_size_limit.h"
#include "same_pixels.h"
#include "scenes.h"
#include "temporary_folder.h"
#include "tool_error_text.h"
#include "tools/framequilt/tiff_writing.h"

using framequilt::tool::OutputFile;
using framequilt::tool::writeOmeTiff;

namespace {

struct CloseTiff {
  void operator()(TIFF* file) const { TIFFClose(file); }
};

/// One picture of a TIFF file.
struct Layer {
  cv::Mat pixels;  ///< Gray or blue-green-red.
  cv::Size tile;
  std::string description;
  float pixelsPerUnit = 0;
  std::uint16_t unit = 0;
};

template <class Value>
Value field(TIFF* file, ttag_t tag) {
  Value value{};
  TIFFGetFieldDefaulted(file, tag, &value);
  return value;
}

cv::Mat pixelsOf(TIFF* file, cv::Size size, cv::Size tile) {
  const int channels = field<std::uint16_t>(file, TIFFTAG_SAMPLESPERPIXEL);
  cv::Mat picture(size, CV_8UC(channels));
  std::vector<unsigned char> bytes(static_cast<std::size_t>(TIFFTileSize64(file)));
  for (int y = 0; y < size.height; y += tile.height) {
    for (int x = 0; x < size.width; x += tile.width) {
      if (TIFFReadTile(file, bytes.data(), static_cast<std::uint32_t>(x),
                       static_cast<std::uint32_t>(y), 0, 0) < 0) {
        return {};
      }
      const cv::Rect place = cv::Rect({x, y}, tile) & cv::Rect({0, 0}, size);
      cv::Mat(tile, picture.type(), bytes.data())(cv::Rect({0, 0}, place.size()))
          .copyTo(picture(place));
    }
  }
  if (channels == 3) cv::cvtColor(picture, picture, cv::COLOR_RGB2BGR);
  return picture;
}

Layer layerOf(TIFF* file) {
  Layer layer;
  const cv::Size size(static_cast<int>(field<std::uint32_t>(file, TIFFTAG_IMAGEWIDTH)),
                      static_cast<int>(field<std::uint32_t>(file, TIFFTAG_IMAGELENGTH)));
  layer.tile = {static_cast<int>(field<std::uint32_t>(file, TIFFTAG_TILEWIDTH)),
                static_cast<int>(field<std::uint32_t>(file, TIFFTAG_TILELENGTH))};
  if (const char* text = field<const char*>(file, TIFFTAG_IMAGEDESCRIPTION)) {
    layer.description = text;
  }
  layer.pixelsPerUnit = field<float>(file, TIFFTAG_XRESOLUTION);
  layer.unit = field<std::uint16_t>(file, TIFFTAG_RESOLUTIONUNIT);
  layer.pixels = pixelsOf(file, size, layer.tile);
  return layer;
}

/// The picture and, after it, its smaller copies.
std::vector<Layer> layersOf(const std::string& name) {
  const std::unique_ptr<TIFF, CloseTiff> file(TIFFOpen(name.c_str(), "r"));
  if (!file) return {};
  EXPECT_EQ(TIFFNumberOfDirectories(file.get()), 1U);
  std::vector<Layer> layers = {layerOf(file.get())};
  std::uint16_t count = 0;
  const std::uint64_t* offsets = nullptr;
  if (TIFFGetField(file.get(), TIFFTAG_SUBIFD, &count, &offsets) == 0) return layers;
  for (const std::uint64_t offset : std::vector<std::uint64_t>(offsets, offsets + count)) {
    if (TIFFSetSubDirectory(file.get(), offset) == 0) return {};
    layers.push_back(layerOf(file.get()));
  }
  return layers;
}

class OmeTiff : public testing::Test {
 protected:
  std::vector<Layer> written(const cv::Mat& picture, std::optional<double> pixelSize) const {
    OutputFile output(file());
    writeOmeTiff(picture, pixelSize, output);
    output.publish();
    return layersOf(file());
  }
  std::string file() const { return folder_.file("slide.ome.tif"); }

  TemporaryFolder folder_;
};

}  // namespace

TEST_F(OmeTiff, HoldsThePictureAndSmallerCopiesInTiles) {
  const cv::Mat colour = coloured(texture(700, 1100));
  for (const cv::Mat& picture : {colour, texture(700, 1100)}) {
    const std::vector<Layer> layers = written(picture, 0.5);
    ASSERT_EQ(layers.size(), 4U);
    EXPECT_TRUE(samePixels(layers[0].pixels, picture));
    for (std::size_t i = 0; i < layers.size(); ++i) {
      EXPECT_EQ(layers[i].tile, cv::Size(256, 256)) << i;
      EXPECT_EQ(layers[i].pixels.size(), cv::Size(1100 >> i, 700 >> i)) << i;
    }
    // Means of four pixels.
    cv::Mat half;
    cv::resize(picture, half, {550, 350}, 0, 0, cv::INTER_AREA);
    EXPECT_LE(cv::norm(layers[1].pixels, half, cv::NORM_INF), 1);
  }
}

TEST_F(OmeTiff, IsDescribedInXml) {
  const std::vector<Layer> layers = written(coloured(texture(20, 30)), 0.65);
  ASSERT_EQ(layers.size(), 1U);
  const std::string& xml = layers[0].description;
  EXPECT_EQ(xml.rfind("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<OME ", 0), 0U) << xml;
  EXPECT_NE(xml.find("<Image ID=\"Image:0\" Name=\"slide\">"), std::string::npos) << xml;
  EXPECT_NE(xml.find("SizeX=\"30\" SizeY=\"20\" SizeC=\"3\""), std::string::npos) << xml;
  EXPECT_NE(xml.find("PhysicalSizeX=\"0.65\""), std::string::npos) << xml;
}

TEST_F(OmeTiff, ThePixelSizeIsItsResolutionToo) {
  const Layer layer = written(texture(20, 30), 0.5).at(0);
  EXPECT_EQ(layer.unit, RESUNIT_CENTIMETER);
  EXPECT_FLOAT_EQ(layer.pixelsPerUnit, 20000);
}

TEST_F(OmeTiff, ADiskThatIsFullIsNamed) {
  const cv::Mat picture = noise(600, 600);
  ASSERT_EQ(written(picture, std::nullopt).size(), 3U);
  const std::size_t whole = readText(file()).size();
  // Full within the first tiles, within the smaller copies, and when the directory is written.
  for (const std::size_t bytes : {std::size_t{1000}, whole - 100'000, whole - 50}) {
    OutputFile output(file());
    EXPECT_EQ(toolErrorOf([&] {
                const FileSizeLimit full(bytes);
                writeOmeTiff(picture, std::nullopt, output);
              }),
              "'" + file() +
                  "' could not be written (File too large): free some space or choose another "
                  "folder")
        << bytes;
  }
}
