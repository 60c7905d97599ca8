// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/vips_picture.h"

#include <new>
#include <opencv2/imgproc.hpp>

namespace framequilt::tool {
namespace {

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

}  // namespace

GObjectPtr<VipsImage> vipsViewOf(const cv::Mat& picture, double pixelsPerMillimetre) {
  startVips();
  GObjectPtr<VipsImage> view(vips_image_new());
  const bool gray = picture.channels() == 1;
  vips_image_init_fields(view.get(), picture.cols, picture.rows, picture.channels(),
                         VIPS_FORMAT_UCHAR, VIPS_CODING_NONE,
                         gray ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB,
                         pixelsPerMillimetre, pixelsPerMillimetre);
  // Generation only reads, but its context is a plain pointer.
  void* context = const_cast<cv::Mat*>(&picture);
  if (vips_image_pipelinev(view.get(), VIPS_DEMAND_STYLE_ANY, nullptr) != 0 ||
      vips_image_generate(view.get(), nullptr, fillRegion, nullptr, context, nullptr) != 0) {
    throw std::bad_alloc();
  }
  return view;
}

}  // namespace framequilt::tool
