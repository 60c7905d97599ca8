// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/tiff_writing.h"

#include <unistd.h>

#include <cerrno>
#include <new>
#include <opencv2/imgproc.hpp>
#include <string>

#include "tools/framequilt/path_text.h"
#include "tools/framequilt/tool_error.h"
#include "tools/framequilt/vips_library.h"

namespace framequilt::tool {
namespace {

constexpr int kTileSide = 256;

// A quarter larger than deflate on a noisy mosaic of 88 megapixels, but written in a fifth of the
// time.
constexpr VipsForeignTiffCompression kCompression = VIPS_FOREIGN_TIFF_COMPRESSION_LZW;

/// Fills a region of the picture as libvips asks for it, in red-green-blue; from several threads.
int fillRegion(VipsRegion* region, void* /*sequence*/, void* context, void* /*unused*/,
               gboolean* /*stop*/) {
  const cv::Mat& picture = *static_cast<const cv::Mat*>(context);
  const VipsRect& area = region->valid;
  const cv::Mat from = picture(cv::Rect(area.left, area.top, area.width, area.height));
  cv::Mat to(area.height, area.width, picture.type(), VIPS_REGION_ADDR(region, area.left, area.top),
             VIPS_REGION_LSKIP(region));
  if (picture.channels() == 1) {
    from.copyTo(to);
  } else {
    cv::cvtColor(from, to, cv::COLOR_BGR2RGB);
  }
  return 0;
}

/// The picture as libvips sees it; shares the pixels.
GObjectPtr<VipsImage> viewOf(const cv::Mat& picture) {
  GObjectPtr<VipsImage> view(vips_image_new());
  const bool gray = picture.channels() == 1;
  vips_image_init_fields(view.get(), picture.cols, picture.rows, picture.channels(),
                         VIPS_FORMAT_UCHAR, VIPS_CODING_NONE,
                         gray ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB, 1.0, 1.0);
  // Generation only reads, but its context is a plain pointer.
  void* context = const_cast<cv::Mat*>(&picture);
  if (vips_image_pipelinev(view.get(), VIPS_DEMAND_STYLE_ANY, nullptr) != 0 ||
      vips_image_generate(view.get(), nullptr, fillRegion, nullptr, context, nullptr) != 0) {
    throw std::bad_alloc();
  }
  return view;
}

/// The file as libvips writes it. The first error is kept, since the encoder goes on for a while
/// and does not hand it through.
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
  return disk->checked(::write(disk->descriptor, bytes, static_cast<std::size_t>(size)));
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

}  // namespace

void writeTiff(const cv::Mat& picture, OutputFile& output) {
  startVips();
  Disk disk{output.descriptor()};
  const GObjectPtr<VipsImage> view = viewOf(picture);
  const GObjectPtr<VipsTargetCustom> target = targetOn(disk);
  const int failed = vips_tiffsave_target(
      view.get(), VIPS_TARGET(target.get()), "bigtiff", TRUE, "compression", kCompression,
      "predictor", VIPS_FOREIGN_TIFF_PREDICTOR_HORIZONTAL, "tile", TRUE, "tile_width", kTileSide,
      "tile_height", kTileSide, nullptr);
  vips_error_clear();
  if (disk.error != 0) output.throwUnwritten(disk.error);
  if (failed != 0) {
    throw ToolError(inQuotes(output.target()) + " could not be encoded: choose another format");
  }
}

}  // namespace framequilt::tool
