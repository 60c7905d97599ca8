// SPDX-License-Identifier: Apache-2.0
#include "imaging/feather.h"

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <future>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "imaging/assistant.h"
#include "imaging/cpu_level.h"
#include "imaging/disjoint.h"
#include "imaging/distances.h"
#include "imaging/pixel_math.h"
#include "imaging/run_buffer.h"

namespace framequilt {
namespace {

using Bytes = unsigned char;
using chamfer::kLanes;

// --- Weights ---

/// Where the weights of a block come from, in its slanted order.
struct BlockDistances {
  const float* ground;  ///< Null: the farthest everywhere.
  const float* frame;   ///< Null: by rows and columns.
  const float* frameRows;
  const float* frameColumns;  ///< Of step 0.
};

/// A byte for each lane of each step.
struct WeighSlanted {
  template <bool kGroundIsFull, bool kFrameIsFull>
  FRAMEQUILT_ROUTINE void loop(const BlockDistances& from, int steps, Bytes* __restrict weights) {
    const float* __restrict ground = from.ground;
    const float* __restrict frame = from.frame;
    const float* __restrict rows = from.frameRows;
    const float* __restrict columns = from.frameColumns;
    for (int t = 0; t < steps; ++t) {
      for (int k = 0; k < kLanes; ++k) {
        const int i = t * kLanes + k;
        const float a = kGroundIsFull ? chamfer::kFarthest : ground[i];
        const float b = kFrameIsFull ? std::min(rows[k], columns[k - t]) : frame[i];
        const float sum = a + b;
        const float share = a * 255.0F / (sum == 0.0F ? 1.0F : sum);
        weights[i] = static_cast<Bytes>(static_cast<int>(share));
      }
    }
  }

  FRAMEQUILT_ROUTINE void run(const BlockDistances& from, int steps, Bytes* weights) {
    if (from.ground == nullptr) {
      from.frame == nullptr ? loop<true, true>(from, steps, weights)
                            : loop<true, false>(from, steps, weights);
    } else {
      from.frame == nullptr ? loop<false, true>(from, steps, weights)
                            : loop<false, false>(from, steps, weights);
    }
  }
};

/// Slanted bytes to rows. `rows + k * stride` is where column 0 of the block's row k goes; up to 15
/// bytes before a row and 30 behind it are written, too.
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
        std::memcpy(rows + k * stride + std::ptrdiff_t{tile} * kLanes - k, &a[k], sizeof(Lane));
      }
    }
  }
};

// --- Mixing ---

inline unsigned weightedSum(unsigned weight, Bytes ground, Bytes frame) {
  return (255U - weight) * frame + weight * ground;
}

struct MixColour {
  FRAMEQUILT_ROUTINE void run(const Bytes* __restrict ground, const Bytes* __restrict weight,
                              std::size_t count, Bytes* __restrict frame) {
    for (std::size_t i = 0; i < count; ++i) {
      for (std::size_t k = 0; k < 3; ++k) {
        // In 16 bits, and divided by 255 exactly: true up to 65534.
        const auto sum =
            static_cast<std::uint16_t>(weightedSum(weight[i], ground[3 * i + k], frame[3 * i + k]));
        frame[3 * i + k] = static_cast<Bytes>((sum + 1U + (sum >> 8U)) >> 8U);
      }
    }
  }
};

struct MixGray {
  FRAMEQUILT_ROUTINE void run(const Bytes* __restrict ground, const Bytes* __restrict weight,
                              std::size_t count, Bytes* __restrict frame) {
    for (std::size_t i = 0; i < count; ++i) {
      const auto sum = static_cast<std::uint16_t>(weightedSum(weight[i], ground[i], frame[i]));
      frame[i] = static_cast<Bytes>(sum >> 8U);
    }
  }
};

/// What one thread needs to weigh and mix a block.
class BlockMixer {
 public:
  void prepare(int cols) {
    cols_ = cols;
    tiles_ = (chamfer::stepsOf(cols) + kLanes - 1) / kLanes;
    stride_ = static_cast<std::size_t>(cols) + std::size_t{4} * kLanes;
    slanted_.resize(static_cast<std::size_t>(tiles_) * kLanes * kLanes);
    straight_.resize(stride_ * kLanes);
  }

