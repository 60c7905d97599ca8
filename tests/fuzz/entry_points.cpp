// SPDX-License-Identifier: Apache-2.0
// The three entry points on the host: any shapes, modes, hints and frames, in any order. Nothing
// crashes; results are those that are documented; what a mosaic shows is, to the byte, what the
// plain fusion makes of the frames that were placed; and a run that follows is as good as the first
// of a process.
#include "framequilt/framequilt.h"

#include <array>
#include <new>
#include <optional>

#include "framequilt/tuning.h"
#include "imaging/pixel_math.h"
#include "tests/fuzz/capture_bytes.h"
#include "tests/fuzz/input_bytes.h"
#include "tests/fuzz/mosaic_model.h"
#include "tests/fuzz/target.h"
#include "tests/support/digest.h"

namespace {

using framequilt::fuzz::CaptureBytes;
using framequilt::fuzz::InputBytes;
using framequilt::fuzz::MosaicModel;

constexpr int kMostCalls = 9;
/// Of a descriptor. Most of the time goes into matching; frames join with a quarter of it, too.
constexpr int kElements = 48;

/// What a call gives.
struct Outcome {
  int result = -1;
  SPoint topLeft = {}, bottomRight = {};
  cv::Mat mosaic;
  stitchflags record = {};
};

/// Bytes of a frame that the library may overwrite.
unsigned char* pixels(std::optional<Frame>& frame) {
  return frame && !frame->bytes.empty() ? frame->bytes.data() : nullptr;
}

struct Shape {
  int rows, cols, channels;
};

/// Most frames hold corners; some have sides of which nothing is expected but to be refused.
Shape takeShape(InputBytes& in, int scaleOfRun) {
  static constexpr std::array<Shape, 12> kOdd = {{{1, 1, 1},
                                                  {2, 3, 3},
                                                  {40, 1, 1},
                                                  {5, 9, 3},
                                                  {0, 7, 1},
                                                  {60, 90, 2},
                                                  {60, 90, 4},
                                                  {60, 90, 0},
                                                  {90, 60, -1},
                                                  {-3, 9, 1},
                                                  {1 << 30, 1 << 30, 1},
                                                  {90, 2000, 1}}};
  const int kind = in.byte();
  if (kind >= 232) return kOdd[static_cast<std::size_t>(kind) % kOdd.size()];
  const int factor = scaleOfRun == 2 ? 2 : 1;
  return {in.between(170, 240) * factor, in.between(190, 300) * factor, kind % 4 == 3 ? 3 : 1};
}

/// A run from its start on, and what is known of its mosaic.
class Run {
 public:
  explicit Run(InputBytes& in)
      : scale_(in.byte() < 225 ? 1 : in.between(1, 6)),
        shape_(takeShape(in, scale_)),
        stitchMode_(in.between(0, 1)),
        maxRows_(in.byte() < 230 ? 20000 : in.between(0, 7000)),
        capture_(std::clamp(shape_.rows, 0, CaptureBytes::kSceneRows),
                 std::clamp(shape_.cols, 0, CaptureBytes::kSceneCols),
                 shape_.channels == 3 ? 3 : 1) {
    ::scale = scale_;
    demesion = in.byte() < 250 ? kElements : in.between(-1, 210);
    const int budget = in.byte() < 230 ? 1 : in.between(-20, 12);
    try {
      open_ = initJoint(shape_.rows, shape_.cols, shape_.channels, budget, maxRows_, 20000,
                        stitchMode_, in.between(0, 1));
      FRAMEQUILT_HOLDS(open_);
    } catch (const std::bad_alloc&) {
      // Sides that no buffer can have; the run has to be stopped then.
      uinitJoint();
    }
  }

  /// The run is stopped, and frames go on coming.
  void stop() {
    uinitJoint();
    open_ = false;
    begun_ = false;
  }

