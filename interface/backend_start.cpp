// SPDX-License-Identifier: Apache-2.0
#include "interface/backend_start.h"

#include <string>

#include "cpu/stitching_run.h"
#include "framequilt/framequilt.h"
#include "framequilt/opencl_devices.h"
#include "framequilt/tuning.h"
#include "interface/kernel_file.h"
#include "interface/opencl_obstacle.h"
#include "interface/run_modes.h"
#include "interface/session_options.h"
#include "opencl/OpenclJoint.h"
#include "opencl/OpenclJointReleased.h"
#include "opencl/OpenclJointState.h"

namespace framequilt {
namespace {

/// A handle of the device. One that is made here is given back unless it is kept.
template <class Handle>
class DeviceHandle {
 public:
  using Release = cl_int (*)(Handle);

  DeviceHandle(Handle& global, Release release) : global_(global), release_(release) {}
  ~DeviceHandle() {
    if (!made_) return;
    release_(global_);
    global_ = nullptr;
  }
  DeviceHandle(const DeviceHandle&) = delete;
  DeviceHandle& operator=(const DeviceHandle&) = delete;

  /// One that a host has put there stays. \return Whether there is one.
  template <class Make>
  bool fill(Make make) {
    if (global_ != nullptr) return true;
    global_ = make();
    made_ = global_ != nullptr;
    return made_;
  }
  void keep() { made_ = false; }

 private:
  Handle& global_;
  Release release_;
  bool made_ = false;
};

std::string refusedByGpu(const char* object) {
  return std::string("the GPU refuses an OpenCL ") + object + ": check its driver, or " +
         kChooseHost;
}

/// The kernels and the driver do not go together.
std::string refusedKernels(const std::string& what, const std::string& kernelFile) {
  const char* const remedy = kernelFile.empty() ? "update its driver" : "name another kernel file";
  return what + ": " + remedy + ", or " + kChooseHost;
}

/// Fills the globals of the device, so that the start of a run finds them and makes none itself.
/// \return Empty, or what was in the way; the globals are as before then.
std::string fillDevice(const std::string& kernelFile) {
  const std::string file = wantedKernelFile(kernelFile);
  if (file.empty()) return openclObstacle(kernelFile);

  forgetReleasedHandles();
  DeviceHandle ofContext(context, &clReleaseContext);
  DeviceHandle ofQueue(commandQueue, &clReleaseCommandQueue);
  DeviceHandle ofProgram(program, &clReleaseProgram);
  if (!ofContext.fill([] { return CreateContext(&device); })) {
    const std::string reason = deviceObstacle();
    return reason.empty() ? refusedByGpu("context") : reason;
  }
  if (!ofQueue.fill([] { return CreateCommandQueue(context, device); })) {
    return refusedByGpu("command queue");
  }
  if (!ofProgram.fill([&] { return CreateProgram(context, device, file.c_str()); })) {
    return refusedKernels("the kernels of '" + file + "' do not build on this GPU", kernelFile);
  }
  ofContext.keep();
  ofQueue.keep();
  ofProgram.keep();
  return {};
}

int stitchMode(const SessionOptions& options) {
  return options.criterion == Criterion::kMotion ? 1 : 0;
}

int staticDynamicFlag(const SessionOptions& options) { return options.dynamicScene ? 1 : 0; }

/// On the device that the globals hold, or on the host where it refuses.
bool startOnDevice(const SessionOptions& options) {
  return initJoint(options.rows, options.cols, options.channels, options.cornerBudget,
                   options.maxRows, options.maxCols, stitchMode(options),
                   staticDynamicFlag(options));
}

/// Not through `initJoint`, which would look for a device and kernels of its own.
bool startOnHost(const SessionOptions& options) {
  setRunModes(stitchMode(options), staticDynamicFlag(options));
  return initJointCpu(options.rows, options.cols, options.channels, options.cornerBudget,
                      options.maxRows, options.maxCols);
}

std::string refusedStart(const SessionOptions& options) {
  const std::string file = wantedKernelFile(options.kernelFile);
  return refusedKernels("the GPU refuses to start a run with '" + file + "'", options.kernelFile);
}

void requireStarted(bool started) {
  if (started) return;
  throw Error(ErrorCode::kStartFailed,
              "the worker threads could not be started: close other programs and try again");
}

bool mayUseOpencl(const SessionOptions& options) {
  return options.backend != Backend::kHost && missingInOpencl(options).empty();
}

}  // namespace

StartedEngine::Stop::~Stop() { uinitJoint(); }

StartedEngine::StartedEngine(const SessionOptions& options)
    : scale_(::scale, options.scale),
      scaleCL_(::scaleCL, 1),
      maxRowsCL_(MAXROWCL, options.maxRows),
      maxColsCL_(MAXCOLCL, options.maxCols) {
  // A run that somebody left open there gives way, as one on the host does.
  if (openclDeviceFlag) uinitJoint();
  if (mayUseOpencl(options)) {
    const std::string obstacle = fillDevice(options.kernelFile);
    if (obstacle.empty()) {
      stop_.emplace();
      requireStarted(startOnDevice(options));
      usesOpencl_ = openclDeviceFlag;
      if (usesOpencl_ || options.backend == Backend::kAuto) return;
    }
    if (options.backend == Backend::kOpencl) {
      throw Error(ErrorCode::kNoOpencl, obstacle.empty() ? refusedStart(options) : obstacle);
    }
  }
  stop_.emplace();
  requireStarted(startOnHost(options));
}

}  // namespace framequilt
