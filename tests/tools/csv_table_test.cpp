// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/csv_table.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "temporary_folder.h"
#include "tool_error_text.h"

using framequilt::tool::csvField;
using framequilt::tool::CsvTable;

namespace {

using Fields = std::vector<std::string>;

CsvTable table(const std::string& text) { return {"t.csv", text}; }

std::string errorOf(const std::function<void()>& action) { return toolErrorOf(action); }

/// What reading the only field of a table with this field as a number says.
std::string numberError(const std::string& field) {
  const CsvTable numbers = table("x\n" + field + "\n");
  return errorOf([&] { numbers.number(numbers.rows().at(0), 0); });
}

std::string countError(const std::string& field) {
  const CsvTable numbers = table("x\n" + field + "\n");
  return errorOf([&] { numbers.count(numbers.rows().at(0), 0); });
}

}  // namespace

TEST(CsvTable, RowsHaveTheFieldsBelowTheHeading) {
  const CsvTable found = table("frame,x\n1,20\n2,\n");
  ASSERT_EQ(found.rows().size(), 2U);
  EXPECT_EQ(found.rows()[0].fields, (Fields{"1", "20"}));
  EXPECT_EQ(found.rows()[1].fields, (Fields{"2", ""}));
  EXPECT_EQ(found.rows()[1].line, 3);
}

TEST(CsvTable, ColumnsAreFoundByNameInAnyOrder) {
  const CsvTable found = table("y, frame ,x\n");
  EXPECT_EQ(found.column("x"), 2U);
  EXPECT_EQ(found.column("frame"), 1U);
  EXPECT_EQ(found.findColumn("y"), 0U);
  EXPECT_EQ(found.findColumn("z"), std::nullopt);
}

TEST(CsvTable, QuotedFieldsHoldCommasQuotesAndLineEnds) {
  const CsvTable found = table("\"a\",b\n\"1,\"\"2\"\"\r\n3\",\"\"\n4,5\n");
  ASSERT_EQ(found.rows().size(), 2U);
  EXPECT_EQ(found.rows()[0].fields, (Fields{"1,\"2\"\r\n3", ""}));
  EXPECT_EQ(found.rows()[0].line, 2);
  EXPECT_EQ(found.rows()[1].line, 4);
}

TEST(CsvTable, WindowsLineEndsAndAByteOrderMarkAreNoContent) {
  const CsvTable found = table(
      "\xEF\xBB\xBF"
      "a,b\r\n1,2\r\n\"3\",\"4\"\r\n");
  EXPECT_EQ(found.column("a"), 0U);
  EXPECT_EQ(found.column("b"), 1U);
  ASSERT_EQ(found.rows().size(), 2U);
  EXPECT_EQ(found.rows()[0].fields, (Fields{"1", "2"}));
  EXPECT_EQ(found.rows()[1].fields, (Fields{"3", "4"}));
}

TEST(CsvTable, BlankLinesAreSkippedButCounted) {
  const CsvTable found = table("a,b\n\n1,2\n\r\n\n");
  ASSERT_EQ(found.rows().size(), 1U);
  EXPECT_EQ(found.rows()[0].line, 3);
}

TEST(CsvTable, TheLastLineNeedsNoEnd) {
  EXPECT_EQ(table("a,b\n1,2").rows().at(0).fields, (Fields{"1", "2"}));
  EXPECT_EQ(table("a,b\n1,").rows().at(0).fields, (Fields{"1", ""}));
  EXPECT_EQ(table("a,b\n1,\"2\"").rows().at(0).fields, (Fields{"1", "2"}));
}

TEST(CsvTable, NumbersMayStandBetweenBlanks) {
  const CsvTable found = table("x,n\n -12.5\t, 7\n1e2,2147483647\n");
  EXPECT_EQ(found.number(found.rows()[0], 0), -12.5);
  EXPECT_EQ(found.number(found.rows()[1], 0), 100);
  EXPECT_EQ(found.count(found.rows()[0], 1), 7);
  EXPECT_EQ(found.count(found.rows()[1], 1), 2147483647);
}

TEST(CsvTable, OtherTextIsNoNumber) {
  for (const char* field : {"twelve", "1.5.2", "1 2", "0x10", "inf", "-inf", "nan", "1e999", "-"}) {
    EXPECT_EQ(numberError(field), "'t.csv' line 2: '" + std::string(field) +
                                      "' in column 'x' is no finite number: write one such as 12 "
                                      "or 12.5");
  }
}

TEST(CsvTable, CountsAreWholeNumbersFromOne) {
  for (const char* field : {"0", "-3", "1.0", "a", "2147483648"}) {
    EXPECT_EQ(countError(field), "'t.csv' line 2: '" + std::string(field) +
                                     "' in column 'x' is no whole number from 1: write one");
  }
}

TEST(CsvTable, ARowOfAnotherLengthIsNamed) {
  EXPECT_EQ(errorOf([] { table("a,b\n1,2\n3\n"); }),
            "'t.csv' line 3 does not have as many fields as the heading (1, not 2): complete or "
            "remove it");
  EXPECT_EQ(errorOf([] { table("a,b\n1,2,3\n"); }),
            "'t.csv' line 2 does not have as many fields as the heading (3, not 2): complete or "
            "remove it");
}

TEST(CsvTable, MisplacedQuotesAreNamed) {
  EXPECT_EQ(errorOf([] { table("a\n1\n\"2\n3\n"); }),
            "'t.csv' line 3 opens a quoted field that never ends: close the quote");
  EXPECT_EQ(errorOf([] { table("a\n\"1\"2\n"); }),
            "'t.csv' line 2 has text beside a quoted field: put the whole field in quotes");
}

TEST(CsvTable, ColumnsThatAreMissingOrDoubledAreNamed) {
  EXPECT_EQ(errorOf([] { table("a,b\n").column("x"); }),
            "'t.csv' line 1 names no column 'x': add it to the heading");
  EXPECT_EQ(errorOf([] { table("\n\nx,b,x\n").column("x"); }),
            "'t.csv' line 3 names column 'x' more than once: rename or remove one");
}

TEST(CsvTable, AnEmptyFileHasNoHeading) {
  for (const char* text : {"", "\n\r\n", "\xEF\xBB\xBF"}) {
    EXPECT_EQ(errorOf([&] { table(text); }),
              "'t.csv' line 1 is empty: begin with a line that names the columns");
  }
}

TEST(CsvTable, FilesAreReadAsTheyAre) {
  const TemporaryFolder folder;
  writeText(folder.file("a.csv"), "a\r\n1\r\n");
  EXPECT_EQ(CsvTable::read(folder.file("a.csv")).rows().at(0).fields, Fields{"1"});
  EXPECT_EQ(errorOf([&] { CsvTable::read(folder.file("b.csv")); }),
            "'" + folder.file("b.csv") +
                "' cannot be opened (No such file or directory): check the path and its "
                "permissions");
  EXPECT_EQ(errorOf([&] { CsvTable::read(folder.path()); }),
            "'" + folder.path() +
                "' cannot be opened (Is a directory): check the path and its permissions");
}

TEST(CsvField, WhatIsWrittenIsReadBack) {
  for (const char* text : {"plain", "a,b", "\"", "line\nend", "carriage\rreturn", " blank "}) {
    EXPECT_EQ(table("a,b\n" + csvField(text) + ",1\n").rows().at(0).fields, (Fields{text, "1"}));
  }
  EXPECT_EQ(csvField("plain"), "plain");
}
