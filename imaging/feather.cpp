// SPDX-License-Identifier: Apache-2.0
#include "imaging/feather.h"

#include <algorithm>
#include <cstdint>
#include <future>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "imaging/assistant.h"
#include "imaging/block_mixer.h"
#include "imaging/content.h"
#include "imaging/disjoint.h"
#include "imaging/distances.h"
#include "imaging/finished_blocks.h"
#include "imaging/pixel_math.h"
#include "imaging/run_buffer.h"

namespace framequilt {
namespace {

using Bytes = unsigned char;
using chamfer::kLanes;

const Bytes* originalOf(const Feathering& job) {
  return job.original != nullptr ? job.original : job.frame;
}

class Featherer {
 public:
  void run(const Feathering& job) {
    const ImageView ground = {job.ground, job.stride, job.rows, job.cols, job.channels};
    const ImageView frame = {originalOf(job), rowStart(1, job.cols, job.channels), job.rows,
                             job.cols, job.channels};
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
    for (BlockMixer& mixer : mixers_) mixer.prepare(job.cols, job.channels);
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
  if (job.original != nullptr &&
      (!disjoint(job.original, bytes, job.frame, bytes) ||
       !disjoint(job.original, bytes, job.ground, extent) ||
       (job.copy != nullptr && !disjoint(job.original, bytes, job.copy, bytes)))) {
    return false;
  }
  return job.copy == nullptr || (disjoint(job.copy, bytes, job.frame, bytes) &&
                                 disjoint(job.copy, bytes, job.ground, extent));
}

void feather(const Feathering& job) {
  if (!featherer()) featherer() = std::make_unique<Featherer>();
  featherer()->run(job);
}

void releaseFeather() noexcept { featherer().reset(); }

}  // namespace framequilt
