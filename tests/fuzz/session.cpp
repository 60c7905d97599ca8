// SPDX-License-Identifier: Apache-2.0
// Sessions on the host: any options, frames, hints and cancellations, in any order. Errors are
// those that are documented; a frame that is refused or cancelled changes nothing; the mosaic
// shows, to the byte, what the plain fusion makes of the joined frames; and a session that follows
// is as good as the first of a process.
#include "framequilt/session.h"

#include <array>
#include <optional>
#include <string>

#include "framequilt/tuning.h"
#include "tests/fuzz/capture_bytes.h"
#include "tests/fuzz/input_bytes.h"
#include "tests/fuzz/mosaic_model.h"
#include "tests/fuzz/target.h"
#include "tests/support/digest.h"

namespace {

using framequilt::Error;
using framequilt::ErrorCode;
using framequilt::FrameResult;
using framequilt::FrameView;
using framequilt::PixelOrder;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::Verdict;
using framequilt::fuzz::CaptureBytes;
using framequilt::fuzz::InputBytes;
using framequilt::fuzz::MosaicModel;

constexpr int kMostCalls = 7;
/// Of a descriptor. Most of the time goes into matching; frames join with a quarter of it, too.
constexpr int kElements = 48;

/// The code of the error that `action` throws; none when it throws none.
template <class Action>
std::optional<ErrorCode> errorOf(Action action) {
  try {
    action();
  } catch (const Error& error) {
    FRAMEQUILT_HOLDS(!std::string(error.what()).empty());
    return error.code();
  }
  return std::nullopt;
}

bool sameView(const cv::Mat& a, const cv::Mat& b) {
  if (a.size() != b.size() || a.type() != b.type()) return false;
  for (int r = 0; r < a.rows; ++r) {
    const std::size_t bytes = static_cast<std::size_t>(a.cols) * a.elemSize();
    if (!std::equal(a.ptr(r), a.ptr(r) + bytes, b.ptr(r))) return false;
  }
  return true;
}

SessionOptions takeOptions(InputBytes& in) {
  SessionOptions options;
  options.scale = in.byte() < 225 ? 1 : 2;
  options.rows = in.between(170, 240) * options.scale;
  options.cols = in.between(190, 300) * options.scale;
  options.channels = in.byte() < 192 ? 1 : 3;
  options.criterion = in.flag() ? framequilt::Criterion::kOverlap : framequilt::Criterion::kMotion;
  options.dynamicScene = in.byte() >= 192;
  options.cornerBudget = in.byte() < 230 ? 1 : in.between(0, 12);
  if (in.byte() >= 230) options.maxRows = options.maxCols = in.between(1, 7000);
  options.backend = in.flag() ? framequilt::Backend::kHost : framequilt::Backend::kAuto;
  if (options.scale == 1 && in.flag()) options.scale = framequilt::kAutoScale;
  return options;
}

/// Whether it is out of its range now.
bool spoil(InputBytes& in, SessionOptions& options) {
  switch (in.byte()) {
    case 1:
      options.rows = -in.between(0, 1000);
      return true;
    case 2:
      options.cols = in.between(12002, 65535);
      return true;
    case 3:
      options.channels = in.flag() ? 2 : in.between(4, 255);
      return true;
    case 4:
      options.scale = in.flag() ? -in.between(1, 255) : in.between(3, 255);
      return true;
    case 5:
      options.cornerBudget = in.flag() ? -in.between(1, 255) : in.between(1001, 65535);
      return true;
    case 6:
      options.maxRows = -in.between(0, 255);
      return true;
    case 7:
      options.maxRows = options.maxCols = 1 << 17;
      return true;
    default:
      return false;
  }
}

/// A session from its start on, and what is known of it.
class Model {
 public:
  Model(InputBytes& in, const SessionOptions& options)
      : options_(options),
        scale_(options.scale == 2 ? 2 : 1),
        capture_(options.rows, options.cols, options.channels) {
    options_.onProgress = [this](const framequilt::Progress& progress) {
      FRAMEQUILT_HOLDS(progress.frame == static_cast<std::int64_t>(frames_.size()));
      return cancelAt_ != progress.stage;
    };
    session_.emplace(options_);
    FRAMEQUILT_HOLDS(session_->backend() == "host" && session_->scale() == scale_);
    FRAMEQUILT_HOLDS(errorOf([&] { Session another(options); }) == ErrorCode::kSessionOpen);
    converts_ = in.byte() >= 235;
  }

