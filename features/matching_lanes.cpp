// SPDX-License-Identifier: Apache-2.0
#include "features/matching_lanes.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <limits>
#include <new>

#include "imaging/assistant.h"
#include "imaging/cpu_level.h"

namespace framequilt {
namespace {

/// Descriptors of A side by side, and descriptors of B that share a pass over them.
constexpr std::size_t kLanes = 32;
constexpr std::size_t kTogether = 4;
/// Squared, the largest difference below 2^31.
constexpr int kLargestElement = 46340;
/// Beyond every distance.
constexpr float kFar = std::numeric_limits<float>::max();

struct LargestElement {
  FRAMEQUILT_ROUTINE int run(const unsigned short* elements, std::size_t count) {
    unsigned short largest = 0;
    for (std::size_t k = 0; k < count; ++k) largest = std::max(largest, elements[k]);
    return largest;
  }
};

/// Squared distances of `kTogether` descriptors of B, packed, to `blocks` blocks of A. Each sum
/// keeps the order of the elements. `distances` has a row of blocks * kLanes for each of B.
struct Distances {
  FRAMEQUILT_ROUTINE void run(const float* __restrict a, std::size_t blocks,
                              const float* __restrict b, std::size_t length,
                              float* __restrict distances) {
    for (std::size_t block = 0; block < blocks; ++block) {
      const float* const lanes = a + block * length * kLanes;
      float sums[kTogether][kLanes] = {};
      for (std::size_t k = 0; k < length; ++k) {
        for (std::size_t j = 0; j < kTogether; ++j) {
          const float wanted = b[j * length + k];
          for (std::size_t lane = 0; lane < kLanes; ++lane) {
            const float difference = wanted - lanes[k * kLanes + lane];
            sums[j][lane] += difference * difference;
          }
        }
      }
      for (std::size_t j = 0; j < kTogether; ++j) {
        float* const row = distances + (j * blocks + block) * kLanes;
        for (std::size_t lane = 0; lane < kLanes; ++lane) row[lane] = sums[j][lane];
      }
    }
  }
};

struct Nearest {
  float best, second;
  int index;
};

/// The two smallest of blocks * kLanes distances, and where the smallest stands first.
struct NearestTwo {
  FRAMEQUILT_ROUTINE Nearest run(const float* __restrict distances, std::size_t blocks) {
    float best[kLanes];
    float second[kLanes];
    int index[kLanes];
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      best[lane] = distances[lane];
      second[lane] = kFar;
      index[lane] = static_cast<int>(lane);
    }
    for (std::size_t block = 1; block < blocks; ++block) {
      const int start = static_cast<int>(block * kLanes);
      for (std::size_t lane = 0; lane < kLanes; ++lane) {
        const float distance = distances[block * kLanes + lane];
        const float farther = distance < best[lane] ? best[lane] : distance;
        index[lane] = distance < best[lane] ? start + static_cast<int>(lane) : index[lane];
        best[lane] = distance < best[lane] ? distance : best[lane];
        second[lane] = farther < second[lane] ? farther : second[lane];
      }
    }
    Nearest nearest = {best[0], second[0], index[0]};
    for (std::size_t lane = 1; lane < kLanes; ++lane) {
      const bool nearer =
          best[lane] < nearest.best || (best[lane] == nearest.best && index[lane] < nearest.index);
      const float farther = nearer ? nearest.best : best[lane];
      nearest.second = std::min({nearest.second, farther, second[lane]});
      nearest.best = nearer ? best[lane] : nearest.best;
      nearest.index = nearer ? index[lane] : nearest.index;
    }
    return nearest;
  }
};

/// The descriptors of A, element k of kLanes of them side by side; 0 in lanes that are left over.
std::vector<float> sideBySide(const DescriptorSets& sets, std::size_t blocks) {
  const auto length = static_cast<std::size_t>(sets.length);
  std::vector<float> lanes(blocks * length * kLanes);
  for (int i = 0; i < sets.countA; ++i) {
    const unsigned short* const descriptor = sets.a + static_cast<std::ptrdiff_t>(i) * sets.strideA;
    const auto place = static_cast<std::size_t>(i);
    float* const first = lanes.data() + place / kLanes * length * kLanes + place % kLanes;
    for (std::size_t k = 0; k < length; ++k) first[k * kLanes] = descriptor[k];
  }
  return lanes;
}

/// In pixels of a frame that take as long.
std::size_t workOf(const DescriptorSets& sets) {
  constexpr std::size_t kElementsPerPixel = 16;
  return static_cast<std::size_t>(sets.countA) * static_cast<std::size_t>(sets.countB) *
         static_cast<std::size_t>(sets.length) / kElementsPerPixel;
}

/// Finds the matches of the descriptors [begin, end) of B. The distances of the last one of all go
/// to `dist`.
class Matcher {
 public:
  Matcher(const DescriptorSets& sets, float ratio)
      : sets_(sets),
        ratio_(ratio),
        countA_(static_cast<std::size_t>(sets.countA)),
        length_(static_cast<std::size_t>(sets.length)),
        blocks_((countA_ + kLanes - 1) / kLanes),
        lanes_(sideBySide(sets, blocks_)) {}

