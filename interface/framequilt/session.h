// SPDX-License-Identifier: Apache-2.0
/// \file
/// The library as a C++ class: a capture is stitched frame by frame, and each frame comes back with
/// its place or the reason why it has none.
///
///     framequilt::SessionOptions options;
///     options.rows = 480;
///     options.cols = 640;
///     framequilt::Session session(options);
///     for (const cv::Mat& frame : frames) {
///       const framequilt::FrameResult result = session.add(frame);
///       if (result.verdict == framequilt::Verdict::kRefused) std::puts(explain(result).c_str());
///     }
///     cv::imwrite("mosaic.png", session.mosaic());
///
/// A session sits on the engine of framequilt.h and replaces its entry points: it knows that the
/// first call takes two frames, that the first frame has to be offered again until another joins
/// it, that the engine overwrites frames, and which of the engine's measures are a call's own.
///
/// **Coordinates.** Placements are in pixels of the frames ("frame pixels"), x to the right and y
/// down, counted from the top-left corner of the first placed frame; they never change afterwards.
/// The mosaic has frame pixels divided by the scale ("mosaic pixels"). A pixel of it is named in
/// two ways: within `mosaic()`, whose top-left corner moves when the mosaic grows left or up; and
/// steadily, counted from the top-left corner of the first placed frame, where neither moves.
///
/// **Threads.** One session at a time in a process. `add`, `stop`, `steadyBox` and `copyRegion` may
/// be called from any thread at any time: `add` and `stop` take turns, each waits for a frame that
/// is in work. Everything else, and the end of the object, is for one thread at a time. The engine
/// has two worker threads of its own while a session is open.
///
/// **Errors.** Everything throws `Error` (error.h), whose text says what to do. A frame that cannot
/// be joined is no error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <opencv2/core/mat.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "error.h"
#include "export.h"
#include "refusal.h"
#include "report_sink.h"

/// The C++ interface of the library, whose entry points and parameters lie in the global namespace.
namespace framequilt {

/// What the bytes of a pixel are, 8 bits each.
enum class PixelOrder { kBgr, kRgb, kBgra, kGray };

/// Pixels of the caller, only read and not kept.
struct FrameView {
  const unsigned char* pixels = nullptr;  ///< Top-left pixel.
  int rows = 0;                           ///< Height in pixels.
  int cols = 0;                           ///< Width in pixels.
  std::size_t strideBytes = 0;            ///< From a row to the next; 0 where they are packed.
  PixelOrder order = PixelOrder::kBgr;    ///< Says how many bytes a pixel has, too.
};

/// By what frames are judged, once their offset is known.
enum class Criterion {
  kMotion,   ///< How much the view changed since the frame before.
  kOverlap,  ///< Whether both sides of the overlap are equally bright and sharp.
};

/// Where a frame is on its way through `Session::add`.
enum class Stage {
  kCopying,    ///< About to be copied.
  kStitching,  ///< About to be given to the engine, which cannot be interrupted.
  kDone,       ///< Decided; too late to cancel.
};

/// What a `ProgressCallback` is told.
struct Progress {
  Stage stage = Stage::kCopying;  ///< Where the frame is.
  std::int64_t frame = 0;         ///< As in `FrameResult`.
};

/// Called on the thread of `add`; false cancels the frame. Must not throw. `add` throws `kBusy` in
/// it; `stop` takes effect when the frame is decided.
using ProgressCallback = std::function<bool(const Progress&)>;

/// What does the work.
enum class Backend {
  kAuto,  ///< OpenCL where the machine (opencl_devices.h) and the options allow it, else the host.
  kOpencl,  ///< OpenCL or an error. At scale 1, and not for the overlap of a dynamic scene.
  kHost,    ///< The processor.
};

/// The largest scale that keeps every pixel: 1 where the frames are at most 6000 a side, else 2.
constexpr int kAutoScale = 0;

/// More corners than this budget asks for take minutes a frame.
constexpr int kLargestCornerBudget = 1000;

/// How a session is to work. All but the size of the frames has a default.
struct SessionOptions {
  int rows = 0;                              ///< Size of every frame, in pixels; has to be given.
  int cols = 0;                              ///< Likewise.
  int channels = 3;                          ///< Of the mosaic: 3 (blue, green, red) or 1 (gray).
  Criterion criterion = Criterion::kMotion;  ///< By what frames are judged.
  bool dynamicScene = false;                 ///< Narrow limits, for a scene that moves by itself.
  int scale = kAutoScale;  ///< Frame pixels per mosaic pixel: 1, 2 or `kAutoScale`.
  /// 0..`kLargestCornerBudget`; each step looks for about 31 more corners a frame (26 at scale 2).
  /// More corners join frames that overlap less, and take longer.
  int cornerBudget = 8;
  /// The mosaic is full once it has maxRows * maxCols pixels, below 2^31. It begins with 6000 x
  /// 6000 pixels, so a smaller product is reached with the first pair.
  int maxRows = 20000;
  int maxCols = 20000;               ///< See `maxRows`.
  Backend backend = Backend::kAuto;  ///< What does the work.
  /// Source of the OpenCL kernels; empty: the file that lies beside the library. The current folder
  /// is not searched.
  std::string kernelFile;
  ProgressCallback onProgress;  ///< May be empty.
  /// Receives the engine's lines while the session is open, the same way as the sink of
  /// `setReportSink`, which gets none meanwhile; null: that one gets them.
  ReportSink reportSink = nullptr;
  void* reportContext = nullptr;  ///< Handed to `reportSink`.
};

/// Whether a frame is in the mosaic.
enum class Verdict {
  kWaiting,    ///< A first frame: placed as soon as another joins it.
  kJoined,     ///< In the mosaic.
  kRefused,    ///< Not in the mosaic; `reason` says why.
  kCancelled,  ///< `onProgress` returned false; as if the frame had not been offered.
};

/// What this frame's own call measured. A value is there only where the engine came so far.
struct Measures {
  Measure matches;                  ///< Pairs of corners that agree; at least the limit.
  std::optional<cv::Point> offset;  ///< Since the frame it was matched with, in frame pixels.
  std::optional<Measure> moved;     ///< Percent of the side it moved along; more than the limit.
  std::optional<Measure> overlap;   ///< Percent of that side; more than the limit.
  /// Motion criterion of a dynamic scene, gray levels; less than the limit. A static scene allows
  /// anything, and has it only where the frame was refused for it.
  std::optional<Measure> change;
  std::optional<Measure> brightness;  ///< Overlap criterion: difference; less than the limit.
  std::optional<Measure> sharpness;   ///< Overlap criterion: difference; less than the limit.
};

/// What became of one frame.
struct FrameResult {
  std::int64_t frame = 0;  ///< Frames handed over before; a cancelled one does not count.
  Verdict verdict = Verdict::kWaiting;  ///< Whether it is in the mosaic.