  void add(InputBytes& in) {
    cv::Point moved;
    const Frame frame = capture_.next(in, moved);
    const std::optional<cv::Point> hint = takeHint(in, moved);
    cancelAt_ = takeCancellation(in);
    const std::size_t padding = static_cast<std::size_t>(in.byte() < 128 ? 0 : in.between(0, 40));
    std::vector<unsigned char> rows = padded(frame, padding);
    const std::vector<unsigned char> before = rows;
    FrameView view = {rows.data(), frame.rows, frame.cols, packed(frame) + padding,
                      frame.channels == 1 ? PixelOrder::kGray : PixelOrder::kBgr};
    if (converts_ && frame.channels == 3) view.order = PixelOrder::kRgb;
    if (addWrongly(in, view)) return;

    const FrameResult result = session_->add(view, hint);
    FRAMEQUILT_HOLDS(rows == before);
    FRAMEQUILT_HOLDS(result.frame == static_cast<std::int64_t>(frames_.size()));
    follow(frame, result);
    look(in);
  }

  void stop() {
    session_->stop();
    stopped_ = true;
  }

  cv::Mat mosaic() const { return session_->mosaic(); }

  /// The mosaic as it is to be.
  void look(InputBytes& in) const {
    const cv::Mat mosaic = session_->mosaic();
    FRAMEQUILT_HOLDS(mosaic.empty() == !anyJoined_);
    FRAMEQUILT_HOLDS(session_->steadyBox().size() == mosaic.size());
    if (!anyJoined_) return;
    const cv::Rect box = session_->steadyBox();
    FRAMEQUILT_HOLDS(box == mosaic_.box());
    if (!converts_) FRAMEQUILT_HOLDS(mosaic_.shows(mosaic, box.tl()));
    const cv::Rect region(in.between(-900, 900), in.between(-900, 900), in.between(0, 90),
                          in.between(0, 90));
    const cv::Mat copy = session_->copyRegion(region);
    FRAMEQUILT_HOLDS(copy.size() == region.size());
    if (!converts_ && !copy.empty()) FRAMEQUILT_HOLDS(mosaic_.shows(copy, region.tl()));
  }

 private:
  static std::size_t packed(const Frame& frame) {
    return static_cast<std::size_t>(frame.cols) * static_cast<std::size_t>(frame.channels);
  }

  /// Rows that lie apart; nothing behind the last one.
  static std::vector<unsigned char> padded(const Frame& frame, std::size_t padding) {
    std::vector<unsigned char> rows(
        (packed(frame) + padding) * static_cast<std::size_t>(frame.rows) - padding, 171);
    for (std::size_t r = 0; r < static_cast<std::size_t>(frame.rows); ++r) {
      std::copy_n(frame.bytes.data() + r * packed(frame), packed(frame),
                  rows.data() + r * (packed(frame) + padding));
    }
    return rows;
  }

  std::optional<cv::Point> takeHint(InputBytes& in, cv::Point moved) const {
    switch (in.byte() % 8) {
      case 1:
        return cv::Point(in.anyInt(), in.anyInt());
      case 2:
        return cv::Point(in.between(-300, 300), in.between(-300, 300));
      case 3:
      case 4:
        return moved;
      default:
        return std::nullopt;
    }
  }

  static std::optional<framequilt::Stage> takeCancellation(InputBytes& in) {
    switch (in.byte()) {
      case 1:
        return framequilt::Stage::kCopying;
      case 2:
        return framequilt::Stage::kStitching;
      case 3:
        return framequilt::Stage::kDone;
      default:
        return std::nullopt;
    }
  }

  /// Hands over what is no frame of this session, or too late. False: nothing of this kind.
  bool addWrongly(InputBytes& in, const FrameView& good) {
    FrameView view = good;
    ErrorCode expected = ErrorCode::kInvalidFrame;
    const unsigned char how = in.byte();
    if (stopped_) {
      expected = ErrorCode::kStopped;
    } else if (how == 1) {
      view.rows = in.between(-1, view.rows - 1);
    } else if (how == 2) {
      view.pixels = nullptr;
    } else if (how == 3) {
      view.strideBytes = static_cast<std::size_t>(in.between(1, 100));
    } else {
      return false;
    }
    FRAMEQUILT_HOLDS(errorOf([&] { session_->add(view); }) == expected);
    return true;
  }

