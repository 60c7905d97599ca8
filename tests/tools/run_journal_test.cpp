// SPDX-License-Identifier: Apache-2.0
// Runs that keep a journal, and that go on from it.
#include "tools/framequilt/run_journal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <functional>
#include <memory>
#include <new>
#include <nlohmann/json.hpp>
#include <opencv2/core.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "file_size_limit.h"
#include "journal_capture.h"
#include "same_pixels.h"
#include "tool_error_text.h"
#include "tools/framequilt/journal_lines.h"
#include "tools/framequilt/picture_reading.h"
#include "tools/framequilt/replay_command.h"
#include "tools/framequilt/resume_command.h"
#include "tools/framequilt/stitch_command.h"

using framequilt::tool::CaptureOrigin;
using framequilt::tool::CaptureShape;
using framequilt::tool::FrameSource;
using framequilt::tool::InputSettings;
using framequilt::tool::JournalFile;
using framequilt::tool::kDone;
using framequilt::tool::kReplayDiffers;
using framequilt::tool::openInputs;
using framequilt::tool::readJournalLines;
using framequilt::tool::readPicture;
using framequilt::tool::RecordedRun;
using framequilt::tool::replay;
using framequilt::tool::ReplayOptions;
using framequilt::tool::resume;
using framequilt::tool::ResumeOptions;
using framequilt::tool::RunJournal;
using framequilt::tool::sealedLine;
using framequilt::tool::SourceFrame;
using framequilt::tool::SourceOpener;
using framequilt::tool::stitch;
using framequilt::tool::stitchCapture;
using framequilt::tool::StitchOptions;
using Json = nlohmann::ordered_json;

namespace {

/// Another source, with something that happens before a frame is taken from it.
class HookedSource final : public FrameSource {
 public:
  /// \param before  Gets how many frames were asked for so far.
  HookedSource(std::unique_ptr<FrameSource> inner, std::function<void(int)> before)
      : inner_(std::move(inner)), before_(std::move(before)) {}

  CaptureShape shape() const override { return inner_->shape(); }
  std::optional<std::size_t> count() const override { return inner_->count(); }
  std::optional<SourceFrame> next() override {
    before_(asked_++);
    return inner_->next();
  }
  std::size_t skipped() const override { return inner_->skipped(); }
  CaptureOrigin origin() const override { return inner_->origin(); }

 private:
  std::unique_ptr<FrameSource> inner_;
  std::function<void(int)> before_;
  int asked_ = 0;
};

/// Views of a scene, as a camera would give them, each after two that were too fast.
class ViewsOfACamera final : public FrameSource {
 public:
  ViewsOfACamera(std::vector<cv::Mat> views) : views_(std::move(views)) {}

  CaptureShape shape() const override { return {views_[0].rows, views_[0].cols, 3}; }
  std::optional<std::size_t> count() const override { return std::nullopt; }
  std::optional<SourceFrame> next() override {
    if (given_ == views_.size()) return std::nullopt;
    const cv::Mat view = views_[given_++];
    return SourceFrame{view.clone(), 3 * given_, "camera:0#" + std::to_string(3 * given_), {}};
  }
  std::size_t skipped() const override { return 1; }
  std::size_t dropped() const override { return 2 * given_; }
  CaptureOrigin origin() const override { return {{}, {}, "camera:0"}; }

 private:
  std::vector<cv::Mat> views_;
  std::size_t given_ = 0;
};

class RunJournalTest : public JournalCapture {
 protected:
  StitchOptions options() const {
    StitchOptions options;
    options.inputs = {pictures_.path()};
    options.output = mosaic();
    options.placements = placements();
    options.report = report();
    options.journal = journal();
    options.checkpointEvery = 3;
    return options;
  }

