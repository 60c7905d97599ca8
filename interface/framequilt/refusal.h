// SPDX-License-Identifier: Apache-2.0
/// \file
/// Why a frame is not in the mosaic, and the words for it that every tool uses.
#pragma once

#include <string>
#include <string_view>

#include "export.h"

namespace framequilt {

/// Why a frame is not in the mosaic.
enum class Refusal {
  kNone,            ///< It is.
  kNoOverlap,       ///< No more pairs of corners agree on an offset than do by chance.
  kTooFewMatches,   ///< Some more do, but not enough to trust it.
  kMovedTooLittle,  ///< Hardly anything new is in view.
  kMovedTooFar,     ///< Hardly anything of the frame before is in view.
  kMovingScene,     ///< Motion criterion: the view changed more than the limit.
  kBrightness,      ///< Overlap criterion: mosaic and frame are not equally bright.
  kSharpness,       ///< Overlap criterion: mosaic and frame are not equally sharp.
  kMosaicFull,      ///< The mosaic had reached its limit before.
};

/// A measured value and the limit it is held against, both in one unit.
struct Measure {
  double value = 0;  ///< NaN where nothing could be measured.
  double limit = 0;  ///< What it has to reach, exceed or stay below.
};

/// How a refusal is spoken of. The texts live as long as the program.
struct RefusalWords {
  std::string_view reason;    ///< "moved too far"
  std::string_view quantity;  ///< What was measured: "overlap".
  std::string_view unit;      ///< "%"; empty for a count.
  std::string_view relation;  ///< How the value has to stand to the limit: "needs more than".
  std::string_view advice;    ///< "slow down or take frames more often"
};

/// For `kNone` every text is empty.
FRAMEQUILT_EXPORT const RefusalWords& wordsFor(Refusal reason);

/// One line: "moved too far: overlap 6 %, needs more than 10 %". Empty for `kNone`.
FRAMEQUILT_EXPORT std::string explain(Refusal reason, const Measure& measure);

}  // namespace framequilt