  void call(InputBytes& in) {
    cv::Point moved;
    const bool first = !begun_ ? in.byte() < 245 : in.byte() >= 245;
    std::optional<Frame> reference;
    if (first || in.byte() >= 250) reference = frame(in, moved);
    std::optional<Frame> dest = frame(in, moved);
    if (in.byte() >= 250) reference.reset();
    if (in.byte() >= 250) dest.reset();
    const int frameScale = in.byte() < 245 ? scale_ : in.between(1, 6);
    const bool hinted = in.byte() >= 160;
    const cv::Point hint = hinted ? takeHint(in, moved) : cv::Point();

    const std::optional<Frame> referenceBefore = reference;
    const std::optional<Frame> destBefore = dest;
    Outcome now;
    now.result = stichingImagedJoint(pixels(reference), pixels(dest), first ? 0 : in.between(1, 3),
                                     frameScale, hint.x, hint.y, hinted, now.topLeft,
                                     now.bottomRight, now.mosaic, now.record);
    FRAMEQUILT_HOLDS(now.result >= -1 && now.result <= 1);
    FRAMEQUILT_HOLDS(open_ || now.result == -1);
    if (stitchMode_ != 0 && dest && destBefore) FRAMEQUILT_HOLDS(dest->bytes == destBefore->bytes);
    follow(first, frameScale, referenceBefore, destBefore, now);
    last_ = now.record;
  }

 private:
  bool isUsual() const { return shape_.channels == 1 || shape_.channels == 3; }

  /// Bytes of the run's shape, whatever that is.
  std::optional<Frame> frame(InputBytes& in, cv::Point& moved) {
    const bool cut = shape_.rows > 0 && shape_.rows <= CaptureBytes::kSceneRows &&
                     shape_.cols > 0 && shape_.cols <= CaptureBytes::kSceneCols && isUsual();
    if (cut) return capture_.next(in, moved);
    Frame given;
    if (framequilt::planeSize(shape_.rows, shape_.cols, shape_.channels) < 1000000) {
      given.rows = shape_.rows;
      given.cols = shape_.cols;
      given.channels = shape_.channels;
      given.bytes = in.image(framequilt::planeSize(shape_.rows, shape_.cols, shape_.channels));
    }
    return given;
  }

  /// Near to the truth, far from it, or anything.
  static cv::Point takeHint(InputBytes& in, cv::Point moved) {
    switch (in.byte() % 4) {
      case 0:
        return {in.anyInt(), in.anyInt()};
      case 1:
        return {in.between(-300, 300), in.between(-300, 300)};
      default:
        return {moved.x, moved.x < 0 ? -moved.y : moved.y};
    }
  }

  /// Keeps the model up with the call and compares, as long as the calls came in an order that
  /// gives the mosaic a meaning.
  void follow(bool first, int frameScale, const std::optional<Frame>& reference,
              const std::optional<Frame>& dest, const Outcome& now) {
    if (first && (!reference || reference->bytes.empty() || !dest || dest->bytes.empty())) return;
    if (first) begin(frameScale, *reference, now);
    if (!begun_ || !modelled_) return;
    const bool blended =
        now.record.position.x != last_.position.x || now.record.position.y != last_.position.y;
    if (blended) {
      FRAMEQUILT_HOLDS(now.result >= 0 && dest);
      if (frameScale != scale_) {
        modelled_ = false;
        return;
      }
      join(*dest, now);
    }
    const cv::Rect box(cv::Point(now.topLeft.x, now.topLeft.y),
                       cv::Point(now.bottomRight.x, now.bottomRight.y));
    FRAMEQUILT_HOLDS((box & cv::Rect({}, now.mosaic.size())) == box);
    FRAMEQUILT_HOLDS(box - origin_ == model_.box());
    FRAMEQUILT_HOLDS(model_.shows(now.mosaic(box), box.tl() - origin_));
    const bool full = framequilt::product32(now.mosaic.rows, now.mosaic.cols) >=
                      framequilt::product32(maxRows_, 20000);
    FRAMEQUILT_HOLDS(now.result == -1 || now.result == (full ? 1 : 0));
  }

