// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/options_simulate.h"

#include <map>
#include <sstream>
#include <string>

namespace framequilt::tool {
namespace {

constexpr int kSmallestSide = 16;
constexpr int kLargestSide = 20000;
constexpr int kMostFrames = 100000;
constexpr double kHighestOverlap = 0.99;

const std::map<std::string, PathShape> kShapes = {{"serpentine", PathShape::kSerpentine},
                                                  {"drift", PathShape::kDrift}};

/// A number from `low` to `high`; "nan" lies within no range.
CLI::Validator numberWithin(double low, double high) {
  std::ostringstream range;
  range << low << " to " << high;
  const auto problemOf = [=, text = range.str()](const std::string& input) {
    double value = 0;
    const bool fits = CLI::detail::lexical_cast(input, value) && value >= low && value <= high;
    return fits ? std::string{} : input + " is no number from " + text;
  };
  return {problemOf, "in [" + range.str() + "]"};
}

/// Reads LO or LO:HI.
void parseOverlap(const std::string& text, PathOptions& path) {
  const std::size_t colon = text.find(':');
  const std::string low = text.substr(0, colon);
  const std::string high = colon == std::string::npos ? low : text.substr(colon + 1);
  const bool numbers = CLI::detail::lexical_cast(low, path.lowestOverlap) &&
                       CLI::detail::lexical_cast(high, path.highestOverlap);
  if (!numbers || !(path.lowestOverlap >= 0 && path.lowestOverlap <= path.highestOverlap &&
                    path.highestOverlap <= kHighestOverlap)) {
    throw CLI::ValidationError(
        "--overlap", text + " is no LO or LO:HI with 0 <= LO <= HI <= 0.99: give 0.6 or 0.5:0.7");
  }
}

void addPathOptions(CLI::App& command, PathOptions& path) {
  command.add_option("--frames", path.frames, "Frames to cut, fewer where the scene ends before")
      ->check(CLI::Range(2, kMostFrames))
      ->capture_default_str();
  const CLI::Range side(kSmallestSide, kLargestSide);
  command.add_option("--cols", path.frame.width, "Width of a frame")
      ->check(side)
      ->capture_default_str();
  command.add_option("--rows", path.frame.height, "Height of a frame")
      ->check(side)
      ->capture_default_str();
  command
      .add_option_function<std::string>(
          "--path", [&path](const std::string& name) { path.shape = kShapes.at(name); },
          "Rows of steps, every other one backwards (serpentine), or steps of changing direction "
          "that may pass over places again (drift)")
      ->check(CLI::IsMember({"serpentine", "drift"}))
      ->default_str("serpentine")
      ->type_name("TEXT");
  command
      .add_option_function<std::string>(
          "--overlap", [&path](const std::string& text) { parseOverlap(text, path); },
          "Share of a frame, along the step, that the one before shows too; drawn anew for each "
          "step from a range")
      ->default_str("0.6")
      ->type_name("LO[:HI]");
  command.add_flag("--subpixel", path.subpixel, "Cut at hundredths of a pixel, by interpolation");
}

void addEffectOptions(CLI::App& command, SimulationOptions& capture) {
  command.add_option("--noise", capture.noise, "Standard deviation of the noise in gray levels")
      ->check(numberWithin(0, 255))
      ->capture_default_str();
  command
      .add_option("--gain", capture.gain,
                  "Brightness drifts smoothly by up to this share: 0.2 for +-20 %")
      ->check(numberWithin(0, 0.95))
      ->capture_default_str();
  command.add_option("--vignette", capture.vignette, "Share of the light that the corners lose")
      ->check(numberWithin(0, 1))
      ->capture_default_str();
  command.add_option("--blur", capture.blur, "Standard deviation of the blur in pixels")
      ->check(numberWithin(0, 20))
      ->capture_default_str();
  command
      .add_option("--rotation", capture.rotation,
                  "Turn each frame about its middle by up to so many degrees to either side")
      ->check(numberWithin(0, 45))
      ->capture_default_str();
  command.add_flag("--gray", capture.gray, "Gray frames of a coloured scene");
}

}  // namespace

CLI::App& addSimulateCommand(CLI::App& app, SimulateOptions& options) {
  CLI::App& command = *app.add_subcommand(
      "simulate", "Cut a capture with known places out of a picture, for tests and measurements");
  CLI::Option* scene = command.add_option("scene", options.scene, "Picture to cut the frames from")
                           ->type_name("SCENE");
  const std::string generatedText = "Cut from a generated texture full of corners instead";
  CLI::Option* generated = command.add_flag("--generated", generatedText)->excludes(scene);
  command
      .add_option("-o,--output", options.folder,
                  "Folder for frame_0001.png ... and truth.csv: new, empty or of an earlier "
                  "simulation, which is replaced")
      ->required()
      ->type_name("DIR");
  addPathOptions(command, options.capture.path);
  addEffectOptions(command, options.capture);
  command.add_option("--seed", options.capture.seed, "Another number, another path and noise")
      ->capture_default_str();
  command.callback([scene, generated] {
    if (scene->empty() && generated->empty()) {
      throw CLI::RequiredError("SCENE or --generated");
    }
  });
  return command;
}

}  // namespace framequilt::tool
