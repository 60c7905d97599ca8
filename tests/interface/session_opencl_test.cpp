// SPDX-License-Identifier: Apache-2.0
// Sessions on a device: what they join there, and what they say and leave where it refuses.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "framequilt/opencl_devices.h"
#include "framequilt/session.h"
#include "framequilt/tuning.h"
#include "opencl/OpenclJointState.h"
#include "tests/support/opencl_layer.h"
#include "tests/support/recorded_reports.h"
#include "tests/support/scene.h"
#include "tests/support/session_frames.h"
#include "tests/support/thrown_error.h"

namespace layer = framequilt::opencl_layer;
using framequilt::Backend;
using framequilt::Criterion;
using framequilt::ErrorCode;
using framequilt::FrameResult;
using framequilt::Refusal;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::Verdict;

namespace {

namespace fs = std::filesystem;

constexpr int kRows = 240;
constexpr int kCols = 320;

class SessionOpencl : public testing::Test {
 protected:
  SessionOpencl() {
    layer::presentDefault();
    // The first corner thread and the motion measure take turns.
    layer::allowSharedKernel("rgb2GaryKernel");
    layer::resetRecords();
    std::string name = (fs::temp_directory_path() / "framequilt-XXXXXX").string();
    folder_ = fs::canonical(::mkdtemp(name.data()));
  }
  ~SessionOpencl() override {
    layer::clearFaults();
    layer::presentDefault();
    fs::remove_all(folder_);
    EXPECT_EQ(layer::violations(), std::vector<std::string>());
  }

  Frame frameAt(int x, int y) const { return scene_.cut(x, y, kRows, kCols); }

  SessionOptions options(Backend backend = Backend::kOpencl) const {
    SessionOptions options = optionsFor(frameAt(0, 0));
    options.backend = backend;
    return options;
  }

  std::string fileWith(const std::string& text) const {
    const fs::path file = folder_ / "kernels.cl";
    std::ofstream(file) << text;
    return file.string();
  }

  /// What a session says that may use OpenCL alone; one that may choose takes the host.
  static std::string refusalOf(const SessionOptions& asked, const std::string& entryPoint = {}) {
    const auto fault = [&] {
      if (!entryPoint.empty()) layer::failCall(entryPoint, 1, CL_OUT_OF_HOST_MEMORY);
    };
    SessionOptions choosing = asked;
    choosing.backend = Backend::kAuto;
    fault();
    EXPECT_EQ(Session(choosing).backend(), "host");
    fault();
    const ThrownError error = errorOf([&] { const Session session(asked); });
    EXPECT_EQ(error.code, ErrorCode::kNoOpencl);
    expectNoDevice();
    return error.text;
  }

  static void expectNoDevice() {
    EXPECT_EQ(context, nullptr);
    EXPECT_EQ(commandQueue, nullptr);
    EXPECT_EQ(program, nullptr);
    EXPECT_EQ(layer::live().count(layer::ObjectKind::kProgram), 0);
    EXPECT_EQ(layer::live().count(layer::ObjectKind::kQueue), 0);
    EXPECT_EQ(layer::live().count(layer::ObjectKind::kKernel), 0);
  }

  /// A small walk with a step that is too short.
  std::vector<FrameResult> walk(Session& session) const {
    std::vector<FrameResult> results;
    for (const cv::Point& at : {cv::Point(20, 100), cv::Point(120, 100), cv::Point(130, 102),
                                cv::Point(210, 140), cv::Point(120, 60)}) {
      results.push_back(session.add(viewOf(frameAt(at.x, at.y))));
    }
    return results;
  }

  const Scene scene_{460, 700, 3, 12};
  const RecordedReports quiet_;
  fs::path folder_;
};

}  // namespace

TEST_F(SessionOpencl, JoinsWhatTheHostJoins) {
  struct Judging {
    Criterion criterion;
    bool dynamicScene;
    bool joins;
  };
  for (const Judging& judging :
       {Judging{Criterion::kMotion, false, true}, Judging{Criterion::kMotion, true, false},
        Judging{Criterion::kOverlap, false, true}}) {
    SessionOptions asked = options();
    asked.criterion = judging.criterion;
    asked.dynamicScene = judging.dynamicScene;
    Session onDevice(asked);
    EXPECT_EQ(onDevice.backend(), "opencl");
    const std::vector<FrameResult> got = walk(onDevice);
    onDevice.stop();
    expectNoDevice();
    asked.backend = Backend::kHost;
    Session onHost(asked);
    const std::vector<FrameResult> expected = walk(onHost);
    EXPECT_EQ(expected.back().verdict == Verdict::kJoined, judging.joins);
    ASSERT_EQ(got.size(), expected.size());
    for (std::size_t i = 0; i < got.size(); ++i) {
      EXPECT_EQ(got[i].verdict, expected[i].verdict) << i << explain(got[i]);
      EXPECT_EQ(explain(got[i]), explain(expected[i])) << i;
      EXPECT_EQ(got[i].placement, expected[i].placement) << i;
    }
    EXPECT_EQ(onDevice.steadyBox(), onHost.steadyBox());
    if (judging.joins) {
      EXPECT_EQ(cv::norm(onDevice.mosaic(), onHost.mosaic(), cv::NORM_INF), 0);
    }
  }
}

TEST_F(SessionOpencl, HintsAreInTheSenseOfThePlacements) {
  Session session(options());
  session.add(viewOf(frameAt(200, 150)));
  EXPECT_EQ(session.add(viewOf(frameAt(300, 170)), cv::Point(100, 20)).placement,
            cv::Point(100, 20));
  EXPECT_EQ(session.add(viewOf(frameAt(190, 190)), cv::Point(-110, 20)).placement,
            cv::Point(-10, 40));
  EXPECT_EQ(session.add(viewOf(frameAt(90, 150)), cv::Point(-100, -40)).placement,
            cv::Point(-110, 0));
}

