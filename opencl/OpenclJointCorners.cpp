// SPDX-License-Identifier: Apache-2.0
#include "opencl/OpenclJointCorners.h"

#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>
#include <vector>

#include "cpu/hint_strip.h"
#include "features/descriptor.h"
#include "features/harris.h"
#include "features/selection.h"
#include "framequilt/tuning.h"
#include "imaging/pixel_math.h"
#include "imaging/run_buffer.h"
#include "interface/debug.h"
#include "interface/never_destroyed.h"
#include "interface/report.h"
#include "opencl/OpenclJointKernels.h"
#include "opencl/OpenclJointObjects.h"

namespace {

using framequilt::Bytes;
using framequilt::ensure;
using framequilt::Floats;
using framequilt::HintStrip;
using framequilt::HostBuffer;
using framequilt::Mapping;
using framequilt::pixelGrid;
using framequilt::planeSize;

constexpr float kHarrisK = 0.007F;
/// A corner whose response is below this share of another's is clearly weaker.
constexpr float kRobust = 0.5F;
/// Side of the square around a corner that its descriptor covers.
constexpr int kPatch = 20;
constexpr int kColour = 3;

/// Smoothing one plane of gradient products.
struct Smoothing {
  cl_mem& plane;
  cl_mem& scratch;  ///< Named to the kernel that pads rows, which leaves it alone.
};

/// What one of the two threads works with. Kernels and buffers are its own; `context` and
/// `commandQueue` are shared.
struct Worker {
  unsigned char*& input;
  std::vector<SPoint>& corners;
  unsigned short*& descriptors;
  unsigned short*& symbol;
  float*& response;

  const framequilt::PlaneKernel& toGray;
  const framequilt::StripKernel& cutStrip;
  const framequilt::ReduceKernel& reduce;
  const framequilt::GradientKernel& gradients;
  const framequilt::PadFloatsKernel& padRows;
  const framequilt::PadFloatsKernel& padCols;
  const framequilt::FloatPlaneKernel& smoothDown;
  const framequilt::FloatPlaneKernel& smoothAcross;
  const framequilt::TakeOutFloatsKernel& takeOut;

