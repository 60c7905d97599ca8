// SPDX-License-Identifier: Apache-2.0
#include "imaging/assistant.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using framequilt::Assistant;

/// Works when it is waited for.
class PatientLender : public framequilt::Lender {
 public:
  bool lend(const std::function<void()>& work) override {
    if (busy) return false;
    work_ = &work;
    return true;
  }
  void awaitLent() override {
    (*work_)();
    work_ = nullptr;
    ++awaited;
  }

  bool busy = false;
  int awaited = 0;

 private:
  const std::function<void()>* work_ = nullptr;
};

class AnAssistant : public testing::Test {
 protected:
  void SetUp() override { framequilt::setLender(&lender_); }
  void TearDown() override { framequilt::setLender(nullptr); }

  PatientLender lender_;
  int done_ = 0;
};

TEST_F(AnAssistant, WorksOnTheThreadThatIsLent) {
  {
    Assistant assistant(true, [this] { ++done_; });
    EXPECT_TRUE(assistant.works());
    EXPECT_EQ(done_, 0);
    assistant.join();
    EXPECT_EQ(done_, 1);
    EXPECT_FALSE(assistant.works());
  }
  EXPECT_EQ(lender_.awaited, 1) << "once is enough";
}

TEST_F(AnAssistant, IsWaitedForAtTheEndOfItsScope) {
  {
    const Assistant assistant(true, [this] { ++done_; });
  }
  EXPECT_EQ(done_, 1);
}

TEST_F(AnAssistant, StartsAThreadWhereNoneIsLent) {
  lender_.busy = true;
  std::thread::id worker;
  {
    const Assistant assistant(true, [&] { worker = std::this_thread::get_id(); });
    EXPECT_TRUE(assistant.works());
  }
  EXPECT_NE(worker, std::thread::id());
  EXPECT_NE(worker, std::this_thread::get_id());
  EXPECT_EQ(lender_.awaited, 0);
}

TEST_F(AnAssistant, ThatIsNotWantedDoesNothing) {
  {
    const Assistant assistant(false, [this] { ++done_; });
    EXPECT_FALSE(assistant.works());
  }
  EXPECT_EQ(done_, 0);
  EXPECT_EQ(lender_.awaited, 0);
}

}  // namespace
