// SPDX-License-Identifier: Apache-2.0
#include <thread>

#include "tests/opencl/layer_fixture.h"

using layer::ObjectKind;
using layer::TraceKind;
using Sentences = std::vector<std::string>;

namespace {

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

std::vector<layer::TraceEvent> eventsOf(TraceKind kind) {
  std::vector<layer::TraceEvent> found;
  for (const layer::TraceEvent& event : layer::trace()) {
    if (event.kind == kind) found.push_back(event);
  }
  return found;
}

}  // namespace

using LayerBooks = LayerRunTest;

TEST_F(LayerBooks, LivingObjectsAreListed) {
  EXPECT_EQ(layer::live().count(), 4);
  EXPECT_EQ(layer::live().count(ObjectKind::kContext), 1);
  EXPECT_EQ(layer::live().count(ObjectKind::kQueue), 1);
  EXPECT_EQ(layer::live().count(ObjectKind::kProgram), 1);
  EXPECT_EQ(layer::live().count(ObjectKind::kKernel), 1);

  const cl_mem kept = buffer(48);
  EXPECT_EQ(clRetainMemObject(kept), CL_SUCCESS);
  EXPECT_EQ(clReleaseMemObject(kept), CL_SUCCESS);
  ASSERT_EQ(layer::live().count(ObjectKind::kBuffer), 1) << "retained once, released once";
  const layer::LiveObject leaked = layer::live().objects.back();
  EXPECT_EQ(leaked.handle, kept);
  EXPECT_EQ(leaked.bytes, 48u);
  EXPECT_EQ(leaked.references, 1);
  EXPECT_EQ(clReleaseMemObject(kept), CL_SUCCESS);
  EXPECT_EQ(layer::live().count(ObjectKind::kBuffer), 0);
  EXPECT_EQ(layer::violations(), Sentences{});
}

TEST_F(LayerBooks, EventsAreOnTheBooks) {
  cl_event done = nullptr;
  ASSERT_EQ(clEnqueueMarkerWithWaitList(queue_, 0, nullptr, &done), CL_SUCCESS);
  EXPECT_EQ(layer::live().count(ObjectKind::kEvent), 1);
  EXPECT_EQ(clWaitForEvents(1, &done), CL_SUCCESS);
  EXPECT_EQ(clReleaseEvent(done), CL_SUCCESS);
  EXPECT_EQ(clWaitForEvents(1, &done), CL_INVALID_EVENT);
  EXPECT_EQ(layer::violations().size(), 1u);
}

TEST_F(LayerBooks, ReleasedObjectsCanBeForgotten) {
  const cl_mem bytes = buffer(16);
  const cl_mem kept = buffer(32);
  ASSERT_EQ(setAddOne(kept, 32), CL_SUCCESS);
  EXPECT_EQ(clReleaseMemObject(bytes), CL_SUCCESS);
  layer::forgetReleased();
  EXPECT_EQ(clReleaseMemObject(bytes), CL_INVALID_MEM_OBJECT);
  EXPECT_EQ(layer::violations(), Sentences{"clReleaseMemObject: unknown buffer"});
  // What lives is still known, and so are its arguments.
  EXPECT_EQ(launch(addOne_, 32), CL_SUCCESS);
  // A driver may still be compiling when the process ends.
  EXPECT_EQ(clFinish(queue_), CL_SUCCESS);
  EXPECT_EQ(clReleaseMemObject(kept), CL_SUCCESS);
  EXPECT_EQ(layer::violations().size(), 1u);
}

TEST_F(LayerBooks, SecondReleaseIsRefused) {
  const cl_mem bytes = buffer(16);
  EXPECT_EQ(clReleaseMemObject(bytes), CL_SUCCESS);
  EXPECT_EQ(clReleaseMemObject(bytes), CL_INVALID_MEM_OBJECT);
  ASSERT_EQ(layer::violations().size(), 1u);
  EXPECT_TRUE(contains(layer::violations()[0], "clReleaseMemObject: buffer #"));
  EXPECT_TRUE(contains(layer::violations()[0], " of 16 bytes was released before"));
}

