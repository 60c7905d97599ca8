// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/picture_reading.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <string>
#include <string_view>
#include <utility>

#include "tools/framequilt/bitmap_reading.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/vips_library.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

using ImagePtr = GObjectPtr<VipsImage>;

/// Of libvips; its others take nearly any text for a matrix or draw pages and vectors.
constexpr std::array<std::string_view, 6> kPictureLoaders = {
    "VipsForeignLoadJpegSource", "VipsForeignLoadPngSource", "VipsForeignLoadTiffSource",
    "VipsForeignLoadWebpSource", "VipsForeignLoadPpmSource", "VipsForeignLoadJp2kSource"};

[[noreturn]] void throwUnreadable(const fs::path& picture) {
  throw PictureError(inQuotes(picture) + " cannot be read as a picture");
}

[[noreturn]] void throwDamaged(const fs::path& picture) {
  throw PictureError(inQuotes(picture) + " is damaged (its pixels end early or are wrong)");
}

void requireReadable(const fs::path& picture) {
  errno = 0;
  if (!std::ifstream(picture, std::ios::binary)) {
    throw PictureError(inQuotes(picture) + " cannot be opened (" + std::strerror(errno) + ")");
  }
}

void requireWithin(const PictureLimit& limit, const fs::path& picture, std::int64_t rows,
                   std::int64_t cols) {
  const std::string size = inQuotes(picture) + " has " + std::to_string(cols) + " x " +
                           std::to_string(rows) + " pixels, more than ";
  if (std::max(rows, cols) > limit.side) {
    throw PictureError(size + std::to_string(limit.side) + " a side");
  }
  if (rows * cols > limit.pixels) {
    throw PictureError(size + std::to_string(limit.pixels) + " in all");
  }
}

/// Errors gather in a text of the process that nobody reads here.
struct VipsErrorsCleared {
  VipsErrorsCleared() = default;
  ~VipsErrorsCleared() { vips_error_clear(); }
  VipsErrorsCleared(const VipsErrorsCleared&) = delete;
  VipsErrorsCleared& operator=(const VipsErrorsCleared&) = delete;
};

/// The picture as stored, its pixels still to be decoded from top to bottom.
ImagePtr open(const fs::path& picture) {
  startVips();
  // By content: an extension may be wrong, and libvips would read "a[b].png" as name and options.
  const GObjectPtr<VipsSource> source(vips_source_new_from_file(picture.c_str()));
  if (!source) throwUnreadable(picture);
  const char* loader = vips_foreign_find_load_source(source.get());
  if (loader == nullptr ||
      std::find(kPictureLoaders.begin(), kPictureLoaders.end(), loader) == kPictureLoaders.end()) {
    throwUnreadable(picture);
  }
  ImagePtr image(vips_image_new_from_source(source.get(), "", "access", VIPS_ACCESS_SEQUENTIAL,
                                            "fail_on", VIPS_FAIL_ON_ERROR, nullptr));
  if (!image) throwUnreadable(picture);
  return image;
}

bool isCmyk(VipsImage* image) {
  return vips_image_get_interpretation(image) == VIPS_INTERPRETATION_CMYK;
}

bool isColour(VipsImage* image) {
  const int transparency = vips_image_hasalpha(image) ? 1 : 0;
  return vips_image_get_bands(image) - transparency >= 3;
}

PictureHeader headerOf(const fs::path& picture, const PictureLimit& limit, VipsImage* image) {
  requireWithin(limit, picture, vips_image_get_height(image), vips_image_get_width(image));
  const VipsBandFormat format = vips_image_get_format(image);
  if (format != VIPS_FORMAT_UCHAR && format != VIPS_FORMAT_USHORT) {
    throw PictureError(inQuotes(picture) + " has neither 8 nor 16 bits per channel");
  }
  PictureHeader header{};
  header.rows = vips_image_get_height(image);
  header.cols = vips_image_get_width(image);
  if (vips_image_get_orientation_swap(image)) std::swap(header.rows, header.cols);
  header.colour = isColour(image);
  header.sixteenBits = format == VIPS_FORMAT_USHORT;
  header.transparency = vips_image_hasalpha(image);
  header.turned = vips_image_get_orientation(image) != 1;
  header.cmyk = isCmyk(image);
  header.several = vips_image_get_n_pages(image) > 1;
  return header;
}