  int stitched(const StitchOptions& options) {
    return run([&](auto s) { return stitch(options, s); });
  }
  int stitchedFrom(const StitchOptions& options, const SourceOpener& open) {
    RunJournal kept(journal());
    return run([&](auto streams) { return stitchCapture(options, streams, open, &kept); });
  }
  /// Something happens before a frame is taken from the pictures.
  int stitchedWith(const std::function<void(int)>& before) {
    return stitchedFrom(options(), [&](const InputSettings& settings) {
      return std::make_unique<HookedSource>(openInputs({pictures_.path()}, settings), before);
    });
  }
  int resumed(const std::string& inputs = "") {
    ResumeOptions options;
    options.journal = journal();
    options.inputs = inputs;
    return run([&](auto streams) { return resume(options, streams); });
  }
  int replayed(const std::string& inputs = "") {
    ReplayOptions options;
    options.journal = journal();
    options.inputs = inputs;
    return run([&](auto streams) { return replay(options, streams); });
  }
  std::string resumeError() {
    return toolErrorOf([&] { resumed(); });
  }

  /// Results and journal of a run that nothing disturbed.
  void runWhole() {
    ASSERT_EQ(stitched(options()), kDone);
    whole_ = results();
    ASSERT_NE(whole_, "");
    whole_journal_ = readText(journalFile());
  }

  /// The lines of that run up to the record of so many frames.
  std::string journalOf(int frames) const {
    std::string text;
    int found = 0;
    for (const std::string& line : lines()) {
      text += line;
      if (line.rfind("{\"frame\":", 0) == 0 && ++found == frames) break;
    }
    return text;
  }

  /// The first line with other content, and those below sealed anew.
  void rewriteHeader(const std::function<void(Json&)>& change) const {
    const auto read = readJournalLines(readText(journalFile()), "'j'");
    Json header = Json::parse(read.objects.front());
    change(header);
    std::uint64_t checksum = 0;
    std::string text = sealedLine(header.dump(), checksum);
    for (std::size_t i = 1; i < read.objects.size(); ++i) {
      text += sealedLine(read.objects[i], checksum);
    }
    putJournal(text);
  }

  std::string out() const { return out_.str(); }
  std::string notes() const { return notes_.str(); }

  std::string whole_, whole_journal_;

  int run(const std::function<int(const framequilt::tool::Streams&)>& action) {
    out_.str("");
    notes_.str("");
    return action({out_, notes_, false});
  }

 private:
  std::ostringstream out_, notes_;
};

}  // namespace

TEST_F(RunJournalTest, TheResultsAreThoseOfARunWithoutOne) {
  runWhole();
  StitchOptions without = options();
  without.journal.clear();
  ASSERT_EQ(stitched(without), kDone);
  EXPECT_EQ(results(), whole_);
}

TEST_F(RunJournalTest, HoldsALineForEachDecisionAndForTheMosaic) {
  runWhole();
  std::vector<std::string> kinds;
  for (const std::string& line : lines()) {
    const Json object = Json::parse(line);
    kinds.push_back(object.contains("verdict") ? object["file"].get<std::string>() + " " +
                                                     object["verdict"].get<std::string>()
                                               : object.items().begin().key());
  }
  EXPECT_EQ(kinds, (std::vector<std::string>{"journal", "f1.png first", "f2.png joined",
                                             "f3.png refused", "checkpoint", "f5.png refused",
                                             "f6.png joined", "f8.png joined", "checkpoint",
                                             "f9.png joined", "checkpoint"}));
  const Json joined = Json::parse(lines()[2]);
  EXPECT_EQ(joined["path"], picture("f2.png"));
  EXPECT_EQ(joined["placement"], (Json{{"x", 80}, {"y", 0}}));
  EXPECT_GE(joined["measures"]["matches"]["value"], 11);
  const Json refused = Json::parse(lines()[5]);
  EXPECT_EQ(refused["reason"], "moved too little");
  EXPECT_EQ(refused["judged"]["limit"], refused["measures"]["moved_percent"]["limit"]);
  EXPECT_EQ(Json::parse(lines().back())["end"], "complete");
}

TEST_F(RunJournalTest, TheCheckpointIsTheMosaicAtThatTime) {
  runWhole();
  const cv::Mat late = readPicture(work_.file("j/checkpoint.tif"), 1);
  const cv::Mat final = readPicture(mosaic(), 1);
  const Json record = Json::parse(lines()[8])["mosaic"];
  EXPECT_EQ(record["cols"], late.cols);
  EXPECT_EQ(late.cols, 240 + kCols);
  EXPECT_TRUE(samePixels(late.colRange(0, 300), final.colRange(0, 300)));
}

