// SPDX-License-Identifier: Apache-2.0
#include "imaging/block_mixer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "imaging/chamfer.h"
#include "imaging/cpu_level.h"
#include "imaging/front.h"
#include "imaging/pixel_math.h"

namespace framequilt {
namespace {

using Bytes = unsigned char;
using chamfer::kLanes;

/// Room before a row of weights.
constexpr int kColumnsBefore = kLanes;

// --- Weights ---

/// A byte for each lane of each step.
template <int Width>
struct WeighSlanted {
  using Front = chamfer::Front<Width>;
  /// Steps that are weighed together, in arrays that stay in the cache next to the processor.
  static constexpr int kSteps = 16;
  static constexpr int kChunk = kSteps * kLanes;

  FRAMEQUILT_ROUTINE void nearest(const float* rows, const float* columns, int steps, float* out) {
    Front row = {};
    Front::load(rows, row);
    for (int t = 0; t < steps; ++t) {
      Front column = {};
      Front::load(columns - t, column);
      Front::smaller(row, column, column);
      Front::store(column, out + std::ptrdiff_t{t} * kLanes);
    }
  }

  FRAMEQUILT_ROUTINE void weigh(const float* __restrict ground, const float* __restrict frame,
                                int count, Bytes* __restrict weights) {
    // Below the smallest sum that is not 0; then the dividend is 0, too.
    constexpr float kLeast = 0.1F;
    for (int i = 0; i < count; ++i) {
      const float sum = ground[i] + frame[i];
      const float share = ground[i] * 255.0F / (sum < kLeast ? kLeast : sum);
      weights[i] = static_cast<Bytes>(static_cast<int>(share));
    }
  }

  FRAMEQUILT_ROUTINE void run(const BlockDistances& from, int steps, Bytes* weights) {
    float farthest[kChunk];
    float byPlace[kChunk];
    for (float& distance : farthest) distance = chamfer::kFarthest;
    for (int t = 0; t < steps; t += kSteps) {
      const int count = steps - t < kSteps ? steps - t : kSteps;
      const std::ptrdiff_t i = std::ptrdiff_t{t} * kLanes;
      if (from.frame == nullptr) nearest(from.frameRows, from.frameColumns - t, count, byPlace);
      weigh(from.ground != nullptr ? from.ground + i : farthest,
            from.frame != nullptr ? from.frame + i : byPlace, count * kLanes, weights + i);
    }
  }
};

/// Slanted bytes to rows. `rows + k * stride` is where column 0 of the block's row k goes, each
/// weight `Repeats` times, once for each channel; the weights of up to 15 columns before a row and
/// 30 behind it are written, too.
template <int Repeats>
struct Straighten {
  typedef Bytes Lane __attribute__((vector_size(16)));

  FRAMEQUILT_ROUTINE void interleave(const Lane& a, const Lane& b, Lane& low, Lane& high) {
    low = __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    high =
        __builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
  }

  FRAMEQUILT_ROUTINE void halves(const Lane (&from)[kLanes], Lane (&to)[kLanes]) {
    for (std::size_t i = 0; i < kLanes / 2; ++i) {
      interleave(from[i], from[i + kLanes / 2], to[2 * i], to[2 * i + 1]);
    }
  }

  FRAMEQUILT_ROUTINE void write(const Lane& row, Bytes* to) {
    if (Repeats == 1) {
      std::memcpy(to, &row, sizeof(row));
      return;
    }
    const Lane first =
        __builtin_shufflevector(row, row, 0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5);
    const Lane second =
        __builtin_shufflevector(row, row, 5, 5, 6, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 9, 10, 10);
    const Lane third = __builtin_shufflevector(row, row, 10, 11, 11, 11, 12, 12, 12, 13, 13, 13, 14,
                                               14, 14, 15, 15, 15);
    std::memcpy(to, &first, sizeof(first));
    std::memcpy(to + sizeof(first), &second, sizeof(second));
    std::memcpy(to + 2 * sizeof(first), &third, sizeof(third));
  }

