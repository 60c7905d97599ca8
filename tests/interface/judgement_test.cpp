// SPDX-License-Identifier: Apache-2.0
// What is told of a single call of the engine.
#include "interface/judgement.h"

#include <gtest/gtest.h>

using framequilt::Criterion;
using framequilt::EngineCall;
using framequilt::judge;
using framequilt::Judgement;
using framequilt::Measure;
using framequilt::Refusal;
using framequilt::SessionOptions;

namespace {

SessionOptions options(Criterion criterion) {
  SessionOptions options;
  options.rows = 50;
  options.cols = 100;
  options.scale = 1;
  options.criterion = criterion;
  return options;
}

EngineCall callWithOffset(int dx, int dy) {
  EngineCall call;
  call.record.matchNum = 50;
  call.record.offsetX = dx;
  call.record.offsetY = dy;
  call.limits = {0.1F, 0.9F, 40.0F, 30.0F, 10};
  return call;
}

}  // namespace

TEST(Judgement, OfAMovingSceneRestsOnTheChange) {
  EngineCall call = callWithOffset(30, 0);
  call.motion = 14;
  const Judgement judgement = judge(call, options(Criterion::kMotion));
  EXPECT_EQ(judgement.reason, Refusal::kMovingScene);
  EXPECT_EQ(explain(judgement.reason, judgement.judged),
            "moving scene: change 14 gray levels, needs less than 10 gray levels");
}

TEST(Judgement, OfAJoinedFrameHasTheChangeToo) {
  EngineCall call = callWithOffset(30, 0);
  call.record.stitch_flags = 1;
  call.blended = true;
  call.limits.change = 255;
  call.motion = 14;
  SessionOptions dynamic = options(Criterion::kMotion);
  dynamic.dynamicScene = true;
  const Judgement judgement = judge(call, dynamic);
  EXPECT_EQ(judgement.reason, Refusal::kNone);
  EXPECT_EQ(judgement.judged.value, 0);
  EXPECT_EQ(judgement.measures.change.value_or(Measure{}).value, 14);
  EXPECT_EQ(judgement.measures.change.value_or(Measure{}).limit, 255);
  EXPECT_FALSE(judgement.measures.brightness);
  EXPECT_FALSE(judgement.measures.sharpness);
}

TEST(Judgement, OfAStaticSceneHasTheChangeOnlyWhereItWasTheReason) {
  EngineCall call = callWithOffset(30, 0);
  SessionOptions fixed = options(Criterion::kMotion);
  fixed.dynamicScene = false;
  call.motion = 255;
  call.limits.change = 255;
  EXPECT_EQ(judge(call, fixed).reason, Refusal::kMovingScene);
  EXPECT_EQ(judge(call, fixed).judged.value, 255);
  call.record.stitch_flags = 1;
  EXPECT_FALSE(judge(call, fixed).measures.change);
}

TEST(Judgement, HasNoChangeWhereNoneWasMeasured) {
  EngineCall call = callWithOffset(30, 0);
  EXPECT_FALSE(judge(call, options(Criterion::kMotion)).measures.change);
  call.motion = 3;
  EXPECT_FALSE(judge(call, options(Criterion::kOverlap)).measures.change);
  call.result = -1;
  EXPECT_FALSE(judge(call, options(Criterion::kMotion)).measures.change);
}

TEST(Judgement, OfASharpFrameOnABlurredMosaicIsAsTheOtherWayRound) {
  EngineCall call = callWithOffset(30, 0);
  for (const bool swapped : {false, true}) {
    call.record.definitionOne = swapped ? 90.0F : 50.0F;
    call.record.definitionTwo = swapped ? 50.0F : 90.0F;
    const Judgement judgement = judge(call, options(Criterion::kOverlap));
    EXPECT_EQ(judgement.reason, Refusal::kSharpness);
    EXPECT_EQ(judgement.judged.value, 40);
    EXPECT_EQ(judgement.judged.limit, 30);
  }
}

TEST(Judgement, OfTheWayRestsOnTheLimitsOfTheCall) {
  EngineCall call = callWithOffset(30, 0);
  call.record.stitch_flags = 1;
  call.limits.leastOverlap = 0.75F;
  call.limits.mostOverlap = 0.8F;
  const Judgement tooFar = judge(call, options(Criterion::kMotion));
  EXPECT_EQ(tooFar.reason, Refusal::kMovedTooFar);
  EXPECT_EQ(tooFar.judged.value, 70);
  EXPECT_EQ(tooFar.judged.limit, 75);
  call.record.offsetX = 15;
  const Judgement tooLittle = judge(call, options(Criterion::kMotion));
  EXPECT_EQ(tooLittle.reason, Refusal::kMovedTooLittle);
  EXPECT_EQ(tooLittle.judged.value, 15);
  EXPECT_FLOAT_EQ(static_cast<float>(tooLittle.judged.limit), 20.0F);
}
