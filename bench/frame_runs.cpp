// SPDX-License-Identifier: Apache-2.0
#include "bench/frame_runs.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

#include "bench/peers/scans_peer.h"
#include "tools/framequilt/nearest_rank.h"

namespace framequilt::bench {
namespace {

/// A contender on its way through the capture.
class Runner {
 public:
  Runner(const Capture& capture, const Entry& entry, int pass)
      : capture_(capture), open_(entry.open) {
    run_.key = entry.key;
    run_.name = entry.name;
    run_.pass = pass;
    places_.resize(capture.frames.size());
  }

  void start() {
    const Stopwatch watch;
    contender_ = open_(capture_.frameSize());
    const Placed second = contender_->start(capture_.frames[0], capture_.frames[1]);
    run_.first = watch.spent();
    keep(1, second);
    mosaic_ = contender_->mosaicSize();
  }

  void take(std::size_t frame) {
    const Stopwatch watch;
    const Placed placed = contender_->next(capture_.frames[frame]);
    Call call{watch.spent(), placed.joined, false};
    keep(frame, placed);
    const cv::Size mosaic = contender_->mosaicSize();
    call.grew = mosaic != std::exchange(mosaic_, mosaic);
    run_.calls.push_back(call);
  }

  Run finish() {
    contender_.reset();
    std::vector<tool::EvaluatedFrame> frames;
    for (std::size_t i = 0; i < places_.size(); ++i) {
      frames.push_back({static_cast<int>(i) + 1, places_[i], capture_.truth[i]});
    }
    run_.evaluation = tool::evaluatePlacements(frames);
    return std::move(run_);
  }

 private:
  void keep(std::size_t frame, const Placed& placed) {
    if (!placed.joined) return;
    places_[0] = cv::Point2d();
    places_[frame] = placed.place;
  }

  const Capture& capture_;
  std::function<std::unique_ptr<Contender>(cv::Size)> open_;
  std::unique_ptr<Contender> contender_;
  std::vector<std::optional<cv::Point2d>> places_;
  cv::Size mosaic_;
  Run run_;
};

double medianOf(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return tool::nearestRank(values, 50);
}

}  // namespace

std::vector<Run> takeTurns(const Capture& capture, const std::vector<Entry>& entries, int pass) {
  std::vector<Runner> runners;
  runners.reserve(entries.size());
  for (const Entry& entry : entries) runners.emplace_back(capture, entry, pass);
  for (Runner& runner : runners) runner.start();
  for (std::size_t frame = 2; frame < capture.frames.size(); ++frame) {
    for (std::size_t turn = 0; turn < runners.size(); ++turn) {
      runners[(frame + turn) % runners.size()].take(frame);
    }
  }
  std::vector<Run> runs;
  runs.reserve(runners.size());
  for (Runner& runner : runners) runs.push_back(runner.finish());
  return runs;
}

std::optional<std::int64_t> peakMemory(const Capture& capture, const Entry& entry) {
  const PeakMemory memory;
  Runner runner(capture, entry, 0);
  runner.start();
  for (std::size_t frame = 2; frame < capture.frames.size(); ++frame) runner.take(frame);
  return memory.bytes();
}

Run runScans(const Capture& capture) {
  Run run;
  run.key = "scans";
  run.name = "OpenCV stitcher, scans";
  const PeakMemory memory;
  const Stopwatch watch;
  const ScansResult result = stitchAsScans(capture.frames);
  run.first = watch.spent();
  run.peakBytes = memory.bytes();
  run.failure = result.failure;
  std::vector<tool::EvaluatedFrame> frames;
  for (std::size_t i = 0; i < result.places.size(); ++i) {
    frames.push_back({static_cast<int>(i) + 1, result.places[i], capture.truth[i]});
  }
  run.evaluation = tool::evaluatePlacements(frames);
  return run;
}

std::optional<Figures> figuresOf(const Run& run) {
  std::vector<double> all;
  std::vector<double> growing;
  std::vector<double> cpu;
  Spent sum;
  for (const Call& call : run.calls) {
    if (!call.joined) continue;
    all.push_back(call.spent.wall);
    cpu.push_back(call.spent.cpu);
    if (call.grew) growing.push_back(call.spent.wall);
    sum.wall += call.spent.wall;
    sum.cpu += call.spent.cpu;
  }
  if (all.empty()) return std::nullopt;
  std::sort(all.begin(), all.end());
  Figures figures;
  figures.median = tool::nearestRank(all, 50);
  figures.p95 = tool::nearestRank(all, 95);
  figures.medianCpu = medianOf(std::move(cpu));
  figures.cpuPerWall = sum.cpu / sum.wall;
  figures.growthFrames = static_cast<int>(growing.size());
  if (!growing.empty()) figures.growth = medianOf(growing) / figures.median;
  return figures;
}

}  // namespace framequilt::bench
