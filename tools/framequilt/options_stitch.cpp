// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/options_stitch.h"

#include <cstdint>
#include <limits>

namespace framequilt::tool {
namespace {

// More corners than this budget asks for take minutes a frame.
constexpr int kLargestCornerBudget = 1000;

void requireLimitFits(const StitchOptions& options) {
  const std::int64_t pixels = std::int64_t{options.maxRows} * options.maxCols;
  if (pixels > std::numeric_limits<std::int32_t>::max()) {
    throw CLI::ValidationError("--max-rows x --max-cols",
                               "must stay below 2147483648 pixels: lower one of them");
  }
}

}  // namespace

CLI::App& addStitchCommand(CLI::App& app, StitchOptions& options) {
  CLI::App& command = *app.add_subcommand("stitch", "Stitch pictures into one mosaic");
  command
      .add_option("inputs", options.inputs,
                  "Pictures in the order they were taken, folders of pictures and quoted patterns "
                  "such as 'shots/f*.png' (natural order: f2 before f10); or one video; or a "
                  "camera, as camera:0")
      ->required()
      ->type_name("INPUT");
  command
      .add_option("-o,--output", options.output, "The mosaic to write: .png, .jpg, .tif or .bmp")
      ->required()
      ->type_name("FILE");
  const CLI::Range positive(1, std::numeric_limits<int>::max());
  command.add_option("--every", options.every, "Take only every Nth frame, from the first on")
      ->check(positive)
      ->capture_default_str();
  command
      .add_option("--mode", options.mode,
                  "Judge a frame by how the view changed (motion) or by brightness and sharpness "
                  "of its overlap (overlap)")
      ->check(CLI::IsMember({"motion", "overlap"}))
      ->capture_default_str();
  const std::string stillText = "Nothing but the camera moves (default)";
  CLI::Option* still = command.add_flag("--static", stillText);
  command
      .add_flag("--dynamic", options.dynamicScene,
                "The scene moves too: join only frames that differ little")
      ->excludes(still);
  command
      .add_option("--scale", options.scale,
                  "Divisor from picture to mosaic size; 2 also takes pictures above 6000 a side")
      ->check(CLI::IsMember({1, 2}))
      ->capture_default_str();
  command
      .add_option("--corner-budget", options.cornerBudget,
                  "More corners per frame: each step about 31, and slower")
      ->check(CLI::Range(0, kLargestCornerBudget))
      ->capture_default_str();
  command.add_option("--max-rows", options.maxRows, "Stop when the mosaic, with its margins, has")
      ->check(positive)
      ->capture_default_str();
  command.add_option("--max-cols", options.maxCols, "... max-rows x max-cols pixels")
      ->check(positive)
      ->capture_default_str();
  command
      .add_option("--placements", options.placements,
                  "Also write where each frame lies: frame,file,x,y,joined")
      ->type_name("FILE.csv");
  command.add_flag("--verbose", options.verbose,
                   "Tell about each frame, and show the engine's own lines, on standard error");
  command.callback([&options] { requireLimitFits(options); });
  return command;
}

}  // namespace framequilt::tool
