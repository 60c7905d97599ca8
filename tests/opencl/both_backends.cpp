// SPDX-License-Identifier: Apache-2.0
#include "tests/opencl/both_backends.h"

#include <cmath>
#include <utility>

#include "cpu/run_state.h"
#include "cpu/stitching_run.h"
#include "framequilt/framequilt.h"
#include "imaging/imaging_state.h"
#include "opencl/OpenclJointState.h"
#include "tests/support/random_images.h"

std::vector<Bytes> contents(std::size_t count, std::uint64_t seed) {
  Random random(seed);
  std::vector<Bytes> all = {random.bytes(count), Bytes(count, 0), Bytes(count, 255)};
  Bytes extremes(count);
  Bytes sparse(count);
  for (std::size_t i = 0; i < count; ++i) {
    extremes[i] = static_cast<unsigned char>(random.between(0, 1) * 255);
    if (random.between(0, 9) == 0) sparse[i] = static_cast<unsigned char>(random.between(1, 255));
  }
  all.push_back(std::move(extremes));
  all.push_back(std::move(sparse));
  return all;
}

Frame cutOf(PlaneSize size, int channels, SPoint corner) {
  static const Scene gray(420, 500, 1, 21);
  static const Scene colour(420, 500, 3, 21);
  return (channels == 1 ? gray : colour).cut(corner.x, corner.y, size.rows, size.cols);
}

void BothBackends::SetUp() {
  ASSERT_TRUE(initJoint(kLargest.rows, kLargest.cols, 3, 1, 20000, 20000, 1, 0));
  ASSERT_TRUE(openclDeviceFlag);
  ASSERT_TRUE(initJointCpu(kLargest.rows, kLargest.cols, 3, 1, 20000, 20000));
  // The stops release them.
  const std::size_t padded = PlaneSize{kLargest.rows + 8, kLargest.cols + 8}.bytes();
  for (unsigned char** plane : {&resiz_One,
                                &resiz_Two,
                                &resiz_OneBound,
                                &resiz_TwoBound,
                                &resiz_OneBoundFilter,
                                &resiz_TwoBoundFilter,
                                &PreFrameImageGrayCpu,
                                &CurFrameImageGrayCpu,
                                &PreFrameImageGrayBoundCpu,
                                &CurFrameImageGrayBoundCpu,
                                &PreFrameImageGrayBoundTempCpu,
                                &CurFrameImageGrayBoundTempCpu,
                                &SorTempGrayImage,
                                &DestTempGrayImage,
                                &resiz_OneCL,
                                &resiz_TwoCL,
                                &resiz_OneBoundCL,
                                &resiz_TwoBoundCL,
                                &resiz_OneBoundFilterCL,
                                &resiz_TwoBoundFilterCL}) {
    ASSERT_EQ(*plane, nullptr);
    *plane = new unsigned char[padded]();
  }
  // Left by the last call of an earlier run.
  clMotorflage = cpuMotorflage = false;
  journal_.take();
}

void BothBackends::TearDown() {
  uninitJointCpu();
  uinitJoint();
}

CardPlane::CardPlane(const Bytes& bytes)
    : memory_(clCreateBuffer(context, CL_MEM_READ_WRITE | CL_MEM_COPY_HOST_PTR, bytes.size(),
                             const_cast<unsigned char*>(bytes.data()), nullptr)) {
  EXPECT_NE(memory_, nullptr);
}

CardPlane::~CardPlane() { clReleaseMemObject(memory_); }

Bytes readBack(cl_mem memory, std::size_t count) {
  Bytes bytes(count);
  EXPECT_EQ(clEnqueueReadBuffer(commandQueue, memory, CL_TRUE, 0, count, bytes.data(), 0, nullptr,
                                nullptr),
            CL_SUCCESS);
  return bytes;
}

testing::AssertionResult sameNumber(float one, float two) {
  if (one == two || (std::isnan(one) && std::isnan(two))) return testing::AssertionSuccess();
  return testing::AssertionFailure() << one << " and " << two;
}
