// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/picture_source.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "tools/framequilt/path_text.h"
#include "tools/framequilt/picture_reading.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

/// A picture whose header could be read.
struct Surveyed {
  fs::path path;
  std::size_t number;  // In the capture, from 1.
  PictureHeader header;

  cv::Size size() const { return {header.cols, header.rows}; }
};

class PictureSource final : public FrameSource {
 public:
  PictureSource(const std::vector<fs::path>& pictures, const InputSettings& settings);
  PictureSource(const std::vector<CaptureOrigin::Picture>& pictures, const CaptureShape& shape,
                std::size_t leftOut, const InputSettings& settings);

  CaptureShape shape() const override { return shape_; }
  std::optional<std::size_t> count() const override { return pictures_.size() - damaged_; }
  std::optional<SourceFrame> next() override;
  std::size_t skipped() const override { return unusable_ + damaged_; }
  CaptureOrigin origin() const override;

 private:
  void survey(const std::vector<fs::path>& pictures);
  void keepCommonSize();
  void noteConversion(bool PictureHeader::*kind, const char* one, const char* several) const;
  std::optional<cv::Mat> read(const fs::path& picture);
  void noteOtherSize(const fs::path& picture, cv::Size size) const;

  InputSettings settings_;
  CaptureShape shape_{};
  std::vector<Surveyed> pictures_;  // Those of the capture.
  std::size_t next_ = 0;
  std::size_t unusable_ = 0;  // Left out because of what their headers say.
  std::size_t damaged_ = 0;   // Left out when their turn came.
};

PictureSource::PictureSource(const std::vector<fs::path>& pictures, const InputSettings& settings)
    : settings_(settings) {
  survey(pictures);
  keepCommonSize();
  const bool colour = std::any_of(pictures_.begin(), pictures_.end(),
                                  [](const Surveyed& picture) { return picture.header.colour; });
  shape_.channels = colour ? 3 : 1;
  noteConversion(&PictureHeader::sixteenBits, " has 16 bits per channel: converted to 8",
                 " have 16 bits per channel: converted to 8");
  noteConversion(&PictureHeader::transparency, " has a transparency channel: dropped",
                 " have a transparency channel: dropped");
  noteConversion(&PictureHeader::cmyk, " has CMYK colours: converted to RGB",
                 " have CMYK colours: converted to RGB");
  noteConversion(&PictureHeader::several, " holds several pictures: the first is taken",
                 " hold several pictures: the first is taken");
  noteConversion(&PictureHeader::turned, " is turned upright as its EXIF data say",
                 " are turned upright as their EXIF data say");
}

PictureSource::PictureSource(const std::vector<CaptureOrigin::Picture>& pictures,
                             const CaptureShape& shape, std::size_t leftOut,
                             const InputSettings& settings)
    : settings_(settings), shape_(shape), unusable_(leftOut) {
  for (const auto& [path, number] : pictures) pictures_.push_back({path, number, {}});
}

CaptureOrigin PictureSource::origin() const {
  CaptureOrigin origin;
  for (const Surveyed& picture : pictures_) {
    origin.pictures.push_back({picture.path, picture.number});
  }
  return origin;
}

/// Reads the headers.
void PictureSource::survey(const std::vector<fs::path>& pictures) {
  const auto step = static_cast<std::size_t>(settings_.every);
  for (std::size_t i = 0; i < pictures.size() && !settings_.stopAsked(); ++i) {
    const fs::path& picture = pictures[i];
    try {
      pictures_.push_back({picture, 1 + i * step, readHeader(picture)});
    } catch (const PictureError& failure) {
      settings_.remark(std::string(failure.what()) + ": left out");
      ++unusable_;
    }
  }
  if (!pictures_.empty()) return;
  if (settings_.stopAsked()) throw ToolError("interrupted before a picture was read");
  throw ToolError(pictures.size() == 1
                      ? inQuotes(pictures.front()) +
                            ", the only picture, cannot be read: save it again "
                            "as .png or .jpg"
                      : "none of the " + std::to_string(pictures.size()) +
                            " pictures can be read, the first is " + inQuotes(pictures.front()) +
                            ": save them again as .png or .jpg");
}

void PictureSource::keepCommonSize() {
  std::vector<std::pair<cv::Size, std::size_t>> sizes;  // How often each comes, as first met.
  for (const Surveyed& picture : pictures_) {
    const auto known = std::find_if(sizes.begin(), sizes.end(),
                                    [&](const auto& size) { return size.first == picture.size(); });
    if (known == sizes.end()) {
      sizes.emplace_back(picture.size(), 1);
    } else {
      ++known->second;
    }
  }
  // Of equal counts the first is taken.
  const cv::Size common =
      std::max_element(sizes.begin(), sizes.end(), [](const auto& a, const auto& b) {
        return a.second < b.second;
      })->first;
  shape_.rows = common.height;
  shape_.cols = common.width;
  const auto odd = std::remove_if(pictures_.begin(), pictures_.end(), [&](const Surveyed& picture) {
    if (picture.size() == common) return false;
    noteOtherSize(picture.path, picture.size());
    return true;
  });
  unusable_ += static_cast<std::size_t>(pictures_.end() - odd);
  pictures_.erase(odd, pictures_.end());
}

/// One line for all pictures of a kind, naming the first.
void PictureSource::noteConversion(bool PictureHeader::*kind, const char* one,
                                   const char* several) const {
  const auto isOfKind = [&](const Surveyed& picture) { return picture.header.*kind; };
  const auto first = std::find_if(pictures_.begin(), pictures_.end(), isOfKind);
  if (first == pictures_.end()) return;
  const auto more = std::count_if(first + 1, pictures_.end(), isOfKind);
  settings_.remark(more == 0 ? inQuotes(first->path) + one
                             : inQuotes(first->path) + " and " + std::to_string(more) + " more" +
                                   several);
}

void PictureSource::noteOtherSize(const fs::path& picture, cv::Size size) const {
  settings_.remark(inQuotes(picture) + " has " + sizeText(size.height, size.width) +
                   ", the capture has " + sizeText(shape_.rows, shape_.cols) + ": left out");
}

/// None, and a remark, for a picture that is not what its header promised.
std::optional<cv::Mat> PictureSource::read(const fs::path& picture) {
  try {
    cv::Mat pixels = readPicture(picture, shape_.channels);
    if (pixels.size() == cv::Size(shape_.cols, shape_.rows)) return pixels;
    noteOtherSize(picture, pixels.size());
  } catch (const PictureError& failure) {
    settings_.remark(std::string(failure.what()) + ": left out");
  }
  return std::nullopt;
}

std::optional<SourceFrame> PictureSource::next() {
  while (next_ < pictures_.size() && !settings_.stopAsked()) {
    const auto& [path, number, header] = pictures_[next_++];
    std::optional<cv::Mat> pixels = read(path);
    if (pixels) return SourceFrame{std::move(*pixels), number, path.filename().string(), path};
    ++damaged_;
  }
  return std::nullopt;
}

}  // namespace

std::unique_ptr<FrameSource> openPictures(const std::vector<fs::path>& pictures,
                                          const InputSettings& settings) {
  return std::make_unique<PictureSource>(pictures, settings);
}

std::unique_ptr<FrameSource> reopenPictures(const std::vector<CaptureOrigin::Picture>& pictures,
                                            const CaptureShape& shape, std::size_t leftOut,
                                            const InputSettings& settings) {
  return std::make_unique<PictureSource>(pictures, shape, leftOut, settings);
}

}  // namespace framequilt::tool
