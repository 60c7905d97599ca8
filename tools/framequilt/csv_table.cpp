// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/csv_table.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

#include "tools/framequilt/path_text.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string placeIn(const fs::path& file, int line) {
  return inQuotes(file) + " line " + std::to_string(line);
}

/// Takes rows off the front of a text.
class RowReader {
 public:
  RowReader(const fs::path& file, std::string_view text) : file_(file), rest_(text) {
    if (rest_.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
      rest_.remove_prefix(kByteOrderMark.size());
    }
  }

  /// The next row that is not blank; none at the end.
  std::optional<CsvTable::Row> next() {
    while (takeLineEnd()) {
    }
    if (rest_.empty()) return std::nullopt;
    CsvTable::Row row{line_, {takeField()}};
    while (takeComma()) row.fields.push_back(takeField());
    if (!rest_.empty() && !takeLineEnd()) {
      throw ToolError(placeIn(file_, line_) +
                      " has text beside a quoted field: put the whole field in quotes");
    }
    return row;
  }

 private:
  bool takeLineEnd() {
    const std::size_t length = rest_.substr(0, 2) == "\r\n" ? 2 : 1;
    if (rest_.empty() || (length == 1 && rest_.front() != '\n')) return false;
    rest_.remove_prefix(length);
    ++line_;
    return true;
  }

  bool takeComma() {
    if (rest_.empty() || rest_.front() != ',') return false;
    rest_.remove_prefix(1);
    return true;
  }

  std::string takeField() {
    return !rest_.empty() && rest_.front() == '"' ? takeQuoted() : takePlain();
  }

  std::string takePlain() {
    std::size_t length = std::min(rest_.find_first_of(",\n"), rest_.size());
    const bool beforeLineFeed = length < rest_.size() && rest_[length] == '\n';
    if (beforeLineFeed && length > 0 && rest_[length - 1] == '\r') --length;
    std::string field(rest_.substr(0, length));
    rest_.remove_prefix(length);
    return field;
  }

  std::string takeQuoted() {
    const int begin = line_;
    std::string field;
    rest_.remove_prefix(1);
    while (true) {
      const std::size_t length = rest_.find('"');
      if (length == std::string_view::npos) {
        throw ToolError(placeIn(file_, begin) +
                        " opens a quoted field that never ends: close the quote");
      }
      field += rest_.substr(0, length);
      line_ += static_cast<int>(std::count(rest_.begin(), rest_.begin() + length, '\n'));
      rest_.remove_prefix(length + 1);
      if (rest_.empty() || rest_.front() != '"') return field;
      field += '"';
      rest_.remove_prefix(1);
    }
  }

  const fs::path& file_;
  std::string_view rest_;
  int line_ = 1;
};

std::string_view withoutBlanks(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
  text.remove_prefix(begin);
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

/// The whole of `text` as a number; none when it is not one or does not fit.
template <class Number>
std::optional<Number> parsed(std::string_view text) {
  Number value{};
  const char* const end = text.data() + text.size();
  const auto [stop, failure] = std::from_chars(text.data(), end, value);
  if (failure != std::errc{} || stop != end) return std::nullopt;
  return value;
}

std::string wholeFile(const fs::path& file) {
  std::error_code ignored;
  errno = 0;
  std::ifstream stream(file, std::ios::binary);
  const int failure = fs::is_directory(file, ignored) ? EISDIR : errno;
  if (!stream || failure == EISDIR) {
    throw ToolError(inQuotes(file) + " cannot be opened (" + std::strerror(failure) +
                    "): check the path and its permissions");
  }
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace

std::string csvField(const std::string& value) {
  if (value.find_first_of(",\"\r\n") == std::string::npos) return value;
  std::string field = "\"";
  for (const char c : value) {
    if (c == '"') field += '"';
    field += c;
  }
  return field + '"';
}

CsvTable CsvTable::read(const fs::path& file) { return {file, wholeFile(file)}; }

CsvTable::CsvTable(fs::path file, std::string_view text) : file_(std::move(file)) {
  RowReader reader(file_, text);
  std::optional<Row> heading = reader.next();
  if (!heading) throw ToolError(place(1) + " is empty: begin with a line that names the columns");
  heading_ = *std::move(heading);
  while (std::optional<Row> row = reader.next()) {
    if (row->fields.size() != heading_.fields.size()) {
      throw ToolError(place(row->line) + " does not have as many fields as the heading (" +
                      std::to_string(row->fields.size()) + ", not " +
                      std::to_string(heading_.fields.size()) + "): complete or remove it");
    }
    rows_.push_back(*std::move(row));
  }
}

std::optional<std::size_t> CsvTable::findColumn(std::string_view name) const {
  std::optional<std::size_t> found;
  for (std::size_t i = 0; i < heading_.fields.size(); ++i) {
    if (withoutBlanks(heading_.fields[i]) != name) continue;
    if (found) {
      throw ToolError(place(heading_.line) + " names column '" + std::string(name) +
                      "' more than once: rename or remove one");
    }
    found = i;
  }
  return found;
}

std::size_t CsvTable::column(std::string_view name) const {
  const std::optional<std::size_t> found = findColumn(name);
  if (!found) {
    throw ToolError(place(heading_.line) + " names no column '" + std::string(name) +
                    "': add it to the heading");
  }
  return *found;
}

double CsvTable::number(const Row& row, std::size_t column) const {
  const std::string& field = row.fields[column];
  const std::optional<double> value = parsed<double>(withoutBlanks(field));
  if (!value || !std::isfinite(*value)) {
    throw ToolError(place(row.line) + ": " + inQuotes(field) + " in column " +
                    inQuotes(heading_.fields[column]) +
                    " is no finite number: write one such as 12 or 12.5");
  }
  return *value;
}

int CsvTable::count(const Row& row, std::size_t column) const {
  const std::string& field = row.fields[column];
  const std::optional<int> value = parsed<int>(withoutBlanks(field));
  if (!value || *value < 1) {
    throw ToolError(place(row.line) + ": " + inQuotes(field) + " in column " +
                    inQuotes(heading_.fields[column]) + " is no whole number from 1: write one");
  }
  return *value;
}

std::string CsvTable::place(int line) const { return placeIn(file_, line); }

}  // namespace framequilt::tool
