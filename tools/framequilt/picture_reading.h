// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <filesystem>
#include <opencv2/core/mat.hpp>
#include <stdexcept>

namespace framequilt::tool {

/// A picture that cannot be used: names the file and says why, without a remedy.
class PictureError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The largest picture that is decoded. A small file may stand for a very large one; its size is
/// known from its header before.
struct PictureLimit {
  std::int64_t side;
  std::int64_t pixels;
};
/// The library halves frames down to 6000 a side.
constexpr PictureLimit kFrameLimit{12000, std::int64_t{12000} * 12000};
/// Of a picture that frames are cut from.
constexpr PictureLimit kSceneLimit{1'000'000, 1'000'000'000};

/// What the header of a picture file tells.
struct PictureHeader {
  int rows;  ///< Of the upright picture.
  int cols;
  bool colour;
  bool sixteenBits;   ///< Per channel, instead of 8.
  bool transparency;  ///< There is a channel of it.
  bool turned;        ///< The EXIF data ask for a turn or a mirror image.
  bool cmyk;
  bool several;  ///< The file holds more than one: pages, or frames of an animation.
};

/// Reads the header alone, except of a bitmap (.bmp) within the limit, which is decoded.
/// \throws PictureError, also for a picture beyond the limit; ToolError when libvips cannot be
///         started.
PictureHeader readHeader(const std::filesystem::path& picture,
                         const PictureLimit& limit = kFrameLimit);

/// The picture as 8 bits a channel, gray or blue-green-red as `channels` (1 or 3) asks, upright:
/// 16 bits are cut to the upper 8, transparency is dropped and not blended, the colours of a file
/// with a profile of its own stay as they are stored. Of several pictures in a file the first.
///
/// \throws PictureError for a picture beyond the limit, before it is decoded; also when the file
/// ends early or its pixels are damaged: there are no half
///         pictures. ToolError when libvips cannot be started.
cv::Mat readPicture(const std::filesystem::path& picture, int channels,
                    const PictureLimit& limit = kFrameLimit);

}  // namespace framequilt::tool
