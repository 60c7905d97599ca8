// SPDX-License-Identifier: Apache-2.0
// A run of one backend, replayed and resumed on the other.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "journal_capture.h"
#include "tests/support/opencl_layer.h"
#include "tools/framequilt/replay_command.h"
#include "tools/framequilt/resume_command.h"
#include "tools/framequilt/stitch_command.h"

namespace layer = framequilt::opencl_layer;
using framequilt::tool::kDone;
using framequilt::tool::kReplayDiffers;
using framequilt::tool::ReplayOptions;
using framequilt::tool::ResumeOptions;
using framequilt::tool::StitchOptions;

namespace {

class ReplayBackend : public JournalCapture {
 protected:
  ReplayBackend() { layer::presentDefault(); }

  int stitched(const std::string& backend, const std::string& mode = "motion") {
    StitchOptions options;
    options.inputs = {pictures_.path()};
    options.output = mosaic();
    options.placements = placements();
    options.report = report();
    options.journal = journal();
    options.backend = backend;
    options.mode = mode;
    std::ostringstream streams;
    return framequilt::tool::stitch(options, {streams, streams, false});
  }
  int replayed(const std::string& backend) {
    ReplayOptions options;
    options.journal = journal();
    options.backend = backend;
    std::ostringstream notes;
    out_.str("");
    return framequilt::tool::replay(options, {out_, notes, false});
  }
  std::string out() const { return out_.str(); }

 private:
  std::ostringstream out_;
};

}  // namespace

TEST_F(ReplayBackend, BothMakeTheSame) {
  ASSERT_EQ(stitched("host"), kDone);
  EXPECT_EQ(replayed("opencl"), kDone);
  EXPECT_EQ(out(), "recorded: framequilt " FRAMEQUILT_VERSION
                   ", host\nreplayed: framequilt " FRAMEQUILT_VERSION
                   ", opencl\nframes: 7, the same: 7\nmosaic: the same (530 x 150 pixels)\n");
  EXPECT_EQ(replayed("recorded"), kDone);
  EXPECT_EQ(replayed("host"), kDone);
}

TEST_F(ReplayBackend, TheMeasureThatDiffersIsNamed) {
  ASSERT_EQ(stitched("opencl", "overlap"), kDone);
  EXPECT_EQ(replayed("recorded"), kDone) << out();
  EXPECT_EQ(replayed("host"), kReplayDiffers);
  EXPECT_NE(
      out().find("first difference: frame 5 'f5.png': measures/sharpness_difference/value was "),
      std::string::npos)
      << out();
  EXPECT_NE(out().find("\nmosaic: the same"), std::string::npos) << out();
}

TEST_F(ReplayBackend, ARunGoesOnWithTheBackendItBeganWith) {
  for (const char* backend : {"auto", "host"}) {
    std::filesystem::remove_all(journal());
    ASSERT_EQ(stitched(backend), kDone);
    const std::string whole = results();
    const std::string all = readText(journalFile());
    writeText(journalFile(), all.substr(0, all.find("\n{\"frame\":5") + 1));
    removeResults();
    ResumeOptions options;
    options.journal = journal();
    std::ostringstream streams;
    ASSERT_EQ(framequilt::tool::resume(options, {streams, streams, false}), kDone);
    EXPECT_EQ(results(), whole);
    EXPECT_NE(whole.find(backend == std::string("auto") ? "\"backend\": \"opencl\""
                                                        : "\"backend\": \"host\""),
              std::string::npos);
  }
}