TEST_F(LayerBooks, NullAndMistakenHandlesAreRefused) {
  EXPECT_EQ(clReleaseKernel(nullptr), CL_INVALID_KERNEL);
  EXPECT_EQ(clFinish(nullptr), CL_INVALID_COMMAND_QUEUE);
  EXPECT_EQ(clReleaseMemObject(reinterpret_cast<cl_mem>(queue_)), CL_INVALID_MEM_OBJECT);
  cl_int status = CL_SUCCESS;
  EXPECT_EQ(clCreateBuffer(nullptr, 0, 1, nullptr, &status), nullptr);
  EXPECT_EQ(status, CL_INVALID_CONTEXT);
  const Sentences found = layer::violations();
  ASSERT_EQ(found.size(), 4u);
  EXPECT_EQ(found[0], "clReleaseKernel: null kernel");
  EXPECT_EQ(found[1], "clFinish: null queue");
  EXPECT_TRUE(contains(found[2], " is no buffer"));
  EXPECT_EQ(found[3], "clCreateBuffer: null context");
}

TEST_F(LayerBooks, CallsThatCannotBeFollowedAreRefused) {
  cl_int status = CL_SUCCESS;
  EXPECT_EQ(clCreateUserEvent(context_, &status), nullptr);
  EXPECT_EQ(status, CL_INVALID_OPERATION);
  EXPECT_EQ(layer::violations(), Sentences{"clCreateUserEvent: the layer does not know this call"});
}

TEST_F(LayerBooks, ReleasedBufferIsNoArgument) {
  const cl_mem bytes = buffer(16);
  clReleaseMemObject(bytes);
  EXPECT_EQ(setAddOne(bytes, 16), CL_INVALID_MEM_OBJECT);
  EXPECT_EQ(layer::violations(),
            Sentences{"clSetKernelArg: kernel addOne: argument 0 is a buffer that was released "
                      "before"});
}

TEST_F(LayerBooks, LaunchWithABufferReleasedSinceIsRefused) {
  const cl_mem bytes = buffer(16);
  ASSERT_EQ(setAddOne(bytes, 16), CL_SUCCESS);
  clReleaseMemObject(bytes);
  EXPECT_EQ(launch(addOne_, 16), CL_INVALID_KERNEL_ARGS);
  EXPECT_EQ(layer::violations(),
            Sentences{"clEnqueueNDRangeKernel: kernel addOne: argument 0 is a buffer that was "
                      "released before"});
}

TEST_F(LayerBooks, LaunchWithABufferThatHasANewOneInItsPlaceIsRefused) {
  // Addresses come back soon, and need not.
  for (int attempt = 0; attempt < 100; ++attempt) {
    const cl_mem old = buffer(16);
    ASSERT_EQ(setAddOne(old, 16), CL_SUCCESS);
    clReleaseMemObject(old);
    const cl_mem fresh = buffer(16);
    layer::resetRecords();
    EXPECT_EQ(launch(addOne_, 16), CL_INVALID_KERNEL_ARGS);
    EXPECT_EQ(layer::violations().size(), 1u);
    clReleaseMemObject(fresh);
    if (fresh == old) break;
  }
}

TEST_F(LayerBooks, LaunchWithANullBufferIsRefused) {
  ASSERT_EQ(setAddOne(nullptr, 16), CL_SUCCESS);
  EXPECT_EQ(launch(addOne_, 16), CL_INVALID_KERNEL_ARGS);
  ASSERT_EQ(clSetKernelArg(addOne_, 0, sizeof(cl_mem), nullptr), CL_SUCCESS);
  EXPECT_EQ(launch(addOne_, 16), CL_INVALID_KERNEL_ARGS);
  const std::string sentence = "clEnqueueNDRangeKernel: kernel addOne: argument 0 is a null buffer";
  EXPECT_EQ(layer::violations(), (Sentences{sentence, sentence}));
}

