// SPDX-License-Identifier: Apache-2.0
#include "python/enumerations.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <utility>
#include <vector>

namespace py = pybind11;

namespace framequilt::python {
namespace {

template <class Enumeration>
struct Description {
  const char* name;
  const char* text;
  std::vector<std::pair<const char*, Enumeration>> members;
};

template <class Enumeration>
Description<Enumeration> describe();

template <>
Description<PixelOrder> describe() {
  return {"PixelOrder",
          "What the bytes of a pixel are, 8 bits each.",
          {{"BGR", PixelOrder::kBgr},
           {"RGB", PixelOrder::kRgb},
           {"BGRA", PixelOrder::kBgra},
           {"GRAY", PixelOrder::kGray}}};
}

template <>
Description<Criterion> describe() {
  return {"Criterion",
          "By what frames are judged, once their offset is known.\n\n"
          "MOTION: how much the view changed since the frame before.\n"
          "OVERLAP: whether both sides of the overlap are equally bright and sharp.",
          {{"MOTION", Criterion::kMotion}, {"OVERLAP", Criterion::kOverlap}}};
}

template <>
Description<Stage> describe() {
  return {"Stage",
          "Where a frame is on its way through Session.add.\n\n"
          "COPYING: about to be copied.\n"
          "STITCHING: about to be given to the engine, which cannot be interrupted.\n"
          "DONE: decided; too late to cancel.",
          {{"COPYING", Stage::kCopying}, {"STITCHING", Stage::kStitching}, {"DONE", Stage::kDone}}};
}

template <>
Description<Backend> describe() {
  return {"Backend",
          "What does the work.\n\n"
          "AUTO: OpenCL where the machine and the options allow it, else the host.\n"
          "OPENCL: OpenCL or an error. At scale 1, and not for the overlap of a dynamic scene.\n"
          "HOST: the processor.",
          {{"AUTO", Backend::kAuto}, {"OPENCL", Backend::kOpencl}, {"HOST", Backend::kHost}}};
}

template <>
Description<Verdict> describe() {
  return {"Verdict",
          "What became of a frame.\n\n"
          "WAITING: a first frame, placed as soon as another joins it.\n"
          "JOINED: in the mosaic.\n"
          "REFUSED: not in the mosaic; the result's reason says why.\n"
          "CANCELLED: on_progress returned False; as if the frame had not been offered.",
          {{"WAITING", Verdict::kWaiting},
           {"JOINED", Verdict::kJoined},
           {"REFUSED", Verdict::kRefused},
           {"CANCELLED", Verdict::kCancelled}}};
}

template <>
Description<Refusal> describe() {
  return {"Refusal",
          "Why a frame is not in the mosaic; `words` has the words for it.",
          {{"NO_OVERLAP", Refusal::kNoOverlap},
           {"TOO_FEW_MATCHES", Refusal::kTooFewMatches},
           {"MOVED_TOO_LITTLE", Refusal::kMovedTooLittle},
           {"MOVED_TOO_FAR", Refusal::kMovedTooFar},
           {"MOVING_SCENE", Refusal::kMovingScene},
           {"BRIGHTNESS", Refusal::kBrightness},
           {"SHARPNESS", Refusal::kSharpness},
           {"MOSAIC_FULL", Refusal::kMosaicFull}}};
}

template <>
Description<ErrorCode> describe() {
  return {"ErrorCode",
          "What an Error is about.\n\n"
          "INVALID_OPTION: an option is out of its range; no session was opened.\n"
          "SESSION_OPEN: another session of this process is open.\n"
          "START_FAILED: the worker threads could not be started.\n"
          "NO_OPENCL: OpenCL alone was asked for and cannot be used; no session was opened.\n"
          "INVALID_FRAME: a frame does not fit the session; the session goes on.\n"
          "STOPPED: the session was stopped: it takes no more frames.\n"
          "OUT_OF_MEMORY: the frame could not be taken; the mosaic so far stays.\n"
          "ENGINE_FAILED: likewise, for another reason.\n"
          "BUSY: called from a callback of the session; the session goes on.",
          {{"INVALID_OPTION", ErrorCode::kInvalidOption},
           {"SESSION_OPEN", ErrorCode::kSessionOpen},
           {"START_FAILED", ErrorCode::kStartFailed},
           {"NO_OPENCL", ErrorCode::kNoOpencl},
           {"INVALID_FRAME", ErrorCode::kInvalidFrame},
           {"STOPPED", ErrorCode::kStopped},
           {"OUT_OF_MEMORY", ErrorCode::kOutOfMemory},
           {"ENGINE_FAILED", ErrorCode::kEngineFailed},
           {"BUSY", ErrorCode::kBusy}}};
}

std::string inSmallLetters(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return text;
}

/// An enumeration once it is bound.
template <class Enumeration>
struct Bound {
  py::object type;
  std::vector<std::pair<py::object, Enumeration>> members;
  std::string values;  // 'auto', 'opencl', 'host'
};

/// Never destroyed: the interpreter is gone when statics are.
template <class Enumeration>
Bound<Enumeration>& bound() {
  static auto& instance = *new Bound<Enumeration>;
  return instance;
}

template <class Enumeration>
py::object bind(py::module_& module) {
  const Description<Enumeration> description = describe<Enumeration>();
  py::dict values;
  for (const auto& [name, value] : description.members) values[name] = inSmallLetters(name);
  Bound<Enumeration>& bound = python::bound<Enumeration>();
  bound.type = py::module_::import("enum").attr("Enum")(description.name, values,
                                                        py::arg("module") = "framequilt");
  bound.type.attr("__doc__") = description.text;
  for (const auto& [name, value] : description.members) {
    bound.members.emplace_back(bound.type.attr(name), value);
    bound.values += (bound.values.empty() ? "'" : ", '") + inSmallLetters(name) + "'";
  }
  module.attr(description.name) = bound.type;
  return bound.type;
}

}  // namespace

template <class Enumeration>
py::object memberFor(Enumeration value) {
  for (const auto& [member, its] : bound<Enumeration>().members) {
    if (its == value) return member;
  }
  return py::none();
}

template <class Enumeration>
Enumeration valueOf(py::handle member) {
  const Bound<Enumeration>& bound = python::bound<Enumeration>();
  const bool isText = py::isinstance<py::str>(member);
  for (const auto& [its, value] : bound.members) {
    if (its.is(member) || (isText && py::object(its.attr("value")).equal(member))) return value;
  }
  const std::string text = py::repr(member).cast<std::string>() + " is no " +
                           bound.type.attr("__name__").template cast<std::string>() +
                           ": give one of " + bound.values;
  if (isText) throw py::value_error(text);
  throw py::type_error(text);
}

// NOLINTNEXTLINE(bugprone-macro-parentheses): a type.
#define FRAMEQUILT_INSTANTIATE(Name)         \
  template py::object memberFor<Name>(Name); \
  template Name valueOf<Name>(py::handle)
FRAMEQUILT_INSTANTIATE(Backend);
FRAMEQUILT_INSTANTIATE(Criterion);
FRAMEQUILT_INSTANTIATE(ErrorCode);
FRAMEQUILT_INSTANTIATE(PixelOrder);
FRAMEQUILT_INSTANTIATE(Refusal);
FRAMEQUILT_INSTANTIATE(Stage);
FRAMEQUILT_INSTANTIATE(Verdict);
#undef FRAMEQUILT_INSTANTIATE

void bindEnumerations(py::module_& module) {
  bind<PixelOrder>(module);
  bind<Criterion>(module);
  bind<Stage>(module);
  bind<Backend>(module);
  bind<Verdict>(module);
  bind<ErrorCode>(module);

  const auto text = [](std::string_view words) { return py::str(words.data(), words.size()); };
  py::class_<RefusalWords>(module, "RefusalWords", "How a refusal is spoken of.")
      .def_property_readonly(
          "reason", [text](const RefusalWords& words) { return text(words.reason); },
          "\"moved too far\"")
      .def_property_readonly(
          "quantity", [text](const RefusalWords& words) { return text(words.quantity); },
          "What was measured: \"overlap\".")
      .def_property_readonly(
          "unit", [text](const RefusalWords& words) { return text(words.unit); },
          "\"%\"; empty for a count.")
      .def_property_readonly(
          "relation", [text](const RefusalWords& words) { return text(words.relation); },
          "How the value has to stand to the limit: \"needs more than\".")
      .def_property_readonly(
          "advice", [text](const RefusalWords& words) { return text(words.advice); },
          "\"slow down or take frames more often\"")
      .def("__repr__", [](const RefusalWords& words) {
        return "RefusalWords('" + std::string(words.reason) + "')";
      });
  const py::object refusal = bind<Refusal>(module);
  const auto property =
      py::reinterpret_borrow<py::object>(reinterpret_cast<PyObject*>(&PyProperty_Type));
  refusal.attr("words") = property(
      py::cpp_function([](py::handle self) { return &wordsFor(valueOf<Refusal>(self)); },
                       py::return_value_policy::reference, py::arg("self")),
      py::none(), py::none(), "The words for it, as every tool uses them: a RefusalWords.");
}

}  // namespace framequilt::python