TEST_F(SessionOpencl, IsTakenWhereItMayBeChosen) {
  EXPECT_EQ(Session(options(Backend::kAuto)).backend(), "opencl");
}

TEST_F(SessionOpencl, HandlesOfAHostAreTakenAndStayWhereTheKernelsDoNotBuild) {
  cl_device_id ours = nullptr;
  {
    cl_platform_id platform = nullptr;
    ASSERT_EQ(clGetPlatformIDs(1, &platform, nullptr), CL_SUCCESS);
    ASSERT_EQ(clGetDeviceIDs(platform, CL_DEVICE_TYPE_GPU, 1, &ours, nullptr), CL_SUCCESS);
  }
  const cl_context made = clCreateContext(nullptr, 1, &ours, nullptr, nullptr, nullptr);
  device = ours;
  context = made;
  SessionOptions broken = options(Backend::kAuto);
  broken.kernelFile = fileWith("no kernel");
  EXPECT_EQ(Session(broken).backend(), "host");
  EXPECT_EQ(context, made);
  EXPECT_EQ(commandQueue, nullptr);
  layer::resetRecords();
  Session session(options());
  EXPECT_EQ(context, made);
  EXPECT_EQ(layer::callCount("clCreateContext"), 0);
  session.stop();
  EXPECT_EQ(context, nullptr);
}

TEST_F(SessionOpencl, SaysWhichDeviceIsMissing) {
  for (const std::vector<layer::FakePlatform>& machine :
       {std::vector<layer::FakePlatform>{}, {layer::FakePlatform{"Portable", {}, {}, {}}}}) {
    layer::present(machine);
    EXPECT_EQ(refusalOf(options()), framequilt::openclObstacle());
  }
}

TEST_F(SessionOpencl, SaysThatTheKernelFileIsMissing) {
  SessionOptions asked = options();
  asked.kernelFile = (folder_ / "nothing.cl").string();
  EXPECT_EQ(refusalOf(asked), "the kernel file '" + asked.kernelFile +
                                  "' cannot be read: name another, or choose the host backend");
  EXPECT_EQ(layer::callCount("clCreateContext"), 0);
}

TEST_F(SessionOpencl, SaysThatKernelsDoNotBuild) {
  SessionOptions asked = options();
  asked.kernelFile = fileWith("no kernel");
  EXPECT_EQ(refusalOf(asked), "the kernels of '" + asked.kernelFile +
                                  "' do not build on this GPU: name another kernel file, or choose "
                                  "the host backend");
}

TEST_F(SessionOpencl, SaysThatTheStartIsRefused) {
  SessionOptions asked = options();
  asked.kernelFile = fileWith("kernel void another(global int* out) { *out = 1; }");
  EXPECT_EQ(refusalOf(asked), "the GPU refuses to start a run with '" + asked.kernelFile +
                                  "': name another kernel file, or choose the host backend");
}

TEST_F(SessionOpencl, SaysWhatTheDeviceRefuses) {
  EXPECT_EQ(refusalOf(options(), "clCreateContext"),
            "the GPU refuses an OpenCL context: check its driver, or choose the host backend");
  EXPECT_EQ(
      refusalOf(options(), "clCreateCommandQueue"),
      "the GPU refuses an OpenCL command queue: check its driver, or choose the host backend");
}

TEST_F(SessionOpencl, LeavesTheCurrentFolderAlone) {
  const fs::path former = fs::current_path();
  fs::current_path(folder_);
  // Whoever opens it to read waits for ever.
  ASSERT_EQ(::mkfifo("cl.bin", 0600), 0);
  EXPECT_EQ(Session(options()).backend(), "opencl");
  EXPECT_EQ(Session(options(Backend::kHost)).backend(), "host");
  SessionOptions missing = options(Backend::kAuto);
  missing.kernelFile = "nothing.cl";
  EXPECT_EQ(Session(missing).backend(), "host");
  missing.kernelFile = "cl.bin";
  EXPECT_EQ(Session(missing).backend(), "host");
  fs::current_path(former);
}

TEST_F(SessionOpencl, LimitsOfTheDeviceAreRestored) {
  const int rows = MAXROWCL, cols = MAXCOLCL;
  SessionOptions asked = options();
  asked.maxRows = 17;
  asked.maxCols = 18;
  for (const int more : {0, 1}) {
    asked.maxRows += more;
    Session session(asked);
    EXPECT_EQ(MAXROWCL, asked.maxRows);
    EXPECT_EQ(MAXCOLCL, 18);
    session.stop();
    EXPECT_EQ(MAXROWCL, rows);
    EXPECT_EQ(MAXCOLCL, cols);
  }
}

TEST_F(SessionOpencl, GoesOnAfterAFrameThatTheDeviceRefused) {
  Session session(options());
  session.add(viewOf(frameAt(20, 100)));
  EXPECT_EQ(session.add(viewOf(frameAt(120, 100))).verdict, Verdict::kJoined);
  const cv::Mat before = session.mosaic().clone();
  // At its first step, the replacement of zeros.
  layer::failCall("clEnqueueNDRangeKernel", 1, CL_OUT_OF_RESOURCES);
  EXPECT_EQ(session.add(viewOf(frameAt(220, 100))).verdict, Verdict::kRefused);
  EXPECT_EQ(cv::norm(session.mosaic(), before, cv::NORM_INF), 0);
  EXPECT_EQ(session.add(viewOf(frameAt(200, 140))).placement, cv::Point(180, 40));
}
