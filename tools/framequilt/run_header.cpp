// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/run_header.h"

#include <framequilt/tuning.h>

#include <optional>
#include <vector>

#include "tools/framequilt/journal_file.h"
#include "tools/framequilt/path_text.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

/// Of the lines; another number means another form.
constexpr int kFormat = 1;

/// Calls `visit` with the name and the value of each option that belongs to the run.
template <class Options, class Visit>
void forEachOption(Options& options, Visit visit) {
  visit("inputs", options.inputs);
  visit("output", options.output);
  visit("placements", options.placements);
  visit("report", options.report);
  visit("hints", options.hints);
  visit("outlines", options.outlines);
  visit("ome_tiff", options.omeTiff);
  visit("pyramid", options.pyramid);
  visit("report_html", options.reportHtml);
  visit("pixel_size", options.pixelSize);
  visit("mode", options.mode);
  visit("dynamic", options.dynamicScene);
  visit("backend", options.backend);
  visit("scale", options.scale);
  visit("corner_budget", options.cornerBudget);
  visit("max_rows", options.maxRows);
  visit("max_cols", options.maxCols);
  visit("every", options.every);
  visit("crop", options.crop);
  visit("checkpoint_every", options.checkpointEvery);
}

/// Writes options to JSON.
struct OptionWriter {
  Json& object;

  template <class Value>
  void operator()(const char* name, const Value& value) const {
    object[name] = value;
  }
  void operator()(const char* name, const std::optional<double>& value) const {
    object[name] = value ? Json(*value) : Json(nullptr);
  }
};

/// Reads options from JSON.
struct OptionReader {
  const Json& object;

  template <class Value>
  void operator()(const char* name, Value& value) const {
    object.at(name).get_to(value);
  }
  void operator()(const char* name, std::optional<double>& value) const {
    const Json& stored = object.at(name);
    value = stored.is_null() ? std::nullopt : std::optional(stored.get<double>());
  }
};

Json originJson(const CaptureOrigin& origin) {
  Json object = {{"video", origin.video.string()}, {"camera", origin.camera}};
  Json& pictures = object["pictures"] = Json::array();
  for (const auto& [path, number] : origin.pictures) {
    pictures.push_back({{"frame", number}, {"path", path.string()}});
  }
  return object;
}

CaptureOrigin originFrom(const Json& object) {
  CaptureOrigin origin;
  origin.video = object.at("video").get<std::string>();
  origin.camera = object.at("camera").get<std::string>();
  for (const Json& picture : object.at("pictures")) {
    origin.pictures.push_back(
        {picture.at("path").get<std::string>(), picture.at("frame").get<std::size_t>()});
  }
  return origin;
}

/// \throws JournalError for a text that is not UTF-8.
void requireText(const std::string& text) {
  try {
    static_cast<void>(Json(text).dump());
  } catch (const Json::exception&) {
    throw JournalError(inQuotes(text) +
                       " cannot be named in a journal (it is not UTF-8): rename it, or stitch "
                       "without --journal");
  }
}

void requireNames(const RunHeader& header) {
  for (const auto& [path, number] : header.origin.pictures) requireText(path.string());
  requireText(header.origin.video.string());
  const StitchOptions& options = header.options;
  for (const std::string& input : options.inputs) requireText(input);
  for (const std::string& name : {options.output, options.placements, options.report, options.hints,
                                  options.omeTiff, options.pyramid, options.reportHtml}) {
    requireText(name);
  }
}

RunHeader headerFrom(const Json& object) {
  RunHeader header;
  header.version = object.at("framequilt").get<std::string>();
  header.backend = object.at("backend").get<std::string>();
  const Json& shape = object.at("frame_size");
  header.shape = {shape.at("rows").get<int>(), shape.at("cols").get<int>(),
                  shape.at("channels").get<int>()};
  header.origin = originFrom(object.at("source"));
  header.leftOut = object.at("left_out").get<std::size_t>();
  forEachOption(header.options, OptionReader{object.at("options")});
  header.tuning = object.at("tuning");
  return header;
}

}  // namespace

Json tuningJson() {
  Json object = {{"demesion", ::demesion},
                 {"brightThCpu0", ::brightThCpu0},
                 {"defintThCpu0", ::defintThCpu0},
                 {"motionValueThCpu0", ::motionValueThCpu0},
                 {"ImageOverlap_minCpu", ::ImageOverlap_minCpu},
                 {"ImageOverlap_maxCpu", ::ImageOverlap_maxCpu},
                 {"demesionCL", ::demesionCL},
                 {"brightThCL0", ::brightThCL0},
                 {"defintThCL0", ::defintThCL0},
                 {"motionValueThCL0", ::motionValueThCL0},
                 {"ImageOverlap_minCL", ::ImageOverlap_minCL},
                 {"ImageOverlap_maxCL", ::ImageOverlap_maxCL},
                 {"filter2DKerSizeCL", ::filter2DKerSizeCL}};
  object["filter2DKer"] = ::filter2DKer;
  object["filter2DKer1"] = ::filter2DKer1;
  object["filter2DKerModel"] = ::filter2DKerModel;
  object["filter2DKerSize"] = ::filter2DKerSize;
  return object;
}

fs::path fromRoot(const fs::path& path) { return fs::absolute(path).lexically_normal(); }

std::string headerText(const RunHeader& header) {
  requireNames(header);
  Json object = {{"journal", kFormat},
                 {"framequilt", header.version},
                 {"backend", header.backend},
                 {"frame_size",
                  {{"cols", header.shape.cols},
                   {"rows", header.shape.rows},
                   {"channels", header.shape.channels}}},
                 {"source", originJson(header.origin)},
                 {"left_out", header.leftOut},
                 {"tuning", header.tuning}};
  forEachOption(header.options, OptionWriter{object["options"]});
  return object.dump();
}

RunHeader readHeaderText(const std::string& text, const std::string& journal) {
  const Json object = Json::parse(text, nullptr, false);
  const auto format = object.is_object() ? object.find("journal") : object.end();
  if (format == object.end() || !format->is_number_integer()) {
    throw ToolError(journal +
                    " is no journal of framequilt: give a folder that 'framequilt stitch "
                    "--journal' made");
  }
  if (*format != kFormat) {
    throw ToolError(journal + " has format " + format->dump() + ", this framequilt reads " +
                    std::to_string(kFormat) + ": use the version that wrote it");
  }
  try {
    return headerFrom(object);
  } catch (const Json::exception&) {
    throw ToolError(journal +
                    " line 1 is not as framequilt writes it: use the version that "
                    "wrote it");
  }
}

}  // namespace framequilt::tool