  /// From any thread.
  void match(std::size_t begin, std::size_t end, float* dist, std::vector<SPoint>& matches) const {
    const std::size_t rowLength = blocks_ * kLanes;
    std::vector<float> wanted(kTogether * length_);
    std::vector<float> distances(kTogether * rowLength);
    for (std::size_t first = begin; first < end; first += kTogether) {
      const std::size_t together = std::min(kTogether, end - first);
      std::copy_n(sets_.b + first * length_, together * length_, wanted.begin());
      Leveled<Distances>::call(lanes_.data(), blocks_, wanted.data(), length_, distances.data());
      for (std::size_t j = 0; j < together; ++j) {
        float* const row = distances.data() + j * rowLength;
        std::fill(row + countA_, row + rowLength, kFar);
        const Nearest nearest = nearestOf(row);
        if (ratio_ > nearest.best / nearest.second) {
          matches.push_back({static_cast<int>(first + j), nearest.index});
        }
        if (first + j + 1 < static_cast<std::size_t>(sets_.countB)) continue;
        std::copy_n(row, countA_, dist);
        dist[nearest.index] = *std::max_element(row, row + countA_);
      }
    }
  }

 private:
  Nearest nearestOf(const float* row) const {
    Nearest nearest = Leveled<NearestTwo>::call(row, blocks_);
    // A lone one is its own second.
    if (countA_ == 1) nearest.second = nearest.best;
    return nearest;
  }

  const DescriptorSets& sets_;
  const float ratio_;
  const std::size_t countA_, length_, blocks_;
  const std::vector<float> lanes_;
};

}  // namespace

bool suitsLanes(const DescriptorSets& sets) {
  if (sets.countA < 1 || sets.countB < 1 || sets.length < 1) return false;
  const auto length = static_cast<std::size_t>(sets.length);
  int largest =
      Leveled<LargestElement>::call(sets.b, static_cast<std::size_t>(sets.countB) * length);
  for (int i = 0; i < sets.countA; ++i) {
    largest =
        std::max(largest, Leveled<LargestElement>::call(
                              sets.a + static_cast<std::ptrdiff_t>(i) * sets.strideA, length));
  }
  return largest <= kLargestElement;
}

void matchInLanes(const DescriptorSets& sets, float* dist, float ratio,
                  std::vector<SPoint>& matches) {
  const Matcher matcher(sets, ratio);
  const auto countB = static_cast<std::size_t>(sets.countB);
  const std::size_t half = countB / 2;
  std::vector<SPoint> ofSecondHalf;
  ofSecondHalf.reserve(countB - half);
  std::atomic<bool> failed{false};
  Assistant assistant(paysForTwo(workOf(sets)), [&] {
    try {
      matcher.match(half, countB, dist, ofSecondHalf);
    } catch (const std::bad_alloc&) {
      failed = true;
    }
  });
  matcher.match(0, assistant.works() ? half : countB, dist, matches);
  assistant.join();
  // There was no memory for a second one to work in.
  if (failed) {
    ofSecondHalf.clear();
    matcher.match(half, countB, dist, ofSecondHalf);
  }
  matches.insert(matches.end(), ofSecondHalf.begin(), ofSecondHalf.end());
}

}  // namespace framequilt
