// SPDX-License-Identifier: Apache-2.0
// Which backend the entry points choose, and what a start that the device refuses leaves to the
// host's run.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "cpu/run_state.h"
#include "framequilt/framequilt.h"
#include "tests/opencl/run_objects.h"
#include "tests/opencl/start_fixture.h"
#include "tests/run/captures.h"

namespace layer = framequilt::opencl_layer;

namespace {

const Entries kHostStopped = {"pthread_join model_pid success", "pthread_join match_pid success"};

class Selection : public StartFixture {
 protected:
  ~Selection() override { uinitJoint(); }

  static bool open(int stitchMode = 1, int staticDynamicFlag = 1) {
    return initJoint(240, 320, 1, 1, 40000, 40000, stitchMode, staticDynamicFlag);
  }
};

/// Feeds an open run two frames that overlap; the second has to be joined.
void expectFrameIsJoined() {
  const RoundTrip trip(CaptureKind{1, 1, 1, 1});
  Frame reference = trip.frame(0);
  Frame frame = trip.frame(1);
  SPoint left{}, right{};
  cv::Mat mosaic;
  stitchflags flags{};
  EXPECT_EQ(stichingImagedJoint(reference.bytes.data(), frame.bytes.data(), 0, 1, 0, 0, false, left,
                                right, mosaic, flags),
            0);
  EXPECT_EQ(flags.position, (SPoint{3000 - 160, 3000 - 120} + trip.corner(1) - trip.corner(0)));
}

TEST_F(Selection, CardServesTheRun) {
  EXPECT_TRUE(open(0, 0));
  EXPECT_TRUE(openclDeviceFlag);
  EXPECT_EQ(journal_.take(), (Entries{Journal::debug("0 == GStitchMainMode"),
                                      Journal::debug("0 == GstaticMainDynamicFlag")} +
                              kStartBegins + kDeviceLines + Entries{Journal::debug("init out")}));
  EXPECT_TRUE(uinitJoint());
  EXPECT_FALSE(openclDeviceFlag);
  EXPECT_EQ(journal_.take(), kStopped);
}

TEST_F(Selection, OpenRunOfTheHostGivesWayToTheCard) {
  withoutCard();
  ASSERT_TRUE(open());
  ASSERT_FALSE(openclDeviceFlag);
  expectFrameIsJoined();
  const int ofHost = threadCalls().running;
  ASSERT_EQ(ofHost, 2);
  journal_.take();

  withCard();
  ASSERT_TRUE(open());
  EXPECT_TRUE(openclDeviceFlag);
  EXPECT_EQ(threadCalls().running, 2) << "those of the card";
  EXPECT_EQ(theSorImageTemp, nullptr);
  EXPECT_TRUE(mosaicImgCpu.empty());
  for (const std::string& line : journal_.take()) EXPECT_EQ(line.find("pthread_join"), line.npos);
  expectFrameIsJoined();
}

TEST_F(Selection, HostServesTheRunWithoutACard) {
  withoutCard();
  EXPECT_TRUE(open(0, 1));
  EXPECT_FALSE(openclDeviceFlag);
  EXPECT_EQ(journal_.take(), (Entries{Journal::debug("0 == GStitchMainMode")} + kStartBegins +
                              Entries{Journal::debug("commandQueue failed")}));
  EXPECT_TRUE(uinitJoint());
  EXPECT_EQ(journal_.take(), kHostStopped);
}

TEST_F(Selection, MotionModeIsNotAnnounced) {
  withoutCard();
  EXPECT_TRUE(open(1, 0));
  EXPECT_EQ(journal_.take(), kStartBegins + Entries{Journal::debug("commandQueue failed")});
}

TEST_F(Selection, FrameIsAnnouncedAndItsFailure) {
  ASSERT_TRUE(open());
  journal_.take();
  std::vector<unsigned char> frame(240 * 320);
  SPoint left{}, right{};
  cv::Mat mosaic;
  stitchflags flags{};
  EXPECT_EQ(
      stichingImagedJoint(nullptr, frame.data(), 0, 1, 0, 0, false, left, right, mosaic, flags),
      -1);
  EXPECT_EQ(journal_.take(),
            (Entries{Journal::debug("stichingImagedJointCL in"),
                     Journal::debug("stitchingImageOffsetCL 0"), "stitchingImageOffset ptr is null",
                     Journal::debug("stichingImagedJointCL failed")}));
}

TEST_F(Selection, RunsAlternateBetweenCardAndHost) {
  for (const bool card : {true, false, true}) {
    card ? withCard() : withoutCard();
    ASSERT_TRUE(open());
    EXPECT_EQ(openclDeviceFlag, card);
    expectFrameIsJoined();
    EXPECT_TRUE(uinitJoint());
    EXPECT_EQ(threadCalls().running, 0);
    expectOnlyKeptBuffer();
  }
}

TEST_F(Selection, StartWithNeitherBackend) {
  withoutCard();
  watchThreads(1);
  EXPECT_FALSE(open());
  EXPECT_FALSE(openclDeviceFlag);
  EXPECT_EQ(journal_.take().back(), "ALG_template_model_init_process_pthread faled");
  EXPECT_TRUE(uinitJoint());
}

TEST_F(Selection, ColourWithAlphaIsTheHosts) {
  EXPECT_TRUE(initJoint(24, 32, 4, 1, 40000, 40000, 1, 1));
  EXPECT_FALSE(openclDeviceFlag);
  EXPECT_EQ(journal_.take(), kStartBegins);
  EXPECT_EQ(layer::callCount(), 0);
}

TEST_F(Selection, SecondStartThatTheCardRefusesIsTheHosts) {
  ASSERT_TRUE(open());
  EXPECT_TRUE(initJoint(24, 32, 2, 1, 40000, 40000, 1, 1));
  EXPECT_FALSE(openclDeviceFlag);
  expectOnlyKeptBuffer();
  EXPECT_EQ(threadCalls().running, 2);
  EXPECT_EQ(context, nullptr);
}

// --- Whatever the device refuses, the host's run works ---

struct Refusal {
  const char* name;
  void (*prepare)();
  /// What is said last.
  Entries last;
};

void PrintTo(const Refusal& refusal, std::ostream* out) { *out << refusal.name; }

class RefusedStart : public Selection, public testing::WithParamInterface<Refusal> {};

TEST_P(RefusedStart, LeavesNothingToTheHostsRun) {
  GetParam().prepare();
  EXPECT_TRUE(open());
  EXPECT_FALSE(openclDeviceFlag);
  Entries messages = journal_.take();
  const Entries& last = GetParam().last;
  ASSERT_GE(messages.size(), last.size());
  messages.erase(messages.begin(), messages.end() - static_cast<std::ptrdiff_t>(last.size()));
  EXPECT_EQ(messages, last);

  EXPECT_FALSE(one_pidCLFlag);
  EXPECT_FALSE(two_pidCLFlag);
  EXPECT_EQ(threadCalls().running, 2) << "the host's";
  EXPECT_EQ(context, nullptr);
  EXPECT_EQ(commandQueue, nullptr);
  EXPECT_EQ(program, nullptr);
  for (const KernelOfRun& row : kernelsOfRun()) EXPECT_EQ(*row.global, nullptr) << row.name;
  EXPECT_EQ(theSorImageTempCL, nullptr);
  expectOnlyKeptBuffer();

  layer::resetRecords();
  expectFrameIsJoined();
  journal_.take();
  EXPECT_TRUE(uinitJoint());
  EXPECT_EQ(journal_.take(), kHostStopped);
  EXPECT_EQ(layer::callCount(), 0);

  // The next start has the card again.
  layer::clearFaults();
  std::filesystem::copy_file(FRAMEQUILT_KERNELS, "cl.bin",
                             std::filesystem::copy_options::overwrite_existing);
  withCard();
  ASSERT_TRUE(open());
  EXPECT_TRUE(openclDeviceFlag);
  expectFrameIsJoined();
}

const Refusal kRefusals[] = {
    {"NoPlatform", [] { layer::present({}); }, {Journal::debug("commandQueue failed")}},
    {"OtherPlatform",
     [] { layer::present({{.name = "Portable"}}); },
     {Journal::debug("commandQueue failed")}},
    {"SmallCard",
     [] { layer::present({{.devices = {{.globalMemoryBytes = 4095 * layer::kMegabyte}}}}); },
     {"Device Frequency:4095(MB)", Journal::debug("commandQueue failed")}},
    {"Context",
     [] { layer::failCall("clCreateContext", 1, CL_OUT_OF_HOST_MEMORY); },
     {"create context error ", Journal::debug("commandQueue failed")}},
    {"Queue",
     [] { layer::failCall("clCreateCommandQueue", 1, CL_OUT_OF_HOST_MEMORY); },
     {"Failed to create commandQueue for device 0", Journal::debug("commandQueue failed")}},
    {"NoKernelFile",
     [] { std::filesystem::remove("cl.bin"); },
     {"Failed to create CL program for source"}},
    {"Program",
     [] {
       layer::failCall("clBuildProgram", 1, CL_BUILD_PROGRAM_FAILURE);
       layer::failCall("clGetProgramBuildInfo", 1, CL_OUT_OF_HOST_MEMORY);
     },
     {"Error in kernel:"}},
    {"ThreadOne", [] { watchThreads(1); }, {"ALG_template_model_init_process_pthread faled"}},
    {"ThreadTwo", [] { watchThreads(2); }, {"ALG_search_match_init_process_pthread faled"}},
    {"FirstKernel",
     [] { layer::failCall("clCreateKernel", 1, CL_INVALID_KERNEL_NAME); },
     {Journal::debug("clCreateKernel opencvFilter2DRowCalcFloatWin5ModeKernel failed"),
      Journal::debug("clCreateKernel createKernel failed")}},
    {"LastKernel",
     [] { layer::failCall("clCreateKernel", 36, CL_INVALID_KERNEL_NAME); },
     {"clCreateKernel getWeightImageClKernel failed",
      Journal::debug("clCreateKernel createKernel failed")}}};

INSTANTIATE_TEST_SUITE_P(Starts, RefusedStart, testing::ValuesIn(kRefusals),
                         [](const auto& refusal) { return std::string(refusal.param.name); });

}  // namespace