  void weigh(const BlockDistances& distances) {
    Leveled<WeighSlanted>::call(distances, chamfer::stepsOf(cols_), slanted_.data());
    Leveled<Straighten>::call(slanted_.data(), tiles_, straight_.data() + kBefore,
                              static_cast<std::ptrdiff_t>(stride_));
  }

  /// Nothing of the ground.
  void weighNothing() { std::fill(straight_.begin(), straight_.end(), Bytes{0}); }

  void mix(const Feathering& job, int block) const {
    const auto cols = static_cast<std::size_t>(job.cols);
    const std::size_t bytes = planeSize(1, job.cols, job.channels);
    const int first = block * kLanes;
    const int end = std::min(job.rows, first + kLanes);
    for (int r = first; r < end; ++r) {
      Bytes* const ground = job.ground + r * job.stride;
      Bytes* const frame = job.frame + rowStart(r, job.cols, job.channels);
      const Bytes* const weights =
          straight_.data() + static_cast<std::size_t>(r - first) * stride_ + kBefore;
      if (job.channels == 3) {
        Leveled<MixColour>::call(ground, weights, cols, frame);
      } else {
        Leveled<MixGray>::call(ground, weights, cols, frame);
      }
      std::memcpy(ground, frame, bytes);
      if (job.copy != nullptr) {
        std::memcpy(job.copy + rowStart(r, job.cols, job.channels), frame, bytes);
      }
    }
  }

 private:
  /// Bytes before a row of weights.
  static constexpr std::size_t kBefore = kLanes;

  int cols_ = 0;
  int tiles_ = 0;
  std::size_t stride_ = 0;
  std::vector<Bytes> slanted_, straight_;
};

/// A block whose distances are finished.
struct FinishedBlock {
  int block;
  const float* ground;  ///< Null where all are 0, and where the ground is full.
  const float* frame;   ///< The same.
  std::size_t slot;     ///< Which of the maps they lie in.
};

/// Blocks on their way from the thread that spreads distances, which no other can do, to any that
/// weighs and mixes.
class FinishedBlocks {
 public:
  static constexpr std::size_t kSlots = 4;

  FinishedBlocks() {
    // Nothing is allocated once pixels are written.
    ready_.reserve(kSlots);
    for (std::size_t slot = 0; slot < kSlots; ++slot) free_.push_back(slot);
  }

  void add(const FinishedBlock& block) {
    const std::lock_guard lock(mutex_);
    ready_.push_back(block);
    changed_.notify_one();
  }
  void close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    changed_.notify_all();
  }

  /// Waits for a block, until the last is taken.
  std::optional<FinishedBlock> take() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !ready_.empty() || closed_; });
    return takeReady();
  }
  /// Does not wait.
  std::optional<FinishedBlock> takeIfAny() {
    const std::lock_guard lock(mutex_);
    return takeReady();
  }

  void giveBack(std::size_t slot) {
    const std::lock_guard lock(mutex_);
    free_.push_back(slot);
    slotFree_.notify_one();
  }
  /// A free slot, or none while there is a block to be mixed instead.
  std::optional<std::size_t> slotOrWork() {
    std::unique_lock lock(mutex_);
    slotFree_.wait(lock, [this] { return !free_.empty() || !ready_.empty(); });
    if (free_.empty()) return std::nullopt;
    const std::size_t slot = free_.back();
    free_.pop_back();
    return slot;
  }

 private:
  std::optional<FinishedBlock> takeReady() {
    if (ready_.empty()) return std::nullopt;
    const FinishedBlock block = ready_.front();
    ready_.erase(ready_.begin());
    return block;
  }

  std::mutex mutex_;
  std::condition_variable changed_, slotFree_;
  std::vector<FinishedBlock> ready_;
  std::vector<std::size_t> free_;
  bool closed_ = false;
};

