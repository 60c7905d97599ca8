// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/run_journal.h"

#include <fstream>
#include <iterator>
#include <utility>

#include "tools/framequilt/camera_source.h"
#include "tools/framequilt/frame_record.h"
#include "tools/framequilt/output_file.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/picture_format.h"
#include "tools/framequilt/recorded_source.h"
#include "tools/framequilt/run_header.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr const char* kCheckpoint = "checkpoint.tif";
constexpr const char* kHints = "hints.csv";

/// Relative to the folder the command runs in now, absolute for a journal that is read elsewhere.
std::string absoluteName(const std::string& name) {
  return name.empty() || name == "-" ? name : fromRoot(name).string();
}

StitchOptions withAbsoluteNames(StitchOptions options) {
  for (std::string* name : {&options.output, &options.placements, &options.report, &options.omeTiff,
                            &options.pyramid, &options.reportHtml}) {
    *name = absoluteName(*name);
  }
  for (std::string& input : options.inputs) {
    if (!namesCamera(input)) input = absoluteName(input);
  }
  return options;
}

CaptureOrigin withAbsoluteNames(CaptureOrigin origin) {
  for (CaptureOrigin::Picture& picture : origin.pictures) picture.path = fromRoot(picture.path);
  if (!origin.video.empty()) origin.video = fromRoot(origin.video);
  return origin;
}

/// So that a journal is complete without the file of hints.
void copyHints(StitchOptions& options, const fs::path& folder) {
  if (options.hints.empty()) return;
  OutputFile copy(folder / kHints);
  std::ifstream stream(options.hints, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  copy.publish(text.data(), text.size());
  options.hints = kHints;
}

RunHeader headerOf(const StitchOptions& options, const FrameSource& source,
                   const Session& session) {
  RunHeader header;
  header.version = FRAMEQUILT_VERSION;
  header.backend = session.backend();
  header.shape = source.shape();
  header.origin = withAbsoluteNames(source.origin());
  header.leftOut = source.skipped();
  header.options = withAbsoluteNames(options);
  header.tuning = tuningJson();
  return header;
}

RunEnd endOf(const LoopEnd& end) {
  if (end.full) return RunEnd::kFull;
  if (end.interrupted) return RunEnd::kInterrupted;
  return end.brokenOff ? RunEnd::kBrokenOff : RunEnd::kComplete;
}

/// "frame 3 'f3.png'"
std::string nameOf(const Json& record) {
  return "frame " + std::to_string(record.at("frame").get<std::size_t>()) + " " +
         inQuotes(record.at("file").get<std::string>());
}

}  // namespace

RunJournal::RunJournal(fs::path folder) : folder_(std::move(folder)) {}

RunJournal::RunJournal(JournalFile file, const RecordedRun& run)
    : folder_(file.folder()), file_(std::move(file)), run_(&run) {}

void RunJournal::begin(const StitchOptions& options, const FrameSource& source,
                       const Session& session, Note note) {
  note_ = std::move(note);
  checkpointEvery_ = options.checkpointEvery;
  keepsFrames_ = !source.origin().camera.empty();
  if (run_ == nullptr) {
    file_.emplace(JournalFile::created(folder_));
    RunHeader header = headerOf(options, source, session);
    copyHints(header.options, folder_);
    file_->append(headerText(header));
    return;
  }
  const auto difference = firstDifference(run_->header().tuning, tuningJson());
  if (difference) {
    throw JournalError("the library's parameters are not those of the run (" +
                       differenceText(*difference) + "): use the same framequilt");
  }
  if (run_->frames() > 0) {
    note_("going again through the " + std::to_string(run_->frames()) +
          " frames of the journal, then on");
  }
}

void RunJournal::take(const SourceFrame& frame, const FrameResult& result,
                      const FrameSource& source, const Session& session) {
  if (!file_) return;
  const Json record = frameRecord(frame, pathOf(frame), result, source, session.mosaic());
  if (repeats()) {
    repeat(record);
    ++taken_;
    compareMosaic(session);
  } else {
    write([&] {
      if (keepsFrames_) keepFrame(frame.pixels, frame.number, folder_);
      file_->append(record.dump());
    });
    ++taken_;
  }
  // Also behind a last recorded frame whose checkpoint was not written any more.
  if (!repeats() && recordedMosaic() == nullptr && checkpointDue()) checkpoint(session);
}

const Json* RunJournal::recordedMosaic() const {
  return run_ == nullptr ? nullptr : run_->mosaicAfter(taken_);
}

bool RunJournal::checkpointDue() const {
  return checkpointEvery_ > 0 && taken_ % static_cast<std::size_t>(checkpointEvery_) == 0;
}

/// Empty for a frame of a video, which the header names.
std::string RunJournal::pathOf(const SourceFrame& frame) const {
  if (keepsFrames_) return keptFramePath(frame.number);
  return frame.path.empty() ? std::string() : fromRoot(frame.path).string();
}

/// A journal that cannot be kept any more is no reason to lose the capture.
void RunJournal::write(const std::function<void()>& action) {
  try {
    action();
  } catch (const ToolError& failure) {
    note_(std::string(failure.what()) + "; the run goes on without its journal");
    file_.reset();
  }
}

void RunJournal::repeat(const Json& record) {
  const Json was = run_->frame(taken_);
  if (was.at("frame") != record.at("frame")) {
    throw JournalError(nameOf(was) + " of the journal cannot be had any more, " + nameOf(record) +
                       " comes in its place: put the frames back as they were");
  }
  const std::optional<RecordDifference> difference = firstDifference(was, record);
  if (!difference) return;
  if (difference->field == "bytes" || difference->field == "pixels") {
    throw JournalError(nameOf(was) + " has changed since the run (other " + difference->field +
                       "): put it back as it was, or stitch anew");
  }
  throw JournalError(nameOf(was) + " comes out otherwise than in the journal (" +
                     differenceText(*difference) + "): use the same framequilt, or stitch anew");
}

void RunJournal::compareMosaic(const Session& session) const {
  const Json* was = recordedMosaic();
  if (was == nullptr) return;
  const auto difference = firstDifference(*was, mosaicRecord(session.mosaic()));
  if (!difference) return;
  throw JournalError("after " + nameOf(run_->frame(taken_ - 1)) +
                     " the mosaic is another than in the journal (" + differenceText(*difference) +
                     "): use the same framequilt, or stitch anew");
}

void RunJournal::checkpoint(const Session& session) {
  const cv::Mat mosaic = session.mosaic();
  if (!file_ || mosaic.empty()) return;
  write([&] {
    OutputFile picture(folder_ / kCheckpoint);
    writePicture(mosaic, picture);
    picture.publish();
    file_->append(checkpointText(taken_, mosaicRecord(mosaic), std::nullopt));
  });
}

void RunJournal::requireAllTaken(const LoopEnd& end) const {
  if (!repeats()) return;
  const std::string next = nameOf(run_->frame(taken_));
  if (end.interrupted) {
    throw JournalError("interrupted before " + next +
                       " of the journal: nothing is written, resume it again");
  }
  throw JournalError(next + " of the journal cannot be had any more: put it back as it was");
}

void RunJournal::finish(const LoopEnd& end, const Session& session) {
  if (!file_) return;
  write([&] { file_->append(checkpointText(taken_, mosaicRecord(session.mosaic()), endOf(end))); });
}

}  // namespace framequilt::tool