  void follow(const Frame& frame, const FrameResult& result) {
    const bool cancels = cancelAt_ && *cancelAt_ != framequilt::Stage::kDone;
    FRAMEQUILT_HOLDS((result.verdict == Verdict::kRefused) ==
                     (result.reason != framequilt::Refusal::kNone));
    FRAMEQUILT_HOLDS(framequilt::explain(result).empty() == (result.verdict != Verdict::kRefused));
    if (result.verdict == Verdict::kCancelled) {
      FRAMEQUILT_HOLDS(cancels);
      return;
    }
    FRAMEQUILT_HOLDS(!cancels || *cancelAt_ != framequilt::Stage::kCopying);
    frames_.push_back(
        framequilt::fuzz::atWorkingSize(framequilt::fuzz::withoutZeros(frame), scale_));
    FRAMEQUILT_HOLDS((result.verdict == Verdict::kWaiting) == (frames_.size() == 1));
    FRAMEQUILT_HOLDS(!full_ || result.reason == framequilt::Refusal::kMosaicFull);
    FRAMEQUILT_HOLDS(!full_ || result.full);
    full_ = result.full;
    FRAMEQUILT_HOLDS(!result.becameFirst || session_->firstFrame() == result.frame);
    if (result.verdict == Verdict::kJoined) join(result);
  }

  void join(const FrameResult& result) {
    if (!anyJoined_) mosaic_.begin(frames_.at(static_cast<std::size_t>(session_->firstFrame())));
    const cv::Rect before = anyJoined_ ? mosaic_.box() : cv::Rect();
    FRAMEQUILT_HOLDS(result.placement.x % scale_ == 0 && result.placement.y % scale_ == 0);
    const cv::Point corner = result.placement / scale_;
    mosaic_.join(frames_.back(), corner);
    const cv::Rect box = mosaic_.box();
    FRAMEQUILT_HOLDS(result.mosaicPosition == corner - box.tl());
    FRAMEQUILT_HOLDS((result.changed & cv::Rect({}, box.size())) == result.changed);
    if (anyJoined_) FRAMEQUILT_HOLDS(result.growthShift == before.tl() - box.tl());
    FRAMEQUILT_HOLDS(result.measures.offset && result.measures.moved && result.measures.overlap);
    FRAMEQUILT_HOLDS(result.measures.matches.value >= result.measures.matches.limit);
    anyJoined_ = true;
  }

  SessionOptions options_;
  int scale_;
  bool converts_ = false, stopped_ = false, anyJoined_ = false, full_ = false;
  std::optional<framequilt::Stage> cancelAt_;
  std::vector<Frame> frames_;  ///< As they are blended.
  CaptureBytes capture_;
  MosaicModel mosaic_;
  std::optional<Session> session_;
};

/// Three frames that join, and a digest of the mosaic.
std::uint64_t digestOfGoodSession() {
  static const Scene scene(560, 700, 1, 11);
  SessionOptions options;
  options.rows = 200;
  options.cols = 240;
  options.channels = 1;
  options.cornerBudget = 1;
  Session session(options);
  Digest digest;
  for (const int x : {200, 270, 330}) {
    const Frame frame = scene.cut(x, 150, 200, 240);
    const FrameResult result =
        session.add(FrameView{frame.bytes.data(), 200, 240, 0, PixelOrder::kGray});
    FRAMEQUILT_HOLDS(result.verdict == (x == 200 ? Verdict::kWaiting : Verdict::kJoined));
    digest.add(result.placement.x);
    digest.add(result.placement.y);
  }
  const cv::Mat mosaic = session.mosaic();
  for (int r = 0; r < mosaic.rows; ++r) {
    digest.addBytes(mosaic.ptr(r), static_cast<std::size_t>(mosaic.cols));
  }
  return digest.value();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  framequilt::fuzz::silenceReports();
  demesion = kElements;
  static const std::uint64_t fresh = digestOfGoodSession();
  InputBytes in(data, size);
  std::optional<Model> model;
  cv::Mat kept;
  cv::Mat copyOfKept;
  for (int calls = 0; calls < kMostCalls && !in.empty(); ++calls) {
    const unsigned char what = in.byte();
    if (!model || what >= 250) {
      model.reset();
      // What a session gave out stays valid, whatever follows.
      FRAMEQUILT_HOLDS(sameView(kept, copyOfKept));
      SessionOptions options = takeOptions(in);
      if (spoil(in, options)) {
        FRAMEQUILT_HOLDS(errorOf([&] { Session none(options); }) == ErrorCode::kInvalidOption);
      } else {
        model.emplace(in, options);
      }
    } else if (what >= 243) {
      model->stop();
      model->look(in);
      kept = model->mosaic();
      copyOfKept = kept.clone();
    } else {
      model->add(in);
    }
  }
  model.reset();
  FRAMEQUILT_HOLDS(sameView(kept, copyOfKept));
  FRAMEQUILT_HOLDS(digestOfGoodSession() == fresh);
  return 0;
}
