// SPDX-License-Identifier: Apache-2.0
#include "framequilt/session.h"

#include <atomic>
#include <cstdlib>
#include <new>
#include <opencv2/core.hpp>
#include <string>
#include <utility>

#include "interface/engine_run.h"
#include "interface/frame_copy.h"
#include "interface/judgement.h"
#include "interface/never_destroyed.h"
#include "interface/published_mosaic.h"
#include "interface/report.h"
#include "interface/session_options.h"
#include "interface/turns.h"

namespace framequilt {
namespace {

/// Hints that add up, however many and large they are.
using Movement = cv::Point_<std::int64_t>;

/// Frames that may fail beside the same first frame.
constexpr int kMostFailures = 3;

/// The right to be the one session of the process.
class OneAtATime {
 public:
  OneAtATime() {
    if (taken().exchange(true)) {
      throw Error(ErrorCode::kSessionOpen, "another session is open: stop it first");
    }
  }
  ~OneAtATime() { taken() = false; }
  OneAtATime(const OneAtATime&) = delete;
  OneAtATime& operator=(const OneAtATime&) = delete;

 private:
  static std::atomic<bool>& taken() {
    static std::atomic<bool> flag{false};
    return flag;
  }
};

/// What can be done when a call fails, and the errors for lack of memory. Those are made before
/// they are needed: a copy takes no memory.
struct Remedy {
  explicit Remedy(std::string words)
      : text(std::move(words)), noMemory(ErrorCode::kOutOfMemory, "out of memory: " + text) {}

  const std::string text;
  const Error noMemory;
};

const Remedy& whenNotStarted() {
  static const NeverDestroyed<Remedy> remedy("use scale 2 or smaller frames");
  return *remedy;
}

const Remedy& whenStarted() {
  static const NeverDestroyed<Remedy> remedy(
      "the mosaic so far stays; use scale 2 or begin another mosaic");
  return *remedy;
}

/// Runs `action`; what the engine and the standard library throw leaves as an `Error` that ends
/// with what can be done.
template <class Action>
auto withClearErrors(const Remedy& (*remedy)(), Action action) {
  try {
    try {
      return action();
    } catch (const cv::Exception& failure) {
      if (failure.code == cv::Error::StsNoMem) throw Error(remedy().noMemory);
      throw Error(ErrorCode::kEngineFailed,
                  "stitching failed (" + failure.err + "): " + remedy().text);
    }
  } catch (const std::bad_alloc&) {
    throw Error(remedy().noMemory);
  }
}

std::string sizeText(int rows, int cols) {
  return std::to_string(cols) + " x " + std::to_string(rows) + " pixels";
}

}  // namespace

class Session::Impl {
 public:
  explicit Impl(const SessionOptions& options)
      : options_(checked(options)),
        one_(std::make_unique<OneAtATime>()),
        reports_(std::make_unique<SessionReports>(options_.reportSink, options_.reportContext)),
        run_(std::make_unique<EngineRun>(options_)),
        backend_(run_->backend()) {}

  FrameResult add(const FrameView& frame, std::optional<cv::Point> hint);
  void stop() noexcept;

  const SessionOptions& options() const { return options_; }
  const PublishedMosaic& mosaic() const { return mosaic_; }
  std::int64_t firstFrame() const { return firstFrame_; }
  std::string_view backend() const { return backend_; }
  int mosaicType() const { return options_.channels == 1 ? CV_8UC1 : CV_8UC3; }

 private:
  /// Carries out a stop that was asked for while the frame was in work.
  class StopAfterFrame {
   public:
    explicit StopAfterFrame(Impl& session) : session_(session) {}
    ~StopAfterFrame() {
      if (session_.stopAsked_) session_.end();
    }
    StopAfterFrame(const StopAfterFrame&) = delete;
    StopAfterFrame& operator=(const StopAfterFrame&) = delete;

   private:
    Impl& session_;
  };

  void end() noexcept;
  FrameResult take(const FrameView& frame, std::optional<cv::Point> hint);
  void requireUsable(const FrameView& frame) const;
  bool goesOn(Stage stage) const;
  FrameResult decide(const FrameView& frame, std::optional<cv::Point> hint);
  FrameResult waiting(cv::Mat frame);
  FrameResult refusedAsFull() const;
  EngineCall search(cv::Mat& frame, std::optional<cv::Point> movement);
  EngineCall stitch(cv::Mat& frame, std::optional<cv::Point> movement);
  void join(const EngineCall& call, FrameResult& result);
  void replaceFirst(const FrameView& frame, FrameResult& result);
  std::optional<Movement> movementWith(std::optional<cv::Point> hint) const;
  std::optional<cv::Point> usable(std::optional<Movement> movement) const;
  double mosaicPixels() const;

