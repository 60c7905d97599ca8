// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/frame_source.h"

#include <algorithm>

#include "tools/framequilt/camera_source.h"
#include "tools/framequilt/input_listing.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/picture_source.h"
#include "tools/framequilt/tool_error.h"
#include "tools/framequilt/video_source.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

void requireOnlyInput(const fs::path& input, const char* kind, std::size_t inputs) {
  if (inputs > 1) {
    throw ToolError(inQuotes(input) + " is a " + kind + ": give it as the only input");
  }
}

std::vector<fs::path> everyNth(const std::vector<fs::path>& files, int every) {
  std::vector<fs::path> taken;
  for (std::size_t i = 0; i < files.size(); i += static_cast<std::size_t>(every)) {
    taken.push_back(files[i]);
  }
  return taken;
}

}  // namespace

std::unique_ptr<FrameSource> openInputs(const std::vector<std::string>& inputs,
                                        const InputSettings& settings) {
  const auto camera = std::find_if(inputs.begin(), inputs.end(), namesCamera);
  if (camera != inputs.end()) {
    requireOnlyInput(*camera, "camera", inputs.size());
    return openCamera(cameraNumber(*camera), settings);
  }
  const std::vector<fs::path> files = listFiles(inputs, settings.outputs);
  const auto video = std::find_if(files.begin(), files.end(), namesVideo);
  if (video != files.end()) {
    requireOnlyInput(*video, "video", files.size());
    return openVideo(*video, settings);
  }
  return openPictures(everyNth(files, settings.every), settings);
}

}  // namespace framequilt::tool
