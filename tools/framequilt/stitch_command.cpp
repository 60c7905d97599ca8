// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/stitch_command.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <new>
#include <opencv2/core.hpp>
#include <optional>
#include <string>

#include "tools/framequilt/engine_lines.h"
#include "tools/framequilt/frame_source.h"
#include "tools/framequilt/output_file.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/picture_format.h"
#include "tools/framequilt/stitch_log.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

RunSettings settingsOf(const StitchOptions& options, const CaptureShape& shape) {
  RunSettings settings{shape.rows, shape.cols, shape.channels};
  settings.overlapMode = options.mode == "overlap";
  settings.dynamicScene = options.dynamicScene;
  settings.scale = options.scale;
  settings.cornerBudget = options.cornerBudget;
  settings.maxRows = options.maxRows;
  settings.maxCols = options.maxCols;
  return settings;
}

Outcome offerTimed(RunDriver& run, const cv::Mat& frame, double& milliseconds) {
  const auto start = std::chrono::steady_clock::now();
  const Outcome outcome = run.offer(frame);
  milliseconds =
      std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  return outcome;
}

std::string verdictText(const Outcome& outcome) {
  switch (outcome.verdict) {
    case Outcome::Verdict::kWaiting:
      return "first frame";
    case Outcome::Verdict::kJoined:
      return "joined at (" + std::to_string(outcome.placement.x) + ", " +
             std::to_string(outcome.placement.y) + "), " + std::to_string(outcome.matches) +
             " matches";
    case Outcome::Verdict::kRefused:
    case Outcome::Verdict::kBecameFirst:
      return "refused, " + std::string(text(outcome.refusal));
  }
  return {};
}

void tell(const fs::path& picture, const Outcome& outcome, bool verbose, std::ostream& notes) {
  if (verbose) notes << "framequilt: " << inQuotes(picture) << ": " << verdictText(outcome) << "\n";
  if (outcome.verdict == Outcome::Verdict::kBecameFirst) {
    notes << "framequilt: three frames did not fit the first one: starting again from "
          << inQuotes(picture) << "\n";
  }
}

InputSettings inputSettingsOf(const StitchOptions& options, std::ostream& notes) {
  InputSettings settings;
  settings.output = options.output;
  settings.every = options.every;
  settings.note = [&notes](const std::string& line) { notes << "framequilt: " << line << "\n"; };
  return settings;
}

/// Offers the frames one after another until the mosaic is full.
void stitchFrames(RunDriver& run, FrameSource& source, bool verbose, StitchLog& log,
                  std::ostream& notes) {
  while (const std::optional<SourceFrame> taken = source.next()) {
    const fs::path picture = taken->path.empty() ? fs::path(taken->name) : taken->path;
    // A mosaic holds 0 where no frame lies.
    const cv::Mat frame = cv::max(taken->pixels, cv::Scalar::all(1));
    double milliseconds = 0;
    const Outcome outcome = offerTimed(run, frame, milliseconds);
    log.add(picture, outcome, milliseconds);
    tell(picture, outcome, verbose, notes);
    if (!outcome.full) continue;
    notes << "framequilt: the mosaic is full";
    if (const auto count = source.count()) {
      notes << " (pictures not read: " << *count - log.entries().size() << ")";
    }
    notes << ": raise --max-rows or --max-cols\n";
    return;
  }
}

/// Runs `action`; true when it ran to its end, else the reason is on `notes` as one line.
template <class Action>
bool survives(Action action, std::ostream& notes) {
  try {
    action();
    return true;
  } catch (const std::bad_alloc&) {
    notes << "framequilt: out of memory: use --scale 2 or fewer pictures\n";
  } catch (const cv::Exception& failure) {
    if (failure.code == cv::Error::StsNoMem) {
      notes << "framequilt: out of memory: use --scale 2 or fewer pictures\n";
    } else {
      notes << "framequilt: stitching failed (" << failure.err << "): use fewer pictures\n";
    }
  } catch (const ToolError& failure) {
    notes << "framequilt: " << failure.what() << "\n";
  }
  return false;
}

void requireTwoFrames(FrameSource& source) {
  if (source.count() != std::size_t{1}) return;
  if (const std::optional<SourceFrame> only = source.next()) {
    throw ToolError(inQuotes(only->path.empty() ? fs::path(only->name) : only->path) +
                    " is the only picture: give two or more");
  }
}

void requireTwoNames(const StitchOptions& options) {
  if (!options.placements.empty() && fs::path(options.placements) == fs::path(options.output)) {
    throw ToolError(inQuotes(options.output) +
                    " is asked to be mosaic and placements: name two files");
  }
}

void publish(OutputFile& file, const std::string& content) {
  file.publish(content.data(), content.size());
}

}  // namespace

ExitStatus stitch(const StitchOptions& options, std::ostream& out, std::ostream& notes,
                  const EntryPoints& engine) {
  requireWritableFormat(options.output);
  requireTwoNames(options);
  const std::unique_ptr<FrameSource> source =
      openInputs(options.inputs, inputSettingsOf(options, notes));
  requireTwoFrames(*source);
  OutputFile output(options.output);
  std::optional<OutputFile> placements;
  if (!options.placements.empty()) placements.emplace(options.placements);

  const EngineLines lines(options.verbose);
  RunDriver run(settingsOf(options, source->shape()), engine);
  StitchLog log;
  survives([&] { stitchFrames(run, *source, options.verbose, log, notes); }, notes);

  out << log.countsText();
  const cv::Mat mosaic = run.mosaic();
  if (mosaic.empty()) {
    out << "no mosaic written: nothing could be joined; pictures should share about half with the "
           "one before, --corner-budget 30 finds more matches\n";
    return kNothingJoined;
  }
  writePicture(mosaic, output);
  output.publish();
  if (placements) publish(*placements, log.placementsCsv());
  out << "mosaic: " << mosaic.cols << " x " << mosaic.rows << " pixels, "
      << (mosaic.channels() == 1 ? "gray" : "colour") << "\n"
      << log.timesText() << "written to: " << options.output << "\n";
  return kMosaicWritten;
}

}  // namespace framequilt::tool
