// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/console.h"

#include <gtest/gtest.h>

#include <sstream>

using framequilt::tool::Console;
using Amount = framequilt::tool::Console::Amount;

namespace {

/// What a console of this kind writes for one of each.
std::string written(bool terminal, Amount amount) {
  std::ostringstream stream;
  {
    Console console(stream, terminal, amount);
    console.progress("1 of 2");
    console.remark("hear");
    console.detail("small");
    console.progress("2 of 2");
  }
  return stream.str();
}

}  // namespace

TEST(Console, AwayFromATerminalEverythingIsALine) {
  EXPECT_EQ(written(false, Amount::kNormal),
            "framequilt: 1 of 2\nframequilt: hear\nframequilt: 2 of 2\n");
}

TEST(Console, OnATerminalProgressIsOneLineBelowTheRemarks) {
  EXPECT_EQ(written(true, Amount::kNormal),
            "\r\x1b[K1 of 2\r\x1b[Kframequilt: hear\n1 of 2\r\x1b[K2 of 2\r\x1b[K");
}

TEST(Console, VerboseTellsDetailsInsteadOfProgress) {
  for (const bool terminal : {false, true}) {
    EXPECT_EQ(written(terminal, Amount::kVerbose), "framequilt: hear\nframequilt: small\n");
  }
}

TEST(Console, QuietStillRemarks) {
  for (const bool terminal : {false, true}) {
    EXPECT_EQ(written(terminal, Amount::kQuiet), "framequilt: hear\n");
  }
}

TEST(Console, EndsItsProgressOnce) {
  std::ostringstream stream;
  {
    Console console(stream, true, Amount::kNormal);
    console.endProgress();
    console.progress("1 of 2");
    console.endProgress();
    console.remark("hear");
  }
  EXPECT_EQ(stream.str(), "\r\x1b[K1 of 2\r\x1b[Kframequilt: hear\n");
}