TEST_F(RunJournalTest, WithoutCheckpointsNoneIsWritten) {
  StitchOptions none = options();
  none.checkpointEvery = 0;
  ASSERT_EQ(stitched(none), kDone);
  EXPECT_FALSE(std::filesystem::exists(work_.file("j/checkpoint.tif")));
}

TEST_F(RunJournalTest, ResumedAfterAnyLineTheResultsAreTheSame) {
  runWhole();
  const std::vector<std::string> all = lines();
  std::string text;
  for (std::size_t i = 0; i + 1 < all.size(); ++i) {
    text += all[i];
    putJournal(text);
    removeResults();
    ASSERT_EQ(resumed(), kDone) << i;
    EXPECT_EQ(results(), whole_) << i;
    EXPECT_EQ(readText(journalFile()), whole_journal_) << i;
  }
}

TEST_F(RunJournalTest, ResumedWithATornLastLineTheResultsAreTheSame) {
  runWhole();
  const std::vector<std::string> all = lines();
  for (const std::size_t size : {std::size_t{1}, all[4].size() / 2, all[4].size() - 1}) {
    putJournal(all[0] + all[1] + all[2] + all[3] + all[4].substr(0, size));
    removeResults();
    ASSERT_EQ(resumed(), kDone) << size;
    EXPECT_EQ(results(), whole_) << size;
    EXPECT_EQ(readText(journalFile()), whole_journal_) << size;
  }
}

TEST_F(RunJournalTest, ResumingTellsHowManyFramesComeAgain) {
  runWhole();
  putJournal(journalOf(4));
  ASSERT_EQ(resumed(), kDone);
  EXPECT_EQ(
      notes().rfind("framequilt: going again through the 4 frames of the journal, then on\n", 0),
      0U)
      << notes();
}

TEST_F(RunJournalTest, AFinishedRunIsLeftAlone) {
  runWhole();
  removeResults();
  ASSERT_EQ(resumed(), kDone);
  EXPECT_EQ(notes(), "framequilt: the run of '" + journal() +
                         "' is finished (7 frames, written to '" + mosaic() +
                         "'): nothing to do\n");
  EXPECT_EQ(out(), "");
  EXPECT_EQ(results(), "");
  EXPECT_EQ(readText(journalFile()), whole_journal_);
}

TEST_F(RunJournalTest, AFullMosaicFinishesARun) {
  StitchOptions small = options();
  small.maxRows = small.maxCols = 100;
  ASSERT_EQ(stitched(small), kDone);
  EXPECT_EQ(Json::parse(lines().back())["end"], "full");
  const std::string whole = results();
  const std::string all = readText(journalFile());
  putJournal(journalOf(1));
  removeResults();
  ASSERT_EQ(resumed(), kDone);
  EXPECT_EQ(results(), whole);
  EXPECT_EQ(readText(journalFile()), all);
  ASSERT_EQ(resumed(), kDone);
  EXPECT_NE(notes().find("nothing to do"), std::string::npos);
}

TEST_F(RunJournalTest, HintsAndEveryAreThoseOfTheRun) {
  const TemporaryFolder elsewhere;
  writeText(elsewhere.file("hints.csv"), "frame,x,y\n1,0,0\n5,86,0\n");
  StitchOptions other = options();
  other.hints = elsewhere.file("hints.csv");
  other.every = 2;
  ASSERT_EQ(stitched(other), kDone);
  const std::string whole = results();
  std::filesystem::remove(elsewhere.file("hints.csv"));
  EXPECT_EQ(readText(work_.file("j/hints.csv")), "frame,x,y\n1,0,0\n5,86,0\n");
  const std::string before = journalOf(2);
  writeText(journalFile(), before);
  removeResults();
  ASSERT_EQ(resumed(), kDone);
  EXPECT_EQ(results(), whole);
}

