// SPDX-License-Identifier: Apache-2.0
// Nearest neighbours against the plain search, with the distances that it leaves behind.
#include "features/matching.h"

#include "features/plain.h"
#include "tests/fuzz/input_bytes.h"
#include "tests/fuzz/levels.h"
#include "tests/fuzz/target.h"

namespace {

using framequilt::fuzz::InputBytes;
using framequilt::fuzz::same;
using Elements = std::vector<unsigned short>;

/// Up to a largest element; few different ones make distances equal.
Elements takeElements(InputBytes& in, int count, int largest) {
  const std::vector<unsigned char> bytes = in.image(static_cast<std::size_t>(count));
  Elements elements(bytes.begin(), bytes.end());
  for (unsigned short& element : elements) {
    element = static_cast<unsigned short>(element * 257 % (largest + 1));
  }
  return elements;
}

struct Outcome {
  std::vector<float> distances;
  std::vector<SPoint> matches;
};

bool sameMatches(const std::vector<SPoint>& a, const std::vector<SPoint>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](SPoint p, SPoint q) { return p.x == q.x && p.y == q.y; });
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  framequilt::fuzz::silenceReports();
  InputBytes in(data, size);
  const int countA = in.between(1, 75);
  const int countB = in.between(1, 9);
  const int length = in.between(0, 24);
  // Descriptors of A may lie apart, and even overlap.
  const int stride = in.byte() < 128 ? length : in.between(0, 30);
  const int largest = in.flag() ? in.between(0, 3) : in.between(0, 65535);
  const float ratio = in.byte() < 128 ? 0.8F : in.number();
  Elements a = takeElements(in, (countA - 1) * stride + length + 1, largest);
  Elements b = takeElements(in, countB * length + 1, largest);

  Outcome expected = {std::vector<float>(static_cast<std::size_t>(countA) + 1, 171.0F), {{-7, -7}}};
  const Outcome before = expected;
  FRAMEQUILT_HOLDS(
      framequilt::plain::matchDescriptors({a.data(), countA, stride, b.data(), countB, length},
                                          expected.distances.data(), ratio, expected.matches));
  framequilt::fuzz::atEachLevel([&] {
    Outcome found = before;
    FRAMEQUILT_HOLDS(calacDistanceIndexFun(a.data(), b.data(), found.distances.data(), ratio,
                                           countA, stride, countB, length, found.matches));
    FRAMEQUILT_HOLDS(sameMatches(found.matches, expected.matches));
    FRAMEQUILT_HOLDS(same(found.distances, expected.distances));
  });
  return 0;
}
