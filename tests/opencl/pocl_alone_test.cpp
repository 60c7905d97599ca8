// SPDX-License-Identifier: Apache-2.0
// The usual machine without a card the library takes: an OpenCL platform is there, of another name.
#include <CL/cl.h>
#include <gtest/gtest.h>

#include "framequilt/framequilt.h"
#include "tests/run/captures.h"
#include "tests/support/captured_output.h"
#include "tests/support/scoped_folder.h"

namespace {

TEST(PoclAlone, TheHostServesTheRun) {
  cl_uint platforms = 0;
  ASSERT_EQ(clGetPlatformIDs(0, nullptr, &platforms), CL_SUCCESS)
      << "OpenCL tests need PoCL: run scripts/setup";
  ASSERT_EQ(platforms, 1U);

  const ScopedFolder folder;
  const CaptureKind kind = {3, 1, 1, 0};
  const RoundTrip trip(kind);
  const std::string start = standardOutputOf([&] {
    const RunSettings settings = kind.settings();
    EXPECT_TRUE(initJoint(settings.rows, settings.cols, settings.channels, settings.cornerBudget,
                          settings.maxRow, settings.maxCol, settings.stitchMode,
                          settings.staticDynamicFlag));
  });
  EXPECT_FALSE(openclDeviceFlag);
  // No kernel file is looked for: it would be missed here.
  EXPECT_EQ(start.find("cl.bin"), std::string::npos);
  EXPECT_EQ(start.find("44444444444444444444\n"), 0U);
  uinitJoint();

  CaptureRun run(kind.settings());
  for (const FrameOutcome& outcome : trip.play(run)) EXPECT_TRUE(outcome.joined());
}

}  // namespace