class Featherer {
 public:
  void run(const Feathering& job) {
    const ImageView ground = {job.ground, job.stride, job.rows, job.cols, job.channels};
    const ImageView frame = {job.frame, rowStart(1, job.cols, job.channels), job.rows, job.cols,
                             job.channels};
    prepare(job);
    FinishedBlocks blocks;
    std::promise<bool> frameFilling;
    std::future<bool> frameFilled = frameFilling.get_future();
    const auto assist = [&] {
      frameFilling.set_value(isFull(frame));
      while (const std::optional<FinishedBlock> block = blocks.take()) {
        mix(job, *block, mixers_[1], blocks);
      }
    };
    Assistant assistant(paysForTwo(planeSize(job.rows, job.cols)), assist);
    const AtScopeEnd close([&] { blocks.close(); });

    groundIsFull_ = !ground_.spreadDown(ground, /*blankFrame=*/false);
    frameIsFull_ = assistant.works() ? frameFilled.get() : isFull(frame);
    if (!frameIsFull_) frame_.spreadDown(frame, /*blankFrame=*/true);

    for (int b = chamfer::blocksOf(job.rows) - 1; b >= 0; --b) {
      std::optional<std::size_t> slot = blocks.slotOrWork();
      while (!slot) {
        if (const auto block = blocks.takeIfAny()) mix(job, *block, mixers_[0], blocks);
        slot = blocks.slotOrWork();
      }
      blocks.add({b, groundIsFull_ ? nullptr : ground_.finish(b, groundMaps_[*slot].data()),
                  frameIsFull_ ? nullptr : frame_.finish(b, frameMaps_[*slot].data()), *slot});
    }
    while (const auto block = blocks.takeIfAny()) mix(job, *block, mixers_[0], blocks);
    blocks.close();
    assistant.join();
  }

 private:
  void prepare(const Feathering& job) {
    for (BlockMixer& mixer : mixers_) mixer.prepare(job.cols);
    content_.resize(static_cast<std::size_t>(job.cols));
    const std::size_t floats = chamfer::blockFloats(job.cols);
    for (auto& map : groundMaps_) map.resize(floats);
    for (auto& map : frameMaps_) map.resize(floats);
    const auto steps = static_cast<std::size_t>(chamfer::stepsOf(job.cols));
    zeroColumns_.assign(steps + kLanes, 0.0F);
    fullFrame_.begin(job.rows, job.cols);
  }

  bool isFull(const ImageView& frame) {
    for (int r = 0; r < frame.rows; ++r) {
      if (contentOfRow(frame, r, content_) != Filling::kFull) return false;
    }
    return true;
  }

  void mix(const Feathering& job, const FinishedBlock& finished, BlockMixer& mixer,
           FinishedBlocks& blocks) const {
    const int b = finished.block;
    if (!groundIsFull_ && finished.ground == nullptr) {
      mixer.weighNothing();
    } else if (frameIsFull_) {
      mixer.weigh({finished.ground, nullptr, fullFrame_.ofRows(b), fullFrame_.ofColumns(0)});
    } else if (finished.frame == nullptr) {
      static constexpr float kZeros[kLanes] = {};
      mixer.weigh({finished.ground, nullptr, kZeros, &zeroColumns_.back() - kLanes});
    } else {
      mixer.weigh({finished.ground, finished.frame, nullptr, nullptr});
    }
    mixer.mix(job, b);
    blocks.giveBack(finished.slot);
  }

  Distances ground_, frame_;
  FrameDistances fullFrame_;
  bool groundIsFull_ = false;
  bool frameIsFull_ = false;
  BlockMixer mixers_[2];
  std::vector<float> groundMaps_[FinishedBlocks::kSlots], frameMaps_[FinishedBlocks::kSlots];
  std::vector<Bytes> content_;
  std::vector<float> zeroColumns_;
};

/// Kept from call to call.
std::unique_ptr<Featherer>& featherer() {
  static std::unique_ptr<Featherer> instance;
  return instance;
}

}  // namespace

bool canFeather(const Feathering& job) noexcept {
  if (job.channels != 1 && job.channels != 3) return false;
  if (job.rows < 2 || job.cols < 3) return false;
  const std::size_t bytes = planeSize(job.rows, job.cols, job.channels);
  if (bytes > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) return false;
  const std::size_t extent =
      static_cast<std::size_t>(job.stride) * static_cast<std::size_t>(job.rows - 1) +
      planeSize(1, job.cols, job.channels);
  if (!disjoint(job.ground, extent, job.frame, bytes)) return false;
  return job.copy == nullptr || (disjoint(job.copy, bytes, job.frame, bytes) &&
                                 disjoint(job.copy, bytes, job.ground, extent));
}

void feather(const Feathering& job) {
  if (!featherer()) featherer() = std::make_unique<Featherer>();
  featherer()->run(job);
}

void releaseFeather() noexcept { featherer().reset(); }

}  // namespace framequilt
