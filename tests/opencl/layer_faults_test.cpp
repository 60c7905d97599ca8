// SPDX-License-Identifier: Apache-2.0
#include "tests/opencl/layer_fixture.h"

using LayerFaults = LayerRunTest;

TEST_F(LayerFaults, NthCallOfAnEntryPointFailsOnce) {
  layer::failCall("clCreateBuffer", 2, CL_MEM_OBJECT_ALLOCATION_FAILURE);
  const cl_mem first = buffer(16);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(buffer(16), nullptr);
  EXPECT_EQ(status_, CL_MEM_OBJECT_ALLOCATION_FAILURE);
  const cl_mem third = buffer(16);
  EXPECT_NE(third, nullptr);
  EXPECT_EQ(status_, CL_SUCCESS);
  EXPECT_EQ(layer::live().count(layer::ObjectKind::kBuffer), 2);
  EXPECT_EQ(layer::callCount("clCreateBuffer"), 3);
  clReleaseMemObject(first);
  clReleaseMemObject(third);
}

TEST_F(LayerFaults, CreatorsWithoutStatusFailToo) {
  layer::failCall("clCreateKernel", 1, CL_OUT_OF_HOST_MEMORY);
  EXPECT_EQ(clCreateKernel(program_, "addOne", nullptr), nullptr);
}

TEST_F(LayerFaults, NthOfAllCallsFails) {
  layer::failCall(2, CL_OUT_OF_RESOURCES);
  EXPECT_EQ(clFlush(queue_), CL_SUCCESS);
  EXPECT_EQ(clFinish(queue_), CL_OUT_OF_RESOURCES);
  EXPECT_EQ(clFinish(queue_), CL_SUCCESS);
}

TEST_F(LayerFaults, LostDeviceStaysLost) {
  layer::failEveryCallFrom(2, CL_DEVICE_NOT_AVAILABLE);
  EXPECT_EQ(clFinish(queue_), CL_SUCCESS);
  EXPECT_EQ(clFinish(queue_), CL_DEVICE_NOT_AVAILABLE);
  EXPECT_EQ(clFlush(queue_), CL_DEVICE_NOT_AVAILABLE);
  layer::clearFaults();
  EXPECT_EQ(clFlush(queue_), CL_SUCCESS);
}

TEST_F(LayerFaults, FailedReleaseHasReleased) {
  const cl_mem bytes = buffer(16);
  layer::failCall("clReleaseMemObject", 1, CL_OUT_OF_RESOURCES);
  EXPECT_EQ(clReleaseMemObject(bytes), CL_OUT_OF_RESOURCES);
  EXPECT_EQ(layer::live().count(layer::ObjectKind::kBuffer), 0);
}

TEST_F(LayerFaults, FailedMapMapsNothing) {
  const cl_mem bytes = buffer(16);
  layer::failCall("clEnqueueMapBuffer", 1, CL_MAP_FAILURE);
  EXPECT_EQ(map(bytes, CL_MAP_READ, 0, 16), nullptr);
  EXPECT_EQ(status_, CL_MAP_FAILURE);
  EXPECT_EQ(layer::live().mappings(), 0);
  clReleaseMemObject(bytes);
}

TEST_F(LayerFaults, FailedUnmapLeavesItMapped) {
  const cl_mem bytes = buffer(16);
  void* const seen = map(bytes, CL_MAP_WRITE, 0, 16);
  layer::failCall("clEnqueueUnmapMemObject", 1, CL_OUT_OF_RESOURCES);
  EXPECT_EQ(unmap(bytes, seen), CL_OUT_OF_RESOURCES);
  EXPECT_EQ(layer::live().mappings(), 1);
  clReleaseMemObject(bytes);
  EXPECT_EQ(layer::live().mappings(), 0);
  EXPECT_EQ(layer::violations(), std::vector<std::string>{});
}

TEST_F(LayerFaults, FailedLaunchDoesNotRun) {
  const cl_mem bytes = buffer(1);
  const unsigned char five = 5;
  ASSERT_EQ(clEnqueueWriteBuffer(queue_, bytes, CL_TRUE, 0, 1, &five, 0, nullptr, nullptr),
            CL_SUCCESS);
  ASSERT_EQ(setAddOne(bytes, 1), CL_SUCCESS);
  layer::failCall("clEnqueueNDRangeKernel", 1, CL_OUT_OF_RESOURCES);
  EXPECT_EQ(launch(addOne_, 1), CL_OUT_OF_RESOURCES);
  EXPECT_EQ(read(bytes, 1), HostBytes{5});
  EXPECT_EQ(launch(addOne_, 1), CL_SUCCESS);
  EXPECT_EQ(read(bytes, 1), HostBytes{6});
  clReleaseMemObject(bytes);
}

TEST_F(LayerFaults, LogHasEveryCallInOrder) {
  layer::resetRecords();
  layer::failCall("clFinish", 1, CL_OUT_OF_RESOURCES);
  clFlush(queue_);
  clFinish(queue_);
  clFlush(nullptr);
  EXPECT_EQ(layer::callLog(), (std::vector<std::string>{"clFlush", "clFinish", "clFlush"}));
  EXPECT_EQ(layer::callCount(), 3);
  EXPECT_EQ(layer::callCount("clFlush"), 2);
  EXPECT_EQ(layer::callCount("clFin"), 0);
}

// The walk that tests of a whole run do: every call fails once, nothing leaks, nothing is misused.
TEST_F(LayerFaults, EveryCallOfARunCanFail) {
  const auto run = [this] {
    const cl_mem bytes = clCreateBuffer(context_, CL_MEM_READ_WRITE, 64, nullptr, nullptr);
    if (bytes == nullptr) return false;
    const bool launched = setAddOne(bytes, 64) == CL_SUCCESS && launch(addOne_, 64) == CL_SUCCESS &&
                          clFinish(queue_) == CL_SUCCESS;
    return clReleaseMemObject(bytes) == CL_SUCCESS && launched;
  };
  layer::resetRecords();
  ASSERT_TRUE(run());
  const long calls = layer::callCount();
  ASSERT_EQ(calls, 6);
  const int before = layer::live().count();
  for (int nth = 1; nth <= calls; ++nth) {
    layer::failCall(nth, CL_OUT_OF_RESOURCES);
    EXPECT_FALSE(run()) << nth;
    layer::clearFaults();
    EXPECT_EQ(layer::live().count(), before) << nth;
  }
  EXPECT_TRUE(run());
  EXPECT_EQ(layer::violations(), std::vector<std::string>{});
}

TEST_F(LayerFaults, PausesChangeNoResult) {
  layer::jitter(7, std::chrono::microseconds(200));
  const cl_mem bytes = buffer(1);
  const unsigned char zero = 0;
  clEnqueueWriteBuffer(queue_, bytes, CL_TRUE, 0, 1, &zero, 0, nullptr, nullptr);
  ASSERT_EQ(setAddOne(bytes, 1), CL_SUCCESS);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(launch(addOne_, 1), CL_SUCCESS);
  EXPECT_EQ(read(bytes, 1), HostBytes{20});
  clReleaseMemObject(bytes);
}
