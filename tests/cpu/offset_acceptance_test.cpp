// SPDX-License-Identifier: Apache-2.0
// This program has a consensus step of its own: the library calls it in place of its own one, so
// that every outcome of the step can be tried.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "cpu/offset_estimation.h"
#include "features/consensus.h"
#include "tests/cpu/run_fixture.h"

namespace {

struct Consensus {
  std::size_t pairsA = 0, pairsB = 0;
  float dx = 0.0F, dy = 0.0F;
  // What it was called with.
  int calls = 0;
  std::size_t offeredA = 0, offeredB = 0, inliersBefore = 0;
  float dxBefore = -1.0F, dyBefore = -1.0F;
};

Consensus consensus;

class OffsetAcceptance : public RunForPairs {
 protected:
  static constexpr int kUnset = 1000;

  bool accept(const Consensus& outcome) {
    consensus = outcome;
    dx_ = dy_ = matchCount_ = kUnset;
    return imageMosaicFun(image_.data(), image_.data(), {0, 1, kRows, kCols}, dx_, dy_,
                          matchCount_);
  }

  void expectRefusedUnseen(const Consensus& outcome) {
    EXPECT_FALSE(accept(outcome));
    EXPECT_EQ(consensus.calls, 1);
    EXPECT_EQ(dx_, kUnset);
    EXPECT_EQ(dy_, kUnset);
    EXPECT_EQ(matchCount_, kUnset);
  }

  Bytes image_ = texture(kRows, kCols, 31);
  int dx_ = 0, dy_ = 0, matchCount_ = 0;
};

TEST_F(OffsetAcceptance, ConsensusGetsAllMatchesAndEmptyResults) {
  accept({11, 11, 0.0F, 0.0F});
  EXPECT_EQ(consensus.calls, 1);
  EXPECT_GT(consensus.offeredA, 50U);
  EXPECT_EQ(consensus.offeredA, consensus.offeredB);
  EXPECT_EQ(consensus.inliersBefore, 0U);
  EXPECT_EQ(consensus.dxBefore, 0.0F);
  EXPECT_EQ(consensus.dyBefore, 0.0F);
}

TEST_F(OffsetAcceptance, ElevenPairsAreEnough) {
  EXPECT_TRUE(accept({11, 11, 5.0F, -6.0F}));
  EXPECT_EQ(matchCount_, 11);
  EXPECT_EQ(dx_, 5);
  EXPECT_EQ(dy_, -6);
}

TEST_F(OffsetAcceptance, TenPairsAreCountedAndRefused) {
  EXPECT_FALSE(accept({10, 10, 5.0F, -6.0F}));
  EXPECT_EQ(matchCount_, 10);
  EXPECT_EQ(dx_, kUnset);
  EXPECT_EQ(dy_, kUnset);
}

TEST_F(OffsetAcceptance, CountIsThatOfTheFirstList) {
  EXPECT_TRUE(accept({12, 3, 5.0F, 6.0F}));
  EXPECT_EQ(matchCount_, 12);
}

TEST_F(OffsetAcceptance, OffsetIsTruncatedTowardZero) {
  EXPECT_TRUE(accept({20, 20, 7.9F, -8.9F}));
  EXPECT_EQ(dx_, 7);
  EXPECT_EQ(dy_, -8);
}

TEST_F(OffsetAcceptance, OffsetOfTheWholeWidthOrHeightIsRefused) {
  for (const float sign : {1.0F, -1.0F}) {
    expectRefusedUnseen({20, 20, sign * kCols, 0.0F});
    expectRefusedUnseen({20, 20, 0.0F, sign * kRows});
    EXPECT_TRUE(accept({20, 20, sign * (kCols - 1), sign * (kRows - 1)}));
  }
}

TEST_F(OffsetAcceptance, OffsetThatIsNoNumberIsRefused) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  expectRefusedUnseen({20, 20, nan, 0.0F});
  expectRefusedUnseen({20, 20, 0.0F, nan});
}

TEST_F(OffsetAcceptance, EmptyResultIsRefused) {
  expectRefusedUnseen({0, 0, 5.0F, 5.0F});
  expectRefusedUnseen({0, 20, 5.0F, 5.0F});
  expectRefusedUnseen({20, 0, 5.0F, 5.0F});
}

TEST_F(OffsetAcceptance, DescriptorsAreReleasedWhateverTheOutcome) {
  for (const std::size_t pairs : {0U, 10U, 11U}) {
    accept({pairs, pairs, 0.0F, 0.0F});
    EXPECT_EQ(FeatureDescriber1, nullptr);
    EXPECT_EQ(FeatureDescriber2, nullptr);
    EXPECT_EQ(dist_valueCpu, nullptr);
  }
}

}  // namespace

bool ransacMatchSPointArrayFun(std::vector<SPoint> pointsA, std::vector<SPoint> pointsB,
                               std::vector<SPoint>& inliersA, std::vector<SPoint>& inliersB,
                               float& dx, float& dy) {
  ++consensus.calls;
  consensus.offeredA = pointsA.size();
  consensus.offeredB = pointsB.size();
  consensus.inliersBefore = inliersA.size() + inliersB.size();
  consensus.dxBefore = dx;
  consensus.dyBefore = dy;
  inliersA.resize(consensus.pairsA);
  inliersB.resize(consensus.pairsB);
  dx = consensus.dx;
  dy = consensus.dy;
  return true;
}
