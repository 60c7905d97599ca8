// SPDX-License-Identifier: Apache-2.0
// Each backend's record and limits are read where that backend keeps them.
#include "interface/backend_access.h"

#include <gtest/gtest.h>

#include "cpu/call_record.h"
#include "cpu/run_state.h"
#include "framequilt/tuning.h"
#include "opencl/OpenclJointCallRecord.h"
#include "opencl/OpenclJointState.h"
#include "tests/support/scoped_value.h"

using framequilt::BackendAccess;
using framequilt::hostAccess;
using framequilt::Limits;
using framequilt::openclAccess;

namespace {

void expectLimits(const Limits& limits, float first) {
  EXPECT_EQ(limits.leastOverlap, first);
  EXPECT_EQ(limits.mostOverlap, first + 1);
  EXPECT_EQ(limits.brightness, first + 2);
  EXPECT_EQ(limits.sharpness, first + 3);
  EXPECT_EQ(limits.change, static_cast<int>(first) + 4);
}

}  // namespace

TEST(BackendAccess, LimitsAreThoseInForceOfEachBackend) {
  const ScopedValue<float> least(ImageOverlap_minCpu, 10), leastCL(ImageOverlap_minCL, 20);
  const ScopedValue<float> most(ImageOverlap_maxCpu, 11), mostCL(ImageOverlap_maxCL, 21);
  const ScopedValue<float> bright(brightThCpu, 12), brightCL(brightThCL, 22);
  const ScopedValue<float> sharp(defintThCpu, 13), sharpCL(defintThCL, 23);
  const ScopedValue<int> change(motionValueThCpu, 14), changeCL(motionValueThCL, 24);
  expectLimits(hostAccess().limits(), 10);
  expectLimits(openclAccess().limits(), 20);
}

TEST(BackendAccess, MeasuresAreForgottenInTheRecordOfTheBackend) {
  const auto forgetsItsOwn = [](const BackendAccess& access, stitchflags& own, stitchflags& other) {
    own.matchNum = other.matchNum = 5;
    framequilt::setMotionOfCall(6);
    framequilt::setMotionOfCallCL(6);
    framequilt::noteLackOfMemoryInCall();
    framequilt::noteLackOfMemoryInCallCL();
    EXPECT_EQ(access.motionOfCall(), 6);
    EXPECT_TRUE(access.lackedMemoryInCall());
    access.forgetMeasures();
    EXPECT_FALSE(access.lackedMemoryInCall());
    EXPECT_EQ(access.motionOfCall(), std::nullopt);
    EXPECT_EQ(own.matchNum, 0);
    EXPECT_EQ(other.matchNum, 5);
  };
  forgetsItsOwn(hostAccess(), flagsCpu, flagsCL);
  EXPECT_TRUE(openclAccess().lackedMemoryInCall()) << "the other's is its own";
  forgetsItsOwn(openclAccess(), flagsCL, flagsCpu);
  flagsCpu = flagsCL = {};
}
