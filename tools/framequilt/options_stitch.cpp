// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/options_stitch.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <system_error>

namespace framequilt::tool {
namespace {

/// Takes whole numbers from 1 on, as far as an int goes.
CLI::Validator fromOne() {
  return {[](std::string& text) {
            int number = 0;
            const char* const end = text.data() + text.size();
            const auto [stop, failure] = std::from_chars(text.data(), end, number);
            const bool whole = failure == std::errc() && stop == end;
            return whole && number >= 1 ? std::string()
                                        : "'" + text + "' is no whole number from 1 to " +
                                              std::to_string(std::numeric_limits<int>::max());
          },
          "1 or more", "from one"};
}

/// Takes finite numbers above 0.
CLI::Validator pixelSize() {
  return {[](std::string& text) {
            double number = 0;
            const bool fits =
                CLI::detail::lexical_cast(text, number) && std::isfinite(number) && number > 0;
            return fits ? std::string()
                        : "'" + text + "' is no size of a pixel: give micrometres, such as 0.65";
          },
          "above 0", "pixel size"};
}

void requireLimitFits(const StitchOptions& options) {
  const std::int64_t pixels = std::int64_t{options.maxRows} * options.maxCols;
  if (pixels > std::numeric_limits<std::int32_t>::max()) {
    throw CLI::ValidationError("--max-rows x --max-cols",
                               "must stay below 2147483648 pixels: lower one of them");
  }
}

void addInputs(CLI::App& command, StitchOptions& options) {
  command
      .add_option("inputs", options.inputs,
                  "Pictures in the order they were taken, folders of pictures (natural order: f2 "
                  "before f10), patterns such as 'shots/*.png', one video file, or camera:N")
      ->required()
      ->type_name("INPUT");
  command
      .add_option("--every", options.every, "Take only each Nth frame, beginning with the first")
      ->check(fromOne())
      ->capture_default_str();
  command
      .add_option("--hints", options.hints,
                  "How the camera moved, where it is known: columns frame,dx,dy (since the frame "
                  "before) or frame,x,y (position), in pixels")
      ->type_name("FILE.csv");
}

void addJudging(CLI::App& command, StitchOptions& options) {
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
      .add_option_function<std::string>(
          "--scale",
          [&options](const std::string& text) {
            options.scale = text == "auto" ? kAutoScale : std::stoi(text);
          },
          "Divisor from frame to mosaic size: 1, 2 or auto, which is 2 only for frames above 6000 "
          "a side")
      ->check(CLI::IsMember({"1", "2", "auto"}))
      ->default_str("auto");
  command
      .add_option("--corner-budget", options.cornerBudget,
                  "More corners per frame: each step about 31, and slower")
      ->check(CLI::Range(0, kLargestCornerBudget))
      ->capture_default_str();
  command
      .add_option("--max-rows", options.maxRows,
                  "Stop when the mosaic, with its margins (6000 x 6000 at first), has")
      ->check(fromOne())
      ->capture_default_str();
  command.add_option("--max-cols", options.maxCols, "... max-rows x max-cols pixels")
      ->check(fromOne())
      ->capture_default_str();
}

void addBackend(CLI::App& command, StitchOptions& options) {
  command
      .add_option("--backend", options.backend,
                  "Work on a GPU (opencl) or the processor (host); auto takes the GPU where "
                  "'framequilt info' names one, at scale 1")
      ->check(CLI::IsMember({"auto", "opencl", "host"}))
      ->capture_default_str();
}

void addOutputs(CLI::App& command, StitchOptions& options) {
  command
      .add_option("-o,--output", options.output,
                  "The mosaic to write: .png, .jpg, .bmp or, of any size, .tif")
      ->required()
      ->type_name("FILE");
  command
      .add_option("--crop", options.crop,
                  "Write what frames cover (box), or the margins around it too (none)")
      ->check(CLI::IsMember({"box", "none"}))
      ->capture_default_str();
  command
      .add_option("--placements", options.placements,
                  "Also write where each frame lies: frame,file,x,y,joined; the same as .json, or "
                  "the joined ones as a tile configuration for .txt ('-': standard output)")
      ->type_name("FILE.csv");
  command
      .add_option("--report", options.report,
                  "Also write what was measured and decided for each frame ('-': standard output)")
      ->type_name("FILE.json");
  command.add_flag("--outlines", options.outlines,
                   "Also write NAME-outlines beside the mosaic: a copy with each frame's border "
                   "and number");
  command
      .add_option("--ome-tiff", options.omeTiff,
                  "Also write the mosaic as an OME-TIFF with smaller copies for viewers")
      ->type_name("FILE.ome.tif");
  command
      .add_option(
          "--pyramid", options.pyramid,
          "Also write a folder to look at in a browser: the mosaic in tiles (Deep Zoom) and "
          "index.html, which shows the frames and what was measured")
      ->type_name("DIR");
  command
      .add_option("--report-html", options.reportHtml,
                  "Also write that page as one file, with the mosaic made smaller inside")
      ->type_name("FILE.html");
  command
      .add_option("--pixel-size", options.pixelSize,
                  "Side of a frame's pixel in micrometres, for the OME-TIFF and the page")
      ->check(pixelSize())
      ->type_name("UM");
}

void addJournal(CLI::App& command, StitchOptions& options) {
  command
      .add_option("--journal", options.journal,
                  "Keep a journal in this new folder: after a crash 'framequilt resume' goes on "
                  "with it, and 'framequilt replay' checks it")
      ->type_name("DIR");
  command
      .add_option("--checkpoint-every", options.checkpointEvery,
                  "Write the mosaic so far into the journal's folder every N frames (0: never)")
      ->check(CLI::Range(0, std::numeric_limits<int>::max()))
      ->type_name("N")
      ->capture_default_str();
}

void addTalk(CLI::App& command, StitchOptions& options) {
  CLI::Option* quiet = command.add_flag("--quiet", options.quiet,
                                        "Neither progress nor summary; only what is amiss");
  command
      .add_flag("--verbose", options.verbose,
                "Tell about each frame, and show the engine's own lines, on standard error")
      ->excludes(quiet);
}

}  // namespace

CLI::App& addStitchCommand(CLI::App& app, StitchOptions& options) {
  CLI::App& command =
      *app.add_subcommand("stitch", "Stitch pictures, a video or a camera into one mosaic");
  addInputs(command, options);
  addOutputs(command, options);
  addJudging(command, options);
  addBackend(command, options);
  addJournal(command, options);
  addTalk(command, options);
  command.callback([&options] { requireLimitFits(options); });
  command.footer(
      "Examples:\n"
      "  framequilt stitch shots -o mosaic.png\n"
      "  framequilt stitch 'shots/left*.jpg' 'shots/right*.jpg' -o mosaic.jpg --outlines\n"
      "  framequilt stitch clip.mp4 --every 5 -o mosaic.tif --report report.json\n"
      "  framequilt stitch camera:0 -o mosaic.png\n\n"
      "Each frame should share about half of its area with the one before. Exit status: 0 when a\n"
      "mosaic was written, 1 when nothing could be joined, 2 for bad usage or unreadable input.\n"
      "Ctrl-C writes the mosaic so far.");
  return command;
}

}  // namespace framequilt::tool
