// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/session.h>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include "tools/framequilt/engine_lines.h"
#include "tools/framequilt/frame_source.h"
#include "tools/framequilt/options_stitch.h"
#include "tools/framequilt/stitch_log.h"
#include "tools/framequilt/stitch_loop.h"
#include "tools/viewer/model/mailbox.h"
#include "tools/viewer/model/mosaic_patch.h"

namespace framequilt::viewer {

/// What is to be stitched, and how.
struct CaptureRequest {
  std::string name;  ///< For headings: "shots", "camera 0".
  /// Opens the frames; called on the worker's thread. \throws ToolError.
  std::function<std::unique_ptr<tool::FrameSource>(const tool::InputSettings&)> open;
  tool::StitchOptions options;  ///< Of the outputs nothing.
};

// What the worker tells, in this order: `CaptureOpened` or `OpenFailed`; then, after the former,
// frames and remarks, and at last `CaptureEnded`.

struct CaptureOpened {
  tool::CaptureShape shape{};
  std::optional<std::size_t> count;
  std::string backend;  ///< "opencl" or "host".
  int scale = 1;        ///< Frame pixels per mosaic pixel.
  MosaicReader reader;
};

struct OpenFailed {
  std::string text;
};

struct FrameDone {
  std::size_t number = 0;  ///< As in the source.
  std::string name;
  FrameResult result;
  double milliseconds = 0;
  std::optional<std::size_t> count;  ///< Frames in all, as far as known by now.
  MosaicPatch patch;                 ///< Of a joined frame.
};

struct Remark {
  std::string text;
};

struct CaptureEnded {
  tool::LoopEnd end;
  std::string failure;  ///< Why frames stopped coming; empty at a plain end.
};

struct ResultsSaved {
  std::vector<std::string> files;
};

struct SaveFailed {
  std::string text;
};

using WorkerEvent = std::variant<CaptureOpened, OpenFailed, FrameDone, Remark, CaptureEnded,
                                 ResultsSaved, SaveFailed>;

/// Stitches captures on a thread of its own, one after another. Its functions return at once and
/// may be called from any one thread; whatever comes of them are events.
class StitchWorker {
 public:
  /// \param onEvents  Called on the worker's thread when events lie in `take`.
  explicit StitchWorker(std::function<void()> onEvents);
  /// Waits for the frame that is being stitched.
  ~StitchWorker();
  StitchWorker(const StitchWorker&) = delete;
  StitchWorker& operator=(const StitchWorker&) = delete;

  /// Ends the capture that is open, if any, and begins this one.
  void open(CaptureRequest request);
  /// Between two frames.
  void pause();
  void resume();
  /// After the frame that is being stitched, or while a source waits for its first one; the mosaic
  /// so far stays.
  void stop();
  /// Writes the mosaic as it is, and whatever else `options` name, between two frames.
  void save(tool::StitchOptions options);

  std::vector<WorkerEvent> take() { return events_.take(); }

 private:
  struct Capture;

  void work();
  bool mayStep() const;
  void openCapture(CaptureRequest request);
  void step();
  void offer(const tool::SourceFrame& frame);
  void endCapture(const std::string& failure = {});
  void saveResults(tool::StitchOptions options);

  Mailbox<WorkerEvent> events_;

  std::mutex mutex_;
  std::condition_variable changed_;
  std::optional<CaptureRequest> request_;
  std::optional<tool::StitchOptions> saving_;
  bool stopRequest_ = false;  // The request that waits is to be stopped at once.
  bool paused_ = false;
  bool ending_ = false;
  std::atomic<bool> stopWanted_{false};  // Looked at by sources that wait for a frame.

  tool::EngineLines quiet_{false};
  std::unique_ptr<Capture> capture_;
  std::thread thread_;
};

}  // namespace framequilt::viewer