TEST_F(RunJournalTest, PicturesThatCameLaterAreNotOfTheRun) {
  runWhole();
  putJournal(journalOf(3));
  save(picture("f0.png"), texture(kRows, kCols));
  removeResults();
  ASSERT_EQ(resumed(), kDone);
  EXPECT_EQ(results(), whole_);
}

TEST_F(RunJournalTest, MovedPicturesAreFoundInTheFolderNamed) {
  runWhole();
  const TemporaryFolder moved;
  for (const std::string& name : pictures_.names()) {
    std::filesystem::rename(picture(name), moved.file(name));
  }
  EXPECT_EQ(replayed(moved.path()), kDone);
  putJournal(journalOf(3));
  removeResults();
  EXPECT_EQ(resumeError(), "'" + picture("f1.png") +
                               "' of the journal cannot be found: put it back, or name the folder "
                               "that holds the inputs now by --inputs");
  ASSERT_EQ(resumed(moved.path()), kDone);
  EXPECT_EQ(results(), whole_);
}

TEST_F(RunJournalTest, AMissingFrameIsNamedAndNothingIsWritten) {
  runWhole();
  putJournal(journalOf(4));
  removeResults();
  const std::string before = readText(journalFile());
  const std::string bytes = readText(picture("f2.png"));
  std::filesystem::remove(picture("f2.png"));
  EXPECT_EQ(resumeError(), "'" + picture("f2.png") +
                               "' of the journal cannot be found: put it back, or name the folder "
                               "that holds the inputs now by --inputs");
  EXPECT_EQ(readText(journalFile()), before);
  EXPECT_EQ(work_.names(), std::vector<std::string>{"j"});
  writeText(picture("f2.png"), bytes);
  ASSERT_EQ(resumed(), kDone);
  EXPECT_EQ(results(), whole_);
}

TEST_F(RunJournalTest, AFrameThatIsStillToComeMayBeMissing) {
  runWhole();
  putJournal(journalOf(4));
  std::filesystem::remove(picture("f9.png"));
  ASSERT_EQ(resumed(), kDone);
  EXPECT_NE(notes().find("'" + picture("f9.png") + "' cannot be opened"), std::string::npos);
}

TEST_F(RunJournalTest, ADamagedFrameIsNamed) {
  runWhole();
  putJournal(journalOf(4));
  const std::string last = readText(picture("f5.png"));
  cutInHalf(picture("f2.png"));
  EXPECT_EQ(resumeError(),
            "frame 2 'f2.png' of the journal cannot be had any more, frame 3 'f3.png' comes in its "
            "place: put the frames back as they were");
  save(picture("f2.png"), texture(kRows, 600)(cv::Rect(80, 0, kCols, kRows)));
  for (const char* name : {"f5.png", "f6.png", "f8.png", "f9.png"}) cutInHalf(picture(name));
  EXPECT_EQ(resumeError(),
            "frame 5 'f5.png' of the journal cannot be had any more: put it back as "
            "it was");
  writeText(picture("f5.png"), last);
  EXPECT_EQ(resumed(), kDone);
}

TEST_F(RunJournalTest, AChangedFrameIsNamed) {
  runWhole();
  putJournal(journalOf(4));
  removeResults();
  save(picture("f2.png"), texture(kRows, kCols, 5));
  EXPECT_EQ(resumeError(),
            "frame 2 'f2.png' has changed since the run (other bytes): put it back as "
            "it was, or stitch anew");
  EXPECT_EQ(work_.names(), std::vector<std::string>{"j"});
}

TEST_F(RunJournalTest, AFrameThatComesOutOtherwiseIsNamed) {
  runWhole();
  rewriteHeader([](Json& header) { header["options"]["dynamic"] = true; });
  writeText(journalFile(), journalOf(3));
  EXPECT_EQ(resumeError(),
            "frame 2 'f2.png' comes out otherwise than in the journal (verdict was \"joined\", is "
            "\"refused\"): use the same framequilt, or stitch anew");
}

