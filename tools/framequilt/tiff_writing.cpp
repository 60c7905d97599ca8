// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/tiff_writing.h"

#include <unistd.h>

#include <cerrno>
#include <string>

#include "tools/framequilt/ome_xml.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/tool_error.h"
#include "tools/framequilt/vips_picture.h"

namespace framequilt::tool {
namespace {

constexpr int kTileSide = 256;

// A quarter larger than deflate on a noisy mosaic of 88 megapixels, but written in a fifth of the
// time.
constexpr VipsForeignTiffCompression kCompression = VIPS_FOREIGN_TIFF_COMPRESSION_LZW;

/// The file as libvips writes it. The first error is kept and nothing is written any more, but the
/// encoder is told that it was: it does not hand errors through, and with smaller copies it does
/// not survive them.
struct Disk {
  int descriptor;
  int error = 0;

  gint64 checked(gint64 result) {
    const int reason = errno;
    if (result < 0 && error == 0) error = reason;
    return result;
  }
};

gint64 writeBytes(VipsTargetCustom* /*target*/, const void* bytes, gint64 size, Disk* disk) {
  if (disk->error != 0) return size;
  const gint64 written =
      disk->checked(::write(disk->descriptor, bytes, static_cast<std::size_t>(size)));
  return disk->error == 0 ? written : size;
}

gint64 readBytes(VipsTargetCustom* /*target*/, void* bytes, gint64 size, Disk* disk) {
  return disk->checked(::read(disk->descriptor, bytes, static_cast<std::size_t>(size)));
}

gint64 seekTo(VipsTargetCustom* /*target*/, gint64 offset, int whence, Disk* disk) {
  return disk->checked(::lseek(disk->descriptor, offset, whence));
}

GObjectPtr<VipsTargetCustom> targetOn(Disk& disk) {
  GObjectPtr<VipsTargetCustom> target(vips_target_custom_new());
  g_signal_connect(target.get(), "write", G_CALLBACK(writeBytes), &disk);
  g_signal_connect(target.get(), "read", G_CALLBACK(readBytes), &disk);
  g_signal_connect(target.get(), "seek", G_CALLBACK(seekTo), &disk);
  return target;
}

/// Saves `view` to `output`; `layers` adds smaller copies for viewers, below the picture itself.
void save(VipsImage* view, bool layers, OutputFile& output) {
  Disk disk{output.descriptor()};
  const GObjectPtr<VipsTargetCustom> target = targetOn(disk);
  const int failed = vips_tiffsave_target(
      view, VIPS_TARGET(target.get()), "bigtiff", TRUE, "compression", kCompression, "predictor",
      VIPS_FOREIGN_TIFF_PREDICTOR_HORIZONTAL, "tile", TRUE, "tile_width", kTileSide, "tile_height",
      kTileSide, "pyramid", layers ? TRUE : FALSE, "subifd", layers ? TRUE : FALSE, nullptr);
  vips_error_clear();
  if (disk.error != 0) output.throwUnwritten(disk.error);
  if (failed != 0) {
    throw ToolError(inQuotes(output.target()) + " could not be encoded: choose another format");
  }
}

}  // namespace

void writeTiff(const cv::Mat& picture, OutputFile& output) {
  const GObjectPtr<VipsImage> view = vipsViewOf(picture);
  save(view.get(), false, output);
}

void writeOmeTiff(const cv::Mat& picture, std::optional<double> pixelSize, OutputFile& output) {
  constexpr double kMicrometresPerMillimetre = 1000;
  const GObjectPtr<VipsImage> view =
      vipsViewOf(picture, pixelSize ? kMicrometresPerMillimetre / *pixelSize : 1.0);
  vips_image_set_string(view.get(), VIPS_META_IMAGEDESCRIPTION,
                        omeXml(picture, omeName(output.target()), pixelSize).c_str());
  save(view.get(), true, output);
}

}  // namespace framequilt::tool
