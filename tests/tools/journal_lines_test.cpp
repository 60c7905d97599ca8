// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/journal_lines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tool_error_text.h"

using framequilt::tool::JournalLines;
using framequilt::tool::readJournalLines;
using framequilt::tool::sealedLine;

namespace {

using Objects = std::vector<std::string>;

const Objects kObjects = {R"({"a":1})", R"({"b":"two"})", R"({"c":[3]})"};

/// The three objects as a journal has them.
Objects sealedLines() {
  Objects lines;
  std::uint64_t checksum = 0;
  for (const std::string& object : kObjects) lines.push_back(sealedLine(object, checksum));
  return lines;
}

std::string joined(const Objects& lines) {
  std::string text;
  for (const std::string& line : lines) text += line;
  return text;
}

std::string errorOf(const Objects& lines) {
  return toolErrorOf([&] { readJournalLines(joined(lines), "'j'"); });
}

std::string damaged(int line) {
  return "'j' line " + std::to_string(line) +
         " is damaged (its checksum does not fit): take a copy of the journal, or stitch anew";
}

}  // namespace

TEST(JournalLines, WhatIsWrittenIsRead) {
  const std::string text = joined(sealedLines());
  const JournalLines read = readJournalLines(text, "'j'");
  EXPECT_EQ(read.objects, kObjects);
  EXPECT_EQ(read.goodBytes, text.size());
}

TEST(JournalLines, EachLineIsAnObjectWithItsChecksumAtTheEnd) {
  // XXH3 of the text before the checksum, with the checksum before as its seed.
  EXPECT_EQ(sealedLines().front(), "{\"a\":1,\"sum\":\"72320ca0186ede72\"}\n");
}

TEST(JournalLines, ALineGoesOnWhereTheLastOneStopped) {
  const Objects lines = sealedLines();
  JournalLines read = readJournalLines(lines[0] + lines[1], "'j'");
  EXPECT_EQ(sealedLine(kObjects[2], read.checksum), lines[2]);
}

TEST(JournalLines, AnEmptyTextHasNone) {
  EXPECT_EQ(readJournalLines("", "'j'").objects, Objects{});
  EXPECT_EQ(readJournalLines("", "'j'").goodBytes, 0U);
}

TEST(JournalLines, ATextCutOffAnywhereKeepsTheLinesBefore) {
  const Objects lines = sealedLines();
  const std::string text = joined(lines);
  for (std::size_t size = 0; size < text.size(); ++size) {
    const JournalLines read = readJournalLines(text.substr(0, size), "'j'");
    const std::size_t whole = size < lines[0].size()                ? 0
                              : size < (lines[0] + lines[1]).size() ? 1
                                                                    : 2;
    EXPECT_EQ(read.objects, Objects(kObjects.begin(), kObjects.begin() + static_cast<long>(whole)))
        << size;
    EXPECT_EQ(read.goodBytes,
              joined(Objects(lines.begin(), lines.begin() + static_cast<long>(whole))).size());
  }
}

TEST(JournalLines, ADamagedLastLineIsDropped) {
  Objects lines = sealedLines();
  lines[2][3] = 'x';
  EXPECT_EQ(readJournalLines(joined(lines), "'j'").objects, (Objects{kObjects[0], kObjects[1]}));
  lines[2] = std::string(40, '\0');
  EXPECT_EQ(readJournalLines(joined(lines), "'j'").objects, (Objects{kObjects[0], kObjects[1]}));
}

TEST(JournalLines, AnotherByteInALineBeforeIsAnError) {
  const Objects good = sealedLines();
  for (std::size_t line = 0; line < 2; ++line) {
    for (std::size_t i = 0; i + 1 < good[line].size(); ++i) {
      Objects lines = good;
      lines[line][i] = static_cast<char>(lines[line][i] ^ 1);
      EXPECT_EQ(errorOf(lines), damaged(static_cast<int>(line) + 1)) << i;
    }
  }
}

TEST(JournalLines, ALineThatIsMissingTwiceThereOrElsewhereIsAnError) {
  const Objects lines = sealedLines();
  EXPECT_EQ(errorOf({lines[1], lines[2]}), damaged(1));
  EXPECT_EQ(errorOf({lines[0], lines[2], lines[2]}), damaged(2));
  EXPECT_EQ(errorOf({lines[0], lines[0], lines[1]}), damaged(2));
  EXPECT_EQ(errorOf({lines[1], lines[0], lines[2]}), damaged(1));
  EXPECT_EQ(errorOf({lines[0], "\n", lines[1]}), damaged(2));
}
