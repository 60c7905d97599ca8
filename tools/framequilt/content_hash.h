// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <opencv2/core/mat.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace framequilt::tool {

// XXH3 as published: the same on every machine. It finds what changed by accident, not by intent.

/// Of a file's bytes, as 32 hexadecimal digits; none where it cannot be read.
std::optional<std::string> hashOfFile(const std::filesystem::path& file);

/// Of a picture's shape and pixels, as 32 hexadecimal digits; how far apart its rows lie does not
/// count.
std::string hashOfPixels(const cv::Mat& pixels);

/// Of `text`, behind what `before` is the checksum of.
std::uint64_t checksumOf(std::string_view text, std::uint64_t before);

}  // namespace framequilt::tool
