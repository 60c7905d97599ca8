// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/content_hash.h"

#include <xxhash.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <memory>
#include <new>
#include <vector>

namespace framequilt::tool {
namespace {

class Hash {
 public:
  Hash() {
    if (!state_) throw std::bad_alloc();
    XXH3_128bits_reset(state_.get());
  }

  void add(const void* bytes, std::size_t size) { XXH3_128bits_update(state_.get(), bytes, size); }

  std::string text() const {
    const XXH128_hash_t hash = XXH3_128bits_digest(state_.get());
    std::array<char, 33> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx%016llx",
                  static_cast<unsigned long long>(hash.high64),
                  static_cast<unsigned long long>(hash.low64));
    return digits.data();
  }

 private:
  struct Release {
    void operator()(XXH3_state_t* state) const { XXH3_freeState(state); }
  };

  std::unique_ptr<XXH3_state_t, Release> state_{XXH3_createState()};
};

}  // namespace

std::optional<std::string> hashOfFile(const std::filesystem::path& file) {
  constexpr std::size_t kBlock = std::size_t{1} << 20U;
  std::ifstream stream(file, std::ios::binary);
  std::vector<char> block(kBlock);
  Hash hash;
  while (stream) {
    stream.read(block.data(), static_cast<std::streamsize>(block.size()));
    hash.add(block.data(), static_cast<std::size_t>(stream.gcount()));
  }
  if (!stream.eof()) return std::nullopt;
  return hash.text();
}

std::string hashOfPixels(const cv::Mat& pixels) {
  const std::string shape = std::to_string(pixels.rows) + " " + std::to_string(pixels.cols) + " " +
                            std::to_string(pixels.channels());
  Hash hash;
  hash.add(shape.data(), shape.size());
  for (int r = 0; r < pixels.rows; ++r) {
    hash.add(pixels.ptr(r), static_cast<std::size_t>(pixels.cols) * pixels.elemSize());
  }
  return hash.text();
}

std::uint64_t checksumOf(std::string_view text, std::uint64_t before) {
  return XXH3_64bits_withSeed(text.data(), text.size(), before);
}

}  // namespace framequilt::tool
