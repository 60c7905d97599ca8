// SPDX-License-Identifier: Apache-2.0
// On which backend a session starts the engine, with what, and what it leaves behind.
#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/core.hpp>
#include <string>

#include "framequilt/framequilt.h"
#include "framequilt/opencl_devices.h"
#include "framequilt/session.h"
#include "framequilt/tuning.h"
#include "opencl/OpenclJointState.h"
#include "tests/support/scoped_value.h"
#include "tests/support/scripted_engine.h"
#include "tests/support/session_frames.h"
#include "tests/support/thrown_error.h"

using framequilt::Backend;
using framequilt::ErrorCode;
using framequilt::FrameResult;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::Verdict;
using Device = ScriptedEngine::Device;

namespace {

namespace fs = std::filesystem;

constexpr int kRows = 8;
constexpr int kCols = 10;

SessionOptions options(Backend backend = Backend::kAuto) {
  SessionOptions options = grayOptions(kRows, kCols);
  options.backend = backend;
  return options;
}

SessionOptions withKernelFile(const std::string& file, Backend backend = Backend::kAuto) {
  SessionOptions asked = options(backend);
  asked.kernelFile = file;
  return asked;
}

cv::Mat frame(int value) { return cv::Mat(kRows, kCols, CV_8UC1, cv::Scalar(value)); }

/// Any file that can be read will do.
std::string someFile() { return fs::canonical("/proc/self/exe").string(); }

ThrownError errorOfOpening(const SessionOptions& asked) {
  return errorOf([&] { const Session session(asked); });
}

}  // namespace

TEST(SessionBackend, IsTheHostWithoutADevice) {
  ScriptedEngine engine(Device::kNone);
  const Session session(options());
  EXPECT_EQ(session.backend(), "host");
  EXPECT_EQ(engine.starts, 1);
  EXPECT_FALSE(openclDeviceFlag);
}

TEST(SessionBackend, IsTheDeviceWhereThereIsOne) {
  for (const Backend backend : {Backend::kAuto, Backend::kOpencl}) {
    ScriptedEngine engine(Device::kServes);
    Session session(withKernelFile(someFile(), backend));
    EXPECT_EQ(session.backend(), "opencl");
    EXPECT_EQ(engine.starts, 1);
    EXPECT_EQ(engine.startArguments, (std::vector<int>{kRows, kCols, 1, 8, 20000, 20000, 1, 0}));
    session.stop();
    EXPECT_EQ(session.backend(), "opencl");
    EXPECT_EQ(engine.stops, 1);
  }
}

TEST(SessionBackend, IsTheHostOnRequest) {
  ScriptedEngine engine(Device::kServes);
  EXPECT_EQ(Session(withKernelFile(someFile(), Backend::kHost)).backend(), "host");
  EXPECT_EQ(engine.deviceStart.kernelFile, "");
  EXPECT_EQ(engine.starts, 1);
}

TEST(SessionBackend, IsTheHostWhereFramesAreHalved) {
  ScriptedEngine engine(Device::kServes);
  SessionOptions halved = withKernelFile(someFile());
  halved.scale = 2;
  EXPECT_EQ(Session(halved).backend(), "host");
  EXPECT_EQ(engine.deviceStart.kernelFile, "");
}

TEST(SessionBackend, IsTheHostForTheOverlapOfADynamicScene) {
  ScriptedEngine engine(Device::kServes);
  SessionOptions asked = withKernelFile(someFile());
  asked.dynamicScene = true;
  EXPECT_EQ(Session(asked).backend(), "opencl");
  asked.criterion = framequilt::Criterion::kOverlap;
  EXPECT_EQ(Session(asked).backend(), "host");
}

TEST(SessionBackend, IsTheHostWhereTheDeviceRefusesTheStart) {
  ScriptedEngine engine(Device::kRefuses);
  const Session session(withKernelFile(someFile()));
  EXPECT_EQ(session.backend(), "host");
  // The entry point has fallen back by itself.
  EXPECT_EQ(engine.starts, 1);
  EXPECT_EQ(engine.stops, 0);
}

TEST(SessionBackend, IsNoOtherThanTheDeviceWhereThatIsAskedFor) {
  const ScopedValue<int> rows(MAXROWCL, 70);
  ScriptedEngine engine(Device::kRefuses);
  EXPECT_EQ(errorOfOpening(withKernelFile(someFile(), Backend::kOpencl)),
            (ThrownError{ErrorCode::kNoOpencl,
                         "the GPU refuses to start a run with '" + someFile() +
                             "': name another kernel file, or choose the host backend"}));
  EXPECT_EQ(engine.stops, 1);
  EXPECT_EQ(MAXROWCL, 70);
  EXPECT_EQ(Session(options()).backend(), "host");
}

