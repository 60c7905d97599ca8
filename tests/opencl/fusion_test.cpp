// SPDX-License-Identifier: Apache-2.0
// The fusion on a card, against that of the host.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "imaging/fusion.h"
#include "opencl/OpenclJointFusion.h"
#include "opencl/OpenclJointState.h"
#include "tests/opencl/both_backends.h"
#include "tests/support/random_images.h"

namespace {

namespace layer = framequilt::opencl_layer;

class Fusion : public BothBackends {};
FRAMEQUILT_IN_EITHER_MEMORY(Fusion);

TEST_P(Fusion, WeightsAreTheHosts) {
  forEveryPair([](PlaneSize size, int channels, Bytes mosaic, Bytes frame) {
    const Bytes formerMosaic = mosaic;
    const Bytes formerFrame = frame;
    Bytes host(size.bytes());
    ASSERT_TRUE(weightofTwoAreaFun(mosaic.data(), frame.data(), size.rows, size.cols, channels, 0,
                                   host.data()));
    ASSERT_TRUE(
        weightofTwoAreaFunCL(mosaic.data(), frame.data(), size.rows, size.cols, channels, 0));
    ASSERT_EQ(readBack(AreaImageOneWeightCL, host.size()), host);
    ASSERT_EQ(mosaic, formerMosaic);
    ASSERT_EQ(frame, formerFrame);
  });
}

// As on the host, only three channels make a pixel of three bytes here.
TEST_P(Fusion, WeightsOfTwoChannelsTakeAByteAPixel) {
  forEveryPair([](PlaneSize size, int /*channels*/, Bytes mosaic, Bytes frame) {
    Bytes host(size.bytes());
    ASSERT_TRUE(
        weightofTwoAreaFun(mosaic.data(), frame.data(), size.rows, size.cols, 2, 0, host.data()));
    ASSERT_TRUE(weightofTwoAreaFunCL(mosaic.data(), frame.data(), size.rows, size.cols, 2, 0));
    ASSERT_EQ(readBack(AreaImageOneWeightCL, host.size()), host);
  });
}

TEST_P(Fusion, FusionIsTheHostsAndLeavesTheFrameAlone) {
  forEveryPair([](PlaneSize size, int channels, const Bytes& mosaic, const Bytes& frame) {
    Bytes hostMosaic = mosaic;
    Bytes hostFrame = frame;
    ASSERT_TRUE(
        twoImageFusion(hostMosaic.data(), hostFrame.data(), channels, 0, size.rows, size.cols));
    Bytes cardMosaic = mosaic;
    Bytes cardFrame = frame;
    ASSERT_TRUE(
        twoImageFusionCL(cardMosaic.data(), cardFrame.data(), channels, 0, size.rows, size.cols));
    ASSERT_EQ(cardMosaic, hostMosaic);
    ASSERT_EQ(cardFrame, frame);
  });
}

TEST_P(Fusion, FusionThatTheCardRefusesChangesNothing) {
  for (const int channels : {1, 3}) {
    SCOPED_TRACE(channels);
    const PlaneSize size = {20, 30};
    Bytes a = Random(10).bytes(size.bytes(channels));
    Bytes b = Random(11).bytes(size.bytes(channels));
    const Bytes formerA = a;
    const Bytes formerB = b;
    const auto expectRefused = [&](const char* call, int nth) {
      SCOPED_TRACE(std::string(call) + " " + std::to_string(nth));
      layer::failCall(call, nth, CL_OUT_OF_RESOURCES);
      EXPECT_FALSE(twoImageFusionCL(a.data(), b.data(), channels, 0, size.rows, size.cols));
      EXPECT_EQ(a, formerA);
      EXPECT_EQ(b, formerB);
      layer::clearFaults();
    };
    for (int nth = 1; nth <= 4; ++nth) expectRefused("clCreateBuffer", nth);
    for (int nth = 1; nth <= 3; ++nth) expectRefused("clEnqueueNDRangeKernel", nth);
    for (int nth = 1; nth <= 3; ++nth) expectRefused("clEnqueueMapBuffer", nth);
    EXPECT_TRUE(twoImageFusionCL(a.data(), b.data(), channels, 0, size.rows, size.cols));
  }
}

TEST_P(Fusion, NullIsRefusedWithALine) {
  Bytes image(100, 7);
  unsigned char* const some = image.data();
  const Entries refused = {"ptr is null"};
  for (const auto& [a, b] : {std::pair<unsigned char*, unsigned char*>{nullptr, some},
                             {some, nullptr},
                             {nullptr, nullptr}}) {
    EXPECT_FALSE(weightofTwoAreaFunCL(a, b, 10, 10, 1, 0));
    EXPECT_EQ(journal_.take(), refused);
    EXPECT_FALSE(twoImageFusionCL(a, b, 1, 0, 10, 10));
    EXPECT_EQ(journal_.take(), refused);
  }
  EXPECT_EQ(image, Bytes(100, 7));
}

}  // namespace
