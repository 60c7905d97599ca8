// SPDX-License-Identifier: Apache-2.0
#include "tests/opencl/fault_steps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace layer = framequilt::opencl_layer;
using layer::TraceEvent;
using layer::TraceKind;

namespace {

bool contains(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

/// The stage that a kernel of the caller's thread belongs to.
Stage stageOfKernel(const std::string& kernel, int stitchMode) {
  if (contains(kernel, "pretJudge")) return Stage::kPreJudgement;
  if (contains(kernel, "rgb2GaryFloatTwo") || contains(kernel, "getFusionImage") ||
      contains(kernel, "getWeightImage")) {
    return Stage::kBlend;
  }
  return stitchMode != 0 ? Stage::kMotion : Stage::kOverlap;
}

/// Makes calls that name no kernel part of the stage that the next or the last kernel is of.
void fillGaps(std::vector<Step>& steps, const std::vector<std::optional<Stage>>& known) {
  const auto nextFrom = [&](std::size_t i) {
    while (i < known.size() && !known[i]) ++i;
    return i < known.size() ? known[i] : std::nullopt;
  };
  Stage last = Stage::kPreJudgement;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const TraceKind kind = steps[i].call.kind;
    const bool prepares = kind == TraceKind::kCreate || kind == TraceKind::kWrite;
    steps[i].stage = known[i] ? *known[i] : (prepares ? nextFrom(i).value_or(last) : last);
    if (known[i]) last = *known[i];
  }
}

/// The second frame that is pre-judged is the reference.
void tellReferenceApart(std::vector<Step>& steps) {
  int wrapped = 0;
  for (Step& step : steps) {
    if (step.stage != Stage::kPreJudgement) continue;
    wrapped += step.call.kind == TraceKind::kCreate ? 1 : 0;
    if (wrapped == 2) step.stage = Stage::kReferencePreJudgement;
  }
}

std::vector<Step> stepsOfThread(const std::vector<TraceEvent>& trace, int thread, Lane lane) {
  std::vector<Step> steps;
  for (const TraceEvent& call : trace) {
    if (call.thread != thread) continue;
    steps.push_back({lane, static_cast<int>(steps.size()) + 1, Stage::kCorners, call});
  }
  return steps;
}

using enum TraceKind;

struct Rule {
  Stage stage;
  std::vector<TraceKind> kinds;
  const char* kernelPart;
  Outcome outcome;
  std::vector<std::string> texts;
};

const std::string kWrapFailed = "failed clEnqueueReadBuffer111";
/// What the motion measure says in the end when anything of it failed.
const std::string kMotionFailed = "Filter2DModeKernel";

/// The first that matches counts.
const Rule kRules[] = {
    {Stage::kPreJudgement, {kCreate}, "", Outcome::kFails, {kWrapFailed}},
    {Stage::kPreJudgement,
     {kSetArgument, kLaunch},
     "Ch3",
     Outcome::kFails,
     {"failed pretJudgeCh3Kernel"}},
    {Stage::kPreJudgement, {}, "", Outcome::kFails, {"failed pretJudgeCh1Kernel"}},
    {Stage::kReferencePreJudgement, {kMap}, "", Outcome::kFails, {"failed pretJudgeCh1Kernell"}},
    {Stage::kReferencePreJudgement, {}, "", Outcome::kFails, {"failed pretJudgeCh1Kernel"}},

    {Stage::kCorners, {kCreate}, "", Outcome::kThreadEnds, {kWrapFailed}},
    {Stage::kCorners,
     {kSetArgument, kLaunch},
     "rgb2Gary",
     Outcome::kThreadEnds,
     {"failed rgb2GaryUcharKernel"}},
    {Stage::kCorners, {kUnmap, kRelease}, "", Outcome::kJoined, {}},
    {Stage::kCorners, {}, "", Outcome::kFails, {"errNum failed"}},

    {Stage::kMotion, {kCreate}, "", Outcome::kRefused, {kWrapFailed, kMotionFailed}},
    {Stage::kMotion, {kUnmap, kRelease}, "", Outcome::kJoined, {kMotionFailed}},
    {Stage::kMotion,
     {kSetArgument, kLaunch},
     "opencvcopyFilter2DBorderRowUhcarMode",
     Outcome::kRefused,
     {"opencvcopyFilter2DBorderRowUcharModeKernel", kMotionFailed}},
    {Stage::kMotion,
     {kSetArgument, kLaunch},
     "opencvcopyFilter2DBorderColUcharMode",
     Outcome::kRefused,
     {"opencvcopyFilter2DBorderColUcharModeKernel", kMotionFailed}},
    {Stage::kMotion,
     {kSetArgument, kLaunch},
     "opencvFilter2DRowCalcUcharWin5Mode",
     Outcome::kRefused,
     {"opencvFilter2DRowCalcUcharWin5ModeKernel", kMotionFailed}},
    {Stage::kMotion,
     {kSetArgument, kLaunch},
     "opencvFilter2DColCalcUcharWin5Mode",
     Outcome::kRefused,
     {"opencvFilter2DColCalcUcharWin5ModeKernel", kMotionFailed}},
    {Stage::kMotion,
     {kSetArgument, kLaunch},
     "opencvcopyFilter2DTakeOutBoundUchar",
     Outcome::kRefused,
     {"opencvcopyFilter2DTakeOutBoundUcharKernel", kMotionFailed}},
    {Stage::kMotion, {}, "", Outcome::kRefused, {kMotionFailed}},

    {Stage::kOverlap, {kUnmap, kRelease}, "", Outcome::kJoined, {}},
    {Stage::kOverlap, {}, "", Outcome::kRefused, {}},

    {Stage::kBlend, {kRelease}, "", Outcome::kJoined, {}},
    {Stage::kBlend, {}, "", Outcome::kFails, {}},
};

bool matches(const Rule& rule, const Step& step) {
  return rule.stage == step.stage &&
         (rule.kinds.empty() ||
          std::count(rule.kinds.begin(), rule.kinds.end(), step.call.kind) > 0) &&
         contains(step.call.kernel, rule.kernelPart);
}

/// The fused image is copied before it is unmapped; the distance maps are needed on the card.
bool isUnmapOfResult(const Step& step) {
  return step.stage == Stage::kBlend && step.call.kind == kUnmap &&
         (step.call.mapFlags & CL_MAP_WRITE) == 0;
}

}  // namespace

