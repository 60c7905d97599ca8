// SPDX-License-Identifier: Apache-2.0
/// \file
/// Picture files of kinds that OpenCV does not write.
#pragma once

#include <vips/vips.h>

#include <cstddef>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "temporary_folder.h"
#include "tools/framequilt/vips_library.h"

/// The file's first half, as a transfer that broke off leaves it.
inline void cutInHalf(const std::string& file) {
  const std::string bytes = readText(file);
  writeText(file, bytes.substr(0, bytes.size() / 2));
}

/// A JPEG whose EXIF data say how to hold it: 1 is upright, 6 and 8 stand on a side.
inline std::string jpegWithOrientation(const cv::Mat& stored, int orientation) {
  std::vector<unsigned char> jpeg;
  if (!cv::imencode(".jpg", stored, jpeg)) throw std::runtime_error("cannot encode");
  // One little-endian TIFF directory of one entry: orientation (0x0112), a short.
  const char exif[] = {'\xFF',
                       '\xE1',
                       0,
                       34,
                       'E',
                       'x',
                       'i',
                       'f',
                       0,
                       0,
                       'I',
                       'I',
                       '*',
                       0,
                       8,
                       0,
                       0,
                       0,
                       1,
                       0,
                       0x12,
                       1,
                       3,
                       0,
                       1,
                       0,
                       0,
                       0,
                       static_cast<char>(orientation),
                       0,
                       0,
                       0,
                       0,
                       0,
                       0,
                       0};
  std::string bytes(jpeg.begin(), jpeg.end());
  bytes.insert(2, exif, sizeof exif);
  return bytes;
}

/// Saves interleaved 8-bit channels by libvips, in the format that the extension names.
inline void saveByVips(const std::string& file, const cv::Mat& picture,
                       VipsInterpretation interpretation) {
  using framequilt::tool::GObjectPtr;
  framequilt::tool::startVips();
  const GObjectPtr<VipsImage> plain(
      vips_image_new_from_memory(picture.data, picture.total() * picture.elemSize(), picture.cols,
                                 picture.rows, picture.channels(), VIPS_FORMAT_UCHAR));
  VipsImage* marked = nullptr;
  if (!plain || vips_copy(plain.get(), &marked, "interpretation", interpretation, nullptr) != 0) {
    throw std::runtime_error("cannot prepare " + file);
  }
  const GObjectPtr<VipsImage> owned(marked);
  if (vips_image_write_to_file(marked, file.c_str(), nullptr) != 0) {
    throw std::runtime_error("cannot write " + file);
  }
}

/// A PNG of two pixels with a palette: red 200, green 100, blue 50, then 10, 20, 30.
inline std::string palettePng() {
  static constexpr unsigned char kBytes[] = {
      0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A, 0x00, 0x00, 0x00, 0x0D, 0x49, 0x48, 0x44,
      0x52, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x01, 0x08, 0x03, 0x00, 0x00, 0x00, 0xC3,
      0xFC, 0x8F, 0xB8, 0x00, 0x00, 0x00, 0x06, 0x50, 0x4C, 0x54, 0x45, 0x0A, 0x14, 0x1E, 0xC8,
      0x64, 0x32, 0x77, 0xA0, 0xB3, 0x9C, 0x00, 0x00, 0x00, 0x0B, 0x49, 0x44, 0x41, 0x54, 0x78,
      0x9C, 0x63, 0x60, 0x64, 0x00, 0x00, 0x00, 0x05, 0x00, 0x02, 0xD1, 0x66, 0x33, 0x78, 0x00,
      0x00, 0x00, 0x00, 0x49, 0x45, 0x4E, 0x44, 0xAE, 0x42, 0x60, 0x82};
  return {reinterpret_cast<const char*>(kBytes), sizeof kBytes};
}
