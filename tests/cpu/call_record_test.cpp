// SPDX-License-Identifier: Apache-2.0
#include "cpu/call_record.h"

#include <gtest/gtest.h>

#include <vector>

#include "cpu/run_state.h"
#include "framequilt/tuning.h"
#include "tests/support/points.h"
#include "tests/support/scoped_value.h"

using framequilt::forgetMeasures;
using framequilt::motionOfCall;
using framequilt::restoreReference;
using framequilt::setMotionOfCall;

namespace {

using Bytes = std::vector<unsigned char>;

/// The reference of the last call and of the next one, of 2 x 3 working pixels, with room behind.
class References : public testing::Test {
 protected:
  static constexpr int kRoom = 24;

  explicit References(int channels = 1) : info_(theSorImageInfoCpu, {0, channels, 9, 9}) {}

  Bytes last_ = Bytes(kRoom, 7);
  Bytes next_ = Bytes(kRoom, 5);

 private:
  ScopedValue<int> rows_{imgScaleRow, 2};
  ScopedValue<int> cols_{imgScaleCol, 3};
  ScopedValue<imgInfo> info_;
  ScopedValue<unsigned char*> lastOfRun_{theSorImageScale, last_.data()};
  ScopedValue<unsigned char*> nextOfRun_{theSorImageTemp, next_.data()};
};

class ColourReferences : public References {
 protected:
  ColourReferences() : References(3) {}
};

/// `changed` bytes of the last reference, then what was there.
Bytes restored(int changed) {
  Bytes bytes(24, 5);
  for (int i = 0; i < changed; ++i) bytes[static_cast<std::size_t>(i)] = 7;
  return bytes;
}

}  // namespace

TEST(CallRecord, ForgetsEverythingButThePosition) {
  const ScopedValue<stitchflags> record(flagsCpu, {1.5F, 2.5F, 3.5F, 4.5F, 5, 6, 7, {8, 9}, 1});
  forgetMeasures();
  EXPECT_EQ(flagsCpu.brightOne, 0.0F);
  EXPECT_EQ(flagsCpu.brightTwo, 0.0F);
  EXPECT_EQ(flagsCpu.definitionOne, 0.0F);
  EXPECT_EQ(flagsCpu.definitionTwo, 0.0F);
  EXPECT_EQ(flagsCpu.matchNum, 0);
  EXPECT_EQ(flagsCpu.offsetX, 0);
  EXPECT_EQ(flagsCpu.offsetY, 0);
  EXPECT_EQ(flagsCpu.stitch_flags, 0);
  EXPECT_EQ(flagsCpu.position, (SPoint{8, 9}));
}

TEST(CallRecord, KeepsTheMotionOfOneCall) {
  forgetMeasures();
  EXPECT_FALSE(motionOfCall());
  setMotionOfCall(0);
  EXPECT_EQ(motionOfCall(), 0);
  setMotionOfCall(12);
  EXPECT_EQ(motionOfCall(), 12);
  forgetMeasures();
  EXPECT_FALSE(motionOfCall());
}

TEST_F(References, AreRestoredAtWorkingSize) {
  restoreReference();
  EXPECT_EQ(next_, restored(6));
  EXPECT_EQ(last_, Bytes(kRoom, 7));
}

TEST_F(ColourReferences, AreRestoredInEveryChannel) {
  restoreReference();
  EXPECT_EQ(next_, restored(18));
}

TEST_F(References, ThatAreMissingAreLeftAlone) {
  {
    const ScopedValue<unsigned char*> none(theSorImageScale, nullptr);
    restoreReference();
  }
  {
    const ScopedValue<unsigned char*> none(theSorImageTemp, nullptr);
    restoreReference();
  }
  EXPECT_EQ(next_, restored(0));
}