TEST_F(RunJournalTest, OtherParametersOfTheLibraryAreNamed) {
  runWhole();
  rewriteHeader([](Json& header) { header["tuning"]["demesion"] = 100; });
  EXPECT_EQ(replayed(), kReplayDiffers);
  EXPECT_NE(out().find("parameters: demesion was 100, is 200\n"), std::string::npos) << out();
  writeText(journalFile(), journalOf(3));
  EXPECT_EQ(resumeError(),
            "the library's parameters are not those of the run (demesion was 100, is 200): use the "
            "same framequilt");
}

TEST_F(RunJournalTest, AnotherVersionIsNotResumedButReplayed) {
  runWhole();
  rewriteHeader([](Json& header) { header["framequilt"] = "0.0.1"; });
  EXPECT_EQ(replayed(), kDone);
  EXPECT_EQ(out().rfind("recorded: framequilt 0.0.1, host\n", 0), 0U) << out();
  writeText(journalFile(), journalOf(3));
  EXPECT_EQ(resumeError(), "the journal of '" + journal() +
                               "' was written by framequilt 0.0.1, this is " FRAMEQUILT_VERSION
                               ": use that version, or stitch anew");
}

TEST_F(RunJournalTest, ADamagedLineInTheMiddleIsNamed) {
  runWhole();
  std::string text = whole_journal_;
  const std::string mark = "f5.png";
  text[text.rfind(mark) + 1] = '4';
  putJournal(text);
  EXPECT_EQ(resumeError(),
            "'" + journalFile() +
                "' line 6 is damaged (its checksum does not fit): take a copy of the "
                "journal, or stitch anew");
  EXPECT_EQ(readText(journalFile()), text);
}

TEST_F(RunJournalTest, ALineOfAnotherFormIsNamed) {
  runWhole();
  std::uint64_t checksum = 0;
  const Json header = Json::parse(lines().front());
  for (const char* line : {R"({"other":1})", R"({"frame":1})", R"({"frame":"one"})",
                           R"({"checkpoint":1})", R"({"no json)"}) {
    checksum = 0;
    Json plain = header;
    plain.erase("sum");
    const std::string first = sealedLine(plain.dump(), checksum);
    putJournal(first + sealedLine(line, checksum));
    EXPECT_EQ(resumeError(), "'" + journalFile() +
                                 "' line 2 is not as framequilt writes it: use the version that "
                                 "wrote it")
        << line;
  }
}

TEST_F(RunJournalTest, AnInterruptedRunGoesOn) {
  runWhole();
  std::filesystem::remove_all(journal());
  ASSERT_EQ(stitchedWith([](int frames) {
              if (frames == 4) std::raise(SIGINT);
            }),
            kDone);
  EXPECT_NE(notes().find("interrupted after 4 frames"), std::string::npos) << notes();
  EXPECT_EQ(Json::parse(lines().back())["end"], "interrupted");
  EXPECT_NE(results(), whole_);
  ASSERT_EQ(resumed(), kDone);
  EXPECT_EQ(results(), whole_);
  ASSERT_EQ(resumed(), kDone);
  EXPECT_NE(notes().find("nothing to do"), std::string::npos);
}

TEST_F(RunJournalTest, ARunThatBrokeOffGoesOn) {
  runWhole();
  std::filesystem::remove_all(journal());
  ASSERT_EQ(stitchedWith([](int frames) {
              if (frames == 4) throw std::bad_alloc();
            }),
            kDone);
  EXPECT_EQ(Json::parse(lines().back())["end"], "broken off");
  ASSERT_EQ(resumed(), kDone);
  EXPECT_EQ(results(), whole_);
}

TEST_F(RunJournalTest, InterruptedAmongTheRecordedFramesNothingIsWritten) {
  runWhole();
  putJournal(journalOf(4));
  const std::string before = readText(journalFile());
  removeResults();
  JournalFile file = JournalFile::opened(journal(), JournalFile::Access::kAppend);
  const RecordedRun run(file);
  RunJournal kept(std::move(file), run);
  const SourceOpener open = [&](const InputSettings& settings) {
    return std::make_unique<HookedSource>(openInputs({pictures_.path()}, settings), [](int frames) {
      if (frames == 2) std::raise(SIGINT);
    });
  };
  std::ostringstream out;
  EXPECT_EQ(
      toolErrorOf([&] {
        stitchCapture(options(), {out, out, false}, open, &kept);
      }),
      "interrupted before frame 3 'f3.png' of the journal: nothing is written, resume it again");
  EXPECT_EQ(work_.names(), std::vector<std::string>{"j"});
  EXPECT_EQ(readText(journalFile()), before);
}

