// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "tests/opencl/layer_fixture.h"

namespace {

class LayerCard : public LayerRunTest {
 protected:
  LayerCard() { layer::discreteMemory(true); }
};

class LayerCardDeath : public LayerCard {
 protected:
  // The runtime has threads, which a plain fork would lose.
  LayerCardDeath() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

}  // namespace

TEST_F(LayerCard, HostMemoryChangesAtTheMapOnly) {
  HostBytes host(64, 10);
  const cl_mem bytes = buffer(64, CL_MEM_READ_WRITE | CL_MEM_USE_HOST_PTR, host.data());
  ASSERT_EQ(setAddOne(bytes, 64), CL_SUCCESS);
  ASSERT_EQ(launch(addOne_, 64), CL_SUCCESS);
  ASSERT_EQ(clFinish(queue_), CL_SUCCESS);
  EXPECT_EQ(host, HostBytes(64, 10));

  unsigned char* const seen = map(bytes, CL_MAP_READ, 16, 32);
  EXPECT_EQ(seen, host.data() + 16);
  EXPECT_TRUE(std::all_of(host.begin(), host.begin() + 16, [](int b) { return b == 10; }));
  EXPECT_TRUE(std::all_of(host.begin() + 16, host.begin() + 48, [](int b) { return b == 11; }));
  EXPECT_TRUE(std::all_of(host.begin() + 48, host.end(), [](int b) { return b == 10; }));
  EXPECT_EQ(unmap(bytes, seen), CL_SUCCESS);
  clReleaseMemObject(bytes);
  EXPECT_EQ(layer::violations(), std::vector<std::string>{});
}

TEST_F(LayerCard, WhatTheHostWritesWithoutAMapStaysOnTheHost) {
  HostBytes host(8, 10);
  const cl_mem bytes = buffer(8, CL_MEM_READ_WRITE | CL_MEM_USE_HOST_PTR, host.data());
  std::fill(host.begin(), host.end(), static_cast<unsigned char>(99));
  EXPECT_EQ(read(bytes, 8), HostBytes(8, 10));
  clReleaseMemObject(bytes);
}

TEST_F(LayerCard, MapForWritingReachesTheCardAtTheUnmap) {
  HostBytes host(8, 10);
  const cl_mem over = buffer(8, CL_MEM_READ_WRITE | CL_MEM_USE_HOST_PTR, host.data());
  const cl_mem own = buffer(8, CL_MEM_READ_WRITE | CL_MEM_COPY_HOST_PTR, host.data());
  for (const cl_mem bytes : {over, own}) {
    unsigned char* const seen = map(bytes, CL_MAP_WRITE, 2, 3);
    ASSERT_NE(seen, nullptr);
    EXPECT_EQ(seen[1], 10) << "a map for writing shows what is there";
    seen[1] = 20;
    EXPECT_EQ(read(bytes, 8), HostBytes(8, 10));
    EXPECT_EQ(unmap(bytes, seen), CL_SUCCESS);
    EXPECT_EQ(read(bytes, 8), (HostBytes{10, 10, 10, 20, 10, 10, 10, 10}));
    clReleaseMemObject(bytes);
  }
}

TEST_F(LayerCard, MapForReadingWritesNothingBack) {
  HostBytes host(8, 10);
  const cl_mem bytes = buffer(8, CL_MEM_READ_WRITE | CL_MEM_COPY_HOST_PTR, host.data());
  unsigned char* const seen = map(bytes, CL_MAP_READ, 0, 8);
  seen[0] = 20;
  EXPECT_EQ(unmap(bytes, seen), CL_SUCCESS);
  EXPECT_EQ(read(bytes, 8), HostBytes(8, 10));
  clReleaseMemObject(bytes);
}

TEST_F(LayerCard, InvalidatingMapShowsNothingOfUse) {
  HostBytes host(8, 10);
  const cl_mem bytes = buffer(8, CL_MEM_READ_WRITE | CL_MEM_COPY_HOST_PTR, host.data());
  unsigned char* const seen = map(bytes, CL_MAP_WRITE_INVALIDATE_REGION, 0, 4);
  EXPECT_EQ(HostBytes(seen, seen + 4), HostBytes(4, 0xCD));
  std::fill(seen, seen + 4, static_cast<unsigned char>(1));
  EXPECT_EQ(unmap(bytes, seen), CL_SUCCESS);
  EXPECT_EQ(read(bytes, 8), (HostBytes{1, 1, 1, 1, 10, 10, 10, 10}));
  clReleaseMemObject(bytes);
}

TEST_F(LayerCard, MapsThatAskNotToWaitHaveTheirData) {
  HostBytes host(8, 10);
  const cl_mem bytes = buffer(8, CL_MEM_READ_WRITE | CL_MEM_COPY_HOST_PTR, host.data());
  ASSERT_EQ(setAddOne(bytes, 8), CL_SUCCESS);
  ASSERT_EQ(launch(addOne_, 8), CL_SUCCESS);
  layer::resetRecords();
  cl_event done = nullptr;
  auto* const seen = static_cast<unsigned char*>(
      clEnqueueMapBuffer(queue_, bytes, CL_FALSE, CL_MAP_READ, 0, 8, 0, nullptr, &done, &status_));
  ASSERT_EQ(status_, CL_SUCCESS);
  EXPECT_EQ(HostBytes(seen, seen + 8), HostBytes(8, 11));
  EXPECT_FALSE(layer::trace().back().blocking);
  EXPECT_EQ(clWaitForEvents(1, &done), CL_SUCCESS);
  clReleaseEvent(done);
  ASSERT_EQ(clEnqueueUnmapMemObject(queue_, bytes, seen, 0, nullptr, &done), CL_SUCCESS);
  EXPECT_EQ(clWaitForEvents(1, &done), CL_SUCCESS);
  clReleaseEvent(done);
  clReleaseMemObject(bytes);
}

TEST_F(LayerCard, MapOutsideTheBufferIsRefused) {
  const cl_mem bytes = buffer(8);
  EXPECT_EQ(map(bytes, CL_MAP_READ, 4, 5), nullptr);
  EXPECT_EQ(status_, CL_INVALID_VALUE);
  clReleaseMemObject(bytes);
}

TEST_F(LayerCard, BuffersSayWhatTheyWereMadeWith) {
  HostBytes host(8, 10);
  const cl_mem_flags flags = CL_MEM_READ_ONLY | CL_MEM_USE_HOST_PTR;
  const cl_mem bytes = buffer(8, flags, host.data());
  cl_mem_flags answered = 0;
  EXPECT_EQ(clGetMemObjectInfo(bytes, CL_MEM_FLAGS, sizeof answered, &answered, nullptr),
            CL_SUCCESS);
  EXPECT_EQ(answered, flags);
  void* pointer = nullptr;
  EXPECT_EQ(clGetMemObjectInfo(bytes, CL_MEM_HOST_PTR, sizeof pointer, &pointer, nullptr),
            CL_SUCCESS);
  EXPECT_EQ(pointer, host.data());
  clReleaseMemObject(bytes);
}

TEST_F(LayerCard, BothMemoriesGiveTheSameResults) {
  const auto run = [this] {
    HostBytes from(256);
    for (int i = 0; i < 256; ++i) from[static_cast<std::size_t>(i)] = static_cast<unsigned char>(i);
    const cl_mem source = buffer(256, CL_MEM_READ_WRITE | CL_MEM_USE_HOST_PTR, from.data());
    const cl_mem copied = buffer(256);
    const cl_kernel copy = clCreateKernel(program_, "copyBytes", nullptr);
    EXPECT_EQ(setAddOne(source, 100), CL_SUCCESS);
    EXPECT_EQ(launch(addOne_, 256), CL_SUCCESS);
    clSetKernelArg(copy, 0, sizeof(cl_mem), &source);
    clSetKernelArg(copy, 1, sizeof(cl_mem), &copied);
    EXPECT_EQ(launch(copy, 256), CL_SUCCESS);
    unsigned char* const seen = map(copied, CL_MAP_READ, 0, 256);
    HostBytes result(seen, seen + 256);
    EXPECT_EQ(unmap(copied, seen), CL_SUCCESS);
    EXPECT_EQ(clFinish(queue_), CL_SUCCESS);
    clReleaseKernel(copy);
    clReleaseMemObject(copied);
    clReleaseMemObject(source);
    return result;
  };
  const HostBytes onCard = run();
  EXPECT_EQ(onCard[99], 100);
  EXPECT_EQ(onCard[100], 100);
  layer::discreteMemory(false);
  EXPECT_EQ(run(), onCard);
  EXPECT_EQ(layer::violations(), std::vector<std::string>{});
}

TEST_F(LayerCardDeath, MemoryIsGoneAfterTheUnmap) {
  const cl_mem bytes = buffer(8);
  volatile unsigned char* const seen = map(bytes, CL_MAP_READ, 0, 8);
  ASSERT_NE(seen, nullptr);
  ASSERT_EQ(unmap(bytes, const_cast<unsigned char*>(seen)), CL_SUCCESS);
  EXPECT_DEATH((void)seen[3], "");

  volatile unsigned char* const again = map(bytes, CL_MAP_READ, 0, 8);
  EXPECT_EQ(again, seen);
  (void)again[3];
  ASSERT_EQ(unmap(bytes, const_cast<unsigned char*>(again)), CL_SUCCESS);
  clReleaseMemObject(bytes);
}
