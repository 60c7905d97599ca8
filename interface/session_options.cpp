// SPDX-License-Identifier: Apache-2.0
#include "interface/session_options.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>

namespace framequilt {
namespace {

void require(bool holds, const std::string& what) {
  if (!holds) throw Error(ErrorCode::kInvalidOption, what);
}

/// Frames larger than the mosaic that a run begins with have no place in it.
void requireFits(const SessionOptions& options) {
  const int side = std::max(options.rows, options.cols);
  if (side / options.scale <= kNewMosaicSide) return;
  const bool halfFits = options.scale == 1 && side / 2 <= kNewMosaicSide;
  require(false, "frames of " + std::to_string(options.cols) + " x " +
                     std::to_string(options.rows) + " pixels are more than " +
                     std::to_string(kNewMosaicSide) + " a side" +
                     (halfFits ? ": use scale 2" : " even halved: make them smaller"));
}

}  // namespace

std::string missingInOpencl(const SessionOptions& options) {
  if (options.scale != 1) {
    const bool fitsWhole = std::max(options.rows, options.cols) <= kNewMosaicSide;
    return "OpenCL works at scale 1, not " + std::to_string(options.scale) +
           (fitsWhole ? ": use scale 1 or another backend"
                      : ", which frames of this size need: use another backend");
  }
  if (options.criterion == Criterion::kOverlap && options.dynamicScene) {
    return "OpenCL has no narrow limits for the overlap of a dynamic scene: use the motion "
           "criterion or another backend";
  }
  return {};
}

SessionOptions checked(const SessionOptions& options) {
  require(options.rows > 0 && options.cols > 0,
          "rows and cols have to be the size of the frames, not " + std::to_string(options.rows) +
              " x " + std::to_string(options.cols));
  require(options.channels == 1 || options.channels == 3,
          "channels has to be 3 (colour) or 1 (gray), not " + std::to_string(options.channels));
  require(options.scale == kAutoScale || options.scale == 1 || options.scale == 2,
          "scale has to be 1, 2 or automatic, not " + std::to_string(options.scale) +
              ": with other scales no corners are found");
  require(options.cornerBudget >= 0 && options.cornerBudget <= kLargestCornerBudget,
          "cornerBudget has to be 0 to " + std::to_string(kLargestCornerBudget) + ", not " +
              std::to_string(options.cornerBudget));
  require(options.maxRows > 0 && options.maxCols > 0,
          "maxRows and maxCols have to be positive, not " + std::to_string(options.maxRows) +
              " and " + std::to_string(options.maxCols));
  require(
      std::int64_t{options.maxRows} * options.maxCols <= std::numeric_limits<std::int32_t>::max(),
      "maxRows x maxCols has to stay below 2147483648 pixels: lower one of them");

  SessionOptions decided = options;
  if (options.scale == kAutoScale) {
    decided.scale = std::max(options.rows, options.cols) <= kNewMosaicSide ? 1 : 2;
  }
  requireFits(decided);
  const std::string missing = missingInOpencl(decided);
  require(options.backend != Backend::kOpencl || missing.empty(), missing);
  return decided;
}

}  // namespace framequilt
