// SPDX-License-Identifier: Apache-2.0
#include "tests/support/scripted_engine.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <utility>

#include "cpu/run_state.h"
#include "cpu/stitching_run.h"
#include "framequilt/framequilt.h"
#include "framequilt/tuning.h"
#include "opencl/OpenclJoint.h"
#include "opencl/OpenclJointState.h"

namespace {

ScriptedEngine* instance = nullptr;

constexpr int kFirstMosaicSide = 6000;

/// Handles that nobody looks into.
template <class Handle>
Handle madeUp() {
  static char object;
  return reinterpret_cast<Handle>(&object);
}

void forgetDevice() {
  device = nullptr;
  context = nullptr;
  commandQueue = nullptr;
  program = nullptr;
}

}  // namespace

ScriptedEngine::ScriptedEngine(Device deviceOfMachine)
    : device_(deviceOfMachine),
      run_{deviceOfMachine == Device::kServes ? flagsCL : flagsCpu, {}, {}, {}, {}} {
  assert(instance == nullptr);
  instance = this;
  run_.flags = {};
}

ScriptedEngine::~ScriptedEngine() { instance = nullptr; }

ScriptedEngine& ScriptedEngine::active() {
  assert(instance != nullptr);
  return *instance;
}

ScriptedEngine::Answer ScriptedEngine::noEstimate() {
  return [](Run&) { return -1; };
}

ScriptedEngine::Answer ScriptedEngine::failedWith(int matches) {
  return [=](Run& run) {
    run.flags.matchNum = matches;
    return -1;
  };
}

ScriptedEngine::Answer ScriptedEngine::measured(int dx, int dy) {
  return [=](Run& run) {
    run.flags.matchNum = 50;
    run.flags.offsetX = dx;
    run.flags.offsetY = dy;
    return 0;
  };
}

ScriptedEngine::Answer ScriptedEngine::qualified(int dx, int dy) {
  return [=](Run& run) {
    run.flags.stitch_flags = 1;
    return measured(dx, dy)(run);
  };
}

ScriptedEngine::Answer ScriptedEngine::blended(int dx, int dy, int growLeft, int growTop) {
  return [=](Run& run) {
    if (growLeft != 0 || growTop != 0) {
      // Nobody looks at the pixels.
      run.mosaic = cv::Mat(run.mosaic.rows + growTop, run.mosaic.cols + growLeft, CV_8UC1);
    }
    SPoint& at = run.flags.position;
    at = {at.x + dx + growLeft, at.y + dy + growTop};
    run.topLeft = {std::min(run.topLeft.x + growLeft, at.x),
                   std::min(run.topLeft.y + growTop, at.y)};
    run.bottomRight = {std::max(run.bottomRight.x + growLeft, at.x + run.working.width),
                       std::max(run.bottomRight.y + growTop, at.y + run.working.height)};
    return qualified(dx, dy)(run);
  };
}

ScriptedEngine::Answer ScriptedEngine::full(const Answer& answer) {
  return [=](Run& run) { return answer(run) < 0 ? -1 : 1; };
}

bool ScriptedEngine::start(const std::vector<int>& arguments) {
  ++starts;
  startArguments = arguments;
  return onStart();
}

int ScriptedEngine::stitch(unsigned char* reference, unsigned char* frame, Call call) {
  call.reference = bytes(reference);
  call.frame = bytes(frame);
  calls.push_back(std::move(call));
  if (overwritesFrames) overwrite(reference, frame);
  if (calls.back().frameIndex == 0) beginMosaic();
  return calls.size() <= answers.size() ? answers[calls.size() - 1](run_) : -1;
}

std::vector<unsigned char> ScriptedEngine::bytes(const unsigned char* image) const {
  if (image == nullptr) return {};
  return {image,
          image + std::ptrdiff_t{1} * startArguments[0] * startArguments[1] * startArguments[2]};
}

void ScriptedEngine::overwrite(unsigned char* reference, unsigned char* frame) const {
  const int count = startArguments[0] * startArguments[1] * startArguments[2];
  if (reference != nullptr) std::fill_n(reference, count, static_cast<unsigned char>(0xAA));
  std::fill_n(frame, count, static_cast<unsigned char>(0xBB));
}

void ScriptedEngine::beginMosaic() {
  const int frameScale = calls.back().frameScale;
  run_.working = {startArguments[1] / frameScale, startArguments[0] / frameScale};
  // Never written, so its pages never come to be.
  run_.mosaic = cv::Mat(kFirstMosaicSide, kFirstMosaicSide, CV_8UC1);
  SPoint& at = run_.flags.position;
  at = {kFirstMosaicSide / 2 - run_.working.width / 2,
        kFirstMosaicSide / 2 - run_.working.height / 2};
  run_.topLeft = at;
  run_.bottomRight = {at.x + run_.working.width, at.y + run_.working.height};
}

bool initJoint(int rows, int cols, int channels, int cornerBudget, int maxRow, int maxCol,
               int stitchMode, int staticDynamicFlag) {
  ScriptedEngine& engine = ScriptedEngine::active();
  engine.deviceStart.maxRows = MAXROWCL;
  engine.deviceStart.maxCols = MAXCOLCL;
  engine.deviceStart.factor = scaleCL;
  openclDeviceFlag = engine.deviceOfMachine() == ScriptedEngine::Device::kServes;
  if (!openclDeviceFlag) forgetDevice();
  return engine.start(
      {rows, cols, channels, cornerBudget, maxRow, maxCol, stitchMode, staticDynamicFlag});
}

bool initJointCpu(int rows, int cols, int channels, int cornerBudget, int maxRow, int maxCol) {
  return ScriptedEngine::active().start(
      {rows, cols, channels, cornerBudget, maxRow, maxCol, GStitchMode, GstaticDynamicFlag});
}

cl_context CreateContext(cl_device_id* dev) {
  if (ScriptedEngine::active().deviceOfMachine() == ScriptedEngine::Device::kNone) return nullptr;
  *dev = madeUp<cl_device_id>();
  return madeUp<cl_context>();
}

cl_command_queue CreateCommandQueue(cl_context, cl_device_id) { return madeUp<cl_command_queue>(); }

cl_program CreateProgram(cl_context, cl_device_id, const char* path) {
  ScriptedEngine::active().deviceStart.kernelFile = path;
  return madeUp<cl_program>();
}

int stichingImagedJoint(unsigned char* src, unsigned char* dest, int frameIndex, int frameScale,
                        int motorDx, int motorDy, bool motorFlag, SPoint& outLeft, SPoint& outRight,
                        cv::Mat& outMosaic, stitchflags& outFlags) {
  ScriptedEngine& engine = ScriptedEngine::active();
  const int result =
      engine.stitch(src, dest, {{}, {}, frameIndex, frameScale, {motorDx, motorDy}, motorFlag});
  const ScriptedEngine::Run& run = engine.run();
  outLeft = run.topLeft;
  outRight = run.bottomRight;
  outMosaic = run.mosaic;
  outFlags = run.flags;
  return result;
}

bool uinitJoint() {
  ++ScriptedEngine::active().stops;
  openclDeviceFlag = false;
  forgetDevice();
  return true;
}
