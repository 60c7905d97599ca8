// SPDX-License-Identifier: Apache-2.0
// A mosaic that cannot grow any more, since the process has no more memory.
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>

#include <fstream>
#include <opencv2/core.hpp>

#include "framequilt/session.h"
#include "tests/support/scene.h"
#include "tests/support/session_frames.h"
#include "tests/support/thrown_error.h"

using framequilt::Criterion;
using framequilt::ErrorCode;
using framequilt::FrameResult;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::Verdict;

namespace {

/// While it lives, the process gets little more memory than it has: enough for a frame, not for a
/// mosaic.
class LittleMemory {
 public:
  LittleMemory() {
    malloc_trim(0);  // What an earlier test gave back would be room.
    getrlimit(RLIMIT_AS, &former_);
    rlimit limit = former_;
    limit.rlim_cur = sizeNow() + (rlim_t{12} << 20U);
    EXPECT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
  }
  ~LittleMemory() { setrlimit(RLIMIT_AS, &former_); }
  LittleMemory(const LittleMemory&) = delete;
  LittleMemory& operator=(const LittleMemory&) = delete;

 private:
  static rlim_t sizeNow() {
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * 4096;
  }

  rlimit former_{};
};

class GrowthWithoutMemory : public testing::TestWithParam<Criterion> {
 protected:
  /// 1200 rows of a new mosaic are left below the first frame.
  static constexpr int kRows = 3600, kCols = 160;

  FrameResult addAt(Session& session, int x, int y) const {
    return session.add(viewOf(scene_.cut(x, y, kRows, kCols)));
  }
  SessionOptions options() const {
    SessionOptions options = optionsFor(scene_.cut(0, 0, kRows, kCols));
    options.criterion = GetParam();
    return options;
  }

  const Scene scene_{5000, 200, 1, 7};
};

INSTANTIATE_TEST_SUITE_P(, GrowthWithoutMemory,
                         testing::Values(Criterion::kMotion, Criterion::kOverlap),
                         [](const auto& instance) {
                           return instance.param == Criterion::kMotion ? "Motion" : "Overlap";
                         });

TEST_P(GrowthWithoutMemory, LeavesTheMosaicAndTheSessionThatGoesOn) {
  Session session(options());
  addAt(session, 0, 0);
  ASSERT_EQ(addAt(session, 10, 500).verdict, Verdict::kJoined);
  // Everything but the mosaic has its memory then.
  ASSERT_EQ(addAt(session, 0, 900).verdict, Verdict::kJoined);
  const cv::Mat before = session.mosaic().clone();
  const cv::Rect box = session.steadyBox();
  {
    const LittleMemory little;
    const ThrownError error = errorOf([&] { addAt(session, 5, 1300); });
    EXPECT_EQ(error.code, ErrorCode::kOutOfMemory);
    EXPECT_EQ(error.text,
              "out of memory: the mosaic so far stays; use scale 2 or begin another mosaic");
    EXPECT_EQ(session.steadyBox(), box);
    EXPECT_EQ(cv::norm(session.mosaic(), before, cv::NORM_INF), 0.0);

    const FrameResult next = addAt(session, 5, 500);
    EXPECT_EQ(next.verdict, Verdict::kJoined) << explain(next);
    EXPECT_EQ(session.steadyBox().height, box.height);
  }
  const FrameResult grown = addAt(session, 0, 1250);
  EXPECT_EQ(grown.verdict, Verdict::kJoined) << explain(grown);
  EXPECT_NEAR(session.steadyBox().height, kRows + 1250, 2);
}

}  // namespace
