// SPDX-License-Identifier: Apache-2.0
#include "cpu/corner_worker.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>

#include "cpu/corner_lane.h"
#include "cpu/hint_strip.h"
#include "cpu/run_state.h"
#include "features/descriptor.h"
#include "features/features_state.h"
#include "features/harris.h"
#include "framequilt/tuning.h"
#include "imaging/gray.h"
#include "imaging/imaging_state.h"
#include "imaging/pixel_math.h"
#include "imaging/region.h"
#include "imaging/run_buffer.h"
#include "interface/report.h"

namespace {

using framequilt::drop;
using framequilt::ensure;
using framequilt::planeSize;

/// Side of the square around a corner that its descriptor covers.
constexpr int kPatch = 20;

using FindCorners = bool (*)(unsigned char* gray, imgInfo info, std::vector<SPoint>& corners);
using FindInStrip = bool (*)(int dx, int dy, unsigned char* gray, int rows, int cols,
                             std::vector<SPoint>& corners);

/// What one of the two workers reads and writes; they share nothing that is written.
struct WorkerData {
  unsigned char*& input;
  unsigned char*& gray;
  unsigned char*& strip;
  std::vector<SPoint>& corners;
  unsigned short*& descriptors;
  unsigned short*& scratch;
  FindCorners findCorners;
  FindInStrip findInStrip;
};

void toGray(const WorkerData& data) {
  const std::size_t pixels = planeSize(InfoTh.rows, InfoTh.cols);
  if (InfoTh.channels == 3) {
    std::memset(data.gray, 0, pixels);
    rgb2Gray(data.input, InfoTh.rows, InfoTh.cols, data.gray);
  } else {
    std::memcpy(data.gray, data.input, pixels);
  }
}

void findCorners(const WorkerData& data) {
  data.corners.clear();
  if (!cpuMotorflage) {
    data.findCorners(data.gray, {0, 1, InfoTh.rows, InfoTh.cols}, data.corners);
    return;
  }
  const framequilt::AtScopeEnd release([&] { drop(data.strip); });
  ensure(data.strip,
         std::max({planeSize(imgScaleRow, imgScaleCol), planeSize(InfoTh.rows, InfoTh.cols),
                   planeSize(gray_pointdownscal_row, gray_pointdownscal_col)}));
  data.findInStrip(cpuMotordx, cpuMotordy, data.gray, InfoTh.rows, InfoTh.cols, data.corners);
}

void describeCorners(const WorkerData& data) {
  const framequilt::AtScopeEnd release([&] { drop(data.scratch); });
  const auto length = static_cast<std::size_t>(std::max(0, demesion));
  ensure(data.scratch, length);
  std::fill_n(data.descriptors, data.corners.size() * length, static_cast<unsigned short>(0));
  noRotaFeatureDescriber(data.gray, InfoTh.rows, InfoTh.cols, demesion, kPatch, data.corners,
                         data.scratch, data.descriptors);
}

std::atomic<bool> newFrameIsGray{false};

/// One job. False when the caller has not provided what it works in.
bool findAndDescribe(const WorkerData& data, bool isGray = false) {
  if (data.input == nullptr || data.gray == nullptr || data.descriptors == nullptr) return false;
  if (!isGray) toGray(data);
  findCorners(data);
  describeCorners(data);
  return true;
}

bool findInRegion(const framequilt::HintStrip& part, unsigned char* gray, int rows, int cols,
                  unsigned char* strip, FindCorners find, std::vector<SPoint>& corners) {
  imgInfo stripInfo = {};
  willBigImgAssignRowColToSmallImg(gray, part.rows.start, part.rows.end, part.cols.start,
                                   part.cols.end, rows, cols, 1, stripInfo, strip);
  find(strip, stripInfo, corners);
  for (SPoint& corner : corners) {
    corner.x += part.cols.shift;
    corner.y += part.rows.shift;
  }
  return true;
}

}  // namespace

bool getRangeCpuOne(int dx, int dy, unsigned char* gray, int rows, int cols,
                    std::vector<SPoint>& corners) {
  return findInRegion(framequilt::stripOfReference(dx, dy, rows, cols), gray, rows, cols,
                      SorTempGrayImage, findHarrisCornerCoordianteFun1, corners);
}

bool getRangeCpuTwo(int dx, int dy, unsigned char* gray, int rows, int cols,
                    std::vector<SPoint>& corners) {
  return findInRegion(framequilt::stripOfNewFrame(dx, dy, rows, cols), gray, rows, cols,
                      DestTempGrayImage, findHarrisCornerCoordianteFun2, corners);
}

void* findHarrisCornerCoordianteThreadOne(void* /*unused*/) {
  const WorkerData data = {SorImageOneIn,
                           resiz_One,
                           SorTempGrayImage,
                           HarrissCornerSPointOneArray,
                           FeatureDescriber1,
                           DescribleSymbol,
                           findHarrisCornerCoordianteFun1,
                           getRangeCpuOne};
  framequilt::laneOne().serve([&] { return findAndDescribe(data); });
  pthread_exit(nullptr);
}

void* findHarrisCornerCoordianteThreadTwo(void* /*unused*/) {
  framequilt::report("findHarrisCornerCoordianteThreadTwo in");
  framequilt::laneTwo().serve([] { return framequilt::findAndDescribeNewFrame(); });
  pthread_exit(nullptr);
}

bool framequilt::findAndDescribeNewFrame() {
  return findAndDescribe(
      {DestImageTwoIn, resiz_Two, DestTempGrayImage, HarrissCornerSPointTwoArray, FeatureDescriber2,
       DescribleSymbol1, findHarrisCornerCoordianteFun2, getRangeCpuTwo},
      newFrameIsGray);
}

void framequilt::setNewFrameIsGray(bool isGray) noexcept { newFrameIsGray = isGray; }
