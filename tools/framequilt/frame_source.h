// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <opencv2/core/mat.hpp>
#include <optional>
#include <string>
#include <vector>

namespace framequilt::tool {

/// The one shape that all frames of a capture share.
struct CaptureShape {
  int rows;
  int cols;
  int channels;  ///< 1 (gray) or 3 (blue, green, red).
};

struct SourceFrame {
  cv::Mat pixels;              ///< 8 bits a channel, of the capture's shape, owned by the frame.
  std::size_t number;          ///< Its place in the capture, from 1, with those that are left out.
  std::string name;            ///< For reports: "f3.jpg", "clip.avi#12", "camera:0#12".
  std::filesystem::path path;  ///< The picture's file; empty for a frame of a video or a camera.
};

/// What a capture is read from; what it is not, is empty.
struct CaptureOrigin {
  struct Picture {
    std::filesystem::path path;
    std::size_t number;  ///< As in `SourceFrame`.
  };

  std::vector<Picture> pictures;  ///< Those that are offered, in their order.
  std::filesystem::path video;
  std::string camera;  ///< "camera:0"
};

/// The frames of a capture, one after another. Used from one thread.
class FrameSource {
 public:
  FrameSource() = default;
  virtual ~FrameSource() = default;
  FrameSource(const FrameSource&) = delete;
  FrameSource& operator=(const FrameSource&) = delete;

  virtual CaptureShape shape() const = 0;

  /// How many frames `next` gives in all, as far as is known by now; none where nobody can know.
  virtual std::optional<std::size_t> count() const = 0;

  /// The next frame; none at the end, and as soon as the user has interrupted.
  /// \throws cv::Exception, std::bad_alloc.
  virtual std::optional<SourceFrame> next() = 0;

  /// Frames left out so far because they cannot be read or have another size.
  virtual std::size_t skipped() const = 0;

  /// Frames of a camera that a newer one replaced before `next` came for them.
  virtual std::size_t dropped() const { return 0; }

  virtual CaptureOrigin origin() const { return {}; }
};

struct InputSettings {
  /// The pictures to write: left out, with their outlined copies, where a folder or a pattern holds
  /// them.
  std::vector<std::filesystem::path> outputs;
  int every = 1;  ///< Takes the 1st, (N + 1)th, (2N + 1)th ... frame; 1 or more.
  std::function<void(const std::string&)> note;  ///< Gets remarks, one line each; may be empty.
  std::function<bool()> interrupted;             ///< Whether to stop; may be empty.

  void remark(const std::string& line) const {
    if (note) note(line);
  }
  bool stopAsked() const { return interrupted && interrupted(); }
};

/// Opens a capture; as `openInputs` does.
using SourceOpener = std::function<std::unique_ptr<FrameSource>(const InputSettings&)>;

/// Opens what `inputs` (one or more) stand for: pictures, folders of pictures and quoted patterns
/// in the order given; or one video file; or a camera, as "camera:0".
///
/// Pictures that cannot be used are remarked on and left out; of the rest the headers are read here
/// and the pixels when their turn comes.
///
/// \throws ToolError for an input that does not exist or gives no frame.
std::unique_ptr<FrameSource> openInputs(const std::vector<std::string>& inputs,
                                        const InputSettings& settings);

}  // namespace framequilt::tool
