// SPDX-License-Identifier: Apache-2.0
// What a frame costs on a card once a run is under way.
#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "framequilt/framequilt.h"
#include "tests/opencl/device_fixture.h"
#include "tests/support/capture_run.h"
#include "tests/support/scene.h"

namespace {

namespace layer = framequilt::opencl_layer;

class FrameCosts : public EitherMemory {};
FRAMEQUILT_IN_EITHER_MEMORY(FrameCosts);

using Counts = std::map<std::string, int>;

/// What each of the two corner threads launches, `suffix` behind the names of its own copies.
void addCornerLaunches(Counts& counts, const std::string& suffix, bool colour) {
  if (colour) counts["rgb2GaryKernel" + suffix] += 1;
  counts["opencvInterLineARResizeDownCh1Kernel" + suffix] += 1;
  counts["findGradSquareCrossTermsKernel" + suffix] += 1;
  for (const char* const step :
       {"opencvcopyFilter2DBorderRowFloat", "opencvcopyFilter2DBorderColFloat",
        "opencvFilter2DRowCalcFloatWin5", "opencvFilter2DColCalcFloatWin5",
        "opencvcopyFilter2DTakeOutBoundFloat"}) {
    counts[step + suffix] += 3;
  }
}

Counts expectedLaunches(bool colour) {
  Counts counts;
  counts[colour ? "pretJudgeImageCh3Kernel" : "pretJudgeImageCh1Kernel"] = 1;
  addCornerLaunches(counts, "", colour);
  addCornerLaunches(counts, "2", colour);
  if (colour) counts["rgb2GaryKernel"] += 2;
  for (const char* const step :
       {"opencvcopyFilter2DBorderRowUhcarMode", "opencvcopyFilter2DBorderColUcharMode",
        "opencvFilter2DRowCalcUcharWin5Mode", "opencvFilter2DColCalcUcharWin5Mode",
        "opencvcopyFilter2DTakeOutBoundUchar"}) {
    counts[step] += 2;
  }
  counts["absCalcKernel"] = 1;
  counts[colour ? "rgb2GaryFloatTwoCh3Kernel" : "rgb2GaryFloatTwoCh1Kernel"] = 1;
  counts["getWeightImageKernel"] = 1;
  counts[colour ? "getFusionImageKernelCh3" : "getFusionImageKernelCh1"] = 1;
  return counts;
}

struct Costs {
  Counts launches;
  int wrappers = 0, copies = 0, blockingMaps = 0, maps = 0, unmaps = 0;
  std::size_t mappedBytes = 0, wrappedBytes = 0;
  std::vector<std::string> others;
};

Costs costsOf(const std::vector<layer::TraceEvent>& trace) {
  using layer::TraceKind;
  Costs costs;
  for (const layer::TraceEvent& event : trace) {
    switch (event.kind) {
      case TraceKind::kLaunch:
        ++costs.launches[event.kernel];
        break;
      case TraceKind::kMap:
        ++costs.maps;
        costs.blockingMaps += event.blocking ? 1 : 0;
        costs.mappedBytes += event.bytes;
        break;
      case TraceKind::kUnmap:
        ++costs.unmaps;
        break;
      case TraceKind::kCreate:
        if (event.object == layer::ObjectKind::kBuffer) {
          costs.wrappers += (event.flags & CL_MEM_USE_HOST_PTR) != 0 ? 1 : 0;
          costs.copies += (event.flags & CL_MEM_COPY_HOST_PTR) != 0 ? 1 : 0;
          costs.wrappedBytes += event.bytes;
          if (event.pointer == nullptr) costs.others.emplace_back("buffer without host memory");
        } else {
          costs.others.emplace_back("creation");
        }
        break;
      case TraceKind::kSetArgument:
      case TraceKind::kRelease:
        break;
      default:
        costs.others.push_back("event of kind " + std::to_string(static_cast<int>(event.kind)));
    }
  }
  return costs;
}

TEST_P(FrameCosts, CostTheSameForEveryLaterFrame) {
  for (const int channels : {1, 3}) {
    SCOPED_TRACE(channels);
    const bool colour = channels == 3;
    const Scene scene(560, 700, channels, 11);
    RunSettings settings;
    settings.channels = channels;
    CaptureRun run(settings);
    ASSERT_TRUE(openclDeviceFlag);
    const auto frame = [&](int x, int y) { return scene.cut(x, y, settings.rows, settings.cols); };
    run.first(frame(200, 150), frame(320, 150));
    run.next(frame(320, 230));
    const int living = layer::live().count();
    layer::resetRecords();
    ASSERT_TRUE(run.next(frame(200, 240)).joined());

    const Costs costs = costsOf(layer::trace());
    EXPECT_EQ(costs.launches, expectedLaunches(colour));
    int launches = 0;
    for (const auto& [kernel, count] : costs.launches) launches += count;
    EXPECT_EQ(launches, colour ? 53 : 49);
    EXPECT_EQ(costs.others, std::vector<std::string>{});
    // The frame, both threads' images, the motion's pair, twice the fusion's pair.
    EXPECT_EQ(costs.wrappers, colour ? 9 : 7);
    EXPECT_EQ(costs.copies, colour ? 0 : 2);
    const std::size_t pixels = std::size_t{240} * 320;
    EXPECT_EQ(costs.wrappedBytes, 9 * pixels * static_cast<std::size_t>(channels));
    // The frame; of each thread three products and the gray image; the motion; both distance maps
    // and the fused part.
    EXPECT_EQ(costs.maps, 13);
    EXPECT_EQ(costs.unmaps, 13);
    EXPECT_EQ(costs.blockingMaps, 8);
    const std::size_t frameBytes = pixels * static_cast<std::size_t>(channels);
    EXPECT_EQ(costs.mappedBytes,
              frameBytes + 2 * (3 * pixels + pixels) + pixels + 8 * pixels + frameBytes);
    EXPECT_EQ(layer::live().count(), living);
  }
}

}  // namespace