std::string Step::name() const {
  static const char* const kLanes[] = {"caller", "corners of the reference",
                                       "corners of the new frame"};
  static const char* const kStages[] = {
      "pre-judgement", "pre-judgement of the reference", "corners", "motion", "overlap", "blend"};
  static const std::map<TraceKind, const char*> kKinds = {
      {kCreate, "create"}, {kRelease, "release"}, {kSetArgument, "argument"},
      {kLaunch, "launch"}, {kMap, "map"},         {kUnmap, "unmap"},
      {kWrite, "write"},   {kFill, "fill"},       {kFinish, "finish"}};
  const auto kind = kKinds.find(call.kind);
  return std::string(kLanes[static_cast<int>(lane)]) + ", call " + std::to_string(nth) + ": " +
         kStages[static_cast<int>(stage)] + ", " + (kind != kKinds.end() ? kind->second : "?") +
         " " + call.kernel;
}

std::vector<Step> stepsOf(const std::vector<TraceEvent>& trace, int caller, int stitchMode) {
  const auto threadWithKernel = [&](const char* kernel) {
    const auto found = std::find_if(trace.begin(), trace.end(), [&](const TraceEvent& call) {
      return call.kind == kLaunch && call.kernel == kernel;
    });
    return found != trace.end() ? found->thread : 0;
  };
  std::vector<Step> steps = stepsOfThread(trace, caller, Lane::kCaller);
  std::vector<std::optional<Stage>> known;
  for (const Step& step : steps) {
    const std::string& kernel = step.call.kernel;
    known.push_back(kernel.empty() ? std::nullopt
                                   : std::optional(stageOfKernel(kernel, stitchMode)));
  }
  fillGaps(steps, known);
  tellReferenceApart(steps);

  for (const auto& [lane, kernel] :
       {std::pair(Lane::kCornersOfReference, "findGradSquareCrossTermsKernel"),
        std::pair(Lane::kCornersOfNewFrame, "findGradSquareCrossTermsKernel2")}) {
    const std::vector<Step> more = stepsOfThread(trace, threadWithKernel(kernel), lane);
    steps.insert(steps.end(), more.begin(), more.end());
  }
  return steps;
}

Consequence consequenceOf(const Step& step) {
  if (isUnmapOfResult(step)) return {Outcome::kJoined, {}};
  const auto rule = std::find_if(std::begin(kRules), std::end(kRules),
                                 [&](const Rule& one) { return matches(one, step); });
  if (rule == std::end(kRules)) {
    ADD_FAILURE() << "no rule for " << step.name();
    return {};
  }
  Consequence consequence = {rule->outcome, rule->texts};
  if (rule->outcome == Outcome::kRefused) {
    consequence.texts.emplace_back("flags.stitch_flags = 0;");
  }
  if (rule->outcome == Outcome::kFails || rule->outcome == Outcome::kThreadEnds) {
    consequence.texts.emplace_back("stichingImagedJointCL failed");
  }
  return consequence;
}
