// SPDX-License-Identifier: Apache-2.0
/// \file
/// Long runs: does the process hold as much at the end as at the beginning? A line of JSON for each
/// look at it, on standard output. Exit status 1, and a line on standard error, when something grew
/// or when a frame came out otherwise than it was meant to.
///
///     soak [--backend host|opencl] [--criterion motion|overlap] [--size WIDTHxHEIGHT] [--frames N]
///          [--cycles N] [--samples N] [--seed S] [--allowed-mib N]
///          [--leak memory|threads|files]
///
/// First one session with all frames over a bounded scene, then sessions that are opened and
/// stopped. With opencl the device is that of the environment, see scripts/soak.
#include <framequilt/session.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <opencv2/core.hpp>
#include <opencv2/core/ocl.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/guarded_main.h"
#include "bench/resources.h"
#include "bench/soak_camera.h"
#include "bench/soak_samples.h"
#include "tests/support/opencl_layer.h"
#include "tools/framequilt/engine_lines.h"
#include "tools/framequilt/nearest_rank.h"

namespace {

using namespace framequilt::bench;
using framequilt::Backend;
using framequilt::Criterion;
using framequilt::FrameResult;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::Verdict;
using framequilt::tool::nearestRank;
using nlohmann::json;

struct Wishes {
  std::string backend = "host";
  std::string criterion = "motion";
  std::string size = "240x180";
  int frames = 1000;
  int cycles = 100;
  int samples = 100;
  std::uint32_t seed = 1;
  int allowedMebibytes = 2;
  std::string leak;

  cv::Size frame() const {
    cv::Size parsed;
    if (std::sscanf(size.c_str(), "%dx%d", &parsed.width, &parsed.height) != 2 || parsed.empty()) {
      throw std::runtime_error("'" + size + "' is no size such as 240x180");
    }
    return parsed;
  }

  SessionOptions options() const {
    SessionOptions options;
    options.rows = frame().height;
    options.cols = frame().width;
    options.backend = backend == "host" ? Backend::kHost : Backend::kOpencl;
    options.criterion = criterion == "motion" ? Criterion::kMotion : Criterion::kOverlap;
    // Only a dynamic scene has limits for everything, but a card does not take its overlap.
    options.dynamicScene =
        options.criterion == Criterion::kMotion || options.backend == Backend::kHost;
    return options;
  }
};

void print(const json& line) {
  std::puts(line.dump().c_str());
  std::fflush(stdout);
}

/// The records of the layer that may lie in front of OpenCL would grow with each call.
void forgetRecords() {
  framequilt::opencl_layer::resetRecords();
  framequilt::opencl_layer::forgetReleased();
}

/// Loses something on purpose, to show that it is noticed. The threads end with it.
class Leak {
 public:
  explicit Leak(const std::string& what) : what_(what) {}
  ~Leak() {
    {
      const std::lock_guard lock(mutex_);
      ended_ = true;
    }
    end_.notify_all();
    for (std::thread& thread : threads_) thread.join();
    for (std::FILE* file : files_) std::fclose(file);
  }
  Leak(const Leak&) = delete;
  Leak& operator=(const Leak&) = delete;

  void drip() {
    if (what_ == "memory") bytes_.emplace_back(64 * 1024, 'x');
    if (what_ == "files") files_.push_back(std::fopen("/dev/null", "r"));
    if (what_ == "threads") {
      threads_.emplace_back([this] {
        std::unique_lock lock(mutex_);
        end_.wait(lock, [this] { return ended_; });
      });
    }
  }

 private:
  std::string what_;
  std::vector<std::string> bytes_;
  std::vector<std::FILE*> files_;
  std::vector<std::thread> threads_;
  std::mutex mutex_;
  std::condition_variable end_;
  bool ended_ = false;
};

/// What the work of one kind came to: samples, and what is wrong with them.
class Watch {
 public:
  Watch(std::string kind, int total, const Wishes& wishes)
      : kind_(std::move(kind)),
        total_(total),
        every_(std::max(1, total / wishes.samples)),
        allowedBytes_(std::int64_t{wishes.allowedMebibytes} * 1024 * 1024) {}

