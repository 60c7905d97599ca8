// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <opencv2/core/mat.hpp>
#include <stdexcept>

namespace framequilt::tool {

/// A picture that cannot be used: names the file and says why, without a remedy.
class PictureError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What the header of a picture file tells.
struct PictureHeader {
  int rows;  ///< Of the upright picture.
  int cols;
  bool colour;
  bool sixteenBits;   ///< Per channel, instead of 8.
  bool transparency;  ///< There is a channel of it.
  bool turned;        ///< The EXIF data ask for a turn or a mirror image.
  bool cmyk;
};

/// Reads the header alone, except of a bitmap (.bmp), which is decoded.
/// \throws PictureError, ToolError when libvips cannot be started.
PictureHeader readHeader(const std::filesystem::path& picture);

/// The picture as 8 bits a channel, gray or blue-green-red as `channels` (1 or 3) asks, upright:
/// 16 bits are cut to the upper 8, transparency is dropped and not blended, the colours of a file
/// with a profile of its own stay as they are stored.
///
/// \throws PictureError, also when the file ends early or its pixels are damaged: there are no half
///         pictures. ToolError when libvips cannot be started.
cv::Mat readPicture(const std::filesystem::path& picture, int channels);

}  // namespace framequilt::tool