  cl_mem& gray;
  cl_mem& strip;
  cl_mem& reduced;
  Smoothing products[3];  ///< xx, yy, xy.
  cl_mem& padded;
  cl_mem& paddedTemp;
};

const Worker kOne = {clSorImageOneIn,
                     HarrissCornerSPointOneArrayCL,
                     FeatureDescriberOneCL,
                     DescribleSymbolOneCL,
                     CoonervalueOneCL,
                     framequilt::toGrayOne,
                     framequilt::cutStripOne,
                     framequilt::reduceOne,
                     framequilt::gradientsOne,
                     framequilt::padRowsOne,
                     framequilt::padColsOne,
                     framequilt::smoothDownOne,
                     framequilt::smoothAcrossOne,
                     framequilt::takeOutOne,
                     SorImageOnergb_grayCl,
                     SorTempImageCL,
                     gray_pointdownscalClOne,
                     {{grad_x2ClOne, grad_bound_tempOneCl},
                      {grad_y2ClOne, grad_bound_tempOneCl},
                      {grad_xyClOne, grad_bound_tempOneCl}},
                     grad_boundOneCl,
                     grad_bound_tempOneCl};

const Worker kTwo = {clDestImageTwoIn,
                     HarrissCornerSPointTwoArrayCL,
                     FeatureDescriberTwoCL,
                     DescribleSymbolTwoCL,
                     CoonervalueTwoCL,
                     framequilt::toGrayTwo,
                     framequilt::cutStripTwo,
                     framequilt::reduceTwo,
                     framequilt::gradientsTwo,
                     framequilt::padRowsTwo,
                     framequilt::padColsTwo,
                     framequilt::smoothDownTwo,
                     framequilt::smoothAcrossTwo,
                     framequilt::takeOutTwo,
                     DestImageTworgb_grayCl,
                     DestTempImageCL,
                     gray_pointdownscalClTwo,
                     {{grad_x2ClTwo, grad_bound_tempTwoCl},
                      {grad_y2ClTwo, grad_bound_tempTwoCl},
                      // The other thread's scratch: harmless, for padding rows leaves it alone.
                      {grad_xyClTwo, grad_bound_tempOneCl}},
                     grad_boundTwoCl,
                     grad_bound_tempTwoCl};

/// The image that corners are searched in, in `worker.reduced` where it is not `gray` itself.
cl_int reduceForSearch(const Worker& worker, cl_mem gray, imgInfo info) {
  const int rows = gray_pointdownscal_rowCL;
  const int cols = gray_pointdownscal_colCL;
  const int factor = std::max(pointdownscalCL, 1);
  const bool fills = info.rows / factor >= rows && info.cols / factor == cols;
  if (!fills) {
    // A hinted strip fills only the beginning; nothing of an earlier frame may stay behind it.
    const cl_uchar black = 0;
    const cl_int status = clEnqueueFillBuffer(commandQueue, worker.reduced, &black, sizeof(black),
                                              0, planeSize(rows, cols), 0, nullptr, nullptr);
    if (status != CL_SUCCESS) return status;
  }
  // One more than the quotient: odd factors round up.
  return worker.reduce(pixelGrid(info.rows / factor + 1, info.cols / factor + 1), Bytes{gray},
                       info.rows, info.cols, pointdownscalCL, Bytes{worker.reduced});
}

/// Separable smoothing of a plane of gradient products in place.
cl_int smooth(const Worker& worker, const Smoothing& smoothing, int rows, int cols) {
  const int border = framequilt::smoothingBorderCL();
  const int paddedRows = rows + 2 * border;
  const int paddedCols = cols + 2 * border;
  const framequilt::Grid all = pixelGrid(paddedRows, paddedCols);
  const Floats plane{smoothing.plane};
  const Floats padded{worker.padded};
  const Floats temp{worker.paddedTemp};
  cl_int status = worker.padRows(all, plane, rows, cols, border, Floats{smoothing.scratch}, padded);
  status |= worker.padCols(framequilt::borderGrid(paddedRows, border), padded, paddedRows, cols,
                           border, temp, padded);
  status |= worker.smoothDown(all, padded, paddedRows, paddedCols, temp);
  status |= worker.smoothAcross(all, temp, paddedRows, paddedCols, padded);
  status |= worker.takeOut(pixelGrid(rows, cols), padded, rows, cols, border, plane);
  return status;
}

/// Whether the planes have room for the search size. A `scaleCL` that does not set it leaves the
/// one of an earlier run, which may be larger than the frames of this one.
bool searchFits() {
  const int rows = gray_pointdownscal_rowCL;
  const int cols = gray_pointdownscal_colCL;
  const int margin = 2 * framequilt::smoothingBorderCL();
  return planeSize(rows, cols) <= planeSize(imgScaleRowCL, imgScaleColCL) &&
         planeSize(rows + margin, cols + margin) <= framequilt::paddedSearchPixels();
}

/// Everything up to the smoothed gradient products of `gray`.
cl_int computeProducts(const Worker& worker, cl_mem gray, imgInfo info) {
  const int rows = gray_pointdownscal_rowCL;
  const int cols = gray_pointdownscal_colCL;
  const bool reduces = pointdownscalCL != 1;
  const cl_mem searched = reduces ? worker.reduced : gray;
  if (!searchFits()) return CL_INVALID_BUFFER_SIZE;
  cl_int status = reduces ? reduceForSearch(worker, gray, info) : CL_SUCCESS;
  const auto& [xx, yy, xy] = worker.products;
  status |= worker.gradients(pixelGrid(rows, cols), Bytes{searched}, rows, cols, Floats{xx.plane},
                             Floats{yy.plane}, Floats{xy.plane});
  for (const Smoothing& product : worker.products) status |= smooth(worker, product, rows, cols);
  return status;
}

/// Appends the well-spread strongest maxima of the response.
void selectCorners(const Worker& worker, const Mapping& xx, const Mapping& yy, const Mapping& xy,
                   std::vector<SPoint>& corners) {
  const int rows = gray_pointdownscal_rowCL;
  const int cols = gray_pointdownscal_colCL;
  ensure(worker.response, planeSize(rows, cols));
  std::fill_n(worker.response, planeSize(rows, cols), 0.0F);
  float mean = 0.0F;
  float sum = 0.0F;
  calcResponseValue(xx.floats(), yy.floats(), xy.floats(), kHarrisK, rows, cols, worker.response,
                    mean, sum);
  std::vector<float> values;
  std::vector<SPoint> points;
  responseValueMaxSuppression(worker.response, mean, rows, cols, values, points);
  int count = 0;
  goToFirstGetRidOfSomeSPoints(values, points, numpointCL, num5000CL, scaleCL, pvalueCL, count);
  goToSecondGetRidOfSomeSPoints(values, points, count, pointdownscalCL, kRobust, corners);
}

bool findCorners(const Worker& worker, cl_mem gray, imgInfo info, std::vector<SPoint>& corners) {
  const std::size_t bytes =
      planeSize(gray_pointdownscal_rowCL, gray_pointdownscal_colCL) * sizeof(float);
  const bool searches = bytes > 0;
  cl_int status = searches ? computeProducts(worker, gray, info) : CL_SUCCESS;
  if (searches && status == CL_SUCCESS) {
    const auto& [xx, yy, xy] = worker.products;
    const Mapping mappedXx(xx.plane, bytes, CL_MAP_READ, Mapping::Wait::kNot);
    const Mapping mappedYy(yy.plane, bytes, CL_MAP_READ, Mapping::Wait::kNot);
    const Mapping mappedXy(xy.plane, bytes, CL_MAP_READ, Mapping::Wait::kForAll);
    status = mappedXx.status() | mappedYy.status() | mappedXy.status();
    if (status == CL_SUCCESS) {
      selectCorners(worker, mappedXx, mappedYy, mappedXy, corners);
    } else {
      framequilt::finishQueue();
    }
  }
  if (status != CL_SUCCESS) {
    framequilt::report("errNum failed");
    return false;
  }
  if (!corners.empty()) return true;
  framequilt::report("HarrissCornerSPoint22222222222 size is 0");
  return false;
}

bool findInStrip(const Worker& worker, const HintStrip& part, cl_mem gray, int rows, int cols,
                 std::vector<SPoint>& corners) {
  const imgInfo info = {0, 1, part.rows.length(), part.cols.length()};
  const cl_int status =
      worker.cutStrip(pixelGrid(info.rows, info.cols), Bytes{gray}, rows, cols, part.rows.start,
                      part.cols.start, info.rows, info.cols, Bytes{worker.strip});
  if (status != CL_SUCCESS) {
    framequilt::report("errNum failed");
    return false;
  }
  findCorners(worker, worker.strip, info, corners);
  for (SPoint& corner : corners) {
    corner.x += part.cols.shift;
    corner.y += part.rows.shift;
  }
  return true;
}

/// A host copy of the gray image with a row of zeros behind it, which the descriptors of the last
/// rows look at. Empty when the device refused.
std::vector<unsigned char> copyWithZeroRow(cl_mem gray, int rows, int cols) {
  const std::size_t pixels = planeSize(rows, cols);
  const Mapping mapped(gray, pixels, CL_MAP_READ, Mapping::Wait::kForAll);
  if (mapped.bytes() == nullptr) return {};
  std::vector<unsigned char> copy(planeSize(std::int64_t{rows} + 1, cols));
  std::memcpy(copy.data(), mapped.bytes(), pixels);
  return copy;
}

void describeCorners(const Worker& worker, std::vector<unsigned char>& gray) {
  const auto length = static_cast<std::size_t>(std::max(0, demesionCL));
  std::fill_n(worker.symbol, length, static_cast<unsigned short>(0));
  std::fill_n(worker.descriptors, worker.corners.size() * length, static_cast<unsigned short>(0));
  noRotaFeatureDescriber(gray.data(), InfoThCL.rows, InfoThCL.cols, demesionCL, kPatch,
                         worker.corners, worker.symbol, worker.descriptors);
}

using FindInImage = bool (*)(cl_mem gray, imgInfo info, std::vector<SPoint>& corners);
using FindInStrip = bool (*)(int dx, int dy, cl_mem gray, int rows, int cols,
                             std::vector<SPoint>& corners);

/// One job. Nothing when the device refuses the image.
std::optional<bool> findAndDescribe(const Worker& worker, FindInImage findInImage,
                                    FindInStrip findInPart) {
  const int rows = InfoThCL.rows;
  const int cols = InfoThCL.cols;
  const bool colour = InfoThCL.channels == kColour;
  if (worker.input == nullptr || worker.descriptors == nullptr) return false;
  ensure(worker.symbol, static_cast<std::size_t>(std::max(0, demesionCL)));

  HostBuffer image(worker.input, planeSize(rows, cols, InfoThCL.channels));
  if (image.status() != CL_SUCCESS) {
    framequilt::debug("failed clEnqueueReadBuffer111");
    return std::nullopt;
  }
  cl_mem gray = image.bytes().memory;
  if (colour) {
    gray = worker.gray;
    if (worker.toGray(pixelGrid(rows, cols), image.bytes(), rows, cols, Bytes{gray}) !=
        CL_SUCCESS) {
      framequilt::debug("failed rgb2GaryUcharKernel");
      return std::nullopt;
    }
  }

  if (clMotorflage) {
    if (!colour) framequilt::debug("getRangeTh1 in");
    findInPart(clMotordx, clMotordy, gray, rows, cols, worker.corners);
  } else {
    findInImage(gray, {0, 1, rows, cols}, worker.corners);
  }

  std::vector<unsigned char> copy = copyWithZeroRow(gray, rows, cols);
  if (copy.empty()) {
    framequilt::report("errNum failed");
    return false;
  }
  image.settle();
  image.release();
  describeCorners(worker, copy);
  return true;
}

}  // namespace