  /// \param more  What else belongs into the line of a sample.
  template <class More>
  void done(std::int64_t count, std::int64_t mosaicBytes, More more) {
    if (count % every_ != 0 && count != total_) return;
    const Sample sample{count, settledHoldings(), mosaicBytes};
    samples_.push_back(sample);
    json line = {{"kind", kind_},
                 {"done", sample.done},
                 {"resident_bytes", sample.holdings.residentBytes},
                 {"threads", sample.holdings.threads},
                 {"files", sample.holdings.files},
                 {"mosaic_bytes", sample.mosaicBytes}};
    more(line);
    print(line);
  }

  /// \return Whether everything stayed flat; says so in a line of JSON, and on standard error if
  /// not.
  bool judge() const {
    const std::vector<std::string> grown = whatGrew(samples_, allowedBytes_);
    for (const std::string& what : grown) {
      std::fprintf(stderr, "soak: %s grew: %s\n", kind_.c_str(), what.c_str());
    }
    print({{"kind", kind_ + "_judgement"},
           {"resident_growth_bytes", fittedGrowth(afterWarmUp(samples_))},
           {"grown", grown}});
    return grown.empty();
  }

 private:
  /// A thread that has ended is listed for a moment more: looks again where there are more.
  Holdings settledHoldings() const {
    Holdings now = holdings();
    for (int i = 0; i < 1000 && !samples_.empty() && now.threads > samples_[0].holdings.threads;
         ++i) {
      std::this_thread::yield();
      now = holdings();
    }
    return now;
  }

  std::string kind_;
  std::int64_t total_;
  std::int64_t every_;
  std::int64_t allowedBytes_;
  std::vector<Sample> samples_;
};

/// Of the frames since the last sample.
class Times {
 public:
  void add(const Spent& spent) {
    wall_.push_back(spent.wall);
    cpu_.push_back(spent.cpu);
  }
  void describe(json& line) {
    std::sort(wall_.begin(), wall_.end());
    std::sort(cpu_.begin(), cpu_.end());
    line["median_ms"] = nearestRank(wall_, 50);
    line["p95_ms"] = nearestRank(wall_, 95);
    line["median_cpu_ms"] = nearestRank(cpu_, 50);
    wall_.clear();
    cpu_.clear();
  }

 private:
  std::vector<double> wall_, cpu_;
};

/// Of the pages that frames lie on: the margins are not there before something is written to them.
std::int64_t bytesOf(const cv::Mat& mosaic) {
  constexpr std::int64_t kPage = 4096;
  return mosaic.rows * (std::int64_t{mosaic.cols} * mosaic.channels() + kPage);
}

/// How a frame came out, in words.
std::string outcomeOf(const std::optional<FrameResult>& result) {
  if (!result) return "error";
  switch (result->verdict) {
    case Verdict::kWaiting:
      return "waiting";
    case Verdict::kJoined:
      return "joined";
    case Verdict::kCancelled:
      return "cancelled";
    case Verdict::kRefused:
      break;
  }
  return std::string(framequilt::wordsFor(result->reason).reason);
}

/// Pixels that a frame may lie beside its place, counted from the frame before. Offsets of small
/// frames are found to two pixels each way.
constexpr int kTolerance = 4;

/// Counts how frames came out.
class Outcomes {
 public:
  explicit Outcomes(Criterion criterion) : criterion_(criterion) {}

  void add(const Offering& offering, const std::optional<FrameResult>& result) {
    ++counts_[outcomeOf(result)];
    const bool first = result && result->verdict == Verdict::kWaiting;
    if (!first && !isAsMeant(offering.offer, criterion_, result)) {
      ++others_[std::string(nameOf(offering.offer)) + ": " + outcomeOf(result)];
    }
    if (!result) return;
    const bool joined = result->verdict == Verdict::kJoined;
    if (joined) {
      const cv::Point beside = result->placement - last_ - (offering.place - lastPlace_);
      if (std::max(std::abs(beside.x), std::abs(beside.y)) > kTolerance) ++misplaced_;
    }
    if (!first && !joined) return;
    last_ = result->placement;
    lastPlace_ = offering.place;
  }

