// SPDX-License-Identifier: Apache-2.0
// A stop of the OpenCL backend: what it releases and says.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <utility>
#include <vector>

#include "framequilt/report_sink.h"
#include "opencl/OpenclJointObjects.h"
#include "tests/opencl/run_objects.h"
#include "tests/opencl/start_fixture.h"
#include "tests/support/captured_output.h"

namespace layer = framequilt::opencl_layer;

namespace {

using layer::TraceEvent;
using layer::TraceKind;

class Stop : public StartFixture {
 protected:
  bool startQuietly() {
    const bool started = start();
    journal_.take();
    layer::resetRecords();
    return started;
  }
};

void expectNoObjects() {
  for (const std::size_t row : buffersInOrderOfRelease()) {
    EXPECT_EQ(*buffersOfRun()[row].global, nullptr) << row + 1;
  }
  for (const KernelOfRun& row : kernelsOfRun()) EXPECT_EQ(*row.global, nullptr) << row.name;
  EXPECT_EQ(context, nullptr);
  EXPECT_EQ(commandQueue, nullptr);
  EXPECT_EQ(program, nullptr);
}

TEST_F(Stop, SaysWhatItDoes) {
  ASSERT_TRUE(startQuietly());
  EXPECT_TRUE(uinitJointCL());
  EXPECT_EQ(journal_.take(), kStopped);
  EXPECT_EQ(threadCalls().joins, 2);
  EXPECT_EQ(threadCalls().running, 0);
}

TEST_F(Stop, PrintsLines) {
  ASSERT_TRUE(startQuietly());
  const std::string output = standardOutputOf([this] {
    journal_.letThrough();
    EXPECT_TRUE(uinitJointCL());
  });
  std::string expected;
  for (const std::string& line : kStopped) expected += line + '\n';
  EXPECT_EQ(output, expected);
}

TEST_F(Stop, ReleasesEverythingInOrder) {
  ASSERT_TRUE(startQuietly());
  std::vector<const void*> expected;
  for (const std::size_t row : buffersInOrderOfRelease()) {
    expected.push_back(*buffersOfRun()[row].global);
  }
  for (const KernelOfRun& row : kernelsOfRun()) expected.push_back(*row.global);
  expected.insert(expected.end(), {commandQueue, program, context});

  uinitJointCL();
  std::vector<const void*> released;
  for (const TraceEvent& event : layer::trace()) {
    if (event.kind == TraceKind::kRelease) released.push_back(event.handle);
  }
  EXPECT_EQ(released, expected);
  expectNoObjects();
  expectOnlyKeptBuffer();
  EXPECT_NE(grad_bound_tempOneCl, nullptr);
}

TEST_F(Stop, ObjectsAreGoneBeforeTheThreadsAreJoined) {
  ASSERT_TRUE(startQuietly());
  std::vector<bool> contextLeft;
  framequilt::setReportSink(
      [](const char* /*line*/, std::size_t /*length*/, void* seen) {
        static_cast<std::vector<bool>*>(seen)->push_back(context != nullptr);
      },
      &contextLeft);
  uinitJointCL();
  framequilt::setReportSink(nullptr, nullptr);
  EXPECT_EQ(contextLeft, std::vector<bool>(3, false));
}

TEST_F(Stop, ClearsTheFlags) {
  startOneThFlagCL = startTwoThFlagCL = true;
  threadOneCalcFlagCL = threadTwoCalcFlagCL = true;
  uinitJointCL();
  EXPECT_FALSE(startOneThFlagCL);
  EXPECT_FALSE(startTwoThFlagCL);
  EXPECT_FALSE(threadOneCalcFlagCL);
  EXPECT_FALSE(threadTwoCalcFlagCL);
}

TEST_F(Stop, ReleasesTheHostsMemory) {
  ASSERT_TRUE(startQuietly());
  const std::vector<unsigned char**> planes = {
      &thedestImage_preCL,    &theSorImageTempCL, &OverlapImageOneCL,
      &OverlapImageTwoCL,     &resiz_OneCL,       &resiz_TwoCL,
      &resiz_OneBoundCL,      &resiz_TwoBoundCL,  &resiz_OneBoundFilterCL,
      &resiz_TwoBoundFilterCL};
  const std::vector<unsigned short**> descriptors = {
      &DescribleSymbolOneCL, &DescribleSymbolTwoCL, &FeatureDescriberOneCL, &FeatureDescriberTwoCL};
  const std::vector<float**> floats = {&dist_valueCL, &CoonervalueOneCL, &CoonervalueTwoCL};
  const auto fill = [](auto& arrays) {
    for (auto** array : arrays) {
      if (*array == nullptr) *array = new std::remove_reference_t<decltype(**array)>[4]();
    }
  };
  const auto expectNull = [](auto& arrays) {
    for (auto** array : arrays) EXPECT_EQ(*array, nullptr);
  };
  fill(planes);
  fill(descriptors);
  fill(floats);
  mosaicImgCL = cv::Mat::zeros(3, 4, CV_8UC3);
  HarrissCornerSPointOneArrayCL.resize(5);
  HarrissCornerSPointTwoArrayCL.resize(6);

  uinitJointCL();
  expectNull(planes);
  expectNull(descriptors);
  expectNull(floats);
  EXPECT_TRUE(mosaicImgCL.empty());
  EXPECT_EQ(HarrissCornerSPointOneArrayCL.capacity(), 0U);
  EXPECT_EQ(HarrissCornerSPointTwoArrayCL.capacity(), 0U);
}

TEST_F(Stop, WithoutAStart) {
  EXPECT_TRUE(uinitJointCL());
  EXPECT_EQ(journal_.take(), Entries{"mosaicImgCL"});
  EXPECT_EQ(layer::callCount(), 0);
}

TEST_F(Stop, SecondStopIsHarmless) {
  ASSERT_TRUE(startQuietly());
  uinitJointCL();
  journal_.take();
  layer::resetRecords();
  EXPECT_TRUE(uinitJointCL());
  EXPECT_EQ(journal_.take(), Entries{"mosaicImgCL"});
  EXPECT_EQ(layer::callCount(), 0);
}

TEST_F(Stop, ThreadsThatCannotBeJoined) {
  ASSERT_TRUE(startQuietly());
  const pthread_t one = std::exchange(one_pidCL, pthread_t{0});
  EXPECT_TRUE(uinitJointCL());
  EXPECT_EQ(journal_.take(), (Entries{"pthread_join one_pidCL failed",
                                      "pthread_join two_pidCL success", "mosaicImgCL"}));
  EXPECT_EQ(pthread_join(one, nullptr), 0) << "it left all the same";

  ASSERT_TRUE(startQuietly());
  const pthread_t two = std::exchange(two_pidCL, pthread_t{0});
  EXPECT_TRUE(uinitJointCL());
  EXPECT_EQ(journal_.take(), (Entries{"pthread_join one_pidCL success",
                                      "pthread_join two_pidCL failed", "mosaicImgCL"}));
  EXPECT_EQ(pthread_join(two, nullptr), 0);
}

TEST_F(Stop, OnlyTheThreadThatRunsIsJoined) {
  watchThreads(2);
  EXPECT_FALSE(start());
  journal_.take();
  EXPECT_TRUE(uinitJointCL());
  EXPECT_EQ(journal_.take(), (Entries{"pthread_join one_pidCL success", "mosaicImgCL"}));
}

TEST_F(Stop, HandlesThatAFailedStartReleasedAreLeftAlone) {
  std::filesystem::remove("cl.bin");
  EXPECT_FALSE(start());
  journal_.take();
  layer::resetRecords();
  EXPECT_TRUE(uinitJointCL());
  EXPECT_EQ(journal_.take(), Entries{"mosaicImgCL"});
  EXPECT_EQ(layer::callCount(), 0);
  expectNoObjects();
}

TEST_F(Stop, EntryPointsFailAndTheStopSucceeds) {
  ASSERT_TRUE(startQuietly());
  layer::failEveryCallFrom(1, CL_DEVICE_NOT_AVAILABLE);
  EXPECT_TRUE(uinitJointCL());
  EXPECT_EQ(journal_.take(), kStopped);
  expectNoObjects();
}

TEST_F(Stop, RunsFollowEachOther) {
  for (int run = 0; run < 3; ++run) {
    ASSERT_TRUE(startQuietly());
    const cl_mem kept = grad_bound_tempOneCl;
    EXPECT_TRUE(uinitJointCL());
    EXPECT_EQ(grad_bound_tempOneCl, kept);
    expectOnlyKeptBuffer();
  }
}

}  // namespace
