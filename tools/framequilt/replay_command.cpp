// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/replay_command.h"

#include <framequilt/session.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "tools/framequilt/console.h"
#include "tools/framequilt/engine_lines.h"
#include "tools/framequilt/frame_record.h"
#include "tools/framequilt/hints.h"
#include "tools/framequilt/interruption.h"
#include "tools/framequilt/journal_file.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/recorded_run.h"
#include "tools/framequilt/recorded_source.h"
#include "tools/framequilt/stitch_log.h"
#include "tools/framequilt/stitch_loop.h"
#include "tools/framequilt/stitch_results.h"

namespace framequilt::tool {
namespace {

using Json = nlohmann::ordered_json;

/// Holds frames that come again against their records.
class Comparison {
 public:
  explicit Comparison(const RecordedRun& run) : run_(run) {}

  /// False after the last recorded frame.
  bool take(const SourceFrame& frame, const FrameResult& result, const FrameSource& source,
            const Session& session) {
    const Json record = frameRecord(frame, "", result, source, session.mosaic());
    passMissing(frame.number);
    if (taken_ < run_.frames()) {
      const Json was = run_.frame(taken_);
      if (was.at("frame").get<std::size_t>() == frame.number) {
        ++taken_;
        compare(was, record);
      } else {
        differs(record, "is not in the journal");
      }
    }
    if (lastCompared_ != taken_) compareMosaic(session.mosaic());
    return taken_ < run_.frames();
  }

  /// When no frame comes any more.
  void end(const cv::Mat& mosaic) {
    passMissing(0);
    if (lastCompared_ != taken_) compareMosaic(mosaic);
  }

  std::string text(const cv::Mat& mosaic) const {
    std::string lines =
        "frames: " + std::to_string(run_.frames()) + ", the same: " + std::to_string(same_) + "\n";
    if (!first_.empty()) lines += "first difference: " + first_ + "\n";
    if (mosaics_ == 0) return lines + "mosaic: not recorded\n";
    if (!mosaicDifference_.empty()) return lines + "mosaic: " + mosaicDifference_ + "\n";
    return lines + "mosaic: the same (" +
           (mosaic.empty() ? "none" : sizeText(mosaic.rows, mosaic.cols)) + ")\n";
  }

  bool same() const {
    return same_ == run_.frames() && first_.empty() && mosaicDifference_.empty();
  }

 private:
  void compare(const Json& was, const Json& record) {
    const auto difference = firstDifference(was, record);
    if (!difference) {
      ++same_;
    } else if (difference->field == "bytes") {
      differs(was, "its file has changed since (" + differenceText(*difference) + ")");
    } else {
      differs(was, differenceText(*difference));
    }
  }

  /// Frames of the journal that did not come before the one of this number; of 0, all the rest.
  void passMissing(std::size_t number) {
    for (; taken_ < run_.frames(); ++taken_) {
      const Json was = run_.frame(taken_);
      if (number != 0 && was.at("frame").get<std::size_t>() >= number) return;
      differs(was, "cannot be read any more");
    }
  }

  void compareMosaic(const cv::Mat& mosaic) {
    lastCompared_ = taken_;
    const Json* was = run_.mosaicAfter(taken_);
    if (was == nullptr) return;
    ++mosaics_;
    const auto difference = firstDifference(*was, mosaicRecord(mosaic));
    if (!difference || !mosaicDifference_.empty()) return;
    mosaicDifference_ =
        "differs after " + std::to_string(taken_) + " frames (" + differenceText(*difference) + ")";
  }

  void differs(const Json& record, const std::string& how) {
    if (!first_.empty()) return;
    first_ = "frame " + std::to_string(record.at("frame").get<std::size_t>()) + " " +
             inQuotes(record.at("file").get<std::string>()) + ": " + how;
  }

  const RecordedRun& run_;
  std::size_t taken_ = 0;
  std::size_t same_ = 0;
  std::size_t mosaics_ = 0;
  std::size_t lastCompared_ = 0;
  std::string first_;             // Empty: none differs.
  std::string mosaicDifference_;  // So here.
};

InputSettings inputSettings(const StitchOptions& options, Console& console) {
  InputSettings settings;
  settings.every = options.every;
  settings.note = [&console](const std::string& text) { console.remark(text); };
  settings.interrupted = Interruption::wanted;
  return settings;
}

std::string headText(const RunHeader& header, const Session& session) {
  return "recorded: framequilt " + header.version + ", " + header.backend +
         "\nreplayed: framequilt " FRAMEQUILT_VERSION ", " + std::string(session.backend()) + "\n";
}

}  // namespace

ExitStatus replay(const ReplayOptions& options, const Streams& streams) {
  const JournalFile file = JournalFile::opened(options.journal, JournalFile::Access::kRead);
  const RecordedRun run(file);
  StitchOptions recorded = recordedOptions(run, options.journal);
  if (options.backend != "recorded") recorded.backend = options.backend;

  const Interruption interruption;
  Console console(streams.notes, streams.notesOnTerminal,
                  options.verbose ? Console::Amount::kVerbose : Console::Amount::kNormal);
  const Hints hints = recorded.hints.empty() ? Hints() : Hints::fromFile(recorded.hints);
  const std::unique_ptr<FrameSource> source =
      openRecorded(run, options.journal, options.inputs, {}, inputSettings(recorded, console));
  const EngineLines lines(options.verbose);
  Session session(sessionOptions(recorded, source->shape()));
  streams.out << headText(run.header(), session);
  const auto tuning = firstDifference(run.header().tuning, tuningJson());
  if (tuning) streams.out << "parameters: " << differenceText(*tuning) << "\n";

  Comparison comparison(run);
  StitchLog log;
  if (run.frames() > 0) {
    const LoopEnd end = stitchFrames(*source, hints, session, log, console,
                                     [&](const SourceFrame& frame, const FrameResult& result) {
                                       return comparison.take(frame, result, *source, session);
                                     });
    console.endProgress();
    if (end.interrupted)
      throw ToolError("interrupted: nothing is known of the frames that are left");
    comparison.end(session.mosaic());
  }
  streams.out << comparison.text(session.mosaic());
  return comparison.same() && !tuning ? kDone : kReplayDiffers;
}

}  // namespace framequilt::tool