  void describe(json& line) const { line["outcomes"] = counts_; }
  /// \return Whether all joined frames lie where they belong, and most frames were joined.
  bool judge() const {
    print({{"kind", "outcomes"},
           {"counts", counts_},
           {"not_as_meant", others_},
           {"misplaced", misplaced_}});
    if (misplaced_ != 0) std::fprintf(stderr, "soak: %lld frames lie elsewhere\n", misplaced_);
    return misplaced_ == 0;
  }

 private:
  Criterion criterion_;
  std::map<std::string, std::int64_t> counts_;
  std::map<std::string, std::int64_t> others_;
  cv::Point last_, lastPlace_;  ///< Of the frame that joined last, in the mosaic and the scene.
  long long misplaced_ = 0;
};

bool soakFrames(const Wishes& wishes, Leak& leak) {
  SessionOptions options = wishes.options();
  bool cancels = false;
  options.onProgress = [&](const framequilt::Progress& progress) {
    return !cancels || progress.stage != (progress.frame % 2 == 0 ? framequilt::Stage::kCopying
                                                                  : framequilt::Stage::kStitching);
  };
  Session session(options);
  SoakCamera camera(options, wishes.seed, /*withRefusals=*/true);
  Watch watch("frames", wishes.frames, wishes);
  Outcomes outcomes(options.criterion);
  Times times;
  for (int i = 1; i <= wishes.frames; ++i) {
    const Offering offering = camera.next();
    cancels = offering.offer == Offer::kCancelled;
    std::optional<FrameResult> result;
    const Stopwatch stopwatch;
    try {
      result = session.add(offering.frame);
    } catch (const framequilt::Error& error) {
      if (error.code() != framequilt::ErrorCode::kInvalidFrame) throw;
    }
    times.add(stopwatch.spent());
    forgetRecords();
    outcomes.add(offering, result);
    if (result && (result->verdict == Verdict::kJoined || result->verdict == Verdict::kWaiting)) {
      camera.joined(offering);
    }
    leak.drip();
    watch.done(i, bytesOf(session.mosaic()), [&](json& line) {
      times.describe(line);
      outcomes.describe(line);
    });
  }
  const bool isRight = outcomes.judge();
  return watch.judge() && isRight;
}

/// The ways in which a session comes to its end.
enum class Ending { kStop, kFull, kNoFrame, kDestroyed, kFromCallback, kCount };

void require(bool holds, const char* what) {
  if (!holds) throw std::runtime_error(std::string("a cycle went wrong: ") + what);
}

template <class Action>
void requireError(framequilt::ErrorCode code, Action action, const char* what) {
  try {
    action();
  } catch (const framequilt::Error& error) {
    require(error.code() == code, error.what());
    return;
  }
  require(false, what);
}

/// Frames that all join, in this order.
std::vector<cv::Mat> joiningFrames(const Wishes& wishes, int count) {
  SoakCamera camera(wishes.options(), wishes.seed, /*withRefusals=*/false);
  std::vector<cv::Mat> frames;
  for (int i = 0; i < count; ++i) {
    const Offering offering = camera.next();
    camera.joined(offering);
    frames.push_back(offering.frame);
  }
  return frames;
}

void cycle(const Wishes& wishes, const std::vector<cv::Mat>& frames, int index) {
  const auto ending = static_cast<Ending>(index % static_cast<int>(Ending::kCount));
  SessionOptions options = wishes.options();
  options.channels = index % 2 == 0 ? 3 : 1;
  if (ending == Ending::kFull) options.maxRows = options.maxCols = 6000;
  Session* toStop = nullptr;
  options.onProgress = [&](const framequilt::Progress&) {
    if (toStop != nullptr) toStop->stop();
    return true;
  };
  Session session(options);
  if (ending == Ending::kNoFrame) {
    requireError(
        framequilt::ErrorCode::kSessionOpen, [&] { const Session second(options); },
        "two sessions at once");
    session.stop();
    return;
  }
  session.add(frames[0]);
  require(session.add(frames[1]).verdict == Verdict::kJoined, "the second frame does not join");
  if (ending == Ending::kFromCallback) toStop = &session;
  const FrameResult third = session.add(frames[2]);
  const bool full = ending == Ending::kFull;
  require(third.reason == (full ? framequilt::Refusal::kMosaicFull : framequilt::Refusal::kNone),
          "the third frame");
  if (ending == Ending::kDestroyed) return;
  if (ending != Ending::kFromCallback) session.stop();
  requireError(
      framequilt::ErrorCode::kStopped, [&] { session.add(frames[0]); }, "a frame after the stop");
}

bool soakCycles(const Wishes& wishes, Leak& leak) {
  Watch watch("cycles", wishes.cycles, wishes);
  const std::vector<cv::Mat> frames = joiningFrames(wishes, 3);
  Times times;
  for (int i = 1; i <= wishes.cycles; ++i) {
    const Stopwatch stopwatch;
    cycle(wishes, frames, i);
    times.add(stopwatch.spent());
    forgetRecords();
    leak.drip();
    watch.done(i, 0, [&](json& line) { times.describe(line); });
  }
  return watch.judge();
}

int runProgram(int argc, char** argv) {
  CLI::App app("Runs for long, and looks whether the process grows.", "soak");
  Wishes wishes;
  app.add_option("--backend", wishes.backend, "What does the work")
      ->check(CLI::IsMember({"host", "opencl"}))
      ->capture_default_str();
  app.add_option("--criterion", wishes.criterion, "By what frames are judged")
      ->check(CLI::IsMember({"motion", "overlap"}))
      ->capture_default_str();
  app.add_option("--size", wishes.size, "Of the frames")->capture_default_str();
  app.add_option("--frames", wishes.frames, "Of one session; 0 for none")
      ->check(CLI::Range(0, 10'000'000))
      ->capture_default_str();
  app.add_option("--cycles", wishes.cycles, "Sessions that are opened and stopped; 0 for none")
      ->check(CLI::Range(0, 1'000'000))
      ->capture_default_str();
  app.add_option("--samples", wishes.samples, "Looks at the process, for each of both")
      ->check(CLI::Range(4, 100'000))
      ->capture_default_str();
  app.add_option("--seed", wishes.seed, "Of scene and path")->capture_default_str();
  app.add_option("--allowed-mib", wishes.allowedMebibytes,
                 "By which the resident memory beside the mosaic may grow")
      ->check(CLI::Range(0, 1024))
      ->capture_default_str();
  app.add_option("--leak", wishes.leak, "What to lose with each frame or cycle, to see it noticed")
      ->check(CLI::IsMember({"memory", "threads", "files"}));
  CLI11_PARSE(app, argc, argv);

  if (wishes.backend == "host") useHostAlone();
  cv::ocl::setUseOpenCL(false);
  cv::setNumThreads(1);
  const framequilt::tool::EngineLines quiet(false);
  setSoakLimits();
  print({{"kind", "soak"},
         {"backend", wishes.backend},
         {"criterion", wishes.criterion},
         {"size", wishes.size},
         {"frames", wishes.frames},
         {"cycles", wishes.cycles},
         {"seed", wishes.seed},
         {"processor", processorName()}});
  Leak leak(wishes.leak);
  bool flat = true;
  if (wishes.frames > 0) flat = soakFrames(wishes, leak) && flat;
  if (wishes.cycles > 0) flat = soakCycles(wishes, leak) && flat;
  return flat ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) { return guardedMain("soak", &runProgram, argc, argv); }