  FRAMEQUILT_ROUTINE void run(const Bytes* slanted, int tiles, Bytes* rows, std::ptrdiff_t stride) {
    for (int tile = 0; tile < tiles; ++tile) {
      // Interleaving the halves four times transposes a square of 16 x 16.
      Lane a[kLanes];
      Lane b[kLanes];
      std::memcpy(a, slanted + std::ptrdiff_t{tile} * kLanes * kLanes, sizeof(a));
      halves(a, b);
      halves(b, a);
      halves(a, b);
      halves(b, a);
      for (int k = 0; k < kLanes; ++k) {
        write(a[k], rows + k * stride + Repeats * (std::ptrdiff_t{tile} * kLanes - k));
      }
    }
  }
};

// --- Mixing ---

/// A row: the same bytes go to the ground, the frame and the copy of it.
struct Row {
  Bytes* ground;
  const Bytes* original;  ///< Null: the frame is mixed in place.
  Bytes* frame;
  Bytes* copy;  ///< Null: there is none.
  const Bytes* weights;
  std::size_t bytes;
};

inline std::uint16_t weightedSum(unsigned weight, Bytes ground, Bytes frame) {
  return static_cast<std::uint16_t>((255U - weight) * frame + weight * ground);
}

struct DivideBy255 {
  /// In 16 bits, and exactly: true up to 65534.
  FRAMEQUILT_ROUTINE Bytes of(std::uint16_t sum) {
    return static_cast<Bytes>(static_cast<std::uint16_t>(sum + 1U + (sum >> 8U)) >> 8U);
  }
};

struct DivideBy256 {
  FRAMEQUILT_ROUTINE Bytes of(std::uint16_t sum) { return static_cast<Bytes>(sum >> 8U); }
};

template <class Divide>
struct Mix {
  template <bool kInPlace, bool kCopies>
  FRAMEQUILT_ROUTINE void loop(const Row& row) {
    Bytes* __restrict ground = row.ground;
    Bytes* __restrict frame = row.frame;
    Bytes* __restrict copy = row.copy;
    const Bytes* __restrict original = row.original;
    const Bytes* __restrict weights = row.weights;
    const std::size_t bytes = row.bytes;
    for (std::size_t i = 0; i < bytes; ++i) {
      const Bytes mixed =
          Divide::of(weightedSum(weights[i], ground[i], kInPlace ? frame[i] : original[i]));
      ground[i] = mixed;
      frame[i] = mixed;
      if (kCopies) copy[i] = mixed;
    }
  }

  FRAMEQUILT_ROUTINE void run(const Row& row) {
    if (row.original == nullptr) {
      row.copy == nullptr ? loop<true, false>(row) : loop<true, true>(row);
    } else {
      row.copy == nullptr ? loop<false, false>(row) : loop<false, true>(row);
    }
  }
};

}  // namespace

void BlockMixer::prepare(int cols, int channels) {
  cols_ = cols;
  channels_ = channels;
  tiles_ = (chamfer::stepsOf(cols) + kLanes - 1) / kLanes;
  stride_ = planeSize(1, cols + 4 * kLanes, channels);
  slanted_.resize(static_cast<std::size_t>(tiles_) * kLanes * kLanes);
  straight_.resize(stride_ * kLanes);
}

unsigned char* BlockMixer::rowOfWeights(int row) {
  return straight_.data() + static_cast<std::size_t>(row) * stride_ +
         planeSize(1, kColumnsBefore, channels_);
}

void BlockMixer::weigh(const BlockDistances& distances) {
  LeveledByWidth<WeighSlanted>::call(distances, chamfer::stepsOf(cols_), slanted_.data());
  const auto stride = static_cast<std::ptrdiff_t>(stride_);
  if (channels_ == 3) {
    Leveled<Straighten<3>>::call(slanted_.data(), tiles_, rowOfWeights(0), stride);
  } else {
    Leveled<Straighten<1>>::call(slanted_.data(), tiles_, rowOfWeights(0), stride);
  }
}

void BlockMixer::weighNothing() { std::fill(straight_.begin(), straight_.end(), Bytes{0}); }

void BlockMixer::mix(const Feathering& job, int block) {
  const std::size_t bytes = planeSize(1, job.cols, job.channels);
  const int first = block * kLanes;
  const int end = std::min(job.rows, first + kLanes);
  for (int r = first; r < end; ++r) {
    const std::ptrdiff_t start = rowStart(r, job.cols, job.channels);
    const Row row = {
        job.ground + r * job.stride, job.original == nullptr ? nullptr : job.original + start,
        job.frame + start,           job.copy == nullptr ? nullptr : job.copy + start,
        rowOfWeights(r - first),     bytes};
    if (job.channels == 3) {
      Leveled<Mix<DivideBy255>>::call(row);
    } else {
      Leveled<Mix<DivideBy256>>::call(row);
    }
  }
}

}  // namespace framequilt