TEST_F(RunJournalTest, ADiskThatTakesNoMoreEndsTheJournalNotTheRun) {
  runWhole();
  std::filesystem::remove_all(journal());
  removeResults();
  std::optional<FileSizeLimit> full;
  ASSERT_EQ(stitchedWith([&](int frames) {
              if (frames == 2) full.emplace(readText(journalFile()).size() + 100);
              if (frames == kFrames) full.reset();
            }),
            kDone);
  EXPECT_NE(
      notes().find("framequilt: the journal of '" + journal() +
                   "' could not be written (File too large): free some space; the run goes on "
                   "without its journal\n"),
      std::string::npos)
      << notes();
  EXPECT_EQ(results(), whole_);
  EXPECT_EQ(readText(journalFile()), whole_journal_.substr(0, readText(journalFile()).size()));
  EXPECT_EQ(lines().size(), 3U);  // The header and two frames.
  removeResults();
  ASSERT_EQ(resumed(), kDone);
  EXPECT_EQ(results(), whole_);
  EXPECT_EQ(readText(journalFile()), whole_journal_);
}

TEST_F(RunJournalTest, ACheckpointThatDoesNotFitEndsTheJournal) {
  runWhole();
  std::filesystem::remove_all(journal());
  removeResults();
  std::optional<FileSizeLimit> full;
  ASSERT_EQ(stitchedWith([&](int frames) {
              if (frames == 2) full.emplace(readText(journalFile()).size() + 5000);
              if (frames == kFrames) full.reset();
            }),
            kDone);
  EXPECT_NE(notes().find("framequilt: '" + work_.file("j/checkpoint.tif") +
                         "' could not be written (File too large): "),
            std::string::npos)
      << notes();
  EXPECT_EQ(results(), whole_);
  ASSERT_EQ(resumed(), kDone);
  EXPECT_EQ(readText(journalFile()), whole_journal_);
}

TEST_F(RunJournalTest, AJournalThatCannotBeBegunIsAnErrorBeforeAnyFrame) {
  const FileSizeLimit full(100);
  EXPECT_EQ(
      toolErrorOf([&] { stitched(options()); }),
      "the journal of '" + journal() + "' could not be written (File too large): free some space");
  EXPECT_EQ(work_.names(), std::vector<std::string>{"j"});
}

TEST_F(RunJournalTest, ReplayOfTheSameIsTheSame) {
  runWhole();
  removeResults();
  EXPECT_EQ(replayed(), kDone);
  EXPECT_EQ(out(), "recorded: framequilt " FRAMEQUILT_VERSION
                   ", host\nreplayed: framequilt " FRAMEQUILT_VERSION
                   ", host\nframes: 7, the same: 7\nmosaic: the same (530 x 150 pixels)\n");
  EXPECT_EQ(results(), "");
  EXPECT_EQ(readText(journalFile()), whole_journal_);
}

TEST_F(RunJournalTest, ReplayOfARunThatBrokeOffComparesWhatThereIs) {
  runWhole();
  const std::string three = journalOf(3);
  const std::string two = journalOf(2);
  putJournal(two);
  EXPECT_EQ(replayed(), kDone);
  EXPECT_NE(out().find("frames: 2, the same: 2\nmosaic: not recorded\n"), std::string::npos);
  putJournal(three + "{\"checkpoint\":3,\"mo");
  EXPECT_EQ(replayed(), kDone);
  EXPECT_NE(out().find("frames: 3, the same: 3\nmosaic: not recorded\n"), std::string::npos);
  putJournal(journalOf(0).substr(0, lines().front().size()));
  EXPECT_EQ(replayed(), kDone);
  EXPECT_NE(out().find("frames: 0, the same: 0\nmosaic: not recorded\n"), std::string::npos);
}

