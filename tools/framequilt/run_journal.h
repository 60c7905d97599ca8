// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/session.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "tools/framequilt/frame_source.h"
#include "tools/framequilt/journal_file.h"
#include "tools/framequilt/options_stitch.h"
#include "tools/framequilt/recorded_run.h"
#include "tools/framequilt/stitch_loop.h"

namespace framequilt::tool {

/// Keeps the journal of a run: every decision on the disk before the next frame, and now and then
/// the mosaic as a picture. A run that goes on after a crash goes through its recorded frames
/// again, each of which has to come out as recorded; from there on it is kept as before.
class RunJournal {
 public:
  /// Of a new run, in a folder that `begin` makes.
  explicit RunJournal(std::filesystem::path folder);
  /// Of a run that goes on. `run` is what `file` holds, and has to outlive the journal.
  RunJournal(JournalFile file, const RecordedRun& run);

  using Note = std::function<void(const std::string& line)>;

  /// Once, before the first frame. `note` gets remarks.
  /// \throws ToolError for a folder that cannot be used, JournalError for a run that differs from
  ///         the recorded one.
  void begin(const StitchOptions& options, const FrameSource& source, const Session& session,
             Note note);

  /// After each frame. A disk that takes no more ends the journal, with a remark, not the run.
  /// \throws JournalError for a frame that does not come out as recorded.
  void take(const SourceFrame& frame, const FrameResult& result, const FrameSource& source,
            const Session& session);

  /// When no frame is left. \throws JournalError when recorded ones have not come again: no results
  /// may be written then.
  void requireAllTaken(const LoopEnd& end) const;

  /// The folder, for who wants to go on with the run; empty once the disk took no more of it.
  std::filesystem::path resumable() const { return file_ ? folder_ : std::filesystem::path(); }

  /// After the results have been written.
  void finish(const LoopEnd& end, const Session& session);

 private:
  bool repeats() const { return run_ != nullptr && taken_ < run_->frames(); }
  void write(const std::function<void()>& action);
  void repeat(const nlohmann::ordered_json& record);
  const nlohmann::ordered_json* recordedMosaic() const;
  bool checkpointDue() const;
  void compareMosaic(const Session& session) const;
  std::string pathOf(const SourceFrame& frame) const;
  void checkpoint(const Session& session);

  std::filesystem::path folder_;
  std::optional<JournalFile> file_;  // None before `begin`, and once the disk took no more.
  const RecordedRun* run_ = nullptr;
  Note note_;
  int checkpointEvery_ = 0;
  bool keepsFrames_ = false;
  std::size_t taken_ = 0;
};

}  // namespace framequilt::tool
