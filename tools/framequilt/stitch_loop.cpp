// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/stitch_loop.h"

#include <chrono>
#include <exception>
#include <new>
#include <optional>
#include <string>

#include "tools/framequilt/interruption.h"
#include "tools/framequilt/journal_file.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/progress_text.h"

namespace framequilt::tool {
namespace {

using Clock = std::chrono::steady_clock;

/// Away from a terminal one line for so many frames.
constexpr std::size_t kFramesPerLine = 25;

double millisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

/// One pass over a capture.
class Loop {
 public:
  Loop(FrameSource& source, const Hints& hints, Session& session, StitchLog& log, Console& console,
       const FrameWitness& witness)
      : source_(source),
        hints_(hints),
        session_(session),
        log_(log),
        console_(console),
        witness_(witness) {}

  LoopEnd run() {
    try {
      while (takeNext()) {
      }
    } catch (const JournalError&) {
      throw;
    } catch (const std::bad_alloc&) {
      end_.brokenOff = true;
      console_.remark("out of memory: use --scale 2 or fewer pictures");
    } catch (const std::exception& failure) {
      end_.brokenOff = true;
      // Whatever a decoder throws: what has been joined so far is worth more than the reason.
      console_.remark(firstLine(failure.what()));
    }
    return end_;
  }

 private:
  /// False when no further frame is wanted.
  bool takeNext() {
    if (Interruption::wanted()) return interrupted();
    const std::optional<SourceFrame> frame = source_.next();
    if (!frame) return Interruption::wanted() && interrupted();
    const auto start = Clock::now();
    const FrameResult result = session_.add(frame->pixels, hints_.between(former_, frame->number));
    log_.add(frame->number, frame->name, result, millisecondsSince(start));
    former_ = frame->number;
    tell(*frame, result);
    const bool goesOn = !witness_ || witness_(*frame, result);
    return goesOn && (!result.full || full());
  }

  bool interrupted() {
    end_.interrupted = true;
    console_.remark("interrupted after " + std::to_string(log_.entries().size()) +
                    " frames: the mosaic so far is kept");
    return false;
  }

  bool full() {
    end_.full = true;
    std::string line = "the mosaic is full";
    if (const auto total = source_.count(); total && *total > log_.entries().size()) {
      line += " (frames not read: " + std::to_string(*total - log_.entries().size()) + ")";
    }
    console_.remark(line + ": raise --max-rows or --max-cols");
    return false;
  }

  void tell(const SourceFrame& frame, const FrameResult& result) {
    console_.detail(inQuotes(frame.name) + ": " + outcomeText(result));
    if (result.becameFirst) {
      console_.remark(std::string(kStartedAgain) + " " + inQuotes(frame.name));
    }
    const std::size_t done = log_.entries().size();
    if (!console_.isTerminal() && done % kFramesPerLine != 0) return;
    const std::size_t refused = log_.refused() - (log_.firstWaits() ? 1 : 0);
    console_.progress(progressText(
        {done, source_.count(), log_.joined(), refused, millisecondsSince(started_) / 1000}));
  }

  FrameSource& source_;
  const Hints& hints_;
  Session& session_;
  StitchLog& log_;
  Console& console_;
  const FrameWitness& witness_;
  LoopEnd end_;
  std::size_t former_ = 0;  // Number of the frame before.
  Clock::time_point started_ = Clock::now();
};

}  // namespace

LoopEnd stitchFrames(FrameSource& source, const Hints& hints, Session& session, StitchLog& log,
                     Console& console, const FrameWitness& witness) {
  return Loop(source, hints, session, log, console, witness).run();
}

}  // namespace framequilt::tool