  SessionOptions options_;
  std::unique_ptr<OneAtATime> one_;
  std::unique_ptr<SessionReports> reports_;
  std::unique_ptr<EngineRun> run_;
  std::string_view backend_;
  PublishedMosaic mosaic_;
  Turns turns_;
  std::atomic<bool> stopAsked_{false};

  std::int64_t frames_ = 0;
  std::int64_t firstFrame_ = 0;
  cv::Mat first_;                // Until the run keeps a reference of its own.
  bool keepsReference_ = false;  // A pair has qualified.
  bool anyJoined_ = false;
  bool full_ = false;
  int failures_ = 0;  // Frames refused beside this first frame.
  cv::Point origin_;  // Of the first frame, in the mosaic with its margins as it is now.
  // From the frame that the next one is matched with to the newest; none once a hint is missing.
  std::optional<Movement> movement_ = Movement();
};

FrameResult Session::Impl::add(const FrameView& frame, std::optional<cv::Point> hint) {
  const Turn turn(turns_);
  if (!turn) {
    throw Error(ErrorCode::kBusy,
                "frame " + std::to_string(frames_) +
                    " is in work on this thread: give the next one when add has returned");
  }
  const StopAfterFrame stop(*this);
  return take(frame, hint);
}

/// A thread that gives frame after frame may keep this one from its turn for long, and a callback
/// gets none: the frame in work ends the run, too.
void Session::Impl::stop() noexcept {
  stopAsked_ = true;
  const Turn turn(turns_);
  if (turn) end();
}

void Session::Impl::end() noexcept {
  run_.reset();
  reports_.reset();
  one_.reset();
}

FrameResult Session::Impl::take(const FrameView& frame, std::optional<cv::Point> hint) {
  requireUsable(frame);
  FrameResult result = decide(frame, hint);
  result.frame = frames_;
  if (result.verdict == Verdict::kCancelled) return result;
  const bool isReference = result.verdict != Verdict::kRefused || result.becameFirst;
  movement_ = isReference ? Movement() : movementWith(hint);
  goesOn(Stage::kDone);
  ++frames_;
  return result;
}

void Session::Impl::requireUsable(const FrameView& frame) const {
  if (run_ == nullptr) {
    throw Error(ErrorCode::kStopped, "the session was stopped: open another one");
  }
  if (frame.rows != options_.rows || frame.cols != options_.cols) {
    throw Error(ErrorCode::kInvalidFrame,
                "frame " + std::to_string(frames_) + " has " + sizeText(frame.rows, frame.cols) +
                    ", the session's frames have " + sizeText(options_.rows, options_.cols) +
                    ": give frames of one size");
  }
  if (frame.pixels == nullptr) {
    throw Error(ErrorCode::kInvalidFrame,
                "frame " + std::to_string(frames_) + " has no pixels: give a pointer to them");
  }
  if (frame.strideBytes != 0 && frame.strideBytes < packedRow(frame)) {
    throw Error(ErrorCode::kInvalidFrame,
                "frame " + std::to_string(frames_) + " has rows of " +
                    std::to_string(packedRow(frame)) + " bytes that begin every " +
                    std::to_string(frame.strideBytes) + " bytes: give the bytes from row to row");
  }
}

bool Session::Impl::goesOn(Stage stage) const {
  return !options_.onProgress || options_.onProgress({stage, frames_});
}

FrameResult Session::Impl::decide(const FrameView& frame, std::optional<cv::Point> hint) {
  FrameResult result;
  result.verdict = Verdict::kCancelled;
  if (!goesOn(Stage::kCopying)) return result;
  if (full_) return refusedAsFull();
  cv::Mat copy = frameCopy(frame, options_.channels);
  if (first_.empty() && !keepsReference_) return waiting(std::move(copy));
  if (!goesOn(Stage::kStitching)) return result;

  const EngineCall call = search(copy, usable(movementWith(hint)));
  // The engine also says it of a mosaic in which a first frame lies alone, but a blend makes it so.
  full_ = call.result == 1 && call.blended;
  const Judgement judgement = judge(call, options_);
  result.verdict = call.blended ? Verdict::kJoined : Verdict::kRefused;
  result.reason = judgement.reason;
  result.judged = judgement.judged;
  result.measures = judgement.measures;
  result.full = full_;
  if (call.blended) {
    join(call, result);
  } else {
    replaceFirst(frame, result);
  }
  return result;
}

FrameResult Session::Impl::waiting(cv::Mat frame) {
  first_ = std::move(frame);
  firstFrame_ = frames_;
  FrameResult result;
  result.verdict = Verdict::kWaiting;
  return result;
}

FrameResult Session::Impl::refusedAsFull() const {
  FrameResult result;
  result.verdict = Verdict::kRefused;
  result.reason = Refusal::kMosaicFull;
  result.judged = {mosaicPixels(), static_cast<double>(options_.maxRows) * options_.maxCols};
  result.full = true;
  return result;
}

double Session::Impl::mosaicPixels() const {
  return static_cast<double>(run_->matrix().rows) * run_->matrix().cols;
}

/// A strip of low contrast, or a narrow one, may hold too few corners where the whole frame has
/// enough: a hint that leads nowhere is dropped. A call without an estimate has changed nothing.
EngineCall Session::Impl::search(cv::Mat& frame, std::optional<cv::Point> movement) {
  EngineCall call = stitch(frame, movement);
  if (call.result < 0 && movement) call = stitch(frame, std::nullopt);
  return call;
}

/// Until a pair has qualified the run keeps no reference: the first frame goes along again, and the
/// mosaic is begun anew.
EngineCall Session::Impl::stitch(cv::Mat& frame, std::optional<cv::Point> movement) {
  if (keepsReference_) return run_->next(frame, movement);
  // The overlap criterion of the host overwrites it.
  cv::Mat reference = options_.criterion == Criterion::kOverlap ? first_.clone() : first_;
  EngineCall call = run_->begin(reference, frame, movement);
  if (call.result >= 0 && call.record.stitch_flags == 1) {
    keepsReference_ = true;
    first_.release();
  }
  return call;
}

void Session::Impl::join(const EngineCall& call, FrameResult& result) {
  const cv::Rect before = mosaic_.steadyBox();
  if (!anyJoined_) origin_ = run_->firstPosition();
  origin_ += call.growth;
  mosaic_.publish(run_->matrix(), run_->filledBox(), origin_);

  const cv::Rect box = mosaic_.steadyBox();
  const cv::Size size(options_.cols / options_.scale, options_.rows / options_.scale);
  const cv::Point steady = run_->position() - origin_;
  result.placement = steady * options_.scale;
  result.mosaicPosition = steady - box.tl();
  result.changed = cv::Rect(result.mosaicPosition, size);
  if (anyJoined_) {
    result.growthShift = before.tl() - box.tl();
  } else {
    result.changed |= cv::Rect(-box.tl(), size);  // The first frame appears along with it.
  }
  anyJoined_ = true;
}

/// A first frame that nothing joins gives way to the newest one. One that hardly moved is no sign
/// against it.
void Session::Impl::replaceFirst(const FrameView& frame, FrameResult& result) {
  if (anyJoined_ || result.reason == Refusal::kMovedTooLittle) return;
  if (++failures_ < kMostFailures) return;
  // Copied again: the overlap criterion has overwritten the copy that was stitched.
  first_ = frameCopy(frame, options_.channels);
  firstFrame_ = frames_;
  keepsReference_ = false;
  failures_ = 0;
  result.becameFirst = true;
}

/// From the frame that the newest one is matched with to the newest one.
std::optional<Movement> Session::Impl::movementWith(std::optional<cv::Point> hint) const {
  if (!movement_ || !hint) return std::nullopt;
  return *movement_ + Movement(*hint);
}

/// None where the frames would not overlap.
std::optional<cv::Point> Session::Impl::usable(std::optional<Movement> movement) const {
  if (!movement || std::abs(movement->x) >= options_.cols ||
      std::abs(movement->y) >= options_.rows) {
    return std::nullopt;
  }
  return cv::Point(*movement);
}

std::string explain(const FrameResult& result) { return explain(result.reason, result.judged); }

Session::Session(const SessionOptions& options)
    : impl_(withClearErrors(&whenNotStarted, [&] {
        whenStarted();
        return std::make_unique<Impl>(options);
      })) {}
Session::~Session() = default;

FrameResult Session::add(const FrameView& frame, std::optional<cv::Point> hint) {
  return withClearErrors(&whenStarted, [&] { return impl_->add(frame, hint); });
}
FrameResult Session::add(const cv::Mat& frame, std::optional<cv::Point> hint) {
  return withClearErrors(&whenStarted, [&] { return impl_->add(viewOf(frame), hint); });
}

cv::Mat Session::mosaic() const { return impl_->mosaic().view(); }
cv::Rect Session::steadyBox() const { return impl_->mosaic().steadyBox(); }
cv::Mat Session::copyRegion(const cv::Rect& region) const {
  return withClearErrors(&whenStarted, [&] {
    if (region.width < 0 || region.height < 0) {
      throw Error(ErrorCode::kInvalidOption,
                  "the region has a negative size: give its top-left corner, width and height");
    }
    return impl_->mosaic().copy(region, impl_->mosaicType());
  });
}

void Session::stop() noexcept { impl_->stop(); }
int Session::scale() const { return impl_->options().scale; }
std::int64_t Session::firstFrame() const { return impl_->firstFrame(); }
std::string_view Session::backend() const { return impl_->backend(); }

}  // namespace framequilt
