// SPDX-License-Identifier: Apache-2.0
#include "opencl/OpenclJointFusion.h"

#include <cstddef>
#include <cstring>

#include "cpu/placement_rules.h"
#include "imaging/fusion.h"
#include "imaging/pixel_math.h"
#include "interface/report.h"
#include "opencl/OpenclJointKernels.h"

namespace {

using framequilt::Bytes;
using framequilt::Floats;
using framequilt::HostBuffer;
using framequilt::Mapping;
using framequilt::pixelGrid;
using framequilt::planeSize;

bool refuseNull() {
  framequilt::report("ptr is null");
  return false;
}

constexpr int kColour = 3;

std::size_t imageBytes(int rows, int cols, bool colour) {
  return planeSize(rows, cols, colour ? kColour : 1);
}

/// Masks of both images (255 where there is content, else 0) into the two distance maps.
bool maskBoth(unsigned char* a, unsigned char* b, int rows, int cols, int channels) {
  const bool colour = channels == kColour;
  const std::size_t bytes = imageBytes(rows, cols, colour);
  HostBuffer one(a, bytes);
  HostBuffer two(b, bytes);
  const auto& mask = colour ? framequilt::maskColour : framequilt::maskGray;
  errNum = one.status() | two.status();
  if (errNum != CL_SUCCESS) return false;
  errNum = mask(pixelGrid(rows, cols), one.bytes(), two.bytes(), rows, cols,
                Floats{AreaImageOneGaryFloatCL}, Floats{AreaImageTwoGaryFloatCL});
  if (errNum != CL_SUCCESS) return false;
  // Spreading begins with a wait.
  one.settle();
  two.settle();
  return true;
}

/// The two raster passes are chains from pixel to pixel: the host runs them on the mapped maps.
bool spreadBoth(int rows, int cols) {
  const std::size_t bytes = planeSize(rows, cols) * sizeof(float);
  constexpr cl_map_flags kBothWays = CL_MAP_READ | CL_MAP_WRITE;
  Mapping one(AreaImageOneGaryFloatCL, bytes, kBothWays, Mapping::Wait::kNot);
  Mapping two(AreaImageTwoGaryFloatCL, bytes, kBothWays, Mapping::Wait::kForAll);
  errNum = one.status() | two.status();
  if (errNum != CL_SUCCESS) {
    // The first may still be under way.
    framequilt::finishQueue();
    return false;
  }
  framequilt::spreadDistances(one.floats(), two.floats(), rows, cols);
  errNum = one.unmap() | two.unmap();
  return errNum == CL_SUCCESS;
}

/// Fuses into `ImageReCL`.
bool fuseBoth(unsigned char* a, unsigned char* b, int rows, int cols, int channels) {
  // As on the host, three bytes a pixel from two channels on.
  const bool colour = framequilt::isColour(channels);
  const std::size_t bytes = imageBytes(rows, cols, colour);
  HostBuffer one(a, bytes);
  HostBuffer two(b, bytes);
  const auto& fuse = colour ? framequilt::fuseColour : framequilt::fuseGray;
  errNum = one.status() | two.status();
  if (errNum != CL_SUCCESS) return false;
  errNum = fuse(pixelGrid(rows, cols), one.bytes(), two.bytes(), Bytes{AreaImageOneWeightCL}, rows,
                cols, Bytes{ImageReCL});
  if (errNum != CL_SUCCESS) return false;
  // The result is waited for.
  one.settle();
  two.settle();
  return true;
}

}  // namespace

bool weightofTwoAreaFunCL(unsigned char* a, unsigned char* b, int rows, int cols, int channels,
                          int /*unused*/) {
  if (a == nullptr || b == nullptr) return refuseNull();
  if (!maskBoth(a, b, rows, cols, channels) || !spreadBoth(rows, cols)) return false;
  errNum =
      framequilt::weigh(pixelGrid(rows, cols), Floats{AreaImageOneGaryFloatCL},
                        Floats{AreaImageTwoGaryFloatCL}, rows, cols, Bytes{AreaImageOneWeightCL});
  return errNum == CL_SUCCESS;
}

bool twoImageFusionCL(unsigned char* a, unsigned char* b, int channels, int unused, int rows,
                      int cols) {
  if (a == nullptr || b == nullptr) return refuseNull();
  if (!weightofTwoAreaFunCL(a, b, rows, cols, channels, unused)) return false;

  if (!fuseBoth(a, b, rows, cols, channels)) return false;
  const std::size_t bytes = planeSize(rows, cols, channels);
  const Mapping fused(ImageReCL, bytes, CL_MAP_READ, Mapping::Wait::kForAll);
  errNum = fused.status();
  if (fused.bytes() == nullptr) {
    framequilt::finishQueue();
    return false;
  }
  std::memcpy(a, fused.bytes(), bytes);
  return true;
}