TEST_F(LayerBooks, LaunchOnAMappedBufferIsRefused) {
  const cl_mem bytes = buffer(16);
  ASSERT_EQ(setAddOne(bytes, 16), CL_SUCCESS);
  void* const first = map(bytes, CL_MAP_READ, 0, 8);
  EXPECT_EQ(layer::live().mappings(), 1);
  EXPECT_EQ(launch(addOne_, 16), CL_INVALID_KERNEL_ARGS);
  EXPECT_EQ(layer::violations(),
            Sentences{"clEnqueueNDRangeKernel: kernel addOne: argument 0 is a mapped buffer"});
  EXPECT_EQ(unmap(bytes, first), CL_SUCCESS);
  EXPECT_EQ(launch(addOne_, 16), CL_SUCCESS);
  EXPECT_EQ(layer::violations().size(), 1u);
  clFinish(queue_);
  clReleaseMemObject(bytes);
}

TEST_F(LayerBooks, UnmapOfAnotherPointerIsRefused) {
  const cl_mem bytes = buffer(16);
  unsigned char other = 0;
  EXPECT_EQ(unmap(bytes, &other), CL_INVALID_VALUE);
  EXPECT_EQ(layer::violations().size(), 1u);
  clReleaseMemObject(bytes);
}

TEST_F(LayerBooks, ArgumentsSetByTwoThreadsAreReportedOnce) {
  const cl_mem bytes = buffer(16);
  ASSERT_EQ(setAddOne(bytes, 16), CL_SUCCESS);
  int other = 0;
  std::thread([&] {
    other = layer::threadNumber();
    EXPECT_EQ(setAddOne(bytes, 16), CL_SUCCESS);
  }).join();
  EXPECT_EQ(layer::violations(),
            Sentences{"clSetKernelArg: kernel addOne: arguments set by threads " +
                      std::to_string(layer::threadNumber()) + " and " + std::to_string(other)});

  clReleaseKernel(addOne_);
  layer::resetRecords();
  std::thread([&] {
    addOne_ = clCreateKernel(program_, "addOne", nullptr);
    EXPECT_EQ(setAddOne(bytes, 16), CL_SUCCESS);
  }).join();
  EXPECT_EQ(layer::violations(), Sentences{}) << "a new kernel belongs to nobody yet";
  clReleaseMemObject(bytes);
}

TEST_F(LayerBooks, KernelsOnTheListMayBeShared) {
  layer::allowSharedKernel("copyBytes");
  const cl_mem bytes = buffer(16);
  const cl_kernel copy = clCreateKernel(program_, "copyBytes", nullptr);
  const auto set = [&] { clSetKernelArg(copy, 0, sizeof(cl_mem), &bytes); };
  set();
  std::thread(set).join();
  EXPECT_EQ(layer::violations(), Sentences{});
  clReleaseKernel(copy);
  clReleaseMemObject(bytes);
}

