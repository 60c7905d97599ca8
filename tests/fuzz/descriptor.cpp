// SPDX-License-Identifier: Apache-2.0
// Descriptors of corners anywhere in and around an image against the plain ones.
#include "features/descriptor.h"

#include "features/plain.h"
#include "tests/fuzz/input_bytes.h"
#include "tests/fuzz/levels.h"
#include "tests/fuzz/target.h"
#include "tests/imaging/reference.h"

namespace {

using framequilt::fuzz::InputBytes;
using Elements = std::vector<unsigned short>;

SPoint takeCorner(InputBytes& in, int rows, int cols) {
  if (in.byte() >= 250) return {in.anyInt(), in.anyInt()};
  return {in.between(-4, cols + 3), in.between(-4, rows + 3)};
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  InputBytes in(data, size);
  const int rows = in.between(1, 40);
  const int cols = in.between(1, 44);
  const int patch = in.byte() < 128 ? 20 : in.between(0, 27);
  const int length = in.byte() < 128 ? 200 : in.between(0, 430);
  std::vector<SPoint> corners(static_cast<std::size_t>(in.between(0, 4)));
  for (SPoint& corner : corners) corner = takeCorner(in, rows, cols);
  std::vector<unsigned char> image = in.image(area(rows, cols));

  const auto each = static_cast<std::size_t>(length);
  // Elements behind the last cell are zeros; a descriptor begins with those of the one before.
  Elements one(each + 1, 0);
  Elements expected;
  for (const SPoint corner : corners) {
    framequilt::plain::describeCorner({image.data(), rows, cols}, corner, patch, one.data(),
                                      length);
    expected.insert(expected.end(), one.begin(), one.end() - 1);
  }
  expected.push_back(171);
  framequilt::fuzz::atEachLevel([&] {
    Elements scratch(each + 1, 171);
    Elements found(expected.size(), 171);
    FRAMEQUILT_HOLDS(noRotaFeatureDescriber(image.data(), rows, cols, length, patch, corners,
                                            scratch.data(), found.data()));
    FRAMEQUILT_HOLDS(found == expected);
    FRAMEQUILT_HOLDS(scratch.back() == 171);
  });
  return 0;
}
