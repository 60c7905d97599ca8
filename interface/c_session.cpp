// SPDX-License-Identifier: Apache-2.0
// The session of framequilt_c.h.
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <opencv2/core.hpp>
#include <string>
#include <string_view>

#include "framequilt/framequilt_c.h"
#include "framequilt/session.h"
#include "interface/c_failure.h"
#include "interface/c_records.h"
#include "interface/c_structs.h"
#include "interface/png_file.h"

using framequilt::CallFailure;
using framequilt::codeOf;
using framequilt::ErrorText;
using framequilt::requireGiven;
using framequilt::Session;
using framequilt::SessionOptions;

namespace {

/// Where the engine's lines go.
class LineLog {
 public:
  LineLog(framequilt_log_function log, void* user) : log_(log), user_(user) {}

  /// A `ReportSink`, whose calls never overlap. \param context  The log.
  static void take(const char* line, std::size_t length, void* context) {
    auto& self = *static_cast<LineLog*>(context);
    if (self.log_ == nullptr) return;
    try {
      self.line_.assign(line, length);
    } catch (const std::bad_alloc&) {
      return;  // A line less; the engine says itself what it has no memory for.
    }
    self.log_(self.line_.c_str(), length, self.user_);
  }

 private:
  framequilt_log_function log_;
  void* user_;
  std::string line_;
};

SessionOptions withFunctions(const framequilt_options& given, LineLog& log) {
  SessionOptions options = framequilt::sessionOptions(given);
  options.reportSink = &LineLog::take;
  options.reportContext = &log;
  if (given.progress != nullptr) {
    options.onProgress = [call = given.progress,
                          user = given.progress_user](const framequilt::Progress& progress) {
      return call(static_cast<std::int32_t>(progress.stage), progress.frame, user) != 0;
    };
  }
  return options;
}

}  // namespace

struct framequilt_session {
  explicit framequilt_session(const framequilt_options& given)
      : log(given.log, given.log_user),
        channels(given.channels),
        stitching(withFunctions(given, log)) {}

  LineLog log;
  int channels;
  Session stitching;
  ErrorText error;
  std::atomic<bool> busy{false};
};

namespace {

/// The one call on the session that is under way.
class CallOn {
 public:
  /// \throws CallFailure where there is another, as when a callback makes it.
  explicit CallOn(framequilt_session& session) : session_(session) {
    if (session.busy.exchange(true)) {
      throw CallFailure(FRAMEQUILT_E_BUSY,
                        "another call on the session is under way: wait until it returns");
    }
  }
  ~CallOn() { session_.busy = false; }
  CallOn(const CallOn&) = delete;
  CallOn& operator=(const CallOn&) = delete;

 private:
  framequilt_session& session_;
};

/// Runs `action` on the session while no other call does. A failure of it becomes the session's
/// last error, before another call can begin.
template <class Action>
framequilt_code onSession(framequilt_session* session, Action action) noexcept {
  framequilt_code code = FRAMEQUILT_OK;
  const framequilt_code denied = codeOf([&] {
    requireGiven(session, "session");
    const CallOn call(*session);
    code = codeOf([&] { action(*session); }, &session->error);
  });
  return denied != FRAMEQUILT_OK ? denied : code;
}

/// \throws CallFailure where there is none yet.
cv::Mat mosaicOf(const framequilt_session& session) {
  cv::Mat mosaic = session.stitching.mosaic();
  if (mosaic.empty()) {
    throw CallFailure(FRAMEQUILT_E_EMPTY,
                      "there is no mosaic before two frames have joined: add more frames");
  }
  return mosaic;
}

/// Rows of a copy in memory of the caller.
struct RowsOfCaller {
  std::size_t rowBytes;
  std::size_t strideBytes;
};

/// \throws CallFailure where the region does not fit.
RowsOfCaller requireRoom(const cv::Rect& region, int channels, std::size_t strideBytes,
                         std::size_t bytes) {
  if (region.width < 0 || region.height < 0) {
    throw CallFailure(FRAMEQUILT_E_ARGUMENT,
                      "the region has a negative size: give its top-left corner, width and height");
  }
  const std::size_t rowBytes =
      static_cast<std::size_t>(region.width) * static_cast<std::size_t>(channels);
  const std::size_t stride = strideBytes != 0 ? strideBytes : rowBytes;
  if (stride < rowBytes) {
    throw CallFailure(FRAMEQUILT_E_ARGUMENT, "the region has rows of " + std::to_string(rowBytes) +
                                                 " bytes, more than stride_bytes, " +
                                                 std::to_string(stride) + ": make that larger");
  }
  const auto rows = static_cast<std::size_t>(region.height);
  // Divided, for a product would overflow.
  const bool fits =
      rows == 0 || (rowBytes <= bytes && (rows == 1 || (bytes - rowBytes) / (rows - 1) >= stride));
  if (!fits) {
    throw CallFailure(FRAMEQUILT_E_ARGUMENT,
                      "the region has " + std::to_string(rows) + " rows, one every " +
                          std::to_string(stride) + " bytes, more than pixels_bytes, " +
                          std::to_string(bytes) + ", has room for: give more");
  }
  return {rowBytes, stride};
}

}  // namespace

