// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/session.h>

#include <cstddef>
#include <nlohmann/json.hpp>
#include <opencv2/core/mat.hpp>
#include <optional>
#include <string>

#include "tools/framequilt/frame_source.h"

namespace framequilt::tool {

/// A frame and what became of it, as a journal keeps it: number, name and path, hashes of its file
/// and its pixels, the decision with its measures, the place, and a hash of what the mosaic shows
/// there now. Nothing in it depends on the time or the machine.
///
/// \param path    Under which the frame is found once more.
/// \param mosaic  Of the session, after the frame.
nlohmann::ordered_json frameRecord(const SourceFrame& frame, const std::string& path,
                                   const FrameResult& result, const FrameSource& source,
                                   const cv::Mat& mosaic);

/// The mosaic's shape and the hash of its pixels; null where nothing has joined.
nlohmann::ordered_json mosaicRecord(const cv::Mat& mosaic);

/// Where two records are not the same.
struct RecordDifference {
  std::string field;  ///< "placement/x"
  std::string was;    ///< As JSON; "nothing" where it is not there.
  std::string is;
};

/// The first of `was`'s fields that `is` has not, or otherwise, then those that it has beyond; a
/// path does not count.
std::optional<RecordDifference> firstDifference(const nlohmann::ordered_json& was,
                                                const nlohmann::ordered_json& is);

/// "placement/x was 30, is 31".
std::string differenceText(const RecordDifference& difference);

}  // namespace framequilt::tool