TEST_F(RunJournalTest, ReplayNamesTheFirstFrameWhoseFileChanged) {
  runWhole();
  save(picture("f6.png"), texture(kRows, kCols, 5));
  EXPECT_EQ(replayed(), kReplayDiffers);
  EXPECT_NE(
      out().find("first difference: frame 6 'f6.png': its file has changed since (bytes was "),
      std::string::npos)
      << out();
  EXPECT_NE(out().find("\nmosaic: differs after 6 frames ("), std::string::npos) << out();
}

TEST_F(RunJournalTest, ReplayTellsAFileThatWasWrittenAnewWithTheSamePixels) {
  runWhole();
  cv::imwrite(picture("f6.png"), cv::imread(picture("f6.png"), cv::IMREAD_UNCHANGED),
              {cv::IMWRITE_PNG_COMPRESSION, 0});
  EXPECT_EQ(replayed(), kReplayDiffers);
  EXPECT_NE(out().find("frames: 7, the same: 6\n"), std::string::npos) << out();
  EXPECT_NE(out().find("mosaic: the same"), std::string::npos) << out();
}

TEST_F(RunJournalTest, ReplayNamesTheFieldThatDiffers) {
  runWhole();
  rewriteHeader([](Json& header) { header["options"]["dynamic"] = true; });
  EXPECT_EQ(replayed(), kReplayDiffers);
  EXPECT_NE(out().find("frames: 7, the same: 2\nfirst difference: frame 2 'f2.png': verdict was "
                       "\"joined\", is \"refused\"\n"),
            std::string::npos)
      << out();
}

TEST_F(RunJournalTest, ReplayNamesFramesThatCannotBeReadAnyMore) {
  runWhole();
  cutInHalf(picture("f2.png"));
  EXPECT_EQ(replayed(), kReplayDiffers);
  EXPECT_NE(out().find("first difference: frame 2 'f2.png': cannot be read any more\n"),
            std::string::npos)
      << out();
}

TEST_F(RunJournalTest, ReplayComparesTheMosaicAlsoWithoutTheLastFrame) {
  runWhole();
  cutInHalf(picture("f9.png"));
  EXPECT_EQ(replayed(), kReplayDiffers);
  EXPECT_NE(
      out().find("first difference: frame 9 'f9.png': cannot be read any more\nmosaic: differs "
                 "after 7 frames (cols was 530, is 440)\n"),
      std::string::npos)
      << out();
}

TEST_F(RunJournalTest, ReplayTellsAFrameThatCanBeReadNow) {
  runWhole();
  save(picture("f7.png"), texture(kRows, 600)(cv::Rect(200, 0, kCols, kRows)));
  EXPECT_EQ(replayed(), kReplayDiffers);
  EXPECT_NE(out().find("first difference: frame 7 'f7.png': is not in the journal\n"),
            std::string::npos)
      << out();
}

namespace {

class CameraJournal : public RunJournalTest {
 protected:
  /// A camera that gives views of the scene from these places.
  SourceOpener camera(const std::vector<int>& places, int cols = kCols) const {
    std::vector<cv::Mat> views;
    for (const int x : places) views.push_back(scene_(cv::Rect(x, 0, cols, kRows)));
    return [views](const InputSettings&) { return std::make_unique<ViewsOfACamera>(views); };
  }
  StitchOptions live() const {
    StitchOptions live = options();
    live.inputs = {"camera:0"};
    return live;
  }
  int resumedFrom(const SourceOpener& camera) {
    ResumeOptions options;
    options.journal = journal();
    return run([&](auto streams) { return resume(options, streams, camera); });
  }
  std::vector<std::string> keptFrames() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(work_.file("j/frames"))) {
      names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  cv::Mat scene_ = coloured(texture(kRows, 700));
};

}  // namespace