TEST(SessionBackend, HostIsStartedWithTheModesOfTheSession) {
  ScriptedEngine engine(Device::kNone);
  SessionOptions overlap = options();
  overlap.criterion = framequilt::Criterion::kOverlap;
  overlap.dynamicScene = true;
  const Session session(overlap);
  EXPECT_EQ(engine.startArguments, (std::vector<int>{kRows, kCols, 1, 8, 20000, 20000, 0, 1}));
}

TEST(SessionBackend, NothingIsStartedWhereADeviceIsMissing) {
  ScriptedEngine engine(Device::kNone);
  EXPECT_EQ(errorOfOpening(withKernelFile(someFile(), Backend::kOpencl)).code,
            ErrorCode::kNoOpencl);
  EXPECT_EQ(engine.starts, 0);
  EXPECT_EQ(engine.stops, 0);
  EXPECT_EQ(Session(options()).backend(), "host");
}

TEST(SessionBackend, LimitsOfTheDeviceAreTheSessionsWhileItIsOpen) {
  const ScopedValue<int> rows(MAXROWCL, 70), cols(MAXCOLCL, 80), factor(scaleCL, 3);
  ScriptedEngine engine(Device::kServes);
  SessionOptions asked = withKernelFile(someFile());
  asked.maxRows = 21000;
  asked.maxCols = 22000;
  Session session(asked);
  EXPECT_EQ(engine.deviceStart.maxRows, 21000);
  EXPECT_EQ(engine.deviceStart.maxCols, 22000);
  EXPECT_EQ(engine.deviceStart.factor, 1);
  session.stop();
  EXPECT_EQ(MAXROWCL, 70);
  EXPECT_EQ(MAXCOLCL, 80);
  EXPECT_EQ(scaleCL, 3);
}

TEST(SessionBackend, ARunThatIsLeftOpenOnTheDeviceGivesWay) {
  ScriptedEngine engine(Device::kNone);
  openclDeviceFlag = true;
  const Session session(options());
  EXPECT_EQ(engine.stops, 1);
  EXPECT_EQ(engine.starts, 1);
}

TEST(SessionKernelFile, LiesBesideTheLibraryUnlessItIsNamed) {
  ScriptedEngine engine(Device::kServes);
  const Session session(options());
  const fs::path file = engine.deviceStart.kernelFile;
  EXPECT_TRUE(file.is_absolute());
  EXPECT_EQ(file.filename(), "cl.bin");
  EXPECT_EQ(file, framequilt::openclKernelFile());
}

TEST(SessionKernelFile, IsHandedOnAsAnAbsolutePath) {
  ScriptedEngine engine(Device::kServes);
  const Session session(withKernelFile(fs::relative(someFile()).string()));
  EXPECT_EQ(engine.deviceStart.kernelFile, someFile());
}

TEST(SessionKernelFile, ThatIsMissingLeavesTheHost) {
  ScriptedEngine engine(Device::kServes);
  for (const char* file : {"/nowhere/cl.bin", "/", "/dev/zero"}) {
    EXPECT_EQ(Session(withKernelFile(file)).backend(), "host") << file;
    EXPECT_EQ(errorOfOpening(withKernelFile(file, Backend::kOpencl)).code, ErrorCode::kNoOpencl);
  }
  EXPECT_EQ(engine.deviceStart.kernelFile, "");
}

TEST(SessionOnTheDevice, ReadsTheRecordOfTheDevice) {
  const ScopedValue<float> bright(brightThCL, 17.0F), sharp(defintThCL, 18.0F);
  ScriptedEngine engine(Device::kServes);
  engine.answers = {ScriptedEngine::blended(3, 1), ScriptedEngine::measured(3, 1),
                    ScriptedEngine::noEstimate()};
  SessionOptions asked = withKernelFile(someFile());
  asked.criterion = framequilt::Criterion::kOverlap;
  Session session(asked);
  session.add(frame(1));
  const FrameResult joined = session.add(frame(2));
  EXPECT_EQ(joined.verdict, Verdict::kJoined);
  EXPECT_EQ(joined.placement, cv::Point(3, 1));
  ASSERT_TRUE(joined.measures.brightness && joined.measures.sharpness);
  EXPECT_EQ(joined.measures.brightness->limit, 17);
  EXPECT_EQ(joined.measures.sharpness->limit, 18);
  EXPECT_EQ(session.add(frame(3)).verdict, Verdict::kRefused);
  // What earlier frames left in the record is not told of this one.
  const FrameResult last = session.add(frame(4));
  EXPECT_EQ(last.reason, framequilt::Refusal::kNoOverlap);
  EXPECT_EQ(last.measures.matches.value, 0);
}
