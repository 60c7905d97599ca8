// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <opencv2/core/mat.hpp>
#include <string>

#include "tools/framequilt/frame_source.h"
#include "tools/framequilt/recorded_run.h"

namespace framequilt::tool {

/// Where a journal keeps the frame of a camera, below its folder: "frames/000012.png".
std::string keptFramePath(std::size_t number);

/// Writes the frame there, without loss. \throws ToolError.
void keepFrame(const cv::Mat& pixels, std::size_t number, const std::filesystem::path& folder);

/// The options of the run, for the backend that it worked on; its hints are the journal's copy.
StitchOptions recordedOptions(const RecordedRun& run, const std::filesystem::path& folder);

/// What a recorded run was made from, once more; of a camera the frames that the journal has kept,
/// then those that the camera gives now.
///
/// \param run     Has to outlive the source.
/// \param folder  Of the journal.
/// \param inputs  Where the pictures or the video lie now; empty: where they lay.
/// \param camera  Opens the camera once the kept frames are used up.
/// \throws ToolError for a recorded frame that is not there any more.
std::unique_ptr<FrameSource> openRecorded(const RecordedRun& run,
                                          const std::filesystem::path& folder,
                                          const std::filesystem::path& inputs,
                                          const SourceOpener& camera,
                                          const InputSettings& settings);

}  // namespace framequilt::tool
