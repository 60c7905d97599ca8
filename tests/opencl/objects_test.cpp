// SPDX-License-Identifier: Apache-2.0
// The kernels and buffers of a run: creation, messages, release.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "opencl/OpenclJoint.h"
#include "opencl/OpenclJointObjects.h"
#include "opencl/OpenclJointState.h"
#include "tests/opencl/device_fixture.h"
#include "tests/opencl/journal.h"
#include "tests/opencl/run_objects.h"
#include "tests/support/captured_output.h"

namespace layer = framequilt::opencl_layer;

namespace {

using layer::ObjectKind;
using layer::TraceEvent;
using layer::TraceKind;
using Handles = std::vector<const void*>;

std::vector<TraceEvent> events(TraceKind kind, ObjectKind object) {
  std::vector<TraceEvent> found;
  for (const TraceEvent& event : layer::trace()) {
    if (event.kind == kind && event.object == object) found.push_back(event);
  }
  return found;
}

Handles handlesOf(const std::vector<TraceEvent>& list) {
  Handles handles;
  for (const TraceEvent& event : list) handles.push_back(event.handle);
  return handles;
}

std::vector<std::string> kernelsOf(const std::vector<TraceEvent>& list) {
  std::vector<std::string> names;
  for (const TraceEvent& event : list) names.push_back(event.kernel);
  return names;
}

/// Names in the kernel file from row `first` on.
std::vector<std::string> namesFrom(std::size_t first) {
  std::vector<std::string> names;
  for (std::size_t i = first; i < kernelsOfRun().size(); ++i) {
    names.push_back(kernelsOfRun()[i].name);
  }
  return names;
}

Handles kernelHandles() {
  Handles handles;
  for (const KernelOfRun& row : kernelsOfRun()) handles.push_back(*row.global);
  return handles;
}

Handles bufferHandles() {
  Handles handles;
  for (const BufferOfRun& row : buffersOfRun()) handles.push_back(*row.global);
  return handles;
}

Handles buffersAsReleased() {
  Handles handles;
  for (const std::size_t row : buffersInOrderOfRelease()) {
    handles.push_back(*buffersOfRun()[row].global);
  }
  return handles;
}

class Objects : public DeviceFixture {
 protected:
  Objects() {
    context = CreateContext(&device);
    journal_.take();
  }
  ~Objects() override {
    layer::clearFaults();
    Cleanup();
    releaseKeptBuffer();
    EXPECT_EQ(layer::live().count(), 0);
    imgScaleRowCL = imgScaleColCL = 0;
  }

  void SetUp() override { ASSERT_NE(context, nullptr); }

  Journal journal_;
};

class Kernels : public Objects {
 protected:
  void SetUp() override {
    Objects::SetUp();
    ASSERT_TRUE(build("cl.bin"));
  }

  static bool build(const std::string& file) {
    if (program != nullptr) clReleaseProgram(program);
    program = CreateProgram(context, device, file.c_str());
    layer::resetRecords();
    return program != nullptr;
  }

