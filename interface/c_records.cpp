// SPDX-License-Identifier: Apache-2.0
#include "interface/c_records.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include "interface/c_failure.h"

namespace framequilt {
namespace {

/// Whether the two enumerations count the same.
template <class A, class B>
constexpr bool same(A a, B b) {
  return static_cast<int>(a) == static_cast<int>(b);
}

static_assert(same(FRAMEQUILT_NO_REASON, Refusal::kNone));
static_assert(same(FRAMEQUILT_NO_OVERLAP, Refusal::kNoOverlap));
static_assert(same(FRAMEQUILT_TOO_FEW_MATCHES, Refusal::kTooFewMatches));
static_assert(same(FRAMEQUILT_MOVED_TOO_LITTLE, Refusal::kMovedTooLittle));
static_assert(same(FRAMEQUILT_MOVED_TOO_FAR, Refusal::kMovedTooFar));
static_assert(same(FRAMEQUILT_MOVING_SCENE, Refusal::kMovingScene));
static_assert(same(FRAMEQUILT_BRIGHTNESS, Refusal::kBrightness));
static_assert(same(FRAMEQUILT_SHARPNESS, Refusal::kSharpness));
static_assert(same(FRAMEQUILT_MOSAIC_FULL, Refusal::kMosaicFull));
static_assert(same(FRAMEQUILT_BY_MOTION, Criterion::kMotion));
static_assert(same(FRAMEQUILT_BY_OVERLAP, Criterion::kOverlap));
static_assert(same(FRAMEQUILT_BACKEND_AUTO, Backend::kAuto));
static_assert(same(FRAMEQUILT_BACKEND_OPENCL, Backend::kOpencl));
static_assert(same(FRAMEQUILT_BACKEND_HOST, Backend::kHost));
static_assert(same(FRAMEQUILT_COPYING, Stage::kCopying));
static_assert(same(FRAMEQUILT_STITCHING, Stage::kStitching));
static_assert(same(FRAMEQUILT_DONE, Stage::kDone));
static_assert(same(FRAMEQUILT_BGR, PixelOrder::kBgr));
static_assert(same(FRAMEQUILT_RGB, PixelOrder::kRgb));
static_assert(same(FRAMEQUILT_BGRA, PixelOrder::kBgra));
static_assert(same(FRAMEQUILT_GRAY, PixelOrder::kGray));
static_assert(same(FRAMEQUILT_WAITING, Verdict::kWaiting));
static_assert(same(FRAMEQUILT_JOINED, Verdict::kJoined));
static_assert(same(FRAMEQUILT_REFUSED, Verdict::kRefused));
static_assert(same(FRAMEQUILT_CANCELLED, Verdict::kCancelled));

/// The member of `Enum` that `number` stands for, the last of which is `last`.
template <class Enum>
Enum member(std::int32_t number, Enum last, framequilt_code code, const char* name) {
  if (number >= 0 && number <= static_cast<int>(last)) return static_cast<Enum>(number);
  throw CallFailure(code, std::string(name) + " has to be 0 to " +
                              std::to_string(static_cast<int>(last)) + ", not " +
                              std::to_string(number));
}

int channelsOf(PixelOrder order) {
  switch (order) {
    case PixelOrder::kBgr:
    case PixelOrder::kRgb:
      return 3;
    case PixelOrder::kBgra:
      return 4;
    case PixelOrder::kGray:
      break;
  }
  return 1;
}

framequilt_point pointRecord(cv::Point point) { return {point.x, point.y}; }

framequilt_measure measureRecord(const std::optional<Measure>& measure) {
  if (!measure) return {};
  return {measure->value, measure->limit, 1, 0};
}

}  // namespace

SessionOptions sessionOptions(const framequilt_options& given) {
  SessionOptions options;
  options.rows = given.rows;
  options.cols = given.cols;
  options.channels = given.channels;
  options.criterion =
      member(given.criterion, Criterion::kOverlap, FRAMEQUILT_E_OPTION, "criterion");
  options.dynamicScene = given.dynamic_scene != 0;
  options.scale = given.scale;
  options.cornerBudget = given.corner_budget;
  options.maxRows = given.max_rows;
  options.maxCols = given.max_cols;
  options.backend = member(given.backend, Backend::kHost, FRAMEQUILT_E_OPTION, "backend");
  if (given.kernel_file != nullptr) options.kernelFile = given.kernel_file;
  return options;
}

framequilt_options defaultOptions() {
  const SessionOptions defaults;
  framequilt_options options{};
  options.channels = defaults.channels;
  options.criterion = static_cast<std::int32_t>(defaults.criterion);
  options.dynamic_scene = defaults.dynamicScene ? 1 : 0;
  options.scale = defaults.scale;
  options.corner_budget = defaults.cornerBudget;
  options.max_rows = defaults.maxRows;
  options.max_cols = defaults.maxCols;
  options.backend = static_cast<std::int32_t>(defaults.backend);
  return options;
}

FrameView frameView(const framequilt_frame& given) {
  FrameView frame;
  frame.order = member(given.order, PixelOrder::kGray, FRAMEQUILT_E_FRAME, "order of the frame");
  if (given.channels != channelsOf(frame.order)) {
    throw CallFailure(FRAMEQUILT_E_FRAME, "the frame has " + std::to_string(given.channels) +
                                              " channels, its order has " +
                                              std::to_string(channelsOf(frame.order)) +
                                              ": give both alike");
  }
  if (given.reserved != 0) {
    throw CallFailure(FRAMEQUILT_E_FRAME,
                      "reserved of the frame has to be 0, not " + std::to_string(given.reserved));
  }
  // Offsets of pixels have to be numbers that a pointer can move by.
  if (given.rows > 0 && given.stride_bytes > PTRDIFF_MAX / static_cast<std::size_t>(given.rows)) {
    throw CallFailure(FRAMEQUILT_E_FRAME, "the frame has rows that begin every " +
                                              std::to_string(given.stride_bytes) +
                                              " bytes: give the bytes from row to row");
  }
  frame.pixels = given.pixels;
  frame.rows = given.rows;
  frame.cols = given.cols;
  frame.strideBytes = given.stride_bytes;
  return frame;
}

std::optional<cv::Point> hintOf(const framequilt_frame& given) {
  if (given.has_hint == 0) return std::nullopt;
  return cv::Point(given.hint_x, given.hint_y);
}

framequilt_result resultRecord(const FrameResult& result) {
  framequilt_result record{};
  record.frame = result.frame;
  record.verdict = static_cast<std::int32_t>(result.verdict);
  record.reason = static_cast<std::int32_t>(result.reason);
  record.judged = result.judged.value;
  record.limit = result.judged.limit;
  record.became_first = result.becameFirst ? 1 : 0;
  record.full = result.full ? 1 : 0;
  record.placement = pointRecord(result.placement);
  record.mosaic_position = pointRecord(result.mosaicPosition);
  record.changed = rectRecord(result.changed);
  record.growth_shift = pointRecord(result.growthShift);
  const Measures& measures = result.measures;
  // Only a call of the engine counts matches, and it always has a limit for them.
  if (measures.matches.limit > 0) record.matches = measureRecord(measures.matches);
  record.match_count = static_cast<std::int32_t>(measures.matches.value);
  record.has_offset = measures.offset ? 1 : 0;
  record.offset = pointRecord(measures.offset.value_or(cv::Point()));
  record.moved = measureRecord(measures.moved);
  record.overlap = measureRecord(measures.overlap);
  record.change = measureRecord(measures.change);
  record.brightness = measureRecord(measures.brightness);
  record.sharpness = measureRecord(measures.sharpness);
  return record;
}

framequilt_rect rectRecord(const cv::Rect& rect) {
  return {rect.x, rect.y, rect.width, rect.height};
}

Refusal refusalOf(std::int32_t reason) {
  return member(reason, Refusal::kMosaicFull, FRAMEQUILT_E_ARGUMENT, "reason");
}

}  // namespace framequilt
