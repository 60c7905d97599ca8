// SPDX-License-Identifier: Apache-2.0
/// \file
/// The records of framequilt_c.h and those of session.h, one made from the other.
#pragma once

#include <opencv2/core/types.hpp>
#include <optional>

#include "framequilt/framequilt_c.h"
#include "framequilt/session.h"

namespace framequilt {

/// All but the functions that are called back. \throws CallFailure for numbers without a meaning.
SessionOptions sessionOptions(const framequilt_options& given);
/// The defaults of SessionOptions.
framequilt_options defaultOptions();

/// \throws CallFailure where the channels are not those of the order, and the like.
FrameView frameView(const framequilt_frame& given);
std::optional<cv::Point> hintOf(const framequilt_frame& given);

framequilt_result resultRecord(const FrameResult& result);
framequilt_rect rectRecord(const cv::Rect& rect);
/// The words of a `framequilt_reason`. \throws CallFailure for a number that is none.
Refusal refusalOf(int32_t reason);

}  // namespace framequilt
