// SPDX-License-Identifier: Apache-2.0
// The offset that most pairs agree on against the plain vote, for coordinates of every size and
// lists of different lengths.
#include "features/consensus.h"

#include <stdexcept>

#include "features/plain.h"
#include "imaging/pixel_math.h"
#include "tests/fuzz/input_bytes.h"
#include "tests/fuzz/levels.h"
#include "tests/fuzz/target.h"

namespace {

using framequilt::fuzz::InputBytes;
using framequilt::fuzz::same;
using Points = std::vector<SPoint>;

bool samePoints(const Points& a, const Points& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](SPoint p, SPoint q) { return p.x == q.x && p.y == q.y; });
}

struct Vote {
  bool done = false;
  bool threw = false;
  Points one = {{-1, -2}};
  Points two = {{-3, -4}};
  float dx = 0.5F;
  float dy = 0.25F;
};

template <class Agree>
Vote voteOf(Agree agree, const Points& a, const Points& b) {
  Vote vote;
  try {
    vote.done = agree(a, b, vote.one, vote.two, vote.dx, vote.dy);
  } catch (const std::out_of_range&) {
    vote.threw = true;
  }
  return vote;
}

/// Around a centre, which may be anywhere.
SPoint takePoint(InputBytes& in, SPoint centre, int spread) {
  return {framequilt::sum32(centre.x, in.between(-spread, spread)),
          framequilt::sum32(centre.y, in.between(-spread, spread))};
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  framequilt::fuzz::silenceReports();
  InputBytes in(data, size);
  const std::size_t pairs = static_cast<std::size_t>(in.between(0, 70));
  const int longer = in.byte() < 240 ? 0 : in.between(-2, 2);
  const SPoint centre = in.byte() < 128 ? SPoint{0, 0} : SPoint{in.anyInt(), in.anyInt()};
  const SPoint offset = {in.between(-300, 300), in.between(-300, 300)};
  const int spread = in.between(1, 127);
  const int error = in.between(1, 15);
  Points a;
  Points b;
  for (std::size_t k = 0; k < pairs; ++k) {
    b.push_back(takePoint(in, centre, spread));
    a.push_back(takePoint(
        in, {framequilt::sum32(b[k].x, offset.x), framequilt::sum32(b[k].y, offset.y)}, error));
  }
  b.resize(static_cast<std::size_t>(std::max(0, static_cast<int>(pairs) + longer)));

  const Vote expected = voteOf(framequilt::plain::agreeOnOffset, a, b);
  framequilt::fuzz::atEachLevel([&] {
    const Vote vote = voteOf(ransacMatchSPointArrayFun, a, b);
    FRAMEQUILT_HOLDS(vote.threw == expected.threw);
    FRAMEQUILT_HOLDS(vote.done == expected.done);
    FRAMEQUILT_HOLDS(samePoints(vote.one, expected.one));
    FRAMEQUILT_HOLDS(samePoints(vote.two, expected.two));
    FRAMEQUILT_HOLDS(same(vote.dx, expected.dx) && same(vote.dy, expected.dy));
  });
  return 0;
}
