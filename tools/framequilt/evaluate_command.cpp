// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/evaluate_command.h"

#include <map>
#include <set>
#include <string>
#include <vector>

#include "tools/framequilt/csv_table.h"
#include "tools/framequilt/evaluation.h"
#include "tools/framequilt/evaluation_report.h"
#include "tools/framequilt/path_text.h"

namespace framequilt::tool {
namespace {

using Truth = std::map<int, cv::Point2d>;  // By the frame's number.

/// The columns that both tables have.
class FrameTable {
 public:
  explicit FrameTable(const std::string& file)
      : table_(CsvTable::read(file)),
        frame_(table_.column("frame")),
        x_(table_.column("x")),
        y_(table_.column("y")) {}

  const CsvTable& table() const { return table_; }

  /// The number of a frame that has not been seen before.
  int takeFrame(const CsvTable::Row& row) {
    const int frame = table_.count(row, frame_);
    if (!seen_.insert(frame).second) {
      throw ToolError(table_.place(row.line) + " is another one for frame " +
                      std::to_string(frame) + ": keep one of them");
    }
    return frame;
  }

  cv::Point2d place(const CsvTable::Row& row) const {
    return {table_.number(row, x_), table_.number(row, y_)};
  }

 private:
  CsvTable table_;
  std::size_t frame_;
  std::size_t x_;
  std::size_t y_;
  std::set<int> seen_;
};

Truth readTruth(const std::string& file) {
  FrameTable frames(file);
  Truth truth;
  for (const CsvTable::Row& row : frames.table().rows()) {
    const int frame = frames.takeFrame(row);
    truth[frame] = frames.place(row);
  }
  return truth;
}

bool isJoined(const CsvTable& table, const CsvTable::Row& row, std::size_t column) {
  const std::string& field = row.fields[column];
  if (field != "0" && field != "1") {
    throw ToolError(table.place(row.line) + ": " + inQuotes(field) +
                    " in column 'joined' is neither 0 nor 1: write one of them");
  }
  return field == "1";
}

std::vector<EvaluatedFrame> joinTables(FrameTable& placements, const Truth& truth,
                                       const std::string& truthFile) {
  const CsvTable& table = placements.table();
  const std::size_t joined = table.column("joined");
  std::vector<EvaluatedFrame> frames;
  for (const CsvTable::Row& row : table.rows()) {
    const int frame = placements.takeFrame(row);
    const auto known = truth.find(frame);
    if (known == truth.end()) {
      throw ToolError(table.place(row.line) + ": frame " + std::to_string(frame) + " is not in " +
                      inQuotes(truthFile) + ": give the truth of this capture");
    }
    frames.push_back({frame, std::nullopt, known->second});
    if (isJoined(table, row, joined)) frames.back().placement = placements.place(row);
  }
  return frames;
}

}  // namespace

ExitStatus evaluate(const EvaluateOptions& options, std::ostream& out) {
  FrameTable placements(options.placements);
  const Truth truth = readTruth(options.truth);
  const Evaluation evaluation = evaluatePlacements(joinTables(placements, truth, options.truth));
  out << (options.json ? evaluationJson(evaluation) : evaluationText(evaluation));
  return kDone;
}

}  // namespace framequilt::tool
