// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/stitch_worker.h"

#include <chrono>
#include <exception>
#include <new>
#include <sstream>
#include <utility>

#include "tools/framequilt/path_text.h"
#include "tools/framequilt/stitch_outputs.h"
#include "tools/framequilt/stitch_results.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::viewer {
namespace {

using Clock = std::chrono::steady_clock;

const char* const kNothingToSave =
    "nothing to save: no frame has been joined yet; neighbouring frames should share about half";

double millisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

/// What is told of an exception; to be called while it is handled.
std::string failureText() {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return "out of memory: use scale 2 or fewer pictures";
  } catch (const std::exception& failure) {
    return firstLine(failure.what());
  } catch (...) {
    return "unknown failure: try again with other frames";
  }
}

}  // namespace

/// The capture that is stitched, or was stitched last.
struct StitchWorker::Capture {
  tool::StitchOptions options;
  std::unique_ptr<tool::FrameSource> source;  // None once it has ended.
  SessionOptions sessionOptions;
  std::shared_ptr<Session> session;
  tool::StitchLog log;
  tool::LoopEnd end;
  std::size_t skipped = 0;
  std::size_t dropped = 0;

  bool goesOn() const { return source != nullptr; }
};

StitchWorker::StitchWorker(std::function<void()> onEvents)
    : events_(std::move(onEvents)), thread_([this] { work(); }) {}

StitchWorker::~StitchWorker() {
  stopWanted_ = true;
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  changed_.notify_one();
  events_.close();
  thread_.join();
}

void StitchWorker::open(CaptureRequest request) {
  stopWanted_ = true;
  {
    const std::lock_guard lock(mutex_);
    request_ = std::move(request);
    stopRequest_ = false;
    paused_ = false;
  }
  changed_.notify_one();
}

void StitchWorker::pause() {
  const std::lock_guard lock(mutex_);
  paused_ = true;
}

void StitchWorker::resume() {
  {
    const std::lock_guard lock(mutex_);
    paused_ = false;
  }
  changed_.notify_one();
}

void StitchWorker::stop() {
  stopWanted_ = true;
  {
    const std::lock_guard lock(mutex_);
    stopRequest_ = true;
  }
  changed_.notify_one();
}

void StitchWorker::save(tool::StitchOptions options) {
  {
    const std::lock_guard lock(mutex_);
    saving_ = std::move(options);
  }
  changed_.notify_one();
}

bool StitchWorker::mayStep() const {
  return capture_ && capture_->goesOn() && (!paused_ || stopWanted_);
}

void StitchWorker::work() {
  std::unique_lock lock(mutex_);
  while (true) {
    changed_.wait(lock, [this] { return ending_ || request_ || saving_ || mayStep(); });
    if (ending_) break;
    if (saving_) {
      tool::StitchOptions options = *std::exchange(saving_, std::nullopt);
      lock.unlock();
      saveResults(std::move(options));
    } else if (request_) {
      CaptureRequest request = *std::exchange(request_, std::nullopt);
      const bool stopped = std::exchange(stopRequest_, false);
      lock.unlock();
      if (capture_ && capture_->goesOn()) endCapture();
      stopWanted_ = stopped;
      openCapture(std::move(request));
    } else {
      lock.unlock();
      step();
    }
    lock.lock();
  }
  lock.unlock();
  // Here, since a session wants its calls from one thread at a time.
  if (capture_) capture_->session->stop();
  capture_.reset();
}

void StitchWorker::openCapture(CaptureRequest request) {
  capture_.reset();
  tool::InputSettings settings;
  settings.every = request.options.every;
  settings.note = [this](const std::string& text) { events_.post(Remark{text}); };
  settings.interrupted = [this] { return stopWanted_.load(); };
  try {
    auto capture = std::make_unique<Capture>();
    capture->source = request.open(settings);
    if (capture->source->count() == std::size_t{1}) {
      throw tool::ToolError(request.name + " gives only one frame: give two or more");
    }
    const tool::CaptureShape shape = capture->source->shape();
    capture->sessionOptions = tool::sessionOptions(request.options, shape);
    capture->session = std::make_shared<Session>(capture->sessionOptions);
    capture->options = std::move(request.options);
    capture_ = std::move(capture);
  } catch (...) {
    events_.post(OpenFailed{failureText()});
    return;
  }
  const std::shared_ptr<Session> session = capture_->session;
  events_.post(CaptureOpened{
      capture_->source->shape(), capture_->source->count(), std::string(session->backend()),
      session->scale(), [session](const cv::Rect& part) { return session->copyRegion(part); }});
}

void StitchWorker::step() {
  try {
    const std::optional<tool::SourceFrame> frame =
        stopWanted_ ? std::nullopt : capture_->source->next();
    capture_->skipped = capture_->source->skipped();
    capture_->dropped = capture_->source->dropped();
    if (!frame) {
      capture_->end.interrupted = stopWanted_;
      endCapture();
      return;
    }
    offer(*frame);
    if (capture_->end.full) endCapture();
  } catch (...) {
    // Whatever a decoder throws: what has been joined so far is worth more than the reason.
    endCapture(failureText());
  }
}

void StitchWorker::offer(const tool::SourceFrame& frame) {
  const auto start = Clock::now();
  FrameDone done;
  done.result = capture_->session->add(frame.pixels);
  done.milliseconds = millisecondsSince(start);
  done.number = frame.number;
  done.name = frame.name;
  done.count = capture_->source->count();
  capture_->log.add(frame.number, frame.name, done.result, done.milliseconds);
  capture_->end.full = done.result.full;
  if (done.result.verdict == Verdict::kJoined) {
    const Session& session = *capture_->session;
    done.patch = readPatch([&session](const cv::Rect& part) { return session.copyRegion(part); },
                           done.result.changed + session.steadyBox().tl());
  }
  events_.post(std::move(done));
}

/// The session stays for its mosaic, but makes room for another one.
void StitchWorker::endCapture(const std::string& failure) {
  capture_->session->stop();
  capture_->source.reset();
  events_.post(CaptureEnded{capture_->end, failure});
}

void StitchWorker::saveResults(tool::StitchOptions options) {
  try {
    if (!capture_ || capture_->session->mosaic().empty()) throw tool::ToolError(kNothingToSave);
    const Capture& capture = *capture_;
    tool::StitchOptions asked = capture.options;
    asked.output = options.output;
    asked.placements = options.placements;
    asked.report = options.report;
    asked.outlines = options.outlines;
    std::ostringstream unused;
    tool::StitchOutputs outputs(asked, unused);
    std::string failed;  // A line for each that could not be written, but for the last one.
    try {
      tool::publishResults(asked,
                           {*capture.session, capture.sessionOptions, capture.log, capture.end,
                            capture.skipped, capture.dropped},
                           outputs, [&](const std::string& line) { failed += line + "\n"; });
    } catch (const tool::ToolError& last) {
      throw tool::ToolError(failed + last.what());
    }
    ResultsSaved saved{{asked.output}};
    if (asked.outlines) saved.files.push_back(tool::outlinedCopyOf(asked.output).string());
    for (const std::string& file : {asked.placements, asked.report}) {
      if (!file.empty()) saved.files.push_back(file);
    }
    events_.post(std::move(saved));
  } catch (...) {
    events_.post(SaveFailed{failureText()});
  }
}

}  // namespace framequilt::viewer