/// Calls an operation of libvips from `image` to a new one.
template <class Operation>
ImagePtr applied(const fs::path& picture, Operation operation, VipsImage* image) {
  VipsImage* result = nullptr;
  if (operation(image, &result) != 0) throwDamaged(picture);
  return ImagePtr(result);
}

/// 8 bits in one channel, or in red, green and blue.
ImagePtr inEightBits(const fs::path& picture, ImagePtr image) {
  const bool colour = isColour(image.get());
  if (vips_image_get_format(image.get()) == VIPS_FORMAT_USHORT) {
    // The conversion of colours below would round gray and cut colour.
    image = applied(
        picture, [](VipsImage* in, VipsImage** out) { return vips_msb(in, out, nullptr); },
        image.get());
  }
  image = applied(
      picture,
      [&](VipsImage* in, VipsImage** out) {
        return vips_colourspace(
            in, out, colour ? VIPS_INTERPRETATION_sRGB : VIPS_INTERPRETATION_B_W, nullptr);
      },
      image.get());
  return applied(
      picture,
      [&](VipsImage* in, VipsImage** out) {
        return vips_extract_band(in, out, 0, "n", colour ? 3 : 1, nullptr);
      },
      image.get());
}

/// A turn reads columns, so the pixels are decoded first.
ImagePtr upright(const fs::path& picture, ImagePtr image) {
  image.reset(vips_image_copy_memory(image.get()));
  if (!image) throwDamaged(picture);
  return applied(
      picture, [](VipsImage* in, VipsImage** out) { return vips_autorot(in, out, nullptr); },
      image.get());
}

/// Decodes what is left to decode; blue-green-red or gray.
cv::Mat pixelsOf(const fs::path& picture, VipsImage* rgbOrGray) {
  std::size_t size = 0;
  const std::unique_ptr<void, void (*)(void*)> bytes(vips_image_write_to_memory(rgbOrGray, &size),
                                                     g_free);
  if (!bytes) throwDamaged(picture);
  const cv::Mat stored(vips_image_get_height(rgbOrGray), vips_image_get_width(rgbOrGray),
                       CV_8UC(vips_image_get_bands(rgbOrGray)), bytes.get());
  if (stored.channels() == 1) return stored.clone();
  cv::Mat pixels;
  cv::cvtColor(stored, pixels, cv::COLOR_RGB2BGR);
  return pixels;
}

cv::Mat decode(const fs::path& picture, const PictureLimit& limit) {
  const VipsErrorsCleared afterwards;
  ImagePtr image = open(picture);
  const bool turned = headerOf(picture, limit, image.get()).turned;
  image = inEightBits(picture, std::move(image));
  if (turned) image = upright(picture, std::move(image));
  return pixelsOf(picture, image.get());
}

cv::Mat decodeBitmap(const fs::path& picture, const PictureLimit& limit) {
  const BitmapSize size = bitmapSize(picture);
  requireWithin(limit, picture, size.rows, size.cols);
  cv::Mat pixels = readBitmap(picture);
  if (pixels.empty()) throwDamaged(picture);
  return pixels;
}

}  // namespace

PictureHeader readHeader(const fs::path& picture, const PictureLimit& limit) {
  requireReadable(picture);
  if (isBitmap(picture)) {
    const cv::Mat pixels = decodeBitmap(picture, limit);
    PictureHeader header{};
    header.rows = pixels.rows;
    header.cols = pixels.cols;
    header.colour = pixels.channels() == 3;
    return header;
  }
  const VipsErrorsCleared afterwards;
  return headerOf(picture, limit, open(picture).get());
}

cv::Mat readPicture(const fs::path& picture, int channels, const PictureLimit& limit) {
  requireReadable(picture);
  cv::Mat pixels = isBitmap(picture) ? decodeBitmap(picture, limit) : decode(picture, limit);
  if (channels == 3 && pixels.channels() == 1) cv::cvtColor(pixels, pixels, cv::COLOR_GRAY2BGR);
  if (channels == 1 && pixels.channels() == 3) cv::cvtColor(pixels, pixels, cv::COLOR_BGR2GRAY);
  return pixels;
}

}  // namespace framequilt::tool
