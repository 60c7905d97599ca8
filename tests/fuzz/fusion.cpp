// SPDX-License-Identifier: Apache-2.0
// The fast fusion against the plain one: packed or on a ground whose rows lie apart, in place or
// from a frame that stays, on one thread or two.
#include "imaging/fusion.h"

#include <array>

#include "imaging/assistant.h"
#include "imaging/feather.h"
#include "imaging/imaging_state.h"
#include "imaging/run_buffer.h"
#include "tests/fuzz/input_bytes.h"
#include "tests/fuzz/levels.h"
#include "tests/fuzz/target.h"
#include "tests/imaging/reference.h"

namespace {

using framequilt::fuzz::InputBytes;
using Bytes = std::vector<unsigned char>;

constexpr std::array<int, 8> kChannels = {1, 3, 1, 3, 1, 3, 2, 0};

struct Shape {
  int rows, cols, channels;

  /// A byte more than there are, so that no pointer is null; 2 channels mix three bytes a pixel.
  std::size_t bytes() const { return area(rows, cols, channels == 2 ? 3 : std::max(channels, 1)); }
  std::size_t rowBytes() const { return area(1, cols, channels); }
};

/// Empties a rectangle, as the ground has it beside what was joined so far.
void empty(InputBytes& in, const Shape& shape, Bytes& image) {
  if (shape.rows == 0 || shape.cols == 0) return;
  const int row0 = in.between(0, shape.rows - 1);
  const int row1 = in.between(row0, shape.rows);
  const int col0 = in.between(0, shape.cols - 1);
  const int col1 = in.between(col0, shape.cols);
  for (int r = row0; r < row1; ++r) {
    const std::size_t start = area(r, shape.cols, shape.channels);
    std::fill(image.begin() + static_cast<std::ptrdiff_t>(start + area(1, col0, shape.channels)),
              image.begin() + static_cast<std::ptrdiff_t>(start + area(1, col1, shape.channels)),
              static_cast<unsigned char>(0));
  }
}

struct Pair {
  Bytes ground, frame;
};

Pair fusedPlainly(const Shape& shape, Pair pair) {
  framequilt::fusePlainly(pair.ground.data(), pair.frame.data(), shape.channels, 0, shape.rows,
                          shape.cols);
  framequilt::drop(AreaImageOneGaryFloat);
  framequilt::drop(AreaImageTwoGaryFloat);
  framequilt::drop(AreaImageOneWeight);
  framequilt::drop(AreaImageOneGary);
  framequilt::drop(AreaImageTwoGary);
  return pair;
}

void checkPacked(const Shape& shape, const Pair& pair, const Pair& expected) {
  Pair fused = pair;
  FRAMEQUILT_HOLDS(twoImageFusion(fused.ground.data(), fused.frame.data(), shape.channels, 0,
                                  shape.rows, shape.cols));
  FRAMEQUILT_HOLDS(fused.ground == expected.ground);
  FRAMEQUILT_HOLDS(fused.frame == expected.frame);
}

/// How `feather` is called.
struct Manner {
  std::size_t gap;
  bool copies, keepsFrame;
};

void checkApart(const Shape& shape, const Pair& pair, const Bytes& expected, const Manner& manner) {
  const std::size_t stride = shape.rowBytes() + manner.gap;
  // The last row has nothing behind it.
  Bytes ground(stride * static_cast<std::size_t>(shape.rows - 1) + shape.rowBytes(), 171);
  for (std::size_t r = 0; r < static_cast<std::size_t>(shape.rows); ++r) {
    std::copy_n(pair.ground.begin() + static_cast<std::ptrdiff_t>(r * shape.rowBytes()),
                shape.rowBytes(), ground.begin() + static_cast<std::ptrdiff_t>(r * stride));
  }
  Bytes frame(pair.frame.begin(), pair.frame.end() - 1);
  Bytes original = frame;
  Bytes copy(frame.size(), 171);
  if (manner.keepsFrame) std::fill(frame.begin(), frame.end(), static_cast<unsigned char>(171));
  const framequilt::Feathering job = {
      ground.data(),  static_cast<std::ptrdiff_t>(stride),
      frame.data(),   manner.copies ? copy.data() : nullptr,
      shape.rows,     shape.cols,
      shape.channels, manner.keepsFrame ? original.data() : nullptr};
  FRAMEQUILT_HOLDS(framequilt::canFeather(job));
  framequilt::feather(job);
  FRAMEQUILT_HOLDS(frame == expected);
  FRAMEQUILT_HOLDS(!manner.copies || copy == expected);
  FRAMEQUILT_HOLDS(std::equal(original.begin(), original.end(), pair.frame.begin()));
  for (std::size_t i = 0; i < ground.size(); ++i) {
    const std::size_t inRow = i % stride;
    FRAMEQUILT_HOLDS(
        ground[i] ==
        (inRow < shape.rowBytes() ? expected[i / stride * shape.rowBytes() + inRow] : 171));
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  InputBytes in(data, size);
  const Shape shape = {in.between(0, 36), in.between(0, 40), in.oneOf(kChannels)};
  const Manner manner = {static_cast<std::size_t>(in.between(0, 9)), in.flag(), in.flag()};
  framequilt::setThreads(in.byte() >= 248 ? 2 : 1);
  Pair pair;
  pair.ground = in.image(shape.bytes() + 1);
  pair.frame = in.image(shape.bytes() + 1);
  if (in.flag()) empty(in, shape, pair.ground);
  if (in.flag()) empty(in, shape, pair.frame);

  const Pair expected = fusedPlainly(shape, pair);
  const bool feathers = shape.rows >= 2 && shape.cols >= 3 && shape.channels % 2 == 1;
  const Bytes result(expected.frame.begin(), expected.frame.end() - 1);
  framequilt::fuzz::atEachLevel([&] {
    checkPacked(shape, pair, expected);
    if (feathers) checkApart(shape, pair, result, manner);
  });
  return 0;
}
