// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/stitch_command.h"

#include <framequilt/session.h>

#include <filesystem>
#include <memory>
#include <opencv2/core/mat.hpp>
#include <string>

#include "tools/framequilt/console.h"
#include "tools/framequilt/engine_lines.h"
#include "tools/framequilt/frame_source.h"
#include "tools/framequilt/hints.h"
#include "tools/framequilt/interruption.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/run_journal.h"
#include "tools/framequilt/stitch_log.h"
#include "tools/framequilt/stitch_loop.h"
#include "tools/framequilt/stitch_outputs.h"
#include "tools/framequilt/stitch_results.h"

namespace framequilt::tool {
namespace {

Console::Amount amountOf(const StitchOptions& options) {
  if (options.quiet) return Console::Amount::kQuiet;
  return options.verbose ? Console::Amount::kVerbose : Console::Amount::kNormal;
}

std::unique_ptr<FrameSource> openSource(const StitchOptions& options, const SourceOpener& open,
                                        Console& console) {
  InputSettings settings;
  settings.outputs = {options.output};
  if (!options.omeTiff.empty()) settings.outputs.emplace_back(options.omeTiff);
  settings.every = options.every;
  settings.note = [&console](const std::string& text) { console.remark(text); };
  settings.interrupted = Interruption::wanted;
  std::unique_ptr<FrameSource> source = open(settings);
  if (source->count() == std::size_t{1}) {
    if (Interruption::wanted()) throw ToolError("interrupted before a second picture was read");
    throw ToolError(inQuotes(options.inputs.front()) + " gives only one frame: give two or more");
  }
  return source;
}

std::string sourceText(const FrameSource& source) {
  std::string lines;
  if (source.skipped() > 0) lines += "left out: " + std::to_string(source.skipped()) + "\n";
  if (source.dropped() > 0) {
    lines += "dropped: " + std::to_string(source.dropped()) + " (newer frames came first)\n";
  }
  return lines;
}

/// Where there is something to open in a browser.
std::string pagesText(const StitchOptions& options, bool written) {
  std::string lines;
  if (written && !options.pyramid.empty()) {
    lines += "page: " + (std::filesystem::path(options.pyramid) / "index.html").string() + "\n";
  }
  if (!options.reportHtml.empty()) lines += "page: " + options.reportHtml + "\n";
  return lines;
}

std::string mosaicText(const cv::Mat& mosaic) {
  if (mosaic.empty()) return std::string(kNoMosaic) + "\n";
  return "mosaic: " + std::to_string(mosaic.cols) + " x " + std::to_string(mosaic.rows) +
         " pixels, " + (mosaic.channels() == 1 ? "gray" : "colour") + "\n";
}

}  // namespace

ExitStatus stitch(const StitchOptions& options, const Streams& streams) {
  const SourceOpener open = [&options](const InputSettings& settings) {
    return openInputs(options.inputs, settings);
  };
  if (options.journal.empty()) return stitchCapture(options, streams, open, nullptr);
  RunJournal journal(options.journal);
  return stitchCapture(options, streams, open, &journal);
}

ExitStatus stitchCapture(const StitchOptions& options, const Streams& streams,
                         const SourceOpener& open, RunJournal* journal) {
  StitchOutputs outputs(options, streams.out);
  const Interruption interruption;
  Console console(streams.notes, streams.notesOnTerminal, amountOf(options));
  const Note note = [&console](const std::string& text) { console.remark(text); };
  const Hints hints = options.hints.empty() ? Hints() : Hints::fromFile(options.hints);
  const std::unique_ptr<FrameSource> source = openSource(options, open, console);
  const SessionOptions shape = sessionOptions(options, source->shape());

  const EngineLines lines(options.verbose);
  Session session(shape);
  StitchLog log;
  FrameWitness witness;
  if (journal != nullptr) {
    journal->begin(options, *source, session, note);
    witness = [&](const SourceFrame& frame, const FrameResult& result) {
      journal->take(frame, result, *source, session);
      return true;
    };
  }
  const LoopEnd end = stitchFrames(*source, hints, session, log, console, witness);
  if (journal != nullptr) journal->requireAllTaken(end);
  session.stop();
  console.endProgress();

  const cv::Mat mosaic = [&] {
    try {
      return publishResults(
          options, {session, shape, log, end, source->skipped(), source->dropped()}, outputs, note);
    } catch (const ToolError&) {
      if (journal != nullptr && !journal->resumable().empty()) {
        note("the journal of " + inQuotes(journal->resumable()) +
             " is kept: go on with it by 'framequilt resume' to have what is missing");
      }
      throw;
    }
  }();
  const bool written = !mosaic.empty();
  if (journal != nullptr) journal->finish(end, session);
  if (!options.quiet) {
    std::ostream& summary = options.writesToStandardOutput() ? streams.notes : streams.out;
    summary << log.countsText() << sourceText(*source) << mosaicText(mosaic);
    if (written) summary << log.timesText() << "written to: " << options.output << "\n";
    summary << pagesText(options, written);
  }
  return written ? kMosaicWritten : kNothingJoined;
}

}  // namespace framequilt::tool