TEST_F(CameraJournal, ItsFramesAreKept) {
  ASSERT_EQ(stitchedFrom(live(), camera({0, 80, 160})), kDone);
  EXPECT_EQ(keptFrames(), (std::vector<std::string>{"000003.png", "000006.png", "000009.png"}));
  EXPECT_TRUE(samePixels(readPicture(work_.file("j/frames/000006.png"), 3),
                         scene_(cv::Rect(80, 0, kCols, kRows))));
  removeResults();
  EXPECT_EQ(replayed(), kDone);
  EXPECT_NE(out().find("frames: 3, the same: 3\nmosaic: the same (360 x 150 pixels)\n"),
            std::string::npos)
      << out();
}

TEST_F(CameraJournal, ResumedTheCameraGoesOn) {
  ASSERT_EQ(stitchedFrom(live(), camera({0, 80, 160, 240, 320})), kDone);
  const std::string whole = results();
  const std::string all = readText(journalFile());
  ASSERT_NE(whole, "");
  writeText(journalFile(), all.substr(0, all.find("{\"frame\":12")));
  removeResults();
  ASSERT_EQ(resumedFrom(camera({240, 320})), kDone);
  EXPECT_EQ(readText(placements()),
            "frame,file,x,y,joined\n3,camera:0#3,0,0,1\n6,camera:0#6,80,0,1\n9,camera:0#9,160,0,1\n"
            "12,camera:0#12,240,0,1\n15,camera:0#15,320,0,1\n");
  EXPECT_EQ(Json::parse(readText(report()))["dropped"], 10);
  EXPECT_EQ(replayed(), kDone);
}

TEST_F(CameraJournal, ACameraThatIsGoneLeavesTheMosaicOfTheKeptFrames) {
  ASSERT_EQ(stitchedFrom(live(), camera({0, 80, 160})), kDone);
  const std::string mosaicBytes = readText(mosaic());
  const std::string all = readText(journalFile());
  writeText(journalFile(), all.substr(0, all.find("{\"checkpoint\":3")));
  removeResults();
  ASSERT_EQ(resumedFrom([](const InputSettings&) -> std::unique_ptr<FrameSource> {
              throw framequilt::tool::ToolError("camera 0 cannot be opened");
            }),
            kDone);
  EXPECT_NE(notes().find("framequilt: camera 0 cannot be opened\n"), std::string::npos) << notes();
  EXPECT_EQ(readText(mosaic()), mosaicBytes);
  EXPECT_EQ(Json::parse(lines().back())["end"], "broken off");
}

TEST_F(CameraJournal, ACameraOfAnotherSizeIsRefused) {
  ASSERT_EQ(stitchedFrom(live(), camera({0, 80})), kDone);
  const std::string all = readText(journalFile());
  writeText(journalFile(), all.substr(0, all.find("{\"checkpoint\":2")));
  ASSERT_EQ(resumedFrom(camera({160}, 100)), kDone);
  EXPECT_NE(
      notes().find("framequilt: camera:0 gives frames of 100 x 150 pixels now, the run's have "
                   "200 x 150 pixels: set it as before\n"),
      std::string::npos)
      << notes();
}

TEST_F(CameraJournal, AKeptFrameThatIsMissingOrChangedIsNamed) {
  ASSERT_EQ(stitchedFrom(live(), camera({0, 80, 160})), kDone);
  const std::string all = readText(journalFile());
  writeText(journalFile(), all.substr(0, all.find("{\"checkpoint\":3")));
  const std::string kept = work_.file("j/frames/000006.png");
  save(kept, noise(kRows, kCols));
  EXPECT_EQ(
      toolErrorOf([&] { resumedFrom(camera({240})); }),
      "frame 6 'camera:0#6' has changed since the run (other pixels): put it back as it was, or "
      "stitch anew");
  cutInHalf(kept);
  EXPECT_EQ(toolErrorOf([&] { resumedFrom(camera({240})); }),
            "frame 6 'camera:0#6' of the journal cannot be had any more: put it back as it was");
  std::filesystem::remove(kept);
  EXPECT_EQ(toolErrorOf([&] { resumedFrom(camera({240})); }),
            "'" + kept + "' of the journal cannot be found: put it back");
}