TEST_F(LayerBooks, TraceHasSizesNamesAndThreads) {
  layer::resetRecords();
  HostBytes host(64, 3);
  const cl_mem bytes = buffer(64, CL_MEM_READ_WRITE | CL_MEM_COPY_HOST_PTR, host.data());
  ASSERT_EQ(setAddOne(bytes, 60), CL_SUCCESS);
  const std::array<std::size_t, 2> global{32, 2};
  const std::array<std::size_t, 2> local{8, 1};
  ASSERT_EQ(clEnqueueNDRangeKernel(queue_, addOne_, 2, nullptr, global.data(), local.data(), 0,
                                   nullptr, nullptr),
            CL_SUCCESS);
  unsigned char* const seen = map(bytes, CL_MAP_READ, 4, 8);
  ASSERT_EQ(unmap(bytes, seen), CL_SUCCESS);
  ASSERT_EQ(clFinish(queue_), CL_SUCCESS);
  clReleaseMemObject(bytes);

  const auto events = layer::trace();
  std::vector<TraceKind> kinds;
  for (const auto& event : events) {
    kinds.push_back(event.kind);
    EXPECT_EQ(event.thread, layer::threadNumber());
  }
  ASSERT_EQ(kinds,
            (std::vector<TraceKind>{TraceKind::kCreate, TraceKind::kSetArgument,
                                    TraceKind::kSetArgument, TraceKind::kLaunch, TraceKind::kMap,
                                    TraceKind::kUnmap, TraceKind::kFinish, TraceKind::kRelease}));
  EXPECT_EQ(events[0].object, ObjectKind::kBuffer);
  EXPECT_EQ(events[0].bytes, 64u);
  EXPECT_EQ(events[0].flags, cl_mem_flags{CL_MEM_READ_WRITE | CL_MEM_COPY_HOST_PTR});
  EXPECT_EQ(events[0].pointer, host.data());
  EXPECT_GT(events[0].number, 0);
  EXPECT_EQ(events[0].number, events[4].number);
  EXPECT_EQ(events[0].number, events[7].number);
  EXPECT_EQ(events[2].kernel, "addOne");
  EXPECT_EQ(events[2].argument, 1u);
  EXPECT_EQ(events[2].value, (HostBytes{60, 0, 0, 0}));
  EXPECT_EQ(events[3].kernel, "addOne");
  EXPECT_EQ(events[3].queue, queue_);
  EXPECT_EQ(events[3].globalOffset, std::vector<std::size_t>{});
  EXPECT_EQ(events[3].globalSize, (std::vector<std::size_t>{32, 2}));
  EXPECT_EQ(events[3].localSize, (std::vector<std::size_t>{8, 1}));
  EXPECT_EQ(events[3].buffers, std::vector<const void*>{bytes});
  EXPECT_EQ(events[4].handle, bytes);
  EXPECT_EQ(events[4].mapFlags, cl_map_flags{CL_MAP_READ});
  EXPECT_TRUE(events[4].blocking);
  EXPECT_EQ(events[4].offset, 4u);
  EXPECT_EQ(events[4].bytes, 8u);
  EXPECT_EQ(events[5].pointer, events[4].pointer);
}

TEST_F(LayerBooks, FailedCallsLeaveNoTrace) {
  layer::resetRecords();
  layer::failCall("clFinish", 1, CL_OUT_OF_RESOURCES);
  clFinish(queue_);
  EXPECT_EQ(eventsOf(TraceKind::kFinish).size(), 0u);
  clFinish(queue_);
  EXPECT_EQ(eventsOf(TraceKind::kFinish).size(), 1u);
}

TEST_F(LayerBooks, ThreadsMayWorkSideBySide) {
  const auto work = [this](const char*) {
    const cl_kernel own = clCreateKernel(program_, "addOne", nullptr);
    for (int i = 0; i < 20; ++i) {
      const cl_mem bytes = clCreateBuffer(context_, CL_MEM_READ_WRITE, 16, nullptr, nullptr);
      const int count = 16;
      clSetKernelArg(own, 0, sizeof(cl_mem), &bytes);
      clSetKernelArg(own, 1, sizeof count, &count);
      EXPECT_EQ(launch(own, 16), CL_SUCCESS);
      EXPECT_EQ(clFinish(queue_), CL_SUCCESS);
      EXPECT_EQ(clReleaseMemObject(bytes), CL_SUCCESS);
    }
    clReleaseKernel(own);
  };
  std::thread one(work, "one");
  std::thread two(work, "two");
  one.join();
  two.join();
  EXPECT_EQ(layer::violations(), Sentences{});
  EXPECT_EQ(eventsOf(TraceKind::kLaunch).size(), 40u);
}
