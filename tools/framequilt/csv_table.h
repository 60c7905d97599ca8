// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace framequilt::tool {

/// A field of a comma-separated line, quoted where it has to be.
std::string csvField(const std::string& value);

/// Comma-separated values below a heading that names the columns.
///
/// Fields may be quoted, then they may hold commas, line ends and doubled quotes. Lines end with LF
/// or CRLF; a byte order mark of UTF-8 and blank lines are skipped. Every message names the file
/// and the line, counted from 1.
class CsvTable {
 public:
  struct Row {
    int line;                         ///< Where the row begins.
    std::vector<std::string> fields;  ///< As many as the heading has.
  };

  /// \throws ToolError for a file that cannot be read, and as the constructor does.
  static CsvTable read(const std::filesystem::path& file);

  /// Takes `text` apart; `file` is what messages call it.
  /// \throws ToolError for text without a heading, a row that is shorter or longer than the
  /// heading, and misplaced quotes.
  CsvTable(std::filesystem::path file, std::string_view text);

  const std::vector<Row>& rows() const { return rows_; }

  /// Where in a row the column of this name is; none when the heading lacks it.
  /// \throws ToolError when the heading has it more than once.
  std::optional<std::size_t> findColumn(std::string_view name) const;
  /// The same for a column that has to be there. \throws ToolError when the heading lacks it.
  std::size_t column(std::string_view name) const;

  /// The field as a decimal number, blanks around it allowed.
  /// \throws ToolError for anything else and for numbers that are not finite.
  double number(const Row& row, std::size_t column) const;
  /// The field as a whole number of at least 1. \throws ToolError for anything else.
  int count(const Row& row, std::size_t column) const;

  /// Where messages say something is: 'file' line N.
  std::string place(int line) const;

 private:
  std::filesystem::path file_;
  Row heading_{1, {}};
  std::vector<Row> rows_;
};

}  // namespace framequilt::tool
