// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/hints.h"

#include <cmath>
#include <limits>

#include "tools/framequilt/csv_table.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

/// Larger values are no pixels, and would not fit once rounded.
constexpr double kFarthest = 1e9;

/// Of a table that has either dx and dy, or x and y.
struct Columns {
  std::size_t frame, x, y;
  bool areSteps;
};

Columns columnsOf(const CsvTable& table, const std::filesystem::path& file) {
  const auto dx = table.findColumn("dx");
  const auto dy = table.findColumn("dy");
  if (dx && dy) return {table.column("frame"), *dx, *dy, true};
  const auto x = table.findColumn("x");
  const auto y = table.findColumn("y");
  if (x && y) return {table.column("frame"), *x, *y, false};
  throw ToolError(inQuotes(file) +
                  " has neither columns dx and dy nor x and y: name them in its first line");
}

double coordinate(const CsvTable& table, const CsvTable::Row& row, std::size_t column) {
  const double value = table.number(row, column);
  if (std::fabs(value) <= kFarthest) return value;
  throw ToolError(table.place(row.line) + ": has '" + row.fields[column] +
                  "', farther than any frame lies: give pixels");
}

/// None where steps add up to more than whole pixels can say.
std::optional<cv::Point> rounded(cv::Point2d way) {
  constexpr double kLargest = std::numeric_limits<int>::max();
  if (std::fabs(way.x) > kLargest || std::fabs(way.y) > kLargest) return std::nullopt;
  return cv::Point(static_cast<int>(std::lround(way.x)), static_cast<int>(std::lround(way.y)));
}

}  // namespace

Hints Hints::fromFile(const std::filesystem::path& file) {
  const CsvTable table = CsvTable::read(file);
  const Columns columns = columnsOf(table, file);
  Hints hints;
  std::map<std::size_t, cv::Point2d>& places = columns.areSteps ? hints.steps_ : hints.positions_;
  for (const CsvTable::Row& row : table.rows()) {
    const int frame = table.count(row, columns.frame);
    const cv::Point2d place(coordinate(table, row, columns.x), coordinate(table, row, columns.y));
    if (!places.emplace(frame, place).second) {
      throw ToolError(table.place(row.line) + ": has frame " + std::to_string(frame) +
                      " a second time: keep one of the two lines");
    }
  }
  return hints;
}

std::optional<cv::Point> Hints::between(std::size_t from, std::size_t to) const {
  const auto start = positions_.find(from);
  const auto end = positions_.find(to);
  if (start != positions_.end() && end != positions_.end()) {
    return rounded(end->second - start->second);
  }
  if (steps_.empty() || from == 0) return std::nullopt;
  cv::Point2d way;
  for (std::size_t frame = from + 1; frame <= to; ++frame) {
    const auto step = steps_.find(frame);
    if (step == steps_.end()) return std::nullopt;
    way += step->second;
  }
  return rounded(way);
}

}  // namespace framequilt::tool
