// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/simulate_command.h"

#include <cstdio>
#include <filesystem>
#include <string>

#include "tools/framequilt/capture_folder.h"
#include "tools/framequilt/generated_scene.h"
#include "tools/framequilt/output_file.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/picture_format.h"
#include "tools/framequilt/picture_reading.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

/// Gray or blue-green-red, in 8 bits.
cv::Mat readScene(const fs::path& file) {
  try {
    return readPicture(file, readHeader(file, kSceneLimit).colour ? 3 : 1, kSceneLimit);
  } catch (const PictureError&) {
    throw ToolError("scene " + inQuotes(file) +
                    " cannot be read as a picture: check the path, or save it as .png or .jpg");
  }
}

SimulatedCapture captureOf(const SimulateOptions& options) {
  const SimulationOptions& capture = options.capture;
  if (options.scene.empty()) {
    return {generateScene(roomyScene(capture.path), capture.seed), capture};
  }
  return {readScene(options.scene), capture, "scene " + inQuotes(options.scene)};
}

/// Exact: places are in whole pixels or in hundredths.
std::string coordinate(double value, bool subpixel) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", subpixel ? 2 : 0, value);
  return text;
}

std::string truthCsv(const SimulatedCapture& capture, bool subpixel) {
  std::string lines = "frame,x,y\n";
  for (int i = 0; i < capture.frames(); ++i) {
    const cv::Point2d place = capture.truth(i);
    lines += std::to_string(i + 1) + "," + coordinate(place.x, subpixel) + "," +
             coordinate(place.y, subpixel) + "\n";
  }
  return lines;
}

void write(const fs::path& target, const std::string& content) {
  OutputFile(target).publish(content.data(), content.size());
}

}  // namespace

ExitStatus simulate(const SimulateOptions& options, std::ostream& out) {
  CaptureFolder folder(options.folder, options.scene);
  const SimulatedCapture capture = captureOf(options);
  folder.prepare();
  const PathOptions& path = options.capture.path;
  write(folder.truth(), truthCsv(capture, path.subpixel));
  for (int i = 0; i < capture.frames(); ++i) {
    OutputFile file(folder.frame(i + 1));
    writePicture(capture.frame(i), file);
    file.publish();
  }
  out << capture.frames() << " frames of " << path.frame.width << " x " << path.frame.height
      << " written to " << inQuotes(folder.path()) << ", truth in " << inQuotes(folder.truth())
      << "\n";
  if (capture.frames() < path.frames) {
    out << "the scene ends there, " << path.frames
        << " frames were asked for: use a larger scene or --path drift\n";
  }
  return kDone;
}

}  // namespace framequilt::tool
