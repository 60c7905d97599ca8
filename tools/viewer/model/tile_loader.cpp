// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/tile_loader.h"

#include <new>
#include <stdexcept>
#include <utility>

namespace framequilt::viewer {
namespace {

/// Null where memory runs out: a coarser level stays on the screen.
QImage readTile(const MosaicReader& read, const TileKey& key) {
  try {
    QImage pixels = pictureOf(read(TilePyramid::areaOf(key)));
    for (int level = 0; level < key.level; ++level) pixels = halved(pixels);
    return pixels;
  } catch (const std::exception&) {
    return {};
  }
}

}  // namespace

TileLoader::TileLoader(std::function<void()> onTiles)
    : tiles_(std::move(onTiles)), thread_([this] { work(); }) {}

TileLoader::~TileLoader() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  asked_.notify_one();
  tiles_.close();
  thread_.join();
}

int TileLoader::open(MosaicReader reader) {
  const std::lock_guard lock(mutex_);
  wanted_.clear();
  reader_ = std::move(reader);
  return ++mosaic_;
}

void TileLoader::request(const TileKey& key) {
  {
    const std::lock_guard lock(mutex_);
    wanted_.push_back(key);
  }
  asked_.notify_one();
}

void TileLoader::work() {
  std::unique_lock lock(mutex_);
  while (true) {
    asked_.wait(lock, [this] { return ending_ || !wanted_.empty(); });
    if (ending_) return;
    const TileKey key = wanted_.back();
    wanted_.pop_back();
    const MosaicReader reader = reader_;
    const int mosaic = mosaic_;
    lock.unlock();
    tiles_.post({key, readTile(reader, key), mosaic});
    lock.lock();
  }
}

}  // namespace framequilt::viewer
