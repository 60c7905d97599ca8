// SPDX-License-Identifier: Apache-2.0
// What the command line reads and writes as text: tables, hints, placements with their truth, lists
// of input files, journals. Whatever the text, a reader gives what it says or throws a ToolError of
// one line; what is written can be read back. A reader that comes along is one more function below.
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/fuzz/input_bytes.h"
#include "tests/fuzz/target.h"
#include "tests/support/scoped_folder.h"
#include "tools/framequilt/csv_table.h"
#include "tools/framequilt/evaluate_command.h"
#include "tools/framequilt/frame_record.h"
#include "tools/framequilt/hints.h"
#include "tools/framequilt/input_listing.h"
#include "tools/framequilt/journal_file.h"
#include "tools/framequilt/journal_lines.h"
#include "tools/framequilt/natural_order.h"
#include "tools/framequilt/placements_text.h"
#include "tools/framequilt/recorded_run.h"
#include "tools/framequilt/run_header.h"
#include "tools/framequilt/tool_error.h"

namespace {

namespace fs = std::filesystem;
using framequilt::fuzz::InputBytes;
using framequilt::tool::CsvTable;
using framequilt::tool::Hints;
using framequilt::tool::JournalFile;
using framequilt::tool::StitchLog;
using framequilt::tool::ToolError;

constexpr std::size_t kLongestText = 4096;

/// False after a ToolError, which has to be one line without control characters.
template <class Action>
bool succeeds(Action action) {
  try {
    action();
    return true;
  } catch (const ToolError& error) {
    const std::string message = error.what();
    FRAMEQUILT_HOLDS(!message.empty());
    for (const char c : message) FRAMEQUILT_HOLDS(static_cast<unsigned char>(c) >= 0x20);
    return false;
  }
}

/// A file that no disk sees.
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& text) : descriptor_(::memfd_create("text", 0)) {
    FRAMEQUILT_HOLDS(::write(descriptor_, text.data(), text.size()) ==
                     static_cast<ssize_t>(text.size()));
  }
  ~MemoryFile() { ::close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

/// The pieces of a text between line ends.
std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> found;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) found.push_back(line);
  return found;
}

/// Rows as csvField writes them. A row that is blank would be skipped.
std::string written(const std::vector<CsvTable::Row>& rows, std::size_t columns) {
  std::string text;
  for (const CsvTable::Row& row : rows) {
    std::string line;
    for (const std::string& field : row.fields) {
      if (&field != &row.fields.front()) line += ',';
      line += framequilt::tool::csvField(field);
    }
    text += (columns == 1 && line.empty() ? "\"\"" : line) + "\n";
  }
  return text;
}

void checkTable(InputBytes& in) {
  const unsigned char column = in.byte();
  const std::string text = in.text(kLongestText);
  std::optional<CsvTable> table;
  if (!succeeds([&] { table.emplace("some.csv", text); })) return;
  int line = 0;
  for (const CsvTable::Row& row : table->rows()) {
    FRAMEQUILT_HOLDS(row.line > line);
    line = row.line;
    FRAMEQUILT_HOLDS(row.fields.size() == table->rows().front().fields.size());
    succeeds(
        [&] { FRAMEQUILT_HOLDS(std::isfinite(table->number(row, column % row.fields.size()))); });
    succeeds([&] { FRAMEQUILT_HOLDS(table->count(row, column % row.fields.size()) >= 1); });
  }
  for (const char* name : {"frame", "x", ""}) succeeds([&] { table->findColumn(name); });
  if (table->rows().empty()) return;
  const std::size_t columns = table->rows().front().fields.size();
  const std::string again = std::string(columns - 1, ',') + (columns == 1 ? "\"\"" : "") + "\n";
  const CsvTable reread("again.csv", again + written(table->rows(), columns));
  FRAMEQUILT_HOLDS(reread.rows().size() == table->rows().size());
  for (std::size_t r = 0; r < reread.rows().size(); ++r) {
    FRAMEQUILT_HOLDS(reread.rows()[r].fields == table->rows()[r].fields);
  }
}

/// Where the hints put a frame, from a table that they have accepted.
struct KnownWays {
  bool areSteps;
  std::map<std::size_t, cv::Point2d> values;

  explicit KnownWays(const CsvTable& table)
      : areSteps(table.findColumn("dx") && table.findColumn("dy")) {
    const std::size_t x = table.column(areSteps ? "dx" : "x");
    const std::size_t y = table.column(areSteps ? "dy" : "y");
    for (const CsvTable::Row& row : table.rows()) {
      values[static_cast<std::size_t>(table.count(row, table.column("frame")))] = {
          table.number(row, x), table.number(row, y)};
    }
  }

