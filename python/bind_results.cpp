// SPDX-License-Identifier: Apache-2.0
#include <pybind11/stl.h>

#include <optional>
#include <string>

#include "framequilt/session.h"
#include "python/bindings.h"
#include "python/enumerations.h"
#include "python/geometry.h"

namespace py = pybind11;

namespace framequilt::python {
namespace {

/// As Python writes it.
template <class Value>
std::string written(const Value& value) {
  return py::repr(py::cast(value)).template cast<std::string>();
}

std::string pointText(cv::Point point) {
  return "(" + std::to_string(point.x) + ", " + std::to_string(point.y) + ")";
}

std::string textOf(const Measure& measure) {
  return "Measure(value=" + written(measure.value) + ", limit=" + written(measure.limit) + ")";
}

std::string textOf(const Measures& measures) {
  std::string text = "Measures(matches=" + textOf(measures.matches);
  if (measures.offset) text += ", offset=" + pointText(*measures.offset);
  const auto append = [&](const char* name, const std::optional<Measure>& measure) {
    if (measure) text.append(", ").append(name).append("=").append(textOf(*measure));
  };
  append("moved", measures.moved);
  append("overlap", measures.overlap);
  append("change", measures.change);
  append("brightness", measures.brightness);
  append("sharpness", measures.sharpness);
  return text + ")";
}

std::string verdictText(const FrameResult& result) {
  switch (result.verdict) {
    case Verdict::kWaiting:
      return "waiting for a frame that joins it";
    case Verdict::kJoined:
      return "joined at " + pointText(result.placement);
    case Verdict::kCancelled:
      return "cancelled";
    case Verdict::kRefused:
      break;
  }
  return "refused, " + explain(result);
}

std::string textOf(const FrameResult& result) {
  return "<FrameResult: frame " + std::to_string(result.frame) + " " + verdictText(result) +
         (result.becameFirst ? "; it is the first one from now on" : "") +
         (result.full ? "; the mosaic is full" : "") + ">";
}

/// A field that only joined frames have, else None.
template <class Value>
auto ofJoined(Value FrameResult::*field) {
  return [field](const FrameResult& result) -> std::optional<Value> {
    if (result.verdict != Verdict::kJoined) return std::nullopt;
    return result.*field;
  };
}

std::optional<Refusal> reasonOf(const FrameResult& result) {
  if (result.reason == Refusal::kNone) return std::nullopt;
  return result.reason;
}

std::optional<Measure> judgedOf(const FrameResult& result) {
  if (result.reason == Refusal::kNone) return std::nullopt;
  return result.judged;
}

void bindMeasures(py::module_& module) {
  py::class_<Measure>(module, "Measure",
                      "A measured value and the limit it is held against, both in one unit.")
      .def_readonly("value", &Measure::value, "NaN where nothing could be measured.")
      .def_readonly("limit", &Measure::limit, "What it is held against.")
      .def("__repr__", [](const Measure& measure) { return textOf(measure); });

  py::class_<Measures>(module, "Measures",
                       "What a frame's own call measured. None where the engine did not come so "
                       "far.")
      .def_readonly("matches", &Measures::matches,
                    "Pairs of corners that agree; at least the limit.")
      .def_readonly("offset", &Measures::offset,
                    "Since the frame it was matched with, in frame pixels.")
      .def_readonly("moved", &Measures::moved,
                    "Percent of the side it moved along; more than the limit.")
      .def_readonly("overlap", &Measures::overlap, "Percent of that side; more than the limit.")
      .def_readonly("change", &Measures::change,
                    "Motion criterion of a dynamic scene, gray levels; less than the limit. A\n"
                    "static scene has it only where the frame was refused for it.")
      .def_readonly("brightness", &Measures::brightness,
                    "Overlap criterion: difference; less than the limit.")
      .def_readonly("sharpness", &Measures::sharpness,
                    "Overlap criterion: difference; less than the limit.")
      .def("__repr__", [](const Measures& measures) { return textOf(measures); });
}

}  // namespace

void bindResults(py::module_& module) {
  bindMeasures(module);

  py::class_<Progress>(module, "Progress", "Where a frame is on its way.")
      .def_readonly("stage", &Progress::stage, "A Stage.")
      .def_readonly("frame", &Progress::frame, "As in FrameResult.")
      .def("__repr__", [](const Progress& progress) {
        return "Progress(frame=" + std::to_string(progress.frame) +
               ", stage=" + written(progress.stage) + ")";
      });

  py::class_<FrameResult>(module, "FrameResult", "What became of one frame.")
      .def_readonly("frame", &FrameResult::frame,
                    "Frames handed over before; a cancelled one does not count.")
      .def_readonly("verdict", &FrameResult::verdict, "A Verdict.")
      .def_property_readonly("reason", &reasonOf, "Of a refused frame, a Refusal; else None.")
      .def_property_readonly("judged", &judgedOf,
                             "Of a refused frame, the Measure that `reason` rests on; else None.")
      .def_readonly("became_first", &FrameResult::becameFirst,
                    "Refused, like two before it, beside a first frame that nothing has joined:\n"
                    "this frame is the first one from now on.")
      .def_readonly("full", &FrameResult::full,
                    "The mosaic has reached its limit with this frame: every later one is refused.")
      .def_property_readonly(
          "placement", ofJoined(&FrameResult::placement),
          "Of a joined frame, its top-left corner in frame pixels, a steady Point; else None.")
      .def_property_readonly("mosaic_position", ofJoined(&FrameResult::mosaicPosition),
                             "Of a joined frame, its top-left corner in mosaic pixels, a Point\n"
                             "within mosaic() as it is after this frame; else None.")
      .def_property_readonly(
          "changed", ofJoined(&FrameResult::changed),
          "What a joined frame changed, a Box in mosaic pixels within mosaic();\n"
          "else None.")
      .def_property_readonly("growth_shift", ofJoined(&FrameResult::growthShift),
                             "How far a joined frame moved whatever lay in mosaic() before: a\n"
                             "Point to the right and down; else None.")
      .def_readonly("measures", &FrameResult::measures, "What was measured, a Measures.")
      .def(
          "explain", [](const FrameResult& result) { return explain(result); },
          "One line about a refused frame, such as\n"
          "\"moved too far: overlap 6 %, needs more than 10 %\"; else empty.")
      .def("__repr__", [](const FrameResult& result) { return textOf(result); });
}

}  // namespace framequilt::python