  Refusal reason = Refusal::kNone;  ///< Of a refused frame.
  Measure judged;                   ///< What `reason` rests on.
  /// Refused, like two before it, beside a first frame that nothing has joined: this frame is the
  /// first one from now on.
  bool becameFirst = false;
  /// The mosaic has reached its limit with this frame: every later one is refused.
  bool full = false;

  // Of a joined frame.
  cv::Point placement;       ///< Top-left corner in frame pixels, steady.
  cv::Point mosaicPosition;  ///< Top-left corner in mosaic pixels, within `mosaic()`.
  cv::Rect changed;          ///< What this frame changed, in mosaic pixels, within `mosaic()`.
  cv::Point growthShift;     ///< How far it moved whatever lay in `mosaic()` before: right, down.

  Measures measures;  ///< Each only where the engine came so far.
};

/// One line about a refused frame, such as "moved too far: overlap 6 %, needs more than 10 %"; else
/// empty.
FRAMEQUILT_EXPORT std::string explain(const FrameResult& result);

/// A run of the library and its mosaic.
class FRAMEQUILT_EXPORT Session {
 public:
  /// Opens the session. With OpenCL the device is looked for and the kernels are built, which may
  /// take seconds; a device, queue or program that a host has put into the library's globals is
  /// taken instead. \throws Error for options out of range, while another session is open, and when
  /// the engine cannot start.
  explicit Session(const SessionOptions& options);
  /// Stops the session.
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// Takes the next frame. Its pixels stay as they are; in the copy that is stitched bytes of value
  /// 0 become 1, since 0 marks mosaic pixels where no frame lies. Colour becomes gray and gray
  /// becomes colour as the mosaic asks, an alpha channel is dropped.
  ///
  /// \param hint  How far the camera moved since the frame handed over before, in frame pixels in
  ///              the sense of the placements. Corners are then looked for in the overlap alone,
  ///              and in the whole frame only where that finds no offset. Hints of refused frames
  ///              add up; when one of them had none, or when together they leave no overlap, they
  ///              are not used.
  /// \throws Error for a frame of another size, when memory runs out, and in a callback of the
  /// session; the session goes on. After `stop` it takes no frame.
  FrameResult add(const FrameView& frame, std::optional<cv::Point> hint = std::nullopt);
  /// 8 bits with 1 (gray), 3 (BGR) or 4 (BGRA) channels.
  FrameResult add(const cv::Mat& frame, std::optional<cv::Point> hint = std::nullopt);

  /// The box that frames fill, empty before two have joined; 0 where no frame lies. No copy: it
  /// shares its pixels with the session, and the next frame changes them. It stays valid after
  /// `stop`.
  cv::Mat mosaic() const;

  /// Where `mosaic()` lies, in steady mosaic pixels. From any thread.
  cv::Rect steadyBox() const;
  /// A copy of that part of the mosaic, in steady mosaic pixels; 0 where no frame lies. From any
  /// thread: waits while a frame is being blended, not for the rest of its way. \throws Error for a
  /// region of negative size.
  cv::Mat copyRegion(const cv::Rect& region) const;

  /// Ends the run and its threads, after the frame that is in work; the mosaic stays. Without
  /// effect after the first time.
  void stop() noexcept;

  int scale() const;                 ///< Frame pixels per mosaic pixel: 1 or 2.
  std::int64_t firstFrame() const;   ///< The frame that lies, or is to lie, at placement (0, 0).
  std::string_view backend() const;  ///< What does the work: "opencl" or "host".

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace framequilt
