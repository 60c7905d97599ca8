// SPDX-License-Identifier: Apache-2.0
// Whole runs give the same bytes as ever, on every machine and with every compiler.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <string>

#include "tests/run/golden_captures.h"

namespace {

/// Digests by the name of the capture, as golden.txt has them.
std::map<std::string, std::string> pinnedDigests() {
  std::map<std::string, std::string> digests;
  std::ifstream file(FRAMEQUILT_GOLDEN_FILE);
  std::string name, digest;
  while (file >> name >> digest) digests[name] = digest;
  return digests;
}

class Golden : public testing::TestWithParam<GoldenCapture> {};

INSTANTIATE_TEST_SUITE_P(, Golden, testing::ValuesIn(goldenCaptures()),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(Golden, CaptureGivesItsPinnedBytes) {
  const auto pinned = pinnedDigests();
  const auto entry = pinned.find(GetParam().name);
  ASSERT_NE(entry, pinned.end()) << "no such line in golden.txt; see scripts/update-golden";
  EXPECT_EQ(digestOf(GetParam()), entry->second);
}

TEST(GoldenFile, HasALineForEachCaptureAndNoOther) {
  const auto pinned = pinnedDigests();
  EXPECT_EQ(pinned.size(), goldenCaptures().size());
  for (const GoldenCapture& capture : goldenCaptures()) {
    EXPECT_EQ(pinned.count(capture.name), 1U) << capture.name;
  }
}

}  // namespace