  std::optional<cv::Point2d> between(std::size_t from, std::size_t to) const {
    if (!areSteps) {
      if (values.count(from) == 0 || values.count(to) == 0) return std::nullopt;
      return values.at(to) - values.at(from);
    }
    cv::Point2d way;
    for (std::size_t frame = from + 1; frame <= to; ++frame) {
      if (values.count(frame) == 0) return std::nullopt;
      way += values.at(frame);
    }
    return values.empty() || from == 0 ? std::nullopt : std::optional(way);
  }
};

bool rounds(double value, int whole) { return std::fabs(value - whole) <= 0.5; }

void checkHints(InputBytes& in) {
  const auto from = static_cast<std::size_t>(in.between(0, 12));
  const auto to = from + static_cast<std::size_t>(in.between(0, 12));
  const std::string text = in.text(kLongestText);
  const MemoryFile file(text);
  Hints hints;
  if (!succeeds([&] { hints = Hints::fromFile(file.path()); })) return;
  const std::optional<cv::Point2d> expected =
      KnownWays(CsvTable("known.csv", text)).between(from, to);
  const std::optional<cv::Point> found = hints.between(from, to);
  if (!found) return;
  FRAMEQUILT_HOLDS(expected && rounds(expected->x, found->x) && rounds(expected->y, found->y));
}

/// Two tables in one text, the second one behind a line of "---".
void checkEvaluation(InputBytes& in) {
  framequilt::tool::EvaluateOptions options;
  options.json = in.flag();
  const std::string text = in.text(kLongestText);
  const std::size_t end = text.find("---\n");
  const MemoryFile placements(text.substr(0, end));
  const MemoryFile truth(end == std::string::npos ? "" : text.substr(end + 4));
  options.placements = placements.path();
  options.truth = truth.path();
  std::ostringstream out;
  if (!succeeds([&] { framequilt::tool::evaluate(options, out); })) return;
  FRAMEQUILT_HOLDS(!out.str().empty());
  if (options.json) FRAMEQUILT_HOLDS(nlohmann::json::accept(out.str()));
}

/// The working folder: some pictures, and what is none.
class FolderOfPictures {
 public:
  FolderOfPictures() {
    fs::create_directory("empty");
    fs::create_directory("inner.png");
    for (const char* file : {"f1.png", "f2.png", "f10.PNG", "f010.png", "a b[1].tif", "mosaic.png",
                             "mosaic-outlines.png", ".hidden.png", "readme", "inner.png/x.bmp"}) {
      writeText(file, "x");
    }
  }

 private:
  ScopedFolder folder_;
};

void checkListing(InputBytes& in) {
  static const FolderOfPictures folder;
  std::vector<std::string> inputs;
  for (std::string& line : lines(in.text(200))) {
    // Nothing outside of the folder, and no search of many.
    std::replace(line.begin(), line.end(), '/', '_');
    if (line.substr(0, 2) != "..") inputs.push_back(line);
  }
  std::vector<fs::path> files;
  if (!succeeds([&] { files = framequilt::tool::listFiles(inputs, {"mosaic.png"}); })) return;
  FRAMEQUILT_HOLDS(files.size() >= inputs.size());
  for (const fs::path& file : files) FRAMEQUILT_HOLDS(fs::exists(file));
  if (inputs.size() != 1) return;
  for (std::size_t k = 1; k < files.size(); ++k) {
    FRAMEQUILT_HOLDS(framequilt::tool::naturalLess(files[k - 1].native(), files[k].native()));
    FRAMEQUILT_HOLDS(files[k] != "mosaic.png" && files[k] != "mosaic-outlines.png");
  }
}

/// A strict total order.
void checkNaturalOrder(InputBytes& in) {
  std::vector<std::string> names = lines(in.text(120));
  names.resize(3);
  const auto less = [](const std::string& a, const std::string& b) {
    return framequilt::tool::naturalLess(a, b);
  };
  for (const std::string& a : names) {
    for (const std::string& b : names) {
      FRAMEQUILT_HOLDS((less(a, b) ? 1 : 0) + (less(b, a) ? 1 : 0) == (a == b ? 0 : 1));
      for (const std::string& c : names) {
        FRAMEQUILT_HOLDS(!less(a, b) || !less(b, c) || less(a, c));
      }
    }
  }
}

