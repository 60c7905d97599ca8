// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "interface/engine_run.h"

namespace framequilt {

/// The measures of a call and, for a frame that was not blended, why.
struct Judgement {
  Measures measures;
  Refusal reason = Refusal::kNone;
  Measure judged;
};

/// Looks at nothing but the call and the options of the run.
Judgement judge(const EngineCall& call, const SessionOptions& options);

}  // namespace framequilt
