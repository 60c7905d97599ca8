// SPDX-License-Identifier: Apache-2.0
/// \file
/// Times each stage of a frame on the host and on an OpenCL device, side by side, and prints a
/// table of medians for docs/opencl.md.
///
///     opencl_stages [--any-device] [--runs N] [--sizes WIDTHxHEIGHT ...]
///
/// With --any-device the first device of the first platform will do, whatever it is called.
#include <CL/cl.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <functional>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "cpu/frame_driver.h"
#include "cpu/offset_estimation.h"
#include "cpu/stitching_run.h"
#include "cpu/working_buffers.h"
#include "framequilt/framequilt.h"
#include "framequilt/report_sink.h"
#include "framequilt/tuning.h"
#include "imaging/fusion.h"
#include "imaging/motion.h"
#include "imaging/overlap.h"
#include "imaging/run_buffer.h"
#include "opencl/OpenclJoint.h"
#include "opencl/OpenclJointFrame.h"
#include "opencl/OpenclJointFusion.h"
#include "opencl/OpenclJointMotion.h"
#include "opencl/OpenclJointOffset.h"
#include "opencl/OpenclJointOverlap.h"
#include "opencl/OpenclJointRun.h"
#include "opencl/OpenclJointState.h"
#include "tools/framequilt/generated_scene.h"

