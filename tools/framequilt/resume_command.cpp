// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/resume_command.h"

#include <filesystem>
#include <utility>

#include "tools/framequilt/journal_file.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/recorded_run.h"
#include "tools/framequilt/recorded_source.h"
#include "tools/framequilt/run_journal.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

void requireSameVersion(const RunHeader& header, const fs::path& folder) {
  if (header.version == FRAMEQUILT_VERSION) return;
  throw ToolError("the journal of " + inQuotes(folder) + " was written by framequilt " +
                  header.version +
                  ", this is " FRAMEQUILT_VERSION ": use that version, or stitch anew");
}

ExitStatus resumeWith(const ResumeOptions& options, const Streams& streams,
                      const SourceOpener* camera) {
  JournalFile file = JournalFile::opened(options.journal, JournalFile::Access::kAppend);
  const RecordedRun run(file);
  if (run.isFinished()) {
    streams.notes << "framequilt: the run of " << inQuotes(options.journal) << " is finished ("
                  << run.frames() << " frames, written to " << inQuotes(run.header().options.output)
                  << "): nothing to do\n";
    return kDone;
  }
  requireSameVersion(run.header(), options.journal);
  StitchOptions stitchOptions = recordedOptions(run, options.journal);
  stitchOptions.quiet = options.quiet;
  stitchOptions.verbose = options.verbose;
  const SourceOpener live = [&](const InputSettings& settings) {
    return camera != nullptr ? (*camera)(settings)
                             : openInputs({run.header().origin.camera}, settings);
  };
  const SourceOpener open = [&](const InputSettings& settings) {
    return openRecorded(run, options.journal, options.inputs, live, settings);
  };
  RunJournal journal(std::move(file), run);
  return stitchCapture(stitchOptions, streams, open, &journal);
}

}  // namespace

ExitStatus resume(const ResumeOptions& options, const Streams& streams,
                  const SourceOpener& camera) {
  return resumeWith(options, streams, &camera);
}

ExitStatus resume(const ResumeOptions& options, const Streams& streams) {
  return resumeWith(options, streams, nullptr);
}

}  // namespace framequilt::tool
