// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tools/framequilt/evaluation.h"

namespace framequilt::tool {

/// Lines for people, errors to a hundredth of a pixel; "-" where nothing is known.
std::string evaluationText(const Evaluation& evaluation);

/// The same as one JSON object, null where nothing is known.
std::string evaluationJson(const Evaluation& evaluation);

}  // namespace framequilt::tool