namespace {

using Clock = std::chrono::steady_clock;
using Bytes = unsigned char;

struct Options {
  bool anyDevice = false;
  int runs = 9;
  std::vector<std::string> sizes = {"640x480", "1280x960", "1920x1080", "3840x2160"};
  std::string kernels = FRAMEQUILT_KERNELS;
};

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

double millisecondsOf(const std::function<void()>& action) {
  const Clock::time_point start = Clock::now();
  action();
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// One stage on both backends; run alternately, so that a busy machine slows both.
struct Stage {
  std::string name;
  std::function<void()> host, device;
};

void printRow(const Stage& stage, const std::string& frames, int runs) {
  std::vector<double> host;
  std::vector<double> onDevice;
  stage.host();
  stage.device();
  for (int i = 0; i < runs; ++i) {
    host.push_back(millisecondsOf(stage.host));
    onDevice.push_back(millisecondsOf(stage.device));
  }
  std::printf("| %s | %s | %.2f | %.2f | %.2f |\n", frames.c_str(), stage.name.c_str(),
              median(host), median(onDevice), median(onDevice) / median(host));
  std::fflush(stdout);
}

cl_device_id firstDevice() {
  cl_platform_id platform = nullptr;
  cl_device_id found = nullptr;
  clGetPlatformIDs(1, &platform, nullptr);
  if (platform != nullptr) clGetDeviceIDs(platform, CL_DEVICE_TYPE_ALL, 1, &found, nullptr);
  return found;
}

/// Fills the globals that a start takes over.
bool openDevice(const Options& options) {
  if (options.anyDevice) {
    device = firstDevice();
    if (device != nullptr)
      context = clCreateContext(nullptr, 1, &device, nullptr, nullptr, nullptr);
  } else {
    context = CreateContext(&device);
  }
  if (context == nullptr) return false;
  program = CreateProgram(context, device, options.kernels.c_str());
  return program != nullptr;
}

/// A capture of two frames that overlap by four fifths, seen alternately.
struct Pair {
  cv::Mat one, two;
  cv::Mat workOne, workTwo;  ///< Copies that a stage may write.

  Pair(cv::Size size, bool colour) {
    const cv::Point step(size.width / 5 / 2 * 2, size.height / 10 / 2 * 2);
    const cv::Mat scene =
        framequilt::tool::generateScene(size + cv::Size(step.x, step.y), /*seed=*/1);
    one = cut(scene, cv::Rect(cv::Point(), size), colour);
    two = cut(scene, cv::Rect(step, size), colour);
    restore();
  }

  void restore() {
    workOne = one.clone();
    workTwo = two.clone();
  }

 private:
  static cv::Mat cut(const cv::Mat& scene, const cv::Rect& part, bool colour) {
    cv::Mat frame = scene(part).clone();
    if (!colour) cv::cvtColor(frame, frame, cv::COLOR_BGR2GRAY);
    return frame;
  }
};

/// A run of one backend that takes the two frames in turn; every frame is joined.
class Run {
 public:
  using Stitch = int (*)(Bytes*, Bytes*, int, int, int, int, bool, SPoint&, SPoint&, cv::Mat&,
                         stitchflags&);

  Run(Pair& pair, Stitch stitch) : pair_(pair), stitch_(stitch) {
    call(pair_.workOne.data, pair_.workTwo.data, 0);
  }

  void next() {
    Bytes* const frame = takesOne_ ? pair_.workOne.data : pair_.workTwo.data;
    call(nullptr, frame, 1);
    takesOne_ = !takesOne_;
  }

  bool joined() const { return joined_; }

 private:
  void call(Bytes* reference, Bytes* frame, int index) {
    const SPoint before = record_.position;
    const int result =
        stitch_(reference, frame, index, 1, 0, 0, false, topLeft_, bottomRight_, mosaic_, record_);
    joined_ = result >= 0 && (record_.position.x != before.x || record_.position.y != before.y);
  }

  Pair& pair_;
  Stitch stitch_;
  bool takesOne_ = true;
  bool joined_ = false;
  SPoint topLeft_{}, bottomRight_{};
  cv::Mat mosaic_;
  stitchflags record_{};
};

void hostMotion(Pair& pair, int channels) {
  framequilt::allocateMotionPlanes();
  imageMotionModel(pair.one.data, pair.two.data, pair.one.rows, pair.one.cols, channels, channels);
  framequilt::releaseMotionPlanes();
}

void hostOverlap(Pair& pair, int channels) {
  framequilt::allocatePairPlanes();
  framequilt::allocateOverlapPlanes();
  float one = 0;
  float two = 0;
  const int rows = pair.one.rows;
  const int cols = pair.one.cols;
  calcOverLapImageBright(pair.one.data, pair.two.data, rows, cols, rows, cols, channels, one, two);
  calcOverLapImageDefinition(pair.one.data, pair.two.data, rows, cols, rows, cols, channels, one,
                             two);
  framequilt::releaseOverlapPlanes();
  framequilt::releasePairPlanes();
}

/// The planes that the driver of a frame provides.
void deviceOverlap(Pair& pair, int channels) {
  const std::size_t bytes = (pair.one.total() + 65536) * 2;
  const auto planes = {&resiz_OneCL,
                       &resiz_TwoCL,
                       &resiz_OneBoundCL,
                       &resiz_TwoBoundCL,
                       &resiz_OneBoundFilterCL,
                       &resiz_TwoBoundFilterCL};
  for (Bytes** plane : planes) framequilt::ensure(*plane, bytes);
  float one = 0;
  float two = 0;
  const int rows = pair.one.rows;
  const int cols = pair.one.cols;
  calcOverLapImageBrightCL(pair.one.data, pair.two.data, rows, cols, rows, cols, channels, one,
                           two);
  calcOverLapImageDefinitionCL(pair.one.data, pair.two.data, rows, cols, rows, cols, channels, one,
                               two);
  for (Bytes** plane : planes) framequilt::drop(*plane);
}

std::vector<Stage> stagesOf(Pair& pair, int channels) {
  const imgInfo info = {0, channels, pair.one.rows, pair.one.cols};
  const auto offset = [&pair, info](auto estimate) {
    int dx = 0;
    int dy = 0;
    int count = 0;
    estimate(pair.one.data, pair.two.data, info, dx, dy, count);
  };
  return {
      {"offset", [=] { framequilt::allocatePairPlanes(), offset(imageMosaicFun); },
       [=] { offset(imageMosaicFunCL); }},
      {"motion measure", [&pair, channels] { hostMotion(pair, channels); },
       [&pair, channels, info] {
         imageMotionModelCL(pair.one.data, pair.two.data, info.rows, info.cols, channels, channels);
       }},
      {"overlap measures", [&pair, channels] { hostOverlap(pair, channels); },
       [&pair, channels] { deviceOverlap(pair, channels); }},
      {"fusion",
       [&pair, channels, info] {
         twoImageFusion(pair.workOne.data, pair.workTwo.data, channels, 0, info.rows, info.cols);
       },
       [&pair, channels, info] {
         twoImageFusionCL(pair.workOne.data, pair.workTwo.data, channels, 0, info.rows, info.cols);
       }},
  };
}

bool printTable(cv::Size size, int channels, const Options& options) {
  const std::string frames = std::to_string(size.width) + " x " + std::to_string(size.height) +
                             (channels == 3 ? ", colour" : ", gray");
  Pair pair(size, channels == 3);
  GStitchMode = 1;
  GstaticDynamicFlag = 0;
  if (!openDevice(options) || !initJointCL(size.height, size.width, channels, 1, 20000, 20000) ||
      !initJointCpu(size.height, size.width, channels, 1, 20000, 20000)) {
    std::fputs("opencl_stages: no device could be opened; see `framequilt info`, or --any-device\n",
               stderr);
    return false;
  }
  Run host(pair, stichingImagedJointCpu);
  Run onDevice(pair, stichingImagedJointCL);
  bool all = host.joined() && onDevice.joined();
  printRow({"whole frame",
            [&] {
              host.next();
              all = all && host.joined();
            },
            [&] {
              onDevice.next();
              all = all && onDevice.joined();
            }},
           frames, options.runs);
  for (const Stage& stage : stagesOf(pair, channels)) printRow(stage, frames, options.runs);
  uinitJointCL();
  uninitJointCpu();
  if (!all) std::fputs("opencl_stages: a frame was not joined: the times mean little\n", stderr);
  return true;
}

cv::Size sizeOf(const std::string& text) {
  cv::Size size;
  if (std::sscanf(text.c_str(), "%dx%d", &size.width, &size.height) != 2 || size.area() <= 0) {
    throw CLI::ValidationError("--sizes", "give sizes as WIDTHxHEIGHT, not " + text);
  }
  return size;
}

int run(int count, char** arguments) {
  Options options;
  CLI::App app("Times each stage of a frame on the host and on an OpenCL device");
  app.add_flag("--any-device", options.anyDevice, "Take the first device of the first platform");
  app.add_option("--runs", options.runs, "Runs of each stage")->check(CLI::Range(1, 1000));
  app.add_option("--sizes", options.sizes, "Frame sizes, WIDTHxHEIGHT");
  app.add_option("--kernels", options.kernels, "The kernel file");
  try {
    app.parse(count, arguments);
    framequilt::setReportSink([](const char*, std::size_t, void*) {}, nullptr);
    std::puts("| frames | stage | host (ms) | OpenCL (ms) | ratio |\n|---|---|---|---|---|");
    for (const std::string& size : options.sizes) {
      for (const int channels : {1, 3}) {
        if (!printTable(sizeOf(size), channels, options)) return 1;
      }
    }
  } catch (const CLI::Error& error) {
    return app.exit(error);
  }
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  try {
    return run(count, arguments);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "opencl_stages: %s\n", failure.what());
    return 1;
  }
}