/// What a run writes of frames with these names.
void checkPlacements(InputBytes& in) {
  StitchLog log;
  std::size_t number = 0;
  const unsigned char verdicts = in.byte();
  for (const std::string& name : lines(in.text(300))) {
    framequilt::FrameResult result;
    const bool joined = number > 0 && (verdicts >> number % 8 & 1) != 0;
    if (joined) result.verdict = framequilt::Verdict::kJoined;
    result.placement = {static_cast<int>(name.size()) * 7, -3};
    log.add(++number, name, result, 1.5);
  }
  const CsvTable table("placements.csv", log.placementsCsv());
  FRAMEQUILT_HOLDS(table.rows().size() == log.entries().size());
  for (std::size_t k = 0; k < log.entries().size(); ++k) {
    FRAMEQUILT_HOLDS(table.rows()[k].fields[table.column("file")] == log.entries()[k].name);
  }
  const nlohmann::json parsed = nlohmann::json::parse(framequilt::tool::placementsJson(log));
  FRAMEQUILT_HOLDS(parsed.size() == log.entries().size());
  std::string tiles;
  if (!succeeds([&] { tiles = framequilt::tool::tileConfiguration(log, "tiles.txt"); })) return;
  FRAMEQUILT_HOLDS(lines(tiles).size() == 4 + log.joined());
}

/// The folder of a journal.
class FolderOfJournal {
 public:
  JournalFile holding(const std::string& text) const {
    writeText(folder_.file("journal.jsonl"), text);
    return JournalFile::opened(folder_.path(), JournalFile::Access::kRead);
  }

 private:
  TemporaryFolder folder_;
};

/// A header that was read means the same once it is written and read again.
void checkHeader(const std::string& text) {
  succeeds([&] {
    const framequilt::tool::RunHeader header = framequilt::tool::readHeaderText(text, "'j'");
    const std::string again = framequilt::tool::headerText(header);
    FRAMEQUILT_HOLDS(framequilt::tool::headerText(framequilt::tool::readHeaderText(again, "'j'")) ==
                     again);
  });
}

/// Lines that are sealed as a run seals them, whole, changed in a byte, or cut off.
void checkJournal(InputBytes& in) {
  static const FolderOfJournal folder;
  const unsigned char damage = in.byte() % 3;
  const std::size_t place = static_cast<std::size_t>(in.between(0, 65535));
  std::vector<std::string> objects;
  std::string text;
  std::uint64_t checksum = 0;
  std::size_t firstLine = 0;
  for (const std::string& line : lines(in.text(kLongestText))) {
    if (line.empty()) continue;  // No object: one has a member at least.
    objects.push_back(line + "}");
    text += framequilt::tool::sealedLine(objects.back(), checksum);
    if (objects.size() == 1) firstLine = text.size();
  }
  if (!text.empty() && damage == 1) text[place % text.size()] ^= '\1';
  if (damage == 2) text.resize(place % (text.size() + 1));

  std::optional<JournalFile> file;
  if (!succeeds([&] { file.emplace(folder.holding(text)); })) {
    // What is merely cut off is no damage, unless nothing is left.
    FRAMEQUILT_HOLDS(damage == 1 || text.empty() || text.size() < firstLine);
    return;
  }
  const std::vector<std::string>& read = file->objects();
  FRAMEQUILT_HOLDS(!read.empty() && read.size() <= objects.size());
  FRAMEQUILT_HOLDS(std::equal(read.begin(), read.end(), objects.begin()));
  FRAMEQUILT_HOLDS(damage != 0 || read.size() == objects.size());
  checkHeader(read.front());
  succeeds([&] {
    const framequilt::tool::RecordedRun run(*file);
    FRAMEQUILT_HOLDS(run.frames() + run.checkpoints() <= read.size() - 1);
    for (std::size_t k = 0; k < run.frames(); ++k) {
      const nlohmann::ordered_json frame = run.frame(k);
      FRAMEQUILT_HOLDS(!framequilt::tool::firstDifference(frame, frame));
    }
  });
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  InputBytes in(data, size);
  using Check = void (*)(InputBytes&);
  // Chosen by a letter, so that seeds are texts: "A" is the third one, "G" the second.
  static constexpr Check kChecks[] = {&checkNaturalOrder, &checkJournal, &checkPlacements,
                                      &checkTable,        &checkHints,   &checkEvaluation,
                                      &checkListing};
  kChecks[in.byte() % std::size(kChecks)](in);
  return 0;
}