  /// The kernel file with one word in place of another.
  static bool buildWith(const std::string& word, const std::string& inPlaceOf) {
    std::string text = readText("cl.bin");
    const std::size_t at = text.find("void " + inPlaceOf + "(");
    if (at == std::string::npos) return false;
    text.replace(at + 5, inPlaceOf.size(), word);
    writeText("other.bin", text);
    return build("other.bin");
  }
};

TEST_F(Kernels, AllAreCreatedInOrderUnderTheirNames) {
  EXPECT_TRUE(createKernel(program));
  const auto created = events(TraceKind::kCreate, ObjectKind::kKernel);
  EXPECT_EQ(kernelsOf(created), namesFrom(0));
  EXPECT_EQ(handlesOf(created), kernelHandles());
  EXPECT_EQ(rgb2GaryUcharKernelTwo, nullptr);
  EXPECT_EQ(rgb2GaryFloatKernel, nullptr);
  EXPECT_EQ(journal_.take(), Entries{});
}

TEST_F(Kernels, SecondCreationCreatesNothing) {
  EXPECT_TRUE(createKernel(program));
  const Handles before = kernelHandles();
  layer::resetRecords();
  EXPECT_TRUE(createKernel(program));
  EXPECT_EQ(layer::callCount(), 0);
  EXPECT_EQ(kernelHandles(), before);
}

TEST_F(Kernels, AreReleasedInOrder) {
  EXPECT_TRUE(createKernel(program));
  const Handles before = kernelHandles();
  layer::resetRecords();
  EXPECT_TRUE(releaseKernel());
  EXPECT_EQ(handlesOf(events(TraceKind::kRelease, ObjectKind::kKernel)), before);
  EXPECT_EQ(kernelHandles(), Handles(before.size(), nullptr));
  layer::resetRecords();
  EXPECT_TRUE(releaseKernel()) << "also with nothing to release";
  EXPECT_EQ(layer::callCount(), 0);
}

TEST_F(Kernels, EachFailureHasItsMessageAndIsResumed) {
  ASSERT_EQ(kernelsOfRun().size(), 36U);
  for (std::size_t missing = 0; missing < kernelsOfRun().size(); ++missing) {
    SCOPED_TRACE(kernelsOfRun()[missing].name);
    layer::failCall("clCreateKernel", static_cast<int>(missing) + 1, CL_INVALID_KERNEL_NAME);
    EXPECT_FALSE(createKernel(program));
    EXPECT_EQ(journal_.take(), Entries{kernelsOfRun()[missing].message});
    for (std::size_t i = 0; i < kernelsOfRun().size(); ++i) {
      EXPECT_EQ(*kernelsOfRun()[i].global != nullptr, i < missing) << kernelsOfRun()[i].name;
    }
    layer::resetRecords();
    EXPECT_TRUE(createKernel(program));
    EXPECT_EQ(kernelsOf(events(TraceKind::kCreate, ObjectKind::kKernel)), namesFrom(missing));
    EXPECT_EQ(journal_.take(), Entries{});
    releaseKernel();
  }
}

TEST_F(Kernels, ReleaseSkipsThoseThatWereNotCreated) {
  layer::failCall("clCreateKernel", 4, CL_INVALID_KERNEL_NAME);
  EXPECT_FALSE(createKernel(program));
  layer::resetRecords();
  EXPECT_TRUE(releaseKernel());
  EXPECT_EQ(layer::callCount("clReleaseKernel"), 3);
  EXPECT_EQ(layer::live().count(ObjectKind::kKernel), 0);
}

TEST_F(Kernels, LinesAreWrittenWithALineEndAndDebugTextsAreNotPrinted) {
  const auto outputOfFailure = [this](int nth) {
    layer::failCall("clCreateKernel", nth, CL_OUT_OF_RESOURCES);
    return standardOutputOf([this] {
      journal_.letThrough();
      EXPECT_FALSE(createKernel(program));
    });
  };
  EXPECT_EQ(outputOfFailure(36), "clCreateKernel getWeightImageClKernel failed\n");
  releaseKernel();
  EXPECT_EQ(outputOfFailure(22), "");
}

TEST_F(Kernels, FileWithoutTheLastKernel) {
  ASSERT_TRUE(buildWith("getWeightImageKernelOther", "getWeightImageKernel"));
  EXPECT_FALSE(createKernel(program));
  EXPECT_EQ(journal_.take(), Entries{"clCreateKernel getWeightImageClKernel failed"});
  EXPECT_EQ(layer::live().count(ObjectKind::kKernel), 35);
  EXPECT_EQ(getWeightImageClKernel, nullptr);
}

TEST_F(Kernels, FileWithTheFirstKernelInOtherLetters) {
  ASSERT_TRUE(buildWith("opencvcopyFilter2DBorderRowUcharMode",  //
                        "opencvcopyFilter2DBorderRowUhcarMode"));
  EXPECT_FALSE(createKernel(program));
  EXPECT_EQ(
      journal_.take(),
      Entries{Journal::debug("clCreateKernel opencvFilter2DRowCalcFloatWin5ModeKernel failed")});
  EXPECT_EQ(layer::callCount("clCreateKernel"), 1);
  EXPECT_EQ(layer::live().count(ObjectKind::kKernel), 0);
}

class Buffers : public Objects {
 protected:
  /// The shape of the arguments is not read.
  static bool create(int rows, int cols, int channels) {
    imgScaleRowCL = rows;
    imgScaleColCL = cols;
    layer::resetRecords();
    return CreateMemObjectsImg(context, 9999, -1, channels);
  }
};

TEST_F(Buffers, SizesInOrder) {
  ASSERT_EQ(buffersOfRun().size(), 34U);
  struct Shape {
    int rows, cols, channels;
  };
  for (const Shape shape : {Shape{240, 320, 3}, Shape{240, 320, 1}, Shape{37, 21, 3},
                            Shape{8, 8, 1}, Shape{3, 200, 3}, Shape{600, 9, 1}}) {
    SCOPED_TRACE(std::to_string(shape.rows) + " x " + std::to_string(shape.cols));
    EXPECT_TRUE(create(shape.rows, shape.cols, shape.channels));
    const auto created = events(TraceKind::kCreate, ObjectKind::kBuffer);
    EXPECT_EQ(handlesOf(created), bufferHandles());
    ASSERT_EQ(created.size(), buffersOfRun().size());
    for (std::size_t i = 0; i < created.size(); ++i) {
      SCOPED_TRACE("row " + std::to_string(i + 1));
      EXPECT_EQ(created[i].bytes,
                buffersOfRun()[i].bytes(static_cast<std::size_t>(shape.rows),
                                        static_cast<std::size_t>(shape.cols),
                                        static_cast<std::size_t>(shape.channels)));
      EXPECT_EQ(created[i].flags, cl_mem_flags{CL_MEM_READ_WRITE});
      EXPECT_EQ(created[i].pointer, nullptr);
    }
    EXPECT_TRUE(clReleaseMemObjectsImg());
    releaseKeptBuffer();
  }
  EXPECT_EQ(journal_.take(), Entries{});
}

TEST_F(Buffers, SecondCreationCreatesNothing) {
  create(24, 32, 3);
  const Handles before = bufferHandles();
  EXPECT_TRUE(create(24, 32, 3));
  EXPECT_EQ(layer::callCount("clCreateBuffer"), 0);
  EXPECT_EQ(bufferHandles(), before);
  EXPECT_TRUE(create(20, 30, 1)) << "smaller ones fit";
  EXPECT_EQ(layer::callCount("clCreateBuffer"), 0);
  EXPECT_EQ(bufferHandles(), before);
}

TEST_F(Buffers, EachFailureHasItsMessageAndTheOthersAreCreated) {
  for (std::size_t missing = 0; missing < buffersOfRun().size(); ++missing) {
    SCOPED_TRACE("row " + std::to_string(missing + 1));
    layer::failCall("clCreateBuffer", static_cast<int>(missing) + 1,
                    CL_MEM_OBJECT_ALLOCATION_FAILURE);
    EXPECT_TRUE(create(24, 32, 3));
    EXPECT_EQ(journal_.take(), buffersOfRun()[missing].messages);
    for (std::size_t i = 0; i < buffersOfRun().size(); ++i) {
      EXPECT_EQ(*buffersOfRun()[i].global == nullptr, i == missing) << i + 1;
    }
    EXPECT_TRUE(create(24, 32, 3));
    EXPECT_EQ(handlesOf(events(TraceKind::kCreate, ObjectKind::kBuffer)),
              Handles{*buffersOfRun()[missing].global});
    clReleaseMemObjectsImg();
    releaseKeptBuffer();
  }
}

TEST_F(Buffers, AllButOneAreReleasedInOrder) {
  create(24, 32, 3);
  const Handles before = buffersAsReleased();
  const cl_mem kept = grad_bound_tempOneCl;
  layer::resetRecords();
  EXPECT_TRUE(clReleaseMemObjectsImg());
  EXPECT_EQ(handlesOf(events(TraceKind::kRelease, ObjectKind::kBuffer)), before);
  for (std::size_t i = 0; i < buffersOfRun().size(); ++i) {
    EXPECT_EQ(*buffersOfRun()[i].global != nullptr, i == kKeptBuffer) << i + 1;
  }
  EXPECT_EQ(grad_bound_tempOneCl, kept);
  EXPECT_EQ(layer::live().count(ObjectKind::kBuffer), 1);
  layer::resetRecords();
  EXPECT_TRUE(clReleaseMemObjectsImg()) << "also with nothing to release";
  EXPECT_EQ(layer::callCount(), 0);
}

TEST_F(Buffers, KeptOneServesTheNextRunOfTheSameContext) {
  create(24, 32, 3);
  const cl_mem kept = grad_bound_tempOneCl;
  for (const int rows : {24, 23}) {
    clReleaseMemObjectsImg();
    EXPECT_TRUE(create(rows, 32, 3));
    EXPECT_EQ(grad_bound_tempOneCl, kept);
    EXPECT_EQ(layer::callCount("clCreateBuffer"), 33);
  }
}

TEST_F(Buffers, KeptOneThatIsTooSmallIsReplaced) {
  create(24, 32, 3);
  clReleaseMemObjectsImg();
  EXPECT_TRUE(create(24, 33, 3));
  EXPECT_EQ(layer::callCount("clCreateBuffer"), 34);
  EXPECT_EQ(layer::callCount("clReleaseMemObject"), 1);
  std::size_t bytes = 0;
  clGetMemObjectInfo(grad_bound_tempOneCl, CL_MEM_SIZE, sizeof(bytes), &bytes, nullptr);
  EXPECT_EQ(bytes, std::size_t{4 * 24 * 33});
  EXPECT_EQ(layer::live().count(ObjectKind::kBuffer), 34);
}

TEST_F(Buffers, KeptOneOfAnotherContextIsReplaced) {
  create(24, 32, 3);
  const cl_context former = context;
  Cleanup();
  context = CreateContext(&device);
  ASSERT_NE(context, former);
  EXPECT_TRUE(create(24, 32, 3));
  EXPECT_EQ(layer::callCount("clCreateBuffer"), 34);
  cl_context owner = nullptr;
  clGetMemObjectInfo(grad_bound_tempOneCl, CL_MEM_CONTEXT, sizeof(void*),
                     static_cast<void*>(&owner), nullptr);
  EXPECT_EQ(owner, context);
  EXPECT_EQ(layer::live().count(ObjectKind::kBuffer), 34) << "the former one is released";
}

TEST_F(Kernels, CleanupReleasesEverythingInOrder) {
  commandQueue = CreateCommandQueue(context, device);
  imgScaleRowCL = 24;
  imgScaleColCL = 32;
  CreateMemObjectsImg(context, 24, 32, 3);
  createKernel(program);
  Handles expected = buffersAsReleased();
  const Handles kernels = kernelHandles();
  expected.insert(expected.end(), kernels.begin(), kernels.end());
  expected.insert(expected.end(), {commandQueue, program, context});

  layer::resetRecords();
  Cleanup();
  Handles released;
  for (const TraceEvent& event : layer::trace()) {
    if (event.kind == TraceKind::kRelease) released.push_back(event.handle);
  }
  EXPECT_EQ(released, expected);
  EXPECT_EQ(commandQueue, nullptr);
  EXPECT_EQ(program, nullptr);
  EXPECT_EQ(context, nullptr);
  EXPECT_EQ(kernelHandles(), Handles(36, nullptr));
  expectOnlyKeptBuffer();

  layer::resetRecords();
  Cleanup();
  EXPECT_EQ(layer::callCount(), 0);
  EXPECT_EQ(journal_.take(), Entries{});
}

}  // namespace