framequilt_code framequilt_init_options(framequilt_options* options, size_t size) {
  return codeOf([&] {
    requireGiven(options, "options");
    framequilt::requireSize<framequilt_options>(size, "options");
    framequilt::give(framequilt::defaultOptions(), options, size);
  });
}

framequilt_code framequilt_open(const framequilt_options* options, framequilt_session** session) {
  return codeOf([&] {
    requireGiven(session, "session");
    *session = nullptr;
    *session =
        std::make_unique<framequilt_session>(framequilt::received(options, "options")).release();
  });
}

framequilt_code framequilt_stop(framequilt_session* session) {
  return onSession(session, [](framequilt_session& opened) { opened.stitching.stop(); });
}

framequilt_code framequilt_close(framequilt_session* session) {
  if (session == nullptr) return FRAMEQUILT_OK;
  const framequilt_code code = framequilt_stop(session);
  if (code == FRAMEQUILT_OK) delete session;
  return code;
}

const char* framequilt_last_error(const framequilt_session* session) {
  return session != nullptr ? session->error.get() : framequilt::errorOfThread().get();
}

framequilt_code framequilt_get_state(framequilt_session* session, framequilt_state* state) {
  return onSession(session, [&](framequilt_session& opened) {
    framequilt::requireStruct(state, "state");
    framequilt_state record{};
    record.first_frame = opened.stitching.firstFrame();
    // A literal, with a zero behind it.
    record.backend = opened.stitching.backend().data();
    record.scale = opened.stitching.scale();
    record.channels = opened.channels;
    framequilt::give(record, state);
  });
}

framequilt_code framequilt_add(framequilt_session* session, const framequilt_frame* frame,
                               framequilt_result* result) {
  return onSession(session, [&](framequilt_session& opened) {
    const framequilt_frame given = framequilt::received(frame, "frame");
    framequilt::requireStruct(result, "result");
    const framequilt::FrameResult became =
        opened.stitching.add(framequilt::frameView(given), framequilt::hintOf(given));
    framequilt::give(framequilt::resultRecord(became), result);
  });
}

framequilt_code framequilt_view_mosaic(framequilt_session* session, framequilt_view* view) {
  return onSession(session, [&](framequilt_session& opened) {
    framequilt::requireStruct(view, "view");
    const cv::Mat mosaic = mosaicOf(opened);
    framequilt_view record{};
    record.pixels = mosaic.data;
    record.stride_bytes = mosaic.step[0];
    record.rows = mosaic.rows;
    record.cols = mosaic.cols;
    record.channels = mosaic.channels();
    record.box = framequilt::rectRecord(opened.stitching.steadyBox());
    framequilt::give(record, view);
  });
}

framequilt_code framequilt_save_mosaic(framequilt_session* session, const char* path) {
  return onSession(session, [&](framequilt_session& opened) {
    requireGiven(path, "path");
    framequilt::writePng(mosaicOf(opened), path);
  });
}

framequilt_code framequilt_steady_box(const framequilt_session* session, framequilt_rect* box) {
  return codeOf([&] {
    requireGiven(session, "session");
    requireGiven(box, "box");
    *box = framequilt::rectRecord(session->stitching.steadyBox());
  });
}

framequilt_code framequilt_copy_region(const framequilt_session* session,
                                       const framequilt_rect* region, unsigned char* pixels,
                                       size_t stride_bytes, size_t pixels_bytes) {
  return codeOf([&] {
    requireGiven(session, "session");
    requireGiven(region, "region");
    requireGiven(pixels, "pixels");
    const cv::Rect wanted(region->x, region->y, region->width, region->height);
    const RowsOfCaller rows = requireRoom(wanted, session->channels, stride_bytes, pixels_bytes);
    const cv::Mat copy = session->stitching.copyRegion(wanted);
    for (int r = 0; r < copy.rows; ++r) {
      std::memcpy(pixels + static_cast<std::size_t>(r) * rows.strideBytes, copy.ptr(r),
                  rows.rowBytes);
    }
  });
}
