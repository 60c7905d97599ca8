// SPDX-License-Identifier: Apache-2.0
/// \file
/// A queue and two small kernels on the layer's device.
#pragma once

#include <CL/cl.h>
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "tests/support/opencl_layer.h"

namespace layer = framequilt::opencl_layer;

using HostBytes = std::vector<unsigned char>;

class LayerTest : public testing::Test {
 protected:
  LayerTest() { resetLayer(); }
  ~LayerTest() override { resetLayer(); }

  static void resetLayer() {
    layer::presentDefault();
    layer::clearFaults();
    layer::discreteMemory(false);
    layer::jitter(0, std::chrono::microseconds(0));
    layer::resetRecords();
  }
};

/// Everything up to kernels, made through the plain calls.
class LayerRunTest : public LayerTest {
 protected:
  static constexpr const char* kSource = R"(
__kernel void addOne(__global uchar* bytes, int count) {
  const int i = get_global_id(0);
  if (i < count) bytes[i] += 1;
}
__kernel void copyBytes(__global const uchar* from, __global uchar* to) {
  const int i = get_global_id(0);
  to[i] = from[i];
}
)";

  void SetUp() override {
    ASSERT_EQ(clGetPlatformIDs(1, &platform_, nullptr), CL_SUCCESS);
    ASSERT_EQ(clGetDeviceIDs(platform_, CL_DEVICE_TYPE_GPU, 1, &device_, nullptr), CL_SUCCESS);
    context_ = clCreateContext(nullptr, 1, &device_, nullptr, nullptr, &status_);
    ASSERT_EQ(status_, CL_SUCCESS);
    queue_ = clCreateCommandQueue(context_, device_, 0, &status_);
    ASSERT_EQ(status_, CL_SUCCESS);
    const char* source = kSource;
    program_ = clCreateProgramWithSource(context_, 1, &source, nullptr, &status_);
    ASSERT_EQ(status_, CL_SUCCESS);
    ASSERT_EQ(clBuildProgram(program_, 0, nullptr, nullptr, nullptr, nullptr), CL_SUCCESS);
    addOne_ = clCreateKernel(program_, "addOne", &status_);
    ASSERT_EQ(status_, CL_SUCCESS);
  }

  void TearDown() override {
    clReleaseKernel(addOne_);
    clReleaseProgram(program_);
    clReleaseCommandQueue(queue_);
    clReleaseContext(context_);
    EXPECT_EQ(layer::live().count(), 0);
  }

  cl_mem buffer(std::size_t bytes, cl_mem_flags flags = CL_MEM_READ_WRITE, void* host = nullptr) {
    return clCreateBuffer(context_, flags, bytes, host, &status_);
  }

  cl_int setAddOne(cl_mem bytes, int count) {
    const cl_int first = clSetKernelArg(addOne_, 0, sizeof(cl_mem), &bytes);
    const cl_int second = clSetKernelArg(addOne_, 1, sizeof count, &count);
    return first != CL_SUCCESS ? first : second;
  }

  cl_int launch(cl_kernel kernel, std::size_t items) {
    return clEnqueueNDRangeKernel(queue_, kernel, 1, nullptr, &items, nullptr, 0, nullptr, nullptr);
  }

  unsigned char* map(cl_mem buffer, cl_map_flags flags, std::size_t offset, std::size_t bytes) {
    return static_cast<unsigned char*>(clEnqueueMapBuffer(queue_, buffer, CL_TRUE, flags, offset,
                                                          bytes, 0, nullptr, nullptr, &status_));
  }

  cl_int unmap(cl_mem buffer, void* pointer) {
    return clEnqueueUnmapMemObject(queue_, buffer, pointer, 0, nullptr, nullptr);
  }

  HostBytes read(cl_mem buffer, std::size_t bytes) {
    HostBytes host(bytes);
    EXPECT_EQ(
        clEnqueueReadBuffer(queue_, buffer, CL_TRUE, 0, bytes, host.data(), 0, nullptr, nullptr),
        CL_SUCCESS);
    return host;
  }

  cl_platform_id platform_ = nullptr;
  cl_device_id device_ = nullptr;
  cl_context context_ = nullptr;
  cl_command_queue queue_ = nullptr;
  cl_program program_ = nullptr;
  cl_kernel addOne_ = nullptr;
  cl_int status_ = CL_SUCCESS;
};
