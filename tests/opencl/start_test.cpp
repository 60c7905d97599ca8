// SPDX-License-Identifier: Apache-2.0
// A start of the OpenCL backend: what it makes, says and leaves behind when it fails.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "opencl/OpenclJoint.h"
#include "opencl/OpenclJointCorners.h"
#include "opencl/OpenclJointObjects.h"
#include "tests/opencl/run_objects.h"
#include "tests/opencl/source_line.h"
#include "tests/opencl/start_fixture.h"
#include "tests/support/captured_output.h"
#include "tests/support/points.h"

namespace layer = framequilt::opencl_layer;

namespace {

using layer::ObjectKind;
using layer::TraceEvent;
using layer::TraceKind;

const Entries kNoQueue = {"Failed to create commandQueue for device 0",
                          Journal::debug("commandQueue failed")};

class Start : public StartFixture {};

TEST_F(Start, SaysWhatItDoes) {
  EXPECT_TRUE(start());
  EXPECT_EQ(journal_.take(), kStartBegins + kDeviceLines + Entries{Journal::debug("init out")});
}

TEST_F(Start, PrintsLines) {
  const std::string output = standardOutputOf([this] {
    journal_.letThrough();
    EXPECT_TRUE(start());
  });
  std::string expected = "44444444444444444444\n";
  for (const std::string& line : kDeviceLines) expected += line + '\n';
  EXPECT_EQ(output, expected);
}

TEST_F(Start, CreatesEverythingInOrder) {
  ASSERT_TRUE(start());
  std::vector<ObjectKind> created;
  std::vector<const void*> handles;
  for (const TraceEvent& event : layer::trace()) {
    if (event.kind != TraceKind::kCreate) continue;
    created.push_back(event.object);
    handles.push_back(event.handle);
  }
  std::vector<ObjectKind> expected = {ObjectKind::kContext, ObjectKind::kQueue,
                                      ObjectKind::kProgram};
  expected.insert(expected.end(), 34, ObjectKind::kBuffer);
  expected.insert(expected.end(), 36, ObjectKind::kKernel);
  EXPECT_EQ(created, expected);
  handles.resize(3);
  EXPECT_EQ(handles, (std::vector<const void*>{context, commandQueue, program}));
  EXPECT_NE(device, nullptr);
}

TEST_F(Start, StartsTwoThreads) {
  ASSERT_TRUE(start());
  EXPECT_EQ(threadCalls().creations, 2);
  EXPECT_EQ(threadCalls().running, 2);
  EXPECT_EQ(threadCalls().bodies[0], &findHarrisCornerCoordianteThreadClOne);
  EXPECT_EQ(threadCalls().bodies[1], &findHarrisCornerCoordianteThreadClTwo);
  EXPECT_EQ(threadCalls().special, 0) << "default attributes, no argument";
  EXPECT_TRUE(one_pidCLFlag);
  EXPECT_TRUE(two_pidCLFlag);
  EXPECT_TRUE(startOneThFlagCL);
  EXPECT_TRUE(startTwoThFlagCL);
  EXPECT_FALSE(pthread_equal(one_pidCL, two_pidCL));
}

TEST_F(Start, RemembersItsArguments) {
  flagsCL.matchNum = 12;
  flagsCL.brightOne = 3.0F;
  outbordLeftCL = {1, 2};
  outbordRightCL = {3, 4};
  mosaicImgCL = cv::Mat::zeros(3, 4, CV_8UC1);
  ASSERT_TRUE(initJointCL(24, 32, 1, 5, 700, 800));
  EXPECT_EQ(imgScaleRowCL, 24);
  EXPECT_EQ(imgScaleColCL, 32);
  EXPECT_EQ(pvalueCL, 5);
  for (const imgInfo& info : {theSorImageInfoCL, thedestImageInfoCL}) {
    EXPECT_EQ(info.channels, 1);
    EXPECT_EQ(info.rows, 24);
    EXPECT_EQ(info.cols, 32);
  }
  EXPECT_EQ(MAXROWCL, 700);
  EXPECT_EQ(MAXCOLCL, 800);
  EXPECT_NE(theSorImageTempCL, nullptr);
  EXPECT_NE(thedestImage_preCL, nullptr);
  EXPECT_EQ(flagsCL.matchNum, 0);
  EXPECT_EQ(flagsCL.brightOne, 0.0F);
  EXPECT_EQ(outbordLeftCL, SPoint{});
  EXPECT_EQ(outbordRightCL, SPoint{});
  EXPECT_TRUE(mosaicImgCL.empty());
}

TEST_F(Start, WorkingSizeIsDividedAndTruncated) {
  scaleCL = 2;
  ASSERT_TRUE(initJointCL(49, 67, 3, 1, 40000, 40000));
  EXPECT_EQ(imgScaleRowCL, 24);
  EXPECT_EQ(imgScaleColCL, 33);
  EXPECT_EQ(thedestImageInfoCL.rows, 49) << "the full size";
  EXPECT_EQ(theSorImageInfoCL.cols, 67);
  std::size_t bytes = 0;
  clGetMemObjectInfo(ImageReCL, CL_MEM_SIZE, sizeof(bytes), &bytes, nullptr);
  EXPECT_EQ(bytes, std::size_t{3 * 24 * 33});
}

TEST_F(Start, CornerLimits) {
  struct Limits {
    int budget, scale, corners;
  };
  // ((budget + 8) * (580 - 80 * scale)) / 16 - 100, towards zero.
  for (const Limits& limits :
       {Limits{1, 1, 181}, Limits{0, 1, 150}, Limits{2, 1, 212}, Limits{10, 1, 462},
        Limits{1, 2, 136}, Limits{3, 3, 133}, Limits{1, 7, -89}, Limits{1, 8, -133},
        Limits{-8, 1, -100}, Limits{-11, 1, -193}}) {
    SCOPED_TRACE(limits.budget);
    scaleCL = limits.scale;
    ASSERT_TRUE(initJointCL(64, 64, 1, limits.budget, 1, 1));
    EXPECT_EQ(numpointCL, limits.corners);
    EXPECT_EQ(num5000CL, 7 * limits.corners);
  }
}

TEST_F(Start, MosaicLimitOnlyShrinks) {
  const auto limitsAfter = [](int maxRow, int maxCol) {
    EXPECT_TRUE(initJointCL(24, 32, 1, 1, maxRow, maxCol));
    return std::pair(MAXROWCL, MAXCOLCL);
  };
  EXPECT_EQ(limitsAfter(30001, 2000000000), std::pair(30000, 30000));
  EXPECT_EQ(limitsAfter(30000, 29999), std::pair(30000, 29999));
  EXPECT_EQ(limitsAfter(500, 30000), std::pair(500, 29999));
  EXPECT_EQ(limitsAfter(600, 400), std::pair(500, 400));
}

TEST_F(Start, OtherChannelCountsAreRefusedBeforeTheDeviceIsTouched) {
  for (const int channels : {-1, 0, 2, 4}) {
    EXPECT_FALSE(start(channels));
    EXPECT_EQ(journal_.take(), kStartBegins);
  }
  EXPECT_EQ(layer::callCount(), 0);
  EXPECT_EQ(threadCalls().creations, 0);
}

TEST_F(Start, ObjectsOfTheHostAreUsed) {
  context = CreateContext(&device);
  commandQueue = CreateCommandQueue(context, device);
  program = CreateProgram(context, device, "cl.bin");
  std::filesystem::remove("cl.bin");
  journal_.take();
  layer::resetRecords();
  EXPECT_TRUE(start());
  EXPECT_EQ(journal_.take(), kStartBegins + Entries{Journal::debug("init out")});
  EXPECT_EQ(layer::callCount(), 34 + 36);
}

TEST_F(Start, KernelFileIsOfTheWorkingFolder) {
  std::filesystem::create_directory("below");
  std::filesystem::current_path("below");
  EXPECT_FALSE(start());
  std::filesystem::current_path("..");
  EXPECT_TRUE(start());
}

// --- Failures ---

TEST_F(Start, NoDevice) {
  withoutCard();
  EXPECT_FALSE(start());
  EXPECT_EQ(journal_.take(), kStartBegins + Entries{Journal::debug("commandQueue failed")});
  EXPECT_EQ(context, nullptr);
  EXPECT_EQ(threadCalls().creations, 0);
  EXPECT_TRUE(startOneThFlagCL);
  EXPECT_TRUE(startTwoThFlagCL);
  withCard();
  EXPECT_TRUE(start());
}

TEST_F(Start, NoContext) {
  layer::failCall("clCreateContext", 1, CL_OUT_OF_HOST_MEMORY);
  EXPECT_FALSE(start());
  EXPECT_EQ(journal_.take(),
            (kStartBegins + kDeviceLines +
             Entries{"create context error ", Journal::debug("commandQueue failed")}));
  EXPECT_EQ(context, nullptr);
  EXPECT_TRUE(start());
}

TEST_F(Start, NoQueue) {
  layer::failCall("clCreateCommandQueue", 1, CL_OUT_OF_RESOURCES);
  EXPECT_FALSE(start());
  EXPECT_EQ(journal_.take(), kStartBegins + kDeviceLines + kNoQueue);
  EXPECT_EQ(layer::live().count(), 0);
  EXPECT_NE(context, nullptr) << "released, and left as it is";
  EXPECT_EQ(commandQueue, nullptr);
  EXPECT_EQ(program, nullptr);
  EXPECT_EQ(threadCalls().creations, 0);

  EXPECT_TRUE(start()) << "with a context of its own";
  EXPECT_EQ(journal_.take(), kStartBegins + kDeviceLines + Entries{Journal::debug("init out")});
  EXPECT_EQ(calls("clCreateContext"), 2);
  EXPECT_EQ(layer::violations(), std::vector<std::string>{});
}

TEST_F(Start, TextAboutTheQueueHasNoLineEnd) {
  layer::failCall("clCreateCommandQueue", 1, CL_OUT_OF_RESOURCES);
  const std::string output = standardOutputOf([this] {
    journal_.letThrough();
    EXPECT_FALSE(start());
  });
  const std::string expected = "Failed to create commandQueue for device 0";
  ASSERT_GE(output.size(), expected.size());
  EXPECT_EQ(output.substr(output.size() - expected.size()), expected);
}

TEST_F(Start, NoQueueForTheProgramOfTheHost) {
  context = CreateContext(&device);
  program = CreateProgram(context, device, "cl.bin");
  const cl_program former = program;
  journal_.take();
  layer::failCall("clCreateCommandQueue", 1, CL_OUT_OF_RESOURCES);
  EXPECT_FALSE(start());
  EXPECT_EQ(journal_.take(), kStartBegins + kNoQueue);
  EXPECT_EQ(layer::live().count(), 0);
  EXPECT_EQ(program, former) << "released, and left as it is";
  EXPECT_TRUE(start());
}

TEST_F(Start, QueueThatTheHostMakesAfterAFailureIsKept) {
  std::filesystem::rename("cl.bin", "away.bin");
  EXPECT_FALSE(start());
  std::filesystem::rename("away.bin", "cl.bin");
  context = CreateContext(&device);
  commandQueue = CreateCommandQueue(context, device);
  layer::resetRecords();
  EXPECT_TRUE(start());
  EXPECT_EQ(calls("clCreateContext"), 0);
  EXPECT_EQ(calls("clCreateCommandQueue"), 0);
}

TEST_F(Start, NoKernelFile) {
  std::filesystem::rename("cl.bin", "away.bin");
  EXPECT_FALSE(start());
  const Entries messages = journal_.take();
  ASSERT_EQ(messages.size(), kStartBegins.size() + kDeviceLines.size() + 2);
  EXPECT_EQ(withoutLineNumber(messages[messages.size() - 2]),
            "opencl/OpenclJoint.cpp at  LINE :Can't open cl.bin");
  EXPECT_EQ(messages.back(), "Failed to create CL program for source");
  EXPECT_EQ(layer::live().count(), 0);
  EXPECT_NE(context, nullptr) << "released, and left as they are";
  EXPECT_NE(commandQueue, nullptr);
  EXPECT_EQ(program, nullptr);
  EXPECT_EQ(threadCalls().creations, 0);

  std::filesystem::rename("away.bin", "cl.bin");
  EXPECT_TRUE(start());
  EXPECT_EQ(layer::violations(), std::vector<std::string>{});
}

TEST_F(Start, NoProgram) {
  layer::failCall("clBuildProgram", 1, CL_BUILD_PROGRAM_FAILURE);
  EXPECT_FALSE(start());
  EXPECT_EQ(journal_.take().back().rfind("Error in kernel:", 0), 0U);
  EXPECT_EQ(layer::live().count(), 0);
  EXPECT_EQ(program, nullptr);
  EXPECT_TRUE(start());
}

TEST_F(Start, FirstThreadRefused) {
  watchThreads(1);
  EXPECT_FALSE(start());
  EXPECT_EQ(journal_.take(),
            kStartBegins + kDeviceLines + Entries{"ALG_template_model_init_process_pthread faled"});
  EXPECT_EQ(threadCalls().creations, 1) << "the second is not tried";
  EXPECT_FALSE(one_pidCLFlag);
  EXPECT_FALSE(two_pidCLFlag);
  EXPECT_EQ(layer::live().count(), 3) << "context, queue and program stay";
  EXPECT_EQ(calls("clCreateBuffer"), 0);

  layer::resetRecords();
  EXPECT_TRUE(start());
  EXPECT_EQ(calls("clCreateContext") + calls("clCreateCommandQueue") + calls("clBuildProgram"), 0);
  EXPECT_EQ(threadCalls().running, 2);
}

TEST_F(Start, SecondThreadRefused) {
  watchThreads(2);
  EXPECT_FALSE(start());
  EXPECT_EQ(journal_.take(),
            kStartBegins + kDeviceLines + Entries{"ALG_search_match_init_process_pthread faled"});
  EXPECT_TRUE(one_pidCLFlag);
  EXPECT_FALSE(two_pidCLFlag);
  EXPECT_EQ(threadCalls().running, 1);
  EXPECT_EQ(layer::live().count(), 3);

  EXPECT_TRUE(start()) << "ends the first thread and starts two";
  EXPECT_EQ(journal_.take(), kStartBegins + Entries{Journal::debug("init out")});
  EXPECT_EQ(threadCalls().joins, 1);
  EXPECT_EQ(threadCalls().running, 2);
}

TEST_F(Start, MissingKernel) {
  numpointCL = 4711;
  for (const std::size_t row : {0U, 22U, 35U}) {
    SCOPED_TRACE(row);
    layer::failCall("clCreateKernel", static_cast<int>(row) + 1, CL_INVALID_KERNEL_NAME);
    EXPECT_FALSE(start());
    Entries messages = journal_.take();
    messages.erase(messages.begin(), messages.begin() + (row == 0 ? 7 : 2));
    EXPECT_EQ(messages, (Entries{kernelsOfRun()[row].message,
                                 Journal::debug("clCreateKernel createKernel failed")}));
    EXPECT_EQ(threadCalls().running, 2) << "they stay, as all objects do";
    EXPECT_EQ(live(ObjectKind::kBuffer), 34);
    EXPECT_EQ(live(ObjectKind::kKernel), static_cast<int>(row));
    EXPECT_EQ(numpointCL, 4711);
    EXPECT_EQ(theSorImageTempCL, nullptr);
    releaseKernel();
  }
  layer::resetRecords();
  EXPECT_TRUE(start());
  EXPECT_EQ(layer::live().count(), 3 + 34 + 36);
  EXPECT_EQ(calls("clCreateBuffer"), 0);
  EXPECT_EQ(threadCalls().running, 2);
}

TEST_F(Start, MissingBufferIsOnlyReported) {
  layer::failCall("clCreateBuffer", 34, CL_MEM_OBJECT_ALLOCATION_FAILURE);
  EXPECT_TRUE(start());
  EXPECT_EQ(journal_.take(),
            (kStartBegins + kDeviceLines +
             Entries{Journal::debug("DestTempImageCL failed"), Journal::debug("init out")}));
}

// --- A start without a stop before it ---

TEST_F(Start, SecondStartJoinsTheThreadsAndKeepsTheObjects) {
  ASSERT_TRUE(start());
  journal_.take();
  layer::resetRecords();
  EXPECT_TRUE(start());
  EXPECT_EQ(journal_.take(), kStartBegins + Entries{Journal::debug("init out")});
  EXPECT_EQ(threadCalls().creations, 4);
  EXPECT_EQ(threadCalls().joins, 2);
  EXPECT_EQ(threadCalls().running, 2);
  EXPECT_TRUE(startOneThFlagCL);
  EXPECT_TRUE(startTwoThFlagCL);
  for (const TraceEvent& event : layer::trace()) EXPECT_NE(event.kind, TraceKind::kCreate);
}

TEST_F(Start, SecondStartForLargerFramesReplacesTheBuffers) {
  ASSERT_TRUE(start());
  layer::resetRecords();
  EXPECT_TRUE(initJointCL(48, 32, 3, 1, 40000, 40000));
  EXPECT_EQ(calls("clCreateBuffer"), 34);
  EXPECT_EQ(calls("clReleaseMemObject"), 34);
  EXPECT_EQ(live(ObjectKind::kBuffer), 34);
}

TEST_F(Start, SecondStartThatFailsEndsTheThreads) {
  ASSERT_TRUE(start());
  EXPECT_FALSE(start(2));
  EXPECT_EQ(threadCalls().running, 0);
  EXPECT_FALSE(one_pidCLFlag);
  EXPECT_FALSE(two_pidCLFlag);
}

}  // namespace
