// SPDX-License-Identifier: Apache-2.0
// Reduction against its formula. The exported routine reads where the factor takes it, also behind
// the image: it is given memory for that. The one that keeps within the frame has none.
#include "imaging/resize.h"

#include <array>

#include "tests/fuzz/input_bytes.h"
#include "tests/fuzz/levels.h"
#include "tests/fuzz/target.h"

namespace {

using framequilt::fuzz::InputBytes;
using Bytes = std::vector<unsigned char>;

constexpr std::array<int, 14> kScales = {2, 3, 2, 4, 5, 6, 7, 8, 1, 10, 20, 64, -1, 0};
constexpr std::array<int, 8> kChannels = {1, 3, 1, 3, 0, 2, 4, -1};
constexpr std::int64_t kMostPixelsRead = 60000;

struct Job {
  int rows, cols, scale, channels;

  std::int64_t outRows() const { return reduced(rows); }
  std::int64_t outCols() const { return reduced(cols); }
  bool samples() const { return scale > 1 && (channels == 1 || channels == 3); }

  /// Where output pixel (i, j) comes from.
  std::int64_t source(std::int64_t i, std::int64_t j) const {
    return scale % 2 == 0 ? (i * cols + j) << (scale / 2 % 32) : i * scale * cols + j * scale;
  }
  std::int64_t lastSource() const { return source(outRows() - 1, outCols() - 1); }
  bool isEmpty() const { return outRows() < 1 || outCols() < 1; }

 private:
  /// Even factors cut, odd ones round half up.
  std::int64_t reduced(int side) const {
    if (side < 1) return 0;
    return scale % 2 == 0 ? side / scale : (2 * std::int64_t{side} + scale) / (2 * scale);
  }
};

std::int64_t pixelsOf(const Job& job) {
  return job.rows < 1 || job.cols < 1 ? 0 : std::int64_t{job.rows} * job.cols;
}

std::size_t bytesOf(std::int64_t pixels, int channels) {
  return static_cast<std::size_t>(pixels) * static_cast<std::size_t>(std::max(channels, 0));
}

/// Pixels from `srcPixels` on, and bytes behind `dst`, are left alone.
void reducePlainly(const Bytes& src, const Job& job, std::int64_t srcPixels, Bytes& dst) {
  if (job.scale == 1) {
    const std::size_t bytes = std::min(bytesOf(pixelsOf(job), job.channels), dst.size() - 1);
    std::copy_n(src.begin(), bytes, dst.begin());
    return;
  }
  if (!job.samples()) return;
  const auto n = static_cast<std::size_t>(job.channels);
  std::size_t to = 0;
  for (std::int64_t i = 0; i < job.outRows(); ++i) {
    for (std::int64_t j = 0; j < job.outCols(); ++j, to += n) {
      const std::int64_t from = job.source(i, j);
      if (from >= srcPixels || to + n > dst.size() - 1) continue;
      std::copy_n(src.begin() + static_cast<std::ptrdiff_t>(bytesOf(from, job.channels)), n,
                  dst.begin() + static_cast<std::ptrdiff_t>(to));
    }
  }
}

/// `dst` has a byte more than may be written.
template <class Reduce>
void check(const Bytes& src, const Job& job, std::int64_t srcPixels, std::size_t capacity,
           Reduce reduce) {
  Bytes expected(capacity + 1, 171);
  const Bytes before = expected;
  if (job.scale != 0) reducePlainly(src, job, srcPixels, expected);
  framequilt::fuzz::atEachLevel([&] {
    Bytes from = src;
    Bytes dst = before;
    FRAMEQUILT_HOLDS(reduce(from, dst) == (job.scale != 0));
    FRAMEQUILT_HOLDS(dst == expected);
    FRAMEQUILT_HOLDS(from == src);
  });
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  framequilt::fuzz::silenceReports();
  InputBytes in(data, size);
  const bool within = in.flag();
  const Job job = {in.between(-1, 24), in.between(-1, 130), in.oneOf(kScales), in.oneOf(kChannels)};
  std::int64_t pixels = pixelsOf(job);
  if (!within && job.samples() && !job.isEmpty()) pixels = std::max(pixels, job.lastSource() + 1);
  if (pixels > kMostPixelsRead) return 0;
  const std::size_t whole = job.scale == 1  ? bytesOf(pixelsOf(job), job.channels)
                            : job.samples() ? bytesOf(job.outRows() * job.outCols(), job.channels)
                                            : 0;
  const std::size_t capacity = within && in.flag() ? whole * in.byte() / 255 : whole;
  const Bytes src = in.image(std::max<std::size_t>(1, bytesOf(pixels, job.channels)));
  if (within) {
    check(src, job, pixelsOf(job), capacity, [&](Bytes& from, Bytes& dst) {
      return framequilt::resizeWithinFrame(from.data(), job.rows, job.cols, job.scale, job.channels,
                                           dst.data(), capacity);
    });
  } else {
    check(src, job, pixels, capacity, [&](Bytes& from, Bytes& dst) {
      return opencvInterLineARResize(from.data(), job.rows, job.cols, job.scale, job.channels,
                                     dst.data());
    });
  }
  return 0;
}