bool findHarrisCornerCoordianteFunClOne(cl_mem gray, imgInfo info, std::vector<SPoint>& corners) {
  return findCorners(kOne, gray, info, corners);
}

bool findHarrisCornerCoordianteFunClTwo(cl_mem gray, imgInfo info, std::vector<SPoint>& corners) {
  return findCorners(kTwo, gray, info, corners);
}

bool getRangeTh1(int dx, int dy, cl_mem gray, int rows, int cols, std::vector<SPoint>& corners) {
  return findInStrip(kOne, framequilt::stripOfReference(dx, dy, rows, cols), gray, rows, cols,
                     corners);
}

bool getRangeTh2(int dx, int dy, cl_mem gray, int rows, int cols, std::vector<SPoint>& corners) {
  return findInStrip(kTwo, framequilt::stripOfNewFrame(dx, dy, rows, cols), gray, rows, cols,
                     corners);
}

void* findHarrisCornerCoordianteThreadClOne(void* /*unused*/) {
  const bool stopped = framequilt::openclLaneOne().serveUntilRefusal(
      [] { return findAndDescribe(kOne, findHarrisCornerCoordianteFunClOne, getRangeTh1); });
  if (!stopped) return nullptr;
  pthread_exit(nullptr);
}

void* findHarrisCornerCoordianteThreadClTwo(void* /*unused*/) {
  const bool stopped = framequilt::openclLaneTwo().serveUntilRefusal(
      [] { return findAndDescribe(kTwo, findHarrisCornerCoordianteFunClTwo, getRangeTh2); });
  if (!stopped) return nullptr;
  pthread_exit(nullptr);
}

namespace framequilt {

CornerLane& openclLaneOne() {
  static const NeverDestroyed<CornerLane> lane(startOneThFlagCL, threadOneCalcFlagCL, one_pidCL);
  return *lane;
}

CornerLane& openclLaneTwo() {
  static const NeverDestroyed<CornerLane> lane(startTwoThFlagCL, threadTwoCalcFlagCL, two_pidCL);
  return *lane;
}

}  // namespace framequilt