  void begin(int frameScale, const Frame& reference, const Outcome& now) {
    begun_ = open_ && !now.mosaic.empty();
    modelled_ = begun_ && isUsual() && frameScale == scale_ && scale_ <= 2;
    if (!modelled_) return;
    const Frame working =
        framequilt::fuzz::atWorkingSize(framequilt::fuzz::withoutZeros(reference), scale_);
    model_.begin(working);
    FRAMEQUILT_HOLDS(now.mosaic.type() == (shape_.channels == 3 ? CV_8UC3 : CV_8UC1));
    origin_ = {3000 - working.cols / 2, 3000 - working.rows / 2};
    last_.position = {origin_.x, origin_.y};
  }

  void join(const Frame& dest, const Outcome& now) {
    const cv::Point before(last_.position.x, last_.position.y);
    const cv::Point here(now.record.position.x, now.record.position.y);
    // What lay there moves where the mosaic grows to the left or up, by a whole frame.
    const cv::Point growth = here - before - cv::Point(now.record.offsetX, now.record.offsetY);
    FRAMEQUILT_HOLDS(growth.x == 0 || growth.x == shape_.cols);
    FRAMEQUILT_HOLDS(growth.y == 0 || growth.y == shape_.rows);
    origin_ += growth;
    model_.join(framequilt::fuzz::atWorkingSize(dest, scale_), here - origin_);
  }

  int scale_;
  Shape shape_;
  int stitchMode_, maxRows_;
  bool open_ = false, begun_ = false, modelled_ = false;
  CaptureBytes capture_;
  MosaicModel model_;
  cv::Point origin_;
  stitchflags last_ = {};
};

/// Three frames that join, and a digest of all that comes out.
std::uint64_t digestOfGoodRun() {
  static const Scene scene(560, 700, 1, 11);
  ::scale = 1;
  demesion = kElements;
  initJoint(200, 240, 1, 1, 20000, 20000, 1, 0);
  Digest digest;
  Frame reference = scene.cut(200, 150, 200, 240);
  int joined = 0;
  for (const int x : {270, 330}) {
    Frame frame = scene.cut(x, 150, 200, 240);
    Outcome now;
    now.result =
        stichingImagedJoint(reference.bytes.data(), frame.bytes.data(), x == 270 ? 0 : 1, 1, 0, 0,
                            false, now.topLeft, now.bottomRight, now.mosaic, now.record);
    joined += now.record.stitch_flags;
    for (const int number : {now.result, now.topLeft.x, now.topLeft.y, now.bottomRight.x,
                             now.bottomRight.y, now.record.position.x, now.record.position.y,
                             now.record.offsetX, now.record.offsetY, now.record.matchNum}) {
      digest.add(number);
    }
    for (int r = now.topLeft.y; r < now.bottomRight.y; ++r) {
      digest.addBytes(now.mosaic.ptr(r, now.topLeft.x),
                      static_cast<std::size_t>(now.bottomRight.x - now.topLeft.x));
    }
  }
  FRAMEQUILT_HOLDS(joined == 2);
  uinitJoint();
  return digest.value();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  framequilt::fuzz::silenceReports();
  static const std::uint64_t fresh = digestOfGoodRun();
  InputBytes in(data, size);
  std::optional<Run> run;
  for (int calls = 0; calls < kMostCalls && !in.empty(); ++calls) {
    const unsigned char what = in.byte();
    if (what >= 252 || (what >= 250 && !run)) {
      FRAMEQUILT_HOLDS(uinitJoint());
      run.reset();
    } else if (what >= 250) {
      run->stop();
    } else if (!run || what >= 235) {
      // Also while another one is open.
      run.emplace(in);
    } else {
      run->call(in);
    }
  }
  FRAMEQUILT_HOLDS(uinitJoint());
  FRAMEQUILT_HOLDS(digestOfGoodRun() == fresh);
  return 0;
}
